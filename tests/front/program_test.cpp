// The console program from outside: messages, exit statuses, and what becomes of the compiled rule files.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/capture.hpp"
#include "support/program.hpp"

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kEntries = "[dog]{} \"dog\" (N);\n[cat]{} \"cat\" (N);\n";
constexpr const char* kRules = "R{SHEAD:::}{:::}P1;\nR{N:::}{STAIL:::}P1;\n";
constexpr const char* kTwoSentences = "[S:1]\n[W]\ndog.@entry\n[/W]\n[/S]\n[S:2]\n[W]\ncat.@entry\n[/W]\n[/S]\n";

class Program : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = fresh_folder(::testing::UnitTest::GetInstance()->current_test_info()->name());
    write_file(path("entries.txt"), kEntries);
    const ProgramResult built = run_program("lexon-dict", {"build", path("entries.txt"), path("words.dic")});
    ASSERT_EQ(built.exit_status, 0) << built.error;
    write_file(path("rules.txt"), kRules);
    write_file(path("input.txt"), kTwoSentences);
  }

  [[nodiscard]] std::string path(const std::string& name) const { return folder_ + "/" + name; }
  [[nodiscard]] std::string output() const { return mask_times(bytes_of(path("output.txt"))); }

  // Renders with the usual files, but for those that `changed` names: dictionary, rules, input, output.
  ProgramResult render(const std::vector<std::string>& switches, const std::vector<std::string>& changed = {}) const {
    std::vector<std::string> words = {path("words.dic"), path("rules.txt"), path("input.txt"), path("output.txt")};
    for (std::size_t i = 0; i < changed.size(); ++i) {
      if (!changed[i].empty()) words[i] = changed[i];
    }
    words.insert(words.end(), switches.begin(), switches.end());
    words.push_back("--quiet");
    return run_program("lexon", words, folder_);
  }

  // The file's time in seconds, set or asked.
  void set_time(const std::string& name, long seconds) const {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path(name).c_str(), times, 0), 0) << name;
  }
  [[nodiscard]] bool is_older_than(const std::string& name, long seconds) const {
    struct stat status {};
    return stat(path(name).c_str(), &status) == 0 && status.st_mtim.tv_sec <= seconds;
  }

  std::string folder_;
};

TEST_F(Program, RendersEverySentence) {
  const ProgramResult run = render({"-L0", "-N0"});
  EXPECT_EQ(run.exit_status, 0) << run.error;
  EXPECT_EQ(output(), "[S:1]\ndog\n;;Time ?\tSec\n;;Done!\n[S:2]\ncat\n;;Time ?\tSec\n;;Done!\n");
}

TEST_F(Program, StartAndNumberOfSentences) {
  const char* second = "[S:2]\ncat\n;;Time ?\tSec\n;;Done!\n";
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"-S2", "-N5"}, second},
      {{"-S2", "-N0"}, second},
      {{"-S3"}, ""},
      {{"-N1"}, "[S:1]\ndog\n;;Time ?\tSec\n;;Done!\n"},
      {{"-Rules"}, ""},
  };
  for (const auto& [switches, expected] : rows) {
    std::vector<std::string> all = {"-L0"};
    all.insert(all.end(), switches.begin(), switches.end());
    EXPECT_EQ(render(all).exit_status, 0) << switches[0];
    EXPECT_EQ(output(), expected) << switches[0];
  }
}

TEST_F(Program, SkippingCountsOtherEndMarksThanReading) {
  write_file(path("input.txt"), "[S:1]\n[/T]\n [/S]\n[S:2]\n[W]\ncat.@entry\n[/W]\n[/S]\n");
  EXPECT_EQ(render({"-L0", "-S2"}).exit_status, 3) << "the rest of the first sentence is empty";
  EXPECT_EQ(output(), ";;SEM is Empty\n;;Failed!\n");
}

TEST_F(Program, WrongCommandLines) {
  const std::vector<std::string> rows[] = {{"-X"}, {"fifth"}, {"--other"}, {"^"}};
  for (const std::vector<std::string>& switches : rows) {
    const ProgramResult run = render(switches);
    EXPECT_EQ(run.exit_status, 2) << switches[0];
    EXPECT_NE(run.error.find("usage: lexon"), std::string::npos) << switches[0];
    EXPECT_FALSE(fs::exists(path("output.txt"))) << switches[0];
  }
  EXPECT_EQ(run_program("lexon", {}).exit_status, 2);
  EXPECT_EQ(run_program("lexon", {"--help"}).exit_status, 0);
  EXPECT_EQ(run_program("lexon", {"--version"}).out.substr(0, 6), "lexon ");
}

