// What a search of the index works with: which rule requires and which forbids which name, as lists.
//
// Two questions would cost a walk over the whole name table for every word: which names are present, and which rules
// lack one. Here the first goes from the pieces of the attribute strings to the rows, by hash. The second goes from
// the present rows to the rules: each rule is watched by one of the rows it requires, the one that the fewest rules
// require on either side, so a rule is looked at only when that rare attribute is there. Rules without such a row are
// easy: each side finds those that it lets through, if there are not too many, or they are looked at in every window.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "rules/matrix.hpp"

namespace lexon {

// From a name to its rows. A table can hold a name twice, or out of order: then all rows of the name count as present,
// but only the row that the table's binary search finds strikes out rules.
struct NameIndex {
  char* const* names = nullptr;         // the side's attr_table
  std::uint32_t mask = 0;               // number of buckets - 1, a power of 2 less 1
  std::vector<std::int32_t> buckets;    // by hash: the first row plus 1; 0: none
  std::vector<std::int32_t> next_rows;  // by row: the next row of the same bucket plus 1, or 0
  std::vector<std::int32_t> find_rows;  // by row: what `attr_table_find` gives for the row's name
  int most_commas = 0;                  // in any name: such a name is present as a run of neighbouring pieces
};

// Lists of numbers, one list per key, all in one array: list k is items[starts[k]] up to items[starts[k + 1]] - 1.
struct NumberLists {
  std::vector<std::uint32_t> starts;
  std::vector<std::int32_t> items;

  [[nodiscard]] std::span<const std::int32_t> of(std::size_t key) const {
    return std::span(items).subspan(starts[key], starts[key + 1] - starts[key]);
  }
};

// A rule as the row that watches it knows it.
struct Watched {
  std::int32_t rule;
  std::int32_t also;  // another row of the side that the rule requires, or the watching row again
};

struct SideSearch {
  NameIndex names;
  NumberLists required;                     // by rule: the rows that it requires
  NumberLists forbidden;                    // by rule: the rows that it forbids
  std::vector<std::uint32_t> watch_starts;  // by row: list r is watched[watch_starts[r]] up to the next list's start
  std::vector<Watched> watched;
  // The easy rules, in order, by whether they ask anything of a word of this side: then it is in the lists above.
  std::vector<RuleBlock> easy_always;
  std::vector<std::int32_t> easy_asking;
};

// A shift of post-edit, which may be refused by its text alone, since neither context nor another pattern has a say
// before: where it brings a node in, and the character that the other node's surface form must begin with (a shift to the
// left) or end with. Any other rule: NUL.
struct ShiftedEnd {
  bool shifts_left;
  char character;
};

// What a search needs of the rules of a block, a bit each as in `RuleBlock`.
struct BlockTraits {
  std::uint64_t all;            // the rules that there are: the last block is not full
  std::uint64_t left_inserted;  // the pattern of this side is a quote pattern
  std::uint64_t right_inserted;
  std::uint64_t left_watches;  // a row of this side watches the rule
  std::uint64_t right_watches;
  std::uint64_t post_edit;
};

struct RuleSearch {
  std::vector<Rule*> rules;              // by number; empty: not prepared, there are no candidates
  std::vector<ShiftedEnd> shifted_ends;  // by number
  std::vector<BlockTraits> traits;       // by block
  std::vector<RuleBlock> easy;           // the rules that no row watches
  std::size_t easy_count = 0;
  SideSearch left;
  SideSearch right;

  // Each answer holds the easy rules too: it would take long to find with many more of them.
  [[nodiscard]] bool sides_know_easy() const { return easy_count <= 512; }
};

// The index over the rules of a grammar: built or loaded once, then read by any number of threads. Zeroed until then:
// no candidates come from it.
struct RuleIndex {
  RuleMatrix matrix{};
  RuleSearch search;

  RuleIndex() = default;
  ~RuleIndex() { rule_matrix_clear(*this); }
  RuleIndex(const RuleIndex&) = delete;
  RuleIndex& operator=(const RuleIndex&) = delete;
};

// The steps that make the search ready, by both who builds and who loads the matrix. All throw `std::bad_alloc`.

// From the names of a side.
[[nodiscard]] NameIndex name_index_of(const MatrixSide& side);

// From the rule list of the matrix. Who watches is not known yet.
void rules_prepare(RuleIndex& index);

// Last, when `required` and `forbidden` of both sides are filled. A number may stand in a list twice.
void watch_prepare(RuleSearch& search);

// The same numbers by what were the items, of which there are `keys`. Lists of the result rise.
[[nodiscard]] NumberLists transposed(const NumberLists& lists, std::size_t keys);

// The row that `attr_table_find` gives for `name`, or -1.
[[nodiscard]] std::int32_t name_row(const NameIndex& names, const char* name);

inline constexpr std::uint32_t kHashSeed = 2166136261U;

[[nodiscard]] constexpr std::uint32_t hash_step(std::uint32_t hash, char c) {
  return (hash ^ static_cast<unsigned char>(c)) * 16777619U;
}

}  // namespace lexon
