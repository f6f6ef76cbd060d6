// Every allocation of a run refused in turn: cells and blocks of the pools, heap memory, and what the standard library
// takes. A run is told of by its output, its exit status and its messages; the sentences that are not hit are rendered
// as ever, and nothing is left behind.
//
// By default a case tries a bounded number of allocations, spread over the run. LEXON_EXHAUSTIVE tries every one, but of
// the long case "english" only if it is the value.

#include <atomic>
#include <new>

#include "data/pool.hpp"
#include "dicttool/build.hpp"
#include "dicttool/check.hpp"
#include "dicttool/find.hpp"
#include "dicttool/list.hpp"
#include "support/built_dictionary.hpp"
#include "support/capture.hpp"
#include "support/program.hpp"
#include "support/session.hpp"
#include "support/test.hpp"
#include "whole_run.hpp"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
// Of allocator_interface.h, which GCC does not bring.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {
std::atomic<long> living = 0;
}

// Out of line: seen through, the pairs look mismatched to the compiler.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  void* memory = lexon::test::refused.refuses() ? nullptr : std::malloc(size == 0 ? 1 : size);
  living += memory != nullptr ? 1 : 0;
  return memory;
}
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* memory = operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void* operator new[](std::size_t size) {
  return operator new(size);
}
[[gnu::noinline]] void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept {
  return operator new(size, nothrow);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  living -= memory != nullptr ? 1 : 0;
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, const std::nothrow_t&) noexcept {
  operator delete(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
[[gnu::noinline]] void operator delete[](void* memory) noexcept {
  operator delete(memory);
}
[[gnu::noinline]] void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  operator delete(memory);
}
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept {
  operator delete(memory);
}

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

// How many allocations of a run are left out between two that are refused, plus one.
std::int64_t stride_of(const std::string& name, std::int64_t allocations) {
  const char* exhaustive = std::getenv("LEXON_EXHAUSTIVE");
  const bool is_long = name == "english";
  if (exhaustive != nullptr && (!is_long || name == exhaustive)) return 1;
  return std::max<std::int64_t>(allocations / (exhaustive != nullptr ? 1000 : 20), 1);
}

bool has_leaks() {
#if defined(__SANITIZE_ADDRESS__)
  return __lsan_do_recoverable_leak_check() != 0;
#else
  return false;
#endif
}

// What became of runs with one allocation refused.
struct Figures {
  std::int64_t runs = 0;
  std::int64_t not_felt = 0;     // the output is the same
  std::int64_t not_started = 0;  // or ended at once
  std::int64_t rule_step = 0;
  std::int64_t sentence = 0;
};

bool is_failed(const std::string& sentence) {
  return sentence.ends_with(";;Failed!\n");
}

// In these cases an unfinished search of one sentence is left to the next, so that a lost one changes both.
bool carries(const std::string& name) {
  return name.starts_with("search-forced");
}

// Which sentence differs from what is expected; -1 for none, -2 for more than one or another number of them.
int differing_sentence(const std::vector<std::string>& found, const std::vector<std::string>& expected, bool carries) {
  if (found.size() != expected.size()) return -2;
  int differing = -1;
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (found[i] == expected[i] || (carries && differing != -1)) continue;
    if (differing != -1) return -2;
    differing = static_cast<int>(i);
  }
  return differing;
}

// A sentence that is lost for memory says so, or, if not even its graph could be read, fails without a word.
bool is_lost_for_memory(const std::string& sentence) {
  return sentence.ends_with(";;return code 100\n;;Failed!\n") || (is_failed(sentence) && sentence.find(";;return code") == std::string::npos);
}

