// Undoing what changed the list: merges, exchanges, replaced and inserted nodes; and what the steps of backtracking
// share: records, holds, noted places, and the nodes that scopes start from. apply.cpp does what is undone here.

#include "engine/undo.hpp"

#include <algorithm>
#include <cstring>

#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "engine/apply.hpp"
#include "engine/insertion.hpp"
#include "engine/trace.hpp"

namespace lexon {

// ---- Records, places, holds, scopes.

Status record_pop(Session& session, Node* node) {
  if (node == nullptr || is_fresh(*node)) return rule_base_failure(session, "undid more steps than it has made");
  match_record_pop(session, *node);
  return Status::ok;
}

bool stands_in_list(const Session& session, Node* member, const Node* node) {
  if (member == nullptr || node == nullptr) return false;
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
    node_take_out(node);
    node_empty(session, node);
  } else {
    Node* released = &node;
    node_unlink_free(session, released);
  }
}

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
  const bool was_brought_in = is_fresh(*node) && pattern.inserted != 0;
  const bool is_entry = current_scope(session).entry == node;
  return was_brought_in || (has_brace_patterns(rule) && is_entry && no_scope_rule_in_stack(node->matches));
}

void scope_entries_hand_over(Session& session, const Node& node, Node* heir) {
  for (ScopeRow& row : scope_rows(session.sentence)) {
    if (row.entry == &node) row.entry = heir;
  }
}

bool is_scope_entry(const Session& session, const Node& node) {
  const auto rows = scope_rows(session.sentence);
  return std::any_of(rows.begin(), rows.end(), [&](const ScopeRow& row) { return row.entry == &node; });
}

// ---- Merges (DL, DR), exchanges (X), and the types without a step.

namespace {

// Pops the records of both places. A merge to the left side that changed the survivor's word has left the window one
// place to the left of the merge node.
void merge_records_pop(Session& session, Window& window, std::uint8_t type) {
  if (!is_fresh(*window.lnode)) match_record_pop(session, *window.lnode);
  if (is_fresh(*window.rnode)) return;
  const MatchRecord& record = *window.rnode->matches;
  const bool is_merge_nodes = record.candidate != nullptr && record.state != kStateStep;
  match_record_pop(session, *window.rnode);
  if (type == rule_type::merge_right && is_merge_nodes) window = {window.rnode, window.rnode->right};
}

// Puts the two merged nodes back in the place of the merge node, and releases it. They are the window.
[[nodiscard]] Window merge_node_dissolve(Session& session, Node*& merged, std::uint8_t type) {
  Node* source = merged->source;
  const Window restored =
      type == rule_type::merge_left ? Window{merged->merged_with, source} : Window{source, merged->merged_with};
  node_insert_before(*merged, *restored.lnode);
  node_insert_before(*merged, *restored.rnode);
  node_take_out(*merged);
  entry_drop_head(session, merged->candidates);
  merged->candidates = nullptr;  // the rest is the source's
  scope_entries_hand_over(session, *merged, source);
  if (session.state.forced_node == merged) session.state.forced_node = source;
  node_free(session, merged);
  return restored;
}

// The two nodes by which a rule without a step is taken to have been replaced.
[[nodiscard]] Window nodes_before(Session& session, const Node& copy, std::uint8_t type) {
  Node* origin = copy.origin;
  const bool is_first = type == rule_type::plus || type == rule_type::less;
  if (origin == nullptr || copy.merged_with != nullptr || is_scope_entry(session, copy)) return {nullptr, nullptr};
  return is_first ? Window{origin, origin->right} : Window{origin->left, origin};
}

// The copy's word and record. Its arcs stay: they hang on the origin's list as well.
[[nodiscard]] Status replacing_copy_clear(Session& session, Node& copy, std::uint8_t type) {
  const bool drops_always = type == rule_type::plus || type == rule_type::minus;
  const bool is_changed = !is_fresh(copy) && copy.matches->state == kStateChanged;
  if (drops_always || is_changed) entry_drop_head(session, copy.candidates);
  if (const Status status = record_pop(session, &copy); status != Status::ok) return status;
  copy.matches = nullptr;
  if (!drops_always) copy.relations = nullptr;
  return Status::ok;
}

}  // namespace

Status merge_undo(Session& session, Window& window, RuleCandidate*& candidate) {
  const std::uint8_t type = candidate->rule->type;
  trace_backtrack_pair(session, *candidate, window);
  if (window.lnode == nullptr || window.rnode == nullptr)
    return rule_base_failure(session, "undid a merge at an empty place");
  merge_records_pop(session, window, type);
  Node* merged = type == rule_type::merge_right ? window.lnode : window.rnode;
  if (merged->source == nullptr || merged->merged_with == nullptr) return Status::no_effect;
  window = merge_node_dissolve(session, merged, type);
  candidate = candidate->next;
  return Status::ok;
}

Status exchange_undo(Session& session, Window& window, const RuleCandidate& candidate) {
  trace_backtrack_pair(session, candidate, window);
  if (candidate.rule->type != rule_type::exchange) return Status::no_effect;
  if (window.lnode == nullptr || window.rnode == nullptr)
    return rule_base_failure(session, "undid an exchange at an empty place");
  Node& first = *window.rnode;
  Node* second = first.right;
  const bool can_exchange = second != nullptr && !is_fresh(*second);
  if (!can_exchange) return rule_base_failure(session, "undid an exchange whose nodes are not there");
  for (Node* node : {window.lnode, &first, second}) {
    if (const Status status = record_pop(session, node); status != Status::ok) return status;
  }
  node_take_out(*second);
  node_insert_before(first, *second);
  window = {second, &first};
  return Status::ok;
}

