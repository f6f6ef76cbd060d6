// Steps about clauses: what can or must be, what is denied, who does something, in which voice and which form.
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

// A frame that a modal verb says, and the role of the clause that it governs.
// A bank has what English says with a modal verb as a frame above the clause: (o / obligate-01 :ARG1 i :ARG2 (g / go-02
// :ARG0 i)) is "I must go". Somebody who obliges or recommends, ARG0, makes a verb of it again.
struct Modal {
  const char* name;
  const char* sense;
  const char* governed;
  const char* attribute;
};

// obligate-01 has two rows, as some annotators number its clause ARG1.
constexpr Modal kModals[] = {
    {"possible", "01", "ARG1", "@can"},     {"obligate", "01", "ARG2", "@must"}, {"obligate", "01", "ARG1", "@must"},
    {"recommend", "01", "ARG1", "@should"}, {"use", "03", "ARG1", "@used"},      {"permit", "01", "ARG1", "@may"},
    {"allow", "01", "ARG1", "@may"},
};

// "You may leave", "nobody can enter": who talks permits it, or some rule does; "he was permitted to leave" is a story.
bool is_permission(Rewriter& graph, int at, int clause) {
  constexpr std::array kHere{"i", "you", "we", "one", "nobody", "anybody", "anyone", "everybody", "everyone"};
  const int subject = subject_arc(graph, clause);
  const int whom = graph.child(at, "ARG2");
  return subject >= 0 && is_one_of(graph, graph.arc(subject).to, kHere) && graph.argument(at, "ARG0") < 0 &&
         (whom < 0 || graph.arc(whom).to == graph.arc(subject).to);
}

// Who is not obliged may do it all the same: "you need not go". What is possible may be that something is not so: "he might not
// come", where "he cannot come" denies the possibility.
const char* modal_mark(Rewriter& graph, int at, int clause, const Modal& modal) {
  const bool is_denied = has_attribute(graph.word(at), "@neg");
  // "She never had to wait."
  const bool is_never = child_among(graph, at, "time", std::array{"ever"}) >= 0;
  if (graph.is(at, "obligate", "01") && is_denied && !is_never) return "@need";
  const bool is_open = graph.is(at, "possible", "01") && !is_denied && has_attribute(graph.word(clause), "@neg") &&
                       !has_attribute(graph.word(at), "@int");
  return is_open ? "@maynot" : modal.attribute;
}

// Who is obliged is the subject of what he is obliged to do, of each clause if they are several.
// (o / obligate-01 :ARG1 (b / boy) :ARG2 (a / and :op1 (w / wash-01) :op2 (e / eat-01))): "the boy must wash and eat", with
// the boy below each.
void obliged_apply(Rewriter& graph, int at, const std::vector<int>& clauses) {
  // The clause itself has one of the two numbers, and is taken out by now: the other is a person.
  for (const char* role : {"ARG1", "ARG2"}) {
    const int who = graph.child(at, role);
    if (who < 0) continue;
    const int person = graph.arc(who).to;
    for (const int clause : clauses) {
      int subject = graph.argument(clause, "ARG0");
      // "The boy must come": of some verbs it is ARG1.
      if (subject < 0) {
        const int own = graph.argument(clause, graph.child(clause, "domain") >= 0 ? "domain" : "ARG1");
        if (own >= 0 && graph.other(own, clause) == person) subject = own;
      }
      const bool is_own = subject >= 0 && graph.other(subject, clause) == person;
      // The arc of the frame can go to one clause; the others get arcs of their own.
      if (clause != clauses.front()) {
        if (subject < 0) graph.add(clause, person, "ARG0");
      } else if (is_own) {
        graph.remove(who, Fate::relation);
      } else {
        // "It must open for her": where the clause has a subject, who is obliged profits from it.
        graph.replace(who, clause, person, subject < 0 ? "ARG0" : "beneficiary");
      }
    }
  }
}

// The clauses that are joined below `whole`, also in a conjunction within it; the nouns there have no verb.
std::vector<int> joined_clauses(Rewriter& graph, int whole) {
  std::vector<int> wholes{whole};
  std::vector<int> clauses;
  for (std::size_t i = 0; i < wholes.size(); ++i) {
    for (const int led : graph.numbered(wholes[i], {"op"})) {
      const int part = graph.arc(led).to;
      const bool is_joining = graph.is(part, "and") || graph.is(part, "or");
      // A graph may have a circle here.
      if (is_joining && std::find(wholes.begin(), wholes.end(), part) == wholes.end()) wholes.push_back(part);
      if (is_clause(graph, part)) clauses.push_back(part);
    }
  }
  return clauses;
}

// "We should listen and wait": what holds of several holds of each. Mood and time of the frame are those of the whole.
void modality_of_all(Rewriter& graph, int at, int led, const Modal& modal) {
  const int whole = graph.other(led, at);
  const std::vector<int> clauses = joined_clauses(graph, whole);
  // "War and hunger are possible".
  if (clauses.empty()) return;
  const bool is_denied = has_attribute(graph.word(at), "@neg");
  // "They can cheat and not lose": one verb for all that one person does.
  const int first = subject_arc(graph, clauses.front());
  const bool is_first_denied = has_attribute(graph.word(clauses.front()), "@neg");
  for (const int part : clauses) {
    const int subject = subject_arc(graph, part);
    const bool is_of_first = first >= 0 && subject >= 0 && graph.arc(subject).to == graph.arc(first).to;
    const bool is_alike = is_of_first && !is_first_denied && part != clauses.front();
    attribute_add(graph.word(part), is_alike ? modal.attribute : modal_mark(graph, at, part, modal));
    if (is_denied) attribute_add(graph.word(part), "@neg");
  }
  for (const std::string& attribute : graph.word(at).attributes) {
    if (attribute != "@v" && attribute != "@neg") attribute_add(graph.word(whole), attribute);
  }
  // With the frame as :ARG1-of the whole, the sentence leads to the whole already.
  const bool is_above = graph.arc(led).to == at;
  graph.settle_concept(at, Fate::attribute);
  graph.remove(led, Fate::attribute);
  if (!is_above) graph.redirect(at, whole);
  obliged_apply(graph, at, clauses);
  graph.move_children(at, whole);
}

// The governed clause takes the place of the frame and an attribute in its stead; negation and mood of the frame go with
// it. Nothing happens where a modal verb could not say it: no clause, somebody who recommends, a second modal.
void modality_apply(Rewriter& graph, int at, const Modal& modal) {
  const int led = graph.argument(at, modal.governed);
  // Somebody who recommends is a subject: "she recommends that ...".
  // (r / recommend-01 :ARG0 s :ARG1 c).
  if (led < 0 || graph.argument(at, "ARG0") >= 0) return;
  // "It can be cleaned and sold": what holds of several clauses leads to each.
  std::vector<int> further;
  for (int one = 0; one < static_cast<int>(graph.meaning().arcs.size()); ++one) {
    const Arc& arc = graph.arc(one);
    if (!arc.gone && arc.inverse && arc.to == at && arc.role == modal.governed) further.push_back(one);
  }
  for (std::size_t i = 1; i < further.size(); ++i) {
    Concept& other = graph.word(graph.arc(further[i]).from);
    attribute_add(other, modal_mark(graph, at, graph.arc(further[i]).from, modal));
    if (has_attribute(graph.word(at), "@neg")) attribute_add(other, "@neg");
    graph.remove(further[i], Fate::attribute);
  }
  const int clause = graph.other(led, at);
  if (graph.is(clause, "and") || graph.is(clause, "or")) return modality_of_all(graph, at, led, modal);
  if (!is_clause(graph, clause) || clause == at) return;
  const std::string_view frame = modal.name;
  if ((frame == "permit" || frame == "allow") && !is_permission(graph, at, clause)) return;
  // English has one modal verb in a clause: the inner frame keeps it.
  for (const char* attribute : {"@can", "@must", "@should"}) {
    if (has_attribute(graph.word(clause), attribute)) return;
  }
  // A negated possibility: "cannot". The two negations of "it is not possible not to" stay apart.
  if (has_attribute(graph.word(at), "@neg") && has_attribute(graph.word(clause), "@neg")) return;
  graph.settle_concept(at, Fate::attribute);
  attribute_add(graph.word(clause), modal_mark(graph, at, clause, modal));
  for (const std::string& attribute : graph.word(at).attributes) {
    if (attribute != "@v") attribute_add(graph.word(clause), attribute);
  }
  const bool is_never = child_among(graph, at, "time", std::array{"ever"}) >= 0;
  if (graph.is(at, "obligate", "01") && has_attribute(graph.word(at), "@neg") && is_never)
    attribute_add(graph.word(clause), "@past");
  const bool is_above = graph.arc(led).to == at;
  graph.remove(led, Fate::attribute);
  if (!is_above) graph.redirect(at, clause);
  obliged_apply(graph, at, {clause});
  graph.move_children(at, clause);
}

// (x :ARG1-of (have-polarity-91 :ARG2 -)): the value becomes the attribute that the role itself would give.
// UMR writes how sure a clause is as have-modal-strength-91, with a value from full-affirmative to full-negative;
// have-polarity-91 has the value that :polarity would have.
void truth_apply(Rewriter& graph, int at) {
  const int about = graph.argument(at, "ARG1");
  const int value = graph.child(at, "ARG2");
  if (value < 0) return;
  const std::string text = graph.word(graph.arc(value).to).name;
  if (about < 0) {
    // An answer without what it answers.
    if (!graph.is(at, "have-polarity", "91") || (text != "-" && text != "+")) return;
    graph.word(at).name = text == "-" ? "no" : "yes";
    graph.word(at).sense.clear();
    graph.word(at).attributes.clear();
    graph.settle_concept(graph.arc(value).to, Fate::word);
    return graph.remove(value, Fate::word);
  }
  const int word = graph.other(about, at);
  const bool is_negative = text == "-" || text.ends_with("-negative");
  const bool is_open = text == "neutral-affirmative" || text == "partial-affirmative";
  const bool is_asked = text == "amr-unknown" || text == "umr-unknown";
  // Any other value would be lost with the frame.
  if (!is_negative && !is_open && !is_asked && text != "+" && text != "full-affirmative") return;
  if (is_negative) attribute_add(graph.word(word), "@neg");
  if (is_open) attribute_add(graph.word(word), "@may");
  if (is_asked) attribute_add(graph.word(word), "@int");
  graph.settle_concept(graph.arc(value).to, Fate::attribute);
  const bool is_above = graph.arc(about).from == at;
  graph.settle_concept(at, Fate::attribute);
  graph.remove(about, Fate::attribute);
  graph.remove(value, Fate::attribute);
  if (is_above) graph.redirect(at, word);
  graph.move_children(at, word);
}

}  // namespace

// (p / possible-01 :ARG1 (g / go-02)) becomes (g / go-02) with @can. UMR gives the same as an attribute of the clause, or as
// a frame with a value, which is taken first. Of several governed roles the first that is there counts.
void step_modality(Meaning& meaning) {
  Rewriter graph(meaning, "modality");
  // "She refused to come": UMR marks below such verbs that nobody came.
  constexpr std::array kImplying{"refuse", "fail",   "decline", "prevent", "stop",    "avoid", "ban",    "forbid",
                                 "block",  "reject", "neglect", "refrain", "abstain", "deny",  "unable", "prohibit"};
  // First of all what a verb above has said already.
  for (const Arc& one : meaning.arcs) {
    const bool is_governed = !one.gone && !one.inverse && (one.role == "ARG1" || one.role == "ARG2") &&
                             !graph.word(one.from).sense.empty() && is_one_of(graph, one.from, kImplying);
    // A clause without an aspect is AMR's, where the negation counts: "he failed not to laugh".
    constexpr std::array kAspects{"@done", "@activity", "@state", "@habit", "@process", "@endeavor"};
    const bool has_aspect = std::any_of(kAspects.begin(), kAspects.end(),
                                        [&](const char* mark) { return has_attribute(graph.word(one.to), mark); });
    if (is_governed && has_aspect) std::erase(graph.word(one.to).attributes, "@neg");
    // Nor does it tell anything new that what is wanted is likely.
    constexpr std::array kWilling{"want", "order", "ask",     "hope",   "plan",  "intend",  "expect",
                                  "try",  "need",  "promise", "decide", "force", "require", "demand",
                                  "urge", "tell",  "agree",   "offer",  "allow"};
    const bool is_willed = !one.gone && !one.inverse && (one.role == "ARG1" || one.role == "ARG2") &&
                           !graph.word(one.from).sense.empty() && is_one_of(graph, one.from, kWilling);
    if (is_willed) std::erase(graph.word(one.to).attributes, "@likely");
    // "I hope that she may come" is English, "I want her to may come" is not.
    if (is_willed && !graph.is(one.from, "hope", "01")) std::erase(graph.word(one.to).attributes, "@may");
  }
  for (int at = 0; at < graph.count(); ++at) {
    if (graph.is(at, "have-polarity", "91") || graph.is(at, "have-modal-strength", "91")) truth_apply(graph, at);
  }
  for (int at = 0; at < graph.count(); ++at) {
    for (const Modal& modal : kModals) {
      if (graph.is(at, modal.name, modal.sense) && graph.argument(at, modal.governed) >= 0) {
        modality_apply(graph, at, modal);
        break;
      }
    }
  }
}

