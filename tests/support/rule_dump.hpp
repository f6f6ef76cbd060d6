// Every field of a rule as compact text, for what the canonical print leaves out.
#pragma once

#include <string>

#include "data/chain.hpp"
#include "rules/rule.hpp"

namespace lexon::test {

// Operator and text of each item: `0a 1b` or, with a letter or a sign for operator, `l'rel`.
[[nodiscard]] inline std::string dump(const CondItem* items) {
  std::string text;
  for (const CondItem& item : chain<&CondItem::next>(items)) {
    if (!text.empty()) text += ' ';
    const bool is_number = item.op < 10;
    text += is_number ? std::to_string(item.op) : std::string(1, static_cast<char>(item.op)) + "'";
    text += item.text;
  }
  return text;
}

// The named lists and texts that are there, as `name<..>`.
[[nodiscard]] inline std::string dump_part(const std::string& name, const CondItem* items) {
  return items == nullptr ? "" : name + "<" + dump(items) + ">";
}
[[nodiscard]] inline std::string dump_part(const std::string& name, const char* text) {
  return text == nullptr ? "" : name + "<" + text + ">";
}

[[nodiscard]] inline std::string dump(const NodePattern& pattern) {
  return (pattern.inserted != 0 ? "quote " : "brace ") + dump_part("hw", pattern.hw_conds) + dump_part("cw", pattern.cw_conds) +
         dump_part("attr", pattern.attr_conds) + dump_part("act", pattern.actions) + dump_part("set_hw", pattern.hw_action) +
         dump_part("set_cw", pattern.cw_action) + dump_part("rel", pattern.relations) + dump_part("role", pattern.roles);
}

[[nodiscard]] inline std::string dump(const ContextGroup* groups) {
  std::string text;
  for (const ContextGroup& group : chain<&ContextGroup::next>(groups)) {
    text += "(" + dump_part("hw", group.hw_conds) + dump_part("cw", group.cw_conds) + dump_part("attr", group.attr_conds) + (group.star != 0 ? ")*" : ")");
  }
  return text;
}

// One line for each rule of the list.
[[nodiscard]] inline std::string dump(const Rule* rules) {
  std::string text;
  for (const Rule& rule : chain<&Rule::next>(rules)) {
    text += std::string(1, static_cast<char>(rule.type)) + "/" + std::to_string(rule.subtype) + " " + dump(rule.pre) + " | " + dump(*rule.lnode) + " | " +
            dump(rule.mid) + " | " + dump(*rule.rnode) + " | " + dump(rule.suf) + " P" + std::to_string(rule.priority) + "\n";
  }
  return text;
}

}  // namespace lexon::test
