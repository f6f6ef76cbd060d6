// The rule file as text: one rule to a line.
#pragma once

#include <cstdint>

#include "data/pool.hpp"
#include "data/status.hpp"
#include "data/text_line.hpp"
#include "rules/rule.hpp"
#include "rules/rule_notes.hpp"

namespace lexon {

struct Session;

// Reads all rules of `source` into a list of falling priority, file order within one. A line that cannot be read is
// reported on the output and left out. `rules` receives the head, null for none. The result is the status of the
// last line alone, or `memory` when a rule could not be had (`rules` is null then). `notes` receives what is wrong with
// the text; null: nobody wants to know.
[[nodiscard]] Status parse_rule_file(Session& session, Pool& pool, TextSource source, Rule*& rules,
                                     RuleNotes* notes = nullptr);

// Steps over the TYPE under the cursor and returns its code; 0 if the text is no type.
[[nodiscard]] std::uint8_t parse_rule_type(const char*& cursor);

// Would the rule fire for ever on one pair of nodes?
[[nodiscard]] bool is_endless_rule(const Rule& rule);

// Release through the permanent pool; the first two clear the caller's pointer. What they leave behind is lost for
// the run, which is accepted: a dropped rule is rare.
void rule_list_free(Pool& pool, Rule*& rule);
void group_list_free(Pool& pool, ContextGroup*& group);
void pattern_free(Pool& pool, NodePattern* pattern);
void item_list_free(Pool& pool, CondItem* item);

}  // namespace lexon
