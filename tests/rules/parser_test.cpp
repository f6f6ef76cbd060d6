#include "rules/parser.hpp"

#include "data/pool.hpp"
#include "support/rule_dump.hpp"
#include "support/rules.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

using test::dump;
using test::ParsedRules;
using test::printed;
using test::rules_parsed;

struct Row {
  const char* fact;
  std::string text;
  std::string messages;
  std::string print = {};  // of the rules that are kept; none if left out
};

template <std::size_t Size>
void check(const Row (&rows)[Size]) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.fact);
    const ParsedRules parsed = rules_parsed(row.text);
    EXPECT_EQ(parsed.messages, row.messages);
    EXPECT_EQ(printed(parsed.rules), row.print);
  }
}

TEST(RuleParser, RefusesLinesBySection) {
  const Row rows[] = {
      {"no type", "G{}{}P1;\n", ";;G{}{}P1;\n;;ERR(0,1) in TYPE\n"},
      {"the column counts leading blanks", " \tl{}\n", ";;l{}\n;;ERR(2,1) in TYPE\n"},
      {"blanks without a line end", "  ", ";;;;ERR(2,1) in TYPE\n"},
      {"PS at the end of the stream", "PS", ";;;;ERR(2,1) in TYPE\n"},
      {"PS takes the line feed for its code", "PS\n", ";;;;ERR(3,1) in LNODE\n"},
      {"a group of PRE runs into the line end", "R(a\n", ";;a\n;;ERR(2,1) in COND in PRE\n"},
      {"a group ends without an unfinished token", "R(a ", " in PRE\n"},
      {"a bracket text in a group runs to the line end", "R([a\n", " in PRE\n"},
      {"nothing behind a parenthesis", "R(", " in PRE\n"},
      {"a colon in a group", "R(a:b){}{}P1;\n", ";;:b){}{}P1;\n;;ERR(3,1) in COND in PRE\n"},
      {"a double quote in a group", "R(a \"){}{}P1;\n", ";;\"){}{}P1;\n;;ERR(4,1) in COND in PRE\n"},
      {"a double quote where L wants braces", "L \"x\"{}P1;\n", ";;\"x\"{}P1;\n;;ERR(2,1) in LNODE\n"},
      {"braces where P<< wants a double quote", "P<<{}{}P1;\n", ";;{}{}P1;\n;;ERR(3,1) in LNODE\n"},
      {"MID where the type has none", "L{} (N){}P1;\n", ";;(N){}P1;\n;;ERR(4,1), MID is not allowed\n"},
      {"MID with the code A", "PSA{}(N)\"[x]\"P1;\n", ";;(N)\"[x]\"P1;\n;;ERR(5,1), MID is not allowed\n"},
      {"a group of MID fails", ":\"[a]\"(N(\n", ";;N(\n;;ERR(7,1) in COND in MID\n"},
      {"braces on both sides of MID", ":{N}(M) {}P1;\n", ";;{}P1;\n;;ERR(8,1) in RNODE\n"},
      {"no right node", "R{}\n", ";;\n;;ERR(3,1) in RNODE\n"},
      {"a double quote where R wants braces", "R{}\"[a]\"P1;\n", ";;\"[a]\"P1;\n;;ERR(3,1) in RNODE\n"},
      {"braces where P>> wants a double quote", "P>>{}{}P1;\n", ";;{}P1;\n;;ERR(5,1) in RNODE\n"},
      {"the right pattern fails", "R{}{a)}P1;\n", ";;)}P1;\n;;ERR(5,1) in COND in RNODE\n"},
      {"a group of SUF fails", "R{}{}(a}P1;\n", ";;}P1;\n;;ERR(7,1) in COND in SUF\n"},
      {"endless, with the whole line", "  :{}{}P1;\n", ";;  :{}{}P1;\n;;ERR(0,1), an endless loop rule\n"},
  };
  check(rows);
}

