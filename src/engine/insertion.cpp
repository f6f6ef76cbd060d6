#include "engine/insertion.hpp"

#include <cstring>
#include <string_view>

#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/filter.hpp"
#include "engine/literal.hpp"
#include "engine/undo.hpp"

namespace lexon {

namespace {

bool is_lone_empty_star(const ContextGroup* group) {
  return group != nullptr && group->attr_conds == nullptr && group->star != 0 && group->next == nullptr;
}

// Which arcs bring a node in.
struct ArcChoice {
  const char* label;
  bool leads_away;  // the node is at the `to` end, what stands in the window at the `from` end; else the other way
};

ArcChoice arc_choice(const Rule& rule, Side side) {
  const CondItem* own = pattern_of(rule, side).relations;
  if (own != nullptr) return {own->text, true};
  return {pattern_of(rule, other(side)).relations->text, false};
}

bool is_chosen(Session& session, const Relation& arc, const ArcChoice& choice, const Node& anchor) {
  const int scope = current_scope(session).number;
  if (arc.scope != scope || arc.used != 0 || std::strcmp(arc.label, choice.label) != 0) return false;
  return is_same_or_origin(choice.leads_away ? arc.from : arc.to, anchor);
}

// A node that no rule has touched comes in itself.
Fit offer_node(Session& session, Match& match, Side side, Node& node) {
  const Fit fit = filter_candidates(session, side, match.rule, match.candidate, window_with(match.window, side, &node),
                                    match.chosen);
  Node* beside = node_of(match.window, other(side));
  // An arc from a node to itself puts it beside itself: the list shows it, and the next match is refused.
  if (fit == Fit::no || beside == &node || !stands_in_list(session, beside, &node)) return fit;
  rule_base_failure(session, "a relation brings in a node that stands in the list already and is fresh");
  return Fit::failed;
}

// Gives the arc back, and takes what the copy has inherited off the shared text.
void give_up_copy(Session& session, Relation& arc, Node* copy, ScopeAttrs* block, std::size_t old_length) {
  if (arc.to == copy) {
    arc.to = copy->origin;
  } else if (arc.from == copy) {
    arc.from = copy->origin;
  }
  copy->origin = nullptr;
  if (block != nullptr) block->text[old_length] = '\0';
  node_free(session, copy);
}

// A node that stands or stood in a list comes in as a copy.
Fit offer_copy(Session& session, Match& match, Side side, Relation& arc, Node& node, Node*& copy) {
  ScopeAttrs* block = node.scope_attrs;
  const std::size_t old_length = block == nullptr ? 0 : std::strlen(block->text);
  if (node_copy(session, copy, node, &arc, 0) != Status::ok) return Fit::failed;
  const Fit fit = filter_candidates(session, side, match.rule, match.candidate, window_with(match.window, side, copy),
                                    match.chosen);
  if (fit == Fit::no) give_up_copy(session, arc, copy, block, old_length);
  return fit;
}

Fit offer(Session& session, Match& match, Side side, Relation& arc, Node& node, Node*& placed) {
  placed = &node;
  scope_attrs_to_front(node, arc.scope);
  return is_fresh(node) ? offer_node(session, match, side, node) : offer_copy(session, match, side, arc, node, placed);
}

Fit find_by_arc(Session& session, Match& match, Side side, Node*& placed) {
  const Node* anchor = node_of(match.passed, other(side));
  if (anchor == nullptr) return Fit::no;
  const ArcChoice choice = arc_choice(match.rule, side);
  Relation* arcs = anchor->origin == nullptr ? anchor->relations : anchor->origin->relations;
  for (Relation& arc : chain<&Relation::next>(arcs)) {
    if (must_leave(session) != Status::ok) return Fit::no;
    if (!is_chosen(session, arc, choice, *anchor)) continue;
    Node& node = choice.leads_away ? *arc.to : *arc.from;
    if (is_scope_reference(node) && scope_entry_node(session, node.scope) == nullptr) return Fit::no;
    match.arc = &arc;
    if (const Fit fit = offer(session, match, side, arc, node, placed); fit != Fit::no) return fit;
  }
  return Fit::no;
}

}  // namespace

bool is_same_or_origin(const Node* end, const Node& node) {
  return end == &node || (end != nullptr && end == node.origin);
}

bool shifted_text_fits(const Match& match, Side side) {
  const std::uint8_t shift_type = side == Side::left ? rule_type::shift_left : rule_type::shift_right;
  if (match.rule.type != shift_type) return true;
  const Node* shifted = node_of(match.window, other(side));
  const std::string_view hw =
      text_or_empty(shifted == nullptr || shifted->candidates == nullptr ? nullptr : shifted->candidates->hw);
  const CondItem* condition = pattern_of(match.rule, side).hw_conds;
  if (hw.empty() || condition == nullptr) return !hw.empty();
  const std::string_view text = condition->text;
  // wanted: an empty text refuses to the left and passes to the right
  return side == Side::left ? !text.empty() && hw.starts_with(text) : hw.ends_with(text);
}

bool find_place(Session& session, Match& match, Side side) {
  Node*& beside = node_of(match.window, other(side));
  const ContextGroup* beyond = groups_beyond(match.rule, side);
  if (beside == nullptr) return false;
  if (beyond == nullptr || match.mid_mark.hit != nullptr) return true;
  Node* next = neighbour(*beside, side);
  while (next != nullptr && match_context(session, side, beyond, next) == nullptr) {
    if (must_leave(session) != Status::ok || !is_lone_empty_star(match.rule.mid)) return false;
    beside = next;
    next = neighbour(*beside, side);
  }
  return next != nullptr || is_lone_empty_star(beyond);
}

Fit bring_in(Session& session, Match& match, Side side) {
  const bool by_arc = match.rule.lnode->relations != nullptr || match.rule.rnode->relations != nullptr;
  Node* placed = nullptr;
  const Fit fit = by_arc ? find_by_arc(session, match, side, placed) : make_literal(session, match, side, placed);
  // wanted: a co-occurrence lookup that failed (`refused`) counts as a fit
  if (fit != Fit::yes && fit != Fit::refused) return fit;
  Node& beside = *node_of(match.window, other(side));
  side == Side::left ? node_insert_before(beside, *placed) : node_insert_after(beside, *placed);
  node_of(match.window, side) = placed;
  return Fit::yes;
}

}  // namespace lexon
