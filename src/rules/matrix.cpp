// Building the index: the names of all conditions are sorted side by side without duplicates and become the tables; a
// second walk over the rules takes what they ask.
//
// wanted: the names go through lines of text, and so does what happens to them there. A name with its line end is cut
// into lines behind each line feed (a CR in front of it goes) and behind 1,023 characters; a line that is cut in the
// middle loses its last character to a line feed. Lines are ordered with their line feeds, so that a name with a tab
// stands before the same name without. And names are taken out of the sorted lines in pieces of up to 255 characters,
// of which each loses its last one, as long as there are fewer pieces than lines.
#include "rules/matrix.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "data/chain.hpp"
#include "data/output.hpp"
#include "data/pool.hpp"
#include "data/session.hpp"
#include "dict/item_sort.hpp"
#include "dict/layout.hpp"
#include "rules/rule_search.hpp"

namespace lexon {

namespace {

// One side of the build: which pattern of a rule it reads, and where its part of the index is.
struct SideBuild {
  NodePattern* Rule::*pattern;
  MatrixSide& side;
  SideSearch& search;
};

const CondItem* conditions(const SideBuild& build, const Rule& rule) {
  return (rule.*build.pattern)->attr_conds;
}

constexpr std::size_t kLineLength = 1023;  // the longest line, its line feed included
constexpr std::size_t kPieceLength = 255;  // of a line that becomes a name
// Bytes; beyond, the sort goes on on the disk.
constexpr std::size_t kSortMemory = std::size_t{32} << 20;

// Hands a line on as an item to be sorted, and begins the next. Its last character becomes the line feed, which was that
// already unless the line was cut.
bool line_add(std::string& line, ItemSorter& lines) {
  line.back() = '\n';
  Bytes item;
  append_u16(item, 4 + line.size());
  append_text(item, line);
  line.clear();
  return lines.add(item);
}

// Adds a name as the lines that it makes. False if sorting fails.
bool name_add(std::string_view name, ItemSorter& lines) {
  std::string line;
  for (std::size_t at = 0; at <= name.size(); ++at) {
    const bool is_end = at == name.size();
    const bool ends_line = is_end || name[at] == '\n';
    if (!ends_line && name[at] == '\r' && at + 1 < name.size() && name[at + 1] == '\n') continue;
    line += ends_line ? '\n' : name[at];
    if ((ends_line || line.size() == kLineLength) && !line_add(line, lines)) return false;
  }
  return true;
}

// No room on the disk for the sort: the step fails, and says so.
Status sorting_failed(Session& session) {
  out_print(session, ";;Can't write a temporary file for sorting!\n");
  return Status::no_effect;
}

// Adds the texts of all conditions of the side, whatever their prefix.
Status names_add(Session& session, const SideBuild& build, const Rule* rules, ItemSorter& lines) {
  // The same few names stand in many rules. The texts belong to the rules, and stay.
  std::unordered_set<std::string_view> added;
  for (const Rule& rule : chain<&Rule::next>(rules)) {
    if (const Status s = must_leave(session); s != Status::ok) return s;
    for (const CondItem& item : chain<&CondItem::next>(conditions(build, rule))) {
      if (!added.insert(item.text).second) continue;
      if (!name_add(item.text, lines)) return sorting_failed(session);
    }
  }
  return lines.start_reading() ? Status::ok : sorting_failed(session);
}

// The sorted lines one behind the other, each once, and how many they are.
Status lines_take(Session& session, ItemSorter& lines, std::string& text, std::int32_t& count) {
  std::string last;
  for (ByteView item = lines.next(); !item.empty(); item = lines.next()) {
    const std::string_view line = item_key(item);
    if (count != 0 && line == last) continue;
    last = line;
    text += line;
    ++count;
  }
  return lines.failed() ? sorting_failed(session) : Status::ok;
}

// Makes the table of names from the sorted lines.
// The pool is as long as the lines together: the last byte of each piece, mostly its line feed, becomes the NUL.
Status attr_table_make(MatrixSide& side, std::string_view text, std::int32_t count) {
  if (count == 0) return Status::ok;
  side.attr_pool = static_cast<char*>(zeroed_block(text.size()));
  side.attr_table = static_cast<char**>(zeroed_block(static_cast<std::uint64_t>(count) * sizeof(char*)));
  if (side.attr_pool == nullptr || side.attr_table == nullptr) return Status::memory;
  while (side.attr_count < count) {
    const std::size_t length = std::min(text.find('\n') + 1, kPieceLength);
    char* name = side.attr_pool + side.pool_size;
    text.copy(name, length - 1);  // the block ends it with a NUL
    side.attr_table[side.attr_count++] = name;
    side.pool_size += static_cast<std::uint32_t>(length);
    text.remove_prefix(length);
  }
  return Status::ok;
}

Status names_sort(Session& session, const SideBuild& build, const Rule* rules) {
  ItemSorter lines(kSortMemory);
  std::string text;
  std::int32_t count = 0;
  if (const Status s = names_add(session, build, rules, lines); s != Status::ok) return s;
  if (const Status s = lines_take(session, lines, text, count); s != Status::ok) return s;
  return attr_table_make(build.side, text, count);
}

// The largest size of a matrix that its field can tell and that is left room for behind it.
constexpr std::uint64_t kLargestMatrix = 0xFFFFFFE0U;

// What the rules ask of a side, by rule.
struct Demands {
  NumberLists required;
  NumberLists forbidden;
};

void list_end(NumberLists& lists) {
  lists.starts.push_back(static_cast<std::uint32_t>(lists.items.size()));
}

// Takes the conditions of the next rule. A name that is not in the table ends the walk.
void conditions_take(Demands& demands, const NameIndex& names, const CondItem* conds) {
  for (const CondItem& item : chain<&CondItem::next>(conds)) {
    if (item.op > kOpHas) continue;
    const std::int32_t row = name_row(names, item.text);
    if (row < 0) break;
    (item.op == kOpHas ? demands.required : demands.forbidden).items.push_back(row);
  }
  list_end(demands.required);
  list_end(demands.forbidden);
}

// The list of a rule may hold a row twice, if the rule asks twice.
Status demands_collect(Session& session, const RuleIndex& index, const SideBuild& build, Demands& demands) {
  demands.required.starts.reserve(index.search.rules.size() + 1);
  demands.forbidden.starts.reserve(index.search.rules.size() + 1);
  list_end(demands.required);
  list_end(demands.forbidden);
  for (const Rule* rule : index.search.rules) {
    if (const Status s = must_leave(session); s != Status::ok) return s;
    conditions_take(demands, build.search.names, conditions(build, *rule));
  }
  return Status::ok;
}

Status side_build(Session& session, RuleIndex& index, SideBuild build) {
  MatrixSide& side = build.side;
  if (const Status s = names_sort(session, build, index.matrix.rules); s != Status::ok) return s;
  const auto rows = static_cast<std::uint64_t>(side.attr_count);
  const std::uint64_t size = static_cast<std::uint64_t>(index.matrix.row_bytes) * rows;
  if (size > kLargestMatrix) return Status::memory;
  side.matrix_size = static_cast<std::uint32_t>(size);
  build.search.names = name_index_of(side);
  Demands demands;
  if (const Status s = demands_collect(session, index, build, demands); s != Status::ok) return s;
  build.search.required = std::move(demands.required);
  build.search.forbidden = std::move(demands.forbidden);
  return Status::ok;
}

// wanted: a list without rules has a row of one byte: (0 - 1) / 8 is 0.
void rules_count(RuleIndex& index, Rule* rules) {
  index.matrix.rules = rules;
  for ([[maybe_unused]] const Rule& rule : chain<&Rule::next>(rules)) ++index.matrix.rule_count;
  index.matrix.row_bytes = (index.matrix.rule_count - 1) / 8 + 1;
}

// `rules_prepare` numbers the rules, which both sides rely on; `watch_prepare` needs the demands of both.
Status build_all(Session& session, RuleIndex& index, Rule* rules) {
  rules_count(index, rules);
  rules_prepare(index);
  RuleMatrix& matrix = index.matrix;
  const Status left = side_build(session, index, {&Rule::lnode, matrix.left, index.search.left});
  if (left != Status::ok) return left;
  const Status right = side_build(session, index, {&Rule::rnode, matrix.right, index.search.right});
  if (right == Status::ok) watch_prepare(index.search);
  return right;
}

// The names come from `zeroed_block`, so they go back to the heap.
void side_release(MatrixSide& side) {
  std::free(side.attr_pool);
  std::free(side.attr_table);
}

}  // namespace

// A failure half way leaves nothing: an index without some rules would say other things than the linguist wrote.
Status rule_matrix_build(Session& session, RuleIndex& index, Rule* rules) {
  rule_matrix_clear(index);
  Status status = Status::memory;
  try {
    status = build_all(session, index, rules);
  } catch (const std::bad_alloc&) {
  }
  if (status != Status::ok) rule_matrix_clear(index);
  return status;
}

void rule_matrix_clear(RuleIndex& index) {
  side_release(index.matrix.left);
  side_release(index.matrix.right);
  index.matrix = {};
  index.search = {};
}

std::int32_t attr_table_find(const char* name, char* const* table, std::int32_t count) {
  std::int32_t low = 0;
  std::int32_t high = count - 1;
  while (low <= high) {
    const std::int32_t mid = (low + high) / 2;
    const int order = std::strcmp(name, table[mid]);
    if (order == 0) return mid;
    if (order < 0) {
      high = mid - 1;
    } else {
      low = mid + 1;
    }
  }
  return -1;
}

void* zeroed_block(std::uint64_t size) {
  return size == 0 ? nullptr : std::calloc(size, 1);
}

}  // namespace lexon
