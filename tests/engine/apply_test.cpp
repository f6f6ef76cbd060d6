#include "engine/apply.hpp"

#include "data/words.hpp"
#include "engine/application.hpp"
#include "support/session.hpp"
#include "support/step.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

struct MoveCase {
  const char* what;
  const char* rule;
  const char* before;
  const char* after;
  Status status = Status::ok;
};

TEST(Movement, LeavesListWindowAndMarkers) {
  const MoveCase rows[] = {
      // Shift.
      {"Left", "L{}{}P1;", "<< [a] [b] >>", "[<<(m)] [a(0)] b(0) >>"},
      // The left place is empty, and the right one stays as it was.
      {"LeftOffTheList", "L{}{}P1;", "[<<] [a] >>", "<<(0) [a(0)] >>"},
      {"LeftWithActions", "L{:+x}{}P1;", "<< [a] [b] >>", "[<<(m)] [a/x|a(1)] b(0) >>"},
      {"PostEditLeft", "PL{}{}P1;", "<< [a] [b] >>", "[<<(m)] [a(0)] b(0) >>"},
      {"RightOntoAFreshNode", "R{}{}P1;", "<< [a] [b] >>", "<< a(0) [b(0)] [>>]"},
      {"RightOntoATouchedNode", "R{}{}P1;", "<< [a] [b] c(0) >>", "<< a(0) [b(0)] [c(m0)] >>"},
      {"RightPastTheEnd", "R{}{}P1;", "<< [a] [>>]", "<< a(0) [>>(0)]"},
      {"PostEditRight", "PR{}{}P1;", "<< [a] [b] >>", "<< a(0) [b(0)] [>>]"},
      // Insertion.
      {"UnchangedWordStays", ":{A:-A}{}P1;", "<< [a/B] [b] >>", "<< [a/B(0)] [b(0)] >>"},
      {"ChangedLeftWordSteps", ":{A:-A}{}P1;", "<< [a/A] [b] >>", "[<<(m)] [a|a/A(1)] b(0) >>"},
      {"ChangedBoundaryCannotStep", ":{:-SHEAD}\"[b]\"P1;", "[<<] [b] >>", "[<<|<<(1)] [b(0)] >>"},
      {"ChangedRightWordStays", ":{}{A:-A}P1;", "<< [a] [b/A] >>", "<< [a(0)] [b|b/A(1)] >>"},
      {"InsertedRightStays", ":{}\"[b]\"P1;", "<< [a] [b] >>", "<< [a(0)] [b(0)] >>"},
      {"InsertedLeftSteps", ":\"[a]\"{}P1;", "<< [a] [b] >>", "[<<(m)] [a(0)] b(0) >>"},
      {"PostEditChangedSteps", "P:{A:-A}{}P1;", "<< [a/A] [b] >>", "[<<(m)] [a|a/A(1)] b(0) >>"},
      // Copy and exchange.
      {"LeftCopy", "CL{}{}P1;", "<< [a/A] [b] >>", "[<<(m)] [a/#ORIG,A|a/A(1)] a/#COPY,A(m) b(0) >>"},
      {"LeftCopyOfAChangedWord", "C{:+x}{}P1;", "<< [a/A] [b] >>", "[<<(m)] [a/#ORIG,x,A|a/A(1)] a/#COPY,x,A(m) b(0) >>"},
      {"RightCopyStays", "CR{}{}P1;", "<< [a] [b/B] >>", "<< [a(0)] [b/#ORIG,B|b/B(1)] b/#COPY,B(m) >>"},
      {"RightCopyBesideAChangedWordSteps", "CR{:+x}{}P1;", "<< [a] [b/B] >>", "[<<(m)] [a/x|a(1)] b/#ORIG,B|b/B(1) b/#COPY,B(m) >>"},
      {"Exchange", "X{}{}P1;", "<< [a] [b] >>", "[<<(m)] [b(00)] a(00) >>"},
      // The word itself is changed.
      {"ExchangeWithActions", "X{:+x}{:+y}P1;", "<< [a] [b] >>", "[<<(m)] [b/y(10)] a/x(10) >>"},
      {"NoExchangeAtTheLeftEnd", "X{:+x}{}P1;", "[<<] [b] >>", "[<<(0)] [b(0)] >>"},
      {"NoExchangeAtTheRightEnd", "X{:+x}{}P1;", "<< [a] [>>]", "<< [a(0)] [>>(0)]"},
      // Merge.
      {"LeftDropsOut", "DL{}{}P1;", "<< [a/A] [b/B|c] >>", "[<<(m)] [b/B|b/B|c(0)] >>"},
      {"LeftDropsOutWithActions", "DL{:+x}{:+y}P1;", "<< [a/A] [b/B] >>", "[<<(m)] [b/y,B|b/B(1)] >>"},
      {"RightDropsOut", "DR{}{}P1;", "<< [a/A|d] [b/B] c >>", "<< [a/A|a/A|d(0)] [c(m)] >>"},
      {"RightDropsOutWithActions", "DR{:+x}{:+y}P1;", "<< [a/A] [b/B] c >>", "[<<(m)] [a/x,A|a/A(1)] c >>"},
      {"ActionsWithoutEffectCountToo", "DR{:+A}{}P1;", "<< [a/A] [b/B] c >>", "[<<(m)] [a/A|a/A(1)] c >>"},
      // Without effect.
      {"Plus", "+{:+x}{}P1;", "<< [a] [b] >>", "<< [a(0)] [b(0)] >>", Status::no_effect},
      {"Minus", "-{}{}P1;", "<< [a] [b] >>", "<< [a(0)] [b(0)] >>", Status::no_effect},
      {"Less", "<{::r}{}P1;", "<< [a] [b] >>", "<< [a(0)] [b(0)] >>", Status::no_effect},
      {"Drop", "D{}{}P1;", "<< [a] [b] >>", "<< [a(0)] [b(0)] >>", Status::no_effect},
      {"PostEditShift", "PSL{}{}P1;", "<< [a] [b] >>", "<< [a(0)] [b(0)] >>", Status::no_effect},
  };
  for (const MoveCase& move : rows) {
    SCOPED_TRACE(move.what);
    Step step(move.rule, move.before);
    step.matched();
    RuleCandidate* candidate = step.candidate;
    std::int32_t home_scope = 0;
    EXPECT_EQ(apply_rule(session, step.window, candidate, &home_scope), move.status);
    EXPECT_EQ(step.text(), move.after);
    EXPECT_EQ(candidate, step.candidate);
  }
}

