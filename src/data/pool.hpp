// A pool of memory cells: one for the rules of a grammar, one for everything of a sentence.
//
// Requests up to 4096 bytes are served in nine size classes from blocks of at most 65535 bytes; larger ones go to the
// heap, and belong to the pool all the same. A cell carries no header: whoever gives it back says its size. Cells are
// not cleared. A pool is not thread-safe.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// Under the address sanitizer a cell can be touched only while it is given out, so that a use after release shows.
#if defined(__SANITIZE_ADDRESS__)
#define LEXON_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LEXON_ADDRESS_SANITIZER 1
#endif
#endif

// Builds that look for overruns keep cells apart: so many bytes behind each cell belong to nobody.
#ifndef LEXON_CELL_GUARD
#define LEXON_CELL_GUARD 0
#endif

namespace lexon {

// Blocks of the rules and of a sentence together, unless a run asks for more: some 13 MB.
inline constexpr int kMaxBlocks = 200;
inline constexpr std::int32_t kFirstBlockSize = 65535;

// For tests: refuses cells and blocks of the pools that look at it.
struct AllocationFault {
  std::int64_t countdown;  // the request of this number from now on is refused; 0: none
  bool lasting;            // so are all behind it

  // Is the present request to be refused? To be asked once for each.
  [[nodiscard]] bool refuses() {
    if (countdown == 0) return false;
    if (--countdown != 0) return false;
    if (lasting) countdown = 1;
    return true;
  }
};

class Pool {
 public:
  Pool() = default;
  ~Pool();
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  // A cell of at least `size` bytes, which lives until it is given back or `release_all`. Null if `size` is below 1,
  // or when memory is exhausted.
  [[nodiscard]] void* alloc(std::int64_t size) {
    void* cell = kHasQuickCells && size >= 1 && size <= kLargestCell ? quick_cell(class_of(size)) : nullptr;
    return cell != nullptr ? cell : alloc_slowly(size);
  }

  // Gives a cell back to the class of `size`, which must be the class it came from. Ignores null.
  void free(void* cell, std::int64_t size) {
    if (!kHasQuickCells || cell == nullptr || size < 1 || size > kLargestCell) return free_slowly(cell, size);
    const std::size_t index = class_of(size);
    free_[index] = new (cell) FreeCell{free_[index]};
  }

  // How large the cell is that a request of `size` gets.
  [[nodiscard]] static constexpr std::int64_t cell_size(std::int64_t size) { return kCellSizes[class_of(size)]; }

  // For many small cells of two sizes at once: where the next ones stand, one behind the other, if `bytes` of them do; null if
  // they are to be asked for one by one. Nothing is given out before `row_take`, which tells where the last cell ends; no
  // other request may stand between the two.
  [[nodiscard]] char* row_begin(std::int64_t size, std::int64_t other_size, std::int64_t bytes) const {
    const std::size_t index = class_of(size);
    const std::size_t other = class_of(other_size);
    const bool is_free = kHasQuickCells && kCellGuard == 0 && fault_ == nullptr && free_[index] == nullptr &&
                         free_[other] == nullptr && open_[index] != nullptr && open_[index] == open_[other];
    if (!is_free || bytes > block_size_ - open_[index]->used) return nullptr;
    return open_[index]->start + open_[index]->used;
  }
  void row_take(std::int64_t size, const char* end) {
    Block& block = *open_[class_of(size)];
    block.used = static_cast<std::int32_t>(end - block.start);
  }

  // Promises cells that will be asked for later, or never: until they are taken back, one by one or together, promises fill
  // the pool as the cells would. False if it is exhausted so: then only cells that come back are given out, none of this size.
  [[nodiscard]] bool promise(std::int64_t size, std::int64_t cells) {
    promised_ += cell_size(size) * cells;
    if (blocks() + promised_ / kFirstBlockSize <= max_blocks_) return true;
    fill(class_of(size));
    return false;
  }
  void promise_take_back(std::int64_t size, std::int64_t cells) { promised_ -= cell_size(size) * cells; }

  // Frees every cell, and forgets what was promised. The blocks begin anew; some are kept for the next sentence, and count for nothing until then.
  void release_all();

  // How many blocks it may hold from now on; those that it holds stay. Takes the room to list them: from here on `alloc`
  // throws nothing. Throws `std::bad_alloc`.
  void limit_blocks(int blocks);
  void set_fault(AllocationFault* fault) { fault_ = fault; }

  [[nodiscard]] int max_blocks() const { return max_blocks_; }
  [[nodiscard]] int blocks() const { return static_cast<int>(blocks_.size()); }
  // Bytes given out from the blocks' starts; cells that came back count.
  [[nodiscard]] std::int64_t bytes_used() const;
  // Has a request been refused since the last `release_all`?
  [[nodiscard]] bool is_exhausted() const { return exhausted_; }

 private:
  static constexpr std::array<std::int32_t, 9> kCellSizes = {8, 16, 32, 64, 128, 256, 512, 1024, 4096};
  static constexpr std::int64_t kLargestCell = kCellSizes.back();
  static constexpr std::int32_t kCellGuard = LEXON_CELL_GUARD;
#ifdef LEXON_ADDRESS_SANITIZER
  static constexpr bool kHasQuickCells = false;
#else
  static constexpr bool kHasQuickCells = true;
#endif

