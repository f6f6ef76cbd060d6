#include "dicttool/record_view.hpp"

#include <algorithm>

#include "data/words.hpp"

namespace lexon {

namespace {

// Fields that an entry leaves out are null in the word, and empty here.
std::string_view text_of(const char* text, std::int32_t length) {
  return text == nullptr ? std::string_view{} : std::string_view{text, static_cast<std::size_t>(length)};
}

// How many of the texts behind the attributes (id, extra1, extra2) are written: up to the last that is not empty.
int texts_behind_attrs(const RecordView& record) {
  if (!record.extra2.empty()) return 3;
  if (!record.extra1.empty()) return 2;
  return record.id.empty() ? 0 : 1;
}

// The layout stands in layout.hpp: frequency (4), priority (1), three bytes without a use, language (2).
void fixed_part_append(const RecordView& record, Bytes& out) {
  append_u32(out, record.frequency);
  out.push_back(record.priority);
  out.insert(out.end(), 3, 0);
  for (const char mark : record.language) out.push_back(static_cast<std::uint8_t>(mark));
}

// A fixed part may be shorter or longer than ours: what is there counts, the rest keeps its default.
void fixed_part_read(ByteView part, RecordView& record) {
  std::array<std::uint8_t, kRecordFixedPart> bytes = {0, 0, 0, 0, 0, 0, 0, 0, '.', '.'};
  std::copy_n(part.begin(), std::min(part.size(), bytes.size()), bytes.begin());
  record.frequency = load_u32(bytes.data() + kFixedFrequency);
  record.priority = bytes[kFixedPriority];
  record.language = {static_cast<char>(bytes[kFixedLanguage]), static_cast<char>(bytes[kFixedLanguage + 1])};
}

}  // namespace

RecordView record_of(const WordEntry& word) {
  RecordView record;
  record.hw = text_of(word.hw, word.hw_len);
  record.gloss = text_of(word.gloss, word.gloss_len);
  record.cw = text_of(word.cw, word.cw_len);
  record.attrs = text_of(word.attrs, word.attr_len);
  record.frequency = load_u32(word.frequency);
  record.priority = word.priority;
  record.language = {word.language[0], word.language[1]};
  record.id = text_of(word.id, word.id_len);
  record.extra1 = text_of(word.extra1, word.extra1_len);
  record.extra2 = text_of(word.extra2, word.extra2_len);
  return record;
}

RecordView record_of(const StoredRecord& stored) {
  RecordView record;
  record.hw = stored.hw;
  record.gloss = stored.gloss;
  record.cw = stored.cw;
  record.attrs = stored.attrs;
  fixed_part_read(stored.fixed, record);
  record.id = stored.id;
  record.extra1 = stored.extra1;
  record.extra2 = stored.extra2;
  return record;
}

std::size_t record_size(const RecordView& record) {
  const auto length = [](std::string_view text) { return static_cast<std::int32_t>(text.size()); };
  WordEntry lengths{};
  lengths.hw_len = length(record.hw);
  lengths.gloss_len = length(record.gloss);
  lengths.cw_len = length(record.cw);
  lengths.attr_len = length(record.attrs);
  lengths.id_len = length(record.id);
  lengths.extra1_len = length(record.extra1);
  lengths.extra2_len = length(record.extra2);
  // The size of a record is computed at one place, which wants the lengths of a word.
  entry_sizes_set(lengths);
  return static_cast<std::size_t>(lengths.total_size);
}

void record_append(const RecordView& record, Bytes& out) {
  append_u16(out, record_size(record));
  append_text(out, record.hw);
  append_text(out, record.gloss);
  append_text(out, record.cw);
  // The attribute block has a size of its own, in which the attributes are a text with its length in front.
  append_u16(out, 2 + record.attrs.size() + kRecordFixedPart);
  append_text(out, record.attrs);
  fixed_part_append(record, out);
  const std::array<std::string_view, 3> behind = {record.id, record.extra1, record.extra2};
  for (int i = 0; i < texts_behind_attrs(record); ++i) append_text(out, behind[static_cast<std::size_t>(i)]);
}

std::string_view record_key(const RecordView& record, int key_field) {
  switch (key_field) {
    // The numbers are those of the slots in the header of an index; one of them stands for no field.
    case kKeyHw: return record.hw;
    case kKeyGloss: return record.gloss;
    case kKeyCw: return record.cw;
    case kKeyId: return record.id;
    case kKeyExtra1: return record.extra1;
    case kKeyExtra2: return record.extra2;
    default: return {};
  }
}

const char* key_field_name(int key_field) {
  constexpr std::array<const char*, kSlotCount + 1> kNames = {nullptr, "hw", "gloss",  "cw",
                                                              nullptr, "id", "extra1", "extra2"};
  const bool is_field = key_field > 0 && key_field <= kSlotCount;
  return is_field ? kNames[static_cast<std::size_t>(key_field)] : nullptr;
}

}  // namespace lexon
