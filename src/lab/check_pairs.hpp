// Checks of the co-occurrence dictionary against rules and words: pairs that nobody can ask about.
#pragma once

#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include "lab/check_words.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// What else a check knows of the words of pairs.
struct PairContext {
  const WordSurvey& words;
  const std::unordered_set<NameId>& roles;  // relations that rules name
  const std::unordered_set<NameId>& forms;  // that rules ask for; those of classes begin with "#"
  // Can a word have this form without an entry: one that the graphs name, that a rule writes, that a class has?
  std::function<bool(const std::string&)> has_other_form;
  bool judges_words = false;  // there are words and graphs to judge by
};

// Appends a finding for each superior or member of a class that no rule asks for, for each pair that holds no relation
// that a rule leads to, and, if words are judged, for each with a word that goes by another name or is in no dictionary.
// Returns the relations of rules for which there is a value.
[[nodiscard]] std::unordered_set<NameId> check_pairs(const CheckInput& input, const PairSurvey& pairs,
                                                     const PairContext& context, Names& names,
                                                     std::vector<Finding>& findings);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
