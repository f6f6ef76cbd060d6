// Steps about what people say and ask: who speaks, quotations, questions.
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

// Those of them that say no more than that words were said: with these a reader expects the words themselves.
constexpr std::array kUttering{"say",    "answer", "reply", "exclaim",  "cry",     "remark",
                               "repeat", "murmur", "shout", "call-out", "respond", "whisper"};

// Words that say who speaks to whom, and moods that only one who speaks has.
// "He said that I know you" is a report only if the speaker of the whole sentence is meant, which no graph tells: such
// words make it direct speech.
bool has_speaker(Rewriter& graph, int clause) {
  const std::vector<int> words = clause_words(graph, {clause});
  return std::any_of(words.begin(), words.end(), [&](int at) {
    constexpr std::array kMoods{"@imp", "@int", "@exp", "@ask"};
    const auto has_mood = [&](const char* mood) { return has_attribute(graph.word(at), mood); };
    return is_unknown(graph, at) || graph.is(at, "i") || graph.is(at, "we") || graph.is(at, "you") ||
           std::any_of(kMoods.begin(), kMoods.end(), has_mood);
  });
}

// What is said without being a clause can only be its words: "Good morning", she said. Not so for words that stand for
// what somebody said.
bool is_said_so(Rewriter& graph, int frame, int at) {
  constexpr std::array kStandIn{"that",        "this",    "it",       "so",         "thing",
                                "something",   "nothing", "anything", "everything", "word",
                                "information", "name",    "truth",    "story",      "speech"};
  // "Forty years," he thought, "and nobody thanks me": a clause is joined to what is none.
  const int joined = graph.child(at, "conjunct");
  const bool is_mixed = joined >= 0 && is_clause(graph, graph.arc(joined).to) && graph.is(frame, "think", "01");
  return (is_one_of(graph, frame, kUttering) || is_mixed) && !is_clause(graph, at) && graph.mentions(at) == 1 &&
         !is_one_of(graph, at, kStandIn) && !has_attribute(graph.word(at), "@name");
}

// Who speaks is I in his own words, and to whom he speaks is you; not so where the source has made an I or you of them
// itself. Somebody who speaks to himself is I.
void speak_of_oneself(Rewriter& graph, int frame, int said, int speaker, int hearer) {
  const std::vector<int> words = clause_words(graph, {said});
  const auto has_own = [&](const char* name) {
    return std::any_of(words.begin(), words.end(), [&](int at) { return graph.is(at, name); });
  };
  const bool has_i = has_own("i") || has_own("we");
  const bool has_you = has_own("you");
  // One concept each, so that what is meant twice is known to be the same.
  int i = -1;
  int you = -1;
  for (const int at : words) {
    // Where the graph leads in a circle, the frame itself is among what is said.
    if (at == frame || at == speaker || at == hearer) continue;
    for (const int led : graph.children(at)) {
      const bool is_speaker = graph.arc(led).to == speaker;
      const bool is_person = (is_speaker && !has_i) || (graph.arc(led).to == hearer && !is_speaker && !has_you);
      // "Close your eyes": a part is written from its whole.
      if (!is_person || (graph.arc(led).inverse && graph.arc(led).role != "part")) continue;
      int& person = is_speaker ? i : you;
      if (person < 0) person = graph.add_concept(is_speaker ? "i" : "you");
      attribute_add(graph.word(person), is_speaker ? "@p1" : "@p2");
      graph.lead_to(led, person);
    }
  }
}

// What has no place for words in front of it: a clause inside of another, and one that is denied, asked, bidden or only
// possible.
bool is_no_frame_of_words(Rewriter& graph, int at) {
  for (const char* mark : {"@neg", "@int", "@imp", "@can", "@must", "@should"}) {
    if (has_attribute(graph.word(at), mark)) return true;
  }
  // "What did she shout at the boy?"
  for (const int below : graph.children(at)) {
    if (is_unknown(graph, graph.arc(below).to) && graph.child(graph.arc(below).to, "domain") < 0) return true;
  }
  int led = graph.parent(at);
  for (int steps = graph.count(); led >= 0 && graph.arc(led).role == "conjunct" && steps > 0; --steps)
    led = graph.parent(graph.arc(led).from);
  if (led < 0) return false;
  constexpr std::array kInside{"time",   "temporal",   "condition", "concession", "purpose", "cause",
                               "reason", "conj-as-if", "manner",    "source",     "topic",   "op1"};
  const std::string& role = graph.arc(led).role;
  return is_core_role(role) || (!graph.arc(led).inverse && is_listed(role, kInside));
}

// "Before the king said that you should wait": an order and a question that are reported.
void report_mood(Rewriter& graph, int said) {
  if (std::erase(graph.word(said).attributes, "@imp") > 0) attribute_add(graph.word(said), "@should");
  if (std::erase(graph.word(said).attributes, "@int") > 0) attribute_add(graph.word(said), "@whether");
}

