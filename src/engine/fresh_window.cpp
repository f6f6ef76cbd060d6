// Backtracking, step 6: the window is fresh. Nothing has been done here but what rules have tried on the words of the
// right node, so its next word is due, and without one the next rule.

#include "data/nodes.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "data/words.hpp"
#include "engine/trace.hpp"
#include "engine/undo.hpp"

namespace lexon {

namespace {

// 6.1: an untouched scope reference gives up its word in force, but is never left without words.
[[nodiscard]] Status reference_word_drop(Node& rnode) {
  entry_drop_head(rnode.candidates);
  return rnode.candidates == nullptr ? node_words_reload(rnode) : Status::ok;
}

// 6.2: at the beginning of a list, with the word fixed from outside by a hold.
[[nodiscard]] bool is_held_from_outside(const Window& window, const Node* final_node) {
  if (!is_boundary(*window.lnode) || !is_fresh(*window.lnode)) return false;
  return is_held(*window.rnode) || (final_node != nullptr && is_held(*final_node));
}

[[nodiscard]] Stage nothing_left_here(Undo& undo) {
  if (state.forced_node != nullptr) {
    undo.candidate = nullptr;
    trace_ignore_rules();
  }
  return leave(undo, Status::nothing_left);
}

// 6.4: the word in force of `target` is given up.
void next_word_take(Node& target, const Node& rnode) {
  entry_drop_head(target.candidates);
  trace_next_entry_flushed(Side::right, 2);
  if (state.forced_node != &rnode) return;
  state.forced_node = nullptr;
  trace_forced_ends();
}

// 6.6: the words are used up. The next rule sees them all again, from the second on: being called again, the next call
// drops the head.
[[nodiscard]] Stage words_used_up(Undo& undo, Node& target) {
  trace_no_entry(Side::right);
  if (const Status status = node_words_reload(target); status != Status::ok) return leave(undo, status);
  const std::uint8_t type = undo.candidate->rule->type;
  if (state.forced_node != nullptr) {
    trace_ignore_rules();
    undo.candidate = nullptr;
  } else if (type == rule_type::test_right || type == rule_type::test) {
    return leave(undo, Status::nothing_left);
  } else {
    to_next_rule(undo, 32);
  }
  return leave(undo, undo.candidate != nullptr ? Status::no_effect : Status::nothing_left);
}

}  // namespace

Stage fresh_window(Undo& undo) {
  if (undo.window.rnode == nullptr) return leave(undo, rule_base_failure("searched on beyond the end of the list"));
  Node& rnode = *undo.window.rnode;
  Node* final_node = is_scope_reference(rnode) ? scope_final_node(rnode.scope) : nullptr;
  if (is_scope_reference(rnode) && is_fresh(rnode)) {
    if (const Status status = reference_word_drop(rnode); status != Status::ok) {
      // wanted: this one failure is told by the engine's status alone.
      state.engine_status = status;
      return Stage::leave;
    }
  }
  if (is_held_from_outside(undo.window, final_node)) return nothing_left_here(undo);
  if (undo.candidate == nullptr) return leave(undo, Status::nothing_left);
  Node& target = final_node != nullptr ? *final_node : rnode;
  next_word_take(target, rnode);
  const bool has_words = target.candidates != nullptr && rnode.candidates != nullptr;
  return has_words ? Stage::end : words_used_up(undo, target);
}

}  // namespace lexon
