// The search of the rule index done the long way: every row of the name table is asked for every word. It shares
// nothing with `rule_candidates` but the matrices, and is what that is measured against.
#pragma once

#include "data/records.hpp"
#include "support/saved_matrix.hpp"

namespace lexon::test {

// What `rule_candidates` has to give.
[[nodiscard]] RuleCandidate* candidates_row_by_row(const SavedMatrix& saved, Node* lnode, Node* rnode);

}  // namespace lexon::test
