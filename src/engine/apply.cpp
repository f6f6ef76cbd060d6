// Carrying out a rule: its actions, then the movement of its type, then the window is written back.

#include "engine/apply.hpp"

#include "data/nodes.hpp"
#include "data/output.hpp"
#include "data/session.hpp"
#include "engine/application.hpp"
#include "engine/backtrack.hpp"
#include "engine/observer.hpp"
#include "engine/trace.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

// The window one place to the left. It must not stand at the list's end.
[[nodiscard]] Status left_step(Session& session, Window& window) {
  if (window.lnode == nullptr || window.lnode->left == nullptr)
    return rule_base_failure(session, "left the list to the left");
  window = {window.lnode->left, window.lnode};
  return window_marker_push(session, *window.lnode);
}

// What L, R and ":" do between their actions and their movement. The same candidate must have matched both nodes.
[[nodiscard]] Status result_settle(Session& session, const Window& window, const Rule& rule) {
  if (window.lnode == nullptr || window.rnode == nullptr)
    return rule_base_failure(session, "applied a rule at an empty place");
  if (is_fresh(*window.lnode) || is_fresh(*window.rnode))
    return rule_base_failure(session, "applied a rule to a node that no rule has matched");
  if (window.lnode->matches->candidate != window.rnode->matches->candidate) return Status::no_effect;
  for (const Side side : {Side::left, Side::right}) {
    const bool was_inserted = pattern_of(rule, side).inserted != 0;
    trace_result_node(session, side, was_inserted ? Result::inserted : Result::stood, node_of(window, side));
  }
  return Status::ok;
}

// wanted: the window may leave the list: post-edit ends there
[[nodiscard]] Outcome move_left(Session& session, Window& window, const RuleCandidate& candidate) {
  if (const Status status = rule_actions_apply(session, window, candidate); status != Status::ok) return ended(status);
  if (window.lnode == nullptr) return ended(Status::ok);
  if (const Status status = result_settle(session, window, *candidate.rule); status != Status::ok) return ended(status);
  window = {window.lnode->left, window.lnode};
  return window.lnode == nullptr ? done() : done_if_ok(window_marker_push(session, *window.lnode));
}

[[nodiscard]] Outcome move_right(Session& session, Window& window, const RuleCandidate& candidate) {
  if (const Status status = rule_actions_apply(session, window, candidate); status != Status::ok) return ended(status);
  if (window.rnode == nullptr) return ended(Status::ok);
  if (const Status status = result_settle(session, window, *candidate.rule); status != Status::ok) return ended(status);
  out_flush(session);
  // A node that came in on the left is the left place from now on, and not the right node of the pair.
  if (candidate.rule->lnode->inserted != 0) {
    if (const Status status = left_step(session, window); status != Status::ok) return ended(status);
  }
  window = {window.rnode, window.rnode->right};
  // wanted: a fresh node gets no marker.
  const bool wants_marker = window.rnode != nullptr && !is_fresh(*window.rnode);
  return wants_marker ? done_if_ok(window_marker_push(session, *window.rnode)) : done();
}

// An unchanged word keeps the window where it is, and the next list of rules is asked for the same pair.
[[nodiscard]] Outcome move_insertion(Session& session, Window& window, const RuleCandidate& candidate) {
  if (const Status status = rule_actions_apply(session, window, candidate); status != Status::ok) return ended(status);
  if (const Status status = result_settle(session, window, *candidate.rule); status != Status::ok) return ended(status);
  if (session.state.trace_level > 1) out_flush(session);
  const bool is_new_or_changed = candidate.rule->lnode->inserted != 0 || is_word_changed(window.lnode);
  return is_new_or_changed && window.lnode->left != nullptr ? done_if_ok(left_step(session, window)) : done();
}

