// A rule on its way through matching.
#pragma once

#include "data/records.hpp"
#include "engine/context_match.hpp"
#include "engine/loop.hpp"
#include "engine/side.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Match {
  RuleCandidate& candidate;
  const Rule& rule;
  const Window passed;          // as handed in
  Window window;                // as the steps see it; slides along the list
  WordEntry* chosen = nullptr;  // words that the co-occurrence check chose; null: none
  Relation* arc = nullptr;      // the arc by which a node was tested or brought in; null: none
  GroupMark mid_mark{};         // where the groups beyond MID begin to match
};

// The window with `node` in the place of `side`.
[[nodiscard]] inline Window window_with(Window window, Side side, Node* node) {
  node_of(window, side) = node;
  return window;
}

// The groups of the rule beyond the window on this side; null: none.
[[nodiscard]] inline const ContextGroup* groups_beyond(const Rule& rule, Side side) {
  return side == Side::left ? rule.pre : rule.suf;
}

// Walks over MID, which lies on the side of the node to be inserted, as seen from the other node. False if MID does not
// fit, or the list is too short for what the rule asks for beyond the window.
[[nodiscard]] bool slide_over_mid(Session& session, Match& match);

}  // namespace lexon
