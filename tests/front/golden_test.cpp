// Whole runs: each folder of tests/golden holds entries.txt, rules.txt, input.txt, perhaps cr.txt (co-occurrence
// entries) and settings.txt (switches), about.txt (one line: what the case is for) and expected.txt. Bytes are
// compared; only the time figure is masked. Each case runs from the rule text, from its compiled files, and from the
// rules as they print, unless a file not_printable.txt says why their printed form cannot carry them.
//
// With LEXON_GOLDEN_UPDATE set, expected.txt is written anew from the first run: read every changed line.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "support/capture.hpp"
#include "support/program.hpp"

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> case_names() {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(LEXON_GOLDEN)) {
    if (entry.is_directory()) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// What comes behind the messages of the rule parser.
std::string from_first_sentence(const std::string& output) {
  if (output.rfind("[S", 0) == 0) return output;
  const std::size_t line_end = output.find("\n[S");
  return line_end == std::string::npos ? output : output.substr(line_end + 1);
}

class Golden : public ::testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    source_ = std::string(LEXON_GOLDEN) + "/" + GetParam();
    folder_ = fresh_folder("golden-" + GetParam());
    fs::copy_file(source_ + "/rules.txt", folder_ + "/rules.txt");
    build("entries.txt", "words.dic");
    if (fs::exists(source_ + "/cr.txt")) build("cr.txt", "cr.dic");
  }

  void build(const std::string& entries, const std::string& dictionary) {
    const ProgramResult built =
        run_program("lexon-dict", {"build", source_ + "/" + entries, folder_ + "/" + dictionary});
    ASSERT_EQ(built.exit_status, 0) << built.error;
  }

  std::vector<std::string> switches() const {
    std::vector<std::string> all;
    std::istringstream words(fs::exists(source_ + "/settings.txt") ? bytes_of(source_ + "/settings.txt") : "-L0 -N0");
    for (std::string word; words >> word;) all.push_back(word);
    if (fs::exists(source_ + "/cr.txt")) all.push_back("-C" + folder_ + "/cr.dic");
    return all;
  }

  // Renders with the rule file `rules` of the case's folder; the output, times masked.
  std::string render(const std::string& rules) const {
    std::vector<std::string> arguments = {folder_ + "/words.dic", folder_ + "/" + rules, source_ + "/input.txt",
                                          folder_ + "/output.txt", "--quiet"};
    for (const std::string& word : switches()) arguments.push_back(word);
    const ProgramResult run = run_program("lexon", arguments);
    EXPECT_TRUE(run.exit_status == 0 || run.exit_status == 3) << run.exit_status << "\n" << run.error;
    return mask_times(bytes_of(folder_ + "/output.txt"));
  }

  std::string source_;
  std::string folder_;
};

TEST_P(Golden, RendersAsExpected) {
  const std::string from_text = render("rules.txt");
  if (std::getenv("LEXON_GOLDEN_UPDATE") != nullptr) write_file(source_ + "/expected.txt", from_text);
  const std::string expected = bytes_of(source_ + "/expected.txt");
  EXPECT_EQ(from_text, expected);
  EXPECT_EQ(from_first_sentence(render("rules.txt")), from_first_sentence(expected)) << "from compiled files";
  if (fs::exists(source_ + "/not_printable.txt")) return;
  const ProgramResult printed = run_program("lexon-print-rules", {folder_ + "/rules.txt", folder_ + "/printed.txt"});
  ASSERT_EQ(printed.exit_status, 0) << printed.error;
  EXPECT_EQ(from_first_sentence(render("printed.txt")), from_first_sentence(expected)) << "from printed rules";
}

// The lines of an output that are sentences.
std::string sentences_of(const std::string& output) {
  std::istringstream lines(output);
  std::string sentences;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(";;", 0) != 0 && line.rfind("[S", 0) != 0) sentences += line + "\n";
  }
  return sentences;
}

TEST(Examples, EnglishReadsAsWritten) {
  const std::string source = LEXON_EXAMPLES "/english";
  const std::string folder = fresh_folder("english");
  fs::copy_file(source + "/rules.txt", folder + "/rules.txt");
  for (const char* name : {"entries", "cr"}) {
    const ProgramResult built =
        run_program("lexon-dict", {"build", source + "/" + name + ".txt", folder + "/" + name + ".dic"});
    ASSERT_EQ(built.exit_status, 0) << built.error;
  }
  const ProgramResult run =
      run_program("lexon", {folder + "/entries.dic", folder + "/rules.txt", source + "/input.txt", folder + "/out.txt",
                            "-L0", "-N0", "-C" + folder + "/cr.dic", "--quiet"});
  EXPECT_EQ(run.exit_status, 0) << run.error;
  EXPECT_EQ(sentences_of(bytes_of(folder + "/out.txt")), bytes_of(source + "/expected.txt"));
}

std::string case_name(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Cases, Golden, ::testing::ValuesIn(case_names()), case_name);

}  // namespace
}  // namespace lexon::test
