// One side of a rule against the words of one node.
#pragma once

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"
#include "engine/side.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

// Does the rule's pattern of this side fit the node there? On a fit the words that fit stand first; a word test
// releases the others. A reference to a scope that is not built is looked at through its entry node, and the words of
// that node are put in order then, under a hold. `rule` is the candidate's rule, or a version of it with conditions
// left out. `chosen` receives the words of a co-occurrence choice, and loses what it held.
// `refused` comes from a failed co-occurrence lookup.
[[nodiscard]] Fit filter_candidates(Session& session, Side side, const Rule& rule, RuleCandidate& candidate,
                                    const Window& window, WordEntry*& chosen);

}  // namespace lexon
