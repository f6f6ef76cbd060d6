// The steps of a match, in this order:
//   refusals     forms of a rule that never fit, and places where a word test must not work
//   turn         every node of the list shows the attributes of the scope that is being generated
//   test         each node that stands there already: what lies beyond it, its words, and its arc
//   slide        MID is walked over, and the window stands behind it
//   bring in     at most one node enters the list, on the left if both patterns ask for one
//   settle       graph attributes go into the words, and the mark of a co-occurrence choice
//   verdict      records on both nodes, or a refusal that leads to backtracking
//   hand over    the window, the candidate's nodes, and the arc that is used up
#include "engine/match.hpp"

#include <cstring>
#include <optional>

#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/apply.hpp"
#include "engine/filter.hpp"
#include "engine/graph_attrs.hpp"
#include "engine/insertion.hpp"
#include "engine/match_state.hpp"
#include "engine/observer.hpp"
#include "engine/surface.hpp"
#include "engine/trace.hpp"

namespace lexon {

namespace {

// Does the rule bring in this side's node?
bool inserts(const Rule& rule, Side side) {
  return pattern_of(rule, side).inserted != 0;
}

// An inserted node that undo has left in its place for another try.
bool stands_for_retry(const Node* node) {
  return node != nullptr && is_marked(*node);
}

// Is the node of this side there already? Else the rule has to bring it in.
bool is_tested(const Match& match, Side side) {
  return !inserts(match.rule, side) || stands_for_retry(node_of(match.window, side));
}

// ---- Refusals.

bool is_refused(const Match& match) {
  const Rule& rule = match.rule;
  const Window& window = match.window;
  const bool has_relations = rule.lnode->relations != nullptr || rule.rnode->relations != nullptr;
  if (has_brace_patterns(rule) && has_relations) return true;
  // A forced word test needs a word to go back for, and a boundary has one only.
  const Node* aimed_at = nullptr;
  if (rule.type == rule_type::test_left) aimed_at = window.lnode;
  if (rule.type == rule_type::test_right) aimed_at = window.rnode;
  if (aimed_at != nullptr && is_boundary(*aimed_at)) return true;
  if (rule.mid == nullptr) return false;
  // A node that waits for another try belongs to the candidate that brought it in, if MID has moved the window since.
  for (const Side side : {Side::left, Side::right}) {
    const Node* node = node_of(window, side);
    if (inserts(rule, side) && stands_for_retry(node))
      return node != of_side(side, match.candidate.lnode, match.candidate.rnode);
  }
  return false;
}

// ---- Turn.

// One walk does for all the rules that a window is offered, until one of them touches the list. Where each word has the
// attributes of one scope there is nothing to turn.
Status turn_to_current_scope(Session& session, const Window& window) {
  Node* member = window.lnode != nullptr ? window.lnode : window.rnode;
  EngineState& state = session.state;
  const int scope = current_scope(session).number;
  if (member != nullptr && state.turned == member && state.turned_scope == scope) return Status::ok;
  if (session.sentence.has_loop || session.sentence.has_scopes_mixed) {
    Node* first = list_first(member);
    if (first != nullptr && first->left == first) return rule_base_failure(session, "put a node beside itself");
    for (Node& node : chain<&Node::right>(first)) {
      if (const Status s = must_leave(session); s != Status::ok) return s;
      scope_attrs_to_front(node, scope);
    }
  }
  state.turned = member;
  state.turned_scope = scope;
  return Status::ok;
}

// ---- Test.

Fit test_side(Session& session, Match& match, Side side) {
  if (!is_tested(match, side)) return Fit::yes;
  Node* node = node_of(match.window, side);
  if (node == nullptr) {
    rule_base_failure(session, "tested a place beyond the end of the list");
    return Fit::failed;
  }
  const NodePattern& pattern = pattern_of(match.rule, side);
  // What lies beyond the node is tested first, then its words.
  const ContextGroup* beyond = groups_beyond(match.rule, side);
  Fit fit = Fit::no;
  if (beyond == nullptr || match_context(session, side, beyond, neighbour(*node, side)) != nullptr)
    fit = filter_candidates(session, side, match.rule, match.candidate, match.window, match.chosen);
  if (must_leave(session) != Status::ok) return Fit::failed;
  if (fit == Fit::no && pattern.inserted != 0) {
    // The node was left for another try, and has tried all its words.
    trace_no_matched_word(session, side);
    entry_list_free(session, node->candidates);
    return Fit::refused;
  }
  // wanted: a co-occurrence lookup that failed (`refused`) counts as a fit
  if (fit != Fit::yes && fit != Fit::refused) return fit;
  if (pattern.inserted != 0 || pattern.relations == nullptr) return Fit::yes;
  // A relation on a node that is there must join it to something. Where the other node is there too, for another try,
  // the arc may be of any scope.
  const bool may_be_of_any_scope = is_tested(match, other(side));
  match.arc = nullptr;
  for (Relation& arc : chain<&Relation::next>(node->relations)) {
    const bool is_of_scope = may_be_of_any_scope || arc.scope == current_scope(session).number;
    // wanted: both sides look at the end of the arc
    if (!is_of_scope || arc.to != node || std::strcmp(arc.label, pattern.relations->text) != 0) continue;
    match.arc = &arc;
    return Fit::yes;
  }
  return Fit::no;
}

// ---- Settle and verdict.

// The types of generation that may be carried out on any window.
bool changes_list(std::uint8_t type) {
  switch (type) {
    case rule_type::exchange:
    case rule_type::right:
    case rule_type::left:
    case rule_type::insertion:
    case rule_type::insertion_a:
    case rule_type::copy_left:
    case rule_type::copy_right:
    case rule_type::merge_left:
    case rule_type::merge_right: return true;
    default: return false;
  }
}

// Graph attributes go into both words, and the mark of a co-occurrence choice. Then both nodes get the record of this
// match, if the rule may be carried out; `applies` says so.
Status settle(Session& session, Match& match, bool& applies) {
  const Rule& rule = match.rule;
  RuleCandidate& candidate = match.candidate;
  Node& left = *match.window.lnode;
  Node& right = *match.window.rnode;
  if (const Status s = graph_attrs_into_word(session, left, *rule.lnode); s != Status::ok) return s;
  if (const Status s = graph_attrs_into_word(session, right, *rule.rnode); s != Status::ok) return s;
  if (match.chosen != nullptr) {
    if (const Status s = role_mark_add(session, rule, &left, &right, *match.chosen); s != Status::ok) return s;
  }
  // A rule that changes nothing in the list works on two fresh nodes alone.
  const bool is_post_edit = is_post_edit_type(rule.type);
  applies =
      is_post_edit || changes_list(rule.type) || (is_fresh(left) && is_fresh(right) && !is_scope_reference(right));
  if (!applies) return Status::ok;
  for (const Side side : {Side::left, Side::right}) {
    // With MID the other place of the window has slid away; its record comes with the window.
    if (rule.mid != nullptr && inserts(rule, other(side))) continue;
    Node& node = *node_of(match.window, side);
    // Post-edit undoes nothing and looks at the newest record alone. There a record takes the place of the one on top,
    // and what only that one held goes back to the pool: a pass without end does not grow.
    if (is_post_edit && !is_fresh(node)) {
      RuleCandidate* before = node.matches->candidate;
      match_record_pop(session, node);
      const bool is_of_post_edit =
          before != nullptr && before->rule != nullptr && is_post_edit_type(before->rule->type);
      if (is_of_post_edit) candidates_left_behind(session, before, nullptr);
    }
    const Status s = match_record_push(session, node, kStateStep, &candidate, match.chosen);
    if (s != Status::ok) return s;
  }
  return Status::ok;
}

// ---- Hand over.

// The caller's window takes the inserted node in.
Status hand_over(Session& session, Match& match, Window& window) {
  // The side of the inserted node as the rest of the rule sees it: the left one if both are.
  std::optional<Side> side;
  if (inserts(match.rule, Side::right)) side = Side::right;
  if (inserts(match.rule, Side::left)) side = Side::left;
  if (side) node_of(window, *side) = node_of(match.window, *side);
  if (match.rule.mid != nullptr) {
    // The candidate keeps the window for another try, and the node that MID was counted from gets its record.
    match.candidate.lnode = window.lnode;
    match.candidate.rnode = window.rnode;
    if (!side) return Status::ok;
    const Status s = match_record_push(session, *node_of(window, other(*side)), kStateStep, &match.candidate);
    if (s != Status::ok) return s;
  }
  // An arc brings in one node, until undo clears its mark.
  if (match.arc == nullptr || !side) return Status::ok;
  const Node* inserted = node_of(window, *side);
  const Node* beside = node_of(window, other(*side));
  if (beside != nullptr && (leads_to(*match.arc, *inserted, *beside) || leads_from(*match.arc, *inserted, *beside)))
    match.arc->used = 1;
  return Status::ok;
}

// ---- The whole.

Fit match_steps(Session& session, Match& match, Window& window) {
  const Rule& rule = match.rule;
  if (is_refused(match)) return Fit::no;
  if (turn_to_current_scope(session, match.window) != Status::ok) return Fit::failed;
  for (const Side side : {Side::left, Side::right}) {
    if (const Fit fit = test_side(session, match, side); fit != Fit::yes) return fit;
  }
  if (!slide_over_mid(session, match)) return Fit::no;
  // At most one node is brought in. A shift cuts its text off a word later, so it needs the place alone.
  for (const Side side : {Side::left, Side::right}) {
    if (is_tested(match, side)) continue;
    if (!shifted_text_fits(rule, match.window, side) || !find_place(session, match, side)) return Fit::no;
    if (rule.type == (side == Side::left ? rule_type::shift_left : rule_type::shift_right)) return Fit::yes;
    if (const Fit fit = bring_in(session, match, side); fit != Fit::yes) return fit;
    break;
  }
  if (match.window.lnode == nullptr || match.window.rnode == nullptr) return Fit::no;
  bool applies = false;
  if (settle(session, match, applies) != Status::ok) return Fit::failed;
  if (hand_over(session, match, window) != Status::ok) return Fit::failed;
  return applies ? Fit::yes : Fit::refused;
}

}  // namespace

bool is_refused_by_text(const Session& session, const Rule& rule, const Window& window) {
  if (rule.type != rule_type::shift_left && rule.type != rule_type::shift_right) return false;
  const Side side = rule.type == rule_type::shift_left ? Side::left : Side::right;
  if (shifted_text_fits(rule, window, side)) return false;
  // A retry, a walk over other nodes, and a word that is still open have a say before the text has.
  const Node* shifted = node_of(window, other(side));
  const bool is_plain = rule.mid == nullptr && groups_beyond(rule, other(side)) == nullptr && inserts(rule, side) &&
                        !inserts(rule, other(side)) && !stands_for_retry(node_of(window, side));
  const bool is_settled = shifted != nullptr && shifted->candidates != nullptr && !is_fresh(*shifted);
  return is_plain && is_settled && (session.state.trace_level < 3 || attr_room_suffices(other(side), rule, window));
}

bool slide_over_mid(Session& session, Match& match) {
  Window& window = match.window;
  const Rule& rule = match.rule;
  if (rule.mid != nullptr) {
    const Side side = inserts(rule, Side::left) ? Side::left : Side::right;
    const Node* start = node_of(window, other(side));
    if (start == nullptr) return false;
    const ContextGroup* beyond = groups_beyond(rule, side);
    match.mid_mark.group = beyond;
    Node* place = match_context(session, side, {rule.mid, beyond}, neighbour(*start, side), match.mid_mark);
    if (place == nullptr) return false;
    // The groups beyond have matched in the same walk: the window stands in front of the first of their nodes.
    if (match.mid_mark.hit != nullptr) place = neighbour(*match.mid_mark.hit, other(side));
    if (place == nullptr) return false;
    node_of(window, other(side)) = place;
    node_of(window, side) = neighbour(*place, side);
  }
  // A group beyond the window that has no star needs a node there.
  for (const Side side : {Side::left, Side::right}) {
    const ContextGroup* beyond = groups_beyond(rule, side);
    if (beyond != nullptr && beyond->star == 0 && node_of(window, side) == nullptr) return false;
  }
  return true;
}

Fit match_rule(Session& session, RuleCandidate& candidate, Window& window) {
  Match match{candidate, *candidate.rule, window, window};
  const Fit fit = match_steps(session, match, window);
  if (fit != Fit::no) session.state.turned = nullptr;
  if (must_leave(session) != Status::ok) return Fit::failed;
  if (fit == Fit::no) entry_list_free(session, match.chosen);
  if (session.observer != nullptr) session.observer->tried(session, candidate, match.passed, window, fit);
  return fit;
}

}  // namespace lexon
