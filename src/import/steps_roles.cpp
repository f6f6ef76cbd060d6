// Steps that only rename roles: in front of all others what the banks call differently, and when all else is settled what
// English says alike, so that rules say its forms once.
#include <string_view>
#include <utility>

#include "import/clauses.hpp"
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

// The two roles that all clauses of circumstance come to: behind a verb, and behind a noun.
constexpr const char* kAdverbialClause = "adverbial-clause";
constexpr const char* kAdverbialRelative = "adverbial-relative";

// "The key that she opened it with", "the way that he sings": the preposition of a relative clause stands at its end, and a
// noun that names its role needs none.
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
    graph.arc(led).role = kAdverbialRelative;
    graph.arc(led).inverse = false;
    if (stranded.preposition != nullptr) graph.add(one.to, graph.add_concept(stranded.preposition), "particle");
    return;
  }
}

// What a role of circumstance is called for the rules, and the conjunction that the clause has.
struct Circumstance {
  std::string_view role;
  bool inverse;
  const char* conjunction;
  const char* becomes;
};

// The role :cause-of has two rows, between which circumstance_of chooses.
constexpr Circumstance kAdverbials[] = {
    {"concession", false, "@s_although", kAdverbialClause},
    {"concession", true, "@s_although", kAdverbialClause},
    {"cause", false, "@s_because", kAdverbialClause},
    {"cause", true, "@s_so", kAdverbialClause},
    {"cause", true, "@s_why", kAdverbialRelative},
    {"condition", false, "@s_if", kAdverbialClause},
    {"condition", true, "@s_so", kAdverbialClause},
    {"concessive-conditional", false, "@s_evenif", kAdverbialClause},
    {"conj-as-if", false, "@s_asif", kAdverbialClause},
    {"time", false, "@s_when", kAdverbialClause},
    {"purpose", false, "@s_sothat", kAdverbialClause},
    {"consequence", false, "@s_that", kAdverbialClause},
    {"result", false, "@s_that", kAdverbialClause},
    {"location", false, "@s_where", kAdverbialClause},
    {"time", true, "@s_when", kAdverbialRelative},
    {"purpose", true, "@s_that", kAdverbialRelative},
    {"source", true, "@s_where", kAdverbialRelative},
    {"location", true, "@s_where", kAdverbialRelative},
    {"manner", true, "@s_how", kAdverbialRelative},
    {"likeness", false, "@s_as", kAdverbialClause},
};

// The row for an arc; null if its role is none of a clause.
const Circumstance* circumstance_of(Rewriter& graph, const Arc& one) {
  // (r / reason :cause-of (l / leave-11)): "the reason why she left"; behind another noun or verb what follows from it is
  // told, "so she left".
  const bool is_cause = one.inverse && one.role == "cause";
  for (const Circumstance& row : kAdverbials) {
    if (one.inverse != row.inverse || !is_same(one.role, row.role)) continue;
    const bool is_why = std::string_view(row.conjunction) == "@s_why";
    if (!is_cause || is_why == graph.is(one.from, "reason")) return &row;
  }
  return nullptr;
}

// What fills a role of circumstance may have no conjunction, though it has a subject.
bool is_no_adverbial(Rewriter& graph, const Arc& one) {
  const Concept& word = graph.word(one.to);
  if (one.inverse) return false;
  // "Where it is a mystery": what something is, is no place.
  if (one.role == "location") return !has_attribute(word, "@v");
  // "It held as the smith had promised", but "like the fall of a tree", of which nothing more is told.
  if (one.role == "likeness") {
    const bool is_told = graph.child(one.to, "ARG0") >= 0 && graph.child(one.to, "ARG1") >= 0;
    constexpr std::array kLiking{"like", "want", "please", "wish", "choose"};
    return !is_told && !has_attribute(word, "@neg") && !is_one_of(graph, one.to, kLiking);
  }
  // "She came to help because she was free": an infinitive stands nearer than a clause. Of these the subject is ARG1.
  constexpr std::array kByItself{"rest", "sleep",  "sit-down", "lie-down", "stay",
                                 "live", "travel", "escape",   "come",     "arrive"};
  const bool is_deed = !has_attribute(word, "@ctl1") || is_one_of(graph, one.to, kByItself);
  return one.role == "purpose" && graph.child(one.to, "understood") >= 0 && is_deed && !has_attribute(word, "@aux") &&
         is_event(graph, one.to);
}