// Behind a quotation a verb without an auxiliary stands before its subject, if that is no pronoun: "Come," said the king.
// `who` and `whom` are the arcs to him and to the hearer, who may be missing.
void speaker_behind(Rewriter& graph, int at, int who, int whom) {
  const int subject = graph.arc(who).to;
  const bool is_pronoun = is_personal_pronoun(graph, subject) || graph.word(subject).name == "one";
  const bool is_plain = !has_attribute(graph.word(at), "@neg") && !has_attribute(graph.word(at), "@ask") &&
                        !has_attribute(graph.word(at), "@int") && !has_attribute(graph.word(at), "@can");
  // "..., the girl asked the driver": turned round, two nouns would stand side by side.
  constexpr std::array kBareHearer{"ask", "tell", "answer", "warn", "interrupt"};
  // "..., the men who rowed us grumbled": between the verb and its end nothing long may stand.
  const std::vector<int> told = graph.children(subject);
  const bool is_long = std::any_of(told.begin(), told.end(), [&](int led) {
    return graph.arc(led).inverse && !graph.children(graph.arc(led).to).empty();
  });
  const bool is_heavy = is_long && graph.children(at).size() > 2;
  const bool is_beside_hearer = (whom >= 0 && is_one_of(graph, at, kBareHearer)) || graph.is(at, "go-on", "25");
  if (!is_plain || is_pronoun || is_beside_hearer || is_heavy) return;
  graph.arc(who).role = "speaker";
  const int office = graph.child(subject, "apposition");
  if (office >= 0) std::erase(graph.word(graph.arc(office).to).attributes, "@closed");
}

// (o / offer-01 :ARG0 (s / she) :ARG1 (t / take-01 :mode interrogative ...)): a question or an order, of which no verb of
// knowing tells, can only be somebody's words, whatever the verb: "May I take it?" she offered.
bool is_uttered(Rewriter& graph, int at, const char* role) {
  const int led = graph.child(at, role);
  const int said = led >= 0 ? graph.arc(led).to : -1;
  constexpr std::array kOwn{"let", "make", "cause", "want", "seem", "matter", "depend", "thank"};
  const int who = graph.child(at, "ARG0");
  if (said < 0 || who < 0 || graph.word(at).sense.empty() || graph.word(at).sense == "91" || is_one_of(graph, at, kOwn))
    return false;
  const bool is_mood = has_attribute(graph.word(said), "@imp") || has_attribute(graph.word(said), "@int");
  return is_mood && is_clause(graph, said) && !is_one_of(graph, at, kReporting) && !is_clause(graph, graph.arc(who).to);
}

// (s / say-01 :ARG0 (k / king) :ARG1 (c / come-01 :mode imperative) :ARG2 (b / boy)): "Come," said the king. `led` is
// the arc to what is said, `who` that to the speaker and `whom` to the hearer; verbs of answering number the last two
// the other way round.
void quote(Rewriter& graph, int at) {
  // Who answers says the answer to a question.
  constexpr std::array kAnswering{"answer", "reply", "respond", "interrupt"};
  const bool is_answer = is_one_of(graph, at, kAnswering) || is_uttered(graph, at, "ARG2");
  const int led = graph.child(at, is_answer ? "ARG2" : "ARG1");
  const int who = graph.child(at, "ARG0");
  int whom = graph.child(at, is_answer ? "ARG1" : "ARG2");
  if (led < 0 || who < 0) return;
  const int said = graph.arc(led).to;
  if (is_unknown(graph, said) && graph.child(said, "domain") < 0) return;
  // Whoever asks does not ask whether he asks: the question is what he says.
  // "Can I ask you something?" asks itself.
  const bool is_possible = has_attribute(graph.word(at), "@can") || has_attribute(graph.word(at), "@may");
  if (graph.is(at, "ask", "01") && has_attribute(graph.word(at), "@int") && !is_possible &&
      !graph.is(graph.arc(who).to, "you")) {
    std::erase(graph.word(at).attributes, "@int");
    attribute_add(graph.word(said), "@int");
  }
  // "I said to you that ...": who says I inside is the same, so the sentence may as well report it.
  const auto speaks_itself = [&](int arc_at) {
    if (arc_at < 0) return false;
    const int person = graph.arc(arc_at).to;
    return graph.is(person, "i") || graph.is(person, "you") || graph.is(person, "we");
  };
  // "You are late," she said: who is you inside is the hearer, and need not be told.
  const bool is_to_you = whom >= 0 && graph.is(graph.arc(whom).to, "you") && !speaks_itself(who) &&
                         graph.mentions(graph.arc(whom).to) > 1 && is_clause(graph, said);
  if (is_to_you) {
    graph.remove(whom, Fate::left_out);
    whom = -1;
  }
  const int subject = subject_arc(graph, said);
  const bool is_to_oneself = whom >= 0 && graph.arc(who).to == graph.arc(whom).to;
  const bool is_asked_to = whom >= 0 && subject >= 0 && graph.arc(subject).to == graph.arc(whom).to && !is_to_oneself;
  // "Hide!" I said: an order is nobody's report, but "I told you to hide".
  const bool is_own_order = whom < 0 && graph.is(graph.arc(who).to, "i") && is_one_of(graph, at, kUttering);
  const bool is_order = has_attribute(graph.word(said), "@imp") && (!speaks_itself(who) || is_own_order);
  const bool is_reported = has_attribute(graph.word(said), "@whether") || has_attribute(graph.word(said), "@asked");
  if (is_reported || (is_asked_to && !is_order)) return;
  // "My teacher suggested that I read": whose teacher he is, is I in what he says.
  const int owner = graph.child(graph.arc(who).to, "poss");
  const bool is_other = !speaks_itself(who) && !speaks_itself(whom) && !speaks_itself(owner);
  const bool is_direct = (is_other || is_order) && (has_speaker(graph, said) || is_said_so(graph, at, said));
  // What the sentence is about, or is joined to that, is told; what stands below is spoken of.
  const int above = graph.parent(at);
  const bool is_told = at == graph.meaning().root || above < 0 || !is_core(graph.arc(above));
  constexpr std::array kTakingTurns{"ask", "add", "demand", "interrupt", "go-on"};
  const bool is_uttering = is_one_of(graph, at, kUttering) || is_one_of(graph, at, kTakingTurns);
  const bool is_report = is_told && is_clause(graph, said) && is_uttering && !has_attribute(graph.word(at), "@neg") &&
                         !has_attribute(graph.word(at), "@can");
  if (is_report && is_other) {
    ++graph.meaning().reports;
    graph.meaning().quotations += is_direct;
  }
  if (!is_direct && !(is_report && graph.meaning().is_dialogue)) return;
  if (is_no_frame_of_words(graph, at)) return report_mood(graph, said);
  graph.arc(led).role = "quoted";
  attribute_add(graph.word(said), "@quote");
  // In front of a quotation "still" would be a part of it.
  if (std::erase(graph.word(at).attributes, "@so_concession") > 0) attribute_add(graph.word(at), "@lead_but");
  speak_of_oneself(graph, at, said, graph.arc(who).to, whom >= 0 ? graph.arc(whom).to : -1);
  // The quotation stands in front, so "then" cannot: '"Stop!" she said then.'
  const int when = graph.child(at, "time");
  if (when >= 0 && graph.word(graph.arc(when).to).sense.empty()) attribute_add(graph.word(graph.arc(when).to), "@late");
  speaker_behind(graph, at, who, whom);
}

