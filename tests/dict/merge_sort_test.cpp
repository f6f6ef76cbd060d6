// Sorting files of lines: what comes out, what it returns, and what is left behind.

#include "dict/merge_sort.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "data/state.hpp"
#include "support/capture.hpp"

namespace lexon::test {
namespace {

// A sort in a folder of its own, where its temporary files appear too.
class MergeSort : public ::testing::Test {
 protected:
  MergeSort() : before_(std::filesystem::current_path()) {
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    folder_ = std::filesystem::path(::testing::TempDir()) / ("lexon-" + std::to_string(getpid()) + "-" + test->name());
    std::filesystem::create_directories(folder_);
    std::filesystem::current_path(folder_);
    std::filesystem::remove("out");
  }
  ~MergeSort() override {
    stop_requested = false;
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(folder_);
  }

  std::string input_file(const std::string& text) { return file_of(folder_.filename().string() + ".in", text); }

  // "count: lines", each line feed shown as "/"; "no file" where none was made.
  std::string sorted(bool unique, bool dictionary_mode, const std::string& text) {
    std::filesystem::remove("out");
    const std::string input = input_file(text);
    Capture log;
    const int count = merge_sort_file(unique, dictionary_mode, input.c_str(), "out", state.output);
    log_ = log.text();
    std::filesystem::remove(input);
    std::string lines = std::filesystem::exists("out") ? bytes_of("out") : "no file";
    std::ranges::replace(lines, '\n', '/');
    return std::to_string(count) + ": " + lines;
  }

  std::ptrdiff_t files_left() {
    return std::ranges::distance(std::filesystem::directory_iterator(folder_), std::filesystem::directory_iterator());
  }

  std::filesystem::path before_;
  std::filesystem::path folder_;
  std::string log_;
};

struct SortRow {
  const char* what;
  bool unique;
  bool dictionary_mode;
  std::string input;
  std::string result;
  const char* log;
};

TEST_F(MergeSort, Tables) {
  const std::string x1022(1022, 'x');
  const SortRow rows[] = {
      {"empty input makes no file", true, false, "", "0: no file", ""},
      {"a single line", true, false, "a\n", "1: a/", ""},
      {"a pair and one left over", true, false, "c\na\nb\n", "3: a/b/c/", ""},
      {"all lines equal", true, false, "a\na\na\na\na\n", "1: a/", ""},
      {"equal lines kept", false, false, "b\na\nb\na\na\n", "5: a/a/a/b/b/", ""},
      {"the last line without line feed loses a character", true, false, "z\nxyz", "2: xy/z/", ""},
      {"a last line of one character", true, false, "b\na", "2: /b/", ""},
      {"two-character line ends", true, false, "b\r\na\r\nb\r\n", "2: a/b/", ""},
      {"a lone carriage return stays", false, false, "b\r\r\na\n", "2: a/b\r/", ""},
      {"empty lines", true, false, "\nb\n\na\n", "3: /a/b/", ""},
      {"unsigned bytes, a prefix behind its line feed", true, false, "\xE9\nz\nab\na\n~\n", "5: a/ab/z/~/\xE9/", ""},
      {"a tab stands in front of the line feed", true, false, "a\na\t\n", "2: a\t/a/", ""},
      {"1024 characters are two lines", true, false, x1022 + "yz\nb\n", "3: b/" + x1022 + "/z/", ""},
      {"a line of zeros counts as none", true, false, std::string("\0\0\0\0b\n", 6), "0: ", ""},

      {"entries by surface form", true, true, "[b]{} (x);\n[a b]{} (x);\n[a]{} (z);\n",
       "3: [a]{} (z);/[a b]{} (x);/[b]{} (x);/", ""},
      {"entries of one surface form keep their order", false, true, "[a]{2}\n[b]{}\n[a]{1}\n[a]{3}\n[a]{0}\n",
       "5: [a]{2}/[a]{1}/[a]{3}/[a]{0}/[b]{}/", ""},
      {"bracket and escape inside a surface form", true, true, "[a\\]{}]{}\n[a]]{}\n[a[]{}\n",
       "3: [a[]{}/[a\\]{}]{}/[a]]{}/", ""},
      {"leading blanks", true, true, " [b]{}\n\t [a]{}\n", "2: \t [a]{}/ [b]{}/", ""},
      {"comments and bad lines go to the log", true, true, "[b]{}\n ;note\nword\n[c]\n\n[a]{}\n", "2: [a]{}/[b]{}/",
       " ;note\n;;word\n;;[c]\n;;\n"},
      {"nothing but comments", true, true, ";a\n;b\n", "0: no file", ";a\n;b\n"},
  };
  for (const SortRow& row : rows) {
    EXPECT_EQ(sorted(row.unique, row.dictionary_mode, row.input), row.result) << row.what;
    EXPECT_EQ(log_, row.log) << row.what;
    EXPECT_EQ(files_left(), row.result.ends_with("no file") ? 0 : 1) << row.what;
  }
}

// Lines of a fixed pseudo-random walk, many of them equal.
std::vector<std::string> random_lines(std::size_t count) {
  std::vector<std::string> lines;
  for (std::uint32_t seed = 1; lines.size() < count;) {
    seed = seed * 1664525 + 1013904223;
    const std::string word = std::to_string((seed >> 8) % (count / 2));
    lines.push_back(word + std::string(seed % 97, '-') + "\n");
  }
  return lines;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line;
  return text;
}

TEST_F(MergeSort, ManyLinesAgreeWithSortingInMemory) {
  for (const std::size_t count : {2U, 3U, 4U, 5U, 63U, 64U, 65U, 5000U}) {
    std::vector<std::string> lines = random_lines(count);
    const std::string input = input_file(joined(lines));
    std::ranges::sort(lines);
    EXPECT_EQ(merge_sort_file(false, false, input.c_str(), "out", nullptr), static_cast<int>(count));
    EXPECT_EQ(bytes_of("out"), joined(lines)) << count;

    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    EXPECT_EQ(merge_sort_file(true, false, input.c_str(), "out", nullptr), static_cast<int>(lines.size()));
    EXPECT_EQ(bytes_of("out"), joined(lines)) << count;
    EXPECT_EQ(files_left(), 1);
    std::filesystem::remove(input);
  }
}

TEST_F(MergeSort, Failures) {
  Capture log;
  EXPECT_EQ(merge_sort_file(true, false, nullptr, "out", state.output), -1);
  EXPECT_EQ(merge_sort_file(true, false, "missing", "out", state.output), -1);
  EXPECT_EQ(merge_sort_file(true, false, "missing", "out", nullptr), -1);
  EXPECT_EQ(log.text(), ";;Not found input file!\n;;Can't open input file missing!\n");

  const std::string input = input_file("b\na\n");
  EXPECT_EQ(merge_sort_file(true, false, input.c_str(), "no-such-folder/out", state.output), -1);
  EXPECT_EQ(merge_sort_file(false, false, input.c_str(), "no-such-folder/out", state.output), -1);
  stop_requested = true;
  EXPECT_EQ(merge_sort_file(true, false, input.c_str(), "out", state.output), -1);
  EXPECT_EQ(files_left(), 0);
  std::filesystem::remove(input);
}

}  // namespace
}  // namespace lexon::test
