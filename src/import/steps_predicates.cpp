// The step about what is said without a verb of its own: being somewhere, being something, and where "only" and "not"
// stand then.
#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/clauses.hpp"
#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {
namespace {

// They stand for several without @pl.
constexpr std::array kPluralPronouns{"they", "we", "these", "those"};

// What needs no word that says what it is.
bool is_pronoun(Rewriter& graph, int at) {
  return is_personal_pronoun(graph, at) || is_one_of(graph, at, kDemonstratives);
}

// A concept that joins others; the frame of a contrast is one.
bool is_joining(Rewriter& graph, int at) {
  constexpr std::array kJoining{"and", "or", "but", "contrast", "multi-sentence"};
  return is_one_of(graph, at, kJoining);
}

// What the sentence states, behind "and", "but" of which nothing else is joined.
int statement_of(Rewriter& graph) {
  int at = graph.meaning().root;
  for (int steps = graph.count(); at >= 0 && is_joining(graph, at) && steps > 0; --steps) {
    const std::vector<int> below = graph.children(at);
    if (below.size() != 1) break;
    at = graph.arc(below[0]).to;
  }
  return at;
}

// What says of a subject that it is somewhere.
int add_being(Rewriter& graph) {
  const int being = graph.add_concept("be-located-at");
  graph.word(being).sense = "91";
  attribute_add(graph.word(being), "@v");
  return being;
}

// (y / you :location (t / there)), said for itself: "you are there".
// A bank gives the place as a role of the thing, with no verb: at the root, below "and" or below what is said, the
// thing with its place is the statement, and a verb is made for it. Nouns elsewhere keep the place: "the house there".
void located_apply(Rewriter& graph, int at) {
  const int place = graph.child(at, "location");
  constexpr std::array kNew{"nothing", "nobody", "something", "somebody", "someone", "no-one", "noone"};
  const bool is_new = is_one_of(graph, at, kNew);
  if (place < 0 || graph.child(at, "domain") >= 0) return;
  const int above = graph.parent(at);
  constexpr std::array kStating{"say", "tell", "answer", "reply", "think", "know", "see"};
  const bool is_said = above >= 0 && graph.mentions(at) == 1 && !graph.arc(above).inverse &&
                       graph.arc(above).role == "ARG1" && is_one_of(graph, graph.arc(above).from, kStating);
  const bool is_joined = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role != "mod" &&
                         is_joining(graph, graph.arc(above).from) && graph.parent(graph.arc(above).from) < 0;
  // "She said that the school is in the mill": no place is said.
  constexpr std::array kWords{"word", "thing", "name", "story", "truth", "speech", "this", "that"};
  const bool is_noun =
      is_said && graph.word(at).sense.empty() && !graph.word(at).variable.empty() &&
      (graph.is(graph.arc(above).from, "say", "01") || graph.is(graph.arc(above).from, "think", "01")) &&
      !is_one_of(graph, at, kWords) && !is_joining(graph, at);
  if (!is_new && !is_noun && !is_pronoun(graph, at)) return;
  if (at != graph.meaning().root && !is_said && !is_joined) return;
  const int being = add_being(graph);
  graph.redirect(at, being);
  if (!is_noun) graph.move_children(at, being);
  graph.replace(place, being, graph.arc(place).to, "ARG2");
  graph.add(being, at, "ARG1");
  if (is_new) attribute_add(graph.word(being), "@there");
  for (const char* mood : {"@neg", "@int", "@past", "@pres", "@fut", "@quote"}) {
    if (std::erase(graph.word(at).attributes, mood) > 0) attribute_add(graph.word(being), mood);
  }
}

// "She is at home": nobody's in particular.
void at_home_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "home") && graph.children(at).empty() ? graph.parent(at) : -1;
  if (led < 0 || graph.arc(led).inverse || graph.mentions(at) > 1) return;
  const bool is_place = graph.arc(led).role == "ARG2" && graph.is(graph.arc(led).from, "be-located-at", "91");
  if (is_place) attribute_add(graph.word(at), "@noart");
}

// (l / lonely :domain (b / be-located-at-91 :ARG2 (c / city))): "it is lonely in the city".
// What is lonely is the being there; English puts "it" in the place of the subject and says the place behind.
void somewhere_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "domain");
  if (led < 0) return;
  const int being = graph.arc(led).to;
  const int place = graph.is(being, "be-located-at", "91") ? graph.child(being, "ARG2") : -1;
  if (place < 0 || graph.child(being, "ARG1") >= 0 || graph.mentions(being) > 1) return;
  graph.settle_concept(being, Fate::relation);
  graph.replace(place, at, graph.arc(place).to, "location");
  graph.move_children(being, at);
  graph.lead_to(led, graph.add_concept("it"));
}

// Who speaks says something: no that-clause stands behind the verb. What is said to nobody, and is a clause,
// is what is said.
// (s / speak-01 :ARG0 k :ARG1 (r / rain-01 ...)) is "k says that ...", or asks whether, as "speaks that" is no English.
// Some files number what is said as ARG2 of say-01.
void speaking_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "ARG1");
  const int above = graph.parent(at);
  const bool is_speaking = (graph.is(at, "speak", "01") || graph.is(at, "go", "23")) &&
                           (above < 0 || !graph.arc(above).role.starts_with("ARG"));
  if (is_speaking && led >= 0) {
    const int said = graph.arc(led).to;
    const bool has_subject =
        graph.child(said, "ARG0") >= 0 || graph.child(said, "domain") >= 0 || graph.child(said, "ARG1") >= 0;
    const bool is_asked = has_attribute(graph.word(said), "@whether") || has_attribute(graph.word(said), "@int");
    if (has_subject && (is_event(graph, said) || graph.child(said, "domain") >= 0))
      graph.word(at).name = is_asked ? "ask" : "say";
  }
  const int told = graph.is(at, "say", "01") && led < 0 ? graph.child(at, "ARG2") : -1;
  if (told >= 0 && graph.child(graph.arc(told).to, "domain") >= 0) graph.arc(told).role = "ARG1";
}

// (s / sell-01 :ARG0 (b / baker :domain (t / that))): "that is a baker who sells". The clause is said of the noun.
void presented_apply(Rewriter& graph) {
  const int root = graph.meaning().root;
  if (root < 0 || !is_event(graph, root)) return;
  const int led = graph.child(root, "ARG0");
  const int noun = led >= 0 ? graph.arc(led).to : -1;
  const int about = noun >= 0 ? graph.child(noun, "domain") : -1;
  const bool is_presented =
      about >= 0 && !is_event(graph, noun) && graph.mentions(noun) == 1 && is_pronoun(graph, graph.arc(about).to);
  if (!is_presented) return;
  graph.replace(led, noun, root, "ARG0", true);
  graph.meaning().root = noun;
}

// (w / we :domain-of (c / club :mod (o / old))): "we are an old club". Nothing else is told of the pronoun, so it is told what
// it is.
void identified_apply(Rewriter& graph) {
  const int root = graph.meaning().root;
  if (root < 0 || !is_personal_pronoun(graph, root) || graph.children(root).size() != 1) return;
  const int led = graph.child(root, "mod");
  const int noun = led < 0 ? -1 : graph.arc(led).to;
  if (noun < 0 || is_event(graph, noun) || graph.children(noun).empty() || graph.mentions(noun) > 1) return;
  graph.replace(led, noun, root, "domain");
  graph.meaning().root = noun;
}

