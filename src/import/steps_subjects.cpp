// Steps about participants that a clause shares with another: subjects that are understood, further mentions.
#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "import/clauses.hpp"
#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {

namespace {

// What has a modal verb, which no infinitive has.
bool is_modal(const Concept& clause) {
  constexpr std::array kMoods{"@can", "@must", "@should", "@may", "@fut", "@would", "@likely", "@past", "@perf"};
  return std::any_of(kMoods.begin(), kMoods.end(), [&](const char* one) { return has_attribute(clause, one); });
}

// (b / become-01 :ARG1 s :ARG2 (s2 / small :domain s)): behind such a verb an adjective has no subject of its own.
// "She became small": both frames name her in the bank.
void copular_apply(Rewriter& graph, int at) {
  constexpr std::array kCopular{"become", "look", "feel",  "sound", "smell",   "taste", "stay",     "remain",
                                "grow",   "turn", "get",   "elect", "appoint", "name",  "nominate", "declare",
                                "choose", "call", "crown", "make",  "promote", "hire",  "consider", "regard"};
  if (graph.word(at).sense.empty() || !is_one_of(graph, at, kCopular)) return;
  const std::vector<int> below = graph.children(at);
  for (const int led : below) {
    const int said = graph.arc(led).to;
    const int own = is_core(graph.arc(led)) ? graph.child(said, "domain") : -1;
    if (own < 0) continue;
    const bool is_named = std::any_of(below.begin(), below.end(), [&](int one) {
      return one != led && !graph.arc(one).inverse && graph.arc(one).to == graph.arc(own).to;
    });
    if (is_named) graph.remove(own, Fate::attribute);
  }
}

// "Too small to reach it", "old enough to drive": what would follow has no subject of its own, and no other denial.
bool is_limit(const Concept& quality) {
  return has_attribute(quality, "@too") || has_attribute(quality, "@enough");
}

// What seems to be done has its subject in front: "the cat seems to sleep".
// (s / seem-01 :ARG1 (s2 / sleep-01 :ARG0 (c / cat))): the cat gets an arc from seem as its ARG0, and the loop of
// control then makes :understood of the one from sleep. @raised if the cat was no agent
// there; verbs of beginning need no such mark.
void raise_apply(Rewriter& graph, int at) {
  // "The rain began to fall": the beginning of what somebody does is his.
  constexpr std::array kPhases{"begin", "start", "continue", "cease", "stop"};
  const bool is_phase = graph.word(at).sense == "01" && is_one_of(graph, at, kPhases);
  // "She was allowed to stay": whom somebody allows it, is said in front where nobody does.
  constexpr std::array kBidding{"allow",   "permit", "force",  "oblige", "forbid",  "encourage",
                                "require", "compel", "expect", "order",  "schedule"};
  const bool is_bidden = is_one_of(graph, at, kBidding) && is_event(graph, at) &&
                         !has_attribute(graph.word(at), "@imp") && graph.child(at, "ARG2") < 0 &&
                         graph.argument(at, "ARG0") < 0;
  const bool is_raising = is_phase || is_bidden || is_seeming(graph, at);
  // "The boy who began to sing": he may be named above.
  const int led = is_raising && graph.argument(at, "ARG0") < 0 ? graph.child(at, "ARG1") : -1;
  if (led < 0 || !is_clause(graph, graph.arc(led).to)) return;
  // What begins to be done has a doer, what begins to be a subject: "the rain began to fall".
  const int done = graph.arc(led).to;
  // "The leaves began to fall": what these are said of does it by itself.
  constexpr std::array kByItself{"fall",   "rise", "grow",   "burn",  "sink",      "tremble", "melt", "flow", "roll",
                                 "shake",  "fade", "appear", "bloom", "ring",      "shine",   "glow", "rot",  "float",
                                 "wither", "spin", "change", "turn",  "disappear", "freeze",  "boil", "bleed"};
  const int subject = is_phase && (graph.child(done, "ARG0") >= 0 || !is_one_of(graph, done, kByItself))
                          ? graph.child(done, "ARG0")
                          : subject_arc(graph, done);
  // "It seems to me that I dream."
  const int to_whom = is_seeming(graph, at) ? graph.child(at, "ARG2") : -1;
  if (to_whom >= 0 && subject >= 0 && graph.arc(to_whom).to == graph.arc(subject).to) return;
  if (is_phase && (has_attribute(graph.word(done), "@agent") || has_attribute(graph.word(done), "@result"))) return;
  if (subject < 0 || (is_phase && graph.child(at, "shared") >= 0)) return;
  // "The offer seemed to shock him": an event of nobody is a noun.
  const int whose = graph.arc(subject).to;
  const bool is_noun = has_attribute(graph.word(whose), "@agent") || graph.children(whose).empty();
  if (is_clause(graph, whose) && !is_noun) return;
  if (is_bidden) {
    if (graph.arc(subject).role == "domain" || graph.parent(done) != led || has_attribute(graph.word(done), "@neg"))
      return;
    for (const char* own : {"understood", "shared", "domain"}) {
      if (graph.child(at, own) >= 0) return;
    }
    graph.add(at, graph.arc(subject).to, "understood");
    attribute_add(graph.word(at), "@psv");
    attribute_add(graph.word(at), "@bid");
    if (graph.arc(subject).role != "ARG0") attribute_add(graph.word(done), "@ctl1");
    graph.arc(subject).role = "understood";
    return;
  }
  graph.add(at, graph.arc(subject).to, "ARG0", false);
  if (!is_phase && graph.arc(subject).role != "ARG0") attribute_add(graph.word(at), "@raised");
}

// "He was told that it rains", "she was asked to stay", "they were given bread": who receives it is the subject where
// nobody gives it.
// (t / tell-01 :ARG1 r :ARG2 (h / he)), and for offer-01 ARG3: the receiver becomes :understood, with @psv and @bid.
void receiver_apply(Rewriter& graph, int at) {
  constexpr std::array kTelling{"tell",  "ask",  "give", "show", "teach", "grant",
                                "award", "warn", "lend", "deny", "offer"};
  const bool is_told = is_one_of(graph, at, kTelling) && is_event(graph, at) && graph.argument(at, "ARG0") < 0;
  const int led = graph.parent(at);
  const int receiver = is_told ? graph.child(at, graph.is(at, "offer", "01") ? "ARG3" : "ARG2") : -1;
  const int content = receiver >= 0 ? graph.child(at, "ARG1") : -1;
  if (content < 0 || (led >= 0 && graph.arc(led).inverse) || has_attribute(graph.word(at), "@imp")) return;
  const int who = graph.arc(receiver).to;
  const int what = graph.arc(content).to;
  const bool is_person =
      is_personal_pronoun(graph, who) || has_attribute(graph.word(who), "@agent") || graph.word(who).sense.empty();
  if (!is_person || graph.is(who, "it") || is_unknown(graph, who) || is_unknown(graph, what)) return;
  for (const char* own : {"understood", "shared", "domain", "questioned", "speaker"}) {
    if (graph.child(at, own) >= 0) return;
  }
  constexpr std::array kAbove{"ARG1",      "op1",        "op2",  "op3",      "cause",
                              "condition", "concession", "time", "conjunct", "quoted"};
  if (led >= 0 && (!is_listed(graph.arc(led).role, kAbove) || has_attribute(graph.word(graph.arc(led).from), "@nom")))
    return;
  for (const int below : graph.children(what)) {
    if (is_unknown(graph, graph.arc(below).to)) return;
  }
  // A question asks for one of the two. "The key was given to the boy", but "he was given time to think".
  if (has_attribute(graph.word(at), "@ask") || (graph.is(at, "give", "01") && graph.children(what).empty())) return;
  // A thing that is a pronoun already stands in front: "it was given to him".
  if (is_personal_pronoun(graph, what) || is_listed(graph.word(what).name, kDemonstratives)) return;
  const int doer = is_clause(graph, what) ? subject_arc(graph, what) : -1;
  if (doer >= 0 && graph.arc(doer).to == who && graph.is(at, "ask", "02")) {
    if (graph.arc(doer).role == "domain" || graph.parent(what) != content) return;
    if (graph.arc(doer).role != "ARG0") attribute_add(graph.word(what), "@ctl1");
    graph.arc(doer).role = "understood";
  }
  graph.arc(receiver).role = "understood";
  attribute_add(graph.word(at), "@psv");
  attribute_add(graph.word(at), "@bid");
}

// What says once more who does it goes.
void subject_once_apply(Rewriter& graph, int at) {
  // "The law requires the owner to pay", and not of the owner: what is required is his.
  // (r / require-01 :ARG0 l :ARG1 (p / pay-01 :ARG0 o) :ARG2 o)
  constexpr std::array kWanting{"require", "expect", "allow", "permit", "enable", "forbid", "want", "demand"};
  const int wanted = is_one_of(graph, at, kWanting) && is_event(graph, at) ? graph.child(at, "ARG1") : -1;
  const int whose = graph.child(at, "ARG2");
  const int doer = wanted >= 0 && whose >= 0 ? subject_arc(graph, graph.arc(wanted).to) : -1;
  if (doer >= 0 && graph.arc(doer).to == graph.arc(whose).to) graph.remove(whose, Fate::relation);
  // "She sailed to the island", and not herself.
  constexpr std::array kMovingOneself{"sail",  "move",  "turn",   "roll",    "fly",    "travel", "sit",
                                      "stand", "lie",   "settle", "rise",    "swim",   "jump",   "ride",
                                      "slip",  "hurry", "return", "retreat", "gather", "climb",  "drift",
                                      "spin",  "march", "rush",   "wander",  "stop",   "crawl"};
  const int mover = is_one_of(graph, at, kMovingOneself) ? graph.child(at, "ARG0") : -1;
  const int moved = mover < 0 ? -1 : graph.child(at, "ARG1");
  if (moved >= 0 && graph.arc(moved).to == graph.arc(mover).to) graph.remove(moved, Fate::relation);
  // "It cost her five dollars": who pays stands nearer to the verb.
  const int buyer = graph.is(at, "cost", "01") ? graph.child(at, "ARG3") : -1;
  const int price = graph.child(at, "ARG2");
  if (buyer >= 0 && price >= 0 && price > buyer) std::swap(graph.arc(buyer).role, graph.arc(price).role);
  if (buyer >= 0 && price >= 0 && price < buyer) {
    // Who pays comes first and is named first: "it cost eleven men their lives".
    const int who = graph.arc(buyer).to;
    graph.lead_to(buyer, graph.arc(price).to);
    graph.lead_to(price, who);
    std::swap(graph.arc(buyer).triple, graph.arc(price).triple);
  }
  // "She heard that he sang", and not of him that he sang.
  constexpr std::array kLearning{"hear", "know", "learn", "read", "think", "believe", "expect", "find-out", "discover"};
  const int content = is_one_of(graph, at, kLearning) ? graph.child(at, "ARG1") : -1;
  const int topic = graph.child(at, "ARG2");
  if (content >= 0 && topic >= 0) {
    const int subject = subject_arc(graph, graph.arc(content).to);
    if (subject >= 0 && graph.arc(subject).to == graph.arc(topic).to) graph.remove(topic, Fate::relation);
  }
  // "He worked efficiently": nor does it that he was efficient.
  for (const int led : graph.children(at)) {
    const int frame = graph.arc(led).to;
    const std::string& held = graph.arc(led).role;
    if (!graph.arc(led).inverse || (held != "ARG2" && held != "ARG3") || graph.mentions(frame) > 1) continue;
    const int bearer = graph.child(frame, "ARG1");
    const int agent = graph.argument(at, "ARG0");
    const int subject = agent >= 0 ? agent : graph.argument(at, "shared");
    if (bearer >= 0 && subject >= 0 && graph.arc(bearer).to == graph.other(subject, at))
      graph.remove(bearer, Fate::relation);
  }
  // "She left silently": that she is silent says nothing more.
  const int said = graph.child(at, "domain");
  const int above = said < 0 ? -1 : graph.parent(at);
  if (above < 0 || graph.arc(above).inverse || graph.arc(above).role != "manner") return;
  const int subject = subject_arc(graph, graph.arc(above).from);
  if (subject >= 0 && graph.arc(subject).to == graph.arc(said).to) graph.remove(said, Fate::relation);
}

// Named by the governing clause, or for a purpose by the one above: "she has no time to sing".
// `first` has for each clause the arc that leads down to it; three steps up are enough for "she has no time to learn to
// sing". `above` leads to the clause, `person` is its subject.
bool is_named_above(Rewriter& graph, const std::vector<int>& first, int above, int person, bool is_agent) {
  const std::string& held = graph.arc(above).role;
  const bool is_purpose = held == "purpose" || held == "source" || held == "topic" || held == "medium";
  int led_here = above;
  // "Time to grow", but "a revolution to rip it out": what is done to him is no matter of whoever stands far above.
  const int noun = graph.arc(above).from;
  const bool is_far = is_purpose && (is_agent || !is_clause(graph, noun));
  // "She has a plan to build it": the noun of an event does not say again whose it is.
  const bool is_of_noun = has_attribute(graph.word(noun), "@nom") && graph.child(noun, "ARG0") < 0;
  // "She can do nothing except weep".
  const bool is_left_over = held == "exception" && is_agent && !is_clause(graph, noun);
  for (int steps = is_far ? 3 : is_of_noun || is_left_over ? 2 : 1; steps > 0 && led_here >= 0; --steps) {
    const int governor = graph.arc(led_here).from;
    // "My plan is to leave".
    const int plan = graph.is(governor, "identity", "91") ? graph.child(governor, "ARG1") : -1;
    const int owner = plan < 0 ? -1 : graph.child(graph.arc(plan).to, "poss");
    if (owner >= 0 && graph.arc(owner).to == person) return true;
    for (const int led : graph.children(governor)) {
      if (led != led_here && !graph.arc(led).inverse && graph.arc(led).to == person) return true;
    }
    // "A pill to cure the cold".
    if (is_purpose && governor == person) return true;
    led_here = first[static_cast<std::size_t>(governor)];
    if (led_here >= 0 && graph.arc(led_here).inverse && graph.arc(led_here).from == person) return true;
  }
  return false;
}

// "They informed her that she won": who is informed of `at` need not do it. `higher` governs it as ARG2, `subject` leads
// to its own.
bool is_content_of_second(Rewriter& graph, int higher, int at, int subject) {
  constexpr std::array kInforming{"inform", "notify", "assure", "satisfy", "impress"};
  constexpr std::array kConvincing{"persuade", "convince", "promise"};
  const bool is_predicate = graph.arc(subject).role == "domain" || graph.is(at, "be-located-at", "91");
  return is_one_of(graph, higher, kInforming) || (is_predicate && is_one_of(graph, higher, kConvincing));
}

// `at`, to which `above` leads, is a clause that English makes an infinitive or a participle of.
bool may_be_infinite(Rewriter& graph, int above, int at) {
  const std::string& role = graph.arc(above).role;
  // "She knows whether she may stay" is no infinitive.
  for (const char* mark : {"@whether", "@result", "@agent"}) {
    if (has_attribute(graph.word(at), mark)) return false;
  }
  // Nor is "she asked what he was called".
  constexpr std::array kAsking{"ask", "inquire", "question", "wonder"};
  if (has_attribute(graph.word(at), "@asked") && is_one_of(graph, graph.arc(above).from, kAsking)) return false;
  // "So that you are sure to find it": a quality that is aimed at.
  constexpr std::array kQualities{"sure", "certain", "happy", "safe", "free", "ready", "famous", "warm", "healthy"};
  if (role == "purpose" && is_one_of(graph, at, kQualities)) return false;
  // "They said that they were tempted": what is said has a subject, whichever it is.
  constexpr std::array kTelling{"say", "state", "explain", "report", "note", "mention", "announce", "think", "believe"};
  if (role == "ARG1" && is_one_of(graph, graph.arc(above).from, kTelling)) return false;
  // A clause in another role keeps its subject: "she left because she was tired".
  constexpr std::array kGerunds{"source", "topic", "medium", "instrument", "manner"};
  return role.starts_with("ARG") || role == "purpose" || is_listed(role, kGerunds) || role == "mod" ||
         role == "attendant" || role == "substitute" || role == "exception" ||
         (role == "consequence" && is_limit(graph.word(graph.arc(above).from)));
}

// The clause above wants the subject of `at` said again, "he told them that he was tired"; `subject` leads to him.
bool is_said_again(Rewriter& graph, int above, int at, int subject) {
  const std::string& role = graph.arc(above).role;
  const int person = graph.arc(subject).to;
  const int higher = graph.arc(above).from;
  if (role == "ARG2" && is_content_of_second(graph, higher, at, subject)) return true;
  // With these only a subject that is no agent is said again, and not if it is who listens: "he told them that he was
  // tired", but "he told them to wait".
  constexpr std::array kThatVerbs{"tell", "answer", "reply",  "declare",    "know",  "feel", "realize",
                                  "see",  "hear",   "notice", "understand", "write", "admit"};
  const int hearer = graph.child(higher, "ARG2");
  const bool is_told = role == "ARG1" && graph.arc(subject).role == "ARG1" && is_one_of(graph, higher, kThatVerbs) &&
                       (hearer < 0 || graph.arc(hearer).to != person);
  if (is_told) return true;
  // "It seems to me that I dream."
  if (is_seeming(graph, higher) && hearer >= 0 && graph.arc(hearer).to == person) return true;
  // "She told him that she sang", "she suggested to him that he sing": only of some verbs who listens does what is said.
  constexpr std::array kOfHearers{"tell", "warn", "remind", "assure", "inform", "notify"};
  constexpr std::array kBidding{"tell",   "ask",     "beg",    "teach",   "help",     "permit",  "allow",  "forbid",
                                "warn",   "remind",  "advise", "want",    "mean",     "enable",  "let",    "train",
                                "need",   "expect",  "get",    "cause",   "show",     "learn",   "assist", "leave",
                                "assign", "require", "order",  "command", "instruct", "request", "direct"};
  const bool is_hearers = hearer >= 0 && graph.arc(hearer).to == person;
  const int teller = graph.child(higher, "ARG0");
  const bool is_tellers = teller >= 0 && graph.arc(teller).to == person;
  const bool is_of_other = is_hearers ? !is_tellers && teller >= 0 && !is_one_of(graph, higher, kBidding)
                                      : is_one_of(graph, higher, kOfHearers);
  return role == "ARG1" && (is_of_other || (is_one_of(graph, higher, kOfHearers) && is_modal(graph.word(at))));
}

// A predicate without verb has no infinitive of its own, and keeps its subject but with some verbs.
bool is_bare_predicate(Rewriter& graph, int above, int subject) {
  if (graph.arc(subject).role != "domain") return false;
  const std::string& role = graph.arc(above).role;
  const int higher = graph.arc(above).from;
  constexpr std::array kToBe{"want",    "decide", "try",      "attempt", "wish",    "need",    "prefer",  "learn",
                             "pretend", "choose", "deserve",  "refuse",  "plan",    "intend",  "promise", "claim",
                             "begin",   "start",  "continue", "enjoy",   "avoid",   "stop",    "risk",    "resist",
                             "mind",    "hate",   "like",     "love",    "hope",    "succeed", "keep",    "apologize",
                             "fear",    "regret", "dread",    "insist",  "confess", "deny",    "dream"};
  // "They forced him to be quiet": whom they force is quiet.
  const int forced = graph.child(higher, "ARG1");
  const bool is_forced =
      role == "ARG2" && forced >= 0 && graph.arc(forced).to == graph.arc(subject).to && is_event(graph, higher);
  const bool is_to_be = is_forced || (role == "ARG1" && is_one_of(graph, higher, kToBe));
  return !is_seeming(graph, higher) && role != "attendant" && !is_to_be;
}

// "She let herself fall": whom she lets fall is said, if it is herself as well.
bool is_let(Rewriter& graph, int above, int person) {
  const int higher = graph.arc(above).from;
  constexpr std::array kLetting{"let", "allow", "permit", "make", "force", "cause", "enable"};
  return graph.arc(above).role == "ARG1" && is_one_of(graph, higher, kLetting) && graph.child(higher, "ARG2") < 0 &&
         graph.child(higher, "ARG0") >= 0 && graph.arc(graph.child(higher, "ARG0")).to == person;
}

// The subject of `at` becomes :understood if `at` is a clause that English makes an infinitive or a participle of, and if
// the clause above names the same person. `first` has for each concept the arc by which the reader meets it first: a
// subject that is met here first has not been named.
void understand_subject(Rewriter& graph, const std::vector<int>& first, int at) {
  int above = first[static_cast<std::size_t>(at)];
  // "She attended to the road and to keeping it dry": what is joined to a thing stands where the thing stands.
  for (int steps = graph.count(); above >= 0 && graph.arc(above).role == "conjunct" && steps > 0; --steps) {
    if (is_clause(graph, graph.arc(above).from)) return;
    above = first[static_cast<std::size_t>(graph.arc(above).from)];
  }
  if (above < 0 || graph.arc(above).inverse || !is_clause(graph, at) || !may_be_infinite(graph, above, at)) return;
  const std::string& role = graph.arc(above).role;
  const int subject = subject_arc(graph, at);
  if (subject < 0 || has_attribute(graph.word(at), "@whose")) return;
  // "She hid so that she would not be seen": "not to" would be heard as what she does.
  if (role == "purpose" && has_attribute(graph.word(at), "@neg") && graph.arc(subject).role != "ARG0") return;
  const int person = graph.arc(subject).to;
  if (first[static_cast<std::size_t>(person)] == subject) return;
  if (!is_named_above(graph, first, above, person, graph.arc(subject).role == "ARG0")) return;
  if (is_let(graph, above, person)) {
    const int self = mention_of(graph, person);
    attribute_add(graph.word(self), "@self");
    graph.lead_to(subject, self);
    return;
  }
  if (is_said_again(graph, above, at, subject) || is_bare_predicate(graph, above, subject)) return;
  if (graph.arc(subject).role != "ARG0") attribute_add(graph.word(at), "@ctl1");
  graph.arc(subject).role = "understood";
  // Behind "do" a verb stands bare; behind another verb it is a gerund, "he likes nothing except singing".
  const int doing = first[static_cast<std::size_t>(graph.arc(above).from)];
  if (role == "exception" && doing >= 0 && graph.is(graph.arc(doing).from, "do", "02"))
    attribute_add(graph.word(at), "@bare");
  if (role == "consequence" && has_attribute(graph.word(graph.arc(above).from), "@too")) {
    for (const char* mark : {"@can", "@neg"}) std::erase(graph.word(at).attributes, mark);
  }
}

// "He opened the gate so that the goats will see it": an aim with a subject of its own has not come true yet.
void aim_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "purpose");
  const int aim = led < 0 ? -1 : graph.arc(led).to;
  const bool is_own = aim >= 0 && !graph.word(at).sense.empty() && is_event(graph, aim) && !is_modal(graph.word(aim)) &&
                      !has_attribute(graph.word(aim), "@nom") && graph.child(aim, "understood") < 0 &&
                      subject_arc(graph, aim) >= 0;
  if (!is_own) return;
  for (const char* mark : {"@fut", "@aim"}) attribute_add(graph.word(aim), mark);
}

