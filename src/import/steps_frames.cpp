// The step about frames that stand for a role or a relation: causes, purposes, likeness, parts.
#include <algorithm>
#include <array>
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

// A frame that stands for a role: the two arguments that it ties together. `role` goes from what is in `head` to what is
// in `dependent`; the table of roles must know it.
// A bank writes a role as a frame where it has to say something about the tie itself: (h / have-purpose-91 :ARG1 (k /
// knife) :ARG2 (c / cut-01)) is the knife with :purpose cut, and can be denied or asked for as a knot of its own. ARG1
// is nearly always what the role belongs to.
struct Reified {
  std::string_view name;
  std::string_view sense;
  std::string_view head;
  std::string_view dependent;
  const char* role;
};

constexpr Reified kReified[] = {
    {"cause", "01", "ARG1", "ARG0", "cause"},
    {"have-cause", "91", "ARG1", "ARG2", "cause"},
    {"have-reason", "91", "ARG1", "ARG2", "cause"},
    {"infer", "91", "ARG1", "ARG2", "cause"},
    {"identity", "91", "ARG1", "ARG2", "identity"},
    {"mean", "91", "ARG1", "ARG2", "apposition"},
    {"have-condition", "91", "ARG1", "ARG2", "condition"},
    {"have-concession", "91", "ARG1", "ARG2", "concession"},
    {"regardless", "91", "ARG1", "ARG2", "concession"},
    {"have-concessive-condition", "91", "ARG1", "ARG2", "concessive-conditional"},
    {"have-purpose", "91", "ARG1", "ARG2", "purpose"},
    {"have-goal", "91", "ARG1", "ARG2", "purpose"},
    {"have-instrument", "91", "ARG1", "ARG2", "instrument"},
    {"have-manner", "91", "ARG1", "ARG2", "manner"},
    {"have-frequency", "91", "ARG1", "ARG2", "frequency"},
    {"have-duration", "91", "ARG1", "ARG2", "duration"},
    {"have-extent", "91", "ARG1", "ARG2", "extent"},
    {"have-temporal", "91", "ARG1", "ARG2", "time"},
    {"be-temporally-at", "91", "ARG1", "ARG2", "time"},
    {"have-direction", "91", "ARG1", "ARG2", "direction"},
    {"have-source", "91", "ARG1", "ARG2", "source"},
    {"be-from", "91", "ARG1", "ARG2", "source"},
    {"have-topic", "91", "ARG1", "ARG2", "topic"},
    {"have-companion", "91", "ARG1", "ARG2", "accompanier"},
    {"accompany", "01", "ARG1", "ARG0", "accompanier"},
    {"have-material", "91", "ARG1", "ARG2", "consist-of"},
    {"have-substitute", "91", "ARG1", "ARG2", "substitute"},
    {"instead-of", "91", "ARG1", "ARG2", "substitute"},
    {"have-example", "91", "ARG1", "ARG2", "example"},
    {"exemplify", "01", "ARG1", "ARG0", "example"},
    {"resemble", "91", "ARG1", "ARG2", "likeness"},
    {"include", "91", "ARG1", "ARG2", "superset"},
    {"except", "01", "ARG2", "ARG1", "exception"},
    {"have-part", "91", "ARG1", "ARG2", "part"},
    {"have-age", "91", "ARG1", "ARG2", "age"},
    {"have-mod", "91", "ARG1", "ARG2", "mod"},
    {"have-color", "91", "ARG1", "ARG2", "color"},
    {"have-size", "91", "ARG1", "ARG2", "size"},
    {"be-destined-for", "91", "ARG1", "ARG2", "destination"},
    {"have-ord", "91", "ARG1", "ARG2", "ord"},
    {"hyperlink", "91", "ARG1", "ARG3", "source"},
    {"have-subtraction", "91", "ARG1", "ARG2", "exception"},
    {"have-medium", "91", "ARG1", "ARG2", "medium"},
    {"have-path", "91", "ARG1", "ARG2", "path"},
    {"have-start", "91", "ARG1", "ARG2", "source"},
    {"have-result", "91", "ARG1", "ARG2", "consequence"},
    {"have-cost", "91", "ARG1", "ARG2", "cost"},
    {"have-other-role", "91", "ARG1", "ARG2", "other-role"},
};

// These are said by a verb when they are the statement itself, and are roles only below what they speak of.
// (h / have-color-91 :ARG1 (b / boat) :ARG2 (r / red)) at the top states that the boat is red; a cause at the top ties
// two clauses, "it fell because it rained", and needs no verb.
bool is_statement(const Reified& one) {
  const std::string_view role = one.role;
  return role == "mod" || role == "age" || role == "color" || role == "size" || role == "destination" ||
         role == "part" || role == "superset" || role == "exception" || role == "apposition" || role == "example" ||
         role == "source" || role == "time" || role == "topic" || role == "accompanier" || role == "ord" ||
         role == "purpose" || role == "substitute" || role == "likeness" || role == "consist-of";
}

// Null for a frame that stands for no role.
const Reified* reified_of(Rewriter& graph, int at) {
  if (graph.word(at).sense.empty()) return nullptr;
  for (const Reified& one : kReified) {
    if (graph.is(at, one.name, one.sense)) return &one;
  }
  return nullptr;
}

// One end alone: "that is why ...", "... because". The frame's other end is not said.
// `up` is the arc of the head and `down` that of the dependent, -1 for the one that is missing: (c / cause-01 :ARG0 (r
// / rain-01)) has only `down`, and becomes rain with @as_cause, "because it rained"; with ARG1 alone it has @so_cause,
// "that is why".
void lone_apply(Rewriter& graph, int at, const Reified& one, int up, int down) {
  const int led = up >= 0 ? up : down;
  const bool is_above = graph.arc(led).to == at;
  if (is_above) {
    // "So the seventh planet was the Earth": the cause stands in another sentence.
    if (std::string_view(one.role) != "cause" || up < 0 || graph.mentions(at) > 1 || !graph.children(at).empty())
      return;
    attribute_add(graph.word(graph.arc(led).from), "@so_cause");
    graph.settle_concept(at, Fate::attribute);
    graph.remove(led, Fate::attribute);
    return;
  }
  // "... because": what it is tied to stands in another sentence, so a conjunction in front says it.
  if (graph.mentions(at) > 1) return;
  const bool is_plain = graph.children(at).size() == 1;
  if (!is_plain || std::string_view(one.role) == "superset") return;
  const int kept = graph.arc(led).to;
  // "That caused the noise": a thing is no clause that "so" could begin.
  const bool is_thing = graph.word(kept).sense.empty() && !graph.word(kept).variable.empty() &&
                        graph.child(kept, "domain") < 0 && graph.child(kept, "op1") < 0 && !is_unknown(graph, kept);
  if (is_thing && up >= 0 && graph.is(at, "cause", "01")) {
    graph.add(at, graph.add_concept("that"), "ARG0");
    return;
  }
  // "If it rains?"
  if (has_attribute(graph.word(at), "@int")) attribute_add(graph.word(kept), "@ends_int");
  graph.settle_concept(at, Fate::attribute);
  graph.remove(led, Fate::attribute);
  if (is_thing && up < 0 && std::string_view(one.role) == "cause") {
    // "Because of the fog."
    const int because = graph.add_concept("because-of");
    graph.redirect(at, because);
    graph.add(because, kept, "op1");
    return;
  }
  attribute_add(graph.word(kept), std::string("@") + (up >= 0 ? "so_" : "as_") + one.role);
  graph.redirect(at, kept);
}