// (s / sleep-01 :ARG0 h :location h): "he sleeps where he is".
// A bank that has no place to name writes the sleeper himself in its stead. The verb of being has the aspect and tense
// of the clause, as both are about the same time.
void own_place_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "location");
  if (led < 0 || !is_event(graph, at)) return;
  const int who = graph.arc(led).to;
  for (const char* role : {"ARG0", "ARG1"}) {
    const int own = graph.child(at, role);
    if (own < 0 || graph.arc(own).to != who) continue;
    const int being = add_being(graph);
    graph.add(being, who, "ARG1");
    graph.lead_to(led, being);
    for (const char* aspect : {"@habit", "@state", "@past", "@pres"}) {
      if (has_attribute(graph.word(at), aspect)) attribute_add(graph.word(being), aspect);
    }
    return;
  }
}

// (s / sing-01 :ARG0 t :cause t), where t is a pronoun: "because they sing", as an answer.
void answer_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "cause");
  const int subject = graph.child(at, "ARG0");
  const bool is_own = led >= 0 && subject >= 0 && graph.arc(led).to == graph.arc(subject).to;
  if (!is_own || !is_pronoun(graph, graph.arc(subject).to)) return;
  graph.remove(led, Fate::attribute);
  attribute_add(graph.word(at), "@as_cause");
}

// "He does not live here": what is not here is the living.
// (l / live-01 :ARG0 he :location (h / here :polarity -)). Only what is a bare word: a denied clause, "because he does
// not live here", keeps its own.
void denial_apply(Rewriter& graph, Arc& one) {
  // "They did not find it until the morning".
  const bool is_limit = !one.gone && !one.inverse && (graph.is(one.to, "until") || graph.is(one.to, "before"));
  if (is_limit && is_event(graph, one.from) && !has_attribute(graph.word(one.from), "@neg") &&
      std::erase(graph.word(one.to).attributes, "@neg") > 0)
    attribute_add(graph.word(one.from), "@neg");
  constexpr std::array kCircumstances{"location", "time", "manner", "frequency", "extent", "direction", "duration"};
  const bool is_circumstance = !one.gone && !one.inverse && is_listed(one.role, kCircumstances);
  if (!is_circumstance || !has_attribute(graph.word(one.to), "@neg") || !graph.word(one.to).sense.empty()) return;
  const bool is_clause = is_event(graph, one.from) || graph.child(one.from, "domain") >= 0;
  if (!is_clause || !graph.children(one.to).empty() || graph.mentions(one.to) > 1) return;
  if (has_attribute(graph.word(one.from), "@neg")) return;
  // "She left without a word": what is done so is done.
  constexpr std::array kLacked{"doubt",   "mercy", "hesitation", "effort", "haste",      "delay",  "shame",  "success",
                               "warning", "fear",  "difficulty", "pity",   "permission", "regret", "reason", "help"};
  constexpr std::array kCounted{"word", "sound", "noise", "hurry",  "smile",     "tear",
                                "look", "aim",   "sigh",  "glance", "exception", "purpose"};
  const bool is_counted = is_one_of(graph, one.to, kCounted);
  if (one.role == "manner" && (is_counted || is_one_of(graph, one.to, kLacked)))
    return attribute_add(graph.word(one.to), is_counted ? "@indef" : "@noart");
  std::erase(graph.word(one.to).attributes, "@neg");
  attribute_add(graph.word(one.from), "@neg");
}

// (a / apple :quant 1 :mod (o / only)) that somebody buys: only one apple.
void only_counted(Rewriter& graph, int at, int led) {
  const int above = graph.parent(at);
  const bool is_object = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role.starts_with("ARG") &&
                         graph.word(at).sense.empty() && is_event(graph, graph.arc(above).from);
  const int counted = graph.child(at, "quant");
  const int number = counted < 0 ? -1 : graph.arc(counted).to;
  if (!is_object || number < 0 || !graph.word(number).variable.empty() || graph.child(at, "poss") >= 0) return;
  graph.replace(counted, graph.arc(led).to, number, "op1");
  graph.arc(led).role = "quant";
}

// "Only" stands in front of the verb, also where the graph has it with the noun of an event below: "she only needs a walk".
// In front of a predicate it stands before the article: "they are only small lamps".
void only_apply(Rewriter& graph, int led) {
  if (graph.arc(led).gone || graph.arc(led).inverse || graph.arc(led).role != "mod") return;
  const int only = graph.arc(led).to;
  // "Only one person": the number stands below.
  const int counted = graph.is(only, "only") ? graph.child(only, "op1") : -1;
  const int above_it = graph.arc(led).from;
  if (counted >= 0 && graph.child(above_it, "quant") < 0 && graph.word(above_it).sense.empty()) {
    graph.arc(led).role = "quant";
    return;
  }
  if (!graph.is(only, "only") || !graph.children(only).empty() || graph.mentions(only) > 1) return;
  const int at = graph.arc(led).from;
  // "Only ten years".
  if (has_attribute(graph.word(at), "@measure")) graph.word(only).sense = "adv";
  const bool is_predicate = graph.child(at, "domain") >= 0;
  // "She is my only friend."
  if (is_predicate && graph.child(at, "poss") >= 0) return;
  // "The only one who can read", "the only man who saw it".
  const std::vector<int> said = graph.children(at);
  const bool is_told_of = std::any_of(said.begin(), said.end(), [&](int below) { return graph.arc(below).inverse; });
  if (is_told_of && !is_event(graph, at)) {
    if (graph.is(at, "one")) attribute_add(graph.word(at), "@def");
    return;
  }
  // "Only the doctor can help": who does something, of whom nothing else is said.
  const int doing = graph.parent(at);
  const bool is_subject = doing >= 0 && subject_arc(graph, graph.arc(doing).from) == doing;
  const bool is_doer = is_subject && graph.arc(doing).role.starts_with("ARG") && said.size() == 1 &&
                       graph.word(at).sense.empty() && is_event(graph, graph.arc(doing).from);
  if (is_doer) graph.word(only).sense = "adv";
  if (!is_predicate) only_counted(graph, at, led);
  if (graph.arc(led).role != "mod") return;
  // "The owl only comes at night": with the verb it is heard of the circumstance, before the noun it would pick one out.
  constexpr std::array kCircumstances{"time", "location", "instrument", "source", "manner", "condition", "accompanier"};
  const bool is_circumstance = doing >= 0 && !graph.arc(doing).inverse && is_event(graph, graph.arc(doing).from) &&
                               is_listed(graph.arc(doing).role, kCircumstances) && graph.word(at).sense.empty() &&
                               !has_attribute(graph.word(at), "@measure") && graph.child(at, "poss") < 0 &&
                               child_among(graph, graph.arc(doing).from, "mod", std::array{"only"}) < 0;
  if (is_circumstance) {
    graph.replace(led, graph.arc(doing).from, only, "mod");
    graph.word(only).sense = "adv";
    return;
  }
  if (!is_event(graph, at) && !is_predicate) return;
  const int above = graph.parent(at);
  const bool is_noun = above >= 0 && !is_predicate && !graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                       graph.child(at, "ARG0") < 0 && is_event(graph, graph.arc(above).from);
  // The noun of another event keeps it: "the only sale".
  if (!is_noun && !is_predicate && above >= 0 && graph.arc(above).role.starts_with("ARG") &&
      graph.child(at, "ARG0") < 0)
    return;
  if (is_noun) graph.replace(led, graph.arc(above).from, only, "mod");
  graph.word(only).sense = "adv";
}

// "Next week", "last year", in clauses of time: no article.
// (g / go-02 :time (w / week :mod (n / next))).
void next_apply(Rewriter& graph, const Arc& one) {
  constexpr std::array kTimes{"week",  "month",  "year",    "weekend",   "summer",   "winter", "spring",   "autumn",
                              "night", "monday", "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"};
  if (one.gone || one.inverse || (one.role != "time" && one.role != "temporal") || !is_one_of(graph, one.to, kTimes))
    return;
  const int mod = graph.child(one.to, "mod");
  const bool is_pointed = mod >= 0 && (graph.is(graph.arc(mod).to, "next") || graph.is(graph.arc(mod).to, "last"));
  if (is_pointed && graph.children(one.to).size() == 1) attribute_add(graph.word(one.to), "@noart");
}

