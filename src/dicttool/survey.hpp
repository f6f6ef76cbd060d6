// Looking at every block of a dictionary and its index, and at how they hang together.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "dict/dictionary.hpp"

namespace lexon {

// Where damage is reported, and how much there is.
struct DamageLog {
  std::FILE* stream;
  std::int64_t count = 0;

  // Writes a whole message, or "FILE: offset N: what".
  void add(const std::string& message);
  void add(const std::string& file, std::int64_t offset, const std::string& what);
};

// What is known of one file's blocks, by their numbers; block 0 stands for none.
struct BlockMap {
  std::uint32_t end = 0;            // number behind the last block that can be addressed
  std::vector<std::uint8_t> types;  // 0 in an index file
  std::vector<std::uint16_t> links;
  std::vector<std::uint8_t> owners;  // key field of the tree that leads to the block; 0: none
};

struct Survey {
  const Dictionary& opened;
  DamageLog& damage;
  BlockMap dictionary = {};
  BlockMap index = {};
};

// Looks at every block and every entry of both files, at the links, and at the tree of every slot. All that is wrong
// is added to the damage; if there is none, every chain ends and every entry of a tree leads to its lowest key.
void survey_blocks(Survey& survey);
void survey_trees(Survey& survey);

}  // namespace lexon
