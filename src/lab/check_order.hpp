// Checks of rules among themselves: which come first, and which go round for ever.
#pragma once

#include <functional>
#include <vector>

#include "lab/check_rules.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Rules that can never be first, that fit their own result, that undo each other. `literal_fits` tells whether the
// words that a rule names can come in, as far as that is known.
void check_order(const CheckInput& input, const RuleBase& base,
                 const std::function<bool(const RuleView&)>& literal_fits, std::vector<Finding>& findings);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
