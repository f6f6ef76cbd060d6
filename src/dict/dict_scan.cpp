// Through the blocks of the dictionary file: for the fields that do not order the records, from key blocks to the
// chains of data blocks they name; then through the data blocks, where each hit that has words gives a group.

#include <array>
#include <cstring>

#include "data/bytes.hpp"
#include "data/chain.hpp"
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

// From the key blocks of `hits` to the data blocks that they name. A key that several entries name leads to several, in
// the order of the entries.
Status scan_key_blocks(Session& session, std::FILE* dictionary, std::string_view key, KeyHits& hits) {
  KeyWalk walk{.key = key, .begin = kDictDataOffset};
  Status s = Status::ok;
  while (s == Status::ok && hits.first != nullptr)
    s = scan_key_chain(session, dictionary, key_hits_take(session, hits), walk);
  key_hits_free(session, hits);
  hits = walk.found;
  return s;
}

// The key that records are compared with, prepared for many comparisons with texts of the same length, of which most
// differ.
class KeyText {
 public:
  explicit KeyText(std::string_view text) : text_(text) {
    store_u16(size_in_file_.data(), static_cast<std::uint32_t>(text.size()));
    if (text.size() < sizeof head_) return;
    head_ = word_at(text.data());
    tail_ = word_at(text.data() + text.size() - sizeof tail_);
  }

  [[nodiscard]] std::string_view text() const { return text_; }

  // Is its size the one at `length`? Of a size that no length can hold, what is left of it may be.
  [[nodiscard]] bool has_size_at(const std::uint8_t* length) const {
    return std::memcmp(length, size_in_file_.data(), size_in_file_.size()) == 0;
  }

  // Is it the text of the same size at `other`?
  [[nodiscard]] bool is_at(const std::uint8_t* other) const {
    const std::size_t size = text_.size();
    if (size < sizeof head_) return is_short_at(other);
    if (word_at(other) != head_ || word_at(other + size - sizeof tail_) != tail_) return false;
    return size <= 2 * sizeof head_ || std::memcmp(other, text_.data(), size) == 0;
  }

 private:
  template <typename Byte>
  static std::uint64_t word_at(const Byte* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
  }

  [[nodiscard]] bool is_short_at(const std::uint8_t* other) const {
    std::size_t same = 0;
    while (same < text_.size() && other[same] == static_cast<std::uint8_t>(text_[same])) ++same;
    return same == text_.size();
  }

  std::string_view text_;
  std::array<std::uint8_t, 2> size_in_file_;
  std::uint64_t head_ = 0;  // the first and the last eight bytes; of a shorter text nothing
  std::uint64_t tail_ = 0;
};

// What is looked for in data blocks, and where the words go.
struct DataScan {
  int key_field;
  KeyText key;
  LookupGroup** link;     // of the group to come
  WordEntry** word_link;  // of the word to come; null as long as the current group has none
  bool is_done;           // the chain holds nothing more
};

// Where the first word stood is noted with the group; nothing goes by it.
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

// Takes a word into the current group, or opens one for it: a hit whose chain has no word of the key gives no group.
Status append_word(Session& session, DataScan& scan, WordEntry& word, std::uint16_t block, std::uint16_t offset) {
  if (scan.word_link == nullptr) {
    if (const Status s = group_open(session, scan, block, offset); s != Status::ok) return s;
  }
  *scan.word_link = &word;
  scan.word_link = &word.next;
  return Status::ok;
}

