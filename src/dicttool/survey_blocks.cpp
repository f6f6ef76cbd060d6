// Block by block: sizes, types, records, entries, links.

#include "dicttool/survey.hpp"

#include <algorithm>

#include "dict/block_chain.hpp"
#include "dicttool/record_view.hpp"

namespace lexon {

namespace {

// A file of another kind is nothing but damage.
constexpr std::int64_t kMaxDamageShown = 100;

// One of the two files while it is looked at. Block numbers begin with 1.
struct FileSurvey {
  const std::string& path;
  std::FILE* stream;
  std::size_t block_size;
  std::size_t link_offset;
  BlockMap& map;
  DamageLog& damage;

  [[nodiscard]] std::int64_t offset_of(std::uint32_t number) const {
    return static_cast<std::int64_t>(block_size) * (static_cast<std::int64_t>(number) - 1);
  }
  void report(std::uint32_t number, std::size_t at, const std::string& what) const {
    damage.add(path, offset_of(number) + static_cast<std::int64_t>(at), what);
  }
};

// Also makes the map as large as the file, so that no number of a block inside it is out of range.
void count_blocks(const FileSurvey& file) {
  // The last block may be cut off; what is left of it is told, and not looked at.
  const std::int64_t size = file_size(file.stream);
  const auto block_size = static_cast<std::int64_t>(file.block_size);
  const std::int64_t blocks = size / block_size;
  if (size % block_size != 0) file.damage.add(file.path, blocks * block_size, "the file ends within a block");
  if (blocks > kMaxBlockNumber) file.report(kMaxBlockNumber + 1, 0, "blocks behind number 65535 cannot be reached");
  file.map.end = static_cast<std::uint32_t>(std::min<std::int64_t>(blocks, kMaxBlockNumber)) + 1;
  file.map.types.resize(file.map.end);
  file.map.links.resize(file.map.end);
  file.map.owners.resize(file.map.end);
}

// --- links

// Only blocks of one type may be linked, and a block belongs to one chain.
void check_link(const FileSurvey& file, std::uint32_t from, std::vector<bool>& is_linked) {
  const std::uint16_t to = file.map.links[from];
  if (to == 0) return;
  // Types of index blocks are all 0, so that any of them may follow another.
  const bool is_place = to < file.map.end && file.map.types[to] == file.map.types[from];
  if (!is_place)
    return file.report(from, file.link_offset, "a link to block " + std::to_string(to) + ", which is no such block");
  // Two links to one block would bring its records up twice.
  if (is_linked[to]) file.report(from, file.link_offset, "a second link to block " + std::to_string(to));
  is_linked[to] = true;
}

// A link that no walk from the head of a chain comes by is part of a circle.
void check_circles(const FileSurvey& file, std::uint32_t first, const std::vector<bool>& is_linked) {
  std::vector<bool> is_walked(file.map.end);
  for (std::uint32_t head = first; head < file.map.end; ++head) {
    // A chain is walked from its head alone; what is linked to is no head.
    if (is_linked[head]) continue;
    for (std::uint32_t at = head; at != 0 && at < file.map.end && !is_walked[at]; at = file.map.links[at]) {
      is_walked[at] = true;
    }
  }
  for (std::uint32_t number = first; number < file.map.end; ++number) {
    if (is_walked[number]) continue;
    // One is enough: the others are most likely of the same circle.
    return file.report(number, file.link_offset, "links that run in a circle");
  }
}

void check_links(const FileSurvey& file, std::uint32_t first) {
  std::vector<bool> is_linked(file.map.end);
  for (std::uint32_t number = first; number < file.map.end; ++number) check_link(file, number, is_linked);
  check_circles(file, first, is_linked);
}

// --- what blocks hold

// Walks the records or entries of a block. `read` gives the key of the one at a place and its size, or what is wrong.
struct Item {
  std::string_view key;
  std::size_t size;
  const char* wrong;  // null: nothing
};

template <typename ReadItem>
void check_items(const FileSurvey& file, std::uint32_t number, ByteView content, std::size_t at, ReadItem read) {
  std::string last;
  while (at < content.size()) {
    const Item item = read(content, at);
    // Behind a damaged item nothing says where the next one begins.
    if (item.wrong != nullptr) return file.report(number, at, item.wrong);
    if (key_compare(item.key, last) < 0) file.report(number, at, "a key that is lower than the one before it");
    last = item.key;
    at += item.size;
  }
}

// A record of a data block; its key is the headword.
Item read_record(ByteView content, std::size_t at) {
  const ByteView record = record_at(content, at);
  StoredRecord stored;
  if (record.empty()) return {{}, 0, "a record that reaches behind the used part of its block"};
  if (!stored_record_read(record, stored)) return {{}, 0, "a record with a field that reaches behind its end"};
  return {stored.hw, record.size(), nullptr};
}

// An entry's block must be one of `map`; in the lowest level of the index it lies in the other file and is looked at
// from the tree.
Item read_entry(ByteView content, std::size_t at, const BlockMap* map, std::uint8_t type) {
  ByteReader reader(content, at);
  const std::string_view key = reader.text();
  const std::uint16_t block = reader.u16();
  if (!reader.ok()) return {{}, 0, "an entry that reaches behind the used part of its block"};
  const bool is_lost = map != nullptr && (block == 0 || block >= map->end || map->types[block] != type);
  return {key, reader.at() - at, is_lost ? "an entry that leads to no block of records" : nullptr};
}

// The first two bytes of a block say how much of it is used. False if that cannot be.
bool check_used(const FileSurvey& file, std::uint32_t number, const std::uint8_t* bytes, std::size_t data_offset) {
  const std::size_t used = load_u16(bytes);
  const bool is_good = used >= data_offset && used <= file.link_offset;
  if (!is_good) file.report(number, 0, "a used length of " + std::to_string(used));
  return is_good;
}

// What a block holds goes by its type, which has been noted before.
void check_dictionary_block(const FileSurvey& file, std::uint32_t number, const DictBlock& block) {
  if (!check_used(file, number, block.bytes().data(), kDictDataOffset)) return;
  const std::uint8_t type = file.map.types[number];
  if (type == kDataBlock) return check_items(file, number, block.content(), kDictDataOffset, read_record);
  if (type != kKeyBlock) return file.report(number, kDictTypeOffset, "a block of type " + std::to_string(type));
  check_items(file, number, block.content(), kDictDataOffset,
              [&file](ByteView content, std::size_t at) { return read_entry(content, at, &file.map, kDataBlock); });
}

// In two rounds: whether an entry leads to records shows only when all types are known.
void survey_dictionary(const FileSurvey& file) {
  count_blocks(file);
  DictBlock block;
  for (std::uint32_t number = kFirstDictBlock; number < file.map.end; ++number) {
    if (!block.read(file.stream, file.offset_of(number))) return file.report(number, 0, "a block that cannot be read");
    file.map.types[number] = block.bytes()[kDictTypeOffset];
    file.map.links[number] = block.next();
  }
  if (file.map.end > kFirstDictBlock) file.map.types[1] = file.map.types[kFirstDictBlock];  // 1 reads as 2
  for (std::uint32_t number = kFirstDictBlock; number < file.map.end; ++number) {
    if (block.read(file.stream, file.offset_of(number))) check_dictionary_block(file, number, block);
  }
  check_links(file, kFirstDictBlock);
}

// The blocks of an index are all of one kind: entries, each a key and a block.
void survey_index(const FileSurvey& file, std::size_t data_offset) {
  count_blocks(file);
  IndexBlock block;
  for (std::uint32_t number = kFirstIndexBlock; number < file.map.end; ++number) {
    if (!block.read(file.stream, file.offset_of(number))) return file.report(number, 0, "a block that cannot be read");
    file.map.links[number] = block.next();
    if (!check_used(file, number, block.bytes().data(), data_offset)) continue;
    check_items(file, number, block.content(), data_offset,
                [](ByteView content, std::size_t at) { return read_entry(content, at, nullptr, 0); });
  }
  check_links(file, kFirstIndexBlock);
}

}  // namespace

void DamageLog::add(const std::string& file, std::int64_t offset, const std::string& what) {
  add(file + ": offset " + std::to_string(offset) + ": " + what);
}

void DamageLog::add(const std::string& message) {
  if (++count > kMaxDamageShown) return;
  std::fprintf(stream, "%s\n", message.c_str());
  if (count == kMaxDamageShown) std::fprintf(stream, "more damage is only counted\n");
}

void survey_blocks(Survey& survey) {
  const Dictionary& opened = survey.opened;
  survey_dictionary(
      {opened.path, opened.dictionary.get(), kDictBlockSize, kDictLinkOffset, survey.dictionary, survey.damage});
  survey_index({opened.index_path, opened.index.get(), kIndexBlockSize, kIndexLinkOffset, survey.index, survey.damage},
               index_data_offset(opened.name_size));
}

}  // namespace lexon