// The frame is the statement itself: true where a verb says it, or its predicate has taken its place.
bool stated_apply(Rewriter& graph, int at, const Reified& one, int up, int down) {
  const int head = graph.other(up, at);
  const int dependent = graph.other(down, at);
  // "Like her brother, she sings": what a clause is like is said beside it.
  const int first = graph.is(head, "and") ? graph.child(head, "op1") : -1;
  const bool is_of_clause =
      std::string_view(one.role) == "likeness" && !graph.word(first >= 0 ? graph.arc(first).to : head).sense.empty();
  // "The war lasted ten years": what is no clause has no duration beside it.
  const bool is_bare = graph.child(head, "ARG0") < 0 && graph.child(head, "ARG1") < 0 &&
                       graph.child(head, "domain") < 0 && graph.word(head).name != "and";
  if (is_bare && graph.is(at, "have-duration", "91")) {
    graph.word(at).name = "last";
    graph.word(at).sense = "01";
    return true;
  }
  if (is_statement(one) && !is_of_clause) {
    // What it means, and how old it is, other words say.
    const bool is_verb = graph.is(at, "mean", "91") || graph.is(at, "have-age", "91");
    if (is_verb)
      graph.word(at).name = one.role == std::string_view("age") ? "age" : "mean", graph.word(at).sense = "01";
    return true;
  }
  if (is_of_clause) attribute_add(graph.word(head), "@front");
  // "The wind caused the noise": a thing is no clause that another could give the reason of.
  const Concept& caused = graph.word(first >= 0 ? graph.arc(first).to : head);
  const bool is_thing = caused.sense.empty() && !caused.variable.empty() && graph.child(head, "domain") < 0 &&
                        caused.name != "amr-unknown" && caused.name != "umr-unknown" &&
                        !caused.name.ends_with("choice");
  // "The failure of the engine caused the crash": of which nothing is said is no clause either.
  const bool is_bare_event = !caused.sense.empty() && graph.children(head).empty() && has_attribute(caused, "@v") &&
                             caused.attributes.size() == 1 && !caused.name.starts_with("have-");
  if (graph.is(at, "cause", "01") && (is_thing || is_bare_event)) return true;
  if (std::string_view(one.role) == "identity") {
    // "Kim, the mayor, laughed": who does something is no statement.
    const int above = graph.parent(at);
    const bool is_participant = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG0" &&
                                graph.word(head).sense.empty() && graph.word(dependent).sense.empty();
    if (is_participant) return false;
    // "The trouble is that he lies" needs the verb.
    const bool is_told = !graph.word(dependent).sense.empty() && graph.word(head).sense.empty();
    if (is_told && (graph.child(dependent, "ARG0") >= 0 || graph.child(dependent, "ARG1") >= 0)) {
      if (graph.child(head, "poss") < 0) attribute_add(graph.word(head), "@def");
      return true;
    }
    // "Kim is the mayor".
    for (const std::string& attribute : graph.word(at).attributes) {
      if (attribute != "@v") attribute_add(graph.word(dependent), attribute);
    }
    graph.settle_concept(at, Fate::relation);
    graph.replace(up, dependent, head, "domain");
    graph.remove(down, Fate::relation);
    graph.redirect(at, dependent);
    graph.move_children(at, dependent);
    return true;
  }
  return false;
}

// The frame goes; its head and its dependent are tied together, written at the one that stood above the frame. Four
// cases: one end is missing; the frame is the statement itself and a verb says it; the dependent stood above, so that the
// role becomes an inverse one; else the head stays or takes the place of the frame.
void reified_apply(Rewriter& graph, int at, const Reified& one) {
  const int up = graph.argument(at, one.head);
  const int down = graph.argument(at, one.dependent);
  if (down < 0 && up < 0) return;
  if (up < 0 || down < 0) return lone_apply(graph, at, one, up, down);
  // "I am with you": of two who are together, who speaks comes first.
  const bool is_together = one.role == std::string_view("accompanier") && graph.is(graph.other(down, at), "i");
  if (is_together && graph.parent(at) < 0) {
    const int first = graph.arc(down).to;
    graph.lead_to(down, graph.arc(up).to);
    graph.lead_to(up, first);
  }
  const int head = graph.other(up, at);
  const int dependent = graph.other(down, at);
  if (head == dependent) return;
  const bool head_above = graph.arc(up).to == at;
  const bool dependent_above = graph.arc(down).to == at;
  if (!head_above && !dependent_above && stated_apply(graph, at, one, up, down)) return;
  graph.settle_concept(at, Fate::relation);
  for (const std::string& attribute : graph.word(at).attributes) {
    // What is denied is the reason, not what it is a reason for: "not because it rained", "a letter not from her".
    const Concept& tied = graph.word(dependent);
    constexpr std::array kPlain{"source", "purpose", "destination", "topic", "time", "medium", "material"};
    const bool is_noun = is_listed(one.role, kPlain) && tied.sense.empty() && graph.child(dependent, "domain") < 0;
    const bool is_denied = attribute == "@neg";
    if (attribute != "@v")
      attribute_add(graph.word(is_denied ? dependent : head), is_denied && is_noun ? "@notp" : attribute);
  }
  // "Mainly because it rained".
  constexpr std::array kFocus{"only", "just", "even", "also", "simple", "precise"};
  const int share = std::string_view(one.role) == "cause" ? graph.child(at, "mod") : -1;
  if (share >= 0 && !is_one_of(graph, graph.arc(share).to, kFocus)) graph.arc(share).role = "manner";
  const bool is_why = is_unknown(graph, dependent);
  if (dependent_above && !head_above && is_why && dependent == graph.meaning().root) {
    // What causes it is what is asked for: "why are we surprised?"
    graph.meaning().root = head;
    graph.replace(down, head, dependent, one.role);
    graph.remove(up, Fate::relation);
    graph.move_children(at, head);
    for (const int led : graph.children(dependent)) graph.lead_from(led, head);
  } else if (dependent_above && !head_above) {
    graph.replace(down, dependent, head, one.role, true);
    graph.remove(up, Fate::relation);
    graph.redirect(at, dependent);
    graph.move_children(at, head);
  } else {
    graph.replace(down, head, dependent, one.role);
    graph.remove(up, Fate::relation);
    graph.redirect(at, head);
    graph.move_children(at, head);
  }
}

// (t / thing :ARG0-of (c / cause-01 :ARG1 x)): the cause of x; as ARG1 the result of it.
// Only where the thing has nothing else to be called by, and x nothing but its cause: else a clause with a verb, "what
// caused x".
void cause_noun_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  const bool is_below = above >= 0 && graph.arc(above).inverse && graph.is(graph.arc(above).from, "thing");
  if (!is_below || graph.children(graph.arc(above).from).size() != 1 || graph.children(at).size() != 1) return;
  const bool is_cause = graph.arc(above).role == "ARG0";
  const int led = graph.child(at, is_cause ? "ARG1" : "ARG0");
  if (led < 0 || graph.mentions(at) > 1) return;
  const int thing = graph.arc(above).from;
  graph.word(thing).name = is_cause ? "cause" : "result";
  graph.settle_concept(at, Fate::word);
  graph.remove(above, Fate::word);
  graph.replace(led, thing, graph.arc(led).to, "org");
}

// (k / know-01 :ARG1 (t / thing :ARG0-of (c / cause-01 :ARG1 (l / leave-11 :ARG0 s)))): to know why she left; below other
// verbs the reason why she left.
void reason_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  const int thing = above < 0 ? -1 : graph.arc(above).from;
  const bool is_reason = thing >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG0" &&
                         (graph.is(thing, "thing") || graph.is(thing, "reason"));
  if (!is_reason || graph.children(thing).size() != 1 || graph.children(at).size() != 1 || graph.mentions(at) > 1)
    return;
  const int led = graph.child(at, "ARG1");
  const int told = led < 0 ? -1 : graph.arc(led).to;
  if (told < 0 || graph.word(told).sense.empty() || graph.mentions(told) > 1 || graph.children(told).empty()) return;
  const int asked = graph.parent(thing);
  const bool is_asked = asked >= 0 && !graph.arc(asked).inverse && graph.arc(asked).role.starts_with("ARG") &&
                        is_one_of(graph, graph.arc(asked).from, kReporting) && graph.mentions(thing) == 1;
  graph.settle_concept(at, Fate::word);
  graph.remove(above, Fate::word);
  if (!is_asked) {
    graph.word(thing).name = "reason";
    graph.replace(led, thing, told, "cause", true);
    return;
  }
  graph.settle_concept(thing, Fate::word);
  graph.remove(led, Fate::word);
  graph.redirect(thing, told);
  graph.add(told, graph.add_concept("amr-unknown"), "cause");
  attribute_add(graph.word(told), "@asked");
}

// True for what somebody knows, asks or is told.
bool is_asked_for(Rewriter& graph, int at) {
  const int asked = graph.parent(at);
  return asked >= 0 && !graph.arc(asked).inverse && graph.arc(asked).role.starts_with("ARG") &&
         is_one_of(graph, graph.arc(asked).from, kReporting) && graph.mentions(at) == 1;
}

