// Packing sorted items into blocks, and the key tree over them.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "dicttool/record_view.hpp"

namespace lexon {

// Where a chain of blocks starts: its lowest key, and its first block.
struct ChainStart {
  std::string key;
  std::uint32_t block;
};

// A file that grows by whole blocks.
struct BlockFile {
  std::FILE* stream;
  std::uint32_t next;  // number of the next block
};

// How a block of a file is laid out.
struct BlockLayout {
  std::size_t size;
  std::size_t data_offset;
  std::size_t link_offset;
  std::uint8_t type;  // 0: there is no type byte

  [[nodiscard]] std::size_t capacity() const { return link_offset - data_offset; }
};

[[nodiscard]] inline BlockLayout dict_layout(std::uint8_t type) {
  return {kDictBlockSize, kDictDataOffset, kDictLinkOffset, type};
}
[[nodiscard]] inline BlockLayout index_layout(std::size_t name_size) {
  return {kIndexBlockSize, index_data_offset(name_size), kIndexLinkOffset, 0};
}

// What becomes of a run of equal keys that is too long for one block.
enum class LongRun {
  many_chains,  // each of its blocks starts a chain, with the same key
  one_chain,    // its blocks are linked, and the chain ends with it
  whole_level,  // all blocks whatever their keys are linked to one chain
};

// The results of writing that a user must be told of.
enum class PackResult { ok, write_failed, too_many_blocks };

// Packs items that come by rising key into blocks, so that a run of equal keys never begins in the middle of one
// block and goes on in the next. `starts` receives the start of every chain.
class BlockPacker {
 public:
  BlockPacker(BlockFile& file, const BlockLayout& layout, LongRun long_run, std::vector<ChainStart>& starts);

  // `item` must fit a block.
  [[nodiscard]] PackResult add(std::string_view key, ByteView item);
  // Writes the last block. Without any item an empty block is written, with the empty key.
  [[nodiscard]] PackResult finish();

 private:
  [[nodiscard]] bool is_empty() const { return used_ == layout_.data_offset; }
  [[nodiscard]] PackResult begin_run(std::string_view key);
  [[nodiscard]] PackResult make_room();
  [[nodiscard]] PackResult move_run();
  [[nodiscard]] PackResult write_block(std::size_t used);
  void start_chain();

  BlockFile& file_;
  BlockLayout layout_;
  LongRun long_run_;
  std::vector<ChainStart>& starts_;
  Bytes block_;
  std::size_t used_;
  std::size_t run_start_;   // offset at which the items of the last key begin
  std::string key_;         // the last key
  bool continues_ = false;  // the block that is being filled continues a chain
};

// An entry of a key block or an index block.
[[nodiscard]] Bytes key_entry(std::string_view key, std::uint32_t block);

// A finished tree.
struct Tree {
  int levels;
  std::uint32_t root;
};

// Writes the tree over `chains`, which are in order of their keys, to the index file.
[[nodiscard]] PackResult tree_write(BlockFile& index, std::size_t name_size, std::vector<ChainStart> chains,
                                    Tree& tree);

}  // namespace lexon
