// The dump spans a tree over the arcs of one scope, breadth first and each arc once, then prints it. An arc that is in
// the tree is marked by its `used` flag, a node that has been printed by the mark of its kind.
#include "graph/graph_dump.hpp"

#include <array>
#include <string>

#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/output.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "graph/line_text.hpp"

namespace lexon {

namespace {

// Characters: of an arrow behind its node's indent, and of a node behind that of the one that it hangs on.
constexpr int kArrowIndent = 2;
constexpr int kChildIndent = 7;

struct DumpBranch {
  Relation* relation;
  DumpBranch* children;  // branches of the node at the far end
  DumpBranch* next;      // next branch of the same node
};

// What all lines of one dump have in common.
struct Dump {
  int scope;           // its arcs alone are shown, and of the nodes the attributes in it
  const char* prefix;  // in front of each line
};

// Lists of arcs join, so an arc on a node's list need not touch the node.
bool is_arc_of(const Relation& relation, const Node& node, int scope) {
  return relation.scope == scope && (relation.from == &node || relation.to == &node);
}

// The other end. An arc from a node to itself leads to the node.
Node* far_end(const Relation& relation, const Node& node) {
  return relation.to == &node ? relation.from : relation.to;
}

// Takes the node's arcs that hang nowhere yet. Without memory the tree ends here.
DumpBranch* branches_of(Session& session, const Node& node, int scope) {
  DumpBranch* first = nullptr;
  DumpBranch** link = &first;
  for (Relation& relation : chain<&Relation::next>(node.relations)) {
    if (relation.used != 0 || !is_arc_of(relation, node, scope)) continue;
    *link = temp_new<DumpBranch>(session);
    if (*link == nullptr) break;
    (*link)->relation = &relation;
    relation.used = 1;
    link = &(*link)->next;
  }
  return first;
}

// Grows the whole next level before it goes down, so that an arc hangs as near to the entry as it can. Every level
// takes an arc, so the depth is bounded by their number.
void branches_grow(Session& session, const Node& node, DumpBranch* branches, int scope) {
  for (DumpBranch& branch : chain<&DumpBranch::next>(branches)) {
    branch.children = branches_of(session, *far_end(*branch.relation, node), scope);
  }
  for (DumpBranch& branch : chain<&DumpBranch::next>(branches)) {
    branches_grow(session, *far_end(*branch.relation, node), branch.children, scope);
  }
}

// The node with its attributes in the scope; in brackets if it has been printed before.
void node_print(Session& session, Node& node, int scope) {
  const bool again = is_marked(node);
  // wanted: in brackets, a kind that shares a bit with that of a scope reference looks like one.
  const bool as_reference = again ? (node.kind & kKindScope) != 0 : node.kind == kKindScope;
  const char* bracket = again ? "[" : "";
  char code[3];
  node_code_write(node.scope, code);
  if (as_reference) {
    out_text(session, bracket, ":", std::string_view(code, 2), "(");
  } else if (node.scope != 0) {
    out_text(session, bracket, text_or_empty(node.name), ":", std::string_view(code, 2), "(");
  } else {
    out_text(session, bracket, text_or_empty(node.name), "(");
  }
  const ScopeAttrs* block = scope_attrs_find(node, scope);
  out_text(session, block == nullptr ? "" : block->text, ")", again ? "]" : "", "\n");
  mark(node);
}

// The node and, a line each, what hangs on it, depth first. `indent` is that of the node, whose line has begun already
// unless it is the entry.
void branch_print(Session& session, Node& node, const DumpBranch* branches, int indent, const Dump& dump) {
  if (must_leave(session) != Status::ok) return;
  if (indent == 0) out_text(session, dump.prefix);
  node_print(session, node, dump.scope);
  for (const DumpBranch& branch : chain<&DumpBranch::next>(branches)) {
    const Relation& relation = *branch.relation;
    const bool inward = relation.to == &node;
    out_text(session, dump.prefix, std::string(static_cast<std::size_t>(indent + kArrowIndent), ' '),
             inward ? "<" : "-", relation.label, inward ? "-" : ">");
    branch_print(session, *far_end(relation, node), branch.children, indent + kChildIndent, dump);
  }
}

// The rows of the scope table whose entries are being cleared at present.
using RowsOnPath = std::array<bool, kMaxScopes>;

void marks_clear(Session& session, Node& node, int scope, RowsOnPath& on_path);

// Goes on to the scope that the node refers to. Scopes can refer to each other in a circle; a row that is on the path
// already clears its marks itself when the walk comes back to it.
void referred_marks_clear(Session& session, const Node& reference, RowsOnPath& on_path) {
  for (const ScopeRow& row : scope_rows(session.sentence)) {
    if (row.entry == nullptr) return;
    if (row.number != reference.scope) continue;
    const auto index = static_cast<std::size_t>(&row - session.sentence.semlst.data());
    if (on_path[index]) return;
    on_path[index] = true;
    marks_clear(session, *row.entry, row.number, on_path);
    on_path[index] = false;
    return;
  }
}

void marks_clear(Session& session, Node& node, int scope, RowsOnPath& on_path) {
  for (Relation& relation : chain<&Relation::next>(node.relations)) {
    if (relation.used == 0 || !is_arc_of(relation, node, scope)) continue;
    relation.used = 0;
    marks_clear(session, *far_end(relation, node), scope, on_path);
  }
  if ((node.kind & kKindScope) != 0) referred_marks_clear(session, node, on_path);
  unmark(node);
}

}  // namespace

void graph_dump(Session& session, Node& entry, int indent, int scope, const char* prefix) {
  DumpBranch* top = branches_of(session, entry, scope);
  branches_grow(session, entry, top, scope);
  branch_print(session, entry, top, indent, Dump{scope, prefix});
}

void graph_marks_clear(Session& session, Node* node, int scope) {
  RowsOnPath on_path{};
  if (node != nullptr) marks_clear(session, *node, scope, on_path);
}

void scope_attrs_print(Session& session, const ScopeAttrs* block, bool first_only) {
  for (; block != nullptr; block = first_only ? nullptr : block->next) {
    out_text(session, "  ", Decimal(block->scope, 2), ":", block->text);
    out_flush(session);
  }
  out_text(session, "\n");
}

}  // namespace lexon
