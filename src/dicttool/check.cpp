// Checking a dictionary: first its blocks and trees, then every key by asking for it.

#include <algorithm>
#include <functional>

#include "data/chain.hpp"
#include "data/session.hpp"
#include "dict/block_chain.hpp"
#include "dict/item_sort.hpp"
#include "dict/pair_stamp.hpp"
#include "dicttool/check.hpp"
#include "dicttool/record_view.hpp"
#include "dicttool/survey.hpp"
#include "dicttool/terminal_count.hpp"

namespace lexon {

namespace {

// What is sorted by key to be compared with lookups: a record, or an entry of a key block. Layout of an item: size
// (2), key, number of the block (2), offset in it (2), and for a record the mark of its content (4 + 4).
// `content` is 0 for an entry of a key block.
struct KeyUse {
  std::int64_t offset;  // in the dictionary file
  bool is_record;
  std::uint64_t content;
};

// All uses of one key, or all that a lookup by it gives. Equal sums of marks stand for equal records.
struct KeyTotals {
  std::int64_t records = 0;
  std::uint64_t content = 0;
  std::int64_t entries = 0;  // of key blocks; groups of a lookup
};

// What the check of one key field works with.
struct KeyCheck {
  const Dictionary& opened;
  DamageLog& damage;
  int key_field;
  CheckFigures& figures;
  TerminalCount& shown;  // of keys
};

// Records are told apart by a hash of their bytes: a lookup gives words, not places.
std::uint64_t content_mark(const RecordView& record) {
  Bytes bytes;
  record_append(record, bytes);
  return std::hash<std::string_view>{}(as_text(bytes));
}

// Puts a use among those to be sorted, in the layout above. Null for `record`: an entry of a key block.
bool add_use(ItemSorter& uses, std::string_view key, std::uint32_t block, std::size_t at, const RecordView* record) {
  Bytes item;
  append_u16(item, 2 + 2 + key.size() + 4 + (record == nullptr ? 0U : 8U));
  append_text(item, key);
  append_u16(item, block);
  append_u16(item, at);
  if (record != nullptr) {
    const std::uint64_t mark = content_mark(*record);
    append_u32(item, static_cast<std::uint32_t>(mark >> 32));
    append_u32(item, static_cast<std::uint32_t>(mark));
  }
  return uses.add(item);
}

// Reads an item back. Size and key are known by the sorter, so the reader begins behind them.
KeyUse use_of(ByteView item) {
  ByteReader reader(item, 4 + item_key(item).size());
  const std::int64_t block = dict_block_offset(reader.u16());
  KeyUse use{.offset = block + reader.u16(), .is_record = reader.more(), .content = 0};
  // The mark stands there in two halves, the upper one first.
  if (use.is_record) use.content = static_cast<std::uint64_t>(reader.u32()) << 32;
  if (use.is_record) use.content |= reader.u32();
  return use;
}

// The records of a data block that have a key in the field. Damaged records were told by the survey.
bool gather_records(const DictBlock& block, std::uint32_t number, KeyCheck& check, ItemSorter& uses) {
  ByteView bytes;
  for (std::size_t at = kDictDataOffset; at < block.content().size(); at += bytes.size()) {
    bytes = record_at(block.content(), at);
    StoredRecord stored;
    (void)stored_record_read(bytes, stored);
    const RecordView record = record_of(stored);
    // Every record has a headword, so each is counted once over all fields.
    if (check.key_field == kKeyHw) ++check.figures.records;
    const bool is_used = has_key(record, check.key_field);
    if (is_used && !add_use(uses, record_key(record, check.key_field), number, at, &record)) return false;
  }
  return true;
}

// The entries of a key block: a key, and behind it the number of a block.
bool gather_entries(const DictBlock& block, std::uint32_t number, ItemSorter& uses) {
  ByteReader reader(block.content(), kDictDataOffset);
  while (reader.more()) {
    const std::size_t at = reader.at();
    const std::string_view key = reader.text();
    reader.skip(2);
    if (!add_use(uses, key, number, at, nullptr)) return false;
  }
  return true;
}

// All uses of the keys of one field, in data blocks and in the key blocks that belong to its index.
bool gather_uses(const Survey& survey, KeyCheck& check, ItemSorter& uses) {
  DictBlock block;
  for (std::uint32_t number = kFirstDictBlock; number < survey.dictionary.end; ++number) {
    const bool is_data = survey.dictionary.types[number] == kDataBlock;
    if (!is_data && survey.dictionary.owners[number] != check.key_field) continue;
    if (!block.read(check.opened.dictionary.get(), dict_block_offset(number))) return false;
    const bool is_added = is_data ? gather_records(block, number, check, uses) : gather_entries(block, number, uses);
    if (!is_added) return false;
  }
  return true;
}

// What a run would find by this key.
Status ask(Session& session, const KeyCheck& check, const std::string& key, KeyTotals& found) {
  LookupGroup* groups = nullptr;
  const Status status = dict_lookup(session, check.opened.files(), check.key_field, key.c_str(), groups);
  for (const LookupGroup& group : chain<&LookupGroup::next>(groups)) {
    ++found.entries;
    for (const WordEntry& word : chain<&WordEntry::next>(group.entries)) {
      ++found.records;
      // A sum does not care for the order, in which the look-up and the file differ.
      found.content += content_mark(record_of(word));
    }
  }
  session.pool.release_all();
  // The next lookup has all the memory again.
  if (session.state.abort == Status::memory) session.state.abort = Status::ok;
  return status;
}

// What stands in the file under one key, and a place to show.
struct KeyGroup {
  std::string key;
  std::int64_t offset = 0;
  KeyTotals totals = {};

