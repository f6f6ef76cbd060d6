// The binary dictionary and its key tree, read only. What a lookup has read is kept as data/lookup_memory.hpp tells.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "data/records.hpp"
#include "data/session.hpp"
#include "data/status.hpp"
#include "dict/layout.hpp"

namespace lexon {

// The tree of one key field, as a slot of the header describes it.
struct IndexDescriptor {
  char name[kLongNameSize + 1];  // file name of the index, without its padding
  std::uint8_t unread;           // the byte behind the name
  std::int8_t levels;            // of the tree; for fields above 1 the lowest is in the dictionary file
  std::uint16_t number1;         // stored, not read
  std::uint16_t root;            // block number
  std::uint32_t number2;         // stored, not read
};

void note_damaged_block(Session& session, const std::FILE* stream, std::int64_t offset);

// The words that one hit led to; at least one.
struct LookupGroup {
  WordEntry* entries;
  std::int32_t block;  // where the first of them stands
  std::int32_t offset;
  LookupGroup* next;
};

// Is this the name of a file in a folder, and no way out of it?
[[nodiscard]] bool is_bare_name(std::string_view name);

// Opens the index file of a slot: `prefix` (with its separator) and the name in the slot. Null if the slot has no tree
// for this key field, if its name is no bare name, and if there is no regular file to be opened. The caller owns the
// stream.
[[nodiscard]] std::FILE* index_open(const std::string& prefix, const IndexDescriptor& descriptor, int key_field,
                                    bool read_only);

// All words whose field `key_field` is exactly `key`. `groups` is null for none, and on failure. The status also goes
// to the engine status: `memory`, `index_unreadable` (also for a slot that is not filled), `not_a_key_block`,
// `not_a_data_block`, or what `must_leave` gives. Damaged records, and what cannot be read of a chain in the
// dictionary file, count as absent. The words are the caller's; `kept`, if it is wanted, receives the same ones as they are
// remembered, for who wants to read them until the sentence ends, or null.
[[nodiscard]] Status dict_lookup(Session& session, const DictionaryFiles& files, int key_field, const char* key,
                                 LookupGroup*& groups, const LookupMemory::Kept** kept = nullptr);

// Joins the words of all groups in their order and releases the groups; null for none.
void groups_flatten(Session& session, LookupGroup* groups, WordEntry*& list);

}  // namespace lexon
