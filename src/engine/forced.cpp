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

// A forced backtracking that is already under way keeps its target.
void target_set(Session& session, const Rule& rule, const Window& window) {
  if (session.state.forced_node != nullptr) return;
  const bool aims_left = rule.type == rule_type::test_left && window.lnode != nullptr;
  session.state.forced_node = aims_left ? window.lnode : window.rnode;
}

[[nodiscard]] bool is_target(Session& session, const Node* node) {
  return node != nullptr && node == session.state.forced_node;
}

// Is the target in the window, with nothing left to undo but the application that brought it in?
[[nodiscard]] bool is_target_reached(Session& session, Side side, const Window& window) {
  const Node* node = node_of(window, side);
  if (!is_target(session, node)) return false;
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

[[nodiscard]] bool inserts(Side side, const RuleCandidate* candidate) {
  return candidate != nullptr && pattern_of(*candidate->rule, side).inserted != 0;
}

// The target waits in the window beside a node that a rule inserted: the target is given up, and the inserted
// node is undone.
[[nodiscard]] bool target_is_given_up(Session& session, const Window& window, const RuleCandidate* candidate) {
  if (is_target(session, window.rnode) && is_untouched(*window.rnode) && inserts(Side::left, candidate)) {
    session.state.forced_node = nullptr;
    trace_forced_ends_in_window(session, Side::right);
    out_flush(session);
    return true;
  }
  // wanted: unlike the right place, the left one must be fresh.
  if (is_target(session, window.lnode) && is_fresh(*window.lnode) && inserts(Side::right, candidate)) {
    session.state.forced_node = nullptr;
    trace_forced_ends_in_window(session, Side::left);
    return true;
  }
  return false;
}

void unreached_target_trace(Session& session, const Window& window) {
  if (session.state.trace_level < 3 || session.state.forced_node == nullptr) return;
  for (const Node* node : {window.lnode, window.rnode}) {
    if (is_target(session, node) && is_scope_reference(*node)) return;
  }
  dump_list(session, window, true);
}

}  // namespace

Outcome forced_backtrack(Session& session, Window& window, RuleCandidate*& candidate, std::int32_t& home_scope) {
  target_set(session, *candidate->rule, window);
  Outcome outcome = undo_to_target(session, window, candidate, home_scope);
  if (!outcome.writes_back) return outcome;
  const bool was_given_up = target_is_given_up(session, window, candidate);
  const bool is_still_aimed =
      session.state.forced_node != nullptr && candidate != nullptr && has_brace_patterns(*candidate->rule);
  if (was_given_up || is_still_aimed) {
    const Status status = backtrack(session, window, candidate, home_scope);
    if (is_failure(status)) return ended(status);
    outcome = done(status);
  }
  unreached_target_trace(session, window);
  return outcome;
}

}  // namespace lexon
