// Backtracking, steps 7.10 and 7.11: the same rule on the same nodes with the next word that the co-occurrence step
// chose. What the actions of the application have done stays.

#include <utility>

#include "data/state.hpp"
#include "data/words.hpp"
#include "dict/cooccurrence.hpp"
#include "engine/apply.hpp"
#include "engine/trace.hpp"
#include "engine/undo.hpp"
#include "rules/matrix.hpp"

namespace lexon {

namespace {

// Did the rule bring in this side's node by a choice that has a successor?
[[nodiscard]] bool has_next_choice(const Rule& rule, Side side, const Node& node) {
  if (pattern_of(rule, side).inserted == 0 || is_fresh(node)) return false;
  const WordEntry* choices = node.matches->cooccurrence;
  return choices != nullptr && choices->next != nullptr;
}

void forced_target_reach(Side side, const Node& node) {
  if (state.forced_node != &node) return;
  state.forced_node = nullptr;
  if (side == Side::left) {
    trace_forced_ends_at_choice();
  } else {
    trace_forced_ends();
  }
}

// The other record of the application shares the choice, until it has been taken off once. Of another record nothing is
// known, and the choice stays in the pool.
void choice_release(WordEntry* choice, const RuleCandidate* candidate, MatchRecord* twin) {
  if (twin == nullptr || twin->candidate != candidate) return;
  if (twin->cooccurrence != nullptr && twin->cooccurrence != choice) return;
  twin->cooccurrence = nullptr;
  entry_list_free(choice);
}

// Takes the choice in force off the node's word and off the records; `rest` is what comes behind it.
[[nodiscard]] Status choice_take_off(const Undo& undo, Side side, Node& node, WordEntry*& rest) {
  const Rule& rule = *undo.candidate->rule;
  WordEntry& choice = *node.matches->cooccurrence;
  Node* left = side == Side::left ? &node : nullptr;
  Node* right = side == Side::left ? nullptr : &node;
  if (const Status status = role_mark_remove(rule, left, right, choice); status != Status::ok) return status;
  rest = std::exchange(choice.next, nullptr);
  node.matches->cooccurrence = nullptr;
  choice_release(&choice, node.matches->candidate, node_of(undo.window, other(side))->matches);
  return Status::ok;
}

// The rule once more, with the head of `rest`.
[[nodiscard]] Stage choice_apply(Undo& undo, MatchRecord& record, WordEntry* rest) {
  Window& window = undo.window;
  if (rest == nullptr) return leave(undo, rule_base_failure("lost its co-occurrence choices"));
  record.cooccurrence = rest;
  const Rule& rule = *undo.candidate->rule;
  Status status = role_mark_add(rule, window.lnode, window.rnode, *rest);
  if (status == Status::ok) status = apply_rule(window, undo.candidate, &undo.home_scope);
  if (status != Status::ok) return leave(undo, status);
  undo.candidate = rule_candidates(window.lnode, window.rnode);
  undo.caller = window;
  return Stage::end;
}

}  // namespace

Stage next_choice(Undo& undo) {
  const Rule& rule = *undo.candidate->rule;
  for (const Side side : {Side::left, Side::right}) {
    Node& node = *node_of(undo.window, side);
    if (!has_next_choice(rule, side, node)) continue;
    forced_target_reach(side, node);
    WordEntry* rest = nullptr;
    if (const Status status = choice_take_off(undo, side, node, rest); status != Status::ok) return leave(undo, status);
    const int score =
        cooccurrence_check(undo.window.lnode->candidates, undo.window.rnode->candidates, rule, rest, side_letter(side));
    if (score != 0) return choice_apply(undo, *node.matches, rest);
    if (side == Side::right) entry_list_free(rest);
  }
  return Stage::pop;
}

}  // namespace lexon