// What a frame's numbered role is called when it is asked for.
// The name becomes an attribute, @wh_location, by which rules choose where, when, who; what a number means differs from
// frame to frame.
std::string asked_role(Rewriter& graph, int frame, const std::string& role) {
  // "Where is the key": what a place is said of has no other verb.
  const bool is_place = graph.is(frame, "be-located-at", "91") || graph.is(frame, "have-place", "91");
  if (is_place && role == "ARG2") return "location";
  // "Where do you take it": the place that something is moved to has another number in each frame.
  const bool is_goal = (role == "ARG3" && graph.is(frame, "take", "01")) ||
                       (role == "ARG2" && (graph.is(frame, "bring", "01") || graph.is(frame, "put", "01") ||
                                           graph.is(frame, "send", "01") || graph.is(frame, "carry", "01")));
  if (is_goal) return "destination";
  // "How much does it weigh", "how long did it last".
  const bool is_amount =
      (graph.is(frame, "weigh", "01") && role == "ARG3") || (graph.is(frame, "cost", "01") && role == "ARG2");
  const bool is_duration =
      (graph.is(frame, "last", "01") && role == "ARG2") || (graph.is(frame, "take", "10") && role == "ARG1");
  // "Where do you come from": the preposition stays behind.
  constexpr std::array kLeaving{"come",   "go",   "travel",   "move",   "arrive",
                                "escape", "flee", "emigrate", "return", "fly"};
  const bool is_start = role == "ARG3" && is_one_of(graph, frame, kLeaving);
  return is_amount ? "amount" : is_duration ? "duration" : is_start ? "source" : role;
}

// True if a role of a frame is mostly that of a person: "who sent it", not "what sent it".
bool is_somebody(Rewriter& graph, int frame, const std::string& role) {
  // What makes something so may be a thing as well as a person.
  constexpr std::array kCausing{
      "cause",  "make",     "frighten", "scare",  "surprise", "worry",   "happen",    "mean",    "prevent", "hurt",
      "please", "bother",   "upset",    "annoy",  "interest", "affect",  "change",    "bring",   "trigger", "enable",
      "matter", "fall",     "allow",    "lead",   "disturb",  "sadden",  "excite",    "break",   "follow",  "have-part",
      "prove",  "indicate", "motivate", "result", "explain",  "amuse",   "influence", "contain", "move",    "keep",
      "drive",  "attract",  "wake",     "stop",   "inspire",  "trouble", "puzzle"};
  constexpr std::array kComing{"come", "arrive", "die", "go", "live", "fall-asleep", "survive", "return"};
  constexpr std::array kMet{"marry", "meet",    "arrest", "hire",   "invite", "elect",   "murder", "thank",    "accuse",
                            "trust", "blame",   "greet",  "kiss",   "hug",    "belong",  "help",   "warn",     "punish",
                            "envy",  "forgive", "obey",   "admire", "fight",  "quarrel", "kill",   "accompany"};
  if (graph.is(frame, "have-rel-role", "91") || graph.is(frame, "have-org-role", "91")) return role == "ARG0";
  if (role == "ARG0")
    return is_event(graph, frame) && !is_one_of(graph, frame, kCausing) && graph.word(frame).sense != "91";
  if (role == "ARG1") {
    const bool is_subject = graph.child(frame, "ARG0") < 0 && is_one_of(graph, frame, kComing);
    return is_subject || is_one_of(graph, frame, kMet);
  }
  constexpr std::array kHearing{"talk",  "speak",     "argue",     "agree", "quarrel", "fight",   "chat",
                                "joke",  "negotiate", "say",       "ask",   "answer",  "whisper", "complain",
                                "shout", "listen",    "apologize", "reply", "write",   "explain"};
  const bool is_hearer = graph.child(frame, "ARG0") >= 0 && (gives(graph, frame) || is_one_of(graph, frame, kHearing));
  return role == "accompanier" || role == "beneficiary" || (role == "ARG2" && is_hearer);
}

