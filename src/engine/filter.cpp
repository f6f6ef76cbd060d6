// The steps:
//   places     types that must not work at a boundary, or take the entry node away
//   target     a reference to a scope that is not built stands for the word at the scope's head
//   settled    a node that rules have touched: the word in force fits, or nothing does
//   open       all words are asked; those that fit come to the front, on the node or on the target
//   hold       keeps the target's word until its scope is entered
#include "engine/filter.hpp"

#include "data/attr_string.hpp"
#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/cooccurrence.hpp"
#include "engine/surface.hpp"

namespace lexon {

namespace {

struct Filter {
  Side side;
  const Rule& rule;
  const NodePattern& pattern;
  const Window& window;
  WordEntry*& chosen;
  Node& node;
  Node* const target;      // the node that stands for the reference, or null
  bool on_target = false;  // words of the target are moved, not those of the node
};

bool head_text_has(const Node* node, const char* attr) {
  return node != nullptr && attr_find(head_text(*node), attr) != nullptr;
}

// ---- Settled words.

Fit filter_settled(Session& session, const Filter& filter) {
  const NodePattern& pattern = filter.pattern;
  const Node& node = filter.node;
  const Node* target = filter.target;
  const WordEntry* word = node.candidates;
  if (word == nullptr) {
    rule_base_failure(session, "tested a node without words");
    return Fit::failed;
  }
  if (!test_surface(nullptr, word, pattern.hw_conds, pattern.cw_conds)) return Fit::no;
  if (!attr_room_ok(session, filter.side, filter.rule, filter.window)) return Fit::no;
  for (const CondItem& condition : chain<&CondItem::next>(pattern.attr_conds)) {
    const char* attr = condition.text;
    // A node under a hold has not been settled yet: what the graph says of it is not in its word.
    const bool has_itself = attr_has(word, attr) || (is_held(node) && head_text_has(&node, attr));
    if (condition.op == kOpNot && has_itself) return Fit::no;
    if (condition.op == kOpNot || has_itself) continue;
    if (target == nullptr || scope_is_built(session, node.scope) != 0) return Fit::no;
    if (!attr_has(target->candidates, attr) && !head_text_has(target, attr)) return Fit::no;
  }
  return Fit::yes;
}

// ---- Open words.

// The word under test, and the word of the target that goes with it (null without a target).
struct Words {
  const WordEntry* own;
  const WordEntry* targets;
};

// Is the word to come to the front? A word test of this side is after the words that do not fit.
bool is_kept(Session& session, Filter& filter, const Words& words) {
  const NodePattern& pattern = filter.pattern;
  const bool has_surface_conditions = pattern.hw_conds != nullptr || pattern.cw_conds != nullptr;
  if (has_surface_conditions) {
    const bool asks_target = words.targets != nullptr;
    const bool holds = test_surface(asks_target ? nullptr : &filter.node, asks_target ? words.targets : words.own,
                                    pattern.hw_conds, pattern.cw_conds);
    if (!holds) return false;
  }
  if (!attr_room_ok(session, filter.side, filter.rule, filter.window)) return false;
  const std::uint8_t type = filter.rule.type;
  const bool wants_misfits = filter.side == Side::left ? type == rule_type::test_left
                                                       : type == rule_type::test || type == rule_type::test_right;
  bool fits = true;
  bool needs_target = false;
  for (const CondItem& condition : chain<&CondItem::next>(pattern.attr_conds)) {
    const char* attr = condition.text;
    // Role conditions ask the reference itself, and no text of its target.
    const bool is_role = attr[0] == '<' || attr[0] == '>';
    const auto target_text_has = [&] { return !is_role && head_text_has(filter.target, attr); };
    if (condition.op == kOpNot) {
      fits = !attr_has(words.own, attr) && !head_text_has(&filter.node, attr) && !attr_has(words.targets, attr) &&
             !target_text_has();
    } else if (!attr_has(words.own, attr) && !(is_fresh(filter.node) && head_text_has(&filter.node, attr))) {
      // wanted: a node that is touched shows its graph attributes to negated conditions alone
      const bool target_has = attr_has(words.targets, attr);
      needs_target = needs_target || target_has;
      fits = target_has || target_text_has();
    }
    if (!fits) break;
  }
  // Once a fitting pair has needed the target's word, words of the target are moved from then on.
  if (fits && needs_target) filter.on_target = true;
  if (fits) return !wants_misfits;
  return wants_misfits && (filter.target == nullptr || is_fresh(*filter.target));
}

// Asks all words of the node, and of its target along with them. What is kept is taken out of its list at once, and put
// in front of what is left of it in the end.
Fit filter_open(Session& session, Filter& filter) {
  WordEntry** own = &filter.node.candidates;  // link to the word under test
  WordEntry** targets = filter.target == nullptr ? nullptr : &filter.target->candidates;
  WordEntry* kept = nullptr;  // in order
  WordEntry** kept_end = &kept;
  while (*own != nullptr && (targets == nullptr || *targets != nullptr)) {
    if (must_leave(session) != Status::ok) return Fit::failed;
    if (!is_kept(session, filter, {*own, targets == nullptr ? nullptr : *targets})) {
      if (targets == nullptr) {
        own = &(*own)->next;
      } else if (!filter.on_target && is_fresh(*filter.target)) {
        targets = &(*targets)->next;
      } else {
        break;
      }
      continue;
    }
    const bool is_first = kept == nullptr;
    const bool may_choose = is_first && filter.target == nullptr && filter.rule.type == rule_type::insertion;
    if (may_choose) entry_list_free(session, filter.chosen);
    if (may_choose && filter.pattern.inserted != 0) {
      // The words of a node that the rule brings in are chosen by what stands beside it: those from here on are scored,
      // and another one may take the place of the first.
      Node* other_node = node_of(filter.window, other(filter.side));
      WordEntry* none = nullptr;
      WordEntry*& beside = other_node == nullptr ? none : other_node->candidates;
      const bool left = filter.side == Side::left;
      const int score = cooccurrence_check(session, left ? *own : beside, left ? beside : *own, filter.rule,
                                           filter.chosen, filter.side);
      if (score < 1) return score == 0 ? Fit::no : Fit::refused;
    }
    WordEntry** link = filter.on_target && targets != nullptr ? targets : own;
    WordEntry* word = *link;
    *link = word->next;
    word->next = nullptr;
    *kept_end = word;
    kept_end = &word->next;
  }
  if (kept == nullptr) return Fit::no;
  const bool on_target = filter.on_target && filter.target != nullptr;
  WordEntry*& words = on_target ? filter.target->candidates : filter.node.candidates;
  // Word tests let go of what they did not keep.
  const std::uint8_t type = filter.rule.type;
  const std::uint8_t own_test = filter.side == Side::left ? rule_type::test_left : rule_type::test_right;
  if (type == rule_type::test || type == own_test) entry_list_free(session, words);
  *kept_end = words;
  words = kept;
  return Fit::yes;
}

}  // namespace

Fit filter_candidates(Session& session, Side side, const Rule& rule, RuleCandidate& candidate, const Window& window,
                      WordEntry*& chosen) {
  Node* node = node_of(window, side);
  if (node == nullptr) return Fit::no;
  // Word tests do not aim at boundaries.
  const bool aims_here = rule.type == (side == Side::left ? rule_type::test_left : rule_type::test_right);
  if (aims_here && is_boundary(*node)) return Fit::no;
  // A merge takes one node away, which must not be a boundary, nor the node that the scope starts from.
  if (rule.type == rule_type::merge_left || rule.type == rule_type::merge_right) {
    const Node* dropped = rule.type == rule_type::merge_left ? window.lnode : window.rnode;
    if (dropped == nullptr || is_boundary(*dropped) || dropped == current_scope(session).entry) return Fit::no;
  }
  const bool looks_through = rule.type == rule_type::insertion || is_word_test_type(rule.type);
  Node* target =
      looks_through && is_unbuilt_reference(session, *node) ? scope_final_node(session, node->scope) : nullptr;
  // What an earlier stay in the scope has left on its entry node is taken back, one record a time.
  if (target != nullptr && is_fresh(*node) && !is_untouched(*target)) {
    match_record_pop(session, *target);
    if (is_fresh(*target) && node_words_reload(session, *target) != Status::ok) return Fit::no;
  }
  Filter filter{side, rule, pattern_of(rule, side), window, chosen, *node, target};
  const bool is_open = target != nullptr ? is_fresh(*target) || (is_fresh(*node) && is_held(*target)) : is_fresh(*node);
  const Fit fit = is_open ? filter_open(session, filter) : filter_settled(session, filter);
  if (fit != Fit::yes) return fit;
  // A hold keeps the target's word until its scope is entered.
  if (target == nullptr || !filter.on_target || !is_fresh(*target)) return Fit::yes;
  const Status held = match_record_push(session, *target, kStateHold, &candidate);
  return held == Status::ok ? Fit::yes : Fit::failed;
}

}  // namespace lexon
