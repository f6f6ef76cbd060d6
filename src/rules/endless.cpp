// The test for rules that would fire for ever.
#include <cstring>

#include "data/chain.hpp"
#include "rules/parser.hpp"

namespace lexon {
namespace {

// Of the pattern alone: groups around it have no say, since its actions do not change their nodes.
bool has_conditions(const NodePattern& side) {
  return side.hw_conds != nullptr || side.cw_conds != nullptr || side.attr_conds != nullptr;
}

bool holds(const CondItem* conditions, std::uint8_t op, const char* text) {
  for (const CondItem& condition : chain<&CondItem::next>(conditions)) {
    if (condition.op == op && std::strcmp(condition.text, text) == 0) return true;
  }
  return false;
}

// Once the word has been set to `text`, does one of `conditions` on that word no longer hold?
bool text_falsifies(const CondItem* conditions, const char* text) {
  for (const CondItem& condition : chain<&CondItem::next>(conditions)) {
    const bool same = std::strcmp(condition.text, text) == 0;
    if ((condition.op == kOpNot && same) || (condition.op == kOpHas && !same)) return true;
  }
  return false;
}

// Conditions with "+" or "-" count as little as in the index: neither `kOpHas` nor `kOpNot` is their code.
bool action_falsifies(const NodePattern& side, const CondItem& action) {
  switch (action.op) {
    case kOpSetHw: return text_falsifies(side.hw_conds, side.hw_action);
    case kOpSetCw: return text_falsifies(side.cw_conds, side.cw_action);
    case kOpDelete: return holds(side.attr_conds, kOpHas, action.text);
    case kOpAdd: return holds(side.attr_conds, kOpNot, action.text);
    default: return false;
  }
}

bool actions_falsify(const NodePattern& side) {
  for (const CondItem& action : chain<&CondItem::next>(side.actions)) {
    if (action_falsifies(side, action)) return true;
  }
  return false;
}

// The other types move the window or change the list, so they cannot repeat on the same pair.
bool stays_on_pair(std::uint8_t type) {
  return type == rule_type::insertion || type == rule_type::post_insertion || type == rule_type::insertion_a;
}

}  // namespace

// A rule without conditions fits for ever whatever it does, one without actions leaves its conditions as they are.
bool is_endless_rule(const Rule& rule) {
  if (!has_brace_patterns(rule) || !stays_on_pair(rule.type)) return false;
  if (!has_conditions(*rule.lnode) && !has_conditions(*rule.rnode)) return true;
  return !actions_falsify(*rule.lnode) && !actions_falsify(*rule.rnode);
}

}  // namespace lexon
