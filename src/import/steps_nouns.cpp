// A step about events that English says by nouns: "his hope of a rescue", "a short visit", and people and groups that a
// frame names: "their employees", "a pair of shoes".
#include <algorithm>
#include <array>

#include "import/clauses.hpp"
#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {
namespace {

// Verbs whose object is an event as a thing: nobody rejects that something was proposed, but a proposal.
constexpr std::array kOfEvents{
    "reject",     "support",     "describe",  "criticize", "discuss",   "condemn",     "praise",    "welcome",
    "oppose",     "approve",     "examine",   "endorse",   "witness",   "accelerate",  "hinder",    "facilitate",
    "cause",      "trigger",     "spark",     "provoke",   "increase",  "decrease",    "reduce",    "improve",
    "strengthen", "weaken",      "limit",     "restrict",  "control",   "regulate",    "measure",   "evaluate",
    "assess",     "review",      "analyze",   "follow",    "survive",   "celebrate",   "mourn",     "fund",
    "finance",    "organize",    "oversee",   "supervise", "monitor",   "win",         "attract",   "accept",
    "earn",       "gain",        "interrupt", "break",     "promote",   "foster",      "encourage", "inspire",
    "ban",        "await",       "demand",    "seek",      "attack",    "defend",      "justify",   "repeat",
    "exploit",    "base",        "trust",     "carry-out", "call-off",  "postpone",    "cancel",    "delay",
    "reverse",    "halt",        "resume",    "revive",    "study",     "investigate", "ignore",    "neglect",
    "answer",     "honor",       "rely",      "depend",    "fulfill",   "violate",     "breach",    "publish",
    "issue",      "sign",        "submit",    "deliver",   "implement", "draft",       "ratify",    "negotiate",
    "renew",      "commemorate", "avenge",    "host",      "stage",     "wage",        "prolong",   "mount",
    "spread"};

// Verbs that say little themselves: who is their subject does what the noun says, and is not said again.
constexpr std::array kLight{"have",    "give",   "make",       "receive", "lack",    "provide", "do",
                            "lose",    "get",    "hold",       "perform", "conduct", "commit",  "undertake",
                            "undergo", "suffer", "experience", "launch",  "face"};

// What is said of an event as of a thing: how long, great or strong it is.
constexpr std::array kOfThings{
    "strong",    "weak",      "deep",    "short",   "long",     "brief",  "great",   "big",        "small",
    "large",     "high",      "low",     "slow",    "fast",     "quick",  "rapid",   "sudden",     "recent",
    "frequent",  "rare",      "sharp",   "serious", "severe",   "old",    "new",     "intense",    "complete",
    "full",      "thorough",  "careful", "loud",    "quiet",    "bloody", "violent", "successful", "joint",
    "secret",    "public",    "legal",   "illegal", "fierce",   "heated", "mutual",  "final",      "first",
    "last",      "unanimous", "massive", "huge",    "enormous", "late",   "early",   "peaceful",   "expensive",
    "legendary", "famous",    "warm",    "cold",    "cool",     "bitter"};

// What makes somebody feel something; of other verbs the person it is done to is no subject.
constexpr std::array kFeelings{
    "surprise", "please",    "delight",  "shock",      "amaze",     "astonish",  "sadden",  "excite",   "thrill",
    "annoy",    "embarrass", "frighten", "scare",      "upset",     "horrify",   "relieve", "honor",    "amuse",
    "dismay",   "puzzle",    "disgust",  "disappoint", "anger",     "irritate",  "move",    "worry",    "interest",
    "bore",     "confuse",   "content",  "discourage", "encourage", "fascinate", "satisfy", "stun",     "astound",
    "flatter",  "overjoy",   "appall",   "startle",    "baffle",    "enrage",    "perplex", "gratify",  "humiliate",
    "shame",    "reassure",  "charm",    "enchant",    "touch",     "alarm",     "depress", "distress", "impress",
    "intrigue", "outrage",   "tempt"};

// Qualities of who feels, with what he feels it about: "glad about the news".
constexpr std::array kFeelingQualities{"happy",     "unhappy", "glad",    "sad",     "anxious",      "nervous",
                                       "bitter",    "uneasy",  "giddy",   "curious", "enthusiastic", "cynical",
                                       "skeptical", "touchy",  "content", "stoked",  "optimistic",   "pessimistic",
                                       "hopeful",   "edgy",    "mad",     "furious", "irritable"};

bool is_one_clause(Rewriter& graph, int at) {
  for (const char* mark : {"@can", "@must", "@should", "@may", "@neg", "@whether", "@int", "@ask", "@imp", "@quote"}) {
    if (has_attribute(graph.word(at), mark)) return false;
  }
  return is_event(graph, at) && graph.child(at, "conjunct") < 0 && graph.child(at, "condition") < 0;
}

// "He gave a quick answer": what an act is like stands beside its noun.
void event_to_noun(Rewriter& graph, int at) {
  attribute_add(graph.word(at), "@nom");
  attribute_add(graph.word(at), "@whose");
  for (const int led : graph.children(at)) {
    const Concept& word = graph.word(graph.arc(led).to);
    const bool is_quality = graph.arc(led).role == "manner" && !graph.arc(led).inverse && word.sense.empty() &&
                            !word.variable.empty() && graph.children(graph.arc(led).to).empty();
    if (is_quality) graph.arc(led).role = "mod";
  }
}

// Who takes part in the event and is named by the clause above: "she had great hopes", "walking tired him".
void drop_again(Rewriter& graph, int event, int person) {
  for (const char* role : {"ARG0", "ARG1"}) {
    const int led = graph.child(event, role);
    if (led >= 0 && graph.arc(led).to == person) graph.remove(led, Fate::relation);
  }
}

// The object of a verb that governs no clause, and of one that says little: "they made a decision".
void object_apply(Rewriter& graph, int at) {
  const int led = graph.word(at).sense.empty() ? -1 : graph.child(at, "ARG1");
  if (led < 0 || graph.parent(graph.arc(led).to) != led) return;
  const int event = graph.arc(led).to;
  const bool is_light = is_one_of(graph, at, kLight);
  // "She had no interest": it is the verb that is denied.
  if (graph.is(at, "have", "03") && !has_attribute(graph.word(at), "@neg") && is_event(graph, event) &&
      std::erase(graph.word(event).attributes, "@neg") > 0)
    attribute_add(graph.word(at), "@neg");
  if (!is_one_clause(graph, event)) return;
  // "They kept their promise".
  constexpr std::array kKept{"promise", "vow", "pledge", "watch", "balance"};
  const bool is_kept = (graph.is(at, "keep", "01") || graph.is(at, "keep", "02")) && is_one_of(graph, event, kKept) &&
                       (graph.is(at, "keep", "01") || graph.child(event, "ARG2") < 0);
  if (!is_light && !is_kept && !is_one_of(graph, at, kOfEvents)) return;
  // Who lets somebody do something: "it made him laugh".
  if (graph.is(at, "make", "02") || graph.is(at, "have", "04") || graph.is(at, "get", "04")) return;
  event_to_noun(graph, event);
  if (!is_light) return;
  // "She has a great hope": what it is a hope of makes it known.
  bool is_known = false;
  for (const char* mark : {"this", "that", "same", "such", "any", "no", "every", "all", "some", "other", "more"}) {
    for (const int below : graph.children(event)) is_known |= graph.is(graph.arc(below).to, mark);
  }
  if (!is_known && graph.child(event, "ARG1") < 0 && graph.child(event, "poss") < 0 && graph.child(event, "ord") < 0)
    attribute_add(graph.word(event), "@indef");
  const int giver = graph.argument(at, "ARG0");
  if (giver >= 0) drop_again(graph, event, graph.other(giver, at));
}

// "Two attacks": what UMR counts is a noun.
void counted_event_apply(Rewriter& graph, int at) {
  // "Six lies", with a bare number.
  const int number = is_event(graph, at) ? graph.child(at, "quant") : -1;
  const bool is_numbered = number >= 0 && graph.word(graph.arc(number).to).variable.empty();
  const bool is_counted = is_numbered || has_attribute(graph.word(at), "@pl") || has_attribute(graph.word(at), "@sg");
  const int above = graph.parent(at);
  if (!is_counted || above < 0 || graph.arc(above).inverse || !is_one_clause(graph, at)) return;
  const std::string& role = graph.arc(above).role;
  const bool is_reason = (role == "cause" || role == "concession") && has_attribute(graph.word(at), "@pl");
  if ((!role.starts_with("ARG") && !is_reason) || graph.child(at, "domain") >= 0) return;
  if (!has_attribute(graph.word(at), "@agent")) event_to_noun(graph, at);
  if (is_numbered && !graph.is(graph.arc(number).to, "1")) attribute_add(graph.word(at), "@pl");
}

// "They waited for an answer": of whom nobody tells that he does anything, as no argument of any clause is named, it is
// a thing. What is begun or wanted is an infinitive all the same.
void bare_apply(Rewriter& graph, int at) {
  constexpr std::array kActing{"want",  "begin",    "start",    "continue", "stop",  "try",    "let",   "make",
                               "cease", "able",     "capable",  "ready",    "allow", "permit", "help",  "finish",
                               "go",    "come",     "keep",     "like",     "love",  "hate",   "enjoy", "avoid",
                               "learn", "have",     "obligate", "oblige",   "force", "compel", "ask",   "tell",
                               "urge",  "persuade", "teach",    "invite",   "train"};
  if (graph.word(at).sense.empty() || is_one_of(graph, at, kActing)) return;
  for (const char* role : {"ARG1", "ARG2"}) {
    const int led = graph.child(at, role);
    const int event = led < 0 ? -1 : graph.arc(led).to;
    const bool is_bare = event >= 0 && graph.parent(event) == led && graph.children(event).empty() &&
                         graph.mentions(event) == 1 && is_one_clause(graph, event);
    if (is_bare && graph.word(event).attributes.size() == 1) attribute_add(graph.word(event), "@nom");
  }
}

// The subject of a quality of things, "his love is strong", and of a deed: "the loss of the key delayed us".
void subject_apply(Rewriter& graph, int at) {
  const bool is_deed = !graph.word(at).sense.empty() && graph.child(at, "ARG0") >= 0;
  const int led = is_deed ? graph.child(at, "ARG0") : graph.child(at, graph.word(at).sense.empty() ? "domain" : "ARG1");
  if (led < 0 || graph.parent(graph.arc(led).to) != led || !is_one_clause(graph, graph.arc(led).to)) return;
  const int event = graph.arc(led).to;
  if (graph.children(event).empty() || graph.child(event, "domain") >= 0) return;
  const int whom = is_deed ? graph.child(at, "ARG1") : -1;
  const bool is_felt = is_one_of(graph, at, kFeelings) || is_one_of(graph, at, kFeelingQualities);
  if (is_deed ? is_felt || whom < 0 : !is_one_of(graph, at, kOfThings)) return;
  // "Helping others made her happy": who helps is whom it makes so.
  const int made = whom >= 0 && graph.is(at, "make", "02") ? subject_arc(graph, graph.arc(whom).to) : -1;
  const int helper = made < 0 ? -1 : graph.child(event, "ARG0");
  if (helper >= 0 && graph.arc(helper).to == graph.arc(made).to && graph.child(event, "ARG1") >= 0 &&
      graph.mentions(event) == 1) {
    graph.remove(helper, Fate::relation);
    return attribute_add(graph.word(event), "@ger");
  }
  event_to_noun(graph, event);
  // "His fear is greater than his hope."
  const int compared = graph.child(at, "compared-to");
  if (compared >= 0 && is_one_clause(graph, graph.arc(compared).to) && graph.child(graph.arc(compared).to, "ARG0") >= 0)
    event_to_noun(graph, graph.arc(compared).to);
  // "The boy's fear of losing the key kept him awake": who fears is the subject of what he fears.
  const int feared = graph.child(event, "ARG1");
  const int fearing = feared < 0 || whom < 0 ? -1 : graph.child(graph.arc(feared).to, "ARG0");
  if (fearing >= 0 && graph.arc(fearing).to == graph.arc(whom).to) return;
  if (whom >= 0) drop_again(graph, event, graph.arc(whom).to);
}

// "She died in the defense of her home": an event of nobody is a place as a noun.
void place_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "location");
  const int event = led < 0 ? -1 : graph.arc(led).to;
  if (event < 0 || graph.parent(event) != led || !is_one_clause(graph, event) || graph.is(event, "be-located-at", "91"))
    return;
  const bool is_of_nobody = graph.child(event, "ARG0") < 0 && graph.child(event, "domain") < 0;
  if (is_of_nobody && graph.child(event, "ARG1") >= 0 && graph.child(event, "location") < 0)
    event_to_noun(graph, event);
}