// (a / amr-unknown :domain (y / you)): what is asked for is the predicate. As :domain of the other it is the one word that
// moves: "who are you".
void asked_predicate(Rewriter& graph, int unknown) {
  // (a / ask-01 :ARG1 (y / you :mod (a2 / amr-unknown))): "who are you?", as nobody asks which you.
  const int named = graph.parent(unknown);
  if (named >= 0 && !graph.arc(named).inverse && graph.arc(named).role == "mod" &&
      is_personal_pronoun(graph, graph.arc(named).from))
    graph.arc(named).role = "domain";
  const int said = graph.child(unknown, "domain");
  const int about = said >= 0 ? graph.arc(said).to : -1;
  if (about < 0 || graph.mentions(about) != 1) return;
  graph.redirect(unknown, about);
  graph.replace(said, about, unknown, "domain");
  for (const int below : graph.children(unknown)) graph.lead_from(below, about);
  // What it says of the clause goes with it, and so does its conjunction.
  for (const char* mark : {"@quote", "@and", "@but", "@or", "@snt"}) {
    if (std::erase(graph.word(unknown).attributes, mark) > 0) attribute_add(graph.word(about), mark);
  }
}

// "Tell me what it is": in the order of a statement what is asked for stands in front of what it is said of; "who is that
// man": what is pointed at, or somebody's, is no predicate. Both stand below a frame of being, which takes the place of
// the clause and has `mark`.
void predicate_below_being(Rewriter& graph, int about, int led, const char* mark) {
  const int being = graph.add_concept("be-located-at");
  graph.word(being).sense = "91";
  attribute_add(graph.word(being), "@v");
  std::erase(graph.word(graph.arc(led).to).attributes, "@asked");
  graph.redirect(about, being);
  graph.add(being, about, "ARG1");
  attribute_add(graph.word(being), mark);
  for (const char* role : {"time", "conjunct"}) {
    if (const int outer = graph.child(about, role); outer >= 0) graph.lead_from(outer, being);
  }
  for (const char* outer :
       {"@quote", "@and", "@but", "@or", "@snt", "@past", "@pres", "@lead_and", "@lead_but", "@lead_or"}) {
    if (std::erase(graph.word(about).attributes, outer) > 0) attribute_add(graph.word(being), outer);
  }
  graph.replace(led, being, graph.arc(led).to, "questioned");
}

// (l / lamp :purpose (a / amr-unknown)): "what is the lamp for?". "Why" would ask for a cause, of which a thing has none.
// False for what is done or said to be something.
bool asked_use(Rewriter& graph, int led) {
  const int about = graph.arc(led).from;
  if (graph.arc(led).role != "purpose" || !graph.word(about).sense.empty() || about != graph.meaning().root)
    return false;
  const int said = graph.child(about, "domain");
  if (said >= 0 && !is_one_of(graph, graph.arc(said).to, kDemonstratives)) return false;
  // "This lamp", and no lamp that this is.
  if (said >= 0) graph.arc(said).role = "mod";
  predicate_below_being(graph, about, led, "@ask");
  graph.add(graph.meaning().root, graph.add_concept("for"), "particle");
  return true;
}

// "Hello. What are you doing?": what is asked last ends the whole chain.
void ends_with_question(Rewriter& graph, int asked) {
  if (graph.child(asked, "conjunct") >= 0) return;
  int head = asked;
  for (int steps = graph.count(); steps > 0; --steps) {
    const int above = graph.parent(head);
    if (above < 0 || graph.arc(above).role != "conjunct") break;
    head = graph.arc(above).from;
  }
  if (head != asked) attribute_add(graph.word(head), "@ends_int");
}

// A phrase that is no part of a clause asks by itself; `led` is the arc to it, or -1. False for any other.
bool asked_alone(Rewriter& graph, int phrase, int led) {
  const bool is_joined = led >= 0 && graph.arc(led).role == "conjunct" && is_clause(graph, graph.arc(led).from);
  if (led >= 0 && !is_joined && graph.arc(led).role != "quoted") return false;
  attribute_add(graph.word(phrase), "@ask");
  // "We do not write that. What kind?"
  if (is_joined && std::erase(graph.word(phrase).attributes, "@and") > 0) attribute_add(graph.word(phrase), "@snt");
  ends_with_question(graph, phrase);
  return true;
}

// What is asked for, on its way to the front of a clause.
struct Asked {
  int unknown;
  int phrase;        // what moves: the unknown itself, or the noun that it belongs to
  int led;           // the arc to the phrase
  std::string role;  // of the phrase in its clause; "destination" and the like where asked_role has a name for it
  int steps;         // left for the walks up: a graph may have a circle there, and more steps than concepts are none
};

// (a / afraid-01 :ARG1 (o / of :op1 (a2 / amr-unknown))): "what are you afraid of", the preposition stays with its verb.
void strand_preposition(Rewriter& graph, int led) {
  const int governed = graph.parent(graph.arc(led).from);
  if (graph.arc(led).role != "op1" || governed < 0 || graph.arc(governed).role != "prep") return;
  graph.arc(governed).role = "particle";
  graph.lead_from(led, graph.arc(governed).from);
  graph.arc(led).role = "prep";
}

// (s / see-01 :ARG1 (s2 / star :quant (a / amr-unknown))): "how many stars", "whose hat", the noun goes along. False if
// the phrase belongs to no clause that could ask for it, or asks by itself.
bool take_noun_along(Rewriter& graph, Asked& asked) {
  constexpr std::array kOfNoun{"quant", "poss", "mod", "degree", "possessor", "age"};
  // A verb or a predicate stays where it is; the driver is a noun, and so is what only a place is said of.
  const auto is_phrase = [&](int at) {
    const int above = graph.parent(at);
    return !is_clause(graph, at) || has_attribute(graph.word(at), "@agent") ||
           (above >= 0 && graph.is(graph.arc(above).from, "be-located-at", "91"));
  };
  while (is_phrase(graph.arc(asked.led).from) && is_listed(asked.role, kOfNoun)) {
    if (--asked.steps < 0) return false;
    attribute_add(graph.word(asked.unknown), "@wh_" + asked.role);
    asked.phrase = graph.arc(asked.led).from;
    const int above = graph.parent(asked.phrase);
    // "What a good idea!" asks nothing.
    if (has_attribute(graph.word(asked.phrase), "@exp")) return false;
    // "How many stars?" he asked: what is said is the phrase alone.
    if (asked_alone(graph, asked.phrase, above)) return false;
    attribute_add(graph.word(asked.phrase), "@wh");
    asked.led = above;
    asked.role = graph.arc(above).role;
    if (graph.arc(above).inverse) return false;
  }
  return true;
}

