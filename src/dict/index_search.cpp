// Down the key tree. On each level the chain under every hit is walked for entries equal to the key. If there are none
// on the whole level, the one entry under which the key would stand leads on.

#include <utility>

#include "data/session.hpp"
#include "dict/block_chain.hpp"
#include "dict/index.hpp"
#include "dict/key_block.hpp"
#include "dict/lookup.hpp"

namespace lexon {

namespace {

// One chain of the level, from block `first` on. What it leaves in `level` is that of this chain, but for the hits, which
// add up over the level.
Status search_chain(Session& session, KeyWalk& level, std::FILE* index, std::uint16_t first) {
  level.has_nearest = level.has_passed = false;
  IndexChain chain(session, index, first, LookupMemory::Kind::index);
  while (!level.has_passed && chain.advance()) {
    if (const Status s = must_leave(session); s != Status::ok) return s;
    const ByteView content = chain.content();
    const Status s = key_block_walk(session, content, chain.places(), level);
    // A block too short for its own head holds no entry: that is told of, but it does not end the lookup.
    if (level.is_damaged || content.size() < level.begin) note_damaged_block(session, index, chain.offset());
    if (s != Status::ok || level.is_damaged) return s != Status::ok ? s : Status::index_unreadable;
  }
  if (!chain.is_unreadable()) return Status::ok;
  note_damaged_block(session, index, chain.offset());
  return Status::index_unreadable;
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
    KeyWalk level{.key = key, .begin = index_data_offset(name_size)};
    Status s = Status::ok;
    while (s == Status::ok && hits.first != nullptr)
      s = search_chain(session, level, index, key_hits_take(session, hits));
    // The chain of the last hit decides where the key would stand. Chains without any entry lead nowhere.
    if (s == Status::ok && level.found.first == nullptr && level.has_nearest)
      s = key_hits_append(session, level.found, level.nearest);
    key_hits_free(session, hits);
    hits = level.found;
    if (s != Status::ok) return s;
  }
  return Status::ok;
}

}  // namespace lexon
