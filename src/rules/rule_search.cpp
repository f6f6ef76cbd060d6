#include "rules/rule_search.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

#include "data/chain.hpp"
#include "rules/bits.hpp"

namespace lexon {

namespace {

std::size_t to_size(std::int32_t number) {
  return static_cast<std::size_t>(number);
}

// Of a whole name. Searches take the same steps over the pieces of an attribute text.
std::uint32_t hash_of(const char* name) {
  std::uint32_t hash = kHashSeed;
  for (; *name != '\0'; ++name) hash = hash_step(hash, *name);
  return hash;
}

// Two passes fill lists that lie in one array: the first counts what each will hold, the second puts it there.
// With `starts[k + 1]` the length of list k: turns the lengths to places in such a way that taking starts[k + 1]++ for
// each item leaves the starts as they should be. The number of all items.
std::uint32_t lists_open(std::vector<std::uint32_t>& starts) {
  std::uint32_t total = 0;
  for (std::size_t key = 1; key < starts.size(); ++key) total += std::exchange(starts[key], total);
  return total;
}

void list_append(NumberLists& lists, std::size_t key, std::size_t item) {
  lists.items[lists.starts[key + 1]++] = static_cast<std::int32_t>(item);
}

// How many rules require each row.
std::vector<std::uint32_t> users_of(const SideSearch& side) {
  std::vector<std::uint32_t> users(side.names.find_rows.size());
  for (const std::int32_t row : side.required.items) ++users[to_size(row)];
  return users;
}

// The row of the rule's list that the fewest rules require; -1 without rows.
std::int32_t rarest_row(const SideSearch& side, const std::vector<std::uint32_t>& users, std::size_t rule) {
  const auto rows = side.required.of(rule);
  const auto rarer = [&](std::int32_t a, std::int32_t b) { return users[to_size(a)] < users[to_size(b)]; };
  return rows.empty() ? -1 : *std::min_element(rows.begin(), rows.end(), rarer);
}

// Fills the lists of the rows that watch, from the watching row of each rule; -1: none on this side.
void watchers_set(SideSearch& side, const std::vector<std::int32_t>& watchers) {
  side.watch_starts.assign(side.names.find_rows.size() + 1, 0);
  for (const std::int32_t row : watchers) {
    if (row >= 0) ++side.watch_starts[to_size(row) + 1];
  }
  side.watched.resize(lists_open(side.watch_starts));
  // A second row that the rule requires spares most looks at it: a search asks for that before it goes to the rule.
  for (std::size_t rule = 0; rule < watchers.size(); ++rule) {
    const std::int32_t row = watchers[rule];
    if (row < 0) continue;
    const auto rows = side.required.of(rule);
    const auto also = std::find_if(rows.begin(), rows.end(), [&](std::int32_t other) { return other != row; });
    side.watched[side.watch_starts[to_size(row) + 1]++] = {static_cast<std::int32_t>(rule),
                                                           also == rows.end() ? row : *also};
  }
}

ShiftedEnd shifted_end(const Rule& rule) {
  if (rule.type != rule_type::shift_left && rule.type != rule_type::shift_right) return {false, '\0'};
  const bool to_left = rule.type == rule_type::shift_left;
  const NodePattern& own = to_left ? *rule.lnode : *rule.rnode;
  const NodePattern& shifted = to_left ? *rule.rnode : *rule.lnode;
  // Whatever a match would look at before the text forbids to refuse by the text: it could have other effects.
  const bool is_plain = rule.mid == nullptr && (to_left ? rule.suf : rule.pre) == nullptr && own.inserted != 0 &&
                        shifted.inserted == 0 && own.hw_conds != nullptr;
  const std::string_view text = is_plain ? own.hw_conds->text : "";
  if (text.empty()) return {to_left, '\0'};
  return {to_left, to_left ? text.front() : text.back()};
}

// Names another rule, behind all that are named already.
void rule_append(std::vector<RuleBlock>& blocks, std::size_t rule) {
  const auto block = static_cast<std::int32_t>(rule / kWordBits);
  if (blocks.empty() || blocks.back().block != block) blocks.push_back({block, 0});
  blocks.back().rules |= word_bit(rule);
}

}  // namespace

NameIndex name_index_of(const MatrixSide& side) {
  const std::size_t count = to_size(side.attr_count);
  // Half of the buckets stay empty, so that most names that no rule asks for are told by one look.
  const std::size_t buckets = std::bit_ceil(count * 2 + 1);
  NameIndex index;
  index.names = side.attr_table;
  index.mask = static_cast<std::uint32_t>(buckets - 1);
  index.buckets.resize(buckets);
  index.next_rows.resize(count);
  index.find_rows.resize(count);
  for (std::size_t row = 0; row < count; ++row) {
    const char* name = side.attr_table[row];
    // A table from a file can hold a name twice or out of order; then the binary search decides, and may find none.
    index.find_rows[row] = attr_table_find(name, side.attr_table, side.attr_count);
    index.most_commas = std::max(index.most_commas, static_cast<int>(std::count(name, name + std::strlen(name), ',')));
    std::int32_t& bucket = index.buckets[hash_of(name) & index.mask];
    index.next_rows[row] = std::exchange(bucket, static_cast<std::int32_t>(row) + 1);
  }
  return index;
}

std::int32_t name_row(const NameIndex& names, const char* name) {
  std::int32_t next = names.buckets[hash_of(name) & names.mask];
  while (next != 0 && std::strcmp(names.names[next - 1], name) != 0) next = names.next_rows[to_size(next - 1)];
  return next == 0 ? -1 : names.find_rows[to_size(next - 1)];
}

void rules_prepare(RuleIndex& index) {
  RuleSearch& search = index.search;
  const std::size_t count = to_size(index.matrix.rule_count);
  search.rules.reserve(count);
  search.shifted_ends.reserve(count);
  search.traits.resize(words_for(count));
  for (Rule& rule : chain<&Rule::next>(index.matrix.rules)) {
    const std::size_t number = search.rules.size();
    rule.number = static_cast<std::int32_t>(number);
    search.rules.push_back(&rule);
    search.shifted_ends.push_back(shifted_end(rule));
    BlockTraits& traits = search.traits[number / kWordBits];
    const std::uint64_t bit = word_bit(number);
    traits.all |= bit;
    if (rule.lnode->inserted != 0) traits.left_inserted |= bit;
    if (rule.rnode->inserted != 0) traits.right_inserted |= bit;
    if (is_post_edit_type(rule.type)) traits.post_edit |= bit;
  }
}

void watch_prepare(RuleSearch& search) {
  // The fewer rules share a row, the more seldom it leads to a rule that does not fit. So the rarest row of both sides
  // watches, and of two that are as rare that of the left side.
  const std::vector<std::uint32_t> left_users = users_of(search.left);
  const std::vector<std::uint32_t> right_users = users_of(search.right);
  std::vector<std::int32_t> left(search.rules.size(), -1);
  std::vector<std::int32_t> right(search.rules.size(), -1);
  for (std::size_t rule = 0; rule < search.rules.size(); ++rule) {
    BlockTraits& traits = search.traits[rule / kWordBits];
    const std::uint64_t bit = word_bit(rule);
    // What an inserted pattern requires need not be there.
    const bool left_inserted = (traits.left_inserted & bit) != 0;
    const bool right_inserted = (traits.right_inserted & bit) != 0;
    const std::int32_t left_row = left_inserted ? -1 : rarest_row(search.left, left_users, rule);
    const std::int32_t right_row = right_inserted ? -1 : rarest_row(search.right, right_users, rule);
    if (left_row < 0 && right_row < 0) {
      rule_append(search.easy, rule);
      ++search.easy_count;
      // An easy rule can still ask: by what an inserted pattern requires, or by what it forbids.
      for (SideSearch* side : {&search.left, &search.right}) {
        const bool asks = !side->required.of(rule).empty() || !side->forbidden.of(rule).empty();
        if (asks) {
          side->easy_asking.push_back(static_cast<std::int32_t>(rule));
        } else {
          rule_append(side->easy_always, rule);
        }
      }
    } else if (right_row < 0 || (left_row >= 0 && left_users[to_size(left_row)] <= right_users[to_size(right_row)])) {
      left[rule] = left_row;
    } else {
      right[rule] = right_row;
    }
    if (left[rule] >= 0) traits.left_watches |= bit;
    if (right[rule] >= 0) traits.right_watches |= bit;
  }
  watchers_set(search.left, left);
  watchers_set(search.right, right);
}

NumberLists transposed(const NumberLists& lists, std::size_t keys) {
  NumberLists result;
  result.starts.resize(keys + 1);
  // Lengths first; the keys are then walked in order, so that each list of the result rises.
  for (const std::int32_t item : lists.items) ++result.starts[to_size(item) + 1];
  result.items.resize(lists_open(result.starts));
  for (std::size_t key = 0; key + 1 < lists.starts.size(); ++key) {
    for (const std::int32_t item : lists.of(key)) list_append(result, to_size(item), key);
  }
  return result;
}

}  // namespace lexon
