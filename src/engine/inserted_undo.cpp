// Taking a node that a rule brought in out of the list again. A node of the graph is made ready to be brought in once
// more; a copy gives its arc back to its origin and is released, and so is a word that came from the dictionary.

#include <cstring>

#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/sentence.hpp"
#include "data/state.hpp"
#include "engine/backtrack.hpp"
#include "engine/undo.hpp"

namespace lexon {

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

[[nodiscard]] bool is_or_was(const Node* end, const Node& node) {
  return end == &node || (node.origin != nullptr && end == node.origin);
}

// Can the rule have brought the node in along `arc`? The label of LNODE leads to the left node, that of RNODE to the
// right one.
[[nodiscard]] bool is_arc_of(const Relation& arc, const Insertion& insertion, const Rule& rule) {
  const Node& staying = *insertion.staying;
  const bool leads_in = arc.to == &insertion.inserted && is_or_was(arc.from, staying);
  const bool leads_out = arc.from == &insertion.inserted && is_or_was(arc.to, staying);
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
[[nodiscard]] Status node_reset(Node& node) {
  if (const Status status = node_words_reload(node); status != Status::ok) return status;
  unmark(node);
  if (!is_scope_reference(node)) return Status::ok;
  Node* entry = scope_final_node(node.scope);
  return entry != nullptr && entry->candidates == nullptr ? node_words_reload(*entry) : Status::ok;
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
void insertion_end(Node& inserted, bool is_reset) {
  if (!is_reset) return node_unlink_release(inserted);
  node_take_out(inserted);
  inserted.left = inserted.right = nullptr;
}

[[nodiscard]] Status insertion_undo(Insertion& insertion, const Rule& rule, Window& window) {
  Node& inserted = insertion.inserted;
  Relation* arc = arc_find(insertion, rule);
  const bool is_reset = arc != nullptr && inserted.origin == nullptr;
  // A merge node's words are those of the node that it replaced, which undo of the merge wants back.
  const bool takes_others_words = !is_reset && inserted.merged_with != nullptr;
  if (takes_others_words) return rule_base_failure("undid an insertion of another node");
  if (arc != nullptr) arc->used = 0;
  if (!is_reset) {
    arcs_give_back(inserted);
  } else if (const Status status = node_reset(inserted); status != Status::ok) {
    return status;
  }
  if (rule.mid != nullptr) insertion.staying = neighbour(inserted, other(insertion.side));
  Node* beyond = neighbour(inserted, insertion.side);
  insertion_end(inserted, is_reset);
  node_of(window, insertion.side) = beyond;
  node_of(window, other(insertion.side)) = insertion.staying;
  return Status::ok;
}

}  // namespace

Status inserted_undo(const Rule& rule, Window& window) {
  const bool has_both = window.lnode != nullptr && window.rnode != nullptr;
  if (!has_both) return rule_base_failure("undid an insertion at an empty place");
  if (has_brace_patterns(rule)) return node_reset(*window.rnode);
  const Side side = rule.rnode->inserted != 0 ? Side::right : Side::left;
  Insertion insertion{side, *node_of(window, side), node_of(window, other(side))};
  return insertion_undo(insertion, rule, window);
}

}  // namespace lexon