  struct FreeCell {
    FreeCell* next;
  };
  struct Block {
    std::int32_t used;  // bytes given out from the start
    char* start;
  };
  // What stands in front of a cell that is too large for the blocks.
  struct alignas(std::max_align_t) LargeCell {
    LargeCell* next;
    LargeCell* before;
  };

  // Blocks that are kept: 1 MB, more than most sentences fill.
  static constexpr std::size_t kMostSpare = 16;

  // The classes are the powers of two from 8 on, but for the last.
  [[nodiscard]] static constexpr std::size_t class_of(std::int64_t size) {
    constexpr std::uint64_t kSmallest = static_cast<std::uint64_t>(kCellSizes.front());
    const auto steps = std::bit_width(((static_cast<std::uint64_t>(size) - 1) | (kSmallest - 1)) / kSmallest);
    return std::min(static_cast<std::size_t>(steps), kCellSizes.size() - 1);
  }

  // A cell that came back, or the next of the block that is open for the class; null if it takes more than that.
  [[nodiscard]] void* quick_cell(std::size_t index) {
    if (fault_ != nullptr) return nullptr;
    if (FreeCell* cell = free_[index]; cell != nullptr) {
      free_[index] = cell->next;
      return cell;
    }
    Block* const block = open_[index];
    if (block == nullptr) return nullptr;
    const std::int32_t used = block->used + kCellSizes[index] + kCellGuard;
    if (used > block_size_) return nullptr;
    return block->start + std::exchange(block->used, used);
  }
  void* alloc_slowly(std::int64_t size);
  void free_slowly(void* cell, std::int64_t size);
  void fill(std::size_t index);

  [[nodiscard]] char* new_block();
  static void block_free(char* start);
  void large_cells_free();
  void* serve(std::int64_t size);
  void* serve_from_blocks(std::size_t& first_open, std::int32_t stride);
  void* serve_from_new_block(std::int32_t stride);
  void* serve_large(std::int64_t size);

  int max_blocks_ = kMaxBlocks;
  std::int32_t block_size_ = kFirstBlockSize;  // halved when the heap refuses a block, until `release_all`
  bool exhausted_ = false;
  std::int64_t promised_ = 0;  // bytes of cells
  AllocationFault* fault_ = nullptr;
  std::vector<Block> blocks_;
  std::array<char*, kMostSpare> spare_{};  // blocks of the first size, given out before the heap is asked
  std::size_t spares_ = 0;
  // By size class: the cells that came back, and the first block that may still have room. A block that has refused
  // a class stays full for it.
  std::array<FreeCell*, kCellSizes.size()> free_{};
  std::array<std::size_t, kCellSizes.size()> first_open_{};
  std::array<Block*, kCellSizes.size()>
      open_{};         // the same block; null: to be looked for. Blocks move when their list grows
  LargeCell large_{};  // heads the large cells
};

// A terminated copy of `text`, or null.
[[nodiscard]] char* perm_text(Pool& pool, std::string_view text);

// A record of zeros in `cell`. It is cleared piece by piece, since for more than some 100 bytes at once compilers take an
// instruction for memory of any size, which is slow to begin.
template <typename Record>
[[nodiscard]] Record* zeroed_record(void* cell) {
  static_assert(std::is_trivial_v<Record>);
  constexpr std::size_t kPiece = 64;
  auto* const record = new (cell) Record;
  auto* const bytes = reinterpret_cast<char*>(record);
  for (std::size_t at = 0; at + kPiece <= sizeof(Record); at += kPiece) std::memset(bytes + at, 0, kPiece);
  std::memset(bytes + sizeof(Record) / kPiece * kPiece, 0, sizeof(Record) % kPiece);
  return record;
}

// A zeroed record, or null. Released with `perm_delete`.
template <typename Record>
[[nodiscard]] Record* perm_new(Pool& pool) {
  void* cell = pool.alloc(static_cast<std::int64_t>(sizeof(Record)));
  return cell == nullptr ? nullptr : zeroed_record<Record>(cell);
}

template <typename Record>
void perm_delete(Pool& pool, Record* record) {
  pool.free(record, static_cast<std::int64_t>(sizeof(Record)));
}

// `memcpy` for texts, of which most are short: up to 16 bytes go in two moves that may overlap.
inline void text_copy(char* to, const char* from, std::size_t size) {
  const auto move_ends = [&](auto word) {
    using Word = decltype(word);
    Word first;
    Word last;
    std::memcpy(&first, from, sizeof(Word));
    std::memcpy(&last, from + size - sizeof(Word), sizeof(Word));
    std::memcpy(to, &first, sizeof(Word));
    std::memcpy(to + size - sizeof(Word), &last, sizeof(Word));
  };
  if (size > 16) {
    std::memcpy(to, from, size);
  } else if (size >= 8) {
    move_ends(std::uint64_t{});
  } else if (size >= 4) {
    move_ends(std::uint32_t{});
  } else {
    for (std::size_t i = 0; i < size; ++i) to[i] = from[i];
  }
}

// Heap memory for what outlives pools; null if `size` is below 1 or the heap refuses. Freed by `heap_free_clear`.
[[nodiscard]] void* checked_malloc(std::int64_t size);

// Frees what `pointer` holds, if anything, and sets it to null.
void heap_free_clear(void*& pointer);

// The first place of `c` in `text`, or null. Never finds the terminator; null for a null text.
[[nodiscard]] const char* find_char(const char* text, char c);

}  // namespace lexon