// (r / cold-01 :consequence (s / swim-01 :ARG0 (c / child))) with @too: "so cold that the child cannot swim". Only what is
// about the same subject is "too tired to swim".
void too_much_apply(Rewriter& graph, int at) {
  const int led = has_attribute(graph.word(at), "@too") ? graph.child(at, "consequence") : -1;
  const int clause = led < 0 ? -1 : graph.arc(led).to;
  if (clause < 0 || !is_clause(graph, clause) || has_attribute(graph.word(clause), "@nom")) return;
  if (graph.child(clause, "understood") >= 0 || subject_arc(graph, clause) < 0) return;
  std::erase(graph.word(at).attributes, "@too");
  attribute_add(graph.word(at), "@so");
  if (std::erase(graph.word(clause).attributes, "@neg") > 0) return;
  attribute_add(graph.word(clause), "@neg");
  attribute_add(graph.word(clause), "@can");
}

// "She came running", "he sat reading": how somebody moves or stays is no means of it. "Came by train" has no event.
void along_apply(Rewriter& graph, int at) {
  constexpr std::array kMoving{"come",  "go",    "rush", "run",     "walk", "arrive", "return", "wander",
                               "stand", "sit",   "lie",  "wait",    "stay", "kneel",  "hang",   "remain",
                               "flee",  "march", "fly",  "set-out", "live", "pass",   "roam",   "crouch",
                               "lean",  "hurry", "ride", "stroll",  "pace", "crawl"};
  constexpr std::array kSounding{"laugh",  "smile",   "cry",   "weep",   "sob",   "shout",   "scream",  "sing",
                                 "roar",   "sigh",    "grin",  "giggle", "moan",  "groan",   "pant",    "yell",
                                 "howl",   "limp",    "run",   "gallop", "blush", "stammer", "stumble", "tremble",
                                 "shiver", "whistle", "growl", "bark",   "think"};
  // "They spent the night dancing".
  constexpr std::array kSpending{"spend", "busy", "waste"};
  const int occupied = is_one_of(graph, at, kSpending) ? graph.child(at, "ARG2") : -1;
  const int pastime = occupied < 0 ? -1 : graph.arc(occupied).to;
  if (pastime >= 0 && graph.child(pastime, "understood") >= 0) attribute_add(graph.word(pastime), "@along");
  // "She left without being seen".
  constexpr std::array kPerceived{"see",  "notice", "hear",   "catch",  "observe", "recognize", "detect", "discover",
                                  "ask",  "invite", "tell",   "harm",   "hurt",    "disturb",   "wound",  "stop",
                                  "find", "touch",  "punish", "arrest", "kill",    "pay",       "bother", "spot"};
  if (graph.word(at).sense.empty()) return;
  for (const int led : graph.children(at)) {
    const int how = graph.arc(led).to;
    if (graph.arc(led).inverse || graph.arc(led).role != "manner" || graph.child(how, "understood") < 0) continue;
    const bool is_denied = has_attribute(graph.word(how), "@neg");
    const bool is_passive = has_attribute(graph.word(how), "@ctl1");
    if (is_denied && is_passive && is_one_of(graph, how, kPerceived)) attribute_add(graph.word(how), "@unseen");
    // "She helped him to grow by feeding him": behind what she helps him to do.
    for (const int other : graph.children(at)) {
      const bool is_infinitive = !graph.arc(other).inverse && graph.arc(other).role.starts_with("ARG") &&
                                 graph.child(graph.arc(other).to, "understood") >= 0;
      if (is_infinitive && !is_passive) attribute_add(graph.word(how), "@outer");
    }
    if (is_denied || is_passive) continue;
    if (is_one_of(graph, at, kMoving) || is_one_of(graph, how, kSounding)) attribute_add(graph.word(how), "@along");
  }
}

