#include "engine/application.hpp"
#include "engine/apply.hpp"
#include "support/session.hpp"
#include "support/step.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

struct ActionCase {
  const char* what;
  const char* rule;
  const char* before;
  const char* after;
};

TEST(Actions, ChangeTheWordInForceAndKeepTheOldOneBehindIt) {
  const ActionCase rows[] = {
      {"NoActions", "L{}{}P1;", "[a/A] [b]", "[a/A(0)] [b(0)]"},
      {"AdditionGoesInFront", "L{:+x,y}{}P1;", "[a/A,B] [b]", "[a/x,y,A,B|a/A,B(1)] [b(0)]"},
      {"AdditionToAWordWithoutAttributes", "L{:+x}{}P1;", "[a] [b]", "[a/x|a(1)] [b(0)]"},
      {"PresentAttributeTakesTheCopyBack", "L{:+B}{}P1;", "[a/A,B] [b]", "[a/A,B(0)] [b(0)]"},
      {"AddedTwiceCountsOnce", "L{:+x,+y,+x}{}P1;", "[a/A] [b]", "[a/x,y,A|a/A(1)] [b(0)]"},
      {"DeletionLeavesNoBlank", "L{:-B}{}P1;", "[a/A,B,C] [b]", "[a/A,C|a/A,B,C(1)] [b(0)]"},
      {"DeletionOfTheOnlyAttribute", "L{:-A}{}P1;", "[a/A] [b]", "[a|a/A(1)] [b(0)]"},
      {"DeletionOfWhatIsNotThere", "L{:-X}{}P1;", "[a/A] [b]", "[a/A(0)] [b(0)]"},
      {"LastElementHiddenByAnEarlierPrefix", "L{:-ab}{}P1;", "[a/x,abc,ab] [b]", "[a/x,abc,ab(0)] [b(0)]"},
      {"DeletedAndAddedInOneRule", "L{:-A,+x}{}P1;", "[a/A,B] [b]", "[a/x,B|a/A,B(1)] [b(0)]"},
      {"DeletedAndAddedAgain", "L{:-A,+A}{}P1;", "[a/A,B] [b]", "[a/A,B|a/A,B(1)] [b(0)]"},
      {"RunsOfCommasGoWithAnyChange", "L{:+x}{}P1;", "[a/,A,,B,] [b]", "[a/x,A,B|a/,A,,B,(1)] [b(0)]"},
      {"SurfaceForm", "L{:[went]}{}P1;", "[go=move/V|x] [b]", "[went=move/V|go=move/V|x(1)] [b(0)]"},
      {"EmptySurfaceForm", "L{:[]}{}P1;", "[a/A] [b]", "[/A|a/A(1)] [b(0)]"},
      {"ConceptWordChangesNothing", "L{:[[move]]}{}P1;", "[a/A] [b]", "[a/A(0)] [b(0)]"},
      {"BoundaryKeepsItsForm", "L{:[x]}{}P1;", "[<<] [b]", "[<<(0)] [b(0)]"},
      {"BoundaryTakesAttributes", "L{:[x],+y}{}P1;", "[<<] [b]", "[<</y,SHEAD|<<(1)] [b(0)]"},
      {"RightSide", "L{}{:+x}P1;", "[a] [b/B]", "[a(0)] [b/x,B|b/B(1)]"},
      {"BothSides", "L{:+x}{:-B}P1;", "[a] [b/B]", "[a/x|a(1)] [b|b/B(1)]"},
      {"OpenScopeTakesThemInFrontOfASeparator", "L{:+x,y}{}P1;", "[SCOPE:01/A] [b]", "[SCOPE:01/x,y,;,A|SCOPE:01/A(1)] [b(0)]"},
      {"OneSeparatorIsEnough", "L{:+x}{}P1;", "[SCOPE:01/y,;,A] [b]", "[SCOPE:01/x,y,;,A|SCOPE:01/y,;,A(1)] [b(0)]"},
      {"DeletionAloneNeedsNoSeparator", "L{:-A}{}P1;", "[SCOPE:01/A,B] [b]", "[SCOPE:01/B|SCOPE:01/A,B(1)] [b(0)]"},
      {"InsertedScopeGetsNoneFromItsRule", ":\"[x]:+x\"{}P1;", "[SCOPE:01/A] [b]", "[SCOPE:01/A(0)] [b(0)]"},
      {"ScopeBesideAnInsertedNodeGetsThem", ":{:+x}\"[x]\"P1;", "[SCOPE:01/A] [b]", "[SCOPE:01/x,;,A|SCOPE:01/A(1)] [b(0)]"},
      // The rule's own record says that the scope was entered by it.
      {"ScopeOfARuleWithTwoBracesGetsThem", ":{A:-A,+x}{}P1;", "[SCOPE:01/A] [b]", "[SCOPE:01/x,;|SCOPE:01/A(1)] [b(0)]"},
  };
  for (const ActionCase& row : rows) {
    SCOPED_TRACE(row.what);

    Step step(row.rule, row.before);
    step.matched();
    EXPECT_EQ(rule_actions_apply(session, step.window, *step.candidate), Status::ok);
    EXPECT_EQ(step.text(), row.after);
  }
}

