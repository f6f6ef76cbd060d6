// Checks of rules among themselves: which come first, and which go round for ever.
#pragma once

#include <functional>
#include <vector>

#include "lab/check_rules.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// What else a check knows of rules and names.
struct OrderContext {
  // Can the words that a rule names come in, as far as that is known?
  std::function<bool(const RuleView&)> literal_fits;
  // Does a pattern that asks for this attribute never fit the boundary of a list?
  std::function<bool(NameId)> keeps_off_boundary;
};

// Rules that can never be first, that fit their own result, that undo each other.
void check_order(const CheckInput& input, const RuleBase& base, const OrderContext& context, const Names& names,
                 std::vector<Finding>& findings);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
