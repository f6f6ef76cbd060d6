// What checks want to know of a dictionary, in one pass over its entries, whatever their number.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "lab/check.hpp"
#include "lab/check_names.hpp"
#include "lab/word_index.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// An entry among those of a form or a concept that somebody asks for.
struct WordFacts {
  std::string form;
  std::string concept_word;
  std::uint32_t attributes;  // into `WordSurvey::attribute_sets`
};

struct WordSurvey {
  struct Attribute {
    std::int64_t count = 0;
    std::uint32_t file = 0;  // of the first entry that has it, into `files`
    std::int64_t line = 0;   // of that entry; 0 in a built dictionary
    std::string form;        // of that entry
  };
  std::vector<std::string> files;
  // By file; owned here too, whatever the cache does.
  std::vector<std::shared_ptr<const WordIndex>> indexes;
  std::vector<std::uint32_t> first_sets;  // where the sets of each index begin among `attribute_sets`
  [[nodiscard]] bool is_there() const { return !files.empty(); }
  std::unordered_map<NameId, Attribute> attributes;
  std::vector<std::vector<NameId>> attribute_sets;  // each that some entry has, in ascending order
  // Of the forms and concept words that were asked for.
  std::unordered_map<NameId, std::vector<WordFacts>> by_form;
  std::unordered_map<NameId, std::vector<WordFacts>> by_concept;
};

// What a dictionary is asked for.
struct WordQuestions {
  std::unordered_set<NameId> forms;
  std::unordered_set<NameId> concepts;
};

// Appends what is wrong with the entries themselves. Throws Fault for a file that cannot be read.
[[nodiscard]] WordSurvey survey_words(const CheckInput& input, const WordQuestions& questions, Names& names,
                                      std::vector<Finding>& findings);

// What a co-occurrence dictionary gives.
struct PairSurvey {
  std::shared_ptr<const WordIndex> index;  // null: there is none
  std::unordered_set<NameId> given;        // relations that stand as superiors, and the forms of class members
};
[[nodiscard]] PairSurvey survey_cooccurrence(const CheckInput& input, Names& names, std::vector<Finding>& findings);

// Finds the columns of findings about entry text that tell a line and no column: `needles` holds for each finding, by
// its index, what to look for in its line.
void entry_columns_find(const CheckInput& input, const std::unordered_map<std::size_t, std::string>& needles,
                        std::vector<Finding>& findings);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
