#include "dict/builder_open.hpp"

#include <filesystem>

#include "data/platform.hpp"
#include "data/pool.hpp"
#include "dict/block_chain.hpp"

namespace lexon {

OpenedDictionary::~OpenedDictionary() {
  for (IndexDescriptor* slot : slots) {
    void* cell = slot;
    heap_free_clear(cell);
  }
}

bool dictionary_open(const std::string& path, std::FILE* log, OpenedDictionary& opened) {
  opened.path = path;
  opened.dictionary.reset(std::fopen(path.c_str(), "rb"));
  if (opened.dictionary == nullptr || !is_a_file(opened.dictionary.get())) {
    std::fprintf(log, "%s: cannot be opened\n", path.c_str());
    return false;
  }
  DictBlock header;
  if (header.read(opened.dictionary.get(), 0)) return true;
  std::fprintf(log, "%s: offset 0: not a dictionary: the file is shorter than its header\n", path.c_str());
  return false;
}

bool dictionary_index_open(std::FILE* log, OpenedDictionary& opened) {
  for (int field = kKeyHw; field <= kSlotCount; ++field) {
    if (index_slot_read(opened.dictionary.get(), field, opened.slots.data()) != Status::ok) return false;
  }
  const IndexDescriptor* slot = opened.slots[kKeyHw];
  if (slot == nullptr || slot->levels < 1) {
    std::fprintf(log, "%s: offset %zu: not a dictionary: its first slot names no index with a tree\n",
                 opened.path.c_str(), kHeaderSlotsOffset);
    return false;
  }
  std::string prefix = std::filesystem::path(opened.path).parent_path().string();
  if (!prefix.empty() && prefix.back() != '/') prefix += '/';
  opened.index_path = prefix + slot->name;
  opened.index.reset(index_open(prefix.c_str(), opened.slots.data(), kKeyHw, true));
  if (opened.index != nullptr && is_a_file(opened.index.get())) return true;
  std::fprintf(log, "%s: its index %s cannot be opened\n", opened.path.c_str(), opened.index_path.c_str());
  return false;
}

}  // namespace lexon
