// The bodies of the steps of a run.
#pragma once

#include "run/context.hpp"

namespace lexon {

// Each flushes the output and sets `run_status` when it is done, but not after a stop that was asked for.
void convert_worker(RunContext& context);
void load_worker(RunContext& context);
void sentence_worker(RunContext& context);
// A sentence step when the rule step has left no rules: fails at once and reads nothing.
void no_rules_worker(RunContext& context);

// The worker of the next step: the rule step, as the context says, and from then on a sentence.
using Worker = void (*)(RunContext&);
[[nodiscard]] Worker choose_worker(const RunContext& context);

}  // namespace lexon
