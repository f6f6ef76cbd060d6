// The builder's steps, in order: plan the names; read the entry text into a sort by surface form; pack the records
// into data blocks; for each further key, sort its texts and pack them into key blocks; write the key trees; write
// the header; put both files in place.
//
// What holds in every dictionary built here, so that a lookup finds each record exactly once by each of its keys:
//
// 1. Every data block is a chain of its own: no data block is linked. A lookup by any key but the surface form reads
//    a chain to its end, so longer chains would only cost time. The same holds for key blocks.
// 2. Records stand in order of their surface form, block by block; equal ones keep the order of the text, next to each
//    other. Key entries stand in order of their keys, equal ones in order of the data blocks they name, that is, of
//    the surface forms. So words of equal priority come out of a lookup by their surface forms, then as in the text.
// 3. A run of equal keys (records of one surface form, entries of one key) never begins behind other keys in a block
//    and goes on in the next: it is moved to a new block before. If it fills several blocks, each of them starts with
//    that key; the last may go on with greater keys.
// 4. So each block of the dictionary file has one entry in the lowest level of its tree, with its lowest key, and all
//    blocks that hold a key are those whose entries equal it; or the one block with the greatest lower entry, if no
//    entry does. That is exactly the set that a search in the tree gives.
// 5. A key has one key entry for each data block that holds it, however many records there have it.
// 6. In an index block the same rule holds for runs of equal keys, but a run that is too long for one block goes on
//    through linked blocks and ends that chain. So on every level a key stands in one chain only, keys of upper levels
//    are unique, and each is exactly the lowest key of the chain it leads to.
// 7. An absent text is no key; an empty surface form is one. A tree has at least one entry, over an empty block if
//    need be, with the empty key.
//
// Memory: one sort at a time, within the bound of the options, and beyond it the lowest keys of all blocks of one key
// field (at most 65,535, seldom more than a few bytes each).
//
// Replacing a pair takes two renames, and a program can be killed between them. So the stamp is replaced first, by one
// that knows the old pair and the new one, and last, by one that knows the new one alone. In between a reader accepts
// two files that are the old pair or the new one, and refuses any mixture.

#include "dicttool/build.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "data/platform.hpp"
#include "data/session.hpp"
#include "dict/block_chain.hpp"
#include "dict/item_sort.hpp"
#include "dict/pair_stamp.hpp"
#include "dicttool/block_packer.hpp"
#include "dicttool/terminal_count.hpp"