void judge(const RunCase::Result& run, const RunCase::Result& expected, bool carries, Figures& figures) {
  ++figures.runs;
  if (run.output == expected.output && run.exit_status == expected.exit_status) {
    ++figures.not_felt;
    return;
  }
  if (run.exit_status == 1) {
    ++figures.not_started;
    EXPECT_NE(run.error.find("No memory!"), std::string::npos) << run.error;
    return;
  }
  EXPECT_EQ(run.exit_status, 3) << run.error;
  const std::vector<std::string> found = sentences_in(run.output);
  const std::vector<std::string> wanted = sentences_in(expected.output);
  if (const int hit = differing_sentence(found, wanted, carries); hit >= 0 && !std::all_of(found.begin(), found.end(), is_failed)) {
    ++figures.sentence;
    EXPECT_TRUE(is_lost_for_memory(found[static_cast<std::size_t>(hit)])) << found[static_cast<std::size_t>(hit)] << "instead of\n"
                                                                          << wanted[static_cast<std::size_t>(hit)] << run.error;
    return;
  }
  ++figures.rule_step;
  EXPECT_TRUE(std::all_of(found.begin(), found.end(), is_failed)) << run.output << run.error;
}

class Memory : public ::testing::TestWithParam<std::string> {};

TEST_P(Memory, EveryRefusedAllocationEndsAsTold) {
  const RunCase golden(GetParam());
  Figures figures;
  std::int64_t allocations = 0;
  const RunCase::Result first = golden.run(true);
  const std::string names = golden.names();
  const std::size_t files = open_files();
  for (const bool converts : {true, false}) {
    static_cast<void>(golden.run(true));  // what the last refusal has spoilt
    const RunCase::Result expected = golden.run(converts);
    const std::int64_t counted = expected.allocations;
    ASSERT_TRUE(expected.exit_status == 0 || expected.exit_status == 3) << expected.error;
    EXPECT_EQ(sentences_in(expected.output).size(), sentences_in(first.output).size());
    allocations += counted;
    const std::int64_t stride = stride_of(GetParam(), counted);
    for (const bool lasting : {false, true}) {
      for (std::int64_t n = 1; n <= counted; n += lasting ? stride * 7 : stride) {
        SCOPED_TRACE((converts ? "converting, " : "loading, ") + std::string(lasting ? "all from " : "no. ") + std::to_string(n));
        const RunCase::Result run = golden.run(converts, {n, lasting});
        if (lasting) {
          EXPECT_TRUE(run.exit_status == 1 || run.exit_status == 3 || run.output == expected.output);
        } else {
          judge(run, expected, carries(GetParam()), figures);
        }
        EXPECT_EQ(open_files(), files);
        EXPECT_EQ(golden.names(), names);
        if (HasFailure()) return;
      }
    }
  }
  EXPECT_FALSE(has_leaks());
  std::printf("%lld allocations; %lld runs: %lld not felt, %lld not started, %lld rule step, %lld sentence\n", static_cast<long long>(allocations),
              static_cast<long long>(figures.runs), static_cast<long long>(figures.not_felt), static_cast<long long>(figures.not_started),
              static_cast<long long>(figures.rule_step), static_cast<long long>(figures.sentence));
}

std::string case_name(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Runs, Memory, ::testing::ValuesIn(run_case_names()), case_name);

TEST(ShortReads, AreReadOn) {
  const RunCase golden("choice-pair");
  const RunCase::Result expected = golden.run(true);
  const ShortReads all_short;
  EXPECT_EQ(golden.run(true).output, expected.output);
}

// What operators new have given and operators delete have not taken back; where a sanitizer counts, all bytes in use.
long in_use() {
#if defined(__SANITIZE_ADDRESS__)
  return static_cast<long>(__sanitizer_get_current_allocated_bytes());
#else
  return living;
#endif
}

