#include "data/pool.hpp"

#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "data/state.hpp"

#if defined(__SANITIZE_ADDRESS__)
#define LEXON_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LEXON_ADDRESS_SANITIZER 1
#endif
#endif
#ifdef LEXON_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

// Builds that look for overruns keep cells apart.
#ifndef LEXON_CELL_GUARD
#define LEXON_CELL_GUARD 0
#endif

namespace lexon {

constinit AllocationFault allocation_fault{};

namespace {

// Under the address sanitizer a cell can be touched only while it is given out, so that a use after release shows.
#ifdef LEXON_ADDRESS_SANITIZER
void forbid(void* start, std::size_t size) {
  ASAN_POISON_MEMORY_REGION(start, size);
}
void allow(void* start, std::size_t size) {
  ASAN_UNPOISON_MEMORY_REGION(start, size);
}
#else
void forbid(void*, std::size_t) {}
void allow(void*, std::size_t) {}
#endif

constexpr std::array<std::int32_t, 9> kCellSizes = {8, 16, 32, 64, 128, 256, 512, 1024, 4096};
constexpr std::int64_t kLargestCell = kCellSizes.back();
constexpr std::int32_t kCellGuard = LEXON_CELL_GUARD;  // bytes behind each cell that belong to nobody
constexpr std::int32_t kFirstBlockSize = 65535;
constexpr int kUsualBlocks = 200;  // of both pools together

struct FreeCell {
  FreeCell* next;
};
static_assert(sizeof(FreeCell) <= static_cast<std::size_t>(kCellSizes.front()));

struct Block {
  std::int32_t used;  // bytes given out from the start
  char* start;
};

// What each pool keeps by size class: the released cells, and the first block that may still have room. A block that
// has refused a class stays full for it.
struct Classes {
  std::array<FreeCell*, kCellSizes.size()> free;
  std::array<int, kCellSizes.size()> first_open;
};

// What stands in front of a cell of the sentence's pool that is too large for the blocks. Such cells go with the
// sentence too, whoever still holds them.
struct alignas(std::max_align_t) LargeCell {
  LargeCell* next;
  LargeCell* before;
};

// The permanent pool owns the blocks in front of `permanent_count`, the sentence's pool those from there to
// `top_count`.
struct Pools {
  std::int32_t block_size = kFirstBlockSize;
  int permanent_count = 0;
  int top_count = 0;
  int most_blocks = kUsualBlocks;
  std::array<Block, kUsualBlocks> usual_blocks{};
  Block* more_blocks = nullptr;  // the table of those behind, if more are allowed
  Classes permanent{};
  Classes sentence{};
  LargeCell large{};  // heads the sentence's large cells
};

constinit Pools pools;

Block& block_at(int number) {
  return number < kUsualBlocks ? pools.usual_blocks[static_cast<std::size_t>(number)]
                               : pools.more_blocks[number - kUsualBlocks];
}

std::size_t class_of(std::int64_t size) {
  std::size_t index = 0;
  while (kCellSizes[index] < size) ++index;
  return index;
}

// A range of the block table, and the count that grows with a new block.
struct Range {
  int first;
  int& end;
};

void* serve_from_blocks(const Range& range, int& first_open, std::int32_t cell_size) {
  if (first_open < range.first) first_open = range.first;
  for (; first_open < range.end; ++first_open) {
    Block& block = block_at(first_open);
    if (block.used + cell_size > pools.block_size) continue;
    void* cell = block.start + block.used;
    block.used += cell_size;
    return cell;
  }
  return nullptr;
}

// The permanent pool must not grow while the sentence's pool holds blocks; should it, that pool's first entry moves.
void make_room_for_permanent_block() {
  if (pools.top_count <= pools.permanent_count || pools.top_count >= pools.most_blocks) return;
  block_at(pools.top_count++) = std::exchange(block_at(pools.permanent_count), {});
}

// Halves the block size as long as the heap refuses; the lowered size stays.
void* serve_from_new_block(const Range& range, std::int32_t cell_size) {
  if (range.end >= pools.most_blocks || pools.top_count >= pools.most_blocks) return nullptr;
  if (&range.end == &pools.permanent_count) make_room_for_permanent_block();
  for (; cell_size <= pools.block_size; pools.block_size /= 2) {
    auto* start = static_cast<char*>(checked_malloc(pools.block_size));
    if (start == nullptr) continue;
    block_at(range.end) = {cell_size, start};
    ++range.end;
    forbid(start, static_cast<std::size_t>(pools.block_size));
    return start;
  }
  return nullptr;
}

void* large_alloc(std::int64_t size) {
  auto* cell = static_cast<LargeCell*>(checked_malloc(static_cast<std::int64_t>(sizeof(LargeCell)) + size));
  if (cell == nullptr) return nullptr;
  *cell = {pools.large.next, &pools.large};
  if (cell->next != nullptr) cell->next->before = cell;
  pools.large.next = cell;
  return cell + 1;
}

void large_free(LargeCell* cell) {
  cell->before->next = cell->next;
  if (cell->next != nullptr) cell->next->before = cell->before;
  std::free(cell);
}

void* class_alloc(Classes& classes, const Range& range, std::int64_t size) {
  if (allocation_refused()) return nullptr;
  const std::size_t index = class_of(size);
  void* cell = classes.free[index];
  if (cell != nullptr) {
    classes.free[index] = classes.free[index]->next;
  } else {
    const std::int32_t stride = kCellSizes[index] + kCellGuard;
    cell = serve_from_blocks(range, classes.first_open[index], stride);
    if (cell == nullptr) cell = serve_from_new_block(range, stride);
  }
  if (cell != nullptr) allow(cell, static_cast<std::size_t>(size));
  return cell;
}

// A refusal ends the step, also where the caller could go on without the cell: what is half done must not pass for
// whole.
void* or_abort(void* cell) {
  if (cell == nullptr && state.abort == Status::ok) state.abort = Status::memory;
  return cell;
}

void class_free(Classes& classes, void* cell, std::int64_t size) {
  const std::size_t index = class_of(size);
  FreeCell*& head = classes.free[index];
  forbid(cell, static_cast<std::size_t>(kCellSizes[index]));
  allow(cell, sizeof(FreeCell));
  head = new (cell) FreeCell{head};
}

void clear_blocks_from(int first) {
  for (int i = first; i < pools.most_blocks; ++i) block_at(i) = {};
}

void free_blocks_from(int first) {
  for (int i = first; i < pools.top_count; ++i) {
    Block& block = block_at(i);
    allow(block.start, static_cast<std::size_t>(kFirstBlockSize));
    std::free(block.start);
    block = {};
  }
  pools.top_count = first;
}

char* text_in(void* cell, std::string_view text) {
  if (cell == nullptr) return nullptr;
  auto* copy = static_cast<char*>(cell);
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

}  // namespace

void* perm_alloc(std::int64_t size) {
  const bool is_first_use = pools.permanent_count == 0 && pools.top_count == 0;
  if (is_first_use) {
    pools.block_size = kFirstBlockSize;
    clear_blocks_from(0);
    pools.permanent = {};
  }
  if (size < 1) return nullptr;
  if (size > kLargestCell) return or_abort(checked_malloc(size));
  void* cell = class_alloc(pools.permanent, {0, pools.permanent_count}, size);
  if (pools.top_count < pools.permanent_count) pools.top_count = pools.permanent_count;
  return or_abort(cell);
}

void perm_free(void* cell, std::int64_t size) {
  if (cell == nullptr || size < 1) return;
  if (size > kLargestCell) return heap_free_clear(cell);
  class_free(pools.permanent, cell, size);
}

void* temp_alloc(std::int64_t size) {
  if (pools.top_count <= pools.permanent_count) {
    pools.block_size = kFirstBlockSize;
    clear_blocks_from(pools.permanent_count);
    pools.sentence = {};
    pools.top_count = pools.permanent_count;
  }
  if (size < 1) return nullptr;
  if (size > kLargestCell) return or_abort(large_alloc(size));
  return or_abort(class_alloc(pools.sentence, {pools.permanent_count, pools.top_count}, size));
}

void temp_free(void* cell, std::int64_t size) {
  if (cell == nullptr || size < 1) return;
  if (size > kLargestCell) return large_free(static_cast<LargeCell*>(cell) - 1);
  class_free(pools.sentence, cell, size);
}

void temp_free_string(char* text) {
  if (text == nullptr || *text == '\0') return;
  temp_free(text, static_cast<std::int64_t>(std::strlen(text)) + 1);
}

int temp_release_all() {
  LargeCell* cell = std::exchange(pools.large.next, nullptr);
  while (cell != nullptr) std::free(std::exchange(cell, cell->next));
  free_blocks_from(pools.permanent_count);
  pools.sentence = {};
  return 0;
}

bool pool_blocks_allow(int blocks) {
  Block* more = nullptr;
  if (blocks > kUsualBlocks) {
    more = static_cast<Block*>(std::calloc(static_cast<std::size_t>(blocks - kUsualBlocks), sizeof(Block)));
    if (more == nullptr) return false;
  }
  std::free(std::exchange(pools.more_blocks, more));
  pools.most_blocks = blocks;
  return true;
}

void perm_release_all() {
  static_cast<void>(temp_release_all());
  pools.permanent_count = 0;
  free_blocks_from(0);
  const int most_blocks = pools.most_blocks;
  Block* const more_blocks = pools.more_blocks;
  pools = {};
  pools.most_blocks = most_blocks;
  pools.more_blocks = more_blocks;
}

void* checked_malloc(std::int64_t size) {
  return size < 1 || allocation_refused() ? nullptr : std::malloc(static_cast<std::size_t>(size));
}

void heap_free_clear(void*& pointer) {
  std::free(pointer);
  pointer = nullptr;
}

const char* find_char(const char* text, char c) {
  return text == nullptr || c == '\0' ? nullptr : std::strchr(text, c);
}

char* temp_text(std::string_view text) {
  return text_in(temp_alloc(static_cast<std::int64_t>(text.size()) + 1), text);
}

char* perm_text(std::string_view text) {
  return text_in(perm_alloc(static_cast<std::int64_t>(text.size()) + 1), text);
}

PoolFigures pool_figures() {
  PoolFigures figures{};
  figures.permanent_blocks = pools.permanent_count;
  figures.room_bytes = std::int64_t{pools.most_blocks} * kFirstBlockSize;
  for (int i = 0; i < pools.permanent_count; ++i) figures.permanent_bytes_used += block_at(i).used;
  for (int i = pools.permanent_count; i < pools.top_count; ++i) {
    ++figures.sentence_blocks;
    figures.sentence_bytes_used += block_at(i).used;
  }
  return figures;
}

}  // namespace lexon