TEST_F(Program, ARunThatCannotStartSaysWhy) {
  fs::create_directory(path("folder"));
  write_file(path("no.dic"), "not a dictionary");
  fs::copy_file(path("words.dic"), path("folder/words.dic"));
  const std::string none = path("none");
  struct Row {
    std::vector<std::string> files;
    std::string message;
  };
  const Row rows[] = {
      {{"", "", "", path("folder")}, "Can't Open Output File : " + path("folder") + "!"},
      {{none}, "Can't Open Dictionary File : " + none + "!"},
      {{path("folder")}, "Can't Open Dictionary File : " + path("folder") + "!"},
      {{path("no.dic")}, "CW : No Index in Dictionary File : " + path("no.dic") + "!"},
      {{path("folder/words.dic")}, "Can't Open Dictionary Index File : " + path("folder/words.dic") + "!"},
      {{"", "", none}, "Can't Open Input File : " + none + "!"},
      {{"", none}, "Can't Open Generation Rule : " + none + "!"},
      {{"", path("none.rul")}, "Can't Open Generation Rule : " + path("none.rul") + "!"},
      {{"", path("none.mtx")}, "Can't Open Generation Rule : " + path("none.mtx") + "!"},
  };
  for (const Row& row : rows) {
    const ProgramResult run = render({}, row.files);
    EXPECT_EQ(run.exit_status, 1) << row.message;
    EXPECT_EQ(run.error.substr(0, row.message.size()), row.message);
  }
  fs::copy_file(path("rules.txt"), path("rules.mtx"));
  EXPECT_EQ(render({}, {"", path("rules.mtx")}).error, "Please assign rule file with extension \".rul\" or \".txt\"\n");
  EXPECT_EQ(bytes_of(path("output.txt")), "") << "the output has been emptied first of all";
  fs::remove(path("rules.mtx"));
  fs::create_directory(path("rules.mtx"));
  const auto files = [this] { return std::distance(fs::directory_iterator(folder_), fs::directory_iterator()); };
  const auto before = files();
  EXPECT_TRUE(render({}).error.starts_with("Can't Open Generation Rule : " + path("rules.mtx") + "! (Is a directory)\n"));
  EXPECT_EQ(files(), before) << "a draft is left";
}

TEST_F(Program, AMissingCooccurrenceDictionaryIsAskedFor) {
  const std::string question = "Can't Open Cooccurrence Dictionary File : " + path("none.dic") + "! continue?";
  const ProgramResult refused = render({"-L0", "-C" + path("none.dic")});
  EXPECT_EQ(refused.exit_status, 1);
  EXPECT_EQ(refused.error.substr(0, question.size()), question);
  EXPECT_EQ(output(), "");
  EXPECT_EQ(render({"-L0", "-C" + path("none.dic"), "--yes"}).exit_status, 0);
  EXPECT_NE(output().find("dog"), std::string::npos);
}

TEST_F(Program, ADamagedDictionaryIsToldOf) {
  fs::resize_file(path("words.dic"), 4096);
  EXPECT_EQ(render({"-L0", "-N0"}).exit_status, 1) << "it is not the file that was built with its index";
  fs::remove(path("words.idx.stamp"));
  const ProgramResult run = render({"-L0", "-N0"});
  EXPECT_EQ(run.error, "lexon: " + path("words.dic") +
                           ": damaged at offset 8192; damaged blocks were met 2 times in all; "
                           "\"lexon-dict check\" tells more\n");
  EXPECT_NE(output().find(";;Failed!"), std::string::npos) << output();
}

TEST_F(Program, EveryByteOfADictionaryIsComparedWhereThatIsAskedFor) {
  EXPECT_EQ(render({"-L0", "--check-dictionary"}).exit_status, 0);
  // A pair of which the ends are as they were built.
  std::string entries;
  for (int i = 0; i < 200; ++i) entries += "[w" + std::to_string(i) + "]{} " + std::string(1000, 'g') + " \"w\" (N);\n";
  write_file(path("entries.txt"), kEntries + entries);
  ASSERT_EQ(run_program("lexon-dict", {"build", path("entries.txt"), path("words.dic")}).exit_status, 0);
  std::string bytes = bytes_of(path("words.dic"));
  bytes[100000] ^= 1;
  write_file(path("words.dic"), bytes);
  EXPECT_EQ(render({"-L0"}).exit_status, 0);
  const ProgramResult run = render({"-L0", "--check-dictionary"});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_EQ(run.error.find("Can't Open Dictionary Index File : " + path("words.dic") + "!\n"), 0U) << run.error;
  EXPECT_NE(run.error.find("words.dic: is not the file that was built with "), std::string::npos) << run.error;
}

TEST_F(Program, TwoKindsOfIndexNamesInOneRunAreToldOf) {
  ASSERT_EQ(run_program("lexon-dict", {"build", path("entries.txt"), path("long_name_of_pairs.dic")}).exit_status, 0);
  const ProgramResult run = render({"-L0", "-C" + path("long_name_of_pairs.dic")});
  EXPECT_EQ(run.exit_status, 3);
  EXPECT_EQ(run.error.find("lexon: " + path("words.dic") + " and " + path("long_name_of_pairs.dic") + ": "), 0U)
      << run.error;
}

