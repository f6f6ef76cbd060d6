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

const std::uint8_t* LookupMemory::block(std::FILE* stream, std::int64_t offset, std::span<std::uint8_t> room) {
  const std::size_t file = room.size() > kLargestBlock ? kNone : file_of(stream);
  if (blocks_ == nullptr && file != kNone) blocks_.reset(new (std::nothrow) Block[kBlocks]);
  if (blocks_ == nullptr || file == kNone) {
    return file_read_at(stream, offset, room.data(), room.size()) ? room.data() : nullptr;
  }
  const std::uint64_t place = static_cast<std::uint64_t>(offset) / 1024 * kFiles + file;
  Block& kept = blocks_[(place * 0x9E3779B97F4A7C15U) >> 53U];
  static_assert(kBlocks == std::size_t{1} << (64U - 53U));
  if (kept.stream == stream && kept.offset == offset && kept.room >= room.size()) return kept.bytes.get();
  kept.stream = nullptr;
  if (kept.room < room.size()) {
    kept.bytes.reset(new (std::nothrow) std::uint8_t[room.size()]);
    kept.room = kept.bytes == nullptr ? 0 : room.size();
  }
  std::uint8_t* to = kept.room == 0 ? room.data() : kept.bytes.get();
  if (!file_read_at(stream, offset, to, room.size())) return nullptr;
  if (kept.room != 0) kept.stream = stream;
  kept.offset = offset;
  return to;
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
  if (file == kNone || question.key.size() > kLargestBlock || !has_room_for_answers()) return;
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
  if (blocks_ == nullptr) return;
  for (std::size_t i = 0; i < kBlocks; ++i) blocks_[i].stream = nullptr;
}

}  // namespace lexon
