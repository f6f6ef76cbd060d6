// The compiled rule files: the rule list (".rul") and the matrix (".mtx"). All numbers are high byte first; neither
// file has a magic number, a version or a checksum.
#pragma once

#include <cstdio>
#include <string>

#include "data/pool.hpp"
#include "data/status.hpp"
#include "rules/rule.hpp"
#include "rules/rule_search.hpp"

namespace lexon {

struct Session;

// Writes the records of a list, back to back. Returns ok, `memory` or `stopped`; `no_effect` if a rule is too large for
// the form; a ";;" line tells so, and nothing is written then. Of a full disk only a ";;" line tells. The
// stream stays open.
[[nodiscard]] Status rule_list_write(Session& session, const Rule* rules, std::FILE* stream);

// Builds the list in file order. Returns ok, `memory` or `stopped`; `no_effect` if the file is damaged, which `fault`
// receives in words, or without one a ";;" line tells. `rules` is null unless ok. The stream stays open.
[[nodiscard]] Status rule_list_read(Session& session, Pool& pool, Rule*& rules, std::FILE* stream,
                                    std::string* fault = nullptr);

// Writes the matrix. Returns ok; of a disk that is full a ";;" line tells alone. `memory`: the index is empty then, as
// the rule step has failed. The stream stays open: its owner closes it.
[[nodiscard]] Status rule_matrix_save(Session& session, RuleIndex& index, std::FILE* stream);

// Reads `rule_matrix`, ties it to `rules` and prepares the search. Returns ok or `memory`; `no_effect` if the file's
// sizes do not agree with each other or with the list, which is told likewise. `rule_matrix` is zeroed unless ok. The
// stream stays open: its owner closes it.
[[nodiscard]] Status rule_matrix_load(Session& session, RuleIndex& index, std::FILE* stream, Rule* rules,
                                      std::string* fault = nullptr);

}  // namespace lexon