TEST_F(Program, AFailedSentenceShowsInTheExitStatusAndTheNextOneIsRendered) {
  write_file(path("input.txt"), std::string("[S:0]\n[/S]\n") + kTwoSentences);
  EXPECT_EQ(render({"-L0", "-N2"}).exit_status, 3);
  EXPECT_EQ(output(), "[S:0]\n;;SEM is Empty\n;;Failed!\n[S:1]\ndog\n;;Time ?\tSec\n;;Done!\n");
}

TEST_F(Program, WithoutRulesNoSentenceIsReadAndNoRunIsEndless) {
  write_file(path("rules.txt"), "; nothing\n");
  EXPECT_EQ(render({"-L0", "-N0"}).exit_status, 3);
  EXPECT_EQ(output(), ";;Failed!\n");
  EXPECT_EQ(render({"-L0", "-N3"}).exit_status, 3);
  EXPECT_EQ(output(), ";;Failed!\n;;Failed!\n;;Failed!\n");
}

TEST_F(Program, RuleErrorsAreReportedAndTheOtherRulesStand) {
  write_file(path("rules.txt"), std::string("Z{}{}P1;\n") + kRules);
  EXPECT_EQ(render({"-L0"}).exit_status, 0);
  EXPECT_EQ(output(), ";;Z{}{}P1;\n;;ERR(0,1) in TYPE\n[S:1]\ndog\n;;Time ?\tSec\n;;Done!\n");
}

// A failure on the last line alone fails the conversion: the compiled files stay empty and nothing matches.
TEST_F(Program, AFailureOnTheLastLineFailsTheConversion) {
  write_file(path("rules.txt"), std::string(kRules) + "R{a)}{}P1;\n");
  EXPECT_EQ(render({"-L0"}).exit_status, 3);
  EXPECT_EQ(bytes_of(path("rules.rul")), "");
  EXPECT_EQ(bytes_of(path("rules.mtx")), "");
  EXPECT_NE(output().find(";;return code -2\n;;Failed!\n"), std::string::npos) << output();
}

// Which compiled files a run makes anew, by the times of the files before it.
TEST_F(Program, CompiledFilesAreReusedByTheirDates) {
  constexpr long kOld = 1'000'000'000;
  struct Row {
    const char* name;
    const char* rule_file;
    long text, rules, matrix;  // times beyond kOld; -1: the file is missing
    bool rules_anew, matrix_anew;
  };
  const Row rows[] = {
      {"all current", "rules.txt", 0, 1, 2, false, false},
      {"all of one time", "rules.txt", 0, 0, 0, false, false},
      {"text newer", "rules.txt", 2, 1, 3, true, true},
      {"rules missing", "rules.txt", 0, -1, 2, true, true},
      {"matrix older", "rules.txt", 0, 2, 1, false, true},
      {"matrix missing", "rules.txt", 0, 1, -1, false, true},
      {"compiled rules named", "rules.rul", 9, 1, 2, false, false},
      {"compiled rules named, matrix older", "rules.rul", 9, 2, 1, false, true},
      {"compiled rules named, matrix missing", "rules.rul", 9, 2, -1, false, true},
  };
  ASSERT_EQ(render({"-Rules"}).exit_status, 0);
  const std::string rules = bytes_of(path("rules.rul"));
  const std::string matrix = bytes_of(path("rules.mtx"));
  for (const Row& row : rows) {
    const auto place = [&](const char* name, const std::string& bytes, long time) {
      fs::remove(path(name));
      if (time < 0) return;
      write_file(path(name), bytes);
      set_time(name, kOld + time);
    };
    place("rules.txt", kRules, row.text);
    place("rules.rul", rules, row.rules);
    place("rules.mtx", matrix, row.matrix);
    EXPECT_EQ(render({"-L0"}, {"", path(row.rule_file)}).exit_status, 0) << row.name;
    EXPECT_EQ(!is_older_than("rules.rul", kOld + 100), row.rules_anew) << row.name;
    EXPECT_EQ(!is_older_than("rules.mtx", kOld + 100), row.matrix_anew) << row.name;
    EXPECT_EQ(bytes_of(path("rules.rul")), rules) << row.name;
    EXPECT_EQ(bytes_of(path("rules.mtx")), matrix) << row.name;
    EXPECT_NE(output().find("dog"), std::string::npos) << row.name;
  }
}

TEST_F(Program, AnEmptyCompiledFileIsMadeAnewFromItsText) {
  write_file(path("rules.rul"), "");
  EXPECT_EQ(render({"-L0"}).exit_status, 0);
  EXPECT_NE(bytes_of(path("rules.rul")), "");
}

TEST_F(Program, TwoCharacterLineEndsReadAsOne) {
  const auto with_two = [](std::string text) {
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) text.insert(at, 1, '\r');
    return text;
  };
  write_file(path("rules.txt"), with_two(kRules));
  write_file(path("input.txt"), with_two(kTwoSentences));
  EXPECT_EQ(render({"-L0", "-N0"}).exit_status, 0);
  EXPECT_EQ(output(), "[S:1]\ndog\n;;Time ?\tSec\n;;Done!\n[S:2]\ncat\n;;Time ?\tSec\n;;Done!\n");
}

}  // namespace
}  // namespace lexon::test
