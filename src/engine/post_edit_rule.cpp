// Shifts move the front or the back of one word into a new node; scope rules go down into the list of a scope.

#include "engine/post_edit_rule.hpp"

#include <algorithm>
#include <cstring>

#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/apply.hpp"
#include "engine/post_edit.hpp"
#include "engine/scope_entry.hpp"
#include "engine/side.hpp"
#include "engine/trace.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

// The surface form of a new node; null: the whole of the word it is cut from.
[[nodiscard]] const char* shifted_text(const NodePattern& pattern) {
  if (pattern.hw_action != nullptr) return pattern.hw_action;
  return pattern.hw_conds != nullptr ? pattern.hw_conds->text : nullptr;
}

// wanted: as long as the condition, whatever text an action gives to the new node.
[[nodiscard]] std::size_t shifted_length(const NodePattern& pattern) {
  return pattern.hw_conds != nullptr ? std::strlen(pattern.hw_conds->text) : 1;
}

// A node of its own for the shifted text, with a record, so that it does not count as fresh.
[[nodiscard]] Status shifted_node_make(Session& session, const WordEntry& word, const char* text, Node*& node) {
  node = temp_new<Node>(session);
  if (node == nullptr) return Status::memory;
  if (const Status status = entry_copy(session, word, node->candidates, text); status != Status::ok) return status;
  WordEntry& own = *node->candidates;
  temp_free_string(session, own.cw);
  own.cw = nullptr;
  own.cw_len = 0;
  return match_record_push(session, *node, kStateStep, nullptr);
}

// The word's text loses `cut` characters at its front or at its back.
void surface_cut(WordEntry& word, Side end, std::size_t cut) {
  const std::size_t length = std::strlen(word.hw);
  cut = std::min(cut, length);
  word.hw_len = std::max(word.hw_len - static_cast<std::int32_t>(cut), 0);
  if (end == Side::left) {
    std::memmove(word.hw, word.hw + cut, length - cut + 1);
  } else {
    word.hw[length - cut] = '\0';
  }
}

void shift_trace(Session& session, Side new_side, const Window& window) {
  for (const Side side : {Side::left, Side::right}) {
    if (side == new_side) {
      trace_shifted_node(session, side, node_of(window, side));
    } else {
      trace_result_node(session, side, false, node_of(window, side));
    }
  }
}

// P<< and P>>: `side` is the place of the new node; the text comes from the other place.
[[nodiscard]] Status shift(Session& session, Side side, Window& window, const RuleCandidate& candidate) {
  const NodePattern& pattern = pattern_of(*candidate.rule, side);
  Node* source = node_of(window, other(side));
  const bool has_text = source != nullptr && source->candidates != nullptr && source->candidates->hw != nullptr;
  if (!has_text) return rule_base_failure(session, "shifted text from a place without any");
  WordEntry& word = *source->candidates;
  Node* node = nullptr;
  if (const Status status = shifted_node_make(session, word, shifted_text(pattern), node); status != Status::ok)
    return status;
  surface_cut(word, side, shifted_length(pattern));
  if (word.hw_len == 0) {
    // wanted: no size of the word follows.
    if (const Status status = entry_attrs_prefix(session, word, "H#NIL,"); status != Status::ok) return status;
  }
  if (side == Side::left) {
    node_insert_before(*source, *node);
  } else {
    node_insert_after(*source, *node);
  }
  node_of(window, side) = node;
  if (const Status status = rule_actions_apply(session, window, candidate); status != Status::ok) return status;
  shift_trace(session, side, window);
  return Status::ok;
}

// Post-edit of the list of the scope in this row, one step further in.
[[nodiscard]] Status scope_post_edit(Session& session, int row, int scope) {
  trace_post_edit_entered(session, scope);
  if (!trace_indent_grow(session)) return session.state.abort = Status::memory;
  const std::int32_t outer = session.state.semlst_cur;
  session.state.semlst_cur = row;
  const Status status = post_edit(session, session.sentence.semlst[static_cast<std::size_t>(row)].entry);
  if (const Status leave = must_leave(session); leave != Status::ok) return leave;
  session.state.semlst_cur = outer;
  trace_indent_shrink(session);
  trace_post_edit_finished(session, scope);
  return status;
}

// PSL and PSR. Without a scope at this place the rule has no effect.
[[nodiscard]] Status scope_rule(Session& session, Side side, const Window& window, const RuleCandidate& candidate) {
  const Node* ref = node_of(window, side);
  if (ref == nullptr || !is_scope_reference(*ref)) return Status::ok;
  const int row = scope_row_find(session, ref->scope);
  if (row == 0) return Status::ok;
  if (const Status status = scope_post_edit(session, row, ref->scope); status != Status::ok) return status;
  return rule_actions_apply(session, window, candidate);
}

[[nodiscard]] Status rule_carry_out(Session& session, Window& window, const RuleCandidate& candidate) {
  switch (candidate.rule->type) {
    case rule_type::shift_left: return shift(session, Side::left, window, candidate);
    case rule_type::shift_right: return shift(session, Side::right, window, candidate);
    case rule_type::post_scope_left: return scope_rule(session, Side::left, window, candidate);
    case rule_type::post_scope_right: return scope_rule(session, Side::right, window, candidate);
    default: return Status::ok;
  }
}

}  // namespace

Status post_edit_rule(Session& session, Window& window, const RuleCandidate& candidate) {
  trace_rule_applied(session, candidate);
  trace_rule_end(session);
  Window changed = window;
  if (const Status status = rule_carry_out(session, changed, candidate); status != Status::ok) return status;
  window = changed;
  trace_list(session, window, false);
  return Status::ok;
}

}  // namespace lexon