  void add(const KeyUse& use) {
    // The place of the first record, or else of the last entry, is shown.
    if (totals.records == 0) offset = use.offset;
    totals.records += use.is_record ? 1 : 0;
    totals.entries += use.is_record ? 0 : 1;
    totals.content += use.content;
  }
};

std::string described(const KeyCheck& check, const std::string& key) {
  constexpr std::size_t kShown = 80;
  std::string shown = key.substr(0, kShown);
  std::replace_if(
      // A damaged key may hold anything, and is shown in one line.
      shown.begin(), shown.end(), [](char c) { return c >= 0 && c < ' '; }, '?');
  return std::string(key_field_name(check.key_field)) + " \"" + shown + (key.size() > kShown ? "...\"" : "\"");
}

// How what a lookup gives differs from what stands in the file; the empty text if it does not.
std::string difference(const KeyTotals& found, const KeyTotals& wanted, int key_field) {
  if (found.records != wanted.records) {
    return std::to_string(found.records) + " records are found, and " + std::to_string(wanted.records) + " are there";
  }
  if (found.content != wanted.content) return "other records are found than are there";
  // The headwords have no key blocks of their own: their index leads to the data blocks.
  const bool has_idle_entry = key_field != kKeyHw && found.entries != wanted.entries;
  return has_idle_entry ? "an entry leads to no record" : "";
}

// A key with more words than a sentence's memory holds is no damage, but of no use either.
void note_unasked(const KeyCheck& check, const KeyGroup& group) {
  ++check.figures.unasked;
  check.shown.hide();
  std::fprintf(check.damage.stream, "%s: note: by %s there are %lld records, more than a sentence can hold\n",
               check.opened.path.c_str(), described(check, group.key).c_str(),
               static_cast<long long>(group.totals.records));
}

// What is wrong with a key; empty if nothing is.
std::string wrong_with(Session& session, const KeyCheck& check, const KeyGroup& group) {
  // No look-up can ask for it: keys are handed over as texts that end at a NUL.
  if (group.key.find('\0') != std::string::npos) return "a NUL character is in the key";
  if (group.totals.records == 0) return "an entry leads to no record";
  KeyTotals found;
  const Status status = ask(session, check, group.key, found);
  if (status == Status::ok) return difference(found, group.totals, check.key_field);
  if (status != Status::memory) return "the lookup fails with status " + std::to_string(code(status));
  note_unasked(check, group);
  return "";
}

// Asks for one key and tells what differs, with the place of its first use.
void check_key(Session& session, const KeyCheck& check, const KeyGroup& group) {
  ++check.figures.keys;
  check.shown.count();
  const std::string wrong = wrong_with(session, check, group);
  if (wrong.empty()) return;
  check.shown.hide();
  check.damage.add(check.opened.path, group.offset, "by " + described(check, group.key) + ": " + wrong);
}

// Goes through the sorted uses, which brings all of a key together. False if they cannot be read back.
bool check_keys(Session& session, const KeyCheck& check, ItemSorter& uses) {
  if (!uses.start_reading()) return false;
  KeyGroup group;
  bool is_open = false;
  for (ByteView item = uses.next(); !item.empty(); item = uses.next()) {
    const std::string_view key = item_key(item);
    if (is_open && key != group.key) {
      check_key(session, check, group);
      is_open = false;
    }
    if (!is_open) group = {.key = std::string(key)};
    is_open = true;
    group.add(use_of(item));
  }
  if (is_open) check_key(session, check, group);
  return !uses.failed();
}

// One field after the other, since each sorts as many items as the dictionary has records.
bool check_all_keys(Session& session, const Survey& survey, std::FILE* log, std::size_t memory, CheckFigures& figures) {
  for (int field = kKeyHw; field <= kSlotCount; ++field) {
    if (survey.opened.slots[static_cast<std::size_t>(field)] == nullptr) continue;
    TerminalCount shown(log, "keys asked for");
    KeyCheck check{survey.opened, survey.damage, field, figures, shown};
    ItemSorter uses(memory);
    if (gather_uses(survey, check, uses) && check_keys(session, check, uses)) continue;
    shown.hide();
    std::fprintf(log, "%s: the check cannot be finished: reading or sorting fails\n", survey.opened.path.c_str());
    return false;
  }
  return true;
}

}  // namespace

bool dictionary_check(Session& session, const std::string& path, std::FILE* log, std::size_t memory,
                      CheckFigures& figures) {
  Dictionary opened;
  if (!dictionary_open(path, PairCheck::none, opened)) {
    std::fprintf(log, "%s\n", opened.fault.c_str());
    return false;
  }
  DamageLog damage{log};
  Stamp stamp;
  // A dictionary of another make has no stamp, and then nothing tells whether its two files belong together.
  figures.has_stamp = stamp_read(pair_stamp_path(opened.index_path), stamp) != StampState::missing;
  if (pair_check(opened, PairCheck::whole) != Pairing::belong) damage.add(opened.fault);
  const std::int64_t changed = damage.count;
  Survey survey{opened, damage};
  survey_blocks(survey);
  survey_trees(survey);
  // Damaged blocks would only be reported a second time by what cannot be found in them.
  const bool is_finished = damage.count != changed || check_all_keys(session, survey, log, memory, figures);
  figures.damages = damage.count;
  return is_finished && damage.count == 0;
}

}  // namespace lexon
