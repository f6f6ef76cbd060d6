#include "source/expand.hpp"

#include "support/capture.hpp"
#include "support/folder.hpp"

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

// Other files that sources of the tables include.
void write_others(const Folder& folder) {
  folder.write("plain.txt", "R{} {} P1;\r\n; why\nL{} {} P2;");
  folder.write("use.lxr", "%for x in NAMES\nQ%x\n%end\n");
  folder.write("sub/in.lxr", "%include \"more.txt\"\n");
  folder.write("sub/more.txt", "M");
  folder.write("circle.lxr", "%include \"./a.lxr\"\n");
  folder.write("v.tsv", "\xEF\xBB\xBFlemma\tpast tense\r\ngo\twent\r\n\r\n a\t\r\n");
  folder.write("short.tsv", "lemma\tpast\ngo\n");
  folder.write("twice.tsv", "a\ta\n1\t2\n");
  folder.write("wide.txt", std::string("\xFF\xFE%\0", 4));
}

struct Row {
  const char* fact;
  std::string source;
  std::string text;           // of the expansion
  std::string messages = {};  // "line:column: what", a line each; the columns from 0. With an error there is no text
};

std::string messages_of(const Expansion& expansion, const Folder& folder) {
  std::string all;
  for (const SourceMessage& message : expansion.messages) {
    const std::string file = folder.plain(message.file);
    all += (file == "a.lxr" ? "" : file + ':') + std::to_string(message.line) + ':' + std::to_string(message.column) + ": " +
           (message.is_warning ? "warning: " : "") + folder.plain(message.text) + '\n';
  }
  return all;
}

const char* const kNameForm = "a name is missing here, of letters, digits and _: write ";
const std::string kLong(1030, 'x');

