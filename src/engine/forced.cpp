// Forced backtracking (?L, ?R): the word in force of one node is wrong, so go back until it has been changed. A target
// is only ever compared, never read through the pointer: it can be gone.

#include "data/nodes.hpp"
#include "data/output.hpp"
#include "data/session.hpp"
#include "engine/application.hpp"
#include "engine/backtrack.hpp"
#include "engine/scope_return.hpp"
#include "engine/trace.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

[[nodiscard]] bool is_target(const Session& session, const Node* node) {
  return node != nullptr && node == session.state.forced_node;
}

// Is the target in the window, with nothing left to undo but the application that brought it in?
[[nodiscard]] bool is_target_reached(const Session& session, Side side, const Window& window) {
  const Node* node = node_of(window, side);
  if (!is_target(session, node)) return false;
  // Fresh, or with the record of its own insertion alone.
  if (is_fresh(*node)) return true;
  const MatchRecord& record = *node->matches;
  return record.next == nullptr && record.candidate != nullptr &&
         pattern_of(*record.candidate->rule, side).inserted != 0;
}

// Undoes step after step, through finished scopes too, up to the target.
[[nodiscard]] Outcome undo_to_target(Session& session, Window& window, RuleCandidate*& candidate,
                                     std::int32_t& home_scope) {
  const PlaceWatch watch(session, window.lnode, window.rnode);
  for (;;) {
    if (const Status status = must_leave(session); status != Status::ok) return ended(status);
    Status status = backtrack(session, window, candidate, home_scope);
    if (status == Status::nothing_left) {
      if (is_at_beginning(window)) return ended(status);
      if (window.lnode == nullptr) return ended(rule_base_failure(session, "searched on from an empty place"));
      status = back_into_scope(session, window, candidate, home_scope);
      // The search inside can have undone what the window stood on.
      if (window.lnode == nullptr) return ended(rule_base_failure(session, "searched on from a place that is gone"));
    }
    if (is_failure(status)) return ended(status);
    const bool is_over = session.state.forced_node == nullptr || is_target_reached(session, Side::left, window) ||
                         is_target_reached(session, Side::right, window);
    if (is_over) return done(status);
  }
}

}  // namespace

Outcome forced_backtrack(Session& session, Window& window, RuleCandidate*& candidate, std::int32_t& home_scope) {
  Node*& target = session.state.forced_node;
  // A forced backtracking that is already under way keeps its target.
  if (target == nullptr) {
    const bool aims_left = candidate->rule->type == rule_type::test_left && window.lnode != nullptr;
    target = aims_left ? window.lnode : window.rnode;
  }
  Outcome outcome = undo_to_target(session, window, candidate, home_scope);
  if (!outcome.writes_back) return outcome;
  // Where the target waits in the window beside a node that a rule inserted, it is given up, and the inserted node is
  // undone.
  bool was_given_up = false;
  if (candidate != nullptr) {
    // wanted: unlike the right place, the left one must be fresh.
    const bool left_came_in = candidate->rule->lnode->inserted != 0;
    const bool right_came_in = candidate->rule->rnode->inserted != 0;
    if (is_target(session, window.rnode) && is_untouched(*window.rnode) && left_came_in) {
      was_given_up = true;
      trace_forced_ends(session, ForcedEnd::right_place);
      out_flush(session);
    } else if (is_target(session, window.lnode) && is_fresh(*window.lnode) && right_came_in) {
      was_given_up = true;
      trace_forced_ends(session, ForcedEnd::left_place);
    }
  }
  if (was_given_up) target = nullptr;
  const bool is_still_aimed = target != nullptr && candidate != nullptr && has_brace_patterns(*candidate->rule);
  if (was_given_up || is_still_aimed) {
    // wanted: one step more, whatever it says.
    const Status status = backtrack(session, window, candidate, home_scope);
    if (is_failure(status)) return ended(status);
    outcome = done(status);
  }
  if (session.state.trace_level < 3 || target == nullptr) return outcome;
  // The target has not been reached. A scope reference that is the target in the window shows no list.
  for (const Node* node : {window.lnode, window.rnode}) {
    if (is_target(session, node) && is_scope_reference(*node)) return outcome;
  }
  dump_list(session, window, true);
  return outcome;
}

}  // namespace lexon
