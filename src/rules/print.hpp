// Rules in their canonical text form, on the output.
#pragma once

#include "data/records.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

// Prints the trace indent and the rule; with `one` false it goes on along `next`, without a further indent. A null
// rule prints the indent alone.
void rule_print(Session& session, const Rule* rule, bool one);

// Prints the rule of the first element, and with `one` false those of all elements, each with its indent. A null
// list prints nothing.
void rule_stack_print(Session& session, const RuleCandidate* candidates, bool one);

}  // namespace lexon
