// A dictionary that is open: its two files, what its header says of the trees, and whether both files are of one build.
#pragma once

#include <array>
#include <string>

#include "data/platform.hpp"
#include "data/sentence.hpp"
#include "dict/index.hpp"

namespace lexon {

// Owns what it has open and closes it with itself. Several stand side by side, whatever kind of index name they have.
struct Dictionary {
  std::string path;
  std::string index_path;  // empty as long as the header names no index
  File dictionary;         // null: not open
  File index;
  std::array<IndexDescriptor, kKeyFields> descriptors{};
  std::array<const IndexDescriptor*, kKeyFields> slots{};  // by key field, into `descriptors`; null: an empty slot
  std::size_t name_size = 0;                               // kShortNameSize or kLongNameSize; 0: no header was read
  std::string fault;                                       // why opening failed, with the names of the files

  Dictionary() = default;
  Dictionary(const Dictionary&) = delete;
  Dictionary& operator=(const Dictionary&) = delete;

  // What lookups work with, as long as the dictionary lives.
  [[nodiscard]] DictionaryFiles files() const { return {dictionary.get(), index.get(), slots.data(), name_size}; }
};

// How closely opening looks whether the two files are those that were built together. A pair without a stamp (see
// dict/pair_stamp.hpp) is always accepted.
enum class PairCheck {
  none,
  quick,  // sizes, and both ends of each file
  whole,  // every byte
};

// Opens the dictionary file and reads its slots. A file that is shorter than its header has no slots: true, with a
// `name_size` of 0. False if the file cannot be opened.
[[nodiscard]] bool dictionary_file_open(const std::string& path, Dictionary& dictionary);

// Reads the slots of the open dictionary file, for the first time.
void dictionary_header_read(Dictionary& dictionary);

// Opens both files. On failure what could be opened and read stays so, `index` is null, and `fault` says why. A pair
// that is being replaced by a build is waited for, up to a second.
[[nodiscard]] bool dictionary_open(const std::string& path, PairCheck check, Dictionary& dictionary);

// The folder of a path with its separator; empty for a name alone.
[[nodiscard]] std::string folder_prefix(const std::string& path);

}  // namespace lexon
