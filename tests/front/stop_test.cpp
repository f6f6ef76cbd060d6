// Runs that do not come to their own end: over their time, cancelled, killed.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "support/capture.hpp"
#include "support/program.hpp"

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

// Ten words for every concept of a chain of nine, none of which may end a sentence: the search tries them all.
std::string entries() {
  std::string text = "[dog]{} \"dog\" (OK);\n[cat]{} \"cat\" (OK);\n";
  for (char concept_name = 'a'; concept_name <= 'i'; ++concept_name) {
    for (int word = 0; word < 10; ++word) {
      text += std::string("[") + concept_name + std::to_string(word) + "]{} \"" + concept_name + "\" (N);\n";
    }
  }
  return text;
}

constexpr const char* kRules = ":{N:::}\"N::nxt:\"P9;\nR{:::}{^STAIL:::}P5;\nR{OK:::}{STAIL:::}P1;\n";
constexpr const char* kDog = "[S:1]\n[W]\ndog.@entry\n[/W]\n[/S]\n";
constexpr const char* kChain =
    "[S:2]\nnxt(a.@entry,b)\nnxt(b,c)\nnxt(c,d)\nnxt(d,e)\nnxt(e,f)\nnxt(f,g)\nnxt(g,h)\nnxt(h,i)\n[/S]\n";
constexpr const char* kCat = "[S:3]\n[W]\ncat.@entry\n[/W]\n[/S]\n";

class Stop : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = fresh_folder(::testing::UnitTest::GetInstance()->current_test_info()->name());
    write_file(path("entries.txt"), entries());
    ASSERT_EQ(run_program("lexon-dict", {"build", path("entries.txt"), path("words.dic")}).exit_status, 0);
    write_file(path("rules.txt"), kRules);
    write_file(path("input.txt"), std::string(kDog) + kChain + kCat);
    // A program that is killed while it sorts leaves its files.
    setenv("TMPDIR", folder_.c_str(), 1);
  }
  void TearDown() override { unsetenv("TMPDIR"); }

  [[nodiscard]] std::string path(const std::string& name) const { return folder_ + "/" + name; }
  [[nodiscard]] std::string output() const { return mask_times(bytes_of(path("output.txt"))); }

  [[nodiscard]] std::vector<std::string> arguments(const std::vector<std::string>& switches) const {
    std::vector<std::string> words = {
        path("words.dic"), path("rules.txt"), path("input.txt"), path("output.txt"), "--quiet", "-L0", "-N0"};
    words.insert(words.end(), switches.begin(), switches.end());
    return words;
  }

  void wait_for_output(const std::string& text) const {
    while (bytes_of(path("output.txt")).find(text) == std::string::npos) usleep(1000);
  }

  std::string folder_;
};

TEST_F(Stop, ASentenceOverItsTimeGivesWayToTheNext) {
  EXPECT_EQ(run_program("lexon", arguments({"-T1"})).exit_status, 3);
  EXPECT_EQ(output(), "[S:1]\ndog\n;;Time ?\tSec\n;;Done!\n[S:2]\n;;Time Over!\n[S:3]\ncat\n;;Time ?\tSec\n;;Done!\n");
}

// A list that grows without end: the stop comes in the middle of a line or between two, never with a half line behind.
TEST_F(Stop, AStoppedSentenceEndsWithAWholeLineAndItsBanner) {
  write_file(path("rules.txt"), ":{SHEAD:::}\"[of ]:::\"P40;\nR{:::}{:::}P2;\n");
  write_file(path("input.txt"), kDog);
  EXPECT_EQ(run_program("lexon", arguments({"-L2", "-T1"})).exit_status, 3);
  const std::string text = output();
  const std::size_t banner = text.rfind(";;Time Over!\n");
  ASSERT_NE(banner, std::string::npos);
  EXPECT_EQ(text.substr(banner), ";;Time Over!\n");
  const std::size_t list = text.rfind("\n/") + 1;
  const std::string line = text.substr(list, text.find('\n', list) - list);
  EXPECT_TRUE(line.ends_with(">>/")) << line.substr(line.size() < 40 ? 0 : line.size() - 40);
}

TEST_F(Stop, ASignalCancelsTheRun) {
  for (const int signal : {SIGINT, SIGTERM}) {
    fs::remove(path("output.txt"));
    const int process = start_program("lexon", arguments({}));
    wait_for_output("[S:2]");
    ASSERT_EQ(kill(process, signal), 0);
    EXPECT_EQ(wait_for_program(process), 130);
    EXPECT_EQ(output(), "[S:1]\ndog\n;;Time ?\tSec\n;;Done!\n[S:2]\n;;Cancelled!\n");
    EXPECT_TRUE(fs::exists(path("rules.rul"))) << "they were whole";
  }
}

// Rules enough for a conversion that takes its time.
std::string many_rules() {
  std::string text = kRules;
  for (int i = 0; i < 4000; ++i) text += "R{A" + std::to_string(i) + ":::}{B" + std::to_string(i % 97) + ":::}P3;\n";
  return text;
}

// A conversion leaves no compiled files; where only the matrix is made anew, the rules stay.
TEST_F(Stop, ACancelledRuleStepLeavesNothingHalfDone) {
  write_file(path("rules.txt"), many_rules());
  for (const bool converts : {true, false}) {
    if (!converts) {
      ASSERT_EQ(run_program("lexon", arguments({"-R"})).exit_status, 0);
      fs::remove(path("rules.mtx"));
    }
    const int process = start_program("lexon", arguments({}));
    while (!fs::exists(path("rules.mtx"))) usleep(100);
    ASSERT_EQ(kill(process, SIGINT), 0);
    EXPECT_EQ(wait_for_program(process), 130);
    if (output() != ";;Cancelled!\n") GTEST_SKIP() << "the step was over before the signal came";
    EXPECT_EQ(fs::exists(path("rules.rul")), !converts);
    EXPECT_EQ(fs::exists(path("rules.mtx")), !converts) << "emptied, and older than the rules";
    const auto files = std::distance(fs::directory_iterator(folder_), fs::directory_iterator());
    EXPECT_EQ(files, converts ? 6 : 8) << "nothing else is left";
  }
}

// Whenever a conversion is killed, the next run makes the same compiled files and the same sentences.
TEST_F(Stop, AKilledConversionLeavesNothingThatIsTakenForWhole) {
  write_file(path("rules.txt"), many_rules());
  write_file(path("input.txt"), kDog);
  ASSERT_EQ(run_program("lexon", arguments({})).exit_status, 0);
  const std::string rules = bytes_of(path("rules.rul"));
  const std::string matrix = bytes_of(path("rules.mtx"));
  for (int delay = 0; delay < 60; delay += 2) {
    fs::remove(path("rules.rul"));
    fs::remove(path("rules.mtx"));
    const int process = start_program("lexon", arguments({}));
    usleep(static_cast<unsigned>(delay) * 1000);
    kill(process, SIGKILL);
    static_cast<void>(wait_for_program(process));
    EXPECT_EQ(run_program("lexon", arguments({})).exit_status, 0) << delay;
    EXPECT_EQ(output(), "[S:1]\ndog\n;;Time ?\tSec\n;;Done!\n") << delay;
    EXPECT_EQ(bytes_of(path("rules.rul")), rules) << delay;
    EXPECT_EQ(bytes_of(path("rules.mtx")), matrix) << delay;
  }
}

}  // namespace
}  // namespace lexon::test