// "All drawings", "another attempt": what is counted out by a determiner is a noun.
void determined_apply(Rewriter& graph, int at) {
  constexpr std::array kDeterminers{"all", "every", "each", "another", "these", "those", "many", "several", "such"};
  const int above = graph.parent(at);
  const bool is_part = above >= 0 && !graph.arc(above).inverse &&
                       (graph.arc(above).role == "domain" || graph.arc(above).role.starts_with("ARG"));
  if (!is_part || !is_one_clause(graph, at)) return;
  // "His third attempt"; but "he was born first" tells when.
  const int counted = graph.child(at, "ord");
  if (counted >= 0 && graph.word(graph.arc(counted).to).name != "1" && graph.child(at, "time") < 0 &&
      !has_attribute(graph.word(at), "@agent")) {
    event_to_noun(graph, at);
    return;
  }
  const int led = graph.child(at, "mod");
  if (led < 0 || graph.arc(led).inverse || !is_one_of(graph, graph.arc(led).to, kDeterminers)) return;
  if (!graph.children(graph.arc(led).to).empty() || has_attribute(graph.word(at), "@agent")) return;
  event_to_noun(graph, at);
  constexpr std::array kOne{"every", "each", "another", "such"};
  if (!is_one_of(graph, graph.arc(led).to, kOne)) attribute_add(graph.word(at), "@pl");
}

