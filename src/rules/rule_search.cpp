#include "rules/rule_search.hpp"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "data/chain.hpp"
#include "rules/bits.hpp"

namespace lexon {

namespace {

std::size_t to_size(std::int32_t number) {
  return static_cast<std::size_t>(number);
}

// `count` zeroed elements; at least one is made, so that null always means exhausted memory.
template <typename Element>
bool make_array(Element*& array, std::size_t count) {
  // An array of pointers is meant where there is one. NOLINTNEXTLINE(bugprone-sizeof-expression)
  array = static_cast<Element*>(zeroed_block(std::max<std::uint64_t>(count, 1) * sizeof(Element)));
  return array != nullptr;
}

template <typename Element>
void release(Element*& array) {
  std::free(array);
  array = nullptr;
}

std::uint32_t hash_of(const char* name) {
  std::uint32_t hash = kHashSeed;
  for (; *name != '\0'; ++name) hash = hash_step(hash, *name);
  return hash;
}

bool prepare_names(NameIndex& index, const MatrixSide& side) {
  const std::size_t count = to_size(side.attr_count);
  const std::size_t buckets = std::bit_ceil(count * 2 + 1);
  index.names = side.attr_table;
  index.mask = static_cast<std::uint32_t>(buckets - 1);
  const bool made =
      make_array(index.buckets, buckets) && make_array(index.next_rows, count) && make_array(index.find_rows, count);
  if (!made) return false;
  for (std::size_t row = 0; row < count; ++row) {
    const char* name = side.attr_table[row];
    index.find_rows[row] = attr_table_find(name, side.attr_table, side.attr_count);
    index.most_commas = std::max(index.most_commas, static_cast<int>(std::count(name, name + std::strlen(name), ',')));
    std::int32_t& bucket = index.buckets[hash_of(name) & index.mask];
    index.next_rows[row] = std::exchange(bucket, static_cast<std::int32_t>(row) + 1);
  }
  return true;
}

// Calls `visit` with row and rule for each bit of `pos_matrix` that stands for a rule.
template <typename Visit>
void for_each_requirement(RuleIndex& index, const MatrixSide& side, Visit visit) {
  const std::size_t row_bytes = to_size(index.matrix.row_bytes);
  for (std::size_t row = 0; row < to_size(side.attr_count); ++row) {
    const std::uint8_t* bits = side.pos_matrix + row * row_bytes;
    for (std::size_t at = 0; at < row_bytes; at += kWordBytes) {
      for_each_bit(bits_at(bits, row_bytes, at), at * 8, [&](std::size_t rule) {
        if (rule < to_size(index.search.rule_count)) visit(row, rule);
      });
    }
  }
}

// With `starts[k + 1]` the length of list k: makes room for all items, and turns the lengths to places in such a way
// that `list_append` for each item leaves the starts as they should be.
bool lists_open(NumberLists& lists, std::size_t keys) {
  std::uint32_t total = 0;
  for (std::size_t key = 1; key <= keys; ++key) total += std::exchange(lists.starts[key], total);
  return make_array(lists.items, total);
}

void list_append(NumberLists& lists, std::size_t key, std::size_t item) {
  lists.items[lists.starts[key + 1]++] = static_cast<std::int32_t>(item);
}

bool prepare_required_rows(RuleIndex& index, SideSearch& search, const MatrixSide& side) {
  const std::size_t rules = to_size(index.search.rule_count);
  NumberLists& lists = search.required_rows;
  const bool made =
      make_array(lists.starts, rules + 1) && make_array(search.demanding, to_size(index.matrix.row_bytes));
  if (!made) return false;
  for_each_requirement(index, side, [&](std::size_t, std::size_t rule) {
    ++lists.starts[rule + 1];
    bit_set(search.demanding, rule);
  });
  if (!lists_open(lists, rules)) return false;
  for_each_requirement(index, side, [&](std::size_t row, std::size_t rule) { list_append(lists, rule, row); });
  return true;
}

// The rows that watch the rules, by rule; -1 for a rule that requires nothing.
bool rarest_rows(RuleIndex& index, std::int32_t*& watchers, const SideSearch& search, std::size_t rows) {
  const NumberLists& required = search.required_rows;
  const std::size_t rules = to_size(index.search.rule_count);
  std::uint32_t* users = nullptr;
  const bool made = make_array(users, rows) && make_array(watchers, rules);
  if (made) {
    for (std::uint32_t i = 0; i < required.starts[rules]; ++i) ++users[required.items[i]];
    for (std::size_t rule = 0; rule < rules; ++rule) {
      const std::int32_t* begin = required.items + required.starts[rule];
      const std::int32_t* end = required.items + required.starts[rule + 1];
      const auto rarer = [&](std::int32_t a, std::int32_t b) { return users[a] < users[b]; };
      watchers[rule] = begin == end ? -1 : *std::min_element(begin, end, rarer);
    }
  }
  release(users);
  return made;
}

bool prepare_watching_rules(RuleIndex& index, SideSearch& search, std::size_t rows) {
  const std::size_t rules = to_size(index.search.rule_count);
  NumberLists& lists = search.watching_rules;
  std::int32_t* watchers = nullptr;
  bool made = make_array(lists.starts, rows + 1) && rarest_rows(index, watchers, search, rows);
  if (made) {
    for (std::size_t rule = 0; rule < rules; ++rule) {
      if (watchers[rule] >= 0) ++lists.starts[watchers[rule] + 1];
    }
    made = lists_open(lists, rows);
  }
  for (std::size_t rule = 0; made && rule < rules; ++rule) {
    if (watchers[rule] >= 0) list_append(lists, to_size(watchers[rule]), rule);
  }
  release(watchers);
  return made;
}

bool prepare_inserted(RuleIndex& index, SideSearch& search, NodePattern* Rule::*pattern) {
  if (!make_array(search.inserted, to_size(index.matrix.row_bytes))) return false;
  for (std::size_t rule = 0; rule < to_size(index.search.rule_count); ++rule) {
    if ((index.search.rules[rule]->*pattern)->inserted != 0) bit_set(search.inserted, rule);
  }
  return true;
}

bool prepare_side(RuleIndex& index, SideSearch& search, const MatrixSide& side, NodePattern* Rule::*pattern) {
  const std::size_t rows = to_size(side.attr_count);
  return prepare_names(search.names, side) && prepare_required_rows(index, search, side) &&
         prepare_watching_rules(index, search, rows) && prepare_inserted(index, search, pattern);
}

bool prepare_rules(RuleIndex& index) {
  std::size_t listed = 0;
  for ([[maybe_unused]] const Rule& rule : chain<&Rule::next>(index.matrix.rules)) ++listed;
  const std::size_t count = std::min(listed, to_size(index.matrix.row_bytes) * 8);
  if (!make_array(index.search.rules, count)) return false;
  index.search.rule_count = static_cast<std::int32_t>(count);
  Rule* rule = index.matrix.rules;
  for (std::size_t i = 0; i < count; ++i, rule = rule->next) index.search.rules[i] = rule;
  return true;
}

bool agrees(RuleIndex& index, const MatrixSide& side) {
  if (side.attr_count < 0) return false;
  if (side.attr_count == 0) return true;
  const bool there = side.attr_table != nullptr && side.pos_matrix != nullptr && side.neg_matrix != nullptr;
  const std::int64_t needed = std::int64_t{side.attr_count} * index.matrix.row_bytes;
  return there && side.matrix_size >= needed &&
         std::find(side.attr_table, side.attr_table + side.attr_count, nullptr) == side.attr_table + side.attr_count;
}

void release_side(SideSearch& search) {
  release(search.names.buckets);
  release(search.names.next_rows);
  release(search.names.find_rows);
  for (NumberLists* lists : {&search.required_rows, &search.watching_rules}) {
    release(lists->starts);
    release(lists->items);
  }
  release(search.demanding);
  release(search.inserted);
}

}  // namespace

void rule_search_clear(RuleIndex& index) {
  release_side(index.search.left);
  release_side(index.search.right);
  release(index.search.rules);
  index.search = {};
}

Status rule_search_prepare(RuleIndex& index) {
  rule_search_clear(index);
  const bool is_sound =
      index.matrix.row_bytes > 0 && agrees(index, index.matrix.left) && agrees(index, index.matrix.right);
  if (!is_sound) return Status::ok;
  const bool prepared = prepare_rules(index) &&
                        prepare_side(index, index.search.left, index.matrix.left, &Rule::lnode) &&
                        prepare_side(index, index.search.right, index.matrix.right, &Rule::rnode);
  if (!prepared) rule_search_clear(index);
  return prepared ? Status::ok : Status::memory;
}

}  // namespace lexon
