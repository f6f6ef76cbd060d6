// Taking back the last step, and naming the next thing to try.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"
#include "rules/rule.hpp"

namespace lexon {

// Undoes one step. ok: the window and the candidate (which may be null) are ready; `no_effect`: call again;
// `nothing_left`; above zero a failure.
[[nodiscard]] Status backtrack(Window& window, RuleCandidate*& candidate, std::int32_t& home_scope);

// Takes an inserted node out of the list, or, for a rule with two brace patterns, reloads the words of the right node.
[[nodiscard]] Status inserted_undo(const Rule& rule, Window& window);

// Should the scope of the reference `node` be re-entered for a rule of which `pattern` is its side?
[[nodiscard]] bool may_re_enter_scope(const Node* node, const NodePattern& pattern, const Rule& rule);

// Releases the hold on the entry node that the scope reference leads to, if there is one and the reference has been
// used. True if it did.
bool hold_release(Node& reference);

}  // namespace lexon
