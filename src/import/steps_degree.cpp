// The step about degrees: more, most, too, as ... as, and what they are compared with.
#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {

namespace {

// Degrees that are amounts by themselves: "more money", "he slept more".
constexpr std::array kAmounts{"more", "most", "less", "enough"};

// What counts or measures its noun stands in front of it whatever follows: "more books than he had".
constexpr std::array kCountWords{"many", "much", "few", "more", "less", "little"};

// The attribute of a degree that is a word of its own; null for others, which stay words: "very much".
// English puts these into the form of the adjective or in a fixed place beside it, so rules need to know them before
// they choose the word.
const char* degree_attribute(const Concept& degree) {
  struct Named {
    const char* name;
    const char* attribute;
  };
  constexpr Named kDegrees[] = {{"more", "@more"}, {"most", "@most"}, {"less", "@less"},   {"least", "@least"},
                                {"too", "@too"},   {"so", "@so"},     {"equal", "@equal"}, {"enough", "@enough"},
                                {"as", "@equal"},  {"very", "@very"}};
  for (const auto& [name, attribute] : kDegrees) {
    if (degree.name == name) return attribute;
  }
  return nullptr;
}

// (d / distance-quantity :extent-of (r / run-02)), to which something is compared: "farther than he ran".
// Such a quantity has one purpose, to name what was measured; the event then stands for it.
void measured_apply(Rewriter& graph, int at) {
  const std::vector<int> below = graph.children(at);
  if (below.size() != 1 || !graph.arc(below[0]).inverse || !graph.word(at).sense.empty()) return;
  constexpr std::array kMeasures{"extent", "degree", "quant", "duration", "frequency"};
  const bool is_measure = is_listed(graph.arc(below[0]).role, kMeasures);
  if (is_measure && !graph.word(graph.arc(below[0]).to).sense.empty()) graph.stand_in(at, below[0]);
}

// What is said of a fact, and of no way to do something: it is easier to wait.
bool is_judgement(const std::string& name) {
  constexpr std::array kJudging{"difficult", "easy",       "hard",      "important", "good", "bad",  "possible",
                                "necessary", "likely",     "common",    "nice",      "fun",  "safe", "dangerous",
                                "expensive", "impossible", "essential", "fair",      "right"};
  return is_listed(name, kJudging);
}

// What is asked, exclaimed or denied of a frame that goes is that of what takes its place.
void move_mood(Rewriter& graph, int from, int to) {
  for (const char* mood : {"@int", "@exp", "@quote", "@neg"}) {
    if (std::erase(graph.word(from).attributes, mood) > 0) attribute_add(graph.word(to), mood);
  }
}

// (f / find-01 :ARG1 (h / have-degree-91 :ARG1 (h2 / horse) :ARG2 fast :ARG3 most)): to find the fastest horse. What is only
// said or thought stays a clause.
// A superlative below a verb of seeking is no statement about the horse: nobody says "to find that the horse is
// fastest". `at` is the frame of the degree, `bearer` the horse and `quality` fast.
bool sought_apply(Rewriter& graph, int at, int quality, int bearer) {
  const int above = graph.parent(at);
  const bool is_object = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                         has_attribute(graph.word(quality), "@most") && graph.word(bearer).sense.empty() &&
                         !graph.word(bearer).variable.empty() && graph.mentions(at) == 1;
  constexpr std::array kTelling{"say", "think", "know", "believe", "mean", "tell", "show", "agree", "hope", "opine"};
  // "This is the hardest question of all": what bears the quality is a predicate itself.
  const bool is_predicate = graph.word(bearer).sense.empty() && graph.child(bearer, "domain") >= 0;
  if (!is_object && !is_predicate) return false;
  const bool is_told = !is_predicate && is_listed(graph.word(graph.arc(above).from).name, kTelling);
  const int bears = graph.child(at, "ARG1");
  const int led = graph.child(at, "ARG2");
  if (is_told || bears < 0 || led < 0 || graph.arc(bears).to != bearer) return false;
  for (const char* role : {"ARG0", "ARG1", "domain"}) {
    const int own = graph.child(quality, role);
    if (own >= 0 && graph.arc(own).to == bearer) graph.remove(own, Fate::relation);
  }
  graph.remove(bears, Fate::relation);
  graph.replace(led, bearer, quality, "mod");
  if (is_predicate) {
    for (const char* role : {"superlative-of", "compared-to"}) {
      const int measured = graph.child(quality, role);
      if (measured >= 0 && !has_attribute(graph.word(quality), "@equal")) graph.lead_from(measured, bearer);
    }
    move_mood(graph, quality, bearer);
  }
  graph.redirect(at, bearer);
  graph.move_children(at, bearer);
  return true;
}

// (e / equal :quant (p / product-of :op1 2)), (e / equal :quant 2), or the product alone: twice as large; with
// more, "three times larger".
void times_more(Rewriter& graph, int led, int quality) {
  constexpr std::pair<const char*, const char*> kTimes[] = {
      {"2", "twice"},      {"3", "three-times"},       {"4", "four-times"},         {"5", "five-times"},
      {"10", "ten-times"}, {"100", "a-hundred-times"}, {"1000", "a-thousand-times"}};
  const int degree = graph.arc(led).to;
  const int quant = graph.child(degree, "quant");
  const int product = graph.is(degree, "product-of") ? degree : quant < 0 ? -1 : graph.arc(quant).to;
  const int number = product >= 0 && graph.is(product, "product-of") ? graph.child(product, "op1") : -1;
  if (graph.is(degree, "twice")) attribute_add(graph.word(quality), "@equal");
  // With "equal" a bare number means the same.
  const bool is_bare = quant >= 0 && graph.is(degree, "equal") && graph.word(product).variable.empty();
  if (!is_bare && (number < 0 || graph.children(product).size() != 1)) return;
  for (const auto& [digits, word] : kTimes) {
    if (!graph.is(is_bare ? product : graph.arc(number).to, digits)) continue;
    if (!is_bare) {
      graph.settle_concept(graph.arc(number).to, Fate::word);
      graph.remove(number, Fate::word);
    }
    graph.word(product).name = word;
    if (product == degree) attribute_add(graph.word(quality), "@equal");
    if (quant >= 0) graph.arc(quant).role = "degree";
  }
}

// How much of it there is: an attribute for what is a word of its own in English, a comparative for amounts.
void degree_said(Rewriter& graph, int led, int quality) {
  const int degree = graph.arc(led).to;
  times_more(graph, led, quality);
  // "She most wants the clock": beside a deed it stays a word.
  const bool is_deed = is_event(graph, quality) && graph.child(quality, "ARG0") >= 0 &&
                       graph.child(quality, "ARG1") >= 0 && graph.is(degree, "most");
  const char* attribute = is_deed ? nullptr : degree_attribute(graph.word(degree));
  // "More money than he": more is the comparative of much and many.
  const bool is_amount =
      (graph.is(quality, "much") || graph.is(quality, "many")) && is_listed(graph.word(degree).name, kAmounts);
  // "Fewer people".
  const bool is_fewer = graph.is(quality, "few") && graph.is(degree, "more");
  if ((is_amount || is_fewer) && graph.mentions(degree) == 1) {
    graph.word(quality).name = is_fewer ? "fewer" : graph.word(degree).name;
    graph.settle_concept(degree, Fate::word);
    graph.remove(led, Fate::word);
    graph.move_children(degree, quality);
  } else if (attribute != nullptr && graph.mentions(degree) == 1) {
    // "Not so tall as she": with what it is compared to, that is as tall.
    const bool is_as = graph.is(degree, "so") && graph.child(graph.arc(led).from, "ARG4") >= 0;
    attribute_add(graph.word(quality), is_as ? "@equal" : attribute);
    // "Even older", "far too late".
    constexpr std::array kHowMuch{"even", "far",   "much", "slightly", "still",
                                  "way",  "exact", "just", "almost",   "nearly"};
    for (const int one : graph.children(degree)) {
      if (graph.arc(one).role == "mod" && is_one_of(graph, graph.arc(one).to, kHowMuch)) graph.arc(one).role = "degree";
    }
    graph.settle_concept(degree, Fate::attribute);
    graph.remove(led, Fate::attribute);
    graph.move_children(degree, quality);
  } else {
    graph.replace(led, quality, degree, "degree");
  }
}

// "A boy who is older than his sister": a comparison with something is a clause behind the noun.
bool is_behind(Rewriter& graph, int quality, int bearer, std::string_view role) {
  const bool is_compared = has_attribute(graph.word(quality), "@more") || has_attribute(graph.word(quality), "@equal");
  return role == "ARG4" && is_compared && graph.word(bearer).sense.empty() && !is_one_of(graph, quality, kCountWords);
}

// "A tree that is as tall as the house", "a box that is so heavy that he dropped it": in front of the noun so much would
// not be understood.
bool is_long_degree(Rewriter& graph, int quality, int bearer) {
  if (!graph.word(bearer).sense.empty() || is_one_of(graph, quality, kCountWords)) return false;
  return graph.child(quality, "consequence") >= 0 ||
         (has_attribute(graph.word(quality), "@equal") && graph.child(quality, "compared-to") >= 0);
}

// (t / tree :ARG1-of (h / have-degree-91 :ARG2 tall :ARG3 most :ARG5 (t2 / tree :location g))): the tallest tree in the garden.
// A set of the same things is not named a second time.
bool set_of_same(Rewriter& graph, int led, int bearer) {
  const int set = graph.arc(led).to;
  const bool is_noun = graph.word(set).sense.empty() && !graph.word(set).variable.empty();
  if (!is_noun || graph.word(set).name != graph.word(bearer).name || graph.mentions(set) > 1) return false;
  for (const int below : graph.children(set)) {
    const bool is_all = graph.arc(below).role == "mod" &&
                        (graph.is(graph.arc(below).to, "all") || graph.is(graph.arc(below).to, "every"));
    if (!is_all) continue;
    graph.settle_concept(graph.arc(below).to, Fate::word);
    graph.remove(below, Fate::word);
  }
  graph.settle_concept(set, Fate::word);
  graph.remove(led, Fate::word);
  graph.move_children(set, bearer);
  return true;
}

// What it is compared to, the set in which it is the most, and what follows: "so tall that ...".
// ARG4 is what it is compared to (taller than he), ARG5 the set in which it is the most (of the town), ARG6 what
// follows from a degree (so tall that ..., too small to ...).
void degree_measured(Rewriter& graph, int at, int quality, int bearer_led) {
  constexpr std::pair<const char*, const char*> kOthers[] = {
      {"ARG4", "compared-to"}, {"ARG5", "superlative-of"}, {"ARG6", "consequence"}};
  for (const auto& [role, label] : kOthers) {
    const int led = graph.child(at, role);
    if (led < 0) continue;
    // More often than what is said to be more often is no comparison.
    if (bearer_led >= 0 && graph.arc(led).to == graph.other(bearer_led, at)) {
      graph.remove(led, Fate::left_out);
      continue;
    }
    if (std::string_view(role) == "ARG5" && bearer_led >= 0 && set_of_same(graph, led, graph.other(bearer_led, at)))
      continue;
    // "The oldest house of the town", "an older house than mine": what it is measured by stands behind the noun.
    const bool is_with_noun = bearer_led >= 0 && graph.arc(bearer_led).to == at && std::string_view(role) != "ARG6" &&
                              !has_attribute(graph.word(quality), "@equal") &&
                              !is_behind(graph, quality, graph.other(bearer_led, at), role);
    const int kept = is_with_noun ? graph.other(bearer_led, at) : quality;
    graph.replace(led, kept, graph.arc(led).to, label);
    // "The wisest of the birds": but for a place or a time, a set is several.
    constexpr std::array kOne{"world",  "town",   "city",   "village", "country", "kingdom", "land",    "family",
                              "school", "house",  "team",   "class",   "group",   "year",    "day",     "week",
                              "month",  "time",   "life",   "history", "garden",  "forest",  "street",  "season",
                              "army",   "crew",   "island", "state",   "company", "nation",  "century", "region",
                              "area",   "circle", "court",  "all",     "any",     "sea",     "sky",     "river"};
    Concept& set = graph.word(graph.arc(led).to);
    const bool is_set = std::string_view(role) == "ARG5" && set.sense.empty() && !set.variable.empty() &&
                        graph.children(graph.arc(led).to).empty() && !has_attribute(set, "@name") &&
                        !is_personal_pronoun(graph, graph.arc(led).to);
    if (is_set && !is_listed(set.name, kOne)) attribute_add(set, "@pl"), attribute_add(set, "@def");
    // "Such a cold day that we stayed": what follows stands behind the noun.
    const int above = std::string_view(role) == "ARG6" ? graph.parent(quality) : -1;
    const bool is_of_noun = above >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                            graph.word(graph.arc(above).from).sense.empty() && bearer_led >= 0 &&
                            graph.other(bearer_led, at) == graph.arc(above).from;
    if (is_of_noun) graph.lead_from(graph.child(quality, "consequence"), graph.arc(above).from);
    // "As many books as I".
    const bool is_amount = graph.is(quality, "many") || graph.is(quality, "much") || graph.is(quality, "few");
    const bool is_as_many = is_amount && bearer_led >= 0 && graph.arc(bearer_led).to == at &&
                            has_attribute(graph.word(quality), "@equal") && std::string_view(role) == "ARG4";
    if (is_as_many) graph.replace(led, graph.other(bearer_led, at), graph.arc(led).to, "role");
    // "More clever than pretty": two qualities of the same.
    const int second = std::string_view(role) == "ARG4" && bearer_led >= 0 ? graph.arc(led).to : -1;
    const std::vector<int> said = second < 0 ? std::vector<int>{} : graph.children(second);
    if (said.size() == 1 && !graph.arc(said[0]).inverse && graph.arc(said[0]).to == graph.other(bearer_led, at)) {
      graph.remove(said[0], Fate::relation);
      attribute_add(graph.word(second), "@quality");
    }
    measured_apply(graph, graph.arc(led).to);
  }
}

// Nobody bears it: "as soon as possible".
// (h / have-degree-91 :ARG2 (s / soon) :ARG3 (e / equal) :ARG4 p) as :time of a clause: the quality alone takes the
// place of the frame.
void bearerless_apply(Rewriter& graph, int at, int quality_led, int quality) {
  if (graph.arc(quality_led).from == at) {
    graph.remove(quality_led, Fate::relation);
    graph.redirect(at, quality);
  } else {
    graph.remove(quality_led, Fate::relation);
  }
  graph.move_children(at, quality);
}

// "As soon as possible": what it is compared to is that the bearer is possible.
void again_apply(Rewriter& graph, int quality, int bearer) {
  const int compared = graph.child(quality, "compared-to");
  const int possible = compared < 0 ? -1 : graph.arc(compared).to;
  const int again = possible >= 0 && graph.is(possible, "possible", "01") ? graph.child(possible, "ARG1") : -1;
  if (again >= 0 && graph.arc(again).to == bearer) graph.remove(again, Fate::relation);
}

// "She knows more things than he", "there are too many stars".
void counted_apply(Rewriter& graph, int quality, int bearer) {
  const bool is_counted = graph.is(quality, "many") || graph.is(quality, "few") || graph.is(bearer, "thing");
  // "Fewer visitors".
  const bool is_less =
      graph.is(quality, "less") && (graph.is(bearer, "person") || has_attribute(graph.word(bearer), "@pl"));
  if (is_less) graph.word(quality).name = "fewer";
  if (is_counted || is_less || (graph.is(quality, "more") && graph.is(bearer, "person")))
    attribute_add(graph.word(bearer), "@pl");
}

// "There are too many rules": how many of it there are is the statement.
void amount_stated(Rewriter& graph, int at, int quality_led, int bearer_led) {
  const int quality = graph.other(quality_led, at);
  const int bearer = graph.other(bearer_led, at);
  const std::string& amount = graph.word(quality).name;
  if (amount.find_first_of("0123456789") == 0 && amount != "1") attribute_add(graph.word(bearer), "@pl");
  const int being = graph.add_concept("exist");
  graph.word(being).sense = "91";
  graph.word(being).attributes = {"@v", has_attribute(graph.word(bearer), "@pl") ? "@theres" : "@there"};
  // "There is not enough water to drink": what is denied is the amount.
  graph.redirect(at, being);
  graph.replace(bearer_led, being, bearer, "ARG1");
  graph.replace(quality_led, bearer, quality, "quant");
  // "There is more water than I thought."
  if (const int led = graph.child(quality, "compared-to"); led >= 0 && !has_attribute(graph.word(quality), "@equal"))
    graph.lead_from(led, bearer);
  if (const int led = graph.child(quality, "consequence"); led >= 0) {
    graph.replace(led, being, graph.arc(led).to, graph.is(quality, "enough") ? "purpose" : "consequence");
    const int again = graph.child(graph.arc(led).to, "ARG1");
    if (again >= 0 && graph.arc(again).to == bearer) graph.remove(again, Fate::relation);
  }
  graph.move_children(at, being);
}

// "I have enough time to read", "he had so much money that he bought it": what follows from an amount stands behind the
// verb that has the noun.
void amount_follows(Rewriter& graph, int quality, int bearer) {
  const int led = graph.child(quality, "consequence");
  const int above = led < 0 ? -1 : graph.parent(bearer);
  if (above < 0 || graph.arc(above).inverse || graph.word(graph.arc(above).from).sense.empty()) return;
  const int verb = graph.arc(above).from;
  if (graph.reaches(graph.arc(led).to, verb)) return;
  const bool is_for = graph.is(quality, "enough") || has_attribute(graph.word(quality), "@too");
  graph.replace(led, verb, graph.arc(led).to, is_for ? "purpose" : "consequence");
}

// A frame of degree or quantity with its quality and who bears it, and which of the two lead to it in the source.
struct Borne {
  int at;
  bool is_quantity;  // have-quant-91: the quality is an amount
  int quality_led;
  int quality;
  bool quality_above;
  int bearer_led;
  int bearer;
  bool bearer_above;
};

// (i / important-01 :ARG1 x), (a / amuse-01 :ARG0 x): true if `frame` has the bearer x by a role of its own.
bool names_bearer(Rewriter& graph, const Borne& borne, int frame, const char* role) {
  const int own = graph.argument(frame, role);
  return own >= 0 && graph.other(own, frame) == borne.bearer && own != borne.bearer_led;
}

// (g / grow-01 :ARG1 (g2 / girl) :ARG2 (t / tall :ARG2-of (have-degree-91 :ARG1 g2))): "she grew tall", "he ran farther".
// The verb above the quality says already who bears it, or bears it itself, as the noun of an amount does: "too much tea".
bool is_borne_above(Rewriter& graph, const Borne& borne) {
  const int above = borne.quality_above ? graph.parent(borne.quality) : -1;
  if (above < 0 || graph.arc(above).inverse) return false;
  const int verb = graph.arc(above).from;
  if (verb == borne.bearer) return true;
  if (graph.word(verb).sense.empty() || graph.arc(above).role != "ARG2") return false;
  return names_bearer(graph, borne, verb, "ARG1") || names_bearer(graph, borne, verb, "ARG0");
}

// Annotators write the tie between the two a second time beside the frame, which has said it.
void forget_second_tie(Rewriter& graph, const Borne& borne) {
  // "It barked so loudly that we woke."
  const int manner = graph.child(borne.quality, "manner", true);
  if (manner >= 0 && graph.arc(manner).to == borne.bearer) graph.remove(manner, Fate::relation);
  // (h / house :ARG1-of (have-degree-91 :ARG2 (b / big :domain h) :ARG3 more)): the house stands above its quality.
  const bool is_below = borne.bearer_above && !borne.quality_above && !borne.is_quantity;
  const int domain = is_below ? graph.child(borne.quality, "domain") : -1;
  if (domain >= 0 && graph.arc(domain).to == borne.bearer) graph.remove(domain, Fate::relation);
}

// What somebody does is the statement, and has the quality beside it.
void tie_to_event(Rewriter& graph, const Borne& borne, const char* role) {
  graph.remove(borne.bearer_led, Fate::relation);
  graph.replace(borne.quality_led, borne.bearer, borne.quality, role);
  graph.redirect(borne.at, borne.bearer);
  graph.move_children(borne.at, borne.bearer);
}

// (t / tree :ARG1-of (h / have-degree-91 :ARG2 tall :ARG3 more)): a taller tree, more trees. A comparison that is too long
// to stand in front of the noun becomes a clause behind it.
void tie_below_bearer(Rewriter& graph, const Borne& borne) {
  const int quality = borne.quality;
  graph.remove(borne.bearer_led, Fate::relation);
  const bool is_compared =
      !borne.is_quantity &&
      (is_long_degree(graph, quality, borne.bearer) ||
       (graph.child(quality, "compared-to") >= 0 && is_behind(graph, quality, borne.bearer, "ARG4")));
  if (is_compared) attribute_add(graph.word(quality), "@v");
  if (has_attribute(graph.word(quality), "@least")) attribute_add(graph.word(borne.bearer), "@def");
  if (borne.is_quantity) amount_follows(graph, quality, borne.bearer);
  const char* role = borne.is_quantity ? "quant" : is_compared ? "ARG1" : "mod";
  graph.replace(borne.quality_led, borne.bearer, quality, role, is_compared);
}

// (h / have-degree-91 :ARG1 (f / fall-01 :ARG1 he) :ARG2 (g / gentle) :ARG3 more): "he fell more gently". A judgement is
// no way to do something, nor is a time that is too early: "it is too early to say".
bool is_way_of_event(Rewriter& graph, const Borne& borne) {
  const Concept& quality = graph.word(borne.quality);
  if (graph.word(borne.bearer).sense.empty() || borne.is_quantity || !quality.sense.empty()) return false;
  if (is_judgement(quality.name) || graph.mentions(borne.bearer) != 1) return false;
  constexpr std::array kEarly{"early", "late", "soon"};
  const bool is_too_early = has_attribute(quality, "@too") && is_one_of(graph, borne.quality, kEarly);
  return graph.child(borne.bearer, "ARG0") >= 0 || (graph.child(borne.bearer, "ARG1") >= 0 && !is_too_early);
}

// The frame goes, and one arc between the quality and its bearer is left. The cases in this order, x the bearer: x is a
// deed, of which the amount is said; x stands above and the quality has a role of its own for it (x :ARG1-of
// important-01); the quality stands above, or it or the verb above names x already, so that nothing but the frame's own
// arcs goes; x stands above, x :mod tall; x is an event, which gets a :manner; there is so much of x; else the quality is
// the statement, tall :domain x.
void tie_to_bearer(Rewriter& graph, int at, bool is_quantity, int quality_led, int bearer_led) {
  const int quality = graph.other(quality_led, at);
  const int bearer = graph.other(bearer_led, at);
  const bool quality_above = graph.arc(quality_led).to == at;
  const bool bearer_above = graph.arc(bearer_led).to == at;
  const Borne borne{at, is_quantity, quality_led, quality, quality_above, bearer_led, bearer, bearer_above};
  // "They listened less": how much somebody does it.
  const bool is_deed = is_quantity && is_event(graph, bearer) && graph.child(bearer, "ARG0") >= 0;
  if (is_deed && !bearer_above && !quality_above && graph.mentions(bearer) == 1)
    return tie_to_event(graph, borne, "extent");
  // A few adjectives call who bears them by another number.
  const bool is_unnumbered = !is_quantity && !quality_above && graph.argument(quality, "ARG1") < 0;
  if (is_unnumbered && names_bearer(graph, borne, quality, "ARG2"))
    graph.arc(graph.argument(quality, "ARG2")).role = "ARG1";
  if (!is_quantity && sought_apply(graph, at, quality, bearer)) return;
  const bool is_above = is_borne_above(graph, borne);
  forget_second_tie(graph, borne);
  const bool names_frame = names_bearer(graph, borne, quality, "ARG1") || names_bearer(graph, borne, quality, "ARG0");
  const bool is_known = is_above || names_frame || names_bearer(graph, borne, quality, "domain");
  again_apply(graph, quality, bearer);
  // What is said to bear it may not be what it is a quality of: "it was so deeply rooted that ...".
  const int own = is_quantity ? -1 : graph.argument(quality, "ARG1");
  const bool is_of_another = own >= 0 && own != quality_led && graph.other(own, quality) != bearer;
  if (bearer_above && !quality_above && names_frame && !is_of_another && !is_quantity) {
    // The bearer stands above and the quality leads back to it: a taller tree.
    const int led = own >= 0 ? own : graph.argument(quality, "ARG0");
    graph.replace(led, bearer, quality, own >= 0 ? "ARG1" : "ARG0", true);
    graph.remove(quality_led, Fate::relation);
    graph.remove(bearer_led, Fate::relation);
  } else if (quality_above || is_known) {
    if (quality_above && !is_known && !is_of_another) {
      graph.replace(bearer_led, quality, bearer, is_quantity ? "quant" : "domain", is_quantity);
    } else {
      graph.remove(bearer_led, Fate::relation);
    }
    graph.remove(quality_led, Fate::relation);
    if (!quality_above && !bearer_above) graph.redirect(at, quality);
  } else if (bearer_above) {
    tie_below_bearer(graph, borne);
  } else if (is_way_of_event(graph, borne)) {
    move_mood(graph, quality, bearer);
    return tie_to_event(graph, borne, "manner");
  } else if (is_quantity && graph.word(bearer).sense.empty() && !is_personal_pronoun(graph, bearer) &&
             !has_attribute(graph.word(bearer), "@name")) {
    return amount_stated(graph, at, quality_led, bearer_led);
  } else {
    graph.replace(bearer_led, quality, bearer, "domain");
    graph.remove(quality_led, Fate::relation);
    graph.redirect(at, quality);
  }
  graph.move_children(at, quality);
}

// "She loved her garden more than her house": what somebody does more has it behind the object. True if it was so.
// (l / love-01 :ARG0 s :ARG1-of (h / have-degree-91 :ARG3 (m / more) :ARG4 h2)).
bool deed_compared(Rewriter& graph, int at, int deed_led, int deed) {
  const int degree = graph.child(at, "ARG3");
  const int other = graph.child(at, "ARG4");
  constexpr std::array kMore{"more", "less"};
  const bool is_deed = is_event(graph, deed) && graph.child(deed, "ARG0") >= 0 && graph.arc(deed_led).from == deed;
  if (!is_deed || other < 0 || !is_one_of(graph, graph.arc(degree).to, kMore)) return false;
  if (graph.mentions(graph.arc(degree).to) > 1) return false;
  graph.replace(other, graph.arc(degree).to, graph.arc(other).to, "compared-to");
  graph.replace(degree, deed, graph.arc(degree).to, "extent");
  graph.settle_concept(at, Fate::relation);
  graph.remove(deed_led, Fate::relation);
  return true;
}

// (x :ARG1-of (have-degree-91 :ARG2 tall :ARG3 more :ARG4 y)): tall is the quality, x its bearer.
void degree_apply(Rewriter& graph, int at, bool is_quantity) {
  int quality_led = graph.argument(at, "ARG2");
  // A quantity may be the degree itself: "enough oil".
  if (quality_led < 0 && is_quantity) quality_led = graph.argument(at, "ARG3");
  // (t / tall :ARG1-of (h / have-degree-91 :ARG3 (m / more))): what is more so is the quality itself.
  const bool is_bare = quality_led < 0;
  if (is_bare && graph.child(at, "ARG3") >= 0) quality_led = graph.argument(at, "ARG1");
  if (quality_led < 0) return;
  const int quality = graph.other(quality_led, at);
  if (is_bare && deed_compared(graph, at, quality_led, quality)) return;
  int bearer_led = is_bare ? -1 : graph.argument(at, "ARG1");
  // (d / dark-02 :ARG1 it :ARG1-of (h / have-degree-91 :ARG2 d :ARG3 so)): it bears itself, and who is dark it says.
  if (bearer_led >= 0 && graph.other(bearer_led, at) == quality) {
    graph.remove(bearer_led, Fate::relation);
    bearer_led = -1;
  }
  // "He did not sing so much": of what somebody does, the doing is denied.
  const int deed = is_quantity && bearer_led >= 0 ? graph.other(bearer_led, at) : -1;
  if (deed >= 0 && is_event(graph, deed) && std::erase(graph.word(at).attributes, "@neg") > 0)
    attribute_add(graph.word(deed), "@neg");
  if (is_quantity && bearer_led >= 0) counted_apply(graph, quality, graph.other(bearer_led, at));
  graph.settle_concept(at, Fate::relation);
  // What is denied is the degree: "no thicker than a finger".
  move_mood(graph, at, quality);
  if (const int led = graph.child(at, "ARG3"); led >= 0 && led != quality_led) degree_said(graph, led, quality);
  degree_measured(graph, at, quality, bearer_led);
  if (bearer_led < 0) return bearerless_apply(graph, at, quality_led, quality);
  tie_to_bearer(graph, at, is_quantity, quality_led, bearer_led);
}

// "Such a secret place": such belongs to the noun, though it says how secret it is; so does "so" of a quality that has
// nothing else. (p / place :mod (s / secret :degree (s2 / such))).
void such_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "degree");
  const int degree = led >= 0 ? graph.arc(led).to : -1;
  const int above = led >= 0 && (graph.is(degree, "such") || graph.is(degree, "so")) ? graph.parent(at) : -1;
  if (above < 0) return;
  const int bearer = graph.arc(above).from;
  const bool is_inside = graph.arc(above).inverse ? graph.arc(above).role == "ARG1" : graph.arc(above).role == "mod";
  if (!is_inside) return;
  if (graph.is(degree, "so")) {
    constexpr std::array kNoQuality{"many", "much", "few", "little", "long", "far", "only"};
    constexpr std::array kPlainNot{"thing",     "person",  "one",      "anyone", "anything", "someone",
                                   "something", "nothing", "somebody", "nobody", "anybody",  "everybody"};
    const bool is_noun = graph.word(bearer).sense.empty() && !is_personal_pronoun(graph, bearer) &&
                         !is_one_of(graph, bearer, kPlainNot) && !is_one_of(graph, bearer, kDemonstratives);
    const bool is_bare = graph.children(at).size() == 1 && graph.children(degree).empty() && graph.mentions(at) == 1;
    if (!is_noun || !is_bare || is_one_of(graph, at, kNoQuality) || graph.child(bearer, "poss") >= 0 ||
        graph.child(bearer, "quant") >= 0 || child_among(graph, bearer, "mod", kDemonstratives) >= 0)
      return;
    // "He has no such hat" is another thing.
    const int governed = graph.parent(bearer);
    const int verb = governed >= 0 ? graph.arc(governed).from : -1;
    const bool is_denied = verb >= 0 && graph.is(verb, "have", "03") && has_attribute(graph.word(verb), "@neg");
    if (is_denied || has_attribute(graph.word(at), "@neg") || has_attribute(graph.word(at), "@more")) return;
    graph.word(degree).name = "such";
  }
  graph.replace(led, bearer, degree, "mod");
}

