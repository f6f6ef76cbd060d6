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

// ---- Places.

bool may_drop_out(Session& session, const Node* node) {
  const Node* entry = current_scope(session).entry;
  return node != nullptr && !is_boundary(*node) && node != entry;
}

bool is_wrong_place(Session& session, Side side, std::uint8_t type, const Window& window) {
  const Node& node = *node_of(window, side);
  if (side == Side::right && type == rule_type::test_right && is_boundary(node)) return true;
  if (side == Side::left && type == rule_type::test_left && is_boundary(node)) return true;
  if (type == rule_type::merge_left) return !may_drop_out(session, window.lnode);
  return type == rule_type::merge_right && !may_drop_out(session, window.rnode);
}

// ---- Target.

Node* target_of(Session& session, const Node& node, std::uint8_t type) {
  const bool type_looks_through = type == rule_type::insertion || is_word_test_type(type);
  return type_looks_through && is_unbuilt_reference(session, node) ? scope_final_node(session, node.scope) : nullptr;
}

// What an earlier stay in the scope has left on its entry node is taken back, one record a time.
Status reset_target(Session& session, Node& target) {
  match_record_pop(session, target);
  return is_fresh(target) ? node_words_reload(session, target) : Status::ok;
}

bool wants_reset(const Node& node, const Node* target) {
  return is_scope_reference(node) && is_fresh(node) && target != nullptr && !is_untouched(*target);
}

bool words_are_open(const Node& node, const Node* target) {
  if (target != nullptr && is_fresh(*target)) return true;
  return is_fresh(node) && (target == nullptr || is_held(*target));
}

// ---- Settled words.

bool has_surface_conditions(const NodePattern& pattern) {
  return pattern.hw_conds != nullptr || pattern.cw_conds != nullptr;
}

bool head_text_has(const Node* node, const char* attr) {
  return node != nullptr && attr_find(head_text(*node), attr) != nullptr;
}

bool settled_attr_holds(Session& session, const Filter& filter, const CondItem& condition) {
  const Node& node = filter.node;
  const bool has_itself =
      attr_has(node.candidates, condition.text) || (is_held(node) && head_text_has(&node, condition.text));
  if (condition.op == kOpNot) return !has_itself;
  if (has_itself) return true;
  const Node* target = filter.target;
  if (target == nullptr || scope_is_built(session, node.scope) != 0) return false;
  return attr_has(target->candidates, condition.text) || head_text_has(target, condition.text);
}

Fit filter_settled(Session& session, const Filter& filter) {
  const NodePattern& pattern = filter.pattern;
  const WordEntry* word = filter.node.candidates;
  if (word == nullptr) {
    rule_base_failure(session, "tested a node without words");
    return Fit::failed;
  }
  if (has_surface_conditions(pattern) && !test_surface(nullptr, word, pattern.hw_conds, pattern.cw_conds)) {
    return Fit::no;
  }
  if (!attr_room_ok(session, filter.side, filter.rule, filter.window)) return Fit::no;
  for (const CondItem& condition : chain<&CondItem::next>(pattern.attr_conds)) {
    if (!settled_attr_holds(session, filter, condition)) return Fit::no;
  }
  return Fit::yes;
}

// ---- Open words.

// What a word, or a pair of a reference's word and a target's word, is to the pattern.
enum class Verdict {
  out,       // rejected, whatever the rule does with words
  fits,      // satisfies the conditions
  fits_not,  // breaks an attribute condition
};

// The word at hand, and the word of the target at hand (null without a target).
struct Words {
  const WordEntry* own;
  const WordEntry* targets;
};

// Where a condition was met.
enum class Met { nowhere, on_node, on_target_word };

// Role conditions are meant for the reference itself.
bool is_role(const char* attr) {
  return attr[0] == '<' || attr[0] == '>';
}

bool target_text_has(const Filter& filter, const char* attr) {
  return !is_role(attr) && head_text_has(filter.target, attr);
}

bool is_broken(const Filter& filter, const Words& words, const char* attr) {
  return attr_has(words.own, attr) || head_text_has(&filter.node, attr) || attr_has(words.targets, attr) ||
         target_text_has(filter, attr);
}

Met where_met(const Filter& filter, const Words& words, const char* attr) {
  // wanted: a node that is touched shows its graph attributes to negated conditions alone
  if (attr_has(words.own, attr) || (is_fresh(filter.node) && head_text_has(&filter.node, attr))) return Met::on_node;
  if (words.targets != nullptr && attr_has(words.targets, attr)) return Met::on_target_word;
  return target_text_has(filter, attr) ? Met::on_node : Met::nowhere;
}

// Once a fitting pair has needed the target's word, words of the target are moved from then on.
Verdict judge_attrs(Filter& filter, const Words& words) {
  bool met_on_target = false;
  for (const CondItem& condition : chain<&CondItem::next>(filter.pattern.attr_conds)) {
    if (condition.op == kOpNot) {
      if (is_broken(filter, words, condition.text)) return Verdict::fits_not;
      continue;
    }
    const Met met = where_met(filter, words, condition.text);
    if (met == Met::nowhere) return Verdict::fits_not;
    if (met == Met::on_target_word) met_on_target = true;
  }
  if (met_on_target) filter.on_target = true;
  return Verdict::fits;
}

