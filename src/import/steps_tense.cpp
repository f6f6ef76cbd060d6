// A step about when: the tense that a graph does not give is guessed from who is spoken of, from times, and from the clauses
// around.
#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/clauses.hpp"
#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {

namespace {

// What has a tense or a modal verb needs no other.
bool is_undated(const Concept& clause) {
  constexpr std::array kSaid{"@past", "@pres",   "@fut",    "@imp",    "@can",  "@must",
                             "@may",  "@should", "@maynot", "@likely", "@would"};
  return std::none_of(kSaid.begin(), kSaid.end(), [&](const char* one) { return has_attribute(clause, one); });
}

// "She calls tomorrow", "next week", is to come; in a story the next day has been.
bool is_coming(Rewriter& graph, int at, int time) {
  constexpr std::array kPeriods{"week", "month", "year", "summer", "winter", "spring", "autumn"};
  const int pointer = is_one_of(graph, time, kPeriods) ? graph.child(time, "mod") : -1;
  const bool is_next = pointer >= 0 && graph.is(graph.arc(pointer).to, "next");
  if (!graph.is(time, "tomorrow") && !graph.is(time, "future") && !is_next) return false;
  const int above = graph.parent(at);
  if (above >= 0 && !is_core(graph.arc(above)) && graph.arc(above).role != "conjunct") return false;
  // "He does not come tomorrow" is as good.
  return has_attribute(graph.word(at), "@v") && !has_attribute(graph.word(at), "@neg") && is_undated(graph.word(at));
}

// "Did it rain yesterday?", "she was not there last night".
bool is_over(Rewriter& graph, int time) {
  constexpr std::array kPeriods{"night",  "week",   "month",  "year",   "monday",   "tuesday", "wednesday", "thursday",
                                "friday", "summer", "winter", "spring", "saturday", "sunday",  "weekend"};
  const int pointer = is_one_of(graph, time, kPeriods) ? graph.child(time, "mod") : -1;
  return graph.is(time, "yesterday") || (pointer >= 0 && graph.is(graph.arc(pointer).to, "last"));
}

// The arc to whom a clause is told of, who may stand in the clause that it is joined to: "she sang and danced".
int told_of(Rewriter& graph, int at) {
  const int shared = graph.child(at, "shared");
  return shared >= 0 ? shared : subject_arc(graph, at);
}

// What no rule would tell in the past, if the graph says nothing else.
bool is_told_of_now(Rewriter& graph, int at) {
  constexpr std::array kMarks{"@pres",   "@fut", "@would", "@imp",   "@perf",  "@can",   "@must", "@may",
                              "@should", "@ask", "@int",   "@quote", "@state", "@habit", "@neg",  "@asked"};
  return !is_event(graph, at) || std::any_of(kMarks.begin(), kMarks.end(),
                                             [&](const char* mark) { return has_attribute(graph.word(at), mark); });
}

// "Let me sleep until she calls": what somebody is bidden to let happen is still to come, and so is its time.
bool is_let_happen(Rewriter& graph, int at) {
  constexpr std::array kLetting{"let", "help", "make", "allow"};
  const int led = graph.parent(at);
  if (led < 0 || graph.arc(led).inverse || !is_core(graph.arc(led))) return false;
  const int governor = graph.arc(led).from;
  return has_attribute(graph.word(governor), "@imp") && is_one_of(graph, governor, kLetting);
}

// Times that reach up to now: "has never been there", "has already left".
void tense_up_to_now(Rewriter& graph, int at, int time) {
  constexpr std::array kPerfect{"ever", "never", "already", "yet", "since", "so-far", "recent", "lately"};
  // "One never knows" is true at all times.
  const int who = subject_arc(graph, at);
  const bool is_general = who >= 0 && graph.is(graph.arc(who).to, "one");
  // "I already know that": what lasts is told of now.
  constexpr std::array kLasting{"know",  "have", "want", "need", "believe",
                                "think", "like", "love", "own",  "understand"};
  // "He is already very sick."
  const bool is_being = graph.is(at, "be-located-at", "91") || graph.child(at, "domain") >= 0 ||
                        (graph.child(at, "degree") >= 0 && graph.child(at, "ARG0") < 0);
  const bool is_lasting = graph.is(time, "already") && (is_one_of(graph, at, kLasting) || is_being);
  if (is_lasting && !is_being && !has_attribute(graph.word(at), "@past")) attribute_add(graph.word(at), "@pres");
  // "She told me never to open it."
  const int told = graph.parent(at);
  const int hearer = told >= 0 && graph.arc(told).role == "ARG1" && !graph.arc(told).inverse
                         ? graph.child(graph.arc(told).from, "ARG2")
                         : -1;
  const bool is_bidden = who >= 0 && hearer >= 0 && graph.arc(hearer).to == graph.arc(who).to;
  const bool is_perfect =
      is_one_of(graph, time, kPerfect) && graph.word(time).sense.empty() && !is_general && !is_lasting && !is_bidden;
  // "He took it and never spoke of it": in a story what is joined is told as that is.
  const int before = graph.parent(at);
  const bool is_in_story = is_perfect && before >= 0 && graph.arc(before).role == "conjunct" &&
                           graph.child(at, "shared") >= 0 && told_of(graph, graph.arc(before).from) >= 0 &&
                           !is_told_of_now(graph, graph.arc(before).from);
  if (is_perfect) attribute_add(graph.word(at), is_in_story ? "@past" : "@perf");
}

// What the time of a clause says of its tense. "Before now" alone is no phrase of the sentence: it is the past.
// (c / come-01 :time (b / before :op1 (n / now))) is @past, with "after" @fut; (y / before :op1 n :quant (y2 / year
// :quant 3)) is "three years ago" besides.
void tense_from_time(Rewriter& graph, int at) {
  for (const int led : graph.children(at)) {
    // "They have been here since Monday", which banks draw as how long it lasts, too.
    if (graph.arc(led).role == "duration" && graph.is(graph.arc(led).to, "since")) graph.arc(led).role = "time";
    const std::string& role = graph.arc(led).role;
    if (graph.arc(led).inverse || (role != "time" && role != "temporal")) continue;
    const int time = graph.arc(led).to;
    // "Since we were children".
    const int begun = graph.is(time, "since") ? graph.child(time, "op1") : -1;
    if (begun >= 0 && is_clause(graph, graph.arc(begun).to) && subject_arc(graph, graph.arc(begun).to) >= 0 &&
        is_undated(graph.word(graph.arc(begun).to)))
      attribute_add(graph.word(graph.arc(begun).to), "@past");
    if (is_coming(graph, at, time)) {
      attribute_add(graph.word(at), "@fut");
      // "I will call tomorrow and ask them".
      int joined = graph.child(at, "conjunct");
      for (int steps = graph.count(); joined >= 0 && steps > 0; --steps) {
        const int part = graph.arc(joined).to;
        if (graph.child(part, "shared") < 0 || !has_attribute(graph.word(part), "@v")) break;
        if (is_coming(graph, part, time)) attribute_add(graph.word(part), "@fut");
        joined = graph.child(part, "conjunct");
      }
    }
    tense_up_to_now(graph, at, time);
    // "Yesterday's newspaper" is no event.
    if (is_clause(graph, at) && is_over(graph, time) && is_undated(graph.word(at)))
      attribute_add(graph.word(at), "@past");
    const bool is_relation = graph.is(time, "before") || graph.is(time, "after");
    const int point = is_relation ? graph.child(time, "op1") : -1;
    // After what was told: two days later.
    const bool is_open = is_relation && point < 0 && graph.child(time, "quant") >= 0;
    if (is_open) graph.word(time).name = graph.is(time, "before") ? "earlier" : "later";
    // "They arrived later."
    if (graph.is(time, "after") && graph.children(time).empty()) graph.word(time).name = "later";
    if (point < 0 || !graph.is(graph.arc(point).to, "now")) continue;
    attribute_add(graph.word(at), graph.is(time, "before") ? "@past" : "@fut");
    if (graph.mentions(time) > 1 || graph.mentions(graph.arc(point).to) > 1) continue;
    // "In the last two years" lasted so long: for two years.
    const int lasting = graph.child(time, "duration");
    if (lasting >= 0 && graph.is(time, "before")) graph.lead_from(lasting, at);
    graph.settle_concept(graph.arc(point).to, Fate::attribute);
    graph.remove(point, Fate::attribute);
    if (graph.children(time).empty()) {
      graph.settle_concept(time, Fate::attribute);
      graph.remove(led, Fate::attribute);
    } else if (graph.is(time, "before")) {
      graph.word(time).name = "ago";
    } else if (const int length = graph.child(time, "quant"); length >= 0) {
      // "In three years".
      graph.word(time).name = "in";
      graph.arc(length).role = "op1";
    }
  }
}

// With one of these marks a clause has its tense, or needs none.
constexpr std::array kTensed{"@past",   "@pres", "@fut",   "@would", "@imp",   "@perf", "@may",   "@must",   "@should",
                             "@maynot", "@used", "@state", "@habit", "@asked", "@ask",  "@quote", "@likely", "@int"};

bool is_tensed(Rewriter& graph, int at) {
  return std::any_of(kTensed.begin(), kTensed.end(),
                     [&](const char* mark) { return has_attribute(graph.word(at), mark); });
}

// A deed that rules tell in the past, as nothing says otherwise.
bool is_told_as_past(Rewriter& graph, int at) {
  const Concept& word = graph.word(at);
  if (has_attribute(word, "@past")) return true;
  constexpr std::array kUnreal{"@can", "@conditional", "@nom"};
  const bool is_real =
      std::none_of(kUnreal.begin(), kUnreal.end(), [&](const char* mark) { return has_attribute(word, mark); });
  return is_real && is_event(graph, at) && word.sense != "91" && !is_state(graph, at) && !is_tensed(graph, at) &&
         graph.child(at, "condition") < 0 && graph.child(at, "ARG0") >= 0 && graph.child(at, "domain") < 0;
}

// The clause that a thing stands in, -1 for none: (b / buy-01 :ARG1 (h / house)).
int clause_around(Rewriter& graph, int thing) {
  int led = graph.parent(thing);
  for (int steps = 3; led >= 0 && steps > 0; --steps) {
    const int above = graph.arc(led).from;
    if (graph.arc(led).inverse) return -1;
    if (is_event(graph, above)) return above;
    led = graph.parent(above);
  }
  return -1;
}

// What lies beside a deed in time has its clause below one of these.
constexpr std::array kBesides{"before", "after", "until", "while", "since", "as-soon-as", "soon-after"};

// "He said that it was late", "she bought a house that was old", "it was dark and we left": in a story what lasts is told
// of the same time as the deed above it, or beside it. True for what stands so below what is told as past.
bool is_of_same_time(Rewriter& graph, int at) {
  const int led = graph.parent(at);
  if (led < 0) return false;
  const Arc& to = graph.arc(led);
  // A relative clause: (h / house :ARG1-of (l / like-01)).
  if (to.inverse) {
    const int around = clause_around(graph, to.from);
    return around >= 0 && is_told_as_past(graph, around);
  }
  if (to.role == "op1" && is_one_of(graph, to.from, kBesides)) {
    const int above = graph.parent(to.from);
    return above >= 0 && is_told_as_past(graph, graph.arc(above).from);
  }
  if (!is_told_as_past(graph, to.from)) return false;
  constexpr std::array kBeside{"time", "temporal", "cause", "concession", "conjunct"};
  if (is_listed(to.role, kBeside)) return true;
  constexpr std::array kTelling{
      "say",    "tell",    "think",    "answer",  "reply", "explain",  "show",   "learn", "find-out",
      "notice", "realize", "discover", "declare", "state", "announce", "report", "admit", "confess",
      "claim",  "prove",   "decide",   "find",    "feel",  "believe",  "know",   "add",   "insist",
      "recall", "guess",   "see",      "hear",    "deny",  "complain", "argue",  "write", "conclude"};
  const bool is_content =
      to.role == "ARG1" || (to.role == "ARG2" && is_one_of(graph, to.from, std::array{"say", "tell"}));
  // "She told the driver to wait".
  const int subject = subject_arc(graph, at);
  const int told = graph.child(to.from, "ARG2");
  const bool is_bidden = subject >= 0 && told >= 0 && graph.arc(subject).to == graph.arc(told).to;
  return is_content && !is_bidden && is_one_of(graph, to.from, kTelling);
}

// "You cannot stay here until the sun rises", "where is the cook when mould grows?": what holds at all times has
// no time in the past.
void tense_of_bound(Rewriter& graph, int at) {
  constexpr std::array kRelations{"before", "until", "while", "as-soon-as"};
  const int led = graph.child(at, "time");
  int when = led >= 0 ? graph.arc(led).to : -1;
  const int below = when >= 0 && is_one_of(graph, when, kRelations) ? graph.child(when, "op1") : -1;
  if (below >= 0) when = graph.arc(below).to;
  if (when < 0 || has_attribute(graph.word(at), "@past")) return;
  const bool is_general = has_attribute(graph.word(at), "@pres") || has_attribute(graph.word(at), "@ask") ||
                          has_attribute(graph.word(at), "@int");
  if (!is_general || !is_event(graph, when) || is_tensed(graph, when)) return;
  attribute_add(graph.word(when), "@pres");
  attribute_add(graph.word(at), "@pres");
}

// What lasts stands in the past beside what happened: see is_of_same_time. What a story says of all times is told so as
// well: nobody takes it amiss.
void tense_in_story(Rewriter& graph, int at) {
  const bool is_lasting = graph.child(at, "domain") >= 0 || (is_event(graph, at) && subject_arc(graph, at) >= 0);
  const int above = graph.parent(at);
  if (above >= 0 && graph.arc(above).role == "attendant") return;
  // "She looked as if she wanted to speak": unreal, so past beside any deed.
  if (above >= 0 && graph.arc(above).role == "conj-as-if" && is_lasting && !is_tensed(graph, at))
    return attribute_add(graph.word(at), "@past");
  // "Birds sing when you laugh", "you cry when the wind blows": beside what is told of now.
  const int when = graph.child(at, "time");
  const auto is_of_now = [&](int one) {
    return has_attribute(graph.word(one), "@pres") && !has_attribute(graph.word(one), "@now") && is_clause(graph, one);
  };
  const bool is_beside =
      (when >= 0 && is_of_now(graph.arc(when).to)) ||
      (above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "time" && is_of_now(graph.arc(above).from));
  if (is_beside && is_lasting && !is_tensed(graph, at) && !has_attribute(graph.word(at), "@can") &&
      graph.child(at, "condition") < 0)
    return attribute_add(graph.word(at), "@pres");
  // A deed is past as it is, or an infinitive: "she told him to wait".
  const bool is_deed = graph.child(at, "ARG0") >= 0 && !is_state(graph, at) && !has_attribute(graph.word(at), "@can");
  // "She said that she would come if it was fine."
  const bool is_told_of_coming = graph.child(at, "condition") >= 0 && !has_attribute(graph.word(at), "@can") &&
                                 !is_tensed(graph, at) && is_of_same_time(graph, at);
  if (is_told_of_coming) {
    const int if_so = graph.arc(graph.child(at, "condition")).to;
    if (subject_arc(graph, if_so) >= 0 && !is_tensed(graph, if_so)) attribute_add(graph.word(if_so), "@past");
    return attribute_add(graph.word(at), "@would");
  }
  if (!is_lasting || is_deed || is_tensed(graph, at)) return;
  if (is_of_same_time(graph, at)) return attribute_add(graph.word(at), "@past");
  for (const char* role : {"time", "conjunct"}) {
    const int led = graph.child(at, role);
    const int beside = led >= 0 ? graph.arc(led).to : -1;
    // "I did not know her and walked on."
    const bool is_going_on = beside >= 0 && has_attribute(graph.word(at), "@neg") &&
                             graph.child(beside, "shared") >= 0 && !has_attribute(graph.word(at), "@can") &&
                             is_event(graph, beside) && !is_state(graph, beside) && is_undated(graph.word(beside)) &&
                             !is_tensed(graph, beside) && !has_attribute(graph.word(beside), "@neg");
    if (beside >= 0 && (is_going_on || is_told_as_past(graph, beside)) && graph.child(at, "condition") < 0)
      return attribute_add(graph.word(at), "@past");
  }
}

// What is told of him or her is past, and so is when and why it was: people who are there are seldom he or she. True
// where the clause itself has nothing that says otherwise.
bool is_told_of_another(Rewriter& graph, int at) {
  // What has one of these has its tense, or needs none.
  constexpr std::array kSays{"@past", "@pres", "@fut", "@would",  "@imp", "@perf",
                             "@can",  "@must", "@may", "@should", "@ask", "@int"};
  for (const char* one : kSays) {
    if (has_attribute(graph.word(at), one)) return false;
  }
  if (!is_clause(graph, at) || graph.child(at, "condition") >= 0) return false;
  const int above = graph.parent(at);
  // "If you let him go, he will run and be lost."
  if (above >= 0 && graph.arc(above).role == "conjunct" && graph.child(graph.arc(above).from, "condition") >= 0)
    return false;
  // "If she falls, he will cry": what is still to come has no condition that is past.
  const bool is_condition = above >= 0 && graph.arc(above).role == "condition" && !graph.arc(above).inverse &&
                            !has_attribute(graph.word(graph.arc(above).from), "@past") &&
                            !has_attribute(graph.word(graph.arc(above).from), "@would");
  // "You see how happy she is": what somebody sees of her is as it is now.
  const bool is_seen = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                       graph.is(at, "be-located-at", "91") && has_attribute(graph.word(graph.arc(above).from), "@pres");
  // "He sat there, holding a lamp" has one tense.
  if (is_condition || is_seen || (above >= 0 && graph.arc(above).role == "attendant")) return false;
  const int subject = told_of(graph, at);
  constexpr std::array kAnother{"he", "she"};
  if (subject >= 0 && is_one_of(graph, graph.arc(subject).to, kAnother)) return true;
  const int led = graph.parent(at);
  if (led < 0 || graph.arc(led).inverse || !has_attribute(graph.word(graph.arc(led).from), "@past")) return false;
  // A purpose or a condition may be still to come.
  constexpr std::array kSameTime{"time", "temporal", "cause", "concession", "conjunct"};
  return is_listed(graph.arc(led).role, kSameTime);
}

// (w / wait-01 :ARG0 i :condition (y / you :domain i)): if I was you, I would wait.
void tense_of_unreal(Rewriter& graph, int at) {
  const int led = graph.child(at, "condition");
  const int unreal = led < 0 ? -1 : graph.arc(led).to;
  const int who = unreal < 0 ? -1 : graph.child(unreal, "domain");
  if (who < 0 || !is_personal_pronoun(graph, unreal) || !is_personal_pronoun(graph, graph.arc(who).to)) return;
  if (is_tensed(graph, unreal) || is_tensed(graph, at)) return;
  attribute_add(graph.word(unreal), "@past");
  int part = at;
  for (int steps = graph.count(); steps > 0; --steps) {
    if (!is_tensed(graph, part) && !has_attribute(graph.word(part), "@can")) attribute_add(graph.word(part), "@would");
    const int joined = graph.child(part, "conjunct");
    if (joined < 0) break;
    part = graph.arc(joined).to;
  }
}

// "You should eat before we leave", "Call me when he comes": what is bidden or will be is not past, nor is its time.
void tense_of_coming(Rewriter& graph, int at) {
  const Concept& clause = graph.word(at);
  const int above = graph.parent(at);
  const bool is_condition = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "condition";
  const bool is_ahead =
      is_condition || graph.child(at, "condition") >= 0 || has_attribute(clause, "@as_condition") ||
      has_attribute(clause, "@imp") || has_attribute(clause, "@should") || has_attribute(clause, "@fut") ||
      ((has_attribute(clause, "@can") || has_attribute(clause, "@must")) && has_attribute(clause, "@pres"));
  if ((!is_ahead && !is_let_happen(graph, at)) || has_attribute(clause, "@past")) return;
  // A preposition of time has the event below it: (a / after :op1 (c / come-01)).
  constexpr std::array kRelations{"before",   "after",      "until",      "till",      "while",
                                  "whenever", "as-soon-as", "as-long-as", "soon-after"};
  for (const int led : graph.children(at)) {
    if (graph.arc(led).inverse || (graph.arc(led).role != "time" && graph.arc(led).role != "temporal")) continue;
    int when = graph.arc(led).to;
    const int event = is_one_of(graph, when, kRelations) ? graph.child(when, "op1") : -1;
    if (event >= 0) when = graph.arc(event).to;
    const Concept& word = graph.word(when);
    if (has_attribute(word, "@v") && !has_attribute(word, "@past")) attribute_add(graph.word(when), "@pres");
  }
}

// "When she was here, we sang": a place, a quality or an office that somebody has while he does something is told of the
// same time. What he does is past, as rules have it, if the graph says nothing else.
void tense_of_place(Rewriter& graph, int at) {
  const bool is_being = graph.is(at, "be-located-at", "91") || graph.is(at, "have-place", "91");
  const int above = is_being || graph.child(at, "domain") >= 0 ? graph.parent(at) : -1;
  const std::string role = above < 0 ? "" : graph.arc(above).role;
  if (role != "time" && role != "temporal") return;
  int deed = graph.arc(above).from;
  // "The day when she was here" has the deed above the day.
  if (graph.arc(above).inverse && graph.parent(deed) >= 0) deed = graph.arc(graph.parent(deed)).from;
  constexpr std::array kOther{"@pres", "@fut", "@would",  "@imp",   "@can",
                              "@must", "@may", "@should", "@state", "@habit"};
  for (const char* one : kOther) {
    if (has_attribute(graph.word(deed), one) || has_attribute(graph.word(at), one)) return;
  }
  if (is_event(graph, deed) && graph.child(deed, "ARG0") >= 0) attribute_add(graph.word(at), "@past");
}

// "When they left, I remembered the house", "I had no time and looked away": what lasts is told of the same time as what
// happens beside it, which rules have as past. Nothing where the graph says when either of them is.
void tense_beside(Rewriter& graph, int at) {
  constexpr std::array kLasting{"have",  "know",    "remember", "want",   "need",    "love",       "like", "hate",
                                "think", "believe", "fear",     "belong", "contain", "understand", "live", "wonder",
                                "doubt", "hope",    "see",      "hear",   "seem",    "mean"};
  // With any of these marks a clause has its tense, or none that follows from another.
  constexpr std::array kKnown{"@past",   "@pres",  "@fut",   "@would", "@imp", "@perf",  "@can", "@must", "@may",
                              "@should", "@state", "@habit", "@asked", "@ask", "@quote", "@int", "@neg"};
  const auto is_open = [&](int one) {
    const bool is_predicate = one != at && graph.word(one).sense.empty() && graph.child(one, "domain") >= 0;
    const bool is_verb = is_event(graph, one) && graph.child(one, "domain") < 0;
    // "You cry when the wind blows": talk with "you" is about now.
    const int who = told_of(graph, one);
    if (who >= 0 && graph.is(graph.arc(who).to, "you")) return false;
    return (is_verb || is_predicate) && std::none_of(kKnown.begin(), kKnown.end(), [&](const char* mark) {
             return has_attribute(graph.word(one), mark);
           });
  };
  const auto is_lasting = [&](int one) { return is_one_of(graph, one, kLasting) && graph.child(one, "ARG0") >= 0; };
  const int above = graph.parent(at);
  const bool is_condition = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "condition";
  if (!is_open(at) || is_condition || graph.child(at, "condition") >= 0 || is_let_happen(graph, at)) return;
  for (const char* role : {"time", "conjunct", "cause", "concession"}) {
    int led = graph.child(at, role);
    if (led >= 0 && is_one_of(graph, graph.arc(led).to, kBesides)) led = graph.child(graph.arc(led).to, "op1");
    const int beside = led < 0 ? -1 : graph.arc(led).to;
    // "She left because he did not answer": what did not happen has its place in the story, too.
    const bool is_denied = beside >= 0 && is_event(graph, beside) && has_attribute(graph.word(beside), "@neg") &&
                           !has_attribute(graph.word(beside), "@can") && !has_attribute(graph.word(beside), "@pres");
    if (beside < 0 || (!is_open(beside) && !is_denied)) continue;
    const bool is_joined = std::string_view(role) == "conjunct";
    // With a subject of its own, what is joined may be told of another time.
    if (is_joined && (is_denied || graph.child(beside, "shared") < 0)) continue;
    const bool happens = graph.child(at, "ARG0") >= 0 && !is_one_of(graph, at, kLasting);
    const bool happens_beside = !is_one_of(graph, beside, kLasting) &&
                                (is_joined ? graph.child(beside, "ARG1") >= 0 : graph.child(beside, "ARG0") >= 0);
    if (happens && !is_joined) attribute_add(graph.word(beside), "@past");
    if (happens && is_joined && is_one_of(graph, beside, kLasting)) attribute_add(graph.word(beside), "@past");
    // "She knows it because he told her": a reason may lie before what it explains.
    const bool is_reason = std::string_view(role) == "cause" || std::string_view(role) == "concession";
    if (happens_beside && !is_reason && !is_denied && is_lasting(at)) attribute_add(graph.word(at), "@past");
  }
}

// "They did not leave until the gate was opened": what was waited for has its place in the story.
void tense_until(Rewriter& graph, int at) {
  constexpr std::array kKnown{"@past", "@pres", "@fut",    "@would", "@imp",   "@perf", "@can",
                              "@must", "@may",  "@should", "@ask",   "@quote", "@int",  "@state"};
  const Concept& clause = graph.word(at);
  const int led = has_attribute(clause, "@neg") && graph.child(at, "ARG0") >= 0 ? graph.child(at, "time") : -1;
  const int event = led >= 0 && graph.is(graph.arc(led).to, "until") ? graph.child(graph.arc(led).to, "op1") : -1;
  if (event < 0 || !is_event(graph, graph.arc(event).to) || graph.child(at, "condition") >= 0) return;
  for (const char* mark : kKnown) {
    if (has_attribute(clause, mark) || has_attribute(graph.word(graph.arc(event).to), mark)) return;
  }
  attribute_add(graph.word(at), "@past");
}

// "I thank you": it is done by saying so.
void tense_of_thanks(Rewriter& graph, int at) {
  // Only "I" can do these by saying so, and only to "you".
  constexpr std::array kDone{"thank", "congratulate", "assure", "beg", "promise"};
  const int who = is_one_of(graph, at, kDone) ? graph.child(at, "ARG0") : -1;
  if (who < 0 || !(graph.is(graph.arc(who).to, "i") || graph.is(graph.arc(who).to, "we"))) return;
  for (const char* role : {"ARG1", "ARG2"}) {
    const int whom = graph.child(at, role);
    const bool is_you = whom >= 0 && graph.is(graph.arc(whom).to, "you");
    if (is_you && !has_attribute(graph.word(at), "@past")) attribute_add(graph.word(at), "@pres");
  }
}

// "When I was six, I left": how old somebody was when it happened is told of the past, and so is what happened.
void tense_of_age(Rewriter& graph, int at) {
  const int above = graph.is(at, "age", "01") ? graph.parent(at) : -1;
  if (above < 0 || graph.arc(above).inverse || graph.arc(above).role != "time") return;
  // "When I am six, I will go to school."
  constexpr std::array kOther{"@pres", "@fut", "@would", "@imp", "@can", "@must", "@may", "@should", "@past"};
  Concept& told = graph.word(graph.arc(above).from);
  for (const char* one : kOther) {
    if (has_attribute(told, one)) return;
  }
  attribute_add(told, "@past");
  attribute_add(graph.word(at), "@past");
}

// The mark of what the clause of `at` says, "" for none: hopes and promises are of what is to come, @fut and @would.
std::string mark_of_content(Rewriter& graph, int at) {
  constexpr std::array kHoping{"hope", "bet", "trust", "guarantee", "ensure"};
  constexpr std::array kPromising{"promise", "predict", "vow",      "pledge", "forecast",
                                  "decide",  "foresee", "threaten", "wish"};
  constexpr std::array kDemanding{"demand", "recommend", "propose", "stipulate", "decree", "order", "command"};
  constexpr std::array kWondering{"wonder", "inquire", "enquire"};
  const Concept& word = graph.word(at);
  // "She promises that she will come", "she promised that she would".
  const bool is_now = has_attribute(word, "@pres") || has_attribute(word, "@fut");
  if (is_one_of(graph, at, kHoping)) return has_attribute(word, "@past") ? "@would" : "@fut";
  // "They decided that she was right".
  const int decided = graph.is(at, "decide", "01") ? graph.child(at, "ARG1") : -1;
  if (decided >= 0 && graph.child(graph.arc(decided).to, "ARG0") < 0) return "";
  if (is_one_of(graph, at, kPromising)) return is_now ? "@fut" : "@would";
  if (is_one_of(graph, at, kDemanding)) return "@should";
  return is_one_of(graph, at, kWondering) ? "@whether" : "";
}

// "She hopes that he will come", "she promised that it would rain", "she wonders whether it rains": what is hoped or
// demanded is still to come, and what is wondered is open. Only what has a subject of its own: the rest is an infinitive.
void tense_of_content(Rewriter& graph, int at) {
  const int led = graph.word(at).sense.empty() ? -1 : graph.child(at, graph.is(at, "promise", "01") ? "ARG2" : "ARG1");
  int what = led >= 0 ? graph.arc(led).to : -1;
  if (what < 0 || graph.parent(what) != led || graph.child(what, "questioned") >= 0) return;
  const std::string mark = mark_of_content(graph, at);
  const bool is_open = mark == "@whether";
  const int subject = subject_arc(graph, what);
  const int agent = graph.child(at, "ARG0");
  // "The court ordered the company to pay".
  const int told = graph.child(at, "ARG2");
  const bool is_bidden = subject >= 0 && told >= 0 && graph.arc(subject).to == graph.arc(told).to;
  if (is_bidden && mark == "@should") return;
  const bool is_own = subject >= 0 && agent >= 0 && graph.arc(subject).to == graph.arc(agent).to;
  if (mark.empty() || subject < 0 || (is_own && !is_open) || has_attribute(graph.word(what), "@asked")) return;
  constexpr std::array kKnown{"@past", "@pres", "@fut",    "@would", "@imp",   "@perf",  "@can",
                              "@must", "@may",  "@should", "@ask",   "@quote", "@likely"};
  // "She ordered that the gate should be opened": it does not open by itself.
  constexpr std::array kCausable{"burn", "open", "close",  "shut",  "break", "move", "stop",   "ring",
                                 "boil", "sink", "hang",   "turn",  "fill",  "sell", "gather", "start",
                                 "end",  "melt", "change", "bring", "cook",  "cut",  "wake",   "drown"};
  if (mark == "@should" && is_one_of(graph, what, kCausable) && graph.arc(subject).role == "ARG1")
    attribute_add(graph.word(what), "@psv");
  // What is joined to it is told of the same time.
  for (int steps = graph.count(); what >= 0 && steps > 0; --steps) {
    const Concept& clause = graph.word(what);
    const bool is_known =
        std::any_of(kKnown.begin(), kKnown.end(), [&](const char* one) { return has_attribute(clause, one); });
    const bool is_told = is_event(graph, what) && !is_known;
    if (is_open || is_told) attribute_add(graph.word(what), mark);
    const int next = is_open ? -1 : graph.child(what, "conjunct");
    what = next >= 0 ? graph.arc(next).to : -1;
  }
}

// For each concept whether it is among the words of a quotation.
std::vector<bool> quoted_words(Rewriter& graph) {
  std::vector<int> quoted;
  for (int at = 0; at < graph.count(); ++at) {
    if (has_attribute(graph.word(at), "@quote")) quoted.push_back(at);
  }
  std::vector<bool> is_said(graph.meaning().concepts.size());
  // In one walk for all quotations, so that a long dialogue costs no more than its words.
  for (const int at : clause_words(graph, std::move(quoted))) is_said[static_cast<std::size_t>(at)] = true;
  return is_said;
}

// (c / clause :condition (r / rain-01)): the condition, if somebody does it and it is not over; -1 for others. "If the
// wall was painted" leaves open when that was.
int open_condition(Rewriter& graph, int at) {
  const int led = graph.child(at, "condition");
  const int if_so = led >= 0 ? graph.arc(led).to : -1;
  if (if_so < 0 || has_attribute(graph.word(if_so), "@past")) return -1;
  const bool is_passive = graph.child(if_so, "ARG0") < 0 && graph.child(if_so, "ARG1") >= 0;
  return is_passive ? -1 : if_so;
}

// "If it rains or snows, we stay": the first of them has its tense from its place behind "if", the others from here.
void tense_of_condition(Rewriter& graph, int at) {
  const int if_so = open_condition(graph, at);
  int joined = if_so < 0 ? -1 : graph.child(if_so, "conjunct");
  for (int steps = graph.count(); joined >= 0 && steps > 0; --steps) {
    const int part = graph.arc(joined).to;
    const Concept& word = graph.word(part);
    if (has_attribute(word, "@v") && !has_attribute(word, "@past")) attribute_add(graph.word(part), "@pres");
    joined = graph.child(part, "conjunct");
  }
}

// "You sit here and wait": what is joined to a clause about the same person is told of the same time.
void tense_of_joined(Rewriter& graph, int at) {
  const int next = graph.child(at, "conjunct");
  const int part = next >= 0 ? graph.arc(next).to : -1;
  if (part < 0 || graph.child(part, "shared") < 0 || !has_attribute(graph.word(at), "@pres")) return;
  const Concept& word = graph.word(part);
  const bool is_open = !has_attribute(word, "@past") && !has_attribute(word, "@fut") && !has_attribute(word, "@imp");
  if (is_open && has_attribute(word, "@v")) attribute_add(graph.word(part), "@pres");
}

// Who asks you what happens means now, "what are you doing?"; with a condition it is still to come, "will you stay if it
// rains?"
void tense_of_question(Rewriter& graph, int at, bool is_to_you) {
  Concept& clause = graph.word(at);
  if (!has_attribute(clause, "@ask") && !has_attribute(clause, "@int")) return;
  if (open_condition(graph, at) >= 0) {
    // "Can you stay if it rains?" has its modal verb.
    constexpr std::array kModal{"@can", "@must", "@should", "@may", "@maynot", "@likely", "@would"};
    const bool is_modal =
        std::any_of(kModal.begin(), kModal.end(), [&](const char* one) { return has_attribute(clause, one); });
    if (!is_modal) attribute_add(clause, "@fut");
    return;
  }
  // "Did you sleep on Monday?", "can you swim?": another time, or none in particular.
  constexpr std::array kStanding{"@can", "@must", "@should", "@may", "@maynot", "@likely", "@perf", "@habit", "@neg"};
  const int when = graph.child(at, "time");
  const bool is_timed =
      graph.child(at, "frequency") >= 0 || (when >= 0 && !graph.is(graph.arc(when).to, "now")) ||
      std::any_of(kStanding.begin(), kStanding.end(), [&](const char* one) { return has_attribute(clause, one); });
  // What lasts has no progressive: "do you see it?"
  constexpr std::array kLasting{"see",    "hear",     "smell",  "like",       "love",  "hate",     "want",
                                "need",   "remember", "mind",   "have",       "know",  "mean",     "believe",
                                "prefer", "own",      "belong", "understand", "agree", "disagree", "deserve",
                                "matter", "doubt",    "care",   "suppose",    "hope",  "lack"};
  const bool is_alone = graph.child(at, "shared") < 0 && graph.child(at, "conjunct") < 0;
  // "How long have you lived here?"
  const int asked = graph.child(at, "questioned");
  constexpr std::array kGoing{"live", "wait", "work", "know", "be-located-at", "study", "sit", "stand", "stay"};
  const bool is_since = asked >= 0 && has_attribute(graph.word(graph.arc(asked).to), "@wh_duration");
  if (is_since && is_to_you && is_one_of(graph, at, kGoing)) {
    std::erase(clause.attributes, "@pres");
    return attribute_add(clause, "@perf");
  }
  if (is_to_you && is_alone && !is_one_of(graph, at, kLasting) && !is_timed) attribute_add(clause, "@now");
}

// (t / tell-01 :mode imperative :ARG1 (p / pay-01 :ARG0 i :time (c / come-01 ...))): "tell him that I will pay when my
// ship comes", and "tell him that I am here": what somebody is to say is no story of the past.
void tense_of_message(Rewriter& graph, int at) {
  const bool is_bidden = has_attribute(graph.word(at), "@imp") && is_one_of(graph, at, kSaying);
  const int led = is_bidden ? graph.child(at, "ARG1") : -1;
  const int told = led >= 0 ? graph.arc(led).to : -1;
  if (told < 0 || !is_event(graph, told) || graph.parent(told) != led) return;
  const int about = subject_arc(graph, told);
  if (about < 0 || graph.child(told, "questioned") >= 0) return;
  if (has_attribute(graph.word(told), "@past") || has_attribute(graph.word(told), "@perf")) return;
  const int then = graph.child(told, "time");
  const bool is_to_come = then >= 0 && is_clause(graph, graph.arc(then).to);
  const bool is_own = is_one_of(graph, graph.arc(about).to, std::array{"i", "we", "you"});
  if (is_to_come || is_own) attribute_add(graph.word(told), is_to_come ? "@fut" : "@pres");
  tense_of_coming(graph, told);
}

}  // namespace

