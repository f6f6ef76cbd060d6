// The matrix file is a header of eight u32 and six areas, each as long as the header says:
//
//   header   left attr_count, left pool_size, right attr_count, right pool_size, rule_count, row_bytes,
//            left matrix_size, right matrix_size
//   areas    left attr_pool, right attr_pool, left pos_matrix, left neg_matrix, right pos_matrix, right neg_matrix
//
// Row r of a matrix is bytes r * row_bytes and on; rule i lies in byte i / 8 under the mask 0x80 >> (i % 8). A bit is 1
// in pos_matrix if the rule requires the name of the row, 0 in neg_matrix if it forbids it. The bits
// behind the last rule are 0 in pos_matrix and 1 in neg_matrix; nothing follows from them.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "data/bytes.hpp"
#include "data/chain.hpp"
#include "data/output.hpp"
#include "data/platform.hpp"
#include "data/session.hpp"
#include "rules/bits.hpp"
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

// A size of 0 has no area: its pointer may be null.
void area_write(const void* area, std::size_t size, std::FILE* stream) {
  if (size != 0) std::fwrite(area, 1, size, stream);
}

// Writes a matrix of which the bits of `rules`, by row, differ from those of `others`.
void matrix_write(const NumberLists& rules, std::uint8_t others, std::size_t row_bytes, std::FILE* stream) {
  std::vector<std::uint8_t> row(row_bytes, others);
  for (std::size_t key = 0; key + 1 < rules.starts.size(); ++key) {
    const auto first = rules.items.begin() + rules.starts[key];
    const auto last = rules.items.begin() + rules.starts[key + 1];
    // A rule can stand in the list twice.
    std::for_each(first, last, [&](std::int32_t rule) {
      const auto i = static_cast<std::size_t>(rule);
      others == 0 ? bit_set(row.data(), i) : bit_clear(row.data(), i);
    });
    area_write(row.data(), row.size(), stream);
    // The row as it was, for the next key: cheaper than to fill it anew, since few bits differ.
    std::for_each(first, last, [&](std::int32_t rule) { row[static_cast<std::size_t>(rule) / 8] = others; });
  }
}

// ---- Reading ----

// A side that has been read as far as the header tells of it.
struct Header {
  MatrixSide left;
  MatrixSide right;
  std::uint32_t rule_count;
  std::uint32_t row_bytes;
};

// Numbers as the file has them: nothing is believed before `header_fault` has agreed.
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

// Sums are taken in 64 bits: the header may hold any numbers.
const char* side_fault(const MatrixSide& side, std::uint64_t row_bytes) {
  if (side.attr_count < 0) return "attr_count is negative";
  const auto count = static_cast<std::uint64_t>(side.attr_count);
  // Each name ends with a NUL of its own.
  if (count > side.pool_size || (count == 0 && side.pool_size != 0)) return "attr_count does not agree with pool_size";
  if (side.matrix_size != row_bytes * count) return "matrix_size does not agree with row_bytes and attr_count";
  return nullptr;
}

// A file may be longer; what stands behind its areas is not read.
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

// What a matrix is read through; a row is never longer than the file.
constexpr std::size_t kReadSize = std::size_t{1} << 16;

// Rules and, behind the last, bits that stand for none: they are kept, so that a file is saved as it was loaded.
std::size_t row_bits(const RuleMatrix& matrix) {
  return static_cast<std::size_t>(matrix.row_bytes) * 8;
}

// Appends to the row's list the rules whose bits in `row` differ from those of `others`, which are all alike. Few do, and
// most words are passed over whole.
void row_take(std::span<const std::uint8_t> row, std::uint64_t others, NumberLists& rules) {
  const auto take = [&](std::size_t rule) { rules.items.push_back(static_cast<std::int32_t>(rule)); };
  std::size_t at = 0;
  for (const std::size_t end_of_words = row.size() / kWordBytes * kWordBytes; at != end_of_words; at += kWordBytes) {
    // All bits alike are so in any order of the bytes.
    std::uint64_t word;
    std::memcpy(&word, row.data() + at, sizeof word);
    if (word != others) for_each_bit(bits_at(row.data() + at, kWordBytes, 0) ^ others, at * 8, take);
  }
  if (at < row.size()) {
    const std::size_t bits = row.size() * 8;
    for_each_bit(bits_at(row.data(), row.size(), at) ^ others, at * 8, [&](std::size_t rule) {
      if (rule < bits) take(rule);
    });
  }
  rules.starts.push_back(static_cast<std::uint32_t>(rules.items.size()));
}

// Bits that a matrix can have set: the places of a list are 32-bit numbers.
constexpr std::size_t kMostSetBits = std::size_t{1} << 31;

// The rules by row whose bits differ from those of `others`. Returns ok, `no_effect` if the file cannot be read, or
// `memory`.
Status area_take(const RuleMatrix& matrix, const MatrixSide& side, std::uint64_t others, std::FILE* stream,
                 NumberLists& rules) {
  const auto row_bytes = static_cast<std::size_t>(matrix.row_bytes);
  const std::size_t rows_at_once = std::max<std::size_t>(kReadSize / row_bytes, 1);
  const std::unique_ptr<std::uint8_t[]> buffer(new std::uint8_t[rows_at_once * row_bytes]);
  rules.starts.assign(1, 0);
  for (auto rows_left = static_cast<std::size_t>(side.attr_count); rows_left != 0;) {
    const std::size_t rows = std::min(rows_left, rows_at_once);
    if (std::fread(buffer.get(), row_bytes, rows, stream) != rows) return Status::no_effect;
    for (std::size_t row = 0; row < rows; ++row) {
      row_take({buffer.get() + row * row_bytes, row_bytes}, others, rules);
    }
    if (rules.items.size() > kMostSetBits) return Status::memory;
    rows_left -= rows;
  }
  return Status::ok;
}

