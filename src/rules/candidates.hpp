// Which rules a window is offered: those that the index lets through by the attributes of its nodes.
#pragma once

#include <span>

#include "data/records.hpp"
#include "data/session.hpp"
#include "rules/bits.hpp"
#include "rules/grammar.hpp"

namespace lexon {

// The rules that the attributes of the window allow, in rule order, as a new list from the sentence's pool, of which the
// first element is made. Either node may be null. A reference to a scope that is not built is seen through to the scope's
// entry node, whose blocks are turned to the scope. Null when none fits, when an entry node is missing or not to be
// reached, and when memory is exhausted.
[[nodiscard]] RuleCandidate* rule_candidates(Session& session, Node* lnode, Node* rnode);

// The element behind this one, which is made now if it was not asked for before. Null at the end of the list, and when
// memory is exhausted.
[[nodiscard]] RuleCandidate* candidate_next(Session& session, RuleCandidate& element);

// Passes over the element, as `candidate_passed_over`, for the next one that is not of post-edit. Null as above.
[[nodiscard]] RuleCandidate* candidate_pass(Session& session, RuleCandidate& element);

// Calls `visit` with each rule of the list behind the element, in order, and makes none of their elements.
template <typename Visit>
void for_each_rule_behind(const Session& session, const RuleCandidate& element, Visit visit) {
  for (const RuleCandidate* next = element.next; next != nullptr; next = next->next) visit(*next->rule);
  const CandidateList& list = *element.list;
  for (std::int32_t at = list.at; at < list.blocks; ++at) {
    for_each_rule(blocks_of(list)[at], [&](std::int32_t number) {
      visit(*session.grammar->index.search.rules[static_cast<std::size_t>(number)]);
    });
  }
}

// The same with all rules of a list from this element on; null has none.
template <typename Visit>
void for_each_rule_from(const Session& session, const RuleCandidate* first, Visit visit) {
  if (first == nullptr) return;
  visit(*first->rule);
  for_each_rule_behind(session, *first, visit);
}

// The rules of post-edit that the attributes of the window allow; they stand until the session searches again.
[[nodiscard]] std::span<const RuleBlock> post_edit_rules(Session& session, Node* lnode, Node* rnode);

}  // namespace lexon
