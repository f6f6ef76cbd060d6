// Pieces of undoing that can be called alone, and what has no defined result.

#include "engine/undo.hpp"

#include <gtest/gtest.h>

#include "data/words.hpp"

#include "support/search.hpp"
#include "support/session.hpp"

namespace lexon::test {
namespace {

// ---- Taking out an inserted node.

struct ArcCase {
  const char* what;
  const char* rule;
  const char* list;   // window: the node that stays and the inserted one, in either order
  bool points_right;  // from the left node of the window to the right one
  const char* after;
  bool is_free;  // the arc can be followed again
};

TEST(InsertedUndo, FindsTheArcByLabelAndEnds) {
  const ArcCase rows[] = {
      {"RightByItsOwnLabel", ":{}\"::agn:\"P1;", "<< [a] [b] >>", true, "<< [a] [>>]", true},
      {"RightByTheOtherLabel", ":{::agn:}\"\"P1;", "<< [a] [b] >>", false, "<< [a] [>>]", true},
      {"LeftByItsOwnLabel", ":\"::agn:\"{}P1;", "<< [b] [a] >>", false, "[<<] [a] >>", true},
      {"LeftByTheOtherLabel", ":\"\"{::agn:}P1;", "<< [b] [a] >>", true, "[<<] [a] >>", true},
      {"WrongDirection", ":{}\"::agn:\"P1;", "<< [a] [b] >>", false, "<< [a] [>>]", false},
      {"BothBraces", "L{::agn:}{}P1;", "<< [a] [b] >>", true, "<< [a] [b] >>", false},
      {"BehindMid", ":{}(M)*\"::agn:\"P1;", "<< [a] m [b] >>", true, "<< a [m] [>>]", true},
      {"InFrontOfMid", ":\"::agn:\"(M)*{}P1;", "<< [b] m [a] >>", false, "[<<] [m] a >>", true},
  };
  for (const ArcCase& expected : rows) {
    SCOPED_TRACE(expected.what);
    Step step(expected.rule, expected.list);
    Node& from = expected.points_right ? *step.window.lnode : *step.window.rnode;
    Node& to = expected.points_right ? *step.window.rnode : *step.window.lnode;
    Relation* other_arc = arc_between(from, to, "pat");
    other_arc->used = 1;
    Relation* arc = arc_between(from, to, "agn");
    arc->used = 1;
    ASSERT_EQ(inserted_undo(session, *step.rule, step.window), Status::ok);
    EXPECT_EQ(step.text(), expected.after);
    EXPECT_EQ(arc->used == 0, expected.is_free);
    EXPECT_EQ(other_arc->used, 1);
  }
}

TEST(InsertedUndo, ResetsANodeOfTheGraph) {
  Step step(":{}\"::agn:\"P1;", "<< [a] [!b|c] >>");
  arc_between(*step.window.lnode, *step.window.rnode, "agn");
  Node& inserted = *step.window.rnode;
  entry_list_free(session, inserted.candidates);
  ASSERT_EQ(inserted_undo(session, *step.rule, step.window), Status::ok);
  EXPECT_EQ(text_of_list(&inserted), "b|c");
}

TEST(InsertedUndo, GivesTheArcOfACopyBackToItsOrigin) {
  Step step(":{}\"::agn:\"P1;", "<< [a] b(0) >>");
  Node& source = step.list.at(2);
  Relation* arc = arc_between(*step.window.lnode, source, "agn");
  ASSERT_EQ(node_copy(session, step.window.rnode, source, arc, 0), Status::ok);
  node_insert_after(session, *step.window.lnode, *step.window.rnode);
  arc->used = 1;
  session.state.forced_node = step.window.rnode;
  ASSERT_EQ(inserted_undo(session, *step.rule, step.window), Status::ok);
  EXPECT_EQ(step.text(), "<< [a] [b(0)] >>");
  EXPECT_EQ(arc->to, &source);
  EXPECT_EQ(arc->used, 0);
  EXPECT_EQ(session.state.forced_node, &session.gone);
}

TEST(InsertedUndo, ReloadsTheEntryOfAScopeThatLostItsWords) {
  Step step(":{}\"::agn:\"P1;", "<< [a] [SCOPE:01] >>");
  arc_between(*step.window.lnode, *step.window.rnode, "agn");
  List scope("x|y");
  add_scope(1, scope.nodes.at(0));
  entry_list_free(session, scope.at(0).candidates);
  ASSERT_EQ(inserted_undo(session, *step.rule, step.window), Status::ok);
  EXPECT_EQ(text_of_list(scope.nodes.at(0)), "x|y");
}

// No arc says how the node came in, but the graph or the scope knows it: it leaves the list and stays in its cell.
TEST(InsertedUndo, NodesThatOthersKnowLeaveTheListWithoutWords) {
  const std::pair<const char*, const char*> rows[] = {{"<< [a] [b] >>", "<< [a] [>>]"}, {"<< [a] [>>]", "<< [a]"}};
  for (const auto& [before, after] : rows) {
    Step step(":{}\"::agn:\"P1;", before);
    Node& inserted = *step.window.rnode;
    if (!is_boundary(inserted)) inserted.name = temp_text(session, "b");
    ASSERT_EQ(inserted_undo(session, *step.rule, step.window), Status::ok) << before;
    EXPECT_EQ(step.text(), after);
    EXPECT_EQ(inserted.candidates, nullptr) << before;
  }
}

// ---- Holds.

struct HoldCase {
  const char* what;
  const char* reference;
  const char* scopes;
  bool is_released;
  const char* after;
};

TEST(HoldRelease, OfAUsedReference) {
  const HoldCase rows[] = {
      {"Used", "SCOPE:01(0)", "a(2)", true, "a"},       {"ThroughReferences", "SCOPE:01(0)", "SCOPE:02;a(2)", true, "SCOPE:02;a"},
      {"Fresh", "SCOPE:01", "a(2)", false, "a(2)"},     {"OnlyAMarker", "SCOPE:01(m)", "a(2)", false, "a(2)"},
      {"NoHold", "SCOPE:01(0)", "a(0)", false, "a(0)"}, {"NoEntry", "SCOPE:01(0)", "", false, ""},
  };
  for (const HoldCase& hold : rows) {
    SCOPED_TRACE(hold.what);
    const std::string list = std::string("<< [") + hold.reference + "] >>";
    Search search({"", "L{}{}P1;", list.c_str(), "", "", "", hold.scopes}, Before::failed);
    EXPECT_EQ(hold_release(session, *search.window().lnode), hold.is_released);
    EXPECT_EQ(search.scopes_text(), hold.after);
  }
}

// ---- The types without a step.

struct SteplessCase {
  const char* what;
  const char* rule;
  const char* copied;  // the node of the pair "x y" that the copy stands for
  const char* after;
};

// The pair has left the list together, and a copy of one of them stands in its place.
TEST(SteplessUndo, PutsThePairBack) {
  const SteplessCase rows[] = {
      {"Plus", "+{}{}P1;", "x", "<< a [x] [y] b >>"},
      {"Minus", "-{}{}P1;", "y", "<< a [x] [y] b >>"},
      {"Less", "<{::agn:}{}P1;", "x", "<< a [x] [y] b >>"},
      {"Greater", ">{::agn:}{}P1;", "y", "<< a [x] [y] b >>"},
  };
  for (const SteplessCase& stepless : rows) {
    SCOPED_TRACE(stepless.what);
    Step step(stepless.rule, "<< [a] [c] b >>");
    const List pair("x y");
    step.window.rnode->origin = pair.nodes.at(stepless.copied[0] == 'x' ? 0 : 1);
    step.matched();
    ASSERT_EQ(stepless_undo(session, step.window, *step.rule), Status::ok);
    EXPECT_EQ(step.text(), stepless.after);
  }
}

// ---- What has no defined result ends the sentence.

struct LostCase {
  const char* what;
  const char* rules;
  const char* list;
  Before before;
  const char* message;
};

TEST(Lost, EndsTheSentenceWithAMessage) {
  const LostCase rows[] = {
      {"PlusWithoutOrigin", "+{}{}P1;", "<< [a] [b] >>", Before::matched, "undid a rule of a type that has no step"},
      {"GreaterWithoutOrigin", ">{::agn:}{}P1;", "<< [a] [b] >>", Before::matched, "undid a rule of a type that has no step"},
      {"ExchangeBesideAFreshNode", "X{}{}P1;", "<< [a] [b] c >>", Before::matched, "undid an exchange whose nodes are not there"},
      {"ExchangeAtTheEnd", "X{}{}P1;", "<< [a] [>>]", Before::applied, "undid an exchange whose nodes are not there"},
      {"CopyThatIsNotThere", "CR{}{}P1;", "<< [a] [>>]", Before::matched, "undid a copy that is not there"},
      {"MidWithoutPlaces", ":{}(M)*\"[b]\"P1;", "<< [a] [b] >>", Before::matched, "lost the place of a rule with MID"},
      {"OnlyMarkers", "L{}{}P1;", "<< [a(m)] [b] >>", Before::failed, "undid a step that no rule has made"},
  };
  for (const LostCase& lost : rows) {
    SCOPED_TRACE(lost.what);
    Search search({"", lost.rules, lost.list, "", "", ""}, lost.before);
    Capture output;
    EXPECT_EQ(search.undo().substr(0, 3), "110");
    EXPECT_EQ(output.text(), std::string(";;the rule base has failed: ") + lost.message + "\n");
    EXPECT_EQ(must_leave(session), Status::rule_base);
  }
}

TEST(Lost, StackThatIsEmptyOnOneSide) {
  Search search({"", "L{}{}P1;", "<< [a] [b] >>", "", "", ""}, Before::matched);
  match_record_pop(session, search.at(1));
  Capture output;
  EXPECT_EQ(search.undo(), "110 P1");
  EXPECT_EQ(output.text(), ";;the rule base has failed: undid more steps than it has made\n");
}

TEST(Lost, OriginThatStillStandsInTheList) {
  Step step("+{}{}P1;", "<< x [a] [c] b >>");
  step.window.rnode->origin = &step.list.at(1);
  step.matched();
  Capture output;
  EXPECT_EQ(stepless_undo(session, step.window, *step.rule), Status::rule_base);
}

}  // namespace
}  // namespace lexon::test
