#include "dict/index.hpp"

#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "data/platform.hpp"
#include "data/pool.hpp"
#include "data/state.hpp"
#include "data/words.hpp"
#include "dict/block_chain.hpp"
#include "dict/block_reader.hpp"
#include "dict/lookup.hpp"

namespace lexon {

constinit IndexNaming index_naming{kShortNameSize};
constinit LookupDamage lookup_damage{};

namespace {

bool is_key_field(int key_field) {
  return key_field >= kKeyHw && key_field <= kSlotCount;
}

// The index name of a slot without its padding.
std::string_view slot_name(std::string_view padded) {
  const std::string_view name = padded.substr(0, padded.find('\0'));
  return name.substr(0, name.find_last_not_of(' ') + 1);
}

void descriptor_fill(IndexDescriptor& descriptor, BlockReader reader) {
  const std::string_view name = slot_name(reader.text(index_naming.name_size));
  descriptor = {};
  name.copy(descriptor.name, kLongNameSize);
  descriptor.unread = reader.u8();
  descriptor.levels = static_cast<std::int8_t>(reader.u8());
  descriptor.number1 = reader.u16();
  descriptor.root = reader.u16();
  descriptor.number2 = reader.u32();
}

// The descriptor of a slot, or null.
const IndexDescriptor* descriptor_at(const IndexDescriptor* const* slots, int key_field) {
  return slots != nullptr && is_key_field(key_field) ? slots[key_field] : nullptr;
}

// The lowest level of a field above 1 lies in the dictionary file, so the index has one only from 2 levels on.
std::FILE* tree_open(const IndexDescriptor& descriptor, int key_field, const char* prefix, const char* mode) {
  const int least_levels = key_field == kKeyHw ? 1 : 2;
  if (descriptor.levels < least_levels) return nullptr;
  const std::string path = std::string(prefix) + descriptor.name;
  std::FILE* stream = std::fopen(path.c_str(), mode);
  if (stream == nullptr || is_a_file(stream)) return stream;
  static_cast<void>(std::fclose(stream));
  return nullptr;
}

// Down the tree in `index` and into the dictionary. Without a tree the scan starts at the root.
Status lookup_from(KeyHits& hits, const DictionaryFiles& files, std::FILE* index, const IndexDescriptor& descriptor,
                   int key_field, std::string_view key, LookupGroup*& groups) {
  if (index == nullptr) return dict_scan(files.dictionary, descriptor.levels, key_field, key, hits, groups);
  const int levels_in_index = key_field == kKeyHw ? descriptor.levels : descriptor.levels - 1;
  if (const Status s = index_search(index, levels_in_index, key, hits); s != Status::ok) return s;
  return dict_scan(files.dictionary, key_field == kKeyHw ? 0 : 1, key_field, key, hits, groups);
}

Status lookup_by(const DictionaryFiles& files, const IndexDescriptor& descriptor, int key_field, std::string_view key,
                 LookupGroup*& groups) {
  KeyHits hits;
  if (const Status s = key_hits_append(hits, descriptor.root); s != Status::ok) return s;
  std::FILE* own_index = files.index == nullptr ? tree_open(descriptor, key_field, "", "rb+") : nullptr;
  std::FILE* index = files.index == nullptr ? own_index : files.index;
  const Status s = lookup_from(hits, files, index, descriptor, key_field, key, groups);
  if (own_index != nullptr) static_cast<void>(std::fclose(own_index));
  key_hits_free(hits);
  return s;
}

void groups_free(LookupGroup*& groups) {
  WordEntry* words = nullptr;
  groups_flatten(groups, words);
  entry_list_free(words);
  groups = nullptr;
}

}  // namespace

Status index_slot_read(std::FILE* stream, int key_field, IndexDescriptor** slots) {
  DictBlock header;
  if (!is_key_field(key_field) || !header.read(stream, 0)) return Status::ok;
  index_naming.name_size = name_size_of(BlockReader(header.bytes(), kHeaderSlotsOffset).text(kLongNameSize));
  const std::size_t at = slot_offset(index_naming.name_size, key_field);
  const bool is_empty = header.bytes()[at] == ' ' || header.bytes()[at] == '\0';
  if (is_empty || slots[key_field] != nullptr) return Status::ok;
  void* cell = checked_malloc(sizeof(IndexDescriptor));
  if (cell == nullptr) return Status::memory;
  slots[key_field] = new (cell) IndexDescriptor;
  descriptor_fill(*slots[key_field], BlockReader(header.bytes(), at));
  return Status::ok;
}

std::FILE* index_open(const char* prefix, IndexDescriptor* const* slots, int key_field, bool read_only) {
  const IndexDescriptor* descriptor = descriptor_at(slots, key_field);
  return descriptor == nullptr ? nullptr : tree_open(*descriptor, key_field, prefix, read_only ? "rb" : "rb+");
}

void note_damaged_block(const std::FILE* stream, std::int64_t offset) {
  if (lookup_damage.blocks++ != 0) return;
  lookup_damage.stream = stream;
  lookup_damage.offset = offset;
}

Status dict_lookup(const DictionaryFiles& files, int key_field, const char* key, LookupGroup*& groups) {
  groups = nullptr;
  const IndexDescriptor* descriptor = descriptor_at(files.slots, key_field);
  Status s = Status::index_unreadable;
  if (descriptor != nullptr) s = lookup_by(files, *descriptor, key_field, key, groups);
  if (s != Status::ok) groups_free(groups);
  state.engine_status = s;
  return s;
}

void groups_flatten(LookupGroup* groups, WordEntry*& list) {
  list = nullptr;
  WordEntry** link = &list;
  while (groups != nullptr) {
    *link = groups->entries;
    while (*link != nullptr) link = &(*link)->next;
    temp_delete(std::exchange(groups, groups->next));
  }
}

int key_compare(const char* a, std::int32_t a_len, const char* b, std::int32_t b_len) {
  if (a_len == 0 && b_len == 0) return 0;
  if (a == nullptr && b == nullptr) return 0;
  if (a == nullptr || b == nullptr) return -1;
  return key_compare(std::string_view(a, static_cast<std::size_t>(a_len)),
                     std::string_view(b, static_cast<std::size_t>(b_len)));
}

}  // namespace lexon
