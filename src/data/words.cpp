#include "data/words.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "data/session.hpp"

namespace lexon {

namespace {

constexpr std::int32_t kFixedPart = 10;  // frequency, priority and the rest of a text record
constexpr std::int32_t kAttrBlockHeader = 12;

std::int32_t length_of(std::string_view text) {
  return static_cast<std::int32_t>(text.size());
}

// Copies one text field into `target`, unless lookups keep the text: then it serves both. False when memory is exhausted.
bool copy_field(Session& session, char*& target, char* text, std::int32_t length) {
  if (length > 0 && session.lookups.holds(text)) {
    target = text;
    return true;
  }
  target = length > 0 ? field_copy(session, text, length) : nullptr;
  return length <= 0 || target != nullptr;
}

// The buffer is as long as `attr_len` says; the text runs to its terminator.
bool copy_attrs(Session& session, WordEntry& copy, const WordEntry& src) {
  copy.attrs = nullptr;
  if (src.attr_len <= 0) return true;
  if (session.lookups.holds(src.attrs)) {
    copy.attrs = src.attrs;
    return true;
  }
  const std::string_view text = text_or_empty(src.attrs);
  const auto room = static_cast<std::size_t>(src.attr_len) + 1;
  const std::size_t size = text.size() + 1 > room ? text.size() + 1 : room;
  copy.attrs = static_cast<char*>(temp_alloc(session, static_cast<std::int64_t>(size)));
  if (copy.attrs == nullptr) return false;
  std::memcpy(copy.attrs, text.data(), text.size());
  copy.attrs[text.size()] = '\0';
  return true;
}

bool copy_surface(Session& session, WordEntry& copy, const WordEntry& src, const char* new_hw) {
  if (new_hw == nullptr) return copy_field(session, copy.hw, src.hw, src.hw_len);
  copy.hw_len = length_of(new_hw);
  copy.total_size += copy.hw_len - src.hw_len;
  copy.hw = temp_text(session, new_hw);
  return copy.hw != nullptr;
}

bool copy_texts(Session& session, WordEntry& copy, const WordEntry& src, const char* new_hw) {
  return copy_surface(session, copy, src, new_hw) && copy_field(session, copy.gloss, src.gloss, src.gloss_len) &&
         copy_field(session, copy.cw, src.cw, src.cw_len) && copy_attrs(session, copy, src) &&
         copy_field(session, copy.id, src.id, src.id_len) &&
         copy_field(session, copy.extra1, src.extra1, src.extra1_len) &&
         copy_field(session, copy.extra2, src.extra2, src.extra2_len);
}

void entry_free(Session& session, WordEntry* word) {
  temp_free_string(session, word->hw);
  temp_free_string(session, word->gloss);
  temp_free_string(session, word->cw);
  temp_free_string(session, word->attrs);
  temp_free_string(session, word->id);
  temp_free_string(session, word->extra1);
  temp_free_string(session, word->extra2);
  temp_delete(session, word);
}

}  // namespace

char* field_copy(Session& session, const char* text, std::int32_t length) {
  if (length <= 0) return nullptr;
  auto* copy = static_cast<char*>(temp_alloc(session, static_cast<std::int64_t>(length) + 1));
  if (copy == nullptr) return nullptr;
  // A length can outlast a shortened text; nothing behind the terminator is read.
  const std::size_t present = text == nullptr ? 0 : strnlen(text, static_cast<std::size_t>(length));
  text_copy(copy, text, present);
  copy[present] = '\0';
  return copy;
}

Status text_make_own(Session& session, char*& text) {
  if (!session.lookups.holds(text)) return Status::ok;
  char* copy = temp_text(session, text);
  if (copy == nullptr) return Status::memory;
  text = copy;
  return Status::ok;
}

WordEntry* entry_new(Session& session, const char* hw, const char* attrs) {
  if (hw == nullptr || *hw == '\0') return nullptr;
  auto* word = temp_new<WordEntry>(session);
  if (word == nullptr) return nullptr;
  word->language[0] = word->language[1] = '.';
  word->hw_len = length_of(hw);
  word->attr_len = length_of(text_or_empty(attrs));
  const bool copied = (word->hw = field_copy(session, hw, word->hw_len)) != nullptr &&
                      (word->attr_len == 0 || (word->attrs = field_copy(session, attrs, word->attr_len)) != nullptr);
  if (!copied) return nullptr;
  entry_sizes_set(*word);
  return word;
}

Status entry_copy(Session& session, const WordEntry& src, WordEntry*& result, const char* new_hw) {
  result = nullptr;
  void* cell = temp_alloc(session, static_cast<std::int64_t>(sizeof(WordEntry)));
  if (cell == nullptr) return Status::memory;
  auto* copy = new (cell) WordEntry(src);
  copy->next = nullptr;
  if (!copy_texts(session, *copy, src, new_hw)) return Status::memory;
  result = copy;
  return Status::ok;
}

Status entry_list_copy(Session& session, const WordEntry* src, WordEntry*& result, const char* new_hw) {
  result = nullptr;
  for (WordEntry** link = &result; src != nullptr; src = src->next, link = &(*link)->next) {
    if (const Status s = entry_copy(session, *src, *link, new_hw); s != Status::ok) return s;
  }
  return Status::ok;
}

void entry_list_free(Session& session, WordEntry*& head) {
  while (head != nullptr) entry_free(session, std::exchange(head, head->next));
}

void entry_drop_head(Session& session, WordEntry*& head) {
  if (head != nullptr) entry_free(session, std::exchange(head, head->next));
}

bool entry_list_is_sorted(const WordEntry* word) {
  while (word != nullptr && word->next != nullptr && word->priority >= word->next->priority) word = word->next;
  return word == nullptr || word->next == nullptr;
}

void entry_list_sort(WordEntry*& head) {
  struct Bucket {
    WordEntry* first = nullptr;
    WordEntry* last = nullptr;
  };
  if (entry_list_is_sorted(head)) return;
  std::array<Bucket, 256> buckets;
  for (WordEntry* word = head; word != nullptr; word = word->next) {
    Bucket& bucket = buckets[word->priority];
    (bucket.first == nullptr ? bucket.first : bucket.last->next) = word;
    bucket.last = word;
  }
  WordEntry** link = &head;
  for (auto bucket = buckets.rbegin(); bucket != buckets.rend(); ++bucket) {
    if (bucket->first == nullptr) continue;
    *link = bucket->first;
    link = &bucket->last->next;
  }
  *link = nullptr;
}

Status entry_attrs_set(Session& session, WordEntry& word, std::string_view attrs) {
  char* copy = temp_text(session, attrs);
  if (copy == nullptr) return Status::memory;
  temp_free_string(session, word.attrs);
  word.attrs = copy;
  word.attr_len = length_of(attrs);
  return Status::ok;
}

Status entry_attrs_prefix(Session& session, WordEntry& word, std::string_view prefix) {
  const std::string_view old = text_or_empty(word.attrs);
  auto* attrs = static_cast<char*>(temp_alloc(session, static_cast<std::int64_t>(prefix.size() + old.size()) + 1));
  if (attrs == nullptr) return Status::memory;
  char* end = std::copy(prefix.begin(), prefix.end(), attrs);
  *std::copy(old.begin(), old.end(), end) = '\0';
  temp_free_string(session, word.attrs);
  word.attrs = attrs;
  return Status::ok;
}

void entry_sizes_set(WordEntry& word) {
  constexpr std::int32_t kLengthField = 2;
  const bool has_extra2 = word.extra2_len != 0;
  const bool has_extra1 = has_extra2 || word.extra1_len != 0;
  const bool has_id = has_extra1 || word.id_len != 0;
  word.attr_block_size = word.attr_len + kAttrBlockHeader;
  word.total_size = word.cw_len + word.attr_block_size + word.gloss_len + kFixedPart + word.hw_len;
  if (has_id) word.total_size += word.id_len + kLengthField;
  if (has_extra1) word.total_size += word.extra1_len + kLengthField;
  if (has_extra2) word.total_size += word.extra2_len + kLengthField;
}

}  // namespace lexon
