// Every limit that the manual names: one below, at its value, one above. What a run or the dictionary tool prints must
// hold `within` in the first two cases and `beyond` in the third.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

#include "support/capture.hpp"
#include "support/program.hpp"

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

std::string x(long count) {
  return std::string(static_cast<std::size_t>(count), 'x');
}

std::string each(long count, const std::string& before, const std::string& behind) {
  std::string all;
  for (long i = 0; i < count; ++i) all += before + std::to_string(i) + behind;
  return all;
}

// Two digits to the base of 36.
std::string code36(long number) {
  constexpr const char* kDigits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  return {kDigits[number / 36], kDigits[number % 36]};
}

// What is run. Fields that are empty stand for files that are the same for all.
struct Subject {
  std::string input;
  std::string rules;
  std::string entries;
  std::vector<std::string> switches = {"-L0"};
  std::string dictionary = "words.dic";
  long rule_path = 0;  // characters of the path of the rules, if it matters
};

constexpr const char* kEntries = "[dog]{} \"dog\" (N);\n[cat]{} \"cat\" (N);\n";
constexpr const char* kRules = "R{SHEAD:::}{:::}P1;\nR{:::}{STAIL:::}P1;\n";
constexpr const char* kDog = "[S]\n[W]\ndog.@entry\n[/W]\n[/S]\n";

std::string graph(const std::string& lines) {
  return "[S]\n" + lines + "[/S]\n";
}

struct LimitRow {
  const char* what;
  long limit;
  std::function<Subject(long)> subject;
  std::string within;
  std::string beyond;
};

class Limits : public ::testing::TestWithParam<LimitRow> {
 protected:
  void SetUp() override { folder_ = fresh_folder("limits"); }

  [[nodiscard]] std::string path(const std::string& name) const { return folder_ + "/" + name; }

  // All that is printed: by the tool, to standard error, into the output.
  [[nodiscard]] std::string printed(const Subject& subject) const {
    write_file(path("entries.txt"), subject.entries.empty() ? kEntries : subject.entries);
    const std::string rules =
        subject.rule_path == 0 ? path("rules.txt") : path(x(subject.rule_path - std::ssize(path("")) - 4) + ".txt");
    write_file(rules, subject.rules.empty() ? kRules : subject.rules);
    write_file(path("input.txt"), subject.input.empty() ? kDog : subject.input);
    const ProgramResult built = run_program("lexon-dict", {"build", path("entries.txt"), path(subject.dictionary)});
    std::vector<std::string> words = {path(subject.dictionary), rules, path("input.txt"), path("output.txt"),
                                      "--quiet"};
    words.insert(words.end(), subject.switches.begin(), subject.switches.end());
    const ProgramResult run = run_program("lexon", words, folder_);
    EXPECT_LT(run.exit_status, 5) << run.error;
    return built.error + run.error + bytes_of(path("output.txt"));
  }

  std::string folder_;
};

TEST_P(Limits, BelowAtAndAbove) {
  const LimitRow& row = GetParam();
  for (const long value : {row.limit - 1, row.limit, row.limit + 1}) {
    const std::string& wanted = value > row.limit ? row.beyond : row.within;
    const std::string found = printed(row.subject(value));
    EXPECT_NE(found.find(wanted), std::string::npos) << row.what << " " << value << "\n" << found.substr(0, 2000);
    if (value <= row.limit) {
      EXPECT_EQ(found.find(row.beyond), std::string::npos) << row.what << " " << value;
    }
  }
}

Subject with_input(const std::string& lines, std::vector<std::string> switches = {"-L0"}) {
  return {.input = graph(lines), .rules = {}, .entries = {}, .switches = std::move(switches)};
}
Subject with_rules(const std::string& rules, const std::string& entries = {}) {
  return {.input = {}, .rules = rules, .entries = entries};
}
Subject with_entries(const std::string& entries) {
  return {.input = {}, .rules = {}, .entries = entries};
}

// A word whose language, frequency and priority the trace shows.
Subject with_word_data(const std::string& data) {
  return {.input = {}, .rules = {}, .entries = "[dog]{} \"dog\" (N) " + data + ";\n", .switches = {"-L4"}};
}

