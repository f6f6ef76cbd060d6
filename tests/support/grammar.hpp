// The rules of the tests of a program.
#pragma once

#include "rules/grammar.hpp"
#include "support/session.hpp"

namespace lexon::test {

inline Grammar grammar;

// Builds the index over `rules`, and has the session search in it.
[[nodiscard]] inline Status index_build(Rule* rules) {
  const Status status = rule_matrix_build(session, grammar.index, rules);
  session_use(session, grammar);
  return status;
}

}  // namespace lexon::test