// "I would like to sing": a wish that is spoken of as one.
void polite_apply(Rewriter& graph, int at) {
  if (!graph.is(at, "like", "02") || !is_plain_deed(graph, at) || graph.child(at, "ARG0") < 0) return;
  const bool is_timed = has_attribute(graph.word(at), "@past") || has_attribute(graph.word(at), "@pres");
  const int wish = graph.child(at, "ARG1");
  // "I would like you to meet her."
  const bool is_to_do =
      wish >= 0 && (graph.child(graph.arc(wish).to, "understood") >= 0 ||
                    (is_plain_deed(graph, graph.arc(wish).to) && graph.child(graph.arc(wish).to, "ARG0") >= 0));
  if (!is_timed && is_to_do) attribute_add(graph.word(at), "@would");
}

// "They had the wall painted", "he made himself heard": who does it is not said, and it is done when they are ready.
void done_apply(Rewriter& graph, int at) {
  const bool is_having = graph.is(at, "have", "04") || graph.is(at, "get", "04") || graph.is(at, "make", "02");
  const int led = is_having ? graph.child(at, "ARG1") : -1;
  const bool has_doer = graph.child(at, "ARG0") >= 0 || graph.child(at, "understood") >= 0;
  const int deed = led < 0 || !has_doer ? -1 : graph.arc(led).to;
  if (deed < 0 || !is_plain_deed(graph, deed)) return;
  if (graph.child(deed, "ARG0") < 0 && graph.child(deed, "ARG1") >= 0) make_infinitive(graph, deed, "@gotten");
}

