#include "front/command_line.hpp"

#include "support/test.hpp"

namespace lexon {
namespace {

CommandLine read(const std::vector<const char*>& words) {
  return command_line_read(words);
}

// All that differs from the defaults, in one line.
std::string dump(const CommandLine& line) {
  const RunSettings& s = line.settings;
  if (!line.error.empty()) return "error: " + line.error;
  std::string text;
  const auto add_number = [&text](const char* name, std::int32_t value, std::int32_t usual) {
    if (value != usual) text += std::string(name) + "=" + std::to_string(value) + " ";
  };
  const auto add_flag = [&text](const char* name, bool value, bool usual) {
    if (value != usual) text += std::string(name) + (value ? "+ " : "- ");
  };
  add_number("start", s.start_sentence, 1);
  add_number("count", s.sentence_count, 1);
  add_number("trace", s.trace_level, 1);
  add_number("time", s.max_time_per_sentence, 0);
  add_number("blocks", s.blocks, 200);
  add_number("jobs", line.jobs.value_or(-1), -1);
  add_flag("strict", s.strict, false);
  add_flag("go", s.run_at_once, false);
  add_flag("window", s.show_progress, false);
  add_flag("post", s.post_edit, true);
  add_flag("convert", s.rules_conversion_only, false);
  add_flag("a", s.reserved_a, true);
  add_flag("b", s.reserved_b, false);
  if (!s.cr_dictionary_file.empty()) text += "cr=" + s.cr_dictionary_file + " ";
  add_flag("yes", line.yes, false);
  add_flag("help", line.help, false);
  if (line.progress == ProgressStyle::none) text += "quiet ";
  if (line.progress == ProgressStyle::plain) text += "plain ";
  return text;
}

struct Row {
  const char* name;
  std::vector<const char*> switches;
  const char* expected;
};

const Row kRows[] = {
    {"nothing", {}, ""},
    {"joined value", {"-L2"}, "trace=2 "},
    {"value as a word of its own", {"-L", "2"}, "trace=2 "},
    {"lower case", {"-l4", "-n0", "-s", "12", "-t5"}, "start=12 count=0 trace=4 time=5 "},
    {"a level above the list's end", {"-L5"}, "trace=5 "},
    {"no word behind the switch", {"-N"}, ""},
    {"negative value", {"-S", "-3"}, "start=-3 "},
    {"go with its o", {"-Go"}, "go+ "},
    {"go without", {"-G"}, "go+ "},
    {"go in small letters", {"-go"}, "go+ "},
    {"no post-edit", {"^P"}, "post- "},
    {"no post-edit, long", {"^Pe"}, "post- "},
    {"reserved flags", {"^Ac", "-M"}, "a- b+ "},
    {"reserved flag alone", {"^a"}, "a- "},
    {"any word that begins with R", {"-Rules"}, "convert+ "},
    {"any word that begins with W", {"-window"}, "window+ "},
    {"two switches in one word", {"-Go-L2"}, "trace=2 go+ "},
    {"blanks around a switch", {"  -L  3 "}, "trace=3 "},
    {"path of the co-occurrence dictionary", {"-C/a/b c.dic"}, "cr=/a/b c.dic "},
    {"its path as a word", {"-c", "/x/../y.dic", "-L2"}, "trace=2 cr=/y.dic "},
    {"its path in quotes", {"-C\"/a b/c.dic\"-L0"}, "trace=0 cr=/a b/c.dic "},
    {"quotes over two words", {"-C", "\"/a", "b.dic\"", "-M"}, "b+ cr=/a b.dic "},
    {"long options", {"--yes", "--quiet"}, "yes+ quiet "},
    {"plain progress", {"-L2", "--progress=plain"}, "trace=2 plain "},
    {"quiet", {"-q"}, "quiet "},
    {"unknown switch", {"-x"}, "error: unknown switch: -x"},
    {"unknown caret switch", {"^L2"}, "error: unknown switch: ^L2"},
    {"dash alone", {"-"}, "error: not a switch: -"},
    {"fifth bare word", {"five"}, "error: not a switch: five"},
    {"letters behind a switch without value", {"-Mx"}, "error: not a switch: x"},
    {"blocks", {"--blocks", "300", "-L2"}, "trace=2 blocks=300 "},
    {"blocks joined, strict", {"--strict", "--blocks=9"}, "blocks=9 strict+ "},
    {"blocks that are no number", {"--blocks", "9x"}, "error: --blocks wants a number from 1 to 65535, not \"9x\""},
    {"jobs", {"-J4", "-L2"}, "trace=2 jobs=4 "},
    {"jobs as a word of their own, all processors", {"-j", "0"}, "jobs=0 "},
    {"jobs, long", {"--jobs=3"}, "jobs=3 "},
    {"jobs, the last counts", {"-j2", "--jobs", "256"}, "jobs=2 "},
    {"too many jobs", {"-j257"}, "error: -J wants a number from 0 to 256, not \"257\""},
    {"jobs without a number", {"-J"}, "error: -J wants a number from 0 to 256, not \"\""},
    {"unknown long option", {"--fast"}, "error: unknown option: --fast"},
};

TEST(CommandLine, Switches) {
  for (const Row& row : kRows) {
    std::vector<const char*> words = {"d.dic", "r.txt", "i.txt", "o.txt"};
    words.insert(words.end(), row.switches.begin(), row.switches.end());
    EXPECT_EQ(dump(read(words)), row.expected) << row.name;
  }
}

TEST(CommandLine, PathsAreMadeAbsolute) {
  const std::string here = std::filesystem::current_path().string();
  const CommandLine line = read({"d.dic", "./sub/../r.txt", "\"/in put.txt\"", "/o.txt"});
  EXPECT_EQ(line.settings.dictionary_file, here + "/d.dic");
  EXPECT_EQ(line.settings.rule_file, here + "/r.txt");
  EXPECT_EQ(line.settings.input_file, "/in put.txt");
  EXPECT_EQ(line.settings.output_file, "/o.txt");
}

TEST(CommandLine, MissingEmptyAndEndlessPathsStayEmpty) {
  const std::string endless(kPathLimit + 1, 'x');
  const CommandLine line = read({"/d.dic", "", ("/" + endless).c_str()});
  EXPECT_EQ(line.error, "");
  EXPECT_EQ(line.settings.dictionary_file, "/d.dic");
  EXPECT_EQ(line.settings.rule_file, "");
  EXPECT_EQ(line.settings.input_file, "");
  EXPECT_EQ(line.settings.output_file, "");
}

TEST(CommandLine, BlanksBehindAQuotedPathAreNotPartOfTheNext) {
  const CommandLine line = read({"\"/d.dic\" /r x.txt", "\"/in.txt\"  \"/o.txt\" -L3"});
  EXPECT_EQ(line.error, "");
  EXPECT_EQ(line.settings.dictionary_file, "/d.dic");
  EXPECT_EQ(line.settings.rule_file, "/r x.txt");
  EXPECT_EQ(line.settings.input_file, "/in.txt");
  EXPECT_EQ(line.settings.output_file, "/o.txt");
  EXPECT_EQ(line.settings.trace_level, 3);
}

TEST(CommandLine, AQuotedPathIsCutAtItsLimit) {
  const std::string quoted = "\"/" + std::string(kPathLimit, 'x') + "\"";
  EXPECT_EQ(read({quoted.c_str()}).settings.dictionary_file, "/" + std::string(kPathLimit - 1, 'x'));
}

}  // namespace
}  // namespace lexon
