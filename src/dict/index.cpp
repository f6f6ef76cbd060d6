#include "dict/index.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "data/bytes.hpp"
#include "data/platform.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/block_chain.hpp"
#include "dict/lookup.hpp"

namespace lexon {

namespace {

// Down the tree in `index` and into the dictionary. Without a tree the scan starts at the root.
Status lookup_from(Session& session, KeyHits& hits, const DictionaryFiles& files, std::FILE* index,
                   const IndexDescriptor& descriptor, int key_field, std::string_view key, LookupGroup*& groups) {
  if (index == nullptr) return dict_scan(session, files.dictionary, descriptor.levels, key_field, key, hits, groups);
  const int levels_in_index = key_field == kKeyHw ? descriptor.levels : descriptor.levels - 1;
  if (const Status s = index_search(session, index, files.name_size, levels_in_index, key, hits); s != Status::ok)
    return s;
  return dict_scan(session, files.dictionary, key_field == kKeyHw ? 0 : 1, key_field, key, hits, groups);
}

// A lookup in a field that has a slot: what is remembered of it, or the walk. What the walk found becomes an answer if nothing
// was wrong on the way.
Status lookup_by(Session& session, const DictionaryFiles& files, const IndexDescriptor& descriptor, int key_field,
                 std::string_view key, LookupGroup*& groups, const LookupMemory::Kept** kept) {
  // With an index that is looked for each time, nobody knows whether it is still the same one.
  const LookupMemory::Question question{files.index == nullptr ? nullptr : files.dictionary, key_field, key};
  if (const std::optional<const LookupMemory::Kept*> answer = session.lookups.answer(question); answer) {
    if (kept != nullptr) *kept = *answer;
    // A sentence that is to stop stops here too, as it would at the first block.
    const Status s = must_leave(session);
    return s != Status::ok ? s : dict_recall(session, *answer, groups);
  }
  session.lookups.answer_begin(question);
  const std::int64_t damaged_before = session.damage.blocks;
  // The walk begins at the root, as if a level above it had named that.
  KeyHits hits;
  if (const Status s = key_hits_append(session, hits, descriptor.root); s != Status::ok) return s;
  std::FILE* own_index = files.index == nullptr ? index_open("", descriptor, key_field, false) : nullptr;
  std::FILE* index = files.index == nullptr ? own_index : files.index;
  const Status s = lookup_from(session, hits, files, index, descriptor, key_field, key, groups);
  if (own_index != nullptr) static_cast<void>(std::fclose(own_index));
  key_hits_free(session, hits);
  // Damage counts as often as it is met.
  const bool may_be_kept = s == Status::ok && session.damage.blocks == damaged_before;
  const LookupMemory::Kept* words = may_be_kept ? session.lookups.answer_end() : nullptr;
  if (kept != nullptr) *kept = words;
  return s;
}

// What a lookup found before it failed goes back to the pool.
void groups_free(Session& session, LookupGroup*& groups) {
  WordEntry* words = nullptr;
  groups_flatten(session, groups, words);
  entry_list_free(session, words);
  groups = nullptr;
}

}  // namespace

// A dictionary from elsewhere must not make a run open files outside of its folder.
bool is_bare_name(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos;
}

std::FILE* index_open(const std::string& prefix, const IndexDescriptor& descriptor, int key_field, bool read_only) {
  // The lowest level of a field above 1 lies in the dictionary file, so the index has one only from 2 levels on.
  const int least_levels = key_field == kKeyHw ? 1 : 2;
  if (descriptor.levels < least_levels || !is_bare_name(descriptor.name)) return nullptr;
  return regular_file_open(prefix + descriptor.name, read_only ? "rb" : "rb+");
}

// The first one is told to the user, by its place; of the others the number.
void note_damaged_block(Session& session, const std::FILE* stream, std::int64_t offset) {
  if (session.damage.blocks++ != 0) return;
  session.damage.stream = stream;
  session.damage.offset = offset;
}

Status dict_lookup(Session& session, const DictionaryFiles& files, int key_field, const char* key, LookupGroup*& groups,
                   const LookupMemory::Kept** kept) {
  groups = nullptr;
  if (kept != nullptr) *kept = nullptr;
  const bool has_slot = files.slots != nullptr && key_field >= kKeyHw && key_field <= kSlotCount;
  const IndexDescriptor* descriptor = has_slot ? files.slots[key_field] : nullptr;
  Status s = Status::index_unreadable;
  if (descriptor != nullptr) s = lookup_by(session, files, *descriptor, key_field, key, groups, kept);
  if (s != Status::ok) groups_free(session, groups);
  // Who does not look at the result finds it there.
  session.state.engine_status = s;
  return s;
}

// The groups go back to the pool, their words stay.
void groups_flatten(Session& session, LookupGroup* groups, WordEntry*& list) {
  list = nullptr;
  WordEntry** link = &list;
  while (groups != nullptr) {
    *link = groups->entries;
    while (*link != nullptr) link = &(*link)->next;
    temp_delete(session, std::exchange(groups, groups->next));
  }
}

// wanted: -1 where one text is missing, whichever it is; two missing ones are equal whatever their lengths say.
int key_compare(const char* a, std::int32_t a_len, const char* b, std::int32_t b_len) {
  if (a_len == 0 && b_len == 0) return 0;
  if (a == nullptr && b == nullptr) return 0;
  if (a == nullptr || b == nullptr) return -1;
  return key_compare(std::string_view(a, static_cast<std::size_t>(a_len)),
                     std::string_view(b, static_cast<std::size_t>(b_len)));
}

}  // namespace lexon