// Banks of AMR have no tense. What UMR gives, the attributes @past, @pres, @fut, is left alone; the rest is a guess by
// who is spoken of, since talk with "you" is about now and a story about "her" is past. Words inside of a quotation,
// `is_said`, are talk, whoever they are about. Runs behind quotation and questions, whose marks it asks for.
void step_tense(Meaning& meaning) {
  Rewriter graph(meaning, "tense");
  const std::vector<bool> is_said = quoted_words(graph);
  for (int at = 0; at < graph.count(); ++at) {
    const bool is_talk = is_said[static_cast<std::size_t>(at)];
    tense_from_time(graph, at);
    tense_of_age(graph, at);
    tense_of_place(graph, at);
    if (!is_talk) tense_beside(graph, at);
    if (!is_talk) tense_until(graph, at);
    Concept& clause = graph.word(at);
    const bool is_lasting = has_attribute(clause, "@state") || has_attribute(clause, "@habit");
    if (is_lasting && !has_attribute(clause, "@past") && !has_attribute(clause, "@fut")) attribute_add(clause, "@pres");
    const bool is_known = has_attribute(clause, "@past") || has_attribute(clause, "@pres") ||
                          has_attribute(clause, "@fut") || has_attribute(clause, "@imp") ||
                          !has_attribute(clause, "@v");
    // "If the bridge breaks?"
    if (!is_known && has_attribute(clause, "@as_condition")) attribute_add(clause, "@pres");
    tense_of_unreal(graph, at);
    tense_of_coming(graph, at);
    tense_of_thanks(graph, at);
    const int subject = told_of(graph, at);
    // "Who told you that?"
    const bool is_who = subject >= 0 && is_unknown(graph, graph.arc(subject).to);
    // What UMR calls done is over, though somebody says it.
    const bool is_speech =
        has_attribute(clause, "@quote") && subject >= 0 && !is_who && !has_attribute(clause, "@done");
    const bool is_to_you = subject >= 0 && graph.is(graph.arc(subject).to, "you");
    if (!is_known && (is_speech || is_to_you)) attribute_add(clause, "@pres");
    tense_of_condition(graph, at);
    tense_of_joined(graph, at);
    if (!is_known) tense_of_question(graph, at, is_to_you);
    tense_of_content(graph, at);
    tense_of_message(graph, at);
    if (!is_talk && is_told_of_another(graph, at)) attribute_add(clause, "@past");
  }
  for (int at = 0; at < graph.count(); ++at) {
    if (!is_said[static_cast<std::size_t>(at)]) tense_in_story(graph, at);
    tense_of_bound(graph, at);
  }
}

}  // namespace lexon
