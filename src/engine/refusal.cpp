#include "engine/refusal.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "data/attr_string.hpp"
#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/cooccurrence.hpp"
#include "engine/insertion.hpp"
#include "engine/literal.hpp"
#include "engine/match_state.hpp"
#include "engine/surface.hpp"

namespace lexon {

namespace {

// An empty answer says that nothing is missing.
using Misses = std::vector<Miss>;

void append(Misses& to, Misses&& more) {
  to.insert(to.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

// Keeps the shorter of two answers; an answer that has not been given is the longest.
void keep_nearest(std::optional<Misses>& nearest, Misses&& misses) {
  if (!nearest.has_value() || misses.size() < nearest->size()) nearest = std::move(misses);
}

// The parts of the rule that speak of this side: its node, and what lies beyond.
RulePart pattern_part(Side side) {
  return side == Side::left ? RulePart::lnode : RulePart::rnode;
}

RulePart beyond_part(Side side) {
  return side == Side::left ? RulePart::pre : RulePart::suf;
}

// The node as a user knows it: by its word once that is settled, before by what the graph calls it.
std::string name_of(const Node& node) {
  if (is_scope_reference(node)) return "scope " + std::to_string(node.scope);
  if (is_fresh(node) && node.name != nullptr) return node.name;
  const WordEntry* word = node.candidates;
  if (word == nullptr) return std::string(text_or_empty(node.name));
  const std::string_view hw = text_or_empty(word->hw);
  return std::string(hw.empty() ? text_or_empty(word->cw) : hw);
}

// "surface form (attributes)"; the parentheses only if there are any.
std::string word_text(const WordEntry* word) {
  if (word == nullptr) return {};
  const std::string_view attrs = text_or_empty(word->attrs);
  std::string text(text_or_empty(word->hw));
  if (!attrs.empty()) text.append(" (").append(attrs).append(")");
  return text;
}

// With the rule that has touched the node last: it is where a user looks next.
Miss miss_of_node(Reason reason, RulePart part, const Node& node) {
  Miss miss;
  miss.reason = reason;
  miss.part = part;
  miss.node = name_of(node);
  for (const MatchRecord& record : chain<&MatchRecord::next>(node.matches)) {
    if (record.candidate == nullptr) continue;
    miss.settled_by = record.candidate->rule;
    break;
  }
  return miss;
}

bool head_text_has(const Node* node, const char* attr) {
  return node != nullptr && attr_find(head_text(*node), attr) != nullptr;
}

// ---- Words. A question to the words of one node.

struct Question {
  Session& session;
  const Rule& rule;
  Side side;
  const Window& window;  // the node stands in the place of the side
  const Node& node;
  const Node* target = nullptr;  // what a reference to a scope that is not built leads to
  bool asks_pairs = false;
  bool on_target = false;  // as in the filter: a fitting pair has needed the target's word

  [[nodiscard]] const NodePattern& pattern() const { return pattern_of(rule, side); }
};

Miss miss_of_word(const Question& question, Reason reason, const CondItem* condition, const WordEntry* word) {
  Miss miss = miss_of_node(reason, pattern_part(question.side), question.node);
  miss.condition = condition;
  miss.word = word_text(word);
  return miss;
}

// `class_node`: the node if its words may be those of a class, for which no surface form is asked; else null.
void ask_surface(const Question& question, const Node* class_node, const WordEntry* word, Misses& misses) {
  const NodePattern& pattern = question.pattern();
  for (const auto& [reason, conditions] :
       {std::pair{Reason::surface_form, pattern.hw_conds}, std::pair{Reason::concept_word, pattern.cw_conds}}) {
    for (const CondItem& condition : chain<&CondItem::next>(conditions)) {
      const char* hw = reason == Reason::surface_form ? condition.text : nullptr;
      const char* cw = reason == Reason::surface_form ? nullptr : condition.text;
      const bool has = test_surface_one(class_node, *word, hw, cw);
      const bool holds = condition.op == kOpHas ? has : condition.op != kOpNot || !has;
      if (!holds) misses.push_back(miss_of_word(question, reason, &condition, word));
    }
  }
}

// Of the node and not of one word: the length of its word in force decides for all of them.
void ask_room(const Question& question, Misses& misses) {
  if (attr_room_suffices(question.side, question.rule, question.window)) return;
  misses.push_back(miss_of_word(question, Reason::attributes_too_long, nullptr, question.node.candidates));
}

// A node that rules have touched: the word in force fits, or nothing does. All that it lacks, where the filter stops at the
// first.
Misses settled_misses(const Question& question) {
  const Node& node = question.node;
  const WordEntry* word = node.candidates;
  Misses misses;
  if (word == nullptr) return {miss_of_word(question, Reason::no_word, nullptr, nullptr)};
  ask_surface(question, nullptr, word, misses);
  ask_room(question, misses);
  const Node* target =
      question.target == nullptr || scope_is_built(question.session, node.scope) != 0 ? nullptr : question.target;
  for (const CondItem& condition : chain<&CondItem::next>(question.pattern().attr_conds)) {
    const char* attr = condition.text;
    const bool has_itself = attr_has(word, attr) || (is_held(node) && head_text_has(&node, attr));
    // wanted: what the target has breaks no negated condition of a settled node
    if (condition.op == kOpNot) {
      if (has_itself) misses.push_back(miss_of_word(question, Reason::attribute_forbidden, &condition, word));
      continue;
    }
    const bool has =
        has_itself || (target != nullptr && (attr_has(target->candidates, attr) || head_text_has(target, attr)));
    if (!has) misses.push_back(miss_of_word(question, Reason::attribute_missing, &condition, word));
  }
  return misses;
}

// The word under test, and the word of the target that goes with it (null without a target). Empty if the filter would keep
// them. Sets `on_target`, which decides what words are asked next.
Misses open_word_misses(Question& question, const WordEntry* own, const WordEntry* targets) {
  Misses misses;
  ask_surface(question, targets != nullptr ? nullptr : &question.node, targets != nullptr ? targets : own, misses);
  ask_room(question, misses);
  const std::uint8_t type = question.rule.type;
  // A word test of this side is after words that miss an attribute: these are then no reason to refuse.
  const bool wants_misfits = question.side == Side::left ? type == rule_type::test_left
                                                         : type == rule_type::test || type == rule_type::test_right;
  Misses attributes;
  bool needs_target = false;
  for (const CondItem& condition : chain<&CondItem::next>(question.pattern().attr_conds)) {
    const char* attr = condition.text;
    const bool is_role = attr[0] == '<' || attr[0] == '>';
    const bool target_text_has = !is_role && head_text_has(question.target, attr);
    const bool node_text_has = head_text_has(&question.node, attr);
    if (condition.op == kOpNot) {
      if (attr_has(own, attr) || node_text_has || attr_has(targets, attr) || target_text_has)
        attributes.push_back(miss_of_word(question, Reason::attribute_forbidden, &condition, own));
      continue;
    }
    if (attr_has(own, attr) || (is_fresh(question.node) && node_text_has)) continue;
    if (attr_has(targets, attr)) {
      needs_target = true;
    } else if (!target_text_has) {
      const WordEntry* asked = targets == nullptr ? own : targets;
      attributes.push_back(miss_of_word(question, Reason::attribute_missing, &condition, asked));
    }
  }
  if (attributes.empty() && needs_target) question.on_target = true;
  if (!wants_misfits) {
    append(misses, std::move(attributes));
  } else if (attributes.empty() || (question.target != nullptr && !is_fresh(*question.target))) {
    misses.push_back(miss_of_word(question, Reason::nothing_to_object, nullptr, own));
  }
  return misses;
}

// What a word goes by in the co-occurrence dictionary.
std::string pair_name(const WordEntry* word) {
  if (word == nullptr) return {};
  const std::string_view id = text_or_empty(word->id);
  return std::string(id.empty() ? text_or_empty(word->hw) : id);
}

// Of the words that are open, in the order in which the filter asks them: nothing if one is kept, else what the nearest
// one misses.
Misses open_misses(Question& question) {
  WordEntry* own = question.node.candidates;
  WordEntry* targets = question.target == nullptr ? nullptr : question.target->candidates;
  WordEntry* fitting = nullptr;
  std::optional<Misses> nearest;
  while (own != nullptr && (question.target == nullptr || targets != nullptr)) {
    Misses misses = open_word_misses(question, own, targets);
    if (misses.empty()) {
      fitting = own;
      break;
    }
    keep_nearest(nearest, std::move(misses));
    if (question.target == nullptr) {
      own = own->next;
    } else if (!question.on_target && is_fresh(*question.target)) {
      targets = targets->next;
    } else {
      break;
    }
  }
  if (fitting == nullptr && nearest.has_value()) return std::move(*nearest);
  if (fitting == nullptr) return {miss_of_word(question, Reason::no_word, nullptr, nullptr)};
  // The words of a node that the rule brings in are chosen by what stands beside it.
  const bool has_choice = question.asks_pairs && question.rule.type == rule_type::insertion &&
                          question.target == nullptr && question.pattern().inserted != 0;
  if (!has_choice) return {};
  const Node* beside = node_of(question.window, other(question.side));
  WordEntry* beside_word = beside == nullptr ? nullptr : beside->candidates;
  const bool left = question.side == Side::left;
  // The check puts the best word in front: not in the node's own list.
  WordEntry* words = nullptr;
  if (entry_list_copy(question.session, fitting, words) != Status::ok) return {};
  WordEntry* chosen = nullptr;
  const int score = cooccurrence_check(question.session, left ? words : beside_word, left ? beside_word : words,
                                       question.rule, chosen, question.side);
  entry_list_free(question.session, chosen);
  entry_list_free(question.session, words);
  if (score != 0) return {};
  const bool left_has_role = question.rule.lnode->roles != nullptr;
  const CondItem* role = left_has_role ? question.rule.lnode->roles : question.rule.rnode->roles;
  const WordEntry* first = left_has_role == left ? beside_word : fitting;
  Miss miss = miss_of_word(question, Reason::co_occurrence, role, fitting);
  miss.detail = (role == nullptr ? std::string() : std::string(role->text)) + "(" + pair_name(first) + "," +
                pair_name(first == fitting ? beside_word : fitting) + ")";
  return {std::move(miss)};
}

// filter_candidates.
Misses node_misses(Session& session, const Rule& rule, Side side, const Window& window, bool asks_pairs) {
  const Node* node = node_of(window, side);
  if (node == nullptr) return {{.reason = Reason::place_empty, .part = pattern_part(side)}};
  const bool aims_here = rule.type == (side == Side::left ? rule_type::test_left : rule_type::test_right);
  if (aims_here && is_boundary(*node)) return {miss_of_node(Reason::test_at_boundary, pattern_part(side), *node)};
  if (rule.type == rule_type::merge_left || rule.type == rule_type::merge_right) {
    const Side dropped_side = rule.type == rule_type::merge_left ? Side::left : Side::right;
    const Node* dropped = node_of(window, dropped_side);
    if (dropped == nullptr) return {{.reason = Reason::place_empty, .part = pattern_part(dropped_side)}};
    if (is_boundary(*dropped) || dropped == current_scope(session).entry)
      return {miss_of_node(Reason::merge_of_boundary_or_entry, pattern_part(dropped_side), *dropped)};
  }
  const bool looks_through = rule.type == rule_type::insertion || is_word_test_type(rule.type);
  Question question{session, rule, side, window, *node};
  if (looks_through && is_unbuilt_reference(session, *node)) question.target = scope_final_node(session, node->scope);
  question.asks_pairs = asks_pairs;
  const Node* target = question.target;
  const bool is_open = target != nullptr ? is_fresh(*target) || (is_fresh(*node) && is_held(*target)) : is_fresh(*node);
  return is_open ? open_misses(question) : settled_misses(question);
}

// ---- Context. The walk of context_match.cpp, which keeps the failure that lies furthest from the window.

struct Walk {
  RulePart part;
  Side side;
  Miss furthest{};
  int distance = -1;  // of it from the window, in nodes; -1: nothing has failed yet
};

// Keeps a failure that lies as far out as the furthest so far, or further.
void note(Walk& walk, int distance, Reason reason, const ContextGroup& group, const CondItem* condition,
          const Node* node) {
  if (distance < walk.distance) return;
  walk.distance = distance;
  walk.furthest = node == nullptr ? Miss{} : miss_of_node(reason, walk.part, *node);
  walk.furthest.reason = reason;
  walk.furthest.part = walk.part;
  walk.furthest.group = &group;
  walk.furthest.condition = condition;
  if (node != nullptr) walk.furthest.word = word_text(node->candidates);
}

// Does the node meet what the group asks? The first condition that it does not is noted.
bool group_fits(Walk& walk, int distance, const ContextGroup& group, const Node& node) {
  const WordEntry& word = *node.candidates;
  // wanted: to the left no group asks for a surface form or a concept
  if (walk.side == Side::right) {
    for (const CondItem* conditions : {group.hw_conds, group.cw_conds}) {
      for (const CondItem& condition : chain<&CondItem::next>(conditions)) {
        const bool is_hw = conditions == group.hw_conds;
        const bool has =
            test_surface_one(nullptr, word, is_hw ? condition.text : nullptr, is_hw ? nullptr : condition.text);
        const bool holds = condition.op == kOpHas ? has : condition.op != kOpNot || !has;
        if (holds) continue;
        note(walk, distance, Reason::context_condition, group, &condition, &node);
        return false;
      }
    }
  }
  for (const CondItem& condition : chain<&CondItem::next>(group.attr_conds)) {
    if (attr_has(&word, condition.text) == (condition.op != kOpNot)) continue;
    note(walk, distance, Reason::context_condition, group, &condition, &node);
    return false;
  }
  return true;
}

// Do the groups match from `node` on? Each star is tried as short as the rest allows, as in the walk of a match.
bool walk_groups(const Session& session, Walk& walk, GroupCursor groups, const Node* node, int distance) {
  bool has_matched = false;
  while (groups.group != nullptr) {
    if (must_leave(session) != Status::ok) return false;
    const ContextGroup& group = *groups.group;
    const bool is_usable = node != nullptr && node->candidates != nullptr && (is_boundary(*node) || !is_fresh(*node));
    if (!is_usable) {
      note(walk, distance, node == nullptr ? Reason::context_ended : Reason::context_untouched, group, nullptr, node);
      return false;
    }
    if (!group_fits(walk, distance, group, *node)) {
      if (group.star == 0) return false;
      groups = groups.next();
      continue;
    }
    has_matched = true;
    if (group.star != 0) {
      if (walk_groups(session, walk, groups.next(), node, distance)) return true;
    } else {
      groups = groups.next();
    }
    node = neighbour(*node, walk.side);
    ++distance;
  }
  return has_matched;
}

Miss context_miss(const Session& session, RulePart part, Side side, GroupCursor groups, const Node* node) {
  Walk walk{part, side};
  if (!walk_groups(session, walk, groups, node, 0) && walk.distance >= 0) return walk.furthest;
  // All groups have stars and none has taken a node.
  Miss miss;
  miss.reason = Reason::context_condition;
  miss.part = part;
  miss.group = groups.group;
  return miss;
}

// ---- The rule.

struct Asking {
  Session& session;
  Match match;       // of its own: its window slides as that of a match does
  bool was_refused;  // see `rule_misses`
  Misses misses;     // so far, in the order of the steps of a match
};

bool stands_for_retry(const Node* node) {
  return node != nullptr && is_marked(*node);
}

bool is_tested(const Match& match, Side side) {
  return pattern_of(match.rule, side).inserted == 0 || stands_for_retry(node_of(match.window, side));
}

// is_refused of match.cpp.
std::optional<Miss> miss_at_once(const Match& match) {
  const Rule& rule = match.rule;
  for (const Side side : {Side::left, Side::right}) {
    const CondItem* relation = pattern_of(rule, side).relations;
    if (has_brace_patterns(rule) && relation != nullptr)
      return Miss{.reason = Reason::relation_between_braces, .part = pattern_part(side), .condition = relation};
  }
  for (const Side side : {Side::left, Side::right}) {
    const bool aims_here = rule.type == (side == Side::left ? rule_type::test_left : rule_type::test_right);
    const Node* node = node_of(match.window, side);
    if (aims_here && node != nullptr && is_boundary(*node))
      return miss_of_node(Reason::test_at_boundary, pattern_part(side), *node);
  }
  for (const Side side : {Side::left, Side::right}) {
    const Node* node = node_of(match.window, side);
    if (rule.mid == nullptr || pattern_of(rule, side).inserted == 0 || !stands_for_retry(node)) continue;
    if (node == of_side(side, match.candidate.lnode, match.candidate.rnode)) return std::nullopt;
    return miss_of_node(Reason::waits_for_another_candidate, pattern_part(side), *node);
  }
  return std::nullopt;
}

void ask_side(Asking& asking, Side side) {
  const Match& match = asking.match;
  if (!is_tested(match, side)) return;
  const Node* node = node_of(match.window, side);
  if (node == nullptr) {
    asking.misses.push_back({.reason = Reason::place_empty, .part = pattern_part(side)});
    return;
  }
  const ContextGroup* beyond = groups_beyond(match.rule, side);
  Node* next = neighbour(*node, side);
  GroupMark mark{.confirms_links = false};
  if (beyond != nullptr && match_context(asking.session, side, {beyond}, next, mark) == nullptr)
    asking.misses.push_back(context_miss(asking.session, beyond_part(side), side, {beyond}, next));
  append(asking.misses, node_misses(asking.session, match.rule, side, match.window, asking.was_refused));
  // A relation of a pattern in braces must join the node to something.
  const NodePattern& pattern = pattern_of(match.rule, side);
  if (pattern.inserted != 0 || pattern.relations == nullptr) return;
  Miss miss = miss_of_node(Reason::relation_missing, pattern_part(side), *node);
  miss.condition = pattern.relations;
  const bool may_be_of_any_scope = is_tested(match, other(side));
  for (const Relation& arc : chain<&Relation::next>(node->relations)) {
    if (std::strcmp(arc.label, pattern.relations->text) != 0) continue;
    if (arc.to != node) {
      if (arc.from == node) miss.reason = Reason::relation_turned;
      continue;
    }
    if (may_be_of_any_scope || arc.scope == current_scope(asking.session).number) return;
    miss.reason = Reason::relation_of_other_scope;
  }
  asking.misses.push_back(std::move(miss));
}

// Leaves the match's window where the match would stand behind MID, or says why it cannot get there.
void ask_slide(Asking& asking) {
  Match& match = asking.match;
  const Rule& rule = match.rule;
  const Window before = match.window;
  if (slide_over_mid(asking.session, match)) return;
  const Side side = rule.lnode->inserted != 0 ? Side::left : Side::right;
  Node* start = node_of(before, other(side));
  if (rule.mid != nullptr && start != nullptr) {
    GroupMark mark{.group = groups_beyond(rule, side), .confirms_links = false};
    const GroupCursor groups{rule.mid, groups_beyond(rule, side)};
    if (match_context(asking.session, side, groups, neighbour(*start, side), mark) == nullptr) {
      asking.misses.push_back(context_miss(asking.session, RulePart::mid, side, groups, neighbour(*start, side)));
      return;
    }
  }
  asking.misses.push_back({.reason = Reason::list_too_short});
}

// What the nearest node would miss that an arc with the label leads to.
Misses arc_misses(Asking& asking, Side side) {
  Session& session = asking.session;
  const Match& match = asking.match;
  const Node* anchor = node_of(match.passed, other(side));
  if (anchor == nullptr) return {{.reason = Reason::place_empty, .part = pattern_part(other(side))}};
  const CondItem* own = pattern_of(match.rule, side).relations;
  const CondItem* named = own != nullptr ? own : pattern_of(match.rule, other(side)).relations;
  Miss none = miss_of_node(Reason::relation_missing, pattern_part(own != nullptr ? side : other(side)), *anchor);
  none.condition = named;
  std::optional<Misses> nearest;
  for (Relation& arc :
       chain<&Relation::next>(anchor->origin == nullptr ? anchor->relations : anchor->origin->relations)) {
    if (std::strcmp(arc.label, named->text) != 0) continue;
    const bool leads_on = is_same_or_origin(own != nullptr ? arc.from : arc.to, *anchor);
    const bool is_turned = !leads_on && is_same_or_origin(own != nullptr ? arc.to : arc.from, *anchor);
    if (is_turned && none.reason == Reason::relation_missing) none.reason = Reason::relation_turned;
    if (!leads_on) continue;
    if (arc.scope != current_scope(session).number) {
      none.reason = Reason::relation_of_other_scope;
    } else if (arc.used != 0) {
      none.reason = Reason::relation_used;
    } else {
      Node& node = own != nullptr ? *arc.to : *arc.from;
      if (is_scope_reference(node) && scope_entry_node(session, node.scope) == nullptr) {
        none.reason = Reason::scope_without_entry;
        break;
      }
      // A stand-in is asked, with the block of the current scope in front: the order of the node's own blocks counts for
      // other rules. A node that stands or stood in a list comes in as a copy with fresh words, which shows what the
      // node has gathered.
      Node asked = node;
      ScopeAttrs block{};
      if (node.scope_attrs != nullptr) {
        const ScopeAttrs* current = scope_attrs_find(node, current_scope(session).number);
        block = current != nullptr ? *current : *node.scope_attrs;
        asked.scope_attrs = &block;
      }
      if (!is_fresh(node)) {
        asked.matches = nullptr;
        asked.origin = asked.source = &node;
        const bool stands_for_built_scope = is_scope_reference(node) && scope_is_built(session, node.scope) != 0;
        if (!stands_for_built_scope) asked.candidates = node.entries;
        if (node.scope_attrs != nullptr) marked_attrs_append(block, node);
      }
      const Window offered = window_with(match.window, side, &asked);
      keep_nearest(nearest, node_misses(session, match.rule, side, offered, asking.was_refused));
    }
  }
  if (nearest.has_value()) return std::move(*nearest);
  return {std::move(none)};
}

// make_literal.
Misses literal_misses(Asking& asking, Side side) {
  Session& session = asking.session;
  const Match& match = asking.match;
  const NodePattern& pattern = pattern_of(match.rule, side);
  Miss none{.reason = Reason::literal_without_text, .part = pattern_part(side)};
  if (pattern.hw_conds == nullptr && pattern.cw_conds == nullptr) return {none};
  const char* hw = pattern.hw_conds == nullptr ? nullptr : pattern.hw_conds->text;
  const char* cw = pattern.cw_conds == nullptr ? nullptr : pattern.cw_conds->text;
  none.condition = hw != nullptr ? pattern.hw_conds : pattern.cw_conds;
  none.reason = Reason::literal_lookup_failed;
  Node node{};
  if (dict_select(session, hw, cw, node.candidates) != Status::ok) return {none};
  Rule rule = match.rule;
  NodePattern rest = pattern;
  if (node.candidates == nullptr) {
    const bool is_tested_again = side == Side::left && match.mid_mark.hit == nullptr && match.rule.pre != nullptr;
    Node* beyond = is_tested_again ? match.window.rnode->left : nullptr;
    if (is_tested_again && match_context(session, side, match.rule.pre, beyond) == nullptr)
      return {context_miss(session, RulePart::pre, side, {match.rule.pre}, beyond)};
    if (hw != nullptr && hw[0] == '#') node.candidates = word_class_entries(session, match.rule, side);
    none.reason = Reason::literal_unknown;
    const bool is_affirmative = (pattern.hw_conds != nullptr && pattern.hw_conds->op == kOpHas) ||
                                (pattern.cw_conds != nullptr && pattern.cw_conds->op == kOpHas);
    if (node.candidates == nullptr) return is_affirmative ? Misses{} : Misses{none};
    rest.hw_conds = rest.cw_conds = nullptr;
    of_side(side, rule.lnode, rule.rnode) = &rest;
  }
  Misses misses = node_misses(session, rule, side, window_with(match.window, side, &node), asking.was_refused);
  for (Miss& miss : misses) miss.node = hw != nullptr ? hw : cw;
  entry_list_free(session, node.candidates);
  return misses;
}

// The place beside which the node is to come, and then the node itself. The dictionary is asked only if nothing else was
// missing: that costs a lookup.
void ask_insertion(Asking& asking, Side side) {
  Match& match = asking.match;
  if (!shifted_text_fits(match.rule, match.window, side)) {
    const Node* beside = node_of(match.window, other(side));
    Miss miss = beside == nullptr ? Miss{} : miss_of_node(Reason::shifted_text, pattern_part(side), *beside);
    miss.reason = Reason::shifted_text;
    miss.condition = pattern_of(match.rule, side).hw_conds;
    asking.misses.push_back(std::move(miss));
    return;
  }
  const Node* beside = node_of(match.window, other(side));
  if (!find_place(asking.session, match, side)) {
    if (beside == nullptr) {
      asking.misses.push_back({.reason = Reason::place_empty, .part = pattern_part(other(side))});
    } else {
      asking.misses.push_back(context_miss(asking.session, beyond_part(side), side, {groups_beyond(match.rule, side)},
                                           neighbour(*beside, side)));
    }
    return;
  }
  if (match.rule.type == (side == Side::left ? rule_type::shift_left : rule_type::shift_right)) return;
  const bool by_arc = match.rule.lnode->relations != nullptr || match.rule.rnode->relations != nullptr;
  if (by_arc) {
    append(asking.misses, arc_misses(asking, side));
  } else if (asking.misses.empty()) {
    append(asking.misses, literal_misses(asking, side));
  }
}

// Nothing that is asked here shows in the trace.
class Silence {
 public:
  explicit Silence(Session& session)
      : session_(session), level_(std::exchange(session.state.trace_level, std::int8_t{0})) {}
  ~Silence() { session_.state.trace_level = level_; }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  Session& session_;
  std::int8_t level_;
};

}  // namespace

std::vector<Miss> rule_misses(Session& session, const RuleCandidate& candidate, const Window& window,
                              bool was_refused) {
  const Silence silence(session);
  RuleCandidate asked = candidate;
  Asking asking{session, {asked, *candidate.rule, window, window}, was_refused, {}};
  // The match may have said no before it came to walk over these nodes.
  asking.match.mid_mark.confirms_links = false;
  if (std::optional<Miss> miss = miss_at_once(asking.match)) return {std::move(*miss)};
  for (const Side side : {Side::left, Side::right}) ask_side(asking, side);
  const bool has_places = window.lnode != nullptr || window.rnode != nullptr;
  if (has_places) ask_slide(asking);
  for (const Side side : {Side::left, Side::right}) {
    if (is_tested(asking.match, side)) continue;
    ask_insertion(asking, side);
    break;
  }
  const bool has_both = window.lnode != nullptr && window.rnode != nullptr;
  if (asking.misses.empty() && !has_both && has_brace_patterns(*candidate.rule))
    asking.misses.push_back({.reason = Reason::place_empty});
  return std::move(asking.misses);
}

// ---- The index.

namespace {

// One side of the window, as the index sees it.
struct IndexSide {
  Side side;
  const Node* node;             // null: the side lets every rule through
  const Node* entry = nullptr;  // of the scope that the node stands for, not built
};

// False if an entry is missing on the way, or the references run in a circle: there are no rules at all then.
bool see_through(const Session& session, IndexSide& side) {
  if (side.node == nullptr || !is_scope_reference(*side.node) || scope_is_built(session, side.node->scope) != 0)
    return true;
  int scope = side.node->scope;
  for (int steps = 0; steps <= kMaxScopes; ++steps) {
    side.entry = scope_entry_node(session, scope);
    if (side.entry == nullptr) return false;
    if (!is_scope_reference(*side.entry)) return true;
    scope = side.entry->scope;
  }
  return false;
}

// What the nearest word of the side misses. `own` is the reference's word where the words are those of an entry node.
Misses index_side_misses(const IndexSide& side, const Rule& rule) {
  if (side.node == nullptr) return {};
  const bool settled = side.node->matches != nullptr && (side.entry == nullptr || side.entry->matches != nullptr);
  if (side.node->candidates == nullptr) {
    if (settled) return {};
    return {miss_of_node(Reason::no_word, pattern_part(side.side), *side.node)};
  }
  const WordEntry* own = side.entry == nullptr ? nullptr : side.node->candidates;
  const WordEntry* word = side.entry == nullptr ? side.node->candidates : side.entry->candidates;
  std::optional<Misses> nearest;
  bool is_first = true;
  do {
    Misses misses;
    for (const CondItem& condition : chain<&CondItem::next>(pattern_of(rule, side.side).attr_conds)) {
      const char* attr = condition.text;
      bool is_missed = false;
      if (condition.op == kOpNot) {
        // The word of a reference is in the way of the first word of the entry node alone, and a name with commas is in
        // no word's way.
        const bool is_one_piece = std::strchr(attr, ',') == nullptr;
        is_missed = is_one_piece && (attr_has(word, attr) || (is_first && attr_has(own, attr)));
      } else if (condition.op == kOpHas) {
        is_missed = !attr_has(word, attr) && !attr_has(own, attr) && !head_text_has(side.node, attr) &&
                    !head_text_has(side.entry, attr);
      }
      if (!is_missed) continue;
      const Reason reason = condition.op == kOpNot ? Reason::attribute_forbidden : Reason::attribute_missing;
      misses.push_back(miss_of_node(reason, pattern_part(side.side), *side.node));
      misses.back().condition = &condition;
      misses.back().word = word_text(word);
    }
    keep_nearest(nearest, std::move(misses));
    is_first = false;
    if (word != nullptr) word = word->next;
  } while (word != nullptr && !settled);
  return std::move(*nearest);
}

}  // namespace

std::vector<Miss> index_misses(Session& session, const Rule& rule, const Window& window) {
  IndexSide left{Side::left, window.lnode};
  IndexSide right{Side::right, window.rnode};
  if (left.node == nullptr && right.node == nullptr) return {{.reason = Reason::place_empty}};
  for (IndexSide* side : {&left, &right}) {
    if (!see_through(session, *side))
      return {miss_of_node(Reason::scope_without_entry, pattern_part(side->side), *side->node)};
  }
  Misses of_left = index_side_misses(left, rule);
  Misses of_right = index_side_misses(right, rule);
  const bool passes = (of_left.empty() && of_right.empty()) || (of_left.empty() && rule.rnode->inserted != 0) ||
                      (of_right.empty() && rule.lnode->inserted != 0);
  if (passes) return {};
  // What an inserted pattern asks for is not held against the window.
  const bool both_inserted = rule.lnode->inserted != 0 && rule.rnode->inserted != 0;
  Misses misses;
  if (both_inserted || rule.lnode->inserted == 0) append(misses, std::move(of_left));
  if (both_inserted || rule.rnode->inserted == 0) append(misses, std::move(of_right));
  return misses;
}

// ---- What is known by other means.

NodeSource source_of_node(Session& session, const Rule& rule, Side side, const Node& node) {
  if (rule.lnode->relations != nullptr || rule.rnode->relations != nullptr) return NodeSource::relation;
  if (kind_bits(node) == kKindClassWord) return NodeSource::word_class;
  const NodePattern& pattern = pattern_of(rule, side);
  WordEntry* words = nullptr;
  const Status status = dict_select(session, pattern.hw_conds == nullptr ? nullptr : pattern.hw_conds->text,
                                    pattern.cw_conds == nullptr ? nullptr : pattern.cw_conds->text, words);
  const bool is_in_dictionary = status == Status::ok && words != nullptr;
  entry_list_free(session, words);
  return is_in_dictionary ? NodeSource::dictionary : NodeSource::pattern;
}

}  // namespace lexon
