// The walk of the window. A pass asks for the rules of the window, lets matching pick the first that fits, enters a
// scope if the rule brings one in, and has the rule carried out. Where no rule fits, or a rule demands it, the last
// step is undone.

#include "engine/loop.hpp"

#include <utility>

#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/apply.hpp"
#include "engine/backtrack.hpp"
#include "engine/candidate_pin.hpp"
#include "engine/match.hpp"
#include "engine/observer.hpp"
#include "engine/scope_entry.hpp"
#include "engine/scope_return.hpp"
#include "engine/trace.hpp"
#include "rules/candidates.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

// One instance of the loop.
struct Loop {
  RuleCandidate* candidates;  // the head is the rule being looked at; the rest is what backtracking can resume with
  Window window;
  std::int32_t& home_scope;
  Status status;  // of the last step; once the loop is left, its result
};

// Where a pass leads.
enum class Turn {
  pass,   // the next pass
  end,    // the search ran out, unless a finished scope can be gone back into
  leave,  // the loop returns its status
};

// The loop's result is `status`.
[[nodiscard]] Turn leave(Loop& loop, Status status) {
  loop.status = status;
  return Turn::leave;
}

// The first element for which matching gives a result other than "does not fit" becomes the head. Its result.
[[nodiscard]] Fit rule_choose(Session& session, Loop& loop) {
  session.state.turned = nullptr;
  while (loop.candidates != nullptr) {
    RuleCandidate& element = *loop.candidates;
    if (!is_post_edit_type(element.rule->type)) {
      const Fit fit = match_rule(session, element, loop.window);
      if (must_leave(session) != Status::ok) return Fit::failed;
      if (fit != Fit::no) return fit;
    }
    // What has been passed over is not looked at again in this window.
    loop.candidates = candidate_pass(session, element);
  }
  return Fit::no;
}

// Undoes steps until there is something new to try.
[[nodiscard]] Turn step_back(Session& session, Loop& loop) {
  trace_to_backtrack(session, loop.candidates != nullptr);
  do {
    if (const Status status = must_leave(session); status != Status::ok) return leave(loop, status);
    const CandidateHandover handover(session, loop.candidates);
    loop.status = backtrack(session, loop.window, loop.candidates, loop.home_scope);
  } while (loop.status == Status::no_effect);
  return loop.status == Status::ok ? Turn::pass : Turn::end;
}

// Enters the scope that the rule brings in, if any, and has the rule carried out.
[[nodiscard]] Turn rule_follow(Session& session, Loop& loop) {
  const Rule& rule = *loop.candidates->rule;
  const bool is_word_test = is_word_test_type(rule.type);
  if (const std::optional<Side> side = scope_to_enter(session, loop.window, rule); side.has_value()) {
    const ScopeResult result = scope_enter(session, *side, loop.window, *loop.candidates, loop.home_scope);
    if (result.wants_undo) {
      // A failed scope is undone in the outer list by one step.
      if (const Status status = must_leave(session); status != Status::ok) return leave(loop, status);
      // wanted: one call, even if it asks to be called again.
      loop.status = backtrack(session, loop.window, loop.candidates, loop.home_scope);
      return loop.status == Status::ok ? Turn::pass : Turn::end;
    }
    if (result.status != Status::ok) return leave(loop, result.status);
  }
  const CandidateHandover handover(session, loop.candidates);
  loop.status = apply_rule(session, loop.window, loop.candidates, &loop.home_scope);
  if (is_failure(loop.status)) return Turn::leave;
  // A backtracking inside the rule ran out.
  if (loop.status == Status::nothing_left) return Turn::end;
  // A nested list is finished as soon as the window has passed its right boundary.
  const Window& window = loop.window;
  const bool has_passed_the_end = window.lnode != nullptr && is_boundary(*window.lnode) && window.rnode == nullptr;
  if (loop.home_scope != 0 && has_passed_the_end) return leave(loop, Status::ok);
  // A refused word test consists of backtracking, which has named the next rule.
  if (!is_word_test) loop.candidates = window_rules(session, window);
  return Turn::pass;
}

