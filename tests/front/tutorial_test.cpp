// The manual: what it shows is what the files hold and what the programs print. Each folder of docs/tutorial and of
// docs/snippets is a run: entries.txt, rules.txt, input.txt, perhaps cr.txt (co-occurrence entries), and expected.txt,
// the output at level 0 without its time lines. In a page of docs/ a comment in front of a code block says whose
// lines the block holds, one behind the other:
//
//   <!-- file tutorial/step1/rules.txt -->        the lines of a file
//   <!-- run tutorial/step1 -L2 -S1 -->           the output of a folder's run with these switches
//
// A line "..." in a block stands for any lines that are left out. With LEXON_GOLDEN_UPDATE set, expected.txt is written
// anew: read every changed line.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "support/capture.hpp"
#include "support/program.hpp"

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

std::string path_of(const std::string& in_docs) {
  return std::string(LEXON_DOCS) + "/" + in_docs;
}

Lines lines_of(const std::string& text) {
  std::istringstream stream(text);
  Lines lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// What a folder's run prints, without its time lines.
std::string output_of(const std::string& in_docs, const Lines& switches) {
  const std::string source = path_of(in_docs);
  const std::string folder = fresh_folder("manual");
  fs::copy_file(source + "/rules.txt", folder + "/rules.txt");
  Lines arguments = {
      folder + "/entries.dic", folder + "/rules.txt", source + "/input.txt", folder + "/out.txt", "--quiet", "-T20"};
  for (const char* name : {"entries", "cr"}) {
    const std::string entries = source + "/" + name + ".txt";
    if (!fs::exists(entries)) continue;
    const std::string dictionary = folder + "/" + name + ".dic";
    const ProgramResult built = run_program("lexon-dict", {"build", entries, dictionary});
    EXPECT_EQ(built.exit_status, 0) << built.error;
    if (std::string(name) == "cr") arguments.push_back("-C" + dictionary);
  }
  arguments.insert(arguments.end(), switches.begin(), switches.end());
  const ProgramResult run = run_program("lexon", arguments);
  EXPECT_TRUE(run.exit_status == 0 || run.exit_status == 3) << run.exit_status << "\n" << run.error;
  const std::string output = bytes_of(folder + "/out.txt");
  fs::remove_all(folder);
  return std::regex_replace(output, std::regex(";;Time +[0-9.]+\tSec\n"), "");
}

// A code block of a page, and the words of the comment in front of it.
struct Block {
  Lines source;
  Lines lines;
  std::size_t page_line;
};

std::vector<Block> marked_blocks(const std::string& page) {
  const std::regex mark("<!-- ((file|run) .*) -->");
  std::vector<Block> blocks;
  const Lines lines = lines_of(bytes_of(path_of(page)));
  std::smatch found;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!std::regex_match(lines[i], found, mark)) continue;
    Block block{{}, {}, i + 1};
    std::istringstream words(found[1]);
    for (std::string word; words >> word;) block.source.push_back(word);
    while (++i < lines.size() && lines[i].rfind("```", 0) != 0) {
    }
    while (++i < lines.size() && lines[i].rfind("```", 0) != 0) block.lines.push_back(lines[i]);
    blocks.push_back(block);
  }
  return blocks;
}

// The lines that a block is to be found in. Runs are made once.
Lines source_lines(const Block& block, std::map<std::string, Lines>& runs) {
  if (block.source[0] == "file") return lines_of(bytes_of(path_of(block.source[1])));
  std::string key;
  for (const std::string& word : block.source) key += word + " ";
  if (runs.count(key) == 0) {
    runs[key] = lines_of(output_of(block.source[1], Lines(block.source.begin() + 2, block.source.end())));
  }
  return runs[key];
}

// The first line of the block that breaks the order of the source; none if all is as it should be.
std::string first_stray_line(const Lines& block, const Lines& source) {
  auto from = source.begin();
  for (auto piece = block.begin(); piece != block.end();) {
    const auto end = std::find(piece, block.end(), "...");
    from = std::search(from, source.end(), piece, end);
    if (from == source.end() && piece != end) {
      const auto stray = std::find_if(
          piece, end, [&](const auto& line) { return std::find(source.begin(), source.end(), line) == source.end(); });
      return "\"" + (stray == end ? *piece + "\" and the lines behind it" : *stray + "\"");
    }
    from += end - piece;
    piece = end == block.end() ? end : end + 1;
  }
  return "";
}

