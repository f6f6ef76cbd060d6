// Checks of a rule against its like: what all others do and this one does not is most likely a slip. What a rule says by
// itself is right here; only the company that it keeps shows it. Quiet where a grammar has no such custom.
#pragma once

#include <vector>

#include "lab/check_rules.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Appends a finding for each rule that follows a relation and leaves its mark in place, and for each priority that falls
// out of the lines around it.
void check_siblings(const CheckInput& input, const RuleBase& base, const Names& names, std::vector<Finding>& findings);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