// "She has nothing to say", "they looked for something to eat", "the only way to cross the river".
void to_do_apply(Rewriter& graph, int at) {
  constexpr std::array kUsing{"have", "find", "need", "want", "seek", "look-for", "bring", "get", "lack"};
  constexpr std::array kThings{"nothing", "something", "anything", "much", "lot"};
  const bool is_using = !graph.word(at).sense.empty() && is_one_of(graph, at, kUsing);
  const int led = is_using ? graph.child(at, "ARG1") : -1;
  // "She wants to find a place to hide": who finds it may be named above.
  const int agent = led < 0 ? -1 : graph.child(at, "ARG0");
  const int user = led < 0 || agent >= 0 ? agent : graph.child(at, "understood");
  const int thing = user >= 0 && is_one_of(graph, graph.arc(led).to, kThings) ? graph.arc(led).to : -1;
  const int done = thing < 0 ? -1 : graph.child(thing, "ARG1", true);
  const int doer = done < 0 ? -1 : graph.child(graph.arc(done).to, "ARG0");
  const bool is_his = doer >= 0 && graph.arc(doer).to == graph.arc(user).to;
  if (is_his && is_plain_deed(graph, graph.arc(done).to)) {
    graph.arc(doer).role = "understood";
    make_infinitive(graph, graph.arc(done).to, "@toinf");
  }
  const bool is_place = user >= 0 && graph.is(graph.arc(led).to, "place");
  const int place = is_place ? graph.child(graph.arc(led).to, "location", true) : -1;
  const int sleeper = place < 0 ? -1 : subject_arc(graph, graph.arc(place).to);
  const bool is_there = sleeper >= 0 && graph.arc(sleeper).to == graph.arc(user).to;
  if (is_there && is_plain_deed(graph, graph.arc(place).to)) {
    if (graph.arc(sleeper).role == "ARG1") attribute_add(graph.word(graph.arc(place).to), "@ctl1");
    graph.arc(sleeper).role = "understood";
    attribute_add(graph.word(graph.arc(led).to), "@indef");
    make_infinitive(graph, graph.arc(place).to, "@toinf");
  }
  const int way = graph.is(at, "way") ? graph.child(at, "manner", true) : -1;
  const int deed = way < 0 ? -1 : graph.arc(way).to;
  if (deed < 0 || !is_plain_deed(graph, deed) || graph.child(deed, "ARG1") < 0) return;
  for (const char* role : {"ARG0", "shared", "understood"}) {
    if (graph.child(deed, role) >= 0) return;
  }
  make_infinitive(graph, deed, "@toinf");
}

