// Lookups whose caller wants one list of words.
#pragma once

#include "data/records.hpp"
#include "data/session.hpp"
#include "data/status.hpp"
#include "dict/index.hpp"

namespace lexon {

// The words whose field is exactly `key`, in the dictionary's order; null for none. A dictionary that is not open has
// none. `kept` as for `dict_lookup`.
[[nodiscard]] inline Status words_by_key(Session& session, const DictionaryFiles& files, int key_field, const char* key,
                                         WordEntry*& words, const LookupMemory::Kept** kept = nullptr) {
  words = nullptr;
  if (files.dictionary == nullptr) return Status::ok;
  LookupGroup* groups = nullptr;
  const Status status = dict_lookup(session, files, key_field, key, groups, kept);
  if (status == Status::ok) groups_flatten(session, groups, words);
  return status;
}

}  // namespace lexon
