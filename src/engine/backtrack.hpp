// Taking back the last step, and naming the next thing to try.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"

namespace lexon {

struct Session;

// Undoes one step. ok: the window and the candidate (which may be null) are ready; `no_effect`: call again;
// `nothing_left`; above zero a failure.
[[nodiscard]] Status backtrack(Session& session, Window& window, RuleCandidate*& candidate, std::int32_t& home_scope);

}  // namespace lexon
