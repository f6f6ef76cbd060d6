// Bit vectors of one bit per rule: bit i lies in byte i / 8 under the mask 0x80 >> (i % 8). Vectors are whole bytes of
// any number and stand at any address; the work on them goes by 64 bits at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace lexon {

inline constexpr std::size_t kWordBytes = sizeof(std::uint64_t);

[[nodiscard]] constexpr std::uint8_t bit_mask(std::size_t i) {
  return static_cast<std::uint8_t>(0x80U >> (i % 8));
}

inline void bit_set(std::uint8_t* vector, std::size_t i) {
  vector[i / 8] = static_cast<std::uint8_t>(vector[i / 8] | bit_mask(i));
}

inline void bit_clear(std::uint8_t* vector, std::size_t i) {
  vector[i / 8] = static_cast<std::uint8_t>(vector[i / 8] & ~bit_mask(i));
}

// The 64 bits from byte `at` on, the first of them on top; behind the vector's `size` bytes stand zeros.
[[nodiscard]] inline std::uint64_t bits_at(const std::uint8_t* vector, std::size_t size, std::size_t at) {
  std::uint64_t word = 0;
  std::memcpy(&word, vector + at, size - at < kWordBytes ? size - at : kWordBytes);
  return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

// Calls `visit` with the number of each set bit of `word`, whose top bit has the number `first`, in rising order.
template <typename Visit>
void for_each_bit(std::uint64_t word, std::size_t first, Visit visit) {
  while (word != 0) {
    const int place = std::countl_zero(word);
    visit(first + static_cast<std::size_t>(place));
    word ^= std::uint64_t{1} << (63 - place);
  }
}

// vector = combine(vector, other), over `size` bytes.
template <typename Combine>
void vector_combine(std::uint8_t* vector, const std::uint8_t* other, std::size_t size, Combine combine) {
  std::size_t at = 0;
  for (; at + kWordBytes <= size; at += kWordBytes) {
    std::uint64_t a = 0;
    std::uint64_t b = 0;
    std::memcpy(&a, vector + at, kWordBytes);
    std::memcpy(&b, other + at, kWordBytes);
    a = combine(a, b);
    std::memcpy(vector + at, &a, kWordBytes);
  }
  for (; at < size; ++at) {
    vector[at] = static_cast<std::uint8_t>(combine(std::uint64_t{vector[at]}, std::uint64_t{other[at]}));
  }
}

}  // namespace lexon
