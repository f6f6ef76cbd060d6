// Steps that only rename roles: in front of all others what the banks call differently, and when all else is settled what
// English says alike, so that rules say its forms once.
#include <string_view>
#include <utility>

#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {

namespace {

// UMR calls participants by what they do where it knows no frame: (m / move-01 :actor x :theme y). Where the numbers are
// free they are those numbers, so that later steps find a subject.
void participants_apply(Rewriter& graph, int at) {
  if (graph.word(at).sense.empty()) return;
  const bool has_agent = graph.argument(at, "ARG0") >= 0;
  const bool has_object = graph.argument(at, "ARG1") >= 0;
  for (const int led : graph.children(at)) {
    Arc& one = graph.arc(led);
    if (one.inverse) continue;
    const bool is_agent = one.role == "actor" || one.role == "force" || (one.role == "experiencer" && !has_object);
    const bool is_object = one.role == "theme" || one.role == "undergoer" || one.role == "stimulus";
    if (is_agent && !has_agent && graph.argument(at, "ARG0") < 0) one.role = "ARG0";
    if (is_object && !has_object && graph.argument(at, "ARG1") < 0) one.role = "ARG1";
  }
}

}  // namespace

// Every later step then asks for one name. Roles of one bank alone, :affectee, stay what they are.
void step_synonyms(Meaning& meaning) {
  Rewriter graph(meaning, "synonyms");
  for (int at = 0; at < graph.count(); ++at) participants_apply(graph, at);
  constexpr std::pair<std::string_view, std::string_view> kSynonyms[] = {
      {"temporal", "time"}, {"place", "location"},      {"possessor", "poss"},
      {"reason", "cause"},  {"material", "consist-of"}, {"companion", "accompanier"},
  };
  for (Arc& one : meaning.arcs) {
    for (const auto& [name, kept] : kSynonyms) {
      if (is_same(one.role, name)) {
        one.role = kept;
        break;
      }
    }
  }
}

namespace {

// "The key that she opened it with", "the way that he sings": the preposition of a relative
// clause stands at its end, and a noun that names its role needs none.
void relative_apply(Rewriter& graph, int led) {
  struct Stranded {
    const char* role;
    const char* preposition;
    const char* noun;
  };
  constexpr Stranded kStranded[] = {
      {"instrument", "with", nullptr}, {"accompanier", "with", nullptr}, {"topic", "about", nullptr},
      {"beneficiary", "for", nullptr}, {"source", "from", nullptr},      {"manner", nullptr, "way"},
      {"ARG4", "to", nullptr},         {"destination", "to", nullptr},
  };
  const Arc one = graph.arc(led);
  const Concept& noun = graph.word(one.from);
  if (one.gone || !one.inverse || !noun.sense.empty() || !has_attribute(graph.word(one.to), "@cl")) return;
  for (const Stranded& stranded : kStranded) {
    const bool is_it = one.role == stranded.role && (stranded.noun == nullptr || noun.name == stranded.noun);
    if (!is_it || graph.child(one.to, "particle") >= 0) continue;
    attribute_add(graph.word(one.to), "@s_that");
    graph.arc(led).role = "adverbial-relative";
    graph.arc(led).inverse = false;
    if (stranded.preposition != nullptr) graph.add(one.to, graph.add_concept(stranded.preposition), "particle");
    return;
  }
}

}  // namespace