namespace {

// A noun that no word picks out: no name, no pronoun, nobody's, none of several.
// Only such a noun can have "no" in front: "she has no garden", but "she does not have this garden".
bool is_any_of_its_kind(Rewriter& graph, int at) {
  const Concept& word = graph.word(at);
  // They stand without an article, and so without "no".
  constexpr std::array kStandingAlone{"this",   "that", "one", "anything", "nothing", "something",
                                      "anyone", "all",  "any", "both",     "half",    "none"};
  if (!word.sense.empty() || word.variable.empty() || has_attribute(word, "@name") || is_unknown(graph, at))
    return false;
  if (is_personal_pronoun(graph, at) || is_one_of(graph, at, kStandingAlone)) return false;
  if (conjunction_of(graph, at) != nullptr || graph.mentions(at) > 1) return false;
  for (const char* role : {"poss", "possessor", "quant", "domain", "part-of"}) {
    if (graph.child(at, role) >= 0) return false;
  }
  const int mod = graph.child(at, "mod");
  constexpr std::array kPicking{"this", "that", "any", "every", "all", "other", "another", "same", "such", "only"};
  return mod < 0 || !is_one_of(graph, graph.arc(mod).to, kPicking);
}

// "Not ever" said of all that is joined: "I have never seen or heard anyone".
// (o / or :op1 (s / see-01 :polarity -) :op2 (h / hear-01 :polarity -) :time (e / ever)): each of them is denied, and "never"
// says it for all.
void ever_of_all(Rewriter& graph, int at) {
  const int led = graph.is(at, "and") || graph.is(at, "or") ? graph.child(at, "time") : -1;
  if (led < 0 || !graph.is(graph.arc(led).to, "ever")) return;
  const std::vector<int> below = graph.children(at);
  const auto is_denied = [&](int one) {
    return !graph.arc(one).role.starts_with("op") || has_attribute(graph.word(graph.arc(one).to), "@neg");
  };
  if (!std::all_of(below.begin(), below.end(), is_denied)) return;
  graph.word(graph.arc(led).to).name = "never";
  // "He has never been cold or sad": what is denied of each.
  graph.word(at).name = "or";
  for (const int one : below) std::erase(graph.word(graph.arc(one).to).attributes, "@neg");
}

// The same, with "ever" below each of them: `at` is the first that has it.
// (o / or :op1 (s / see-01 :polarity - :time (e / ever)) :op2 (h / hear-01 :polarity - :time e)).
void ever_again(Rewriter& graph, int at, int never) {
  const int above = graph.parent(at);
  const int whole = above < 0 ? -1 : graph.arc(above).from;
  if (whole < 0 || !(graph.is(whole, "and") || graph.is(whole, "or"))) return;
  for (const int led : graph.numbered(whole, {"op"})) {
    const int part = graph.arc(led).to;
    const int again = part == at ? -1 : graph.child(part, "time");
    if (again < 0 || graph.arc(again).to != never || std::erase(graph.word(part).attributes, "@neg") == 0) continue;
    graph.remove(again, Fate::word);
    graph.word(whole).name = "or";
  }
}

// "They do not ask any question": said of the verb, "they do not ask at all".
// (a / ask-01 :polarity - :ARG0 they :mod (a2 / any)).
void any_of_verb(Rewriter& graph, int at) {
  const bool is_denied = has_attribute(graph.word(at), "@neg") && !graph.word(at).sense.empty();
  const int led = is_denied && graph.child(at, "ARG0") >= 0 ? graph.child(at, "mod") : -1;
  if (led >= 0 && graph.is(graph.arc(led).to, "any")) graph.word(graph.arc(led).to).name = "at-all";
}

// English denies once: where the subject is nobody, the clause is not denied again.
// (c / come-01 :polarity - :ARG0 (n / nobody)): banks differ in whether they mark both.
void negation_once(Rewriter& graph, int at) {
  constexpr std::array kNone{"nobody", "noone", "no-one", "nothing"};
  const int led = graph.word(at).sense.empty() ? -1 : subject_arc(graph, at);
  const bool is_first = led >= 0 && graph.parent(graph.arc(led).to) == led;
  if (is_first && is_one_of(graph, graph.arc(led).to, kNone)) std::erase(graph.word(at).attributes, "@neg");
}

// What a word for somebody is where it is denied; null for other words.
// (n / notice-01 :polarity - :ARG0 (a / anybody)): "nobody noticed".
const char* denied(Rewriter& graph, int at) {
  constexpr std::pair<const char*, const char*> kDenied[] = {
      {"somebody", "nobody"},   {"someone", "nobody"},   {"anybody", "nobody"},    {"anyone", "nobody"},
      {"something", "nothing"}, {"anything", "nothing"}, {"somewhere", "nowhere"}, {"any", "no"}};
  // "None of them".
  const bool is_some_of = graph.is(at, "any") && (graph.child(at, "superset") >= 0 || graph.child(at, "sup") >= 0);
  if (is_some_of) return "none";
  for (const auto& [positive, negative] : kDenied) {
    if (graph.is(at, positive)) return negative;
  }
  return nullptr;
}

// English denies once, with a word for nobody.
void nobody_apply(Rewriter& graph, int at) {
  // A negated somebody is nobody.
  const std::vector<int> below = graph.children(at);
  // (t / thing :polarity - :location h): "nothing here"; a thing with more words is "no thing that ...".
  const bool is_bare =
      std::all_of(below.begin(), below.end(), [&](int one) { return graph.arc(one).role == "location"; });
  if (is_bare && has_attribute(graph.word(at), "@neg") && graph.is(at, "thing")) {
    graph.word(at).name = "nothing";
    std::erase(graph.word(at).attributes, "@neg");
  }
  if (const char* nobody = has_attribute(graph.word(at), "@neg") ? denied(graph, at) : nullptr; nobody != nullptr) {
    graph.word(at).name = nobody;
    std::erase(graph.word(at).attributes, "@neg");
  }
  // What nobody does is said of nobody: "any" may not stand in front of "not".
  const int doer = has_attribute(graph.word(at), "@neg") ? subject_arc(graph, at) : -1;
  if (doer < 0 || graph.parent(graph.arc(doer).to) != doer) return;
  const int any = graph.child(graph.arc(doer).to, "mod");
  // "All of them cannot": none can.
  if (any >= 0 && graph.is(graph.arc(any).to, "all") && graph.children(graph.arc(any).to).empty() &&
      graph.mentions(graph.arc(any).to) == 1 && has_attribute(graph.word(at), "@can")) {
    const int who = graph.arc(doer).to;
    const bool is_anybody = graph.is(who, "person") && graph.children(who).size() == 1;
    graph.word(is_anybody ? who : int{graph.arc(any).to}).name = is_anybody ? "nobody" : "no";
    if (is_anybody) std::erase(graph.word(who).attributes, "@pl");
    if (is_anybody) graph.settle_concept(graph.arc(any).to, Fate::word), graph.remove(any, Fate::word);
    std::erase(graph.word(at).attributes, "@neg");
    return;
  }
  // Either the subject is such a word itself, or it has "any" beside it: "no boy came".
  for (const int word : {int{graph.arc(doer).to}, any >= 0 ? graph.arc(any).to : -1}) {
    const std::string name = word < 0 ? "" : graph.word(word).name;
    if (!name.starts_with("any") && name != "somebody" && name != "someone") continue;
    if (const char* nobody = denied(graph, word); nobody != nullptr) {
      graph.word(word).name = nobody;
      std::erase(graph.word(at).attributes, "@neg");
      return;
    }
  }
}

// "She has no garden": what is had is denied, if it is any of its kind.
// The holding frame has what is had as ARG1 or ARG2. "She does not have my garden" denies the having, as the garden is
// known.
void nothing_had(Rewriter& graph, int at) {
  const bool is_holding = graph.is(at, "have", "91") || graph.is(at, "have-part", "91") ||
                          graph.is(at, "have-possession", "91") || graph.is(at, "have-experience", "91");
  const bool has_not = (is_holding || graph.is(at, "have", "03")) && has_attribute(graph.word(at), "@neg");
  const int had = has_not ? graph.child(at, is_holding ? "ARG2" : "ARG1") : -1;
  if (had >= 0 && is_any_of_its_kind(graph, graph.arc(had).to)) {
    attribute_add(graph.word(graph.arc(had).to), "@neg");
    std::erase(graph.word(at).attributes, "@neg");
  }
}

// (r / request-confirmation-91 :ARG1 x): whether x.
// UMR's frame of a question that wants a yes. Where nobody asks it the frame is the mood of the clause, @int; where
// somebody does it is the verb.
void request_apply(Rewriter& graph, int at) {
  bool is_tag = graph.is(at, "request-confirmation", "91");
  // With somebody who asks it is a verb: "she asked whether it rained".
  const bool is_asking = is_tag || graph.is(at, "request-response", "91");
  if (is_asking && graph.child(at, "ARG0") >= 0) {
    const int said = is_tag ? graph.child(at, "ARG1") : -1;
    if (said >= 0) attribute_add(graph.word(graph.arc(said).to), "@whether");
    graph.word(at).name = "ask";
    graph.word(at).sense = "01";
    is_tag = false;
  }
  if (const int led = is_tag ? graph.argument(at, "ARG1") : -1; led >= 0) {
    const bool is_above = graph.arc(led).from == at;
    const int clause = graph.other(led, at);
    graph.settle_concept(at, Fate::attribute);
    graph.remove(led, Fate::attribute);
    attribute_add(graph.word(clause), "@int");
    if (is_above) graph.redirect(at, clause);
    graph.move_children(at, clause);
  }
}

// Who is nobody where what he does is denied.
constexpr std::array kAnybody{"anyone", "anybody", "anything", "someone", "somebody"};

}  // namespace

// :polarity - is @neg by the table of roles before any step. Here it meets the words that have a negation in them, and
// (x :polarity (a / amr-unknown)) becomes a question, @int.
void step_polarity(Meaning& meaning) {
  Rewriter graph(meaning, "polarity");
  for (int at = 0; at < graph.count(); ++at) {
    // Some files deny "ever" itself.
    if (graph.is(at, "ever") && std::erase(graph.word(at).attributes, "@neg") > 0) graph.word(at).name = "never";
    // "Nobody has ever been there": the subject takes it first.
    const int doer = has_attribute(graph.word(at), "@neg") ? subject_arc(graph, at) : -1;
    const bool is_any = doer >= 0 && (is_one_of(graph, graph.arc(doer).to, kAnybody) ||
                                      child_among(graph, graph.arc(doer).to, "mod", std::array{"any"}) >= 0);
    if (is_any) nobody_apply(graph, at);
    // "Not ever" is one word, and takes the negation with it.
    // "Without ever moving."
    const int way = graph.parent(at);
    const bool is_way = way >= 0 && !graph.arc(way).inverse && graph.arc(way).role == "manner";
    for (const int led : graph.children(at)) {
      if (!has_attribute(graph.word(at), "@neg") || is_way || !graph.is(graph.arc(led).to, "ever")) continue;
      // Before the mark of negation goes, by which that step knows its verb.
      any_of_verb(graph, at);
      graph.word(graph.arc(led).to).name = "never";
      ever_again(graph, at, graph.arc(led).to);
      std::erase(graph.word(at).attributes, "@neg");
    }
    ever_of_all(graph, at);
    any_of_verb(graph, at);
    negation_once(graph, at);
    nobody_apply(graph, at);
    nothing_had(graph, at);
    if (const int led = graph.child(at, "polarity"); led >= 0 && is_unknown(graph, graph.arc(led).to)) {
      graph.settle_concept(graph.arc(led).to, Fate::attribute);
      graph.remove(led, Fate::attribute);
      attribute_add(graph.word(at), "@int");
    }
    // (k / know-01 :ARG1 (r / rain-01 :polarity (t / truth-value))): "know whether it rains", from either end.
    if (const int led = graph.child(at, "polarity"); led >= 0 && graph.is(graph.arc(led).to, "truth-value")) {
      graph.settle_concept(graph.arc(led).to, Fate::attribute);
      graph.remove(led, Fate::attribute);
      attribute_add(graph.word(at), "@whether");
    }
    if (const int led = graph.child(at, "polarity", true); led >= 0 && graph.is(at, "truth-value")) {
      attribute_add(graph.word(graph.arc(led).to), "@whether");
      graph.stand_in(at, led);
    }
    request_apply(graph, at);
  }
}

