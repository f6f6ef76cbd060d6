#include "import/steps.hpp"

namespace lexon {
namespace {

// Names and numbers come first, as later steps ask what is a pronoun and what a plural; frames that stand for roles
// before coordination, so that operands share subjects and not frames; voice before control, which asks for the
// subject; mentions last, as every step before them looks at concepts, not at words.
constexpr RewriteStep kSteps[] = {
    // Words first: whoever asks later for a name, a number or a pronoun finds one concept, not a frame around a value.
    {"synonyms", "UMR's :temporal, :place, :possessor, :reason, ... get the names that AMR has for them",
     step_synonyms},
    {"space", "UMR: frames of space become prepositions, parts of things nouns, coordinates a text; the viewpoint goes",
     step_space},
    {"wiki", "leave out :wiki and UMR's :modal-predicate, which no sentence says", step_wiki},
    {"names", "a named thing becomes its name: one word with @name and its type as attribute", step_names},
    {"dates", "a date-entity becomes its month, weekday, part of the day or year, and the rest depends on that",
     step_dates},
    {"quantities", "a quantity becomes its unit with a number, an ordinal the number with (>ord); @pl beside numbers",
     step_quantities},
    {"prepositions", "a role that is a preposition (:prep-against) becomes :prep of that word, which governs the rest",
     step_prepositions},
    {"pronouns", "a person or thing with :refer-person alone becomes i, we, you, he, it or they", step_pronouns},
    // Frames that no sentence says as verbs. The speaker of an utterance goes first, so that the utterance is the root;
    // an office before persons, as a mayor is no haver of a role.
    {"speaker", "UMR: an utterance stands for itself; who says it is i, to whom is you, and the frame is left out",
     step_speaker},
    {"reified", "frames that stand for a role (cause-01, have-purpose-91) become that role", step_reified},
    {"office", "have-org-role and have-rel-role: the person is called by the office, with what it belongs to",
     step_office},
    {"degree", "have-degree-91 and have-quant-91: @more, @most, @too, @equal on the quality, with :compared-to",
     step_degree},
    {"turned",
     "what English tells the other way round: a condition stands below what it is a condition of, what follows "
     "from a degree behind the clause, a place without a name is the place where",
     step_turned},
    // What a modal verb, a negation or a mood says stands as an attribute of the clause from here on.
    {"modality", "possible-01, obligate-01, recommend-01, permit-01: @can, @must, @should, @may on what they govern",
     step_modality},
    {"polarity", "yes-no questions get @int, truth-value @whether", step_polarity},
    // Nouns out of frames, then clauses out of nouns: what is left is what the sentence states.
    {"persons",
     "person :ARG0-of a frame becomes the frame with @agent (driver), thing :ARG1-of one with @result (order)",
     step_persons},
    {"predicates", "what is said without a verb: you are there; where only and not stand; how tall is it",
     step_predicates},
    // From here on the shape of the sentence: which clause stands beside which, and who is said in which of them. A
    // contrast is taken apart before other coordinations, so that "but" is outside of what is quoted.
    {"contrast", "contrast-01, but-91 and a first operand that is missing: @but, @and on what follows", step_contrast},
    {"coordination", "operands become a chain of :conjunct, with @and, @or on the later; shared subjects :shared",
     step_coordination},
    {"quotation",
     "what is said in a form that only direct speech has becomes :quoted, in a file full of it all that is said",
     step_quotation},
    {"questions", "what is asked for becomes :questioned of its clause, which gets @ask", step_questions},
    // Guesses that need the finished clauses: tense looks at who is spoken of, control at the passive.
    {"tense", "a guess: a clause whose subject is you is about now, @pres, if nothing else is known", step_tense},
    {"nouns", "an event gets @nom where English has a noun for it: they rejected the proposal", step_nouns},
    {"voice", "a frame whose agent is an event and that is done to a person gets @psv: she was surprised to see him",
     step_voice},
    {"control",
     "a subject that the governing clause has named becomes :understood; that of what seems to be is its subject, too",
     step_control},
    {"forms", "a clause with a subject gets @cl, one whose verb stands behind an auxiliary @aux, one of being @there",
     step_forms},
    // From here on a concept may be several words, so nothing may ask any more how often it is mentioned.
    {"mentions", "a further mention becomes a word of its own with @ref", step_mentions},
    {"conjunctions",
     "a cause, condition or the like that is a clause becomes :adverbial-clause, with its conjunction: @s_because",
     step_conjunctions},
    {"merging",
     "roles that English says alike become one: an instrument or a path is a :circumstance, with its preposition",
     step_merging},
    {kRelativesStep, "inverse roles keep their direction where the table has a label for them (:ARG0-of)", nullptr},
};

}  // namespace

std::span<const RewriteStep> rewrite_steps() {
  return kSteps;
}

}  // namespace lexon
