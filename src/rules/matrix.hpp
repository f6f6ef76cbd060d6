// The index over the attribute conditions of all rules: its names, how it is built, and what it is asked.
#pragma once

#include <cstdint>
#include <span>

#include "data/records.hpp"
#include "data/status.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

// The names of one side of the index. Everything is from `zeroed_block` and lives for the run.
struct MatrixSide {
  std::int32_t attr_count;  // distinct attribute names; rows of the side's two matrices
  std::uint32_t pool_size;
  char* attr_pool;            // the names, each with its NUL, in ascending byte order; null without names
  char** attr_table;          // attr_count pointers into attr_pool; null without names
  std::uint32_t matrix_size;  // row_bytes * attr_count: the bytes of one matrix in the file
};

// Which rule requires and which forbids which name is a pair of bit matrices for each side, one row for each name and
// one bit for each rule. Few bits are set, so in memory they are lists (rules/rule_search.hpp); only the file holds the
// matrices in full (rules/compiled_matrix.cpp).
struct RuleMatrix {
  Rule* rules;  // in priority order; a rule's number is its place in this list
  std::int32_t rule_count;
  std::int32_t row_bytes;  // at least 1 once built
  MatrixSide left;
  MatrixSide right;
};

struct RuleIndex;  // rules/rule_search.hpp

// Builds the index from a rule list. Returns ok, `stopped`, `memory`, or `no_effect` if the names could not be sorted;
// unless ok the index is left zeroed.
[[nodiscard]] Status rule_matrix_build(Session& session, RuleIndex& index, Rule* rules);

// Releases all that the index holds, and zeroes it. The rules stay.
void rule_matrix_clear(RuleIndex& index);

// Binary search in `count` names in ascending byte order; the row, or -1.
[[nodiscard]] std::int32_t attr_table_find(const char* name, char* const* table, std::int32_t count);

// Zero-filled plain heap memory for the index, or null if the heap refuses; null for a size of 0 too.
[[nodiscard]] void* zeroed_block(std::uint64_t size);

}  // namespace lexon
