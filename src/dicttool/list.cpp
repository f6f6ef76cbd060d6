// Listing a dictionary and asking it.

#include "dicttool/list.hpp"
#include "data/chain.hpp"
#include "data/platform.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/block_chain.hpp"
#include "dict/dictionary.hpp"
#include "dict/entry_text.hpp"
#include "dicttool/entry_line.hpp"

namespace lexon {

namespace {

struct Listing {
  Dictionary& opened;
  std::FILE* out;
  std::FILE* log;
  std::string line = {};

  bool report(std::int64_t offset, const char* what) const {
    std::fprintf(log, "%s: offset %lld: %s\n", opened.path.c_str(), static_cast<long long>(offset), what);
    return false;
  }
};

bool list_record(Session& session, Listing& listing, ByteView record, std::int64_t offset) {
  StoredRecord stored;
  if (record.empty() || !stored_record_read(record, stored)) return listing.report(offset, "a damaged record");
  if (!entry_line_write(session, record_of(stored), listing.line)) {
    return listing.report(
        offset, must_leave(session) == Status::memory ? "memory is exhausted" : "a record without a text form");
  }
  std::fwrite(listing.line.data(), 1, listing.line.size(), listing.out);
  return true;
}

bool list_block(Session& session, Listing& listing, const DictBlock& block, std::int64_t block_offset) {
  bool is_good = true;
  ByteView record;
  for (std::size_t at = kDictDataOffset; at < block.content().size(); at += record.size()) {
    record = record_at(block.content(), at);
    is_good = list_record(session, listing, record, block_offset + static_cast<std::int64_t>(at)) && is_good;
    if (record.empty()) break;
  }
  return is_good;
}

bool list_blocks(Session& session, Listing& listing) {
  const std::int64_t size = file_size(listing.opened.dictionary.get());
  bool is_good = true;
  DictBlock block;
  for (std::uint32_t number = kFirstDictBlock; number <= kMaxBlockNumber; ++number) {
    const std::int64_t offset = dict_block_offset(number);
    if (offset + static_cast<std::int64_t>(kDictBlockSize) > size) break;
    if (!block.read(listing.opened.dictionary.get(), offset))
      return listing.report(offset, "a block that cannot be read");
    const std::uint8_t type = block.bytes()[kDictTypeOffset];
    if (type == kDataBlock) is_good = list_block(session, listing, block, offset) && is_good;
    if (type != kDataBlock && type != kKeyBlock) is_good = listing.report(offset, "neither records nor keys");
  }
  const std::int64_t rest = size % static_cast<std::int64_t>(kDictBlockSize);
  return rest == 0 ? is_good : listing.report(size - rest, "the file ends within a block");
}

bool refuse(const Dictionary& opened, std::FILE* log) {
  std::fprintf(log, "%s\n", opened.fault.c_str());
  return false;
}

void write_word(Session& session, const WordEntry& word, std::FILE* out) {
  std::string line;
  if (!entry_line_write(session, record_of(word), line)) {
    Output printed(out);
    return entry_print(printed, &word, "");
  }
  std::fwrite(line.data(), 1, line.size(), out);
}

}  // namespace

bool dictionary_list(Session& session, const std::string& path, std::FILE* out, std::FILE* log) {
  Dictionary opened;
  if (!dictionary_file_open(path, opened) || opened.name_size == 0) return refuse(opened, log);
  Listing listing{.opened = opened, .out = out, .log = log};
  return list_blocks(session, listing) && is_written(out);
}

FindResult dictionary_find(Session& session, const std::string& path, int key_field, const std::string& key,
                           std::FILE* out, std::FILE* log) {
  Dictionary opened;
  if (!dictionary_open(path, PairCheck::quick, opened)) {
    refuse(opened, log);
    return FindResult::failed;
  }
  LookupGroup* groups = nullptr;
  if (const Status s = dict_lookup(session, opened.files(), key_field, key.c_str(), groups); s != Status::ok) {
    std::fprintf(log, "%s: the lookup failed with status %d: damaged, or without this key\n", path.c_str(), code(s));
    return FindResult::failed;
  }
  WordEntry* words = nullptr;
  groups_flatten(session, groups, words);
  entry_list_sort(words);
  for (const WordEntry& word : chain<&WordEntry::next>(words)) write_word(session, word, out);
  const FindResult result = words == nullptr ? FindResult::nothing : FindResult::found;
  session.pool.release_all();
  if (must_leave(session) == Status::memory) {
    std::fprintf(log, "memory is exhausted\n");
    return FindResult::failed;
  }
  return is_written(out) ? result : FindResult::failed;
}

}  // namespace lexon
