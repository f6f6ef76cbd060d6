// The stories: one file of graphs, rendered by every language of examples/stories (a folder with rules.txt). A sentence
// must come out as written, wherever it stands in the file and in whatever order its relations stand. What a language
// cannot hold to that is named in its folder, in order.txt: the number of the sentence, and the reason.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <sstream>

#include "support/capture.hpp"
#include "support/program.hpp"

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

using Sentences = std::map<int, std::string>;

std::vector<std::string> lines_of(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> languages() {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(LEXON_STORIES)) {
    if (fs::exists(entry.path() / "rules.txt")) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// The lines of each sentence: its tag, its relations, its end.
std::vector<std::vector<std::string>> graphs() {
  std::vector<std::vector<std::string>> all;
  bool inside = false;
  for (const std::string& line : lines_of(bytes_of(LEXON_STORIES "/input.txt"))) {
    if (line.empty() || line[0] == ';') continue;
    if (line.rfind("[S", 0) == 0) {
      all.emplace_back();
      inside = true;
    }
    if (inside) all.back().push_back(line);
    if (line.rfind("[/S", 0) == 0) inside = false;
  }
  return all;
}

// std::shuffle may differ from library to library, and the seeds are to mean the same everywhere.
template <typename Iterator>
void shuffle(Iterator first, Iterator last, std::mt19937& random) {
  for (auto left = last - first; left > 1; --left) {
    std::iter_swap(first + (left - 1), first + static_cast<std::ptrdiff_t>(random() % static_cast<unsigned>(left)));
  }
}

std::string shuffled_input(unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::vector<std::string>> sentences = graphs();
  shuffle(sentences.begin(), sentences.end(), random);
  std::string text;
  for (std::vector<std::string>& sentence : sentences) {
    shuffle(sentence.begin() + 1, sentence.end() - 1, random);
    for (const std::string& line : sentence) text += line + "\n";
  }
  return text;
}

int number_of(const std::string& tag) {
  return std::stoi(tag.substr(tag.find(':') + 1));
}

// The sentences of an output by their number. A message (other than that it is done, and in what time) stays in place
// of the sentence, so that a failure shows what it was.
Sentences sentences_of(const std::string& output) {
  Sentences all;
  int number = 0;
  for (const std::string& line : lines_of(output)) {
    if (line.rfind("[S:", 0) == 0) {
      number = number_of(line);
    } else if (line.rfind(";;Time  ", 0) != 0 && line != ";;Done!") {
      all[number] += line;
    }
  }
  return all;
}

class Stories : public ::testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    source_ = std::string(LEXON_STORIES) + "/" + GetParam();
    folder_ = fresh_folder("stories-" + GetParam());
    fs::copy_file(source_ + "/rules.txt", folder_ + "/rules.txt");
    build("entries");
    if (fs::exists(source_ + "/cr.txt")) build("cr");
  }

  void build(const std::string& name) const {
    const ProgramResult built =
        run_program("lexon-dict", {"build", source_ + "/" + name + ".txt", folder_ + "/" + name + ".dic"});
    ASSERT_EQ(built.exit_status, 0) << built.error;
  }

  // All sentences of an input; that none failed and none took too long, the exit status says.
  Sentences render(const std::string& input) const {
    std::vector<std::string> arguments = {"entries.dic", "rules.txt", input,  "out.txt",
                                          "-L0",         "-N0",       "-T30", "--quiet"};
    if (fs::exists(source_ + "/cr.txt")) arguments.emplace_back("-Ccr.dic");
    const ProgramResult run = run_program("lexon", arguments, folder_);
    EXPECT_EQ(run.exit_status, 0) << run.error;
    return sentences_of(bytes_of(folder_ + "/out.txt"));
  }

  // The sentences as written, in the order of the graphs.
  Sentences expected() const {
    const std::vector<std::vector<std::string>> sentences = graphs();
    const std::vector<std::string> written = lines_of(bytes_of(source_ + "/expected.txt"));
    EXPECT_EQ(written.size(), sentences.size());
    Sentences all;
    for (std::size_t i = 0; i < std::min(written.size(), sentences.size()); ++i) {
      all[number_of(sentences[i].front())] = written[i];
    }
    return all;
  }

  Sentences without_order_dependent(Sentences all) const {
    if (!fs::exists(source_ + "/order.txt")) return all;
    for (const std::string& line : lines_of(bytes_of(source_ + "/order.txt"))) {
      if (!line.empty() && line[0] != ';') all.erase(std::stoi(line));
    }
    return all;
  }

  std::string source_;
  std::string folder_;
};

TEST_P(Stories, ReadAsWritten) {
  EXPECT_EQ(render(LEXON_STORIES "/input.txt"), expected());
}

TEST_P(Stories, DoNotHangOnTheOrderOfTheGraph) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    write_file(folder_ + "/shuffled.txt", shuffled_input(seed));
    EXPECT_EQ(without_order_dependent(render("shuffled.txt")), without_order_dependent(expected())) << "seed " << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(Languages, Stories, ::testing::ValuesIn(languages()),
                         [](const auto& language) { return language.param; });

}  // namespace
}  // namespace lexon::test
