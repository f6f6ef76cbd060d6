// The pieces of taking back a step, for the files of this room that undo.
//
// Nothing is logged. What an application did is read from the nodes: the records on their stacks, the changed copies at
// the head of their words, and the rule that a record names.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"
#include "engine/side.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

// Undoes DL and DR. The window becomes the two nodes that were merged, and the candidate moves on. `no_effect`: the
// records belonged to an application that made no merge node, and popping them was all.
[[nodiscard]] Status merge_undo(Session& session, Window& window, RuleCandidate*& candidate);

// Undoes X: the window's right node and the node behind it change places and are the window.
[[nodiscard]] Status exchange_undo(Session& session, Window& window, const RuleCandidate& candidate);

// Undoes "+", "-", "<" and ">": the copy at the right place gives way to its origin and the origin's neighbour.
[[nodiscard]] Status stepless_undo(Session& session, Window& window, const Rule& rule);

// Takes an inserted node out of the list, or, for a rule with two brace patterns, reloads the words of the right node.
[[nodiscard]] Status inserted_undo(Session& session, const Rule& rule, Window& window);

// Should the scope of the reference `node` be re-entered for a rule of which `pattern` is its side?
[[nodiscard]] bool may_re_enter_scope(Session& session, const Node* node, const NodePattern& pattern, const Rule& rule);

// Releases the hold on the entry node that the scope reference leads to, if there is one and the reference has been
// used. True if it did.
bool hold_release(Session& session, Node& reference);

// Pops the newest record of `node`, which must be there: anything else is a failure of the rule base.
[[nodiscard]] Status record_pop(Session& session, Node* node);

// Pops the hold on `node` and leaves it fresh. With `of`, only a hold of this rule. False if there is none; `node` may
// be null.
bool hold_take(Session& session, Node* node, const Rule* of = nullptr);

// The place that matching has noted for a rule with MID; null if it has noted none.
[[nodiscard]] constexpr Node* noted_place(const RuleCandidate& candidate, Side side) {
  return side == Side::left ? candidate.lnode : candidate.rnode;
}

// Where the rule with MID of `candidate` works: the two places that matching has noted. They must still stand in the
// list of `window`, which becomes them.
[[nodiscard]] Status to_noted_places(Session& session, Window& window, const RuleCandidate& candidate);

// Takes `node` out of the list and releases it. A node that others know (a boundary, a node of the graph, the entry of
// a scope) loses its words and its newest record but keeps its cell.
void node_unlink_release(Session& session, Node& node);

// Does `node` stand in the list of `member`? Both may be null.
[[nodiscard]] bool stands_in_list(const Session& session, Node* member, const Node* node);

// `node` is about to be released: the scopes that start at it start at `heir` from now on.
void scope_entries_hand_over(Session& session, const Node& node, Node* heir);

// Is `node` the entry of any scope?
[[nodiscard]] bool is_scope_entry(const Session& session, const Node& node);

[[nodiscard]] constexpr bool is_window_marker(const MatchRecord* record) {
  return record != nullptr && record->state == kStateStep && record->candidate == nullptr &&
         record->cooccurrence == nullptr;
}

}  // namespace lexon
