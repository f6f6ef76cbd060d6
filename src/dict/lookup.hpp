// The two halves of a lookup: down the key tree, then through the blocks of the dictionary file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "data/lookup_memory.hpp"
#include "data/status.hpp"
#include "dict/index.hpp"

namespace lexon {

struct Session;

// A block that the key leads to, from the sentence's pool. All hits of a lookup stand for the one key that is looked
// for, so they do not repeat it.
struct KeyHit {
  std::uint16_t block;
  KeyHit* next;
};

// Hits in the order in which they were found. Owned by one lookup.
struct KeyHits {
  KeyHit* first = nullptr;
  KeyHit* last = nullptr;
};

[[nodiscard]] Status key_hits_append(Session& session, KeyHits& hits, std::uint16_t block);

// Takes the first hit out and gives its block. There must be one.
[[nodiscard]] std::uint16_t key_hits_take(Session& session, KeyHits& hits);

void key_hits_free(Session& session, KeyHits& hits);

// Walks the tree from the blocks in `hits` down through `levels` levels, and replaces them by the blocks that the
// last level names: those of entries equal to `key`, or of the greatest entry below, or of the first one.
[[nodiscard]] Status index_search(Session& session, std::FILE* index, std::size_t name_size, int levels,
                                  std::string_view key, KeyHits& hits);

// The words that stand under `key` in the chains of the blocks in `hits`. With `secondary` above 0 and a field above 1
// those are key blocks, which lead on to the data blocks.
[[nodiscard]] Status dict_scan(Session& session, std::FILE* dictionary, int secondary, int key_field,
                               std::string_view key, KeyHits& hits, LookupGroup*& groups);

// The words of an answer that is remembered, as `dict_scan` found them.
[[nodiscard]] Status dict_recall(Session& session, const LookupMemory::Kept* answer, LookupGroup*& groups);

}  // namespace lexon
