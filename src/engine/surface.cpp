#include "engine/surface.hpp"

#include <cstring>

#include "data/chain.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/trace.hpp"

namespace lexon {

namespace {

// A missing text equals the empty one.
bool same_text(const char* text, const char* wanted) {
  return std::strcmp(text_or_empty(text), wanted) == 0;
}

// What a condition says of its text; every other operation holds for any word.
bool holds(const CondItem& condition, bool has_text) {
  if (condition.op == kOpHas) return has_text;
  return condition.op != kOpNot || !has_text;
}

// Null for an empty place and for a node without words.
const WordEntry* word_in_force(const Node* node) {
  return node == nullptr ? nullptr : node->candidates;
}

}  // namespace

bool test_surface_one(const Node* node, const WordEntry& word, const char* hw, const char* cw) {
  // Words of a class stand for the name of their class.
  const bool any_surface_fits = node != nullptr && kind_bits(*node) == kKindClassWord;
  if (hw != nullptr && !any_surface_fits && !same_text(word.hw, hw)) return false;
  return cw == nullptr || same_text(word.cw, cw);
}

bool test_surface(const Node* node, const WordEntry* word, const CondItem* hw_conds, const CondItem* cw_conds) {
  if (word == nullptr) return false;
  // wanted: on a node with words of a class a negated condition on the surface form fails
  for (const CondItem& condition : chain<&CondItem::next>(hw_conds)) {
    if (!holds(condition, test_surface_one(node, *word, condition.text, nullptr))) return false;
  }
  for (const CondItem& condition : chain<&CondItem::next>(cw_conds)) {
    if (!holds(condition, test_surface_one(node, *word, nullptr, condition.text))) return false;
  }
  return true;
}

bool attr_room_suffices(Side side, const Rule& rule, const Window& window) {
  const WordEntry* word = word_in_force(node_of(window, side));
  const WordEntry* other_word = word_in_force(node_of(window, other(side)));
  // Computed from the stored length, not measured, and the same for each word of the node.
  std::int64_t length = word == nullptr ? 0 : word->attr_len;
  for (const CondItem& action : chain<&CondItem::next>(pattern_of(rule, side).actions)) {
    if (action.op != kOpAdd) continue;
    // The text "@" stands for all attributes of the other node. A comma stands behind each addition.
    const bool takes_all = is_stepless_type(rule.type) && std::strcmp(action.text, "@") == 0;
    const bool has_attrs = other_word != nullptr && other_word->attrs != nullptr;
    length += takes_all && has_attrs ? std::int64_t{other_word->attr_len}
                                     : static_cast<std::int64_t>(std::strlen(action.text));
    ++length;
  }
  // The types without a step would give both patterns' additions to one node.
  const bool takes_both_actions = rule.type == rule_type::plus || rule.type == rule_type::minus;
  const CondItem* others = takes_both_actions ? pattern_of(rule, other(side)).actions : nullptr;
  for (const CondItem& action : chain<&CondItem::next>(others)) {
    if (action.op == kOpAdd) length += static_cast<std::int64_t>(std::strlen(action.text)) + 1;
  }
  return length < kAttrLimit;
}

bool attr_room_ok(Session& session, Side side, const Rule& rule, const Window& window) {
  if (attr_room_suffices(side, rule, window)) return true;
  trace_attrs_too_long(session, rule);
  return false;
}

}  // namespace lexon
