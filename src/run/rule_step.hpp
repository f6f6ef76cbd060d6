// The step that makes the rules ready.
#pragma once

#include "run/context.hpp"
#include "run/host.hpp"

namespace lexon {

// Converts the rules or loads them, as the context says, flushes the output, and sets `rules_failed`. Afterwards the
// session of the context works with them, unless the step was cancelled.
[[nodiscard]] StepResult run_rule_step(RunContext& context, Host& host);

}  // namespace lexon
