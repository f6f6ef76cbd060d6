// The marks of co-occurrence choices: "<" or ">", the name of the choice and a comma, in front of a word's attributes.

#include <cstring>
#include <string_view>

#include "data/scratch.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/apply.hpp"
#include "engine/side.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

// A mark changes the text of the attributes by its sign, its name and a comma.
constexpr std::int32_t kMarkGrowth = 3;  // wanted: one more than the mark's sign and comma
constexpr std::int32_t kMarkShrink = 1;

}  // namespace

Status role_mark_add(Session& session, const Rule& rule, Node* lnode, Node* rnode, const WordEntry& chosen) {
  // Only a node that the rule brings in has been chosen.
  if (has_brace_patterns(rule)) return Status::ok;
  const Side side = rule.lnode->inserted != 0 ? Side::left : Side::right;
  Node* node = side == Side::left ? lnode : rnode;
  if (node == nullptr || node->candidates == nullptr)
    return rule_base_failure(session, "marked a choice on an empty place");
  WordEntry& word = *node->candidates;
  const std::string_view id = text_or_empty(chosen.id);
  Scratch<kAttrLimit + 4> mark;
  mark.append(pattern_of(rule, side).roles != nullptr ? '<' : '>').append(id).append(',');
  const Status status = entry_attrs_prefix(session, word, mark.view());
  if (status == Status::ok) word.attr_len += chosen.id_len + kMarkGrowth;
  return status;
}

Status role_mark_remove(Session& session, const Rule& rule, Side side, Node* node, const WordEntry& chosen) {
  if (node == nullptr || node->candidates == nullptr) return Status::ok;
  WordEntry& word = *node->candidates;
  std::string_view attrs = text_or_empty(word.attrs);
  if (attrs.empty()) return Status::ok;
  // The sign tells whose choice was marked: "<" by the roles of this side's pattern, ">" by those of the other.
  const bool is_own = attrs.front() == '<' && pattern_of(rule, side).roles != nullptr;
  const bool is_opposite = attrs.front() == '>' && pattern_of(rule, other(side)).roles != nullptr;
  if (!is_own && !is_opposite) return Status::ok;
  attrs.remove_prefix(1);
  const std::string_view id = text_or_empty(chosen.id);
  // Another choice has put its mark in front: that one stays.
  if (!attrs.starts_with(id)) return Status::ok;
  attrs.remove_prefix(id.size());
  if (attrs.starts_with(',')) attrs.remove_prefix(1);
  // wanted: the length falls by less than the mark had, and by less than it grew.
  const std::int32_t length = word.attr_len - chosen.id_len - kMarkShrink;
  const Status status = entry_attrs_set(session, word, attrs);
  if (status == Status::ok) word.attr_len = length;
  return status;
}

}  // namespace lexon
