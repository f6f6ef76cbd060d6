// The moment at which what the graph says of a node reaches its word.
#pragma once

#include "data/records.hpp"
#include "data/status.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

// Recomputes the kind of a node that no rule has touched, and puts the attributes of its current scope in front of
// those of its word. Nothing happens to another node. `pattern` is the one that the node has satisfied.
[[nodiscard]] Status graph_attrs_into_word(Session& session, Node& node, const NodePattern& pattern);

}  // namespace lexon
