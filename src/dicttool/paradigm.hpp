// Inflection by table: stems and paradigms become entry text.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "dicttool/entry_output.hpp"

namespace lexon {

struct Inflection {
  std::string paradigms;           // path of the table of paradigms and letter changes
  std::vector<std::string> stems;  // paths of tables of stems; "-": standard input
  EntryForm form;
};

struct InflectionFigures {
  std::int64_t stems = 0;
  std::int64_t entries = 0;
  std::int64_t repeated = 0;
  std::int64_t bad_lines = 0;  // told in the log
};

// Writes the forms of all stems to `out`. False, with the reasons in `log`, if a file cannot be had or the table of
// paradigms is wrong; a bad line of the stems is told and left out.
[[nodiscard]] bool stems_inflect(Session& session, const Inflection& options, std::FILE* out, std::FILE* log,
                                 InflectionFigures& figures);

}  // namespace lexon
