// For what is to be remembered by text, or by number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lexon {

// Numbers for texts: the first text gets 0, the next 1, and so on, up to a bound.
class KeyNumbers {
 public:
  // Forgets all; from now on there is room for `count` texts of `bytes` bytes together. Throws `std::bad_alloc`; no
  // other function allocates.
  void fit(std::size_t count, std::size_t bytes);

  // The number of a text, or -1.
  [[nodiscard]] std::int32_t find(std::string_view text) const;

  // Is this the number of the text? Any number may be asked for.
  [[nodiscard]] bool is_number_of(std::int32_t number, std::string_view text) const {
    const auto index = static_cast<std::size_t>(number);
    return index < entries_.size() && text_of(entries_[index]) == text;
  }

  // The number of a text that has none yet, or -1 if there is no room.
  [[nodiscard]] std::int32_t add(std::string_view text);

  void clear();

  [[nodiscard]] std::size_t count() const { return entries_.size(); }

 private:
  struct Entry {
    std::size_t hash;
    std::size_t begin;
    std::size_t size;
  };

  [[nodiscard]] std::string_view text_of(const Entry& entry) const {
    return std::string_view(texts_).substr(entry.begin, entry.size);
  }

  // The slot that holds the text, or the empty one where it belongs.
  [[nodiscard]] std::size_t slot_of(std::string_view text, std::size_t hash) const;

  static constexpr std::size_t kFirstSlots = 64;

  void slots_double();

  std::size_t most_ = 0;
  std::string texts_;
  std::vector<Entry> entries_;
  std::vector<std::int32_t> slots_;  // by hash: a number plus 1; 0: empty. At most half of them are taken
};

// Ranges of an array, each found by a number of 64 bits. Up to a bound.
class NumberedRanges {
 public:
  struct Range {
    std::uint64_t number;
    std::uint32_t begin;
    std::uint32_t count;
  };

  // Forgets all; from now on there is room for `count` ranges. Throws `std::bad_alloc`; no other function allocates.
  void fit(std::size_t count);

  // The range of a number, or null. Stands until the next `add`.
  [[nodiscard]] const Range* find(std::uint64_t number) const {
    const std::int32_t found = slots_[slot_of(number)];
    return found == 0 ? nullptr : &ranges_[static_cast<std::size_t>(found - 1)];
  }

  // Adds a range whose number has none yet. False if there is no room.
  [[nodiscard]] bool add(const Range& range);

  void clear();

 private:
  static constexpr std::size_t kFirstSlots = 64;

  // The slot that holds the number, or the free one where it belongs. The upper half of a product depends on all bits.
  [[nodiscard]] std::size_t slot_of(std::uint64_t number) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = static_cast<std::size_t>((number * 0x9E3779B97F4A7C15U) >> 32) & mask;
    while (slots_[slot] != 0 && ranges_[static_cast<std::size_t>(slots_[slot] - 1)].number != number)
      slot = (slot + 1) & mask;
    return slot;
  }

  std::size_t most_ = 0;
  std::vector<Range> ranges_;
  std::vector<std::int32_t> slots_;  // as for texts
};

}  // namespace lexon