namespace {

// (e / employ-01 :polarity -), which nobody does to anybody: unemployment.
// The noun of the event with "not" would be no English.
void unemployment_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  const bool is_denied = graph.is(at, "employ", "01") && has_attribute(graph.word(at), "@neg");
  if (!is_denied || (above >= 0 && graph.arc(above).inverse) || graph.child(at, "ARG0") >= 0) return;
  graph.word(at).name = "unemployment";
  graph.word(at).sense.clear();
  graph.word(at).attributes.clear();
  if (const int whose = graph.child(at, "ARG1"); whose >= 0) graph.arc(whose).role = "org";
}

// (g / government-organization :ARG0-of (g2 / govern-01 :ARG1 c)): the government of c.
// Banks spell out what the word means; the frame says whose government it is, and goes.
void government_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "ARG0", true);
  const bool is_administration = led >= 0 && graph.is(graph.arc(led).to, "administrate", "01");
  if (led < 0 || (!is_administration && !graph.is(graph.arc(led).to, "govern", "01"))) return;
  const int frame = graph.arc(led).to;
  graph.remove(led, Fate::word);
  graph.settle_concept(frame, Fate::word);
  graph.word(at).name = is_administration ? "administration" : "government";
  for (const int below : graph.children(frame)) {
    if (graph.arc(below).role == "ARG1") graph.arc(below).role = "org";
  }
  graph.move_children(frame, at);
}

// (o / organization :ARG0-of (d / defend-01)): "the defense". A body that is known by what it does.
void body_apply(Rewriter& graph, int at) {
  constexpr std::pair<const char*, const char*> kBodies[] = {{"oppose", "opposition"},
                                                             {"defend", "defense"},
                                                             {"prosecute", "prosecution"},
                                                             {"resist", "resistance"},
                                                             {"administrate", "administration"}};
  const int led = graph.child(at, "ARG0", true);
  const int frame = led < 0 || has_attribute(graph.word(at), "@name") ? -1 : graph.arc(led).to;
  const bool is_bare = frame >= 0 && graph.children(frame).empty() && graph.mentions(frame) == 1 &&
                       graph.word(frame).attributes.size() == 1;
  for (const auto& [verb, noun] : kBodies) {
    if (!is_bare || !graph.is(frame, verb, "01")) continue;
    graph.settle_concept(frame, Fate::word);
    graph.remove(led, Fate::word);
    graph.word(at).name = noun;
    return attribute_add(graph.word(at), "@def");
  }
}

// "A truck driver": what such people always drive, make or sell stands in front of their noun.
void kind_of_doer(Rewriter& graph, int frame) {
  constexpr std::array kKinds{"drive",  "make",    "sell",  "collect", "own",     "build",   "keep",
                              "repair", "clean",   "buy",   "train",   "hunt",    "breed",   "grow",
                              "import", "export",  "fight", "throw",   "play",    "ride",    "eat",
                              "drink",  "design",  "trade", "bake",    "pick",    "carry",   "mine",
                              "rob",    "smuggle", "lend",  "produce", "operate", "process", "provide"};
  const int led = is_one_of(graph, frame, kKinds) ? graph.child(frame, "ARG1") : -1;
  const int what = led < 0 ? -1 : graph.arc(led).to;
  if (what < 0 || !graph.children(what).empty() || graph.mentions(what) != 1 || graph.child(frame, "mod") >= 0) return;
  Concept& word = graph.word(what);
  const bool is_noun = word.sense.empty() && !word.variable.empty() && !has_attribute(word, "@name") &&
                       !is_personal_pronoun(graph, what) && !is_one_of(graph, what, kDemonstratives) &&
                       !is_unknown(graph, what) && word.name != "thing" && word.name != "one" && word.name != "person";
  if (!is_noun) return;
  graph.arc(led).role = "mod";
  for (const char* mark : {"@pl", "@sg"}) std::erase(word.attributes, mark);
}

// "A private insurer": a firm is called by what it does, too.
bool is_firm_of(Rewriter& graph, int at, int frame) {
  constexpr std::array kTrades{"provide", "lend",    "produce", "manufacture", "publish", "supply", "sponsor",
                               "retail",  "employ",  "carry",   "distribute",  "export",  "import", "broker",
                               "make",    "operate", "develop", "buy",         "sell"};
  return (graph.is(at, "company") || graph.is(at, "organization")) && is_one_of(graph, frame, kTrades) &&
         graph.children(frame).empty();
}

// The frame names its participant: `mark` says which one.
// (p / person :ARG0-of (d / drive-01)): drive takes the place of the person, with @agent, and the dictionary has
// drive(>01) with @agent as "driver". What was known of the person, number or mention, goes along.
void frame_stand_in(Rewriter& graph, int at, int led, const char* mark) {
  Concept& frame = graph.word(graph.arc(led).to);
  attribute_add(frame, mark);
  for (const std::string& attribute : graph.word(at).attributes) attribute_add(frame, attribute);
  graph.stand_in(at, led);
}

// "The essential thing", and not "the essentiality".
constexpr std::array kThingQualities{
    "essential", "important", "good",    "bad",       "beautiful", "new",      "true",     "real",    "necessary",
    "strange",   "useful",    "useless", "different", "wrong",     "right",    "simple",   "sure",    "dangerous",
    "terrible",  "wonderful", "funny",   "serious",   "easy",      "hard",     "precious", "certain", "difficult",
    "secret",    "ugly",      "nice",    "odd",       "sad",       "sacred",   "special",  "unique",  "great",
    "absurd",    "curious",   "clear",   "obvious",   "similar",   "valuable", "pleasant", "fragile", "harmful"};

// (t / thing :ARG1-of (o / order-01)): an order. Only what has no agent; "what she knows" stays a clause.
// The thing is whatever the frame makes; only the arguments that a noun can have behind it may follow, "an answer to
// the boy", and no negation or degree.
void thing_apply(Rewriter& graph, int at) {
  int led = -1;
  // "The lie that he told": of several clauses the one that is a noun by itself.
  constexpr std::array kNouns{"lie",       "dream",    "promise", "order",    "question", "plan",    "claim",
                              "request",   "offer",    "resolve", "propose",  "suggest",  "agree",   "decide",
                              "recommend", "allege",   "invest",  "discover", "invent",   "publish", "donate",
                              "state",     "announce", "rule",    "predict",  "estimate", "produce", "create"};
  const std::vector<int> told = graph.children(at);
  const auto is_noun = [&](int one) {
    return graph.arc(one).inverse && graph.arc(one).role == "ARG1" && is_one_of(graph, graph.arc(one).to, kNouns) &&
           graph.children(graph.arc(one).to).empty();
  };
  const auto noun = std::find_if(told.begin(), told.end(), is_noun);
  for (const int one : told) {
    const Arc& below = graph.arc(one);
    if (!below.inverse || (noun != told.end() && one != *noun)) continue;
    if (led >= 0 || !is_core_role(below.role) || below.role == "ARG0") return;
    led = one;
  }
  if (led < 0) return;
  const int frame = graph.arc(led).to;
  const std::vector<int> below = graph.children(frame);
  // What somebody asks is his question, and what he knows is "what he knows".
  constexpr std::array kOwned{"question", "answer", "plan",  "propose", "promise", "decide",   "offer", "order",
                              "request",  "draw",   "paint", "invent",  "suggest", "discover", "create"};
  const bool may_be_owned = is_one_of(graph, frame, kOwned);
  // A clause below needs a verb above it, which the noun is not.
  const bool is_simple = std::all_of(below.begin(), below.end(), [&](int one) {
    return is_core(graph.arc(one)) && (may_be_owned || graph.arc(one).role != "ARG0") &&
           !is_clause(graph, graph.arc(one).to);
  });
  const bool is_plain = !has_attribute(graph.word(frame), "@neg") && !has_attribute(graph.word(frame), "@most") &&
                        !has_attribute(graph.word(frame), "@more") && graph.mentions(frame) == 1;
  // Nothing is the result of a motion: "the first thing that came".
  constexpr std::array kMotion{"come", "go",    "happen", "occur",  "arrive",  "fall",  "appear", "exist",
                               "lie",  "stand", "matter", "remain", "survive", "count", "belong", "miss"};
  const std::string& name = graph.word(frame).name;
  // "The most important thing".
  const bool is_graded = has_attribute(graph.word(frame), "@most") || has_attribute(graph.word(frame), "@more");
  if (is_graded && below.empty() && is_one_of(graph, frame, kThingQualities)) attribute_add(graph.word(at), "@quality");
  if (graph.word(frame).sense.empty() || !is_simple || !is_plain || name.find('-') != name.npos) return;
  // "What freedom means", where it is told whose meaning it is.
  if (name == "mean" && !below.empty()) return;
  // Who lies in bed does not tell a lie.
  if (is_one_of(graph, frame, kMotion) && !graph.is(frame, "lie", "08")) return;
  if (is_one_of(graph, frame, kThingQualities)) return attribute_add(graph.word(at), "@quality");
  // "Some more questions".
  const int mod = graph.child(at, "mod");
  constexpr std::array kSeveral{"some", "more", "other"};
  if (mod >= 0 && is_one_of(graph, graph.arc(mod).to, kSeveral)) attribute_add(graph.word(frame), "@pl");
  frame_stand_in(graph, at, led, "@result");
}

// (t / thing :ARG2-of (a / age-01 :ARG1 x)): the age of x.
void age_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "thing") ? graph.child(at, "ARG2", true) : -1;
  const int frame = led >= 0 ? graph.arc(led).to : -1;
  const int whose = frame >= 0 && graph.is(frame, "age", "01") ? graph.child(frame, "ARG1") : -1;
  if (whose < 0 || graph.arc(whose).to == at || graph.mentions(frame) != 1 || graph.children(frame).size() != 1) return;
  graph.replace(whose, at, graph.arc(whose).to, "poss");
  graph.settle_concept(frame, Fate::word);
  graph.remove(led, Fate::word);
  graph.word(at).name = "age";
  attribute_add(graph.word(at), "@def");
}

// (t / that :ARG1-of (i / important-01)): "that is important". A pronoun has no relative clause; what is said of it is a
// clause of its own.
// Banks write "that is important" as a thing with a property, as they do "the important thing"; with a pronoun only the
// first can be meant.
void pronoun_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  // "Which means that ...", as a sentence: what was spoken of before is "that".
  const int meant = above < 0 && graph.is(at, "thing") && graph.children(at).size() == 1 ? graph.children(at)[0] : -1;
  constexpr std::array kMeaning{"mean", "show", "suggest", "imply", "prove"};
  if (meant >= 0 && is_one_of(graph, graph.arc(meant).to, kMeaning) && graph.child(graph.arc(meant).to, "ARG0") < 0) {
    graph.word(at).name = "that";
  }
  const bool is_content = above < 0
                              ? graph.meaning().root == at
                              : !graph.arc(above).inverse && graph.arc(above).role == "ARG1" && graph.mentions(at) == 1;
  // Below another verb only what is said or known is such a clause; else a person or thing is meant.
  const int governor = above < 0 ? -1 : graph.arc(above).from;
  const bool is_pointing = graph.is(at, "that") || graph.is(at, "this");
  if (governor >= 0 && !is_pointing && !is_one_of(graph, governor, kSaying) && !is_one_of(graph, governor, kReporting))
    return;
  const bool is_pronoun =
      is_personal_pronoun(graph, at) || graph.word(at).name == "that" || graph.word(at).name == "this";
  if (!is_content || !is_pronoun || graph.children(at).size() != 1) return;
  const int led = graph.children(at)[0];
  const int frame = graph.arc(led).to;
  if (!graph.arc(led).inverse || !is_core_role(graph.arc(led).role) || graph.mentions(frame) > 1) return;
  graph.redirect(at, frame);
  graph.replace(led, frame, at, graph.arc(led).role);
}

