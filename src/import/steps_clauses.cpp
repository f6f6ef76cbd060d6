// Steps about clauses: questions, quotations, coordination, control, further mentions, relative clauses.
#include <algorithm>
#include <array>
#include <utility>

#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {
namespace {

// A frame, or anything that is said of a subject.
bool is_clause(Rewriter& graph, int at) {
  return !graph.word(at).sense.empty() || graph.child(at, "domain") >= 0;
}

// For each concept the arcs that are written at it, in the order of the source: for walks over a whole graph, which would
// look at all arcs for each concept else. It holds until an arc changes its beginning.
std::vector<std::vector<int>> arcs_by_beginning(Rewriter& graph) {
  std::vector<std::vector<int>> below(static_cast<std::size_t>(graph.count()));
  for (int led = 0; led < static_cast<int>(graph.meaning().arcs.size()); ++led) {
    if (!graph.arc(led).gone) below[static_cast<std::size_t>(graph.arc(led).from)].push_back(led);
  }
  return below;
}

// Who has a clause of his own stands behind: "she gave the key to the woman who lived there".
bool is_long_receiver(Rewriter& graph, int receiver) {
  const std::vector<int> below = graph.children(receiver);
  return std::any_of(below.begin(), below.end(), [&](int led) { return graph.arc(led).inverse; });
}

// Verbs whose receiver stands in front of what he receives; for a pronoun that is received see giving_apply.
bool gives(Rewriter& graph, int at) {
  constexpr std::array kGiving{"give", "show",  "tell", "send", "bring", "lend",    "teach", "hand", "offer", "sell",
                               "pay",  "throw", "pass", "feed", "owe",   "promise", "grant", "read", "write"};
  return is_one_of(graph, at, kGiving);
}

// For each concept the arc by which the walk from the beginning of the sentence first comes to it; -1 for none.
std::vector<int> first_arcs(Rewriter& graph) {
  std::vector<std::vector<int>> all = arcs_by_beginning(graph);
  // As Rewriter::child and is_clause, but without a look at all arcs for each concept: coordination asks for this walk once
  // for each conjunction.
  const auto has_child = [&](int at, std::string_view role, bool inverse = false) {
    const std::vector<int>& below = all[static_cast<std::size_t>(at)];
    return std::any_of(below.begin(), below.end(),
                       [&](int one) { return graph.arc(one).role == role && graph.arc(one).inverse == inverse; });
  };
  const auto has_clause = [&](int led) {
    const int at = graph.arc(led).to;
    return !graph.word(at).sense.empty() || has_child(at, "domain");
  };
  std::vector<int> first(static_cast<std::size_t>(graph.count()), -1);
  std::vector<bool> seen(first.size());
  std::vector<std::pair<int, int>> open{{-1, graph.meaning().root}};
  while (!open.empty()) {
    const auto [led, at] = open.back();
    open.pop_back();
    if (at < 0 || seen[static_cast<std::size_t>(at)]) continue;
    seen[static_cast<std::size_t>(at)] = true;
    first[static_cast<std::size_t>(at)] = led;
    std::vector<int>& below = all[static_cast<std::size_t>(at)];
    // A receiver is said before what it is told to do: "she asked the driver to stop".
    std::stable_partition(below.begin(), below.end(), [&](int one) {
      const Arc& led_down = graph.arc(one);
      const bool is_argument = led_down.role.starts_with("ARG") || led_down.role == "speaker";
      if (led_down.inverse || !is_argument) return false;
      const Concept& word = graph.word(led_down.to);
      if (has_clause(one)) return has_attribute(word, "@agent") || has_attribute(word, "@result");
      // "She showed the boy how he should do it": a thing that a clause tells is one, too.
      return word.name != "thing" || !has_child(led_down.to, "manner", true);
    });
    // "She gave the boy something to eat": who receives it is said before it.
    if (gives(graph, at)) {
      std::stable_partition(below.begin(), below.end(), [&](int one) {
        return graph.arc(one).role == "ARG2" && !graph.arc(one).inverse && !has_clause(one) &&
               !is_long_receiver(graph, graph.arc(one).to);
      });
    }
    // An agent is said before what it does something to, and a condition before both, wherever the source writes them.
    const bool is_bidden = has_attribute(graph.word(at), "@bid");
    const char* subject = is_bidden ? "understood" : has_attribute(graph.word(at), "@psv") ? "ARG1" : "ARG0";
    const bool has_agent = has_child(at, subject);
    std::stable_partition(below.begin(), below.end(), [&](int one) {
      return graph.arc(one).role == (has_agent ? subject : "domain") && !graph.arc(one).inverse;
    });
    // An infinitive, which has no subject of its own, has nothing in front of it.
    const bool is_infinitive = has_child(at, "understood") || (led >= 0 && graph.arc(led).role == "domain");
    std::stable_partition(below.begin(), below.end(), [&](int one) {
      const Arc& led_down = graph.arc(one);
      if (is_infinitive) return false;
      const bool goes_in_front = led_down.role == "condition" || led_down.role == "time";
      return goes_in_front && !led_down.inverse && has_clause(one);
    });
    for (auto one = below.rbegin(); one != below.rend(); ++one) open.emplace_back(*one, graph.arc(*one).to);
  }
  // "It was cheap, although it was a long trip": what is a statement of its own is said where a clause may stand.
  for (std::size_t i = 0; i < graph.meaning().arcs.size(); ++i) {
    const Arc& one = graph.meaning().arcs[i];
    const bool is_circumstance = one.role == "concession" || one.role == "cause" || one.role == "condition";
    if (one.gone || one.inverse || !is_circumstance || graph.child(one.to, "domain") < 0) continue;
    int& before = first[static_cast<std::size_t>(one.to)];
    if (before >= 0 && graph.arc(before).role == "ARG0" && !graph.arc(before).inverse) before = static_cast<int>(i);
  }
  return first;
}

// True for one person who is known as a woman by her first name or by what she is.
bool is_woman(const Concept& word) {
  constexpr std::array kFirst{
      "Ada",       "Alice",   "Amelia",   "Amy",      "Andrea",   "Angela",   "Anita",     "Ann",      "Anna",
      "Anne",      "Audrey",  "Barbara",  "Beatrice", "Betty",    "Bridget",  "Carla",     "Carmen",   "Carol",
      "Caroline",  "Cecilia", "Claire",   "Clara",    "Cynthia",  "Daisy",    "Deborah",   "Denise",   "Diana",
      "Donna",     "Doris",   "Dorothy",  "Edith",    "Elena",    "Eliza",    "Ella",      "Ellen",    "Elsa",
      "Emily",     "Emma",    "Erica",    "Esther",   "Eva",      "Eve",      "Fatima",    "Fiona",    "Florence",
      "Gloria",    "Greta",   "Hanna",    "Hannah",   "Harriet",  "Helen",    "Helena",    "Ida",      "Ingrid",
      "Irene",     "Isabel",  "Isabella", "Jane",     "Janet",    "Jenny",    "Jessica",   "Joan",     "Joanna",
      "Josephine", "Judith",  "Julia",    "Juliet",   "Karen",    "Kate",     "Katherine", "Kathleen", "Laura",
      "Lena",      "Lilian",  "Linda",    "Lisa",     "Louise",   "Lucy",     "Lydia",     "Maria",    "Margaret",
      "Marie",     "Martha",  "Mary",     "Matilda",  "Maya",     "Michelle", "Monica",    "Nadia",    "Nancy",
      "Natalia",   "Nina",    "Nora",     "Olga",     "Olivia",   "Pamela",   "Patricia",  "Paula",    "Pauline",
      "Rachel",    "Rebecca", "Rita",     "Rosa",     "Ruth",     "Sandra",   "Sara",      "Silvia",   "Sofia",
      "Sonia",     "Sophia",  "Sophie",   "Stella",   "Susan",    "Sylvia",   "Tamara",    "Teresa",   "Theresa",
      "Ursula",    "Valerie", "Vera",     "Veronica", "Victoria", "Virginia", "Wendy",     "Yvonne",   "Zoe"};
  const bool is_one = has_attribute(word, "@name") && has_attribute(word, "@person") && !has_attribute(word, "@pl");
  const bool is_called = is_listed(std::string_view(word.name).substr(0, word.name.find(' ')), kFirst);
  bool is_so = is_called;
  for (const char* what : {"@woman", "@girl", "@queen", "@princess", "@actress", "@aunt", "@sister"})
    is_so = is_so || has_attribute(word, what);
  return is_one && is_so;
}

// A word of its own for a further mention of a concept. Of the attributes it has those that say what it is; what is said
// about it, degree or negation, stays with the first.
// (w / want-01 :ARG0 (b / boy) :ARG1 (s / sing-01 :ARG0 b)) has one concept for two mentions: the second becomes boy.@ref,
// of which a rule makes "he", or nothing.
int mention_of(Rewriter& graph, int at) {
  const Concept model = graph.word(at);
  const int made = graph.add_concept(model.name);
  Concept& word = graph.word(made);
  // Of a person that nothing names the pronoun is known.
  const bool is_person = graph.is(at, "person") && !has_attribute(model, "@name") && !has_attribute(model, "@pl") &&
                         !has_attribute(model, "@agent");
  if (is_person) word.name = "he";
  word.sense = model.sense;
  word.is_text = model.is_text;
  for (const char* kept : {"@v", "@person", "@pl", "@name", "@p1", "@p2", "@p3", "@agent", "@measure"}) {
    if (has_attribute(model, kept)) attribute_add(word, kept);
  }
  attribute_add(word, "@ref");
  if (is_woman(model)) {
    word.name = "she";
    std::erase(word.attributes, "@name");
  }
  // The poor are they.
  if (has_attribute(model, "@people")) graph.word(made).name = "they";
  return made;
}

// Arguments of a frame, in contrast to circumstances.
bool is_core_role(const std::string& role) {
  return role.starts_with("ARG");
}

bool is_core(const Arc& one) {
  return !one.inverse && is_core_role(one.role);
}

// ---- coordination --------------------------------------------------------------------------------------------------

// A concept that joins its operands, and the attribute of all operands but the first.
struct Conjunction {
  const char* name;
  const char* attribute;
};

constexpr Conjunction kConjunctions[] = {
    {"and", "@and"},      {"or", "@or"},     {"amr-choice", "@or"},      {"umr-choice", "@or"},
    {"sum-of", "@and"},   {"either", "@or"}, {"neither", "@nor"},        {"slash", "@slash"},
    {"contrast", "@but"}, {"but", "@but"},   {"multi-sentence", "@snt"}, {"multiple-sentences", "@snt"}};

// Null for what joins nothing.
// contrast-01 has ARG1 and ARG2 instead of operands; the choices name alternatives, of which each bank has its own.
const Conjunction* conjunction_of(Rewriter& graph, int at) {
  for (const Conjunction& one : kConjunctions) {
    // contrast-01 is a frame, the others are none: and-01 would be another word.
    const bool is_frame = std::string_view(one.name) == "contrast";
    if (graph.word(at).name == one.name && graph.word(at).sense.empty() != is_frame) return &one;
  }
  return nullptr;
}

// The subject of a clause as the source writes it: its agent, or else what it is said of.
int subject_arc(Rewriter& graph, int clause) {
  if (has_attribute(graph.word(clause), "@psv")) return graph.child(clause, "ARG1");
  for (const char* role : {"ARG0", "ARG1", "domain"}) {
    if (const int led = graph.child(clause, role); led >= 0) return led;
  }
  return -1;
}

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
  graph.arc(led).to = frame;
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
      graph.arc(led).to = graph.add_concept("true");
      graph.add(graph.arc(led).to, graph.add_concept("that"), "domain");
    } else {
      graph.arc(led).to = mention_of(graph, part);
    }
  }
}

