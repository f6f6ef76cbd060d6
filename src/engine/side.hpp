// The two sides of the window. What left and right have in common is written once, with a Side.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "engine/loop.hpp"
#include "rules/rule.hpp"

namespace lexon {

enum class Side : std::uint8_t { left, right };

[[nodiscard]] constexpr Side other(Side side) {
  return side == Side::left ? Side::right : Side::left;
}

// As co-occurrence takes it.
[[nodiscard]] constexpr char side_letter(Side side) {
  return side == Side::left ? 'l' : 'r';
}

// What the rule says of this side's node. Finished rules have both patterns.
[[nodiscard]] inline const NodePattern& pattern_of(const Rule& rule, Side side) {
  return side == Side::left ? *rule.lnode : *rule.rnode;
}

[[nodiscard]] inline Node*& node_of(Window& window, Side side) {
  return side == Side::left ? window.lnode : window.rnode;
}
[[nodiscard]] inline Node* node_of(const Window& window, Side side) {
  return side == Side::left ? window.lnode : window.rnode;
}

// The neighbour of a node on this side; null at the end of the list.
[[nodiscard]] inline Node*& neighbour(Node& node, Side side) {
  return side == Side::left ? node.left : node.right;
}
[[nodiscard]] inline Node* neighbour(const Node& node, Side side) {
  return side == Side::left ? node.left : node.right;
}

}  // namespace lexon
