// Backtracking, step 7: the newest application of the window is undone. First the window moves back to where the rule
// worked, then nodes that the rule made leave the list, then the changed words and the records go.

#include "data/nodes.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "data/words.hpp"
#include "engine/backtrack.hpp"
#include "engine/trace.hpp"
#include "engine/undo.hpp"

namespace lexon {

namespace {

[[nodiscard]] RuleCandidate* newest_candidate(const Node* node) {
  return node == nullptr || is_fresh(*node) ? nullptr : node->matches->candidate;
}

// 7.1
[[nodiscard]] RuleCandidate* application_find(const Window& window) {
  RuleCandidate* found = newest_candidate(window.rnode);
  return found != nullptr ? found : newest_candidate(window.lnode);
}

// 7.3: one place back to the left, past the marker of the step.
[[nodiscard]] Status right_step_undo(Window& window) {
  if (window.rnode != nullptr && !is_fresh(*window.rnode)) match_record_pop(*window.rnode);
  if (window.lnode == nullptr) return rule_base_failure("undid a step to the right at an empty place");
  window = {window.lnode->left, window.lnode};
  return Status::ok;
}

// 7.6: a marker says that the window has moved here from where the rule worked.
[[nodiscard]] Status window_move_undo(Window& window, const RuleCandidate& candidate) {
  Node* lnode = window.lnode;
  if (lnode == nullptr) return rule_base_failure("undid a rule at an empty place");
  if (is_fresh(*lnode) || lnode->matches->candidate != nullptr) return Status::ok;
  match_record_pop(*lnode);
  if (candidate.rule->mid != nullptr) return to_noted_places(window, candidate);
  if (window.rnode == nullptr) return rule_base_failure("undid a step to the left at an empty place");
  window = {window.rnode, window.rnode->right};
  return Status::ok;
}

// 7.7: the copy stands to the right of the node that was copied.
[[nodiscard]] Status copy_undo(Window& window, std::uint8_t type) {
  Node* copied = type == rule_type::copy_left ? window.lnode : window.rnode;
  Node* copy = copied == nullptr ? nullptr : copied->right;
  if (copy == nullptr || copy->merged_with != nullptr) return rule_base_failure("undid a copy that is not there");
  if (type == rule_type::copy_left) window.rnode = copy->right;
  node_unlink_release(*copy);
  return Status::ok;
}

// 7.3, 7.6 and 7.7: the window and the list as they were when the rule was applied.
[[nodiscard]] Status place_restore(Undo& undo) {
  Window& window = undo.window;
  const std::uint8_t type = undo.candidate->rule->type;
  if (type == rule_type::right) {
    if (const Status status = right_step_undo(window); status != Status::ok) return status;
    undo.caller = window;
  }
  if (const Status status = window_move_undo(window, *undo.candidate); status != Status::ok) return status;
  if (type == rule_type::copy_left || type == rule_type::copy_right) {
    if (const Status status = copy_undo(window, type); status != Status::ok) return status;
  }
  const bool has_both = window.lnode != nullptr && window.rnode != nullptr;
  return has_both ? Status::ok : rule_base_failure("undid a rule at an empty place");
}

// The choices that the two records of the application share, or that one of them has kept. Null if there are none, or
// if the records are not a pair.
[[nodiscard]] WordEntry* choices_of(const Undo& undo) {
  const MatchRecord* left = undo.window.lnode->matches;
  const MatchRecord* right = undo.window.rnode->matches;
  if (left == nullptr || right == nullptr) return nullptr;
  if (left->candidate != undo.candidate || right->candidate != undo.candidate) return nullptr;
  if (left->cooccurrence == nullptr) return right->cooccurrence;
  const bool are_one = right->cooccurrence == nullptr || right->cooccurrence == left->cooccurrence;
  return are_one ? left->cooccurrence : nullptr;
}

// 7.12: the node's changed word and its record.
[[nodiscard]] Status node_undo(Node& node) {
  if (!is_fresh(node) && node.matches->state == kStateChanged) entry_drop_head(node.candidates);
  return record_pop(&node);
}

[[nodiscard]] bool is_fresh_and_built(const Node& node) {
  return is_scope_reference(node) && is_fresh(node) && scope_is_built(node.scope) != 0;
}

// 7.14: was a scope brought in or entered by the rule? If it stands finished, the search goes on inside it.
[[nodiscard]] Stage scope_test(Undo& undo, const Rule& rule) {
  const Window& window = undo.window;
  Node& lnode = *window.lnode;
  Node& rnode = *window.rnode;
  if (!may_re_enter_scope(&rnode, *rule.rnode, rule) && !may_re_enter_scope(&lnode, *rule.lnode, rule))
    return Stage::alternatives;
  if (is_scope_reference(lnode)) hold_release(lnode);
  if (is_scope_reference(rnode)) hold_release(rnode);
  if (!is_fresh_and_built(lnode) && !is_fresh_and_built(rnode)) return Stage::alternatives;
  undo.result = Status::nothing_left;
  return Stage::end;
}

// 7.8 to 7.15, for the types that are undone in place.
[[nodiscard]] Stage application_undo(Undo& undo) {
  Window& window = undo.window;
  const Rule& rule = *undo.candidate->rule;
  if (const Status status = place_restore(undo); status != Status::ok) return leave(undo, status);
  trace_backtrack_1(*undo.candidate, window);
  if (rule.mid != nullptr) {
    if (const Status status = to_noted_places(window, *undo.candidate); status != Status::ok)
      return leave(undo, status);
  }
  if (const Stage stage = next_choice(undo); stage != Stage::pop) return stage;
  WordEntry* choices = choices_of(undo);
  if (const Status status = node_undo(*window.lnode); status != Status::ok) return leave(undo, status);
  if (const Status status = node_undo(*window.rnode); status != Status::ok) return leave(undo, status);
  entry_list_free(choices);
  undo.caller = window;
  if (rule.type == rule_type::right && is_boundary(*window.rnode)) return Stage::next_rule;
  return scope_test(undo, rule);
}

// 7.2
[[nodiscard]] Stage merge_pop(Undo& undo) {
  const Status status = merge_undo(undo.window, undo.candidate);
  if (is_failure(status)) return leave(undo, status);
  undo.result = status;
  undo.caller = undo.window;
  return Stage::end;
}

// 7.4 and 7.5: `status` of what has set the window.
[[nodiscard]] Stage to_alternatives(Undo& undo, Status status) {
  if (is_failure(status)) return leave(undo, status);
  undo.result = status;
  undo.caller = undo.window;
  return Stage::alternatives;
}

}  // namespace

Stage pop(Undo& undo) {
  undo.candidate = undo.undone = application_find(undo.window);
  if (undo.candidate == nullptr) return leave(undo, rule_base_failure("undid a step that no rule has made"));
  const Rule& rule = *undo.candidate->rule;
  switch (rule.type) {
    case rule_type::merge_left:
    case rule_type::merge_right: return merge_pop(undo);
    case rule_type::exchange: return to_alternatives(undo, exchange_undo(undo.window, *undo.candidate));
    case rule_type::plus:
    case rule_type::minus:
    case rule_type::less:
    case rule_type::greater: return to_alternatives(undo, stepless_undo(undo.window, rule));
    case rule_type::right:
    case rule_type::insertion_a:
    case rule_type::insertion:
    case rule_type::left:
    case rule_type::copy_left:
    case rule_type::copy_right:
    case rule_type::test_left:
    case rule_type::test_right:
    case rule_type::test: return application_undo(undo);
    default: return leave(undo, Status::no_effect);
  }
}

}  // namespace lexon
