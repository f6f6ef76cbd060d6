#include "rules/rule_search.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>
#include <utility>

#include "data/chain.hpp"

namespace lexon {

namespace {

std::size_t to_size(std::int32_t number) {
  return static_cast<std::size_t>(number);
}

std::uint32_t hash_of(const char* name) {
  std::uint32_t hash = kHashSeed;
  for (; *name != '\0'; ++name) hash = hash_step(hash, *name);
  return hash;
}

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

std::span<const std::int32_t> list_of(const NumberLists& lists, std::size_t key) {
  return std::span(lists.items).subspan(lists.starts[key], lists.starts[key + 1] - lists.starts[key]);
}

// Notes for the row that watches a rule what else the rule requires.
Watched watched_rule(SideSearch& side, std::size_t rule, std::int32_t watcher, std::span<const std::int32_t> rows) {
  const auto number = static_cast<std::int32_t>(rule);
  if (rows.size() == 1) return {number, watcher};
  if (rows.size() == 2) return {number, rows[0] == watcher ? rows[1] : rows[0]};
  const auto place = static_cast<std::int32_t>(side.more.size());
  side.more.push_back(static_cast<std::int32_t>(rows.size()) - 1);
  bool left_out = false;
  for (const std::int32_t row : rows) {
    if (row == watcher && !std::exchange(left_out, true)) continue;
    side.more.push_back(row);
  }
  return {number, -1 - place};
}

// The row of each rule's list that the fewest rules require; -1 for a rule that requires nothing.
std::vector<std::int32_t> rarest_rows(const NumberLists& required, std::size_t rows) {
  std::vector<std::uint32_t> users(rows);
  for (const std::int32_t row : required.items) ++users[to_size(row)];
  const auto rarer = [&](std::int32_t a, std::int32_t b) { return users[to_size(a)] < users[to_size(b)]; };
  std::vector<std::int32_t> rarest(required.starts.size() - 1, -1);
  for (std::size_t rule = 0; rule < rarest.size(); ++rule) {
    const auto list = list_of(required, rule);
    if (!list.empty()) rarest[rule] = *std::min_element(list.begin(), list.end(), rarer);
  }
  return rarest;
}

// Calls `visit` with row and rule for all that rules require.
template <typename Visit>
void for_each_requirement(const SideSearch& side, Visit visit) {
  for (std::size_t row = 0; row + 1 < side.watch_starts.size(); ++row) {
    for (std::uint32_t at = side.watch_starts[row]; at < side.watch_starts[row + 1]; ++at) {
      const Watched& watched = side.watched[at];
      const std::size_t rule = to_size(watched.rule);
      visit(row, rule);
      if (watched.also >= 0) {
        visit(to_size(watched.also), rule);
        continue;
      }
      const std::size_t place = to_size(-1 - watched.also);
      for (std::size_t i = 1; i <= to_size(side.more[place]); ++i) visit(to_size(side.more[place + i]), rule);
    }
  }
}

}  // namespace

NameIndex name_index_of(const MatrixSide& side) {
  const std::size_t count = to_size(side.attr_count);
  const std::size_t buckets = std::bit_ceil(count * 2 + 1);
  NameIndex index;
  index.names = side.attr_table;
  index.mask = static_cast<std::uint32_t>(buckets - 1);
  index.buckets.resize(buckets);
  index.next_rows.resize(count);
  index.find_rows.resize(count);
  for (std::size_t row = 0; row < count; ++row) {
    const char* name = side.attr_table[row];
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
  const std::size_t places = to_size(index.matrix.row_bytes) * 8;
  search.rules.reserve(count);
  for (Rule& rule : chain<&Rule::next>(index.matrix.rules)) search.rules.push_back(&rule);
  for (RuleBits* bits : {&search.all, &search.none, &search.post_edit, &search.left.inserted, &search.right.inserted}) {
    *bits = RuleBits(places);
  }
  for (std::size_t i = 0; i < count; ++i) {
    const Rule& rule = *search.rules[i];
    search.all.set(i);
    if (is_post_edit_type(rule.type)) search.post_edit.set(i);
    if (rule.lnode->inserted != 0) search.left.inserted.set(i);
    if (rule.rnode->inserted != 0) search.right.inserted.set(i);
  }
  for (RuleBits* bits : {&search.all, &search.post_edit, &search.left.inserted, &search.right.inserted}) {
    bits->summarise();
  }
}

void side_prepare(const RuleSearch& search, SideSearch& side, const NumberLists& required, NumberLists forbidding) {
  const std::size_t rules = required.starts.size() - 1;
  const std::size_t rows = side.names.find_rows.size();
  side.forbidding = std::move(forbidding);
  const std::vector<std::int32_t> watchers = rarest_rows(required, rows);
  side.undemanding = search.none;
  side.watch_starts.assign(rows + 1, 0);
  for (std::size_t rule = 0; rule < rules; ++rule) {
    if (watchers[rule] < 0) {
      side.undemanding.set(rule);
    } else {
      ++side.watch_starts[to_size(watchers[rule]) + 1];
    }
  }
  side.undemanding.summarise();
  side.watched.resize(lists_open(side.watch_starts));
  for (std::size_t rule = 0; rule < rules; ++rule) {
    if (watchers[rule] < 0) continue;
    side.watched[side.watch_starts[to_size(watchers[rule]) + 1]++] =
        watched_rule(side, rule, watchers[rule], list_of(required, rule));
  }
}

NumberLists transposed(const NumberLists& lists, std::size_t keys) {
  NumberLists result;
  result.starts.resize(keys + 1);
  for (const std::int32_t item : lists.items) ++result.starts[to_size(item) + 1];
  result.items.resize(lists_open(result.starts));
  for (std::size_t key = 0; key + 1 < lists.starts.size(); ++key) {
    for (const std::int32_t item : list_of(lists, key)) list_append(result, to_size(item), key);
  }
  return result;
}

NumberLists requiring_rules(const SideSearch& side) {
  NumberLists result;
  result.starts.resize(side.watch_starts.size());
  for_each_requirement(side, [&](std::size_t row, std::size_t) { ++result.starts[row + 1]; });
  result.items.resize(lists_open(result.starts));
  for_each_requirement(side, [&](std::size_t row, std::size_t rule) { list_append(result, row, rule); });
  return result;
}

}  // namespace lexon
