// Down the key tree. On each level the chain under every hit is walked for entries equal to the key. If there are none
// on the whole level, the one entry under which the key would stand leads on.

#include <utility>

#include "data/bytes.hpp"
#include "data/session.hpp"
#include "dict/block_chain.hpp"
#include "dict/index.hpp"
#include "dict/lookup.hpp"

namespace lexon {

namespace {

// What a level is searched for, and what has been found on it.
struct Level {
  std::string_view key;
  std::size_t name_size;
  KeyHits found = {};
  // Where the key would stand in the chain walked: under the greatest entry below it, or else under the first one.
  std::uint16_t nearest = 0;
  bool has_nearest = false;
  bool has_passed = false;  // an entry above the key: the chain holds nothing more
};

Status search_block(Session& session, Level& level, ByteView content) {
  ByteReader reader(content, index_data_offset(level.name_size));
  while (reader.more()) {
    const std::string_view key = reader.text();
    const std::uint16_t block = reader.u16();
    if (!reader.ok()) return Status::index_unreadable;
    const int order = key_compare(key, level.key);
    level.has_passed = order > 0;
    if (!level.has_passed || !level.has_nearest) level.nearest = block;
    level.has_nearest = true;
    if (level.has_passed) return Status::ok;
    if (order != 0) continue;
    if (const Status s = key_hits_append(session, level.found, block); s != Status::ok) return s;
  }
  return Status::ok;
}

Status search_chain(Session& session, Level& level, std::FILE* index, std::uint16_t first) {
  level.has_nearest = level.has_passed = false;
  IndexChain chain(session, index, first);
  while (!level.has_passed && chain.advance()) {
    if (const Status s = must_leave(session); s != Status::ok) return s;
    const Status s = search_block(session, level, chain.content());
    const bool has_head = chain.content().size() >= index_data_offset(level.name_size);
    if (s == Status::index_unreadable || !has_head) note_damaged_block(session, index, chain.offset());
    if (s != Status::ok) return s;
  }
  if (!chain.is_unreadable()) return Status::ok;
  note_damaged_block(session, index, chain.offset());
  return Status::index_unreadable;
}

// The chain of the last hit decides where the key would stand. Chains without any entry lead nowhere.
Status search_level(Session& session, Level& level, std::FILE* index, KeyHits& hits) {
  while (hits.first != nullptr) {
    if (const Status s = search_chain(session, level, index, key_hits_take(session, hits)); s != Status::ok) return s;
  }
  const bool leads_on = level.found.first == nullptr && level.has_nearest;
  return leads_on ? key_hits_append(session, level.found, level.nearest) : Status::ok;
}

}  // namespace

Status key_hits_append(Session& session, KeyHits& hits, std::uint16_t block) {
  auto* hit = temp_new<KeyHit>(session);
  if (hit == nullptr) return Status::memory;
  hit->block = block;
  (hits.first == nullptr ? hits.first : hits.last->next) = hit;
  hits.last = hit;
  return Status::ok;
}

std::uint16_t key_hits_take(Session& session, KeyHits& hits) {
  KeyHit* hit = std::exchange(hits.first, hits.first->next);
  const std::uint16_t block = hit->block;
  temp_delete(session, hit);
  return block;
}

void key_hits_free(Session& session, KeyHits& hits) {
  while (hits.first != nullptr) (void)key_hits_take(session, hits);
}

Status index_search(Session& session, std::FILE* index, std::size_t name_size, int levels, std::string_view key,
                    KeyHits& hits) {
  for (int i = 0; i < levels; ++i) {
    Level level{.key = key, .name_size = name_size};
    const Status s = search_level(session, level, index, hits);
    key_hits_free(session, hits);
    hits = level.found;
    if (s != Status::ok) return s;
  }
  return Status::ok;
}

}  // namespace lexon
