// One record of a dictionary seen as its fields, and its binary form.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "data/bytes.hpp"
#include "data/records.hpp"
#include "dict/dict_record.hpp"

namespace lexon {

// The fields of a word. The texts point into what it was made of; an absent text is empty.
struct RecordView {
  std::string_view hw;
  std::string_view gloss;
  std::string_view cw;
  std::string_view attrs;
  std::uint32_t frequency = 0;
  std::uint8_t priority = 0;
  std::array<char, 2> language = {'.', '.'};
  std::string_view id;
  std::string_view extra1;
  std::string_view extra2;

  bool operator==(const RecordView&) const = default;
};

[[nodiscard]] RecordView record_of(const WordEntry& word);
[[nodiscard]] RecordView record_of(const StoredRecord& stored);

// The size of the record in the file.
[[nodiscard]] std::size_t record_size(const RecordView& record);

// Appends the record to `out`. It must not be larger than `kMaxRecordSize`.
void record_append(const RecordView& record, Bytes& out);

// The text of a key field. The attribute block is no key: empty.
[[nodiscard]] std::string_view record_key(const RecordView& record, int key_field);

// What is called by the number of a key field: "hw", "gloss", "cw", "id", "extra1", "extra2"; null for other numbers.
[[nodiscard]] const char* key_field_name(int key_field);

// Is the record to be found by this field? An absent text is no key, but for the surface form, which orders records.
[[nodiscard]] inline bool has_key(const RecordView& record, int key_field) {
  return key_field == kKeyHw || !record_key(record, key_field).empty();
}

}  // namespace lexon
