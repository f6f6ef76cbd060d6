// Building the index: the names of all conditions go through two text files, one for each side, which are sorted on
// disk without duplicates; the sorted files become the tables, and a second walk over the rules sets the bits.
#include "rules/matrix.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "data/chain.hpp"
#include "data/output.hpp"
#include "data/platform.hpp"
#include "data/pool.hpp"
#include "data/state.hpp"
#include "dict/merge_sort.hpp"
#include "rules/bits.hpp"
#include "rules/rule_search.hpp"

namespace lexon {

constinit RuleMatrix rule_matrix{};

namespace {

// One side of the build: which pattern of a rule it reads, and where its part of the index is.
struct SideBuild {
  NodePattern* Rule::*pattern;
  MatrixSide& side;
  TempFile written{};  // the names as they come
  TempFile sorted{};
};

const CondItem* conditions(const SideBuild& build, const Rule& rule) {
  return (rule.*build.pattern)->attr_conds;
}

// Writes the texts of all conditions of the side, whatever their prefix, one to a line. That the file cannot be opened
// is left to the sort to find and report.
Status names_write(const SideBuild& build, const Rule* rules) {
  std::FILE* stream = std::fopen(build.written.path().c_str(), "wb");
  if (stream == nullptr) return Status::ok;
  Status status = Status::ok;
  for (const Rule& rule : chain<&Rule::next>(rules)) {
    if (status = must_leave(); status != Status::ok) break;
    for (const CondItem& item : chain<&CondItem::next>(conditions(build, rule))) {
      std::fputs(item.text, stream);
      std::fputs("\r\n", stream);  // a line end of the sort's input; a name that ends with a CR keeps it so
    }
  }
  const bool written = std::ferror(stream) == 0;
  const bool closed = std::fclose(stream) == 0;
  if (status != Status::ok || (written && closed)) return status;
  out_print(";;Can't write file %s!\n", build.written.path().c_str());
  return Status::no_effect;
}

// Bytes from the start to the end of a stream, which is left at its start; 0 if they cannot be told.
std::uint64_t stream_size(std::FILE* stream) {
  if (std::fseek(stream, 0, SEEK_END) != 0) return 0;
  const long size = std::ftell(stream);
  std::rewind(stream);
  return size < 0 ? 0 : static_cast<std::uint64_t>(size);
}

// Takes the sorted names, up to `attr_count`. The last character of what is read goes as the line end: of a line too
// long for the buffer the first piece so loses a character, and the rest becomes a name of its own.
void names_read(MatrixSide& side, std::FILE* stream) {
  std::array<char, 256> line;
  std::int32_t count = 0;
  while (count < side.attr_count && std::fgets(line.data(), static_cast<int>(line.size()), stream) != nullptr) {
    char* name = side.attr_pool + side.pool_size;
    const std::size_t length = std::strlen(line.data());
    line[length - 1] = '\0';
    std::memcpy(name, line.data(), length);
    side.attr_table[count++] = name;
    side.pool_size += static_cast<std::uint32_t>(length);
  }
  side.attr_count = count;
}

// A line of the file is never shorter than its name with the NUL, so the file's size is enough for the pool.
Status attr_table_load(MatrixSide& side, const char* path) {
  if (side.attr_count == 0) return Status::ok;
  std::FILE* stream = std::fopen(path, "rb");
  if (stream == nullptr) return Status::no_effect;
  const auto count = static_cast<std::uint64_t>(side.attr_count);
  side.attr_pool = static_cast<char*>(zeroed_block(stream_size(stream)));
  side.attr_table = static_cast<char**>(zeroed_block(count * sizeof(char*)));
  const bool made = side.attr_pool != nullptr && side.attr_table != nullptr;
  if (made) names_read(side, stream);
  std::fclose(stream);
  if (!made) return Status::memory;
  if (static_cast<std::uint64_t>(side.attr_count) == count) return Status::ok;
  out_print(";;Can't read file %s!\n", path);
  return Status::no_effect;
}

Status names_sort(SideBuild& build) {
  const int count =
      merge_sort_file(true, false, build.written.path().c_str(), build.sorted.path().c_str(), state.output);
  if (const Status s = must_leave(); s != Status::ok) return s;
  if (count < 0) return Status::no_effect;
  build.side.attr_count = count;
  return attr_table_load(build.side, build.sorted.path().c_str());
}

template <typename Element>
bool block_make(Element*& block, std::uint64_t size) {
  block = static_cast<Element*>(zeroed_block(size));
  return block != nullptr || size == 0;
}

// The largest size of a matrix that its field can tell and that is left room for behind it.
constexpr std::uint64_t kLargestMatrix = 0xFFFFFFE0U;

Status matrices_make(MatrixSide& side) {
  const auto row_bytes = static_cast<std::uint64_t>(rule_matrix.row_bytes);
  const std::uint64_t size = row_bytes * static_cast<std::uint64_t>(side.attr_count);
  if (size > kLargestMatrix) return Status::memory;
  side.matrix_size = static_cast<std::uint32_t>(size);
  const bool made = block_make(side.pos_matrix, size) && block_make(side.neg_matrix, size) &&
                    block_make(side.result_vector, row_bytes) && block_make(side.missing_vector, row_bytes);
  return made ? Status::ok : Status::memory;
}

// Sets the bits of rule `number` for its conditions. A name that is not in the table ends the walk.
void rule_bits_set(MatrixSide& side, const CondItem* conds, std::size_t number) {
  for (const CondItem& item : chain<&CondItem::next>(conds)) {
    if (item.op > kOpHas) continue;
    const std::int32_t row = attr_table_find(item.text, side.attr_table, side.attr_count);
    if (row < 0) return;
    std::uint8_t* matrix = item.op == kOpHas ? side.pos_matrix : side.neg_matrix;
    bit_set(matrix + static_cast<std::size_t>(row) * static_cast<std::size_t>(rule_matrix.row_bytes), number);
  }
}

void bytes_complement(std::uint8_t* area, std::uint32_t size) {
  std::transform(area, area + size, area, [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
}

Status bits_set(const SideBuild& build, const Rule* rules) {
  if (const Status s = matrices_make(build.side); s != Status::ok) return s;
  std::size_t number = 0;
  for (const Rule& rule : chain<&Rule::next>(rules)) {
    if (const Status s = must_leave(); s != Status::ok) return s;
    rule_bits_set(build.side, conditions(build, rule), number++);
  }
  bytes_complement(build.side.neg_matrix, build.side.matrix_size);
  return Status::ok;
}

Status side_build(NodePattern* Rule::*pattern, MatrixSide& side, const Rule* rules) {
  SideBuild build{pattern, side};
  if (const Status s = names_write(build, rules); s != Status::ok) return s;
  if (const Status s = names_sort(build); s != Status::ok) return s;
  return bits_set(build, rules);
}

void rules_count(Rule* rules) {
  rule_matrix.rules = rules;
  for ([[maybe_unused]] const Rule& rule : chain<&Rule::next>(rules)) ++rule_matrix.rule_count;
  rule_matrix.row_bytes = (rule_matrix.rule_count - 1) / 8 + 1;
}

Status build_all(Rule* rules) {
  rules_count(rules);
  if (const Status s = side_build(&Rule::lnode, rule_matrix.left, rules); s != Status::ok) return s;
  if (const Status s = side_build(&Rule::rnode, rule_matrix.right, rules); s != Status::ok) return s;
  return rule_search_prepare();
}

void side_release(MatrixSide& side) {
  for (void* block :
       {static_cast<void*>(side.attr_pool), static_cast<void*>(side.attr_table), static_cast<void*>(side.pos_matrix),
        static_cast<void*>(side.neg_matrix), static_cast<void*>(side.result_vector),
        static_cast<void*>(side.missing_vector), static_cast<void*>(side.union_vector)}) {
    std::free(block);
  }
}

}  // namespace

Status rule_matrix_build(Rule* rules) {
  rule_matrix_clear();
  const Status status = build_all(rules);
  if (status != Status::ok) rule_matrix_clear();
  return status;
}

void rule_matrix_clear() {
  rule_search_clear();
  side_release(rule_matrix.left);
  side_release(rule_matrix.right);
  rule_matrix = {};
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
  return size == 0 || allocation_refused() ? nullptr : std::calloc(size, 1);
}

}  // namespace lexon
