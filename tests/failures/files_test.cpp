// Files that fail: reads and writes refused in turn, disks that are full, folders in the place of files, damaged and
// foreign compiled files, and files that change between two sentences.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>

#include "data/pool.hpp"
#include "dict/index.hpp"
#include "front/command_line.hpp"
#include "run/driver.hpp"
#include "run/step.hpp"
#include "support/capture.hpp"
#include "support/grammar.hpp"
#include "support/program.hpp"
#include "whole_run.hpp"

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

// A folder with a dictionary, a co-occurrence dictionary, rules and three sentences; dog, cat and dog.
class Files : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = fresh_folder("files-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    write_file(path("entries.txt"), "[dog]{} \"dog\" (N);\n[cat]{} \"cat\" (N);\n");
    write_file(path("cr.txt"), "[dog]{} \"cat\" (N);\n");
    write_file(path("rules.txt"), "R{SHEAD:::}{:::}P1;\nR{N,^X:::}{STAIL:::}P1;\nR([a],b){^A:[x],+C:agn:<pat}{C:::}P7;\n");
    std::string input;
    for (const char* word : {"dog", "cat", "dog"}) {
      input += "[S:" + std::string(word) + "]\n[W]\n" + word + ".@entry\n[/W]\n[/S]\n";
    }
    write_file(path("input.txt"), input);
    fs::create_directory(path("temp"));
    for (const char* name : {"words", "cr"}) {
      const std::string entries = std::string(name) == "cr" ? "cr.txt" : "entries.txt";
      ASSERT_EQ(run_program("lexon-dict", {"build", path(entries), path(std::string(name) + ".dic")}).exit_status, 0);
    }
    // A program that is traced cannot look for leaks.
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
    setenv("TMPDIR", path("temp").c_str(), 1);
    expected_ = output_of(render());
    ASSERT_NE(expected_.find("cat\n"), std::string::npos) << expected_;
    rules_ = bytes_of(path("rules.rul"));
    matrix_ = bytes_of(path("rules.mtx"));
  }
  void TearDown() override {
    unsetenv("ASAN_OPTIONS");
    unsetenv("TMPDIR");
  }

  [[nodiscard]] std::string path(const std::string& name) const { return folder_ + "/" + name; }

  [[nodiscard]] std::vector<std::string> call() const {
    return {program_path("lexon"), path("words.dic"), path("rules.txt"), path("input.txt"), path("output.txt"), "--quiet", "-L0", "-N0", "-C" + path("cr.dic")};
  }
  [[nodiscard]] ProgramResult render() const { return under({}); }

  // The run as an argument of other programs.
  [[nodiscard]] ProgramResult under(std::vector<std::string> words) const {
    for (const std::string& word : call()) words.push_back(word);
    const std::string program = words.front();
    words.erase(words.begin());
    return run_program(program, words, folder_);
  }

  [[nodiscard]] std::string output_of(const ProgramResult& run) const { return run.exit_status == 1 ? "" : mask_times(bytes_of(path("output.txt"))); }

  void convert_anew() const {
    fs::remove(path("rules.rul"));
    fs::remove(path("rules.mtx"));
  }

  // A run that has been disturbed must say so, if it has not done all its work all the same; and what it leaves must
  // not disturb the next one.
  // `hits_all`: the disturbance may have hit messages and tidying up as well.
  void judge(const ProgramResult& run, bool hits_all = false) const {
    const std::string output = mask_times(bytes_of(path("output.txt")));
    switch (run.exit_status) {
      case 0: EXPECT_EQ(output, expected_) << run.error; break;
      case 1:
      case 4: EXPECT_TRUE(hits_all || !run.error.empty()); break;
      case 3: EXPECT_TRUE(output.find(";;Failed!") != std::string::npos || output.find(";;") == 0) << output; break;
      case 127: EXPECT_NE(run.error.find("loading shared libraries"), std::string::npos) << run.error; break;
      default: ADD_FAILURE() << "exit status " << run.exit_status << "\n" << run.error;
    }
    EXPECT_TRUE(fs::is_empty(path("temp")) || run.exit_status == 127 || hits_all);
    fs::remove_all(path("temp"));
    fs::create_directory(path("temp"));
    const ProgramResult next = render();
    EXPECT_EQ(next.exit_status, 0) << next.error;
    EXPECT_EQ(output_of(next), expected_);
  }

  std::string folder_;
  std::string expected_;
  std::string rules_;
  std::string matrix_;
};

