// Merging the two nodes of the window into one (DL, DR). One of them survives in the merge node, the other drops out.

#include "data/nodes.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "engine/application.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

// A merge under way: the side of the survivor, and the three nodes.
struct Merge {
  Side side;
  Node& survivor;
  Node& dropped;
  Node* merged;
};

[[nodiscard]] Status merge_node_make(Merge& merge, RuleCandidate& candidate) {
  if (const Status status = node_copy(merge.merged, merge.survivor, nullptr, 0); status != Status::ok) return status;
  Node*& entry = current_scope().entry;
  if (entry == &merge.survivor) entry = merge.merged;
  merge.merged->relations = merge.survivor.relations;
  merge.merged->name = merge.survivor.name;
  return match_record_push(*merge.merged, kStateStep, &candidate);
}

// The survivor's actions, on the merge node in the survivor's place.
[[nodiscard]] Status merge_actions_apply(const Merge& merge, const Rule& rule, const Window& window) {
  if (pattern_of(rule, merge.side).actions == nullptr) return Status::ok;
  Window acted = window;
  node_of(acted, merge.side) = merge.merged;
  if (const Status status = node_actions_apply(merge.side, rule, acted); status != Status::ok) return status;
  // wanted: whether the actions changed the word or not.
  merge.merged->matches->state = kStateChanged;
  return Status::ok;
}

// The merge node takes the place of both. The survivor's own links stay as they were until undo needs it again.
void merge_node_link(const Merge& merge) {
  merge.merged->merged_with = &merge.dropped;
  node_take_out(merge.survivor);
  if (merge.side == Side::right) {
    node_insert_after(merge.dropped, *merge.merged);
  } else {
    node_insert_before(merge.dropped, *merge.merged);
  }
  node_take_out(merge.dropped);
  merge.dropped.left = merge.dropped.right = nullptr;
}

// The window goes on from the merge node.
[[nodiscard]] Status merge_window_set(const Merge& merge, Window& window) {
  Node& merged = *merge.merged;
  // wanted: DL always takes the step to the left, DR only after actions.
  const bool steps_left = merge.side == Side::right || is_word_changed(&merged);
  window = steps_left ? Window{merged.left, &merged} : Window{&merged, merged.right};
  Node* arrived = steps_left ? window.lnode : window.rnode;
  return arrived == nullptr ? Status::ok : window_marker_push(*arrived);
}

}  // namespace

Status merge_apply(Window& window, RuleCandidate& candidate) {
  if (window.lnode == nullptr || window.rnode == nullptr) return rule_base_failure("merged with an empty place");
  const Rule& rule = *candidate.rule;
  const Side side = rule.type == rule_type::merge_left ? Side::right : Side::left;
  Merge merge{side, *node_of(window, side), *node_of(window, other(side)), nullptr};
  if (const Status status = merge_node_make(merge, candidate); status != Status::ok) return status;
  if (const Status status = merge_actions_apply(merge, rule, window); status != Status::ok) return status;
  merge_node_link(merge);
  return merge_window_set(merge, window);
}

}  // namespace lexon
