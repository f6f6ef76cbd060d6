// What a step of the search costs, in time and in memory; what a sentence costs with and without its trace; whether a
// long run grows.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/pool.hpp"
#include "dict/dictionary.hpp"
#include "dicttool/build.hpp"
#include "ratios.hpp"
#include "rules/matrix.hpp"
#include "rules/parser.hpp"
#include "run/render.hpp"
#include "support/grammar.hpp"

namespace lexon {

using lexon::test::grammar;
using lexon::test::index_build;
using lexon::test::session;
namespace {

namespace fs = std::filesystem;

// ---- A language whose search is as long as the sentence asks for.
//
// A chain of words is brought in one behind the other, four of them with ten alternatives each, of which the last is
// the right one. The last word names how many of the words in front of it and including it have to be right (@N0 to
// @N4), and only there the rules find out. So all combinations of the alternatives of so many words are tried.

constexpr int kWordsToChoose = 4;
constexpr int kAlternatives = 10;

constexpr const char* kRules =
    "R{SHEAD}{W}P20;\n"
    ":{W}\"W::nxt:\"P30;\n"
    "R{W}{W,^@LAST}P20;\n"
    "R{W}{@N0}P20;\n"
    "R{W}{@N1,OK}P20;\n"
    "R{OK}{@N2,OK}P20;\n"
    "R(OK){OK}{@N3,OK}P20;\n"
    "R(OK)(OK){OK}{@N4,OK}P20;\n"
    "R{@LAST}{STAIL}P10;\n";

std::string entries_text() {
  std::string text = "[a ]{} \"a\" (W) <E,0,1>;\n";
  for (const std::string_view word : {"b", "c", "d", "e"}) {
    for (int i = 0; i < kAlternatives; ++i) {
      const char* attrs = i == kAlternatives - 1 ? "W,OK" : "W";
      text.append("[").append(word).append(std::to_string(i)).append(" ]{} \"").append(word).append("\" (");
      text.append(attrs).append(") <E,0,").append(std::to_string(kAlternatives - i)).append(">;\n");
    }
  }
  return text;
}

std::string graph_text(int right_words) {
  return "[S]\nnxt(a.@entry, b)\nnxt(b, c)\nnxt(c, d)\nnxt(d, e.@LAST.@N" + std::to_string(right_words) + ")\n[/S]\n";
}

// Calls of `backtrack` in such a sentence. Every combination but the last is taken back once; whenever the words of a
// node are used up, so are the step that led to it and, one step more, the word in front of it.
int steps_of(int right_words) {
  int steps = 0;
  int combinations = 1;
  for (int i = 1; i <= right_words; ++i) {
    combinations *= kAlternatives;
    steps += (i == right_words ? 1 : 2) * (combinations - 1);
  }
  return steps;
}

// Rules and dictionary of the language. The rules lie in the permanent pool, so there is one for the program.
struct Language {
  Language() : folder(fs::temp_directory_path() / ("lexon-search-bench-" + std::to_string(getpid()))) {
    fs::create_directories(folder);
    is_good = read_rules() && build() && dictionary_open(path("words.dic"), PairCheck::quick, opened);
  }
  ~Language() { fs::remove_all(folder); }
  Language(const Language&) = delete;
  Language& operator=(const Language&) = delete;

  bool read_rules() {
    std::string_view text = kRules;
    return parse_rule_file(session, grammar.pool, text, rules) == Status::ok && index_build(rules) == Status::ok;
  }

  [[nodiscard]] std::string path(const char* name) const { return (folder / name).string(); }

  [[nodiscard]] bool build() const {
    std::ofstream(path("entries.txt"), std::ios::binary) << entries_text();
    BuildFigures figures;
    return dictionary_build(session, {.entries = path("entries.txt"), .dictionary = path("words.dic")}, stderr,
                            figures);
  }

  fs::path folder;
  Rule* rules = nullptr;
  Dictionary opened;
  bool is_good = false;
};

// An input of `count` sentences of one kind, which can be read again and again.
class Input {
 public:
  explicit Input(int right_words, int count = 1) {
    for (int i = 0; i < count; ++i) text_ += graph_text(right_words);
    stream_ = fmemopen(text_.data(), text_.size(), "r");
  }
  ~Input() { std::fclose(stream_); }
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  [[nodiscard]] std::FILE* stream() const { return stream_; }
  void rewind() { std::rewind(stream_); }

