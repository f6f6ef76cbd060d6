#include "data/lookup_memory.hpp"

#include <algorithm>
#include <functional>
#include <new>

namespace lexon {

void LookupMemory::attend(const Files& files) {
  bool is_same = true;
  for (std::size_t i = 0; i < kFiles; ++i) {
    const std::optional<FileState> state = files[i] == nullptr ? std::nullopt : file_state(files[i]);
    is_same = is_same && files_[i].stream == files[i] && files_[i].state == state;
    // A file whose state cannot be told is not kept.
    files_[i] = {state ? files[i] : nullptr, state};
  }
  draft_.reset();
  if (!is_same) forget();
  if (count_ * 2 >= kAnswers || kAnswerBytes - used_ < kLeastRoom) answers_forget();
}

// The labels come last: a shelf that has them has all, and one that could not be made is tried again.
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
  // What stood there is gone, whether or not the read succeeds.
  label = {nullptr, offset};
  if (!file_read_at(stream, offset, shelf.bytes.get() + place * size, size)) return {nullptr, nullptr};
  label.stream = stream;
  if (kept.places != nullptr) kept.places->state = KeyPlaces::State::unknown;
  return kept;
}

// A file that is not attended has no answers: nobody would notice that it has changed.
std::optional<const LookupMemory::Kept*> LookupMemory::answer(const Question& question) const {
  const std::size_t file = file_of(question.dictionary);
  if (file == kNone || slots_ == nullptr) return std::nullopt;
  const Slot& slot = slot_of(file, question, std::hash<std::string_view>{}(question.key));
  return slot.epoch == epoch_ ? std::optional(slot.words) : std::nullopt;
}

void LookupMemory::answer_begin(const Question& question) {
  draft_.reset();
  const std::size_t file = file_of(question.dictionary);
  if (file == kNone || question.key.size() > kLargestKey || !has_room_for_answers()) return;
  // A long sentence may ask more than its share; one slot must stay free.
  if (count_ + 1 >= kAnswers) return;
  Draft& draft = draft_.emplace();
  draft = {question, std::hash<std::string_view>{}(question.key), static_cast<std::uint8_t>(file), nullptr, nullptr};
}

// Words are linked twice: as records of the memory, and as the list that a node can use as it stands.
LookupMemory::Kept* LookupMemory::answer_add(std::size_t text_bytes) {
  if (!draft_) return nullptr;
  std::uint8_t* room = take(sizeof(Kept) + text_bytes);
  if (room == nullptr) {
    draft_.reset();
    return nullptr;
  }
  auto* kept = new (room) Kept;
  kept->next = nullptr;
  if (draft_->last == nullptr) {
    draft_->words = kept;
  } else {
    draft_->last->next = kept;
    draft_->last->word.next = &kept->word;
  }
  draft_->last = kept;
  return kept;
}

// Only now does the answer get its slot, behind all its words: one that was given up on the way leaves nothing but room that
// is not used.
const LookupMemory::Kept* LookupMemory::answer_end() {
  if (!draft_) return nullptr;
  const Kept* words = nullptr;
  const std::string_view key = draft_->question.key;
  if (auto* copy = reinterpret_cast<char*>(take(key.size() + 1)); copy != nullptr) {
    key.copy(copy, key.size());
    Slot& slot = slot_of(draft_->file, draft_->question, draft_->hash);
    slot = {draft_->words, copy,
            draft_->hash,  static_cast<std::uint16_t>(key.size()),
            draft_->file,  static_cast<std::uint8_t>(draft_->question.key_field),
            epoch_};
    ++count_;
    words = draft_->words;
  }
  draft_.reset();
  return words;
}

std::size_t LookupMemory::file_of(const std::FILE* stream) const {
  std::size_t file = 0;
  while (file < kFiles && files_[file].stream != stream) ++file;
  return stream == nullptr ? kNone : file;
}

LookupMemory::Slot& LookupMemory::slot_of(std::size_t file, const Question& question, std::uint64_t hash) const {
  std::size_t at = hash % kAnswers;
  for (; slots_[at].epoch == epoch_; at = (at + 1) % kAnswers) {
    const Slot& slot = slots_[at];
    const bool may_be = slot.hash == hash && slot.file == file && slot.field == question.key_field;
    if (may_be && std::string_view(slot.key, slot.key_size) == question.key) break;
  }
  return slots_[at];
}

// Both live as long as the memory. `holds` asks for the bounds, which are set once the room is there.
bool LookupMemory::has_room_for_answers() {
  if (answers_ == nullptr) {
    answers_.reset(new (std::nothrow) std::uint8_t[kAnswerBytes]);
    if (answers_ == nullptr) return false;
    answers_begin_ = reinterpret_cast<std::uintptr_t>(answers_.get());
    answers_size_ = kAnswerBytes;
  }
  if (slots_ == nullptr) slots_.reset(static_cast<Slot*>(std::calloc(kAnswers, sizeof(Slot))));
  return slots_ != nullptr;
}

std::uint8_t* LookupMemory::take(std::size_t size) {
  if (size > kAnswerBytes - used_) return nullptr;
  std::uint8_t* room = answers_.get() + used_;
  used_ = std::min((used_ + size + alignof(Kept) - 1) / alignof(Kept) * alignof(Kept), kAnswerBytes);
  return room;
}

void LookupMemory::answers_forget() {
  ++epoch_;
  used_ = 0;
  count_ = 0;
}

void LookupMemory::forget() {
  if (used_ != 0) answers_forget();
  for (Shelf& shelf : shelves_) {
    for (std::size_t i = 0; shelf.labels != nullptr && i < kBlocks; ++i) shelf.labels[i].stream = nullptr;
  }
}

}  // namespace lexon