// ---- system calls refused in turn

struct CallRow {
  const char* calls;  // as strace names them
  const char* fault;  // what becomes of one of them
  const char* file;   // of which file; null: of all, where no sanitizer needs files of its own
  bool converts;
};

class Calls : public Files, public ::testing::WithParamInterface<CallRow> {};

// strace makes the n-th call fail, for every n that a run comes to.
TEST_P(Calls, EachFailsInTurn) {
  const CallRow& row = GetParam();
  if (row.file == nullptr && kIsSanitized) GTEST_SKIP() << "the sanitizer reads files of its own";
  const std::string strace = "/usr/bin/strace";
  if (!fs::exists(strace)) GTEST_SKIP() << "no strace";
  if (run_program(strace, {"-o", path("trace"), "/bin/true"}).exit_status != 0) GTEST_SKIP() << "no tracing here";
  int number = 0;
  for (bool is_hit = true; is_hit && !HasFailure();) {
    SCOPED_TRACE(std::string(row.calls) + " no. " + std::to_string(++number));
    if (row.converts) convert_anew();
    std::vector<std::string> words = {strace,
                                      "-f",
                                      "-qq",
                                      "-o",
                                      path("trace"),
                                      "-e",
                                      "trace=" + std::string(row.calls),
                                      "-e",
                                      "inject=" + std::string(row.calls) + ":" + row.fault + ":when=" + std::to_string(number)};
    if (row.file != nullptr) words.insert(words.end(), {"-P", path(row.file)});
    const ProgramResult run = under(words);
    is_hit = bytes_of(path("trace")).find("(INJECTED)") != std::string::npos;
    judge(run, row.file == nullptr);
  }
  EXPECT_GT(number, 1) << "none of these calls is made";
  std::printf("%s: %d calls\n", row.calls, number - 1);
}

const CallRow kCallRows[] = {
    {"read", "error=EIO", "input.txt", false},   {"read", "error=EIO", "rules.txt", true},       {"read", "error=EIO", "rules.rul", false},
    {"read", "error=EIO", "rules.mtx", false},   {"pread64", "error=EIO", "words.dic", false},   {"pread64", "error=EIO", "words.idx", false},
    {"pread64", "retval=0", "words.dic", false}, {"pread64", "error=EINTR", "words.dic", false}, {"read", "retval=0", "rules.rul", false},
    {"read", "retval=0", "rules.mtx", false},    {"write", "error=ENOSPC", "output.txt", true},  {"read", "error=EIO", nullptr, true},
    {"write", "error=ENOSPC", nullptr, true},    {"openat", "error=EMFILE", nullptr, true},      {"linkat,rename,unlink", "error=EACCES", nullptr, true},
    {"fsync,flock", "error=EIO", nullptr, true},
};

