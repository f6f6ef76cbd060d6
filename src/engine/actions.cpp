// The actions of a rule on the words of its two nodes: surface forms set, attributes deleted and added.

#include <algorithm>
#include <cstring>
#include <string_view>

#include "data/attr_string.hpp"
#include "data/chain.hpp"
#include "data/scratch.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/application.hpp"
#include "engine/apply.hpp"
#include "rules/rule.hpp"

namespace lexon {

namespace {

using AttrScratch = Scratch<kAttrLimit>;

// A word that actions change is a copy in front of the old one: undo drops the head of the list. Whether there was a
// change is noted in the state of the node's newest record, and nowhere else.
//
// One side's actions at work.
struct Actions {
  const Rule& rule;
  const NodePattern& own;
  const NodePattern& opposite;
  Node& node;
  WordEntry& word;  // the node's word in force
  AttrScratch& additions;
  bool origin_blanked = false;
};

void word_changed(Actions& actions) {
  actions.node.matches->state = kStateChanged;
}

// Can actions work on this place? They need a word to change, and a record that tells of the change.
[[nodiscard]] Status actions_have_a_place(Session& session, const Node* node) {
  if (node == nullptr || node->candidates == nullptr)
    return rule_base_failure(session, "acted on a place without a word");
  return is_fresh(*node) ? rule_base_failure(session, "acted on a node that no rule has matched") : Status::ok;
}

// Overwrites an attribute of the word with commas; the rebuild squeezes them away. `was_there` becomes true if the word
// has it.
[[nodiscard]] Status attr_blank(Session& session, WordEntry& word, const char* attr, bool& was_there) {
  if (attr_find(word.attrs, attr) == nullptr) return Status::ok;
  if (const Status status = text_make_own(session, word.attrs); status != Status::ok) return status;
  std::memset(attr_find(word.attrs, attr), ',', std::strlen(attr));
  was_there = true;
  return Status::ok;
}

void attr_add(Actions& actions, const char* attr) {
  AttrScratch& additions = actions.additions;
  const std::size_t length = additions.size() + std::strlen(attr) + 1;
  // The stored length counts, which can be more than the text has: matching reckons with the same.
  if (static_cast<std::int64_t>(length) + actions.word.attr_len >= kAttrLimit) return;
  if (is_scope_reference(actions.node) && actions.rule.type == rule_type::insertion) {
    // Additions to a scope reference that the rule brings in are carried into the scope instead.
    const bool enters_scope = actions.opposite.inserted == 0 && no_scope_rule_in_stack(actions.node.matches);
    if (actions.own.inserted != 0 || enters_scope) return;
  }
  // An attribute that is there, or that has just been added, is not added twice.
  if (attr_find(actions.word.attrs, attr) != nullptr) return;
  if (!additions.empty() && attr_find(additions.c_str(), attr) != nullptr) return;
  if (!additions.empty()) additions.append(',');
  additions.append(attr);
  word_changed(actions);
}

// Appends the elements of `list` that are not empty.
void elements_append(AttrScratch& text, const char* list) {
  std::string_view attrs(list);
  const bool find_room = text.size() + 1 + attrs.size() < kAttrLimit;
  const bool has_no_empty =
      !attrs.empty() && attrs.front() != ',' && attrs.back() != ',' && std::strstr(list, ",,") == nullptr;
  if (find_room && has_no_empty) {
    // All of them as they stand.
    if (!text.empty()) text.append(',');
    text.append(attrs);
    return;
  }
  while (!attrs.empty() && text.fits()) {
    const std::size_t length = std::min(attrs.find(','), attrs.size());
    if (length > 0) {
      if (!text.empty()) text.append(',');
      text.append(attrs.substr(0, length));
    }
    attrs.remove_prefix(std::min(length + 1, attrs.size()));
  }
}

// The actions of one side, on a copy of the word that is taken back if they changed nothing.
[[nodiscard]] Status side_actions_apply(Session& session, Side side, const Rule& rule, const Window& window) {
  if (pattern_of(rule, side).actions == nullptr) return Status::ok;
  Node* node = node_of(window, side);
  if (const Status status = actions_have_a_place(session, node); status != Status::ok) return status;
  // The actions work on a copy; the word as it was stays behind it.
  WordEntry* copy = nullptr;
  if (const Status status = entry_copy(session, *node->candidates, copy); status != Status::ok) return status;
  copy->next = node->candidates;
  node->candidates = copy;
  if (const Status status = node_actions_apply(session, side, rule, window); status != Status::ok) return status;
  // Nothing has changed: the word as it was is in force again.
  if (node->matches->state == kStateStep) entry_drop_head(session, node->candidates);
  return Status::ok;
}

}  // namespace

Status node_actions_apply(Session& session, Side side, const Rule& rule, const Window& window) {
  Node* node = node_of(window, side);
  if (const Status status = actions_have_a_place(session, node); status != Status::ok) return status;
  const NodePattern& own = pattern_of(rule, side);
  AttrScratch additions;
  Actions actions{rule, own, pattern_of(rule, other(side)), *node, *node->candidates, additions};
  for (const CondItem& item : chain<&CondItem::next>(own.actions)) {
    // wanted: a boundary keeps its surface form.
    if (item.op == kOpSetHw && !is_boundary(*node)) {
      char* hw = temp_text(session, item.text);
      if (hw == nullptr) return Status::memory;
      temp_free_string(session, actions.word.hw);
      actions.word.hw = hw;
      actions.word.hw_len = static_cast<std::int32_t>(std::strlen(hw));
      // A scope reference with a surface form of its own is a word.
      if (is_scope_reference(*node)) node->kind = kKindWord;
      word_changed(actions);
    }
    if (item.op == kOpDelete) {
      bool was_there = false;
      if (const Status status = attr_blank(session, actions.word, item.text, was_there); status != Status::ok)
        return status;
      if (was_there) word_changed(actions);
      // wanted: a role that is taken from a copy dies in the node it was copied from, whether or not the copy has it.
      const bool is_role = *item.text == '<' || *item.text == '>';
      const Node* origin = is_role ? node->origin : nullptr;
      const bool has_word = origin != nullptr && !is_fresh(*origin) && origin->candidates != nullptr;
      const Status blanked =
          has_word ? attr_blank(session, *origin->candidates, item.text, actions.origin_blanked) : Status::ok;
      if (blanked != Status::ok) return blanked;
    }
    if (item.op == kOpAdd) attr_add(actions, item.text);
    // A concept word changes nothing here.
  }
  // wanted: the commas are squeezed in the surface form; the attributes of the origin keep their blanks.
  if (actions.origin_blanked && node->origin->candidates->hw != nullptr) {
    char*& text = node->origin->candidates->hw;
    if (const Status status = text_make_own(session, text); status != Status::ok) return status;
    const auto both_commas = [](char a, char b) { return a == ',' && b == ','; };
    *std::unique(text, text + std::strlen(text), both_commas) = '\0';
  }
  if (!is_word_changed(node)) return Status::ok;
  // New attributes go in front of the old ones, without blanks. What a scope reference gains before its scope is
  // generated stands apart from what it had, for scope entry to take along.
  WordEntry& word = actions.word;
  const char* old = text_or_empty(word.attrs);
  AttrScratch text;
  elements_append(text, actions.additions.c_str());
  if (is_unbuilt_reference(session, *node) && !text.empty() && std::strstr(old, ",;,") == nullptr) text.append(",;");
  elements_append(text, old);
  if (const Status status = entry_attrs_set(session, word, text.view()); status != Status::ok) return status;
  word.attr_block_size = word.attr_len + 12;
  return Status::ok;
}

Status rule_actions_apply(Session& session, const Window& window, const RuleCandidate& candidate) {
  const Rule& rule = *candidate.rule;
  if (const Status status = side_actions_apply(session, Side::left, rule, window); status != Status::ok) return status;
  return side_actions_apply(session, Side::right, rule, window);
}

bool no_scope_rule_in_stack(const MatchRecord* records) {
  for (const MatchRecord& record : chain<&MatchRecord::next>(records)) {
    if (record.candidate == nullptr) continue;
    const Rule& rule = *record.candidate->rule;
    if (rule.type == rule_type::insertion && has_brace_patterns(rule)) return false;
  }
  return true;
}

}  // namespace lexon