// (b / ban-01 :mod (t / total)) as an argument: "a total ban". A quality describes a noun; a deed has a manner. What it
// is said of or done to stays a clause of its own.
void qualified_apply(Rewriter& graph, int at) {
  constexpr std::array kNoQuality{"only",    "even", "just",    "also",    "too",      "still", "again",
                                  "already", "so",   "then",    "perhaps", "maybe",    "very",  "once",
                                  "alone",   "soon", "yet",     "either",  "all",      "both",  "most",
                                  "as",      "more", "exactly", "instead", "together", "ever"};
  const int above = graph.parent(at);
  if (above < 0 || graph.arc(above).inverse || !is_one_clause(graph, at)) return;
  const int led = graph.child(at, "mod");
  const int quality = led < 0 ? -1 : graph.arc(led).to;
  const bool is_quality = quality >= 0 && graph.word(quality).sense.empty() && !graph.word(quality).variable.empty() &&
                          !has_attribute(graph.word(quality), "@name") && !is_one_of(graph, quality, kNoQuality);
  constexpr std::array kParts{"op1",  "topic",       "instrument",  "location", "source",
                              "path", "destination", "beneficiary", "domain",   "accompanier"};
  const std::string& role = graph.arc(above).role;
  const bool is_part = role.starts_with("ARG") || is_listed(role, kParts);
  if ((!is_quality && graph.child(at, "poss") < 0) || !is_part || has_attribute(graph.word(at), "@agent") ||
      graph.child(at, "domain") >= 0)
    return;
  if (graph.child(at, "ARG0") < 0 && graph.child(at, "ARG1") < 0) event_to_noun(graph, at);
}

// "The charge that the police brought": an event of nobody of which a clause is told is a noun.
void described_event_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  const bool is_part = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role.starts_with("ARG");
  if (!is_part || !is_one_clause(graph, at) || graph.child(at, "ARG0") >= 0 || graph.child(at, "ARG1") >= 0) return;
  if (graph.child(at, "domain") >= 0) return;
  for (const char* role : {"ARG0", "ARG1"}) {
    const int told = graph.child(at, role, true);
    if (told >= 0 && is_event(graph, graph.arc(told).to) && !graph.children(graph.arc(told).to).empty())
      return event_to_noun(graph, at);
  }
}

// "Their decision to leave": what is decided has the same subject, and where nobody is named it is an infinitive, too.
void bare_infinitive_apply(Rewriter& graph, int at) {
  constexpr std::array kWilling{"decide",   "try",    "attempt", "refuse",  "promise",  "plan",    "intend",
                                "threaten", "vow",    "pledge",  "manage",  "hesitate", "strive",  "aim",
                                "offer",    "choose", "learn",   "prepare", "desire",   "propose", "agree",
                                "want",     "hope",   "wish",    "need"};
  const int led = graph.word(at).sense.empty() || !is_one_of(graph, at, kWilling) ? -1 : graph.child(at, "ARG1");
  if (led < 0 || graph.argument(at, "ARG0") >= 0 || graph.parent(graph.arc(led).to) != led) return;
  const int event = graph.arc(led).to;
  if (!is_one_clause(graph, event) || graph.child(event, "ARG0") >= 0 || graph.child(event, "ord") >= 0) return;
  if (graph.child(event, "mod") < 0 && graph.child(event, "poss") < 0) attribute_add(graph.word(event), "@bareinf");
}

