// Exchanging the two nodes of the window (X).

#include "data/nodes.hpp"
#include "data/state.hpp"
#include "engine/application.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

// wanted: the word itself is changed, no copy of it; undo does not restore it.
[[nodiscard]] Status exchange_actions_apply(Side side, const Rule& rule, const Window& window) {
  if (pattern_of(rule, side).actions == nullptr) return Status::ok;
  const Status status = node_actions_apply(side, rule, window);
  if (status == Status::ok) node_of(window, side)->matches->state = kStateChanged;
  return status;
}

// A second pair of records, on top of the one that matching has pushed.
[[nodiscard]] Status exchange_records_push(const Window& window, RuleCandidate& candidate) {
  if (const Status status = match_record_push(*window.lnode, kStateStep, &candidate); status != Status::ok)
    return status;
  return match_record_push(*window.rnode, kStateStep, &candidate);
}

}  // namespace

Status exchange_apply(Window& window, RuleCandidate& candidate) {
  const Rule& rule = *candidate.rule;
  if (rule.type != rule_type::exchange) return Status::no_effect;
  if (window.lnode == nullptr || window.rnode == nullptr) return rule_base_failure("exchanged an empty place");
  Node& from_left = *window.lnode;
  Node& from_right = *window.rnode;
  const bool is_at_an_end = from_left.left == nullptr || (is_boundary(from_right) && from_right.right == nullptr);
  if (is_at_an_end) return Status::ok;
  if (const Status status = exchange_records_push(window, candidate); status != Status::ok) return status;
  for (const Side side : {Side::left, Side::right}) {
    if (const Status status = exchange_actions_apply(side, rule, window); status != Status::ok) return status;
  }
  node_take_out(from_left);
  node_insert_after(from_right, from_left);
  window = {from_right.left, &from_right};
  return window.lnode == nullptr ? Status::ok : window_marker_push(*window.lnode);
}

}  // namespace lexon
