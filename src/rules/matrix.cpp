// Building the index: the names of all conditions are sorted side by side without duplicates and become the tables; a
// second walk over the rules sets the bits.
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
#include <string>
#include <string_view>

#include "data/chain.hpp"
#include "data/output.hpp"
#include "data/pool.hpp"
#include "data/session.hpp"
#include "dict/item_sort.hpp"
#include "dict/layout.hpp"
#include "rules/bits.hpp"
#include "rules/rule_search.hpp"

namespace lexon {

namespace {

// One side of the build: which pattern of a rule it reads, and where its part of the index is.
struct SideBuild {
  NodePattern* Rule::*pattern;
  MatrixSide& side;
};

const CondItem* conditions(const SideBuild& build, const Rule& rule) {
  return (rule.*build.pattern)->attr_conds;
}

constexpr std::size_t kLineLength = 1023;  // the longest line, its line feed included
constexpr std::size_t kPieceLength = 255;  // of a line that becomes a name
constexpr std::size_t kSortMemory = std::size_t{32} << 20;

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

Status sorting_failed(Session& session) {
  out_print(session, ";;Can't write a temporary file for sorting!\n");
  return Status::no_effect;
}

// Adds the texts of all conditions of the side, whatever their prefix.
Status names_add(Session& session, const SideBuild& build, const Rule* rules, ItemSorter& lines) {
  for (const Rule& rule : chain<&Rule::next>(rules)) {
    if (const Status s = must_leave(session); s != Status::ok) return s;
    for (const CondItem& item : chain<&CondItem::next>(conditions(build, rule))) {
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

template <typename Element>
bool block_make(Element*& block, std::uint64_t size) {
  block = static_cast<Element*>(zeroed_block(size));
  return block != nullptr || size == 0;
}

// The largest size of a matrix that its field can tell and that is left room for behind it.
constexpr std::uint64_t kLargestMatrix = 0xFFFFFFE0U;

Status matrices_make(RuleIndex& index, MatrixSide& side) {
  const auto row_bytes = static_cast<std::uint64_t>(index.matrix.row_bytes);
  const std::uint64_t size = row_bytes * static_cast<std::uint64_t>(side.attr_count);
  if (size > kLargestMatrix) return Status::memory;
  side.matrix_size = static_cast<std::uint32_t>(size);
  const bool made = block_make(side.pos_matrix, size) && block_make(side.neg_matrix, size);
  return made ? Status::ok : Status::memory;
}

// Sets the bits of rule `number` for its conditions. A name that is not in the table ends the walk.
void rule_bits_set(RuleIndex& index, MatrixSide& side, const CondItem* conds, std::size_t number) {
  for (const CondItem& item : chain<&CondItem::next>(conds)) {
    if (item.op > kOpHas) continue;
    const std::int32_t row = attr_table_find(item.text, side.attr_table, side.attr_count);
    if (row < 0) return;
    std::uint8_t* matrix = item.op == kOpHas ? side.pos_matrix : side.neg_matrix;
    bit_set(matrix + static_cast<std::size_t>(row) * static_cast<std::size_t>(index.matrix.row_bytes), number);
  }
}

void bytes_complement(std::uint8_t* area, std::uint32_t size) {
  std::transform(area, area + size, area, [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
}

Status bits_set(Session& session, RuleIndex& index, const SideBuild& build, const Rule* rules) {
  if (const Status s = matrices_make(index, build.side); s != Status::ok) return s;
  std::size_t number = 0;
  for (const Rule& rule : chain<&Rule::next>(rules)) {
    if (const Status s = must_leave(session); s != Status::ok) return s;
    rule_bits_set(index, build.side, conditions(build, rule), number++);
  }
  bytes_complement(build.side.neg_matrix, build.side.matrix_size);
  return Status::ok;
}

Status side_build(Session& session, RuleIndex& index, NodePattern* Rule::*pattern, MatrixSide& side,
                  const Rule* rules) {
  const SideBuild build{pattern, side};
  if (const Status s = names_sort(session, build, rules); s != Status::ok) return s;
  return bits_set(session, index, build, rules);
}

void rules_count(RuleIndex& index, Rule* rules) {
  index.matrix.rules = rules;
  for ([[maybe_unused]] const Rule& rule : chain<&Rule::next>(rules)) ++index.matrix.rule_count;
  index.matrix.row_bytes = (index.matrix.rule_count - 1) / 8 + 1;
}

Status build_all(Session& session, RuleIndex& index, Rule* rules) {
  rules_count(index, rules);
  if (const Status s = side_build(session, index, &Rule::lnode, index.matrix.left, rules); s != Status::ok) return s;
  if (const Status s = side_build(session, index, &Rule::rnode, index.matrix.right, rules); s != Status::ok) return s;
  return rule_search_prepare(index);
}

void side_release(MatrixSide& side) {
  for (void* block : {static_cast<void*>(side.attr_pool), static_cast<void*>(side.attr_table),
                      static_cast<void*>(side.pos_matrix), static_cast<void*>(side.neg_matrix)}) {
    std::free(block);
  }
}

}  // namespace

Status rule_matrix_build(Session& session, RuleIndex& index, Rule* rules) {
  rule_matrix_clear(index);
  const Status status = build_all(session, index, rules);
  if (status != Status::ok) rule_matrix_clear(index);
  return status;
}

void rule_matrix_clear(RuleIndex& index) {
  rule_search_clear(index);
  side_release(index.matrix.left);
  side_release(index.matrix.right);
  index.matrix = {};
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
