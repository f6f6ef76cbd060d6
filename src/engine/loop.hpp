// The walk of the window over a growing list.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "data/status.hpp"

namespace lexon {

struct Session;

// The two neighbouring places at which rules work. Either may be null.
struct Window {
  Node* lnode;
  Node* rnode;
};

// Gives `entry` its list and runs the loop on it. `nested` is set for a scope entered from a reference.
[[nodiscard]] Status generate_scope(Session& session, Node* entry, bool nested);

// Works on one list until it is finished (ok), nothing is left to try (`nothing_left`), or a step fails.
// `home_scope` holds the index of the scope in which this instance works.
[[nodiscard]] Status engine_loop(Session& session, RuleCandidate* candidates, Window window, std::int32_t& home_scope);

// Is the window at the very beginning of its list, with nothing to undo?
[[nodiscard]] bool is_at_beginning(const Window& window);

}  // namespace lexon