// Clauses of circumstance differ in nothing but their conjunction, and so do relative clauses of a place, a time and the
// like: one role for each kind, so that rules say their forms once. A condition and a clause of time stand in front,
// @ahead; what has a condition is still to come, @conditional.
void step_conjunctions(Meaning& meaning) {
  struct Circumstance {
    std::string_view role;
    bool inverse;
    const char* conjunction;
    const char* becomes;
  };
  constexpr const char* kClause = "adverbial-clause";
  constexpr const char* kRelative = "adverbial-relative";
  constexpr Circumstance kCircumstances[] = {
      {"concession", false, "@s_although", kClause}, {"concession", true, "@s_although", kClause},
      {"cause", false, "@s_because", kClause},       {"cause", true, "@s_so", kClause},
      {"cause", true, "@s_why", kRelative},          {"condition", false, "@s_if", kClause},
      {"condition", true, "@s_so", kClause},         {"concessive-conditional", false, "@s_evenif", kClause},
      {"conj-as-if", false, "@s_asif", kClause},     {"time", false, "@s_when", kClause},
      {"purpose", false, "@s_sothat", kClause},      {"consequence", false, "@s_that", kClause},
      {"result", false, "@s_that", kClause},         {"location", false, "@s_where", kClause},
      {"time", true, "@s_when", kRelative},          {"purpose", true, "@s_that", kRelative},
      {"source", true, "@s_where", kRelative},       {"location", true, "@s_where", kRelative},
      {"manner", true, "@s_how", kRelative},         {"likeness", false, "@s_as", kClause},
  };
  Rewriter graph(meaning, "conjunctions");
  for (int led = 0, end = static_cast<int>(meaning.arcs.size()); led < end; ++led) relative_apply(graph, led);
  for (Arc& one : meaning.arcs) {
    if (one.gone) continue;
    if (one.role == "condition" && !one.inverse) {
      attribute_add(graph.word(one.from), "@conditional");
      // "I will go with you and look for it": what is joined about the same person has the same condition.
      int joined = graph.child(one.from, "conjunct");
      for (int steps = graph.count(); joined >= 0 && steps > 0; --steps) {
        const int part = graph.arc(joined).to;
        if (graph.child(part, "shared") >= 0) attribute_add(graph.word(part), "@conditional");
        joined = graph.child(part, "conjunct");
      }
    }
    if (!has_attribute(graph.word(one.to), "@cl")) continue;
    for (const Circumstance& circumstance : kCircumstances) {
      if (one.inverse != circumstance.inverse || !is_same(one.role, circumstance.role)) continue;
      // "The reason why she left".
      const bool is_why = std::string_view(circumstance.conjunction) == "@s_why";
      if (one.inverse && one.role == "cause" && is_why != graph.is(one.from, "reason")) continue;
      // "The way that she sings".
      const bool is_way = one.inverse && one.role == "manner" && graph.is(one.from, "way");
      // "Where it is a mystery": what something is, is no place.
      const bool is_place = !one.inverse && one.role == "location";
      if (is_place && !has_attribute(graph.word(one.to), "@v")) break;
      // "It held as the smith had promised", but "like the fall of a tree", of which nothing more is told.
      const bool is_told = graph.child(one.to, "ARG0") >= 0 && graph.child(one.to, "ARG1") >= 0;
      if (one.role == "likeness" && !is_told && !has_attribute(graph.word(one.to), "@neg")) break;
      // "She came to help because she was free": an infinitive stands nearer than a clause.
      const Concept& word = graph.word(one.to);
      const bool is_infinitive = one.role == "purpose" && !one.inverse && graph.child(one.to, "understood") >= 0 &&
                                 !has_attribute(word, "@ctl1") && !has_attribute(word, "@aux") &&
                                 is_event(graph, one.to);
      if (is_infinitive) break;
      const bool is_timed =
          one.role == "time" && (graph.child(one.from, "condition") < 0 || graph.child(one.from, "conjunct") >= 0);
      const bool is_ahead =
          !one.inverse && (one.role == "condition" || is_timed) && !has_attribute(graph.word(one.from), "@query");
      if (is_ahead) attribute_add(graph.word(one.to), "@ahead");
      // "How he sings", and not the thing how he sings.
      if (one.role == "manner" && !is_way) attribute_add(graph.word(one.from), "@how");
      attribute_add(graph.word(one.to), is_way ? "@s_that" : circumstance.conjunction);
      one.role = circumstance.becomes;
      one.inverse = false;
      break;
    }
    // "As tall as she is".
    if (one.role == "compared-to" && !one.inverse && has_attribute(graph.word(one.from), "@equal")) {
      attribute_add(graph.word(one.to), "@s_as");
      one.role = kRelative;
    }
  }
}

// Rules need a row for each form that what fills a role may have, so roles that differ by a preposition alone are one role
// for them: :circumstance, where the word says which, @p_with.
void step_merging(Meaning& meaning) {
  struct Merged {
    std::string_view role;
    bool inverse;
    const char* becomes;
    const char* preposition;  // null for a role whose preposition stays
  };
  constexpr const char* kCircumstance = "circumstance";
  constexpr Merged kMerged[] = {
      {"direction", false, kCircumstance, "@p_toward"},
      {"path", false, kCircumstance, "@p_along"},
      {"instrument", false, kCircumstance, "@p_with"},
      {"accompanier", false, kCircumstance, "@p_with"},
      {"medium", false, kCircumstance, "@p_in"},
      {"beneficiary", false, kCircumstance, "@p_for"},
      {"affectee", false, kCircumstance, "@p_for"},
      {"cost", false, kCircumstance, "@p_for"},
      {"range", false, kCircumstance, "@p_over"},
      {"role", false, kCircumstance, "@p_as"},
      {"example", false, "likeness", nullptr},
      {"superlative-of", false, "superset", nullptr},
      {"instrument", true, "ARG3", nullptr},
      // "A spring of water", for which the graph says that the water comes from there.
      {"source", true, "location", nullptr},
      {"time", true, "location", nullptr},
  };
  Rewriter graph(meaning, "merging");
  for (Arc& one : meaning.arcs) {
    if (one.gone) continue;
    for (const Merged& merged : kMerged) {
      if (one.inverse != merged.inverse || !is_same(one.role, merged.role)) continue;
      // "The oldest of them": of a pronoun nothing is said, so that role keeps its name.
      if (one.role == "superlative-of" && has_attribute(graph.word(one.to), "@ref")) break;
      one.role = merged.becomes;
      if (merged.preposition != nullptr) attribute_add(graph.word(one.to), merged.preposition);
      break;
    }
  }
}

}  // namespace lexon
