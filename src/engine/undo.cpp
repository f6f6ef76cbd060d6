// What the steps of backtracking share: records, holds, and the nodes that scopes start from.

#include "engine/undo.hpp"

#include "data/nodes.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "engine/apply.hpp"
#include "engine/backtrack.hpp"

namespace lexon {

Status record_pop(Node* node) {
  if (node == nullptr || is_fresh(*node)) return rule_base_failure("undid more steps than it has made");
  match_record_pop(*node);
  return Status::ok;
}

bool stands_in_list_of(Node* member, const Node* node) {
  if (member == nullptr || node == nullptr) return false;
  for (const Node* at = member; at != nullptr && must_leave() == Status::ok; at = at->left) {
    if (at == node) return true;
    if (at == at->left) return false;
  }
  for (const Node* at = member->right; at != nullptr && must_leave() == Status::ok; at = at->right) {
    if (at == node) return true;
  }
  return false;
}

Status to_noted_places(Window& window, const RuleCandidate& candidate) {
  Node* member = window.lnode != nullptr ? window.lnode : window.rnode;
  const bool has_both = stands_in_list_of(member, candidate.lnode) && stands_in_list_of(member, candidate.rnode);
  if (!has_both) return rule_base_failure("lost the place of a rule with MID");
  window = {candidate.lnode, candidate.rnode};
  return Status::ok;
}

void node_unlink_release(Node& node) {
  const bool is_known_to_others = node.name != nullptr || kind_bits(node) == kKindBoundary || is_scope_entry(node);
  if (is_known_to_others) {
    node_take_out(node);
    node_empty(node);
  } else {
    Node* released = &node;
    node_unlink_free(released);
  }
}

bool is_unbuilt_reference(const Node& node) {
  return is_scope_reference(node) && scope_is_built(node.scope) == 0;
}

bool hold_take(Node* node, const Rule* of) {
  if (node == nullptr || !is_held(*node)) return false;
  const RuleCandidate* holder = node->matches->candidate;
  if (of != nullptr && (holder == nullptr || holder->rule != of)) return false;
  match_record_pop(*node);
  node->matches = nullptr;
  return true;
}

bool hold_release(Node& reference) {
  const bool was_used = !is_fresh(reference) && reference.matches->candidate != nullptr;
  return was_used && hold_take(scope_final_node(reference.scope));
}

bool may_re_enter_scope(const Node* node, const NodePattern& pattern, const Rule& rule) {
  if (node == nullptr || !is_scope_reference(*node)) return false;
  const bool was_brought_in = is_fresh(*node) && pattern.inserted != 0;
  const bool is_entry = current_scope().entry == node;
  return was_brought_in || (has_brace_patterns(rule) && is_entry && no_scope_rule_in_stack(node->matches));
}

void scope_entries_hand_over(const Node& node, Node* heir) {
  for (std::int32_t row = 0; row < sentence.semlst_count; ++row) {
    Node*& entry = sentence.semlst[static_cast<std::size_t>(row)].entry;
    if (entry == &node) entry = heir;
  }
}

bool is_scope_entry(const Node& node) {
  for (std::int32_t row = 0; row < sentence.semlst_count; ++row) {
    if (sentence.semlst[static_cast<std::size_t>(row)].entry == &node) return true;
  }
  return false;
}

}  // namespace lexon