// "They quarreled about whose turn it was": what they quarrel about is the phrase, and nobody is asked.
bool is_disputed(Rewriter& graph, const Asked& asked) {
  constexpr std::array kDisputing{"quarrel", "argue", "debate", "discuss", "wonder", "inquire", "dispute", "decide"};
  const int at = graph.arc(asked.led).from;
  const int subject = subject_arc(graph, at);
  return asked.phrase != asked.unknown && is_one_of(graph, at, kDisputing) && !has_attribute(graph.word(at), "@int") &&
         subject >= 0 && !graph.is(graph.arc(subject).to, "you");
}

// The clause in front of which the phrase comes to stand, and whether it reports the question.
struct AskingClause {
  int at;
  bool is_reported;
};

// The question is that of the highest clause that the phrase can move to: "where do you want to go". A verb of knowing
// ends the way: "I know where he lives"; so does "no matter where he lives".
AskingClause asking_clause(Rewriter& graph, Asked& asked) {
  int clause = graph.arc(asked.led).from;
  bool is_reported = false;
  while (clause != graph.meaning().root && !has_attribute(graph.word(clause), "@quote") && --asked.steps > 0) {
    int above = graph.parent(clause);
    is_reported = above >= 0 && graph.is(graph.arc(above).from, "no-matter");
    // "He asked why she left and where she went": the second question is told like the first.
    if (above >= 0 && graph.arc(above).role == "conjunct") {
      for (; above >= 0 && graph.arc(above).role == "conjunct" && --asked.steps > 0;)
        above = graph.parent(graph.arc(above).from);
      if (above < 0 || !is_core(graph.arc(above)) || !is_one_of(graph, graph.arc(above).from, kReporting)) break;
    }
    if (above < 0 || !is_core(graph.arc(above))) break;
    const int governor = graph.arc(above).from;
    // "Think where you left it": elsewhere who thinks does not know, "where do you think you left it".
    const bool is_bidden = graph.is(governor, "think", "01") && has_attribute(graph.word(governor), "@imp");
    if (is_bidden || is_one_of(graph, governor, kReporting) || has_attribute(graph.word(governor), "@int"))
      return {clause, true};
    clause = governor;
  }
  return {clause, is_reported};
}

// "Who are you", "who sent it": a person is asked for, and not a thing, a place or a number.
bool asks_who(Rewriter& graph, const Asked& asked) {
  if (asked.phrase != asked.unknown) return false;
  const int at = graph.arc(asked.led).from;
  if (asked.role != "domain") return is_somebody(graph, at, asked.role);
  const bool is_pronoun = is_personal_pronoun(graph, at) && graph.word(at).name != "it";
  constexpr std::array kPeople{"person", "man", "woman", "boy", "girl", "child", "guy", "lady", "fellow", "people"};
  return is_pronoun || is_one_of(graph, at, kPeople) || has_attribute(graph.word(at), "@person");
}

// "What are you filling it with", "who did you give it to": the preposition stays behind with its verb, as a particle
// where the role tells which it is, else as the one that the verb has for the number of the role, @st2.
void leave_preposition(Rewriter& graph, const Asked& asked, bool is_person, bool is_subject) {
  constexpr std::pair<std::string_view, const char*> kPrepositions[] = {
      {"accompanier", "with"}, {"beneficiary", "for"}, {"topic", "about"}, {"source", "from"}};
  // "Which street do you live in", "whose spoon did you stir it with": for such a role alone there is another word.
  constexpr std::pair<std::string_view, const char*> kOfPhrases[] = {
      {"location", "in"}, {"instrument", "with"}, {"path", "by"}, {"destination", "to"}, {"direction", "to"}};
  const int at = graph.arc(asked.led).from;
  const bool is_free = graph.child(at, "particle") < 0;
  for (const auto& [role, preposition] : kOfPhrases) {
    const bool is_phrase = asked.phrase != asked.unknown && is_event(graph, at) && graph.word(at).sense != "91" &&
                           graph.word(asked.phrase).sense.empty();
    if (is_free && is_phrase && asked.role == role) graph.add(at, graph.add_concept(preposition), "particle");
  }
  for (const auto& [role, preposition] : kPrepositions) {
    if (is_free && asked.role == role) graph.add(at, graph.add_concept(preposition), "particle");
  }
  // What is thought or known stands behind its verb without a preposition.
  constexpr std::array kThinking{"think", "know", "hear", "say", "tell", "believe", "learn"};
  const bool is_object = asked.role == "ARG1" && !is_subject && !is_one_of(graph, at, kThinking);
  if (asked.role == "ARG2" && is_person && gives(graph, at))
    attribute_add(graph.word(at), "@stto");
  else if (is_object || asked.role == "ARG2" || asked.role == "ARG3")
    attribute_add(graph.word(at), "@st" + asked.role.substr(3));
}

