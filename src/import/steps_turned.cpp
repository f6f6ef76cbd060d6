// The step about graphs that English tells the other way round.
#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {

namespace {

// A clause of its own: an event, or what is said of something.
bool is_statement(Rewriter& graph, int at) {
  return is_event(graph, at) || graph.child(at, "domain") >= 0;
}

// (b / bring-01 :condition-of (o / open-01)): "if you bring it, we will open it". Read from its condition a bank has the
// statement below; English has it above. An order keeps its place: "bring it, and we will open it".
void condition_below(Rewriter& graph, int at) {
  for (const char* role : {"condition", "concession"}) {
    const int led = is_statement(graph, at) ? graph.child(at, role, true) : -1;
    if (led < 0) continue;
    const int told = graph.arc(led).to;
    const int above = graph.parent(at);
    const bool is_part = above >= 0 && (graph.arc(above).inverse || graph.mentions(at) > 1);
    if (!is_statement(graph, told) || is_part || graph.mentions(told) > 1) continue;
    // "It rained, but they played."
    const bool is_concession = role == std::string_view("concession");
    if (is_concession || has_attribute(graph.word(at), "@imp")) {
      graph.replace(led, at, told, "conjunct");
      attribute_add(graph.word(told), is_concession ? "@but" : "@and");
      if (!is_concession) attribute_add(graph.word(told), "@fut");
      continue;
    }
    for (const char* mood : {"@quote", "@int", "@exp"}) {
      if (std::erase(graph.word(at).attributes, mood) > 0) attribute_add(graph.word(told), mood);
    }
    graph.redirect(at, told);
    graph.replace(led, told, at, role);
  }
}

// (v / visit-01 :ARG1 (h / have-place-91 :ARG1 (b / build-01))): the place where it was built. A frame of a role that
// lacks its other end names it.
void unnamed_end(Rewriter& graph, int at) {
  struct Unnamed {
    const char* frame;
    const char* noun;
    const char* role;
  };
  constexpr Unnamed kUnnamed[] = {{"have-place", "place", "location"},
                                  {"be-located-at", "place", "location"},
                                  {"have-manner", "way", "manner"},
                                  {"have-temporal", "time", "time"}};
  for (const Unnamed& one : kUnnamed) {
    const int led = graph.is(at, one.frame, "91") && graph.parent(at) >= 0 ? graph.child(at, "ARG1") : -1;
    if (led < 0 || graph.argument(at, "ARG2") >= 0 || !is_event(graph, graph.arc(led).to)) continue;
    graph.word(at).name = one.noun;
    graph.word(at).sense.clear();
    graph.word(at).attributes.clear();
    graph.replace(led, at, graph.arc(led).to, one.role, true);
  }
}

// (t / thing :ARG2-of (n / name-01 :ARG1 x)): the name of x.
void name_of(Rewriter& graph, int at) {
  const int led = graph.is(at, "thing") ? graph.child(at, "ARG2", true) : -1;
  if (led < 0 || !graph.is(graph.arc(led).to, "name", "01") || graph.mentions(graph.arc(led).to) > 1) return;
  const int frame = graph.arc(led).to;
  const int whose = graph.child(frame, "ARG1");
  if (whose < 0 || graph.children(frame).size() != 1) return;
  graph.settle_concept(frame, Fate::word);
  graph.remove(led, Fate::word);
  graph.replace(whose, at, graph.arc(whose).to, "poss");
  graph.word(at).name = "name";
}

// The predicate takes the place of its frame; what is denied or asked of the frame is that of the predicate.
void predicate_upright(Rewriter& graph, int at, int predicate_led, int subject_led) {
  const int predicate = graph.arc(predicate_led).to;
  for (const std::string& attribute : graph.word(at).attributes) {
    if (attribute != "@v") attribute_add(graph.word(predicate), attribute);
  }
  graph.settle_concept(at, Fate::relation);
  graph.replace(subject_led, predicate, graph.arc(subject_led).to, "domain");
  graph.remove(predicate_led, Fate::relation);
  graph.redirect(at, predicate);
  graph.move_children(at, predicate);
}

// "The idea is crazy": have-mod-91 as the statement.
void quality_stated(Rewriter& graph, int at) {
  const bool is_quality = graph.is(at, "have-mod", "91") || graph.is(at, "have-color", "91");
  const int what = is_quality ? graph.child(at, "ARG1") : -1;
  const int quality = is_quality ? graph.child(at, "ARG2") : -1;
  if (what < 0 || quality < 0) return;
  // "The museum is closed": what was done to it is told by its own verb.
  const int deed = graph.arc(quality).to;
  if (is_event(graph, deed) && graph.child(deed, "ARG1") < 0 && graph.mentions(deed) == 1 &&
      !has_attribute(graph.word(at), "@neg")) {
    graph.settle_concept(at, Fate::relation);
    graph.replace(what, deed, graph.arc(what).to, "ARG1");
    graph.remove(quality, Fate::relation);
    graph.redirect(at, deed);
    return graph.move_children(at, deed);
  }
  if (is_event(graph, deed)) return;
  if (graph.mentions(graph.arc(quality).to) == 1) predicate_upright(graph, at, quality, what);
}

// "The wedding is in May": the time of a thing stands behind a verb of being.
void time_stated(Rewriter& graph, int at) {
  const bool is_time = graph.is(at, "have-temporal", "91") || graph.is(at, "be-temporally-at", "91");
  const int when = is_time && graph.child(at, "ARG1") >= 0 ? graph.child(at, "ARG2") : -1;
  if (when < 0) return;
  graph.word(at).name = "be-located-at";
  graph.arc(when).role = "time";
}

// "To a great extent": how much, as a noun of its own, has a preposition.
void extent_apply(Rewriter& graph, int led) {
  const Arc one = graph.arc(led);
  constexpr std::array kMeasures{"extent", "degree"};
  constexpr std::array kRoles{"degree", "extent", "manner"};
  if (one.gone || one.inverse || !is_listed(one.role, kRoles) || !is_one_of(graph, one.to, kMeasures)) return;
  if (graph.children(one.to).empty() || !graph.word(one.to).sense.empty()) return;
  const int to = graph.add_concept("to");
  graph.add(to, one.to, "op1");
  graph.replace(led, one.from, to, "extent");
  const std::vector<int> below = graph.children(one.to);
  const bool is_known = std::any_of(below.begin(), below.end(), [&](int of) { return graph.arc(of).inverse; });
  attribute_add(graph.word(one.to), is_known ? "@def" : "@indef");
}

// "It takes courage to leave", "the result is a loss": frames whose first argument nobody names.
void unnamed_subject(Rewriter& graph, int at) {
  // "It takes patience to teach a parrot": nobody in particular teaches it.
  const int deed = graph.is(at, "take", "10") && graph.child(at, "ARG1") >= 0 ? graph.child(at, "ARG0") : -1;
  const bool is_of_nobody = deed >= 0 && is_event(graph, graph.arc(deed).to) &&
                            graph.parent(graph.arc(deed).to) == deed && graph.child(graph.arc(deed).to, "ARG0") < 0 &&
                            !graph.children(graph.arc(deed).to).empty();
  if (is_of_nobody) graph.arc(deed).role = "purpose";
  if (graph.is(at, "take", "10") && graph.argument(at, "ARG0") < 0 && graph.child(at, "ARG1") >= 0)
    graph.add(at, graph.add_concept("it"), "ARG0");
  const int outcome = graph.is(at, "result", "01") && graph.argument(at, "ARG1") < 0 ? graph.child(at, "ARG2") : -1;
  const int above = graph.parent(at);
  const bool is_told = above < 0 || !graph.arc(above).role.starts_with("ARG");
  if (outcome < 0 || !is_told || is_event(graph, graph.arc(outcome).to)) return;
  const int what = graph.arc(outcome).to;
  if (graph.mentions(what) > 1 || graph.child(what, "domain") >= 0) return;
  graph.redirect(at, what);
  graph.replace(outcome, what, at, "domain");
  graph.word(at).sense.clear();
  graph.word(at).attributes.assign(1, "@def");
}

// (t / take-10 :ARG0 (p / paint-01 :ARG0 s) :ARG1 (q / temporal-quantity ...)): "she took two hours to paint it", as who did
// it is known.
void time_taken(Rewriter& graph, int at) {
  const int led = graph.is(at, "take", "10") ? graph.child(at, "ARG0") : -1;
  const int length = led < 0 ? -1 : graph.child(at, "ARG1");
  const int doer = length < 0 ? -1 : graph.child(graph.arc(led).to, "ARG0");
  constexpr std::array kUnits{"second", "minute", "hour",    "day",  "week", "month",
                              "year",   "decade", "century", "time", "while"};
  if (doer < 0 || !is_one_of(graph, graph.arc(length).to, kUnits) || graph.mentions(graph.arc(led).to) != 1) return;
  const int taker = graph.child(at, "ARG2");
  if (taker >= 0 && graph.arc(taker).to != graph.arc(doer).to) return;
  graph.arc(led).role = "purpose";
  if (taker >= 0) graph.arc(taker).role = "ARG0";
  if (taker < 0) graph.add(at, graph.arc(doer).to, "ARG0");
}

// (d / drive-02 :ARG1-of (d2 / deep-02 :consequence c)) with @so: "so deeply driven that ...". What follows from how much
// it is stands behind the whole clause.
void consequence_behind(Rewriter& graph, int at) {
  const int led = has_attribute(graph.word(at), "@so") ? graph.child(at, "consequence") : -1;
  const int above = led >= 0 ? graph.parent(at) : -1;
  if (above < 0 || !graph.arc(above).inverse || !is_event(graph, graph.arc(above).from)) return;
  if (graph.reaches(graph.arc(led).to, graph.arc(above).from)) return;
  graph.lead_from(led, graph.arc(above).from);
}

// (b / buy-01 :frequency (v / visit-01 :ARG0 he) with @every): "whenever he visits".
void every_time_apply(Rewriter& graph, int led) {
  const Arc one = graph.arc(led);
  if (one.gone || one.inverse || (one.role != "frequency" && one.role != "time") || !is_event(graph, one.to)) return;
  const int mod = graph.child(one.to, "mod");
  const bool is_every = mod >= 0 && (graph.is(graph.arc(mod).to, "every") || graph.is(graph.arc(mod).to, "each"));
  const bool is_told = graph.child(one.to, "ARG0") >= 0 || graph.child(one.to, "ARG1") >= 0;
  if (!is_told || (!is_every && !(one.role == "frequency" && has_attribute(graph.word(one.to), "@every")))) return;
  if (is_every) {
    graph.settle_concept(graph.arc(mod).to, Fate::word);
    graph.remove(mod, Fate::word);
  }
  std::erase(graph.word(one.to).attributes, "@every");
  const int whenever = graph.add_concept("whenever");
  graph.add(whenever, one.to, "op1");
  graph.replace(led, one.from, whenever, "time");
}

}  // namespace

// Behind the frames of roles, offices and degrees, whose arcs these look at.
void step_turned(Meaning& meaning) {
  Rewriter graph(meaning, "turned");
  for (int at = 0, end = graph.count(); at < end; ++at) {
    condition_below(graph, at);
    unnamed_end(graph, at);
    name_of(graph, at);
    quality_stated(graph, at);
    time_stated(graph, at);
    time_taken(graph, at);
    unnamed_subject(graph, at);
    consequence_behind(graph, at);
  }
  for (int led = 0, end = static_cast<int>(meaning.arcs.size()); led < end; ++led) {
    every_time_apply(graph, led);
    extent_apply(graph, led);
  }
}

}  // namespace lexon
