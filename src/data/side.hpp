// The two sides of the window, of a rule, and of a list. What left and right have in common is written once, with a
// Side.
#pragma once

#include <cstdint>

namespace lexon {

enum class Side : std::uint8_t { left, right };

[[nodiscard]] constexpr Side other(Side side) {
  return side == Side::left ? Side::right : Side::left;
}

// That one of a pair that belongs to this side.
template <typename T>
[[nodiscard]] constexpr T& of_side(Side side, T& left, T& right) {
  return side == Side::left ? left : right;
}

}  // namespace lexon
