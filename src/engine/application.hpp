// The pieces of carrying out a rule, for the files of this room that make and undo applications.
//
// There is no undo log: an application leaves on the nodes that it touched what backtracking needs.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"
#include "engine/side.hpp"

namespace lexon {

struct Session;

// What a piece of an application says to its driver.
struct Outcome {
  Status status;
  bool writes_back;  // false: the application ends at once, and the caller's window and candidate stay as they were
};

[[nodiscard]] constexpr Outcome ended(Status status) {
  return {status, false};
}
[[nodiscard]] constexpr Outcome done(Status status = Status::ok) {
  return {status, true};
}
// Goes on after ok, ends at once after anything else.
[[nodiscard]] constexpr Outcome done_if_ok(Status status) {
  return {status, status == Status::ok};
}

// Applies one side's actions in place to the word in force of that side's node. The node must have a record; its
// newest one tells by its state whether the word was changed.
[[nodiscard]] Status node_actions_apply(Session& session, Side side, const Rule& rule, const Window& window);

// Goes back until the word of the target is changed (?L, ?R).
[[nodiscard]] Outcome forced_backtrack(Session& session, Window& window, RuleCandidate*& candidate,
                                       std::int32_t& home_scope);

// Pushes the record that tells backtracking that the window has come to this node by a move.
[[nodiscard]] Status window_marker_push(Session& session, Node& node);

// Does the newest record say that the node's word was changed? False for a null node and a fresh one.
[[nodiscard]] constexpr bool is_word_changed(const Node* node) {
  return node != nullptr && node->matches != nullptr && node->matches->state == kStateChanged;
}

}  // namespace lexon