// The clause that a thing has a role in takes its place, and asks for that role.
void ask_for_role(Rewriter& graph, int at, int led, const char* role) {
  const int told = graph.arc(led).to;
  graph.settle_concept(at, Fate::word);
  graph.remove(led, Fate::word);
  graph.redirect(at, told);
  graph.add(told, graph.add_concept("amr-unknown"), role);
  attribute_add(graph.word(told), "@asked");
}

// (k / know-01 :ARG1 (l / location :location-of (l2 / live-01 :ARG0 s))): to know where she lives.
void place_role_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "location", true);
  if (led < 0 || graph.children(at).size() != 1 || !is_asked_for(graph, at)) return;
  const int told = graph.arc(led).to;
  if (graph.word(told).sense.empty() || graph.mentions(told) > 1 || graph.children(told).empty()) return;
  ask_for_role(graph, at, led, "location");
}

// (k / know-01 :ARG1 (t / thing :cause-of (l / leave-11 :ARG0 s))): the same without a frame.
void reason_role_apply(Rewriter& graph, int at) {
  const int led =
      graph.child(at, "cause", true) >= 0 ? graph.child(at, "cause", true) : graph.child(at, "reason", true);
  if (led < 0 || graph.children(at).size() != 1) return;
  const int told = graph.arc(led).to;
  if (graph.word(told).sense.empty() || graph.mentions(told) > 1) return;
  graph.arc(led).role = "cause";
  graph.word(at).name = "reason";
  if (is_asked_for(graph, at)) ask_for_role(graph, at, led, "cause");
}

// (r / regardless-91 :ARG1 c :ARG2 x): whatever x is; "no matter how", if x asks.
void regardless_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "ARG2");
  if (led < 0) return;
  const int what = graph.arc(led).to;
  bool is_asked = false;
  for (const int below : graph.children(what)) {
    const int word = graph.arc(below).to;
    const int degree = graph.child(word, "degree");
    is_asked |= is_unknown(graph, word) || (degree >= 0 && is_unknown(graph, graph.arc(degree).to));
  }
  const int word = graph.add_concept(is_asked ? "no-matter" : "regardless-of");
  graph.add(word, what, "op1");
  graph.lead_to(led, word);
}

// (f / flower :ARG0-of (h / have-03 :ARG1 t)): the flower with t. (f / flower :ARG1-of (h / have-03 :ARG0 i)): my flower.
// What is denied, or is said of the having itself, needs the verb: the flower that has no thorns.
void having_apply(Rewriter& graph, int at) {
  const int holder = graph.parent(at);
  const bool is_had = holder >= 0 && graph.arc(holder).role == "ARG1";
  const int thing = graph.child(at, is_had ? "ARG0" : "ARG1");
  const bool is_inside = holder >= 0 && graph.arc(holder).inverse && (is_had || graph.arc(holder).role == "ARG0");
  if (!is_inside || thing < 0 || graph.children(at).size() != 1 || graph.mentions(at) > 1) return;
  // "She shared what she had".
  const int noun = graph.arc(holder).from;
  if (is_had && graph.is(noun, "thing") && graph.children(noun).size() == 1) return;
  // "Your boat that she had": a thing has one owner in front.
  if (is_had && graph.child(graph.arc(holder).from, "poss") >= 0) return;
  const std::vector<std::string>& marks = graph.word(at).attributes;
  if (std::any_of(marks.begin(), marks.end(), [](const std::string& mark) { return mark != "@v"; })) return;
  graph.settle_concept(at, Fate::relation);
  graph.replace(thing, graph.arc(holder).from, graph.arc(thing).to, is_had ? "poss" : "possession");
  graph.remove(holder, Fate::relation);
}

// (r / rush-01 :ARG1-of (r2 / resemble-01 :ARG2 (w / wind))): to rush like the wind, or as if it did something. What a noun
// resembles stays a relative clause.
// A clause with an agent, "as if it flew", is told from a thing, "like the wind", by its ARG0.
void likeness_apply(Rewriter& graph, int at) {
  const int led = graph.parent(at);
  const int like = graph.child(at, "ARG2");
  if (led < 0 || like < 0 || graph.mentions(at) > 1 || has_attribute(graph.word(at), "@neg")) return;
  const int event = graph.arc(led).from;
  if (graph.word(event).sense.empty()) return;
  // (b / bend-01 :ARG1 p :manner (r / resemble-01 :ARG1 p :ARG2 (h / hook))): the event is like it, and so is what is bent.
  const bool is_manner = !graph.arc(led).inverse && graph.arc(led).role == "manner";
  const int what = is_manner ? graph.child(at, "ARG1") : -1;
  if (what >= 0 && graph.children(at).size() == 2 && graph.mentions(graph.arc(what).to) > 1)
    graph.remove(what, Fate::left_out);
  const bool is_inside = is_manner || (graph.arc(led).inverse && graph.arc(led).role == "ARG1");
  if (!is_inside || graph.children(at).size() != 1) return;
  const int other = graph.arc(like).to;
  const bool is_clause = !graph.word(other).sense.empty() && graph.child(other, "ARG0") >= 0;
  graph.settle_concept(at, Fate::relation);
  graph.replace(like, event, other, is_clause ? "conj-as-if" : "likeness");
  graph.remove(led, Fate::relation);
}

// (t / time :ARG1-of (r / resemble-91 :ARG2 (t2 / time :mod (t3 / this)))): a time like this, which names the time once.
void same_noun_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  const int like = graph.child(at, "ARG2");
  if (above < 0 || like < 0 || !graph.arc(above).inverse) return;
  const int noun = graph.arc(above).from;
  const int other = graph.arc(like).to;
  const int pointer = graph.child(other, "mod");
  if (graph.word(other).name != graph.word(noun).name || pointer < 0 || graph.children(other).size() != 1) return;
  if (!is_one_of(graph, graph.arc(pointer).to, kDemonstratives) || graph.mentions(other) > 1) return;
  graph.stand_in(other, pointer, Fate::word);
  attribute_add(graph.word(noun), "@indef");
}

// (s / stop-01 :ARG2-of (r / result-01 :ARG1 (b / break-01))): what it results from is its cause.
void result_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  const int led = graph.child(at, "ARG1");
  const bool is_below = above >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG2";
  if (!is_below || led < 0 || graph.children(at).size() != 1 || graph.word(graph.arc(above).from).sense.empty()) return;
  graph.settle_concept(at, Fate::relation);
  graph.replace(led, graph.arc(above).from, graph.arc(led).to, "cause");
  graph.remove(above, Fate::relation);
}

// How often, as a bare number: "once", "twice".
// From three on English counts times: (r / ring-01 :frequency 3) becomes ring with :frequency (time :quant 3), "three
// times".
void frequency_apply(Rewriter& graph, int at) {
  // (a / attack-01 :quant 3), as a clause: three times. "They feared three attacks and two raids" counts nouns.
  const int number_of = is_event(graph, at) ? graph.child(at, "quant") : -1;
  const bool is_clause = number_of >= 0 && graph.parent(joined_in(graph, at)) < 0;
  if (is_clause && graph.word(graph.arc(number_of).to).variable.empty() && graph.child(at, "frequency") < 0)
    graph.arc(number_of).role = "frequency";
  const int led = graph.child(at, "frequency");
  if (led < 0) return;
  // "Two or three times."
  const int first = graph.is(graph.arc(led).to, "or") ? graph.child(graph.arc(led).to, "op1") : -1;
  if (first >= 0 && graph.word(graph.arc(first).to).variable.empty()) {
    const int times = graph.add_concept("time");
    graph.add(times, graph.arc(led).to, "quant");
    graph.lead_to(led, times);
    return attribute_add(graph.word(times), "@pl");
  }
  const std::string number = graph.word(graph.arc(led).to).name;
  const bool is_several = number == "several" || number == "many" || number == "multiple" || number == "few";
  if (is_several && graph.children(graph.arc(led).to).empty()) {
    const int times = graph.add_concept("time");
    graph.add(times, graph.arc(led).to, "quant");
    graph.lead_to(led, times);
    return attribute_add(graph.word(times), "@pl");
  }
  if (number.empty() || number.find_first_not_of("0123456789") != number.npos) return;
  if (number == "1" || number == "2") {
    graph.word(graph.arc(led).to).name = number == "1" ? "once" : "twice";
    return;
  }
  const int times = graph.add_concept("time");
  graph.move_children(graph.arc(led).to, times);
  graph.add(times, graph.arc(led).to, "quant");
  graph.lead_to(led, times);
  attribute_add(graph.word(times), "@pl");
  attribute_add(graph.word(times), "@measure");
}