TEST(RuleParser, RefusesPatternsBySection) {
  const std::string two_hw = " more than 2 affirmative condtions of HW are not allowed in COND in LNODE\n";
  const std::string two_cw = " more than 2 affirmative condtions of CW are not allowed in COND in LNODE\n";
  const Row rows[] = {
      {"the line feed is a token that fails", "R{\n", ";;\n;;ERR(2,1) in COND in LNODE\n"},
      {"a condition starts behind its sign", "R{^a\n", ";;a\n;;ERR(3,1) in COND in LNODE\n"},
      {"a surface form that cannot be read", "R{N,[", ";;[;;ERR(4,1) in COND in LNODE\n"},
      {"a concept word that cannot be read", "R{-[[", ";;[[;;ERR(3,1) in COND in LNODE\n"},
      {"a surface form that no reserved character ends", "R{[a] N}{}P1;\n", ";;;;ERR(14,1) in LNODE\n"},
      {"a surface form up to the line end", "R{[a\n", ";;;;ERR(5,1) in LNODE\n"},
      {"a concept word up to the line end", "R{[[a\n", ";;;;ERR(6,1) in LNODE\n"},
      {"no closer behind an item", "R{a ", ";;;;ERR(4,1) in LNODE\n"},
      {"a parenthesis behind a condition", "R{a )}{}P1;\n", ";;)}{}P1;\n;;ERR(4,1) in COND in LNODE\n"},
      {"a comma splits parentheses", "R{abc(d,e)}{}P1;\n", ";;)}{}P1;\n;;ERR(9,1) in COND in LNODE\n"},
      {"a second surface form", "R{ N,[a],[b]}{}P1;\n", ";;N,[a],[b]}{}P1;\n;;ERR(3,1)" + two_hw},
      {"a second concept word", "R{[[a]],[x],[[b]]}{}P1;\n", ";;[[a]],[x],[[b]]}{}P1;\n;;ERR(2,1)" + two_cw},
      {"a negated action", "R{x:^y}{}P1;\n", ";;^y}{}P1;\n;;ERR(4,1) in ACTION in LNODE\n"},
      {"an action runs into the line end", "R{x:-y\n", ";;y\n;;ERR(5,1) in ACTION in LNODE\n"},
      {"an action that cannot be read", "R{x:[", ";;[;;ERR(4,1) in ACTION in LNODE\n"},
      {"a parenthesis behind an action", "R{x:y,)}{}P1;\n", ";;)}{}P1;\n;;ERR(6,1) in ACTION in LNODE\n"},
      {"a label runs into the line end", "R{:: ab\n", ";;ab\n;;ERR(5,1) in RELATION in LNODE\n"},
      {"a parenthesis behind a label", "R{::ab,)}{}P1;\n", ";;)}{}P1;\n;;ERR(7,1) in RELATION in LNODE\n"},
      {"a role runs into the line end", "R{:::<ab\n", ";;ab\n;;ERR(6,1) in ROLE in LNODE\n"},
      {"a parenthesis behind a role", "R{:::a )}{}P1;\n", ";;)}{}P1;\n;;ROLE ERR(7,1) in LNODE\n"},
      {"a fifth section", "R{:::a:b}{}P1;\n", ";;:b}{}P1;\n;;ROLE ERR(6,1) in LNODE\n"},
      {"a fifth section behind empty ones", "R{::::c}{}P1;\n", ";;:c}{}P1;\n;;ROLE ERR(5,1) in LNODE\n"},
  };
  check(rows);
}

TEST(RuleParser, WarnsAndKeeps) {
  const std::string no_relation = ";;WARNING(0,1), no relation is found in LNODE and RNODE of above rule of type '>' or '<'\n";
  const std::string no_priority = ";;WARNING(0,1), no priority in above rule, to be treated as 0\n";
  const Row rows[] = {
      {"no priority", "L{}{}\n", ";;L{}{}\n" + no_priority, "L{:::}{:::}P0;\n"},
      {"priority 0", " L{}{}P0;\n", ";; L{}{}P0;\n" + no_priority, "L{:::}{:::}P0;\n"},
      {"priority 256 wraps to 0", "L{}{}P256\n", ";;L{}{}P256\n" + no_priority, "L{:::}{:::}P0;\n"},
      {"priority 300 wraps to 44", "L{}{}P300;\n", "", "L{:::}{:::}P44;\n"},
      {"the rest of the line is not read", "L{}{}P7x({\"\n", "", "L{:::}{:::}P7;\n"},
      {"a shift without relation", "<{}{}P1;\n", ";;<{}{}P1;\n" + no_relation, "<{:::}{:::}P1;\n"},
      {"both warnings", ">{}{}\n", ";;>{}{}\n" + no_relation + ";;>{}{}\n" + no_priority, ">{:::}{:::}P0;\n"},
      {"a relation on the right", "<{}{::r}P1;\n", "", "<{:::}{::r:}P1;\n"},
      {"an inserted pattern is never endless", ":\"[x]::\"{}\n", ";;:\"[x]::\"{}\n" + no_priority, ":\"[x]:::\"{:::}P0;\n"},
      {"blanks between the parts", " : (A) {N:-N} (B)* \"[x]\" (C) P3;\n", "", ":(A){N:-N::}(B)*\"[x]:::\"(C)P3;\n"},
  };
  check(rows);
}

