#include "engine/scope_return.hpp"

#include "data/chain.hpp"
#include "support/grammar.hpp"
#include "support/search.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

constexpr const char* kBringsRight = ":{A:::}\"SCOPE::pat:\"P2;\nR{Z:::}{}P1;";
constexpr const char* kBringsLeft = ":\"SCOPE::pat:\"{A:::}P2;\nR{Z:::}{}P1;";

// An outer window with a reference to scope 1, which the first rule has brought in, and the finished list of the
// scope, which the second rule has walked through. Those behind it are left to try. No other rules exist.
struct Finished {
  Search outer;
  List inner;
  std::int32_t home_scope = 0;

  Finished(const char* rules, const char* list, const char* inner_list)
      : outer({"", rules, list, "", "", "", "", "", -1, 0, "pat"}, Before::failed), inner(inner_list) {
    rule_matrix_clear(grammar.index);
    add_scope(1, &inner.at(1));
    RuleCandidate* walked = nullptr;
    for (const Rule* rule = outer.candidate()->next->rule; rule != nullptr; rule = rule->next) {
      chain_append<&RuleCandidate::next>(walked, Step::candidate_of(rule));
    }
    share_one_list(walked);
    for (const std::size_t index : {1U, 2U}) {
      EXPECT_EQ(match_record_push(session, inner.at(index), kStateStep, walked), Status::ok);
    }
  }

  Status go_back() { return back_into_scope(session, outer.window(), outer.candidate(), home_scope); }
};

// ---- The scope has no other solution.

struct FailedCase {
  const char* what;
  const char* rules;
  const char* list;
  const char* after;
  const char* branches;  // behind ";;#3 Scope:01 failed"
};

TEST(FailedScope, GivesWayToTheNextWordOrRule) {
  const FailedCase rows[] = {
      {"LeftNodesNextWord", kBringsRight, "<< [a/A|b] [SCOPE:01] >>", "<< [b] >>", "next entry for lnode #1|No Rule!"},
      {"LeftNodesLastWord", kBringsRight, "<< [a/A] [SCOPE:01] >>", "<< [a/A] >>", "next entry for lnode #1|no next entry for lnode #1|next rule #2|No Rule!"},
      {"RightNodesNextWord", kBringsLeft, "<< [SCOPE:01] [a/A|b] >>", "<< [b] >>", "next entry for rnode #1|No Rule!"},
      {"RightNodesLastWord", kBringsLeft, "<< [SCOPE:01] [a/A] >>", "<< [a/A] >>", "next entry for rnode #1|no next entry for rnode #1|next rule #1|No Rule!"},
  };
  for (const FailedCase& failed : rows) {
    SCOPED_TRACE(failed.what);
    Finished scope(failed.rules, failed.list, "<< x >>");
    Capture output;
    session.state.trace_level = 3;
    EXPECT_EQ(scope.go_back(), Status::nothing_left);
    EXPECT_EQ(scope.outer.text(), failed.after);
    EXPECT_EQ(branches_of(output.text()), std::string("\tbacktrack into SCOPE:01|\tnext rule #31|\tNo Rule!|#3 Scope:01 failed|") + failed.branches);
    EXPECT_EQ(session.state.semlst_cur, 0);
    EXPECT_EQ(text_of_list(&scope.inner.at(1)), "<< x >>");
  }
}

// The window is the caller's still; the reference has left the list that it stands in.

TEST(FailedScope, CopyThatStoodForTheEntryNodeIsGone) {
  Finished scope(kBringsRight, "<< [a/A] [SCOPE:01] >>", "<< x >>");
  Node* entry = node_of_text("x|y");
  scope.inner.at(1).origin = entry;
  EXPECT_EQ(scope.go_back(), Status::nothing_left);
  EXPECT_EQ(session.sentence.semlst[1].entry, entry);
  EXPECT_EQ(text_of_list(&scope.inner.at(0)), "<< >>");
}

TEST(FailedScope, ForcedBacktrackingGetsTheWindowBack) {
  Finished scope(kBringsRight, "<< [a/A|b] [SCOPE:01] >>", "<< x >>");
  session.state.forced_node = &scope.outer.at(1);
  EXPECT_EQ(scope.go_back(), Status::ok);
  EXPECT_EQ(scope.outer.text(), "<< [a/A|b] [>>]");
}

TEST(FailedScope, RuleWithMidHasLostItsPlace) {
  Finished scope(":{A:::}(M)*\"SCOPE::pat:\"P2;\nR{Z:::}{}P1;", "<< [a/A] [SCOPE:01] >>", "<< x >>");
  Capture output;
  EXPECT_EQ(scope.go_back(), Status::rule_base);
  EXPECT_EQ(output.text(), ";;the rule base has failed: lost the place of a rule with MID\n");
}

// ---- Another solution.

TEST(ReturnIntoScope, AppliesTheOuterRuleToTheNextSolution) {
  Finished scope(":{A:::}\"SCOPE::pat:\"P3;\nR{Z:::}{}P2;\nR{N:::}{}P1;", "<< [a/A] [SCOPE:01{>agn}] >>", "<< x/N,@entry >>");
  Capture output;
  session.state.trace_level = 3;
  // No rule goes on in the outer list, the scope is gone back into once more, and has nothing left.
  EXPECT_EQ(scope.go_back(), Status::nothing_left);
  const std::string trace = output.text();
  EXPECT_NE(trace.find(";;backtrack <<== SCOPE:01\n"), std::string::npos) << trace;
  EXPECT_NE(trace.find("[SCOPE:01]{}  \"\" (>agn,SCOPE,N,) <.,0,0>;\n"), std::string::npos) << trace;
}

// ---- Nothing to go back into.

TEST(ReturnIntoScope, SearchThatRanOutCountsAsFinished) {
  for (const int current : {0, 1}) {
    Finished scope("R{}{}P2;\nL{}{}P1;", "<< [a] [SCOPE:01] >>", "<< x >>");
    session.state.semlst_cur = current;
    Capture output;
    EXPECT_EQ(scope.go_back(), Status::ok);
    EXPECT_EQ(scope.outer.text(), "<< [a] [SCOPE:01] >>");
    EXPECT_EQ(output.text(), current == 0 ? ";;semlst_cur:NULL -> Failed!\n" : "");
  }
}

TEST(ReturnIntoScope, UnknownScopeChangesTheReferenceAlone) {
  Finished scope(kBringsRight, "<< [a/A] [SCOPE:07/X,Y{>agn}] >>", "<< x >>");
  EXPECT_EQ(scope.go_back(), Status::ok);
  EXPECT_EQ(scope.outer.text(), "<< [a/A] [SCOPE:07/>agn,SCOPE{>agn}] >>");
  EXPECT_EQ(scope.outer.at(2).candidates->attr_len, 3);
  EXPECT_EQ(session.state.trace_depth, 0);
}

TEST(ReturnIntoScope, UnfinishedScopeIsAFailureOfTheRules) {
  Finished scope(kBringsRight, "<< [a/A] [SCOPE:01] >>", "<< x >>");
  match_record_pop(session, scope.inner.at(2));
  Capture output;
  EXPECT_EQ(scope.go_back(), Status::rule_base);
}

TEST(ReturnIntoScope, LeavesWhenTheStackIsUsedUp) {
  Finished scope(kBringsRight, "<< [a/A] [SCOPE:01] >>", "<< x >>");
  session.state.stack_limit = static_cast<const char*>(__builtin_frame_address(0));
  EXPECT_EQ(scope.go_back(), Status::memory);
  session.state.stack_limit = nullptr;
}

}  // namespace
}  // namespace lexon::test
