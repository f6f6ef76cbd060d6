// Down every key tree, level by level: each entry must lead to a block of the level below, and name its lowest key.

#include <optional>
#include <utility>

#include "dict/block_chain.hpp"
#include "dicttool/record_view.hpp"
#include "dicttool/survey.hpp"

namespace lexon {

namespace {

// One level of one tree while it is walked.
struct LevelWalk {
  Survey& survey;
  int key_field;
  bool is_lowest;                         // its entries lead to the dictionary file
  std::vector<bool> seen;                 // blocks of this level, by number
  std::vector<std::uint16_t> below = {};  // heads of the chains of the next level

  // The type of the blocks of the dictionary file under the tree.
  [[nodiscard]] std::uint8_t leads_to() const { return key_field == kKeyHw ? kDataBlock : kKeyBlock; }
};

// Where the header of the dictionary describes the index of a field.
std::int64_t slot_place(const Survey& survey, int key_field) {
  return static_cast<std::int64_t>(slot_offset(survey.opened.name_size, key_field));
}

// The first key of a block of either file; none for an empty block.
template <std::size_t Size>
std::optional<std::string> lowest_key(std::FILE* stream, std::int64_t offset, std::size_t data_offset) {
  Block<Size> block;
  if (!block.read(stream, offset) || block.content().size() <= data_offset) return std::nullopt;
  return std::string(ByteReader(block.content(), data_offset).text());
}

// The first key of a block of the level below, whichever file that lies in.
std::optional<std::string> lowest_key_below(const LevelWalk& walk, std::uint16_t number) {
  if (!walk.is_lowest) {
    return lowest_key<kIndexBlockSize>(walk.survey.opened.index.get(), index_block_offset(number),
                                       index_data_offset(walk.survey.opened.name_size));
  }
  // In front of the first key of a record stands its size.
  const bool holds_records = walk.leads_to() == kDataBlock;
  return lowest_key<kDictBlockSize>(walk.survey.opened.dictionary.get(), dict_block_offset(number),
                                    kDictDataOffset + (holds_records ? 2 : 0));
}

// Is there such a block, and in the dictionary file one of the right type?
bool is_block_below(const LevelWalk& walk, std::uint16_t number) {
  const BlockMap& map = walk.is_lowest ? walk.survey.dictionary : walk.survey.index;
  return number != 0 && number < map.end && (!walk.is_lowest || map.types[number] == walk.leads_to());
}

// Holds an entry against the block that it leads to, and notes that for the next level.
void check_entry(LevelWalk& walk, std::int64_t offset, std::string_view key, std::uint16_t number) {
  const std::string& path = walk.survey.opened.index_path;
  if (!is_block_below(walk, number)) {
    walk.survey.damage.add(path, offset, "an entry that leads to no block of the level below");
    return;
  }
  const std::optional<std::string> lowest = lowest_key_below(walk, number);
  // An empty block has no lowest key, and is no damage.
  if (lowest.has_value() && *lowest != key) {
    walk.survey.damage.add(path, offset, "an entry whose key is not the lowest of block " + std::to_string(number));
  }
  walk.below.push_back(number);
}

// The entries of one block. A block that cannot be read was told with the blocks.
void walk_block(LevelWalk& walk, std::uint16_t number) {
  IndexBlock block;
  if (!block.read(walk.survey.opened.index.get(), index_block_offset(number))) return;
  ByteReader reader(block.content(), index_data_offset(walk.survey.opened.name_size));
  while (reader.more()) {
    const auto at = static_cast<std::int64_t>(reader.at());
    const std::string_view key = reader.text();
    const std::uint16_t target = reader.u16();
    if (reader.ok()) check_entry(walk, index_block_offset(number) + at, key, target);
  }
}

// Every block belongs to one tree.
void own_block(Survey& survey, BlockMap& map, std::uint16_t number, int key_field) {
  const bool is_index = &map == &survey.index;
  const std::string& path = is_index ? survey.opened.index_path : survey.opened.path;
  const std::int64_t offset = is_index ? index_block_offset(number) : dict_block_offset(number);
  const bool is_shared = map.owners[number] != 0 && map.owners[number] != key_field;
  if (is_shared) survey.damage.add(path, offset, "a block that two trees lead to");
  map.owners[number] = static_cast<std::uint8_t>(key_field);
}

// The blocks of one chain, each once: a circle was told with the links.
void walk_chain(LevelWalk& walk, std::uint16_t head) {
  BlockMap& map = walk.survey.index;
  for (std::uint16_t number = head; number != 0 && number < map.end && !walk.seen[number]; number = map.links[number]) {
    walk.seen[number] = true;
    own_block(walk.survey, map, number, walk.key_field);
    walk_block(walk, number);
  }
}

// The blocks of the dictionary file that the tree leads to, with those that are linked to them.
void own_chains(Survey& survey, int key_field, const std::vector<std::uint16_t>& heads) {
  BlockMap& map = survey.dictionary;
  std::vector<bool> seen(map.end);
  for (const std::uint16_t head : heads) {
    for (std::uint16_t number = head; number != 0 && number < map.end && !seen[number]; number = map.links[number]) {
      seen[number] = true;
      own_block(survey, map, number, key_field);
    }
  }
}

// Level by level from the root down; the last heads are blocks of the dictionary file.
void survey_tree(Survey& survey, int key_field, const IndexDescriptor& slot) {
  // A slot counts the key blocks of the dictionary file as a level, which headwords have none of.
  const int levels = key_field == kKeyHw ? slot.levels : slot.levels - 1;
  const bool has_root = slot.root != 0 && slot.root < survey.index.end;
  if (levels < 1 || !has_root) {
    return survey.damage.add(survey.opened.path, slot_place(survey, key_field), "a slot without a tree");
  }
  std::vector<std::uint16_t> heads = {slot.root};
  for (int level = levels; level > 0; --level) {
    LevelWalk walk{
        .survey = survey, .key_field = key_field, .is_lowest = level == 1, .seen = std::vector<bool>(survey.index.end)};
    for (const std::uint16_t head : heads) walk_chain(walk, head);
    heads = std::move(walk.below);
  }
  if (heads.empty()) survey.damage.add(survey.opened.path, slot_place(survey, key_field), "a tree that leads nowhere");
  own_chains(survey, key_field, heads);
}

// Blocks that no tree leads to hold what no look-up finds.
void check_owners(Survey& survey) {
  for (std::uint32_t number = kFirstDictBlock; number < survey.dictionary.end; ++number) {
    if (survey.dictionary.owners[number] != 0) continue;
    survey.damage.add(survey.opened.path, dict_block_offset(number), "a block that no tree leads to");
  }
  for (std::uint32_t number = kFirstIndexBlock; number < survey.index.end; ++number) {
    if (survey.index.owners[number] != 0) continue;
    survey.damage.add(survey.opened.index_path, index_block_offset(number), "a block that no tree leads to");
  }
}

}  // namespace

void survey_trees(Survey& survey) {
  for (int field = kKeyHw; field <= kSlotCount; ++field) {
    const IndexDescriptor* slot = survey.opened.slots[static_cast<std::size_t>(field)];
    if (slot == nullptr) continue;
    if (key_field_name(field) == nullptr) {
      survey.damage.add(survey.opened.path, slot_place(survey, field), "an index of a field that is no key");
    } else {
      survey_tree(survey, field, *slot);
    }
  }
  // Words of graphs are looked up by their concept words.
  if (survey.opened.slots[kKeyCw] == nullptr) {
    survey.damage.add(survey.opened.path, slot_place(survey, kKeyCw), "no index of concept words");
  }
  check_owners(survey);
}

}  // namespace lexon
