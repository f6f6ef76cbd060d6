#include "rules/print.hpp"

#include <gtest/gtest.h>

#include <string>

#include "data/state.hpp"
#include "rules/parser.hpp"
#include "support/rules.hpp"

namespace lexon {
namespace {

using test::printed;
using test::rules_of;

struct PrintRow {
  const char* fact;
  std::string text;
  std::string print;
};

TEST(RulePrint, CanonicalTextReadsBackTheSame) {
  const PrintRow rows[] = {
      {"three colons in every pattern", ":{N,^V:+X:rel:}\"[a]::\"P5;", ":{N,^V:+X:rel:}\"[a]:::\"P5;\n"},
      {"a full line", ":(N)*{^[not],[[go]],V:[went],+PAST::}\"[there]:::\"(PUNCT)P20; and more",
       ":(N)*{^[not],[[go]],V:[went],+PAST::}\"[there]:::\"(PUNCT)P20;\n"},
      {"items by kind", "L{a,[[b]],^c,[d],^[e]}{[[f]],[g]}P1;", "L{[d],^[e],[[b]],a,^c:::}{[g],[[f]]:::}P1;\n"},
      {"a kind apart", "L{[a]}{[[b]]}(c)P1;", "L{[a]:::}{[[b]]:::}(c)P1;\n"},
      {"signs of conditions go", "L(-a,+[b]){-c}{+[[d]]}P1;", "L([b],a){c:::}{[[d]]:::}P1;\n"},
      {"actions", "L{:a,-b,[c],[[d]],+e}{:-x}P1;", "L{:[c],[[d]],+a,-b,+e::}{:-x::}P1;\n"},
      {"a text alone keeps its comma", "L{:[b]}{:[[c]]}P1;", "L{:[b],::}{:[[c]],::}P1;\n"},
      {"both texts alone", "L{:[[c]],[b]}{}P1;", "L{:[b],[[c]],::}{:::}P1;\n"},
      {"labels and roles", "L{::a,b:}{:::<c,d}P1;", "L{::a,b:}{:::c,d}P1;\n"},
      {"signs of roles go", "L{:::>c}{}P1;", "L{:::c}{:::}P1;\n"},
      {"PRE, MID and SUF in the order of the text, braces first", ":(a)(b){x}(c)(d)*\"[w]\"(e)*(f)P1;",
       ":(a)(b){x:::}(c)(d)*\"[w]:::\"(e)*(f)P1;\n"},
      {"the same, a double quote first", ":(a)(b)\"[w]\"(c)(d)*{x}(e)(f)*P1;",
       ":(a)(b)\"[w]:::\"(c)(d)*{x:::}(e)(f)*P1;\n"},
      {"empty groups", "L()(){}{}()()P1;", "L()(){:::}{:::}()()P1;\n"},
      {"priority 255", "L{}{}P255;", "L{:::}{:::}P255;\n"},
  };
  for (const PrintRow& row : rows) {
    SCOPED_TRACE(row.fact);
    EXPECT_EQ(printed(rules_of(row.text)), row.print);
    EXPECT_EQ(printed(rules_of(row.print)), row.print);
  }
}

TEST(RulePrint, CommaInFrontOfActionThatStandsElsewhere) {
  EXPECT_EQ(printed(rules_of("L{:+a,[b]}{:-c,[[d]],+e}P1;")), "L{:[b],+a,::}{:[[d]],-c,+e::}P1;\n");
}

TEST(RulePrint, NamesOfTypes) {
  const PrintRow rows[] = {
      {"word tests", "?{}{}P1;\n?L{}{}P1;\n1{}{}P1;\n?R{}{}P1;\n2{}{}P1;\n",
       "?{:::}{:::}P1;\n?L{:::}{:::}P1;\n?L{:::}{:::}P1;\n?R{:::}{:::}P1;\n?R{:::}{:::}P1;\n"},
      {"copies and merges", "C{}{}P1;\nCL{}{}P1;\nCR{}{}P1;\nDL{}{}P1;\nDR{}{}P1;\nD{}{}P1;\n",
       "C{:::}{:::}P1;\nC{:::}{:::}P1;\nCR{:::}{:::}P1;\nDL{:::}{:::}P1;\nDR{:::}{:::}P1;\nD{:::}{:::}P1;\n"},
      {"steps", "R{}{}P1;\nX{}{}P1;\n+{}{}P1;\n-{}{}P1;\n<{::r}{}P1;\n>{::r}{}P1;\n",
       "R{:::}{:::}P1;\nX{:::}{:::}P1;\n+{:::}{:::}P1;\n-{:::}{:::}P1;\n<{::r:}{:::}P1;\n>{::r:}{:::}P1;\n"},
      {"post-edit", "P:\"[a]\"{}P1;\nPL{}{}P1;\nPR{}{}P1;\nP<\"[a]\"{}P1;\nP>>{}\"[a]\"P1;\nPSL{}{}P1;\nPSR{}{}P1;\n",
       "P:\"[a]:::\"{:::}P1;\nPL{:::}{:::}P1;\nPR{:::}{:::}P1;\nP<<\"[a]:::\"{:::}P1;\nP>>{:::}\"[a]:::\"P1;\n"
       "PSL{:::}{:::}P1;\nPSR{:::}{:::}P1;\n"},
      {"codes that come through PS", "P{}{}P1;\nPSV{}{}P1;\nPSA{a:-a}{}P1;\n",
       "P{:::}{:::}P1;\nGR{:::}{:::}P1;\nA{a:-a::}{:::}P1;\n"},
  };
  for (const PrintRow& row : rows) {
    SCOPED_TRACE(row.fact);
    EXPECT_EQ(printed(rules_of(row.text)), row.print);
  }
}

// What is printed with one tab of indent.
template <typename Print>
std::string indented(Print print) {
  test::Capture output;
  EXPECT_TRUE(trace_indent_grow());
  print();
  trace_indent_shrink();
  return output.text();
}

TEST(RulePrint, IndentAndExtent) {
  Rule* const rules = rules_of("L{}{}P2;\nR{}{}P1;\n");
  const std::string first = "L{:::}{:::}P2;\n";
  const std::string second = "R{:::}{:::}P1;\n";
  EXPECT_EQ(indented([&] { rule_print(rules, true); }), "\t" + first);
  EXPECT_EQ(indented([&] { rule_print(rules, false); }), "\t" + first + second) << "one indent for the list";
  EXPECT_EQ(indented([] { rule_print(nullptr, false); }), "\t");

  RuleCandidate behind{.rule = rules, .lnode = nullptr, .rnode = nullptr, .next = nullptr, .list = nullptr};
  const RuleCandidate head{.rule = rules->next, .lnode = nullptr, .rnode = nullptr, .next = &behind, .list = nullptr};
  EXPECT_EQ(indented([&] { rule_stack_print(&head, true); }), "\t" + second);
  EXPECT_EQ(indented([&] { rule_stack_print(&head, false); }), "\t" + second + "\t" + first);
  EXPECT_EQ(indented([] { rule_stack_print(nullptr, false); }), "");
}

}  // namespace
}  // namespace lexon