// "The soldiers ignored the order to leave": whom it was given to is who leaves, and has been named.
void order_apply(Rewriter& graph, const std::vector<int>& first, int at) {
  const int whom = has_attribute(graph.word(at), "@nom") ? graph.child(at, "ARG1") : -1;
  const int content = whom < 0 ? -1 : graph.child(at, "ARG2");
  const int known = content < 0 ? -1 : graph.child(graph.arc(content).to, "understood");
  if (known < 0 || graph.arc(known).to != graph.arc(whom).to) return;
  if (first[static_cast<std::size_t>(graph.arc(whom).to)] != whom) graph.remove(whom, Fate::relation);
}

// "She taught them how to write", "he did not know what to say": who shall do it has been named.
// (k / know-01 :polarity - :ARG0 h :ARG1 (t / thing :ARG1-of (s / say-01 :ARG0 h)))
void how_to_apply(Rewriter& graph, int at) {
  constexpr std::array kOfSelf{"learn", "forget", "discover", "decide", "wonder", "consider", "figure-out", "find-out"};
  constexpr std::array kOfOther{"teach", "show", "tell", "advise", "instruct", "explain", "ask"};
  const bool is_known = graph.is(at, "know", "01");
  const bool is_own = is_one_of(graph, at, kOfSelf) || is_known;
  const int led = is_own || is_one_of(graph, at, kOfOther) ? graph.child(at, "ARG1") : -1;
  const int thing = led >= 0 && graph.is(graph.arc(led).to, "thing") ? graph.arc(led).to : -1;
  if (thing < 0 || graph.children(thing).size() != 1) return;
  const Arc& held = graph.arc(graph.children(thing)[0]);
  const int deed = held.to;
  if (!held.inverse || (held.role != "ARG1" && held.role != "manner") || !is_plain_deed(graph, deed)) return;
  // "She knows how to swim", but "she knows what she said".
  if (is_known && held.role == "ARG1" && !has_attribute(graph.word(at), "@neg")) return;
  // "She told him what he ate" is no advice.
  if (!is_own && held.role == "ARG1" && !graph.is(at, "teach") && !graph.is(at, "advise")) return;
  const int doer = graph.child(deed, "ARG0");
  const int who = graph.child(at, is_own ? "ARG0" : "ARG2");
  const int known = is_own && who < 0 ? graph.child(at, "understood") : who;
  if (doer < 0 || known < 0 || graph.arc(doer).to != graph.arc(known).to) return;
  graph.arc(doer).role = "understood";
  make_infinitive(graph, deed, "@toinf");
}

