// Carrying out a rule that matching has accepted.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"
#include "engine/side.hpp"

namespace lexon {

struct Session;

// Carries out the rule of `candidate`, changes words and list, and moves the window. `home_scope` may be null for
// rules of post-edit. ok; above zero a failure; `no_effect` when the rule has no step or the records do not agree;
// `nothing_left` when a backtracking inside it ran out.
[[nodiscard]] Status apply_rule(Session& session, Window& window, RuleCandidate*& candidate, std::int32_t* home_scope);

// Applies the actions of both patterns to the two words in force, with the copies that undo needs.
[[nodiscard]] Status rule_actions_apply(Session& session, const Window& window, const RuleCandidate& candidate);

// Puts the mark of a co-occurrence choice in front of the attributes of the inserted node's word, and takes it off the
// word of the node at one side (may be null).
[[nodiscard]] Status role_mark_add(Session& session, const Rule& rule, Node* lnode, Node* rnode,
                                   const WordEntry& chosen);
[[nodiscard]] Status role_mark_remove(Session& session, const Rule& rule, Side side, Node* node,
                                      const WordEntry& chosen);

// False if a record of the stack belongs to a ":" rule with two brace patterns: the node's scope was entered by it.
[[nodiscard]] bool no_scope_rule_in_stack(const MatchRecord* records);

}  // namespace lexon
