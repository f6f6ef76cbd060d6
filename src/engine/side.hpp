// What belongs to one side of a window, and of a node in its list.
#pragma once

#include "data/records.hpp"
#include "data/side.hpp"
#include "engine/loop.hpp"
#include "rules/rule.hpp"

namespace lexon {

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