// "The oldest house ever": behind the noun.
void ever_apply(Rewriter& graph, int at) {
  const int above = has_attribute(graph.word(at), "@most") ? graph.parent(at) : -1;
  const bool is_with_noun = above >= 0 && (graph.arc(above).role == "mod" || graph.arc(above).inverse);
  for (const char* role : {"time", "temporal"}) {
    const int led = is_with_noun ? graph.child(at, role) : -1;
    if (led >= 0 && graph.is(graph.arc(led).to, "ever"))
      graph.replace(led, graph.arc(above).from, graph.arc(led).to, "time");
  }
}

// "It helped him more": of what somebody does, how much stands behind it.
// (h / help-01 :ARG0 it :ARG1 he :quant (m / more)).
void amount_apply(Rewriter& graph, int at) {
  const int led = is_event(graph, at) && graph.child(at, "ARG0") >= 0 ? graph.child(at, "quant") : -1;
  const bool is_amount = led >= 0 && is_one_of(graph, graph.arc(led).to, kAmounts);
  if (is_amount && graph.children(graph.arc(led).to).empty()) graph.arc(led).role = "extent";
}

// (g / guess-01 :ARG1-of (e / easy-05 :mod (e2 / enough))): "he guessed easily enough".
void enough_apply(Rewriter& graph, int at) {
  const int above = graph.word(at).sense.empty() ? -1 : graph.parent(at);
  if (above < 0 || !graph.arc(above).inverse || !is_event(graph, graph.arc(above).from)) return;
  for (const char* role : {"mod", "degree"}) {
    const int led = graph.child(at, role);
    if (led >= 0 && graph.is(graph.arc(led).to, "enough") && graph.children(graph.arc(led).to).empty())
      degree_said(graph, led, at);
  }
}

