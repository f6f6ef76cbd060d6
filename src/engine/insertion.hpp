// The node that a quote pattern brings into the list: where it goes, and how it gets there.
#pragma once

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/match_state.hpp"
#include "engine/side.hpp"

namespace lexon {

struct Session;

// Is the text that a shift rule cuts off at the end of the neighbour's word where the pattern of `side` wants it? True
// for rules that shift nothing to this side.
[[nodiscard]] bool shifted_text_fits(const Rule& rule, const Window& window, Side side);

// Finds the place of the node that the pattern of `side` inserts: slides along the list while the groups beyond do
// not fit, if an empty starred MID allows it. False if there is no place.
[[nodiscard]] bool find_place(Session& session, Match& match, Side side);

// Finds the node itself, over an arc of the graph or from the dictionary, and links it in beside the other place of
// the window.
[[nodiscard]] Fit bring_in(Session& session, Match& match, Side side);

// Is `end` the node, or the node of which it is a copy?
[[nodiscard]] constexpr bool is_same_or_origin(const Node* end, const Node& node) {
  return end == &node || (end != nullptr && end == node.origin);
}

// Does the arc lead from `beside`, or from the node of which that is a copy, to `node`? And the other way?
[[nodiscard]] constexpr bool leads_to(const Relation& arc, const Node& node, const Node& beside) {
  return arc.to == &node && is_same_or_origin(arc.from, beside);
}
[[nodiscard]] constexpr bool leads_from(const Relation& arc, const Node& node, const Node& beside) {
  return arc.from == &node && is_same_or_origin(arc.to, beside);
}

}  // namespace lexon