std::string attrs_of_length(std::size_t length) {
  return std::string(length, 'q');
}

struct LimitCase {
  const char* what;
  std::size_t present;
  std::string added;
  std::size_t length_after;
};

TEST(AttributeLimit, SkipsWhatWouldReachIt) {
  const LimitCase rows[] = {
      {"OneBelow", 1000, "+" + std::string(22, 'x'), 1023},
      {"Reached", 1000, "+" + std::string(23, 'x'), 1000},
      {"SecondAdditionReachesIt", 1000, "+xxxxxxxxxx,+yyyyyyyyyyyyy", 1011},
      {"CommasReachIt", 1000, "+xxxxxxxxxx,+yyyyyyyyyyyy", 1023},
  };
  for (const LimitCase& limit : rows) {
    SCOPED_TRACE(limit.what);
    Step step("L{:" + limit.added + "}{}P1;", "[a/" + attrs_of_length(limit.present) + "] [b]");
    step.matched();
    EXPECT_EQ(rule_actions_apply(session, step.window, *step.candidate), Status::ok);
    const WordEntry& word = *step.window.lnode->candidates;
    EXPECT_EQ(std::string(word.attrs).size(), limit.length_after);
    EXPECT_EQ(static_cast<std::size_t>(word.attr_len), limit.length_after);
    EXPECT_EQ(static_cast<std::size_t>(word.attr_block_size), limit.length_after + 12);
  }
}

// The commas that are squeezed in the origin are those of the surface form, and not of the dictionary's word.
TEST(ActionsOnCopies, DeleteARoleInTheOriginToo) {
  std::FILE* const dictionary = std::tmpfile();
  session.lookups.attend({dictionary});
  session.lookups.answer_begin({dictionary, 1, "x"});
  char* const kept = std::strcpy(reinterpret_cast<char*>(session.lookups.answer_add(5) + 1), "x,,y");
  struct Row {
    const char* copy;
    const char* copy_after;
  };
  const Row rows[] = {{"a/A,<agn,B", "a/A,B|a/A,<agn,B(1)"}, {"a/A,B", "a/A,B(0)"}, {"a", "a(0)"}};
  for (const Row& row : rows) {
    Step step("L{:-<agn}{}P1;", "[" + std::string(row.copy) + "] [b] x,,y/P,<agn,Q(0)");
    step.matched();
    step.window.lnode->origin = &step.list.at(2);
    step.list.at(2).candidates->hw = kept;
    EXPECT_EQ(rule_actions_apply(session, step.window, *step.candidate), Status::ok);
    EXPECT_EQ(text_of_node(step.window.lnode), row.copy_after);
    EXPECT_EQ(text_of_node(&step.list.at(2)), "x,y/P,,,,,,Q(0)") << row.copy;
    EXPECT_STREQ(kept, "x,,y");
  }
  session.lookups.attend({});
  std::fclose(dictionary);
}

TEST(ActionsOnCopies, LeaveAnOriginThatIsFreshOrAttributesThatAreNoRoles) {
  Step step("L{:-<agn}{:-N}P1;", "[a/<agn] [b/N] x/<agn,N y/N(0)");
  step.matched();
  step.window.lnode->origin = &step.list.at(2);
  step.window.rnode->origin = &step.list.at(3);
  EXPECT_EQ(rule_actions_apply(session, step.window, *step.candidate), Status::ok);
  EXPECT_EQ(step.text(), "[a|a/<agn(1)] [b|b/N(1)] x/<agn,N y/N(0)");
}