// "One of these": what something is taken from is several.
void plural_apply(Concept& whole) {
  attribute_add(whole, "@pl");
  if (whole.name == "this") whole.name = "these";
  if (whole.name == "that") whole.name = "those";
}

// "At the top of the tree": a place that is a part of another is written as what the other has.
// (l / live-01 :location (h / hill :part (t / top))) becomes (l / live-01 :location (t / top :part-of (h / hill))): the
// place itself is where one lives.
void part_place_apply(Rewriter& graph, int at) {
  constexpr std::array kPlaces{"middle", "center",  "top",   "bottom", "side", "edge",  "end",
                               "corner", "front",   "back",  "heart",  "rear", "begin", "beginning",
                               "inside", "outside", "north", "south",  "east", "west",  "interior"};
  const int above = graph.parent(at);
  const int led = graph.child(at, "part");
  if (above < 0 || led < 0 || graph.arc(above).inverse || graph.mentions(at) > 1) return;
  const int part = graph.arc(led).to;
  const bool is_place = is_listed(graph.word(part).name, kPlaces);
  if (!is_place || !graph.children(part).empty() || graph.mentions(part) > 1) return;
  graph.lead_to(above, part);
  graph.replace(led, part, at, "part-of");
}

// How often, said as how many of it there are: "he asked so many times". Only of what is a clause.
void times_apply(Rewriter& graph, int at) {
  const int led = graph.word(at).sense.empty() ? -1 : graph.child(at, "quant");
  constexpr std::array kMany{"many", "several", "multiple", "numerous"};
  const bool is_many = led >= 0 && is_listed(graph.word(graph.arc(led).to).name, kMany);
  if (!is_many || graph.child(at, "frequency") >= 0) return;
  const int above = graph.parent(at);
  constexpr std::array kOuter{"concession", "cause", "condition", "op1", "op2"};
  const bool is_clause = above < 0 || graph.arc(above).inverse || is_listed(graph.arc(above).role, kOuter);
  if (!is_clause || (graph.child(at, "ARG0") < 0 && above < 0)) return;
  const int times = graph.add_concept("time");
  graph.replace(led, times, graph.arc(led).to, "quant");
  graph.add(at, times, "frequency");
  attribute_add(graph.word(times), "@measure");
  attribute_add(graph.word(times), "@pl");
}

// (p / place :location-of (l / live-01 :ARG0 t)) as the whole sentence: "where they live".
void place_alone_apply(Rewriter& graph, int at) {
  constexpr std::array kOpen{"place", "location", "time"};
  const std::vector<int> below = graph.children(at);
  if (at != graph.meaning().root || !is_one_of(graph, at, kOpen) || below.size() != 1) return;
  const Arc& one = graph.arc(below[0]);
  const int whole = one.to;
  const std::vector<int> parts = graph.numbered(whole, {"op"});
  const int clause = graph.is(whole, "and") && !parts.empty() ? graph.arc(parts[0]).to : whole;
  if (!one.inverse || (one.role != "location" && one.role != "time") || !is_event(graph, clause)) return;
  attribute_add(graph.word(clause), "@as_" + one.role);
  bool is_asked = has_attribute(graph.word(at), "@int");
  for (const int asked : {whole, clause}) is_asked |= std::erase(graph.word(asked).attributes, "@int") > 0;
  const int polarity = graph.child(whole, "polarity");
  if (polarity >= 0 && is_unknown(graph, graph.arc(polarity).to)) {
    is_asked = true;
    graph.remove(polarity, Fate::attribute);
  }
  if (is_asked) {
    attribute_add(graph.word(clause), "@ends_int");
    for (const int part : {clause, parts.size() > 1 ? static_cast<int>(graph.arc(parts[1]).to) : clause})
      attribute_add(graph.word(part), "@pres");
  }
  graph.settle_concept(at, Fate::attribute);
  graph.remove(below[0], Fate::attribute);
  graph.redirect(at, whole);
}

// (u / uncle :ARG1-of (m / mean-01 :ARG2 (b / barber))): my uncle, the barber. As mean-91 it is that role.
void meant_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "mean", "01") ? graph.parent(at) : -1;
  const int other = led >= 0 ? graph.child(at, "ARG2") : -1;
  if (other < 0 || !graph.arc(led).inverse || graph.arc(led).role != "ARG1" || graph.child(at, "ARG0") >= 0) return;
  const bool is_thing = graph.word(graph.arc(other).to).sense.empty() && !is_event(graph, graph.arc(led).from);
  if (!is_thing) return;
  graph.word(at).sense = "91";
  const int above = graph.parent(graph.arc(led).from);
  if (above >= 0 && subject_arc(graph, graph.arc(above).from) == above)
    attribute_add(graph.word(graph.arc(other).to), "@closed");
}

// (d / depart-01 :condition-of (t / thing)): what it is a condition of stands in another sentence: "if you depart".
// @as_condition, @as_cause, @as_concession: the conjunction stands in front of the clause, and nothing follows.
void outer_apply(Rewriter& graph, int at) {
  // A thing of which nothing is said is "it" by now.
  const bool is_open = graph.is(at, "thing") || graph.is(at, "it");
  const int led = is_open && graph.children(at).empty() && graph.mentions(at) == 1 ? graph.parent(at) : -1;
  if (led < 0 || !graph.arc(led).inverse) return;
  const std::string& role = graph.arc(led).role;
  if (role != "condition" && role != "cause" && role != "concession") return;
  attribute_add(graph.word(graph.arc(led).from), "@as_" + role);
  graph.settle_concept(at, Fate::attribute);
  graph.remove(led, Fate::attribute);
}

// (h / here :location-of (s / shop)): "a shop is here".
// "Here" cannot be the head of a sentence, so a verb of being is made, with the shop as ARG1 and here as ARG2.
void here_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "here") || graph.is(at, "there") ? graph.child(at, "location", true) : -1;
  if (led < 0 || graph.children(at).size() != 1 || !graph.word(graph.arc(led).to).sense.empty()) return;
  const int being = graph.add_concept("be-located-at");
  graph.word(being).sense = "91";
  attribute_add(graph.word(being), "@v");
  graph.redirect(at, being);
  const int what = graph.arc(led).to;
  graph.replace(led, being, what, "ARG1");
  graph.add(being, at, "ARG2");
}

// A verb and its noun that a bank writes as one frame, which no dictionary has: (h / have-fun-00 :ARG0 b :ARG1 g).
struct LightPhrase {
  const char* name;
  const char* verb;
  const char* sense;
  const char* noun;
  const char* preposition;  // of what is done with it: fun with a friend
  bool is_counted;          // a way, but fun
};

