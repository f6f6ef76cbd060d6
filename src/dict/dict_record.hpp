// A record of the dictionary file: its fields in place, and the word made of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "data/bytes.hpp"
#include "data/lookup_memory.hpp"
#include "data/records.hpp"
#include "data/status.hpp"
#include "dict/layout.hpp"

namespace lexon {

struct Session;

// A record's fields where they stand; all point into the block. A field behind the record's end is empty.
struct StoredRecord {
  std::uint16_t total_size = 0;
  std::string_view hw;
  std::string_view gloss;
  std::string_view cw;
  std::uint16_t attr_block_size = 0;
  std::string_view attrs;
  ByteView fixed;  // behind the attributes: normally kRecordFixedPart bytes
  std::string_view id;
  std::string_view extra1;
  std::string_view extra2;
};

// The record at `at` in a block's content, its size field included; empty if it runs past the content or has no size.
[[nodiscard]] ByteView record_at(ByteView content, std::size_t at);

// The bytes of one field, counted from 1; none if it lies behind the end of the record, which `record_at` gave.
[[nodiscard]] std::optional<std::string_view> record_field(ByteView record, int key_field);

// Reads all fields; false if the record is damaged: a field runs past its end.
[[nodiscard]] bool stored_record_read(ByteView record, StoredRecord& stored);

// Makes a word of a record, in the sentence's pool. `entry` is null on failure, and for a damaged record. Where the answer
// in the making has room, the word is kept there as well and lends its texts; `block` and the rest say where it stands.
[[nodiscard]] Status record_unpack(Session& session, ByteView record, WordEntry*& entry, std::uint16_t block = 0,
                                   std::uint16_t offset = 0, bool opens_group = false);

// A copy of a word that is kept, in the sentence's pool; its texts stay where they are. Null when memory is exhausted.
[[nodiscard]] WordEntry* kept_word_copy(Session& session, const LookupMemory::Kept& kept);

}  // namespace lexon