// "Much bigger", which some write as very more big.
void much_apply(Rewriter& graph, int at) {
  if (!has_attribute(graph.word(at), "@more")) return;
  for (const char* role : {"degree", "mod"}) {
    const int led = child_among(graph, at, role, std::array{"very"});
    if (led < 0) continue;
    graph.word(graph.arc(led).to).name = "much";
    graph.arc(led).role = "degree";
  }
}

// (l / long :degree (m / more)), without a frame of degree: longer.
void bare_degree_apply(Rewriter& graph, int at) {
  constexpr std::array kBare{"more", "most", "less", "least"};
  const int led = child_among(graph, at, "degree", kBare);
  const bool is_quality = graph.child(at, "ARG0") < 0 && graph.parent(at) >= 0;
  if (led >= 0 && is_quality && graph.children(graph.arc(led).to).empty() && graph.mentions(graph.arc(led).to) == 1)
    degree_said(graph, led, at);
  much_apply(graph, at);
}

}  // namespace

// (h / have-degree-91 :ARG1 x :ARG2 (t / tall) :ARG3 (m / more) :ARG4 y): tall with @more, its bearer x, compared to y.
void step_degree(Meaning& meaning) {
  Rewriter graph(meaning, "degree");
  for (int at = 0; at < graph.count(); ++at) {
    such_apply(graph, at);
    if (graph.is(at, "have-degree", "91") || graph.is(at, "have-degree", "92")) degree_apply(graph, at, false);
    if (graph.is(at, "have-quant", "91")) degree_apply(graph, at, true);
    ever_apply(graph, at);
    amount_apply(graph, at);
  }
  for (int at = 0; at < graph.count(); ++at) {
    bare_degree_apply(graph, at);
    enough_apply(graph, at);
  }
  // Once more, as a quality may have come to its noun only by its frame.
  for (int at = 0; at < graph.count(); ++at) such_apply(graph, at);
}

}  // namespace lexon