// What they are is several: "they are lamps".
// (l / lamp :domain they): the bank has one concept for one lamp and for many.
void number_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "domain");
  const Concept& word = graph.word(at);
  if (led < 0 || !word.sense.empty() || word.variable.empty() || has_attribute(word, "@name")) return;
  constexpr std::array kGroups{"team", "family", "group", "couple", "pair", "majority", "minority", "people", "nation"};
  const int who = graph.arc(led).to;
  const bool is_several =
      is_one_of(graph, who, kPluralPronouns) || has_attribute(graph.word(who), "@pl") ||
      (graph.is(who, "and") && graph.child(who, "op2") >= 0 && !is_event(graph, graph.arc(graph.child(who, "op2")).to));
  if (is_several && graph.child(at, "quant") < 0 && !is_one_of(graph, at, kGroups))
    attribute_add(graph.word(at), "@pl");
  // "The only hills are three volcanoes".
  const Concept& about = graph.word(who);
  const bool is_noun = about.sense.empty() && !about.variable.empty() && !has_attribute(about, "@name") &&
                       !is_pronoun(graph, who) && graph.child(who, "quant") < 0 && !is_joining(graph, who);
  if (is_noun && has_attribute(word, "@pl") && graph.child(at, "quant") >= 0 && !is_one_of(graph, who, kGroups))
    attribute_add(graph.word(who), "@pl");
}

// A word that is asked for, or said to mean something, is no thing: "what does ephemeral mean".
void meaning_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "mean", "01") ? graph.child(at, "ARG1") : -1;
  if (led < 0 || !graph.word(graph.arc(led).to).sense.empty() || !graph.children(graph.arc(led).to).empty()) return;
  attribute_add(graph.word(graph.arc(led).to), "@word");
}

// (l / long-03 :mod (d / distance-quantity)): how long it is. Only so the quality stands behind the noun.
void measure_apply(Rewriter& graph, Arc& one) {
  if (one.gone || one.inverse || one.role != "mod" || !has_attribute(graph.word(one.to), "@measure")) return;
  if (is_event(graph, one.from) && graph.child(one.from, "ARG2") < 0 && graph.child(one.to, "quant") >= 0)
    one.role = "ARG2";
}

// (s / sell-01 :ARG1 (h / horse :mod (a / also))): he also sold the horse, as "also" stands in front of the verb.
void also_apply(Rewriter& graph, int led) {
  const Arc& one = graph.arc(led);
  if (one.gone || one.inverse || one.role != "mod" || !graph.is(one.to, "also")) return;
  const int above = graph.parent(one.from);
  if (above < 0 || graph.arc(above).inverse || graph.mentions(one.to) > 1 || graph.mentions(one.from) > 1) return;
  const std::string& role = graph.arc(above).role;
  const bool is_object = role == "ARG1" || role == "ARG2" || role == "location" || role == "time";
  if (!is_object || is_event(graph, one.from) || graph.child(one.from, "domain") >= 0 ||
      !is_event(graph, graph.arc(above).from))
    return;
  graph.replace(led, graph.arc(above).from, one.to, "mod");
}

// "Is there anyone among you who knows?": a pronoun alone asks whether there is one.
void asked_pronoun(Rewriter& graph, int at) {
  constexpr std::array kAny{"anyone", "anybody", "anything", "someone", "somebody", "something"};
  if (at != graph.meaning().root || !is_one_of(graph, at, kAny) || graph.child(at, "domain") >= 0 ||
      std::erase(graph.word(at).attributes, "@int") == 0)
    return;
  const int being = graph.add_concept("exist");
  graph.word(being).sense = "91";
  graph.word(being).attributes = {"@v", "@there", "@int"};
  graph.meaning().root = being;
  graph.add(being, at, "ARG1");
}

// Says of a noun that there is such a thing, at its place and time.
void say_there_is(Rewriter& graph, int at) {
  const int being = graph.add_concept("exist");
  graph.word(being).sense = "91";
  graph.word(being).attributes = {"@v", has_attribute(graph.word(at), "@pl") ? "@theres" : "@there"};
  graph.redirect(at, being);
  for (const char* role : {"location", "time"}) {
    if (const int led = graph.child(at, role); led >= 0) graph.lead_from(led, being);
  }
  graph.add(being, at, "ARG1");
}

// A noun at the top that is denied or counted, with its place: "there were no stars in the sky".
void denied_somewhere(Rewriter& graph, int at) {
  const int place = graph.child(at, "location");
  const bool is_new = has_attribute(graph.word(at), "@neg") || graph.child(at, "quant") >= 0;
  if (place < 0 || !is_new || has_attribute(graph.word(at), "@name") || is_unknown(graph, graph.arc(place).to) ||
      is_pronoun(graph, at))
    return;
  for (const char* mood : {"@int", "@exp", "@imp"}) {
    if (has_attribute(graph.word(at), mood)) return;
  }
  say_there_is(graph, at);
}

// (c / contrast-01 :ARG1 (e / egg :quant 3 :location n) :ARG2 (s / sing-01 ...)): "there were three eggs in the nest, but".
// What is joined to a clause is one, too.
void joined_nouns(Rewriter& graph) {
  const int root = graph.meaning().root;
  if (root < 0 || conjunction_of(graph, root) == nullptr) return;
  const std::vector<int> parts = graph.numbered(root, {"op", "ARG"});
  const bool has_clause =
      std::any_of(parts.begin(), parts.end(), [&](int led) { return is_clause(graph, graph.arc(led).to); });
  if (!has_clause) return;
  for (const int led : parts) {
    const int at = graph.arc(led).to;
    const Concept& word = graph.word(at);
    if (is_clause(graph, at) || !word.sense.empty() || word.variable.empty() || has_attribute(word, "@name")) continue;
    if (conjunction_of(graph, at) == nullptr) denied_somewhere(graph, at);
  }
}

// (r / riddle :mod (t / that)) at the top: "that is a riddle". (n / nothing :ARG0-of (h / help-01)): "there is nothing that
// helps". (l / lake :polarity amr-unknown :location-of (s / swim-01)): "is there a lake where they swim?"
bool presented_noun(Rewriter& graph, int at) {
  int pointer = -1;
  bool is_told_of = false;
  for (const int led : graph.children(at)) {
    const Arc& one = graph.arc(led);
    const bool is_pointing = one.role == "mod" && (graph.is(one.to, "this") || graph.is(one.to, "that"));
    if (is_pointing && graph.children(one.to).empty() && graph.mentions(one.to) == 1) pointer = led;
    is_told_of |= one.inverse && is_clause(graph, one.to);
  }
  for (const char* mood : {"@exp", "@imp", "@quote", "@pl"}) {
    if (has_attribute(graph.word(at), mood)) return false;
  }
  const bool is_asked = has_attribute(graph.word(at), "@int");
  if (pointer >= 0 && !is_told_of && !is_asked && graph.children(at).size() > 1) {
    graph.arc(pointer).role = "domain";
    return true;
  }
  constexpr std::array kNone{"nothing", "nobody", "no-one"};
  if (!is_told_of || !(is_asked || has_attribute(graph.word(at), "@neg") || is_one_of(graph, at, kNone))) return false;
  const int being = graph.add_concept("exist");
  graph.word(being).sense = "91";
  graph.word(being).attributes = {"@v", "@there"};
  if (std::erase(graph.word(at).attributes, "@int") > 0) attribute_add(graph.word(being), "@int");
  if (is_asked) attribute_add(graph.word(at), "@indef");
  graph.redirect(at, being);
  graph.add(being, at, "ARG1");
  return true;
}

