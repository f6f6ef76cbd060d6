// Generation rules as records. They come from the permanent pool, live for the run, and are read-only once sentences
// run.
#pragma once

#include <cstdint>

#include "data/side.hpp"

namespace lexon {

// One item of a rule: what `op` means depends on the list it stands in.
struct CondItem {
  std::uint8_t op;
  char* text;  // owned; never null in a finished rule
  CondItem* next;
};

// Conditions: `op` of an item of hw_conds, cw_conds and attr_conds.
inline constexpr std::uint8_t kOpNot = 0;  // "^": the node must not have this
inline constexpr std::uint8_t kOpHas = 1;  // no prefix
// Prefixes "-" and "+". On attribute conditions tested like kOpHas but not indexed; on others without effect.
// In actions: delete and add.
inline constexpr std::uint8_t kOpDelete = 2;
inline constexpr std::uint8_t kOpAdd = 3;
inline constexpr std::uint8_t kOpSetHw = 8;  // actions only
inline constexpr std::uint8_t kOpSetCw = 9;  // actions only

// One parenthesised group of PRE, MID or SUF.
struct ContextGroup {
  std::uint8_t star;  // 1: any number of neighbouring nodes
  CondItem* hw_conds;
  CondItem* cw_conds;
  CondItem* attr_conds;
  ContextGroup* next;
};

// The left or right node of a rule.
struct NodePattern {
  std::uint8_t inserted;  // 0: a brace pattern, of a node that is there; 1: a quote pattern, of one that is brought in
  CondItem* hw_conds;
  CondItem* cw_conds;
  char* hw_action;  // text of the last [..] action, or null; may share the item's string
  char* cw_action;  // the same for [[..]]
  CondItem* attr_conds;
  CondItem* actions;  // in order of the text, [..] and [[..]] included
  CondItem* relations;
  CondItem* roles;
};

struct Rule {
  std::uint8_t type;     // see the codes below
  std::uint8_t subtype;  // 0, but in a compiled file that says otherwise
  std::uint16_t column;  // of the rule's first character in its line, in bytes from 1
  std::uint32_t line;    // of the rule text, from 1; 0: it came from a compiled file, which does not tell
  ContextGroup* pre;     // nearest to LNODE first
  NodePattern* lnode;    // never null in a finished rule
  ContextGroup* mid;     // in order of the text; reversed when lnode is a quote pattern
  NodePattern* rnode;    // never null in a finished rule
  ContextGroup* suf;     // in order of the text
  std::uint8_t priority;
  std::int32_t number;  // its place in the list that the index was made from; 0 before
  Rule* next;           // falling priority, file order within one
};

// Type codes that the engine names.
namespace rule_type {
inline constexpr std::uint8_t insertion = ':';
inline constexpr std::uint8_t insertion_a = 'A';  // from compiled files alone; treated as ':'
inline constexpr std::uint8_t left = 'L';
inline constexpr std::uint8_t right = 'R';
inline constexpr std::uint8_t test = '?';
inline constexpr std::uint8_t test_left = '1';
inline constexpr std::uint8_t test_right = '2';
inline constexpr std::uint8_t exchange = 'X';
inline constexpr std::uint8_t copy_left = 'C';
inline constexpr std::uint8_t copy_right = 'U';
inline constexpr std::uint8_t merge_left = 'a';   // DL: the left node drops out
inline constexpr std::uint8_t merge_right = 'b';  // DR
inline constexpr std::uint8_t plus = '+';
inline constexpr std::uint8_t minus = '-';
inline constexpr std::uint8_t less = '<';
inline constexpr std::uint8_t greater = '>';
inline constexpr std::uint8_t post_left = '3';
inline constexpr std::uint8_t post_right = '4';
inline constexpr std::uint8_t post_insertion = '5';
inline constexpr std::uint8_t shift_left = '6';   // P<<
inline constexpr std::uint8_t shift_right = '7';  // P>>
inline constexpr std::uint8_t post_scope_left = '8';
inline constexpr std::uint8_t post_scope_right = '9';
}  // namespace rule_type

// The codes of the post-edit pass, "3456789": generation skips them, post-edit runs nothing else.
[[nodiscard]] constexpr bool is_post_edit_type(std::uint8_t type) {
  return type >= '3' && type <= '9';
}

// The word tests "?", "?L" and "?R".
[[nodiscard]] constexpr bool is_word_test_type(std::uint8_t type) {
  return type == rule_type::test || type == rule_type::test_left || type == rule_type::test_right;
}

// The types without a step of their own, which backtracking alone knows: "+", "-", "<" and ">".
[[nodiscard]] constexpr bool is_stepless_type(std::uint8_t type) {
  return type == rule_type::plus || type == rule_type::minus || type == rule_type::less || type == rule_type::greater;
}

// What the rule says of this side's node. Finished rules have both patterns.
[[nodiscard]] inline const NodePattern& pattern_of(const Rule& rule, Side side) {
  return side == Side::left ? *rule.lnode : *rule.rnode;
}

[[nodiscard]] inline bool has_brace_patterns(const Rule& rule) {
  return rule.lnode->inserted == 0 && rule.rnode->inserted == 0;
}

}  // namespace lexon
