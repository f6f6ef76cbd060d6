#include "rules/grammar.hpp"

#include "data/session.hpp"

namespace lexon {

namespace {

void fit(SearchScratch::Side& scratch, const RuleMatrix& matrix, const MatrixSide& side) {
  const auto row_bytes = static_cast<std::size_t>(matrix.row_bytes);
  const auto rows = static_cast<std::size_t>(side.attr_count);
  scratch.result.assign(row_bytes, 0);
  scratch.missing.assign(row_bytes, 0);
  scratch.joined.assign(row_bytes, 0);
  scratch.is_present.assign(rows, 0);
  scratch.present.clear();
  scratch.present.reserve(rows);
}

}  // namespace

void session_use(Session& session, const Grammar& grammar) {
  session.grammar = &grammar;
  session.pool.limit_blocks(grammar.pool.max_blocks() - grammar.pool.blocks());
  fit(session.search.left, grammar.index.matrix, grammar.index.matrix.left);
  fit(session.search.right, grammar.index.matrix, grammar.index.matrix.right);
}

}  // namespace lexon
