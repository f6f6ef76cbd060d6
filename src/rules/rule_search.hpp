// What a search of the index knows beforehand. All of it is derived from `rule_matrix` by `rule_search_prepare`, holds
// nothing that the matrix does not tell, and lives as long as the matrix.
//
// Two questions would cost a walk over the whole name table for every word: which names are present, and which rules
// lack one. Here the first goes from the pieces of the attribute strings to the rows, by hash. The second goes from
// the present rows to the rules: each rule is watched by one of the rows it requires, the one that the fewest rules
// require, so a rule is looked at only when that rare attribute is there.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rules/matrix.hpp"

namespace lexon {

// From a name to its rows. A table can hold a name twice, or out of order: then all rows of the name count as present,
// but only the row that the table's binary search finds strikes out rules.
struct NameIndex {
  char* const* names;       // the side's attr_table
  std::uint32_t mask;       // number of buckets - 1, a power of 2 less 1
  std::int32_t* buckets;    // by hash: the first row plus 1; 0: none. Null without names
  std::int32_t* next_rows;  // by row: the next row of the same bucket plus 1, or 0
  std::int32_t* find_rows;  // by row: what `attr_table_find` gives for the row's name
  int most_commas;          // in any name: such a name is present as a run of neighbouring pieces
};

// Lists of numbers, one list per key, all in one array: list k is items[starts[k]] up to items[starts[k + 1]] - 1.
struct NumberLists {
  std::uint32_t* starts;
  std::int32_t* items;  // null if all lists are empty
};

struct SideSearch {
  NameIndex names;
  NumberLists required_rows;   // by rule
  NumberLists watching_rules;  // by row
  std::uint8_t* demanding;     // bit vector: the rules that require any attribute
  std::uint8_t* inserted;      // bit vector: the rules whose pattern of this side is a quote pattern
};

struct RuleSearch {
  Rule** rules;             // by number; null: not prepared, there are no candidates
  std::int32_t rule_count;  // rules of the list that have a bit in a row
  SideSearch left;
  SideSearch right;
};

// The index over the rules of a grammar: built or loaded once, then read by any number of threads. Zeroed until then:
// no candidates come from it.
struct RuleIndex {
  RuleMatrix matrix{};
  RuleSearch search{};

  RuleIndex() = default;
  ~RuleIndex() { rule_matrix_clear(*this); }
  RuleIndex(const RuleIndex&) = delete;
  RuleIndex& operator=(const RuleIndex&) = delete;
};

// Releases all that the prepared search holds and zeroes it.
void rule_search_clear(RuleIndex& index);

inline constexpr std::uint32_t kHashSeed = 2166136261U;

[[nodiscard]] constexpr std::uint32_t hash_step(std::uint32_t hash, char c) {
  return (hash ^ static_cast<unsigned char>(c)) * 16777619U;
}

}  // namespace lexon