constexpr LightPhrase kLightPhrases[] = {
    {"have-business", "have", "03", "business", "with", false},
    {"have-fun", "have", "03", "fun", "with", false},
    {"have-breakfast", "have", "03", "breakfast", "with", false},
    {"have-lunch", "have", "03", "lunch", "with", false},
    {"have-dinner", "have", "03", "dinner", "with", false},
    {"have-party", "have", "03", "party", "for", true},
    {"have-chance", "have", "03", "chance", "of", true},
    {"have-effect", "have", "03", "effect", "on", true},
    {"have-impact", "have", "03", "impact", "on", true},
    {"have-influence", "have", "03", "influence", "on", false},
    {"have-access", "have", "03", "access", "to", false},
    {"have-faith", "have", "03", "faith", "in", false},
    {"have-pity", "have", "03", "pity", "on", false},
    {"have-patience", "have", "03", "patience", "with", false},
    {"have-problem", "have", "03", "problem", "with", true},
    {"have-talk", "have", "03", "talk", "with", true},
    {"have-time", "have", "03", "time", "for", false},
    {"have-baby", "have", "03", "baby", "with", true},
    {"find-way", "find", "01", "way", "to", true},
    {"find-solution", "find", "01", "solution", "to", true},
    {"find-job", "find", "01", "job", "with", true},
    {"lose-way", "lose", "02", "way", "to", true},
    {"lose-interest", "lose", "02", "interest", "in", false},
    {"lose-hope", "lose", "02", "hope", "of", false},
    {"make-decision", "make", "01", "decision", "on", true},
    {"make-effort", "make", "01", "effort", "for", true},
    {"make-friend", "make", "01", "friends", "with", false},
    {"make-friends", "make", "01", "friends", "with", false},
    {"make-progress", "make", "01", "progress", "with", false},
    {"make-mistake", "make", "01", "mistake", "in", true},
    {"make-plan", "make", "01", "plan", "for", true},
    {"make-sense", "make", "01", "sense", "to", false},
    {"make-use", "make", "01", "use", "of", false},
    {"make-peace", "make", "01", "peace", "with", false},
    {"make-money", "make", "01", "money", "from", false},
    {"make-love", "make", "01", "love", "to", false},
    {"make-noise", "make", "01", "noise", "with", true},
    {"make-room", "make", "01", "room", "for", false},
    {"make-promise", "make", "01", "promise", "to", true},
    {"take-part", "take", "01", "part", "in", false},
    {"take-care", "take", "01", "care", "of", false},
    {"take-photo", "take", "01", "photo", "of", true},
    {"take-walk", "take", "01", "walk", "in", true},
    {"take-bath", "take", "01", "bath", "in", true},
    {"take-shower", "take", "01", "shower", "in", true},
    {"take-break", "take", "01", "break", "from", true},
    {"take-nap", "take", "01", "nap", "in", true},
    {"take-action", "take", "01", "action", "on", false},
    {"take-control", "take", "01", "control", "of", false},
    {"take-notice", "take", "01", "notice", "of", false},
    {"take-revenge", "take", "01", "revenge", "on", false},
    {"take-responsibility", "take", "01", "responsibility", "for", false},
    {"take-look", "take", "01", "look", "at", true},
    {"pay-attention", "pay", "01", "attention", "to", false},
    {"pay-heed", "pay", "01", "heed", "to", false},
    {"pay-visit", "pay", "01", "visit", "to", true},
    {"pay-tribute", "pay", "01", "tribute", "to", false},
    {"do-homework", "do", "02", "homework", "for", false},
    {"do-harm", "do", "02", "harm", "to", false},
    {"do-damage", "do", "02", "damage", "to", false},
    {"do-research", "do", "02", "research", "on", false},
    {"do-work", "do", "02", "work", "for", false},
    {"give-birth", "give", "01", "birth", "to", false},
    {"give-speech", "give", "01", "speech", "to", true},
    {"give-way", "give", "01", "way", "to", false},
    {"give-rise", "give", "01", "rise", "to", false},
    {"give-permission", "give", "01", "permission", "to", false},
    {"get-job", "get", "01", "job", "with", true},
    {"get-divorce", "get", "01", "divorce", "from", true},
    {"set-fire", "set", "01", "fire", "to", false},
    {"keep-watch", "keep", "02", "watch", "over", false},
    {"keep-company", "keep", "02", "company", "with", false},
    {"keep-secret", "keep", "02", "secret", "from", true},
    {"tell-story", "tell", "01", "story", "to", true},
    {"tell-lie", "tell", "01", "lie", "to", true},
    {"tell-joke", "tell", "01", "joke", "to", true},
    {"run-risk", "run", "01", "risk", "of", true},
    {"play-role", "play", "08", "role", "in", true},
    {"play-part", "play", "08", "part", "in", true},
    {"hold-meeting", "hold", "04", "meeting", "with", true},
    {"hold-talk", "hold", "04", "talks", "with", false},
};

// "He found a way to the sea": the noun is the object, and what was the object has the preposition of the noun.
void light_phrase_apply(Rewriter& graph, int at) {
  if (graph.is(at, "get-rid", "05")) graph.word(at).name = "get-rid-of";
  // A weekend is no deed, though frame files have one for it.
  if (graph.is(at, "weekend", "01")) {
    graph.word(at).sense.clear();
    graph.word(at).attributes.clear();
  }
  const std::string& name = graph.word(at).name;
  if (graph.word(at).sense.empty() || name.find('-') == std::string::npos) return;
  const auto phrase = std::find_if(std::begin(kLightPhrases), std::end(kLightPhrases),
                                   [&](const LightPhrase& one) { return name == one.name; });
  if (phrase == std::end(kLightPhrases)) return;
  graph.word(at).name = phrase->verb;
  graph.word(at).sense = phrase->sense;
  const int noun = graph.add_concept(phrase->noun);
  attribute_add(graph.word(noun), "@indef");
  if (!phrase->is_counted) attribute_add(graph.word(noun), "MASS");
  const int led = graph.child(at, "ARG1");
  graph.add(at, noun, "ARG1");
  if (led < 0) return;
  if (graph.argument(at, "ARG0") < 0) {
    graph.arc(led).role = "ARG0";
    return;
  }
  const int object = graph.arc(led).to;
  if (std::string_view(phrase->preposition) == "to" && phrase->is_counted && is_event(graph, object)) {
    graph.arc(led).role = "purpose";
    return;
  }
  const int preposition = graph.add_concept(phrase->preposition);
  graph.replace(led, at, preposition, "prep");
  graph.add(preposition, object, "op1");
}

// What somebody or something is called, beside it or of it.
void called_beside(Rewriter& graph, int at) {
  // "The tailor, a thin man": what somebody is, said beside him.
  const int is_what = graph.word(at).sense.empty() ? graph.child(at, "domain", true) : -1;
  if (is_what >= 0) {
    const int noun = graph.arc(is_what).to;
    const bool is_noun = graph.word(noun).sense.empty() && !graph.children(noun).empty() && graph.mentions(noun) == 1;
    if (is_noun) {
      graph.replace(is_what, at, noun, "apposition");
      attribute_add(graph.word(noun), "@indef");
      attribute_add(graph.word(noun), "@closed");
    }
  }
  // What is a trouble to somebody: "the road is an issue".
  const int issue = graph.is(at, "issue", "02") ? graph.child(at, "ARG0") : -1;
  if (issue >= 0) {
    graph.arc(issue).role = "domain";
    if (const int whose = graph.child(at, "ARG1"); whose >= 0) graph.arc(whose).role = "beneficiary";
    graph.word(at).sense.clear();
    std::erase(graph.word(at).attributes, "@v");
  }
}

// What nobody has is there: (h / have-03 :ARG1 (p / party)) as "there was a party". And what money is spent on stands behind
// the money, whatever numbers they have.
void object_order_apply(Rewriter& graph, int at) {
  // "It is better to have a garden and to water it": a deed among others.
  const int joined = graph.parent(at);
  const int above = joined >= 0 ? graph.arc(joined).from : -1;
  const bool is_deed = above >= 0 && (graph.is(above, "have-degree", "91") || graph.arc(joined).role == "ARG4" ||
                                      (is_one_of(graph, above, std::array{"and", "or"}) && graph.parent(above) >= 0));
  const bool is_of_nobody = !is_deed && (graph.is(at, "have", "03") || graph.is(at, "have", "04"));
  if (is_of_nobody && graph.argument(at, "ARG0") < 0 && graph.child(at, "ARG1") >= 0 && graph.child(at, "ARG2") < 0) {
    graph.word(at).name = "exist";
    graph.word(at).sense = "01";
  }
  // "It is his to decide": what somebody may do belongs to him, at whichever end the bank has it.
  const int owner = graph.is(at, "belong", "91") ? graph.child(at, "ARG2") : -1;
  const int owned = owner < 0 ? -1 : graph.child(at, "ARG1");
  if (owned >= 0 && is_event(graph, graph.arc(owner).to)) std::swap(graph.arc(owner).role, graph.arc(owned).role);
  // "Sentenced to five years in prison".
  const int term = graph.is(at, "sentence", "01") ? graph.child(at, "ARG4") : -1;
  if (term >= 0) {
    if (const int place = graph.child(at, "ARG2"); place >= 0)
      graph.replace(place, graph.arc(term).to, graph.arc(place).to, "location");
    graph.arc(term).role = "ARG2";
  }
  // "They suspect him of theft", "who was suspected of theft": whom they suspect is the object.
  const int suspected = graph.is(at, "suspect", "01") ? graph.argument(at, "ARG2") : -1;
  const int crime = suspected < 0 ? -1 : graph.argument(at, "ARG1");
  if (suspected >= 0) graph.arc(suspected).role = "ARG1";
  if (crime >= 0) graph.arc(crime).role = "ARG2";
  // "She played the violin": where no piece is named, the instrument is the object.
  const int instrument = graph.is(at, "play", "11") && graph.child(at, "ARG1") < 0 ? graph.child(at, "ARG2") : -1;
  if (instrument >= 0) graph.arc(instrument).role = "ARG1";
  if (!graph.is(at, "spend", "01")) return;
  const int seller = graph.argument(at, "ARG2");
  const int what = graph.argument(at, "ARG1");
  const int money = graph.argument(at, "ARG3");
  if (seller >= 0) graph.arc(seller).role = "source";
  if (what >= 0) graph.arc(what).role = "ARG2";
  if (money >= 0) graph.arc(money).role = "ARG1";
}

