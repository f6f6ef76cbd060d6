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

}  // namespace lexon