const Row kRows[] = {
    {"no directive: byte for byte", "R%x{%{a}} %% %;\r\n\n%x\n%\nP", "R%x{%{a}} %% %;\r\n\n%x\n%\nP"},
    {"rules, comments and line ends stay", "%; no\n; a %x\r\n\n \t\nR{}\r\nL", "; a %x\r\n\n \t\nR{}\r\nL"},
    {"a byte order mark goes with the directives", "\xEF\xBB\xBF%define A = b\n%A\n", "b\n"},
    {"marks", "%define A = x,y  %; c\n{%A}%{A}en%%A %A.z 5% %+ [%]\n", "{x,y}x,yen%A x,y.z 5% %+ [%]\n"},
    {"a value of values", "%define A = x\n%define B = %A,%{A}y\n%B\n", "x,xy\n"},
    {"an empty value", "%define A =\n[%A]\n", "[]\n"},
    {"a list", "%list L = a  b\n%for x in L\n; c\n\nR%x\n%end\nE\n", "Ra\nRb\nE\n"},
    {"a list of lines", "%list L\n a b \n; c\n%; d\n%define\n%end\n", "",
     "5:0: a directive within the values of L: write %end above it\n5:7: " + std::string(kNameForm) +
         "%define NAME = TEXT\n6:0: this %end closes nothing: strike it out\n"},
    {"values with blanks", "%list L\n a b \n\nc %; d\n%end\n%for x in L\n[%x]\n%end\n", "[a b]\n[c]\n"},
    {"two at a time", "%for s, c in (a A b B)\n%s%c\n%end\n", "aA\nbB\n"},
    {"loops in loops", "%for a in (x y)\n%for b in (1 %a)\n%a%b\n%end\n%end\n", "x1\nxx\ny1\nyy\n"},
    {"a table", "%table T\n a | b\n; no\n 1 2 |\n 3 | %%\n%end\n%for t in T\n<%t.a,%{t.b}>\n%end\n", "<1 2,>\n<3,%>\n"},
    {"a TSV file", "%table T = \"v.tsv\"\n%for t in T\n<%t.lemma:%{t.past tense}>\n%end\n", "<go:went>\n< a:>\n"},
    {"names of a turn end with it", "%for x in (a b)\n%if x == a\n%define Y = 1\n%else\n%define Y = 2\n%end\n%x%Y\n%end\n", "a1\nb2\n"},
    {"conditions",
     "%define E =\n%define A = a\n%list L = a b\n%if E or not A\n1\n%elif A in L and A not in (b %A)\n2\n%elif %A == \"a b\" or A != b and not A in "
     "(c)\n3\n%else\n4\n%end if\n",
     "3\n"},
    {"no way holds", "%define A = a\n%if A == b\n%UNKNOWN\n%end\n", ""},
    {"a rule over lines", "%define A = a\n:{N}   %\\ why\n   {%A} \t%\\\n%; no\n ; no\n\tP5; 5%\n", ":{N} {a} P5; 5%\n"},
    {"a rule that goes on to the end", "%; c\nR{%\\\n", "R{\n"},
    {"an include", "%include \"plain.txt\"\n%list NAMES = a b\n%include \"use.lxr\"\n", "R{} {} P1;\r\n; why\nL{} {} P2;\nQa\nQb\n"},
    {"paths go from their own file", "%for x in (sub)\n%include \"%x/in.lxr\"\n%end\n", "M\n"},
    {"a file twice", "%include \"sub/more.txt\"\n%include \"sub/more.txt\"\n", "M\nM\n"},
    {"an empty loop", "%list L =\n%for x in L\nR\n%end\n", "", "2:0: warning: this loop makes nothing: its list is empty\n"},

    {"unknown names", "%define CASES = x\n%CASE %foo %{CASESx}\n%fro x in (a)\n%CASESen\n", "",
     "2:0: no \"CASE\" is defined: did you mean \"CASES\"?\n2:6: no \"foo\" is defined: define it above with %define, or write %% for the sign itself\n"
     "2:11: no \"CASESx\" is defined: did you mean \"CASES\"?\n3:0: no \"fro\" is defined: did you mean the directive %for?\n"
     "4:0: no \"CASESen\" is defined: write %{CASES}en if CASES is meant\n"},
    {"a fault is told once", "%for x in (a b)\n%y\n%end\n", "", "2:0: no \"y\" is defined: did you mean \"x\"? (with x=a)\n"},
    {"names twice", "%define A = 1\n%list A = 2\n%for A in (3)\n%end\n", "",
     "2:0: \"A\" is defined already, at a.lxr:1: choose another name\n3:0: \"A\" is defined already, at a.lxr:1: choose another name\n"},
    {"names that are none", "%define 1 = a\n%list if = a\n%define A\n%list A b\n%table A = v.tsv\n%{1} %{A\n", "",
     "1:8: " + std::string(kNameForm) +
         "%define NAME = TEXT\n2:6: \"if\" is the name of a directive: choose another name\n"
         "3:9: \"=\" is missing here: write %define NAME = TEXT\n4:8: \"=\" is missing here: write %list NAME = VALUES, or the values one a line below\n"
         "5:11: the name of a file is missing here: write it in double quotes\n6:0: no name in these braces: write %{NAME}, %{ROW.COLUMN}, or %% for the sign "
         "itself\n"
         "6:5: no name in these braces: write %{NAME}, %{ROW.COLUMN}, or %% for the sign itself\n"},
    {"ends", "%for x in (a)\n%if x\n%end for\n%elif x\n%else\n%end\n%end\n%list L\n", "",
     "3:5: this %end closes the %if above it: write %end if, or look for the %end that is missing\n4:0: %elif stands in no %if: strike it out\n5:0: %else "
     "stands in no %if: strike it out\n"
     "7:0: this %end closes nothing: strike it out\n8:0: the values of L have no end: write %end below the last one\n"},
    {"no end", "%if A\n%else\n%else\n%for x in (a)\n", "",
     "3:0: %else stands behind the %else of its %if: put it in front\n4:0: this %for has no end: write %end behind the last line that belongs to it\n1:0: this "
     "%if has no end: write %end behind the last line that belongs to it\n"},
    {"loops", "%for in (a)\n%end\n%for end in (a)\n%end\n%for x of A\n%end\n%for x in (a\n%end\n%for x in L M\n%end\n", "",
     "1:8: \"in\" is missing here: write %for NAME in LIST\n3:5: \"end\" is the name of a directive: choose another name\n5:7: \"in\" is missing here: write "
     "%for NAME in LIST\n7:11: this list is not closed: write ) "
     "behind its last value\n9:12: nothing may stand behind the list of a loop: strike this out\n"},
    {"tests", "%if\n%end\n%if A = b\n%end\n%if A == \n%end\n%if A == \"b\n%end\n%if A in\n%end\n%if A b\n%end\n", "",
     "1:3: a condition begins with a name: write NAME, NAME == VALUE, NAME != VALUE or NAME in LIST\n3:6: \"and\" or \"or\" is missing here, or this belongs "
     "into double quotes\n"
     "5:8: a value is missing here: write a word, or a text in double quotes\n7:9: this text is not closed: write \" behind it\n"
     "9:8: a list is missing here: write the name of a list or table, or values in brackets, (a b c)\n11:6: \"and\" or \"or\" is missing here, or this belongs "
     "into double quotes\n"},
    {"what loops cannot take",
     "%define A = a b\n%for x in A\n%end\n%for x in B\n%end\n%for x, y in (a b c)\n%end\n%table T\na\n1\n%end\n%for x, y in T\n%end\n", "",
     "2:0: \"A\" is no list: write (%A) for the words of its text\n4:0: \"B\" is no list: define it above with %list or %table\n6:0: the list has 3 values, "
     "and the loop takes 2 at a time\n12:0: a loop over a table has one variable, whose columns are written %x.COLUMN\n"},
    {"what marks cannot take", "%list L = a\n%table T\na | b\n1 | 2\n%end\n%L\n%for t in T\n%t %t.c\n%end\n%define A = a\n%{A.b}\n%if A in T\n%end\n", "",
     "6:0: \"L\" is a list: write %for NAME in L above the rule, and %NAME here\n8:0: \"t\" is a row of a table: write %t.COLUMN, with one of a, b (with t=a=1 "
     "b=2)\n"
     "8:3: the table has no column \"c\": it has a, b (with t=a=1 b=2)\n11:0: \"A\" is no row of a table, and has no columns\n12:4: \"T\" is no list: define "
     "it with %list\n"},
    {"tables", "%table A = \"short.tsv\"\n%table B = \"twice.tsv\"\n%table C\n%end\n%table D\na | b\n1\n%end\n%table E = \"none.tsv\"\n", "",
     "short.tsv:2:0: this row has 1 cell, and the header 2 columns: a tab stands between cells\ntwice.tsv:1:0: the header has two columns \"a\": rename one\n"
     "3:0: this table has no header: write NAME | NAME below\n7:0: this row has 1 cell, and the header 2 columns: | stands between cells\n9:12: \"none.tsv\" "
     "cannot be opened: No such file or directory\n"},
    {"includes", "%include \"circle.lxr\"\n%include none.lxr\n%include \"sub\"\n%include \"wide.txt\"\n", "",
     "2:9: the name of a file is missing here: write it in double quotes\n"},
    {"a circle, what is no file, and the wrong encoding", "%include \"circle.lxr\"\n%include \"sub\"\n%include \"wide.txt\"\n", "",
     "circle.lxr:1:0: this file includes itself, by way of the files around it: strike one of the includes out (included at a.lxr:1)\n"
     "2:10: \"sub\" cannot be opened: Is a directory\nwide.txt:1:0: this text is UTF-16: save it as UTF-8 (included at a.lxr:3)\n"},
    {"a directive in a rule", "R{ %\\\n%for x in (a)\n%end\n", "",
     "2:0: the rule above goes on here, by its %\\: strike that out, or write the rest of the rule first\n3:0: this %end closes nothing: strike it out\n"},
    {"a line too long", "%; c\nR" + kLong + "\n", "", "2:0: this rule expands to 1031 characters, and 1022 is the most: make two rules of it\n"},
};