// (t / thing :purpose (d / do-02 :ARG1 t)): a thing to do, and not a thing to do it.
void purpose_of_thing_apply(Rewriter& graph, int at) {
  const int led = graph.word(at).sense.empty() ? graph.child(at, "purpose") : -1;
  const int deed = led < 0 ? -1 : graph.arc(led).to;
  const int again = deed < 0 || graph.word(deed).sense.empty() ? -1 : graph.child(deed, "ARG1");
  if (again >= 0 && graph.arc(again).to == at) graph.remove(again, Fate::relation);
}

// What there is time for, and what somebody dares to do.
void ventured_apply(Rewriter& graph, int at) {
  // (i / in-time :op1 (c / catch-01 :mod just)): "just in time to catch it".
  const int aim = graph.is(at, "in-time") ? graph.child(at, "op1") : -1;
  if (aim >= 0 && is_event(graph, graph.arc(aim).to)) {
    graph.arc(aim).role = "purpose";
    const int just = child_among(graph, graph.arc(aim).to, "mod", std::array{"just"});
    if (just >= 0) graph.lead_from(just, at);
  }
  // (t / time :duration-of (r / repair-01 ...)): "time to repair it".
  const int use = graph.is(at, "time") ? graph.child(at, "duration", true) : -1;
  if (use >= 0 && is_event(graph, graph.arc(use).to)) graph.replace(use, at, graph.arc(use).to, "purpose");
  // (h / hope-01 :ARG0 i :ARG2-of (d / dare-01 :ARG1 i)): "I dared to hope". What is dared stands below.
  const int ventured = graph.is(at, "dare", "01") ? graph.parent(at) : -1;
  const int venturer = ventured < 0 ? -1 : graph.child(at, "ARG1");
  if (venturer >= 0 && graph.arc(ventured).inverse && graph.arc(ventured).role == "ARG2" && graph.mentions(at) == 1) {
    const int deed = graph.arc(ventured).from;
    const int doer = graph.child(deed, "ARG0");
    if (doer >= 0 && graph.arc(doer).to == graph.arc(venturer).to) {
      graph.redirect(deed, at);
      graph.replace(ventured, at, deed, "ARG2");
    }
  }
  // Whom nobody dares to do it dares to do it himself.
  const int daring = graph.is(at, "dare", "01") && graph.argument(at, "ARG0") < 0 ? graph.child(at, "ARG1") : -1;
  if (daring >= 0 && graph.child(at, "ARG2") >= 0) graph.arc(daring).role = "ARG0";
}

// Frames that are a word or a phrase of their own.
void phrase_apply(Rewriter& graph, int at) {
  // (w / work-01 :temporal (u / use-03)): what used to be done.
  const int once = graph.is(at, "use", "03") && graph.children(at).empty() ? graph.parent(at) : -1;
  if (once >= 0 && (graph.arc(once).role == "time" || graph.arc(once).role == "temporal")) {
    attribute_add(graph.word(graph.arc(once).from), "@used");
    graph.settle_concept(at, Fate::attribute);
    graph.remove(once, Fate::attribute);
  }
  // What is an example of something that is not told: for example.
  const int shown = graph.is(at, "have-example", "91") && graph.child(at, "ARG2") < 0 ? graph.child(at, "ARG1") : -1;
  if (shown >= 0 && graph.parent(graph.arc(shown).to) == shown) {
    graph.add(graph.arc(shown).to, graph.add_concept("for-example"), "mod");
    graph.stand_in(at, shown, Fate::word);
  }
  // Who thanks, with nobody to be thanked, says thanks.
  const int who = graph.is(at, "thank", "01") && graph.children(at).size() == 1 ? graph.child(at, "ARG0") : -1;
  const bool is_denied = who >= 0 && graph.word(at).attributes.size() > 1;
  if (who >= 0 && !is_denied && graph.is(graph.arc(who).to, "i")) {
    if (graph.mentions(graph.arc(who).to) == 1) graph.settle_concept(graph.arc(who).to, Fate::left_out);
    graph.remove(who, Fate::left_out);
    graph.word(at).name = "thanks";
    graph.word(at).sense.clear();
    graph.word(at).attributes.clear();
  }
  // "It is a shame that ..."
  const int shame = graph.is(at, "shame", "02") || graph.is(at, "pity", "01") ? graph.child(at, "ARG1") : -1;
  if (shame >= 0 && graph.argument(at, "ARG0") < 0 && !graph.word(graph.arc(shame).to).sense.empty()) {
    graph.arc(shame).role = "domain";
    graph.word(at).sense.clear();
    std::erase(graph.word(at).attributes, "@v");
  }
  // "She preferred to wait instead of leaving".
  const int instead = graph.is(at, "prefer", "01") ? graph.child(at, "ARG2") : -1;
  if (instead >= 0 && !graph.word(graph.arc(instead).to).sense.empty()) graph.arc(instead).role = "substitute";
  called_beside(graph, at);
  // Nobody opines; people think.
  if (graph.is(at, "opine", "01")) graph.word(at).name = "think";
  // What is one of several, without them: "for example".
  const int above = graph.is(at, "exemplify", "01") && graph.children(at).empty() ? graph.parent(at) : -1;
  if (above >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG0") {
    graph.word(at).name = "for-example";
    graph.word(at).sense.clear();
    graph.replace(above, graph.arc(above).from, at, "mod");
  }
  // Who has written a text, above it: "by Ada Hill".
  if (const int author = graph.is(at, "byline", "91") ? graph.child(at, "ARG1") : -1; author >= 0) {
    graph.word(at).name = "by";
    graph.word(at).sense.clear();
    std::erase(graph.word(at).attributes, "@v");
    graph.arc(author).role = "op1";
  }
}

// What something is not like stays a clause: "a garden that is not like mine".
// As a role, :likeness, it could not be denied.
bool is_unlike(Rewriter& graph, int at) {
  const int like = graph.argument(at, "ARG1");
  return graph.word(at).name == "resemble" && has_attribute(graph.word(at), "@neg") &&
         (like < 0 || graph.arc(like).to == at || graph.word(graph.arc(like).to).sense.empty());
}

// Roles that lead from a number to what is counted, and to who feels something.
void role_apply(Rewriter& graph, Arc& one) {
  // "A number of birds": the number is the head.
  if (one.role == "quant" && one.inverse && graph.word(one.from).sense.empty()) {
    one.role = "consist-of", one.inverse = false;
    constexpr std::array kOfMany{"number", "group", "series", "range", "variety", "couple", "set", "row"};
    const bool is_many = is_listed(graph.word(one.from).name, kOfMany);
    if (is_many && graph.word(one.to).sense.empty()) attribute_add(graph.word(one.to), "@pl");
  }
  // "The foreign minister": a topic that is a quality.
  constexpr std::array kQualities{"foreign",  "domestic",  "public",   "military",      "social", "political",
                                  "economic", "financial", "national", "international", "legal",  "medical"};
  const bool is_quality = one.role == "topic" && !one.inverse && is_one_of(graph, one.to, kQualities);
  if (is_quality && graph.children(one.to).empty() && graph.word(one.from).sense.empty()) one.role = "mod";
  // "The whole world".
  const bool is_whole = one.role == "extent" && !one.inverse && graph.is(one.to, "all") &&
                        graph.word(one.from).sense.empty() && graph.children(one.to).empty();
  if (is_whole) {
    one.role = "mod";
    if (!has_attribute(graph.word(one.from), "@pl")) graph.word(one.to).name = "whole";
  }
  // "It is a lot for me": who feels it is no subject where there is one.
  if (one.role != "experiencer" || one.inverse) return;
  const bool has_subject =
      graph.child(one.from, "ARG0") >= 0 || graph.child(one.from, "ARG1") >= 0 || graph.child(one.from, "domain") >= 0;
  if (has_subject) one.role = "beneficiary";
}

