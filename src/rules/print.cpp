#include "rules/print.hpp"

#include "data/chain.hpp"
#include "data/output.hpp"
#include "data/session.hpp"

namespace lexon {
namespace {

// The name of a type that does not print as its own character; null for the others.
const char* type_name(std::uint8_t type) {
  switch (type) {
    case rule_type::test_left: return "?L";
    case rule_type::test_right: return "?R";
    case rule_type::post_left: return "PL";
    case rule_type::post_right: return "PR";
    case rule_type::post_insertion: return "P:";
    case rule_type::shift_left: return "P<<";
    case rule_type::shift_right: return "P>>";
    case rule_type::post_scope_left: return "PSL";
    case rule_type::post_scope_right: return "PSR";
    case rule_type::copy_right: return "CR";
    case 'V': return "GR";
    case rule_type::merge_left: return "DL";
    case rule_type::merge_right: return "DR";
    default: return nullptr;
  }
}

void type_print(Session& session, std::uint8_t type) {
  if (const char* const name = type_name(type); name != nullptr) {
    out_text(session, name);
  } else {
    out_text(session, std::string_view(reinterpret_cast<const char*>(&type), 1));
  }
}

const char* comma_if(bool wanted) {
  return wanted ? "," : "";
}

// The signs "+" and "-" of conditions are not shown.
void conditions_print(Session& session, const CondItem* conditions, const char* open, const char* close) {
  for (const CondItem& item : chain<&CondItem::next>(conditions)) {
    const char* const sign = item.op == kOpNot ? "^" : "";
    out_text(session, sign, open, item.text, close, comma_if(item.next != nullptr));
  }
}

void cond_print(Session& session, const CondItem* hw_conds, const CondItem* cw_conds, const CondItem* attr_conds) {
  conditions_print(session, hw_conds, "[", "]");
  out_text(session, comma_if(hw_conds != nullptr && (cw_conds != nullptr || attr_conds != nullptr)));
  conditions_print(session, cw_conds, "[[", "]]");
  out_text(session, comma_if(cw_conds != nullptr && attr_conds != nullptr));
  conditions_print(session, attr_conds, "", "");
}

const char* action_sign(std::uint8_t op) {
  if (op == kOpDelete) return "-";
  return op == kOpAdd ? "+" : "";
}

// wanted: a comma follows each text whenever there are actions at all, though they may be those texts alone.
void actions_print(Session& session, const NodePattern& pattern) {
  const bool has_actions = pattern.actions != nullptr;
  const bool has_cw = pattern.cw_action != nullptr;
  if (pattern.hw_action != nullptr) out_text(session, "[", pattern.hw_action, "]", comma_if(has_cw || has_actions));
  if (has_cw) out_text(session, "[[", pattern.cw_action, "]]", comma_if(has_actions));
  for (const CondItem& item : chain<&CondItem::next>(pattern.actions)) {
    if (item.op >= kOpSetHw) continue;
    out_text(session, action_sign(item.op), item.text, comma_if(item.next != nullptr));
  }
}

void texts_print(Session& session, const CondItem* items) {
  for (const CondItem& item : chain<&CondItem::next>(items)) {
    out_text(session, item.text, comma_if(item.next != nullptr));
  }
}

void pattern_print(Session& session, const NodePattern& pattern) {
  const bool is_quoted = pattern.inserted != 0;
  out_text(session, is_quoted ? "\"" : "{");
  cond_print(session, pattern.hw_conds, pattern.cw_conds, pattern.attr_conds);
  out_text(session, ":");
  actions_print(session, pattern);
  out_text(session, ":");
  texts_print(session, pattern.relations);
  out_text(session, ":");
  texts_print(session, pattern.roles);
  out_text(session, is_quoted ? "\"" : "}");
}

void group_print(Session& session, const ContextGroup& group) {
  out_text(session, "(");
  cond_print(session, group.hw_conds, group.cw_conds, group.attr_conds);
  out_text(session, group.star != 0 ? ")*" : ")");
}

// Each list that is stored in the order of the walk is turned, so that all stand in the order of the text.
void rule_body_print(Session& session, const Rule& rule) {
  type_print(session, rule.type);
  groups_print_backward(session, rule.pre);
  pattern_print(session, *rule.lnode);
  const bool mid_is_reversed = rule.lnode->inserted != 0;
  mid_is_reversed ? groups_print_backward(session, rule.mid) : groups_print_forward(session, rule.mid);
  pattern_print(session, *rule.rnode);
  groups_print_forward(session, rule.suf);
  out_text(session, "P", Decimal(rule.priority), ";\n");
}

}  // namespace

void groups_print_forward(Session& session, const ContextGroup* group) {
  for (const ContextGroup& each : chain<&ContextGroup::next>(group)) group_print(session, each);
}

void groups_print_backward(Session& session, const ContextGroup* group) {
  if (group == nullptr) return;
  groups_print_backward(session, group->next);
  group_print(session, *group);
}

void rule_print(Session& session, const Rule* rule, bool one) {
  out_text(session, trace_indent(session));
  for (; rule != nullptr; rule = rule->next) {
    rule_body_print(session, *rule);
    if (one) return;
  }
}

void rule_stack_print(Session& session, const RuleCandidate* candidates, bool one) {
  for (const RuleCandidate& candidate : chain<&RuleCandidate::next>(candidates)) {
    rule_print(session, candidate.rule, true);
    if (one) return;
  }
}

}  // namespace lexon
