// The graph in the trace, as an indented tree.
#pragma once

#include "data/records.hpp"

namespace lexon {

// Prints the graph of `scope` from `entry`. Leaves marks on nodes and relations; `graph_marks_clear` takes them away.
void graph_dump(Node& entry, int indent, int scope, const char* prefix);

void graph_marks_clear(Node* node, int scope);

// Prints attribute blocks on one line: all of the list, or only the first.
void scope_attrs_print(const ScopeAttrs* block, bool first_only);

}  // namespace lexon
