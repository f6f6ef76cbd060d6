#include "engine/context_match.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "support/session.hpp"
#include "support/step.hpp"

namespace lexon::test {
namespace {

struct Context {
  const char* name;
  Side side;
  const char* groups;  // as they stand in a rule
  const char* list;    // the walk begins at the node in brackets
  const char* result;  // surface form of the node, or "-"
};

constexpr Side kLeft = Side::left;
constexpr Side kRight = Side::right;

const Context kContexts[] = {
    {"the last node to the left is the result", kLeft, "(A)(B)", "<< a/A(0) [b/B(0)] >>", "a"},
    {"the first node to the right is the result", kRight, "(A)(B)", "<< [a/A(0)] b/B(0) >>", "a"},
    {"all conditions of a group hold", kLeft, "(A,^B)", "[a/A,B(0)]", "-"},
    {"a condition with a sign is affirmative", kRight, "(+A)", "[b/B(0)]", "-"},
    {"a boundary needs no record", kLeft, "(SHEAD)(B)", "<< [b/B(0)] >>", "<<"},
    {"a fresh node is not matched", kLeft, "(A)(B)", "<< a/A [b/B(0)] >>", "-"},
    {"a fresh node is not matched to the right", kRight, "(A)(B)", "<< [a/A(0)] b/B >>", "-"},
    {"the list ends too early", kRight, "(STAIL)(B)", "[>>]", "-"},
    {"surface forms are not tested to the left", kLeft, "([x],[[y]])", "[a/A(0)]", "a"},
    {"surface forms are tested to the right", kRight, "([x])", "[a/A(0)]", "-"},
    {"concept words are tested to the right", kRight, "([[y]],A)", "[a=y/A(0)]", "a"},
    {"a star alone needs a node, left", kLeft, "(A)*", "<< [b/B(0)] >>", "-"},
    {"a star alone needs a node, right", kRight, "(A)*", "<< [b/B(0)] >>", "-"},
    {"a star runs on, left", kLeft, "(A)*", "<< a/A(0) b/A(0) [c/A(0)] >>", "a"},
    {"a star runs on, right", kRight, "(A)*", "<< [a/A(0)] b/A(0) >>", "a"},
    {"a star that runs into a fresh node fails, left", kLeft, "(A)*", "<< a/A [b/A(0)] >>", "-"},
    {"a star that runs into a fresh node fails, right", kRight, "(A)*", "<< [a/A(0)] b/A >>", "-"},
    {"a star gives way, left", kLeft, "(SHEAD)(A)*", "<< a/A(0) [b/A(0)] >>", "<<"},
    {"a star gives way, right", kRight, "(A)*(STAIL)", "<< [a/A(0)] b/A(0) >>", "a"},
    {"a star of no nodes gives way", kRight, "(A)*(STAIL)", "[>>]", ">>"},
    {"a star is as short as the rest allows", kLeft, "(A)(A)*", "<< a/A(0) [b/A(0)] >>", "b"},
    {"the rest behind a star fails", kRight, "(A)*(B)", "<< [a/A(0)] a/A(0) c/C(0) >>", "-"},
    {"groups are left behind a star", kRight, "(A)*(B)(C)", "<< [a/A(0)] b/B(0)", "-"},
    {"two stars", kRight, "(A)*(B)*(STAIL)", "<< [a/A(0)] b/B(0) b/B(0) >>", "a"},
};

const ContextGroup* groups_of(const Rule& rule, Side side) {
  return side == Side::left ? rule.pre : rule.suf;
}

std::string rule_with(Side side, const std::string& groups) {
  return side == Side::left ? "L" + groups + "{}{}P1;" : "L{}{}" + groups + "P1;";
}

TEST(ContextMatch, Table) {
  for (const Context& row : kContexts) {
    SCOPED_TRACE(row.name);
    const Step step(rule_with(row.side, row.groups), row.list);
    const Node* found = match_context(session, row.side, groups_of(*step.rule, row.side), step.list.lnode);
    EXPECT_STREQ(found == nullptr ? "-" : found->candidates->hw, row.result);
  }
}

struct Mark {
  const char* name;
  const char* rule;  // MID, and on its far side the groups to which the mark belongs
  const char* list;
  const char* hit;
};

// The chain of MID goes on in the groups beyond; the first of those is marked.
const Mark kMarks[] = {
    {"the marked group", ":{}(B)*\"[x]\"(C)P1;", "[b/B(0)] b/B(0) c/C(0) >>", "c"},
    {"to the right a star is not noted", ":{}(B)\"[x]\"(C)*P1;", "[b/B(0)] c/C(0) >>", "-"},
    {"the group behind a marked star", ":{}(B)\"[x]\"(C)*(STAIL)P1;", "[b/B(0)] c/C(0) >>", ">>"},
    {"to the left a star is noted at its last node", ":(C)*\"[x]\"(B){}P1;", "<< c/C(0) d/C(0) [b/B(0)]", "c"},
    {"the group behind a star that matched nothing, left", ":(SHEAD)(C)*\"[x]\"(B){}P1;", "<< [b/B(0)]", "<<"},
    {"the group behind a star that was noted, left", ":(SHEAD)(C)*\"[x]\"(B){}P1;", "<< c/C(0) [b/B(0)]", "c"},
};

TEST(ContextMatch, MarkWhereTheGroupsBeyondMidBegin) {
  for (const Mark& row : kMarks) {
    SCOPED_TRACE(row.name);
    const Step step(row.rule, row.list);
    const Side side = step.rule->lnode->inserted != 0 ? Side::left : Side::right;
    GroupMark mark{groups_of(*step.rule, side)};
    EXPECT_NE(match_context(session, side, {step.rule->mid, mark.group}, step.list.lnode, mark), nullptr);
    EXPECT_STREQ(mark.hit == nullptr ? "-" : mark.hit->candidates->hw, row.hit);
  }
}

TEST(ContextMatch, WalkBehindAStarRepairsTheLinkBack) {
  const Step step("L{}{}(A)*(STAIL)P1;", "<< [a/A(0)] b/A(0) >>");
  Node& second = step.list.at(2);
  second.left = &step.list.at(0);
  ASSERT_NE(match_context(session, Side::right, step.rule->suf, step.list.lnode), nullptr);
  EXPECT_EQ(second.left, &step.list.at(1));
}

struct LongWalk {
  Side side;
  const char* groups;
  const char* start;  // of the list, in front of 500 nodes
  const char* end;
};

// Eight starred groups over as many nodes would take ages.
const LongWalk kLongWalks[] = {
    {Side::left, "(B)(A)*(A)*(A)*(A)*(A)*(A)*(A)*(A)*", "<< ", "[a/A(0)]"},
    {Side::right, "(A)*(A)*(A)*(A)*(A)*(A)*(A)*(A)*(B)", "[a/A(0)] ", ">>"},
};

TEST(ContextMatch, StopLeavesALongWalk) {
  for (const LongWalk& row : kLongWalks) {
    std::string list = row.start;
    for (int i = 0; i < 500; ++i) list += "a/A(0) ";
    const Step step(rule_with(row.side, row.groups), list.append(row.end));
    std::thread stopper([] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      session.stop_requested = true;
    });
    EXPECT_EQ(match_context(session, row.side, groups_of(*step.rule, row.side), step.list.lnode), nullptr);
    stopper.join();
    session.stop_requested = false;
  }
}

}  // namespace
}  // namespace lexon::test