Verdict judge(Session& session, Filter& filter, const Words& words) {
  const NodePattern& pattern = filter.pattern;
  if (has_surface_conditions(pattern)) {
    const bool asks_target = words.targets != nullptr;
    const bool holds = test_surface(asks_target ? nullptr : &filter.node, asks_target ? words.targets : words.own,
                                    pattern.hw_conds, pattern.cw_conds);
    if (!holds) return Verdict::out;
  }
  if (!attr_room_ok(session, filter.side, filter.rule, filter.window)) return Verdict::out;
  return judge_attrs(filter, words);
}

// A word test of these sides is after the words that do not fit.
bool is_inverted(Side side, std::uint8_t type) {
  if (side == Side::left) return type == rule_type::test_left;
  return type == rule_type::test || type == rule_type::test_right;
}

bool is_kept(const Filter& filter, Verdict verdict) {
  if (verdict == Verdict::out) return false;
  const bool inverted = is_inverted(filter.side, filter.rule.type);
  if (verdict == Verdict::fits) return !inverted;
  return inverted && (filter.target == nullptr || is_fresh(*filter.target));
}

// Does the rule bring in the node of this side, so that its words are to be chosen by what stands beside it?
bool chooses_by_neighbour(const Filter& filter) {
  return filter.target == nullptr && filter.rule.type == rule_type::insertion;
}

// Scores the words from `word` on, which may put another one in its place.
Fit choose_by_neighbour(Session& session, Filter& filter, WordEntry*& word) {
  entry_list_free(session, filter.chosen);
  if (filter.pattern.inserted == 0) return Fit::yes;
  Node* other_node = node_of(filter.window, other(filter.side));
  WordEntry* none = nullptr;
  WordEntry*& other_word = other_node == nullptr ? none : other_node->candidates;
  const bool left = filter.side == Side::left;
  const int score = cooccurrence_check(session, left ? word : other_word, left ? other_word : word, filter.rule,
                                       filter.chosen, filter.side);
  if (score >= 1) return Fit::yes;
  return score == 0 ? Fit::no : Fit::refused;
}

// The walk over the words of the node and of its target. What is kept is taken out of its list at once.
struct WordWalk {
  WordEntry** own;               // link to the word at hand
  WordEntry** targets;           // the same in the target's list; null without a target
  WordEntry* kept = nullptr;     // in order
  WordEntry** kept_end = &kept;  // link behind the last kept word
  bool ended = false;
};

void keep(WordWalk& walk, WordEntry** link) {
  WordEntry* word = *link;
  *link = word->next;
  word->next = nullptr;
  *walk.kept_end = word;
  walk.kept_end = &word->next;
}

void pass_over(const Filter& filter, WordWalk& walk) {
  if (walk.targets == nullptr) {
    walk.own = &(*walk.own)->next;
  } else if (!filter.on_target && is_fresh(*filter.target)) {
    walk.targets = &(*walk.targets)->next;
  } else {
    walk.ended = true;
  }
}

bool has_words(const WordWalk& walk) {
  return !walk.ended && *walk.own != nullptr && (walk.targets == nullptr || *walk.targets != nullptr);
}

Fit walk_words(Session& session, Filter& filter, WordWalk& walk) {
  while (has_words(walk)) {
    if (must_leave(session) != Status::ok) return Fit::failed;
    const Words words{*walk.own, walk.targets == nullptr ? nullptr : *walk.targets};
    if (!is_kept(filter, judge(session, filter, words))) {
      pass_over(filter, walk);
      continue;
    }
    if (walk.kept == nullptr && chooses_by_neighbour(filter)) {
      if (const Fit fit = choose_by_neighbour(session, filter, *walk.own); fit != Fit::yes) return fit;
    }
    keep(walk, filter.on_target && walk.targets != nullptr ? walk.targets : walk.own);
  }
  return walk.kept == nullptr ? Fit::no : Fit::yes;
}

// Word tests let go of what they did not keep.
bool releases_rest(Side side, std::uint8_t type) {
  return type == rule_type::test || type == (side == Side::left ? rule_type::test_left : rule_type::test_right);
}

Fit filter_open(Session& session, Filter& filter) {
  WordWalk walk{&filter.node.candidates, filter.target == nullptr ? nullptr : &filter.target->candidates};
  if (const Fit fit = walk_words(session, filter, walk); fit != Fit::yes) return fit;
  const bool on_target = filter.on_target && filter.target != nullptr;
  WordEntry*& words = on_target ? filter.target->candidates : filter.node.candidates;
  if (releases_rest(filter.side, filter.rule.type)) entry_list_free(session, words);
  *walk.kept_end = words;
  words = walk.kept;
  return Fit::yes;
}

// ---- Hold.

Status hold_target(Session& session, const Filter& filter, RuleCandidate& candidate) {
  if (!filter.on_target || !is_fresh(*filter.target)) return Status::ok;
  return match_record_push(session, *filter.target, kStateHold, &candidate);
}

}  // namespace

Fit filter_candidates(Session& session, Side side, const Rule& rule, RuleCandidate& candidate, const Window& window,
                      WordEntry*& chosen) {
  Node* node = node_of(window, side);
  if (node == nullptr || is_wrong_place(session, side, rule.type, window)) return Fit::no;
  Filter filter{side, rule, pattern_of(rule, side), window, chosen, *node, target_of(session, *node, rule.type)};
  const bool resets = wants_reset(*node, filter.target);
  if (resets && reset_target(session, *filter.target) != Status::ok) return Fit::no;
  const Fit fit = words_are_open(*node, filter.target) ? filter_open(session, filter) : filter_settled(session, filter);
  if (fit != Fit::yes) return fit;
  return hold_target(session, filter, candidate) == Status::ok ? Fit::yes : Fit::failed;
}

}  // namespace lexon