// "Who do you think came": the clause that tells what is thought keeps the place of its subject, which nothing says and
// which the verb agrees with. Without it the object would be taken for what the verb speaks of.
// False where it is no subject that is asked for, or no such clause.
bool leave_subject(Rewriter& graph, const Asked& asked) {
  constexpr std::array kHolding{"think", "believe", "say", "suppose", "guess", "imagine", "claim", "reckon"};
  const int at = graph.arc(asked.led).from;
  const int above = graph.parent(at);
  const bool is_held = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                       is_one_of(graph, graph.arc(above).from, kHolding);
  const bool is_first = asked.role == "ARG1" && graph.child(at, "ARG0") < 0;
  if (!is_held || !is_event(graph, at) || (asked.role != "ARG0" && !is_first)) return false;
  const bool is_plural = has_attribute(graph.word(asked.phrase), "@pl");
  graph.add(at, graph.add_concept(is_plural ? "they" : "it"), "shared");
  if (is_first) attribute_add(graph.word(at), "@shr1");
  graph.replace(asked.led, graph.arc(above).from, asked.phrase, "questioned");
  return true;
}

// (w / want-01 :ARG0 (y / you) :ARG1 (g / go-02 :ARG0 y :location (a / amr-unknown))): "where do you want to go".
// What is asked for moves to the front of its clause, together with the phrase that it belongs to (how many stars), and
// becomes :questioned there. The clause and the phrase must know of it, @ask or @asked and @wh_ with the role.
void question(Rewriter& graph, int unknown) {
  asked_predicate(graph, unknown);
  if (unknown == graph.meaning().root) attribute_add(graph.word(unknown), "@ask");
  const int led = graph.parent(unknown);
  if (led < 0 || graph.arc(led).inverse) return;
  strand_preposition(graph, led);
  attribute_add(graph.word(unknown), "@wh");
  Asked asked{unknown, unknown, led, graph.arc(led).role, graph.count()};
  if (!take_noun_along(graph, asked) || is_disputed(graph, asked)) return;
  const int asked_at = graph.arc(asked.led).from;
  if (asked.phrase == unknown && asked_use(graph, asked.led)) return;
  auto [clause, is_reported] = asking_clause(graph, asked);
  // A subject stands in front already: "who came".
  const bool is_subject =
      clause == asked_at && (asked.role == "ARG0" || (asked.role == "ARG1" && graph.child(clause, "ARG0") < 0) ||
                             (asked.role == "domain" && graph.is(unknown, "amr-unknown")));
  asked.role = asked_role(graph, asked_at, asked.role);
  const bool is_person = asks_who(graph, asked);
  attribute_add(graph.word(asked.phrase), is_person ? "@wh_who" : "@wh_" + asked.role);
  const bool is_predicate = asked.role == "domain" && asked.phrase == unknown && graph.word(asked_at).sense.empty();
  if (is_reported && is_predicate && graph.parent(asked_at) >= 0)
    return predicate_below_being(graph, asked_at, asked.led, "@asked");
  const bool is_known = child_among(graph, asked_at, "mod", kDemonstratives) >= 0 || graph.child(asked_at, "poss") >= 0;
  if (is_predicate && !is_reported && is_known && !has_attribute(graph.word(asked_at), "@exp")) {
    predicate_below_being(graph, asked_at, asked.led, "@ask");
    return ends_with_question(graph, graph.parent(asked_at) >= 0 ? graph.arc(graph.parent(asked_at)).from : asked_at);
  }
  // An exclamation has the order of a statement: "how beautiful she is!"
  is_reported |= has_attribute(graph.word(clause), "@exp");
  attribute_add(graph.word(clause), is_reported ? "@asked" : is_subject ? "@asksub" : "@ask");
  if (!is_reported) ends_with_question(graph, clause);
  // Some files mark the mood beside the word that asks; one mark is enough.
  std::erase(graph.word(clause).attributes, "@int");
  if (!is_subject && !is_reported && clause != asked_at && leave_subject(graph, asked)) return;
  leave_preposition(graph, asked, is_person, is_subject);
  if (!is_subject) graph.replace(asked.led, clause, asked.phrase, "questioned");
}

// Who is called is "you" everywhere else: "Kim, did you see that?"
// The name is said once, in the address; in the clause the same person is "you".
void called_apply(Rewriter& graph) {
  const int end = static_cast<int>(graph.meaning().arcs.size());
  for (int led = 0; led < end; ++led) {
    if (graph.arc(led).gone || graph.arc(led).inverse || graph.arc(led).role != "vocative") continue;
    int you = -1;
    for (int other = 0; other < end; ++other) {
      const Arc& one = graph.arc(other);
      const bool is_mention = one.to == graph.arc(led).to && !one.gone && !one.inverse && one.role != "vocative";
      if (!is_mention) continue;
      if (you < 0) you = graph.add_concept("you");
      attribute_add(graph.word(you), "@p2");
      graph.lead_to(other, you);
    }
  }
}

// (c / come-01 :mode imperative :ARG1 (h / he)): "let him come". Nobody can bid one who is not there.
// False for all others.
bool permitted_apply(Rewriter& graph, int at) {
  constexpr std::array kAbsent{"he",       "she",    "they",    "it",     "nobody",  "everybody",
                               "everyone", "no-one", "anybody", "anyone", "someone", "somebody"};
  const int led = subject_arc(graph, at);
  if (led < 0 || !is_one_of(graph, graph.arc(led).to, kAbsent) || graph.word(at).sense.empty()) return false;
  // "Close your eyes," she told him: he is there.
  const int above = graph.parent(at);
  for (const char* role : {"ARG1", "ARG2"}) {
    const int hearer = above < 0 ? -1 : graph.child(graph.arc(above).from, role);
    if (hearer >= 0 && graph.arc(hearer).to == graph.arc(led).to) return false;
  }
  std::erase(graph.word(at).attributes, "@imp");
  const int let = graph.add_concept("let");
  graph.word(let).sense = "01";
  attribute_add(graph.word(let), "@v");
  attribute_add(graph.word(let), "@imp");
  // "Do not let anybody enter", but "let nobody enter", which denies once.
  const bool is_denied = std::erase(graph.word(at).attributes, "@neg") > 0;
  constexpr std::array kNone{"nobody", "no-one"};
  if (is_denied && !is_one_of(graph, graph.arc(led).to, kNone)) attribute_add(graph.word(let), "@neg");
  graph.redirect(at, let);
  graph.add(let, at, "ARG1");
  return true;
}

