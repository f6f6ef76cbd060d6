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

// The bytes of a record from `at` to `end`, read on field by field.
struct FieldReader {
  const std::uint8_t* at;
  const std::uint8_t* end;

  [[nodiscard]] std::size_t left() const { return static_cast<std::size_t>(end - at); }

  // A text behind its length; false if it runs past the end.
  bool text(std::string_view& field) {
    if (left() < 2) return false;
    const std::size_t length = load_u16(at);
    if (length > left() - 2) return false;
    field = as_text({at + 2, length});
    at += 2 + length;
    return true;
  }

  // A field that the record may end in front of; then it is empty.
  bool text_if_any(std::string_view& field) {
    if (at != end) return text(field);
    field = {};
    return true;
  }
};

// The attribute block at the reader's place. The fixed part is what its size leaves behind the text.
bool read_attr_block(FieldReader& reader, StoredRecord& stored) {
  stored.attr_block_size = 0;
  stored.attrs = {};
  stored.fixed = {};
  if (reader.at == reader.end) return true;
  std::string_view bytes;
  if (!reader.text(bytes)) return false;
  if (bytes.empty()) {
    stored.attr_block_size = kAbsentAttrBlock;
    return true;
  }
  stored.attr_block_size = static_cast<std::uint16_t>(bytes.size());
  FieldReader block{reader.at - bytes.size(), reader.at};
  if (!block.text(stored.attrs)) return false;
  stored.fixed = {block.at, block.left()};
  return true;
}

// Copies what the fixed part holds of a field; a part that is too short leaves the rest of the field as it was.
template <typename Byte, std::size_t Extent>
void copy_fixed_field(ByteView fixed, std::size_t at, std::span<Byte, Extent> field) {
  for (std::size_t i = 0; i < field.size() && at + i < fixed.size(); ++i) field[i] = static_cast<Byte>(fixed[at + i]);
}

// By far most records have a fixed part of the usual size.
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

// Fills a word, all zero, from a record. `place` gives the word's own text for a text of the record that is not empty;
// null when memory is exhausted, and then the result is false. An empty text leaves the field null.
template <typename Place>
bool word_fill(const StoredRecord& stored, WordEntry& word, Place place) {
  word.total_size = stored.total_size;
  word.attr_block_size = stored.attr_block_size;
  word.language[0] = word.language[1] = '.';
  copy_fixed_part(stored.fixed, word);
  const auto fill = [&](std::string_view text, char*& field, std::int32_t& length) {
    if (text.empty()) return true;
    length = static_cast<std::int32_t>(text.size());
    field = place(text);
    return field != nullptr;
  };
  return fill(stored.hw, word.hw, word.hw_len) && fill(stored.gloss, word.gloss, word.gloss_len) &&
         fill(stored.cw, word.cw, word.cw_len) && fill(stored.attrs, word.attrs, word.attr_len) &&
         fill(stored.id, word.id, word.id_len) && fill(stored.extra1, word.extra1, word.extra1_len) &&
         fill(stored.extra2, word.extra2, word.extra2_len);
}

// A word that is to be kept lies in front of a copy of its record, in which each text is ended by a NUL: over the length
// or the fixed part that follows it, or behind the record.
void kept_fill(LookupMemory::Kept& kept, ByteView record, const StoredRecord& stored) {
  auto* copy = reinterpret_cast<char*>(&kept + 1);
  std::memcpy(copy, record.data(), record.size());
  WordEntry& word = *zeroed_record<WordEntry>(&kept.word);
  const bool is_filled = word_fill(stored, word, [&](std::string_view text) {
    char* own = copy + (text.data() - as_text(record).data());
    own[text.size()] = '\0';
    return own;
  });
  static_cast<void>(is_filled);  // nothing is allocated
}

}  // namespace

ByteView record_at(ByteView content, std::size_t at) {
  ByteReader reader(content, at);
  const std::size_t size = reader.u16();
  const bool fits = reader.ok() && size > 2 && size <= content.size() - at;
  return fits ? content.subspan(at, size) : ByteView{};
}

// Each field stands behind its length, the attribute block as a whole, so that all are stepped over in the same way.
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

// Only the surface form has to be there: a record may end behind any field from the gloss on.
bool stored_record_read(ByteView record, StoredRecord& stored) {
  if (record.size() < 2) return false;
  stored.total_size = load_u16(record.data());
  FieldReader reader{record.data() + 2, record.data() + record.size()};
  return reader.text(stored.hw) && reader.text_if_any(stored.gloss) && reader.text_if_any(stored.cw) &&
         read_attr_block(reader, stored) && reader.text_if_any(stored.id) && reader.text_if_any(stored.extra1) &&
         reader.text_if_any(stored.extra2);
}

Status record_unpack(Session& session, ByteView record, WordEntry*& entry, std::uint16_t block, std::uint16_t offset,
                     bool opens_group) {
  entry = nullptr;
  StoredRecord stored;
  if (!stored_record_read(record, stored)) return Status::ok;
  if (LookupMemory::Kept* kept = session.lookups.answer_add(record.size() + 1); kept != nullptr) {
    kept_fill(*kept, record, stored);
    kept->block = block;
    kept->offset = offset;
    kept->opens_group = opens_group;
    entry = kept_word_copy(session, *kept);
    return entry == nullptr ? Status::memory : Status::ok;
  }
  auto* word = temp_new<WordEntry>(session);
  if (word == nullptr) return Status::memory;
  if (!word_fill(stored, *word, [&](std::string_view text) { return temp_text(session, text); })) return Status::memory;
  entry = word;
  return Status::ok;
}

// A flat copy: lengths and texts are those of the kept word, whose texts nobody gives back.
WordEntry* kept_word_copy(Session& session, const LookupMemory::Kept& kept) {
  void* cell = temp_alloc(session, static_cast<std::int64_t>(sizeof(WordEntry)));
  if (cell == nullptr) return nullptr;
  auto* word = new (cell) WordEntry(kept.word);
  word->next = nullptr;
  return word;
}

}  // namespace lexon
