// Steps about what is joined: contrasts, and clauses and nouns between which a conjunction stands.
#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/clauses.hpp"
#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {

namespace {

// What is joined to a clause that is a chain itself is joined to its last: "she came and sang, or she slept".
// x :conjunct y :conjunct z ends with z. Below a noun a chain is left alone: "a cat and a dog that bark".
int chain_end(Rewriter& graph, int clause) {
  int led = graph.child(clause, "conjunct");
  for (int steps = graph.count(); steps > 0 && led >= 0 && is_clause(graph, clause); --steps) {
    clause = graph.arc(led).to;
    led = graph.child(clause, "conjunct");
  }
  return clause;
}

// "She hates us, and the pity that she lacks": a noun that is joined to a clause, and of which one clause is told, is told by
// that clause.
// (a / and :op1 (h / hate-01 ...) :op2 (p / pity :ARG1-of (l / lack-01 :ARG0 she))) becomes a second clause, she lacks
// pity: a clause and a noun cannot be joined by "and".
void promote_relative(Rewriter& graph, int led, const std::vector<int>& parts) {
  const int noun = graph.arc(led).to;
  const bool is_last = led == parts.back() && is_clause(graph, graph.arc(parts[0]).to);
  if (parts.size() < 2 || !is_last || is_clause(graph, noun) || graph.mentions(noun) > 1) return;
  if (graph.children(noun).size() != 1) return;
  const int below = graph.children(noun)[0];
  const int frame = graph.arc(below).to;
  const std::string role = graph.arc(below).role;
  if (!graph.arc(below).inverse || role != "ARG1" || graph.child(frame, "ARG0") < 0 || graph.mentions(frame) > 1)
    return;
  graph.lead_to(led, frame);
  graph.replace(below, frame, noun, role);
}

// "The same respect and honesty": an event that is joined to a thing is a noun.
void nominal_parts(Rewriter& graph, int at, const std::vector<int>& parts) {
  const int above = graph.parent(at);
  if (above < 0 || graph.arc(above).inverse || !graph.arc(above).role.starts_with("ARG")) return;
  const bool is_with_thing = std::any_of(parts.begin(), parts.end(), [&](int led) {
    const Concept& word = graph.word(graph.arc(led).to);
    return word.sense.empty() && !word.variable.empty() && graph.child(graph.arc(led).to, "domain") < 0 &&
           conjunction_of(graph, graph.arc(led).to) == nullptr;
  });
  const int head = graph.arc(parts[0]).to;
  const bool is_deed = !graph.word(head).sense.empty() && !has_attribute(graph.word(head), "@agent");
  if (is_with_thing && is_deed && graph.child(head, "ARG0") < 0) attribute_add(graph.word(head), "@nom");
}

// A part that the sentence has named before joins in as a mention.
// `first` has for each concept the arc by which the reader meets it first. A part that is met elsewhere before cannot
// be the head of what is said about it here.
void mention_parts(Rewriter& graph, const Conjunction& conjunction, const std::vector<int>& parts,
                   const std::vector<int>& first) {
  for (const int led : parts) {
    const int part = graph.arc(led).to;
    const int head = graph.arc(parts[0]).to;
    const bool is_contrast =
        conjunction.name == std::string_view("contrast") && is_clause(graph, head) && led != parts[0];
    const bool is_inside = is_contrast && graph.mentions(part) > 1 && graph.reaches(head, part);
    if (first[static_cast<std::size_t>(part)] == led && !is_inside) {
      promote_relative(graph, led, parts);
      continue;
    }
    if (is_contrast) {
      // "You may not think so, but that is true."
      graph.lead_to(led, graph.add_concept("true"));
      graph.add(graph.arc(led).to, graph.add_concept("that"), "domain");
    } else {
      graph.lead_to(led, mention_of(graph, part));
    }
  }
}

// The whole, mentioned again: "they".
// (s / sing-01 :ARG0 (a / and :op1 x :op2 y)) and below that (t / they :ARG0 a): when `at` has become its first
// operand, the other arcs would mean x alone. Where nothing else means x alone, they lead to x, so that later steps
// see who it is, "the man and the woman want to leave", and @group makes "they" of it.
void mention_group(Rewriter& graph, int at, int group_arc, const std::vector<int>& parts) {
  const int head = graph.arc(parts[0]).to;
  const auto has_part = [&](const char* name) {
    return std::any_of(parts.begin(), parts.end(), [&](int led) { return graph.is(graph.arc(led).to, name); });
  };
  const char* pronoun = has_part("i") || has_part("we") ? "we" : has_part("you") ? "you" : "they";
  const bool is_head_alone = parts.size() > 1 && graph.mentions(head) == 1 && !is_clause(graph, head) &&
                             !is_personal_pronoun(graph, head) && pronoun == std::string_view("they");
  for (std::size_t i = 0; i < graph.meaning().arcs.size(); ++i) {
    const int led = static_cast<int>(i);
    if (graph.arc(led).gone || graph.arc(led).to != at || led == group_arc || graph.arc(led).inverse) continue;
    if (is_head_alone) {
      attribute_add(graph.word(head), "@group");
      continue;
    }
    const int they = graph.add_concept(pronoun);
    attribute_add(graph.word(they), "@ref");
    attribute_add(graph.word(they), "@pl");
    graph.lead_to(led, they);
  }
}

// "All trees and flowers".
void plural_parts(Rewriter& graph, const std::vector<int>& parts) {
  for (const int led : parts) {
    Concept& part = graph.word(graph.arc(led).to);
    const bool is_noun = part.sense.empty() && !part.variable.empty() && !has_attribute(part, "@name");
    if (is_noun && part.name != "this" && part.name != "that") attribute_add(part, "@pl");
  }
}

// "She came and sang to please us": a phrase that is said of all clauses stands behind the last.
// A word alone, "always", stays with the first, and so does a clause that goes in front.
void late_circumstances(Rewriter& graph, int at, int head, int last) {
  constexpr std::array kLate{"purpose",  "cause",  "concession",  "conj-as-if", "substitute", "instrument",
                             "location", "manner", "accompanier", "duration",   "time",       "temporal",
                             "likeness", "place",  "source",      "exception",  "beneficiary"};
  if (head == last || !is_clause(graph, head) || !is_clause(graph, last)) return;
  for (const int led : graph.children(at)) {
    const Arc& one = graph.arc(led);
    const bool is_time = one.role == "time" || one.role == "temporal";
    const bool goes_in_front = (is_time && is_clause(graph, one.to)) || has_attribute(graph.word(head), "@front");
    if (one.inverse || !is_listed(one.role, kLate) || goes_in_front || graph.children(one.to).empty()) continue;
    // "On the third day the wind changed, and we sailed": behind the last it would be said of that alone.
    const bool is_of_all = is_time || one.role == "location" || one.role == "place";
    if (is_of_all && graph.child(last, "shared") < 0) continue;
    if (!is_unknown(graph, one.to)) graph.lead_from(led, last);
  }
}

// Mood and negation of the whole are those of its first part; how many there are is not.
void take_marks(Rewriter& graph, int at, int head) {
  const bool is_bidden = has_attribute(graph.word(head), "@imp");
  for (const std::string& attribute : graph.word(at).attributes) {
    // Some files mark a request with more than one mood.
    const bool is_other_mood = is_bidden && (attribute == "@int" || attribute == "@may");
    const bool is_own = attribute == "@pl" || attribute == "@sg" || attribute == "@v";
    if (!is_own && !is_other_mood) attribute_add(graph.word(head), attribute);
  }
}

// "A cloth that is strong but light": the noun above is said once.
// (c / cloth :ARG1-of (a / and :op1 (s / strong-02 :ARG1 c) :op2 l)): when `head`, strong-02, has taken the place of the
// conjunction, two arcs tie it to the cloth; the one above is kept, with the role of the one below.
void noun_once(Rewriter& graph, int head) {
  const int above = graph.parent(head);
  if (above >= 0 && graph.arc(above).inverse && is_core_role(graph.arc(above).role)) {
    for (const int led : graph.children(head)) {
      const bool is_doubled = !graph.arc(led).inverse && graph.arc(led).to == graph.arc(above).from &&
                              (graph.arc(led).role == "ARG0" || graph.arc(led).role == "ARG1");
      if (!is_doubled) continue;
      graph.arc(above).role = graph.arc(led).role;
      graph.remove(led, Fate::relation);
    }
  }
}

// One word for parts that were all named before; false if they are not.
bool said_by_pronoun(Rewriter& graph, int at, const std::vector<int>& parts, const Conjunction& conjunction) {
  // "Our songs and those of the town": where all parts are named again, and somebody else has them.
  const bool is_again = std::all_of(parts.begin(), parts.end(),
                                    [&](int led) { return has_attribute(graph.word(graph.arc(led).to), "@ref"); });
  // "They", where all of them were named before.
  const bool is_people =
      is_again && parts.size() > 1 && std::none_of(parts.begin(), parts.end(), [&](int led) {
        const int part = graph.arc(led).to;
        return is_clause(graph, part) || graph.is(part, "i") || graph.is(part, "you") || graph.is(part, "we");
      });
  if (is_people && graph.children(at).size() == parts.size() && conjunction.attribute == std::string_view("@and")) {
    for (const int led : parts) graph.remove(led, Fate::word);
    graph.word(at).name = "they";
    attribute_add(graph.word(at), "@pl");
    attribute_add(graph.word(at), "@ref");
    return true;
  }
  const int owner = is_again && parts.size() > 1 ? graph.child(at, "poss") : -1;
  if (owner >= 0) {
    graph.arc(owner).role = "part-of";
    for (const int led : parts) graph.remove(led, Fate::word);
    graph.word(at).name = "those";
    return true;
  }
  return false;
}

constexpr const char* kModalMarks[] = {"@can", "@must", "@should", "@may"};

// "They can sing and dance", "will you come or stay?", "he has never seen or heard it": the auxiliary that stands before the
// first clause holds of `part`, and is not said again. A denied first clause would deny both. `at` joins them.
bool takes_auxiliary(Rewriter& graph, int at, int head, int part) {
  Concept& later = graph.word(part);
  if (has_attribute(graph.word(head), "@neg") || !is_event(graph, head) || !is_event(graph, part)) return false;
  for (const int above : {at, head}) {
    const int when = graph.child(above, "time");
    if (when < 0 || !graph.is(graph.arc(when).to, "never") || !graph.is(at, "or")) continue;
    attribute_add(later, "@same");
    return true;
  }
  for (const char* mark : {"@can", "@must", "@should", "@may", "@int"}) {
    if (!has_attribute(graph.word(head), mark) || std::erase(later.attributes, mark) == 0) continue;
    if (has_attribute(graph.word(head), "@int")) std::erase(later.attributes, "@int");
    attribute_add(later, "@same");
    return true;
  }
  // (a / and :op1 (p / possible-01 :ARG1 (s / sail-01)) :op2 (f / fish-01)): "can sail and fish".
  const bool is_modal = std::any_of(std::begin(kModalMarks), std::end(kModalMarks),
                                    [&](const char* mark) { return has_attribute(graph.word(head), mark); });
  // It has its frame and the conjunction.
  const bool is_bare = later.attributes.size() == 2 && graph.child(part, "time") < 0 && graph.child(part, "domain") < 0;
  if (!is_modal || !is_bare || graph.is(at, "contrast")) return false;
  attribute_add(later, "@same");
  return true;
}

// "Without eating or drinking": what is lacked is denied once.
void lacked_once(Rewriter& graph, int at, const std::vector<int>& parts) {
  const int above = graph.parent(at);
  if (above < 0 || graph.arc(above).inverse || graph.arc(above).role != "manner") return;
  const auto is_denied = [&](int led) { return has_attribute(graph.word(graph.arc(led).to), "@neg"); };
  if (parts.size() < 2 || !std::all_of(parts.begin(), parts.end(), is_denied)) return;
  for (std::size_t i = 1; i < parts.size(); ++i) std::erase(graph.word(graph.arc(parts[i]).to).attributes, "@neg");
  graph.word(at).name = "or";
}

// "She is old and wise": a quality that is told of the first part's subject, as that is, needs no "is" of its own.
void quality_alike(Rewriter& graph, int head, int before, int part) {
  constexpr std::array kOwn{"@neg", "@can", "@must", "@should", "@may", "@maynot", "@int", "@past", "@pres", "@fut"};
  const bool is_told_otherwise = std::any_of(kOwn.begin(), kOwn.end(), [&](const char* mark) {
    return has_attribute(graph.word(head), mark) != has_attribute(graph.word(part), mark);
  });
  if (is_told_otherwise || has_attribute(graph.word(head), "@neg") || graph.child(part, "time") >= 0) return;
  // "She is old and wise and sings well": what has more to it is a verb, and no further quality.
  const bool is_verb =
      graph.child(part, "ARG2") >= 0 || graph.child(part, "ARG3") >= 0 || graph.child(part, "ARG4") >= 0;
  if (is_verb && has_attribute(graph.word(before), "@alike")) attribute_add(graph.word(before), "@last");
  if (!is_verb) attribute_add(graph.word(part), "@alike");
}

// True for a clause that asks for one of those in it.
bool has_unknown(Rewriter& graph, int clause) {
  const std::vector<int> below = graph.children(clause);
  return std::any_of(below.begin(), below.end(), [&](int led) { return is_unknown(graph, graph.arc(led).to); });
}

// "Where did he go, and whose hat did he wear?": what asks for something of its own has a subject of its own, too.
bool asks_anew(Rewriter& graph, int clause) {
  const auto is_asked = [&](int at) { return is_unknown(graph, at) && graph.mentions(at) == 1; };
  for (const int led : graph.children(clause)) {
    const int phrase = graph.arc(led).to;
    if (graph.arc(led).inverse) continue;
    if (is_asked(phrase)) return true;
    for (const char* role : {"mod", "poss", "quant"}) {
      const int own = graph.word(phrase).sense.empty() ? graph.child(phrase, role) : -1;
      if (own >= 0 && is_asked(graph.arc(own).to)) return true;
    }
  }
  return false;
}

// "Do not climb, or you will fall": what comes of it is no further order.
bool is_warned(Rewriter& graph, int head, int part, const Conjunction& conjunction) {
  return conjunction.attribute == std::string_view("@or") && has_attribute(graph.word(head), "@imp") &&
         !has_attribute(graph.word(part), "@imp");
}

// Each part is tied to the one before. `joined_by` is what stands in front of it, and a subject that is that of the
// first clause becomes :shared: "she came and sang". Returns the last part.
int parts_tied(Rewriter& graph, int at, const std::vector<int>& parts, const Conjunction& conjunction) {
  const int head = graph.arc(parts[0]).to;
  const int led_here = graph.parent(at);
  int last = chain_end(graph, head);
  int listed = -1;
  bool is_one_verb = true;
  for (std::size_t i = 1; i < parts.size(); ++i) {
    const int part = graph.arc(parts[i]).to;
    // "She did not say who left, or whether it rained".
    const bool is_reported = led_here >= 0 && is_one_of(graph, graph.arc(led_here).from, kReporting);
    const bool is_thought = !has_attribute(graph.word(head), "@int") && is_reported && is_core(graph.arc(led_here)) &&
                            !is_one_of(graph, graph.arc(led_here).from, kSaying);
    if (is_reported && has_attribute(graph.word(part), "@int") && (is_thought || has_unknown(graph, head))) {
      std::erase(graph.word(part).attributes, "@int");
      attribute_add(graph.word(part), "@whether");
    }
    // A question behind what is none is a sentence of its own: "Look. Do you see it?"
    const bool is_asked = has_attribute(graph.word(part), "@int") && !has_attribute(graph.word(head), "@int");
    const char* joined_by = is_asked ? "@snt" : graph.is(part, "et-cetera") ? "@etc" : conjunction.attribute;
    // "She not only sang but also danced."
    const int only = i == 1 && parts.size() == 2 && is_event(graph, part) ? graph.child(head, "mod") : -1;
    if (only >= 0 && graph.is(graph.arc(only).to, "not-only")) joined_by = "@but";
    if (is_asked && i + 1 == parts.size()) attribute_add(graph.word(head), "@ends_int");
    attribute_add(graph.word(part), joined_by);
    const int subject = subject_arc(graph, part);
    const int model = subject_arc(graph, head);
    // A condition of its own stands between: "..., and if it rains, I stay".
    const bool is_shared = subject >= 0 && model >= 0 && graph.child(part, "condition") < 0 &&
                           graph.arc(subject).to == graph.arc(model).to && std::string_view(joined_by) != "@snt" &&
                           !has_attribute(graph.word(part), "@agent") && !asks_anew(graph, part) &&
                           !is_warned(graph, head, part, conjunction) &&
                           !(asks_anew(graph, head) && has_attribute(graph.word(part), "@whether"));
    // "Did it rain, or did the wind blow?"
    if (!is_shared && subject >= 0 && has_attribute(graph.word(at), "@int") &&
        conjunction.attribute == std::string_view("@or"))
      attribute_add(graph.word(part), "@int");
    // "Give him a fish, and he will eat", "be quiet, or he will hear us": what follows from an order is to come.
    constexpr std::array kTold{"@imp", "@past", "@pres", "@fut", "@can", "@must", "@should", "@int"};
    constexpr std::array kLasting{"know", "sure", "think", "believe", "hope", "want", "need", "love", "like", "mean"};
    const bool is_open = i == 1 && !is_shared && subject >= 0 && is_event(graph, part) &&
                         !is_one_of(graph, part, kLasting) &&
                         std::none_of(kTold.begin(), kTold.end(),
                                      [&](const char* mark) { return has_attribute(graph.word(part), mark); });
    const bool is_consequence =
        conjunction.attribute == std::string_view("@and") || conjunction.attribute == std::string_view("@or");
    const bool is_bidding = has_attribute(graph.word(head), "@imp") && !graph.is(head, "thank", "01");
    if (is_open && is_bidding && is_consequence) attribute_add(graph.word(part), "@fut");
    if (is_shared && graph.arc(subject).role == "ARG1") attribute_add(graph.word(part), "@shr1");
    if (is_shared) graph.arc(subject).role = "shared";
    is_one_verb = is_one_verb && is_shared && takes_auxiliary(graph, at, head, part);
    if (is_shared) quality_alike(graph, head, last, part);
    // "She came, sang and left": between clauses of one subject only the last has a conjunction.
    if (is_shared && listed >= 0) attribute_add(graph.word(listed), "@list");
    listed = is_shared && i + 1 < parts.size() ? part : -1;
    graph.replace(parts[i], last, part, "conjunct");
    last = chain_end(graph, part);
  }
  return last;
}

// "Neither he nor his wife believed it": who is joined by "or" and did not do it.
bool is_neither(Rewriter& graph, int at, const std::vector<int>& parts) {
  const int led = graph.is(at, "or") && parts.size() > 1 ? graph.parent(at) : -1;
  const int clause = led < 0 ? -1 : graph.arc(led).from;
  if (clause < 0 || graph.arc(led).inverse || graph.mentions(at) > 1) return false;
  const bool is_own = has_attribute(graph.word(at), "@neg");
  if (!is_own && subject_arc(graph, clause) != led) return false;
  const bool is_of_nouns =
      std::none_of(parts.begin(), parts.end(), [&](int one) { return is_clause(graph, graph.arc(one).to); });
  return is_of_nouns && std::erase(graph.word(is_own ? at : clause).attributes, "@neg") > 0;
}

// The first operand takes the place of the conjunction, and each further one is tied to the one before it, so that rules
// see them in their order.
void coordinate(Rewriter& graph, int at, const Conjunction& conjunction) {
  const std::vector<int> parts = graph.numbered(at, {"op", "snt", "ARG"});
  if (parts.empty()) return;
  const std::vector<int> first = first_arcs(graph);
  mention_parts(graph, conjunction, parts, first);
  if (said_by_pronoun(graph, at, parts, conjunction)) return;
  nominal_parts(graph, at, parts);
  mention_group(graph, at, first[static_cast<std::size_t>(at)], parts);
  const int head = graph.arc(parts[0]).to;
  graph.settle_concept(at, Fate::attribute);
  // Within a sentence nothing is left that it could be tied to.
  const int led_here = graph.parent(at);
  const bool is_inside = led_here >= 0 && is_core(graph.arc(led_here)) && graph.arc(led_here).role != "ARG1";
  const bool is_object =
      led_here >= 0 && graph.arc(led_here).role == "ARG1" && !graph.is(graph.arc(led_here).from, "say", "01");
  const bool is_but = conjunction.attribute == std::string_view("@but");
  if (parts.size() == 1 && (is_but || (!is_object && !is_inside))) {
    // "And ...", "But ...": what it is tied to stands in another sentence.
    attribute_add(graph.word(head), std::string("@lead_") + (conjunction.attribute + 1));
  }
  if (has_attribute(graph.word(at), "@pl")) plural_parts(graph, parts);
  const bool is_nobody = is_neither(graph, at, parts);
  if (is_nobody) attribute_add(graph.word(head), "@neither");
  const int last = parts_tied(graph, at, parts, is_nobody ? Conjunction{"neither", "@nor"} : conjunction);
  graph.remove(parts[0], Fate::relation);
  // What is joined to all of them stands behind the last: "she came and sang, but he left".
  const int to_all = graph.child(at, "conjunct");
  const auto is_told = [&](int one) {
    return is_event(graph, one) || graph.child(one, "domain") >= 0 || graph.child(one, "shared") >= 0;
  };
  if (to_all >= 0 && is_told(last) && is_told(graph.arc(to_all).to)) graph.lead_from(to_all, last);
  take_marks(graph, at, head);
  graph.redirect(at, head);
  noun_once(graph, head);
  if (conjunction.attribute == std::string_view("@and")) late_circumstances(graph, at, head, last);
  // "The man and the woman who sat there": what is said of several things stands behind the last.
  for (const int led : graph.children(at)) {
    const bool is_relative = graph.arc(led).inverse && is_core_role(graph.arc(led).role);
    if (is_relative && !is_clause(graph, head) && !is_clause(graph, last)) graph.lead_from(led, last);
  }
  graph.move_children(at, head);
}

// (l / love-01 :ARG1-of (c / contrast-01 :ARG2 h)): the contrast stands above what it joins, as elsewhere.
// `first` is what stands above; the frame takes its place and has it as ARG1, so that both parts stand below as with
// "and".
void contrast_upright(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  const bool is_below = above >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG1";
  if (!is_below || graph.child(at, "ARG2") < 0 || graph.mentions(at) > 1) return;
  const int first = graph.arc(above).from;
  if (graph.mentions(first) > 1) return;
  graph.redirect(first, at);
  graph.replace(above, at, first, "ARG1");
}

// (a / and :op1 (k / king :polarity -) :op2 (q / queen)) below a verb: the queen instead of the king, as the denial would be
// read with both.
void not_but_apply(Rewriter& graph, int at, const char* denied, const char* other) {
  const std::vector<int> parts = graph.children(at);
  const int first = graph.child(at, denied);
  const int second = graph.child(at, other);
  const int above = graph.parent(at);
  if (parts.size() != 2 || first < 0 || second < 0 || above < 0 || graph.arc(above).inverse) return;
  const int not_this = graph.arc(first).to;
  const int but_that = graph.arc(second).to;
  if (!has_attribute(graph.word(not_this), "@neg") || has_attribute(graph.word(but_that), "@neg")) return;
  for (const int part : {not_this, but_that}) {
    const bool is_noun = graph.word(part).sense.empty() && !graph.word(part).variable.empty();
    if (!is_noun || graph.child(part, "domain") >= 0 || graph.mentions(part) > 1) return;
  }
  if (!is_core(graph.arc(above)) || !is_event(graph, graph.arc(above).from)) return;
  std::erase(graph.word(not_this).attributes, "@neg");
  graph.replace(first, but_that, not_this, "substitute");
  graph.stand_in(at, second, Fate::word);
}

// "Oh, it is late": a cry that the graph has as a quality of the clause stands in front of it.
void cry_apply(Rewriter& graph, int at) {
  constexpr std::array kCries{"oh",    "ah", "alas",  "hey",  "ha",  "aha", "wow",
                              "hello", "hi", "bravo", "ouch", "ugh", "ooh", "yes"};
  const int above = graph.parent(at);
  if (above < 0 || graph.arc(above).inverse || !graph.word(at).sense.empty() || !is_one_of(graph, at, kCries)) return;
  const std::string& role = graph.arc(above).role;
  const int clause = graph.arc(above).from;
  if ((role != "mod" && role != "manner" && role != "discourse") || !graph.children(at).empty()) return;
  if (!is_clause(graph, clause)) return;
  const int both = graph.add_concept("and");
  graph.redirect(clause, both);
  graph.replace(above, both, at, "op1");
  graph.add(both, clause, "op2");
}

// "Thank you", "please come": who thanks is nobody else than who speaks.
void courtesy_apply(Rewriter& graph, int at) {
  if (has_attribute(graph.word(at), "@polite") && has_attribute(graph.word(at), "@imp")) {
    std::erase(graph.word(at).attributes, "@polite");
    graph.add(at, graph.add_concept("please"), "mod");
  }
  const int whom = graph.is(at, "thank", "01") ? graph.child(at, "ARG1") : -1;
  const int who = graph.child(at, "ARG0");
  if (whom < 0 || !graph.is(graph.arc(whom).to, "you") || (who >= 0 && !graph.is(graph.arc(who).to, "i"))) return;
  const int above = graph.parent(at);
  const bool is_uttered = above < 0 || graph.arc(above).role.starts_with("snt") ||
                          graph.arc(above).role.starts_with("op") || is_one_of(graph, graph.arc(above).from, kSaying);
  if (!is_uttered || graph.word(at).attributes.size() > 1 || graph.child(at, "time") >= 0) return;
  if (who >= 0) {
    if (graph.mentions(graph.arc(who).to) == 1) graph.settle_concept(graph.arc(who).to, Fate::left_out);
    graph.remove(who, Fate::left_out);
  }
  attribute_add(graph.word(at), "@imp");
}

// (o / okay-04), (s / sorry-01), (c / confirm-01 :ARG1 x), uttered: "okay", "sorry", "yes, x".
void answer_word_apply(Rewriter& graph, int at) {
  constexpr std::pair<std::string_view, const char*> kAnswers[] = {
      {"okay", "okay"},           {"sorry", "sorry"},          {"confirm", "yes"},
      {"great", "well-great"},    {"perfect", "well-perfect"}, {"good", "well-good"},
      {"nice", "well-nice"},      {"cool", "well-cool"},       {"excellent", "well-excellent"},
      {"awesome", "well-awesome"}};
  // "It seems good and right" utters none of the two.
  const int whole = joined_in(graph, at);
  const int above = graph.parent(whole);
  const bool is_uttered = above < 0 || (whole != at && is_one_of(graph, graph.arc(above).from, kSaying));
  if (!is_uttered || graph.word(at).sense.empty() || graph.mentions(at) > 1) return;
  const auto* row = std::find_if(std::begin(kAnswers), std::end(kAnswers),
                                 [&](const auto& one) { return graph.word(at).name == one.first; });
  if (row == std::end(kAnswers)) return;
  const std::vector<int> below = graph.children(at);
  const bool is_denied = has_attribute(graph.word(at), "@neg");
  const int led = graph.is(at, "confirm", "01") ? graph.child(at, "ARG1") : -1;
  if (below.size() != (led >= 0 ? 1 : 0) || graph.word(at).attributes.size() > (is_denied ? 2 : 1)) return;
  if (is_denied && !graph.is(at, "confirm", "01")) return;
  graph.word(at).name = is_denied ? "well-no" : row->second;
  graph.word(at).sense.clear();
  graph.word(at).attributes.clear();
  if (led < 0) return;
  // What is denied is said so, and not confirmed.
  if (is_denied) {
    attribute_add(graph.word(graph.arc(led).to), "@neg");
    return graph.stand_in(at, led);
  }
  const int both = graph.add_concept("and");
  graph.redirect(at, both);
  graph.add(both, at, "op1");
  graph.replace(led, both, graph.arc(led).to, "op2");
}

}  // namespace

