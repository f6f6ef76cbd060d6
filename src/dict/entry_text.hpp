// The text form of a dictionary entry: [HW]{ID} GLOSS "CW" (ATTRS) <LANG,FREQ,PRI>; and what may follow: a second
// language mark, [EXTRA1] and {EXTRA2}.
#pragma once

#include <cstddef>
#include <cstdio>

#include "data/output.hpp"
#include "data/records.hpp"
#include "data/status.hpp"

namespace lexon {

struct Session;

// Where `parse_entry` takes its memory from.
enum class EntryStorage : int { sentence_pool = 0, heap = 1 };

// What is wrong with an entry line.
inline constexpr Status kBadHw{91};
inline constexpr Status kBadGloss{92};
inline constexpr Status kBadCwOrAttrs{93};
inline constexpr Status kBadId{95};
inline constexpr Status kBadExtra1{96};
inline constexpr Status kBadExtra2{97};
inline constexpr Status kBadNumbers{99};

// The longest surface form and the longest attribute list that a line may hold.
inline constexpr std::size_t kMaxHwLength = 1024;
inline constexpr std::size_t kMaxAttrsLength = 1024;

// Parses one line into a new word. `result` is null unless the status is ok; otherwise it is `memory` or one of those
// above (see `entry_error_text`).
// A line should keep its line feed: a ")" with nothing behind it belongs to the attribute in front of it.
[[nodiscard]] Status parse_entry(Session& session, const char* line, WordEntry*& result, EntryStorage storage);

// Releases a word that `parse_entry` made in that storage, and clears the pointer. Null is ignored.
void parsed_entry_free(Session& session, WordEntry*& entry, EntryStorage storage);

// What a status of `parse_entry` means, in words, for the messages of tools.
[[nodiscard]] const char* entry_error_text(Status status);

// The bracket that closes the surface form beginning at `hw`, behind the opening one; null if the line ends first.
[[nodiscard]] const char* entry_hw_end(const char* hw);

// Prints one word as an entry line behind `prefix`. Nothing happens for a null entry. The second language
// mark and the extras are not printed.
void entry_print(Output& output, const WordEntry* entry, const char* prefix);

// Prints each word of a list.
void entry_list_print(Output& output, const WordEntry* list, const char* prefix);

// The mark of a two-letter language code, or `text` itself. The mark ends its text.
[[nodiscard]] const char* language_to_mark(const char* text);

// The row of a language mark, which begins with the two-letter code, or `text` itself.
[[nodiscard]] const char* language_to_code(const char* text);

}  // namespace lexon
