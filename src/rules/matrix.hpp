// The bit-vector index over the attribute conditions of all rules.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "data/status.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

// One side of the index. Row r of a matrix is bytes r * row_bytes and on; rule i lies in byte i / 8 under the mask
// 0x80 >> (i % 8). Everything is from `zeroed_block` and lives for the run.
struct MatrixSide {
  std::int32_t attr_count;  // distinct attribute names; rows of the matrices
  std::uint32_t pool_size;
  char* attr_pool;            // the names, each with its NUL, in ascending byte order; null without names
  char** attr_table;          // attr_count pointers into attr_pool; null without names
  std::uint32_t matrix_size;  // row_bytes * attr_count
  std::uint8_t* pos_matrix;   // 1: the rule requires the attribute; null without names
  std::uint8_t* neg_matrix;   // 0: the rule forbids the attribute (stored complemented); null without names
};

struct RuleMatrix {
  Rule* rules;  // in priority order; a rule's number is its place in this list
  std::int32_t rule_count;
  std::int32_t row_bytes;  // at least 1 once built
  MatrixSide left;
  MatrixSide right;
};

struct RuleIndex;  // rules/rule_search.hpp

// Builds the index from a rule list and prepares the search. Returns ok, `stopped`, `memory`, or `no_effect` if the
// names could not be sorted; unless ok the index is left zeroed.
[[nodiscard]] Status rule_matrix_build(Session& session, RuleIndex& index, Rule* rules);

// Releases all that the index and the prepared search hold, and zeroes both. The rules stay.
void rule_matrix_clear(RuleIndex& index);

// Derives from a filled `rule_matrix` what makes the search fast (rules/rule_search.hpp). It is the last step of every
// build and of every load: until then there are no candidates, nor are there any from a matrix whose sizes do not
// agree with each other. Returns ok or `memory`.
[[nodiscard]] Status rule_search_prepare(RuleIndex& index);

// The rules that the attributes of the window allow, in rule order, as a new list from the sentence's pool. Either
// node may be null. A reference to a scope that is not built is seen through to the scope's entry node, whose blocks
// are turned to the scope. Null when none fits, when an entry node is missing or not to be reached, and when memory is
// exhausted.
[[nodiscard]] RuleCandidate* rule_candidates(Session& session, Node* lnode, Node* rnode);

// Binary search in `count` names in ascending byte order; the row, or -1.
[[nodiscard]] std::int32_t attr_table_find(const char* name, char* const* table, std::int32_t count);

// Zero-filled plain heap memory for the index, or null if the heap refuses; null for a size of 0 too.
[[nodiscard]] void* zeroed_block(std::uint64_t size);

}  // namespace lexon