[[nodiscard]] Turn pass(Session& session, Loop& loop) {
  if (const Status status = must_leave(session); status != Status::ok) return leave(loop, status);
  Window& window = loop.window;
  const bool is_finished = window.lnode != nullptr && is_boundary(*window.lnode) && window.lnode->right == nullptr;
  if (is_finished) return leave(loop, Status::ok);
  if (window.rnode == nullptr) {
    if (window.lnode == nullptr) return leave(loop, rule_base_failure(session, "emptied both places of the window"));
    // The right place follows from the left one.
    window.rnode = window.lnode->right;
  }
  const Fit fit = rule_choose(session, loop);
  if (fit == Fit::failed) return leave(loop, must_leave(session) != Status::ok ? must_leave(session) : Status::memory);
  if (loop.candidates == nullptr) return step_back(session, loop);
  const bool is_word_test = is_word_test_type(loop.candidates->rule->type);
  if (fit == Fit::yes && is_word_test) {
    // A word test that fits has done its work inside matching, by narrowing the words.
    trace_rule_applied(session, *loop.candidates);
    trace_list(session, window, true);
    loop.candidates = window_rules(session, window);
    return Turn::pass;
  }
  // wanted: a word test that is refused is carried out: that is how words are rejected.
  if (fit != Fit::yes && !is_word_test) return step_back(session, loop);
  return rule_follow(session, loop);
}

// The list's first and last node.
[[nodiscard]] Status boundary_make(Session& session, Node*& boundary, const char* hw, const char* attrs) {
  boundary = temp_new<Node>(session);
  if (boundary == nullptr) return Status::memory;
  boundary->kind = kKindBoundary;
  boundary->candidates = entry_new(session, hw, attrs);
  return boundary->candidates == nullptr ? Status::no_effect : Status::ok;
}

}  // namespace

RuleCandidate* window_rules(Session& session, const Window& window) {
  RuleCandidate* offered = rule_candidates(session, window.lnode, window.rnode);
  if (session.observer != nullptr) session.observer->offered(session, window, offered);
  return offered;
}

bool is_at_beginning(const Window& window) {
  const bool is_left_end = window.lnode != nullptr && is_boundary(*window.lnode) && is_fresh(*window.lnode);
  return is_left_end && (window.rnode == nullptr || is_untouched(*window.rnode));
}

Status generate_scope(Session& session, Node* entry, bool nested) {
  if (stack_nearly_used(session)) return Status::memory;
  if (entry == nullptr) return rule_base_failure(session, "generated a scope without an entry");
  std::int32_t home_scope = session.state.semlst_cur;
  Node* node = entry;
  if (nested && !is_untouched(*entry)) {
    // A copy stands for an entry node that has been used already.
    Node* copy = nullptr;
    if (const Status status = node_copy(session, copy, *entry, nullptr, 0); status != Status::ok) return status;
    current_scope(session).entry = node = copy;
  } else if (nested && node->candidates == nullptr) {
    const Status status = entry_list_copy(session, node->entries, node->candidates);
    if (status != Status::ok) return status;
  }
  // Boundaries that a node has from an earlier entry are kept.
  Node* boundary = nullptr;
  if (node->left == nullptr) {
    const Status status = boundary_make(session, boundary, "<<", nested ? "CHEAD" : "SHEAD");
    if (status != Status::ok) return status;
    node_insert_before(session, *node, *boundary);
  }
  if (node->right == nullptr) {
    const Status status = boundary_make(session, boundary, ">>", nested ? "CTAIL" : "STAIL");
    if (status != Status::ok) return status;
    node_insert_after(session, *node, *boundary);
    const Status copied = entry_list_copy(session, boundary->candidates, boundary->entries);
    if (copied != Status::ok) return copied;
  }
  const Window window{node->left, node};
  trace_list(session, window, true);
  return engine_loop(session, window_rules(session, window), window, home_scope);
}

Status engine_loop(Session& session, RuleCandidate* candidates, Window window, std::int32_t& home_scope) {
  if (stack_nearly_used(session)) return Status::memory;
  Loop loop{candidates, window, home_scope, Status::ok};
  Turn turn = Turn::pass;
  // Without a bound of its own: a rule base that never comes to an end is stopped from outside.
  for (; turn == Turn::pass; ++session.state.steps) {
    out_flush(session);
    turn = pass(session, loop);
  }
  Status status = loop.status;
  // The search ran out. A finished scope can hold another solution.
  const bool may_go_back = turn == Turn::end && status == Status::nothing_left && loop.candidates != nullptr;
  if (may_go_back && !is_at_beginning(loop.window)) {
    // Undone to its end, the search for a forced target leaves the window where it was, also on a node that has gone.
    const bool is_lost = loop.window.lnode == nullptr && loop.candidates->rule->type == rule_type::insertion;
    status = is_lost ? rule_base_failure(session, "searched on from an empty place")
                     : back_into_scope(session, loop.window, loop.candidates, loop.home_scope);
  }
  candidates_passed_over(session, loop.candidates);
  return status;
}

}  // namespace lexon