// (w / want-01 :ARG0 g :ARG1 (s / sing-01 :understood g)) with @can: "she wants to be able to sing".
void able_apply(Rewriter& graph, int at) {
  constexpr std::array kWanting{"want", "need", "wish", "like", "love", "seem", "claim", "pretend", "hate", "prefer"};
  const int known = has_attribute(graph.word(at), "@can") ? graph.child(at, "understood") : -1;
  const int led = known < 0 ? -1 : graph.parent(at);
  if (led < 0 || graph.arc(led).inverse || graph.arc(led).role != "ARG1") return;
  if (!is_one_of(graph, graph.arc(led).from, kWanting) || graph.word(graph.arc(led).from).sense.empty()) return;
  const int able = graph.add_concept("able");
  graph.word(able).sense = "01";
  attribute_add(graph.word(able), "@v");
  attribute_add(graph.word(able), "@ctl1");
  if (std::erase(graph.word(at).attributes, "@neg") > 0) attribute_add(graph.word(able), "@neg");
  std::erase(graph.word(at).attributes, "@can");
  graph.lead_to(led, able);
  graph.add(able, graph.arc(known).to, "understood");
  graph.add(able, at, "ARG2");
}

// What the verb above has named is not said again with the noun of an event: "he was exposed to abuse".
void said_above(Rewriter& graph, int at, int governor) {
  for (const int led : graph.children(at)) {
    const Arc& one = graph.arc(led);
    const bool is_argument = !one.inverse && (one.role == "ARG0" || one.role == "ARG1" || one.role == "understood");
    const std::vector<int> said = graph.children(governor);
    const bool is_said = std::any_of(said.begin(), said.end(), [&](int other) {
      return graph.arc(other).to == one.to && !graph.arc(other).inverse;
    });
    if (is_argument && (is_said || one.role == "understood")) graph.remove(led, Fate::attribute);
  }
}

// "Exposed to ridicule", "jailed for fraud", "they responded to requests": what stands there is mostly a noun.
bool has_noun_at(Rewriter& graph, int governor, const std::string& role) {
  constexpr std::array kFirst{"respond", "react", "recover", "sell",    "buy",  "sign",      "lift",     "impose",
                              "object",  "call",  "issue",   "protest", "file", "implement", "maintain", "reach"};
  constexpr std::array kSecond{"subject",  "expose",   "devote",   "dedicate",   "limit",      "attribute", "reduce",
                               "confine",  "restrict", "resort",   "react",      "accustom",   "addict",    "attach",
                               "sentence", "jail",     "imprison", "contribute", "result",     "threaten",  "suspect",
                               "compare",  "lead",     "blame",    "negotiate",  "compensate", "protect"};
  if (role == "ARG1") return is_one_of(graph, governor, kFirst);
  if (role == "ARG2") return is_one_of(graph, governor, kSecond);
  return role == "ARG3" && (graph.is(governor, "sentence", "01") || graph.is(governor, "pay", "01"));
}