// A noun at the top, with a clause of time: "there was a storm when we left".
void existing_apply(Rewriter& graph) {
  const int at = statement_of(graph);
  if (at < 0 || !graph.word(at).sense.empty() || graph.word(at).variable.empty()) return;
  if (has_attribute(graph.word(at), "@name") || graph.child(at, "domain") >= 0) return;
  asked_pronoun(graph, at);
  if (presented_noun(graph, at)) return;
  const int led = graph.child(at, "time");
  // "There was once a clockmaker who had lost his key."
  constexpr std::array kLongAgo{"once", "once-upon-a-time", "long-ago", "then"};
  const bool is_past = led >= 0 && (is_one_of(graph, graph.arc(led).to, kLongAgo) ||
                                    (is_event(graph, graph.arc(led).to) && !graph.children(graph.arc(led).to).empty()));
  if (is_past) attribute_add(graph.word(at), "@was");
  // "It is night in one town when it is noon in another."
  constexpr std::array kPeriods{"night", "day", "noon", "midnight", "morning", "evening", "dawn", "summer", "winter"};
  const int when = led < 0 ? -1 : graph.arc(led).to;
  if (!is_one_of(graph, at, kPeriods)) return denied_somewhere(graph, at);
  if (when < 0 && graph.child(at, "location") < 0) return;
  std::erase(graph.word(at).attributes, "@was");
  for (const int period : {at, when}) {
    const bool is_stated =
        period == at || (period >= 0 && is_one_of(graph, period, kPeriods) && graph.child(period, "location") >= 0);
    if (!is_stated) continue;
    graph.add(period, graph.add_concept("it"), "domain");
    attribute_add(graph.word(period), "@noart");
  }
}

// (l / leave-11 :ARG0 c :ord (o / ordinal-entity :value 1)): c was the first to leave. As an adverb the number would be
// that of a time.
void first_to_apply(Rewriter& graph, int at) {
  const int led = is_event(graph, at) ? graph.child(at, "ord") : -1;
  const bool is_first = led >= 0 && graph.is(graph.arc(led).to, "1", "ord");
  const bool is_last = led >= 0 && graph.is(graph.arc(led).to, "-1", "ord");
  if ((!is_first && !is_last) || graph.mentions(at) > 1 || !graph.children(graph.arc(led).to).empty()) return;
  for (const std::string& mark : graph.word(at).attributes) {
    if (mark != "@v" && mark != "@past" && mark != "@neg") return;
  }
  const int above = graph.parent(at);
  constexpr std::array kWishing{"want", "hope", "wish", "try"};
  const bool is_told = above < 0 ? graph.meaning().root == at
                                 : !graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                                       is_one_of(graph, graph.arc(above).from, kWishing);
  const int subject = graph.child(at, "ARG0");
  if (!is_told || subject < 0 || is_unknown(graph, graph.arc(subject).to)) return;
  const int place = graph.add_concept(is_first ? "the-first" : "the-last");
  for (const char* mark : {"@past", "@neg"}) {
    if (std::erase(graph.word(at).attributes, mark) > 0) attribute_add(graph.word(place), mark);
  }
  graph.settle_concept(graph.arc(led).to, Fate::word);
  graph.remove(led, Fate::word);
  graph.redirect(at, place);
  graph.add(place, graph.arc(subject).to, "domain");
  graph.add(place, at, "purpose");
}

// (r / raise-01 :ARG0 h :ord (o / ordinal-entity :value 2)): "he raised it for the second time". In front of the verb the
// number would count him.
void nth_time_apply(Rewriter& graph, int at) {
  const int led = is_event(graph, at) ? graph.child(at, "ord") : -1;
  if (led < 0 || !graph.children(graph.arc(led).to).empty() || graph.is(graph.arc(led).to, "1", "ord")) return;
  const int above = graph.parent(at);
  const bool is_stated = above < 0 || graph.arc(above).role == "conjunct" || graph.arc(above).role.starts_with("op");
  const bool is_relative = above >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG0";
  if (!is_relative && (!is_stated || graph.child(at, "ARG0") < 0)) return;
  if (graph.word(graph.arc(led).to).sense != "ord") return;
  const int time = graph.add_concept("time");
  attribute_add(graph.word(time), "@def");
  const int preposition = graph.add_concept("for");
  graph.lead_from(led, time);
  graph.add(at, preposition, "prep");
  graph.add(preposition, time, "op1");
}

// A thing that seems is there: "there seems to be something new". A quality of nobody is no thing.
// @there is said of one, @theres of several; @raised and @seems tell the rules that "to be" follows.
void seeming_apply(Rewriter& graph, int at) {
  const int led = is_seeming(graph, at) && graph.child(at, "ARG0") < 0 ? graph.child(at, "ARG1") : -1;
  if (led < 0) return;
  const int thing = graph.arc(led).to;
  constexpr std::array kThings{"thing", "nothing", "something", "somebody", "someone", "person", "man", "way"};
  const bool is_thing = is_one_of(graph, thing, kThings) || graph.child(thing, "quant") >= 0 ||
                        graph.child(thing, "ARG0", true) >= 0 || graph.child(thing, "ARG1", true) >= 0;
  // "It is better than it seems".
  const bool is_alone = graph.child(at, "ARG2") < 0 && graph.word(thing).sense.empty();
  if (is_alone && is_personal_pronoun(graph, thing) && graph.child(thing, "domain") < 0) graph.arc(led).role = "ARG0";
  if (!graph.word(thing).sense.empty() || graph.child(thing, "domain") >= 0 || !is_thing) return;
  attribute_add(graph.word(at), has_attribute(graph.word(thing), "@pl") ? "@theres" : "@there");
  attribute_add(graph.word(at), "@raised");
  attribute_add(graph.word(at), "@seems");
}

// What something becomes stands behind the verb without a preposition, if it is a quality.
// @res marks the result. A noun with words of its own, "turned into a small frog", has a preposition instead.
void becoming_apply(Rewriter& graph, int at) {
  constexpr std::array kBecoming{"become", "grow", "get", "turn", "remain", "stay", "go", "look", "feel", "sound"};
  const int led = graph.word(at).sense.empty() || !is_one_of(graph, at, kBecoming) ? -1 : graph.child(at, "ARG2");
  if (led < 0) return;
  const int quality = graph.arc(led).to;
  // "Turned yellow": the quality is that of the subject, which is not said twice.
  const int own = graph.word(quality).sense.empty() ? -1 : graph.child(quality, "ARG1");
  const int subject = graph.child(at, "ARG1");
  const bool is_own = own >= 0 && subject >= 0 && graph.arc(own).to == graph.arc(subject).to;
  if (is_own && graph.children(quality).size() == 1) graph.remove(own, Fate::attribute);
  if (!graph.word(quality).sense.empty() && !is_own) return;
  if (graph.child(quality, "domain") < 0 && graph.child(quality, "mod") < 0 && graph.child(quality, "poss") < 0)
    attribute_add(graph.word(quality), "@res");
}

