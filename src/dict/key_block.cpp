// Entries stand in order, so that halving finds a key. In a damaged block they need not: there the first entry above the
// key ends the walk, wherever it stands, and such a block is read from its beginning.

#include "dict/key_block.hpp"

#include "data/bytes.hpp"
#include "dict/layout.hpp"

namespace lexon {

namespace {

using KeyPlaces = LookupMemory::KeyPlaces;

std::string_view key_at(ByteView content, std::size_t at) {
  return as_text(content.subspan(at + 2, load_u16(content.data() + at)));
}

// Notes where the entries stand, unless one is damaged or stands below the one in front of it.
void places_find(ByteView content, std::size_t begin, KeyPlaces& places) {
  places.state = KeyPlaces::State::other;
  places.count = 0;
  ByteReader reader(content, begin);
  std::string_view before;
  while (reader.more()) {
    const std::size_t at = reader.at();
    const std::string_view key = reader.text();
    reader.skip(2);
    if (!reader.ok() || key_compare(before, key) > 0) return;
    places.at[places.count++] = static_cast<std::uint16_t>(at);
    before = key;
  }
  places.state = KeyPlaces::State::in_order;
}

Status take_entry(Session& session, KeyWalk& walk, int order, std::uint16_t block) {
  walk.has_passed = order > 0;
  if (!walk.has_passed || !walk.has_nearest) walk.nearest = block;
  walk.has_nearest = true;
  return order == 0 ? key_hits_append(session, walk.found, block) : Status::ok;
}

Status walk_by_places(Session& session, ByteView content, const KeyPlaces& places, KeyWalk& walk) {
  std::size_t low = 0;
  for (std::size_t high = places.count; low < high;) {
    const std::size_t middle = (low + high) / 2;
    if (key_compare(key_at(content, places.at[middle]), walk.key) < 0) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
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
