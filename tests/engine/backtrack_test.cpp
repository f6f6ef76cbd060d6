#include "engine/backtrack.hpp"

#include <gtest/gtest.h>

#include "data/words.hpp"
#include "support/search.hpp"
#include "support/test_dictionary.hpp"

namespace lexon::test {
namespace {

class FreshWindow : public ::testing::TestWithParam<SearchCase> {};
class TypeUndo : public ::testing::TestWithParam<SearchCase> {};
class Alternative : public ::testing::TestWithParam<SearchCase> {};

TEST_P(FreshWindow, GoesToTheNextWordOrRule) {
  expect_search(GetParam(), Before::failed);
}
TEST_P(TypeUndo, LeavesTheListAsItWas) {
  expect_search(GetParam(), Before::applied);
}
TEST_P(Alternative, IsTheNearestThatExists) {
  expect_search(GetParam(), Before::matched);
}

constexpr auto kName = [](const auto& tested) { return tested.param.what; };

INSTANTIATE_TEST_SUITE_P(
    Words, FreshWindow,
    ::testing::Values(
        SearchCase{"NextWord", "R{}{}P2;\nL{}{}P1;", "[<<] [a|b] >>", "[<<] [b] >>", "0 P2", "next entry for rnode #2"},
        SearchCase{"NextRuleWithAllWords", "R{}{}P2;\nL{}{}P1;", "[<<] [a] >>", "[<<] [a] >>", "-1 P1",
                   "next entry for rnode #2|no entry for rnode|next rule #32"},
        SearchCase{"LastRule", "R{}{}P2;", "[<<] [a] >>", "[<<] [a] >>", "-2 -",
                   "next entry for rnode #2|no entry for rnode|next rule #32"},
        SearchCase{"LeftTestGoesToTheNextRule", "?L{}{}P2;\nL{}{}P1;", "[<<] [a] >>", "[<<] [a] >>", "-1 P1",
                   "next entry for rnode #2|no entry for rnode|next rule #32"},
        SearchCase{"RightTestKeepsItsRule", "?R{}{}P2;\nL{}{}P1;", "[<<] [a] >>", "[<<] [a] >>", "-2 P2",
                   "next entry for rnode #2|no entry for rnode"},
        SearchCase{"TestKeepsItsRule", "?{}{}P2;\nL{}{}P1;", "[<<] [a] >>", "[<<] [a] >>", "-2 P2",
                   "next entry for rnode #2|no entry for rnode"},
        SearchCase{"BoundaryHasItsWordAgain", "R{}{}P2;\nL{}{}P1;", "<< [a] [>>]", "<< [a] [>>]", "-1 P1",
                   "next entry for rnode #2|no entry for rnode|next rule #32"},
        SearchCase{"MarkersOfBothSidesGo", "R{}{}P2;", "<< [a(m)] [b|c(m)] >>", "<< [a] [c] >>", "0 P2",
                   "next entry for rnode #2"},
        SearchCase{"HoldIsNoApplication", "R{}{}P2;", "<< [a] [b|c(2)] >>", "<< [a] [c(2)] >>", "0 P2",
                   "next entry for rnode #2"},
        SearchCase{"HoldFixesTheFirstWord", "R{}{}P2;", "[<<] [a|b(2)] >>", "[<<] [a|b(2)] >>", "-2 P2", ""}),
    kName);

INSTANTIATE_TEST_SUITE_P(
    References, FreshWindow,
    ::testing::Values(SearchCase{"NextWordOfTheEntry", "R{}{}P2;", "[<<] [SCOPE:01] >>", "[<<] [SCOPE:01] >>", "0 P2",
                                 "next entry for rnode #2", "a|b", "b"},
                      SearchCase{"NextWordThroughReferences", "R{}{}P2;", "[<<] [SCOPE:01] >>", "[<<] [SCOPE:01] >>",
                                 "0 P2", "next entry for rnode #2", "SCOPE:02;a|b", "SCOPE:02;b"},
                      SearchCase{"NextRuleWithAllWords", "R{}{}P2;\nL{}{}P1;", "[<<] [SCOPE:01] >>",
                                 "[<<] [SCOPE:01] >>", "-1 P1",
                                 "next entry for rnode #2|no entry for rnode|next rule #32", "a", "a"},
                      SearchCase{"OwnWordsAreReloaded", "R{}{}P2;", "[<<] [SCOPE:01|x] >>", "[<<] [x] >>", "0 P2",
                                 "next entry for rnode #2", "a|b", "b"},
                      SearchCase{"HoldFixesTheEntrysWord", "R{}{}P2;", "[<<] [SCOPE:01] >>", "[<<] [SCOPE:01] >>",
                                 "-2 P2", "", "a|b(2)", "a|b(2)"},
                      // Without a known entry node its own word is dropped.
                      SearchCase{"UnknownScope", "R{}{}P2;\nL{}{}P1;", "[<<] [SCOPE:01] >>", "[<<] [SCOPE:01] >>",
                                 "-1 P1", "next entry for rnode #2|no entry for rnode|next rule #32"}),
    kName);

INSTANTIATE_TEST_SUITE_P(
    Forced, FreshWindow,
    ::testing::Values(SearchCase{"TargetsWordIsChanged", "R{}{}P2;", "[<<] [a|b] >>", "[<<] [b] >>", "0 P2",
                                 "next entry for rnode #2|forced backtracking ends", "", "", 1},
                      SearchCase{
                          "AimedElsewhere", "R{}{}P2;\nL{}{}P1;", "[<<] [a] >>", "[<<] [a] >>", "-2 - forced",
                          "next entry for rnode #2|no entry for rnode|ignore all left possible rules for forced BT", "",
                          "", 2},
                      SearchCase{"HeldFromOutside", "R{}{}P2;", "[<<] [a|b(2)] >>", "[<<] [a|b(2)] >>", "-2 - forced",
                                 "ignore all left possible rules for forced BT", "", "", 2}),
    kName);

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

// The right node has records from before, so that no word of it is due.
INSTANTIATE_TEST_SUITE_P(
    InPlace, TypeUndo,
    ::testing::Values(
        SearchCase{"Left", "L{:+x}{:+y}P2;\nR{}{}P1;", "<< [a] [b(0)] >>", "<< [a] [b(0)] >>", "0 P1", "next rule #31"},
        SearchCase{"Right", "R{:+x}{:+y}P2;\nL{}{}P1;", "<< [a] [b(0)] c >>", "<< [a] [b(0)] c >>", "0 P1",
                   "next rule #31"},
        SearchCase{"RightOntoATouchedNode", "R{}{}P2;\nL{}{}P1;", "<< [a] [b(0)] c(0) >>", "<< [a] [b(0)] c(0) >>",
                   "0 P1", "next rule #31"},
        SearchCase{"RightBeyondTheEnd", "R{}{}P2;\nL{}{}P1;", "<< [a] [>>]", "<< [a] [>>]", "0 P1", "next rule #31"},
        SearchCase{"Insertion", ":{}{A:-A}P2;\nL{}{}P1;", "<< [a] [b/A(0)] >>", "<< [a] [b/A(0)] >>", "0 P1",
                   "next rule #31"},
        SearchCase{"InsertionThatStepped", ":{A:-A}{}P2;\nL{}{}P1;", "<< [a/A] [b(0)] >>", "<< [a/A] [b(0)] >>", "0 P1",
                   "next rule #31"},
        SearchCase{"LeftCopy", "CL{}{}P2;\nL{}{}P1;", "<< [a/A] [b(0)] >>", "<< [a/A] [b(0)] >>", "0 P1",
                   "next rule #31"},
        SearchCase{"LeftCopyOfAChangedWord", "CL{:+x}{}P2;\nL{}{}P1;", "<< [a/A] [b(0)] >>", "<< [a/A] [b(0)] >>",
                   "0 P1", "next rule #31"},
        SearchCase{"RightCopy", "CR{}{}P2;\nL{}{}P1;", "<< [a] [b(0)] c >>", "<< [a] [b(0)] c >>", "0 P1",
                   "next rule #31"},
        SearchCase{"RightCopyThatStepped", "CR{:+x}{}P2;\nL{}{}P1;", "<< [a] [b(0)] c >>", "<< [a] [b(0)] c >>", "0 P1",
                   "next rule #31"},
        // The words that an exchange changed stay changed, and so do the records of the match.
        SearchCase{"Exchange", "X{:+x}{}P2;\nL{}{}P1;", "<< [a] [b] >>", "<< [a/x(0)] [b(0)] >>", "0 P1",
                   "next rule #31"}),
    kName);

INSTANTIATE_TEST_SUITE_P(
    FreshRightNode, TypeUndo,
    ::testing::Values(SearchCase{"NextWord", "L{}{}P2;\nR{}{}P1;", "<< [a] [b|c] >>", "<< [a] [c] >>", "0 P2",
                                 "next entry for rnode #3"},
                      SearchCase{"NextRuleWithAllWords", "L{}{}P2;\nR{}{}P1;", "<< [a] [b] >>", "<< [a] [b] >>", "0 P1",
                                 "next entry for rnode #3|no entry for rnode|next rule #12"},
                      SearchCase{"ForcedElsewhere", "L{}{}P2;\nR{}{}P1;", "<< [a] [b|c] >>", "<< [a] [b|c] >>",
                                 "0 - forced",
                                 "clear all entries for rnode #3|no entry for rnode|"
                                 "ignore all left possible rules for forced BT #1",
                                 "", "", 1},
                      SearchCase{"ForcedUsedNode", "L{}{}P2;\nR{}{}P1;", "<< [a] [b(0)] >>", "<< [a] [b(0)] >>",
                                 "0 - forced", "ignore all left possible rules for forced BT #3", "", "", 1}),
    kName);

INSTANTIATE_TEST_SUITE_P(Merges, TypeUndo,
                         ::testing::Values(SearchCase{"Left", "DL{}{:+y}P2;\nL{}{}P1;", "<< [a] [b|c] d >>",
                                                      "<< [a(0)] [b|c(0)] d >>", "0 P1", ""},
                                           SearchCase{"Right", "DR{}{}P2;\nL{}{}P1;", "<< [a|c] [b] d >>",
                                                      "<< [a|c(0)] [b(0)] d >>", "0 P1", ""},
                                           SearchCase{"RightWithActions", "DR{:+x}{}P2;\nL{}{}P1;", "<< [a] [b] d >>",
                                                      "<< [a(0)] [b(0)] d >>", "0 P1", ""}),
                         kName);

TEST(Merge, RecordsOfTheMatchGoInAStepOfTheirOwn) {
  Search search({"", "DL{}{}P2;\nL{}{}P1;", "<< [a] [b] >>", "", "", ""}, Before::applied);
  EXPECT_EQ(search.undo(), "0 P1");
  EXPECT_EQ(search.undo(), "-1 P2");
  EXPECT_EQ(search.text(), "<< [a] [b] >>");
}

TEST(Merge, GivesBackTheScopesEntryAndTheForcedTarget) {
  const SearchCase merge{"", "DL{}{}P2;", "<< [a] [b] >>", "", "", ""};
  Search search(merge, Before::matched);
  sentence.semlst[0].entry = &search.at(2);
  std::int32_t home_scope = 0;
  ASSERT_EQ(apply_rule(search.window(), search.candidate(), &home_scope), Status::ok);
  ASSERT_EQ(sentence.semlst[0].entry, search.window().rnode);
  state.forced_node = search.window().rnode;
  EXPECT_EQ(search.undo(), "0 - forced");
  EXPECT_EQ(sentence.semlst[0].entry, &search.at(2));
  EXPECT_EQ(state.forced_node, &search.at(2));
}

constexpr const char* kInsertsRight = ":{}\"[b]\"P2;\nL{}{}P1;";
constexpr const char* kInsertsAlong = ":{}\"::agt:\"P2;\nL{}{}P1;";
constexpr const char* kNextLastRight = "next entry for rnode #3|no entry for rnode|next rule #12";

INSTANTIATE_TEST_SUITE_P(
    InsertedRight, Alternative,
    ::testing::Values(
        SearchCase{"NextWordInPlace", kInsertsRight, "<< [a] [b|c] >>", "<< [a] [!c] >>", "0 P2",
                   "next entry for rnode #3"},
        SearchCase{"LastWordLeavesTheList", kInsertsRight, "<< [a] [b] >>", "<< [a] [>>]", "0 P1", kNextLastRight},
        SearchCase{"ForcedElsewhere", kInsertsRight, "<< [a] [b|c] >>", "<< [a] [>>]", "0 - forced",
                   "clear all entries for rnode #3|no entry for rnode|"
                   "ignore all left possible rules for forced BT #1",
                   "", "", 1},
        SearchCase{"TargetsWordIsChanged", kInsertsRight, "<< [a] [b|c] >>", "<< [a] [!c] >>", "0 P2",
                   "next entry for rnode #3|forced backtracking ends at changing an entry in rnode", "", "", 2},
        SearchCase{"LeftScopesNextWord", kInsertsRight, "<< [SCOPE:01] [b] >>", "<< [SCOPE:01] [!] >>", "0 P2",
                   "next entry for rnode #3|no entry for rnode", "x|y(2)", "y"},
        SearchCase{"LeftScopesLastWord", kInsertsRight, "<< [SCOPE:01] [b] >>", "<< [SCOPE:01] [>>]", "0 P1",
                   kNextLastRight, "x(2)", "x"},
        SearchCase{"LeftScopeWithoutAHold", kInsertsRight, "<< [SCOPE:01] [b] >>", "<< [SCOPE:01] [>>]", "0 P1",
                   kNextLastRight, "x|y", "x|y"},
        SearchCase{"ReferenceWithoutAHold", kInsertsAlong, "<< [a] [SCOPE:01] >>", "<< [a] [>>]", "0 P1",
                   "next rule #11", "x|y", "x|y", -1, 0, "agt"},
        SearchCase{"HoldOfAnotherRule", kInsertsAlong, "<< [a] [SCOPE:01] >>", "<< [a] [>>]", "0 P1", "next rule #11",
                   "x|y(2)", "x|y(2)", -1, 1, "agt"},
        SearchCase{"NextWordOfTheEntry", kInsertsAlong, "<< [a] [SCOPE:01] >>", "<< [a] [>>]", "0 P2",
                   "next entry for rnode #3", "x|y(2)", "y", -1, 0, "agt"},
        SearchCase{"LastWordOfTheEntry", kInsertsAlong, "<< [a] [SCOPE:01] >>", "<< [a] [>>]", "0 P1", kNextLastRight,
                   "x(2)", "x", -1, 0, "agt"},
        SearchCase{"FinishedScopeIsGoneBackInto", kInsertsAlong, "<< [a] [SCOPE:01] >>", "<< [a] [SCOPE:01] >>",
                   "-2 P2", "", "<< x(0) >>", "<< x(0) >>", -1, 0, "agt"}),
    kName);

constexpr const char* kInsertsLeft = ":\"[a]\"{}P2;\nL{}{}P1;";
constexpr const char* kNextLastLeft = "next entry for lnode #2|#2no entry for lnode";

INSTANTIATE_TEST_SUITE_P(
    InsertedLeft, Alternative,
    ::testing::Values(
        SearchCase{"NextWordInPlace", kInsertsLeft, "<< [a|b] [c] >>", "<< [!b] [c] >>", "0 P2",
                   "next entry for lnode #2"},
        SearchCase{"RightNodeHasRecords", kInsertsLeft, "<< [a] [c(0)] >>", "[<<] [c(0)] >>", "0 P1",
                   "next entry for lnode #2|#2no entry for lnode|next rule #22"},
        SearchCase{"RightNodeIsABoundary", kInsertsLeft, "<< [a] [>>]", "[<<] [>>]", "0 P1",
                   "next entry for lnode #2|#2no entry for lnode|next rule #22"},
        SearchCase{"RightNodesWordIsDue", kInsertsLeft, "<< [a] [c|d] >>", "[<<] [c|d] >>", "-1 P2", kNextLastLeft},
        SearchCase{"HeldRightNodesWordIsDue", kInsertsLeft, "<< [a] [c|d(2)] >>", "[<<] [c|d(2)] >>", "-1 P2",
                   kNextLastLeft},
        SearchCase{"ForcedElsewhere", kInsertsLeft, "<< [a|b] [c] >>", "[<<] [c] >>", "0 - forced",
                   "clear all entries for lnode #2|#2no entry for lnode|"
                   "ignore all left possible rules for forced BT #2",
                   "", "", 0},
        SearchCase{"ForcedRightNodeWaits", kInsertsLeft, "<< [a|b] [c] >>", "[<<] [c] >>", "0 P2 forced",
                   "clear all entries for lnode #2|#2no entry for lnode", "", "", 2},
        SearchCase{"TargetsWordIsChanged", kInsertsLeft, "<< [a|b] [c] >>", "<< [!b] [c] >>", "0 P2",
                   "next entry for lnode #2|forced backtracking ends", "", "", 1},
        SearchCase{"RightScopesNextWord", kInsertsLeft, "<< [a] [SCOPE:01] >>", "<< [!] [SCOPE:01] >>", "0 P2",
                   kNextLastLeft, "x|y(2)", "y"},
        SearchCase{"RightScopesLastWord", kInsertsLeft, "<< [a] [SCOPE:01] >>", "[<<] [SCOPE:01] >>", "-1 P1",
                   "next entry for lnode #2|#2no entry for lnode|next rule #23", "x(2)", "x"},
        SearchCase{"RightScopeHeldByAnotherRule", kInsertsLeft, "<< [a] [SCOPE:01] >>", "[<<] [SCOPE:01] >>", "-1 P1",
                   "next entry for lnode #2|#2no entry for lnode|next rule #24", "x|y(2)", "x|y(2)", -1, 1},
        SearchCase{"ReferenceWithoutAHold", ":\"\"{::agt:}P2;\nL{}{}P1;", "<< [SCOPE:01] [a] >>", "[<<] [a] >>", "0 P1",
                   "next rule #21", "x|y", "x|y", -1, 0, "agt"},
        // Unlike on the right side, the hold of any rule will do.
        SearchCase{"NextWordOfTheEntry", ":\"\"{::agt:}P2;\nL{}{}P1;", "<< [SCOPE:01] [a] >>", "[<<] [a] >>", "0 P2",
                   "next entry for lnode #2", "x|y(2)", "y", -1, 1, "agt"}),
    kName);

INSTANTIATE_TEST_SUITE_P(PutBack, FreshWindow,
                         ::testing::Values(SearchCase{"NextWord", kInsertsRight, "<< [a(0)] [!b|c] >>",
                                                      "<< [a(0)] [!c] >>", "0 P2", "next entry for rnode #3"},
                                           SearchCase{"LastWord", kInsertsRight, "<< [a(0)] [!b] >>", "<< [a(0)] [>>]",
                                                      "0 P1", kNextLastRight}),
                         kName);

TEST(Backtrack, TypeWithoutUndoIsLeftAsItIs) {
  Search search({"", "D{}{}P2;\nL{}{}P1;", "<< [a] [b] >>", "", "", ""}, Before::matched);
  EXPECT_EQ(search.undo(), "-1 P2");
  EXPECT_EQ(search.text(), "<< [a(0)] [b(0)] >>");
}

TEST(Backtrack, LeavesAtOnceWhenAskedToStop) {
  Search search({"", "R{}{}P2;", "[<<] [a|b] >>", "", "", ""}, Before::failed);
  Capture output;
  state.trace_level = 3;
  stop_requested = true;
  EXPECT_EQ(search.undo(), "120 P2");
  stop_requested = false;
  EXPECT_EQ(search.text(), "[<<] [a|b] >>");
  EXPECT_EQ(output.text(), "");
}

// The banners stand in front of what they announce.
TEST(Backtrack, ShowsTheStepInItsOrder) {
  Search search({"", "?L{}{}P2;", "<< [a] [b] >>", "", "", ""}, Before::matched);
  Capture output;
  state.trace_level = 3;
  EXPECT_EQ(search.undo(), "0 -");
  EXPECT_EQ(output.text(),
            "==================== BACKTRACK-0 =====================\n"
            "?L{:::}{:::}P2;\n"
            "<<<<< lnode\n"
            "[a]{}  \"\" () <.,0,0>;\n"
            "<<<<< rnode\n"
            "[b]{}  \"\" () <.,0,0>;\n"
            "==================== BACKTRACK-1 =====================\n"
            "?L{:::}{:::}P2;\n"
            "<<<<< lnode\n"
            "[a]{}  \"\" () <.,0,0>;\n"
            "<<<<< rnode\n"
            "[b]{}  \"\" () <.,0,0>;\n"
            ";;next entry for rnode #3\n"
            ";;no entry for rnode\n"
            ";;next rule #12\n"
            "=================== NODE LIST:00 ===================\n"
            "/<</[a]/[b]/>>/\n"
            "====================================================\n"
            "lnode >>>>>\n"
            "-- word candidates for lnode --\n"
            "[a]{}  \"\" () <.,0,0>;\n"
            "rnode >>>>>\n"
            "-- word candidates for rnode --\n"
            "[b]{}  \"\" () <.,0,0>;\n");
}

// ---- The next co-occurrence choice.

constexpr const char* kChooses = ":{}\"N:::<r\"P2;\nL{}{}P1;";

// A match with the choices p and q, p in force.
Search chosen(const char* rules, const char* list, Side side) {
  Search search({"", rules, list, "", "", ""}, Before::matched);
  WordEntry* choices = words_of("k~p|k~q");
  for (const Side each : {Side::left, Side::right}) node_of(search.window(), each)->matches->cooccurrence = choices;
  state.forced_node = node_of(search.window(), side);
  return search;
}

TEST(NextChoice, IsAppliedOnTheRightSide) {
  Search search = chosen(kChooses, "<< [a] [b/<p,N|c] >>", Side::right);
  Capture output;
  state.trace_level = 3;
  EXPECT_EQ(search.undo(), "0 -");
  EXPECT_EQ(search.text(), "<< [a(0)] [b/<q,N|c(0<q>)] >>");
  EXPECT_EQ(branches_of(output.text()), "forced backtracking ends");
}

TEST(NextChoice, IsAppliedOnTheLeftSide) {
  Search search = chosen(":\"N:::<r\"{}P2;", "<< [b/<p,N] [a] >>", Side::left);
  Capture output;
  state.trace_level = 3;
  EXPECT_EQ(search.undo(), "0 -");
  EXPECT_EQ(search.text(), "[<<(m)] [b/<q,N(0<q>)] a(0) >>");
  EXPECT_EQ(branches_of(output.text()), "forced backtrackng ends");
}

TEST(NextChoice, WithoutAScoreTheNextWordIsDue) {
  Search search = chosen(kChooses, "<< [a] [b/<p,N|c] >>", Side::right);
  const TestDictionary other_pairs("[zz]{} \"zz\" () <E,0,5>;\n", sentence.cr_dictionary);
  EXPECT_EQ(search.undo(), "0 P2");
  EXPECT_EQ(search.text(), "<< [a] [!c] >>");
}

}  // namespace
}  // namespace lexon::test
