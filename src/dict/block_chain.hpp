// Reading whole blocks of the dictionary and index files, and walking the chains that they form.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "data/bytes.hpp"
#include "data/platform.hpp"
#include "dict/layout.hpp"

namespace lexon {

// One block of a file in hand. It is not cleared: a block is read before it is looked at.
template <std::size_t Size>
class Block {
 public:
  // Reads the whole block; false if the file does not hold all of it.
  [[nodiscard]] bool read(std::FILE* stream, std::int64_t offset) {
    return file_read_at(stream, offset, bytes_.data(), Size);
  }

  [[nodiscard]] const std::array<std::uint8_t, Size>& bytes() const { return bytes_; }
  // Up to the used length, which never reaches into the link.
  [[nodiscard]] ByteView content() const {
    const std::size_t used = load_u16(bytes_.data());
    return {bytes_.data(), used < kLink ? used : kLink};
  }
  [[nodiscard]] std::uint16_t next() const { return load_u16(bytes_.data() + kLink); }

 private:
  static constexpr std::size_t kLink = Size - 2;

  std::array<std::uint8_t, Size> bytes_;
};

using DictBlock = Block<kDictBlockSize>;
using IndexBlock = Block<kIndexBlockSize>;
static_assert(kDictLinkOffset == kDictBlockSize - 2 && kIndexLinkOffset == kIndexBlockSize - 2);

// Walks the chain of blocks that begins at a number. A chain of a damaged file that runs in a circle ends.
template <std::size_t Size>
class BlockChain {
 public:
  BlockChain(std::FILE* stream, std::uint16_t first) : stream_(stream), next_(first) {}

  // Takes the next block in hand. False at the end of the chain or if the block cannot be read.
  [[nodiscard]] bool advance() {
    if (next_ == 0 || is_circle()) return false;
    number_ = next_;
    if (!block_.read(stream_, offset_of(number_))) {
      is_unreadable_ = true;
      return false;
    }
    next_ = block_.next();
    return true;
  }

  [[nodiscard]] const Block<Size>& block() const { return block_; }
  [[nodiscard]] std::uint16_t number() const { return number_; }
  [[nodiscard]] bool is_unreadable() const { return is_unreadable_; }
  // The place of the block in hand, or of the one that cannot be read.
  [[nodiscard]] std::int64_t offset() const { return offset_of(number_); }

 private:
  static constexpr std::int64_t offset_of(std::uint32_t number) {
    return Size == kDictBlockSize ? dict_block_offset(number) : index_block_offset(number);
  }

  // Has the walk come back to the block that it remembers? It remembers its first block, and then one after ever
  // longer stretches, so that it meets one in every circle.
  bool is_circle() {
    if (next_ == remembered_) return true;
    if (++steps_ == stretch_) {
      remembered_ = next_;
      stretch_ *= 2;
      steps_ = 0;
    }
    return false;
  }

  std::FILE* stream_;
  std::uint16_t next_;
  std::uint16_t number_ = 0;
  std::uint16_t remembered_ = 0;
  std::uint32_t steps_ = 0;
  std::uint32_t stretch_ = 1;
  bool is_unreadable_ = false;
  Block<Size> block_;
};

using DictChain = BlockChain<kDictBlockSize>;
using IndexChain = BlockChain<kIndexBlockSize>;

}  // namespace lexon
