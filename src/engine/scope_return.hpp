// Going back into a scope that had been finished.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"

namespace lexon {

struct Session;

// Re-enters the scope that the candidate's rule brought in, and searches on. Returns what the nested loops return; ok
// as well when the candidate brought in no scope.
[[nodiscard]] Status back_into_scope(Session& session, Window& window, RuleCandidate*& candidate,
                                     std::int32_t& home_scope);

}  // namespace lexon