// "She painted the fence green": what is done to something makes it so, and is not done so.
void resulting_apply(Rewriter& graph, int at) {
  constexpr std::array kMaking{"paint", "dye",   "color",  "hammer", "wipe", "scrub", "wash", "sweep", "shave",
                               "cut",   "press", "push",   "pull",   "kick", "knock", "slam", "shut",  "freeze",
                               "burn",  "beat",  "squash", "shoot",  "lick", "rub",   "tie",  "turn",  "bake",
                               "set",   "break", "tear",   "sand",   "boil", "render"};
  if (graph.word(at).sense.empty() || !is_one_of(graph, at, kMaking) || graph.child(at, "ARG1") < 0) return;
  for (const char* role : {"ARG2", "ARG3", "ARG4"}) {
    const int led = graph.child(at, role);
    const int quality = led < 0 ? -1 : graph.arc(led).to;
    if (quality < 0 || !graph.word(quality).sense.empty() || graph.word(quality).variable.empty()) continue;
    if (!graph.children(quality).empty() || graph.mentions(quality) > 1) continue;
    attribute_add(graph.word(quality), "@res");
    if (graph.child(at, "ARG2") < 0) graph.arc(led).role = "ARG2";
  }
}

// "He left the door open", "she left him waiting": the new state is that of the object.
// (l / leave-13 :ARG0 h :ARG1 (o / open-09 :ARG1 d)) becomes leave with d as ARG1 and open as ARG2, of which control
// knows the subject.
void left_apply(Rewriter& graph, int at) {
  const bool is_leaving = graph.is(at, "leave", "13") || graph.is(at, "keep", "02");
  const int led = is_leaving && graph.child(at, "ARG2") < 0 ? graph.child(at, "ARG1") : -1;
  if (led < 0) return;
  const int state = graph.arc(led).to;
  const int own = subject_arc(graph, state);
  const int agent = graph.argument(at, "ARG0");
  if (own < 0 || graph.parent(state) != led || (graph.word(state).sense.empty() && graph.arc(own).role != "domain"))
    return;
  const int who = graph.arc(own).to;
  if ((agent >= 0 && graph.other(agent, at) == who) || graph.child(state, "op1") >= 0) return;
  graph.arc(led).role = "ARG2";
  if (graph.arc(own).role == "domain") {
    graph.replace(own, at, who, "ARG1");
    attribute_add(graph.word(state), "@res");
    return;
  }
  graph.add(at, who, "ARG1");
}

// What somebody becomes or is called is one of a kind: "she became a doctor", "they became doctors".
// (b / become-01 :ARG1 s :ARG2 (d / doctor)), (c / call-01 :ARG1 h :ARG2 (f / fool)).
void become_apply(Rewriter& graph, int at) {
  constexpr std::array kBecoming{"become", "remain", "stay"};
  constexpr std::array kCalling{"call", "consider", "deem", "label", "dub", "nickname"};
  const bool is_becoming = is_one_of(graph, at, kBecoming);
  if (graph.word(at).sense.empty() || (!is_becoming && !is_one_of(graph, at, kCalling))) return;
  int led = graph.child(at, "ARG2");
  if (led < 0 && is_becoming) led = graph.child(at, "ARG3");
  const int subject = graph.child(at, "ARG1");
  if (led < 0 || subject < 0) return;
  const int kind = graph.arc(led).to;
  const Concept& word = graph.word(kind);
  if (!word.sense.empty() || word.variable.empty() || has_attribute(word, "@name") || is_pronoun(graph, kind)) return;
  if (graph.mentions(kind) > 1 || is_unknown(graph, kind) || is_joining(graph, kind) || has_attribute(word, "@pl"))
    return;
  for (const char* role : {"poss", "org", "part-of", "ord", "quant", "superlative-of"}) {
    if (graph.child(kind, role) >= 0) return;
  }
  const int who = graph.arc(subject).to;
  const bool is_several = is_one_of(graph, who, kPluralPronouns) || has_attribute(graph.word(who), "@pl");
  attribute_add(graph.word(kind), is_several ? "@pl" : "@indef");
}

// Adjectives whose subject is what is judged, and what stands in front of who judges it: "useful to us".
struct Judged {
  const char* name;
  const char* preposition;
};

constexpr Judged kJudged[] = {{"acceptable", "to"},     {"accessible", "to"},       {"visible", "to"},
                              {"invisible", "to"},      {"audible", "to"},          {"useful", "to"},
                              {"useless", "to"},        {"unacceptable", "to"},     {"understandable", "to"},
                              {"inaccessible", "to"},   {"recognizable", "to"},     {"valuable", "to"},
                              {"noticeable", "to"},     {"desirable", "to"},        {"inconceivable", "to"},
                              {"apparent", "to"},       {"incomprehensible", "to"}, {"preferable", "to"},
                              {"tolerable", "to"},      {"unknown", "to"},          {"funny", "to"},
                              {"precious", "to"},       {"affordable", "for"},      {"enjoyable", "for"},
                              {"profitable", "for"},    {"unbearable", "for"},      {"attainable", "for"},
                              {"unforgettable", "for"}, {"habitable", "for"},       {"predictable", "for"},
                              {"unavoidable", "for"},   {"imaginable", "to"},       {"sick", "of"},
                              {"available", "to"},      {"believable", "to"},       {"unpredictable", "for"},
                              {"fun", "for"},           {"livable", "for"},         {"admirable", "to"},
                              {"deplorable", "to"},     {"remarkable", "to"},       {"adorable", "to"}};

// (u / useful-05 :ARG0 (f / farmer) :ARG1 (t / tool)): the tool is useful to the farmer.
void judged_apply(Rewriter& graph, int at) {
  const int judge = graph.word(at).sense.empty() ? -1 : graph.child(at, "ARG0");
  if (judge < 0 || graph.argument(at, "ARG1") < 0) return;
  for (const Judged& one : kJudged) {
    if (graph.word(at).name != one.name) continue;
    const int preposition = graph.add_concept(one.preposition);
    const int person = graph.arc(judge).to;
    graph.replace(judge, at, preposition, "prep");
    graph.add(preposition, person, "op1");
    return;
  }
}

// (a / afraid-01 :ARG0 g :ARG1 (d / dog)): "afraid of the dog".
void feeling_of_apply(Rewriter& graph, int at) {
  constexpr std::array kOf{"proud", "ashamed", "afraid", "fond", "jealous", "weary", "envious", "frightened", "scared"};
  const int what = graph.word(at).sense.empty() || !is_one_of(graph, at, kOf) ? -1 : graph.child(at, "ARG1");
  if (what < 0 || graph.argument(at, "ARG0") < 0 || is_event(graph, graph.arc(what).to)) return;
  const int preposition = graph.add_concept("of");
  const int thing = graph.arc(what).to;
  graph.replace(what, at, preposition, "prep");
  graph.add(preposition, thing, "op1");
}

// (c / cruel-01 :ARG0 s :ARG1 (l / leave-15 :ARG0 s)): "it is cruel of her to leave".
void behaving_apply(Rewriter& graph, int at) {
  constexpr std::array kBehaving{"cruel",   "rude",     "evil",     "kind",   "wise",   "stupid",
                                 "selfish", "generous", "brave",    "unfair", "unkind", "clever",
                                 "foolish", "silly",    "careless", "nice",   "polite", "brutal"};
  const bool is_behaving = !graph.word(at).sense.empty() && is_one_of(graph, at, kBehaving);
  const int who = is_behaving ? graph.child(at, "ARG0") : -1;
  const int deed = is_behaving ? graph.child(at, "ARG1") : -1;
  if (who < 0 || deed < 0 || !is_event(graph, graph.arc(deed).to)) return;
  const int act = graph.arc(deed).to;
  const int person = graph.arc(who).to;
  const int own = graph.child(act, "ARG0");
  if (own < 0 || graph.arc(own).to != person || graph.parent(act) != deed) return;
  graph.remove(own, Fate::relation);
  const int preposition = graph.add_concept("of");
  graph.replace(who, at, preposition, "prep");
  graph.add(preposition, person, "op1");
  attribute_add(graph.word(at), "@xinf");
}

