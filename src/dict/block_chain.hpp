// Reading whole blocks of the dictionary and index files, and walking the chains that they form.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "data/bytes.hpp"
#include "data/platform.hpp"
#include "data/session.hpp"
#include "dict/layout.hpp"

namespace lexon {

// The bytes of a block, which somebody else owns, up to its used length, which never reaches into the link.
template <std::size_t Size>
[[nodiscard]] ByteView block_content(const std::uint8_t* bytes) {
  const std::size_t used = load_u16(bytes);
  return {bytes, used < Size - 2 ? used : Size - 2};
}

// The bytes of one block of a file. They are not cleared: a block is read before it is looked at.
template <std::size_t Size>
class Block {
 public:
  // Reads the whole block; false if the file does not hold all of it.
  [[nodiscard]] bool read(std::FILE* stream, std::int64_t offset) {
    return file_read_at(stream, offset, bytes_.data(), Size);
  }

  [[nodiscard]] const std::array<std::uint8_t, Size>& bytes() const { return bytes_; }
  [[nodiscard]] ByteView content() const { return block_content<Size>(bytes_.data()); }
  [[nodiscard]] std::uint16_t next() const { return load_u16(bytes_.data() + Size - 2); }

 private:
  std::array<std::uint8_t, Size> bytes_;
};

using DictBlock = Block<kDictBlockSize>;
using IndexBlock = Block<kIndexBlockSize>;
static_assert(kDictLinkOffset == kDictBlockSize - 2 && kIndexLinkOffset == kIndexBlockSize - 2);

// Walks the chain of blocks that begins at a number. A chain of a damaged file that runs in a circle ends.
template <std::size_t Size>
class BlockChain {
 public:
  BlockChain(Session& session, std::FILE* stream, std::uint16_t first, LookupMemory::Kind kind)
      : lookups_(session.lookups), stream_(stream), kind_(kind), next_(first) {}

  // Goes on to the next block. False at the end of the chain or if the block cannot be read.
  [[nodiscard]] bool advance() {
    if (next_ == 0 || is_circle()) return false;
    number_ = next_;
    block_ = lookups_.block(stream_, offset_of(number_), room_, kind_);
    is_unreadable_ = block_.bytes == nullptr;
    if (is_unreadable_) return false;
    next_ = load_u16(block_.bytes + Size - 2);
    return true;
  }

  // The current block, valid as long as the session looks up nothing else.
  [[nodiscard]] const std::uint8_t* bytes() const { return block_.bytes; }
  [[nodiscard]] ByteView content() const { return block_content<Size>(block_.bytes); }
  [[nodiscard]] LookupMemory::KeyPlaces* places() const { return block_.places; }
  [[nodiscard]] std::uint16_t number() const { return number_; }
  [[nodiscard]] bool is_unreadable() const { return is_unreadable_; }
  // The place of the current block, or of the one that cannot be read.
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

  LookupMemory& lookups_;
  std::FILE* stream_;
  LookupMemory::Kind kind_;
  std::uint16_t next_;            // the block to come; 0: none
  std::uint16_t number_ = 0;      // the current one, or the one that cannot be read
  std::uint16_t remembered_ = 0;  // a block that the walk has been at; 0: none yet
  std::uint32_t steps_ = 0;       // since then
  std::uint32_t stretch_ = 1;     // after so many it remembers another one
  bool is_unreadable_ = false;    // the walk has ended at a block that the file does not hold
  LookupMemory::Block block_{};
  std::array<std::uint8_t, Size> room_;  // for a block that is not kept
};

using DictChain = BlockChain<kDictBlockSize>;
using IndexChain = BlockChain<kIndexBlockSize>;

}  // namespace lexon