// "The possibility of war".
void possibility_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "possible", "01") ? graph.child(at, "ARG1") : -1;
  const int above = led < 0 ? -1 : graph.parent(at);
  if (above < 0 || graph.arc(above).inverse || !graph.arc(above).role.starts_with("ARG")) return;
  const Concept& what = graph.word(graph.arc(led).to);
  if (!what.sense.empty() || what.variable.empty() || graph.child(graph.arc(led).to, "domain") >= 0) return;
  graph.word(at).name = "possibility";
  graph.word(at).sense.clear();
  graph.word(at).attributes.clear();
  graph.arc(led).role = "org";
}

// "The boy is glad about the news": who feels is the subject, whatever number the bank gives him.
void feeling_apply(Rewriter& graph, int at) {
  const bool is_felt = !graph.word(at).sense.empty() && is_one_of(graph, at, kFeelingQualities);
  // Who likes somebody madly is the subject anyway.
  if (!is_felt || graph.is(at, "mad", "03") || graph.child(at, "ARG0") < 0 || graph.child(at, "ARG1") < 0) return;
  attribute_add(graph.word(at), "@psv");
  // "She was glad to see him", "she was curious about seeing him".
  constexpr std::array kToAct{"happy", "unhappy", "glad", "sad", "content"};
  attribute_add(graph.word(at), is_one_of(graph, at, kToAct) ? "@moved" : "@felt");
}

// "A humiliating defeat": what makes somebody feel something.
void felt_apply(Rewriter& graph, int at) {
  const int led = graph.parent(at);
  const bool is_told = led >= 0 && graph.arc(led).inverse && graph.arc(led).role == "ARG0" && is_event(graph, at);
  if (is_told && graph.children(at).empty() && is_one_of(graph, at, kFeelings)) attribute_add(graph.word(at), "@felt");
}

// "She expressed her concern about the violence": the noun of what moves somebody has whom it moves as its owner, and
// what moves him behind a preposition.
void emotion_apply(Rewriter& graph, int at) {
  constexpr std::pair<const char*, const char*> kEmotions[] = {
      {"concern", "about"},   {"worry", "about"}, {"interest", "in"},     {"surprise", "at"},  {"shock", "at"},
      {"anger", "at"},        {"delight", "at"},  {"disappoint", "with"}, {"satisfy", "with"}, {"frustrate", "with"},
      {"fascinate", "with"},  {"outrage", "at"},  {"amaze", "at"},        {"excite", "about"}, {"confuse", "about"},
      {"dissatisfy", "with"}, {"dismay", "at"},   {"disgust", "at"}};
  const int above = graph.parent(at);
  const int said = above < 0 || graph.arc(above).inverse ? -1 : graph.arc(above).from;
  constexpr std::array kShown{"express", "voice", "show", "share", "hide", "feel", "cause", "arouse", "spark", "have"};
  const bool is_shown = said >= 0 && graph.arc(above).role == "ARG1" && is_one_of(graph, said, kShown);
  if (!is_shown || !is_one_clause(graph, at)) return;
  for (const auto& [name, word] : kEmotions) {
    if (!graph.is(at, name, "01")) continue;
    event_to_noun(graph, at);
    const int who = graph.child(at, "ARG1");
    if (who >= 0) graph.replace(who, at, graph.arc(who).to, "poss");
    const int what = graph.child(at, "ARG0");
    if (what < 0) return;
    const int preposition = graph.add_concept(word);
    graph.add(preposition, graph.arc(what).to, "op1");
    graph.replace(what, at, preposition, "prep");
    return;
  }
}

// "Because of a lack of rain": what nobody in particular lacks, fears or needs.
void bare_cause_apply(Rewriter& graph, int at) {
  constexpr std::array kHeld{"lack",     "need",  "fear",    "risk",    "concern", "demand",
                             "interest", "doubt", "hope",    "support", "fail",    "increase",
                             "decrease", "rise",  "decline", "fall",    "drop",    "shortage"};
  for (const char* role : {"cause", "concession"}) {
    const int led = graph.child(at, role);
    const int event = led < 0 ? -1 : graph.arc(led).to;
    if (event < 0 || !is_one_of(graph, event, kHeld) || !is_one_clause(graph, event)) continue;
    const int what = graph.child(event, "ARG1");
    const bool is_plain = what >= 0 && graph.parent(event) == led &&
                          (!is_event(graph, graph.arc(what).to) || graph.children(graph.arc(what).to).empty());
    if (is_plain && graph.child(event, "ARG0") < 0 && graph.child(event, "time") < 0) event_to_noun(graph, event);
  }
  // "Thank you for your advice".
  const int led = graph.is(at, "thank", "01") || graph.is(at, "apologize", "01") ? graph.child(at, "ARG2") : -1;
  const int event = led < 0 ? -1 : graph.arc(led).to;
  if (event >= 0 && is_one_clause(graph, event) && graph.children(event).size() == 1 && graph.child(event, "ARG0") >= 0)
    event_to_noun(graph, event);
}

// Who is named by what is done to him: "their employees", "the victims of the storm".
void patient_apply(Rewriter& graph, int at) {
  constexpr std::pair<const char*, const char*> kNamed[] = {
      {"employ", "employee"},       {"imprison", "prisoner"}, {"jail", "prisoner"},   {"detain", "detainee"},
      {"nominate", "nominee"},      {"victimize", "victim"},  {"suspect", "suspect"}, {"evacuate", "evacuee"},
      {"interview", "interviewee"}, {"appoint", "appointee"}, {"train", "trainee"},   {"deport", "deportee"}};
  const int led = graph.is(at, "person") ? graph.child(at, "ARG1", true) : -1;
  if (led < 0 || graph.child(at, "ARG0", true) >= 0) return;
  const int frame = graph.arc(led).to;
  const std::vector<int> below = graph.children(frame);
  // "A former employee".
  constexpr std::array kTimes{"former", "current", "future", "previous"};
  const auto is_term = [&](int one) {
    return graph.arc(one).role == "time" && is_one_of(graph, graph.arc(one).to, kTimes);
  };
  const bool is_plain = std::all_of(below.begin(), below.end(),
                                    [&](int one) {
                                      return (graph.arc(one).role == "ARG0" || is_term(one)) && !graph.arc(one).inverse;
                                    }) &&
                        graph.mentions(frame) == 1 && graph.word(frame).attributes.size() == 1;
  const auto named = std::find_if(std::begin(kNamed), std::end(kNamed),
                                  [&](const auto& one) { return graph.word(frame).name == one.first; });
  if (!is_plain || named == std::end(kNamed)) return;
  for (const int one : below) graph.replace(one, at, graph.arc(one).to, is_term(one) ? "mod" : "org");
  graph.settle_concept(frame, Fate::word);
  graph.remove(led, Fate::word);
  graph.word(at).name = named->second;
}