// "It is far from here": a place that is an adverb has the preposition in front of it.
void source_apply(Rewriter& graph, int at) {
  constexpr std::array kPlaces{"here",      "there",      "home",       "above",   "below",  "inside",
                               "outside",   "behind",     "where",      "afar",    "abroad", "nowhere",
                               "somewhere", "everywhere", "downstairs", "upstairs"};
  const int led = graph.child(at, "source");
  if (led < 0 || !is_one_of(graph, graph.arc(led).to, kPlaces) || !graph.word(graph.arc(led).to).sense.empty()) return;
  const int from = graph.add_concept("from");
  graph.add(from, graph.arc(led).to, "op1");
  graph.replace(led, at, from, "source");
}

// "He worked very hard": how very is said of the manner, though a bank may write it at the verb. "She left for the city."
void manner_apply(Rewriter& graph, int at) {
  if (!is_event(graph, at)) return;
  const int degree = graph.child(at, "degree");
  const int manner = graph.child(at, "manner");
  constexpr std::array kVery{"very", "so", "too", "more", "extremely", "rather", "quite"};
  const bool is_open = degree >= 0 && manner >= 0 && is_one_of(graph, graph.arc(degree).to, kVery) &&
                       graph.word(graph.arc(manner).to).sense.empty() && graph.children(graph.arc(manner).to).empty() &&
                       graph.mentions(graph.arc(manner).to) == 1;
  if (is_open) graph.lead_from(degree, graph.arc(manner).to);
  // (s / sing-01 :ARG0 she :manner (h / happy-01 :ARG1 she)): "she sang happily", as it is she whom both are about.
  const int mood =
      manner >= 0 && is_event(graph, graph.arc(manner).to) ? graph.child(graph.arc(manner).to, "ARG1") : -1;
  const int who = subject_arc(graph, at);
  if (mood >= 0 && who >= 0 && graph.arc(mood).to == graph.arc(who).to) {
    const std::vector<int> told = graph.children(graph.arc(manner).to);
    const bool is_plain =
        std::all_of(told.begin(), told.end(), [&](int one) { return one == mood || graph.arc(one).role == "degree"; });
    if (is_plain) graph.remove(mood, Fate::relation);
  }
  const int goal = graph.is(at, "leave", "11") || graph.is(at, "leave", "15") || graph.is(at, "depart", "01")
                       ? graph.child(at, "destination")
                       : -1;
  if (goal >= 0 && graph.word(graph.arc(goal).to).name != "home") graph.arc(goal).role = "beneficiary";
}

// (f / find-out-03 :ARG1 (q / quick-02 :ARG1 (g / grow-01 ...) :degree (u / umr-unknown))): "how quickly it grows".
void how_well_apply(Rewriter& graph, int at) {
  constexpr std::array kManners{"quick",     "fast", "slow", "easy",  "well",    "badly",
                                "good",      "bad",  "soon", "rapid", "often",   "effective",
                                "efficient", "hard", "late", "early", "serious", "severe"};
  const int degree = is_one_of(graph, at, kManners) ? graph.child(at, "degree") : -1;
  if (degree < 0 || !is_unknown(graph, graph.arc(degree).to) || graph.mentions(at) > 1) return;
  const int above = graph.parent(at);
  if (above >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
      is_event(graph, graph.arc(above).from)) {
    // (w / work-01 :ARG0 she :ARG1-of (h / hard-02 :degree (u / umr-unknown))): the same from above.
    graph.replace(above, graph.arc(above).from, at, "manner");
    graph.word(at).sense.clear();
    graph.word(at).attributes.clear();
    return;
  }
  const int led = graph.child(at, graph.word(at).sense.empty() ? "domain" : "ARG1");
  const int deed = led < 0 ? -1 : graph.arc(led).to;
  if (deed < 0 || !is_event(graph, deed) || graph.mentions(deed) > 1 || graph.children(deed).empty()) return;
  if (graph.child(deed, "ARG0") < 0 && graph.child(deed, "ARG1") < 0) return;
  graph.redirect(at, deed);
  graph.replace(led, deed, at, "manner");
  for (const int one : graph.children(at)) {
    if (one != degree) graph.lead_from(one, deed);
  }
  graph.word(at).sense.clear();
  graph.word(at).attributes.clear();
}

// (v / volcano :mod (q / quiet :duration (y / year ...))): what has words of its own behind it stands behind the noun.
void behind_noun_apply(Rewriter& graph, int led) {
  const Arc& one = graph.arc(led);
  if (one.gone || one.inverse || one.role != "mod" || !graph.word(one.to).sense.empty()) return;
  constexpr std::array kBehind{"duration", "cause", "purpose",     "source",      "destination", "topic",     "time",
                               "location", "prep",  "beneficiary", "accompanier", "condition",   "concession"};
  for (const char* role : kBehind) {
    if (graph.child(one.to, role) >= 0) return attribute_add(graph.word(one.to), "@behind");
  }
}

// The place of a quality among several in front of a noun, "a big old red hat": size, age, colour; 0 for others. When
// somebody held an office stands before all, and its rank before its kind: "the former chief executive officer".
int quality_rank(const std::string& name) {
  if (name == "former" || name == "current" || name == "late") return -2;
  if (name == "chief" || name == "deputy" || name == "vice" || name == "senior") return -1;
  constexpr std::array kSizes{"big",  "small", "large", "tiny", "huge",     "long",  "short",
                              "tall", "high",  "low",   "wide", "enormous", "thick", "thin"};
  constexpr std::array kAges{"old", "new", "young", "ancient", "modern"};
  constexpr std::array kColors{"red",  "blue",  "green", "yellow", "black",  "white",
                               "gray", "brown", "pink",  "orange", "purple", "golden"};
  return is_listed(name, kSizes) ? 1 : is_listed(name, kAges) ? 2 : is_listed(name, kColors) ? 3 : 0;
}

// Those of the qualities of a noun that have a place take it; the others stay where the source has them.
void qualities_apply(Rewriter& graph, int at) {
  std::vector<int> ranked;
  for (const int led : graph.children(at)) {
    const int quality = graph.arc(led).to;
    const bool is_plain = graph.arc(led).role == "mod" && !graph.arc(led).inverse && graph.word(quality).sense.empty();
    // "The best chance", of an event that is a noun, too.
    if (graph.arc(led).inverse && graph.arc(led).role == "ARG1" && has_attribute(graph.word(quality), "@most") &&
        is_event(graph, at))
      attribute_add(graph.word(at), "@def");
    if (is_plain) ranked.push_back(led);
  }
  const bool is_office = std::any_of(ranked.begin(), ranked.end(),
                                     [&](int led) { return quality_rank(graph.word(graph.arc(led).to).name) < 0; });
  if (!is_office) std::erase_if(ranked, [&](int led) { return quality_rank(graph.word(graph.arc(led).to).name) == 0; });
  const auto rank = [&](int led) { return quality_rank(graph.word(graph.arc(led).to).name); };
  for (std::size_t i = 1; i < ranked.size(); ++i) {
    for (std::size_t j = i; j > 0 && rank(ranked[j - 1]) > rank(ranked[j]); --j)
      graph.swap_places(ranked[j - 1], ranked[j]);
  }
}

