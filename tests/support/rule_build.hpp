// Rules and nodes for tests and benchmarks of the rule index, which knows nothing of a rule but the attribute
// conditions and the openers of its two patterns. Unlike rules from text, these can have names that no rule file holds.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <initializer_list>
#include <string>
#include <string_view>

#include "data/pool.hpp"
#include "data/words.hpp"
#include "rules/rule.hpp"
#include "support/session.hpp"

namespace lexon::test {

// A rule list that lives as long as this. Each rule is written as two patterns, "{N ^V +X}{}" or "{}'A'", the second
// kind being the inserted one; one blank separates the conditions, and "=" stands for the empty name.
class RuleList {
 public:
  RuleList() = default;
  RuleList(std::initializer_list<std::string_view> rules) {
    for (const std::string_view rule : rules) add(rule);
  }
  RuleList(const RuleList&) = delete;
  RuleList& operator=(const RuleList&) = delete;

  void add(std::string_view text) {
    const std::size_t end = text.find_first_of("}'", 1);
    Rule& rule = rules_.emplace_back();
    rule.lnode = pattern(text.substr(0, end));
    rule.rnode = pattern(text.substr(end + 1, text.size() - end - 2));
    if (rules_.size() > 1) rules_[rules_.size() - 2].next = &rule;
  }

  [[nodiscard]] Rule* head() { return rules_.empty() ? nullptr : &rules_.front(); }

 private:
  // `text` goes from the opener to the last condition.
  NodePattern* pattern(std::string_view text) {
    NodePattern& made = patterns_.emplace_back();
    made.inserted = text.front() == '\'' ? 1 : 0;
    CondItem** link = &made.attr_conds;
    for (std::size_t at = 1; at < text.size();) {
      const std::size_t end = std::min(text.find(' ', at), text.size());
      *link = condition(text.substr(at, end - at));
      link = &(*link)->next;
      at = end + 1;
    }
    return &made;
  }

  CondItem* condition(std::string_view text) {
    const std::size_t op = std::string_view("^=-+").find(text.front());
    const bool has_prefix = op != std::string_view::npos;
    std::string& name = texts_.emplace_back(has_prefix ? text.substr(1) : text);
    return &items_.emplace_back(CondItem{static_cast<std::uint8_t>(has_prefix ? op : kOpHas), name.data(), nullptr});
  }

  std::deque<Rule> rules_;
  std::deque<NodePattern> patterns_;
  std::deque<CondItem> items_;
  std::deque<std::string> texts_;
};

inline WordEntry* words_of_attrs(std::string_view text) {
  WordEntry* head = nullptr;
  WordEntry** link = &head;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find('|', at), text.size());
    const std::string_view attrs = text.substr(at, end - at);
    *link = entry_new(session, "w", nullptr);
    if (attrs != "?") (*link)->attrs = temp_text(session, attrs);
    link = &(*link)->next;
    at = end + 1;
  }
  return head;
}

// A node from ":1N,V|A{B,C}*": the scope that it refers to, the attributes of its words, the text of its attribute
// block, and a star if it has been used; all but the words may be left out. "?" is a word without attributes; "#" in
// place of the words is a node without words; "-" is no node at all.
inline Node* node_of_attrs(std::string_view text) {
  if (text == "-") return nullptr;
  Node* node = temp_new<Node>(session);
  node->kind = kKindWord;
  if (text.starts_with(':')) {
    node->kind = kKindScope;
    node->scope = text[1] - '0';
    text.remove_prefix(2);
  }
  if (text.ends_with('*')) {
    node->matches = temp_new<MatchRecord>(session);
    text.remove_suffix(1);
  }
  if (const std::size_t open = text.find('{'); open != std::string_view::npos) {
    node->scope_attrs = temp_new<ScopeAttrs>(session);
    text.substr(open + 1, text.size() - open - 2).copy(node->scope_attrs->text, kAttrLimit);
    text = text.substr(0, open);
  }
  if (text != "#") node->candidates = words_of_attrs(text);
  return node;
}

}  // namespace lexon::test
