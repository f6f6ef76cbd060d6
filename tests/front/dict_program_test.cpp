// The dictionary program from outside: what it prints where, and its exit statuses.

#include <gtest/gtest.h>

#include <filesystem>

#include "support/capture.hpp"
#include "support/program.hpp"

namespace lexon::test {
namespace {

constexpr const char* kEntries =
    "; two words\n[ran]{} \"run(agt>thing)\" (V,PAST) <E,1,5>;\n[runs]{} \"run(agt>thing)\" (V,PRES) <E,1,9>;\r\n";
constexpr const char* kRan = "[ran]{} \"run(agt>thing)\" (V,PAST) <E,1,5>;\n";
constexpr const char* kRuns = "[runs]{} \"run(agt>thing)\" (V,PRES) <E,1,9>;\n";

class DictProgram : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = fresh_folder(::testing::UnitTest::GetInstance()->current_test_info()->name());
    write_file(folder_ + "/entries.txt", kEntries);
    write_file(folder_ + "/bad.txt", std::string("bad\n") + kRan);
    ASSERT_EQ(run({"build", "entries.txt", "words.dic"}).exit_status, 0);
  }

  [[nodiscard]] ProgramResult run(const std::vector<std::string>& words) const {
    return run_program("lexon-dict", words, folder_);
  }

  std::string folder_;
};

struct Call {
  std::vector<std::string> words;
  int exit_status;
  std::string out;
  std::string error;
};

TEST_F(DictProgram, PrintsAndExits) {
  const Call calls[] = {
      {{"build", "entries.txt", "words.dic"},
       0,
       "2 entries in words.dic (3 blocks), index in words.idx (2 blocks)\n",
       ""},
      {{"build", "entries.txt", "k.dic", "--keys", "id,extra1", "--memory", "1"},
       0,
       "2 entries in k.dic (5 blocks), index in k.idx (4 blocks)\n",
       ""},
      {{"build", "bad.txt", "bad.dic"},
       1,
       "",
       "bad.txt:1: an entry begins with \"[\"\nbad.txt: 1 bad line, nothing has been built\n"},
      {{"build", "--skip-bad", "bad.txt", "bad.dic"},
       0,
       "1 entry in bad.dic (3 blocks), index in bad.idx (2 blocks), 1 bad line left out\n",
       "bad.txt:1: an entry begins with \"[\"\n"},
      {{"build", "none.txt", "none.dic"}, 1, "", "none.txt: cannot be opened\n"},
      {{"list", "words.dic"}, 0, std::string(kRan) + kRuns, ""},
      {{"list", "none.dic"}, 1, "", "none.dic: cannot be opened: No such file or directory\n"},
      {{"find", "words.dic", "--hw", "ran"}, 0, kRan, ""},
      {{"find", "words.dic", "--cw", "run(agt>thing)"}, 0, std::string(kRuns) + kRan, ""},
      {{"find", "words.dic", "--hw", "run"}, 1, "", "nothing is found\n"},
      {{"find", "words.dic", "--hw", ""}, 1, "", "nothing is found\n"},
      {{"find", "words.dic", "--hw=-"}, 1, "", "nothing is found\n"},
      {{"check", "words.dic"}, 0, "words.dic: sound: 2 entries, each found once by each of 3 keys\n", ""},
      {{"check", "entries.txt"},
       1,
       "",
       "entries.txt: offset 0: not a dictionary: the file is shorter than its header\n"},
  };
  for (const Call& call : calls) {
    const ProgramResult result = run(call.words);
    const std::string name = ::testing::PrintToString(call.words);
    EXPECT_EQ(result.exit_status, call.exit_status) << name;
    EXPECT_EQ(result.out, call.out) << name;
    EXPECT_EQ(result.error, call.error) << name;
  }
}

TEST_F(DictProgram, CheckCountsDamage) {
  std::filesystem::resize_file(folder_ + "/words.idx", 1024);
  std::filesystem::remove(folder_ + "/words.idx.stamp");
  const ProgramResult result = run({"check", "words.dic"});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_EQ(result.out, "words.dic: damaged in 2 places\n");
  EXPECT_EQ(result.error,
            "words.dic: offset 47: a slot without a tree\nwords.dic: offset 8192: a block that no tree leads to\n");
}

TEST_F(DictProgram, WrongCommandLines) {
  const std::vector<std::string> rows[] = {
      {},
      {"make"},
      {"build", "entries.txt"},
      {"build", "entries.txt", "a.dic", "third"},
      {"build", "entries.txt", "a.dic", "--keys", "attrs"},
      {"build", "entries.txt", "a.dic", "--memory", "0"},
      {"find", "words.dic"},
      {"find", "words.dic", "--hw", "a", "--cw", "b"},
      {"list"},
      {"check", "words.dic", "--all"},
  };
  for (const std::vector<std::string>& words : rows) {
    const ProgramResult result = run(words);
    EXPECT_EQ(result.exit_status, 2) << ::testing::PrintToString(words);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.error, "");
  }
  EXPECT_FALSE(std::filesystem::exists(folder_ + "/a.dic"));
  EXPECT_EQ(run({"--version"}).out.substr(0, 11), "lexon-dict ");
  for (const char* command : {"build", "list", "find", "check"}) EXPECT_EQ(run({command, "--help"}).exit_status, 0);
}

}  // namespace
}  // namespace lexon::test
