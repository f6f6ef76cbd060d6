// Entries stand in order, so that halving finds a key, among numbers made of the keys' beginnings. In a damaged block they
// need not: there the first entry above the key ends the walk, wherever it stands, and such a block is read from its
// beginning.

#include "dict/key_block.hpp"

#include <algorithm>

#include "data/bytes.hpp"
#include "dict/layout.hpp"

namespace lexon {

namespace {

using KeyPlaces = LookupMemory::KeyPlaces;

// The key of the entry at offset `at`, which `places_find` has found to be whole.
std::string_view key_at(ByteView content, std::size_t at) {
  return as_text(content.subspan(at + 2, load_u16(content.data() + at)));
}

// The four bytes of a key behind the first `shared`, in an order of numbers that is that of the keys, but for ties.
std::uint32_t head_of(std::string_view key, std::size_t shared) {
  if (key.size() - shared >= 4) return load_u32(reinterpret_cast<const std::uint8_t*>(key.data()) + shared);
  std::uint32_t head = 0;
  for (std::size_t i = shared; i < shared + 4; ++i)
    head = head << 8 | (i < key.size() ? static_cast<std::uint8_t>(key[i]) : 0U);
  return head;
}

// Notes where the entries stand, unless one is damaged or stands below the one in front of it.
void places_find(ByteView content, std::size_t begin, KeyPlaces& places) {
  places.state = KeyPlaces::State::other;
  places.count = 0;
  ByteReader reader(content, begin);
  std::string_view first;
  std::string_view before;
  while (reader.more()) {
    const std::size_t at = reader.at();
    const std::string_view key = reader.text();
    reader.skip(2);
    if (!reader.ok() || key_compare(before, key) > 0) return;
    if (places.count == 0) first = key;
    places.at[places.count++] = static_cast<std::uint16_t>(at);
    before = key;
  }
  // What the first and the last one begin with stands in front of all between them.
  std::size_t shared = 0;
  while (shared < std::min(first.size(), before.size()) && first[shared] == before[shared]) ++shared;
  places.shared = static_cast<std::uint16_t>(shared);
  for (std::size_t i = 0; i < places.count; ++i) places.heads[i] = head_of(key_at(content, places.at[i]), shared);
  places.state = KeyPlaces::State::in_order;
}

// How many entries stand below the key.
std::size_t count_below(ByteView content, const KeyPlaces& places, std::string_view key) {
  if (places.count == 0) return 0;
  const std::string_view beginning = key_at(content, places.at[0]).substr(0, places.shared);
  if (!key.starts_with(beginning)) return key_compare(key, beginning) < 0 ? 0 : places.count;
  // The loop has no branch but its end: which half a key lies in cannot be foretold.
  const std::uint32_t head = head_of(key, places.shared);
  const std::uint32_t* low = places.heads.data();
  for (std::size_t left = places.count; left != 0;) {
    const std::size_t half = (left + 1) / 2;
    low += low[half - 1] < head ? half : 0;
    left -= half;
  }
  std::size_t below = static_cast<std::size_t>(low - places.heads.data());
  // Entries of the same head follow. Most often there is one.
  std::size_t above = below;
  while (above < places.count && places.heads[above] == head) ++above;
  while (below < above) {
    const std::size_t middle = (below + above) / 2;
    if (key_compare(key_at(content, places.at[middle]), key) < 0) {
      below = middle + 1;
    } else {
      above = middle;
    }
  }
  return below;
}

// One step of the walk. `order` says how the entry's key stands to the one that is looked for. The greatest entry below is
// the last that was met; an entry above counts only where nothing stands in front of it.
Status take_entry(Session& session, KeyWalk& walk, int order, std::uint16_t block) {
  walk.has_passed = order > 0;
  if (!walk.has_passed || !walk.has_nearest) walk.nearest = block;
  walk.has_nearest = true;
  return order == 0 ? key_hits_append(session, walk.found, block) : Status::ok;
}

Status walk_by_places(Session& session, ByteView content, const KeyPlaces& places, KeyWalk& walk) {
  const std::size_t low = count_below(content, places, walk.key);
  // All behind the last entry below the key are taken one by one.
  for (std::size_t i = low == 0 ? 0 : low - 1; i < places.count && !walk.has_passed; ++i) {
    const std::string_view key = key_at(content, places.at[i]);
    const std::uint16_t block = load_u16(content.data() + places.at[i] + 2 + key.size());
    if (const Status s = take_entry(session, walk, key_compare(key, walk.key), block); s != Status::ok) return s;
  }
  return Status::ok;
}

}  // namespace

Status key_block_walk(Session& session, ByteView content, KeyPlaces* places, KeyWalk& walk) {
  if (places != nullptr && places->state == KeyPlaces::State::unknown) places_find(content, walk.begin, *places);
  if (places != nullptr && places->state == KeyPlaces::State::in_order)
    return walk_by_places(session, content, *places, walk);
  ByteReader reader(content, walk.begin);
  while (reader.more() && !walk.has_passed) {
    const std::string_view key = reader.text();
    const std::uint16_t block = reader.u16();
    walk.is_damaged = !reader.ok();
    if (walk.is_damaged) return Status::ok;
    if (const Status s = take_entry(session, walk, key_compare(key, walk.key), block); s != Status::ok) return s;
  }
  return Status::ok;
}

}  // namespace lexon
