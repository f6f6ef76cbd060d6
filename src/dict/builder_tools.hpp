// What can be done with a finished dictionary: listing it, asking it, checking it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace lexon {

// Writes every record as a line of entry text, in the order of the file; built again, the text gives the same bytes.
// False, with messages in `log`, if something cannot be read or has no text form; the rest is written all the same.
[[nodiscard]] bool dictionary_list(const std::string& path, std::FILE* out, std::FILE* log);

enum class FindResult { found, nothing, failed };

// Writes the words with this key as entry text, in the order in which a generator tries them.
[[nodiscard]] FindResult dictionary_find(const std::string& path, int key_field, const std::string& key, std::FILE* out,
                                         std::FILE* log);

// What a check has found.
struct CheckFigures {
  std::int64_t records = 0;
  std::int64_t keys = 0;     // different ones, of all key fields
  std::int64_t unasked = 0;  // keys of more records than a lookup can give, about which nothing can be said
  std::int64_t damages = 0;
};

// Looks at every block, record and key of both files, and asks for every key: each record must be found by each of
// its keys exactly once. Damage goes to `log` by file and offset. False if there is any; keys are only asked for if
// the blocks are in order. `memory` is what sorting the keys may use.
[[nodiscard]] bool dictionary_check(const std::string& path, std::FILE* log, std::size_t memory, CheckFigures& figures);

}  // namespace lexon
