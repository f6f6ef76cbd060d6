// The members of word classes, as words.
#include <cstring>

#include "data/chain.hpp"
#include "data/scratch.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/cooccurrence.hpp"
#include "dict/word_lookup.hpp"

namespace lexon {

// For a member that the dictionary has no word for. It has neither concept word nor id.
WordEntry* entry_from_class_member(Session& session, const NodePattern& pattern, const char* hw) {
  Scratch<kAttrLimit> attrs;
  for (const CondItem& condition : chain<&CondItem::next>(pattern.attr_conds)) {
    // All texts, whatever the conditions ask.
    if (&condition != pattern.attr_conds) attrs.append(',');
    attrs.append(condition.text);
  }
  auto* word = temp_new<WordEntry>(session);
  if (word == nullptr) return nullptr;
  word->language[0] = word->language[1] = '.';
  word->hw_len = static_cast<std::int32_t>(std::strlen(hw));
  word->attr_len = static_cast<std::int32_t>(attrs.size());
  word->attr_block_size = pattern.attr_conds == nullptr ? 0 : word->attr_len + 12;
  // wanted: no attribute block counts without conditions, and the empty optional fields count with 6 bytes.
  word->total_size = word->hw_len + word->attr_block_size + 16;
  word->hw = field_copy(session, hw, word->hw_len);
  word->attrs = field_copy(session, attrs.c_str(), word->attr_len);
  return word;
}

WordEntry* word_class_entries(Session& session, const Rule& rule, Side side) {
  const CondItem* name_condition = pattern_of(rule, side).hw_conds;
  WordEntry* members = sup_members(session, name_condition == nullptr ? nullptr : name_condition->text);
  WordEntry* result = nullptr;
  WordEntry** end = &result;
  for (const WordEntry& member : chain<&WordEntry::next>(members)) {
    const char* name = text_or_empty(member.id);
    if (must_leave(session) != Status::ok ||
        words_by_key(session, session.sentence.dictionary, kKeyHw, name, *end) != Status::ok)
      break;
    // wanted: the attributes are those of the left pattern on both sides
    if (*end == nullptr) *end = entry_from_class_member(session, *rule.lnode, name);
    while (*end != nullptr) end = &(*end)->next;
  }
  entry_list_free(session, members);
  return result;
}

}  // namespace lexon
