// What is loaded once and then only read: rules, the index over them. Shared by any number of sessions and threads.
#pragma once

#include "data/pool.hpp"
#include "rules/rule.hpp"
#include "rules/rule_search.hpp"

namespace lexon {

struct Session;

// Filled by the rule step or by a loader; read-only from then on. Outlives every session that uses it.
struct Grammar {
  Pool pool;              // owns the rules
  Rule* rules = nullptr;  // in priority order; null: no rules
  RuleIndex index;        // over `rules`
};

// From now on the session renders with this grammar: its pool gets the blocks that the rules leave, and its work areas
// the size of the index. The grammar must be whole. Throws `std::bad_alloc`.
void session_use(Session& session, const Grammar& grammar);

}  // namespace lexon
