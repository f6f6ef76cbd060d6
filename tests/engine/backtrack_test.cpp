#include "engine/backtrack.hpp"

#include <gtest/gtest.h>

#include "data/pool.hpp"
#include "data/words.hpp"
#include "support/built_dictionary.hpp"
#include "support/search.hpp"
#include "support/session.hpp"

namespace lexon::test {
namespace {

constexpr const char* kInsertsRight = ":{}\"[b]\"P2;\nL{}{}P1;";
constexpr const char* kInsertsAlong = ":{}\"::agn:\"P2;\nL{}{}P1;";
constexpr const char* kNextLastRight = "next entry for rnode #3|no entry for rnode|next rule #12";
constexpr const char* kInsertsLeft = ":\"[a]\"{}P2;\nL{}{}P1;";
constexpr const char* kNextLastLeft = "next entry for lnode #2|#2no entry for lnode";

TEST(FreshWindow, GoesToTheNextWordOrRule) {
  const SearchCase rows[] = {
      // Words.
      {"NextWord", "R{}{}P2;\nL{}{}P1;", "[<<] [a|b] >>", "[<<] [b] >>", "0 P2", "next entry for rnode #2"},
      {"NextRuleWithAllWords", "R{}{}P2;\nL{}{}P1;", "[<<] [a] >>", "[<<] [a] >>", "-1 P1", "next entry for rnode #2|no entry for rnode|next rule #32"},
      {"LastRule", "R{}{}P2;", "[<<] [a] >>", "[<<] [a] >>", "-2 -", "next entry for rnode #2|no entry for rnode|next rule #32"},
      {"LeftTestGoesToTheNextRule", "?L{}{}P2;\nL{}{}P1;", "[<<] [a] >>", "[<<] [a] >>", "-1 P1", "next entry for rnode #2|no entry for rnode|next rule #32"},
      {"RightTestKeepsItsRule", "?R{}{}P2;\nL{}{}P1;", "[<<] [a] >>", "[<<] [a] >>", "-2 P2", "next entry for rnode #2|no entry for rnode"},
      {"TestKeepsItsRule", "?{}{}P2;\nL{}{}P1;", "[<<] [a] >>", "[<<] [a] >>", "-2 P2", "next entry for rnode #2|no entry for rnode"},
      {"BoundaryHasItsWordAgain", "R{}{}P2;\nL{}{}P1;", "<< [a] [>>]", "<< [a] [>>]", "-1 P1", "next entry for rnode #2|no entry for rnode|next rule #32"},
      {"MarkersOfBothSidesGo", "R{}{}P2;", "<< [a(m)] [b|c(m)] >>", "<< [a] [c] >>", "0 P2", "next entry for rnode #2"},
      {"HoldIsNoApplication", "R{}{}P2;", "<< [a] [b|c(2)] >>", "<< [a] [c(2)] >>", "0 P2", "next entry for rnode #2"},
      {"HoldFixesTheFirstWord", "R{}{}P2;", "[<<] [a|b(2)] >>", "[<<] [a|b(2)] >>", "-2 P2", ""},
      // References.
      {"NextWordOfTheEntry", "R{}{}P2;", "[<<] [SCOPE:01] >>", "[<<] [SCOPE:01] >>", "0 P2", "next entry for rnode #2", "a|b", "b"},
      {"NextWordThroughReferences", "R{}{}P2;", "[<<] [SCOPE:01] >>", "[<<] [SCOPE:01] >>", "0 P2", "next entry for rnode #2", "SCOPE:02;a|b", "SCOPE:02;b"},
      {"NextRuleWithAllWords", "R{}{}P2;\nL{}{}P1;", "[<<] [SCOPE:01] >>", "[<<] [SCOPE:01] >>", "-1 P1",
       "next entry for rnode #2|no entry for rnode|next rule #32", "a", "a"},
      {"OwnWordsAreReloaded", "R{}{}P2;", "[<<] [SCOPE:01|x] >>", "[<<] [x] >>", "0 P2", "next entry for rnode #2", "a|b", "b"},
      {"HoldFixesTheEntrysWord", "R{}{}P2;", "[<<] [SCOPE:01] >>", "[<<] [SCOPE:01] >>", "-2 P2", "", "a|b(2)", "a|b(2)"},
      // Without a known entry node its own word is dropped.
      {"UnknownScope", "R{}{}P2;\nL{}{}P1;", "[<<] [SCOPE:01] >>", "[<<] [SCOPE:01] >>", "-1 P1", "next entry for rnode #2|no entry for rnode|next rule #32"},
      // Forced.
      {"TargetsWordIsChanged", "R{}{}P2;", "[<<] [a|b] >>", "[<<] [b] >>", "0 P2", "next entry for rnode #2|forced backtracking ends", "", "", 1},
      {"AimedElsewhere", "R{}{}P2;\nL{}{}P1;", "[<<] [a] >>", "[<<] [a] >>", "-2 - forced",
       "next entry for rnode #2|no entry for rnode|ignore all left possible rules for forced BT", "", "", 2},
      {"HeldFromOutside", "R{}{}P2;", "[<<] [a|b(2)] >>", "[<<] [a|b(2)] >>", "-2 - forced", "ignore all left possible rules for forced BT", "", "", 2},
      // Put back.
      {"NextWord", kInsertsRight, "<< [a(0)] [!b|c] >>", "<< [a(0)] [!c] >>", "0 P2", "next entry for rnode #3"},
      {"LastWord", kInsertsRight, "<< [a(0)] [!b] >>", "<< [a(0)] [>>]", "0 P1", kNextLastRight},
  };
  for (const SearchCase& row : rows) {
    SCOPED_TRACE(row.what);

    expect_search(row, Before::failed);
  }
}
TEST(TypeUndo, LeavesTheListAsItWas) {
  const SearchCase rows[] = {
      // The right node has records from before, so that no word of it is due.
      {"Left", "L{:+x}{:+y}P2;\nR{}{}P1;", "<< [a] [b(0)] >>", "<< [a] [b(0)] >>", "0 P1", "next rule #31"},
      {"Right", "R{:+x}{:+y}P2;\nL{}{}P1;", "<< [a] [b(0)] c >>", "<< [a] [b(0)] c >>", "0 P1", "next rule #31"},
      {"RightOntoATouchedNode", "R{}{}P2;\nL{}{}P1;", "<< [a] [b(0)] c(0) >>", "<< [a] [b(0)] c(0) >>", "0 P1", "next rule #31"},
      {"RightBeyondTheEnd", "R{}{}P2;\nL{}{}P1;", "<< [a] [>>]", "<< [a] [>>]", "0 P1", "next rule #31"},
      {"Insertion", ":{}{A:-A}P2;\nL{}{}P1;", "<< [a] [b/A(0)] >>", "<< [a] [b/A(0)] >>", "0 P1", "next rule #31"},
      {"InsertionThatStepped", ":{A:-A}{}P2;\nL{}{}P1;", "<< [a/A] [b(0)] >>", "<< [a/A] [b(0)] >>", "0 P1", "next rule #31"},
      {"LeftCopy", "CL{}{}P2;\nL{}{}P1;", "<< [a/A] [b(0)] >>", "<< [a/A] [b(0)] >>", "0 P1", "next rule #31"},
      {"LeftCopyOfAChangedWord", "CL{:+x}{}P2;\nL{}{}P1;", "<< [a/A] [b(0)] >>", "<< [a/A] [b(0)] >>", "0 P1", "next rule #31"},
      {"RightCopy", "CR{}{}P2;\nL{}{}P1;", "<< [a] [b(0)] c >>", "<< [a] [b(0)] c >>", "0 P1", "next rule #31"},
      {"RightCopyThatStepped", "CR{:+x}{}P2;\nL{}{}P1;", "<< [a] [b(0)] c >>", "<< [a] [b(0)] c >>", "0 P1", "next rule #31"},
      // The words that an exchange changed stay changed, and so do the records of the match.
      {"Exchange", "X{:+x}{}P2;\nL{}{}P1;", "<< [a] [b] >>", "<< [a/x(0)] [b(0)] >>", "0 P1", "next rule #31"},
      // Fresh right node.
      {"NextWord", "L{}{}P2;\nR{}{}P1;", "<< [a] [b|c] >>", "<< [a] [c] >>", "0 P2", "next entry for rnode #3"},
      {"NextRuleWithAllWords", "L{}{}P2;\nR{}{}P1;", "<< [a] [b] >>", "<< [a] [b] >>", "0 P1", "next entry for rnode #3|no entry for rnode|next rule #12"},
      {"ForcedElsewhere", "L{}{}P2;\nR{}{}P1;", "<< [a] [b|c] >>", "<< [a] [b|c] >>", "0 - forced",
       "clear all entries for rnode #3|no entry for rnode|ignore all left possible rules for forced BT #1", "", "", 1},
      {"ForcedUsedNode", "L{}{}P2;\nR{}{}P1;", "<< [a] [b(0)] >>", "<< [a] [b(0)] >>", "0 - forced", "ignore all left possible rules for forced BT #3", "", "",
       1},
      // Merges.
      {"Left", "DL{}{:+y}P2;\nL{}{}P1;", "<< [a] [b|c] d >>", "<< [a(0)] [b|c(0)] d >>", "0 P1", ""},
      {"Right", "DR{}{}P2;\nL{}{}P1;", "<< [a|c] [b] d >>", "<< [a|c(0)] [b(0)] d >>", "0 P1", ""},
      {"RightWithActions", "DR{:+x}{}P2;\nL{}{}P1;", "<< [a] [b] d >>", "<< [a(0)] [b(0)] d >>", "0 P1", ""},
  };
  for (const SearchCase& row : rows) {
    SCOPED_TRACE(row.what);

    expect_search(row, Before::applied);
  }
}
TEST(Alternative, IsTheNearestThatExists) {
  const SearchCase rows[] = {
      // Inserted right.
      {"NextWordInPlace", kInsertsRight, "<< [a] [b|c] >>", "<< [a] [!c] >>", "0 P2", "next entry for rnode #3"},
      {"LastWordLeavesTheList", kInsertsRight, "<< [a] [b] >>", "<< [a] [>>]", "0 P1", kNextLastRight},
      {"ForcedElsewhere", kInsertsRight, "<< [a] [b|c] >>", "<< [a] [>>]", "0 - forced",
       "clear all entries for rnode #3|no entry for rnode|ignore all left possible rules for forced BT #1", "", "", 1},
      {"TargetsWordIsChanged", kInsertsRight, "<< [a] [b|c] >>", "<< [a] [!c] >>", "0 P2",
       "next entry for rnode #3|forced backtracking ends at changing an entry in rnode", "", "", 2},
      {"LeftScopesNextWord", kInsertsRight, "<< [SCOPE:01] [b] >>", "<< [SCOPE:01] [!] >>", "0 P2", "next entry for rnode #3|no entry for rnode", "x|y(2)",
       "y"},
      {"LeftScopesLastWord", kInsertsRight, "<< [SCOPE:01] [b] >>", "<< [SCOPE:01] [>>]", "0 P1", kNextLastRight, "x(2)", "x"},
      {"LeftScopeWithoutAHold", kInsertsRight, "<< [SCOPE:01] [b] >>", "<< [SCOPE:01] [>>]", "0 P1", kNextLastRight, "x|y", "x|y"},
      {"ReferenceWithoutAHold", kInsertsAlong, "<< [a] [SCOPE:01] >>", "<< [a] [>>]", "0 P1", "next rule #11", "x|y", "x|y", -1, 0, "agn"},
      {"HoldOfAnotherRule", kInsertsAlong, "<< [a] [SCOPE:01] >>", "<< [a] [>>]", "0 P1", "next rule #11", "x|y(2)", "x|y(2)", -1, 1, "agn"},
      {"NextWordOfTheEntry", kInsertsAlong, "<< [a] [SCOPE:01] >>", "<< [a] [>>]", "0 P2", "next entry for rnode #3", "x|y(2)", "y", -1, 0, "agn"},
      {"LastWordOfTheEntry", kInsertsAlong, "<< [a] [SCOPE:01] >>", "<< [a] [>>]", "0 P1", kNextLastRight, "x(2)", "x", -1, 0, "agn"},
      {"FinishedScopeIsGoneBackInto", kInsertsAlong, "<< [a] [SCOPE:01] >>", "<< [a] [SCOPE:01] >>", "-2 P2", "", "<< x(0) >>", "<< x(0) >>", -1, 0, "agn"},
      // Inserted left.
      {"NextWordInPlace", kInsertsLeft, "<< [a|b] [c] >>", "<< [!b] [c] >>", "0 P2", "next entry for lnode #2"},
      {"UsedRightReferenceLosesItsHold", ":\"\"{::agn:}P2;\nL{}{}P1;", "<< [SCOPE:01] [SCOPE:02(0)] >>", "[<<] [SCOPE:02(0)] >>", "0 P1", "next rule #21",
       "x;z(2)", "x;z", -1, 0, "agn"},
      {"RightNodeHasRecords", kInsertsLeft, "<< [a] [c(0)] >>", "[<<] [c(0)] >>", "0 P1", "next entry for lnode #2|#2no entry for lnode|next rule #22"},
      {"RightNodeIsABoundary", kInsertsLeft, "<< [a] [>>]", "[<<] [>>]", "0 P1", "next entry for lnode #2|#2no entry for lnode|next rule #22"},
      {"RightNodesWordIsDue", kInsertsLeft, "<< [a] [c|d] >>", "[<<] [c|d] >>", "-1 P2", kNextLastLeft},
      {"HeldRightNodesWordIsDue", kInsertsLeft, "<< [a] [c|d(2)] >>", "[<<] [c|d(2)] >>", "-1 P2", kNextLastLeft},
      {"ForcedElsewhere", kInsertsLeft, "<< [a|b] [c] >>", "[<<] [c] >>", "0 - forced",
       "clear all entries for lnode #2|#2no entry for lnode|ignore all left possible rules for forced BT #2", "", "", 0},
      {"ForcedRightNodeWaits", kInsertsLeft, "<< [a|b] [c] >>", "[<<] [c] >>", "0 P2 forced", "clear all entries for lnode #2|#2no entry for lnode", "", "", 2},
      {"TargetsWordIsChanged", kInsertsLeft, "<< [a|b] [c] >>", "<< [!b] [c] >>", "0 P2", "next entry for lnode #2|forced backtracking ends", "", "", 1},
      {"RightScopesNextWord", kInsertsLeft, "<< [a] [SCOPE:01] >>", "<< [!] [SCOPE:01] >>", "0 P2", kNextLastLeft, "x|y(2)", "y"},
      {"RightScopesLastWord", kInsertsLeft, "<< [a] [SCOPE:01] >>", "[<<] [SCOPE:01] >>", "-1 P1", "next entry for lnode #2|#2no entry for lnode|next rule #23",
       "x(2)", "x"},
      {"RightScopeHeldByAnotherRule", kInsertsLeft, "<< [a] [SCOPE:01] >>", "[<<] [SCOPE:01] >>", "-1 P1",
       "next entry for lnode #2|#2no entry for lnode|next rule #24", "x|y(2)", "x|y(2)", -1, 1},
      {"ReferenceWithoutAHold", ":\"\"{::agn:}P2;\nL{}{}P1;", "<< [SCOPE:01] [a] >>", "[<<] [a] >>", "0 P1", "next rule #21", "x|y", "x|y", -1, 0, "agn"},
      // Unlike on the right side, the hold of any rule will do.
      {"NextWordOfTheEntry", ":\"\"{::agn:}P2;\nL{}{}P1;", "<< [SCOPE:01] [a] >>", "[<<] [a] >>", "0 P2", "next entry for lnode #2", "x|y(2)", "y", -1, 1,
       "agn"},
  };
  for (const SearchCase& row : rows) {
    SCOPED_TRACE(row.what);

    expect_search(row, Before::matched);
  }
}

TEST(FreshWindow, WithoutARuleNoWordIsDropped) {
  Search search({"", "R{}{}P2;", "[<<] [a|b] >>", "", "", ""}, Before::failed);
  search.candidate() = nullptr;
  EXPECT_EQ(search.undo(), "-2 -");
  EXPECT_EQ(search.text(), "[<<] [a|b] >>");
}

TEST(FreshWindow, NextRuleSeesTheSecondWordFirst) {
  Search search({"", "R{}{}P2;\nL{}{}P1;", "[<<] [a|b] >>", "", "", ""}, Before::failed);
  EXPECT_EQ(search.undo(), "0 P2");
  EXPECT_EQ(search.undo(), "-1 P1");
  EXPECT_EQ(search.undo(), "0 P1");
  EXPECT_EQ(search.text(), "[<<] [b] >>");
}

TEST(Merge, RecordsOfTheMatchGoInAStepOfTheirOwn) {
  Search search({"", "DL{}{}P2;\nL{}{}P1;", "<< [a] [b] >>", "", "", ""}, Before::applied);
  EXPECT_EQ(search.undo(), "0 P1");
  EXPECT_EQ(search.undo(), "-1 P2");
  EXPECT_EQ(search.text(), "<< [a] [b] >>");
}

TEST(Merge, GivesBackTheScopesEntryAndTheForcedTarget) {
  const SearchCase merge{"", "DL{}{}P2;", "<< [a] [b] >>", "", "", ""};
  Search search(merge, Before::matched);
  session.sentence.semlst[0].entry = &search.at(2);
  std::int32_t home_scope = 0;
  ASSERT_EQ(apply_rule(session, search.window(), search.candidate(), &home_scope), Status::ok);
  ASSERT_EQ(session.sentence.semlst[0].entry, search.window().rnode);
  session.state.forced_node = search.window().rnode;
  EXPECT_EQ(search.undo(), "0 - forced");
  EXPECT_EQ(session.sentence.semlst[0].entry, &search.at(2));
  EXPECT_EQ(session.state.forced_node, &search.at(2));
}

TEST(Backtrack, TypeWithoutUndoIsLeftAsItIs) {
  Search search({"", "D{}{}P2;\nL{}{}P1;", "<< [a] [b] >>", "", "", ""}, Before::matched);
  EXPECT_EQ(search.undo(), "-1 P2");
  EXPECT_EQ(search.text(), "<< [a(0)] [b(0)] >>");
}

TEST(Backtrack, LeavesAtOnceWhenAskedToStop) {
  Search search({"", "R{}{}P2;", "[<<] [a|b] >>", "", "", ""}, Before::failed);
  Capture output;
  session.state.trace_level = 3;
  session.stop_requested = true;
  EXPECT_EQ(search.undo(), "120 P2");
  session.stop_requested = false;
  EXPECT_EQ(search.text(), "[<<] [a|b] >>");
  EXPECT_EQ(output.text(), "");
}

// ---- The next co-occurrence choice.

constexpr const char* kChooses = ":{}\"N:::<r\"P2;\nL{}{}P1;";

// A match with the choices p and q, p in force.
Search chosen(const char* rules, const char* list, Side side, const char* texts = "k~p|k~q") {
  Search search({"", rules, list, "", "", ""}, Before::matched);
  WordEntry* choices = words_of(texts);
  for (const Side each : {Side::left, Side::right}) node_of(search.window(), each)->matches->cooccurrence = choices;
  session.state.forced_node = node_of(search.window(), side);
  return search;
}

TEST(NextChoice, IsAppliedOnTheRightSide) {
  Search search = chosen(kChooses, "<< [a] [b/<p,N|c] >>", Side::right);
  Capture output;
  session.state.trace_level = 3;
  EXPECT_EQ(search.undo(), "0 -");
  EXPECT_EQ(search.text(), "<< [a(0)] [b/<q,N|c(0<q>)] >>");
  EXPECT_EQ(branches_of(output.text()), "forced backtracking ends");
}

TEST(NextChoice, IsAppliedOnTheLeftSide) {
  Search search = chosen(":\"N:::<r\"{}P2;", "<< [b/<p,N] [a] >>", Side::left);
  Capture output;
  session.state.trace_level = 3;
  EXPECT_EQ(search.undo(), "0 -");
  EXPECT_EQ(search.text(), "[<<(m)] [b/<q,N(0<q>)] a(0) >>");
  EXPECT_EQ(branches_of(output.text()), "forced backtrackng ends");
}

// The words that came behind the choice in force lie in cells that serve again.
TEST(NextChoice, WithoutAScoreIsGivenBack) {
  const auto free_cells = [](const char* choices) {
    Search search = chosen(kChooses, "<< [a] [b/<p,N|c] >>", Side::right, choices);
    const TestDictionary other_pairs("[zz]{} \"zz\" () <E,0,5>;\n", session.sentence.cr_dictionary);
    (void)search.undo();
    const std::int64_t used = session.pool.bytes_used();
    int cells = 0;
    for (; session.pool.bytes_used() == used; ++cells) (void)temp_new<WordEntry>(session);
    return cells;
  };
  EXPECT_EQ(free_cells("k~p|k~q|k~r|k~s"), free_cells("k~p|k~q") + 2);
}

// Under a step of another rule the target has two applications of the rule that brought it in.
TEST(Forced, TargetIsReachedWithItsFirstApplicationAlone) {
  Search search({"", ":{}\"[b]\"P3;\nL{}{}P2;\n?R{}{}P1;", "<< [a] [b|c] >>", "", "", ""}, Before::failed);
  RuleCandidate* inserts = search.candidate();
  for (RuleCandidate* candidate : {inserts, inserts, inserts->next}) {
    for (Node* node : {search.window().lnode, search.window().rnode}) (void)match_record_push(session, *node, kStateStep, candidate);
  }
  session.state.forced_node = search.window().rnode;
  RuleCandidate* test = inserts->next->next;
  std::int32_t home_scope = 0;
  (void)apply_rule(session, search.window(), test, &home_scope);
  EXPECT_EQ(search.text(), "<< [a(0)] [!c(0)] >>");
}

TEST(NextChoice, WithoutAScoreTheNextWordIsDue) {
  Search search = chosen(kChooses, "<< [a] [b/<p,N|c] >>", Side::right);
  const TestDictionary other_pairs("[zz]{} \"zz\" () <E,0,5>;\n", session.sentence.cr_dictionary);
  EXPECT_EQ(search.undo(), "0 P2");
  EXPECT_EQ(search.text(), "<< [a] [!c] >>");
}

}  // namespace
}  // namespace lexon::test
