// The members of word classes, as words.
#include <cstring>

#include "data/chain.hpp"
#include "data/scratch.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/cooccurrence.hpp"
#include "dict/word_lookup.hpp"

namespace lexon {

namespace {

const char* class_name(const Rule& rule, char side) {
  if (side != 'l' && side != 'r') return nullptr;
  const CondItem* conditions = side == 'l' ? rule.lnode->hw_conds : rule.rnode->hw_conds;
  return conditions == nullptr ? nullptr : conditions->text;
}

// The texts of all conditions, whatever they ask.
void join_texts(Scratch<kAttrLimit>& attrs, const CondItem* conditions) {
  for (const CondItem& condition : chain<&CondItem::next>(conditions)) {
    if (&condition != conditions) attrs.append(',');
    attrs.append(condition.text);
  }
}

}  // namespace

WordEntry* entry_from_class_member(Session& session, const NodePattern& pattern, const char* hw) {
  Scratch<kAttrLimit> attrs;
  join_texts(attrs, pattern.attr_conds);
  auto* word = temp_new<WordEntry>(session);
  if (word == nullptr) return nullptr;
  word->language[0] = word->language[1] = '.';
  word->hw_len = static_cast<std::int32_t>(std::strlen(hw));
  word->attr_len = static_cast<std::int32_t>(attrs.size());
  word->attr_block_size = pattern.attr_conds == nullptr ? 0 : word->attr_len + 12;
  word->total_size = word->hw_len + word->attr_block_size + 16;
  word->hw = field_copy(session, hw, word->hw_len);
  word->attrs = field_copy(session, attrs.c_str(), word->attr_len);
  return word;
}

WordEntry* word_class_entries(Session& session, const Rule& rule, char side) {
  WordEntry* members = sup_members(session, class_name(rule, side));
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
