#include "engine/post_edit.hpp"

#include "engine/post_edit_rule.hpp"
#include "support/grammar.hpp"
#include "support/step.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

struct ShiftCase {
  const char* what;
  const char* rule;
  const char* before;
  const char* after;
};

TEST(Shift, SplitsAWordInTwo) {
  const ShiftCase rows[] = {
      // To the left.
      {"Front", "P<<\"[un]\"{}P1;", "<< [a(0)] [unable=can~i/A,B(0)] >>", "<< a(0) [un~i/A,B^0(m)] [able=can~i/A,B(0)] >>"},
      {"FrontWithAnotherText", "P<\"[un]:[not ]\"{}P1;", "<< [a(0)] [unable/A(0)] >>", "<< a(0) [not /A|not /A^0(1)] [able/A(0)] >>"},
      {"OneCharacterWithoutACondition", "P<<\":[x]\"{}P1;", "<< [a(0)] [unable(0)] >>", "<< a(0) [x|x^0(1)] [nable(0)] >>"},
      {"WholeTextWithoutAnyText", "P<<\"\"{}P1;", "<< [a(0)] [unable(0)] >>", "<< a(0) [unable^0(m)] [nable(0)] >>"},
      {"AllOfTheWord", "P<<\"[ab]\"{}P1;", "<< [a(0)] [ab/A(0)] >>", "<< a(0) [ab/A^0(m)] [/H#NIL,A(0)] >>"},
      {"AllOfAWordWithoutAttributes", "P<<\"[ab]\"{}P1;", "<< [a(0)] [ab(0)] >>", "<< a(0) [ab^0(m)] [/H#NIL,(0)] >>"},
      {"ActionsOnBothNodes", "P<<\"[un]:+x\"{:-A}P1;", "<< [a(0)] [unable/A(0)] >>", "<< a(0) [un/x,A|un/A^0(1)] [able|able/A(1)] >>"},
      // To the right.
      {"Back", "P>>{}\"[ed]\"P1;", "<< [walked=walk/V(0)] [b(0)] >>", "<< [walk=walk/V(0)] [ed/V^0(m)] b(0) >>"},
      {"EmptyConditionCutsNothing", "P>{}\"[]\"P1;", "<< [walked(0)] [b(0)] >>", "<< [walked(0)] [^0(m)] b(0) >>"},
      {"OneCharacterWithoutACondition", "P>>{}\"\"P1;", "<< [walked(0)] [b(0)] >>", "<< [walke(0)] [walked^0(m)] b(0) >>"},
      {"AllOfTheWord", "P>>{}\"[ab]\"P1;", "<< [ab/A(0)] [b(0)] >>", "<< [/H#NIL,A(0)] [ab/A^0(m)] b(0) >>"},
  };
  for (const ShiftCase& row : rows) {
    SCOPED_TRACE(row.what);

    Step step(row.rule, row.before);
    EXPECT_EQ(post_edit_rule(session, step.window, *step.candidate), Status::ok);
    EXPECT_EQ(step.text(), row.after);
  }
}

TEST(Shift, KeepsTheSizesAndAllAttributesOfAnEmptiedWord) {
  const std::string attrs(1023, 'A');
  Step step("P<<\"[ab]\"{}P1;", "<< [a(0)] [ab/" + attrs + "(0)] >>");
  EXPECT_EQ(post_edit_rule(session, step.window, *step.candidate), Status::ok);
  EXPECT_EQ(step.window.rnode->candidates->hw_len, 0);
  EXPECT_EQ(step.window.rnode->candidates->attrs, "H#NIL," + attrs);
  EXPECT_EQ(step.window.rnode->candidates->attr_len, 1023);
}

TEST(Shift, OfAPlaceWithoutTextFailsTheRuleBase) {
  Capture output;
  Step empty("P<<\"[x]\"{}P1;", "<< [a(0)] [/A(0)] >>");
  EXPECT_EQ(post_edit_rule(session, empty.window, *empty.candidate), Status::rule_base);
}

TEST(Shift, ShowsTheRuleTheNodesAndTheList) {
  Step step("P<<\"[un]\"{}P1;", "<< [a(0)] [unable/A(0)] >>");
  session.state.trace_level = 2;
  Capture output;
  EXPECT_EQ(post_edit_rule(session, step.window, *step.candidate), Status::ok);
  EXPECT_EQ(output.text(),
            "==================== APPLIED RULE ==================\n"
            "P<<\"[un]:::\"{:::}P1;\n"
            "====================================================\n"
            ">>>>> lnode  SHIFTED\n"
            "[un]{}  \"\" (A) <.,0,0>;\n"
            ">>>>> rnode\n"
            "[able]{}  \"\" (A) <.,0,0>;\n"
            "=================== NODE LIST:00 ===================\n"
            "/<</a/[un]/[able]/>>/\n"
            "====================================================\n"
            "lnode >>>>>\n"
            "[un]{}  \"\" (A) <.,0,0>;\n"
            "rnode >>>>>\n"
            "[able]{}  \"\" (A) <.,0,0>;\n");
}

