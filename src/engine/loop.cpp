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
#include "engine/scope_entry.hpp"
#include "engine/scope_return.hpp"
#include "engine/trace.hpp"
#include "rules/matrix.hpp"
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

[[nodiscard]] Turn leave(Loop& loop, Status status) {
  loop.status = status;
  return Turn::leave;
}

[[nodiscard]] bool is_finished(const Window& window) {
  return window.lnode != nullptr && is_boundary(*window.lnode) && window.lnode->right == nullptr;
}

// The first element for which matching gives a result other than "does not fit" becomes the head. Its result.
[[nodiscard]] Fit rule_choose(Session& session, Loop& loop) {
  while (loop.candidates != nullptr) {
    RuleCandidate& element = *loop.candidates;
    if (!is_post_edit_type(element.rule->type)) {
      const Fit fit = match_rule(session, element, loop.window);
      if (must_leave(session) != Status::ok) return Fit::failed;
      if (fit != Fit::no) return fit;
    }
    loop.candidates = element.next;
    candidate_passed_over(session, &element);
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

// A word test has done its work inside matching, by narrowing the words.
[[nodiscard]] Turn word_test_done(Session& session, Loop& loop) {
  trace_rule_applied(session, *loop.candidates);
  trace_list(session, loop.window, true);
  loop.candidates = rule_candidates(session, loop.window.lnode, loop.window.rnode);
  return Turn::pass;
}

[[nodiscard]] bool has_passed_the_end(const Window& window) {
  return window.lnode != nullptr && is_boundary(*window.lnode) && window.rnode == nullptr;
}

[[nodiscard]] Turn rule_apply(Session& session, Loop& loop) {
  const bool is_word_test = is_word_test_type(loop.candidates->rule->type);
  const CandidateHandover handover(session, loop.candidates);
  loop.status = apply_rule(session, loop.window, loop.candidates, &loop.home_scope);
  if (is_failure(loop.status)) return Turn::leave;
  if (loop.status == Status::nothing_left) return Turn::end;
  if (loop.home_scope != 0 && has_passed_the_end(loop.window)) return leave(loop, Status::ok);
  // A refused word test consists of backtracking, which has named the next rule.
  if (!is_word_test) loop.candidates = rule_candidates(session, loop.window.lnode, loop.window.rnode);
  return Turn::pass;
}

// A failed scope is undone in the outer list by one step.
[[nodiscard]] Turn scope_undo(Session& session, Loop& loop) {
  if (const Status status = must_leave(session); status != Status::ok) return leave(loop, status);
  // wanted: one call, even if it asks to be called again.
  loop.status = backtrack(session, loop.window, loop.candidates, loop.home_scope);
  return loop.status == Status::ok ? Turn::pass : Turn::end;
}

[[nodiscard]] Turn rule_follow(Session& session, Loop& loop) {
  const Rule& rule = *loop.candidates->rule;
  if (const std::optional<Side> side = scope_to_enter(session, loop.window, rule); side.has_value()) {
    const ScopeResult result = scope_enter(session, *side, loop.window, *loop.candidates, loop.home_scope);
    if (result.wants_undo) return scope_undo(session, loop);
    if (result.status != Status::ok) return leave(loop, result.status);
  }
  return rule_apply(session, loop);
}

[[nodiscard]] Turn pass(Session& session, Loop& loop) {
  if (const Status status = must_leave(session); status != Status::ok) return leave(loop, status);
  if (is_finished(loop.window)) return leave(loop, Status::ok);
  if (loop.window.rnode == nullptr) {
    if (loop.window.lnode == nullptr)
      return leave(loop, rule_base_failure(session, "emptied both places of the window"));
    loop.window.rnode = loop.window.lnode->right;
  }
  const Fit fit = rule_choose(session, loop);
  if (fit == Fit::failed) return leave(loop, must_leave(session) != Status::ok ? must_leave(session) : Status::memory);
  const bool is_fit = fit == Fit::yes;
  if (loop.candidates == nullptr) return step_back(session, loop);
  const bool is_word_test = is_word_test_type(loop.candidates->rule->type);
  if (is_fit && is_word_test) return word_test_done(session, loop);
  if (!is_fit && !is_word_test) return step_back(session, loop);
  return rule_follow(session, loop);
}

// The search ran out. A finished scope can hold another solution.
[[nodiscard]] Status search_end(Session& session, Loop& loop) {
  const bool may_go_back = loop.status == Status::nothing_left && loop.candidates != nullptr;
  if (!may_go_back || is_at_beginning(loop.window)) return loop.status;
  // Undone to its end, the search for a forced target leaves the window where it was, also on a node that has gone.
  const bool is_lost = loop.window.lnode == nullptr && loop.candidates->rule->type == rule_type::insertion;
  if (is_lost) return rule_base_failure(session, "searched on from an empty place");
  return back_into_scope(session, loop.window, loop.candidates, loop.home_scope);
}

// The node that a nested scope starts from: a copy stands for an entry node that has been used already.
[[nodiscard]] Status nested_entry_ready(Session& session, Node*& node) {
  if (!is_untouched(*node)) {
    Node* copy = nullptr;
    const Status status = node_copy(session, copy, *node, nullptr, 0);
    if (status == Status::ok) current_scope(session).entry = node = copy;
    return status;
  }
  return node->candidates == nullptr ? entry_list_copy(session, node->entries, node->candidates) : Status::ok;
}

[[nodiscard]] Status boundary_make(Session& session, Node*& boundary, const char* hw, const char* attrs) {
  boundary = temp_new<Node>(session);
  if (boundary == nullptr) return Status::memory;
  boundary->kind = kKindBoundary;
  boundary->candidates = entry_new(session, hw, attrs);
  return boundary->candidates == nullptr ? Status::no_effect : Status::ok;
}

// Boundaries that a node has from an earlier entry are kept.
[[nodiscard]] Status boundaries_ready(Session& session, Node& node, bool nested) {
  Node* boundary = nullptr;
  if (node.left == nullptr) {
    const Status status = boundary_make(session, boundary, "<<", nested ? "CHEAD" : "SHEAD");
    if (status != Status::ok) return status;
    node_insert_before(node, *boundary);
  }
  if (node.right != nullptr) return Status::ok;
  const Status status = boundary_make(session, boundary, ">>", nested ? "CTAIL" : "STAIL");
  if (status != Status::ok) return status;
  node_insert_after(node, *boundary);
  return entry_list_copy(session, boundary->candidates, boundary->entries);
}

}  // namespace

bool is_at_beginning(const Window& window) {
  const bool is_left_end = window.lnode != nullptr && is_boundary(*window.lnode) && is_fresh(*window.lnode);
  return is_left_end && (window.rnode == nullptr || is_untouched(*window.rnode));
}

Status generate_scope(Session& session, Node* entry, bool nested) {
  if (stack_nearly_used(session)) return Status::memory;
  if (entry == nullptr) return rule_base_failure(session, "generated a scope without an entry");
  std::int32_t home_scope = session.state.semlst_cur;
  Node* node = entry;
  if (nested) {
    if (const Status status = nested_entry_ready(session, node); status != Status::ok) return status;
  }
  if (const Status status = boundaries_ready(session, *node, nested); status != Status::ok) return status;
  const Window window{node->left, node};
  trace_list(session, window, true);
  return engine_loop(session, rule_candidates(session, window.lnode, window.rnode), window, home_scope);
}

Status engine_loop(Session& session, RuleCandidate* candidates, Window window, std::int32_t& home_scope) {
  if (stack_nearly_used(session)) return Status::memory;
  Loop loop{candidates, window, home_scope, Status::ok};
  Turn turn = Turn::pass;
  for (; turn == Turn::pass; ++session.state.steps) turn = pass(session, loop);
  const Status status = turn == Turn::end ? search_end(session, loop) : loop.status;
  candidates_passed_over(session, loop.candidates);
  return status;
}

}  // namespace lexon