// Does the pool hold `attr_count` names, the last one terminated like the others?
bool names_agree(const MatrixSide& side) {
  if (side.pool_size == 0) return true;
  const std::string_view pool(side.attr_pool, side.pool_size);
  return pool.back() == '\0' && std::count(pool.begin(), pool.end(), '\0') == side.attr_count;
}

// The pool must have been looked at: each walk over a name ends at its NUL.
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

constexpr const char* kUnreadable = "the file cannot be read";

// The pools of both sides stand in front of all matrices.
MatrixReading names_read(RuleIndex& index, std::FILE* stream) {
  for (MatrixSide* side : {&index.matrix.left, &index.matrix.right}) {
    const Status s = area_read(side->attr_pool, side->pool_size, stream);
    if (s != Status::ok) return s == Status::no_effect ? refused(kUnreadable) : MatrixReading{s};
  }
  for (MatrixSide* side : {&index.matrix.left, &index.matrix.right}) {
    if (!names_agree(*side)) return refused("the names do not agree with attr_count");
    if (const Status s = attr_table_make(*side); s != Status::ok) return {s};
  }
  return {Status::ok};
}

// The file tells the rules of a name, a search wants the names of a rule: the lists are turned over.
MatrixReading side_read(RuleIndex& index, const MatrixSide& side, SideSearch& search, std::FILE* stream) {
  search.names = name_index_of(side);
  NumberLists requiring;
  NumberLists forbidding;
  Status status = area_take(index.matrix, side, 0, stream, requiring);
  if (status == Status::ok) status = area_take(index.matrix, side, ~std::uint64_t{0}, stream, forbidding);
  if (status == Status::no_effect) return refused(kUnreadable);
  if (status != Status::ok) return {status};
  const std::size_t places = row_bits(index.matrix);
  search.required = transposed(requiring, places);
  search.forbidden = transposed(forbidding, places);
  return {Status::ok};
}

// Front to back, as the file stands. On failure the index is half filled; the caller clears it.
MatrixReading matrix_read(RuleIndex& index, std::FILE* stream, Rule* rules) {
  std::rewind(stream);
  const auto size = static_cast<std::uint64_t>(file_size(stream));
  HeaderBytes bytes;
  if (std::fread(bytes.data(), 1, bytes.size(), stream) != bytes.size()) return refused("the file has no header");
  const Header header = header_from(bytes);
  if (const char* fault = header_fault(header, rules, size); fault != nullptr) return refused(fault);
  index.matrix = {rules, static_cast<std::int32_t>(header.rule_count), static_cast<std::int32_t>(header.row_bytes),
                  header.left, header.right};
  if (const MatrixReading names = names_read(index, stream); names.status != Status::ok) return names;
  rules_prepare(index);
  const MatrixReading left = side_read(index, index.matrix.left, index.search.left, stream);
  if (left.status != Status::ok) return left;
  const MatrixReading right = side_read(index, index.matrix.right, index.search.right, stream);
  if (right.status == Status::ok) watch_prepare(index.search);
  return right;
}

// What the standard library throws for exhausted memory becomes a status here.
MatrixReading matrix_read_guarded(RuleIndex& index, std::FILE* stream, Rule* rules) {
  try {
    return matrix_read(index, stream, rules);
  } catch (const std::bad_alloc&) {
    return {Status::memory};
  }
}

}  // namespace

Status rule_matrix_save(Session& session, RuleIndex& index, std::FILE* stream) {
  const RuleMatrix& matrix = index.matrix;
  const HeaderBytes header = header_of(matrix);
  const auto row_bytes = static_cast<std::size_t>(matrix.row_bytes);
  area_write(header.data(), header.size(), stream);
  area_write(matrix.left.attr_pool, matrix.left.pool_size, stream);
  area_write(matrix.right.attr_pool, matrix.right.pool_size, stream);
  try {
    for (const SideSearch* side : {&index.search.left, &index.search.right}) {
      const std::size_t rows = side->names.find_rows.size();
      matrix_write(transposed(side->required, rows), 0, row_bytes, stream);
      matrix_write(transposed(side->forbidden, rows), 0xFF, row_bytes, stream);
    }
  } catch (const std::bad_alloc&) {
    rule_matrix_clear(index);  // the step has failed, so no rule is in force
    return Status::memory;
  }
  // The matrix in memory is whole, so this run can go on.
  if (!is_written(stream)) out_print(session, ";;the compiled rule matrix could not be written\n");
  return Status::ok;
}

Status rule_matrix_load(Session& session, RuleIndex& index, std::FILE* stream, Rule* rules, std::string* fault) {
  rule_matrix_clear(index);
  const MatrixReading reading = matrix_read_guarded(index, stream, rules);
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
