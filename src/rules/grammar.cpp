#include "rules/grammar.hpp"

#include <algorithm>

#include "data/session.hpp"
#include "rules/bits.hpp"

namespace lexon {

namespace {

// Room for answers: so many, but no more than fill so many bytes.
constexpr std::size_t kMostAnswers = 4096;
constexpr std::size_t kAnswerBytes = std::size_t{1} << 20;
constexpr std::size_t kLeastAnswers = 32;
constexpr std::size_t kKeyBytes = std::size_t{1} << 19;
constexpr std::size_t kMostPairs = 8192;
constexpr std::size_t kPairRules = std::size_t{1} << 18;

void fit(SearchScratch::Side& scratch, const RuleSearch& search, const SideSearch& side) {
  const std::size_t rows = side.names.find_rows.size();
  const std::size_t size = search.all.size();
  const std::size_t answers =
      std::clamp(kAnswerBytes / (std::max<std::size_t>(size, 1) * kWordBytes), kLeastAnswers, kMostAnswers);
  scratch.result.assign(size, 0);
  scratch.joined.assign(size, 0);
  scratch.is_present.assign(rows, 0);
  scratch.present.clear();
  scratch.present.reserve(rows);
  scratch.struck.clear();
  scratch.known.fit(answers, kKeyBytes);
  scratch.answers.clear();
  scratch.answers.reserve(answers * size);
}

}  // namespace

void session_use(Session& session, const Grammar& grammar) {
  const RuleSearch& search = grammar.index.search;
  session.grammar = &grammar;
  session.pool.limit_blocks(grammar.pool.max_blocks() - grammar.pool.blocks());
  SearchScratch& scratch = session.search;
  fit(scratch.left, search, search.left);
  fit(scratch.right, search, search.right);
  scratch.known_pairs.fit(kMostPairs, kMostPairs * sizeof(std::int32_t) * 3);
  scratch.found.clear();
  scratch.found.reserve(kMostPairs);
  scratch.rules.clear();
  scratch.rules.reserve(kPairRules);
  scratch.is_full = false;
}

}  // namespace lexon