// (s / say-01 :ARG0 (m / man :domain (t / this))): who acts is this man, and not that this is a man.
void pointing_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  const int led = graph.child(at, "domain");
  // "This is the man who came": the statement itself presents him.
  // In these places a person or thing is expected, and no statement.
  constexpr std::array kOfNouns{"ARG0", "concession", "location", "beneficiary"};
  const bool is_agent =
      above >= 0 && !graph.arc(above).inverse && is_listed(graph.arc(above).role, kOfNouns) &&
      (graph.arc(above).from != graph.meaning().root || is_one_of(graph, graph.arc(above).from, kSaying));
  if (led < 0 || !is_agent || !graph.word(at).sense.empty() || !graph.word(graph.arc(above).from).sense.size()) return;
  const int pointer = graph.arc(led).to;
  if ((graph.is(pointer, "this") || graph.is(pointer, "that")) && graph.children(pointer).empty())
    graph.arc(led).role = "mod";
}

// (s / say-01 :ARG0 (h / he :ARG0-of (t / talk-01))): "he said ..., talking". A pronoun has no relative clause; what it does
// besides goes with what is said of it.
// What he does becomes :attendant of the clause, with himself as its subject, which step control takes out again.
void attendant_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  if (above < 0 || graph.arc(above).inverse || !is_personal_pronoun(graph, at)) return;
  const std::string role = graph.arc(above).role;
  const int clause = graph.arc(above).from;
  if (!is_core_role(role) || graph.word(clause).sense.empty()) return;
  // They belong to the pronoun itself: "all of us", "he alone".
  constexpr std::array kNoQuality{"all",  "both", "each", "alone", "also", "only", "even", "just",
                                  "self", "too",  "two",  "other", "such", "poor", "dear", "most"};
  for (const int led : graph.children(at)) {
    const int frame = graph.arc(led).to;
    // "..., tired": a quality of him goes the same way.
    const bool is_quality = graph.arc(led).role == "mod" && !graph.arc(led).inverse && graph.mentions(frame) == 1 &&
                            graph.word(frame).sense.empty() && !is_one_of(graph, frame, kNoQuality);
    if (is_quality && !is_unknown(graph, frame)) graph.replace(led, clause, frame, "attendant");
    if (is_quality) continue;
    // "It is good, like the sun": what he is like is said of all that he does.
    const std::string held_by = graph.arc(led).role;
    if (!graph.arc(led).inverse && (held_by == "likeness" || held_by == "location" || held_by == "accompanier")) {
      graph.replace(led, clause, frame, held_by);
      continue;
    }
    // What is said of the subject stands behind a comma; of another, "to you, who know it".
    const bool is_act = graph.arc(led).inverse && is_core_role(graph.arc(led).role) && graph.mentions(frame) == 1 &&
                        (role == "ARG0" || graph.child(clause, "ARG0") < 0);
    if (!is_act || graph.word(frame).sense.empty()) continue;
    const std::string held = graph.arc(led).role;
    graph.add(frame, at, held);
    graph.replace(led, clause, frame, "attendant");
  }
}

// (k / know-01 :ARG1 (p / person :ARG1-of (c / come-01))): "she knows who came", (t / tell-01 :ARG1 (t2 / thing :domain
// it)): "tell me what it is". Below what one knows or tells a person or thing without any other mark is what is asked.
void asked_content(Rewriter& graph, int at) {
  // With these verbs a question may stand behind; "she met a person who came" has none.
  constexpr std::array kOfClauses{"know",    "tell",  "ask",      "find-out", "guess", "wonder",
                                  "explain", "learn", "discover", "reveal",   "decide"};
  const int above = graph.parent(at);
  const bool is_content = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                          is_one_of(graph, graph.arc(above).from, kOfClauses) && graph.mentions(at) == 1 &&
                          graph.word(graph.arc(above).from).sense != "02";
  const std::vector<int> told = graph.children(at);
  if (!is_content || told.size() != 1 || !graph.word(at).attributes.empty()) return;
  const Arc& one = graph.arc(told[0]);
  // "Tell me what it is": step questions moves it to the front, and knows by the mark that it is reported.
  if (!one.inverse && one.role == "domain") {
    graph.word(at).name = "amr-unknown";
    graph.word(at).attributes = {"@asked"};
    return;
  }
  const int frame = one.to;
  const std::string role = one.role;
  const bool is_subject = role == "ARG0" || (role == "ARG1" && graph.child(frame, "ARG0") < 0);
  if (!graph.is(at, "person") || !one.inverse || !is_subject || graph.mentions(frame) > 1) return;
  graph.redirect(at, frame);
  graph.replace(told[0], frame, at, role);
  graph.word(at).name = "amr-unknown";
  attribute_add(graph.word(at), "@wh_who");
  attribute_add(graph.word(frame), "@asked");
}

// (n / news :topic (i / ill-01 :ARG1 q)): "the news that the queen is ill", a clause and not what the news is about.
void noun_content(Rewriter& graph, int at) {
  // Nouns of what can be said or thought; behind any other, :topic is what it is about.
  constexpr std::array kOfClauses{"news",    "idea",  "rumor", "fact",   "message", "proof",    "evidence",    "theory",
                                  "notion",  "sign",  "hope",  "belief", "thought", "question", "possibility", "chance",
                                  "opinion", "claim", "view",  "fear",   "feeling", "word",     "argument",    "story"};
  const int led = graph.word(at).sense.empty() && is_one_of(graph, at, kOfClauses) ? graph.child(at, "topic") : -1;
  if (led < 0 || graph.child(at, "ARG1") >= 0) return;
  const int told = graph.arc(led).to;
  // "The idea of its size": these have a noun as often as a clause.
  constexpr std::array kOfNouns{"idea",     "message", "theory", "notion", "thought", "question", "opinion",
                                "argument", "view",    "fear",   "word",   "feeling", "story"};
  const std::vector<int> below = graph.children(told);
  // "The question who she is."
  const bool is_open =
      std::any_of(below.begin(), below.end(), [&](int one) { return is_unknown(graph, graph.arc(one).to); });
  const bool is_clear = is_open || graph.child(told, "ARG0") >= 0 || has_attribute(graph.word(told), "@whether") ||
                        has_attribute(graph.word(told), "@neg") || has_attribute(graph.word(told), "@int") ||
                        !is_one_of(graph, at, kOfNouns);
  const bool is_event_of = is_event(graph, told) && graph.mentions(told) == 1 && subject_arc(graph, told) >= 0;
  const bool is_told = (is_event_of && is_clear) || graph.child(told, "domain") >= 0;
  if (!is_told) return;
  graph.arc(led).role = "ARG1";
  attribute_add(graph.word(at), "@fact");
  if (!has_attribute(graph.word(at), "@indef")) attribute_add(graph.word(at), "@def");
}

// "The house that she wants to build": who wants it stands above the building, within the clause about the house.
// (h / house :ARG1-of (b / build-01 :ARG0 she :ARG1-of (w / want-01 :ARG0 she))). `led` leads to the building.
void wanted_apply(Rewriter& graph, int led) {
  const int deed = graph.arc(led).to;
  const std::string& role = graph.arc(led).role;
  // "The man who wants to build" needs no turning.
  const bool is_relative = graph.arc(led).inverse && !graph.arc(led).gone && role != "ARG0" && is_core_role(role);
  const int up = is_relative && graph.mentions(deed) == 1 ? graph.child(deed, "ARG1", true) : -1;
  if (up < 0 || !is_event(graph, deed)) return;
  const int frame = graph.arc(up).to;
  // Verbs that leave a gap open in what they govern: "the house that she said he built".
  constexpr std::array kGoverning{
      "want",     "need",   "try",     "like", "love",   "hope",  "plan",    "wish",     "expect",  "intend", "refuse",
      "say",      "decide", "attempt", "see",  "know",   "think", "believe", "fear",     "dread",   "manage", "fail",
      "hesitate", "dare",   "learn",   "long", "forget", "begin", "start",   "continue", "promise", "prefer", "hate"};
  const bool is_governing = is_one_of(graph, frame, kGoverning) && graph.mentions(frame) == 1 &&
                            graph.child(frame, "ARG0") >= 0 && graph.child(frame, "ARG1") < 0;
  if (!is_governing) return;
  graph.lead_to(led, frame);
  graph.replace(up, frame, deed, "ARG1");
}

// "He is a good singer", but "the only singer", "my best singer": what makes somebody one of a kind.
bool is_singled_out(Rewriter& graph, int at) {
  constexpr std::array kKnowing{"only", "same",  "this", "that", "first", "last", "next",   "other",
                                "such", "every", "any",  "no",   "all",   "some", "another"};
  // Several have no "a".
  if (has_attribute(graph.word(at), "@pl")) return true;
  for (const char* role : {"poss", "ord", "org", "quant"}) {
    if (graph.child(at, role) >= 0) return true;
  }
  const std::vector<int> told = graph.children(at);
  return std::any_of(told.begin(), told.end(), [&](int one) {
    const Concept& word = graph.word(graph.arc(one).to);
    return is_listed(word.name, kKnowing) || has_attribute(word, "@most") || has_attribute(word, "@more");
  });
}

// (s / sailor :mod (m / man :mod (t / tall))): "the sailor, a tall man", as somebody who is described is no word in front.
void described_apply(Rewriter& graph, int led) {
  constexpr std::array kPeople{"man", "woman", "boy", "girl", "person", "child", "fellow", "lady", "gentleman"};
  const Arc& one = graph.arc(led);
  if (one.gone || one.inverse || one.role != "mod" || !is_one_of(graph, one.to, kPeople)) return;
  const Concept& whole = graph.word(one.from);
  // Nouns that call a person by what he is, so that a second one behind a comma describes him.
  constexpr std::array kSomebody{
      "brother", "sister",  "father", "mother",    "son",     "daughter", "uncle",   "aunt",    "husband", "wife",
      "friend",  "cousin",  "sailor", "soldier",   "captain", "doctor",   "nurse",   "judge",   "lawyer",  "king",
      "queen",   "prince",  "mayor",  "president", "artist",  "poet",     "farmer",  "teacher", "student", "neighbor",
      "actor",   "actress", "priest", "boss",      "officer", "general",  "partner", "guest",   "thief",   "minister"};
  const bool is_person = has_attribute(whole, "@person") || is_listed(whole.name, kSomebody);
  const bool is_somebody =
      is_person && whole.sense.empty() && !has_attribute(whole, "@pl") && !is_personal_pronoun(graph, one.from);
  if (!is_somebody || graph.children(one.to).empty() || graph.mentions(one.to) != 1) return;
  graph.arc(led).role = "apposition";
  // In front of the verb a comma follows, too.
  const int above = graph.parent(graph.arc(led).from);
  if (above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG0")
    attribute_add(graph.word(graph.arc(led).to), "@closed");
  if (!has_attribute(graph.word(one.to), "@pl") && !is_singled_out(graph, one.to) && !graph.is(one.to, "person"))
    attribute_add(graph.word(one.to), "@indef");
}

// (p / person :ARG0-of (w / work-01 :manner (h / hard))): "a hard worker". What is said of a deed that has a noun of its
// doer stands beside that noun, and whom it is done to belongs to it: "her teacher".
void agent_words_apply(Rewriter& graph, int at, int frame) {
  // Their nouns are everyday words: worker, singer, killer. "The comer" and "the goer" are none.
  constexpr std::array kDoers{
      "work",  "think",  "read",    "write",  "sing",   "dance",   "swim",   "drive",   "run",    "speak",  "talk",
      "lead",  "paint",  "play",    "teach",  "listen", "learn",   "dream",  "train",   "travel", "trade",  "farm",
      "hunt",  "fight",  "build",   "cook",   "bake",   "smoke",   "drink",  "eat",     "sleep",  "walk",   "climb",
      "fly",   "ride",   "observe", "love",   "lie",    "believe", "admire", "support", "employ", "advise", "jump",
      "skate", "sail",   "ski",     "shoot",  "race",   "invest",  "report", "perform", "win",    "kill",   "rule",
      "own",   "manage", "garden",  "murder", "rob",    "publish", "edit"};
  if (!is_one_of(graph, frame, kDoers) || graph.word(frame).sense.empty() || graph.mentions(frame) != 1) return;
  // With a name he stays who he is: "Kim, who works hard".
  if (graph.child(at, "ARG0", true) < 0 || has_attribute(graph.word(at), "@name")) return;
  // An adjective in front of the noun can say these times alone: "an early riser", but "who came on Monday".
  constexpr std::array kWhen{"early", "late", "frequent", "regular", "occasional"};
  constexpr std::array kServing{"teach", "advise", "train", "employ"};
  std::vector<int> qualities;
  int served = -1;
  for (const int led : graph.children(frame)) {
    const Arc& one = graph.arc(led);
    const Concept& word = graph.word(one.to);
    const bool is_leaf = graph.children(one.to).empty() && graph.mentions(one.to) == 1 && !word.variable.empty();
    const bool is_plain = is_leaf && !is_unknown(graph, one.to) && !has_attribute(word, "@name");
    const bool is_time = (one.role == "time" || one.role == "frequency") && is_one_of(graph, one.to, kWhen);
    const bool is_quality = is_plain && ((!one.inverse && (one.role == "manner" || one.role == "mod" || is_time)) ||
                                         (one.inverse && one.role == "ARG1" && !word.sense.empty()));
    if (is_quality) {
      qualities.push_back(led);
    } else if (!one.inverse && one.role == "ARG2" && is_one_of(graph, frame, kServing)) {
      served = led;
      // What has no place beside the noun keeps the clause as a whole, so nothing is moved.
      // "Who teaches children to read" is a clause.
    } else if (one.inverse || one.role != "ARG1" || (is_clause(graph, one.to) && !is_leaf)) {
      return;
    }
  }
  for (const int led : qualities) {
    const bool is_upright = !graph.arc(led).inverse;
    graph.replace(led, at, graph.arc(led).to, is_upright ? "mod" : graph.arc(led).role, !is_upright);
  }
  if (served >= 0 && graph.child(at, "poss") < 0)
    graph.replace(served, at, graph.arc(served).to, is_personal_pronoun(graph, graph.arc(served).to) ? "poss" : "org");
}

}  // namespace

