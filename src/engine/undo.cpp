// Undoing what changed the list: merges, exchanges, replaced and inserted nodes; and what the steps of backtracking
// share: records, holds, noted places, and the nodes that scopes start from. apply.cpp does what is undone here.

#include "engine/undo.hpp"

#include <algorithm>
#include <cstring>

#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/application.hpp"
#include "engine/apply.hpp"
#include "engine/insertion.hpp"
#include "engine/trace.hpp"
#include "rules/candidates.hpp"

namespace lexon {

// ---- Records, places, holds, scopes. Where the rule base has brought a list into a state that no application leaves
// behind, undoing stops the sentence instead of reading on: nothing here trusts a record to be there.

Status record_pop(Session& session, Node* node) {
  if (node == nullptr || is_fresh(*node)) return rule_base_failure(session, "undid more steps than it has made");
  match_record_pop(session, *node);
  return Status::ok;
}

bool stands_in_list(const Session& session, Node* member, const Node* node) {
  if (member == nullptr || node == nullptr) return false;
  // Both directions from the member: the links of a list can be lopsided.
  for (const Node* at = member; at != nullptr && must_leave(session) == Status::ok; at = at->left) {
    if (at == node) return true;
    if (at == at->left) return false;
  }
  for (const Node* at = member->right; at != nullptr && must_leave(session) == Status::ok; at = at->right) {
    if (at == node) return true;
  }
  return false;
}

Status to_noted_places(Session& session, Window& window, const RuleCandidate& candidate) {
  Node* member = window.lnode != nullptr ? window.lnode : window.rnode;
  const bool has_both =
      stands_in_list(session, member, candidate.lnode) && stands_in_list(session, member, candidate.rnode);
  if (!has_both) return rule_base_failure(session, "lost the place of a rule with MID");
  window = {candidate.lnode, candidate.rnode};
  return Status::ok;
}

void node_unlink_release(Session& session, Node& node) {
  const bool is_known_to_others =
      node.name != nullptr || kind_bits(node) == kKindBoundary || is_scope_entry(session, node);
  if (is_known_to_others) {
    node_take_out(session, node);
    node_empty(session, node);
  } else {
    Node* released = &node;
    node_unlink_free(session, released);
  }
}

// A hold is the only record of its node: it was fresh before.
bool hold_take(Session& session, Node* node, const Rule* of) {
  if (node == nullptr || !is_held(*node)) return false;
  const RuleCandidate* holder = node->matches->candidate;
  if (of != nullptr && (holder == nullptr || holder->rule != of)) return false;
  match_record_pop(session, *node);
  node->matches = nullptr;
  return true;
}

bool hold_release(Session& session, Node& reference) {
  const bool was_used = !is_fresh(reference) && reference.matches->candidate != nullptr;
  return was_used && hold_take(session, scope_final_node(session, reference.scope));
}

bool may_re_enter_scope(Session& session, const Node* node, const NodePattern& pattern, const Rule& rule) {
  if (node == nullptr || !is_scope_reference(*node)) return false;
  // Either the rule brought the reference in, or it works on the entry of the current scope, which no scope rule has
  // entered yet.
  const bool was_brought_in = is_fresh(*node) && pattern.inserted != 0;
  const bool is_entry = current_scope(session).entry == node;
  return was_brought_in || (has_brace_patterns(rule) && is_entry && no_scope_rule_in_stack(node->matches));
}

void scope_entries_hand_over(Session& session, const Node& node, Node* heir) {
  // Several numbers can start at one node.
  for (ScopeRow& row : scope_rows(session.sentence)) {
    if (row.entry == &node) row.entry = heir;
  }
}

bool is_scope_entry(const Session& session, const Node& node) {
  const auto rows = scope_rows(session.sentence);
  return std::any_of(rows.begin(), rows.end(), [&](const ScopeRow& row) { return row.entry == &node; });
}

// ---- Merges (DL, DR), exchanges (X), and the types without a step.

Status merge_undo(Session& session, Window& window, RuleCandidate*& candidate) {
  const std::uint8_t type = candidate->rule->type;
  trace_backtrack(session, Undoing::list_change, *candidate, window);
  if (window.lnode == nullptr || window.rnode == nullptr)
    return rule_base_failure(session, "undid a merge at an empty place");
  // The records of both places go. A merge to the left side that changed the survivor's word has left the window one
  // place to the left of the merge node.
  if (!is_fresh(*window.lnode)) match_record_pop(session, *window.lnode);
  if (!is_fresh(*window.rnode)) {
    const MatchRecord& record = *window.rnode->matches;
    const bool is_merge_nodes = record.candidate != nullptr && record.state != kStateStep;
    match_record_pop(session, *window.rnode);
    if (type == rule_type::merge_right && is_merge_nodes) window = {window.rnode, window.rnode->right};
  }
  // The merge node stands where the survivor stood: on the left for DR, on the right for DL.
  Node* merged = type == rule_type::merge_right ? window.lnode : window.rnode;
  if (merged->source == nullptr || merged->merged_with == nullptr) return Status::no_effect;
  // The two merged nodes stand in the place of the merge node again, and are the window.
  Node* source = merged->source;
  window = type == rule_type::merge_left ? Window{merged->merged_with, source} : Window{source, merged->merged_with};
  node_insert_before(session, *merged, *window.lnode);
  node_insert_before(session, *merged, *window.rnode);
  node_take_out(session, *merged);
  entry_drop_head(session, merged->candidates);
  merged->candidates = nullptr;  // the rest is the source's
  scope_entries_hand_over(session, *merged, source);
  if (session.state.forced_node == merged) session.state.forced_node = source;
  node_free(session, merged);
  candidate = candidate_next(session, *candidate);
  return Status::ok;
}

Status exchange_undo(Session& session, Window& window, const RuleCandidate& candidate) {
  trace_backtrack(session, Undoing::list_change, candidate, window);
  if (candidate.rule->type != rule_type::exchange) return Status::no_effect;
  if (window.lnode == nullptr || window.rnode == nullptr)
    return rule_base_failure(session, "undid an exchange at an empty place");
  Node& first = *window.rnode;
  Node* second = first.right;
  // The window stands one place to the left of the pair: its right place holds the node that came from the right.
  const bool can_exchange = second != nullptr && !is_fresh(*second);
  if (!can_exchange) return rule_base_failure(session, "undid an exchange whose nodes are not there");
  // The marker of the step, and the newer records of the pair.
  for (Node* node : {window.lnode, &first, second}) {
    if (const Status status = record_pop(session, node); status != Status::ok) return status;
  }
  node_take_out(session, *second);
  node_insert_before(session, first, *second);
  window = {second, &first};
  return Status::ok;
}

Status stepless_undo(Session& session, Window& window, const Rule& rule) {
  if (window.lnode == nullptr || window.rnode == nullptr)
    return rule_base_failure(session, "undid a rule at an empty place");
  if (const Status status = record_pop(session, window.lnode); status != Status::ok) return status;
  Node*& copy = window.rnode;
  // The copy is taken to have replaced its origin and the origin's neighbour.
  Node* origin = copy->origin;
  Window before{nullptr, nullptr};
  if (origin != nullptr && copy->merged_with == nullptr && !is_scope_entry(session, *copy)) {
    const bool origin_is_left = rule.type == rule_type::plus || rule.type == rule_type::less;
    before = origin_is_left ? Window{origin, origin->right} : Window{origin->left, origin};
  }
  // Both nodes must be out of the list: linked into it a second time, they would close it to a circle.
  const bool can_come_back = before.lnode != nullptr && before.rnode != nullptr &&
                             !stands_in_list(session, copy, before.lnode) &&
                             !stands_in_list(session, copy, before.rnode);
  if (!can_come_back) return rule_base_failure(session, "undid a rule of a type that has no step");
  // The copy's word and record go. Its arcs stay: they are on the origin's list as well.
  const bool drops_always = rule.type == rule_type::plus || rule.type == rule_type::minus;
  if (drops_always || is_word_changed(copy)) entry_drop_head(session, copy->candidates);
  if (const Status status = record_pop(session, copy); status != Status::ok) return status;
  copy->matches = nullptr;
  if (!drops_always) copy->relations = nullptr;
  node_insert_before(session, *copy, *before.lnode);
  node_insert_before(session, *copy, *before.rnode);
  node_unlink_free(session, copy);
  window = before;
  return Status::ok;
}

// ---- Insertions. A node of the graph is made ready to be brought in once more; a copy gives its arc back to its
// origin and is released, and so is a word that came from the dictionary.

namespace {

// The arc along which the rule can have brought in the node of `side`; null if there is none. The label of LNODE leads
// to the left node, that of RNODE to the right one.
[[nodiscard]] Relation* arc_find(const Rule& rule, Side side, const Window& window) {
  const Node& inserted = *node_of(window, side);
  const Node& staying = *node_of(window, other(side));
  const Node& owner = staying.origin != nullptr ? *staying.origin : staying;
  const CondItem* own = pattern_of(rule, side).relations;
  const CondItem* opposite = pattern_of(rule, other(side)).relations;
  for (Relation& arc : chain<&Relation::next>(owner.relations)) {
    const bool is_own = own != nullptr && std::strcmp(own->text, arc.label) == 0;
    const bool is_opposite = opposite != nullptr && std::strcmp(opposite->text, arc.label) == 0;
    if (is_own && leads_to(arc, inserted, staying)) return &arc;
    if (is_opposite && leads_from(arc, inserted, staying)) return &arc;
  }
  return nullptr;
}

// The node's words afresh, as when it was read. A scope's entry node is not left without words.
[[nodiscard]] Status node_reset(Session& session, Node& node) {
  if (const Status status = node_words_reload(session, node); status != Status::ok) return status;
  unmark(node);
  if (!is_scope_reference(node)) return Status::ok;
  Node* entry = scope_final_node(session, node.scope);
  return entry != nullptr && entry->candidates == nullptr ? node_words_reload(session, *entry) : Status::ok;
}

}  // namespace

Status inserted_undo(Session& session, const Rule& rule, Window& window) {
  const bool has_both = window.lnode != nullptr && window.rnode != nullptr;
  if (!has_both) return rule_base_failure(session, "undid an insertion at an empty place");
  if (has_brace_patterns(rule)) return node_reset(session, *window.rnode);
  // wanted: with two quote patterns the right node goes.
  const Side side = rule.rnode->inserted != 0 ? Side::right : Side::left;
  Node& inserted = *node_of(window, side);
  Node* staying = node_of(window, other(side));
  Relation* arc = arc_find(rule, side, window);
  const bool is_reset = arc != nullptr && inserted.origin == nullptr;
  // A merge node's words are those of the node that it replaced, which undo of the merge wants back.
  const bool takes_others_words = !is_reset && inserted.merged_with != nullptr;
  if (takes_others_words) return rule_base_failure(session, "undid an insertion of another node");
  // The arc may bring a node in again.
  if (arc != nullptr) arc->used = 0;
  if (is_reset) {
    if (const Status status = node_reset(session, inserted); status != Status::ok) return status;
  } else if (inserted.origin != nullptr) {
    // No arc may lead to a copy that is gone.
    for (Relation& relation : chain<&Relation::next>(inserted.relations)) {
      if (relation.to == &inserted) relation.to = inserted.origin;
      if (relation.from == &inserted) relation.from = inserted.origin;
    }
    inserted.origin = nullptr;
  }
  // With MID the node that stays is the neighbour, and not the one that MID was counted from.
  if (rule.mid != nullptr) staying = neighbour(inserted, other(side));
  Node* beyond = neighbour(inserted, side);
  // A node of the graph is ready to be brought in again; a copy, a word from the dictionary, and a node of which no arc
  // says how it came in, are gone.
  if (is_reset) {
    node_take_out(session, inserted);
    inserted.left = inserted.right = nullptr;
  } else {
    node_unlink_release(session, inserted);
  }
  // What stood behind the node is the window's other place now; at the end of a list that is none.
  node_of(window, side) = beyond;
  node_of(window, other(side)) = staying;
  return Status::ok;
}

}  // namespace lexon