// (h / house :mod (t / town :mod (t2 / this))): "a house of this town"; only what has no article of its own stands in
// front. (b / brother :poss i :mod (s / shoemaker :location c)): "my brother, a shoemaker in Trieste".
void modified_mod_apply(Rewriter& graph, int led) {
  const Arc& one = graph.arc(led);
  if (one.gone || one.inverse || one.role != "mod") return;
  const int at = one.from;
  const int noun = one.to;
  const Concept& word = graph.word(noun);
  if (!word.sense.empty() || word.variable.empty() || graph.mentions(noun) > 1 || is_event(graph, at)) return;
  const int pointer = child_among(graph, noun, "mod", kDemonstratives);
  const bool is_known = graph.child(noun, "poss") >= 0 || pointer >= 0;
  const bool is_known_person = graph.child(at, "poss") >= 0 && graph.child(noun, "location") >= 0;
  if (is_known_person && !is_known) {
    graph.arc(led).role = "apposition";
    // Before the end of the sentence it needs no comma behind it.
    const int above = graph.parent(at);
    if (above >= 0 && subject_arc(graph, graph.arc(above).from) == above) attribute_add(graph.word(noun), "@closed");
    attribute_add(graph.word(noun), "@indef");
    return;
  }
  if (!is_known || graph.child(at, "domain") >= 0) return;
  const int of = graph.add_concept("of");
  graph.replace(led, at, of, "prep");
  graph.add(of, noun, "op1");
}

// What somebody can be and one says in one word; a question after its degree takes it along.
constexpr std::array kQualities{
    "good",      "bad",     "wonderful", "beautiful",   "important", "happy",     "sad",      "strange", "easy",
    "difficult", "long",    "wide",      "large",       "great",     "serious",   "clear",    "useful",  "strong",
    "likely",    "far",     "high",      "deep",        "heavy",     "tall",      "fast",     "old",     "young",
    "expensive", "cheap",   "common",    "safe",        "hungry",    "angry",     "tired",    "busy",    "rich",
    "poor",      "close",   "near",      "popular",     "accurate",  "dangerous", "proud",    "lonely",  "small",
    "big",       "tiny",    "brave",     "clever",      "stupid",    "foolish",   "kind",     "cruel",   "nice",
    "pretty",    "ugly",    "quiet",     "silent",      "loud",      "bright",    "dark",     "cold",    "warm",
    "hot",       "glad",    "grateful",  "curious",     "jealous",   "sick",      "ill",      "weak",    "dry",
    "wet",       "empty",   "full",      "rare",        "simple",    "precious",  "terrible", "fragile", "vain",
    "modest",    "patient", "polite",    "shy",         "honest",    "afraid",    "fond",     "eager",   "lucky",
    "wise",      "healthy", "hard",      "ready",       "sure",      "certain",   "gentle",   "smart",   "lazy",
    "greedy",    "thirsty", "sleepy",    "wealthy",     "sweet",     "rude",      "noble",    "loyal",   "fierce",
    "friendly",  "urgent",  "reliable",  "comfortable", "capable",   "valuable",  "bitter",   "bold",    "tough"};

// English makes no verbs with these endings.
bool names_quality(Rewriter& graph, int at) {
  const std::string_view name = graph.word(at).name;
  return is_one_of(graph, at, kQualities) || name.ends_with("ful") || name.ends_with("ous") || name.ends_with("ible");
}

// "You see how small it is": below a verb of seeing or knowing, with nothing that follows from the degree.
void seen_degree_apply(Rewriter& graph, int at) {
  constexpr std::array kSeeing{"show",   "imagine", "see",      "realize", "notice",   "guess",   "understand",
                               "forget", "know",    "discover", "learn",   "find-out", "consider"};
  const int degree = graph.child(at, "degree");
  if (degree < 0 || !graph.is(graph.arc(degree).to, "so") || graph.mentions(at) > 1) return;
  const int above = graph.parent(at);
  const int so = graph.arc(degree).to;
  const bool is_seen = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                       is_one_of(graph, graph.arc(above).from, kSeeing) && graph.children(so).empty();
  const bool is_quality = graph.word(at).sense.empty() ? graph.child(at, "domain") >= 0 : names_quality(graph, at);
  if (is_seen && is_quality && !has_attribute(graph.word(at), "@neg")) graph.word(so).name = "amr-unknown";
}

// Who exclaims how great something is does not ask.
void exclaim_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "exclaim", "01") ? graph.child(at, "ARG1") : -1;
  if (led >= 0 && graph.child(graph.arc(led).to, "degree") >= 0 &&
      !has_attribute(graph.word(graph.arc(led).to), "@int"))
    attribute_add(graph.word(graph.arc(led).to), "@exp");
  // "How beautiful it is!", in a bank that writes the word.
  const int degree = has_attribute(graph.word(at), "@exp") ? graph.child(at, "degree") : -1;
  if (degree >= 0 && graph.is(graph.arc(degree).to, "how")) graph.word(graph.arc(degree).to).name = "amr-unknown";
}

// :time (t / time :mod every :time-of (r / rain-01)): "whenever it rains".
void whenever_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "time");
  const int time = led >= 0 && graph.is(graph.arc(led).to, "time") ? graph.arc(led).to : -1;
  const int clause = time >= 0 ? graph.child(time, "time", true) : -1;
  const int every = time >= 0 ? graph.child(time, "mod") : -1;
  constexpr std::array kEach{"every", "each", "any", "all"};
  if (clause < 0 || every < 0 || !is_one_of(graph, graph.arc(every).to, kEach) || graph.children(time).size() != 2)
    return;
  graph.settle_concept(graph.arc(every).to, Fate::word);
  graph.remove(every, Fate::word);
  graph.replace(clause, time, graph.arc(clause).to, "op1");
  graph.word(time).name = "whenever";
}

// (e / evidence-01 :polarity - :ARG1 (c / cause-01 ...)): "there is no evidence that ..." Nobody in particular has it.
void evidence_apply(Rewriter& graph, int at) {
  const bool is_such = graph.is(at, "evidence", "01") || graph.is(at, "doubt", "01");
  const int told = is_such && subject_arc(graph, at) == graph.child(at, "ARG1") ? graph.child(at, "ARG1") : -1;
  if (told < 0 || !is_event(graph, graph.arc(told).to) || graph.argument(at, "ARG0") >= 0) return;
  const int above = graph.parent(at);
  const bool is_stated =
      above < 0 || graph.arc(above).role.starts_with("op") || graph.arc(above).role.starts_with("snt");
  if (!is_stated) return;
  const int being = graph.add_concept("exist");
  graph.word(being).sense = "91";
  graph.word(being).attributes = {"@v", "@there"};
  attribute_add(graph.word(at), "@nom");
  if (std::erase(graph.word(at).attributes, "@neg") > 0)
    graph.add(at, graph.add_concept("no"), "mod");
  else
    attribute_add(graph.word(at), "@noart");
  graph.redirect(at, being);
  graph.add(being, at, "ARG1");
}

// (s / soon :op1 (c / come-01 :ARG1 h)): "as soon as he came"; (a / after :op1 c :mod (s / soon)): "soon after he came".
void soon_apply(Rewriter& graph, int at) {
  const int clause = graph.is(at, "soon") || graph.is(at, "once") ? graph.child(at, "op1") : -1;
  if (clause >= 0 && is_clause(graph, graph.arc(clause).to)) graph.word(at).name = "as-soon-as";
  const int led = graph.is(at, "after") ? graph.child(at, "mod") : -1;
  if (led < 0 || !graph.is(graph.arc(led).to, "soon") || !graph.children(graph.arc(led).to).empty()) return;
  if (graph.mentions(graph.arc(led).to) > 1) return;
  graph.settle_concept(graph.arc(led).to, Fate::word);
  graph.remove(led, Fate::word);
  graph.word(at).name = "soon-after";
}