// (l / leave-11 :cause (r / rain-01)): the role becomes that of all such clauses, and the word gets the conjunction.
void conjunction_apply(Rewriter& graph, Arc& one) {
  const Circumstance* row = circumstance_of(graph, one);
  if (row == nullptr || is_no_adverbial(graph, one)) return;
  // In front of a quotation stands nothing: '"Bring it," he said when he sat down.'
  const bool is_timed = one.role == "time" && graph.child(one.from, "quoted") < 0 &&
                        !has_attribute(graph.word(one.from), "@ask") && !has_attribute(graph.word(one.from), "@int") &&
                        (graph.child(one.from, "condition") < 0 || graph.child(one.from, "conjunct") >= 0);
  // "Only when it rains": what picks out a clause belongs to its conjunction.
  constexpr std::array kPicking{"only", "even", "especially", "particularly", "just", "not-only"};
  const bool is_picking =
      one.role == "time" || one.role == "condition" || one.role == "cause" || one.role == "location";
  const bool is_picked = !one.inverse && is_picking && child_among(graph, one.to, "mod", kPicking) >= 0;
  if (is_picked) attribute_add(graph.word(one.to), "@focus");
  const bool is_ahead = !one.inverse && (one.role == "condition" || is_timed) && !is_picked &&
                        !is_front_taken(graph, one.from) && !has_attribute(graph.word(one.from), "@query");
  if (is_ahead) attribute_add(graph.word(one.to), "@ahead");
  if (one.role == "condition" && !is_ahead && is_front_taken(graph, one.from)) {
    attribute_add(graph.word(one.to), "@behind");
    if (!has_attribute(graph.word(one.to), "@past")) attribute_add(graph.word(one.to), "@pres");
  }
  // "The way that she sings"; elsewhere "how he sings", and not the thing how he sings.
  const bool is_way = one.inverse && one.role == "manner" && graph.is(one.from, "way");
  if (one.role == "manner" && !is_way) attribute_add(graph.word(one.from), "@how");
  // "The first time that she saw it".
  const bool is_turn =
      one.inverse && one.role == "time" && graph.is(one.from, "time") &&
      (graph.child(one.from, "ord") >= 0 || child_among(graph, one.from, "mod", std::array{"only", "last"}) >= 0);
  attribute_add(graph.word(one.to), is_way || is_turn ? "@s_that" : row->conjunction);
  one.role = row->becomes;
  one.inverse = false;
}

// "As soon as the rain stopped, she ran out to play": in front, where nobody takes what she does for a part of the time.
// (r / run-02 :time (a / after :op1 (s / stop-01 ...)) :purpose p): the clause takes the place of its preposition.
void time_in_front(Rewriter& graph, int led) {
  constexpr std::pair<const char*, const char*> kRelations[] = {
      {"after", "@s_after"}, {"before", "@s_before"}, {"as-soon-as", "@s_assoonas"}};
  const Arc one = graph.arc(led);
  const std::vector<int> below =
      one.gone || one.inverse || one.role != "time" ? std::vector<int>{} : graph.children(one.to);
  if (below.size() != 1 || graph.arc(below[0]).role != "op1" || !has_attribute(graph.word(one.from), "@cl") ||
      has_attribute(graph.word(one.from), "@nom"))
    return;
  const int clause = graph.arc(below[0]).to;
  const bool is_sentence = subject_arc(graph, one.from) >= 0 && graph.child(one.from, "quoted") < 0 &&
                           graph.child(one.from, "shared") < 0 && graph.child(one.from, "condition") < 0 &&
                           !has_attribute(graph.word(one.from), "@query");
  if (!has_attribute(graph.word(clause), "@cl") || !is_sentence) return;
  bool is_long = false;
  for (const char* role : {"purpose", "ARG1", "ARG2"}) {
    const int held = graph.child(one.from, role);
    const Concept* word = held < 0 ? nullptr : &graph.word(graph.arc(held).to);
    is_long |= word != nullptr && (has_attribute(*word, "@cl") || graph.child(graph.arc(held).to, "understood") >= 0) &&
               !has_attribute(*word, "@nom");
  }
  if (!is_long) return;
  for (const auto& [name, mark] : kRelations) {
    if (!graph.is(one.to, name)) continue;
    graph.settle_concept(one.to, Fate::word);
    graph.remove(below[0], Fate::word);
    graph.lead_to(led, clause);
    graph.arc(led).role = kAdverbialClause;
    attribute_add(graph.word(clause), mark);
    return attribute_add(graph.word(clause), "@ahead");
  }
}