Status stepless_undo(Session& session, Window& window, const Rule& rule) {
  if (window.lnode == nullptr || window.rnode == nullptr)
    return rule_base_failure(session, "undid a rule at an empty place");
  if (const Status status = record_pop(session, window.lnode); status != Status::ok) return status;
  Node*& copy = window.rnode;
  const Window before = nodes_before(session, *copy, rule.type);
  // Both nodes must be out of the list: linked into it a second time, they would close it to a circle.
  const bool can_come_back = before.lnode != nullptr && before.rnode != nullptr &&
                             !stands_in_list(session, copy, before.lnode) &&
                             !stands_in_list(session, copy, before.rnode);
  if (!can_come_back) return rule_base_failure(session, "undid a rule of a type that has no step");
  if (const Status status = replacing_copy_clear(session, *copy, rule.type); status != Status::ok) return status;
  node_insert_before(*copy, *before.lnode);
  node_insert_before(*copy, *before.rnode);
  node_unlink_free(session, copy);
  window = before;
  return Status::ok;
}

// ---- Insertions. A node of the graph is made ready to be brought in once more; a copy gives its arc back to its
// origin and is released, and so is a word that came from the dictionary.

namespace {

// The node to take out, the one that stays, and the side of the first.
struct Insertion {
  Side side;
  Node& inserted;
  Node* staying;
};

[[nodiscard]] bool has_first_label(const NodePattern& pattern, const Relation& arc) {
  return pattern.relations != nullptr && std::strcmp(pattern.relations->text, arc.label) == 0;
}

// Can the rule have brought the node in along `arc`? The label of LNODE leads to the left node, that of RNODE to the
// right one.
[[nodiscard]] bool is_arc_of(const Relation& arc, const Insertion& insertion, const Rule& rule) {
  const Node& staying = *insertion.staying;
  const bool leads_in = arc.to == &insertion.inserted && is_same_or_origin(arc.from, staying);
  const bool leads_out = arc.from == &insertion.inserted && is_same_or_origin(arc.to, staying);
  const NodePattern& own = pattern_of(rule, insertion.side);
  const NodePattern& opposite = pattern_of(rule, other(insertion.side));
  return (has_first_label(own, arc) && leads_in) || (has_first_label(opposite, arc) && leads_out);
}

[[nodiscard]] Relation* arc_find(const Insertion& insertion, const Rule& rule) {
  const Node& staying = *insertion.staying;
  const Node& owner = staying.origin != nullptr ? *staying.origin : staying;
  for (Relation& arc : chain<&Relation::next>(owner.relations)) {
    if (is_arc_of(arc, insertion, rule)) return &arc;
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

// No arc may lead to a copy that is gone.
void arcs_give_back(Node& copy) {
  if (copy.origin == nullptr) return;
  for (Relation& arc : chain<&Relation::next>(copy.relations)) {
    if (arc.to == &copy) arc.to = copy.origin;
    if (arc.from == &copy) arc.from = copy.origin;
  }
  copy.origin = nullptr;
}

// Leaves the list. The neighbours are joined. A node of the graph is ready to be brought in again; a copy, a word from
// the dictionary, and a node of which no arc says how it came in, are gone.
void insertion_end(Session& session, Node& inserted, bool is_reset) {
  if (!is_reset) return node_unlink_release(session, inserted);
  node_take_out(inserted);
  inserted.left = inserted.right = nullptr;
}

[[nodiscard]] Status insertion_undo(Session& session, Insertion& insertion, const Rule& rule, Window& window) {
  Node& inserted = insertion.inserted;
  Relation* arc = arc_find(insertion, rule);
  const bool is_reset = arc != nullptr && inserted.origin == nullptr;
  // A merge node's words are those of the node that it replaced, which undo of the merge wants back.
  const bool takes_others_words = !is_reset && inserted.merged_with != nullptr;
  if (takes_others_words) return rule_base_failure(session, "undid an insertion of another node");
  if (arc != nullptr) arc->used = 0;
  if (!is_reset) {
    arcs_give_back(inserted);
  } else if (const Status status = node_reset(session, inserted); status != Status::ok) {
    return status;
  }
  if (rule.mid != nullptr) insertion.staying = neighbour(inserted, other(insertion.side));
  Node* beyond = neighbour(inserted, insertion.side);
  insertion_end(session, inserted, is_reset);
  node_of(window, insertion.side) = beyond;
  node_of(window, other(insertion.side)) = insertion.staying;
  return Status::ok;
}

}  // namespace

Status inserted_undo(Session& session, const Rule& rule, Window& window) {
  const bool has_both = window.lnode != nullptr && window.rnode != nullptr;
  if (!has_both) return rule_base_failure(session, "undid an insertion at an empty place");
  if (has_brace_patterns(rule)) return node_reset(session, *window.rnode);
  const Side side = rule.rnode->inserted != 0 ? Side::right : Side::left;
  Insertion insertion{side, *node_of(window, side), node_of(window, other(side))};
  return insertion_undo(session, insertion, rule, window);
}

}  // namespace lexon