// How great a quality is asked for: (t / tall :domain (s / she) :degree (a / amr-unknown)), "how tall is she". The quality
// moves to the front with the word that asks.
// What the clause is about moves to a verb of being with the quality as ARG2: the rules bring whatever is asked for to
// the front, and could not bring the head of the sentence there. Circumstances, negation and mood go with the verb.
void how_apply(Rewriter& graph, int at) {
  // "How long is it": what is measured has the measure as an argument.
  constexpr std::array kMeasured{"long", "wide", "deep", "high", "tall", "age", "heavy"};
  const int measure = graph.word(at).sense.empty() || !is_one_of(graph, at, kMeasured) ? -1 : graph.child(at, "ARG2");
  const bool is_measured = measure >= 0 && graph.is(graph.arc(measure).to, "amr-unknown");
  if (is_measured) graph.arc(measure).role = "degree";
  // "Whose book is this".
  const bool is_thing = graph.word(at).sense.empty() && graph.child(at, "domain") >= 0;
  const int degree = is_thing && graph.child(at, "poss") >= 0 ? graph.child(at, "poss") : graph.child(at, "degree");
  if (degree < 0) return;
  const int unknown = graph.arc(degree).to;
  if (!is_unknown(graph, unknown)) return;
  const bool is_frame = !graph.word(at).sense.empty();
  // "How far is it to the mill", "how late is it": nothing has the quality but the way or the hour.
  constexpr std::array kOfNothing{"far", "late", "early", "cold", "warm", "hot", "dark"};
  constexpr std::array kSaid{"degree", "source", "destination", "time", "mod", "location"};
  const std::vector<int> said = graph.children(at);
  const bool is_of_nothing = at == graph.meaning().root && is_one_of(graph, at, kOfNothing) &&
                             std::all_of(said.begin(), said.end(), [&](int led) {
                               return !graph.arc(led).inverse && is_listed(graph.arc(led).role, kSaid);
                             });
  if (is_of_nothing) graph.add(at, graph.add_concept("it"), is_frame ? "ARG1" : "domain");
  const int feeling = is_frame ? graph.child(at, "ARG0") : -1;
  const int subject = feeling >= 0 ? feeling : graph.child(at, is_frame ? "ARG1" : "domain");
  if (subject < 0 || (is_frame && !is_measured && !names_quality(graph, at)) || graph.mentions(at) > 1) return;
  const int being = add_being(graph);
  graph.redirect(at, being);
  graph.replace(subject, being, graph.arc(subject).to, "ARG1");
  for (const int led : graph.children(at)) {
    if (led != degree && !graph.arc(led).role.starts_with("ARG")) graph.lead_from(led, being);
  }
  graph.add(being, at, "ARG2");
  const std::vector<std::string> marks = graph.word(at).attributes;
  for (const std::string& mark : marks) {
    if (mark != "@v") attribute_add(graph.word(being), mark), std::erase(graph.word(at).attributes, mark);
  }
}

// (e / exist-01 :ARG1 (p / planet :mod (o / other))): "there is another planet". Not so for what is known already.
// exist-01 becomes exist-91, a name of the import's own, so that the dictionary need not tell two meanings of the verb
// apart: "ghosts exist" stays exist-01.
void exist_apply(Rewriter& graph, int at) {
  // UMR's frame of being there names the place first.
  const int there = graph.is(at, "exist", "91") ? graph.child(at, "ARG2") : -1;
  if (there >= 0) {
    if (const int place = graph.child(at, "ARG1"); place >= 0) graph.arc(place).role = "location";
    graph.arc(there).role = "ARG1";
  }
  const bool is_being = graph.is(at, "exist", "91");
  // "There is no choice": what nobody has.
  bool is_had = graph.is(at, "have", "03") && graph.argument(at, "ARG0") < 0 && !has_attribute(graph.word(at), "@imp");
  for (const char* role : {"understood", "shared", "questioned", "ARG2"}) is_had &= graph.child(at, role) < 0;
  // "To have a garden and to water it": one of several things to do.
  const int joined = is_had ? graph.parent(at) : -1;
  is_had &= joined < 0 || !is_joining(graph, graph.arc(joined).from) || graph.parent(graph.arc(joined).from) < 0;
  const int led = graph.is(at, "exist", "01") || is_being || is_had ? graph.child(at, "ARG1") : -1;
  if (led < 0) return;
  const int thing = graph.arc(led).to;
  const Concept& word = graph.word(thing);
  if (!word.sense.empty() || word.variable.empty() || has_attribute(word, "@name") || graph.mentions(thing) > 1) return;
  if (is_pronoun(graph, thing) || is_joining(graph, thing) || graph.child(thing, "poss") >= 0) return;
  constexpr std::array kKnown{"this", "that", "these", "those", "same", "all", "every", "each", "both"};
  // What is denied, counted or somewhere is new; of a thing alone nobody knows.
  bool is_new = is_being || has_attribute(graph.word(at), "@neg") || has_attribute(word, "@neg") ||
                graph.child(thing, "quant") >= 0 || graph.child(at, "location") >= 0;
  for (const int below : graph.children(thing)) {
    const int quality = graph.arc(below).to;
    if (graph.arc(below).role == "mod" && is_one_of(graph, quality, kKnown)) return;
    if (graph.arc(below).role == "mod" && graph.is(quality, "other") && !has_attribute(word, "@pl") &&
        graph.child(thing, "quant") < 0)
      graph.word(quality).name = "another";
    is_new |= graph.is(quality, "another") || graph.is(quality, "other") || graph.is(quality, "such");
  }
  if (!is_new) return;
  graph.word(at).name = "exist";
  graph.word(at).sense = "91";
  attribute_add(graph.word(at), has_attribute(word, "@pl") ? "@theres" : "@there");
  if (std::erase(graph.word(at).attributes, "@neg") > 0) attribute_add(graph.word(thing), "@neg");
  const bool is_bare = graph.child(thing, "quant") < 0 && !has_attribute(graph.word(thing), "@neg");
  const int quality = graph.child(thing, "mod");
  const bool is_another = quality >= 0 && graph.is(graph.arc(quality).to, "another");
  if (is_bare && !is_another && !has_attribute(word, "@pl")) attribute_add(graph.word(thing), "@indef");
}

}  // namespace

// Runs when frames of roles, degrees and offices have gone, as these are what a predicate is made of. Arcs come behind
// concepts: the verbs of being that the first loop makes bring new arcs with them.
void step_predicates(Meaning& meaning) {
  Rewriter graph(meaning, "predicates");
  for (int at = 0, end = graph.count(); at < end; ++at) {
    if (graph.is(at, "top") && graph.child(at, "op1") >= 0) graph.word(at).name = "on-top-of";
    located_apply(graph, at);
    at_home_apply(graph, at);
    somewhere_apply(graph, at);
    speaking_apply(graph, at);
    own_place_apply(graph, at);
    number_apply(graph, at);
    answer_apply(graph, at);
    meaning_apply(graph, at);
    exist_apply(graph, at);
    seeming_apply(graph, at);
    becoming_apply(graph, at);
    become_apply(graph, at);
    resulting_apply(graph, at);
    left_apply(graph, at);
    judged_apply(graph, at);
    feeling_of_apply(graph, at);
    source_apply(graph, at);
    manner_apply(graph, at);
    qualities_apply(graph, at);
    behaving_apply(graph, at);
    exclaim_apply(graph, at);
    seen_degree_apply(graph, at);
    whenever_apply(graph, at);
    soon_apply(graph, at);
    evidence_apply(graph, at);
    how_well_apply(graph, at);
    how_apply(graph, at);
    first_to_apply(graph, at);
    nth_time_apply(graph, at);
  }
  for (Arc& one : meaning.arcs) denial_apply(graph, one), measure_apply(graph, one), next_apply(graph, one);
  for (std::size_t i = 0; i < meaning.arcs.size(); ++i) {
    only_apply(graph, static_cast<int>(i));
    also_apply(graph, static_cast<int>(i));
    modified_mod_apply(graph, static_cast<int>(i));
    behind_noun_apply(graph, static_cast<int>(i));
  }
  presented_apply(graph);
  identified_apply(graph);
  existing_apply(graph);
  joined_nouns(graph);
}

}  // namespace lexon
