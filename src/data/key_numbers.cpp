#include "data/key_numbers.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace lexon {

namespace {

// Eight bytes a step: texts are long and asked for often, and nothing that is stored depends on the value.
std::size_t hash_of(std::string_view text) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;
  std::uint64_t hash = text.size();
  std::uint64_t word = 0;
  const auto mix = [&hash, &word] {
    hash = (hash ^ word) * kFactor;
    hash ^= hash >> 32;
  };
  if (text.size() < sizeof word) {
    for (const char c : text) word = word << 8 | static_cast<unsigned char>(c);
  } else {
    // The last eight bytes may have had a part in the step before, too.
    const char* const last = text.data() + text.size() - sizeof word;
    for (const char* at = text.data(); at < last; at += sizeof word) {
      std::memcpy(&word, at, sizeof word);
      mix();
    }
    std::memcpy(&word, last, sizeof word);
  }
  mix();
  return hash;
}

}  // namespace

// All memory is taken here, so that `add` fails only for being full: it is asked in the middle of a search.
void KeyNumbers::fit(std::size_t count, std::size_t bytes) {
  most_ = count;
  texts_.clear();
  texts_.reserve(bytes);
  entries_.clear();
  entries_.reserve(count);
  slots_.reserve(std::bit_ceil(count * 2 + 1));
  // Small at first: who clears it often should not have to fill what was never used.
  slots_.assign(kFirstSlots, 0);
}

void KeyNumbers::slots_double() {
  slots_.assign(slots_.size() * 2, 0);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    slots_[slot_of(text_of(entries_[i]), entries_[i].hash)] = static_cast<std::int32_t>(i + 1);
  }
}

// The slot that holds the text, or the free one where it belongs. At most half of the slots are taken, so one is free.
// A slot holds the number of its entry plus one; 0 is free.
std::size_t KeyNumbers::slot_of(std::string_view text, std::size_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  for (; slots_[slot] != 0; slot = (slot + 1) & mask) {
    const Entry& entry = entries_[static_cast<std::size_t>(slots_[slot] - 1)];
    if (entry.hash == hash && text_of(entry) == text) break;
  }
  return slot;
}

std::int32_t KeyNumbers::find(std::string_view text) const {
  return slots_[slot_of(text, hash_of(text))] - 1;
}

std::int32_t KeyNumbers::add(std::string_view text) {
  if (entries_.size() == most_ || texts_.capacity() - texts_.size() < text.size()) return -1;
  if ((entries_.size() + 1) * 2 > slots_.size()) slots_double();
  const std::size_t hash = hash_of(text);
  const std::size_t slot = slot_of(text, hash);
  entries_.push_back({hash, texts_.size(), text.size()});
  texts_.append(text);
  slots_[slot] = static_cast<std::int32_t>(entries_.size());
  return slots_[slot] - 1;
}

void KeyNumbers::clear() {
  texts_.clear();
  entries_.clear();
  std::fill(slots_.begin(), slots_.end(), 0);
}

// As for texts: all memory is taken here, and few slots are used at first.
void NumberedRanges::fit(std::size_t count) {
  most_ = count;
  ranges_.clear();
  ranges_.reserve(count);
  slots_.reserve(std::bit_ceil(count * 2 + 1));
  slots_.assign(kFirstSlots, 0);
}

bool NumberedRanges::add(const Range& range) {
  if (ranges_.size() == most_) return false;
  ranges_.push_back(range);
  const bool is_full = ranges_.size() * 2 > slots_.size();
  if (is_full) slots_.assign(slots_.size() * 2, 0);
  for (std::size_t i = is_full ? 0 : ranges_.size() - 1; i < ranges_.size(); ++i) {
    slots_[slot_of(ranges_[i].number)] = static_cast<std::int32_t>(i + 1);
  }
  return true;
}

void NumberedRanges::clear() {
  ranges_.clear();
  std::fill(slots_.begin(), slots_.end(), 0);
}

}  // namespace lexon