// A sentence of one word of `length` characters.
Subject long_sentence(long length) {
  const long piece = 240;
  std::string rules = "R{SHEAD:::}{:::}P1;\n:{:::}\"::nxt:\"P9;\nR{:::}{^STAIL:::}P5;\nR{:::}{STAIL:::}P1;\n";
  std::string lines;
  for (long i = 0; i * piece < length; ++i) {
    const std::string word =
        "\"" + std::string(1, static_cast<char>('a' + i)) + x(std::min(piece, length - i * piece) - 1) + "\"";
    lines += lines.empty() ? "nxt(" + word + ".@entry," : word + ")\nnxt(" + word + ",";
  }
  lines += "\"\")\n";
  return {.input = graph(lines), .rules = rules, .entries = {}};
}

// Rules one behind the other with priorities that show which of them comes first.
Subject priority(long value) {
  return with_rules("R{SHEAD:::}{dog_first:::}P" + std::to_string(value) + ";\n" + kRules);
}

const LimitRow kRows[] = {
    {"words of a sentence", 512,
     [](long n) { return with_input("[W]\na.@entry\n" + each(n - 1, "w", "\n") + "[/W]\n"); }, ";;Done!",
     ";;the graph has more than 512 words"},
    {"relations of a sentence", 128, [](long n) { return with_input(each(n, "nxt(a.@entry,b", ")\n")); }, ";;Done!",
     ";;the graph has more than 128 relations"},
    {"characters of a concept word", 259, [](long n) { return with_input("nxt(" + x(n) + ".@entry,b)\n"); }, ";;Done!",
     ";;the graph has a word of more than 259 characters"},
    {"characters of attributes in a scope", 1024,
     [](long n) { return with_input("[W]\na.@entry.@" + x(900) + "\na.@" + x(n - 8 - 901 - 1) + "\n[/W]\nr(a,b)\n"); },
     ";;Done!", ";;the graph has a word with more than 1024 characters of attributes"},
    {"characters of a graph line before its end", 1023,
     [](long n) {
       return with_input("nxt(a.@entry," + std::string(static_cast<std::size_t>(n - 16), ' ') + "b)x\nr(a,b)\n");
     },
     ";;Done!", ";;Syntactic Error"},
    {"characters of a relation label", 5, [](long n) { return with_input(x(n) + "(a.@entry,b)\n"); }, ";;Done!",
     ";;Rel is too long"},
    {"characters of a block tag", 9,
     [](long n) { return with_input("{" + x(n - 1) + "a}\n{/" + x(n - 1) + "b}\nnxt(a.@entry,b)\n"); }, "[S]\n",
     ";;Done!"},
    {"number of a scope", 99, [](long n) { return with_input("nxt(a.@entry,:" + code36(n) + ")\n", {"-L1"}); },
     "[SCOPE:", "ANUM"},
    {"characters of a sentence", 1023, long_sentence, ";;Done!", ";;the sentence is longer than 1023 characters"},
    {"characters of a rule line before its end", 1023,
     [](long n) {
       return with_rules("R{SHEAD:::}{:::}P1;" + std::string(static_cast<std::size_t>(n - 20), ' ') + "Z\n" + kRules);
     },
     ";;Done!", "in TYPE"},
    {"priority of a rule", 255, priority, ";;Done!", ";;WARNING(0,1), no priority"},
    {"characters of an attribute in a rule", 256,
     [](long n) {
       return with_rules("R{SHEAD:::}{" + x(n) + ":::}P1;\nR{:::}{STAIL:::}P1;\n", "[dog]{} \"dog\" (" + x(n) + ");\n");
     },
     ";;Done!", ";;return code -2"},
    {"affirmative surface forms of a pattern", 1,
     [](long n) { return with_rules("R{SHEAD:::}{" + each(n, "[w", "],") + "N:::}P2;\n" + kRules); }, ";;Done!",
     "more than 2 affirmative condtions of HW"},
    {"sections of a pattern", 4,
     [](long n) {
       return with_rules("R{SHEAD" + std::string(static_cast<std::size_t>(n - 1), ':') + "}{:::}P1;\n" + kRules);
     },
     ";;Done!", "ROLE ERR"},
    {"characters of an entry line", 8191,
     [](long n) {
       return with_entries(std::string(kEntries) + "[w]{} \"w\" (N);" +
                           std::string(static_cast<std::size_t>(n - 14), ' ') + "\n");
     },
     ";;Done!", "the line has more than 8191 characters"},
    {"characters of a surface form", 1003,
     [](long n) { return with_entries(std::string(kEntries) + "[" + x(n) + "]{} \"w\" (N);\n"); }, ";;Done!",
     "bytes, and a key of the index at most 1003"},
    {"characters of a concept word with a long name", 887,
     [](long n) {
       return Subject{.input = {},
                      .rules = {},
                      .entries = std::string(kEntries) + "[w]{} \"" + x(n) + "\" (N);\n",
                      .switches = {"-L0"},
                      .dictionary = "longername.dic"};
     },
     ";;Done!", "bytes, and a key of the index at most 887"},
    {"characters of the attributes of an entry", 1024,
     [](long n) { return with_entries(std::string(kEntries) + "[w]{} \"w\" (" + x(n) + ");\n"); }, ";;Done!",
     "the attribute list is missing, not closed or too long"},
    {"bytes of an entry", 4091,
     [](long n) { return with_entries(std::string(kEntries) + "[w]{} " + x(n - 25) + " \"w\" (N);\n"); }, ";;Done!",
     "bytes, and a block holds 4091"},
    {"frequency of a word", 4294967295L, [](long n) { return with_word_data("<E," + std::to_string(n) + ",7>"); },
     "<E,429496729", "<E,0,7>"},
    {"priority of a word", 255, [](long n) { return with_word_data("<E,0," + std::to_string(n) + ">"); }, "<E,0,25",
     "<E,0,0>"},
    {"bad lines that are shown", 99, [](long n) { return with_entries(each(n, "bad", "\n")); },
     " bad lines, nothing has been built", "entries.txt:100: "},
    {"characters of the name of an index", 128,
     [](long n) {
       return Subject{
           .input = {}, .rules = {}, .entries = kEntries, .switches = {"-L0"}, .dictionary = x(n - 4) + ".dic"};
     },
     ";;Done!", "the index name is too long"},
    {"number behind a switch", 2147483647L,
     [](long n) {
       return Subject{.input = {}, .rules = {}, .entries = {}, .switches = {"-L0", "-N" + std::to_string(n)}};
     },
     ";;Done!", "is no number"},
    {"characters of a relation label in a rule", 3,
     [](long n) {
       return Subject{.input = graph(x(n) + "(dog.@entry,cat)\n"),
                      .rules = std::string(":{N:::}\"N::") + x(n) + ":\"P9;\nR{:::}{^STAIL:::}P5;\n" + kRules,
                      .entries = {}};
     },
     "dogcat\n", "dog\n"},
    {"characters of a name in the fourth section", 64,
     [](long n) {
       return Subject{.input = {},
                      .rules = "R{SHEAD:::}{:::<" + x(n - 1) + "y}P1;\nR{:::}{STAIL:::}P1;\n",
                      .entries = {},
                      .switches = {"-L2"}};
     },
     x(62) + "y}", x(64) + "}"},
    {"characters of a path", 260,
     [](long n) { return Subject{.input = {}, .rules = {}, .entries = {}, .rule_path = n}; }, ";;Done!",
     "Can't Open Generation Rule : !"},
    {"characters of the attributes of a word", 1023,
     [](long n) {
       return Subject{.input = {},
                      .rules = "R{SHEAD:::}{N,^" + x(200) + ":" + x(200) + "::}P9;\n" + kRules,
                      .entries = "[dog]{} \"dog\" (N," + x(n - 203) + ");\n",
                      .switches = {"-L3"}};
     },
     ";;Done!", ";;attributes will be longer the 1024"},
};

std::string row_name(const ::testing::TestParamInfo<LimitRow>& row) {
  std::string name = row.param.what;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Manual, Limits, ::testing::ValuesIn(kRows), row_name);

}  // namespace
}  // namespace lexon::test
