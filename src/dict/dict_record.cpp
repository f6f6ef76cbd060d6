#include "dict/dict_record.hpp"

#include <cstddef>
#include <cstring>
#include <span>

#include "data/bytes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"

namespace lexon {

namespace {

constexpr std::uint16_t kAbsentAttrBlock = 12;  // what a word says of an attribute block of size 0

// The attribute block at the reader's place. The fixed part is what its size leaves behind the text.
void read_attr_block(ByteReader& reader, StoredRecord& stored) {
  stored.attr_block_size = reader.u16();
  if (stored.attr_block_size == 0) {
    stored.attr_block_size = kAbsentAttrBlock;
    return;
  }
  ByteReader block(reader.bytes(stored.attr_block_size));
  stored.attrs = block.text();
  stored.fixed = block.bytes(block.ok() ? stored.attr_block_size - stored.attrs.size() - 2 : 0);
  if (!block.ok()) reader.fail();
}

// Copies what the fixed part holds of a field; a part that is too short leaves the rest of the field as it was.
template <typename Byte, std::size_t Extent>
void copy_fixed_field(ByteView fixed, std::size_t at, std::span<Byte, Extent> field) {
  for (std::size_t i = 0; i < field.size() && at + i < fixed.size(); ++i) field[i] = static_cast<Byte>(fixed[at + i]);
}

void copy_fixed_part(ByteView fixed, WordEntry& word) {
  if (fixed.size() == kRecordFixedPart) {
    std::memcpy(word.frequency, fixed.data() + kFixedFrequency, sizeof word.frequency);
    word.priority = fixed[kFixedPriority];
    std::memcpy(word.language, fixed.data() + kFixedLanguage, sizeof word.language);
    return;
  }
  copy_fixed_field(fixed, kFixedFrequency, std::span(word.frequency));
  copy_fixed_field(fixed, kFixedPriority, std::span(&word.priority, 1));
  copy_fixed_field(fixed, kFixedLanguage, std::span(word.language));
}

// An empty text leaves the field null. False when memory is exhausted.
bool copy_text(Session& session, std::string_view text, char*& field, std::int32_t& length) {
  if (text.empty()) return true;
  field = temp_text(session, text);
  length = static_cast<std::int32_t>(text.size());
  return field != nullptr;
}

bool copy_texts(Session& session, const StoredRecord& stored, WordEntry& word) {
  return copy_text(session, stored.hw, word.hw, word.hw_len) &&
         copy_text(session, stored.gloss, word.gloss, word.gloss_len) &&
         copy_text(session, stored.cw, word.cw, word.cw_len) &&
         copy_text(session, stored.attrs, word.attrs, word.attr_len) &&
         copy_text(session, stored.id, word.id, word.id_len) &&
         copy_text(session, stored.extra1, word.extra1, word.extra1_len) &&
         copy_text(session, stored.extra2, word.extra2, word.extra2_len);
}

}  // namespace

ByteView record_at(ByteView content, std::size_t at) {
  ByteReader reader(content, at);
  const std::size_t size = reader.u16();
  const bool fits = reader.ok() && size > 2 && size <= content.size() - at;
  return fits ? content.subspan(at, size) : ByteView{};
}

std::optional<std::string_view> record_field(ByteView record, int key_field) {
  std::size_t at = 2;
  for (int field = 1;; ++field) {
    if (record.size() - at < 2) return std::nullopt;
    const std::size_t length = load_u16(record.data() + at);
    at += 2;
    if (length > record.size() - at) return std::nullopt;
    if (field == key_field) return as_text(record.subspan(at, length));
    at += length;
  }
}

bool stored_record_read(ByteView record, StoredRecord& stored) {
  ByteReader reader(record);
  stored = {};
  stored.total_size = reader.u16();
  stored.hw = reader.text();
  if (reader.more()) stored.gloss = reader.text();
  if (reader.more()) stored.cw = reader.text();
  if (reader.more()) read_attr_block(reader, stored);
  if (reader.more()) stored.id = reader.text();
  if (reader.more()) stored.extra1 = reader.text();
  if (reader.more()) stored.extra2 = reader.text();
  return reader.ok();
}

Status record_unpack(Session& session, ByteView record, WordEntry*& entry) {
  entry = nullptr;
  StoredRecord stored;
  if (!stored_record_read(record, stored)) return Status::ok;
  auto* word = temp_new<WordEntry>(session);
  if (word == nullptr) return Status::memory;
  word->total_size = stored.total_size;
  word->attr_block_size = stored.attr_block_size;
  word->language[0] = word->language[1] = '.';
  copy_fixed_part(stored.fixed, *word);
  if (!copy_texts(session, stored, *word)) return Status::memory;
  entry = word;
  return Status::ok;
}

}  // namespace lexon