namespace lexon {

namespace {

namespace fs = std::filesystem;

constexpr std::ptrdiff_t kLineNumberSize = 4;
constexpr std::size_t kMaxRepeated = 100;   // more are counted alone
constexpr std::int64_t kMaxBadLines = 100;  // more are not reported by a build that fails anyway
constexpr std::int64_t kMaxRecordBytes = std::int64_t{kMaxBlockNumber - 1} * std::int64_t{kMaxRecordSize};

// A file in the making.
struct PartFile {
  std::string target;
  DraftFile draft;
};

// What the steps of a build hand on. `figures` is filled as they go, and is true of what was done even where a step
// fails.
struct Build {
  const BuildOptions& options;
  std::FILE* log;
  BuildFigures& figures;
  std::string index_name;
  std::size_t name_size = kShortNameSize;
  KeyPlan keys = {};
  Bytes item = {};  // a record on its way into the sort or out of it
  PartFile dictionary = {};
  PartFile index = {};
  BlockFile dictionary_blocks = {};
  BlockFile index_blocks = {};
  std::array<Tree, kSlotCount + 1> trees = {};
};

// Tells why the build ends; false for the caller to return.
bool fail(const Build& build, const std::string& message) {
  std::fprintf(build.log, "%s\n", message.c_str());
  return false;
}

// With the system's words for what has just failed.
bool fail_with_reason(const Build& build, const std::string& message, int error) {
  return fail(build, message + ": " + std::strerror(error));
}

bool fail_sorting(const Build& build) {
  return fail(build, "cannot write a temporary file for sorting");
}

// Tells what kept a block from being written. True if nothing did.
bool report(const Build& build, PackResult result, const BlockFile& file) {
  if (result == PackResult::ok) return true;
  const bool is_index = &file == &build.index_blocks;
  const std::string& path = is_index ? build.index.target : build.dictionary.target;
  if (result == PackResult::write_failed) return fail(build, path + ": cannot write");
  return fail(build, path + ": too large: it would need more than 65535 blocks of " +
                         (is_index ? "1024 bytes (64 MiB)" : "4096 bytes (256 MiB)"));
}

// --- names

// Under any names, links too. A file that is not there is the same as none.
bool is_same_file(const std::string& a, const std::string& b) {
  std::error_code error;
  return fs::equivalent(a, b, error) && !error;
}

// Does a slot of the dictionary that stands at the target name this index?
bool is_named_in_target(const Build& build) {
  Dictionary dictionary;
  if (!dictionary_file_open(build.dictionary.target, dictionary)) return false;
  return std::ranges::any_of(dictionary.slots, [&build](const IndexDescriptor* slot) {
    return slot != nullptr && build.index_name == slot->name;
  });
}

// Is what stands under the name of the index free to be replaced? The stamp says whose it is. An index without one
// belongs to the dictionary that names it.
bool owns_index(const Build& build) {
  const std::string& index = build.index.target;
  const std::string way_out = "; give the dictionary another name, or replace it with --force";
  Stamp stamp;
  const StampState found = stamp_read(pair_stamp_path(index), stamp);
  if (found == StampState::unopened) {
    return fail(build, pair_stamp_path(index) + ": cannot be opened: " + std::strerror(errno));
  }
  if (found == StampState::damaged) {
    return fail(build, pair_stamp_path(index) + ": is not the stamp of an index" + way_out);
  }
  std::error_code error;
  if (!fs::exists(fs::symlink_status(index, error))) return true;
  if (found == StampState::missing) {
    return is_named_in_target(build) ||
           fail(build, index + ": is there and is not the index of " + build.options.dictionary + way_out);
  }
  // The stamp names the dictionary that the index was built for.
  const std::string* owner = stamp.text(kStampName);
  const bool is_owner = owner != nullptr && fs::path(build.options.dictionary).filename() == *owner;
  Dictionary dictionary;
  if (is_owner || dictionary_open(build.dictionary.target, PairCheck::quick, dictionary)) return true;
  return fail(build, index + ": is the index of " + (owner == nullptr ? "another dictionary" : *owner) + way_out);
}

// The names of the files to come, before anything is read: what cannot be written need not be made.
bool plan_names(Build& build) {
  const BuildOptions& options = build.options;
  build.index_name = index_name_of(options.dictionary);
  const std::string index = (fs::path(options.dictionary).parent_path() / build.index_name).string();
  build.figures.index = index;
  build.dictionary.target = options.dictionary;
  build.index.target = index;
  if (fs::path(options.dictionary).filename().empty()) return fail(build, options.dictionary + ": not a file name");
  if (fs::path(options.dictionary).extension() == ".idx") {
    return fail(build, options.dictionary + ": \".idx\" is for the index file");
  }
  if (build.index_name.size() > kLongNameSize) return fail(build, build.index_name + ": the index name is too long");
  if (build.index_name.front() == ' ') return fail(build, options.dictionary + ": the name begins with a blank");
  // None of the three files may replace the text that they are made of.
  for (const std::string& output : {options.dictionary, index, pair_stamp_path(index)}) {
    std::error_code error;
    if (fs::is_directory(output, error)) return fail(build, output + ": is a directory");
    if (is_same_file(output, options.entries)) return fail(build, output + ": is the entry text itself");
  }
  if (!options.force && !owns_index(build)) return false;
  build.name_size = name_size_of(build.index_name);
  build.keys = {options.key_fields | 1U << kKeyHw, max_key_length(build.name_size)};
  return true;
}

// Opens a draft beside the file that it is to become.
bool part_open(const Build& build, PartFile& part) {
  return part.draft.open_beside(part.target) || fail_with_reason(build, part.target + ": cannot be created", errno);
}

// --- from the text to sorted records

void report_bad_line(const Build& build, const EntryText& text) {
  std::fprintf(build.log, "%s:%lld: %s\n", build.options.entries.c_str(), static_cast<long long>(text.line_number()),
               text.reason().c_str());
}

// Puts a record among those to be sorted. False, and told, if there are too many or no room is left for sorting.
bool take_record(Build& build, const EntryText& text, ItemSorter& records, std::int64_t& bytes) {
  ++build.figures.entries;
  bytes += static_cast<std::int64_t>(text.record().size());
  // Told before anything is sorted, which takes longest.
  if (bytes > kMaxRecordBytes) return report(build, PackResult::too_many_blocks, build.dictionary_blocks);
  // The number of its line goes with the record until all are in order.
  build.item = text.record();
  append_u32(build.item, static_cast<std::uint32_t>(text.line_number()));
  store_u16(build.item.data(), static_cast<std::uint32_t>(build.item.size()));
  return records.add(build.item) || fail_sorting(build);
}

bool refuse_bad_lines(const Build& build) {
  const std::int64_t count = build.figures.bad_lines;
  const char* form = count == 1 ? " bad line" : " bad lines";
  return fail(build, build.options.entries + ": " + std::to_string(count) + form + ", nothing has been built");
}

// Reads the text to its end, bad lines and all, so that one build shows all that is wrong.
bool read_entries(Session& session, Build& build, ItemSorter& records) {
  const std::string& path = build.options.entries;
  const File stream(std::fopen(path.c_str(), "rb"));
  const int error = stream == nullptr ? errno : is_a_file(stream.get()) ? 0 : EISDIR;
  if (error != 0) return fail_with_reason(build, path + ": cannot be opened", error);
  EntryText text(session, stream.get(), build.keys);
  TerminalCount shown(build.log, "entries read");
  std::int64_t bytes = 0;
  for (EntryText::Line line = text.next(); line != EntryText::Line::end; line = text.next()) {
    shown.count();
    if (line != EntryText::Line::entry) shown.hide();
    if (line == EntryText::Line::unreadable) return fail(build, path + ": cannot be read to its end");
    if (line == EntryText::Line::no_memory) return fail(build, "memory is exhausted");
    if (line == EntryText::Line::entry && !take_record(build, text, records, bytes)) return false;
    if (line == EntryText::Line::entry) continue;
    report_bad_line(build, text);
    ++build.figures.bad_lines;
    if (!build.options.skip_bad && build.figures.bad_lines == kMaxBadLines) break;
  }
  const bool is_good = build.figures.bad_lines == 0 || build.options.skip_bad;
  return is_good || refuse_bad_lines(build);
}

// --- blocks and trees

// The tree over the chains of one field, in the index file.
bool write_tree(Build& build, int key_field, std::vector<ChainStart> chains) {
  Tree& tree = build.trees[static_cast<std::size_t>(key_field)];
  const PackResult result = tree_write(build.index_blocks, build.name_size, std::move(chains), tree);
  // The level below the index, in the dictionary file, counts for keys that have key blocks.
  if (key_field != kKeyHw) ++tree.levels;
  return report(build, result, build.index_blocks);
}

// Finds entries that are the same among those of one surface form, which come one after the other.
class RepeatedEntries {
 public:
  void take(ByteView record, std::uint32_t line) {
    const std::string_view hw = item_key(record);
    // The same entry has the same form, so only those of one form are held in memory.
    if (hw != hw_) {
      lines_.clear();
      hw_ = hw;
    }
    ByteHash hash;
    hash.add(record.data(), record.size());
    const auto [first, is_new] = lines_.emplace(hash.value(), line);
    if (!is_new) found_.emplace_back(line, first->second);
  }