// (c / come-01 :mode imperative :ARG0 (s / snail)): "come, snail". Who is bidden is called.
void bidden_apply(Rewriter& graph, int at) {
  constexpr std::array kMotion{"come",    "sit-down", "wake-up", "hurry",  "arrive",  "stand-up", "get-up",
                               "come-in", "quiet",    "silent",  "calm",   "careful", "brave",    "happy",
                               "patient", "kind",     "stay",    "return", "grow-up", "come-on",  "calm-down"};
  int led = graph.child(at, "ARG0");
  if (led < 0 && is_one_of(graph, at, kMotion)) led = graph.child(at, "ARG1");
  const int whom = led < 0 ? -1 : graph.arc(led).to;
  if (whom < 0 || is_personal_pronoun(graph, whom) || is_unknown(graph, whom) || graph.parent(whom) != led) return;
  if (!graph.word(whom).sense.empty() || graph.word(whom).variable.empty()) return;
  if (graph.child(at, "vocative") >= 0 || conjunction_of(graph, whom) != nullptr) return;
  for (const Arc& one : graph.meaning().arcs) {
    if (!one.gone && one.to == whom && is_one_of(graph, one.from, kSaying)) return;
  }
  graph.add(at, whom, "vocative");
}

// UMR marks what is uttered by :quote with the verb of saying as target: (s / say-01 :ARG0 (p / person) :ARG1 (r / rain-01
// :quote s)). True if the verb is the sentence itself.
bool take_quote_marks(Rewriter& graph) {
  bool is_utterance = false;
  for (int led = 0; led < static_cast<int>(graph.meaning().arcs.size()); ++led) {
    if (graph.arc(led).gone || graph.arc(led).inverse || graph.arc(led).role != "quote") continue;
    // The verb stands above, and the sentence leads to it without this arc; any other target would be lost with it.
    const int verb = graph.arc(led).to;
    const bool is_above = graph.reaches(verb, graph.arc(led).from);
    graph.arc(led).gone = true;
    const bool is_held = graph.reaches(graph.meaning().root, verb);
    graph.arc(led).gone = false;
    if (!is_above || !is_held) continue;
    is_utterance |= graph.arc(led).to == graph.meaning().root;
    graph.remove(led, Fate::attribute);
    attribute_add(graph.word(graph.arc(led).from), "@quote");
  }
  return is_utterance;
}

}  // namespace

// UMR puts an utterance below (s / say-01 :ARG0 (p / person) :ARG1 c :ARG2 (p2 / person) :quote s). A reader of the
// sentence has c alone, in which p is "I" and p2 is "you"; a story that tells who speaks keeps the frame. Runs behind
// pronouns, as the two may have become pronouns by then.
void step_speaker(Meaning& meaning) {
  Rewriter graph(meaning, "speaker");
  const bool is_utterance = take_quote_marks(graph);
  for (int at = 0; at < graph.count(); ++at) {
    if (has_attribute(graph.word(at), "@imp") && !permitted_apply(graph, at)) bidden_apply(graph, at);
  }
  const int frame = meaning.root;
  const int said = graph.child(frame, "ARG1");
  const int who = graph.child(frame, "ARG0");
  if (const int called = graph.child(frame, "ARG2");
      said >= 0 && who < 0 && called >= 0 && graph.is(frame, "say", "01")) {
    // Nobody says it, and to somebody with a name or who is spoken of in it: "Kim, that is true", "You are late, my son."
    const int whom = graph.arc(called).to;
    const bool is_anybody = is_personal_pronoun(graph, whom) || graph.word(whom).name == "person";
    const bool is_called = has_attribute(graph.word(whom), "@name") ||
                           (graph.mentions(whom) > 1 && !is_anybody && !is_clause(graph, whom));
    if (!is_called) return;
    graph.arc(called).role = "vocative";
    if (graph.child(graph.arc(said).to, "vocative") >= 0) graph.remove(called, Fate::word);
    graph.stand_in(frame, said);
    return called_apply(graph);
  }
  if (said < 0 || who < 0) return called_apply(graph);
  const auto is_bare = [&](int at) {
    return graph.children(at).empty() && !has_attribute(graph.word(at), "@name") &&
           (graph.is(at, "person") || graph.is(at, "i") || graph.is(at, "he") || graph.is(at, "you"));
  };
  // Some files leave out the mark, and name a person who speaks to a person, of whom nothing is said.
  const int whom = graph.child(frame, "ARG2");
  const auto is_nobody = [&](int at) { return graph.is(at, "person") && is_bare(at) && graph.mentions(at) == 1; };
  const bool is_unnamed =
      graph.is(frame, "say", "01") && whom >= 0 && is_nobody(graph.arc(who).to) && is_nobody(graph.arc(whom).to);
  if (!is_bare(graph.arc(who).to) || !(is_utterance || is_unnamed)) return called_apply(graph);
  // Nobody writes "a person says": the speaker is "i", and who is spoken to is "you".
  graph.settle_concept(frame, Fate::left_out);
  const int content = graph.arc(said).to;
  std::erase(graph.word(content).attributes, "@quote");
  const int called = graph.child(content, "vocative");
  for (const int led : graph.children(frame)) {
    const int to = graph.arc(led).to;
    // Who is called need not be told that he is spoken to.
    if (called >= 0 && graph.arc(led).role == "ARG2" && graph.arc(called).to == to) {
      graph.remove(led, Fate::left_out);
      continue;
    }
    const bool is_person = graph.arc(led).role == "ARG0" || (graph.arc(led).role == "ARG2" && is_bare(to));
    if (is_person) {
      if (graph.mentions(to) > 1) graph.word(to).name = graph.arc(led).role == "ARG0" ? "i" : "you";
      if (graph.mentions(to) == 1) graph.settle_concept(to, Fate::left_out);
    }
    if (is_person || led == said) graph.remove(led, Fate::left_out);
  }
  graph.redirect(frame, content);
  graph.move_children(frame, content);
  called_apply(graph);
}