// (p / person :ARG0-of (d / drive-01)): the driver, if the dictionary has one; else the rules say who drives. Runs behind
// the offices, as a mayor is no haver of a role.
void step_persons(Meaning& meaning) {
  Rewriter graph(meaning, "persons");
  // Before anybody becomes a driver, as both look for the person and the frame as the source has them.
  for (int led = 0; led < static_cast<int>(meaning.arcs.size()); ++led) {
    wanted_apply(graph, led);
    described_apply(graph, led);
  }
  for (int at = 0; at < graph.count(); ++at) {
    pointing_apply(graph, at);
    pronoun_apply(graph, at);
    attendant_apply(graph, at);
    if (graph.is(at, "person") || graph.is(at, "thing")) asked_content(graph, at);
    noun_content(graph, at);
    unemployment_apply(graph, at);
    if (graph.is(at, "government-organization")) government_apply(graph, at);
    age_apply(graph, at);
    if (graph.is(at, "thing")) thing_apply(graph, at);
    if (graph.is(at, "organization") || graph.is(at, "government-organization")) body_apply(graph, at);
    // From here on the doer of something, with a noun for what he does.
    const int led = has_attribute(graph.word(at), "@name") ? -1 : graph.child(at, "ARG0", true);
    if (led < 0) continue;
    const int frame = graph.arc(led).to;
    if (!graph.is(at, "person") && !is_firm_of(graph, at, frame)) continue;
    agent_words_apply(graph, at, frame);
    const std::vector<int> below = graph.children(frame);
    const bool is_simple = std::all_of(below.begin(), below.end(), [&](int one) {
      // "The central planners": what qualifies the act qualifies who does it.
      const std::string& role = graph.arc(one).role;
      const bool is_quality = role == "mod" && graph.children(graph.arc(one).to).empty();
      const bool is_told = is_clause(graph, graph.arc(one).to) && !graph.children(graph.arc(one).to).empty() &&
                           !has_attribute(graph.word(graph.arc(one).to), "@agent");
      return (role == "ARG1" || is_quality) && !graph.arc(one).inverse && !is_told;
    });
    // "The person who is responsible for it", "the only person who knows": there is no noun for these.
    constexpr std::array kQualities{"responsible", "aware",     "conscious", "sure",     "certain",  "proud",
                                    "eager",       "reluctant", "greedy",    "honest",   "fond",     "keen",
                                    "jealous",     "ready",     "capable",   "cautious", "careless", "hostile",
                                    "desperate",   "generous",  "grateful",  "thankful", "brave",    "cruel"};
    constexpr std::array kNoAgents{"know", "see",  "want",  "go",  "come", "hear", "have", "feel", "need", "like",
                                   "say",  "tell", "stand", "sit", "lie",  "wait", "ask",  "get",  "take"};
    // "The only one who believes me": a doer is somebody's where it is his office.
    constexpr std::array kServices{"teach",   "employ", "help",    "lead",   "follow",  "protect", "kill",    "murder",
                                   "coach",   "train",  "advise",  "own",    "save",    "rescue",  "publish", "defend",
                                   "sponsor", "rule",   "guide",   "love",   "admire",  "attack",  "create",  "build",
                                   "make",    "serve",  "support", "oppose", "compete", "accuse"};
    const int of_whom = graph.child(frame, "ARG1");
    const bool is_of_me =
        of_whom >= 0 && is_personal_pronoun(graph, graph.arc(of_whom).to) && !is_one_of(graph, frame, kServices);
    const bool is_nameless = is_of_me || is_one_of(graph, frame, kQualities) ||
                             (is_one_of(graph, frame, kNoAgents) && graph.children(at).size() > 1);
    // "A great thinker", but "the person who thinks".
    const bool is_thinker = !graph.is(frame, "think", "01") || graph.children(at).size() == 1 ||
                            (graph.child(at, "mod") >= 0 && graph.children(frame).empty());
    const bool is_plain = !has_attribute(graph.word(frame), "@neg") && graph.mentions(frame) == 1 && is_thinker;
    if (graph.word(frame).sense.empty() || !is_simple || !is_plain || is_nameless) continue;
    // "She is a driver", one of several.
    const bool is_told = graph.child(at, "domain") >= 0 && below.empty();
    if (is_told && !is_singled_out(graph, at)) attribute_add(graph.word(frame), "@indef");
    kind_of_doer(graph, frame);
    frame_stand_in(graph, at, led, "@agent");
  }
}

namespace {

// "His death was announced", "she was told": where nobody does it and nothing else is spoken of, the second argument is.
// English makes a subject of who is told: (t / tell-01 :ARG2 she) becomes tell :ARG1 she, and the passive follows.
void told_apply(Rewriter& graph, int at) {
  const Concept& word = graph.word(at);
  constexpr std::array kVerbs{"treat",   "pronounce", "declare", "name", "appoint", "teach", "tell",
                              "ask",     "inform",    "pay",     "give", "offer",   "feed",  "serve",
                              "promise", "award",     "grant",   "deny", "refuse",  "charge"};
  const bool is_verb = is_event(graph, at) && is_one_of(graph, at, kVerbs) && !has_attribute(word, "@imp");
  const int second = is_verb ? graph.child(at, "ARG2") : -1;
  if (second < 0 || graph.argument(at, "ARG0") >= 0 || graph.argument(at, "ARG1") >= 0) return;
  for (const char* role : {"understood", "shared", "speaker", "questioned", "quoted", "domain"}) {
    if (graph.child(at, role) >= 0) return;
  }
  graph.arc(second).role = "ARG1";
}

}  // namespace

// Only people and pronouns: "the wall was moved by building the road" is no better than the active.
// (s / surprise-01 :ARG0 (s2 / see-01 :ARG0 i :ARG1 he) :ARG1 i): an event is an awkward subject, so the person is, and
// control then finds that the seeing is his own: "I was surprised to see him".
void step_voice(Meaning& meaning) {
  Rewriter graph(meaning, "voice");
  constexpr std::array kSomebody{"i",      "we",      "you",      "he",       "she",     "they",   "person", "one",
                                 "anyone", "someone", "everyone", "somebody", "anybody", "nobody", "man",    "woman"};
  // Behind these stands what moved somebody, "surprised to see him"; behind others how: "ruined by gambling".
  constexpr std::array kMoving{"surprise",   "astonish", "astound", "amaze",   "please",  "delight", "shock",
                               "horrify",    "sadden",   "relieve", "thrill",  "honor",   "stun",    "alarm",
                               "disappoint", "dismay",   "gratify", "overjoy", "startle", "touch",   "flatter",
                               "embarrass",  "appall",   "upset",   "disturb", "pain",    "humble",  "bewilder"};
  for (int at = 0; at < graph.count(); ++at) told_apply(graph, at);
  for (int at = 0; at < graph.count(); ++at) {
    const int agent = graph.child(at, "ARG0");
    const int patient = graph.child(at, "ARG1");
    const bool is_frame = !graph.word(at).sense.empty() && graph.child(at, "questioned") < 0;
    if (!is_frame || agent < 0 || patient < 0 || has_attribute(graph.word(at), "@imp")) continue;
    const int what = graph.arc(agent).to;
    const int whom = graph.arc(patient).to;
    const bool is_deed = !graph.word(what).sense.empty() && !has_attribute(graph.word(what), "@agent") &&
                         !has_attribute(graph.word(what), "@nom") && !graph.children(what).empty();
    // "The fact that he can swim helped her".
    const bool is_fact = std::any_of(std::begin(kModals), std::end(kModals),
                                     [&](const Modal& one) { return has_attribute(graph.word(what), one.attribute); });
    // "The farmer was surprised to see the wolf": what sees and is moved is somebody.
    const int seeing = is_deed ? graph.child(what, "ARG0") : -1;
    const bool is_moved = is_one_of(graph, at, kMoving);
    // "She was shocked that he sold it": what somebody else does is a clause of its own.
    const int other = subject_arc(graph, what);
    const bool is_clause_of_other = is_moved && other >= 0 && graph.arc(other).to != whom &&
                                    (seeing >= 0 || graph.child(what, "domain") >= 0) && graph.parent(what) == agent &&
                                    !has_attribute(graph.word(what), "@nom") && graph.child(at, "shared") < 0;
    if (is_clause_of_other) {
      graph.arc(agent).role = "consequence";
      attribute_add(graph.word(at), "@psv");
      continue;
    }
    const bool is_somebody =
        is_one_of(graph, whom, kSomebody) || (is_moved && seeing >= 0 && graph.arc(seeing).to == whom);
    if (is_deed && !is_fact && is_somebody) attribute_add(graph.word(at), "@psv");
    if (is_moved) attribute_add(graph.word(at), "@moved");
  }
}

