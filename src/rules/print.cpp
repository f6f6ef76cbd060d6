#include "rules/print.hpp"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/chain.hpp"
#include "data/output.hpp"
#include "data/session.hpp"
#include "rules/grammar.hpp"

namespace lexon {
namespace {

template <typename... Pieces>
// All is put together in memory and printed in one piece: a rule is printed often, and made once.
void text_append(std::string& text, const Pieces&... pieces) {
  ((text += pieces), ...);
}

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

void type_print(std::string& text, std::uint8_t type) {
  if (const char* const name = type_name(type); name != nullptr) {
    text_append(text, name);
  } else {
    text_append(text, std::string_view(reinterpret_cast<const char*>(&type), 1));
  }
}

const char* comma_if(bool wanted) {
  return wanted ? "," : "";
}

// The signs "+" and "-" of conditions are not shown.
void conditions_print(std::string& text, const CondItem* conditions, const char* open, const char* close) {
  for (const CondItem& item : chain<&CondItem::next>(conditions)) {
    const char* const sign = item.op == kOpNot ? "^" : "";
    text_append(text, sign, open, item.text, close, comma_if(item.next != nullptr));
  }
}

// Forms, concept words, attributes: in this order, whatever order the text of the rule had. Commas stand between the
// lists only where there is something on both sides.
void cond_print(std::string& text, const CondItem* hw_conds, const CondItem* cw_conds, const CondItem* attr_conds) {
  conditions_print(text, hw_conds, "[", "]");
  text_append(text, comma_if(hw_conds != nullptr && (cw_conds != nullptr || attr_conds != nullptr)));
  conditions_print(text, cw_conds, "[[", "]]");
  text_append(text, comma_if(cw_conds != nullptr && attr_conds != nullptr));
  conditions_print(text, attr_conds, "", "");
}

// Only what is deleted or added has a sign; codes from a compiled file may be any.
const char* action_sign(std::uint8_t op) {
  if (op == kOpDelete) return "-";
  return op == kOpAdd ? "+" : "";
}

// wanted: a comma follows each text whenever there are actions at all, though they may be those texts alone.
void actions_print(std::string& text, const NodePattern& pattern) {
  const bool has_actions = pattern.actions != nullptr;
  const bool has_cw = pattern.cw_action != nullptr;
  if (pattern.hw_action != nullptr) text_append(text, "[", pattern.hw_action, "]", comma_if(has_cw || has_actions));
  if (has_cw) text_append(text, "[[", pattern.cw_action, "]]", comma_if(has_actions));
  for (const CondItem& item : chain<&CondItem::next>(pattern.actions)) {
    // Printed in front of the others, from the fields of the pattern.
    if (item.op >= kOpSetHw) continue;
    text_append(text, action_sign(item.op), item.text, comma_if(item.next != nullptr));
  }
}

// Labels and names of roles. wanted: the sign of a role is not printed.
void texts_print(std::string& text, const CondItem* items) {
  for (const CondItem& item : chain<&CondItem::next>(items)) {
    text_append(text, item.text, comma_if(item.next != nullptr));
  }
}

// Always with three colons, though the text may have had fewer.
void pattern_print(std::string& text, const NodePattern& pattern) {
  const bool is_quoted = pattern.inserted != 0;
  text_append(text, is_quoted ? "\"" : "{");
  cond_print(text, pattern.hw_conds, pattern.cw_conds, pattern.attr_conds);
  text_append(text, ":");
  actions_print(text, pattern);
  text_append(text, ":");
  texts_print(text, pattern.relations);
  text_append(text, ":");
  texts_print(text, pattern.roles);
  text_append(text, is_quoted ? "\"" : "}");
}

void group_print(std::string& text, const ContextGroup& group) {
  text_append(text, "(");
  cond_print(text, group.hw_conds, group.cw_conds, group.attr_conds);
  text_append(text, group.star != 0 ? ")*" : ")");
}

// The groups in the order of the list, or in the other: each list that is stored in the order of the walk is turned, so
// that all stand in the order of the text.
void groups_print_forward(std::string& text, const ContextGroup* group) {
  for (const ContextGroup& each : chain<&ContextGroup::next>(group)) group_print(text, each);
}

// As deep as the list is long: a line of rule text has room for some hundred groups, a record of a compiled file for
// some thousand.
void groups_print_backward(std::string& text, const ContextGroup* group) {
  if (group == nullptr) return;
  groups_print_backward(text, group->next);
  group_print(text, *group);
}

// The line without the indent, which is not the same each time.
void rule_body_print(std::string& text, const Rule& rule) {
  type_print(text, rule.type);
  groups_print_backward(text, rule.pre);
  pattern_print(text, *rule.lnode);
  const bool mid_is_reversed = rule.lnode->inserted != 0;
  mid_is_reversed ? groups_print_backward(text, rule.mid) : groups_print_forward(text, rule.mid);
  pattern_print(text, *rule.rnode);
  groups_print_forward(text, rule.suf);
  text_append(text, "P", std::string_view(Decimal(rule.priority)), ";\n");
}

// The rule as it is printed. That of a rule of the session's grammar is made once, and stands until the session uses
// another grammar; that of any other rule, `made` receives.
std::string_view rule_text(Session& session, const Rule& rule, std::string& made) {
  const auto number = static_cast<std::size_t>(rule.number);
  const auto knows_it = [&](const std::vector<Rule*>& rules) {
    return number < rules.size() && rules[number] == &rule;
  };
  // A copy of a rule, as a match makes one to leave conditions out, has the number but not the place.
  const bool is_kept = session.grammar != nullptr && knows_it(session.grammar->index.search.rules);
  if (is_kept && session.rule_texts.size() <= number) session.rule_texts.resize(number + 1);
  if (is_kept && !session.rule_texts[number].empty()) return session.rule_texts[number];
  rule_body_print(made, rule);
  if (!is_kept) return made;
  // Only when it is whole: memory may have been refused half way.
  return session.rule_texts[number] = std::move(made);
}

}  // namespace

// wanted: several rules share one indent, in front of the first.
void rule_print(Session& session, const Rule* rule, bool one) {
  std::string made;
  if (rule != nullptr && one) return out_text(session, trace_indent(session), rule_text(session, *rule, made));
  for (; rule != nullptr; rule = rule->next) rule_body_print(made, *rule);
  out_text(session, trace_indent(session), made);
}

void rule_stack_print(Session& session, const RuleCandidate* candidates, bool one) {
  for (const RuleCandidate& candidate : chain<&RuleCandidate::next>(candidates)) {
    rule_print(session, candidate.rule, true);
    if (one) return;
  }
}

}  // namespace lexon
