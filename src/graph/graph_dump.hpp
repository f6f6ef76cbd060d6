// The graph in the trace, as an indented tree.
#pragma once

#include "data/records.hpp"

namespace lexon {

struct Session;

// Prints the graph of `scope` from `entry`. Leaves marks on nodes and relations; `graph_marks_clear` takes them away.
void graph_dump(Session& session, Node& entry, int indent, int scope, const char* prefix);

void graph_marks_clear(Session& session, Node* node, int scope);

// Prints attribute blocks on one line: all of the list, or only the first.
void scope_attrs_print(Session& session, const ScopeAttrs* block, bool first_only);

}  // namespace lexon