namespace {

// An event with a determiner is a noun, "it deserves the same respect": true then, and a subject that the clause above
// has named is not said again.
// `at` has :understood where control has found its subject above; a noun shows it in no way.
bool nominal_apply(Rewriter& graph, int at) {
  constexpr std::array kDeterminers{"same", "this", "that", "such", "any", "some", "other", "every", "each", "another"};
  const int above = graph.parent(at);
  const bool is_told = has_attribute(graph.word(at), "@nom");
  constexpr std::array kReasons{"cause", "concession", "reason"};
  const bool is_reason = above >= 0 && !graph.arc(above).inverse && is_listed(graph.arc(above).role, kReasons);
  const bool is_inside =
      above >= 0 && (is_told || is_reason || (is_core(graph.arc(above)) && graph.arc(above).role != "ARG0"));
  if (!is_inside || graph.word(at).sense.empty() || at == graph.meaning().root) return false;
  // "Because of lower prices": a quality is that of a noun.
  bool is_noun = false;
  for (const int led : graph.children(at)) {
    const Arc& one = graph.arc(led);
    const bool is_quality = one.inverse && one.role == "ARG1" && graph.child(one.to, "ARG0") < 0 &&
                            !has_attribute(graph.word(one.to), "@neg") && graph.mentions(one.to) == 1;
    is_noun |= is_reason && is_quality && (graph.child(at, "ARG0") < 0 || graph.is(one.to, "repeat", "01"));
  }
  for (const int led : graph.children(at)) {
    const Arc& one = graph.arc(led);
    is_noun |= !one.inverse && one.role == "mod" && is_one_of(graph, one.to, kDeterminers);
  }
  // "It supports your statement": what is said, without a word of what it is, is a noun.
  constexpr std::array kStating{"state",   "suggest", "announce", "declare", "propose",
                                "explain", "decide",  "comment",  "remark"};
  const bool is_statement =
      is_one_of(graph, at, kStating) && graph.child(at, "ARG0") >= 0 && graph.children(at).size() == 1;
  is_noun = is_noun || is_statement || is_told;
  const int known = is_noun ? graph.child(at, "understood") : -1;
  if (known >= 0) graph.remove(known, Fate::attribute);
  if (is_noun) attribute_add(graph.word(at), "@nom");
  return is_noun;
}

// Acts that are easy or hard, wise or wrong, for whoever does them.
constexpr std::array kOfActs{"easy",   "difficult", "hard",     "dangerous",  "safe",
                             "useful", "useless",   "pleasant", "impossible", "necessary",
                             "wrong",  "cruel",     "stupid",   "wise",       "expensive"};

// What is good or bad to do, or for it to happen.
constexpr std::array kGoodOrBad{"good",      "bad",     "nice",     "important",  "fun",      "boring",   "sad",
                                "great",     "lovely",  "sweet",    "awful",      "terrible", "possible", "essential",
                                "tiring",    "fine",    "right",    "sufficient", "tempting", "horrible", "beautiful",
                                "wonderful", "painful", "exciting", "enough",     "best"};
// What happens to somebody and is no deed of his.
constexpr std::array kHappening{"come",   "go",     "leave", "arrive", "return", "stay",   "die",
                                "live",   "exist",  "fall",  "move",   "grow",   "change", "wake",
                                "remain", "travel", "rest",  "sit",    "stand",  "appear"};

// "The automatic transport", "a better chance": an event with a quality of its own, and what is hardly a verb, is a noun.
bool is_named_event(Rewriter& graph, int at) {
  constexpr std::array kNouns{"chance", "risk", "opportunity", "job", "tour", "trip", "party", "war"};
  const std::vector<int> below = graph.children(at);
  return graph.child(at, "mod") >= 0 || below.empty() || (below.size() == 1 && graph.arc(below[0]).role == "manner") ||
         is_one_of(graph, at, kNouns);
}

// (d / difficult :domain (s / sleep-01 :location h)): the same as for a frame.
void judged_act_apply(Rewriter& graph, int at) {
  const int led = graph.word(at).sense.empty() ? graph.child(at, "domain") : -1;
  const int act = led >= 0 ? graph.arc(led).to : -1;
  if (act < 0 || !is_event(graph, act) || graph.parent(act) != led || has_attribute(graph.word(act), "@nom")) return;
  if (!is_one_of(graph, at, kOfActs) && !is_one_of(graph, at, kGoodOrBad)) return;
  if (subject_arc(graph, act) >= 0 || has_attribute(graph.word(at), "@imp") || graph.child(at, "ARG1") >= 0) return;
  if (is_named_event(graph, act) || has_attribute(graph.word(act), "@ger")) return;
  attribute_add(graph.word(at), "@xdom");
  attribute_add(graph.word(act), "@xto");
}

// "It is easy for her to climb the tree": `at` is easy and `act` climb, which somebody does.
bool is_easy_for(Rewriter& graph, int at, int act) {
  return is_one_of(graph, at, kOfActs) && is_plain_deed(graph, act) && graph.child(act, "ARG0") >= 0;
}

// A clause that is the only thing spoken of stands behind: "it is good that the rain stopped", "it is easy to read this".
// @xtra: "it" in front and a clause with "that" behind; @xinf: an infinitive behind; @xv: a verb and no adjective is in
// front, it happens that.
void extraposed_apply(Rewriter& graph, int at) {
  const Concept& word = graph.word(at);
  const int said = graph.child(at, "ARG1");
  if (said < 0 || has_attribute(word, "@imp") || !has_attribute(word, "@v")) return;
  for (const char* agent : {"ARG0", "understood", "shared", "speaker"}) {
    if (graph.child(at, agent) >= 0) return;
  }
  const int what = graph.arc(said).to;
  // "It was hard", of what has been told: a mention stays the subject.
  const bool is_told = is_event(graph, what) || graph.child(what, "domain") >= 0;
  if (!is_told || graph.parent(what) != said || what == graph.meaning().root || has_attribute(graph.word(what), "@nom"))
    return;
  // "Singing is better than weeping."
  if (graph.child(at, "compared-to") >= 0 && has_attribute(graph.word(what), "@ger")) return;
  // "It is known that the house was sold", "it is clear that he is wrong": what is known or true is a clause even if nobody
  // does it.
  constexpr std::array kFacts{"suspect", "believe",   "know",    "say",    "report",  "think",    "expect",
                              "find",    "allege",    "true",    "clear",  "obvious", "certain",  "apparent",
                              "evident", "strange",   "lucky",   "matter", "happen",  "turn-out", "funny",
                              "odd",     "fortunate", "natural", "likely", "mention"};
  const bool is_clause =
      graph.child(what, "ARG0") >= 0 || graph.child(what, "domain") >= 0 ||
      ((is_one_of(graph, at, kFacts) || is_one_of(graph, at, kReporting)) && graph.child(what, "ARG1") >= 0);
  // "It is necessary that we wait": somebody who waits is said.
  const int sufferer = graph.child(what, "ARG1");
  constexpr std::array kSomebody{"i", "we", "you", "he", "she", "they", "everyone", "everybody", "someone", "person"};
  const bool is_person = sufferer >= 0 && is_one_of(graph, graph.arc(sufferer).to, kSomebody);
  if (is_person && is_one_of(graph, at, kOfActs)) attribute_add(graph.word(at), "@xtra");
  if (is_person && is_one_of(graph, at, kOfActs) && !has_attribute(graph.word(what), "@past"))
    attribute_add(graph.word(what), "@pres");
  // "It is good that the fox is very curious": a quality (ARG1 alone) with words of its own is no noun.
  const auto is_circumstance = [&](int one) { return !is_core(graph.arc(one)) && !graph.arc(one).inverse; };
  const std::vector<int> told = graph.children(what);
  const bool is_long = graph.child(what, "conjunct") >= 0 || graph.child(what, "degree") >= 0 ||
                       std::count_if(told.begin(), told.end(), is_circumstance) > 1;
  if (!is_clause && sufferer >= 0 && is_long && !is_one_of(graph, at, kOfActs)) attribute_add(graph.word(at), "@xadj");
  // "It makes sense to sell the boat."
  const bool is_of_acts =
      is_one_of(graph, at, kOfActs) || is_one_of(graph, at, kGoodOrBad) || graph.is(at, "sense", "02");
  // "It is good to see you": who is seen does nothing; "that you came" tells what happens to you.
  const bool is_undergone = is_person && (is_one_of(graph, at, kOfActs) || is_one_of(graph, what, kHappening));
  const bool is_act = !is_clause && !is_undergone && is_of_acts && !is_named_event(graph, what) &&
                      !has_attribute(graph.word(at), "@xadj") && graph.child(at, "compared-to") < 0;
  constexpr std::array kVerbs{"matter", "happen", "occur", "turn-out", "sense"};
  if (is_clause && is_one_of(graph, at, kVerbs)) attribute_add(graph.word(at), "@xv");
  // "The layout is easy to use": it has a subject already.
  if (graph.child(at, "domain") >= 0) return;
  const bool is_for = is_clause && is_easy_for(graph, at, what);
  if (is_for) make_infinitive(graph, what, "@xfor");
  if (is_clause && !is_for) attribute_add(graph.word(at), "@xtra");
  if (is_act || is_for) attribute_add(graph.word(at), "@xinf");
}

// "His never eating fish", "waiting is better than rewarding them": a time that only verbs have, and acts that are
// compared.
void gerund_apply(Rewriter& graph, int at) {
  constexpr std::array kOfVerbs{"never", "ever", "no-longer", "already", "still", "always", "soon"};
  const int when = graph.child(at, "time");
  const int above = when < 0 ? -1 : graph.parent(at);
  if (above >= 0 && is_core(graph.arc(above)) && is_event(graph, at) &&
      is_one_of(graph, graph.arc(when).to, kOfVerbs) && subject_arc(graph, at) >= 0)
    attribute_add(graph.word(at), "@ger");
  const int led = graph.child(at, "compared-to");
  if (led < 0) return;
  for (const int one : {led, subject_arc(graph, at)}) {
    const int act = one < 0 ? -1 : graph.arc(one).to;
    const bool is_act = act >= 0 && is_event(graph, act) && graph.child(act, "ARG0") < 0;
    if (is_act) attribute_add(graph.word(act), "@ger");
  }
}

// "She often repairs what he breaks": an argument that holds a clause of its own takes what stands behind it.
bool holds_clause(Rewriter& graph, int at) {
  if (graph.word(at).sense.empty() || has_attribute(graph.word(at), "@agent")) return false;
  for (const char* role : {"ARG1", "ARG2", "ARG3", "ARG4"}) {
    const int led = graph.child(at, role);
    if (led < 0) continue;
    const std::vector<int> below = graph.children(graph.arc(led).to);
    const auto is_told = [&](int one) {
      return graph.arc(one).inverse && is_core_role(graph.arc(one).role) && is_event(graph, graph.arc(one).to) &&
             !graph.children(graph.arc(one).to).empty();
    };
    if (graph.mentions(graph.arc(led).to) == 1 && std::any_of(below.begin(), below.end(), is_told)) return true;
  }
  return false;
}

// "She now knows that he sings": behind the verb, "now" would be said of what she knows.
void content_apply(Rewriter& graph, int at) {
  if (holds_clause(graph, at)) attribute_add(graph.word(at), "@heavy");
  constexpr std::array kAnswering{"answer", "reply", "respond"};
  const char* role = is_one_of(graph, at, kAnswering) ? "ARG2" : "ARG1";
  const int led = graph.word(at).sense.empty() ? -1 : graph.child(at, role);
  if (led < 0) return;
  const int told = graph.arc(led).to;
  const bool is_clause = is_event(graph, told) || graph.child(told, "domain") >= 0;
  if (is_clause && !graph.children(told).empty()) attribute_add(graph.word(at), "@content");
}

// "Next year", "this morning": such a time has no preposition.
void bare_time_apply(Rewriter& graph, int at) {
  // Words that tell which time it is; another has "in" or "on".
  constexpr std::array kPointing{"this",     "that",      "next",     "last",      "every", "each",    "all",
                                 "some",     "any",       "same",     "other",     "one",   "another", "few",
                                 "previous", "following", "tomorrow", "yesterday", "today"};
  const int led = graph.child(at, "mod");
  if (led >= 0 && is_one_of(graph, graph.arc(led).to, kPointing)) attribute_add(graph.word(at), "@bare");
}

// "The crown was given to him": where nobody gives it, what is given is the subject of a finite clause.
bool is_given_passive(Rewriter& graph, int at) {
  for (const char* role : {"ARG0", "shared", "understood", "speaker"}) {
    if (graph.child(at, role) >= 0) return false;
  }
  const int led = graph.parent(at);
  if (led < 0) return !has_attribute(graph.word(at), "@imp");
  if (graph.arc(led).inverse) return graph.arc(led).role == "ARG1";
  // Below any other role it may become an infinitive, which has no subject.
  constexpr std::array kFinite{"time", "temporal", "cause", "condition", "concession"};
  const int governor = graph.arc(led).from;
  return is_listed(graph.arc(led).role, kFinite) ||
         (graph.arc(led).role == "ARG1" &&
          (is_one_of(graph, governor, kSaying) || is_one_of(graph, governor, kReporting)));
}

// "He said that it rained and that she came": without the second "that" the last clause would be told by itself.
void content_joined_apply(Rewriter& graph, int at) {
  const int led = is_event(graph, at) && (is_one_of(graph, at, kSaying) || is_one_of(graph, at, kReporting) ||
                                          graph.is(at, "believe", "01") || graph.is(at, "hope", "01") ||
                                          graph.is(at, "claim", "01") || graph.is(at, "report", "01"))
                      ? graph.child(at, "ARG1")
                      : -1;
  int clause = led < 0 ? -1 : graph.arc(led).to;
  // A question, an order or a quotation has no "that" to repeat.
  constexpr std::array kNoStatement{"@whether", "@asked", "@quote", "@imp", "@nom", "@int", "@ask"};
  const auto is_told = [&](int one) {
    return is_clause(graph, one) && subject_arc(graph, one) >= 0 &&
           std::none_of(kNoStatement.begin(), kNoStatement.end(),
                        [&](const char* mark) { return has_attribute(graph.word(one), mark); });
  };
  for (int steps = graph.count(); clause >= 0 && is_told(clause) && steps > 0; --steps) {
    const int next = graph.child(clause, "conjunct");
    clause = next < 0 ? -1 : graph.arc(next).to;
    // "He said that she came and sang": with the subject goes the "that".
    if (clause >= 0 && graph.child(clause, "shared") < 0 && is_told(clause))
      attribute_add(graph.word(clause), "@thatc");
  }
}

// "She gave it to him": a pronoun stands before who receives it, who then has a preposition.
void giving_apply(Rewriter& graph, int at) {
  const bool is_shared = has_attribute(graph.word(at), "@shr1");
  const int what = gives(graph, at) ? graph.child(at, is_shared ? "shared" : "ARG1") : -1;
  if (what < 0) return;
  // "The prize was given to the writer".
  const bool is_of_nobody = graph.argument(at, "ARG0") < 0 && graph.child(at, "understood") < 0 &&
                            graph.child(at, "shared") < 0 && graph.child(at, "speaker") < 0;
  if (is_of_nobody) attribute_add(graph.word(at), "@given");
  // "The boy that she gave it to", but "the boy that she told that it rained".
  if (graph.child(at, "ARG2") < 0) {
    if (!is_event(graph, graph.arc(what).to)) attribute_add(graph.word(at), "@gives");
    return;
  }
  if (is_given_passive(graph, at)) attribute_add(graph.word(at), "@pro1");
  // "They sent him to prison": what is no person may be a place.
  const int receiver = graph.arc(graph.child(at, "ARG2")).to;
  const bool is_person = is_personal_pronoun(graph, receiver) || has_attribute(graph.word(receiver), "@person") ||
                         graph.is(receiver, "person") || !graph.word(receiver).sense.empty();
  constexpr std::array kSending{"send", "bring"};
  if (is_shared || (is_one_of(graph, at, kSending) && !is_person)) attribute_add(graph.word(at), "@pro1");
  const int thing = graph.arc(what).to;
  const bool is_light = !is_clause(graph, thing) && !is_long_receiver(graph, thing);
  // "They sent the mayor a letter that asked for help": what has a clause of its own stands last.
  const bool is_long_thing = !is_clause(graph, thing) && is_long_receiver(graph, thing);
  if (is_long_thing && is_person && !is_shared && !is_long_receiver(graph, receiver))
    attribute_add(graph.word(at), "@late1");
  const bool is_bare_pronoun = is_personal_pronoun(graph, thing) && !is_clause(graph, thing);
  if (is_bare_pronoun || graph.parent(thing) != what || (is_light && is_long_receiver(graph, receiver)))
    attribute_add(graph.word(at), "@pro1");
}

// "She saw him fall", "she heard the bird sing": what is seen or heard itself, in contrast to what one learns, which is a
// clause with "that".
void perceived_apply(Rewriter& graph, int at) {
  constexpr std::array kSeeing{"see", "watch", "notice", "feel", "observe"};
  // What eyes can see somebody do, and ears hear: "she saw that he agreed" is learnt.
  constexpr std::array kMoves{
      "come",    "go",      "walk",     "run",       "fall",    "fly",     "sit",      "stand",   "move",   "break",
      "shine",   "rise",    "jump",     "dance",     "climb",   "enter",   "shimmer",  "open",    "close",  "smile",
      "cry",     "play",    "shake",    "swim",      "drive",   "cross",   "wave",     "nod",     "turn",   "burn",
      "glow",    "sleep",   "eat",      "drink",     "bloom",   "blow",    "push",     "pull",    "throw",  "kick",
      "pass",    "rush",    "roll",     "float",     "sink",    "crawl",   "approach", "tremble", "vanish", "laugh",
      "sing",    "flicker", "drop",     "disappear", "stop",    "stumble", "shiver",   "swing",   "leave",  "arrive",
      "set-out", "get-up",  "sit-down", "stand-up",  "pick-up", "put-down"};
  constexpr std::array kSounds{"sing",    "laugh",    "cry",   "bark",  "shout", "scream", "call", "weep",
                               "whistle", "knock",    "ring",  "roar",  "speak", "talk",   "play", "whisper",
                               "howl",    "growl",    "sigh",  "creak", "tick",  "rumble", "buzz", "breathe",
                               "snore",   "approach", "groan", "leave", "come",  "enter",  "fall", "walk"};
  const bool is_seeing = is_one_of(graph, at, kSeeing);
  if (!is_event(graph, at) || (!is_seeing && !graph.is(at, "hear", "01"))) return;
  const int led = graph.child(at, "ARG1");
  const int what = led < 0 ? -1 : graph.arc(led).to;
  if (what < 0 || !is_event(graph, what) || graph.parent(what) != led || graph.mentions(what) > 1) return;
  const auto is_perceptible = [&](int deed) {
    return is_seeing ? is_one_of(graph, deed, kMoves) : is_one_of(graph, deed, kSounds);
  };
  if (!is_perceptible(what)) return;
  // What is denied or only possible is not perceived, and a passive has no bare infinitive.
  constexpr std::array kClauses{"@neg",  "@can",     "@must",  "@should", "@may", "@fut",
                                "@used", "@whether", "@asked", "@ask",    "@psv", "@nom"};
  for (const char* mark : kClauses) {
    if (has_attribute(graph.word(what), mark)) return;
  }
  // "I saw him climb the wall and run".
  int next = graph.child(what, "conjunct");
  for (int steps = graph.count(); next >= 0 && steps > 0; --steps) {
    const int other = graph.arc(next).to;
    if (graph.child(other, "shared") < 0 || !is_perceptible(other)) return;
    next = graph.child(other, "conjunct");
  }
  attribute_add(graph.word(what), "@perceived");
}

// "She let the dog sleep in the kitchen on Monday", "he began to paint in 1990": between a verb and the infinitive that it
// governs there is no place for a time, so it stands with the infinitive.
void governed_time_apply(Rewriter& graph, int at) {
  constexpr std::array kLetting{"let",  "allow",  "permit",  "enable",  "want",   "need",  "expect", "intend",
                                "wish", "desire", "require", "request", "prefer", "await", "help",   "cause"};
  constexpr std::array kOneDeed{"want", "try",  "begin", "start",  "continue", "attempt", "like",  "love",
                                "hate", "need", "fail",  "manage", "cease",    "help",    "enjoy", "struggle",
                                "seek", "stop", "keep",  "finish", "resume",   "avoid",   "learn", "intend"};
  const int led = is_event(graph, at) ? graph.child(at, "ARG1") : -1;
  const int deed = led < 0 ? -1 : graph.arc(led).to;
  if (deed < 0 || graph.parent(deed) != led || graph.child(deed, "conjunct") >= 0) return;
  const Concept& word = graph.word(deed);
  if (has_attribute(word, "@nom") || has_attribute(word, "@quote") || (!is_event(graph, deed) && word.sense.empty()))
    return;
  const bool is_letting = is_one_of(graph, at, kLetting) || graph.is(at, "make", "02") || graph.is(at, "have", "04") ||
                          graph.is(at, "get", "04") || has_attribute(word, "@perceived");
  const bool is_of_another = is_letting && subject_arc(graph, deed) >= 0;
  const bool is_own = is_one_of(graph, at, kOneDeed) && graph.child(deed, "understood") >= 0;
  if (!is_of_another && !is_own) return;
  constexpr std::array kRoles{"time",        "location",    "duration", "manner", "instrument",
                              "accompanier", "beneficiary", "medium",   "prep"};
  constexpr std::array kDays{"yesterday", "today", "tomorrow", "tonight"};
  for (const int one : graph.children(at)) {
    const int what = graph.arc(one).to;
    // An adverb stands in front of the verb, and a clause in front of the whole.
    const bool is_phrase = !graph.children(what).empty() || has_attribute(graph.word(what), "@date") ||
                           is_one_of(graph, what, kDays) || graph.arc(one).role == "location" ||
                           has_attribute(graph.word(what), "@neg");
    if (graph.arc(one).inverse || !is_listed(graph.arc(one).role, kRoles) || !is_phrase || is_unknown(graph, what))
      continue;
    const int inner = graph.child(what, "op1");
    const bool is_bare_manner = graph.arc(one).role == "manner" && subject_arc(graph, what) < 0;
    if ((is_clause(graph, what) && !is_bare_manner) || (inner >= 0 && is_clause(graph, graph.arc(inner).to))) continue;
    graph.lead_from(one, deed);
  }
}

// "She put down the box that he had sent": a particle stands in front of an object that has more than a word beside it.
void particle_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "particle");
  const int object = led < 0 ? -1 : graph.child(at, "ARG1");
  if (object < 0 || graph.child(at, "ARG0") < 0) return;
  const int thing = graph.arc(object).to;
  const std::vector<int> below = graph.children(thing);
  // "She put the box down" as long as it is short.
  const bool is_long = below.size() > 1 || std::any_of(below.begin(), below.end(), [&](int one) {
                         return graph.arc(one).inverse || graph.arc(one).role == "conjunct";
                       });
  if (is_long && !is_personal_pronoun(graph, thing) && graph.parent(thing) == object)
    graph.arc(led).role = "particle-near";
}