struct FieldsRow {
  const char* fact;
  std::string text;
  std::string fields;
};

TEST(RuleParser, PatternFields) {
  const FieldsRow rows[] = {
      {"nothing", "{}", "brace "},
      {"prefixes of conditions", "{a,^b,-c,+d}", "brace attr<1a 0b 2c 3d>"},
      {"a comma in front is an empty attribute", "{,a}", "brace attr<1 1a>"},
      {"lists by kind", "{a,[h],^[[c]],^[g]}", "brace hw<1h 0g>cw<0c>attr<1a>"},
      {"negated ones beside one another", "{^[a],^[b],[c],^[[a]],^[[b]]}", "brace hw<0a 0b 1c>cw<0a 0b>"},
      {"signed surface forms do not count as affirmative", "{+[a],-[b],[c]}", "brace hw<3a 2b 1c>"},
      {"a bracket for surface form", "{[[]}", "brace hw<1[>"},
      {"an empty concept word", "{[[]]}", "brace cw<1>"},
      {"escaped brackets", "{[\\[x\\]]}", "brace hw<1[x]>"},
      {"a backslash opens no surface form", "{\\[x\\]}", "brace attr<1\\[x\\]>"},
      {"actions", "{:x,+y,-z}", "brace act<3x 3y 2z>"},
      {"the sign of a bracketed action goes", "{:-[x],+[[y]]}", "brace act<8x 9y>set_hw<x>set_cw<y>"},
      {"the last text wins", "{:[a],b,[c],[[d]],[[e]]}", "brace act<8a 3b 8c 9d 9e>set_hw<c>set_cw<e>"},
      {"labels are cut at 3", "{::abcdef,gh}", "brace rel<l'abc l'gh>"},
      {"an empty label", "{::,a}", "brace rel<l' l'a>"},
      {"roles", "{:::>a,<b c}", "brace role<>'a <'b <'c>"},
      {"blanks behind the colons", "{ a : b : c : d }", "brace attr<1a>act<3b>rel<l'c>role<<'d>"},
      {"the closer is not tied to the opener", "{a\"", "brace attr<1a>"},
      {"an attribute of 300 is cut at 256", "{" + std::string(300, 'a') + "}", "brace attr<1" + std::string(256, 'a') + ">"},
      {"a role of 70 is cut at 64", "{:::" + std::string(70, 'r') + "}", "brace role<<'" + std::string(64, 'r') + ">"},
  };
  for (const FieldsRow& row : rows) {
    SCOPED_TRACE(row.fact);
    const Rule* rule = test::rules_of("L" + row.text + "{}P1;");
    ASSERT_NE(rule, nullptr);
    EXPECT_EQ(dump(*rule->lnode), row.fields);
  }
}

