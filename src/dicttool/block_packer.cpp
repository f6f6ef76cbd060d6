#include "dicttool/block_packer.hpp"

#include <algorithm>
#include <utility>

namespace lexon {

namespace {

// Writes a block behind the last one. Numbers of blocks have two bytes in both files.
PackResult block_append(BlockFile& file, ByteView block) {
  if (file.next > kMaxBlockNumber) return PackResult::too_many_blocks;
  ++file.next;
  const bool is_written = std::fwrite(block.data(), 1, block.size(), file.stream) == block.size();
  return is_written ? PackResult::ok : PackResult::write_failed;
}

// How many chains the entries of a level need, if no run of equal keys is cut.
std::size_t chains_needed(const std::vector<ChainStart>& entries, std::size_t capacity) {
  std::size_t chains = 0;
  // Full, so that the first run begins a chain.
  std::size_t used = capacity;
  for (auto first = entries.begin(); first != entries.end();) {
    // Entries come in the order of their keys, so equal ones stand together.
    const auto end = std::find_if(first, entries.end(), [first](const ChainStart& e) { return e.key != first->key; });
    const std::size_t run = static_cast<std::size_t>(end - first) * key_entry_size(first->key.size());
    if (used + run > capacity) {
      ++chains;
      used = 0;
    }
    used += run;
    first = end;
  }
  return chains;
}

// With keys so long that hardly two fit a block, level upon level would never come down to one chain. Such a level
// becomes the root at once, and is walked from end to end.
bool hardly_shrinks(const std::vector<ChainStart>& entries, std::size_t capacity) {
  const std::size_t chains = chains_needed(entries, capacity);
  return chains > 1 && chains > entries.size() / 2;
}

// One level of a tree. `starts` receives where its chains begin, which the level above leads to.
PackResult level_write(BlockFile& index, const BlockLayout& layout, const std::vector<ChainStart>& entries,
                       std::vector<ChainStart>& starts) {
  const bool is_root = hardly_shrinks(entries, layout.capacity());
  BlockPacker packer(index, layout, is_root ? LongRun::whole_level : LongRun::one_chain, starts);
  for (const ChainStart& entry : entries) {
    const Bytes item = key_entry(entry.key, entry.block);
    if (const PackResult r = packer.add(entry.key, item); r != PackResult::ok) return r;
  }
  return packer.finish();
}

}  // namespace

Bytes key_entry(std::string_view key, std::uint32_t block) {
  Bytes entry;
  append_text(entry, key);
  append_u16(entry, block);
  return entry;
}

BlockPacker::BlockPacker(BlockFile& file, const BlockLayout& layout, LongRun long_run, std::vector<ChainStart>& starts)
    : file_(file),
      layout_(layout),
      long_run_(long_run),
      starts_(starts),
      block_(layout.size),
      used_(layout.data_offset),
      run_start_(layout.data_offset) {}

// The chain begins with the block that is being filled, whose number the file will give next.
void BlockPacker::start_chain() {
  starts_.push_back({key_, file_.next});
}

// Writes the block that is being filled up to `used` and leaves it empty. As `continues_` says, it is linked to the
// next.
PackResult BlockPacker::write_block(std::size_t used) {
  std::fill(block_.begin() + static_cast<std::ptrdiff_t>(used), block_.end(), std::uint8_t{0});
  store_u16(block_.data(), static_cast<std::uint32_t>(used));
  // Blocks of the index have no type.
  if (layout_.type != 0) block_[kDictTypeOffset] = layout_.type;
  if (continues_) store_u16(block_.data() + layout_.link_offset, file_.next + 1);
  // The next block begins empty, and a run in it at its first byte.
  used_ = run_start_ = layout_.data_offset;
  return block_append(file_, block_);
}

// Takes the last key's items over to a new block, which starts a chain with them.
PackResult BlockPacker::move_run() {
  const Bytes run(block_.begin() + static_cast<std::ptrdiff_t>(run_start_),
                  block_.begin() + static_cast<std::ptrdiff_t>(used_));
  if (const PackResult r = write_block(run_start_); r != PackResult::ok) return r;
  // The chain of the moved run begins with the new block.
  if (!run.empty()) start_chain();
  std::copy(run.begin(), run.end(), block_.begin() + static_cast<std::ptrdiff_t>(used_));
  used_ += run.size();
  return PackResult::ok;
}

// The block is full. A run that began behind other keys goes to a new block whole; one that has the block to itself
// goes on in the next, linked to it or not.
PackResult BlockPacker::make_room() {
  const bool begins_behind_others = run_start_ > layout_.data_offset;
  if (begins_behind_others && long_run_ != LongRun::whole_level) return move_run();
  continues_ = long_run_ != LongRun::many_chains;
  return write_block(used_);
}

// A chain that a long run filled ends with it: the next key begins a new one.
PackResult BlockPacker::begin_run(std::string_view key) {
  key_ = key;
  run_start_ = used_;
  const bool chain_ends = continues_ && long_run_ == LongRun::one_chain;
  if (!chain_ends) return PackResult::ok;
  continues_ = false;
  return write_block(used_);
}

PackResult BlockPacker::add(std::string_view key, ByteView item) {
  if (key != key_) {
    if (const PackResult r = begin_run(key); r != PackResult::ok) return r;
  }
  while (used_ + item.size() > layout_.link_offset) {
    if (const PackResult r = make_room(); r != PackResult::ok) return r;
  }
  // A block that is linked to belongs to the chain of the one before it.
  if (is_empty() && !continues_) start_chain();
  std::copy(item.begin(), item.end(), block_.begin() + static_cast<std::ptrdiff_t>(used_));
  used_ += item.size();
  return PackResult::ok;
}

// Without items there is one empty block all the same: a tree needs something to lead to.
PackResult BlockPacker::finish() {
  if (is_empty()) start_chain();
  continues_ = false;
  return write_block(used_);
}

// Level upon level, each over the chains of the one below, until one chain is left, which is the root.
PackResult tree_write(BlockFile& index, std::size_t name_size, std::vector<ChainStart> chains, Tree& tree) {
  tree.levels = 0;
  do {
    std::vector<ChainStart> above;
    const PackResult r = level_write(index, index_layout(name_size), chains, above);
    if (r != PackResult::ok) return r;
    ++tree.levels;
    chains = std::move(above);
  } while (chains.size() > 1);
  tree.root = chains.front().block;
  return PackResult::ok;
}

}  // namespace lexon
