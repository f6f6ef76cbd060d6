// Shifts move the front or the back of one word into a new node; scope rules go down into the list of a scope.

#include "engine/post_edit_rule.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/apply.hpp"
#include "engine/observer.hpp"
#include "engine/post_edit.hpp"
#include "engine/scope_entry.hpp"
#include "engine/side.hpp"
#include "engine/trace.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

// P<< and P>>: `side` is the place of the new node; the text comes from the other place.
[[nodiscard]] Status shift(Session& session, Side side, Window& window, const RuleCandidate& candidate) {
  const NodePattern& pattern = pattern_of(*candidate.rule, side);
  // The first text of the pattern is what the match has found at that end of the word; null: none was asked for.
  const char* condition = pattern.hw_conds == nullptr ? nullptr : pattern.hw_conds->text;
  Node* source = node_of(window, other(side));
  const bool has_text = source != nullptr && source->candidates != nullptr && source->candidates->hw != nullptr;
  if (!has_text) return rule_base_failure(session, "shifted text from a place without any");
  WordEntry& word = *source->candidates;
  // The new node has a copy of the word with the action's text, or that of the condition, or all of the old one. It
  // has no concept word, and a record, so that it does not count as fresh.
  const char* text = pattern.hw_action != nullptr ? pattern.hw_action : condition;
  Node* node = temp_new<Node>(session);
  if (node == nullptr) return Status::memory;
  if (const Status status = entry_copy(session, word, node->candidates, text); status != Status::ok) return status;
  WordEntry& own = *node->candidates;
  temp_free_string(session, own.cw);
  own.cw = nullptr;
  own.cw_len = 0;
  if (const Status status = match_record_push(session, *node, kStateStep, nullptr); status != Status::ok) return status;
  // The old word loses its front or its back.
  // wanted: as much as the condition is long, whatever text an action gives to the new node.
  if (const Status status = text_make_own(session, word.hw); status != Status::ok) return status;
  const std::size_t length = std::strlen(word.hw);
  const std::size_t cut = std::min(condition != nullptr ? std::strlen(condition) : 1, length);
  word.hw_len = std::max(word.hw_len - static_cast<std::int32_t>(cut), 0);
  if (side == Side::left) {
    std::memmove(word.hw, word.hw + cut, length - cut + 1);
  } else {
    word.hw[length - cut] = '\0';
  }
  if (word.hw_len == 0) {
    // wanted: no size of the word follows.
    if (const Status status = entry_attrs_prefix(session, word, "H#NIL,"); status != Status::ok) return status;
  }
  if (side == Side::left) {
    node_insert_before(session, *source, *node);
  } else {
    node_insert_after(session, *source, *node);
  }
  // The next round looks for rules here: the window stands on the new node and its source.
  node_of(window, side) = node;
  if (const Status status = rule_actions_apply(session, window, candidate); status != Status::ok) return status;
  for (const Side place : {Side::left, Side::right}) {
    trace_result_node(session, place, place == side ? Result::shifted : Result::stood, node_of(window, place));
  }
  return Status::ok;
}

// PSL and PSR: post-edit of the scope's list, one step further in. Without a scope at this place the rule has no effect.
[[nodiscard]] Status scope_rule(Session& session, Side side, const Window& window, const RuleCandidate& candidate) {
  const Node* ref = node_of(window, side);
  if (ref == nullptr || !is_scope_reference(*ref)) return Status::ok;
  const int scope = ref->scope;
  const int row = scope_row_find(session, scope);
  if (row == 0) return Status::ok;
  trace_scope(session, ScopeStep::post_edit_entered, scope);
  if (!trace_indent_grow(session)) return session.state.abort = Status::memory;
  // A pass that must be left leaves the inner scope current: the sentence is over then.
  const std::int32_t outer = std::exchange(session.state.semlst_cur, row);
  const Status status = post_edit(session, current_scope(session).entry);
  if (const Status leave = must_leave(session); leave != Status::ok) return leave;
  session.state.semlst_cur = outer;
  trace_indent_shrink(session);
  trace_scope(session, ScopeStep::post_edit_finished, scope);
  return status == Status::ok ? rule_actions_apply(session, window, candidate) : status;
}

}  // namespace

Status post_edit_rule(Session& session, Window& window, const RuleCandidate& candidate) {
  trace_rule_applied(session, candidate);
  trace_rule_end(session);
  // On failure the caller's window stays as it was.
  Window changed = window;
  Status status = Status::ok;
  switch (candidate.rule->type) {
    case rule_type::shift_left: status = shift(session, Side::left, changed, candidate); break;
    case rule_type::shift_right: status = shift(session, Side::right, changed, candidate); break;
    case rule_type::post_scope_left: status = scope_rule(session, Side::left, changed, candidate); break;
    case rule_type::post_scope_right: status = scope_rule(session, Side::right, changed, candidate); break;
    default: break;
  }
  if (status != Status::ok) return status;
  window = changed;
  if (session.observer != nullptr) session.observer->applied(session, candidate, window);
  trace_list(session, window, false);
  return Status::ok;
}

}  // namespace lexon