namespace {

// "He continued to ask": what is continued is no speech, but the asking of the same person.
bool is_going_on(Rewriter& graph, int at) {
  const int led = graph.is(at, "continue", "01") ? graph.child(at, "ARG1") : -1;
  const int who = graph.child(at, "ARG0");
  const int inner =
      led >= 0 && is_one_of(graph, graph.arc(led).to, kSaying) ? graph.child(graph.arc(led).to, "ARG0") : -1;
  return inner >= 0 && who >= 0 && graph.arc(inner).to == graph.arc(who).to;
}

}  // namespace

// (s / say-01 :ARG0 k :ARG1 c): c is :quoted and k :speaker where the words themselves are given. Stands behind
// coordination, so that a quotation of several clauses has a head, and before control, as its subjects are its own.
void step_quotation(Meaning& meaning) {
  Rewriter graph(meaning, "quotation");
  for (int at = 0; at < graph.count(); ++at) {
    // "The king went on", with his words, but "he went on asking you".
    const bool is_saying = !graph.word(at).sense.empty() && is_one_of(graph, at, kSaying) &&
                           (graph.word(at).name != "go-on" || graph.word(at).sense == "25");
    if (is_saying ? !is_going_on(graph, at) : is_uttered(graph, at, "ARG1") || is_uttered(graph, at, "ARG2"))
      quote(graph, at);
  }
}

// (g / go-02 :location (a / amr-unknown)): what is asked for becomes :questioned of the clause that asks.
void step_questions(Meaning& meaning) {
  Rewriter graph(meaning, "questions");
  for (int at = 0; at < graph.count(); ++at) {
    // "Who else knows it?", "is there anything else?"
    constexpr std::array kAnyone{"anything", "something", "nothing", "everything", "anyone",   "someone",
                                 "anybody",  "somebody",  "nobody",  "everyone",   "everybody"};
    const int other = is_unknown(graph, at) || is_one_of(graph, at, kAnyone)
                          ? child_among(graph, at, "mod", std::array{"other"})
                          : -1;
    if (other >= 0) graph.word(graph.arc(other).to).name = "else";
    if (is_unknown(graph, at)) question(graph, at);
  }
  // "Which of you", "which one of these": what is asked for is taken out of a set that is known.
  for (int at = 0; at < graph.count(); ++at) {
    if (!is_unknown(graph, at)) continue;
    const int above = graph.parent(at);
    const bool is_mod = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "mod" &&
                        graph.child(graph.arc(above).from, "superset") >= 0;
    if (is_mod || graph.child(at, "superset") >= 0) graph.word(at).name = "which";
  }
  // Only a clause of its own asks; below a verb of knowing it is "whether", elsewhere no question at all.
  for (int at = 0; at < graph.count(); ++at) {
    const int above = graph.parent(at);
    const bool is_asking = has_attribute(graph.word(at), "@int") && !has_attribute(graph.word(at), "@quote");
    if (!is_asking || above < 0 || at == meaning.root || graph.arc(above).role == "conjunct") continue;
    std::erase(graph.word(at).attributes, "@int");
    const bool is_told = is_core(graph.arc(above)) && is_one_of(graph, graph.arc(above).from, kReporting);
    if (is_told) attribute_add(graph.word(at), "@whether");
  }
  // "She asked him what he did": who says a question asks it.
  for (int at = 0; at < graph.count(); ++at) {
    const int led = graph.is(at, "say", "01") ? graph.child(at, "ARG1") : -1;
    if (led < 0 || graph.child(at, "ARG2") < 0) continue;
    Concept& said = graph.word(graph.arc(led).to);
    if (!has_attribute(said, "@whether") && !has_attribute(said, "@asked")) continue;
    graph.word(at).name = "ask";
    for (const char* joint : {"@but", "@lead_but"}) std::erase(said.attributes, joint);
  }
  // "Why do you ask? Everybody knows it." The first sentence of several ends where the next begins.
  const int next = meaning.root < 0 ? -1 : graph.child(meaning.root, "conjunct");
  if (next < 0 || !has_attribute(graph.word(graph.arc(next).to), "@snt")) return;
  const Concept& first = graph.word(meaning.root);
  const bool is_asking =
      has_attribute(first, "@ask") || has_attribute(first, "@asksub") || has_attribute(first, "@int");
  if (!is_asking) return;
  attribute_add(graph.word(graph.arc(next).to), "@after_int");
  if (!has_attribute(first, "@ends_int")) attribute_add(graph.word(meaning.root), "@ends_stop");
}

}  // namespace lexon
