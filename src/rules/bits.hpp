// Sets of rules, one bit for each rule.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "data/records.hpp"

namespace lexon {

inline constexpr std::size_t kWordBytes = sizeof(std::uint64_t);
inline constexpr std::size_t kWordBits = 64;

// In a file, rule i lies in byte i / 8 under the mask 0x80 >> (i % 8).
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

// In memory, rule i lies in word i / 64, again the first on top.
[[nodiscard]] constexpr std::uint64_t word_bit(std::size_t i) {
  return std::uint64_t{1} << (kWordBits - 1 - i % kWordBits);
}

[[nodiscard]] constexpr std::size_t words_for(std::size_t bits) {
  return (bits + kWordBits - 1) / kWordBits;
}

// The number of the first rule that the block names, which it names no longer. It must name one.
[[nodiscard]] inline std::int32_t rule_take(RuleBlock& block) {
  const int place = std::countl_zero(block.rules);
  block.rules ^= word_bit(static_cast<std::size_t>(place));
  return block.block * static_cast<std::int32_t>(kWordBits) + place;
}

// Calls `visit` with the number of each rule that the block names, in order.
template <typename Visit>
void for_each_rule(RuleBlock block, Visit visit) {
  while (block.rules != 0) visit(rule_take(block));
}

// Calls `visit` with the number of each set bit of `word`, whose top bit has the number `first`, in rising order.
template <typename Visit>
void for_each_bit(std::uint64_t word, std::size_t first, Visit visit) {
  while (word != 0) {
    const int place = std::countl_zero(word);
    visit(first + static_cast<std::size_t>(place));
    word ^= word_bit(static_cast<std::size_t>(place));
  }
}

}  // namespace lexon
