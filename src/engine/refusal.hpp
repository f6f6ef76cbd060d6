// Why a rule does not fit a window, asked again after the fact: a match that says no leaves everything as it was, but
// for the order of words. Nothing is changed here either.
//
// The steps mirror those of match.cpp, filter.cpp, insertion.cpp, literal.cpp and context_match.cpp, and those of the
// index (rules/candidates.cpp). Where these stop at the first condition that fails, here all are asked, so that it can
// be told how much was missing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "data/records.hpp"
#include "engine/loop.hpp"
#include "engine/side.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

enum class Reason : std::uint8_t {
  // Of the rule as a whole.
  relation_between_braces,      // both patterns in braces, and one names a relation
  test_at_boundary,             // ?L and ?R aim at no boundary
  merge_of_boundary_or_entry,   // DL and DR take away neither a boundary nor the entry of the scope
  waits_for_another_candidate,  // a node that was put back belongs to another application of a rule with MID
  place_empty,                  // the list has no node there
  list_too_short,               // a group beyond the window needs a node
  // Of the context.
  context_ended,      // the list ends before the groups do
  context_untouched,  // a node that no rule has touched yet lies there
  context_condition,  // a condition of a group
  // Of a word.
  surface_form,
  concept_word,
  attribute_missing,
  attribute_forbidden,
  attributes_too_long,  // what the rule adds has no room
  nothing_to_object,    // a word test that is after misfits has found none
  no_word,              // the node has no words
  co_occurrence,        // the pair has the value 0
  // Of a relation.
  relation_missing,         // no arc with this label touches the node
  relation_turned,          // there is one, in the other direction
  relation_used,            // it has brought a node in already
  relation_of_other_scope,  // it belongs to another scope
  scope_without_entry,      // it leads to a scope that has no "@entry"
  // Of a node from the dictionary.
  literal_without_text,   // the pattern names no word
  literal_unknown,        // no dictionary knows the word, and the pattern cannot stand for it
  literal_lookup_failed,  // the dictionary cannot be read
  shifted_text,           // the neighbour's surface form does not begin, or end, with the text
  // What is known by its verdict alone.
  words_used_up,       // the node that was put back has tried all its words
  asks_for_step_back,  // a word test that found what it forbids on a word in force
};

// Which part of a rule asks.
enum class RulePart : std::uint8_t { rule, pre, lnode, mid, rnode, suf };

// One thing that was not as the rule wants it.
struct Miss {
  Reason reason{};
  RulePart part = RulePart::rule;
  const ContextGroup* group = nullptr;  // of the rule; null: it is about no group
  const CondItem* condition = nullptr;  // of the rule; null: it is about no single condition
  std::string node{};                   // the node that was asked: its word or its concept word; may be empty
  std::string word{};                   // the nearest of the node's words: surface form and attributes
  const Rule* settled_by = nullptr;     // the rule that touched the node last; null: none
  std::string detail{};                 // a pair of words, or a label
};

// What the rule misses at the window, as match_rule finds it now; the first is what refuses it. Empty: it fits.
// `was_refused` says that match_rule has just said no; without it the co-occurrence dictionary is not asked.
[[nodiscard]] std::vector<Miss> rule_misses(Session& session, const RuleCandidate& candidate, const Window& window,
                                            bool was_refused);

// What keeps the index from offering the rule at the window: the attributes that the nearest words miss, or have and
// must not. Empty: it offers it. To be asked where a list of rules was just asked for.
[[nodiscard]] std::vector<Miss> index_misses(Session& session, const Rule& rule, const Window& window);

// Where the words of a node come from that the rule has just brought in.
enum class NodeSource : std::uint8_t { relation, dictionary, word_class, pattern };
[[nodiscard]] NodeSource source_of_node(Session& session, const Rule& rule, Side side, const Node& node);

}  // namespace lexon
