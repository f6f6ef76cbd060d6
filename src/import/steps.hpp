// The steps that rewrite the graph of a meaning bank, so that rules find what they need: each has a name and can be
// left out. Their order is that of the table.
#pragma once

#include <span>

#include "import/meaning.hpp"

namespace lexon {

struct RewriteStep {
  const char* name;
  const char* about;
  void (*run)(Meaning&);  // null: what writes the graph takes the step
};

inline constexpr const char* kRelativesStep = "relatives";

// All steps in their order.
std::span<const RewriteStep> rewrite_steps();

// The steps by subject; see the table in steps.cpp for what each does.
void step_synonyms(Meaning& meaning);
void step_space(Meaning& meaning);
void step_wiki(Meaning& meaning);
void step_names(Meaning& meaning);
void step_dates(Meaning& meaning);
void step_quantities(Meaning& meaning);
void step_prepositions(Meaning& meaning);
void step_pronouns(Meaning& meaning);
void step_reified(Meaning& meaning);
void step_office(Meaning& meaning);
void step_degree(Meaning& meaning);
void step_turned(Meaning& meaning);
void step_modality(Meaning& meaning);
void step_polarity(Meaning& meaning);
void step_persons(Meaning& meaning);
void step_predicates(Meaning& meaning);
void step_contrast(Meaning& meaning);
void step_speaker(Meaning& meaning);
void step_quotation(Meaning& meaning);
void step_questions(Meaning& meaning);
void step_coordination(Meaning& meaning);
void step_tense(Meaning& meaning);
void step_control(Meaning& meaning);
void step_nouns(Meaning& meaning);
void step_voice(Meaning& meaning);
void step_forms(Meaning& meaning);
void step_mentions(Meaning& meaning);
void step_conjunctions(Meaning& meaning);
void step_merging(Meaning& meaning);

}  // namespace lexon