// An event that stands where English has a noun and no clause.
void noun_of_event(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  if (above < 0 || !is_core(graph.arc(above)) || !is_event(graph, at) || graph.arc(above).role == "ARG0") return;
  const int governor = graph.arc(above).from;
  const std::string& role = graph.arc(above).role;
  if (graph.word(governor).sense.empty()) return;
  if (has_noun_at(graph, governor, role)) {
    int part = at;
    for (int steps = graph.count(); steps > 0; --steps) {
      attribute_add(graph.word(part), "@nom");
      said_above(graph, part, governor);
      const int next = graph.child(part, "conjunct");
      if (next < 0) break;
      part = graph.arc(next).to;
    }
    return;
  }
  // "Hunger motivated the attack": nobody was moved to do it.
  const bool has_agent = subject_arc(graph, at) >= 0 || graph.child(at, "understood") >= 0;
  const bool is_moved = graph.argument(governor, "ARG1") >= 0 || graph.child(governor, "understood") >= 0 ||
                        graph.child(governor, "shared") >= 0;
  if (role == "ARG2" && !has_agent && !is_moved && graph.child(at, "ARG1") < 0) attribute_add(graph.word(at), "@nom");
  // "They have hope that he lives": nobody in particular hopes.
  constexpr std::array kContents{"hope",  "believe",   "claim",  "evidence", "prove",  "fear",   "suspect",  "doubt",
                                 "agree", "guarantee", "report", "assume",   "expect", "allege", "suggest",  "threaten",
                                 "warn",  "promise",   "wish",   "conclude", "argue",  "assure", "indicate", "realize"};
  constexpr std::array kTelling{"say", "think", "know", "believe", "tell", "mean", "feel", "report", "note", "add"};
  const int content = graph.child(at, "ARG1");
  const bool is_held = content >= 0 && is_one_of(graph, at, kContents) && !is_one_of(graph, governor, kTelling) &&
                       !is_one_of(graph, governor, kSaying);
  if (!is_held || graph.child(at, "ARG0") >= 0 || graph.child(at, "understood") >= 0) return;
  if (is_clause(graph, graph.arc(content).to) && !has_attribute(graph.word(at), "@neg"))
    attribute_add(graph.word(at), "@nom");
}

// "The decision to close the mine", "it was decided to close it": nobody in particular decides, and nobody else does it.
void nobody_decides(Rewriter& graph, int at) {
  constexpr std::array kDeciding{"decide", "plan", "refuse", "attempt", "try", "intend", "vow", "propose", "agree"};
  const int led = is_event(graph, at) && is_one_of(graph, at, kDeciding) ? graph.child(at, "ARG1") : -1;
  const int deed = led < 0 ? -1 : graph.arc(led).to;
  if (deed < 0 || !is_event(graph, deed) || graph.mentions(deed) > 1) return;
  for (const char* role : {"ARG0", "understood", "shared", "domain", "questioned", "conjunct"}) {
    if (graph.argument(at, role) >= 0 || graph.argument(deed, role) >= 0) return;
  }
  for (const char* mark : {"@whether", "@asked", "@result", "@agent", "@can", "@must", "@should"}) {
    if (has_attribute(graph.word(deed), mark) || has_attribute(graph.word(at), mark)) return;
  }
  if (graph.child(deed, "ARG1") >= 0) graph.add(deed, graph.add_concept("one"), "understood");
}

// "Pronounced dead": who dies is whom it is said of.
void dead_apply(Rewriter& graph, int at) {
  constexpr std::array kDeclaring{"pronounce", "declare", "certify", "presume"};
  const int led = is_one_of(graph, at, kDeclaring) ? graph.child(at, "ARG2") : -1;
  const int death = led >= 0 && graph.is(graph.arc(led).to, "die", "01") ? graph.arc(led).to : -1;
  const int who = death < 0 ? -1 : graph.child(death, "ARG1");
  const int said = graph.child(at, "ARG1");
  if (who < 0 || said < 0 || graph.arc(who).to != graph.arc(said).to || graph.children(death).size() != 1) return;
  graph.remove(who, Fate::attribute);
  graph.word(death).name = "dead";
  graph.word(death).sense.clear();
  graph.word(death).attributes.assign(1, "@res");
}

// "Judging oneself is harder than judging others": nobody in particular does either, or the same in both.
void compared_acts_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "compared-to");
  const int subject = led < 0 ? -1 : subject_arc(graph, at);
  if (subject < 0 || graph.arc(subject).role == "ARG0") return;
  const int acts[] = {graph.arc(subject).to, graph.arc(led).to};
  if (!is_plain_deed(graph, acts[0]) || !is_plain_deed(graph, acts[1])) return;
  const int doers[] = {graph.child(acts[0], "ARG0"), graph.child(acts[1], "ARG0")};
  const auto is_anybody = [&](int doer) {
    return doer < 0 || is_one_of(graph, graph.arc(doer).to, std::array{"you", "one"});
  };
  const bool is_same = doers[0] >= 0 && doers[1] >= 0 && graph.arc(doers[0]).to == graph.arc(doers[1]).to;
  if (!is_anybody(doers[0]) || !(is_anybody(doers[1]) || is_same)) return;
  for (const int doer : doers) {
    if (doer >= 0) graph.arc(doer).role = "understood";
  }
}

}  // namespace

// (s / seize-01 :ARG0 (d / desire-01 :ARG1 (w / wake-01 :ARG0 x))), x named elsewhere: "the desire to wake seized her".
void wish_apply(Rewriter& graph, const std::vector<int>& first, int at) {
  constexpr std::array kWishes{"desire", "wish", "need", "decide",  "attempt", "hope",  "plan",    "urge",
                               "long",   "tend", "try",  "refuse",  "promise", "fail",  "inspire", "opportunity",
                               "intend", "able", "free", "capable", "yearn",   "crave", "tempt",   "oblige"};
  const int above = is_one_of(graph, at, kWishes) && is_event(graph, at) ? graph.parent(at) : -1;
  const int led = above < 0 || graph.child(at, "ARG0") >= 0 ? -1 : graph.child(at, "ARG1");
  if (led < 0 || graph.arc(above).inverse || graph.arc(above).role != "ARG0") return;
  const int deed = graph.arc(led).to;
  const int subject = is_event(graph, deed) && graph.mentions(deed) == 1 ? subject_arc(graph, deed) : -1;
  if (subject < 0 || first[static_cast<std::size_t>(graph.arc(subject).to)] == subject) return;
  if (graph.arc(subject).role != "ARG0") attribute_add(graph.word(deed), "@ctl1");
  graph.arc(subject).role = "understood";
}

