// Nodes that are made from a word of the dictionary, a word class, or the rule itself.
#pragma once

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/match_state.hpp"
#include "engine/side.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

// Makes the node that the pattern of `side` names, with words that fit the rule. `node` is null unless it fits. The
// place beside it must be in the window.
[[nodiscard]] Fit make_literal(Session& session, Match& match, Side side, Node*& node);

// Words by surface form; of these, from the first with the concept word `cw` on if that is given too; else words by
// concept word. Null texts are not asked for. `words` is null if there are none.
[[nodiscard]] Status dict_select(Session& session, const char* hw, const char* cw, WordEntry*& words);

}  // namespace lexon