// "A man who was hurt in the storm and whom she knows": beside a clause with a subject of its own a participle would be
// taken for a part of it.
void whole_relative_apply(Rewriter& graph, int at) {
  std::vector<int> passive;
  bool is_told = false;
  for (const int led : graph.children(at)) {
    const Arc& one = graph.arc(led);
    if (!one.inverse || one.role != "ARG1" || !is_event(graph, one.to)) continue;
    const bool has_doer = graph.child(one.to, "ARG0") >= 0;
    is_told |= has_doer;
    if (!has_doer && !graph.children(one.to).empty()) passive.push_back(one.to);
  }
  for (const int event : passive) {
    if (is_told && graph.word(at).sense.empty()) attribute_add(graph.word(event), "@whole");
  }
}

// "The current lending": a noun of an event has an adjective where its verb has an adverb of time.
void noun_time_apply(Rewriter& graph, int at) {
  // Adjectives of time, of which rules make adverbs beside a verb: "currently".
  constexpr std::array kAdjectives{"current", "recent", "previous", "former",   "subsequent", "initial",
                                   "future",  "past",   "eventual", "original", "present",    "annual"};
  const int led = graph.child(at, "time");
  // What stands in a place of a noun and has no finite verb.
  const bool is_noun = is_event(graph, at) && at != graph.meaning().root && !has_attribute(graph.word(at), "@cl") &&
                       !has_attribute(graph.word(at), "@agent") && graph.parent(at) >= 0 &&
                       !graph.arc(graph.parent(at)).inverse;
  if (led >= 0 && is_noun && is_one_of(graph, graph.arc(led).to, kAdjectives) &&
      graph.children(graph.arc(led).to).empty())
    graph.arc(led).role = "mod";
}

// English has one modal verb in a clause, and the stronger stays.
void one_modal_apply(Rewriter& graph, int at) {
  Concept& word = graph.word(at);
  if (has_attribute(word, "@must") || has_attribute(word, "@need")) std::erase(word.attributes, "@should");
  if (has_attribute(word, "@can")) std::erase(word.attributes, "@may");
  // UMR tells of what one should do how sure it is, too.
  if (!has_attribute(word, "@should")) return;
  for (const char* weaker : {"@likely", "@may"}) std::erase(word.attributes, weaker);
}

