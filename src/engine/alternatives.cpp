// Backtracking, step 8: the next word of the node that the rule brought in, tried in its place by the same rule. For a
// scope reference it is the word of the scope's entry node, as long as a hold fixes it from outside. When the words are
// used up the node leaves the list, and the next rule is due. Step 9: the next rule, when no node has words to change.

#include "data/nodes.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "data/words.hpp"
#include "engine/backtrack.hpp"
#include "engine/trace.hpp"
#include "engine/undo.hpp"

namespace lexon {

namespace {

// The node whose words are tried for `node`.
[[nodiscard]] Node* word_node(Node& node) {
  return is_scope_reference(node) ? scope_unbuilt_target(node.scope) : &node;
}

// Item 3 of both sides: the word in force goes; all words go if a forced backtracking aims elsewhere.
void word_change(Node& target, Side side, int number, bool may_go_on) {
  if (target.candidates == nullptr) return;
  if (may_go_on) {
    trace_next_entry(side, number);
    entry_drop_head(target.candidates);
  } else {
    trace_clear_entries(side, number);
    entry_list_free(target.candidates);
  }
}

// What the entry node of a scope reference at the other place still offers.
enum class Held : std::uint8_t { none, has_words, used_up, failed };

// Its next word, if a hold has fixed the last one. With `of`, only a hold of this rule. Used-up words are reloaded.
[[nodiscard]] Held held_word_change(const Node& reference, const Rule* of) {
  Node* entry = scope_unbuilt_target(reference.scope);
  if (!hold_take(entry, of)) return Held::none;
  entry_drop_head(entry->candidates);
  if (entry->candidates != nullptr) return Held::has_words;
  return node_words_reload(*entry) == Status::ok ? Held::used_up : Held::failed;
}

// What is tried in another way, as it stood before anything was changed.
struct Retry {
  const Rule& rule;
  Node* mid_start;  // the node from which the rule's MID was counted; null without MID
};

[[nodiscard]] Node* staying_place(const RuleCandidate* candidate, Side inserted) {
  return candidate == nullptr ? nullptr : noted_place(*candidate, other(inserted));
}

// The window of a rule with MID is given by the candidate as it now stands, on the side of the node that stays; by
// the rule that is taken back if the next one, still untried, has noted no place.
[[nodiscard]] Status mid_window_set(Undo& undo, const Retry& retry, Side inserted) {
  const Side staying_side = other(inserted);
  Node* noted = staying_place(undo.candidate, inserted);
  Node* staying = noted != nullptr ? noted : retry.mid_start;
  const bool has_place = staying != nullptr && stands_in_list_of(node_of(undo.window, staying_side), staying);
  if (!has_place) return rule_base_failure("lost the place of a rule with MID");
  undo.window = staying_side == Side::left ? Window{staying, staying->right} : Window{staying->left, staying};
  return Status::ok;
}

// Item 7 of both sides: the node leaves the list.
[[nodiscard]] Stage inserted_take_out(Undo& undo, const Retry& retry, Side inserted) {
  if (const Status status = inserted_undo(retry.rule, undo.window); status != Status::ok) return leave(undo, status);
  if (retry.rule.mid != nullptr) {
    if (const Status status = mid_window_set(undo, retry, inserted); status != Status::ok) return leave(undo, status);
  }
  undo.caller = undo.window;
  return Stage::end;
}

// ---- The rnode's side.

// Item 5. `end`: the left node's scope has another word for the same rule. `alternatives`: go on.
[[nodiscard]] Stage right_words_used_up(Undo& undo) {
  trace_no_entry(Side::right);
  if (const Node& lnode = *undo.window.lnode; is_unbuilt_reference(lnode)) {
    const Held held = held_word_change(lnode, nullptr);
    if (held == Held::has_words) return Stage::end;
    if (held == Held::failed) return leave(undo, Status::memory);
  }
  if (state.forced_node == nullptr) {
    to_next_rule(undo, 12);
  } else {
    give_up_rules(undo, 1);
  }
  return Stage::alternatives;
}

// Items 3 to 5.
[[nodiscard]] Stage right_word_change(Undo& undo, Node& target) {
  const Node* forced = state.forced_node;
  word_change(target, Side::right, 3, forced == nullptr || forced == undo.window.rnode || forced == &target);
  if (forced == &target) {
    state.forced_node = nullptr;
    trace_forced_ends_at_right_entry();
  }
  return target.candidates == nullptr ? right_words_used_up(undo) : Stage::alternatives;
}

[[nodiscard]] Stage right_side(Undo& undo, const Retry& retry) {
  Node& rnode = *undo.window.rnode;
  const bool is_reference = is_scope_reference(rnode);
  if (!is_reference && retry.rule.rnode->inserted != 0) mark(rnode);
  Node* target = word_node(rnode);
  if (is_reference && !hold_take(target, &retry.rule)) {
    to_next_rule(undo, 11);
  } else if (const Stage stage = right_word_change(undo, *target); stage != Stage::alternatives) {
    return stage;
  }
  if (!is_reference && target->candidates != nullptr) return Stage::end;
  return inserted_take_out(undo, retry, Side::right);
}

// ---- The lnode's side.

// 5.1: the entry node of the right node's scope, which was not asked so far.
[[nodiscard]] Stage waiting_reference_ask(Undo& undo, const Rule& rule) {
  const Node& rnode = *undo.window.rnode;
  if (!is_fresh(rnode) || !is_unbuilt_reference(rnode)) return Stage::alternatives;
  switch (held_word_change(rnode, &rule)) {
    case Held::has_words: return Stage::end;
    case Held::failed: return leave(undo, Status::memory);
    case Held::used_up: to_next_rule(undo, 23); break;
    case Held::none: to_next_rule(undo, 24); break;
  }
  return Stage::alternatives;
}

// Item 5.
[[nodiscard]] Stage left_words_used_up(Undo& undo, const Rule& rule) {
  trace_no_entry(Side::left);
  if (const Stage stage = waiting_reference_ask(undo, rule); stage != Stage::alternatives) return stage;
  const Node& rnode = *undo.window.rnode;
  if (state.forced_node == nullptr) {
    const bool word_waits = is_held(rnode) || (is_fresh(rnode) && !is_boundary(rnode));
    if (word_waits) {
      undo.word_is_pending = true;
    } else {
      to_next_rule(undo, 22);
    }
  } else if (state.forced_node != &rnode || !is_untouched(rnode)) {
    give_up_rules(undo, 2);
  }
  return Stage::alternatives;
}

// Items 3 to 5.
[[nodiscard]] Stage left_word_change(Undo& undo, const Rule& rule, Node& target) {
  const Node* forced = state.forced_node;
  // wanted: unlike on the right side, a forced reference is not its target.
  word_change(target, Side::left, 2, forced == nullptr || forced == &target);
  if (forced == &target) {
    state.forced_node = nullptr;
    trace_forced_ends();
  }
  return target.candidates == nullptr ? left_words_used_up(undo, rule) : Stage::alternatives;
}

[[nodiscard]] Stage left_side(Undo& undo, const Retry& retry) {
  Node& lnode = *undo.window.lnode;
  const bool is_reference = is_scope_reference(lnode);
  if (!is_reference) mark(lnode);
  Node* target = word_node(lnode);
  // wanted: unlike on the right side, the hold of any rule will do.
  if (is_reference && !hold_take(target)) {
    to_next_rule(undo, 21);
  } else if (const Stage stage = left_word_change(undo, retry.rule, *target); stage != Stage::alternatives) {
    return stage;
  }
  if (!is_reference && target->candidates != nullptr) return Stage::end;
  return inserted_take_out(undo, retry, Side::left);
}

}  // namespace

Stage alternatives(Undo& undo) {
  const Window& window = undo.window;
  if (undo.candidate == nullptr) return leave(undo, rule_base_failure("tried a node again without its rule"));
  if (window.lnode == nullptr || window.rnode == nullptr)
    return leave(undo, rule_base_failure("tried a node again beside an empty place"));
  const Rule& rule = *undo.candidate->rule;
  const bool right_word_is_due = has_brace_patterns(rule) && is_fresh(*window.rnode);
  if (rule.rnode->inserted != 0 || right_word_is_due) {
    return right_side(undo, {rule, staying_place(undo.candidate, Side::right)});
  }
  if (rule.lnode->inserted == 0) return Stage::next_rule;
  return left_side(undo, {rule, staying_place(undo.candidate, Side::left)});
}

Stage next_rule(Undo& undo) {
  if (state.forced_node == nullptr) {
    to_next_rule(undo, 31);
  } else {
    give_up_rules(undo, 3);
  }
  return Stage::end;
}

}  // namespace lexon
