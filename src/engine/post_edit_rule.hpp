// The steps that post-edit has for itself.
#pragma once

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"

namespace lexon {

struct Session;

// Splits a surface form (P<<, P>>), or runs post-edit on the list of a scope (PSL, PSR). The window takes a new node
// in, and does not move. A rule of any other type has no effect. ok, or what a step returned.
[[nodiscard]] Status post_edit_rule(Session& session, Window& window, const RuleCandidate& candidate);

}  // namespace lexon