// "The badly damaged roof": a participle of which nothing is told but how it was done stands before its noun.
// (r / roof :ARG1-of (d / damage-01 :ARG1-of (b / bad-07))).
void participle_apply(Rewriter& graph, int at) {
  const int above = is_event(graph, at) ? graph.parent(at) : -1;
  const bool is_of_noun = above >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                          graph.word(graph.arc(above).from).sense.empty();
  const std::vector<int> below = graph.children(at);
  if (!is_of_noun || below.size() != 1 || !graph.arc(below[0]).inverse || graph.arc(below[0]).role != "ARG1") return;
  const int how = graph.arc(below[0]).to;
  if (graph.children(how).empty() && graph.word(how).attributes.size() == 1) attribute_add(graph.word(at), "@led");
}

// (t / tire-01 :ARG1 he :degree (v / very)): "he is very tired". With a degree many verbs are participles; "a little" and
// "completely" leave a verb a verb: he hesitated a little.
void graded_apply(Rewriter& graph, int at) {
  constexpr std::array kGrades{"@more", "@most", "@less", "@least", "@too", "@so", "@very"};
  constexpr std::array kIntensifying{"so",    "very",      "too",    "more",  "most",        "less",
                                     "least", "extremely", "rather", "quite", "amr-unknown", "umr-unknown"};
  Concept& word = graph.word(at);
  const int degree = graph.child(at, "degree");
  const bool is_graded =
      (degree >= 0 && is_one_of(graph, graph.arc(degree).to, kIntensifying)) ||
      std::any_of(kGrades.begin(), kGrades.end(), [&](const char* one) { return has_attribute(word, one); });
  if (is_graded && has_attribute(word, "@v")) attribute_add(word, "@graded");
}

// (s / say-01 :ARG0 (p / person) :ARG1 c): "people say that ...". Who does something, and of whom nothing else is said, is
// nobody in particular.
void anybody_apply(Rewriter& graph, int at) {
  if (!graph.is(at, "person") || !graph.children(at).empty() || graph.mentions(at) != 1) return;
  const int deed = graph.parent(at);
  if (deed < 0 || graph.arc(deed).role != "ARG0" || graph.arc(deed).inverse) return;
  Concept& word = graph.word(at);
  if (!has_attribute(word, "@agent") && !has_attribute(word, "@ref")) word.name = "people";
}

// (c / calm-down-03 :mode imperative :ARG1 (y / you)): "calm down". Who is bidden does it, whatever the number of his role.
void bidden_subject(Rewriter& graph, int at) {
  const int led = has_attribute(graph.word(at), "@imp") && graph.child(at, "ARG0") < 0 ? graph.child(at, "ARG1") : -1;
  if (led >= 0 && graph.is(graph.arc(led).to, "you") && is_event(graph, at) && !graph.is(at, "thank", "01"))
    graph.arc(led).role = "ARG0";
}

// What is most of its kind is known: "the oldest tree", where no owner tells which.
void most_apply(Rewriter& graph, int at) {
  const int led = has_attribute(graph.word(at), "@most") ? graph.parent(at) : -1;
  if (led < 0) return;
  const Arc& one = graph.arc(led);
  const bool is_beside_noun = one.inverse ? is_core_role(one.role) : one.role == "mod";
  const bool is_noun = graph.word(one.from).sense.empty() || has_attribute(graph.word(one.from), "@nom");
  if (is_beside_noun && is_noun && graph.child(one.from, "poss") < 0) attribute_add(graph.word(one.from), "@def");
}

// "They demanded a higher wage": what is more than another is mostly new.
void more_apply(Rewriter& graph, int at) {
  const int led = has_attribute(graph.word(at), "@more") ? graph.parent(at) : -1;
  if (led < 0 || graph.arc(led).role != (graph.arc(led).inverse ? "ARG1" : "mod")) return;
  const int noun = graph.arc(led).from;
  const int above = graph.parent(noun);
  const bool is_object = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role.starts_with("ARG") &&
                         graph.arc(above).role != "ARG0" && graph.child(graph.arc(above).from, "ARG0") >= 0;
  const Concept& word = graph.word(noun);
  if (!is_object || !word.sense.empty() || has_attribute(word, "@pl") || has_attribute(word, "@name")) return;
  for (const char* role : {"poss", "org", "part-of", "ord", "quant"}) {
    if (graph.child(noun, role) >= 0) return;
  }
  attribute_add(graph.word(noun), "@indef");
}

// @cl: the clause has a subject and a finite verb, or, of the weather, the subject "it". A noun of an event and a driver
// have none.
void clause_apply(Rewriter& graph, int at) {
  Concept& word = graph.word(at);
  const bool has_subject = subject_arc(graph, at) >= 0 || graph.child(at, "understood") >= 0 ||
                           graph.child(at, "shared") >= 0 || graph.child(at, "speaker") >= 0;
  // "It rained in the south for days"; without a time the rain may be a heading.
  constexpr std::array kWeather{"rain", "snow", "hail", "drizzle", "thunder"};
  const bool is_timed = graph.child(at, "duration") >= 0 || graph.child(at, "time") >= 0 ||
                        graph.child(at, "temporal") >= 0 || has_attribute(word, "@activity");
  // "Birds hide when it rains."
  constexpr std::array kAround{"time", "cause", "concession", "condition", "reason"};
  const int led = graph.parent(at);
  const bool is_around = led >= 0 && !graph.arc(led).inverse && is_listed(graph.arc(led).role, kAround);
  const bool is_when = is_around && (graph.arc(led).role == "time" || graph.arc(led).role == "condition");
  // "A country where it never rains."
  const bool is_where =
      led >= 0 && graph.arc(led).inverse && (graph.arc(led).role == "location" || graph.arc(led).role == "time");
  const bool is_stated = at == graph.meaning().root ? is_timed : is_when || is_where;
  if (is_event(graph, at) && is_one_of(graph, at, kWeather) && !has_subject && is_stated) attribute_add(word, "@cl");
  // "We stayed because it was cold outside": such a quality is said of nothing, and no noun.
  constexpr std::array kQualities{"cold", "hot", "warm", "dark", "late", "early", "foggy", "sunny", "windy", "cloudy"};
  const bool is_quality = is_event(graph, at) && is_one_of(graph, at, kQualities) && !has_subject;
  if (is_quality && is_around && graph.arc(led).role != "time") attribute_add(word, "@cl");
  if (has_subject && !has_attribute(word, "@result") && !has_attribute(word, "@agent") && !nominal_apply(graph, at))
    attribute_add(word, "@cl");
  // "I think that he is a teacher."
  if (has_attribute(word, "@agent") && graph.child(at, "domain") >= 0) attribute_add(word, "@cl");
}

// @aux: what English says with an auxiliary in front of the basic form, "does not come", "can come".
void auxiliary_apply(Rewriter& graph, int at) {
  constexpr std::array kAuxiliary{"@need", "@can",   "@must", "@should", "@may", "@likely", "@maynot",
                                  "@fut",  "@would", "@used", "@neg",    "@ask", "@int"};
  Concept& word = graph.word(at);
  const bool is_auxiliary =
      std::any_of(kAuxiliary.begin(), kAuxiliary.end(), [&](const char* one) { return has_attribute(word, one); });
  if (is_auxiliary && is_clause(graph, at)) attribute_add(word, "@aux");
}

// (p / pity :domain (l / leave-15 :ARG0 she)): "it is a pity that she left". What a predicate says of a whole clause has
// "it" in front, @xdom, and the clause behind.
void clause_judged_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "domain");
  const int told = led >= 0 ? graph.arc(led).to : -1;
  if (told < 0 || graph.parent(told) != led) return;
  if (!is_event(graph, told) || subject_arc(graph, told) < 0 || has_attribute(graph.word(told), "@nom")) return;
  // "Burning a bridge is easier than building one."
  if (graph.child(at, "compared-to") >= 0 && has_attribute(graph.word(told), "@ger")) return;
  // "Her travels are a long story", but "it is a pity that she travels": most nouns judge no clause.
  constexpr std::array kJudging{
      "pity",      "shame",       "fact",      "wonder",   "surprise", "luck",     "miracle",  "tragedy",  "lie",
      "truth",     "secret",      "mistake",   "problem",  "rule",     "duty",     "disgrace", "honor",    "pleasure",
      "relief",    "joy",         "crime",     "sin",      "scandal",  "job",      "task",     "goal",     "idea",
      "habit",     "way",         "time",      "reason",   "accident", "thing",    "sign",     "law",      "right",
      "work",      "role",        "business",  "good",     "dream",    "wish",     "hope",     "chance",   "matter",
      "tradition", "custom",      "proof",     "question", "case",     "nonsense", "concern",  "disaster", "success",
      "failure",   "point",       "purpose",   "aim",      "ambition", "pastime",  "hobby",    "result",   "news",
      "comfort",   "consolation", "beginning", "end",      "part",     "kind",     "nuisance"};
  const bool is_deed_of = graph.child(told, "ARG0") >= 0 && graph.child(told, "ARG1") < 0 &&
                          is_plain_deed(graph, told) && graph.word(at).sense.empty() &&
                          !graph.word(at).variable.empty() && graph.child(at, "poss") < 0;
  const bool is_noun = graph.child(at, "mod") >= 0 || graph.child(at, "topic") >= 0;
  if (is_deed_of && is_noun && !is_one_of(graph, at, kJudging)) return attribute_add(graph.word(told), "@nom");
  if (graph.child(at, "consequence") < 0) attribute_add(graph.word(at), "@xdom");
  // "It is her duty to wait": whose it is has been named.
  const int owner = graph.child(at, "poss");
  const int doer = owner < 0 ? -1 : graph.child(told, "ARG0");
  if (doer >= 0 && graph.arc(doer).to == graph.arc(owner).to && is_plain_deed(graph, told)) {
    graph.remove(doer, Fate::relation);
    return make_infinitive(graph, told, "@xto");
  }
  if (is_easy_for(graph, at, told)) make_infinitive(graph, told, "@xfor");
}

// (b / be-located-at-91 :ARG1 (b2 / bird :quant 3) :ARG2 (t / tree)): "there are three birds in the tree". What is only
// counted is new.
void there_apply(Rewriter& graph, int at) {
  const bool is_being =
      graph.is(at, "be-located-at", "91") || graph.is(at, "have-place", "91") || graph.is(at, "exist", "91");
  const int led = is_being ? graph.child(at, "ARG1") : -1;
  if (led < 0) return;
  const Concept& thing = graph.word(graph.arc(led).to);
  // "Where your two shoes are", "who are those three men": what is somebody's or pointed at is known.
  const bool is_known = graph.child(graph.arc(led).to, "poss") >= 0 ||
                        child_among(graph, graph.arc(led).to, "mod", kDemonstratives) >= 0 ||
                        has_attribute(graph.word(at), "@query");
  const bool is_new = graph.child(graph.arc(led).to, "quant") >= 0 || has_attribute(thing, "@indef");
  if (is_new && !is_known) attribute_add(graph.word(at), has_attribute(thing, "@pl") ? "@theres" : "@there");
}

}  // namespace

// What the rules must know of a whole clause before its first word stands: whether it has a subject, an auxiliary, an
// expletive. No graph is changed here but for attributes, so that this step sees what the reader will see.
void step_forms(Meaning& meaning) {
  Rewriter graph(meaning, "forms");
  for (int at = 0; at < graph.count(); ++at) {
    participle_apply(graph, at);
    bare_time_apply(graph, at);
    content_apply(graph, at);
    whole_relative_apply(graph, at);
    content_joined_apply(graph, at);
    giving_apply(graph, at);
    particle_apply(graph, at);
    perceived_apply(graph, at);
    governed_time_apply(graph, at);
    one_modal_apply(graph, at);
    graded_apply(graph, at);
    anybody_apply(graph, at);
    bidden_subject(graph, at);
    most_apply(graph, at);
    more_apply(graph, at);
    // In front of what asks for @cl and @nom: times of nouns, clauses that stand behind.
    clause_apply(graph, at);
    Concept& word = graph.word(at);
    if (has_attribute(word, "@whether") || has_attribute(word, "@asked")) attribute_add(word, "@query");
    auxiliary_apply(graph, at);
    noun_time_apply(graph, at);
    gerund_apply(graph, at);
    judged_act_apply(graph, at);
    extraposed_apply(graph, at);
    clause_judged_apply(graph, at);
    there_apply(graph, at);
  }
}

}  // namespace lexon
