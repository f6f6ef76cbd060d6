// The pieces of taking back a step, for the files of this room that undo.
//
// Nothing is logged. What an application did is read from the nodes: the records on their stacks, the changed copies at
// the head of their words, and the rule that a record names. The steps are numbered in backtrack.cpp.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"
#include "engine/side.hpp"
#include "rules/rule.hpp"

namespace lexon {

// What the steps hand on.
struct Undo {
  Window& caller;             // set only where a step says so: an early end leaves it as it was
  RuleCandidate*& candidate;  // the rule that failed, then the one that is undone, then the next to try; may be null
  std::int32_t& home_scope;
  Window window;          // the working copy
  RuleCandidate* undone;  // of the application that step 7 has found; null before
  bool word_is_pending;   // the right node's next word is due before the rule list moves on
  Status result;          // what the call returns: ok until a step says otherwise
};

// "Go on at ...": what a step returns.
enum class Stage : std::uint8_t { fresh_window, pop, alternatives, next_rule, end, leave };

// The steps, each with its file.
[[nodiscard]] Stage fresh_window(Undo& undo);  // 6, fresh_window.cpp
[[nodiscard]] Stage pop(Undo& undo);           // 7, pop.cpp
[[nodiscard]] Stage next_choice(Undo& undo);   // 7.10 and 7.11, next_choice.cpp; `pop`: no choice is left
[[nodiscard]] Stage alternatives(Undo& undo);  // 8, alternatives.cpp
[[nodiscard]] Stage next_rule(Undo& undo);     // 9, alternatives.cpp

// The result is `status`, at once: nothing is printed any more.
[[nodiscard]] Stage leave(Undo& undo, Status status);

// The branch of this number: the rule is given up for the next one of its window, or all of them are.
void to_next_rule(Undo& undo, int number);
void give_up_rules(Undo& undo, int number);

// Undoes DL and DR. The window becomes the two nodes that were merged, and the candidate moves on. `no_effect`: the
// records belonged to an application that made no merge node, and popping them was all.
[[nodiscard]] Status merge_undo(Window& window, RuleCandidate*& candidate);

// Undoes X: the window's right node and the node behind it change places and are the window.
[[nodiscard]] Status exchange_undo(Window& window, const RuleCandidate& candidate);

// Undoes "+", "-", "<" and ">": the copy at the right place gives way to its origin and the origin's neighbour.
[[nodiscard]] Status stepless_undo(Window& window, const Rule& rule);

// Pops the newest record of `node`, which must be there: anything else is a failure of the rule base.
[[nodiscard]] Status record_pop(Node* node);

// Pops the hold on `node` and leaves it fresh. With `of`, only a hold of this rule. False if there is none; `node` may
// be null.
bool hold_take(Node* node, const Rule* of = nullptr);

// The place that matching has noted for a rule with MID; null if it has noted none.
[[nodiscard]] constexpr Node* noted_place(const RuleCandidate& candidate, Side side) {
  return side == Side::left ? candidate.lnode : candidate.rnode;
}

// Where the rule with MID of `candidate` works: the two places that matching has noted. They must still stand in the
// list of `window`, which becomes them.
[[nodiscard]] Status to_noted_places(Window& window, const RuleCandidate& candidate);

// Takes `node` out of the list and releases it. A node that others know (a boundary, a node of the graph, the entry of
// a scope) loses its words and its newest record but keeps its cell.
void node_unlink_release(Node& node);

// Does `node` stand in the list of `member`? Both may be null.
[[nodiscard]] bool stands_in_list_of(Node* member, const Node* node);

// `node` is about to be released: the scopes that start at it start at `heir` from now on.
void scope_entries_hand_over(const Node& node, Node* heir);

// Is `node` the entry of any scope?
[[nodiscard]] bool is_scope_entry(const Node& node);

[[nodiscard]] constexpr bool is_window_marker(const MatchRecord* record) {
  return record != nullptr && record->state == kStateStep && record->candidate == nullptr &&
         record->cooccurrence == nullptr;
}

// Is `node` a scope reference whose scope is not generated?
[[nodiscard]] bool is_unbuilt_reference(const Node& node);

}  // namespace lexon
