// A dictionary opened as a run opens it, for the tools.
#pragma once

#include <array>
#include <string>

#include "data/sentence.hpp"
#include "dict/builder_sort.hpp"
#include "dict/index.hpp"

namespace lexon {

struct OpenedDictionary {
  std::string path;
  std::string index_path;
  File dictionary;
  File index;
  std::array<IndexDescriptor*, kKeyFields> slots = {};

  OpenedDictionary() = default;
  OpenedDictionary(const OpenedDictionary&) = delete;
  OpenedDictionary& operator=(const OpenedDictionary&) = delete;
  ~OpenedDictionary();

  [[nodiscard]] DictionaryFiles files() { return {dictionary.get(), index.get(), slots.data()}; }
};

// Opens the dictionary file alone. False, with a message, if that fails or if it holds no whole header.
[[nodiscard]] bool dictionary_open(const std::string& path, std::FILE* log, OpenedDictionary& opened);

// Reads its slots and opens the index beside it. False, with a message, if that fails.
[[nodiscard]] bool dictionary_index_open(std::FILE* log, OpenedDictionary& opened);

}  // namespace lexon