// Copies one side's node (CL, CR); the copy stands right of its source.
[[nodiscard]] Outcome copy_apply(Session& session, Side side, Window& window, const RuleCandidate& candidate) {
  if (const Status status = rule_actions_apply(session, window, candidate); status != Status::ok) return ended(status);
  Node* source = node_of(window, side);
  const bool has_both = window.lnode != nullptr && source != nullptr;
  if (!has_both) return ended(rule_base_failure(session, "copied at an empty place"));
  if (is_fresh(*source)) return ended(rule_base_failure(session, "copied a node that no rule has matched"));
  Node* copy = nullptr;
  if (const Status status = node_copy(session, copy, *source, nullptr, 1); copy == nullptr) return ended(status);
  // The copy is shown where it will stand.
  trace_result_node(session, Side::left, Result::stood, window.lnode);
  if (side == Side::left) trace_copied_node(session, copy);
  trace_result_node(session, Side::right, Result::stood, window.rnode);
  if (side == Side::right) trace_copied_node(session, copy);
  node_insert_after(session, *source, *copy);
  if (const Status status = window_marker_push(session, *copy); status != Status::ok) return ended(status);
  // wanted: the left node decides, though the right one may have been copied.
  if (is_word_changed(window.lnode) && window.lnode->left != nullptr) return done_if_ok(left_step(session, window));
  if (side == Side::left) window.rnode = copy;
  return done();
}

// ---- Merging the two nodes of the window into one (DL, DR). One of them survives in the merge node, the other drops
// out.

[[nodiscard]] Status merge_apply(Session& session, Window& window, RuleCandidate& candidate) {
  if (window.lnode == nullptr || window.rnode == nullptr)
    return rule_base_failure(session, "merged with an empty place");
  const Rule& rule = *candidate.rule;
  // Matching has seen to it that the node which drops out is neither a boundary nor the scope's entry.
  const Side side = rule.type == rule_type::merge_left ? Side::right : Side::left;  // of the survivor
  Node& survivor = *node_of(window, side);
  Node& dropped = *node_of(window, other(side));
  Node* merged = nullptr;
  if (const Status status = node_copy(session, merged, survivor, nullptr, 0); status != Status::ok) return status;
  Node*& entry = current_scope(session).entry;
  if (entry == &survivor) entry = merged;
  // For the graph it is the survivor.
  merged->relations = survivor.relations;
  merged->name = survivor.name;
  if (const Status status = match_record_push(session, *merged, kStateStep, &candidate); status != Status::ok)
    return status;
  // The survivor's actions, on the merge node in the survivor's place.
  if (pattern_of(rule, side).actions != nullptr) {
    Window acted = window;
    node_of(acted, side) = merged;
    if (const Status status = node_actions_apply(session, side, rule, acted); status != Status::ok) return status;
    // wanted: whether the actions changed the word or not.
    merged->matches->state = kStateChanged;
  }
  // The merge node takes the place of both. The survivor's own links stay as they were until undo needs it again.
  merged->merged_with = &dropped;
  node_take_out(session, survivor);
  if (side == Side::right) {
    node_insert_after(session, dropped, *merged);
  } else {
    node_insert_before(session, dropped, *merged);
  }
  node_take_out(session, dropped);
  dropped.left = dropped.right = nullptr;
  // wanted: DL always takes the step to the left, DR only after actions.
  const bool steps_left = side == Side::right || is_word_changed(merged);
  window = steps_left ? Window{merged->left, merged} : Window{merged, merged->right};
  Node* arrived = steps_left ? window.lnode : window.rnode;
  return arrived == nullptr ? Status::ok : window_marker_push(session, *arrived);
}

// ---- Exchanging the two nodes of the window (X).

