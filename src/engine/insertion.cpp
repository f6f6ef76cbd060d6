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

// A MID or context that is "( )*": any number of nodes, whatever attributes they have.
bool is_lone_empty_star(const ContextGroup* group) {
  return group != nullptr && group->attr_conds == nullptr && group->star != 0 && group->next == nullptr;
}

// Gives the node that the arc leads to a try: filters its words, in the place of `side`. `placed` is what would come in.
Fit offer(Session& session, Match& match, Side side, Relation& arc, Node& node, Node*& placed) {
  Node* beside = node_of(match.window, other(side));
  session.state.turned = nullptr;  // the node and its copy share their blocks with nodes of the list
  scope_attrs_to_front(node, arc.scope);
  if (is_fresh(node)) {
    // A node that no rule has touched comes in itself.
    placed = &node;
    const Fit fit = filter_candidates(session, side, match.rule, match.candidate,
                                      window_with(match.window, side, &node), match.chosen);
    // An arc from a node to itself puts it beside itself: the list shows it, and the next match is refused.
    if (fit == Fit::no || beside == &node || !node.was_listed || !stands_in_list(session, beside, &node)) return fit;
    rule_base_failure(session, "a relation brings in a node that stands in the list already and is fresh");
    return Fit::failed;
  }
  // A node that stands or stood in a list comes in as a copy, which takes over the node's end of the arc, and shares
  // its attribute blocks.
  ScopeAttrs* block = node.scope_attrs;
  const std::size_t old_length = block == nullptr ? 0 : std::strlen(block->text);
  if (node_copy(session, placed, node, &arc, 0) != Status::ok) return Fit::failed;
  const Fit fit = filter_candidates(session, side, match.rule, match.candidate, window_with(match.window, side, placed),
                                    match.chosen);
  if (fit != Fit::no) return fit;
  // The arc goes back, and the shared text loses what it got from the copying.
  if (arc.to == placed) {
    arc.to = placed->origin;
  } else if (arc.from == placed) {
    arc.from = placed->origin;
  }
  placed->origin = nullptr;
  if (block != nullptr) block->text[old_length] = '\0';
  node_free(session, placed);
  return Fit::no;
}

// Looks for an arc of the current scope with the label that the rule names, from what stands in the window.
Fit find_by_arc(Session& session, Match& match, Side side, Node*& placed) {
  const Node* anchor = node_of(match.passed, other(side));
  if (anchor == nullptr) return Fit::no;
  // A label in the pattern of the node to come leads to it; one in the other pattern leads away from it.
  const CondItem* own = pattern_of(match.rule, side).relations;
  const char* label = own != nullptr ? own->text : pattern_of(match.rule, other(side)).relations->text;
  const int scope = current_scope(session).number;
  Relation* arcs = anchor->origin == nullptr ? anchor->relations : anchor->origin->relations;
  for (Relation& arc : chain<&Relation::next>(arcs)) {
    if (must_leave(session) != Status::ok) return Fit::no;
    // The ends first: the lists of nodes join, and most arcs of a list belong to others.
    if (!is_same_or_origin(own != nullptr ? arc.from : arc.to, *anchor)) continue;
    if (arc.scope != scope || arc.used != 0 || std::strcmp(arc.label, label) != 0) continue;
    Node& node = own != nullptr ? *arc.to : *arc.from;
    // wanted: a scope without an entry ends the search, whatever arcs are left.
    if (is_scope_reference(node) && scope_entry_node(session, node.scope) == nullptr) return Fit::no;
    match.arc = &arc;
    if (const Fit fit = offer(session, match, side, arc, node, placed); fit != Fit::no) return fit;
  }
  return Fit::no;
}

}  // namespace

bool shifted_text_fits(const Rule& rule, const Window& window, Side side) {
  const std::uint8_t shift_type = side == Side::left ? rule_type::shift_left : rule_type::shift_right;
  if (rule.type != shift_type) return true;
  const Node* shifted = node_of(window, other(side));
  const char* hw =
      text_or_empty(shifted == nullptr || shifted->candidates == nullptr ? nullptr : shifted->candidates->hw);
  const CondItem* condition = pattern_of(rule, side).hw_conds;
  if (*hw == '\0' || condition == nullptr) return *hw != '\0';
  if (side == Side::right) return std::string_view(hw).ends_with(condition->text);
  // By the character: most words differ from most texts in the first one.
  const char* text = condition->text;
  // wanted: an empty text refuses to the left and passes to the right
  if (*text == '\0') return false;
  while (*text != '\0' && *text == *hw) ++text, ++hw;
  return *text == '\0';
}

bool find_place(Session& session, Match& match, Side side) {
  Node*& beside = node_of(match.window, other(side));
  const ContextGroup* beyond = groups_beyond(match.rule, side);
  // Nothing can come to stand beside an empty place.
  if (beside == nullptr) return false;
  // The walk over MID has already found what lies beyond.
  if (beyond == nullptr || match.mid_mark.hit != nullptr) return true;
  Node* next = neighbour(*beside, side);
  GroupMark mark{.confirms_links = match.mid_mark.confirms_links};
  while (next != nullptr && match_context(session, side, {beyond}, next, mark) == nullptr) {
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
  // It stands between the other place of the window and that one's neighbour.
  Node& beside = *node_of(match.window, other(side));
  side == Side::left ? node_insert_before(session, beside, *placed) : node_insert_after(session, beside, *placed);
  node_of(match.window, side) = placed;
  return Fit::yes;
}

}  // namespace lexon
