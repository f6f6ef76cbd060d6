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
#include "engine/trace.hpp"

namespace lexon {

namespace {

bool inserts(const Rule& rule, Side side) {
  return pattern_of(rule, side).inserted != 0;
}

// The side of the inserted node as the rest of the rule sees it: the left one if both are.
std::optional<Side> inserted_side(const Rule& rule) {
  if (inserts(rule, Side::left)) return Side::left;
  if (inserts(rule, Side::right)) return Side::right;
  return std::nullopt;
}

// An inserted node that undo has left in its place for another try.
bool stands_for_retry(const Node* node) {
  return node != nullptr && is_marked(*node);
}

bool stands_at_boundary(const Node* node) {
  return node != nullptr && is_boundary(*node);
}

// ---- Refusals.

bool never_fits(const Match& match) {
  const Rule& rule = match.rule;
  const bool has_relations = rule.lnode->relations != nullptr || rule.rnode->relations != nullptr;
  if (has_brace_patterns(rule) && has_relations) return true;
  if (rule.type == rule_type::test_left) return stands_at_boundary(match.window.lnode);
  return rule.type == rule_type::test_right && stands_at_boundary(match.window.rnode);
}

// A node that waits for another try belongs to the candidate that brought it in, if MID has moved the window since.
bool retries_for_another(const Match& match) {
  if (match.rule.mid == nullptr) return false;
  const bool left = inserts(match.rule, Side::left) && stands_for_retry(match.window.lnode);
  if (left) return match.window.lnode != match.candidate.lnode;
  const bool right = inserts(match.rule, Side::right) && stands_for_retry(match.window.rnode);
  return right && match.window.rnode != match.candidate.rnode;
}

// ---- Turn.

Status turn_to_current_scope(Session& session, const Window& window) {
  Node* first = list_first(window.lnode != nullptr ? window.lnode : window.rnode);
  if (first != nullptr && first->left == first) return rule_base_failure(session, "put a node beside itself");
  for (Node& node : chain<&Node::right>(first)) {
    if (const Status s = must_leave(session); s != Status::ok) return s;
    scope_attrs_to_front(node, current_scope(session).number);
  }
  return Status::ok;
}

// ---- Test.

bool is_tested(const Match& match, Side side) {
  return !inserts(match.rule, side) || stands_for_retry(node_of(match.window, side));
}

Fit test_node(Session& session, Match& match, Side side) {
  const Node* node = node_of(match.window, side);
  if (node == nullptr) {
    rule_base_failure(session, "tested a place beyond the end of the list");
    return Fit::failed;
  }
  const ContextGroup* beyond = groups_beyond(match.rule, side);
  if (beyond != nullptr && match_context(session, side, beyond, neighbour(*node, side)) == nullptr) return Fit::no;
  return filter_candidates(session, side, match.rule, match.candidate, match.window, match.chosen);
}

// The first arc with this label that ends at the node; `scope` -1 stands for any.
Relation* arc_ending_at(Node& node, const char* label, int scope) {
  for (Relation& arc : chain<&Relation::next>(node.relations)) {
    const bool is_of_scope = scope == -1 || arc.scope == scope;
    if (is_of_scope && arc.to == &node && std::strcmp(arc.label, label) == 0) return &arc;
  }
  return nullptr;
}

// A relation on a node that is there must join it to something. Where the other node is there too, for another try,
// the arc may be of any scope.
bool has_wanted_arc(Session& session, Match& match, Side side) {
  const NodePattern& pattern = pattern_of(match.rule, side);
  if (pattern.inserted != 0 || pattern.relations == nullptr) return true;
  const int scope = is_tested(match, other(side)) ? -1 : current_scope(session).number;
  // wanted: both sides look at the end of the arc
  match.arc = arc_ending_at(*node_of(match.window, side), pattern.relations->text, scope);
  return match.arc != nullptr;
}

// The node has tried all its words.
Fit retry_failed(Session& session, Match& match, Side side) {
  trace_no_matched_word(session, side);
  Node* node = node_of(match.window, side);
  entry_list_free(session, node->candidates);
  return Fit::refused;
}

Fit test_side(Session& session, Match& match, Side side) {
  if (!is_tested(match, side)) return Fit::yes;
  const Fit fit = test_node(session, match, side);
  if (must_leave(session) != Status::ok) return Fit::failed;
  if (fit == Fit::no) return inserts(match.rule, side) ? retry_failed(session, match, side) : Fit::no;
  // wanted: a co-occurrence lookup that failed (`refused`) counts as a fit
  if (fit != Fit::yes && fit != Fit::refused) return fit;
  return has_wanted_arc(session, match, side) ? Fit::yes : Fit::no;
}

// ---- Slide.

// MID lies on the side of the node to be inserted, as seen from the other node.
bool slide_over_mid(Session& session, Match& match) {
  if (match.rule.mid == nullptr) return true;
  const Side side = inserts(match.rule, Side::left) ? Side::left : Side::right;
  Window& window = match.window;
  const Node* start = node_of(window, other(side));
  if (start == nullptr) return false;
  const ContextGroup* beyond = groups_beyond(match.rule, side);
  match.mid_mark.group = beyond;
  Node* place = match_context(session, side, {match.rule.mid, beyond}, neighbour(*start, side), match.mid_mark);
  if (place == nullptr) return false;
  if (match.mid_mark.hit != nullptr) place = neighbour(*match.mid_mark.hit, other(side));
  if (place == nullptr) return false;
  node_of(window, other(side)) = place;
  node_of(window, side) = neighbour(*place, side);
  return true;
}

bool needs_node_beyond(const ContextGroup* groups) {
  return groups != nullptr && groups->star == 0;
}

bool list_is_long_enough(const Match& match) {
  if (needs_node_beyond(match.rule.pre) && match.window.lnode == nullptr) return false;
  return !needs_node_beyond(match.rule.suf) || match.window.rnode != nullptr;
}

// ---- Bring in.

std::optional<Side> side_to_fill(const Match& match) {
  for (const Side side : {Side::left, Side::right}) {
    if (!is_tested(match, side)) return side;
  }
  return std::nullopt;
}

bool is_shift_to(const Rule& rule, Side side) {
  return rule.type == (side == Side::left ? rule_type::shift_left : rule_type::shift_right);
}

// ---- Settle.

Status settle_words(Session& session, Match& match) {
  Node& left = *match.window.lnode;
  Node& right = *match.window.rnode;
  if (const Status s = graph_attrs_into_word(session, left, *match.rule.lnode); s != Status::ok) return s;
  if (const Status s = graph_attrs_into_word(session, right, *match.rule.rnode); s != Status::ok) return s;
  return match.chosen == nullptr ? Status::ok : role_mark_add(session, match.rule, &left, &right, *match.chosen);
}

// ---- Verdict.

bool changes_the_list(std::uint8_t type) {
  return type != '\0' && (std::strchr("XRL:ACUab", type) != nullptr || is_post_edit_type(type));
}

bool may_be_applied(const Match& match) {
  const Node& right = *match.window.rnode;
  if (changes_the_list(match.rule.type)) return true;
  return is_fresh(*match.window.lnode) && is_fresh(right) && !is_scope_reference(right);
}

// Post-edit undoes nothing and looks at the newest record alone. There a record takes the place of the one on top, and
// what only that one held goes back to the pool: a pass without end does not grow.
void make_room_for_record(Session& session, Node& node, const Rule& rule) {
  if (!is_post_edit_type(rule.type) || is_fresh(node)) return;
  RuleCandidate* before = node.matches->candidate;
  match_record_pop(session, node);
  const bool is_of_post_edit = before != nullptr && before->rule != nullptr && is_post_edit_type(before->rule->type);
  if (is_of_post_edit) candidates_left_behind(session, before, nullptr);
}

Status push_records(Session& session, Match& match) {
  RuleCandidate& candidate = match.candidate;
  for (const Side side : {Side::left, Side::right}) {
    // With MID the other place of the window has slid away; its record comes with the window.
    const bool has_slid = match.rule.mid != nullptr && inserts(match.rule, other(side));
    if (has_slid) continue;
    make_room_for_record(session, *node_of(match.window, side), match.rule);
    const Status s = match_record_push(session, *node_of(match.window, side), kStateStep, &candidate, match.chosen);
    if (s != Status::ok) return s;
  }
  return Status::ok;
}

// ---- Hand over.

// With MID the candidate keeps the window for another try, and the node that MID was counted from gets its record.
Status note_window(Session& session, Match& match, const Window& window) {
  if (match.rule.mid == nullptr) return Status::ok;
  match.candidate.lnode = window.lnode;
  match.candidate.rnode = window.rnode;
  const std::optional<Side> side = inserted_side(match.rule);
  if (!side) return Status::ok;
  return match_record_push(session, *node_of(window, other(*side)), kStateStep, &match.candidate);
}

// An arc brings in one node, until undo clears its mark.
void use_arc(const Match& match, const Window& window) {
  const std::optional<Side> side = inserted_side(match.rule);
  if (match.arc == nullptr || !side) return;
  const Relation& arc = *match.arc;
  const Node* inserted = node_of(window, *side);
  const Node* beside = node_of(window, other(*side));
  if (beside == nullptr) return;
  const bool leads_in = arc.to == inserted && is_same_or_origin(arc.from, *beside);
  const bool leads_out = arc.from == inserted && is_same_or_origin(arc.to, *beside);
  if (leads_in || leads_out) match.arc->used = 1;
}

Status hand_over(Session& session, Match& match, Window& window) {
  if (const std::optional<Side> side = inserted_side(match.rule)) {
    node_of(window, *side) = node_of(match.window, *side);
  }
  if (const Status s = note_window(session, match, window); s != Status::ok) return s;
  use_arc(match, window);
  return Status::ok;
}

// ---- The whole.

Fit match_steps(Session& session, Match& match, Window& window) {
  if (never_fits(match) || retries_for_another(match)) return Fit::no;
  if (turn_to_current_scope(session, match.window) != Status::ok) return Fit::failed;
  for (const Side side : {Side::left, Side::right}) {
    if (const Fit fit = test_side(session, match, side); fit != Fit::yes) return fit;
  }
  if (!slide_over_mid(session, match) || !list_is_long_enough(match)) return Fit::no;
  if (const std::optional<Side> side = side_to_fill(match)) {
    if (!shifted_text_fits(match, *side) || !find_place(session, match, *side)) return Fit::no;
    if (is_shift_to(match.rule, *side)) return Fit::yes;
    if (const Fit fit = bring_in(session, match, *side); fit != Fit::yes) return fit;
  }
  if (match.window.lnode == nullptr || match.window.rnode == nullptr) return Fit::no;
  if (settle_words(session, match) != Status::ok) return Fit::failed;
  const bool applies = may_be_applied(match);
  if (applies && push_records(session, match) != Status::ok) return Fit::failed;
  if (hand_over(session, match, window) != Status::ok) return Fit::failed;
  return applies ? Fit::yes : Fit::refused;
}

}  // namespace

Fit match_rule(Session& session, RuleCandidate& candidate, Window& window) {
  Match match{candidate, *candidate.rule, window, window};
  const Fit fit = match_steps(session, match, window);
  if (must_leave(session) != Status::ok) return Fit::failed;
  if (fit == Fit::no) entry_list_free(session, match.chosen);
  return fit;
}

}  // namespace lexon