// The whole, mentioned again: "they".
// (s / sing-01 :ARG0 (a / and :op1 x :op2 y)) and below that (t / they :ARG0 a): when `at` has become its first
// operand, the other arcs would mean x alone.
void mention_group(Rewriter& graph, int at, int group_arc) {
  for (std::size_t i = 0; i < graph.meaning().arcs.size(); ++i) {
    const int led = static_cast<int>(i);
    if (graph.arc(led).gone || graph.arc(led).to != at || led == group_arc || graph.arc(led).inverse) continue;
    const int they = graph.add_concept("they");
    attribute_add(graph.word(they), "@ref");
    attribute_add(graph.word(they), "@pl");
    graph.arc(led).to = they;
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
    if (!is_unknown(graph, one.to)) graph.arc(led).from = last;
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

// The first operand takes the place of the conjunction, and each further one is tied to the one before it, so that rules
// see them in their order.
void coordinate(Rewriter& graph, int at, const Conjunction& conjunction) {
  const std::vector<int> parts = graph.numbered(at, {"op", "snt", "ARG"});
  if (parts.empty()) return;
  const std::vector<int> first = first_arcs(graph);
  mention_parts(graph, conjunction, parts, first);
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
    return attribute_add(graph.word(at), "@ref");
  }
  const int owner = is_again && parts.size() > 1 ? graph.child(at, "poss") : -1;
  if (owner >= 0) {
    graph.arc(owner).role = "part-of";
    for (const int led : parts) graph.remove(led, Fate::word);
    graph.word(at).name = "those";
    return;
  }
  nominal_parts(graph, at, parts);
  mention_group(graph, at, first[static_cast<std::size_t>(at)]);
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
  // Each part is tied to the one before. `joined_by` is what stands in front of it, and a subject that is that of the
  // first clause becomes :shared: "she came and sang".
  int last = chain_end(graph, head);
  int listed = -1;
  for (std::size_t i = 1; i < parts.size(); ++i) {
    const int part = graph.arc(parts[i]).to;
    // A question behind what is none is a sentence of its own: "Look. Do you see it?"
    const bool is_asked = has_attribute(graph.word(part), "@int") && !has_attribute(graph.word(head), "@int");
    const char* joined_by = is_asked ? "@snt" : graph.is(part, "et-cetera") ? "@etc" : conjunction.attribute;
    if (is_asked && i + 1 == parts.size()) attribute_add(graph.word(head), "@ends_int");
    attribute_add(graph.word(part), joined_by);
    const int subject = subject_arc(graph, part);
    const int model = subject_arc(graph, head);
    // A condition of its own stands between: "..., and if it rains, I stay".
    const bool is_shared = subject >= 0 && model >= 0 && graph.child(part, "condition") < 0 &&
                           graph.arc(subject).to == graph.arc(model).to && std::string_view(joined_by) != "@snt" &&
                           !has_attribute(graph.word(part), "@agent");
    // "Did it rain, or did the wind blow?"
    if (!is_shared && subject >= 0 && has_attribute(graph.word(at), "@int") &&
        conjunction.attribute == std::string_view("@or"))
      attribute_add(graph.word(part), "@int");
    if (is_shared && graph.arc(subject).role == "ARG1") attribute_add(graph.word(part), "@shr1");
    if (is_shared) graph.arc(subject).role = "shared";
    // "She came, sang and left": between clauses of one subject only the last has a conjunction.
    if (is_shared && listed >= 0) attribute_add(graph.word(listed), "@list");
    listed = is_shared && i + 1 < parts.size() ? part : -1;
    graph.replace(parts[i], last, part, "conjunct");
    last = chain_end(graph, part);
  }
  graph.remove(parts[0], Fate::relation);
  // What is joined to all of them stands behind the last: "she came and sang, but he left".
  const int to_all = graph.child(at, "conjunct");
  if (to_all >= 0 && is_event(graph, last) && is_event(graph, graph.arc(to_all).to)) graph.arc(to_all).from = last;
  take_marks(graph, at, head);
  graph.redirect(at, head);
  noun_once(graph, head);
  if (conjunction.attribute == std::string_view("@and")) late_circumstances(graph, at, head, last);
  // "The man and the woman who sat there": what is said of several things stands behind the last.
  for (const int led : graph.children(at)) {
    const bool is_relative = graph.arc(led).inverse && is_core_role(graph.arc(led).role);
    if (is_relative && !is_clause(graph, head) && !is_clause(graph, last)) graph.arc(led).from = last;
  }
  graph.move_children(at, head);
}

// ---- quotation -----------------------------------------------------------------------------------------------------

// Verbs that may have direct speech as what is said.
constexpr std::array kSaying{"say",     "ask",      "answer",   "reply",    "exclaim",   "cry",      "demand",
                             "add",     "remark",   "repeat",   "state",    "murmur",    "respond",  "object",
                             "inquire", "explain",  "call-out", "tell",     "think",     "declare",  "shout",
                             "whisper", "announce", "observe",  "continue", "interrupt", "confess",  "insist",
                             "protest", "comment",  "complain", "warn",     "admit",     "conclude", "suggest",
                             "mutter",  "agree",    "call",     "mumble",   "sigh",      "yell",     "scream"};

// Those of them that say no more than that words were said: with these a reader expects the words themselves.
constexpr std::array kUttering{"say",    "answer", "reply", "exclaim",  "cry",     "remark",
                               "repeat", "murmur", "shout", "call-out", "respond", "whisper"};

// All concepts that some clauses are made of, themselves first; graphs have circles and meet again, so each is there once.
// Used to ask whether anybody in a quotation says "I".
std::vector<int> clause_words(Rewriter& graph, std::vector<int> clauses) {
  const std::vector<std::vector<int>> below = arcs_by_beginning(graph);
  std::vector<bool> seen(below.size());
  for (const int clause : clauses) seen[static_cast<std::size_t>(clause)] = true;
  for (std::size_t i = 0; i < clauses.size(); ++i) {
    for (const int led : below[static_cast<std::size_t>(clauses[i])]) {
      const int to = graph.arc(led).to;
      if (!seen[static_cast<std::size_t>(to)]) clauses.push_back(to);
      seen[static_cast<std::size_t>(to)] = true;
    }
  }
  return clauses;
}

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
  return is_one_of(graph, frame, kUttering) && !is_clause(graph, at) && graph.mentions(at) == 1 &&
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
  const std::vector<std::vector<int>> below = arcs_by_beginning(graph);
  // One concept each, so that what is meant twice is known to be the same.
  int i = -1;
  int you = -1;
  for (const int at : words) {
    // Where the graph leads in a circle, the frame itself is among what is said.
    if (at == frame || at == speaker || at == hearer) continue;
    for (const int led : below[static_cast<std::size_t>(at)]) {
      const bool is_speaker = graph.arc(led).to == speaker;
      const bool is_person = (is_speaker && !has_i) || (graph.arc(led).to == hearer && !is_speaker && !has_you);
      if (!is_person || graph.arc(led).inverse) continue;
      int& person = is_speaker ? i : you;
      if (person < 0) person = graph.add_concept(is_speaker ? "i" : "you");
      attribute_add(graph.word(person), is_speaker ? "@p1" : "@p2");
      graph.arc(led).to = person;
    }
  }
}