// In front of coordination and quotation: "but" is no part of what is said.
void step_contrast(Meaning& meaning) {
  Rewriter graph(meaning, "contrast");
  for (int at = 0, end = graph.count(); at < end; ++at) {
    if (graph.is(at, "but", "91") || graph.is(at, "unexpected-co-occurrence", "91")) graph.word(at).name = "contrast";
    if (graph.is(at, "and") || graph.is(at, "but")) not_but_apply(graph, at, "op1", "op2");
    if (graph.is(at, "contrast", "01")) not_but_apply(graph, at, "ARG1", "ARG2");
    if (graph.is(at, "contrast", "01") || graph.is(at, "contrast", "91")) {
      contrast_upright(graph, at);
      coordinate(graph, at, *conjunction_of(graph, at));
    }
    cry_apply(graph, at);
    courtesy_apply(graph, at);
    answer_word_apply(graph, at);
  }
}

// (a / and :op1 x :op2 y :op3 z) becomes a chain, x :conjunct y :conjunct z, so that rules see neighbours; inner ones first,
// so that what their operands are said of is seen.
void step_coordination(Meaning& meaning) {
  Rewriter graph(meaning, "coordination");
  for (int at = graph.count() - 1; at >= 0; --at) {
    // "Between five and ten years".
    if (graph.is(at, "value-interval") || graph.is(at, "date-interval")) graph.word(at).name = "between";
    if (const int second = graph.is(at, "between") ? graph.child(at, "op2") : -1; second >= 0) {
      const int first = graph.child(at, "op1");
      if (first < 0) continue;
      // "Between five and ten years": the unit is said once.
      const int unit = graph.arc(first).to;
      const int number = graph.word(unit).name == graph.word(graph.arc(second).to).name && graph.mentions(unit) == 1
                             ? graph.child(unit, "quant")
                             : -1;
      if (number >= 0 && graph.children(unit).size() == 1) graph.stand_in(unit, number, Fate::word);
      attribute_add(graph.word(graph.arc(second).to), "@and");
      graph.replace(second, graph.arc(first).to, graph.arc(second).to, "conjunct");
      continue;
    }
    if (graph.is(at, "and") || graph.is(at, "or")) lacked_once(graph, at, graph.numbered(at, {"op"}));
    const Conjunction* conjunction = conjunction_of(graph, at);
    if (conjunction != nullptr && graph.word(at).sense.empty()) coordinate(graph, at, *conjunction);
  }
}

}  // namespace lexon