  void tell(const Build& build) {
    std::sort(found_.begin(), found_.end());
    build.figures.repeated = static_cast<std::int64_t>(found_.size());
    const char* const path = build.options.entries.c_str();
    for (std::size_t i = 0; i < std::min(found_.size(), kMaxRepeated); ++i) {
      std::fprintf(build.log,
                   "%s:%u: warning: this entry is that of line %u: strike one out, or the word is tried twice\n", path,
                   found_[i].first, found_[i].second);
    }
    if (found_.size() <= kMaxRepeated) return;
    std::fprintf(build.log, "%s: warning: %zu more entries are repeated\n", path, found_.size() - kMaxRepeated);
  }

 private:
  std::string hw_;
  std::unordered_map<std::uint64_t, std::uint32_t> lines_;      // of entries, by their hashes
  std::vector<std::pair<std::uint32_t, std::uint32_t>> found_;  // the line of an entry, and of the one before
};

// The data blocks in the order of the forms, and the tree of the headwords over them.
bool write_records(Build& build, ItemSorter& records) {
  if (!records.start_reading()) return fail_sorting(build);
  std::vector<ChainStart> chains;
  BlockPacker packer(build.dictionary_blocks, dict_layout(kDataBlock), LongRun::many_chains, chains);
  RepeatedEntries repeated;
  TerminalCount shown(build.log, "entries written");
  for (ByteView item = records.next(); !item.empty(); item = records.next()) {
    Bytes& record = build.item;
    // The number of the line goes along for messages alone; equal entries come in the order of the text.
    record.assign(item.begin(), item.end() - kLineNumberSize);
    store_u16(record.data(), static_cast<std::uint32_t>(record.size()));
    const std::uint32_t line = load_u32(item.data() + record.size());
    repeated.take(record, line);
    shown.count();
    const PackResult result = packer.add(item_key(record), record);
    if (result != PackResult::ok) return report(build, result, build.dictionary_blocks);
  }
  shown.hide();
  repeated.tell(build);
  if (records.failed()) return fail_sorting(build);
  return report(build, packer.finish(), build.dictionary_blocks) && write_tree(build, kKeyHw, std::move(chains));
}

// An item for sorting: its size, a key and the data block that holds it.
void key_item(std::string_view key, std::uint32_t block, Bytes& item) {
  item.clear();
  append_u16(item, 2 + key_entry_size(key.size()));
  append_text(item, key);
  append_u16(item, block);
}

// The keys of one field in a data block. Records without such a key are found by the others alone.
bool gather_block_keys(const DictBlock& block, std::uint32_t number, int key_field, ItemSorter& keys) {
  Bytes item;
  ByteView record;
  for (std::size_t at = kDictDataOffset; at < block.content().size(); at += record.size()) {
    record = record_at(block.content(), at);
    const std::string_view key = record_field(record, key_field).value_or(std::string_view{});
    if (key.empty()) continue;
    key_item(key, number, item);
    if (!keys.add(item)) return false;
  }
  return true;
}

// Reads back the data blocks that were just written, since their numbers are what the keys lead to.
bool gather_keys(Build& build, std::uint32_t end_block, int key_field, ItemSorter& keys) {
  DictBlock block;
  if (std::fflush(build.dictionary.draft.stream()) != 0)
    return report(build, PackResult::write_failed, build.dictionary_blocks);
  for (std::uint32_t number = kFirstDictBlock; number < end_block; ++number) {
    const bool is_read = block.read(build.dictionary.draft.stream(), dict_block_offset(number));
    if (!is_read) return fail(build, build.dictionary.target + ": cannot be read back");
    if (!gather_block_keys(block, number, key_field, keys)) return fail_sorting(build);
  }
  return true;
}

// Packs sorted keys. A key with the same block as the one before says nothing new.
PackResult pack_keys(ItemSorter& keys, BlockPacker& packer) {
  Bytes last;
  for (ByteView item = keys.next(); !item.empty(); item = keys.next()) {
    const ByteView entry = item.subspan(2);
    if (std::ranges::equal(entry, last)) continue;
    if (const PackResult r = packer.add(item_key(item), entry); r != PackResult::ok) return r;
    last.assign(entry.begin(), entry.end());
  }
  return packer.finish();
}

// The key blocks of one field behind the data blocks, and the tree over them.
bool write_keys(Build& build, std::uint32_t end_block, int key_field) {
  ItemSorter keys(build.options.memory);
  if (!gather_keys(build, end_block, key_field, keys)) return false;
  if (!keys.start_reading()) return fail_sorting(build);
  std::vector<ChainStart> chains;
  BlockPacker packer(build.dictionary_blocks, dict_layout(kKeyBlock), LongRun::many_chains, chains);
  const PackResult result = pack_keys(keys, packer);
  if (keys.failed()) return fail_sorting(build);
  return report(build, result, build.dictionary_blocks) && write_tree(build, key_field, std::move(chains));
}

// --- the header, and the end

// The description of one index in the header: its name, the levels of its tree, its root.
void slot_store(const Build& build, int key_field, Bytes& header) {
  const Tree& tree = build.trees[static_cast<std::size_t>(key_field)];
  std::uint8_t* slot = header.data() + slot_offset(build.name_size, key_field);
  std::copy(build.index_name.begin(), build.index_name.end(), slot);
  slot[build.name_size + kSlotLevels] = static_cast<std::uint8_t>(tree.levels);
  store_u16(slot + build.name_size + kSlotRoot, tree.root);
}

// Written twice: first to take its place in front of the blocks, and in the end with the roots of the trees.
bool write_header(Build& build) {
  Bytes header(kDictBlockSize);
  for (int field = kKeyHw; field <= kSlotCount; ++field) {
    if (build.keys.has(field)) slot_store(build, field, header);
  }
  std::FILE* stream = build.dictionary.draft.stream();
  const bool is_written =
      std::fseek(stream, 0, SEEK_SET) == 0 && std::fwrite(header.data(), 1, header.size(), stream) == header.size();
  return is_written || report(build, PackResult::write_failed, build.dictionary_blocks);
}

// What stands at the targets, if it is a pair; the stamp to come then accepts it until the new one stands.
void put_pair_before(const Build& build, Stamp& stamp) {
  Dictionary before;
  if (!dictionary_open(build.dictionary.target, PairCheck::whole, before)) return;
  const std::optional<FileMark> dictionary = file_mark(before.dictionary.get());
  const std::optional<FileMark> index = file_mark(before.index.get());
  if (before.index_path != build.index.target || !dictionary || !index) return;
  stamp.put(kStampDictionaryBefore, *dictionary);
  stamp.put(kStampIndexBefore, *index);
}

// The stamp of the two files in the making. False if they cannot be read back.
bool pair_stamp(const Build& build, Stamp& stamp) {
  std::FILE* dictionary = build.dictionary.draft.stream();
  std::FILE* index = build.index.draft.stream();
  const std::optional<FileMark> dictionary_mark = file_mark(dictionary);
  const std::optional<FileMark> index_mark = file_mark(index);
  const std::optional<std::int64_t> dictionary_ends = file_ends_hash(dictionary);
  const std::optional<std::int64_t> index_ends = file_ends_hash(index);
  if (!dictionary_mark || !index_mark || !dictionary_ends || !index_ends) return false;
  stamp.put(kStampName, std::string_view(fs::path(build.dictionary.target).filename().string()));
  stamp.put(kStampDictionary, *dictionary_mark);
  stamp.put(kStampIndex, *index_mark);
  stamp.put(kStampDictionaryEnds, *dictionary_ends);
  stamp.put(kStampIndexEnds, *index_ends);
  return true;
}

// Both are whole and on the disk before one is put in place: they are of use only together.
bool put_in_place(Build& build) {
  for (PartFile* part : {&build.index, &build.dictionary}) {
    if (!part->draft.sync()) return fail(build, part->target + ": cannot write");
  }
  left_drafts_remove(build.dictionary.target);
  const std::string stamp_path = pair_stamp_path(build.index.target);
  Stamp stamp;
  // The stamp is made of the drafts, before anything is put in place.
  if (!pair_stamp(build, stamp)) return fail(build, build.dictionary.target + ": cannot be read back");
  // Between the two renames the files do not belong together; this stamp says that a replacement is under way.
  Stamp replacing = stamp;
  replacing.put(kStampReplacing, std::int64_t{1});
  put_pair_before(build, replacing);
  Stamp old;
  const StampState old_state = stamp_read(stamp_path, old);
  if (!stamp_write(stamp_path, replacing, true)) return fail(build, stamp_path + ": cannot write");
  if (!build.index.draft.put_in_place(build.index.target)) {
    // Nothing has changed but the stamp.
    if (old_state != StampState::whole || !stamp_write(stamp_path, old, true)) std::remove(stamp_path.c_str());
    return fail(build, build.index.target + ": cannot be put in place; the dictionary stands as before");
  }
  if (!build.dictionary.draft.put_in_place(build.dictionary.target)) {
    return fail(build, build.dictionary.target + ": cannot be put in place, and its index is a new one already: the " +
                           "dictionary cannot be used until it is built again");
  }
  folder_sync(build.dictionary.target);
  if (!stamp_write(stamp_path, stamp, true)) {
    std::fprintf(build.log, "%s: cannot write; the dictionary is whole, but every opening has to read all of it\n",
                 stamp_path.c_str());
  }
  return true;
}

// Data blocks first, then field by field the key blocks with their trees, and the header in the end.
bool write_files(Build& build, std::unique_ptr<ItemSorter> records) {
  if (!part_open(build, build.dictionary) || !part_open(build, build.index)) return false;
  build.dictionary_blocks = {build.dictionary.draft.stream(), kFirstDictBlock};
  build.index_blocks = {build.index.draft.stream(), kFirstIndexBlock};
  if (!write_header(build) || !write_records(build, *records)) return false;
  // The memory of the sort is free before that of the next one is taken.
  records.reset();
  const std::uint32_t end_block = build.dictionary_blocks.next;
  for (int field = kKeyHw + 1; field <= kSlotCount; ++field) {
    if (build.keys.has(field) && !write_keys(build, end_block, field)) return false;
  }
  return write_header(build);
}

}  // namespace

std::string index_name_of(const std::string& dictionary) {
  std::string name = fs::path(dictionary).stem().string();
  std::replace(name.begin(), name.end(), '.', '_');
  return name + ".idx";
}

bool dictionary_build(Session& session, const BuildOptions& options, std::FILE* log, BuildFigures& figures) {
  figures = {};
  Build build{.options = options, .log = log, .figures = figures, .index_name = {}};
  if (!plan_names(build)) return false;
  auto records = std::make_unique<ItemSorter>(options.memory);
  if (!read_entries(session, build, *records) || !write_files(build, std::move(records))) return false;
  figures.dictionary_blocks = build.dictionary_blocks.next - 1;
  figures.index_blocks = build.index_blocks.next - 1;
  return put_in_place(build);
}

}  // namespace lexon
