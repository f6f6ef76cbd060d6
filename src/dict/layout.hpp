// The binary layouts of a dictionary, shared by who writes and who reads them. All numbers are unsigned, high byte
// first. Block number 0 means none.
//
// Dictionary file, blocks of 4096 bytes: the header, then data blocks and key blocks
//   header       3 bytes not read | seven slots, one for each key field
//   slot         name, padded with NULs or spaces | not read (1) | levels, signed (1) | not used (2) | root (2) |
//                not used (4)
//   data block   used length (2) | type 1 (1) | records up to the used length              | ... | next block (2)
//   key block    used length (2) | type 2 (1) | key entries, sorted, up to the used length | ... | next block (2)
//
// Index file, blocks of 1024 bytes:
//   index block  used length (2) | not read (name size + 1) | key entries, sorted          | ... | next block (2)
//
// Key entry      key: length (2), text | block number (2): of the level below, on the last level of the dictionary
// Record         total size with these 2 bytes (2) | hw | gloss | cw | attribute block | id | extra1 | extra2
//   a text       length (2), bytes without terminator
//   attr. block  size of what follows (2) | attributes: length (2), text | frequency (4) | priority (1) |
//                3 not used | language (2)
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace lexon {

// Key fields: the position of a field in a record, from 1.
inline constexpr int kKeyHw = 1;
inline constexpr int kKeyGloss = 2;
inline constexpr int kKeyCw = 3;
inline constexpr int kKeyAttributes = 4;  // the attribute block; no key
inline constexpr int kKeyId = 5;
inline constexpr int kKeyExtra1 = 6;
inline constexpr int kKeyExtra2 = 7;
inline constexpr int kSlotCount = 7;

// Blocks of the dictionary file. The used length counts from the start of the block and never reaches into the link.
inline constexpr std::size_t kDictBlockSize = 4096;
inline constexpr std::size_t kDictTypeOffset = 2;
inline constexpr std::size_t kDictDataOffset = 3;
inline constexpr std::size_t kDictLinkOffset = 4094;
inline constexpr std::size_t kHeaderSlotsOffset = 3;
inline constexpr std::uint8_t kDataBlock = 1;
inline constexpr std::uint8_t kKeyBlock = 2;

// Blocks of the index file.
inline constexpr std::size_t kIndexBlockSize = 1024;
inline constexpr std::size_t kIndexLinkOffset = 1022;

inline constexpr std::uint32_t kMaxBlockNumber = 65535;
inline constexpr std::uint32_t kFirstDictBlock = 2;  // block 1 is the header; number 1 reads as 2
inline constexpr std::uint32_t kFirstIndexBlock = 1;

// The longest record: it must not cross a block.
inline constexpr std::size_t kMaxRecordSize = kDictLinkOffset - kDictDataOffset;

// Behind the attributes in a record: frequency, priority, three bytes without use, language.
inline constexpr std::size_t kRecordFixedPart = 10;
inline constexpr std::size_t kFixedFrequency = 0;
inline constexpr std::size_t kFixedPriority = 4;
inline constexpr std::size_t kFixedLanguage = 8;

// The room for an index name in slots and index blocks; one of two values for a whole dictionary.
inline constexpr std::size_t kShortNameSize = 12;
inline constexpr std::size_t kLongNameSize = 128;
inline constexpr std::size_t kShortNameStem = 8;  // the longest name before its "." that the short size serves

// Decides the name size from the text of the first slot: what counts are the characters up to the first "." or NUL,
// padding included. So an empty first slot says 12 if it is filled with NULs, and 128 if with spaces.
[[nodiscard]] constexpr std::size_t name_size_of(std::string_view first_slot) {
  return first_slot.substr(0, first_slot.find_first_of(std::string_view(".\0", 2))).size() > kShortNameStem
             ? kLongNameSize
             : kShortNameSize;
}

// Where the parts of a slot stand, counted behind the name.
inline constexpr std::size_t kSlotLevels = 1;
inline constexpr std::size_t kSlotNumber1 = 2;
inline constexpr std::size_t kSlotRoot = 4;
inline constexpr std::size_t kSlotNumber2 = 6;
inline constexpr std::size_t kSlotTail = 10;

[[nodiscard]] constexpr std::size_t slot_size(std::size_t name_size) {
  return name_size + kSlotTail;
}

// The offset of a slot in the header block.
[[nodiscard]] constexpr std::size_t slot_offset(std::size_t name_size, int key_field) {
  return kHeaderSlotsOffset + slot_size(name_size) * static_cast<std::size_t>(key_field - 1);
}

// The offset of the first entry in an index block.
[[nodiscard]] constexpr std::size_t index_data_offset(std::size_t name_size) {
  return name_size + 3;
}

// The size of a key entry with a key of this length, in key blocks and index blocks alike.
[[nodiscard]] constexpr std::size_t key_entry_size(std::size_t key_length) {
  return 2 + key_length + 2;
}

// The longest key of which one entry fits an index block.
[[nodiscard]] constexpr std::size_t max_key_length(std::size_t name_size) {
  return kIndexLinkOffset - index_data_offset(name_size) - key_entry_size(0);
}

// Where blocks stand in their files. Number 0 has no place and must not be asked for.
[[nodiscard]] constexpr std::int64_t dict_block_offset(std::uint32_t number) {
  return static_cast<std::int64_t>(kDictBlockSize) * ((number < kFirstDictBlock ? kFirstDictBlock : number) - 1);
}
[[nodiscard]] constexpr std::int64_t index_block_offset(std::uint32_t number) {
  return static_cast<std::int64_t>(kIndexBlockSize) * (static_cast<std::int64_t>(number) - 1);
}

// The order of keys: bytes unsigned, a prefix first. Negative, zero or positive. A null text stands first, but equals
// another null and a text of the same length 0.
[[nodiscard]] int key_compare(const char* a, std::int32_t a_len, const char* b, std::int32_t b_len);

// The same order for texts that are never null.
[[nodiscard]] inline int key_compare(std::string_view a, std::string_view b) {
  const std::size_t common = a.size() < b.size() ? a.size() : b.size();
  const int order = common == 0 ? 0 : std::memcmp(a.data(), b.data(), common);
  if (order != 0 || a.size() == b.size()) return order;
  return a.size() < b.size() ? -1 : 1;
}

}  // namespace lexon
