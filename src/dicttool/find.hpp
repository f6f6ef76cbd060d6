// Asking a dictionary for entries by what they hold.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "dicttool/record_view.hpp"

namespace lexon {

struct Session;

// All of it has to hold.
struct FindQuery {
  std::string hw = {};  // the whole field; looked at if the flag beside it is set
  std::string cw = {};
  bool wants_hw = false;
  bool wants_cw = false;
  std::vector<std::string> attributes = {};  // that the entry has; with "^" in front: has not
  std::vector<std::string> prefixes = {};    // of the field below
  std::vector<std::string> globs = {};    // for all of the field: * any text, ? a character, [a-z] [!a-z] one of them
  std::vector<std::string> regexes = {};  // ECMAScript, for some part of the field
  int field = kKeyHw;
  std::int64_t limit = 0;   // entries to write; 0: all
  bool count_only = false;  // write how many there are
};

enum class FindResult { found, nothing, failed };

// Writes the entries to `out`: those of one whole HW or CW in the order in which they are tried, others in order of
// their HW. What goes wrong goes to `log`.
[[nodiscard]] FindResult dictionary_find(Session& session, const std::string& path, const FindQuery& query,
                                         std::FILE* out, std::FILE* log);

// Does the pattern stand for all of the text? Characters are those of UTF-8; a byte that is none counts as one.
[[nodiscard]] bool glob_matches(std::string_view pattern, std::string_view text);

}  // namespace lexon