TEST(ExpandSource, ReadsLikeItsTable) {
  Folder folder;
  write_others(folder);
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.fact);
    folder.write("a.lxr", row.source);
    const Expansion expansion = expand_source(folder.path("a.lxr"));
    EXPECT_EQ(messages_of(expansion, folder), row.messages);
    EXPECT_EQ(expansion.has_errors() ? "" : expansion.text, row.text);
  }
}

TEST(ExpandSource, StopsWhatGrowsWithoutEnd) {
  const Folder folder;
  folder.write("none.txt", "");
  std::string loops;
  for (int i = 0; i < 9; ++i) loops += "%for x" + std::to_string(i) + " in (a b c d e f g h i j)\n";
  std::string doubling = "%define a0 = xxxxxxxxxxxxxxxx\n";
  for (int i = 1; i < 40; ++i) doubling += "%define a" + std::to_string(i) + " = %a" + std::to_string(i - 1) + "%a" + std::to_string(i - 1) + "\n";
  std::string nested;
  for (int i = 0; i < 100000; ++i) nested += "%if a\n";
  std::string ends;
  for (int i = 0; i < 9; ++i) ends += "%end\n";
  const std::pair<std::string, const char*> rows[] = {
      {loops + "%include \"none.txt\"\n" + ends, "10 million steps"}, {doubling, "65,536 bytes"}, {nested, "nested too deep"}};
  for (const auto& [source, words] : rows) {
    folder.write("a.lxr", source);
    const Expansion expansion = expand_source(folder.path("a.lxr"));
    ASSERT_FALSE(expansion.messages.empty());
    EXPECT_NE(expansion.messages.front().text.find(words), std::string::npos) << expansion.messages.front().text;
  }
}