TEST(ActionsOnScopes, ASurfaceFormMakesThemWords) {
  Step step("L{:[it]}{}P1;", "[SCOPE:01/A] [b]");
  step.matched();
  EXPECT_EQ(rule_actions_apply(session, step.window, *step.candidate), Status::ok);
  EXPECT_EQ(step.window.lnode->kind, kKindWord);
  EXPECT_EQ(step.window.lnode->candidates->hw_len, 2);
}

TEST(ActionsWithoutAPlace, FailTheRuleBase) {
  Capture output;
  Step fresh("L{:+x}{}P1;", "[a] [b]");
  EXPECT_EQ(rule_actions_apply(session, fresh.window, *fresh.candidate), Status::rule_base);
  Step empty("L{:+x}{}P1;", "[a] [b]");
  empty.window.lnode = nullptr;
  EXPECT_EQ(rule_actions_apply(session, empty.window, *empty.candidate), Status::rule_base);
}

TEST(ScopeRuleInStack, IsAnInsertionRuleWithTwoBraces) {
  const auto answer = [](const char* rule) {
    Step step(rule, "[SCOPE:01] [b]");
    step.matched();
    (void)window_marker_push(session, *step.window.lnode);
    return no_scope_rule_in_stack(step.window.lnode->matches);
  };
  EXPECT_FALSE(answer(":{A:-A}{}P1;"));
  EXPECT_TRUE(answer(":{A:-A}\"[x]\"P1;"));
  EXPECT_TRUE(answer("L{}{}P1;"));
  EXPECT_TRUE(no_scope_rule_in_stack(nullptr));
}

// The mark goes on the inserted node, and its sign says which side has the role.
struct MarkCase {
  const char* what;
  const char* rule;
  const char* lnode;
  const char* rnode;
  const char* marked;
};

TEST(RoleMarks, AreAddedAndTakenOff) {
  const MarkCase rows[] = {
      {"LeftWithItsRole", ":\"[in]:::p\"{}P1;", "a/A,B", "b", "[a/<loc,A,B] [b]"},
      {"LeftWithTheOtherRole", ":\"[in]\"{:::p}P1;", "a/A,B", "b", "[a/>loc,A,B] [b]"},
      {"RightWithItsRole", ":{}\"[in]:::p\"P1;", "a", "b/A,B", "[a] [b/<loc,A,B]"},
      {"RightWithTheOtherRole", ":{:::p}\"[in]\"P1;", "a", "b/A,B", "[a] [b/>loc,A,B]"},
      {"NoInsertedNode", "L{:::p}{}P1;", "a", "b", "[a] [b]"},
  };
  for (const MarkCase& mark : rows) {
    SCOPED_TRACE(mark.what);
    Step step(mark.rule, std::string("[") + mark.lnode + "] [" + mark.rnode + "]");
    const std::string before = step.text();
    const WordEntry& chosen = *words_of("in~loc");
    Node* lnode = step.window.lnode;
    Node* rnode = step.window.rnode;
    EXPECT_EQ(role_mark_add(session, *step.rule, lnode, rnode, chosen), Status::ok);
    EXPECT_EQ(step.text(), mark.marked);
    Node* inserted = step.rule->lnode->inserted != 0 ? lnode : rnode;
    // One more than the mark is long.
    EXPECT_EQ(inserted->candidates->attr_len, 3 + (before == mark.marked ? -3 : 6));
    const Side side = inserted == lnode ? Side::left : Side::right;
    EXPECT_EQ(role_mark_remove(session, *step.rule, side, inserted, chosen), Status::ok);
    EXPECT_EQ(step.text(), before);
  }
}

TEST(RoleMarkRemoval, LeavesAnyOtherFront) {
  for (const char* attrs : {">loc,A", "<lo,A", "A,<loc", "loc,A"}) {
    Step step(":\"[in]:::p\"{}P1;", std::string("[a/") + attrs + "] [b]");
    const std::string before = step.text();
    EXPECT_EQ(role_mark_remove(session, *step.rule, Side::left, step.window.lnode, *words_of("in~loc")), Status::ok);
    EXPECT_EQ(step.text(), before);
  }
}

}  // namespace
}  // namespace lexon::test