// "She lay down in the grass": a bare direction stands nearer to its verb than a place does.
// What has words of its own, "up the hill", stays a direction: a particle stands alone.
void directions_apply(Rewriter& graph) {
  constexpr std::array kBare{"up",      "down",  "away",  "back",  "out",  "off",  "around",
                             "forward", "home",  "along", "by",    "past", "over", "across",
                             "through", "aside", "ahead", "apart", "in",   "on",   "about"};
  for (Arc& one : graph.meaning().arcs) {
    // Of the arguments of a motion those that tell its end: (b / bring-01 :ARG1 x :ARG2 y :ARG3 (d / down)).
    const bool is_end =
        (one.role == "ARG3" || one.role == "ARG4") && graph.word(one.to).sense.empty() && graph.mentions(one.to) == 1;
    if ((one.role != "direction" && !is_end) || one.gone || one.inverse) continue;
    const std::string word = graph.word(one.to).name;
    const bool is_in_verb = graph.word(one.from).name.ends_with('-' + word);
    if (is_in_verb) graph.move_children(one.to, one.from);
    const bool is_direction = graph.children(one.to).empty();
    if (!is_direction || !is_listed(word, kBare)) continue;
    one.role = "particle";
    // The verb may have the word in its name: sit-down-02.
    if (is_in_verb) {
      graph.settle_concept(one.to, Fate::word);
      one.gone = true;
      settle(graph.meaning(), one.triple, Fate::word, "reified");
    }
  }
}

// (t / team :ARG2-of (i / include-01 :ARG1 (c / captain))): the team, including the captain.
void including_apply(Rewriter& graph, int at) {
  const int led = graph.parent(at);
  const int part = graph.child(at, "ARG1");
  const bool is_below = led >= 0 && graph.arc(led).inverse && graph.arc(led).role == "ARG2" && part >= 0;
  if (!is_below || graph.children(at).size() != 1 || graph.mentions(at) > 1) return;
  if (has_attribute(graph.word(at), "@neg")) return;
  const int whole = graph.arc(led).from;
  graph.settle_concept(at, Fate::relation);
  graph.replace(part, whole, graph.arc(part).to, "subset");
  graph.remove(led, Fate::relation);
}

// "Some of the workers": a part that is called by the same deed as the whole is not called by it twice.
void same_deed_apply(Rewriter& graph, int part, int whole) {
  for (const char* role : {"ARG0", "ARG1"}) {
    const int own = graph.child(part, role, true);
    const int model = graph.child(whole, role, true);
    if (own < 0 || model < 0 || graph.word(part).name != graph.word(whole).name) continue;
    const int deed = graph.arc(own).to;
    const bool is_same = graph.word(deed).name == graph.word(graph.arc(model).to).name;
    if (!is_same || !graph.children(deed).empty() || graph.mentions(deed) > 1) continue;
    graph.settle_concept(deed, Fate::word);
    graph.remove(own, Fate::word);
  }
}

// (p / please-01 :ARG1 (w / we :mod (a / all))): it pleases all of us; as a subject it is "we all".
void all_of_apply(Rewriter& graph, int at) {
  const int led = is_one_of(graph, at, std::array{"we", "you", "they"}) ? graph.child(at, "mod") : -1;
  const int above = led >= 0 && graph.is(graph.arc(led).to, "all") ? graph.parent(at) : -1;
  if (above < 0 || graph.arc(above).inverse || graph.mentions(graph.arc(led).to) > 1) return;
  const Arc& held = graph.arc(above);
  const bool is_subject = held.role == "ARG0" || held.role == "domain" || held.role.starts_with("op") ||
                          (held.role == "ARG1" && graph.child(held.from, "ARG0") < 0);
  if (is_subject) return;
  const int all = graph.arc(led).to;
  graph.lead_to(above, all);
  attribute_add(graph.word(all), "@pl");
  graph.replace(led, all, at, "superset");
}

// (c / correlate-91 :ARG1 (m / more :ARG3-of (h / have-degree-91 :ARG1 x)) :ARG2 (m2 / more :ARG3-of (h2 ...))): the second
// grows as the first does, "as he waited longer, he doubted more".
void correlate_apply(Rewriter& graph, int at) {
  const int first = graph.is(at, "correlate", "91") ? graph.child(at, "ARG1") : -1;
  const int second = first < 0 ? -1 : graph.child(at, "ARG2");
  if (second < 0) return;
  for (const int led : {first, second}) {
    const int degree = graph.arc(led).to;
    const int frame = graph.child(degree, "ARG3", true);
    if (graph.mentions(degree) != 1) continue;
    // (m / more :frequency-of (r / read-01 ...)).
    for (const char* role : {"frequency", "degree", "extent", "consist-of"}) {
      const int much = graph.child(degree, role, std::string_view(role) != "consist-of");
      if (frame >= 0 || much < 0 || !is_event(graph, graph.arc(much).to)) continue;
      graph.lead_to(led, graph.arc(much).to);
      graph.replace(much, graph.arc(much).to, degree, "extent");
      break;
    }
    if (frame < 0) continue;
    graph.lead_to(led, graph.arc(frame).to);
    graph.replace(frame, graph.arc(frame).to, degree, "ARG3");
  }
  // "As he ran more, she laughed more": how much somebody does is no quality.
  for (const int led : {first, second}) {
    const int frame = graph.arc(led).to;
    const int deed =
        graph.is(frame, "have-degree", "91") && graph.argument(frame, "ARG2") < 0 ? graph.child(frame, "ARG1") : -1;
    const int degree = deed >= 0 ? graph.child(frame, "ARG3") : -1;
    if (degree < 0 || !is_event(graph, graph.arc(deed).to) || graph.mentions(frame) != 1) continue;
    const int done = graph.arc(deed).to;
    graph.settle_concept(frame, Fate::relation);
    graph.replace(degree, done, graph.arc(degree).to, "extent");
    graph.remove(deed, Fate::relation);
    graph.redirect(frame, done);
  }
  const int grows = graph.arc(second).to;
  graph.settle_concept(at, Fate::relation);
  graph.remove(second, Fate::relation);
  graph.redirect(at, grows);
  const int as = graph.add_concept("as");
  graph.add(grows, as, "time");
  graph.replace(first, as, graph.arc(first).to, "op1");
}

// Wholes are several: what something is among, and what others are taken from.
void wholes_apply(Rewriter& graph) {
  // "It is among the new books": what something is among is several.
  for (int at = 0; at < graph.count(); ++at) {
    const int led = graph.is(at, "include", "91") ? graph.child(at, "ARG2") : -1;
    if (led < 0) continue;
    Concept& whole = graph.word(graph.arc(led).to);
    if (!has_attribute(whole, "@name")) plural_apply(whole);
  }
  // "One of these things": what others are taken from is several.
  for (const Arc& one : graph.meaning().arcs) {
    const bool is_whole = one.role == "superset" && !one.inverse && !one.gone;
    const Concept& whole = graph.word(one.to);
    const bool is_noun = whole.sense.empty() && !whole.variable.empty() && !has_attribute(whole, "@name");
    if (!is_whole || !is_noun) continue;
    plural_apply(graph.word(one.to));
    if (graph.child(one.to, "mod") < 0 && graph.child(one.to, "quant") < 0) attribute_add(graph.word(one.to), "@def");
    // "One of the stars" names the stars once.
    const int number = graph.child(one.from, "quant");
    // "The first one of them."
    const bool is_thing = graph.is(one.from, "thing") && graph.child(one.from, "ord") >= 0;
    const bool is_one = number < 0 ? !has_attribute(graph.word(one.from), "@pl") : graph.is(graph.arc(number).to, "1");
    if (!is_one || (graph.word(one.from).name != whole.name && !is_thing)) continue;
    graph.word(one.from).name = "one";
    if (graph.child(one.from, "ord") >= 0) attribute_add(graph.word(one.from), "@def");
    if (number < 0) continue;
    graph.settle_concept(graph.arc(number).to, Fate::word);
    graph.remove(number, Fate::word);
  }
}