TEST(Application, RefusesToMoveWhenTheRecordsDisagree) {
  for (const char* rule : {"L{:+x}{}P1;", "R{:+x}{}P1;", ":{:+x}\"[b]\"P1;"}) {
    Step step(rule, "<< [a] [b(0)] >>");
    (void)match_record_push(session, *step.window.lnode, kStateStep, step.candidate);
    EXPECT_EQ(apply_rule(session, step.window, step.candidate, nullptr), Status::no_effect);
    // The actions have happened already.
    EXPECT_EQ(step.text(), "<< [a/x|a(1)] [b(0)] >>") << rule;
  }
}

TEST(Application, StepsOverAnInsertedNodeOnTheWayRight) {
  Step step("R{}{}P1;", "<< [a] [b] >>");
  step.rule->lnode->inserted = 1;
  step.matched();
  EXPECT_EQ(apply_rule(session, step.window, step.candidate, nullptr), Status::ok);
  EXPECT_EQ(step.text(), "<<(m) [a(0)] [b(m0)] >>");
}

// What a step cannot do must end the sentence, not the program.
TEST(Application, AtAnEmptyPlaceOrOnAFreshNodeFailsTheRuleBase) {
  Capture output;
  for (const char* rule : {"L{}{}P1;", "R{}{}P1;", ":{A:-A}{}P1;", "C{}{}P1;", "CR{}{}P1;", "X{:+x}{}P1;", "DL{}{}P1;", "DR{}{}P1;"}) {
    Step empty(rule, "<< [a] [b] >>");
    empty.matched();
    (rule[0] == 'L' ? empty.window.rnode : empty.window.lnode) = nullptr;
    EXPECT_EQ(apply_rule(session, empty.window, empty.candidate, nullptr), Status::rule_base) << rule;
    EXPECT_EQ(must_leave(session), Status::rule_base) << rule;
    const bool brings_its_own_records = rule[0] == 'X' || rule[0] == 'D';
    if (brings_its_own_records) continue;
    Step fresh(rule, "<< [a] [b] >>");
    EXPECT_EQ(apply_rule(session, fresh.window, fresh.candidate, nullptr), Status::rule_base) << rule;
  }
}