std::string row_name(const ::testing::TestParamInfo<CallRow>& row) {
  std::string name = std::to_string(row.index) + "_" + row.param.calls;
  std::replace(name.begin(), name.end(), ',', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Files, Calls, ::testing::ValuesIn(kCallRows), row_name);

TEST(ShortReads, AreReadOn) {
  const RunCase golden("choice-pair");
  const RunCase::Result expected = golden.run(true);
  const ShortReads all_short;
  EXPECT_EQ(golden.run(true).output, expected.output);
}

// ---- disks that are full

// A file may grow to a limit and no further; every limit up to the size that the run needs.
TEST_F(Files, EveryLengthOfAFullDisk) {
  const std::size_t needed = std::max({bytes_of(path("output.txt")).size(), rules_.size(), matrix_.size()});
  for (std::size_t limit = 1; limit <= needed + 1 && !HasFailure(); limit += limit < 8 ? 1 : 23) {
    SCOPED_TRACE("limit " + std::to_string(limit));
    convert_anew();
    judge(under({"/usr/bin/prlimit", "--fsize=" + std::to_string(limit)}));
  }
}

TEST_F(Files, AnOutputThatIsCutShortIsTold) {
  const std::string message = "lexon: the output could not be written whole\n";
  const ProgramResult cut = under({"/usr/bin/prlimit", "--fsize=40"});
  EXPECT_EQ(cut.exit_status, 4);
  // Standard error is a file too.
  EXPECT_EQ(cut.error, message.substr(0, 40));
  std::vector<std::string> words = call();
  words[4] = "/dev/full";
  words.erase(words.begin());
  const ProgramResult full = run_program("lexon", words, folder_);
  EXPECT_EQ(full.exit_status, 4);
  EXPECT_EQ(full.error, message);
}

TEST_F(Files, TheDictionaryToolTellsOfAFullDisk) {
  std::string entries;
  for (int i = 0; i < 400; ++i) entries += "[word" + std::to_string(i) + "]{} \"c\" (N);\n";
  write_file(path("many.txt"), entries);
  const std::string tool = program_path("lexon-dict");
  ASSERT_EQ(run_program(tool, {"build", path("many.txt"), path("words.dic")}).exit_status, 0);
  const std::string before = bytes_of(path("words.dic")) + bytes_of(path("words.idx"));
  for (const char* limit : {"0", "1", "1023", "4095", "4096", "8192", "12288"}) {
#if defined(__SANITIZE_THREAD__)
    if (*limit == '0') continue;  // the sanitizer writes before the program can ask to be spared the signal
#endif
    const ProgramResult run = run_program("/usr/bin/prlimit", {std::string("--fsize=") + limit, tool, "build", path("many.txt"), path("words.dic")});
    EXPECT_EQ(run.exit_status, 1) << limit;
    EXPECT_EQ(bytes_of(path("words.dic")) + bytes_of(path("words.idx")), before) << limit;
  }
  const ProgramResult list = run_program("/usr/bin/prlimit", {"--fsize=200", tool, "list", path("words.dic")});
  EXPECT_EQ(list.exit_status, 4);
  EXPECT_EQ(list.error, "lexon-dict: the output could not be written whole\n");
  for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
    EXPECT_EQ(entry.path().filename().string().find("lexon-draft"), std::string::npos) << "a draft is left";
  }
}

// ---- folders in the place of files

// ---- compiled files that are damaged or belong to others

class Compiled : public Files {
 protected:
  // Runs without a text, with other bytes in a compiled file. The file `named` must be refused by its name.
  void run_with(const std::string& name, const std::string& bytes, const std::string& named) const {
    write_file(path("rules.rul"), rules_);
    write_file(path("rules.mtx"), matrix_);
    write_file(path(name), bytes);
    make_matrix_newer(path("rules"));
    std::vector<std::string> words = call();
    words.erase(words.begin());
    words[1] = path("rules.rul");
    const ProgramResult run = run_program("lexon", words, folder_);
    const std::string output = bytes_of(path("output.txt"));
    EXPECT_EQ(run.exit_status, 3) << run.error;
    EXPECT_EQ(output.find(";;the compiled rule "), 0U) << output;
    EXPECT_NE(output.find("\n;;in " + path(named) + "\n"), std::string::npos) << output;
  }

  static void make_matrix_newer(const std::string& stem) { fs::last_write_time(stem + ".mtx", fs::last_write_time(stem + ".rul") + std::chrono::seconds(1)); }
};

TEST_F(Compiled, ThoseOfOtherRulesAreNamedWhereCountsDisagree) {
  write_file(path("other.txt"), "R{SHEAD:::}{:::}P1;\n");
  std::vector<std::string> words = call();
  words.erase(words.begin());
  words[1] = path("other.txt");
  ASSERT_EQ(run_program("lexon", words).exit_status, 3) << "one rule is not enough";
  run_with("rules.mtx", bytes_of(path("other.mtx")), "rules.mtx");
  run_with("rules.rul", bytes_of(path("other.rul")), "rules.mtx");
}

}  // namespace
}  // namespace lexon::test