// What has a condition is still to come, and so is what is joined to it about the same person: "I will go with you and
// look for it".
void conditional_apply(Rewriter& graph, int at) {
  attribute_add(graph.word(at), "@conditional");
  int joined = graph.child(at, "conjunct");
  for (int steps = graph.count(); joined >= 0 && steps > 0; --steps) {
    const int part = graph.arc(joined).to;
    if (graph.child(part, "shared") >= 0) attribute_add(graph.word(part), "@conditional");
    joined = graph.child(part, "conjunct");
  }
}

}  // namespace

// Clauses of circumstance differ in nothing but their conjunction, and so do relative clauses of a place, a time and the
// like: one role for each kind, so that rules say their forms once. A condition and a clause of time stand in front,
// @ahead; what has a condition is still to come, @conditional.
void step_conjunctions(Meaning& meaning) {
  Rewriter graph(meaning, "conjunctions");
  for (int led = 0, end = static_cast<int>(meaning.arcs.size()); led < end; ++led) relative_apply(graph, led);
  for (int led = 0, end = static_cast<int>(meaning.arcs.size()); led < end; ++led) time_in_front(graph, led);
  for (Arc& one : meaning.arcs) {
    if (one.gone) continue;
    // "What do you think he will do?"
    constexpr std::array kThinking{"think", "believe", "say", "suppose", "guess", "hope", "expect", "imagine"};
    if (is_core(one) && is_one_of(graph, one.from, kThinking) && is_asked_into(graph, one.to))
      attribute_add(graph.word(one.to), "@thatless");
    if (one.role == "condition" && !one.inverse) conditional_apply(graph, one.from);
    if (!has_attribute(graph.word(one.to), "@cl")) continue;
    conjunction_apply(graph, one);
    // "As tall as she is".
    if (one.role == "compared-to" && !one.inverse && has_attribute(graph.word(one.from), "@equal")) {
      attribute_add(graph.word(one.to), "@s_as");
      one.role = kAdverbialRelative;
    }
  }
}

namespace {

// "He was busy all week": such a time has no preposition, and there is one.
void whole_time_apply(Rewriter& graph, Arc& one) {
  constexpr std::array kWhole{"all", "whole"};
  const bool is_span = one.role == "duration" && is_one_of(graph, one.to, kSpans);
  if (is_span && child_among(graph, one.to, "mod", kWhole) >= 0) one.role = "extent";
}

}  // namespace

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
    whole_time_apply(graph, one);
    for (const Merged& merged : kMerged) {
      if (one.inverse != merged.inverse || !is_same(one.role, merged.role)) continue;
      // "The oldest of them": of a pronoun nothing is said, so that role keeps its name.
      if (one.role == "superlative-of" && has_attribute(graph.word(one.to), "@ref")) break;
      // "Through the town", but "along the road".
      constexpr std::array kEntered{"town",  "city",  "village", "capital", "forest",  "wood",     "garden",
                                    "room",  "house", "desert",  "park",    "country", "air",      "window",
                                    "door",  "gate",  "crowd",   "field",   "jungle",  "tunnel",   "valley",
                                    "hall",  "grass", "snow",    "rain",    "fog",     "darkness", "hole",
                                    "world", "sky",   "space",   "region",  "square",  "water",    "sand"};
      const Concept& entered = graph.word(one.to);
      const bool is_entered = is_listed(entered.name, kEntered) || has_attribute(entered, "@city") ||
                              has_attribute(entered, "@country") || has_attribute(entered, "@state");
      const bool is_through = one.role == "path" && is_entered;
      one.role = merged.becomes;
      if (merged.preposition != nullptr)
        attribute_add(graph.word(one.to), is_through ? "@p_through" : merged.preposition);
      break;
    }
  }
}

}  // namespace lexon