// One run behind the other, LEXON_RUNS of each case, with sentences that are good, fail or are malformed.
TEST(Endurance, NeitherMemoryNorOpenFilesGrow) {
  const char* wanted = std::getenv("LEXON_RUNS");
  const long runs = wanted == nullptr ? 150 : std::strtol(wanted, nullptr, 10);
  for (const char* name : {"english", "reading-errors", "search-failed-scope"}) {
    const RunCase golden(name);
    const std::string first = golden.run(true).output;
    const std::size_t files = open_files();
    long most = 0;  // behind a run of the first third
    for (long run = 0; run < runs; ++run) {
      ASSERT_EQ(golden.run(run % 2 == 0).output, first) << name << ", run " << run;
      ASSERT_EQ(open_files(), files) << name << ", run " << run;
      if (run < runs / 3) most = std::max(most, in_use());
      ASSERT_LE(in_use(), most) << name << ", run " << run;
    }
  }
}

// The dictionary tool: what it calls, what it prints, and what it leaves.
class ToolMemory : public ::testing::Test {
 protected:
  void SetUp() override {
    for (int i = 0; i < 40; ++i) entries_ += "[w" + std::to_string(i) + "]{} \"c" + std::to_string(i % 7) + "\" (N);\n";
    session.pool.set_fault(&refused);
    ASSERT_TRUE(build_text(folder_, entries_).done);
    kept_ = bytes_of(folder_.path("words.dic")) + bytes_of(folder_.path("words.idx"));
    names_ = folder_.names();
  }

  // Calls `work` with each of its allocations refused: it must fail, by its result or by an exception, or do without and
  // write what it writes else.
  template <typename Work>
  void refuse_each(const char* what, Work work) {
    SCOPED_TRACE(what);
    std::string expected;
    const std::int64_t count = kFar - call(work, kFar, &expected).countdown;
    std::int64_t failed = 0;
    for (std::int64_t n = 1; n <= count; ++n) {
      std::string written;
      const bool fails = call(work, n, &written).failed;
      failed += fails ? 1 : 0;
      EXPECT_TRUE(fails || written == expected) << n;
      ASSERT_EQ(folder_.names(), names_) << n;
      ASSERT_EQ(bytes_of(folder_.path("words.dic")) + bytes_of(folder_.path("words.idx")), kept_) << n;
    }
    EXPECT_GT(failed, count / 2);
    std::printf("%s: %lld allocations, %lld felt\n", what, static_cast<long long>(count), static_cast<long long>(failed));
  }

  struct Called {
    bool failed;
    std::int64_t countdown;  // what is left of it
  };

  // The n-th allocation is refused.
  template <typename Work>
  static Called call(Work work, std::int64_t n, std::string* written) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* out = open_memstream(&text, &size);
    Called called{true, 0};
    refused = {n, false};
    try {
      called.failed = !work(out);
    } catch (const std::bad_alloc&) {
    }
    called.countdown = std::exchange(refused, {}).countdown;
    std::fclose(out);
    written->assign(text, size);
    std::free(text);
    session.state.abort = Status::ok;
    session.pool.release_all();
    return called;
  }

  static constexpr std::int64_t kFar = std::int64_t{1} << 40;
  Folder folder_;
  std::string entries_;
  std::string kept_;
  std::vector<std::string> names_;
};

TEST_F(ToolMemory, EveryRefusedAllocationFailsAndLeavesTheFiles) {
  const std::string dictionary = folder_.path("words.dic");
  BuildOptions options;
  options.entries = folder_.path("entries.txt");
  options.dictionary = dictionary;
  options.skip_bad = true;
  options.memory = std::size_t{1} << 20;
  refuse_each("build", [&](std::FILE* out) {
    BuildFigures figures;
    return dictionary_build(session, options, out, figures) && figures.entries == 40;
  });
  refuse_each("list", [&](std::FILE* out) { return dictionary_list(session, dictionary, out, out); });
  refuse_each("find", [&](std::FILE* out) { return dictionary_find(session, dictionary, {.cw = "c3", .wants_cw = true}, out, out) == FindResult::found; });
  refuse_each("check", [&](std::FILE* out) {
    CheckFigures figures;
    return dictionary_check(session, dictionary, out, std::size_t{1} << 20, figures) && figures.unasked == 0;
  });
  EXPECT_FALSE(has_leaks());
}

}  // namespace
}  // namespace lexon::test
