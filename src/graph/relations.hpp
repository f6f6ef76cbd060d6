// The arcs of the sentence's graph, and the scopes that they open.
#pragma once

#include "data/records.hpp"

namespace lexon {

struct Session;

// Ties a new relation into the graph, notes its scope, and adds the role attributes.
void relation_connect(Session& session, Node& from, Node& to, Relation& relation);

// Notes the scope of a relation in the scope table. The scope's first "@entry" stays its entry.
void scope_note(Session& session, const Relation& relation);

// Does the node's newest block hold "@entry" anywhere in its text?
[[nodiscard]] bool holds_entry(const Node& node);

}  // namespace lexon