// What is taken out of a whole, and the whole.
// A bank writes "some of us" as (s / some :superset we); where it has the frame include-91 for it, that has become
// :superset by now. The part is the head in English, too. What is left to do is number, as a whole is several things, and
// the word for the part, which is not said twice: one of the stars.
void sets_apply(Rewriter& graph) {
  // "The former general".
  for (Arc& one : graph.meaning().arcs) {
    constexpr std::array kOffice{"former", "current", "future", "present", "then"};
    const bool is_time = !one.gone && !one.inverse && (one.role == "time" || one.role == "temporal");
    // "In past years": of a span the time says which.
    if (is_time && has_attribute(graph.word(one.from), "@measure") && graph.is(one.to, "past")) one.role = "mod";
    if (is_time && is_one_of(graph, one.to, kOffice) && graph.word(one.from).sense.empty() &&
        !graph.word(one.from).variable.empty() && graph.child(one.from, "domain") < 0 && graph.children(one.to).empty())
      one.role = "mod";
  }
  for (int at = 0, end = graph.count(); at < end; ++at) {
    all_of_apply(graph, at);
    correlate_apply(graph, at);
  }
  // "Two of them".
  for (int at = 0, end = graph.count(); at < end; ++at) {
    const int number = is_personal_pronoun(graph, at) ? graph.child(at, "quant") : -1;
    if (number < 0 || is_unknown(graph, graph.arc(number).to)) continue;
    const int several = graph.arc(number).to;
    // "Two or three of them".
    const std::vector<int> below = graph.children(several);
    if (std::any_of(below.begin(), below.end(), [&](int one) { return !graph.arc(one).role.starts_with("op"); }))
      continue;
    graph.redirect(at, several);
    graph.replace(number, below.empty() ? several : graph.arc(below.back()).to, at, "superset");
  }
  for (int at = 0; at < graph.count(); ++at) {
    // "Some of us": how many are taken out of a whole stands for those that are taken.
    const int whole = graph.child(at, "superset");
    if (whole < 0) continue;
    // "One of my stars".
    const int owner = graph.child(at, "poss");
    if (owner >= 0 && graph.word(graph.arc(whole).to).name == graph.word(at).name)
      graph.lead_from(owner, graph.arc(whole).to);
    if (graph.is(at, "someone") || graph.is(at, "something")) {
      graph.word(at).name = "some";
      attribute_add(graph.word(at), "@pl");
    }
    same_deed_apply(graph, at, graph.arc(whole).to);
    if (const int led = graph.child(at, "ARG3"); led >= 0) graph.arc(led).role = "quant";
    // "Each of us": the word that picks them out stands for the persons.
    constexpr std::array kPicked{"each", "any", "all", "both"};
    const int picked = graph.child(at, "mod");
    const bool is_person = graph.is(at, "person") || graph.is(at, "thing");
    if (picked >= 0 && is_person && is_one_of(graph, graph.arc(picked).to, kPicked)) {
      graph.stand_in(at, picked, Fate::word);
      continue;
    }
    const int quantity = graph.child(at, "quant");
    // "Some of the money" names the money once.
    const bool is_again = graph.word(at).name == graph.word(graph.arc(whole).to).name && quantity >= 0 &&
                          !graph.is(graph.arc(quantity).to, "1");
    if (quantity < 0 || !(is_again || graph.is(at, "thing") || graph.is(at, "person"))) continue;
    if (!graph.is(graph.arc(quantity).to, "1")) attribute_add(graph.word(graph.arc(quantity).to), "@pl");
    graph.stand_in(at, quantity, Fate::word);
  }
  wholes_apply(graph);
  // "All of us sing".
  for (int at = 0, end = graph.count(); at < end; ++at) {
    const int all = is_one_of(graph, at, std::array{"we", "you", "they"}) ? graph.child(at, "mod") : -1;
    const int above = graph.parent(at);
    const bool is_plain = all >= 0 && above >= 0 && graph.mentions(at) == 1 && graph.is(graph.arc(all).to, "all");
    if (!is_plain || !graph.arc(above).role.starts_with("ARG") || graph.arc(above).inverse) continue;
    graph.redirect(at, graph.arc(all).to);
    attribute_add(graph.word(graph.arc(all).to), "@pl");
    graph.replace(all, graph.arc(all).to, at, "superset");
  }
}

}  // namespace

// (c / cause-01 :ARG0 (r / rain-01) :ARG1 (s / stay-01)) becomes (s / stay-01 :cause (r / rain-01)). Nouns that a frame
// makes come first, "the cause of", as they would be taken apart else.
void step_reified(Meaning& meaning) {
  Rewriter graph(meaning, "reified");
  for (int at = 0, end = graph.count(); at < end; ++at) {
    if (graph.is(at, "have", "03")) having_apply(graph, at);
    if (graph.is(at, "cause", "01")) reason_apply(graph, at), cause_noun_apply(graph, at);
    if (graph.is(at, "thing") || graph.is(at, "reason")) reason_role_apply(graph, at);
    // "I know where it is", as some write it.
    if (graph.is(at, "thing") && graph.children(at).size() == 1 && graph.child(at, "location", true) >= 0)
      graph.word(at).name = "location";
    if (graph.is(at, "location") || graph.is(at, "place")) place_role_apply(graph, at);
    if (graph.is(at, "regardless", "91")) regardless_apply(graph, at);
    if (graph.word(at).name == "resemble") same_noun_apply(graph, at);
    if (graph.is(at, "result", "01")) result_apply(graph, at);
    if (graph.is(at, "resemble", "01")) likeness_apply(graph, at);
    object_order_apply(graph, at);
    purpose_of_thing_apply(graph, at);
    if (graph.is(at, "include", "01") || graph.is(at, "include", "91")) including_apply(graph, at);
    meant_apply(graph, at);
    ventured_apply(graph, at);
    phrase_apply(graph, at);
    light_phrase_apply(graph, at);
  }
  // In the order of the source, so that of two nested frames the outer one comes first, and its role leads to the inner
  // frame, which then gives its own place up.
  for (int at = 0; at < graph.count(); ++at) {
    const Reified* one = is_unlike(graph, at) ? nullptr : reified_of(graph, at);
    if (one != nullptr) reified_apply(graph, at, *one);
  }
  // Behind the frames, as have-frequency-91 and others have become roles only now. Concepts made here are not looked
  // at.
  for (int at = 0, end = graph.count(); at < end; ++at) {
    frequency_apply(graph, at);
    times_apply(graph, at);
    part_place_apply(graph, at);
    outer_apply(graph, at);
    place_alone_apply(graph, at);
    here_apply(graph, at);
  }
  for (Arc& one : meaning.arcs) {
    if (!one.gone) role_apply(graph, one);
  }
  // (w / wife :part (e / ear)), where the ear is spoken of elsewhere: her ear.
  for (int led = 0; led < static_cast<int>(meaning.arcs.size()); ++led) {
    const Arc one = graph.arc(led);
    if (one.gone || one.inverse || one.role != "part" || graph.mentions(one.to) < 2) continue;
    graph.replace(led, one.to, one.from, "poss");
  }
  // "An equal share": of a quality that nothing else is said of, the number of the role is no matter.
  for (Arc& one : meaning.arcs) {
    const bool is_far = one.role == "ARG3" || one.role == "ARG4" || one.role == "ARG5";
    if (one.gone || !one.inverse || !is_far || !is_event(graph, one.to) || graph.mentions(one.to) > 1) continue;
    // "..., which is typical of the town".
    const bool is_of_clause = is_event(graph, one.from) && graph.child(one.to, "ARG2") >= 0;
    const bool is_bare = graph.children(one.to).empty() && graph.word(one.from).sense.empty();
    if ((is_bare || is_of_clause) && graph.child(one.to, "ARG1") < 0) one.role = "ARG1";
  }
  directions_apply(graph);
  sets_apply(graph);
}

}  // namespace lexon