// (w / want-01 :ARG0 b :ARG1 (g / go-02 :ARG0 b)): the b of go-02 becomes :understood, and rules make an infinitive of it.
void step_control(Meaning& meaning) {
  Rewriter graph(meaning, "control");
  for (int at = 0, end = graph.count(); at < end; ++at) {
    copular_apply(graph, at);
    receiver_apply(graph, at);
    raise_apply(graph, at);
  }
  for (int at = 0; at < graph.count(); ++at) subject_once_apply(graph, at);
  const std::vector<int> first = first_arcs(graph);
  for (int at = 0; at < graph.count(); ++at) dead_apply(graph, at);
  for (int at = 0, end = graph.count(); at < end; ++at) understand_subject(graph, first, at);
  for (int at = 0; at < graph.count(); ++at) wish_apply(graph, first, at), compared_acts_apply(graph, at);
  for (int at = 0; at < graph.count(); ++at) noun_of_event(graph, at), too_much_apply(graph, at), aim_apply(graph, at);
  for (int at = 0; at < graph.count(); ++at)
    polite_apply(graph, at), along_apply(graph, at), done_apply(graph, at), order_apply(graph, first, at),
        how_to_apply(graph, at), to_do_apply(graph, at);
  for (int at = 0, end = graph.count(); at < end; ++at) able_apply(graph, at);
  for (int at = 0, end = graph.count(); at < end; ++at) nobody_decides(graph, at);
}

// "They greeted each other": what several people do to themselves is mostly done by each to the other, where the verb is
// one of meeting, of feeling or of speech.
bool is_mutual(Rewriter& graph, int frame, int several) {
  constexpr std::array kMutual{"love",    "like",  "hate",         "greet",      "hug",       "kiss",    "embrace",
                               "meet",    "marry", "help",         "need",       "miss",      "trust",   "look",
                               "glance",  "stare", "gaze",         "nod",        "smile",     "wave",    "talk",
                               "speak",   "chat",  "whisper",      "shout",      "write",     "argue",   "quarrel",
                               "fight",   "chase", "follow",       "call",       "visit",     "respect", "admire",
                               "forgive", "thank", "avoid",        "tease",      "mock",      "insult",  "hit",
                               "push",    "bump",  "collide",      "resemble",   "recognize", "support", "attack",
                               "accuse",  "blame", "congratulate", "understand", "know",      "fear",    "dislike"};
  constexpr std::array kMany{"we", "they"};
  const bool is_many = has_attribute(graph.word(several), "@pl") || has_attribute(graph.word(several), "@group") ||
                       is_one_of(graph, several, kMany) || graph.child(several, "conjunct") >= 0;
  return is_many && is_one_of(graph, frame, kMutual);
}

// A concept is one word. Where the graph leads to it a second time, a word of its own with @ref stands for it, and rules
// make a pronoun of that; with @self if it is the subject of the same verb.
// (w / want-01 :ARG0 (b / boy) :ARG1 (s / see-01 :ARG0 b :ARG1 b)): of the three arcs to b the first is the boy, the
// last "himself", with @ref and @self. An inverse argument to a concept that stands elsewhere makes a word of the frame
// again, (b :ARG0-of w) "who wants".
void step_mentions(Meaning& meaning) {
  Rewriter graph(meaning, "mentions");
  // What each arc led to before mentions became words of their own: only so "himself" can be told from "him".
  std::vector<int> meant;
  for (const Arc& one : meaning.arcs) meant.push_back(one.to);
  const std::vector<int> first = first_arcs(graph);
  for (std::size_t i = 0, end = meaning.arcs.size(); i < end; ++i) {
    const int led = static_cast<int>(i);
    if (graph.arc(led).gone) continue;
    const int to = graph.arc(led).to;
    // "Do not hurt yourself", with a concept for each.
    constexpr std::array kNamed{"i", "we", "you"};
    const int doer = graph.child(graph.arc(led).from, "ARG0");
    if (doer >= 0 && meant[static_cast<std::size_t>(doer)] != to && first[static_cast<std::size_t>(to)] == led &&
        is_core(graph.arc(led)) && is_one_of(graph, to, kNamed) && graph.is(graph.arc(doer).to, graph.word(to).name)) {
      attribute_add(graph.word(to), "@self");
    }
    if (first[static_cast<std::size_t>(to)] == led || (to == meaning.root && graph.arc(led).from == to)) continue;
    if (graph.arc(led).inverse && is_core_role(graph.arc(led).role)) {
      // A clause that stands above, or elsewhere, has this one as an argument: it is said there.
      const int from = graph.arc(led).from;
      const int again = mention_of(graph, from);
      graph.replace(led, to, again, graph.arc(led).role);
    } else {
      int agent = -1;
      for (const char* role : {"ARG0", "speaker", "shared", "understood"}) {
        if (agent < 0) agent = graph.child(graph.arc(led).from, role);
      }
      // "He walked along, talking to himself."
      const int above = graph.parent(graph.arc(led).from);
      const bool is_of_doer = above >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG0" &&
                              is_event(graph, graph.arc(above).from);
      if (agent < 0 && is_of_doer) agent = graph.child(graph.arc(above).from, "ARG0");
      const bool is_own =
          agent >= 0 && agent != led && meant[static_cast<std::size_t>(agent)] == to && is_core(graph.arc(led));
      if (is_own && is_mutual(graph, graph.arc(led).from, to)) {
        graph.lead_to(led, graph.add_concept("each-other"));
        continue;
      }
      graph.lead_to(led, mention_of(graph, to));
      // "She asked the old sailor where he lived": whoever is he, or it, is one. Subjects are so without a mark.
      constexpr std::array kUnsaid{"understood", "shared"};
      constexpr std::array kOther{"@v", "@pl", "@group", "@people", "@name"};
      const int told = first[static_cast<std::size_t>(to)];
      const Concept& word = graph.word(to);
      const bool is_object = told >= 0 && graph.arc(told).role != "ARG0" && graph.arc(told).role != "speaker";
      const bool is_thing =
          std::none_of(kOther.begin(), kOther.end(), [&](const char* one) { return has_attribute(word, one); }) &&
          word.sense.empty() && !is_personal_pronoun(graph, to);
      if (is_object && is_thing && !is_listed(graph.arc(led).role, kUnsaid)) attribute_add(graph.word(to), "@sg");
      if (is_own) attribute_add(graph.word(graph.arc(led).to), "@self");
    }
  }
}

}  // namespace lexon
