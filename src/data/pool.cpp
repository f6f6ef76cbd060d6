#include "data/pool.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#ifdef LEXON_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace lexon {

namespace {

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

}  // namespace

Pool::~Pool() {
  large_cells_free();
  for (const Block& block : blocks_) block_free(block.start);
  for (std::size_t i = 0; i < spares_; ++i) block_free(spare_[i]);
}

void Pool::block_free(char* start) {
  allow(start, static_cast<std::size_t>(kFirstBlockSize));
  std::free(start);
}

void* Pool::serve_from_blocks(std::size_t& first_open, std::int32_t stride) {
  // Each class of cells remembers the first block that may still have room for it, and never looks at earlier ones
  // again.
  for (; first_open < blocks_.size(); ++first_open) {
    Block& block = blocks_[first_open];
    if (block.used + stride > block_size_) continue;
    void* cell = block.start + block.used;
    block.used += stride;
    return cell;
  }
  return nullptr;
}

// A block of the present size, or null.
char* Pool::new_block() {
  const bool has_spare = block_size_ == kFirstBlockSize && spares_ != 0;
  return has_spare ? spare_[--spares_] : static_cast<char*>(checked_malloc(block_size_));
}

void Pool::limit_blocks(int blocks) {
  max_blocks_ = blocks;
  blocks_.reserve(static_cast<std::size_t>(std::max(blocks, 0)));
  open_ = {};
}

// Halves the block size as long as the heap refuses; the lowered size stays.
void* Pool::serve_from_new_block(std::int32_t stride) {
  if (blocks() + promised_ / kFirstBlockSize >= max_blocks_) return nullptr;
  if (blocks_.empty()) limit_blocks(max_blocks_);
  for (; stride <= block_size_; block_size_ /= 2) {
    if (fault_ != nullptr && fault_->refuses()) continue;
    // The cell that is asked for is the first of its block.
    char* start = new_block();
    if (start == nullptr) continue;
    blocks_.push_back({stride, start});
    forbid(start, static_cast<std::size_t>(block_size_));
    return start;
  }
  return nullptr;
}

// Cells beyond the largest class come from the heap. They stand in a list with links both ways, so that one can leave
// it at once, and all can be given back together.
void* Pool::serve_large(std::int64_t size) {
  auto* cell = static_cast<LargeCell*>(checked_malloc(static_cast<std::int64_t>(sizeof(LargeCell)) + size));
  if (cell == nullptr) return nullptr;
  *cell = {large_.next, &large_};
  if (cell->next != nullptr) cell->next->before = cell;
  large_.next = cell;
  return cell + 1;
}

void* Pool::serve(std::int64_t size) {
  if (fault_ != nullptr && fault_->refuses()) return nullptr;
  if (size > kLargestCell) return serve_large(size);
  const std::size_t index = class_of(size);
  void* cell = free_[index];
  if (cell != nullptr) {
    free_[index] = free_[index]->next;
  } else {
    const std::int32_t stride = kCellSizes[index] + kCellGuard;
    // The stride is larger than the cell where a fuzzer looks for writes behind a cell.
    cell = serve_from_blocks(first_open_[index], stride);
    if (cell == nullptr) cell = serve_from_new_block(stride);
    open_[index] = cell == nullptr ? nullptr : &blocks_[first_open_[index]];
  }
  if (cell != nullptr) allow(cell, static_cast<std::size_t>(size));
  return cell;
}

void* Pool::alloc_slowly(std::int64_t size) {
  if (size < 1) return nullptr;
  void* cell = serve(size);
  exhausted_ = exhausted_ || cell == nullptr;
  return cell;
}

void Pool::free_slowly(void* cell, std::int64_t size) {
  if (cell == nullptr || size < 1) return;
  if (size > kLargestCell) {
    LargeCell* large = static_cast<LargeCell*>(cell) - 1;
    large->before->next = large->next;
    if (large->next != nullptr) large->next->before = large->before;
    return std::free(large);
  }
  const std::size_t index = class_of(size);
  // A free cell holds the link to the next one of its class, and nothing else may be touched in it.
  forbid(cell, static_cast<std::size_t>(kCellSizes[index]));
  allow(cell, sizeof(FreeCell));
  free_[index] = new (cell) FreeCell{free_[index]};
}

// What is still free counts as given out.
void Pool::fill(std::size_t index) {
  open_ = {};
  first_open_.fill(blocks_.size());
  free_[index] = nullptr;
  exhausted_ = true;
}

void Pool::large_cells_free() {
  LargeCell* cell = std::exchange(large_.next, nullptr);
  while (cell != nullptr) std::free(std::exchange(cell, cell->next));
}

void Pool::release_all() {
  large_cells_free();
  // Once the heap has refused a block, there are smaller ones among them.
  const bool may_keep = block_size_ == kFirstBlockSize;
  for (const Block& block : blocks_) {
    if (may_keep && spares_ < kMostSpare) {
      forbid(block.start, static_cast<std::size_t>(kFirstBlockSize));
      spare_[spares_++] = block.start;
    } else {
      block_free(block.start);
    }
  }
  blocks_.clear();
  free_ = {};
  first_open_ = {};
  open_ = {};
  block_size_ = kFirstBlockSize;
  exhausted_ = false;
  promised_ = 0;
}

std::int64_t Pool::bytes_used() const {
  std::int64_t bytes = 0;
  for (const Block& block : blocks_) bytes += block.used;
  return bytes;
}

char* perm_text(Pool& pool, std::string_view text) {
  auto* copy = static_cast<char*>(pool.alloc(static_cast<std::int64_t>(text.size()) + 1));
  if (copy == nullptr) return nullptr;
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

void* checked_malloc(std::int64_t size) {
  return size < 1 ? nullptr : std::malloc(static_cast<std::size_t>(size));
}

void heap_free_clear(void*& pointer) {
  std::free(pointer);
  pointer = nullptr;
}

const char* find_char(const char* text, char c) {
  return text == nullptr || c == '\0' ? nullptr : std::strchr(text, c);
}

}  // namespace lexon