// (r / room :purpose (w / wait-01)): "the waiting room"; "time to wait" is no kind of time.
void compound_apply(Rewriter& graph, int at) {
  constexpr std::array kMade{"room",      "boat",    "ship",   "hall",     "machine", "board",  "pot",    "pan",
                             "table",     "chair",   "pool",   "rod",      "net",     "knife",  "gun",    "ground",
                             "suit",      "bag",     "trip",   "license",  "center",  "site",   "glass",  "shoe",
                             "area",      "station", "can",    "house",    "school",  "tool",   "ticket", "stick",
                             "device",    "lamp",    "light",  "line",     "club",    "lesson", "class",  "season",
                             "equipment", "gear",    "method", "facility", "system"};
  const int led = graph.word(at).sense.empty() && is_one_of(graph, at, kMade) ? graph.child(at, "purpose") : -1;
  const int deed = led < 0 ? -1 : graph.arc(led).to;
  const bool is_bare = deed >= 0 && is_event(graph, deed) && graph.children(deed).empty() &&
                       graph.mentions(deed) == 1 && graph.word(deed).attributes.size() == 1;
  if (!is_bare || graph.child(at, "domain") >= 0) return;
  graph.arc(led).role = "mod";
  attribute_add(graph.word(deed), "@ger");
}

// (b / book :ARG1-of (f / favor-01 :ARG0 s)): "her favorite book".
void favorite_apply(Rewriter& graph, int at) {
  if (!graph.word(at).sense.empty() || has_attribute(graph.word(at), "@name")) return;
  const std::vector<int> told = graph.children(at);
  const auto favored = std::find_if(told.begin(), told.end(), [&](int one) {
    return graph.arc(one).inverse && graph.arc(one).role == "ARG1" && graph.is(graph.arc(one).to, "favor", "01");
  });
  if (favored == told.end()) return;
  const int led = *favored;
  const int frame = graph.arc(led).to;
  if (graph.mentions(frame) != 1) return;
  const std::vector<int> below = graph.children(frame);
  const int whose = graph.child(frame, "ARG0");
  if (below.size() != (whose < 0 ? 0U : 1U) || !is_one_clause(graph, frame)) return;
  if (whose >= 0 && graph.child(at, "poss") >= 0) return;
  if (whose >= 0) graph.replace(whose, at, graph.arc(whose).to, "poss");
  graph.word(frame).name = "favorite";
  graph.word(frame).sense.clear();
  graph.word(frame).attributes.clear();
  graph.replace(led, at, frame, "mod");
}

// "He remembered the sound of the bell": what is heard or smelt, and not that it sounded.
void perceived_noun_apply(Rewriter& graph, int at) {
  constexpr std::array kGiven{"sound", "smell", "taste", "ring", "echo", "glow", "flavor", "scent"};
  const int above = graph.parent(at);
  const bool is_part = above >= 0 && !graph.arc(above).inverse &&
                       (graph.arc(above).role.starts_with("ARG") || graph.arc(above).role.starts_with("op"));
  if (!is_part || !is_one_of(graph, at, kGiven) || !is_one_clause(graph, at)) return;
  // "The bell began to ring", "he said that the soup tasted", "after the bell rang".
  constexpr std::array kOfClauses{"begin", "start", "continue", "cease",  "stop",  "say",   "think", "believe",
                                  "claim", "hope",  "expect",   "before", "after", "until", "since", "while"};
  const int governor = graph.arc(above).from;
  if (is_one_of(graph, governor, kOfClauses) || is_seeming(graph, governor)) return;
  int sources = 0;
  for (const int led : graph.children(at)) {
    const Arc& one = graph.arc(led);
    sources += !one.inverse && (one.role == "ARG0" || one.role == "ARG1");
    if (!one.inverse && one.role != "ARG0" && one.role != "ARG1" && one.role != "mod") return;
  }
  if (sources == 1) event_to_noun(graph, at);
}

// (c / control-01 :ARG1 (p / pest)): "pest control", where nobody in particular controls it.
void kind_of_deed(Rewriter& graph, int at) {
  constexpr std::array kDeeds{"control", "protect", "create",  "manage",  "conserve", "consume",   "insure", "enforce",
                              "prevent", "detect",  "pollute", "traffic", "smuggle",  "transport", "reform"};
  const bool is_deed = is_one_of(graph, at, kDeeds) || graph.is(at, "care", "03");
  constexpr std::array kMarks{"@v", "@nom", "@whose", "@and", "@or"};
  const std::vector<std::string>& marks = graph.word(at).attributes;
  const bool is_plain =
      is_event(graph, at) && graph.mentions(at) == 1 &&
      std::all_of(marks.begin(), marks.end(), [&](const auto& one) { return is_listed(one, kMarks); });
  const int above = is_deed && is_plain ? graph.parent(at) : -1;
  const int joined = graph.child(at, "conjunct");
  if (above < 0 || graph.arc(above).inverse || graph.children(at).size() != (joined < 0 ? 1U : 2U)) return;
  const std::string& role = graph.arc(above).role;
  const int governor = graph.arc(above).from;
  constexpr std::array kActing{"want",    "try",     "begin",    "start",  "help",   "need",   "stop",   "fail",
                               "promise", "like",    "continue", "allow",  "let",    "make",   "permit", "force",
                               "order",   "tell",    "ask",      "teach",  "learn",  "decide", "plan",   "able",
                               "capable", "attempt", "refuse",   "manage", "intend", "hope",   "have",   "use"};
  const bool is_listed_noun =
      role == "conjunct" && (graph.word(governor).sense.empty() || has_attribute(graph.word(governor), "@nom"));
  const bool is_part =
      is_listed_noun || role.starts_with("op") || role.starts_with("ARG") || role == "topic" || role == "domain";
  if (!is_part || is_one_of(graph, governor, kActing) || has_attribute(graph.word(at), "@agent")) return;
  const int led = graph.child(at, "ARG1");
  const int what = led < 0 ? -1 : graph.arc(led).to;
  if (what < 0 || !graph.children(what).empty() || graph.mentions(what) != 1) return;
  const Concept& word = graph.word(what);
  if (!word.sense.empty() || word.variable.empty() || !word.attributes.empty() || is_personal_pronoun(graph, what) ||
      word.name == "thing" || word.name == "person" || is_one_of(graph, what, kDemonstratives))
    return;
  attribute_add(graph.word(at), "@nom");
  attribute_add(graph.word(at), "@noart");
  graph.arc(led).role = "mod";
}