[[nodiscard]] Status exchange_apply(Session& session, Window& window, RuleCandidate& candidate) {
  const Rule& rule = *candidate.rule;
  if (rule.type != rule_type::exchange) return Status::no_effect;
  if (window.lnode == nullptr || window.rnode == nullptr) return rule_base_failure(session, "exchanged an empty place");
  Node& from_left = *window.lnode;
  Node& from_right = *window.rnode;
  // Boundaries keep their places.
  const bool is_at_an_end = from_left.left == nullptr || (is_boundary(from_right) && from_right.right == nullptr);
  if (is_at_an_end) return Status::ok;
  // A second pair of records, on top of the one that matching has pushed.
  for (Node* node : {&from_left, &from_right}) {
    const Status status = match_record_push(session, *node, kStateStep, &candidate);
    if (status != Status::ok) return status;
  }
  // wanted: the words themselves are changed, no copies of them; undo does not restore them.
  for (const Side side : {Side::left, Side::right}) {
    if (pattern_of(rule, side).actions == nullptr) continue;
    if (const Status status = node_actions_apply(session, side, rule, window); status != Status::ok) return status;
    node_of(window, side)->matches->state = kStateChanged;
  }
  // The window stands in front of the pair: its right place is the node that came from the right.
  node_take_out(session, from_left);
  node_insert_after(session, from_right, from_left);
  window = {from_right.left, &from_right};
  return window.lnode == nullptr ? Status::ok : window_marker_push(session, *window.lnode);
}

// ---- The whole.

// `window` and `candidate` are copies of the caller's: what an outcome does not write back is lost.
[[nodiscard]] Outcome rule_carry_out(Session& session, Window& window, RuleCandidate*& candidate,
                                     std::int32_t* home_scope) {
  switch (candidate->rule->type) {
    case rule_type::left:
    case rule_type::post_left: return move_left(session, window, *candidate);
    case rule_type::right:
    case rule_type::post_right: return move_right(session, window, *candidate);
    case rule_type::insertion:
    case rule_type::insertion_a:
    case rule_type::post_insertion: return move_insertion(session, window, *candidate);
    case rule_type::copy_left: return copy_apply(session, Side::left, window, *candidate);
    case rule_type::copy_right: return copy_apply(session, Side::right, window, *candidate);
    case rule_type::exchange: return done_if_ok(exchange_apply(session, window, *candidate));
    case rule_type::merge_left:
    case rule_type::merge_right: return done_if_ok(merge_apply(session, window, *candidate));
    case rule_type::test: {
      // A refused word test is a step back.
      const Status status = backtrack(session, window, candidate, *home_scope);
      return is_failure(status) ? ended(status) : done(status);
    }
    case rule_type::test_left:
    case rule_type::test_right: return forced_backtrack(session, window, candidate, *home_scope);
    // The types without a step: what they leave behind are the records of their match.
    default: return ended(Status::no_effect);
  }
}

}  // namespace

Status window_marker_push(Session& session, Node& node) {
  return match_record_push(session, node, kStateStep, nullptr);
}

Status apply_rule(Session& session, Window& window, RuleCandidate*& candidate, std::int32_t* home_scope) {
  trace_rule_applied(session, *candidate);
  trace_rule_end(session);
  if (session.state.trace_level > 1) out_flush(session);
  const std::uint8_t type = candidate->rule->type;
  // An undoing inside can end the application at once; the caller's places must not outlive their nodes.
  const PlaceWatch watch(session, window.lnode, window.rnode);
  Window moved = window;
  RuleCandidate* rest = candidate;
  const Outcome outcome = rule_carry_out(session, moved, rest, home_scope);
  const bool is_told = session.observer != nullptr && !is_word_test_type(type) && !is_failure(outcome.status);
  if (is_told) session.observer->applied(session, *rest, outcome.writes_back ? moved : window);
  if (!outcome.writes_back) return outcome.status;
  // wanted: the right place follows from the left one, and stays as it was without one.
  window.lnode = moved.lnode;
  if (moved.lnode != nullptr) window.rnode = moved.lnode->right;
  if (!is_word_test_type(type)) trace_list(session, window, false);
  candidate = rest;
  return outcome.status;
}

}  // namespace lexon
