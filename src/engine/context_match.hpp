// The groups of PRE, MID and SUF, held against the nodes beside the window.
#pragma once

#include "data/records.hpp"
#include "engine/side.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

// A place in a chain of groups that goes on in a second chain.
struct GroupCursor {
  const ContextGroup* group;                   // null: the chain has ended
  const ContextGroup* continuation = nullptr;  // what follows the last group of this chain; null: nothing

  [[nodiscard]] GroupCursor next() const {
    if (group->next != nullptr) return {group->next, continuation};
    return {continuation};
  }
};

// What the caller of a walk wants to know, and whether it may leave a trace.
struct GroupMark {
  const ContextGroup* group = nullptr;  // the group at which the node is of interest; null: none
  Node* hit = nullptr;                  // the node that `group`, or the group behind it if it has a star, has matched
  bool confirms_links = true;           // see `match_groups`; false for a question after the fact
};

// Holds the groups against `node` and the nodes on its `side`. Boundaries and nodes that rules have touched can be
// matched, and no others: a walk that meets another one fails, as does one that does not use up the groups. Returns
// the last node matched to the left, the first one to the right; null on failure, and when no node was matched.
[[nodiscard]] Node* match_context(Session& session, Side side, GroupCursor groups, Node* node, GroupMark& mark);

// The same without a mark. `groups` may be null, and then nothing is matched.
[[nodiscard]] Node* match_context(Session& session, Side side, const ContextGroup* groups, Node* node);

}  // namespace lexon
