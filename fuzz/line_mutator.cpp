// Changes inputs line by line, so that what comes out is text of the same kind: libFuzzer's own changes, made to the
// bytes of the whole, seldom are. Linked to targets whose input is lines.
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "line_maker.hpp"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                               unsigned seed);
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data1, std::size_t size1,
                                                 const std::uint8_t* data2, std::size_t size2, std::uint8_t* out,
                                                 std::size_t max_out_size, unsigned seed);

namespace {

using Random = std::minstd_rand;
using Lines = std::vector<std::string>;

std::size_t below(std::size_t limit, Random& random) {
  return limit == 0 ? 0 : random() % limit;
}

Lines lines_of(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

std::size_t store(const Lines& lines, std::uint8_t* out, std::size_t max_size) {
  std::size_t size = 0;
  for (const std::string& line : lines) {
    const std::size_t length = std::min(line.size(), max_size - size);
    std::copy_n(line.begin(), length, out + size);
    size += length;
  }
  return size;
}

void insert(Lines& lines, std::size_t at, std::string line) {
  lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), std::move(line));
}

void change_line(std::string& line, Random& random) {
  constexpr std::size_t kLongest = 1200;
  const bool has_end = !line.empty() && line.back() == '\n';
  if (has_end) line.pop_back();
  std::size_t length = line.size();
  line.resize(std::max(length, below(kLongest, random)));
  length = LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(line.data()), length, line.size());
  line.resize(length);
  if (has_end) line += '\n';
}

// Puts a piece of one line in place of a piece of another: patterns and conditions change hands.
void trade_pieces(std::string& line, const std::string& other, Random& random) {
  const std::size_t at = below(line.size(), random);
  const std::size_t from = below(other.size(), random);
  line.replace(at, below(line.size() - at, random), other, from, below(other.size() - from, random));
}

void change(Lines& lines, Random& random) {
  const std::size_t at = below(lines.size(), random);
  const std::size_t other = below(lines.size(), random);
  switch (random() % 8) {
    case 0: lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(at)); return;
    case 1: return insert(lines, at, std::string(lines[other]));
    case 2: return std::swap(lines[at], lines[other]);
    case 3: return trade_pieces(lines[at], std::string(lines[other]), random);
    case 4:
    case 5: return insert(lines, at, lexon::fuzz::LineMaker(random).like(lines[at]));
    default: return change_line(lines[at], random);
  }
}

}  // namespace

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size, unsigned seed) {
  Random random(seed);
  Lines lines = lines_of(data, size);
  if (lines.empty() || random() % 3 == 0) return LLVMFuzzerMutate(data, size, max_size);
  change(lines, random);
  return store(lines, data, max_size);
}

// Lines of the second input come into the first, at about the place where they stood.
std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data1, std::size_t size1, const std::uint8_t* data2,
                                      std::size_t size2, std::uint8_t* out, std::size_t max_out_size, unsigned seed) {
  constexpr std::size_t kMost = 6;
  Random random(seed);
  Lines lines = lines_of(data1, size1);
  const Lines others = lines_of(data2, size2);
  for (std::size_t i = 0; i <= below(kMost, random) && !others.empty(); ++i) {
    const std::size_t from = below(others.size(), random);
    const std::size_t at = from * lines.size() / others.size();
    insert(lines, at, others[from]);
  }
  return store(lines, out, max_out_size);
}
