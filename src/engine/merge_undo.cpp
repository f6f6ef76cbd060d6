// Undoing what joined, exchanged or replaced the two nodes of the window.

#include "data/nodes.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "data/words.hpp"
#include "engine/trace.hpp"
#include "engine/undo.hpp"

namespace lexon {

namespace {

// Pops the records of both places. A merge to the left side that changed the survivor's word has left the window one
// place to the left of the merge node.
void merge_records_pop(Window& window, std::uint8_t type) {
  if (!is_fresh(*window.lnode)) match_record_pop(*window.lnode);
  if (is_fresh(*window.rnode)) return;
  const MatchRecord& record = *window.rnode->matches;
  const bool is_merge_nodes = record.candidate != nullptr && record.state != kStateStep;
  match_record_pop(*window.rnode);
  if (type == rule_type::merge_right && is_merge_nodes) window = {window.rnode, window.rnode->right};
}

// Puts the two merged nodes back in the place of the merge node, and releases it. They are the window.
[[nodiscard]] Window merge_node_dissolve(Node*& merged, std::uint8_t type) {
  Node* source = merged->source;
  const Window restored =
      type == rule_type::merge_left ? Window{merged->merged_with, source} : Window{source, merged->merged_with};
  node_insert_before(*merged, *restored.lnode);
  node_insert_before(*merged, *restored.rnode);
  node_take_out(*merged);
  entry_drop_head(merged->candidates);
  merged->candidates = nullptr;  // the rest is the source's
  scope_entries_hand_over(*merged, source);
  if (state.forced_node == merged) state.forced_node = source;
  node_free(merged);
  return restored;
}

// The two nodes by which a rule without a step is taken to have been replaced.
[[nodiscard]] Window nodes_before(const Node& copy, std::uint8_t type) {
  Node* origin = copy.origin;
  const bool is_first = type == rule_type::plus || type == rule_type::less;
  if (origin == nullptr || copy.merged_with != nullptr || is_scope_entry(copy)) return {nullptr, nullptr};
  return is_first ? Window{origin, origin->right} : Window{origin->left, origin};
}

// The copy's word and record. Its arcs stay: they hang on the origin's list as well.
[[nodiscard]] Status replacing_copy_clear(Node& copy, std::uint8_t type) {
  const bool drops_always = type == rule_type::plus || type == rule_type::minus;
  const bool is_changed = !is_fresh(copy) && copy.matches->state == kStateChanged;
  if (drops_always || is_changed) entry_drop_head(copy.candidates);
  if (const Status status = record_pop(&copy); status != Status::ok) return status;
  copy.matches = nullptr;
  if (!drops_always) copy.relations = nullptr;
  return Status::ok;
}

}  // namespace

Status merge_undo(Window& window, RuleCandidate*& candidate) {
  const std::uint8_t type = candidate->rule->type;
  trace_backtrack_pair(*candidate, window);
  if (window.lnode == nullptr || window.rnode == nullptr) return rule_base_failure("undid a merge at an empty place");
  merge_records_pop(window, type);
  Node* merged = type == rule_type::merge_right ? window.lnode : window.rnode;
  if (merged->source == nullptr || merged->merged_with == nullptr) return Status::no_effect;
  window = merge_node_dissolve(merged, type);
  candidate = candidate->next;
  return Status::ok;
}

Status exchange_undo(Window& window, const RuleCandidate& candidate) {
  trace_backtrack_pair(candidate, window);
  if (candidate.rule->type != rule_type::exchange) return Status::no_effect;
  if (window.lnode == nullptr || window.rnode == nullptr)
    return rule_base_failure("undid an exchange at an empty place");
  Node& first = *window.rnode;
  Node* second = first.right;
  const bool can_exchange = second != nullptr && !is_fresh(*second);
  if (!can_exchange) return rule_base_failure("undid an exchange whose nodes are not there");
  for (Node* node : {window.lnode, &first, second}) {
    if (const Status status = record_pop(node); status != Status::ok) return status;
  }
  node_take_out(*second);
  node_insert_before(first, *second);
  window = {second, &first};
  return Status::ok;
}

Status stepless_undo(Window& window, const Rule& rule) {
  if (window.lnode == nullptr || window.rnode == nullptr) return rule_base_failure("undid a rule at an empty place");
  if (const Status status = record_pop(window.lnode); status != Status::ok) return status;
  Node*& copy = window.rnode;
  const Window before = nodes_before(*copy, rule.type);
  // Both nodes must be out of the list: linked into it a second time, they would close it to a circle.
  const bool can_come_back = before.lnode != nullptr && before.rnode != nullptr &&
                             !stands_in_list_of(copy, before.lnode) && !stands_in_list_of(copy, before.rnode);
  if (!can_come_back) return rule_base_failure("undid a rule of a type that has no step");
  if (const Status status = replacing_copy_clear(*copy, rule.type); status != Status::ok) return status;
  node_insert_before(*copy, *before.lnode);
  node_insert_before(*copy, *before.rnode);
  node_unlink_free(copy);
  window = before;
  return Status::ok;
}

}  // namespace lexon