// The record that holds the key, from `from` on in a block's content; empty if there is none. `is_done` becomes true where
// the chain holds nothing more: at a damaged record, and for the first field at one above the key. Records are passed over
// as `record_at` and `record_field` tell, in one go, since most are of other words.
ByteView record_find(ByteView content, std::size_t from, int key_field, const KeyText& key, bool& is_done) {
  const std::uint8_t* const stop = content.data() + content.size();
  const std::uint8_t* end = nullptr;
  for (const std::uint8_t* at = content.data() + from; at < stop; at = end) {
    const std::size_t size = stop - at < 2 ? 0 : load_u16(at);
    end = at + size;
    if (size <= 2 || end > stop) {
      is_done = true;
      break;
    }
    // The last place where the length of a field can stand in the record. A field that runs past the end leads beyond it.
    const std::uint8_t* const last = end - 2;
    const std::uint8_t* field = at + 2;
    for (int before = key_field - 1; before != 0 && field <= last; --before) field += 2 + load_u16(field);
    if (field > last) continue;
    const std::size_t length = load_u16(field);
    if (length > static_cast<std::size_t>(last - field)) continue;
    if (key_field != kKeyHw) {
      if (length == key.text().size() && key.is_at(field + 2)) return {at, size};
      continue;
    }
    // Records are in the order of the first field, and of no other.
    const int order = key_compare(as_text({field + 2, length}), key.text());
    if (order == 0) return {at, size};
    is_done = order > 0;
    if (is_done) break;
  }
  return {};
}

// The same for concept words, which by far most lookups ask for, with as few looks at where a record ends as will do. The
// content of a block never reaches into its link, so that a length can be read wherever the content has one byte of it.
ByteView concept_record_find(ByteView content, std::size_t from, const KeyText& key, bool& is_done) {
  const std::uint8_t* const stop = content.data() + content.size();
  const std::uint8_t* end = nullptr;
  for (const std::uint8_t* at = content.data() + from; at < stop; at = end) {
    const std::size_t size = load_u16(at);
    end = at + size;
    if (size <= 2 || end > stop) {
      is_done = true;
      break;
    }
    const std::uint8_t* const last = end - 2;
    const std::uint8_t* const gloss = at + 4 + load_u16(at + 2);
    if (gloss > last) continue;
    const std::uint8_t* const field = gloss + 2 + load_u16(gloss);
    if (field > last || !key.has_size_at(field)) continue;
    const bool fits = key.text().size() <= static_cast<std::size_t>(last - field);
    if (fits && key.is_at(field + 2)) return {at, size};
  }
  return {};
}

ByteView record_find(ByteView content, std::size_t from, DataScan& scan) {
  return scan.key_field == kKeyCw ? concept_record_find(content, from, scan.key, scan.is_done)
                                  : record_find(content, from, scan.key_field, scan.key, scan.is_done);
}

// The words of one block. What is found stays, whatever the rest of the block is like.
Status scan_data_block(Session& session, DataScan& scan, const DictChain& chain) {
  const ByteView content = chain.content();
  for (std::size_t from = kDictDataOffset; from < content.size();) {
    const ByteView record = record_find(content, from, scan);
    if (record.empty()) return Status::ok;
    const auto offset = static_cast<std::uint16_t>(record.data() - content.data());
    from = offset + record.size();
    WordEntry* word = nullptr;
    const Status s = record_unpack(session, record, word, chain.number(), offset, scan.word_link == nullptr);
    if (s != Status::ok) return s;
    if (word == nullptr) continue;  // a damaged record
    if (const Status t = append_word(session, scan, *word, chain.number(), offset); t != Status::ok) return t;
  }
  return Status::ok;
}

// The words of one hit: all blocks of its chain, since nothing but the first field tells where to end.
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
  DataScan scan{.key_field = key_field, .key = KeyText(key), .link = &groups, .word_link = nullptr, .is_done = false};
  while (hits.first != nullptr) {
    if (const Status s = scan_data_chain(session, scan, dictionary, key_hits_take(session, hits)); s != Status::ok)
      return s;
  }
  return Status::ok;
}

Status dict_recall(Session& session, const LookupMemory::Kept* answer, LookupGroup*& groups) {
  DataScan scan{.key_field = 0, .key = KeyText({}), .link = &groups, .word_link = nullptr, .is_done = false};
  for (const LookupMemory::Kept& kept : chain<&LookupMemory::Kept::next>(answer)) {
    WordEntry* word = kept_word_copy(session, kept);
    if (word == nullptr) return Status::memory;
    if (kept.opens_group) scan.word_link = nullptr;
    if (const Status s = append_word(session, scan, *word, kept.block, kept.offset); s != Status::ok) return s;
  }
  return Status::ok;
}

}  // namespace lexon
