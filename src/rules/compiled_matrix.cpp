// The matrix file is a header of eight u32 and six areas, each as long as the header says:
//
//   header   left attr_count, left pool_size, right attr_count, right pool_size, rule_count, row_bytes,
//            left matrix_size, right matrix_size
//   areas    left attr_pool, right attr_pool, left pos_matrix, left neg_matrix, right pos_matrix, right neg_matrix
#include <algorithm>
#include <array>

#include "data/bytes.hpp"
#include "data/chain.hpp"
#include "data/output.hpp"
#include "data/platform.hpp"
#include "data/session.hpp"
#include "rules/compiled.hpp"
#include "rules/compiled_format.hpp"
#include "rules/matrix.hpp"

namespace lexon {
namespace {

constexpr std::size_t kHeaderSize = 32;
using HeaderBytes = std::array<std::uint8_t, kHeaderSize>;

// ---- Writing ----

HeaderBytes header_of(const RuleMatrix& matrix) {
  HeaderBytes bytes;
  ByteWriter out(bytes);
  for (const MatrixSide* side : {&matrix.left, &matrix.right}) {
    out.u32(static_cast<std::uint32_t>(side->attr_count));
    out.u32(side->pool_size);
  }
  out.u32(static_cast<std::uint32_t>(matrix.rule_count));
  out.u32(static_cast<std::uint32_t>(matrix.row_bytes));
  out.u32(matrix.left.matrix_size);
  out.u32(matrix.right.matrix_size);
  return bytes;
}

void area_write(const void* area, std::size_t size, std::FILE* stream) {
  if (size != 0) std::fwrite(area, 1, size, stream);
}

// ---- Reading ----

// A side that has been read as far as the header tells of it.
struct Header {
  MatrixSide left;
  MatrixSide right;
  std::uint32_t rule_count;
  std::uint32_t row_bytes;
};

Header header_from(const HeaderBytes& bytes) {
  Header header{};
  ByteReader in(bytes);
  for (MatrixSide* side : {&header.left, &header.right}) {
    side->attr_count = static_cast<std::int32_t>(in.u32());
    side->pool_size = in.u32();
  }
  header.rule_count = in.u32();
  header.row_bytes = in.u32();
  header.left.matrix_size = in.u32();
  header.right.matrix_size = in.u32();
  return header;
}

std::uint64_t list_length(const Rule* rules) {
  std::uint64_t count = 0;
  for ([[maybe_unused]] const Rule& rule : chain<&Rule::next>(rules)) ++count;
  return count;
}

// Bytes in a row of one bit for each rule; at least one.
std::uint64_t row_bytes_for(std::uint64_t rule_count) {
  return std::max<std::uint64_t>((rule_count + 7) / 8, 1);
}

const char* side_fault(const MatrixSide& side, std::uint64_t row_bytes) {
  if (side.attr_count < 0) return "attr_count is negative";
  const auto count = static_cast<std::uint64_t>(side.attr_count);
  // Each name ends with a NUL of its own.
  if (count > side.pool_size || (count == 0 && side.pool_size != 0)) return "attr_count does not agree with pool_size";
  if (side.matrix_size != row_bytes * count) return "matrix_size does not agree with row_bytes and attr_count";
  return nullptr;
}

std::uint64_t file_size_for(const Header& header) {
  std::uint64_t size = kHeaderSize;
  for (const MatrixSide* side : {&header.left, &header.right}) {
    size += side->pool_size + std::uint64_t{2} * side->matrix_size;
  }
  return size;
}

// What the header disagrees with, or null. Nothing is allocated for a header that does not hold.
const char* header_fault(const Header& header, const Rule* rules, std::uint64_t file_size) {
  if (header.rule_count != list_length(rules)) return "rule_count is not the number of rules";
  if (header.row_bytes != row_bytes_for(header.rule_count)) return "row_bytes does not agree with rule_count";
  if (const char* fault = side_fault(header.left, header.row_bytes); fault != nullptr) return fault;
  if (const char* fault = side_fault(header.right, header.row_bytes); fault != nullptr) return fault;
  if (file_size < file_size_for(header)) return "the file is cut short";
  return nullptr;
}

// The next area of the file in memory of its own; an area of size 0 is null.
template <typename Byte>
Status area_read(Byte*& area, std::size_t size, std::FILE* stream) {
  if (size == 0) return Status::ok;
  area = static_cast<Byte*>(zeroed_block(size));
  if (area == nullptr) return Status::memory;
  return std::fread(area, 1, size, stream) == size ? Status::ok : Status::no_effect;
}

Status areas_read(RuleMatrix& matrix, std::FILE* stream) {
  for (MatrixSide* side : {&matrix.left, &matrix.right}) {
    if (const Status s = area_read(side->attr_pool, side->pool_size, stream); s != Status::ok) return s;
  }
  for (MatrixSide* side : {&matrix.left, &matrix.right}) {
    if (const Status s = area_read(side->pos_matrix, side->matrix_size, stream); s != Status::ok) return s;
    if (const Status s = area_read(side->neg_matrix, side->matrix_size, stream); s != Status::ok) return s;
  }
  return Status::ok;
}

// Does the pool hold `attr_count` names, the last one terminated like the others?
bool names_agree(const MatrixSide& side) {
  if (side.pool_size == 0) return true;
  const std::string_view pool(side.attr_pool, side.pool_size);
  return pool.back() == '\0' && std::count(pool.begin(), pool.end(), '\0') == side.attr_count;
}

Status attr_table_make(MatrixSide& side) {
  if (side.attr_count == 0) return Status::ok;
  const auto count = static_cast<std::size_t>(side.attr_count);
  side.attr_table = static_cast<char**>(zeroed_block(count * sizeof(char*)));
  if (side.attr_table == nullptr) return Status::memory;
  char* name = side.attr_pool;
  for (char*& entry : std::span(side.attr_table, count)) {
    entry = name;
    name += std::strlen(name) + 1;
  }
  return Status::ok;
}

// What is wrong with the file, or null, and what that comes to.
struct MatrixReading {
  Status status;
  const char* fault = nullptr;
};

MatrixReading refused(const char* fault) {
  return {Status::no_effect, fault};
}

MatrixReading sides_read(RuleMatrix& matrix, std::FILE* stream) {
  Status status = areas_read(matrix, stream);
  if (status == Status::no_effect) return refused("the file cannot be read");
  for (MatrixSide* side : {&matrix.left, &matrix.right}) {
    if (status != Status::ok) return {status};
    if (!names_agree(*side)) return refused("the names do not agree with attr_count");
    status = attr_table_make(*side);
  }
  return {status};
}

MatrixReading matrix_read(RuleIndex& index, std::FILE* stream, Rule* rules) {
  std::rewind(stream);
  const auto size = static_cast<std::uint64_t>(file_size(stream));
  HeaderBytes bytes;
  if (std::fread(bytes.data(), 1, bytes.size(), stream) != bytes.size()) return refused("the file has no header");
  const Header header = header_from(bytes);
  if (const char* fault = header_fault(header, rules, size); fault != nullptr) return refused(fault);
  index.matrix = {rules, static_cast<std::int32_t>(header.rule_count), static_cast<std::int32_t>(header.row_bytes),
                  header.left, header.right};
  const MatrixReading reading = sides_read(index.matrix, stream);
  return reading.status == Status::ok ? MatrixReading{rule_search_prepare(index)} : reading;
}

}  // namespace

Status rule_matrix_save(Session& session, RuleIndex& index, std::FILE* stream) {
  const RuleMatrix& matrix = index.matrix;
  const HeaderBytes header = header_of(matrix);
  area_write(header.data(), header.size(), stream);
  area_write(matrix.left.attr_pool, matrix.left.pool_size, stream);
  area_write(matrix.right.attr_pool, matrix.right.pool_size, stream);
  for (const MatrixSide* side : {&matrix.left, &matrix.right}) {
    area_write(side->pos_matrix, side->matrix_size, stream);
    area_write(side->neg_matrix, side->matrix_size, stream);
  }
  // The matrix in memory is whole, so this run can go on.
  if (!is_written(stream)) out_print(session, ";;the compiled rule matrix could not be written\n");
  return Status::ok;
}

Status rule_matrix_load(Session& session, RuleIndex& index, std::FILE* stream, Rule* rules, std::string* fault) {
  rule_matrix_clear(index);
  const MatrixReading reading = matrix_read(index, stream, rules);
  if (reading.status != Status::ok) rule_matrix_clear(index);
  if (reading.fault == nullptr) return reading.status;
  const std::string text = std::string("the compiled rule matrix cannot be used: ") + reading.fault;
  if (fault == nullptr) {
    out_print(session, ";;%s\n", text.c_str());
  } else {
    *fault = text;
  }
  return reading.status;
}

}  // namespace lexon
