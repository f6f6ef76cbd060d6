#include "rules/grammar.hpp"

#include "data/session.hpp"

namespace lexon {

namespace {

// Room for answers of a side and for pairs of them; a key may be of either side. Memory that is not needed is not touched.
constexpr std::size_t kMostAnswers = std::size_t{1} << 15;
constexpr std::size_t kKeyBytes = std::size_t{1} << 21;
constexpr std::size_t kAnswerBlocks = std::size_t{1} << 17;
constexpr std::size_t kAnswerNumbers = std::size_t{1} << 18;
constexpr std::size_t kMostPairs = 8192;
constexpr std::size_t kPairBlocks = std::size_t{1} << 16;

// Room for what is remembered is taken here once and never grows: answers are handed on as spans of it.
void fit(SearchScratch::Side& scratch, const SideSearch& side) {
  const std::size_t rows = side.names.find_rows.size();
  scratch.is_present.assign(rows, 0);
  scratch.present.clear();
  scratch.present.reserve(rows);
  scratch.is_striking.assign(rows, 0);
  scratch.striking.clear();
  scratch.answers.clear();
  scratch.answers.reserve(2 * kMostAnswers);
  scratch.blocks.clear();
  scratch.blocks.reserve(kAnswerBlocks);
  scratch.numbers.clear();
  scratch.numbers.reserve(kAnswerNumbers);
}

}  // namespace

void session_use(Session& session, const Grammar& grammar) {
  const RuleSearch& search = grammar.index.search;
  session.grammar = &grammar;
  session.rule_texts.clear();
  // Rules and sentences share one number of blocks.
  session.pool.limit_blocks(grammar.pool.max_blocks() - grammar.pool.blocks());
  SearchScratch& scratch = session.search;
  fit(scratch.left, search.left);
  fit(scratch.right, search.right);
  scratch.known.fit(2 * kMostAnswers, 2 * kKeyBytes);
  scratch.pairs.fit(kMostPairs);
  scratch.rules.clear();
  scratch.rules.reserve(kPairBlocks);
  scratch.is_full = false;
  session.label.reserve(kLineSize);  // a growth that fails in the middle of reading would make two sentences of one
}

}  // namespace lexon