// Line and column (from 0) in the expansion, and "file:line:column" in the source with what is around it.
TEST(SourceMap, TellsWhereEveryByteComesFrom) {
  Folder folder;
  write_others(folder);
  folder.write("a.lxr",
               "; c\n%define A = long\nR%A{x %\\\n   y}\n%include \"plain.txt\"\n%table T = \"v.tsv\"\n%for t in T\n%for b in (1)\n%{t.lemma}%b\n%end\n%end\n");
  const struct {
    int line;
    std::size_t column;
    const char* place;
  } rows[] = {
      {1, 2, "a.lxr:1:2"},
      {2, 0, "a.lxr:3:0"},
      {2, 3, "a.lxr:3:1"},
      {2, 6, "a.lxr:3:4"},
      {2, 8, "a.lxr:4:3"},
      {2, 99, "a.lxr:4:94"},
      {4, 3, "plain.txt:2:3 included at a.lxr:5"},
      {6, 1, "a.lxr:9:0 with t=lemma=go past tense=went, b=1"},
      {6, 2, "a.lxr:9:10 with t=lemma=go past tense=went, b=1"},
      {7, 0, "a.lxr:9:0 with t=lemma= a past tense=, b=1"},
      {0, 0, ":0:0"},
      {8, 0, ":0:0"},
  };
  ExpandedFile file = expand_beside(folder.path("a.lxr"), Expanding::when_changed);
  ASSERT_EQ(file.fault, "");
  EXPECT_EQ(bytes_of(folder.path("a.lxr.txt")), "; c\nRlong{x y}\nR{} {} P1;\r\n; why\nL{} {} P2;\ngo1\n a1\n");
  SourceMap written;
  ASSERT_TRUE(source_map_read(folder.path("a.lxr.map"), written, false));
  for (const SourceMap* map : {&file.expansion.map, &written}) {
    for (const auto& row : rows) {
      const MappedPlace place = map->place(row.line, row.column);
      const std::string around = surroundings_text(place);
      EXPECT_EQ(folder.plain(place.file + ':' + std::to_string(place.line) + ':' + std::to_string(place.column) + (around.empty() ? "" : " " + around)),
                row.place);
    }
  }
}

TEST(SourceMap, ADamagedOneIsRefused) {
  Folder folder;
  folder.write("a.lxr", "%for x in (a b)\nR%x\n%end\nL\nL\n");
  ASSERT_EQ(expand_beside(folder.path("a.lxr"), Expanding::anew).fault, "");
  const std::string whole = bytes_of(folder.path("a.lxr.map"));
  SourceMap map;
  for (std::size_t size = 0; size < whole.size(); ++size) {
    folder.write("cut.map", whole.substr(0, size));
    static_cast<void>(source_map_read(folder.path("cut.map"), map, false));
    folder.write("cut.map", whole.substr(0, size) + '9' + whole.substr(size + 1));
    if (!source_map_read(folder.path("cut.map"), map, false)) continue;
    for (int line = 0; line < 9; ++line) static_cast<void>(map.place(line, 3));
  }
}

TEST(ExpandBeside, WritesWhenSomethingHasChanged) {
  Folder folder;
  write_others(folder);
  folder.write("a.lxr", "%include \"sub/in.lxr\"\n%table T = \"v.tsv\"\n");
  folder.write("plain.lxr", "R{}\n");
  const std::string path = folder.path("a.lxr");
  const auto is_new = [&path] { return expand_beside(path, Expanding::when_changed).is_new; };
  EXPECT_FALSE(expand_beside(folder.path("plain.lxr"), Expanding::anew).is_source);
  EXPECT_FALSE(expand_beside(folder.path("plain.txt"), Expanding::anew).is_source);
  EXPECT_TRUE(expand_beside(path, Expanding::in_memory).is_new);
  EXPECT_FALSE(fs::exists(path + ".txt"));
  EXPECT_TRUE(is_new());
  EXPECT_FALSE(is_new());
  const fs::file_time_type first = fs::last_write_time(path + ".txt");
  for (const char* const changed : {"a.lxr", "sub/in.lxr", "sub/more.txt", "v.tsv", "a.lxr.txt"}) {
    SCOPED_TRACE(changed);
    folder.write(changed, bytes_of(folder.path(changed)) + (std::string(changed).ends_with("tsv") ? "b\t\n" : "; more\n"));
    EXPECT_TRUE(is_new());
    EXPECT_FALSE(is_new());
  }
  EXPECT_GT(fs::last_write_time(path + ".txt"), first);
  const fs::file_time_type last = fs::last_write_time(path + ".txt");
  EXPECT_TRUE(expand_beside(path, Expanding::anew).is_new);
  EXPECT_EQ(fs::last_write_time(path + ".txt"), last);  // the same text
  fs::remove(folder.path("v.tsv"));
  const ExpandedFile broken = expand_beside(path, Expanding::when_changed);
  EXPECT_TRUE(broken.is_source && broken.expansion.has_errors());
}

}  // namespace
}  // namespace lexon::test
