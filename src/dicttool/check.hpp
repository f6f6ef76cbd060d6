// Checking a finished dictionary.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace lexon {

struct Session;

// What a check has found.
struct CheckFigures {
  std::int64_t records = 0;
  std::int64_t keys = 0;     // different ones, of all key fields
  std::int64_t unasked = 0;  // keys of more records than a lookup can give, about which nothing can be said
  std::int64_t damages = 0;
  bool has_stamp = false;  // sizes and checksums could be compared with those of the build
};

// Compares both files with what was built, looks at every block, record and key of them, and asks for every key: each record must be found by each of
// its keys exactly once. Damage goes to `log` by file and offset. False if there is any; keys are only asked for if
// the blocks are in order. `memory` is what sorting the keys may use.
[[nodiscard]] bool dictionary_check(Session& session, const std::string& path, std::FILE* log, std::size_t memory,
                                    CheckFigures& figures);

}  // namespace lexon