// (s / say-01 :ARG0 (k / king) :ARG1 (c / come-01 :mode imperative) :ARG2 (b / boy)): "Come," said the king. `led` is
// the arc to what is said, `who` that to the speaker and `whom` to the hearer; verbs of answering number the last two
// the other way round.
void quote(Rewriter& graph, int at) {
  // Who answers says the answer to a question.
  constexpr std::array kAnswering{"answer", "reply", "respond", "interrupt"};
  const bool is_answer = is_one_of(graph, at, kAnswering);
  const int led = graph.child(at, is_answer ? "ARG2" : "ARG1");
  const int who = graph.child(at, "ARG0");
  int whom = graph.child(at, is_answer ? "ARG1" : "ARG2");
  if (led < 0 || who < 0) return;
  const int said = graph.arc(led).to;
  if (is_unknown(graph, said) && graph.child(said, "domain") < 0) return;
  // Whoever asks does not ask whether he asks: the question is what he says.
  if (graph.is(at, "ask", "01") && has_attribute(graph.word(at), "@int") && !graph.is(graph.arc(who).to, "you")) {
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
  const bool is_order = has_attribute(graph.word(said), "@imp") && !speaks_itself(who);
  const bool is_reported = has_attribute(graph.word(said), "@whether") || has_attribute(graph.word(said), "@asked");
  if (is_reported || (is_asked_to && !is_order)) return;
  const bool is_other = !speaks_itself(who) && !speaks_itself(whom);
  const bool is_direct = (is_other || is_order) && (has_speaker(graph, said) || is_said_so(graph, at, said));
  // What the sentence is about, or is joined to that, is told; what stands below is spoken of.
  const bool is_told = at == graph.meaning().root || !is_core(graph.arc(graph.parent(at)));
  constexpr std::array kTakingTurns{"ask", "add", "demand", "interrupt"};
  const bool is_uttering = is_one_of(graph, at, kUttering) || is_one_of(graph, at, kTakingTurns);
  const bool is_report = is_told && is_clause(graph, said) && is_uttering && !has_attribute(graph.word(at), "@neg") &&
                         !has_attribute(graph.word(at), "@can");
  if (is_report && is_other) {
    ++graph.meaning().reports;
    graph.meaning().quotations += is_direct;
  }
  if (!is_direct && !(is_report && graph.meaning().is_dialogue)) return;
  graph.arc(led).role = "quoted";
  attribute_add(graph.word(said), "@quote");
  speak_of_oneself(graph, at, said, graph.arc(who).to, whom >= 0 ? graph.arc(whom).to : -1);
  // The quotation stands in front, so "then" cannot: '"Stop!" she said then.'
  const int when = graph.child(at, "time");
  if (when >= 0 && graph.word(graph.arc(when).to).sense.empty()) attribute_add(graph.word(graph.arc(when).to), "@late");
  // Behind a quotation a verb without an auxiliary stands before its subject, if that is no pronoun: said the king.
  const int subject_of_saying = graph.arc(who).to;
  const bool is_pronoun = is_personal_pronoun(graph, subject_of_saying) || graph.word(subject_of_saying).name == "one";
  const bool is_plain = !has_attribute(graph.word(at), "@neg") && !has_attribute(graph.word(at), "@ask") &&
                        !has_attribute(graph.word(at), "@int") && !has_attribute(graph.word(at), "@can");
  // "..., the girl asked the driver": turned round, two nouns would stand side by side.
  constexpr std::array kBareHearer{"ask", "tell", "answer", "warn", "interrupt"};
  const bool is_beside_hearer = whom >= 0 && is_one_of(graph, at, kBareHearer);
  if (!is_plain || is_pronoun || is_beside_hearer) return;
  graph.arc(who).role = "speaker";
  const int office = graph.child(graph.arc(who).to, "apposition");
  if (office >= 0) std::erase(graph.word(graph.arc(office).to).attributes, "@closed");
}

// ---- questions -----------------------------------------------------------------------------------------------------

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
  // "How much does it weigh".
  return graph.is(frame, "weigh", "01") && role == "ARG3" ? "amount" : role;
}

// (a / amr-unknown :domain (y / you)): what is asked for is the predicate. As :domain of the other it is the one word that
// moves: "who are you".
void asked_predicate(Rewriter& graph, int unknown) {
  const int said = graph.child(unknown, "domain");
  const int about = said >= 0 ? graph.arc(said).to : -1;
  if (about < 0 || graph.mentions(about) != 1) return;
  graph.redirect(unknown, about);
  graph.replace(said, about, unknown, "domain");
  for (const int below : graph.children(unknown)) graph.arc(below).from = about;
  if (std::erase(graph.word(unknown).attributes, "@quote") > 0) attribute_add(graph.word(about), "@quote");
}

// "Tell me what it is": in the order of a statement what is asked for stands in front of what it is said of. Both stand
// below a frame of being, which takes the place of the clause.
void reported_predicate(Rewriter& graph, int about, int led) {
  const int being = graph.add_concept("be-located-at");
  graph.word(being).sense = "91";
  attribute_add(graph.word(being), "@v");
  std::erase(graph.word(graph.arc(led).to).attributes, "@asked");
  graph.redirect(about, being);
  graph.add(being, about, "ARG1");
  attribute_add(graph.word(being), "@asked");
  graph.replace(led, being, graph.arc(led).to, "questioned");
}

// What is asked for moves to the front of its clause, together with the phrase that it belongs to.
// Three parts: which phrase goes along (how many stars), up to which clause it moves (where do you want to go), and
// what the clause and the phrase must know of it (@ask or @asked; @wh_ with the role). The phrase becomes :questioned
// of the clause.
void question(Rewriter& graph, int unknown) {
  asked_predicate(graph, unknown);
  if (unknown == graph.meaning().root) attribute_add(graph.word(unknown), "@ask");
  int led = graph.parent(unknown);  // the arc from what is above the phrase
  if (led < 0 || graph.arc(led).inverse) return;
  int phrase = unknown;
  std::string role = graph.arc(led).role;
  attribute_add(graph.word(unknown), "@wh");
  // Both walks go up, and a graph may have a circle there: more steps than concepts are none.
  int steps = graph.count();
  // "How many stars", "whose hat": the noun goes with it.
  const auto is_phrase = [&](int at) {
    const int above = graph.parent(at);
    return !is_clause(graph, at) || (above >= 0 && graph.is(graph.arc(above).from, "be-located-at", "91"));
  };
  while (is_phrase(graph.arc(led).from) && (role == "quant" || role == "poss" || role == "mod" || role == "degree" ||
                                            role == "possessor" || role == "age")) {
    if (--steps < 0) return;
    attribute_add(graph.word(unknown), "@wh_" + role);
    phrase = graph.arc(led).from;
    const int above = graph.parent(phrase);
    // "What a good idea!" asks nothing.
    if (has_attribute(graph.word(phrase), "@exp")) return;
    if (above < 0) return attribute_add(graph.word(phrase), "@ask");
    attribute_add(graph.word(phrase), "@wh");
    led = above;
    role = graph.arc(led).role;
    if (graph.arc(led).inverse) return;
  }
  // The question is that of the highest clause that the phrase can move to: "where do you want to go". A verb of knowing
  // ends the way: "I know where he lives".
  int clause = graph.arc(led).from;
  const int asked_at = clause;
  bool is_reported = false;
  while (clause != graph.meaning().root && !has_attribute(graph.word(clause), "@quote") && --steps > 0) {
    const int above = graph.parent(clause);
    is_reported = above >= 0 && graph.is(graph.arc(above).from, "no-matter");
    if (above < 0 || !is_core(graph.arc(above))) break;
    const int governor = graph.arc(above).from;
    const bool is_bidden = graph.is(governor, "think", "01") && has_attribute(graph.word(governor), "@imp");
    if (is_bidden || is_one_of(graph, governor, kReporting) || has_attribute(graph.word(governor), "@int")) {
      is_reported = true;
      break;
    }
    clause = governor;
  }
  // A subject stands in front already: "who came".
  const bool is_subject =
      clause == asked_at && (role == "ARG0" || (role == "ARG1" && graph.child(clause, "ARG0") < 0) ||
                             (role == "domain" && graph.is(unknown, "amr-unknown")));
  role = asked_role(graph, asked_at, role);
  // "Who are you".
  const bool is_person = role == "domain" && phrase == unknown && is_personal_pronoun(graph, asked_at) &&
                         graph.word(asked_at).name != "it";
  attribute_add(graph.word(phrase), is_person ? "@wh_who" : "@wh_" + role);
  if (is_reported && role == "domain" && phrase == unknown && graph.parent(asked_at) >= 0 &&
      graph.word(asked_at).sense.empty())
    return reported_predicate(graph, asked_at, led);
  // An exclamation has the order of a statement: "how beautiful she is!"
  is_reported |= has_attribute(graph.word(clause), "@exp");
  attribute_add(graph.word(clause), is_reported ? "@asked" : is_subject ? "@asksub" : "@ask");
  // Some files mark the mood beside the word that asks; one mark is enough.
  std::erase(graph.word(clause).attributes, "@int");
  // "What are you filling it with?": a preposition stays with its verb.
  if (role == "ARG2" && clause == asked_at) attribute_add(graph.word(clause), "@st2");
  if (!is_subject) graph.replace(led, clause, phrase, "questioned");
}