TEST(MergeNode, KnowsBothNodesAndTakesTheRoleOfTheEntry) {
  Step step("DL{}{}P1;", "<< [a] [b] >>");
  Node& a = step.list.at(1);
  Node& b = step.list.at(2);
  session.sentence.semlst[0].entry = &b;
  b.name = temp_text(session, "b");
  arc_between(b, a, "agn");
  step.matched();
  EXPECT_EQ(apply_rule(session, step.window, step.candidate, nullptr), Status::ok);
  const Node& merged = *step.window.rnode;
  EXPECT_EQ(session.sentence.semlst[0].entry, &merged);
  EXPECT_EQ(merged.merged_with, &a);
  EXPECT_EQ(merged.source, &b);
  EXPECT_EQ(merged.name, b.name);
  EXPECT_EQ(merged.relations, b.relations);
  EXPECT_EQ(merged.matches->candidate, step.candidate);
  EXPECT_TRUE(a.left == nullptr && a.right == nullptr);
  // The survivor remembers where it stood.
  EXPECT_TRUE(b.left == &a && b.right == &step.list.at(3));
}

TEST(Application, AtLevelTwoShowsRuleNodesAndList) {
  Step step(":{N:+x}\"[b]\"P7;", "<< [a/A] [b] >>");
  step.matched();
  session.state.trace_level = 2;
  Capture output;
  EXPECT_EQ(apply_rule(session, step.window, step.candidate, nullptr), Status::ok);
  EXPECT_EQ(output.text(),
            "==================== APPLIED RULE ==================\n"
            ":{N:+x::}\"[b]:::\"P7;\n"
            "====================================================\n"
            ">>>>> lnode\n"
            "[a]{}  \"\" (x,A) <.,0,0>;\n"
            ">>>>> rnode  INSERTED\n"
            "[b]{}  \"\" () <.,0,0>;\n"
            "=================== NODE LIST:00 ===================\n"
            "/[<<]/[a]/b/>>/\n"
            "====================================================\n"
            "lnode >>>>>\n"
            "[<<]{}  \"\" (SHEAD) <.,0,0>;\n"
            "rnode >>>>>\n"
            "[a]{}  \"\" (x,A) <.,0,0>;\n");
}

TEST(Application, OfACopyShowsTheCopyInItsOrder) {
  const auto traced = [](const char* rule) {
    Step step(rule, "<< [a] [b] >>");
    step.matched();
    session.state.trace_level = 2;
    Capture output;
    EXPECT_EQ(apply_rule(session, step.window, step.candidate, nullptr), Status::ok);
    std::string heads;
    const std::string text = output.text();
    for (std::size_t at = text.find(">>>>> "); at != std::string::npos; at = text.find("\n>>>>> ", at)) {
      at = text.find('>', at);
      heads += text.substr(at + 6, text.find('\n', at) - at - 6) + "|";
    }
    return heads;
  };
  EXPECT_EQ(traced("C{}{}P1;"), "lnode|copied node|rnode|");
  EXPECT_EQ(traced("CR{}{}P1;"), "lnode|rnode|copied node|");
}

}  // namespace
}  // namespace lexon::test
