// The second pass over a finished list.
#pragma once

#include "data/records.hpp"
#include "data/status.hpp"

namespace lexon {

struct Session;

// Runs the post-edit rules on the list that `start` stands in, from its end. ok, or what a step returned.
[[nodiscard]] Status post_edit(Session& session, Node* start);

}  // namespace lexon
