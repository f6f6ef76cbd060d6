#include "dict/item_sort.hpp"

#include <algorithm>
#include <cstring>

#include "dict/layout.hpp"

namespace lexon {

namespace {

constexpr std::size_t kMaxItemSize = 65535;               // what its length field can tell
constexpr std::size_t kChunkSize = std::size_t{1} << 18;  // items lie in chunks of this size, none across two
constexpr std::size_t kLeastMemory = 4 * kChunkSize;
constexpr std::size_t kLeastSlots = 1024;
constexpr std::size_t kLargestRunBuffer = std::size_t{1} << 20;  // reads of this size are large enough

// The first eight bytes as a number of the same order, so that most comparisons need not look at the item.
std::uint64_t key_prefix(std::string_view key) {
  std::uint64_t prefix = 0;
  for (std::size_t i = 0; i < 8; ++i) {
    prefix = prefix << 8 | (i < key.size() ? static_cast<std::uint8_t>(key[i]) : 0U);
  }
  return prefix;
}

std::size_t item_size(ByteView item) {
  return load_u16(item.data());
}

}  // namespace

// A quarter for the slots, half of that again while they grow, the rest for the items.
ItemSorter::ItemSorter(std::size_t memory)
    : memory_(std::clamp<std::size_t>(memory, kLeastMemory, UINT32_MAX)),
      max_chunks_(memory_ / 8 * 5 / kChunkSize),
      max_slots_(memory_ / 4 / sizeof(Slot)) {}

// Places count through all chunks; an item that does not fit the rest of one begins the next.
std::size_t ItemSorter::place_for(std::size_t item_size) const {
  const std::size_t left = kChunkSize - used_ % kChunkSize;
  return item_size <= left ? used_ : used_ + left;
}

ByteView ItemSorter::item_at(std::uint32_t place) const {
  const std::uint8_t* item = chunks_[place / kChunkSize].get() + place % kChunkSize;
  return {item, load_u16(item)};
}

// For one more item, at `place`.
void ItemSorter::make_room(std::size_t place) {
  if (place / kChunkSize == chunks_.size()) {
    chunks_.push_back(std::make_unique_for_overwrite<std::uint8_t[]>(kChunkSize));
  }
  const bool must_grow = slots_.size() == slots_.capacity();
  if (must_grow) slots_.reserve(std::clamp(slots_.size() * 2, kLeastSlots, max_slots_));
}

// Items of one key stay in the order in which they were added, which is that of their places.
bool ItemSorter::comes_before(const Slot& a, const Slot& b) const {
  if (a.prefix != b.prefix) return a.prefix < b.prefix;
  const int order = key_compare(item_key(item_at(a.place)), item_key(item_at(b.place)));
  return order != 0 ? order < 0 : a.place < b.place;
}

bool ItemSorter::add(ByteView item) {
  const bool is_full = place_for(item.size()) / kChunkSize >= max_chunks_ || slots_.size() == max_slots_;
  if (is_full && !spill()) return false;
  const std::size_t place = place_for(item.size());
  make_room(place);
  std::copy(item.begin(), item.end(), chunks_[place / kChunkSize].get() + place % kChunkSize);
  slots_.push_back({key_prefix(item_key(item)), static_cast<std::uint32_t>(place)});
  used_ = place + item.size();
  return true;
}

// Places are part of the order, so that no two slots are equal and a plain sort keeps the order of adding.
void ItemSorter::sort_slots() {
  std::sort(slots_.begin(), slots_.end(), [this](const Slot& a, const Slot& b) { return comes_before(a, b); });
}

// Writes what is in memory as one sorted run behind those in the file, and begins anew.
bool ItemSorter::spill() {
  if (file_ == nullptr) file_ = unnamed_file();
  failed_ = file_ == nullptr;
  if (failed_) return false;
  sort_slots();
  const long begin = std::ftell(file_.get());
  long end = begin;
  for (const Slot& slot : slots_) {
    const ByteView item = item_at(slot.place);
    failed_ = failed_ || std::fwrite(item.data(), 1, item.size(), file_.get()) != item.size();
    end += static_cast<long>(item.size());
  }
  runs_.push_back({begin, end, {}, 0, {}});
  slots_.clear();
  used_ = 0;
  return !failed_;
}

bool ItemSorter::start_reading() {
  if (runs_.empty()) {
    sort_slots();
    return true;
  }
  if (!slots_.empty() && !spill()) return false;
  // From here on the memory belongs to the buffers of the runs. Each holds two of the longest items at least, so that one
  // always lies whole in it.
  chunks_.clear();
  slots_ = {};
  const std::size_t share = std::clamp(memory_ / runs_.size(), 2 * kMaxItemSize, kLargestRunBuffer);
  for (std::size_t i = 0; i < runs_.size(); ++i) {
    runs_[i].buffer.resize(share);
    runs_[i].at = share;
    advance(runs_[i]);
    push_run(i);
  }
  return !failed_;
}

// Moves what is left in the buffer to its front and reads on behind it.
void ItemSorter::refill(Run& run) {
  const std::size_t left = run.buffer.size() - run.at;
  const std::size_t wanted = std::min(run.at, static_cast<std::size_t>(run.end - run.begin));
  if (wanted == 0) return;
  std::memmove(run.buffer.data(), run.buffer.data() + run.at, left);
  failed_ = failed_ || std::fseek(file_.get(), run.begin, SEEK_SET) != 0 ||
            std::fread(run.buffer.data() + left, 1, wanted, file_.get()) != wanted;
  run.begin += static_cast<long>(wanted);
  run.buffer.resize(left + wanted);
  run.at = 0;
}

// The run's next item; empty at its end.
void ItemSorter::advance(Run& run) {
  run.item = {};
  const std::size_t left = run.buffer.size() - run.at;
  if (left < 2 || left < load_u16(run.buffer.data() + run.at)) refill(run);
  if (failed_ || run.at == run.buffer.size()) return;
  const ByteView rest = ByteView(run.buffer).subspan(run.at);
  run.item = rest.first(item_size(rest));
  run.at += run.item.size();
}

// Runs hold items in the order of their adding, so that among equal keys the earlier run comes first.
bool ItemSorter::is_behind(std::size_t run_a, std::size_t run_b) const {
  const int order = key_compare(item_key(runs_[run_a].item), item_key(runs_[run_b].item));
  return order != 0 ? order > 0 : run_a > run_b;
}

void ItemSorter::push_run(std::size_t run) {
  if (runs_[run].item.empty()) return;
  heap_.push_back(run);
  std::push_heap(heap_.begin(), heap_.end(), [this](std::size_t a, std::size_t b) { return is_behind(a, b); });
}

// The run of the last item moves on only now, so that the item stayed good until this call.
ByteView ItemSorter::next_of_runs() {
  if (taken_ != kNoRun) {
    advance(runs_[taken_]);
    push_run(taken_);
  }
  taken_ = kNoRun;
  if (failed_ || heap_.empty()) return {};
  std::pop_heap(heap_.begin(), heap_.end(), [this](std::size_t a, std::size_t b) { return is_behind(a, b); });
  taken_ = heap_.back();
  heap_.pop_back();
  return runs_[taken_].item;
}

ByteView ItemSorter::next() {
  if (!runs_.empty()) return next_of_runs();
  return slots_read_ == slots_.size() ? ByteView{} : item_at(slots_[slots_read_++].place);
}

}  // namespace lexon