TEST(ScopeRule, EditsTheListOfTheScopeAndThenActs) {
  for (const char* rule : {"PSL{:+x}{}P1;", "PSR{}{:+x}P1;"}) {
    const bool left = rule[2] == 'L';
    use_rules(rule);
    const List outer(left ? "<< [SCOPE:04/A(0)] [b(0)] >>" : "<< [b(0)] [SCOPE:04/A(0)] >>");
    const List inner("<</CHEAD e(0) >>/CTAIL");
    session.sentence.semlst[0].number = 0;
    add_scope(4, &inner.at(1));
    Window window{outer.lnode, outer.rnode};
    session.state.trace_level = 2;
    Capture output;
    EXPECT_EQ(post_edit_rule(session, window, *Step::candidate_of(grammar.index.matrix.rules)), Status::ok);
    EXPECT_EQ(text_of_node(left ? window.lnode : window.rnode), "SCOPE:04/x,A|SCOPE:04/A(1)");
    EXPECT_EQ(session.state.semlst_cur, 0);
    const std::string text = output.text();
    const std::size_t begin = text.find(";;==>>");
    EXPECT_EQ(text.substr(begin, text.find("\n====", begin) + 1 - begin),
              ";;==>> PostEdit SCOPE:04\n"
              "\t=================== NODE LIST:04 ===================\n"
              "\t/<</[e]/[>>]/\n"
              "\t====================================================\n"
              "\tlnode >>>>>\n"
              "\t[e]{}  \"\" () <.,0,0>;\n"
              "\trnode >>>>>\n"
              "\t[>>]{}  \"\" (CTAIL) <.,0,0>;\n"
              ";;<<== PostEdit SCOPE:04\n");
  }
}

TEST(ScopeRule, WithoutAScopeHasNoEffect) {
  for (const char* list : {"<< [a(0)] [b(0)] >>", "<< [SCOPE:09/A(0)] [b(0)] >>"}) {
    Step step("PSL{:+x}{}P1;", list);
    add_scope(4, node_of_text("e"));
    const std::string before = step.text();
    EXPECT_EQ(post_edit_rule(session, step.window, *step.candidate), Status::ok);
    EXPECT_EQ(step.text(), before);
  }
}

struct PassCase {
  const char* what;
  const char* rules;
  const char* before;
  const char* after;
  Status status = Status::ok;
};

TEST(Pass, WalksFromTheEndAsLongAsRulesFit) {
  const PassCase rows[] = {
      {"NoRules", "L{}{}P1;", "<<(0) a(0) >>(0)", "<<(0) a(0) >>(0)"},
      {"ToTheLeftEnd", "PL{}{}P1;", "<<(0) a(0) >>(0)", "<<(00) a(0) >>(0)"},
      {"FirstWindowWithoutARule", "PL{STAIL}{}P1;", "<<(0) a(0) >>(0)", "<<(0) a(0) >>(0)"},
      {"ScopeRulesNeedAReference", "PSL{:+x}{}P1;", "<<(0) a(0) >>(0)", "<<(0) a(0) >>(0)"},
      {"TextOfAWordThatTheFirstRuleLetGoOf", "P:{}\"[x]\"P3;\nPL{[x]}{}P2;\nP<<\"[un]\"{}P1;", "<<(0) a(0) !unable(0)", "<<(0) a(0) !(0)", Status::rule_base},
      {"BackOfTheLastWord", "P>>{V}\"[ed]:+B,-V\"P1;", "<<(0) ended/V(0) >>(0)", "<<(0) end/V(0) ed/B|ed/V^0(1) >>(0)"},
  };
  for (const PassCase& row : rows) {
    SCOPED_TRACE(row.what);

    use_rules(row.rules);
    const List list(row.before);
    EXPECT_EQ(post_edit(session, &list.at(1)), row.status);
    EXPECT_EQ(text_of_list(&list.at(0)), row.after);
  }
}

TEST(Pass, LeavesAtOnceWhenAsked) {
  use_rules("PL{}{}P1;");
  const List list("<<(0) a(0) >>(0)");
  session.stop_requested = true;
  EXPECT_EQ(post_edit(session, &list.at(1)), Status::stopped);
  session.stop_requested = false;
  EXPECT_EQ(text_of_list(&list.at(0)), "<<(0) a(0) >>(0)");
}

}  // namespace
}  // namespace lexon::test