Lines pages() {
  Lines names;
  for (const fs::directory_entry& entry : fs::directory_iterator(LEXON_DOCS)) {
    if (entry.path().extension() == ".md") names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

Lines runs() {
  Lines folders;
  for (const char* place : {"snippets", "tutorial"}) {
    for (const fs::directory_entry& entry : fs::directory_iterator(path_of(place))) {
      if (fs::exists(entry.path() / "input.txt")) folders.push_back(place + ("/" + entry.path().filename().string()));
    }
  }
  std::sort(folders.begin(), folders.end());
  return folders;
}

class ManualPage : public ::testing::TestWithParam<std::string> {};

TEST_P(ManualPage, ShowsWhatIsThere) {
  std::map<std::string, Lines> runs;
  for (const Block& block : marked_blocks(GetParam())) {
    ASSERT_FALSE(block.lines.empty()) << GetParam() << ":" << block.page_line;
    const std::string stray = first_stray_line(block.lines, source_lines(block, runs));
    EXPECT_EQ(stray, "") << GetParam() << ":" << block.page_line;
  }
}

TEST_P(ManualPage, HasASourceForEachDiagram) {
  const std::string text = bytes_of(path_of(GetParam()));
  const std::regex image("\\]\\(images/([a-z-]+)\\.svg\\)");
  for (std::sregex_iterator found(text.begin(), text.end(), image), end; found != end; ++found) {
    EXPECT_TRUE(fs::exists(path_of("diagrams/" + (*found)[1].str() + ".dot"))) << (*found)[1];
  }
}

class ManualRun : public ::testing::TestWithParam<std::string> {};

TEST_P(ManualRun, PrintsAsExpected) {
  const std::string output = output_of(GetParam(), {"-L0", "-N0"});
  const std::string expected = path_of(GetParam() + "/expected.txt");
  if (std::getenv("LEXON_GOLDEN_UPDATE") != nullptr) write_file(expected, output);
  EXPECT_EQ(output, bytes_of(expected));
}

// A reader who types what the page shows, step by step, has the files of the last step.
TEST(Tutorial, ShowsEveryLineOfItsFiles) {
  std::map<std::string, std::set<std::string>> shown;
  for (const Block& block : marked_blocks("tutorial.md")) {
    if (block.source[0] == "file") shown[block.source[1]].insert(block.lines.begin(), block.lines.end());
  }
  for (int step = 1; fs::exists(path_of("tutorial/step" + std::to_string(step))); ++step) {
    for (const char* name : {"entries.txt", "rules.txt", "cr.txt", "input.txt"}) {
      const std::string file = "tutorial/step" + std::to_string(step) + "/" + name;
      const std::string before = path_of("tutorial/step" + std::to_string(step - 1) + "/" + name);
      if (!fs::exists(path_of(file))) continue;
      std::set<std::string> known = shown[file];
      if (fs::exists(before)) {
        for (const std::string& line : lines_of(bytes_of(before))) known.insert(line);
      }
      for (const std::string& line : lines_of(bytes_of(path_of(file)))) {
        EXPECT_TRUE(line.empty() || known.count(line) != 0) << file << ": " << line;
      }
    }
  }
}

TEST(ExamplesPage, QuotesSentencesOfTheExamples) {
  std::set<std::string> sentences;
  for (const char* folder : {"english", "stories/english", "stories/german"}) {
    const Lines lines = lines_of(bytes_of(std::string(LEXON_EXAMPLES) + "/" + folder + "/expected.txt"));
    sentences.insert(lines.begin(), lines.end());
  }
  const std::string page = bytes_of(path_of("examples.md"));
  const std::regex quote("\\| \\*([^*|]+[.?])\\*");
  std::sregex_iterator found(page.begin(), page.end(), quote);
  ASSERT_NE(found, std::sregex_iterator());
  for (; found != std::sregex_iterator(); ++found) EXPECT_EQ(sentences.count((*found)[1]), 1U) << (*found)[1];
}

std::string test_name(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Pages, ManualPage, ::testing::ValuesIn(pages()), test_name);
INSTANTIATE_TEST_SUITE_P(Runs, ManualRun, ::testing::ValuesIn(runs()), test_name);

}  // namespace
}  // namespace lexon::test
