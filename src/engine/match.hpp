// Does a rule fit the window? And what it takes to make it fit.
#pragma once

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"

namespace lexon {

struct Session;

// Tests the candidate's rule on the window; on a fit the words are narrowed, an inserted node stands in the list and
// records are pushed. The window is written back only where the rule says so.
[[nodiscard]] Fit match_rule(Session& session, RuleCandidate& candidate, Window& window);

// Is this a shift rule that the surface form of the word beside it refuses at once? In a list whose nodes are turned to
// the current scope `match_rule` would say no, and leave no trace.
[[nodiscard]] bool is_refused_by_text(const Session& session, const Rule& rule, const Window& window);

}  // namespace lexon