// "He nodded with some doubt", "she looked at him with astonishment": so much of an act is no way to do it, nor is what
// is felt meanwhile.
void manner_amount_apply(Rewriter& graph, int at) {
  constexpr std::array kOfAnAct{"some", "much", "little", "great", "lot", "any", "certain", "considerable", "more"};
  const int led = graph.word(at).sense.empty() ? -1 : graph.child(at, "manner");
  const int event = led < 0 ? -1 : graph.arc(led).to;
  if (event < 0 || !is_one_clause(graph, event) || graph.mentions(event) != 1) return;
  bool is_amount = false;
  for (const char* role : {"mod", "quant"}) {
    const int amount = graph.child(event, role);
    is_amount |= amount >= 0 && is_one_of(graph, graph.arc(amount).to, kOfAnAct);
  }
  // What is felt is felt by the doer, and about nothing that is told.
  constexpr std::array kFelt{"admire", "fear",    "envy", "pity",  "respect",
                             "doubt",  "despair", "care", "enjoy", "desire"};
  const bool is_moved = is_one_of(graph, event, kFeelings);
  const int feeler = is_moved || is_one_of(graph, event, kFelt) ? graph.child(event, is_moved ? "ARG1" : "ARG0") : -1;
  const int doer = graph.child(at, "ARG0");
  const bool is_felt = feeler >= 0 && doer >= 0 && graph.arc(feeler).to == graph.arc(doer).to &&
                       graph.child(event, is_moved ? "ARG0" : "ARG1") < 0;
  if (!is_amount && !is_felt) return;
  event_to_noun(graph, event);
  if (doer >= 0) drop_again(graph, event, graph.arc(doer).to);
}

// "A pair of shoes", "a group of old friends": what a group is made of is several, and the group is mostly new.
void group_members_apply(Rewriter& graph, int at) {
  constexpr std::array kGroups{"group", "pair",   "crowd", "herd",   "flock",      "bunch",   "set",   "series",
                               "row",   "couple", "list",  "gang",   "collection", "variety", "range", "number",
                               "swarm", "fleet",  "chain", "bundle", "class",      "circle",  "dozen", "stack"};
  // "The number of victims rose".
  constexpr std::array kChanging{"rise",   "increase", "fall",   "grow",  "drop",  "decline", "decrease", "reach",
                                 "exceed", "double",   "reduce", "climb", "surge", "limit",   "remain"};
  const int above = graph.is(at, "number") || graph.is(at, "amount") ? graph.parent(at) : -1;
  const bool is_changing = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role.starts_with("ARG") &&
                           is_one_of(graph, graph.arc(above).from, kChanging);
  if (is_changing && graph.child(at, "mod") < 0) attribute_add(graph.word(at), "@def");
  // "A glass of water".
  constexpr std::array kVessels{"glass",  "cup",    "bottle", "sack",  "bag",   "basket", "bowl",    "plate", "pot",
                                "jug",    "loaf",   "piece",  "heap",  "pile",  "drop",   "slice",   "bit",   "handful",
                                "barrel", "bucket", "mug",    "spoon", "flask", "pinch",  "mouthful"};
  const bool is_vessel = graph.word(at).sense.empty() && is_one_of(graph, at, kVessels);
  const bool is_group = graph.word(at).sense.empty() && is_one_of(graph, at, kGroups);
  // "The union of miners".
  constexpr std::array kBodies{
      "team",       "union",        "crew",      "army",       "committee", "council",   "board",     "family",
      "jury",       "panel",        "band",      "troop",      "squad",     "staff",     "network",   "league",
      "club",       "society",      "party",     "choir",      "pack",      "audience",  "coalition", "association",
      "delegation", "organization", "community", "generation", "nation",    "gathering", "assembly"};
  const bool is_body = graph.word(at).sense.empty() && is_one_of(graph, at, kBodies);
  const int led = is_vessel || is_group || is_body ? graph.child(at, "consist-of") : -1;
  if (led < 0) return;
  Concept& member = graph.word(graph.arc(led).to);
  const bool is_noun = (member.sense.empty() || has_attribute(member, "@agent")) && !member.variable.empty() &&
                       !has_attribute(member, "@name") && !is_personal_pronoun(graph, graph.arc(led).to);
  if (is_noun && (is_group || is_body)) attribute_add(member, "@pl");
  if (is_body) return;
  const bool is_known = has_attribute(graph.word(at), "@pl") || has_attribute(graph.word(at), "@def") ||
                        graph.child(at, "mod") >= 0 || graph.child(at, "poss") >= 0 || graph.child(at, "ord") >= 0;
  constexpr std::array kCounts{"number", "variety", "range", "series"};
  if (is_noun && !is_known && !is_one_of(graph, at, kCounts) && graph.child(at, "quant") < 0)
    attribute_add(graph.word(at), "@indef");
}