TEST(RuleParser, OrderOfGroups) {
  const FieldsRow rows[] = {
      {"PRE is turned, SUF is not", "L(a)(b)*{}{}(c)(d)*P1;", "L/0 (attr<1b>)*(attr<1a>) | brace  |  | brace  | (attr<1c>)(attr<1d>)* P1\n"},
      {"MID in order behind braces", ":{x}(a)(b)\"[w]\"P1;", ":/0  | brace attr<1x> | (attr<1a>)(attr<1b>) | quote hw<1w> |  P1\n"},
      {"MID turned behind a double quote", "P:\"[w]\"(a)(b){}P1;", "5/0  | quote hw<1w> | (attr<1b>)(attr<1a>) | brace  |  P1\n"},
      {"no limit of affirmative ones in a group", "L([a],[b],[[c]],[[d]]){}{}P1;", "L/0 (hw<1a 1b>cw<1c 1d>) | brace  |  | brace  |  P1\n"},
      {"a lone starred group without attributes goes", "L([x])*{}{}(^[[y]])*P1;", "L/0  | brace  |  | brace  |  P1\n"},
      {"with attributes it stays", "L(X)*{}{}(Y)*P1;", "L/0 (attr<1X>)* | brace  |  | brace  | (attr<1Y>)* P1\n"},
      {"beside another it stays", "L()*(){}{}()()*P1;", "L/0 ()()* | brace  |  | brace  | ()()* P1\n"},
      {"a blank parts the star from its group", "L(a) {}{}(b) P1;", "L/0 (attr<1a>) | brace  |  | brace  | (attr<1b>) P1\n"},
      {"the side of a label", "L{::a}{::b}P1;", "L/0  | brace rel<l'a> |  | brace rel<r'b> |  P1\n"},
  };
  for (const FieldsRow& row : rows) {
    SCOPED_TRACE(row.fact);
    EXPECT_EQ(dump(test::rules_of(row.text)), row.fields);
  }
}

struct EndlessRow {
  const char* fact;
  const char* rule;
  bool kept;
};

TEST(RuleParser, EndlessRules) {
  const EndlessRow rows[] = {
      {"no conditions", ":{:+a}{:-b}P1;", false},
      {"no actions", ":{a}{[b]}P1;", false},
      {"code A", "PSA{}{}P1;", false},
      {"only these types are tested", "L{}{}P1;", true},
      {"braces alone are tested, left", ":\"[x]\"{}P1;", true},
      {"braces alone are tested, right", ":{}\"[x]\"P1;", true},
      {"delete what is wanted", ":{N:-N}{}P1;", true},
      {"delete on the right", ":{}{N:-N}P1;", true},
      {"add what is wanted", ":{N:+N}{}P1;", false},
      {"add what is forbidden", ":{^N:N}{}P1;", true},
      {"delete what is forbidden", ":{^N:-N}{}P1;", false},
      {"another attribute", ":{N:-NN}{}P1;", false},
      {"the other side's condition does not count", ":{N}{:-N}P1;", false},
      {"a signed condition does not count", ":{+N:-N}{}P1;", false},
      {"any action of several", ":{N,M:+x,-y}{^Q:+z,+Q}P1;", true},
      {"set a form that is forbidden", ":{^[a]:[a]}{}P1;", true},
      {"set a form other than the wanted", ":{[a]:[b]}{}P1;", true},
      {"set the wanted form", ":{[a]:[a]}{}P1;", false},
      {"the last form counts", ":{[a]:[b],[a]}{}P1;", false},
      {"a signed form does not count", ":{-[a]:[b]}{}P1;", false},
      {"set another concept word", ":{[[a]]:[[b]]}{}P1;", true},
      {"set the wanted concept word", ":{[[a]]:[[a]]}{}P1;", false},
      {"PRE, MID and SUF play no part", ":(a){:-a}{}(b)P1;", false},
  };
  for (const EndlessRow& row : rows) {
    SCOPED_TRACE(row.fact);
    const ParsedRules parsed = rules_parsed(row.rule);
    const std::string error = ";;" + std::string(row.rule) + ";;ERR(0,1), an endless loop rule\n";
    EXPECT_EQ(parsed.messages, row.kept ? "" : error);
    EXPECT_EQ(parsed.rules != nullptr, row.kept);
  }
}

TEST(RuleParser, FallingPriorityAndFileOrder) {
  EXPECT_EQ(printed(test::rules_of("L{a}{}P5;\nL{b}{}P9;\nL{c}{}P255;\nL{d}{}P5;\nL{e}{}P1;\nL{f}{}P9;\n")),
            "L{c:::}{:::}P255;\nL{b:::}{:::}P9;\nL{f:::}{:::}P9;\nL{a:::}{:::}P5;\nL{d:::}{:::}P5;\nL{e:::}{:::}P1;\n");
}

