#include "data/lookup_memory.hpp"

#include <cstring>
#include <functional>
#include <new>

namespace lexon {

namespace {

// In front of a record: block, offset, opens a group, size.
constexpr std::size_t kRecordHead = 7;

}  // namespace

bool LookupMemory::Answer::next(Record& record) {
  if (!reader_.more()) return false;
  record.block = reader_.u16();
  record.offset = reader_.u16();
  record.opens_group = reader_.u8() != 0;
  record.bytes = reader_.bytes();
  return reader_.ok();
}

void LookupMemory::attend(const Files& files) {
  bool is_same = true;
  for (std::size_t i = 0; i < kFiles; ++i) {
    const std::optional<FileState> state = files[i] == nullptr ? std::nullopt : file_state(files[i]);
    is_same = is_same && files_[i].stream == files[i] && files_[i].state == state;
    // A file whose state cannot be told is not kept.
    files_[i] = {state ? files[i] : nullptr, state};
  }
  if (!is_same) forget();
}

bool LookupMemory::has_room(Shelf& shelf, Kind kind) {
  if (shelf.labels != nullptr) return true;
  const std::size_t size = kBlocks * kBlockSizes[static_cast<std::size_t>(kind)];
  shelf.bytes.reset(new (std::nothrow) std::uint8_t[size]);
  if (kind != Kind::words) shelf.places.reset(new (std::nothrow) KeyPlaces[kBlocks]);
  const bool has_all = shelf.bytes != nullptr && (kind == Kind::words || shelf.places != nullptr);
  if (has_all) shelf.labels.reset(new (std::nothrow) Shelf::Label[kBlocks]);
  return shelf.labels != nullptr;
}

LookupMemory::Block LookupMemory::block(std::FILE* stream, std::int64_t offset, std::span<std::uint8_t> room,
                                        Kind kind) {
  const std::size_t file = file_of(stream);
  const std::size_t size = kBlockSizes[static_cast<std::size_t>(kind)];
  Shelf& shelf = shelves_[static_cast<std::size_t>(kind)];
  if (file == kNone || room.size() != size || !has_room(shelf, kind)) {
    return {file_read_at(stream, offset, room.data(), room.size()) ? room.data() : nullptr, nullptr};
  }
  // Neighbours keep out of each other's way; files begin apart.
  const std::size_t place = (static_cast<std::size_t>(offset) / size + file * (kBlocks / 3)) % kBlocks;
  Shelf::Label& label = shelf.labels[place];
  const Block kept = {shelf.bytes.get() + place * size, kind == Kind::words ? nullptr : &shelf.places[place]};
  if (label.stream == stream && label.offset == offset) return kept;
  label = {nullptr, offset};
  if (!file_read_at(stream, offset, shelf.bytes.get() + place * size, size)) return {nullptr, nullptr};
  label.stream = stream;
  if (kept.places != nullptr) kept.places->state = KeyPlaces::State::unknown;
  return kept;
}

std::optional<LookupMemory::Answer> LookupMemory::answer(const Question& question) {
  const std::size_t file = file_of(question.dictionary);
  if (file == kNone || slots_ == nullptr) return std::nullopt;
  const Slot& slot = slot_of(file, question, std::hash<std::string_view>{}(question.key));
  if (!slot.taken) return std::nullopt;
  return Answer({texts_.get() + slot.begin + slot.key_size, slot.size - slot.key_size});
}

void LookupMemory::answer_begin(const Question& question) {
  draft_.reset();
  const std::size_t file = file_of(question.dictionary);
  if (file == kNone || question.key.size() > kLargestKey || !has_room_for_answers()) return;
  if (answers_ * 2 >= kAnswers || kAnswerBytes - used_ < question.key.size()) answers_forget();
  Slot& draft = draft_.emplace();
  draft.hash = std::hash<std::string_view>{}(question.key);
  draft.begin = static_cast<std::uint32_t>(used_);
  draft.size = draft.key_size = static_cast<std::uint16_t>(question.key.size());
  draft.file = static_cast<std::uint8_t>(file);
  draft.field = static_cast<std::uint8_t>(question.key_field);
  question.key.copy(reinterpret_cast<char*>(texts_.get() + used_), question.key.size());
}

void LookupMemory::answer_add(const Record& record) {
  if (!draft_) return;
  const std::size_t at = used_ + draft_->size;
  if (kAnswerBytes - at < kRecordHead + record.bytes.size()) {
    // The next one finds room.
    draft_.reset();
    answers_forget();
    return;
  }
  std::uint8_t* to = texts_.get() + at;
  store_u16(to, record.block);
  store_u16(to + 2, record.offset);
  to[4] = record.opens_group ? 1 : 0;
  store_u16(to + 5, static_cast<std::uint32_t>(record.bytes.size()));
  std::memcpy(to + kRecordHead, record.bytes.data(), record.bytes.size());
  draft_->size += static_cast<std::uint32_t>(kRecordHead + record.bytes.size());
}

void LookupMemory::answer_end() {
  if (!draft_) return;
  const std::string_view key = as_text({texts_.get() + draft_->begin, draft_->key_size});
  Slot& slot = slot_of(draft_->file, {nullptr, draft_->field, key}, draft_->hash);
  slot = *draft_;
  slot.taken = true;
  used_ += slot.size;
  ++answers_;
  draft_.reset();
}

std::size_t LookupMemory::file_of(const std::FILE* stream) const {
  std::size_t file = 0;
  while (file < kFiles && files_[file].stream != stream) ++file;
  return stream == nullptr ? kNone : file;
}

LookupMemory::Slot& LookupMemory::slot_of(std::size_t file, const Question& question, std::uint64_t hash) {
  std::size_t at = hash % kAnswers;
  for (; slots_[at].taken; at = (at + 1) % kAnswers) {
    const Slot& slot = slots_[at];
    const bool may_be = slot.hash == hash && slot.file == file && slot.field == question.key_field;
    if (may_be && as_text({texts_.get() + slot.begin, slot.key_size}) == question.key) break;
  }
  return slots_[at];
}

bool LookupMemory::has_room_for_answers() {
  if (texts_ == nullptr) texts_.reset(new (std::nothrow) std::uint8_t[kAnswerBytes]);
  if (texts_ != nullptr && slots_ == nullptr) slots_.reset(new (std::nothrow) Slot[kAnswers]);
  return slots_ != nullptr;
}

void LookupMemory::answers_forget() {
  for (std::size_t i = 0; i < kAnswers; ++i) slots_[i].taken = false;
  used_ = 0;
  answers_ = 0;
}

void LookupMemory::forget() {
  draft_.reset();
  if (slots_ != nullptr && answers_ != 0) answers_forget();
  for (Shelf& shelf : shelves_) {
    for (std::size_t i = 0; shelf.labels != nullptr && i < kBlocks; ++i) shelf.labels[i].stream = nullptr;
  }
}

}  // namespace lexon
