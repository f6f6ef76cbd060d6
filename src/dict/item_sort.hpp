// Sorting any number of keyed items with bounded memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "data/bytes.hpp"
#include "data/platform.hpp"

namespace lexon {

// An item is a run of bytes that begins with its own size (2) and a key: length (2), text. Dictionary records are
// items whose key is the surface form. Items come out by key, equal keys in the order of adding.
//
// Items gather in memory until it is full; then they go as a sorted run to an unnamed temporary file, and reading
// merges the runs. The memory given is a bound for both times. Nothing is written if it all fits.
class ItemSorter {
 public:
  explicit ItemSorter(std::size_t memory);

  // False if the temporary file fails. Items are added first, then read; there is no way back.
  [[nodiscard]] bool add(ByteView item);
  [[nodiscard]] bool start_reading();

  // The next item, good until the next call; empty at the end, and when the temporary file fails.
  [[nodiscard]] ByteView next();
  [[nodiscard]] bool failed() const { return failed_; }

 private:
  // An item in memory, by its place in the chunks. `prefix` holds the first eight bytes of its key and decides most
  // comparisons.
  struct Slot {
    std::uint64_t prefix;
    std::uint32_t place;
  };

  // A run that is being read: what is left of it in the file, and what of it is in memory.
  struct Run {
    long begin;
    long end;
    Bytes buffer;
    std::size_t at;
    ByteView item;  // in `buffer`; empty at the end of the run
  };

  [[nodiscard]] std::size_t place_for(std::size_t item_size) const;
  void make_room(std::size_t place);
  [[nodiscard]] ByteView item_at(std::uint32_t place) const;
  [[nodiscard]] bool comes_before(const Slot& a, const Slot& b) const;
  [[nodiscard]] bool spill();
  void sort_slots();
  void advance(Run& run);
  void refill(Run& run);
  [[nodiscard]] bool is_behind(std::size_t run_a, std::size_t run_b) const;
  void push_run(std::size_t run);
  ByteView next_of_runs();

  std::size_t memory_;
  std::size_t max_chunks_;
  std::size_t max_slots_;
  std::vector<std::unique_ptr<std::uint8_t[]>> chunks_;  // an item never crosses from one to the next
  std::size_t used_ = 0;                                 // place behind the last item
  std::vector<Slot> slots_;
  std::size_t slots_read_ = 0;
  File file_;
  std::vector<Run> runs_;
  std::vector<std::size_t> heap_;  // runs by their next item
  std::size_t taken_ = kNoRun;     // the run that the last item came from
  bool failed_ = false;

  static constexpr std::size_t kNoRun = static_cast<std::size_t>(-1);
};

// The key of an item.
[[nodiscard]] inline std::string_view item_key(ByteView item) {
  return as_text(item.subspan(4, load_u16(item.data() + 2)));
}

}  // namespace lexon