TEST(RuleParser, Lines) {
  using namespace std::string_literals;
  const std::string rule = "L{a}{}P1;";
  const std::string print = "L{a:::}{:::}P1;\n";
  const std::string wrong = ";;G\n;;ERR(0,3) in TYPE\n";
  const std::string rest(200, 'x');
  const Row rows[] = {
      {"nothing", "", "", ""},
      {"comments and empty lines count", "; x\n \t\nG\n", wrong, ""},
      {"CR LF is one line feed", "\r\n;\r\nG\r\n" + rule + "\r\n", wrong, print},
      {"a lone CR is a character", "\rL\n", ";;\rL\n;;ERR(0,1) in TYPE\n", ""},
      {"an error drops its own line alone", rule + "\nG\n" + rule, ";;G\n;;ERR(0,2) in TYPE\n", print + print},
      {"a line of 1023 characters is one", rule + std::string(1013, ' ') + "\n\nG\n", wrong, print},
      {"a line of 1024 characters is two", rule + std::string(1014, ' ') + "\nG\n", wrong, print},
      {"the rest of a long line is read as a line", rule + std::string(1014, ' ') + rest + "\nG\n", ";;" + rest + "\n;;ERR(0,2) in TYPE\n" + wrong, print},
      {"a rule is cut in two", "L{" + std::string(1021, 'a') + "}{}P1;\nG\n",
       ";;" + std::string(1021, 'a') + ";;ERR(2,1) in COND in LNODE\n;;}{}P1;\n;;ERR(0,2) in TYPE\n" + wrong, ""},
      {"a NUL ends its line's text", "L{a}{}\0(\nL{\0}{}P1;\nG\n"s,
       ";;L{a}{};;WARNING(0,1), no priority in above rule, to be treated as 0\n;;;;ERR(2,2) in LNODE\n" + wrong, "L{a:::}{:::}P0;\n"},
      {"a line of a NUL is no empty line", "\0\n"s, ";;;;ERR(0,1) in TYPE\n", ""},
      {"text is 8-bit", "L{\xc3\xa9}{[\xff]}P1;", "", "L{\xc3\xa9:::}{[\xff]:::}P1;\n"},
  };
  check(rows);
}

struct StatusRow {
  const char* fact;
  std::string text;
  Status status;
};

TEST(RuleParser, StatusIsThatOfTheLastLine) {
  const StatusRow rows[] = {
      {"a pattern that fails", "L{a)}{}P1;", Status::no_effect},
      {"a group that fails", "L{}{}(a", Status::no_effect},
      {"a rule behind it", "L{a)}{}P1;\nL{}{}P1;", Status::ok},
      {"a comment behind it", "L{a)}{}P1;\n;", Status::ok},
      {"an empty line behind it", "L{a)}{}P1;\n\n", Status::ok},
      {"an error of TYPE", "G", Status::ok},
      {"a missing left node", "L", Status::ok},
      {"MID is not allowed", "L{}(a){}P1;", Status::ok},
      {"a missing right node", "L{}", Status::ok},
      {"an endless rule", ":{}{}P1;", Status::ok},
  };
  for (const StatusRow& row : rows) {
    SCOPED_TRACE(row.fact);
    EXPECT_EQ(rules_parsed(row.text).status, row.status);
    EXPECT_EQ(rules_parsed("").status, row.status) << "an empty file leaves the status as it was";
  }
  session.state.engine_status = Status::ok;
}

TEST(RuleParser, RefusedRulesGiveTheirMemoryBack) {
  std::string text;
  for (int i = 0; i < 500; ++i) text += ":(a,b)(c){d,e}(f)\"w\"(g,h\n:(a,b){c,d}{e,f}P1;\n";
  (void)rules_parsed(text);
  const int blocks = grammar.pool.blocks();
  for (int i = 0; i < 10; ++i) (void)rules_parsed(text);
  EXPECT_EQ(grammar.pool.blocks(), blocks);
  session.state.engine_status = Status::ok;
}

TEST(RuleParser, StopsWhenAsked) {
  session.stop_requested = true;
  const ParsedRules parsed = rules_parsed("L{}{}P1;\nG\n");
  session.stop_requested = false;
  EXPECT_EQ(parsed.status, Status::stopped);
  EXPECT_EQ(parsed.messages, "");
  EXPECT_EQ(parsed.rules, nullptr);
}

}  // namespace
}  // namespace lexon::test