// A noun that no word picks out: no name, no pronoun, nobody's, none of several.
bool is_any_of_its_kind(Rewriter& graph, int at) {
  const Concept& word = graph.word(at);
  constexpr std::array kStandingAlone{"this",      "that",   "one", "anything", "nothing",
                                      "something", "anyone", "all", "any"};
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
void ever_of_all(Rewriter& graph, int at) {
  const int led = graph.is(at, "and") || graph.is(at, "or") ? graph.child(at, "time") : -1;
  if (led < 0 || !graph.is(graph.arc(led).to, "ever")) return;
  const std::vector<int> below = graph.children(at);
  const auto is_denied = [&](int one) {
    return !graph.arc(one).role.starts_with("op") || has_attribute(graph.word(graph.arc(one).to), "@neg");
  };
  if (!std::all_of(below.begin(), below.end(), is_denied)) return;
  graph.word(graph.arc(led).to).name = "never";
  for (const int one : below) std::erase(graph.word(graph.arc(one).to).attributes, "@neg");
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
const char* denied(Rewriter& graph, int at) {
  constexpr std::pair<const char*, const char*> kDenied[] = {
      {"somebody", "nobody"},   {"someone", "nobody"},   {"anybody", "nobody"},    {"anyone", "nobody"},
      {"something", "nothing"}, {"anything", "nothing"}, {"somewhere", "nowhere"}, {"any", "no"}};
  for (const auto& [positive, negative] : kDenied) {
    if (graph.is(at, positive)) return negative;
  }
  return nullptr;
}

// English denies once, with a word for nobody.
void nobody_apply(Rewriter& graph, int at) {
  // A negated somebody is nobody.
  const std::vector<int> below = graph.children(at);
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
  for (const int word : {graph.arc(doer).to, any >= 0 ? graph.arc(any).to : -1}) {
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

}  // namespace

// :polarity - is @neg by the table of roles before any step. Here it meets the words that have a negation in them, and
// (x :polarity (a / amr-unknown)) becomes a question, @int.
void step_polarity(Meaning& meaning) {
  Rewriter graph(meaning, "polarity");
  for (int at = 0; at < graph.count(); ++at) {
    // Some files deny "ever" itself.
    if (graph.is(at, "ever") && std::erase(graph.word(at).attributes, "@neg") > 0) graph.word(at).name = "never";
    // "Not ever" is one word, and takes the negation with it.
    for (const int led : graph.children(at)) {
      if (!has_attribute(graph.word(at), "@neg") || !graph.is(graph.arc(led).to, "ever")) continue;
      any_of_verb(graph, at);
      graph.word(graph.arc(led).to).name = "never";
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

// (g / government-organization :ARG0-of (g2 / govern-01 :ARG1 c)): the government of c.
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

// The frame names its participant: `mark` says which one.
// (p / person :ARG0-of (d / drive-01)): drive takes the place of the person, with @agent, and the dictionary has
// drive(>01) with @agent as "driver". What was known of the person, number or mention, goes along.
void frame_stand_in(Rewriter& graph, int at, int led, const char* mark) {
  Concept& frame = graph.word(graph.arc(led).to);
  attribute_add(frame, mark);
  for (const std::string& attribute : graph.word(at).attributes) attribute_add(frame, attribute);
  graph.stand_in(at, led);
}

// (t / thing :ARG1-of (o / order-01)): an order. Only what has no agent; "what she knows" stays a clause.
// The thing is whatever the frame makes; only the arguments that a noun can have behind it may follow, "an answer to
// the boy", and no negation or degree.
void thing_apply(Rewriter& graph, int at) {
  int led = -1;
  // "The lie that he told": of several clauses the one that is a noun by itself.
  constexpr std::array kNouns{"lie", "dream", "promise", "order", "question", "plan", "claim", "request", "offer"};
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
  constexpr std::array kOwned{"question", "answer", "plan",  "propose", "promise",
                              "decide",   "offer",  "order", "request"};
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
                               "lie",  "stand", "matter", "remain", "survive", "count", "belong"};
  const std::string& name = graph.word(frame).name;
  if (graph.word(frame).sense.empty() || !is_simple || !is_plain || name.find('-') != name.npos) return;
  if (is_one_of(graph, frame, kMotion)) return;
  // "Some more questions".
  const int mod = graph.child(at, "mod");
  constexpr std::array kSeveral{"some", "more", "other"};
  if (mod >= 0 && is_one_of(graph, graph.arc(mod).to, kSeveral)) attribute_add(graph.word(frame), "@pl");
  frame_stand_in(graph, at, led, "@result");
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

// (s / say-01 :ARG0 (h / he :ARG0-of (t / talk-01))): "he said ..., talking". A pronoun has no relative clause; what it does
// besides goes with what is said of it.
// What he does becomes :attendant of the clause, with himself as its subject, which step control takes out again.
void attendant_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  if (above < 0 || graph.arc(above).inverse || !is_personal_pronoun(graph, at)) return;
  const std::string role = graph.arc(above).role;
  const int clause = graph.arc(above).from;
  if (!is_core_role(role) || graph.word(clause).sense.empty()) return;
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
  constexpr std::array kOfClauses{"know",    "tell",  "ask",      "find-out", "guess", "wonder",
                                  "explain", "learn", "discover", "reveal",   "decide"};
  const int above = graph.parent(at);
  const bool is_content = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                          is_one_of(graph, graph.arc(above).from, kOfClauses) && graph.mentions(at) == 1 &&
                          graph.word(graph.arc(above).from).sense != "02";
  const std::vector<int> told = graph.children(at);
  if (!is_content || told.size() != 1 || !graph.word(at).attributes.empty()) return;
  const Arc& one = graph.arc(told[0]);
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
  constexpr std::array kOfClauses{"news",    "idea",  "rumor", "fact",   "message", "proof",    "evidence",    "theory",
                                  "notion",  "sign",  "hope",  "belief", "thought", "question", "possibility", "chance",
                                  "opinion", "claim", "view",  "fear",   "feeling", "word",     "argument",    "story"};
  const int led = graph.word(at).sense.empty() && is_one_of(graph, at, kOfClauses) ? graph.child(at, "topic") : -1;
  if (led < 0 || graph.child(at, "ARG1") >= 0) return;
  const int told = graph.arc(led).to;
  // "The idea of its size": these have a noun as often as a clause.
  constexpr std::array kOfNouns{"idea",     "message", "theory", "notion", "thought", "question", "opinion",
                                "argument", "view",    "fear",   "word",   "feeling", "story"};
  const bool is_clear = graph.child(told, "ARG0") >= 0 || has_attribute(graph.word(told), "@whether") ||
                        has_attribute(graph.word(told), "@int") || !is_one_of(graph, at, kOfNouns);
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
  const bool is_relative = graph.arc(led).inverse && !graph.arc(led).gone && role != "ARG0" && is_core_role(role);
  const int up = is_relative && graph.mentions(deed) == 1 ? graph.child(deed, "ARG1", true) : -1;
  if (up < 0 || !is_event(graph, deed)) return;
  const int frame = graph.arc(up).to;
  constexpr std::array kGoverning{"want",   "need",   "try", "like",   "love",    "hope", "plan", "wish",  "expect",
                                  "intend", "refuse", "say", "decide", "attempt", "see",  "know", "think", "believe"};
  const bool is_governing = is_one_of(graph, frame, kGoverning) && graph.mentions(frame) == 1 &&
                            graph.child(frame, "ARG0") >= 0 && graph.child(frame, "ARG1") < 0;
  if (!is_governing) return;
  graph.arc(led).to = frame;
  graph.replace(up, frame, deed, "ARG1");
}

}  // namespace

namespace {

// "He is a good singer", but "the only singer", "my best singer": what makes somebody one of a kind.
bool is_singled_out(Rewriter& graph, int at) {
  constexpr std::array kKnowing{"only", "same",  "this", "that", "first", "last", "next",   "other",
                                "such", "every", "any",  "no",   "all",   "some", "another"};
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
  constexpr std::array kDoers{
      "work",  "think",  "read",    "write",  "sing",   "dance",   "swim",   "drive",   "run",    "speak",  "talk",
      "lead",  "paint",  "play",    "teach",  "listen", "learn",   "dream",  "train",   "travel", "trade",  "farm",
      "hunt",  "fight",  "build",   "cook",   "bake",   "smoke",   "drink",  "eat",     "sleep",  "walk",   "climb",
      "fly",   "ride",   "observe", "love",   "lie",    "believe", "admire", "support", "employ", "advise", "jump",
      "skate", "sail",   "ski",     "shoot",  "race",   "invest",  "report", "perform", "win",    "kill",   "rule",
      "own",   "manage", "garden",  "murder", "rob",    "publish", "edit"};
  if (!is_one_of(graph, frame, kDoers) || graph.word(frame).sense.empty() || graph.mentions(frame) != 1) return;
  if (graph.child(at, "ARG0", true) < 0 || has_attribute(graph.word(at), "@name")) return;
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
    } else if (one.inverse || one.role != "ARG1") {
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
  for (int led = 0; led < static_cast<int>(meaning.arcs.size()); ++led) {
    wanted_apply(graph, led);
    described_apply(graph, led);
  }
  for (int at = 0; at < graph.count(); ++at) {
    pronoun_apply(graph, at);
    attendant_apply(graph, at);
    if (graph.is(at, "person") || graph.is(at, "thing")) asked_content(graph, at);
    noun_content(graph, at);
    if (graph.is(at, "government-organization")) government_apply(graph, at);
    if (graph.is(at, "thing")) thing_apply(graph, at);
    if (!graph.is(at, "person") || has_attribute(graph.word(at), "@name")) continue;
    const int led = graph.child(at, "ARG0", true);
    if (led < 0) continue;
    const int frame = graph.arc(led).to;
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
    const bool is_nameless =
        is_one_of(graph, frame, kQualities) || (is_one_of(graph, frame, kNoAgents) && graph.children(at).size() > 1);
    // "A great thinker", but "the person who thinks".
    const bool is_thinker = !graph.is(frame, "think", "01") || graph.children(at).size() == 1 ||
                            (graph.child(at, "mod") >= 0 && graph.children(frame).empty());
    const bool is_plain = !has_attribute(graph.word(frame), "@neg") && graph.mentions(frame) == 1 && is_thinker;
    if (graph.word(frame).sense.empty() || !is_simple || !is_plain || is_nameless) continue;
    const bool is_told = graph.child(at, "domain") >= 0 && below.empty();
    if (is_told && !is_singled_out(graph, at)) attribute_add(graph.word(frame), "@indef");
    frame_stand_in(graph, at, led, "@agent");
  }
}

namespace {

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

}  // namespace

// "Oh, it is late": a cry that the graph has as a quality of the clause stands in front of it.
void cry_apply(Rewriter& graph, int at) {
  constexpr std::array kCries{"oh",    "ah", "alas",  "hey",  "ha",  "aha", "wow",
                              "hello", "hi", "bravo", "ouch", "ugh", "ooh"};
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

// In front of coordination and quotation: "but" is no part of what is said.
void step_contrast(Meaning& meaning) {
  Rewriter graph(meaning, "contrast");
  for (int at = 0, end = graph.count(); at < end; ++at) {
    if (graph.is(at, "and") || graph.is(at, "but")) not_but_apply(graph, at, "op1", "op2");
    if (graph.is(at, "contrast", "01")) not_but_apply(graph, at, "ARG1", "ARG2");
    if (graph.is(at, "contrast", "01") || graph.is(at, "contrast", "91")) {
      contrast_upright(graph, at);
      coordinate(graph, at, *conjunction_of(graph, at));
    }
    cry_apply(graph, at);
    courtesy_apply(graph, at);
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
    const Conjunction* conjunction = conjunction_of(graph, at);
    if (conjunction != nullptr && graph.word(at).sense.empty()) coordinate(graph, at, *conjunction);
  }
}

namespace {

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
      graph.arc(other).to = you;
    }
  }
}

// (c / come-01 :mode imperative :ARG0 (s / snail)): "come, snail". Who is bidden is called.
void bidden_apply(Rewriter& graph, int at) {
  constexpr std::array kMotion{"come", "sit-down", "wake-up", "hurry", "arrive", "stand-up", "get-up"};
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

}  // namespace

// UMR puts an utterance below (s / say-01 :ARG0 (p / person) :ARG1 c :ARG2 (p2 / person) :quote s). A reader of the
// sentence has c alone, in which p is "I" and p2 is "you"; a story that tells who speaks keeps the frame. Runs behind
// pronouns, as the two may have become pronouns by then.
void step_speaker(Meaning& meaning) {
  Rewriter graph(meaning, "speaker");
  // UMR marks what is uttered by :quote with the verb of saying as target.
  bool is_utterance = false;
  for (int led = 0; led < static_cast<int>(meaning.arcs.size()); ++led) {
    if (graph.arc(led).gone || graph.arc(led).inverse || graph.arc(led).role != "quote") continue;
    // The verb stands above; any other target would be lost with the arc.
    if (!graph.reaches(graph.arc(led).to, graph.arc(led).from)) continue;
    is_utterance |= graph.arc(led).to == meaning.root;
    graph.remove(led, Fate::attribute);
    attribute_add(graph.word(graph.arc(led).from), "@quote");
  }
  for (int at = 0; at < graph.count(); ++at) {
    if (has_attribute(graph.word(at), "@imp")) bidden_apply(graph, at);
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

// (s / say-01 :ARG0 k :ARG1 c): c is :quoted and k :speaker where the words themselves are given. Stands behind
// coordination, so that a quotation of several clauses has a head, and before control, as its subjects are its own.
void step_quotation(Meaning& meaning) {
  Rewriter graph(meaning, "quotation");
  for (int at = 0; at < graph.count(); ++at) {
    if (!graph.word(at).sense.empty() && is_one_of(graph, at, kSaying)) quote(graph, at);
  }
}

// (g / go-02 :location (a / amr-unknown)): what is asked for becomes :questioned of the clause that asks.
void step_questions(Meaning& meaning) {
  Rewriter graph(meaning, "questions");
  for (int at = 0; at < graph.count(); ++at) {
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
}

namespace {

// "She calls tomorrow", "next week", is to come; in a story the next day has been.
bool is_coming(Rewriter& graph, int at, int time) {
  constexpr std::array kPeriods{"week", "month", "year", "summer", "winter", "spring", "autumn"};
  const int pointer = is_one_of(graph, time, kPeriods) ? graph.child(time, "mod") : -1;
  const bool is_next = pointer >= 0 && graph.is(graph.arc(pointer).to, "next");
  if (!graph.is(time, "tomorrow") && !is_next) return false;
  const int above = graph.parent(at);
  if (above >= 0 && !is_core(graph.arc(above)) && graph.arc(above).role != "conjunct") return false;
  constexpr std::array kSaid{"@past", "@pres", "@fut", "@imp", "@can", "@must", "@should", "@may", "@would", "@neg"};
  return has_attribute(graph.word(at), "@v") &&
         std::none_of(kSaid.begin(), kSaid.end(), [&](const char* one) { return has_attribute(graph.word(at), one); });
}

// What the time of a clause says of its tense. "Before now" alone is no phrase of the sentence: it is the past.
// (c / come-01 :time (b / before :op1 (n / now))) is @past, with "after" @fut; (y / before :op1 n :quant (y2 / year
// :quant 3)) is "three years ago" besides.
void tense_from_time(Rewriter& graph, int at) {
  constexpr std::array kPerfect{"ever", "never", "already", "yet", "since", "so-far", "recent", "lately"};
  for (const int led : graph.children(at)) {
    const std::string& role = graph.arc(led).role;
    if (graph.arc(led).inverse || (role != "time" && role != "temporal")) continue;
    const int time = graph.arc(led).to;
    if (is_coming(graph, at, time)) attribute_add(graph.word(at), "@fut");
    // "One never knows" is true at all times.
    const int who = subject_arc(graph, at);
    const bool is_general = who >= 0 && graph.is(graph.arc(who).to, "one");
    const bool is_perfect = is_one_of(graph, time, kPerfect) && graph.word(time).sense.empty() && !is_general;
    if (is_perfect) attribute_add(graph.word(at), "@perf");
    const bool is_relation = graph.is(time, "before") || graph.is(time, "after");
    const int point = is_relation ? graph.child(time, "op1") : -1;
    // After what was told: two days later.
    const bool is_open = is_relation && point < 0 && graph.child(time, "quant") >= 0;
    if (is_open) graph.word(time).name = graph.is(time, "before") ? "earlier" : "later";
    if (point < 0 || !graph.is(graph.arc(point).to, "now")) continue;
    attribute_add(graph.word(at), graph.is(time, "before") ? "@past" : "@fut");
    if (graph.mentions(time) > 1 || graph.mentions(graph.arc(point).to) > 1) continue;
    // "In the last two years" lasted so long: for two years.
    const int lasting = graph.child(time, "duration");
    if (lasting >= 0 && graph.is(time, "before")) graph.arc(lasting).from = at;
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

// What is told of him or her is past, and so is when and why it was: people who are there are seldom he or she. True
// where the clause itself has nothing that says otherwise.
bool is_told_of_another(Rewriter& graph, int at) {
  constexpr std::array kSays{"@past", "@pres", "@fut", "@would",  "@imp", "@perf",
                             "@can",  "@must", "@may", "@should", "@ask", "@int"};
  for (const char* one : kSays) {
    if (has_attribute(graph.word(at), one)) return false;
  }
  if (!is_clause(graph, at)) return false;
  const int shared = graph.child(at, "shared");
  const int subject = shared >= 0 ? shared : subject_arc(graph, at);
  constexpr std::array kAnother{"he", "she"};
  if (subject >= 0 && is_one_of(graph, graph.arc(subject).to, kAnother)) return true;
  const int led = graph.parent(at);
  if (led < 0 || graph.arc(led).inverse || !has_attribute(graph.word(graph.arc(led).from), "@past")) return false;
  constexpr std::array kSameTime{"time", "temporal", "cause", "concession", "conjunct"};
  return is_listed(graph.arc(led).role, kSameTime);
}

// "You should eat before we leave", "Call me when he comes": what is bidden or will be is not past, nor is its time.
void tense_of_coming(Rewriter& graph, int at) {
  const Concept& clause = graph.word(at);
  const bool is_ahead =
      has_attribute(clause, "@imp") || has_attribute(clause, "@should") || has_attribute(clause, "@fut") ||
      ((has_attribute(clause, "@can") || has_attribute(clause, "@must")) && has_attribute(clause, "@pres"));
  if (!is_ahead || has_attribute(clause, "@past")) return;
  constexpr std::array kRelations{"before",   "after",      "until",      "till", "while",
                                  "whenever", "as-soon-as", "as-long-as", "since"};
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

// "I thank you": it is done by saying so.
void tense_of_thanks(Rewriter& graph, int at) {
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
  constexpr std::array kOther{"@pres", "@fut", "@would", "@imp", "@can", "@must", "@may", "@should", "@past"};
  Concept& told = graph.word(graph.arc(above).from);
  for (const char* one : kOther) {
    if (has_attribute(told, one)) return;
  }
  attribute_add(told, "@past");
  attribute_add(graph.word(at), "@past");
}

// "She hopes that he will come", "she promised that it would rain", "she wonders whether it rains": what is hoped or
// demanded is still to come, and what is wondered is open. Only what has a subject of its own: the rest is an infinitive.
// The mark of what the clause of `at` says, "" for none.
std::string mark_of_content(Rewriter& graph, int at) {
  constexpr std::array kHoping{"hope", "bet", "trust", "guarantee", "ensure"};
  constexpr std::array kPromising{"promise", "predict", "vow",      "pledge", "forecast",
                                  "decide",  "foresee", "threaten", "wish"};
  constexpr std::array kDemanding{"demand", "recommend", "propose", "stipulate", "decree"};
  constexpr std::array kWondering{"wonder", "inquire", "enquire"};
  const Concept& word = graph.word(at);
  const bool is_now = has_attribute(word, "@pres") || has_attribute(word, "@fut");
  if (is_one_of(graph, at, kHoping)) return has_attribute(word, "@past") ? "@would" : "@fut";
  if (is_one_of(graph, at, kPromising)) return is_now ? "@fut" : "@would";
  if (is_one_of(graph, at, kDemanding)) return "@should";
  return is_one_of(graph, at, kWondering) ? "@whether" : "";
}

void tense_of_content(Rewriter& graph, int at) {
  const int led = graph.word(at).sense.empty() ? -1 : graph.child(at, graph.is(at, "promise", "01") ? "ARG2" : "ARG1");
  int what = led >= 0 ? graph.arc(led).to : -1;
  if (what < 0 || graph.parent(what) != led || graph.child(what, "questioned") >= 0) return;
  const std::string mark = mark_of_content(graph, at);
  const bool is_open = mark == "@whether";
  const int subject = subject_arc(graph, what);
  const int agent = graph.child(at, "ARG0");
  const bool is_own = subject >= 0 && agent >= 0 && graph.arc(subject).to == graph.arc(agent).to;
  if (mark.empty() || subject < 0 || (is_own && !is_open) || has_attribute(graph.word(what), "@asked")) return;
  constexpr std::array kKnown{"@past", "@pres", "@fut",    "@would", "@imp",   "@perf",  "@can",
                              "@must", "@may",  "@should", "@ask",   "@quote", "@likely"};
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

}  // namespace

// Banks of AMR have no tense. What UMR gives, the attributes @past, @pres, @fut, is left alone; the rest is a guess by
// who is spoken of, since talk with "you" is about now and a story about "her" is past. Words inside of a quotation,
// `is_said`, are talk, whoever they are about. Runs behind quotation and questions, whose marks it asks for.
void step_tense(Meaning& meaning) {
  Rewriter graph(meaning, "tense");
  std::vector<int> quoted;
  for (int at = 0; at < graph.count(); ++at) {
    if (has_attribute(graph.word(at), "@quote")) quoted.push_back(at);
  }
  const std::vector<int> said = clause_words(graph, std::move(quoted));
  std::vector<bool> is_said(meaning.concepts.size());
  for (const int at : said) is_said[static_cast<std::size_t>(at)] = true;
  for (int at = 0; at < graph.count(); ++at) {
    tense_from_time(graph, at);
    tense_of_age(graph, at);
    tense_of_place(graph, at);
    Concept& clause = graph.word(at);
    const bool is_lasting = has_attribute(clause, "@state") || has_attribute(clause, "@habit");
    if (is_lasting && !has_attribute(clause, "@past") && !has_attribute(clause, "@fut")) attribute_add(clause, "@pres");
    const bool is_known = has_attribute(clause, "@past") || has_attribute(clause, "@pres") ||
                          has_attribute(clause, "@fut") || has_attribute(clause, "@imp") ||
                          !has_attribute(clause, "@v");
    tense_of_coming(graph, at);
    tense_of_thanks(graph, at);
    const int shared = graph.child(at, "shared");
    const int subject = shared >= 0 ? shared : subject_arc(graph, at);
    const bool is_speech = has_attribute(clause, "@quote") && subject >= 0;
    const bool is_to_you = subject >= 0 && graph.is(graph.arc(subject).to, "you");
    if (!is_known && (is_speech || is_to_you)) attribute_add(clause, "@pres");
    // "If it rains or snows".
    const int condition = graph.child(at, "condition");
    const int if_so = condition >= 0 ? graph.arc(condition).to : -1;
    const bool is_passive = if_so >= 0 && graph.child(if_so, "ARG0") < 0 && graph.child(if_so, "ARG1") >= 0;
    if (if_so >= 0 && !is_passive && !has_attribute(graph.word(if_so), "@past")) {
      const int led = condition;
      int joined_to = graph.child(graph.arc(led).to, "conjunct");
      for (int steps = graph.count(); joined_to >= 0 && steps > 0; --steps) {
        Concept& part = graph.word(graph.arc(joined_to).to);
        if (has_attribute(part, "@v") && !has_attribute(part, "@past")) attribute_add(part, "@pres");
        joined_to = graph.child(graph.arc(joined_to).to, "conjunct");
      }
    }
    // What is joined to a clause about the same person is told of the same time.
    const int next = graph.child(at, "conjunct");
    const int part = next >= 0 ? graph.arc(next).to : -1;
    const bool is_open = part >= 0 && graph.child(part, "shared") >= 0 && !has_attribute(graph.word(part), "@past") &&
                         !has_attribute(graph.word(part), "@fut") && !has_attribute(graph.word(part), "@imp");
    if (is_open && has_attribute(clause, "@pres") && has_attribute(graph.word(part), "@v"))
      attribute_add(graph.word(part), "@pres");
    // Who asks you what happens means now: "what are you doing?"
    const bool is_question = has_attribute(clause, "@ask") || has_attribute(clause, "@int");
    constexpr std::array kStanding{"@can", "@must", "@should", "@may", "@maynot", "@likely", "@perf", "@habit", "@neg"};
    const int when = graph.child(at, "time");
    const bool is_timed = graph.child(at, "frequency") >= 0 || (when >= 0 && !graph.is(graph.arc(when).to, "now")) ||
                          std::any_of(kStanding.begin(), kStanding.end(),
                                      [&](const char* one) { return has_attribute(graph.word(at), one); });
    // What lasts has no progressive: "do you see it?"
    constexpr std::array kLasting{"see",    "hear",     "smell",  "like",       "love",  "hate",     "want",
                                  "need",   "remember", "mind",   "have",       "know",  "mean",     "believe",
                                  "prefer", "own",      "belong", "understand", "agree", "disagree", "deserve",
                                  "matter", "doubt",    "care",   "suppose",    "hope",  "lack"};
    if (!is_known && is_question && if_so >= 0 && !is_passive && !has_attribute(graph.word(if_so), "@past"))
      attribute_add(clause, "@fut");
    else if (!is_known && is_to_you && shared < 0 && graph.child(at, "conjunct") < 0 &&
             !is_one_of(graph, at, kLasting) && is_question && !is_timed)
      attribute_add(clause, "@now");
    tense_of_content(graph, at);
    if (!is_said[static_cast<std::size_t>(at)] && is_told_of_another(graph, at)) attribute_add(clause, "@past");
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
    if (is_deed && is_one_of(graph, whom, kSomebody)) attribute_add(graph.word(at), "@psv");
    if (is_one_of(graph, at, kMoving)) attribute_add(graph.word(at), "@moved");
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

// What has a modal verb, which no infinitive has.
bool is_modal(const Concept& clause) {
  constexpr std::array kModals{"@can", "@must", "@should", "@may", "@fut", "@would", "@likely", "@past", "@perf"};
  return std::any_of(kModals.begin(), kModals.end(), [&](const char* one) { return has_attribute(clause, one); });
}

// Acts that are easy or hard, wise or wrong, for whoever does them.
constexpr std::array kOfActs{"easy",   "difficult", "hard",     "dangerous",  "safe",
                             "useful", "useless",   "pleasant", "impossible", "necessary",
                             "wrong",  "cruel",     "stupid",   "wise",       "expensive"};

// A deed that is told without modal verb and negation, and may become an infinitive.
bool is_plain_deed(Rewriter& graph, int at) {
  constexpr std::array kMore{"@can", "@must",    "@should", "@may", "@fut", "@would", "@likely", "@perf",  "@neg",
                             "@nom", "@whether", "@asked",  "@int", "@ask", "@imp",   "@quote",  "@agent", "@result"};
  return is_event(graph, at) && graph.child(at, "conjunct") < 0 &&
         std::none_of(kMore.begin(), kMore.end(), [&](const char* one) { return has_attribute(graph.word(at), one); });
}

// "It is easy for her to climb the tree": `at` is easy and `act` climb, which somebody does.
bool is_easy_for(Rewriter& graph, int at, int act) {
  return is_one_of(graph, at, kOfActs) && is_plain_deed(graph, act) && graph.child(act, "ARG0") >= 0;
}

// Marks `clause` as an infinitive that `mark` tells of: it has no tense.
void make_infinitive(Rewriter& graph, int clause, const char* mark) {
  attribute_add(graph.word(clause), mark);
  for (const char* tense : {"@past", "@pres"}) std::erase(graph.word(clause).attributes, tense);
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
  const bool is_act = !is_clause && !is_person && is_one_of(graph, at, kOfActs) && !graph.children(what).empty();
  constexpr std::array kHappening{"matter", "happen", "occur", "turn-out"};
  if (is_clause && is_one_of(graph, at, kHappening)) attribute_add(graph.word(at), "@xv");
  const bool is_for = is_clause && is_easy_for(graph, at, what);
  if (is_for) make_infinitive(graph, what, "@xfor");
  if (is_clause && !is_for) attribute_add(graph.word(at), "@xtra");
  if (is_act || is_for) attribute_add(graph.word(at), "@xinf");
}

// "Waiting is better than rewarding them": acts that are compared.
void gerund_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "compared-to");
  if (led < 0) return;
  for (const int one : {led, subject_arc(graph, at)}) {
    const int act = one < 0 ? -1 : graph.arc(one).to;
    const bool is_act = act >= 0 && is_event(graph, act) && graph.child(act, "ARG0") < 0;
    if (is_act) attribute_add(graph.word(act), "@ger");
  }
}

// "She now knows that he sings": behind the verb, "now" would be said of what she knows.
void content_apply(Rewriter& graph, int at) {
  const int led = graph.word(at).sense.empty() ? -1 : graph.child(at, "ARG1");
  if (led < 0) return;
  if (is_event(graph, graph.arc(led).to) && !graph.children(graph.arc(led).to).empty())
    attribute_add(graph.word(at), "@content");
}

// "Next year", "this morning": such a time has no preposition.
void bare_time_apply(Rewriter& graph, int at) {
  constexpr std::array kPointing{"this",     "that",      "next",     "last",      "every", "each",    "all",
                                 "some",     "any",       "same",     "other",     "one",   "another", "few",
                                 "previous", "following", "tomorrow", "yesterday", "today"};
  const int led = graph.child(at, "mod");
  if (led >= 0 && is_one_of(graph, graph.arc(led).to, kPointing)) attribute_add(graph.word(at), "@bare");
}

// "She gave it to him": a pronoun stands before who receives it, who then has a preposition.
void giving_apply(Rewriter& graph, int at) {
  const bool is_shared = has_attribute(graph.word(at), "@shr1");
  const int what = gives(graph, at) ? graph.child(at, is_shared ? "shared" : "ARG1") : -1;
  if (what < 0) return;
  // "The boy that she gave it to".
  if (graph.child(at, "ARG2") < 0) return attribute_add(graph.word(at), "@gives");
  // "They sent him to prison": what is no person may be a place.
  const int receiver = graph.arc(graph.child(at, "ARG2")).to;
  const bool is_person = is_personal_pronoun(graph, receiver) || has_attribute(graph.word(receiver), "@person") ||
                         graph.is(receiver, "person") || !graph.word(receiver).sense.empty();
  constexpr std::array kSending{"send", "bring"};
  if (is_shared || (is_one_of(graph, at, kSending) && !is_person)) attribute_add(graph.word(at), "@pro1");
  const int thing = graph.arc(what).to;
  const bool is_light = !is_clause(graph, thing) && !is_long_receiver(graph, thing);
  const bool is_bare_pronoun = is_personal_pronoun(graph, thing) && !is_clause(graph, thing);
  if (is_bare_pronoun || graph.parent(thing) != what || (is_light && is_long_receiver(graph, receiver)))
    attribute_add(graph.word(at), "@pro1");
}

// "She saw him fall", "she heard the bird sing": what is seen or heard itself, in contrast to what one learns, which is a
// clause with "that".
void perceived_apply(Rewriter& graph, int at) {
  constexpr std::array kSeeing{"see", "watch", "notice", "feel", "observe"};
  constexpr std::array kMoves{
      "come",  "go",      "walk",  "run",       "fall",  "fly",     "sit",      "stand",   "move",   "break",
      "shine", "rise",    "jump",  "dance",     "climb", "enter",   "shimmer",  "open",    "close",  "smile",
      "cry",   "play",    "shake", "swim",      "drive", "cross",   "wave",     "nod",     "turn",   "burn",
      "glow",  "sleep",   "eat",   "drink",     "bloom", "blow",    "push",     "pull",    "throw",  "kick",
      "pass",  "rush",    "roll",  "float",     "sink",  "crawl",   "approach", "tremble", "vanish", "laugh",
      "sing",  "flicker", "drop",  "disappear", "stop",  "stumble", "shiver",   "swing"};
  constexpr std::array kSounds{"sing",  "laugh", "cry",  "bark",   "shout", "scream",  "call",    "weep",     "whistle",
                               "knock", "ring",  "roar", "speak",  "talk",  "play",    "whisper", "howl",     "growl",
                               "sigh",  "creak", "tick", "rumble", "buzz",  "breathe", "snore",   "approach", "groan"};
  const bool is_seeing = is_one_of(graph, at, kSeeing);
  if (!is_event(graph, at) || (!is_seeing && !graph.is(at, "hear", "01"))) return;
  const int led = graph.child(at, "ARG1");
  const int what = led < 0 ? -1 : graph.arc(led).to;
  if (what < 0 || !is_event(graph, what) || graph.parent(what) != led || graph.mentions(what) > 1) return;
  if (!(is_seeing ? is_one_of(graph, what, kMoves) : is_one_of(graph, what, kSounds))) return;
  constexpr std::array kClauses{"@neg",  "@can",     "@must",  "@should", "@may", "@fut",
                                "@used", "@whether", "@asked", "@ask",    "@psv", "@nom"};
  for (const char* mark : kClauses) {
    if (has_attribute(graph.word(what), mark)) return;
  }
  if (graph.child(what, "conjunct") < 0) attribute_add(graph.word(what), "@perceived");
}

// "She put down the box that he had sent": a particle stands in front of an object that has more than a word beside it.
void particle_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "particle");
  const int object = led < 0 ? -1 : graph.child(at, "ARG1");
  if (object < 0 || graph.child(at, "ARG0") < 0) return;
  const int thing = graph.arc(object).to;
  const std::vector<int> below = graph.children(thing);
  const bool is_long = below.size() > 1 || std::any_of(below.begin(), below.end(), [&](int one) {
                         return graph.arc(one).inverse || graph.arc(one).role == "conjunct";
                       });
  if (is_long && !is_personal_pronoun(graph, thing) && graph.parent(thing) == object)
    graph.arc(led).role = "particle-near";
}

}  // namespace

// What the rules must know of a whole clause before its first word stands: whether it has a subject, an auxiliary, an
// expletive. No graph is changed here but for attributes, so that this step sees what the reader will see.
void step_forms(Meaning& meaning) {
  Rewriter graph(meaning, "forms");
  // What English says with an auxiliary in front of the basic form.
  constexpr std::array kAuxiliary{"@need", "@can",   "@must", "@should", "@may", "@likely", "@maynot",
                                  "@fut",  "@would", "@used", "@neg",    "@ask", "@int"};
  for (int at = 0; at < graph.count(); ++at) {
    bare_time_apply(graph, at);
    content_apply(graph, at);
    giving_apply(graph, at);
    particle_apply(graph, at);
    perceived_apply(graph, at);
    Concept& word = graph.word(at);
    // English has one modal verb in a clause.
    if (has_attribute(word, "@must") || has_attribute(word, "@need")) std::erase(word.attributes, "@should");
    if (has_attribute(word, "@can")) std::erase(word.attributes, "@may");
    constexpr std::array kGrades{"@more", "@most", "@less", "@least", "@too", "@so", "@very"};
    // "A little" and "completely" leave a verb a verb: he hesitated a little.
    constexpr std::array kIntensifying{"so",    "very",      "too",    "more",  "most",        "less",
                                       "least", "extremely", "rather", "quite", "amr-unknown", "umr-unknown"};
    const int degree = graph.child(at, "degree");
    const bool is_graded =
        (degree >= 0 && is_one_of(graph, graph.arc(degree).to, kIntensifying)) ||
        std::any_of(kGrades.begin(), kGrades.end(), [&](const char* one) { return has_attribute(word, one); });
    if (is_graded && has_attribute(word, "@v")) attribute_add(word, "@graded");
    // Who does something, and of whom nothing else is said, is people.
    const int deed =
        graph.is(at, "person") && graph.children(at).empty() && graph.mentions(at) == 1 ? graph.parent(at) : -1;
    const bool is_anybody = deed >= 0 && graph.arc(deed).role == "ARG0" && !graph.arc(deed).inverse;
    if (is_anybody && !has_attribute(word, "@agent") && !has_attribute(word, "@ref")) word.name = "people";
    // What is most of its kind is known: the oldest tree.
    const int quality = has_attribute(word, "@most") ? graph.parent(at) : -1;
    const bool is_below = quality >= 0 && graph.arc(quality).inverse == is_core_role(graph.arc(quality).role) &&
                          (graph.arc(quality).inverse || graph.arc(quality).role == "mod") &&
                          graph.word(graph.arc(quality).from).sense.empty();
    if (is_below && graph.child(graph.arc(quality).from, "poss") < 0)
      attribute_add(graph.word(graph.arc(quality).from), "@def");
    const bool has_subject = subject_arc(graph, at) >= 0 || graph.child(at, "understood") >= 0 ||
                             graph.child(at, "shared") >= 0 || graph.child(at, "speaker") >= 0;
    // "It rained in the south for days".
    constexpr std::array kWeather{"rain", "snow", "hail", "drizzle", "thunder"};
    const bool is_weather = at == meaning.root && is_event(graph, at) && is_one_of(graph, at, kWeather) &&
                            !has_subject &&
                            (graph.child(at, "duration") >= 0 || graph.child(at, "time") >= 0 ||
                             graph.child(at, "temporal") >= 0 || has_attribute(word, "@activity"));
    if (is_weather) attribute_add(word, "@cl");
    if (has_subject && !has_attribute(word, "@result") && !has_attribute(word, "@agent") && !nominal_apply(graph, at))
      attribute_add(word, "@cl");
    if (has_attribute(word, "@whether") || has_attribute(word, "@asked")) attribute_add(word, "@query");
    const bool is_auxiliary =
        std::any_of(kAuxiliary.begin(), kAuxiliary.end(), [&](const char* one) { return has_attribute(word, one); });
    if (is_auxiliary && is_clause(graph, at)) attribute_add(word, "@aux");
    extraposed_apply(graph, at);
    gerund_apply(graph, at);
    // "It is a pity that she left": what a predicate says of a whole clause.
    const int about = graph.child(at, "domain");
    const int told = about >= 0 && graph.parent(graph.arc(about).to) == about ? graph.arc(about).to : -1;
    const bool is_told =
        told >= 0 && is_event(graph, told) && subject_arc(graph, told) >= 0 && !has_attribute(graph.word(told), "@nom");
    if (is_told && graph.child(at, "consequence") < 0) attribute_add(word, "@xdom");
    if (is_told && is_easy_for(graph, at, told)) make_infinitive(graph, told, "@xfor");
    // What is only counted is new: "there are three birds in the tree".
    const bool is_being =
        graph.is(at, "be-located-at", "91") || graph.is(at, "have-place", "91") || graph.is(at, "exist", "91");
    const int what = is_being ? graph.child(at, "ARG1") : -1;
    if (what < 0) continue;
    const Concept& thing = graph.word(graph.arc(what).to);
    const bool is_new = graph.child(graph.arc(what).to, "quant") >= 0 || has_attribute(thing, "@indef");
    if (is_new) attribute_add(word, has_attribute(thing, "@pl") ? "@theres" : "@there");
  }
}

namespace {

// (b / become-01 :ARG1 s :ARG2 (s2 / small :domain s)): behind such a verb an adjective has no subject of its own.
// "She became small": both frames name her in the bank.
void copular_apply(Rewriter& graph, int at) {
  constexpr std::array kCopular{"become", "look", "feel",  "sound",   "smell", "taste",    "stay",    "remain", "grow",
                                "turn",   "get",  "elect", "appoint", "name",  "nominate", "declare", "choose", "call",
                                "crown",  "make", "elect", "promote", "hire",  "consider", "regard"};
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
  constexpr std::array kBidding{"allow",     "permit",  "force",  "oblige", "forbid",
                                "encourage", "require", "compel", "expect", "order"};
  const bool is_bidden = is_one_of(graph, at, kBidding) && is_event(graph, at) &&
                         !has_attribute(graph.word(at), "@imp") && graph.child(at, "ARG2") < 0 &&
                         graph.argument(at, "ARG0") < 0;
  const bool is_raising = is_phase || is_bidden || is_seeming(graph, at);
  const int led = is_raising && graph.child(at, "ARG0") < 0 ? graph.child(at, "ARG1") : -1;
  if (led < 0 || !is_clause(graph, graph.arc(led).to)) return;
  // What begins to be done has a doer, what begins to be a subject: "the rain began to fall".
  const int done = graph.arc(led).to;
  const int subject = is_phase ? graph.child(done, "ARG0") : subject_arc(graph, done);
  if (is_phase && (has_attribute(graph.word(done), "@agent") || has_attribute(graph.word(done), "@result"))) return;
  if (subject < 0) return;
  if (is_clause(graph, graph.arc(subject).to) && !has_attribute(graph.word(graph.arc(subject).to), "@agent")) return;
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

// "Everyone began to talk when the music stopped": when something begins stands behind what begins.
void phase_apply(Rewriter& graph, int at) {
  constexpr std::array kPhases{"begin", "start", "continue", "cease", "stop", "try", "manage"};
  const int led = is_event(graph, at) && is_one_of(graph, at, kPhases) ? graph.child(at, "ARG1") : -1;
  if (led < 0 || !is_event(graph, graph.arc(led).to) || graph.parent(graph.arc(led).to) != led) return;
  const int done = graph.arc(led).to;
  if (has_attribute(graph.word(done), "@agent") || graph.child(done, "ARG0") < 0) return;
  for (const int below : graph.children(at)) {
    const Arc& one = graph.arc(below);
    constexpr std::array kCircumstances{"time", "temporal", "location", "place"};
    const bool is_phrase = !graph.children(one.to).empty() && !is_clause(graph, one.to);
    if (!one.inverse && is_listed(one.role, kCircumstances) && is_phrase) graph.arc(below).from = done;
  }
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
  if (buyer >= 0 && price >= 0) std::swap(graph.arc(buyer).role, graph.arc(price).role);
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
  for (int steps = is_far ? 3 : is_of_noun ? 2 : 1; steps > 0 && led_here >= 0; --steps) {
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
  // "She told him that she sang", "she suggested to him that he sing": only of some verbs who listens does what is said.
  constexpr std::array kOfHearers{"tell", "warn", "remind", "assure", "inform", "notify"};
  constexpr std::array kBidding{"tell",   "ask",    "beg",  "teach", "help",   "permit", "allow",  "forbid", "warn",
                                "remind", "advise", "want", "mean",  "enable", "let",    "train",  "need",   "expect",
                                "get",    "cause",  "show", "learn", "assist", "leave",  "assign", "require"};
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
    graph.arc(subject).to = self;
    return;
  }
  if (is_said_again(graph, above, at, subject) || is_bare_predicate(graph, above, subject)) return;
  if (graph.arc(subject).role != "ARG0") attribute_add(graph.word(at), "@ctl1");
  graph.arc(subject).role = "understood";
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
  if (is_own) attribute_add(graph.word(aim), "@fut");
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
  const bool is_to_do = wish >= 0 && graph.child(graph.arc(wish).to, "understood") >= 0;
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
  const int user = led < 0 ? -1 : graph.child(at, "ARG0");
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
  const int sleeper = place < 0 ? -1 : graph.child(graph.arc(place).to, "ARG0");
  const bool is_there = sleeper >= 0 && graph.arc(sleeper).to == graph.arc(user).to;
  if (is_there && is_plain_deed(graph, graph.arc(place).to)) {
    graph.arc(sleeper).role = "understood";
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
  const bool is_not_known = graph.is(at, "know", "01") && has_attribute(graph.word(at), "@neg");
  const bool is_own = is_one_of(graph, at, kOfSelf) || is_not_known;
  const int led = is_own || is_one_of(graph, at, kOfOther) ? graph.child(at, "ARG1") : -1;
  const int thing = led >= 0 && graph.is(graph.arc(led).to, "thing") ? graph.arc(led).to : -1;
  if (thing < 0 || graph.children(thing).size() != 1) return;
  const Arc& held = graph.arc(graph.children(thing)[0]);
  const int deed = held.to;
  if (!held.inverse || (held.role != "ARG1" && held.role != "manner") || !is_plain_deed(graph, deed)) return;
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
  graph.arc(led).to = able;
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

// An event that stands where English has a noun and no clause.
void noun_of_event(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  if (above < 0 || !is_core(graph.arc(above)) || !is_event(graph, at) || graph.arc(above).role == "ARG0") return;
  const int governor = graph.arc(above).from;
  const std::string& role = graph.arc(above).role;
  if (graph.word(governor).sense.empty()) return;
  // "To" as a preposition: exposed to ridicule.
  constexpr std::array kToThings{"subject", "expose",   "devote", "dedicate", "limit",    "attribute", "reduce",
                                 "confine", "restrict", "resort", "react",    "accustom", "addict",    "attach"};
  if (role == "ARG2" && is_one_of(graph, governor, kToThings)) {
    attribute_add(graph.word(at), "@nom");
    int part = at;
    for (int steps = graph.count(); steps > 0; --steps) {
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
  const bool is_held = content >= 0 && is_one_of(graph, at, kContents) && !is_one_of(graph, governor, kTelling);
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

}  // namespace

// (w / want-01 :ARG0 b :ARG1 (g / go-02 :ARG0 b)): the b of go-02 becomes :understood, and rules make an infinitive of it.
void step_control(Meaning& meaning) {
  Rewriter graph(meaning, "control");
  for (int at = 0, end = graph.count(); at < end; ++at) {
    copular_apply(graph, at);
    phase_apply(graph, at);
    raise_apply(graph, at);
  }
  for (int at = 0; at < graph.count(); ++at) subject_once_apply(graph, at);
  const std::vector<int> first = first_arcs(graph);
  for (int at = 0; at < graph.count(); ++at) dead_apply(graph, at);
  for (int at = 0, end = graph.count(); at < end; ++at) understand_subject(graph, first, at);
  for (int at = 0; at < graph.count(); ++at) noun_of_event(graph, at), too_much_apply(graph, at), aim_apply(graph, at);
  for (int at = 0; at < graph.count(); ++at)
    polite_apply(graph, at), along_apply(graph, at), done_apply(graph, at), order_apply(graph, first, at),
        how_to_apply(graph, at), to_do_apply(graph, at);
  for (int at = 0, end = graph.count(); at < end; ++at) able_apply(graph, at);
  for (int at = 0, end = graph.count(); at < end; ++at) nobody_decides(graph, at);
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
      const bool is_own =
          agent >= 0 && agent != led && meant[static_cast<std::size_t>(agent)] == to && is_core(graph.arc(led));
      graph.arc(led).to = mention_of(graph, to);
      if (is_own) attribute_add(graph.word(graph.arc(led).to), "@self");
    }
  }
}

}  // namespace lexon