// "A gold coin", "a wooden box": what a thing is made of stands in front of it where it is one word.
void material_apply(Rewriter& graph, int at) {
  constexpr std::pair<const char*, const char*> kMaterials[] = {
      {"gold", "gold"},       {"silver", "silver"},       {"iron", "iron"},     {"steel", "steel"},
      {"stone", "stone"},     {"wood", "wooden"},         {"paper", "paper"},   {"brick", "brick"},
      {"plastic", "plastic"}, {"cotton", "cotton"},       {"wool", "woollen"},  {"silk", "silk"},
      {"leather", "leather"}, {"metal", "metal"},         {"copper", "copper"}, {"bronze", "bronze"},
      {"marble", "marble"},   {"cardboard", "cardboard"}, {"straw", "straw"},   {"velvet", "velvet"},
      {"tin", "tin"},         {"clay", "clay"},           {"rubber", "rubber"}, {"concrete", "concrete"}};
  // "A piece of wood" is no thing that is made of it.
  constexpr std::array kParts{"piece", "block", "sheet", "bar",  "layer", "pile", "heap", "lump", "strip",  "plank",
                              "bit",   "slab",  "sort",  "kind", "scrap", "ton",  "lot",  "mass", "handful"};
  const int led = graph.word(at).sense.empty() && !is_one_of(graph, at, kParts) ? graph.child(at, "consist-of") : -1;
  if (led < 0 || has_attribute(graph.word(at), "@measure") || graph.word(at).variable.empty()) return;
  const int what = graph.arc(led).to;
  Concept& material = graph.word(what);
  // "A circle of stones" is made of several.
  if (!material.sense.empty() || has_attribute(material, "@pl") || graph.mentions(what) != 1 ||
      !graph.children(what).empty())
    return;
  for (const auto& [name, said] : kMaterials) {
    if (material.name != name) continue;
    material.name = said;
    graph.arc(led).role = "mod";
    return;
  }
}

// True for a noun of which nothing tells whether it is one, several or known.
bool is_open_noun(Rewriter& graph, int at) {
  const Concept& word = graph.word(at);
  constexpr std::array kKnown{"@pl", "@sg", "@def", "@indef", "@name", "@measure", "@ref", "@neg", "@agent", "@result"};
  return word.sense.empty() && !word.is_text && !word.variable.empty() && graph.mentions(at) <= 1 &&
         !is_personal_pronoun(graph, at) &&
         std::none_of(kKnown.begin(), kKnown.end(), [&](const char* one) { return has_attribute(word, one); });
}

// "A red apple and a green pear": the part of a list that has a quality of its own has its own article.
void listed_apply(Rewriter& graph, int led) {
  const Arc one = graph.arc(led);
  if (one.gone || one.inverse || one.role != "conjunct" || !is_open_noun(graph, one.to)) return;
  bool is_described = false;
  constexpr std::array kDetermining{"this", "that", "these",   "those", "all",     "every", "each",
                                    "some", "any",  "no",      "other", "another", "same",  "such",
                                    "only", "both", "several", "many",  "few",     "more"};
  for (const int below : graph.children(one.to)) {
    const Arc& told = graph.arc(below);
    if (told.role == "poss" || told.role == "quant" || told.role == "ord" || told.role == "domain" ||
        told.role == "part-of")
      return;
    if (told.role == "mod" && (is_listed(graph.word(told.to).name, kDetermining) || !graph.word(told.to).sense.empty()))
      return;
    is_described |= told.inverse || told.role == "mod" || told.role == "location";
  }
  if (!is_described) return;
  int first = one.from;
  for (int steps = graph.count(); steps > 0 && graph.parent(first) >= 0; --steps) {
    const Arc& above = graph.arc(graph.parent(first));
    if (above.role != "conjunct") break;
    first = above.from;
  }
  const bool is_noun = graph.word(first).sense.empty() && !has_attribute(graph.word(first), "@name") &&
                       !is_personal_pronoun(graph, first) && graph.child(first, "poss") < 0;
  const int held = graph.parent(first);
  // "The left side and the right side".
  if (graph.word(first).name == graph.word(one.to).name) return;
  // "A lovely song and a warm voice": nouns with no verb above them are as new as one alone.
  const bool is_alone = held < 0 && first == graph.meaning().root && graph.child(first, "domain") < 0;
  const bool is_of_verb = held >= 0 && !graph.arc(held).inverse && is_event(graph, graph.arc(held).from);
  if (!is_noun || (!is_alone && !is_of_verb)) return;
  const bool is_subject = is_of_verb && subject_arc(graph, graph.arc(held).from) == held;
  attribute_add(graph.word(one.to), is_subject ? "@def" : "@indef");
  // "A red cup and a big plate": the first is no better known.
  const bool is_alike = graph.child(first, "mod") >= 0 && graph.child(first, "ord") < 0 &&
                        graph.child(first, "part-of") < 0 &&
                        !is_listed(graph.word(graph.arc(graph.child(first, "mod")).to).name, kDetermining);
  if (!is_subject && is_alike && is_open_noun(graph, first)) attribute_add(graph.word(first), "@indef");
}

// "She had a beak and a tail": what somebody has or gets, if several things are named at once, is new, and each of them has
// an article.
void gained_apply(Rewriter& graph, int at) {
  constexpr std::array kGaining{"have", "own", "buy", "build", "draw", "make", "carry", "get", "find", "bring", "wear"};
  const int led = is_event(graph, at) && is_one_of(graph, at, kGaining) ? graph.child(at, "ARG1") : -1;
  const int first = led < 0 || graph.child(at, "ARG0") < 0 ? -1 : graph.arc(led).to;
  if (first < 0 || graph.child(first, "conjunct") < 0) return;
  const auto is_bare = [&](int part) {
    const std::vector<int> below = graph.children(part);
    return is_open_noun(graph, part) && std::all_of(below.begin(), below.end(), [&](int one) {
             return graph.arc(one).role == "conjunct" || graph.arc(one).role == "purpose" ||
                    graph.arc(one).role == "consist-of";
           });
  };
  for (int part = first, steps = graph.count(); part >= 0 && steps > 0; --steps) {
    if (is_bare(part)) attribute_add(graph.word(part), is_uncounted(graph.word(part).name) ? "@noart" : "@indef");
    const int next = graph.child(part, "conjunct");
    part = next < 0 ? -1 : graph.arc(next).to;
  }
}

