#include "rule_text.hpp"

#include <algorithm>

#include "data/chain.hpp"
#include "data/chars.hpp"
#include "rules/compiled.hpp"
#include "rules/parser.hpp"
#include "rules/print.hpp"
#include "support/grammar.hpp"

namespace lexon::fuzz {

using lexon::test::grammar;
using lexon::test::session;

ParsedRules rules_parsed(std::string_view text) {
  const Source source(text);
  ParsedRules parsed;
  parsed.status = parse_rule_file(session, grammar.pool, source.get(), parsed.rules);
  return parsed;
}

std::string rules_printed(const Rule* rules) {
  const Output output;
  for (const Rule& rule : chain<&Rule::next>(rules)) rule_print(session, &rule, true);
  return output.text();
}

namespace {

bool is_plain(const CondItem* items) {
  const auto range = chain<&CondItem::next>(items);
  return std::all_of(range.begin(), range.end(), [](const CondItem& item) {
    const std::string_view text = item.text;
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return is_letter(c) || is_digit(c); });
  });
}

// The signs "+" and "-" of conditions do not print.
bool are_plain(const CondItem* conditions) {
  const auto range = chain<&CondItem::next>(conditions);
  return is_plain(conditions) && std::all_of(range.begin(), range.end(), [](const CondItem& item) {
           return item.op == kOpNot || item.op == kOpHas;
         });
}

// Texts that are set print in front of all other actions.
bool sets_come_first(const CondItem* actions) {
  const auto range = chain<&CondItem::next>(actions);
  return std::is_partitioned(range.begin(), range.end(), [](const CondItem& item) { return item.op >= kOpSetHw; });
}

bool is_plain(const ContextGroup* groups) {
  const auto range = chain<&ContextGroup::next>(groups);
  return std::all_of(range.begin(), range.end(), [](const ContextGroup& group) {
    return are_plain(group.hw_conds) && are_plain(group.cw_conds) && are_plain(group.attr_conds);
  });
}

bool is_plain(const NodePattern& pattern) {
  return are_plain(pattern.hw_conds) && are_plain(pattern.cw_conds) && are_plain(pattern.attr_conds) &&
         is_plain(pattern.actions) && sets_come_first(pattern.actions) && is_plain(pattern.relations) &&
         is_plain(pattern.roles);
}

// Codes that are no type of rule text can get into it all the same: behind "PS" any character is one.
bool is_plain_type(std::uint8_t type) {
  return std::string_view("+-:<>?LRXCUDPab123456789").find(static_cast<char>(type)) != std::string_view::npos;
}

bool is_plain(const Rule& rule) {
  return is_plain_type(rule.type) && is_plain(rule.pre) && is_plain(*rule.lnode) && is_plain(rule.mid) &&
         is_plain(*rule.rnode) && is_plain(rule.suf);
}

bool lines_fit(std::string_view text) {
  constexpr std::size_t kLongest = kLineSize - 1;
  for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
    if (end >= kLongest) return false;
  }
  return true;
}

}  // namespace

bool is_printable(const Rule* rules) {
  const auto range = chain<&Rule::next>(rules);
  return std::all_of(range.begin(), range.end(), [](const Rule& rule) { return is_plain(rule); }) &&
         lines_fit(rules_printed(rules));
}

std::string rules_compiled(const Rule* rules) {
  const Sink sink;
  const Status status = rule_list_write(session, rules, sink.get());
  return status == Status::ok ? sink.text() : std::string();
}

}  // namespace lexon::fuzz
