// Two pools with one mechanism: one for the rules of a run, one for everything of a sentence.
//
// Requests up to 4096 bytes are served in nine size classes from blocks of at most 65535 bytes; larger ones go to
// the heap. A cell carries no header: whoever gives it back says its size. Cells are not cleared. Not thread-safe.
//
// A request that is refused also sets `state.abort` to `memory`: the step in hand ends, whether or not the caller could
// go on without the cell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <type_traits>

namespace lexon {

// A cell of at least `size` bytes from the permanent pool; it lives for the run. Null if `size` is below 1 or
// memory is exhausted. Must not be called while the sentence's pool holds blocks.
[[nodiscard]] void* perm_alloc(std::int64_t size);

// Gives a cell back to the class of `size`, which must be the class it came from. Ignores null.
void perm_free(void* cell, std::int64_t size);

// As `perm_alloc` and `perm_free`, from the sentence's pool; all its cells die in `temp_release_all`.
[[nodiscard]] void* temp_alloc(std::int64_t size);
void temp_free(void* cell, std::int64_t size);

// Gives a string back by its present length plus 1. Ignores null and the empty string.
void temp_free_string(char* text);

// Frees every block of the sentence's pool, and its cells above 4096 bytes, and clears its free lists. Always returns
// 0.
int temp_release_all();

// How many blocks of 65535 bytes both pools may have together: 200 unless told otherwise. To be set while both are
// empty. False, and nothing changes, if there is no memory for their table.
[[nodiscard]] bool pool_blocks_allow(int blocks);

// Frees every block of both pools: the rules of the run are gone with all else. For a program that makes another run.
// The permanent pool's cells above 4096 bytes are not covered.
void perm_release_all();

// Heap memory for what outlives pools; null if `size` is below 1 or the heap refuses. Freed by `heap_free_clear`.
[[nodiscard]] void* checked_malloc(std::int64_t size);

// Frees what `pointer` holds, if anything, and sets it to null.
void heap_free_clear(void*& pointer);

// The first place of `c` in `text`, or null. Never finds the terminator; null for a null text.
[[nodiscard]] const char* find_char(const char* text, char c);

// A zeroed record from the sentence's pool, or null. Released with `temp_delete`.
template <typename Record>
[[nodiscard]] Record* temp_new() {
  static_assert(std::is_trivially_destructible_v<Record>);
  void* cell = temp_alloc(static_cast<std::int64_t>(sizeof(Record)));
  if (cell == nullptr) return nullptr;
  return new (cell) Record{};
}

template <typename Record>
void temp_delete(Record* record) {
  temp_free(record, static_cast<std::int64_t>(sizeof(Record)));
}

// The same from the permanent pool.
template <typename Record>
[[nodiscard]] Record* perm_new() {
  static_assert(std::is_trivially_destructible_v<Record>);
  void* cell = perm_alloc(static_cast<std::int64_t>(sizeof(Record)));
  if (cell == nullptr) return nullptr;
  return new (cell) Record{};
}

template <typename Record>
void perm_delete(Record* record) {
  perm_free(record, static_cast<std::int64_t>(sizeof(Record)));
}

// A terminated copy of `text` in the sentence's pool, or null.
[[nodiscard]] char* temp_text(std::string_view text);

// A terminated copy of `text` in the permanent pool, or null.
[[nodiscard]] char* perm_text(std::string_view text);

// For tests: refuses allocations of the core, cells, blocks and heap memory alike.
struct AllocationFault {
  std::int64_t countdown;  // the request of this number from now on is refused; 0: none
  bool lasting;            // so are all behind it
};
extern AllocationFault allocation_fault;

// Is the request in hand to be refused? To be asked once for each.
[[nodiscard]] inline bool allocation_refused() {
  if (allocation_fault.countdown == 0) return false;
  if (--allocation_fault.countdown != 0) return false;
  if (allocation_fault.lasting) allocation_fault.countdown = 1;
  return true;
}

// What the pools hold at present, for tests and benchmarks.
struct PoolFigures {
  int permanent_blocks;
  int sentence_blocks;
  std::int64_t sentence_bytes_used;  // given out from the blocks' starts; cells on free lists count
  std::int64_t permanent_bytes_used;
  std::int64_t room_bytes;  // of all blocks that there may be
};
[[nodiscard]] PoolFigures pool_figures();

}  // namespace lexon