// "She drew a picture of a horse", "he built a house": what is made is new, and so is what is shown.
void made_apply(Rewriter& graph, int at) {
  constexpr std::array kMaking{"draw", "build", "compose", "sketch", "carve", "sew", "knit", "bake", "dig"};
  int made = is_event(graph, at) && is_one_of(graph, at, kMaking) ? graph.child(at, "ARG1") : -1;
  // "Can I ask you a question?"
  const int told = graph.is(at, "ask", "01") || graph.is(at, "tell", "01") ? graph.child(at, "ARG1") : -1;
  if (told >= 0 && is_one_of(graph, graph.arc(told).to, std::array{"question", "story", "joke", "lie"})) made = told;
  if (made >= 0 && is_open_noun(graph, graph.arc(made).to) && graph.child(graph.arc(made).to, "poss") < 0 &&
      graph.child(graph.arc(made).to, "ord") < 0 && graph.child(graph.arc(made).to, "mod") < 0 &&
      graph.child(graph.arc(made).to, "part-of") < 0 && graph.child(at, "ARG0") >= 0)
    attribute_add(graph.word(graph.arc(made).to), "@indef");
  constexpr std::array kPictures{"picture",    "drawing", "painting", "portrait", "photo",
                                 "photograph", "sketch",  "image",    "statue"};
  const int shown = graph.word(at).sense.empty() && is_one_of(graph, at, kPictures) ? graph.child(at, "topic") : -1;
  if (shown < 0) return;
  const int what = graph.arc(shown).to;
  graph.arc(shown).role = "consist-of";
  if (is_open_noun(graph, what) && graph.child(what, "poss") < 0 && graph.child(what, "ord") < 0)
    attribute_add(graph.word(what), "@indef");
}

// "I love flowers", "he is afraid of tigers": of whom or what somebody thinks so without a word of which one, he means all
// of the kind. Rules keep what is not counted, "I love music".
void of_kind_apply(Rewriter& graph, int at) {
  constexpr std::array kOfKinds{"love",   "adore",   "like",    "hate", "dislike", "detest", "loathe", "fear",
                                "prefer", "despise", "collect", "hunt", "breed",   "trade",  "afraid", "interest",
                                "fond",   "need",    "lack",    "sell", "eat",     "gather", "count",  "distrust"};
  // "She ate an apple", "he fears a war": a deed that is told once is about one.
  constexpr std::array kDeeds{"eat", "sell", "hunt", "gather", "count", "need"};
  if (!is_event(graph, at) || !is_one_of(graph, at, kOfKinds)) return;
  if (has_attribute(graph.word(at), "@past") || has_attribute(graph.word(at), "@nom")) return;
  const bool is_deed = is_one_of(graph, at, kDeeds);
  const int who = graph.child(at, "ARG0");
  const bool is_general =
      has_attribute(graph.word(at), "@pres") || has_attribute(graph.word(at), "@can") ||
      (who >= 0 && is_one_of(graph, graph.arc(who).to, std::array{"we", "they", "people", "one", "you"}));
  if (is_deed && !is_general) return;
  int led = graph.child(at, graph.is(at, "interest", "01") ? "ARG2" : "ARG1");
  for (int steps = graph.count(); led >= 0 && steps > 0; --steps) {
    const int kind = graph.arc(led).to;
    const std::vector<int> below = graph.children(kind);
    const bool is_bare =
        std::all_of(below.begin(), below.end(), [&](int one) { return graph.arc(one).role == "conjunct"; });
    if (is_bare && is_open_noun(graph, kind)) attribute_add(graph.word(kind), "@pl");
    led = graph.child(kind, "conjunct");
  }
}

}  // namespace

// (r / reject-01 :ARG0 s :ARG1 (p / propose-01 :ARG0 t)): the proposal has @nom, and rules choose its noun. Runs behind
// questions and quotations, whose clauses are none, and before voice and control, as a noun has no infinitive above it.
void step_nouns(Meaning& meaning) {
  Rewriter graph(meaning, "nouns");
  // "This flower", though it is mostly flowers that are spoken of.
  for (const Arc& one : meaning.arcs) {
    const bool is_pointed_at = !one.gone && !one.inverse && one.role == "mod" &&
                               is_one_of(graph, one.to, std::array{"this", "that"}) &&
                               graph.word(one.from).sense.empty();
    if (is_pointed_at && !has_attribute(graph.word(one.from), "@pl")) attribute_add(graph.word(one.from), "@sg");
  }
  for (int led = 0; led < static_cast<int>(meaning.arcs.size()); ++led) listed_apply(graph, led);
  for (int at = 0; at < graph.count(); ++at) {
    object_apply(graph, at);
    counted_event_apply(graph, at);
    bare_apply(graph, at);
    subject_apply(graph, at);
    place_apply(graph, at);
    determined_apply(graph, at);
    described_event_apply(graph, at);
    qualified_apply(graph, at);
    bare_infinitive_apply(graph, at);
    feeling_apply(graph, at);
    bare_cause_apply(graph, at);
    felt_apply(graph, at);
    emotion_apply(graph, at);
    possibility_apply(graph, at);
    patient_apply(graph, at);
    compound_apply(graph, at);
    favorite_apply(graph, at);
    perceived_noun_apply(graph, at);
    manner_amount_apply(graph, at);
    kind_of_deed(graph, at);
    group_members_apply(graph, at);
    material_apply(graph, at);
    made_apply(graph, at);
    gained_apply(graph, at);
    of_kind_apply(graph, at);
  }
}

}  // namespace lexon