 private:
  std::string text_;
  std::FILE* stream_;
};

// Of this thread: other programs can run beside a benchmark.
double processor_seconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// What a sentence took. The bytes are all that it had from the pool at its worst moment.
struct Taken {
  double seconds;
  std::int64_t pool_bytes;
  bool done;
};

// Renders the sentence that the input stands at.
Taken render(Language& language, std::FILE* input) {
  char text[kSentenceSize];
  const double start = processor_seconds();
  lookups_attend(session, language.opened.files(), {});
  const Status status = render_sentence(session, language.opened.files(), input, text, {}, true);
  const double seconds = processor_seconds() - start;
  const Taken taken{seconds, session.pool.bytes_used(), status == Status::ok};
  session.pool.release_all();
  return taken;
}

Taken render_again(Language& language, Input& input) {
  input.rewind();
  return render(language, input.stream());
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// ---- The time and the memory of a step.

// What the search adds to a sentence, against one that is the same but for its first words being right. The two take
// turns, so that both meet the same machine.
void search_step(benchmark::State& run, Language& language, int right_words) {
  const int steps = std::max(1, steps_of(right_words));
  const int rounds = 5 + steps_of(kWordsToChoose) / steps;
  Input searching(right_words);
  Input straight(0);
  std::int64_t pool_bytes = 0;
  for ([[maybe_unused]] auto _ : run) {
    std::vector<double> added;
    for (int i = 0; i < rounds; ++i) {
      const Taken with_search = render_again(language, searching);
      const Taken without = render_again(language, straight);
      if (!with_search.done || !without.done) return run.SkipWithError("a sentence failed");
      added.push_back(with_search.seconds - without.seconds);
      pool_bytes = with_search.pool_bytes;
    }
    run.SetIterationTime(median(added) / steps);
  }
  run.counters["steps"] = steps;
  run.counters["pool_bytes"] = static_cast<double>(pool_bytes);
}

// Counts the steps of a sentence by their banners in the trace.
int steps_traced(Language& language, int right_words) {
  constexpr std::string_view kBanner = "== BACKTRACK-1 ==";
  std::FILE* before = session.output.stream();
  session.output.redirect(nullptr);
  session.state.trace_level = 3;
  Input input(right_words);
  (void)render_again(language, input);
  session.state.trace_level = 0;
  const std::string text = session.output.take();
  session.output.redirect(before);
  int steps = 0;
  for (auto at = text.find(kBanner); at != text.npos; at = text.find(kBanner, at + 1)) ++steps;
  return steps;
}

bool steps_are_as_told(Language& language) {
  for (int right_words = 0; right_words <= kWordsToChoose; ++right_words) {
    if (steps_traced(language, right_words) != steps_of(right_words)) return false;
  }
  return true;
}

// ---- The trace.

// Swallows what is written, and counts how often a flush or a full buffer has written.
ssize_t count_write(void* count, const char*, std::size_t size) {
  ++*static_cast<int*>(count);
  return static_cast<ssize_t>(size);
}

int writes_of_sentence(Language& language, Input& input) {
  int writes = 0;
  std::FILE* stream = fopencookie(&writes, "w", {nullptr, count_write, nullptr, nullptr});
  std::FILE* before = session.output.stream();
  session.output.redirect(stream);
  (void)render_again(language, input);
  session.output.redirect(before);
  std::fclose(stream);
  return writes;
}

void traced_sentence(benchmark::State& run, Language& language, int level) {
  constexpr int kRightWords = 3;
  Input input(kRightWords);
  session.state.trace_level = static_cast<std::int8_t>(level);
  for ([[maybe_unused]] auto _ : run) {
    if (!render_again(language, input).done) run.SkipWithError("the sentence failed");
  }
  run.counters["steps"] = steps_of(kRightWords);
  run.counters["writes"] = writes_of_sentence(language, input);
  session.state.trace_level = 0;
}

// ---- A long run.

double resident_kilobytes() {
  std::ifstream file("/proc/self/statm");
  double size = 0.0;
  double resident = 0.0;
  file >> size >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024.0;
}

bool render_all(Language& language, Input& input, int count) {
  bool done = true;
  input.rewind();
  for (int i = 0; i < count; ++i) done = render(language, input.stream()).done && done;
  return done;
}

void long_run(benchmark::State& run, Language& language) {
  constexpr int kDocument = 1000;
  constexpr int kSentences = 100'000;
  Input input(1, kDocument);
  for ([[maybe_unused]] auto _ : run) {
    bool done = render_all(language, input, kDocument);
    const double early = resident_kilobytes();
    for (int i = kDocument; i < kSentences; i += kDocument) done = render_all(language, input, kDocument) && done;
    const double late = resident_kilobytes();
    if (!done) run.SkipWithError("a sentence failed");
    run.counters["kB_at_1000"] = early;
    run.counters["kB_at_100000"] = late;
    run.counters["growth"] = late / early;
  }
  run.counters["sentences/s"] = benchmark::Counter(kSentences, benchmark::Counter::kIsRate);
}

void register_all(Language& language) {
  const auto add = [&](const std::string& name, auto body, auto... arguments) {
    const auto bound = [&language, body, arguments...](benchmark::State& run) { body(run, language, arguments...); };
    return benchmark::RegisterBenchmark(name.c_str(), bound);
  };
  for (int right_words = 1; right_words <= kWordsToChoose; ++right_words) {
    const std::string about = "1" + std::string(static_cast<std::size_t>(right_words), '0');
    add("search_step/" + about, search_step, right_words)->UseManualTime()->Iterations(5)->Repetitions(5);
  }
  for (const int level : {0, 4}) {
    add("sentence/level:" + std::to_string(level), traced_sentence, level)
        ->Unit(benchmark::kMicrosecond)
        ->Repetitions(3);
  }
  add("long_run", long_run)->Iterations(1)->Unit(benchmark::kSecond);
}

}  // namespace
}  // namespace lexon

int main(int argc, char** argv) {
  lexon::session.output.redirect(std::fopen("/dev/null", "w"));
  lexon::Language language;
  if (!language.is_good || !lexon::steps_are_as_told(language)) return 1;
  lexon::register_all(language);
  return lexon::bench::run(
      argc, argv,
      {{"a step of 10 against one of 10,000", "search_step/10", "search_step/10000", 0.67, 1.5},
       {"a step of 100 against one of 10,000", "search_step/100", "search_step/10000", 0.67, 1.5},
       {"a step of 1,000 against one of 10,000", "search_step/1000", "search_step/10000", 0.67, 1.5},
       {"a sentence at trace level 4 against level 0", "sentence/level:4", "sentence/level:0"}});
}
