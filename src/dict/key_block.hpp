// Looking for a key in a block of key entries, of the index file or of the dictionary file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "data/bytes.hpp"
#include "data/lookup_memory.hpp"
#include "data/status.hpp"
#include "dict/lookup.hpp"

namespace lexon {

struct Session;

// What is looked for in a chain of such blocks, and what has been met so far.
struct KeyWalk {
  std::string_view key;
  std::size_t begin;  // of the first entry in each block
  KeyHits found = {};
  // Where the key would stand in the chain: under the greatest entry below it, or else under the first one.
  std::uint16_t nearest = 0;
  bool has_nearest = false;
  bool has_passed = false;  // an entry above the key: the chain holds nothing more
  bool is_damaged = false;  // an entry that runs past the content
};

// Goes through the entries of a block up to the first one above the key. `places` may be null; it remembers where the
// entries stand, and serves the next search in the same block.
[[nodiscard]] Status key_block_walk(Session& session, ByteView content, LookupMemory::KeyPlaces* places, KeyWalk& walk);

}  // namespace lexon
