// Dictionary words and lists of them, in the sentence's pool. Texts that are as the dictionary has them can belong to what
// lookups keep (data/lookup_memory.hpp) and serve many words: copies share them, nobody gives them back, and who changes a
// text in place calls `text_make_own` before.
#pragma once

#include <cstdint>
#include <string_view>

#include "data/records.hpp"
#include "data/status.hpp"

namespace lexon {

struct Session;

// A new word with this surface form, or null (no or empty `hw`, or memory exhausted). `attrs` may be null or empty.
[[nodiscard]] WordEntry* entry_new(Session& session, const char* hw, const char* attrs);

// A deep copy of one word, its `next` null; with `new_hw` it has that surface form. `result` is null on failure.
[[nodiscard]] Status entry_copy(Session& session, const WordEntry& src, WordEntry*& result,
                                const char* new_hw = nullptr);

// Copies a list in its order; stops with the status at the first failure. A null `src` gives an empty list.
[[nodiscard]] Status entry_list_copy(Session& session, const WordEntry* src, WordEntry*& result,
                                     const char* new_hw = nullptr);

// Releases every word of the list and clears the head.
void entry_list_free(Session& session, WordEntry*& head);

// Takes the head out of the list and releases it. Nothing happens to an empty list.
void entry_drop_head(Session& session, WordEntry*& head);

// Stable, falling priority (unsigned).
void entry_list_sort(WordEntry*& head);

// Is the list as sorting would leave it?
[[nodiscard]] bool entry_list_is_sorted(const WordEntry* word);

// Replaces the word's attributes by a copy of `attrs`, releases the old ones and sets `attr_len` and no other size.
[[nodiscard]] Status entry_attrs_set(Session& session, WordEntry& word, std::string_view attrs);

// Puts `prefix` in front of the word's attributes, which may grow beyond their limit. No size of the word follows.
[[nodiscard]] Status entry_attrs_prefix(Session& session, WordEntry& word, std::string_view prefix);

// Never null: the text itself, or the empty text for null.
[[nodiscard]] inline const char* text_or_empty(const char* text) {
  return text == nullptr ? "" : text;
}

// Copies of texts for a record: null for length 0. On failure null with a length above 0.
[[nodiscard]] char* field_copy(Session& session, const char* text, std::int32_t length);

// Sees to it that a word's text, which may be null, is its own, so that it can be changed in place. Fails for want of memory
// alone.
[[nodiscard]] Status text_make_own(Session& session, char*& text);

// Sets `attr_block_size` and `total_size` of a word made by hand from its lengths: the size as a text record, an
// optional field counting with its length field if it or one behind it is there.
void entry_sizes_set(WordEntry& word);

}  // namespace lexon
