// Through the blocks of the dictionary file: for the fields that do not order the records, from key blocks to the
// chains of data blocks they name; then through the data blocks, where each hit that has words gives a group.

#include <cstring>

#include "data/bytes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/block_chain.hpp"
#include "dict/dict_record.hpp"
#include "dict/key_block.hpp"
#include "dict/lookup.hpp"

namespace lexon {

namespace {

std::uint8_t type_of(const DictChain& chain) {
  return chain.bytes()[kDictTypeOffset];
}

// wanted: a block that cannot be read ends its chain silently, and what has been found stands.
void note_unreadable(Session& session, std::FILE* dictionary, const DictChain& chain) {
  if (chain.is_unreadable()) note_damaged_block(session, dictionary, chain.offset());
}

// Is the block that was read last of this type? One that is not is noted.
bool is_of_type(Session& session, std::FILE* dictionary, const DictChain& chain, std::uint8_t type) {
  const bool is_right = type_of(chain) == type;
  if (!is_right) note_damaged_block(session, dictionary, chain.offset());
  return is_right;
}

// Damage ends a chain of key blocks like its end.
Status scan_key_chain(Session& session, std::FILE* dictionary, std::uint16_t first, KeyWalk& walk) {
  walk.has_passed = walk.is_damaged = false;
  DictChain chain(session, dictionary, first, LookupMemory::Kind::keys);
  while (!walk.has_passed && !walk.is_damaged && chain.advance()) {
    if (const Status s = must_leave(session); s != Status::ok) return s;
    if (!is_of_type(session, dictionary, chain, kKeyBlock)) return Status::not_a_key_block;
    if (const Status s = key_block_walk(session, chain.content(), chain.places(), walk); s != Status::ok) return s;
  }
  note_unreadable(session, dictionary, chain);
  return Status::ok;
}

// From the key blocks of `hits` to the data blocks that they name.
Status scan_key_blocks(Session& session, std::FILE* dictionary, std::string_view key, KeyHits& hits) {
  KeyWalk walk{.key = key, .begin = kDictDataOffset};
  Status s = Status::ok;
  while (s == Status::ok && hits.first != nullptr)
    s = scan_key_chain(session, dictionary, key_hits_take(session, hits), walk);
  key_hits_free(session, hits);
  hits = walk.found;
  return s;
}

// What is looked for in data blocks, and where the words go.
struct DataScan {
  int key_field;
  std::string_view key;
  LookupGroup** link;     // of the group to come
  WordEntry** word_link;  // of the word to come; null as long as the current group has none
  bool is_done;           // the chain holds nothing more
};

Status group_open(Session& session, DataScan& scan, std::int32_t block, std::size_t offset) {
  auto* group = temp_new<LookupGroup>(session);
  if (group == nullptr) return Status::memory;
  group->block = block;
  group->offset = static_cast<std::int32_t>(offset);
  *scan.link = group;
  scan.link = &group->next;
  scan.word_link = &group->entries;
  return Status::ok;
}

Status append_word(Session& session, DataScan& scan, const LookupMemory::Record& record) {
  WordEntry* word = nullptr;
  if (const Status s = record_unpack(session, record.bytes, word); s != Status::ok || word == nullptr) return s;
  if (scan.word_link == nullptr) {
    if (const Status s = group_open(session, scan, record.block, record.offset); s != Status::ok) return s;
  }
  *scan.word_link = word;
  scan.word_link = &word->next;
  return Status::ok;
}

// Do two texts of the same size hold the same? For many short ones that differ.
bool is_same(const std::uint8_t* a, const char* b, std::size_t size) {
  std::uint64_t first[2];
  std::uint64_t last[2];
  if (size < sizeof first[0] || size > 2 * sizeof first[0]) return size == 0 || std::memcmp(a, b, size) == 0;
  std::memcpy(&first[0], a, sizeof first[0]);
  std::memcpy(&first[1], b, sizeof first[0]);
  std::memcpy(&last[0], a + size - sizeof first[0], sizeof first[0]);
  std::memcpy(&last[1], b + size - sizeof first[0], sizeof first[0]);
  return first[0] == first[1] && last[0] == last[1];
}

Status scan_data_block(Session& session, DataScan& scan, const DictChain& chain) {
  const ByteView content = chain.content();
  const std::uint8_t* const bytes = content.data();
  std::size_t size = 0;
  for (std::size_t at = kDictDataOffset; at < content.size(); at += size) {
    // As `record_at` and `record_field` tell, in one go: most records are of other words.
    size = content.size() - at < 2 ? 0 : load_u16(bytes + at);
    scan.is_done = size <= 2 || size > content.size() - at;
    if (scan.is_done) return Status::ok;
    const std::size_t end = at + size;
    std::size_t field = at + 2;
    bool is_there = end - field >= 2;
    for (int i = 1; i < scan.key_field && is_there; ++i) {
      field += std::size_t{2} + load_u16(bytes + field);
      is_there = field + 2 <= end;
    }
    const std::size_t length = is_there ? load_u16(bytes + field) : 0;
    if (!is_there || length > end - field - 2) continue;
    if (scan.key_field == kKeyHw) {
      // Records are in the order of the first field, and of no other.
      const int order = key_compare(as_text(content.subspan(field + 2, length)), scan.key);
      scan.is_done = order > 0;
      if (scan.is_done) return Status::ok;
      if (order != 0) continue;
    } else if (length != scan.key.size() || !is_same(bytes + field + 2, scan.key.data(), length)) {
      continue;
    }
    const LookupMemory::Record hit{chain.number(), static_cast<std::uint16_t>(at), scan.word_link == nullptr,
                                   content.subspan(at, size)};
    if (const Status s = append_word(session, scan, hit); s != Status::ok) return s;
    session.lookups.answer_add(hit);
  }
  return Status::ok;
}

Status scan_data_chain(Session& session, DataScan& scan, std::FILE* dictionary, std::uint16_t first) {
  scan.word_link = nullptr;
  scan.is_done = false;
  DictChain chain(session, dictionary, first, LookupMemory::Kind::words);
  while (!scan.is_done && chain.advance()) {
    if (const Status s = must_leave(session); s != Status::ok) return s;
    if (!is_of_type(session, dictionary, chain, kDataBlock)) return Status::not_a_data_block;
    if (const Status s = scan_data_block(session, scan, chain); s != Status::ok) return s;
  }
  note_unreadable(session, dictionary, chain);
  return Status::ok;
}

}  // namespace

Status dict_scan(Session& session, std::FILE* dictionary, int secondary, int key_field, std::string_view key,
                 KeyHits& hits, LookupGroup*& groups) {
  if (key_field > kKeyHw && secondary > 0) {
    if (const Status s = scan_key_blocks(session, dictionary, key, hits); s != Status::ok) return s;
  }
  DataScan scan{.key_field = key_field, .key = key, .link = &groups, .word_link = nullptr, .is_done = false};
  while (hits.first != nullptr) {
    if (const Status s = scan_data_chain(session, scan, dictionary, key_hits_take(session, hits)); s != Status::ok)
      return s;
  }
  return Status::ok;
}

Status dict_recall(Session& session, LookupMemory::Answer& answer, LookupGroup*& groups) {
  DataScan scan{.key_field = 0, .key = {}, .link = &groups, .word_link = nullptr, .is_done = false};
  LookupMemory::Record record;
  while (answer.next(record)) {
    if (record.opens_group) scan.word_link = nullptr;
    if (const Status s = append_word(session, scan, record); s != Status::ok) return s;
  }
  return Status::ok;
}

}  // namespace lexon
