#include "import/clauses.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lexon {

namespace {

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

constexpr Conjunction kConjunctions[] = {{"and", "@and"},
                                         {"or", "@or"},
                                         {"amr-choice", "@or"},
                                         {"umr-choice", "@or"},
                                         {"sum-of", "@and"},
                                         {"either", "@or"},
                                         {"neither", "@nor"},
                                         {"slash", "@slash"},
                                         {"contrast", "@but"},
                                         {"but", "@but"},
                                         {"multi-sentence", "@snt"},
                                         {"multiple-sentences", "@snt"},
                                         // Newer names of the same, by what the parts are to each other.
                                         {"and-but", "@but"},
                                         {"and-contrast", "@but"},
                                         {"and-unexpected", "@but"},
                                         {"exclusive-disj", "@or"},
                                         {"inclusive-disj", "@or"},
                                         {"consecutive", "@and"},
                                         {"additive", "@and"}};

}  // namespace

bool is_clause(Rewriter& graph, int at) {
  return !graph.word(at).sense.empty() || graph.child(at, "domain") >= 0;
}

bool is_long_receiver(Rewriter& graph, int receiver) {
  const std::vector<int> below = graph.children(receiver);
  return std::any_of(below.begin(), below.end(), [&](int led) { return graph.arc(led).inverse; });
}

bool is_state(Rewriter& graph, int at) {
  static const std::set<std::string, std::less<>> kVerbs = [] {
    std::set<std::string, std::less<>> verbs;
    std::istringstream lines(kStates);
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line.starts_with('#') ? std::string() : line);
      for (std::string word; words >> word;) verbs.insert(word);
    }
    return verbs;
  }();
  return !graph.word(at).sense.empty() && kVerbs.contains(graph.word(at).name);
}

bool gives(Rewriter& graph, int at) {
  constexpr std::array kGiving{"give", "show",  "tell", "send", "bring", "lend",    "teach", "hand", "offer", "sell",
                               "pay",  "throw", "pass", "feed", "owe",   "promise", "grant", "read", "write"};
  return is_one_of(graph, at, kGiving);
}

bool is_asked_into(Rewriter& graph, int clause) {
  for (int at = clause, steps = graph.count(); steps > 0; --steps) {
    const int above = graph.parent(at);
    if (above < 0 || !is_core(graph.arc(above))) return false;
    at = graph.arc(above).from;
    if (graph.child(at, "questioned") >= 0) return true;
  }
  return false;
}

bool is_front_taken(Rewriter& graph, int clause) {
  return has_attribute(graph.word(clause), "@as_condition") || is_asked_into(graph, clause);
}

std::vector<int> first_arcs(Rewriter& graph) {
  const auto has_clause = [&](int led) { return is_clause(graph, graph.arc(led).to); };
  std::vector<int> below;  // of the concept where the walk is
  const auto put_first = [&](const auto& is_early) {
    if (below.size() > 1) std::stable_partition(below.begin(), below.end(), is_early);
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
    below = graph.children(at);
    // A receiver is said before what it is told to do: "she asked the driver to stop".
    put_first([&](int one) {
      const Arc& led_down = graph.arc(one);
      const bool is_argument = led_down.role.starts_with("ARG") || led_down.role == "speaker";
      if (led_down.inverse || !is_argument) return false;
      const Concept& word = graph.word(led_down.to);
      if (has_clause(one)) return has_attribute(word, "@agent") || has_attribute(word, "@result");
      // "She showed the boy how he should do it": a thing that a clause tells is one, too.
      return word.name != "thing" || graph.child(led_down.to, "manner", true) < 0;
    });
    // "She gave the boy something to eat": who receives it is said before it.
    if (gives(graph, at)) {
      put_first([&](int one) {
        return graph.arc(one).role == "ARG2" && !graph.arc(one).inverse && !has_clause(one) &&
               !is_long_receiver(graph, graph.arc(one).to);
      });
    }
    // An agent is said before what it does something to, and a condition before both, wherever the source writes them.
    const bool is_bidden = has_attribute(graph.word(at), "@bid");
    const char* subject = is_bidden ? "understood" : has_attribute(graph.word(at), "@psv") ? "ARG1" : "ARG0";
    const bool has_agent = graph.child(at, subject) >= 0;
    put_first(
        [&](int one) { return graph.arc(one).role == (has_agent ? subject : "domain") && !graph.arc(one).inverse; });
    // An infinitive, which has no subject of its own, has nothing in front of it.
    // "They expect the bank to lend when it opens".
    constexpr std::array kLetting{"expect",  "want", "allow", "permit", "order", "force",
                                  "require", "let",  "make",  "enable", "need"};
    const bool is_let_do = led >= 0 && !graph.arc(led).inverse && graph.arc(led).role == "ARG1" &&
                           is_one_of(graph, graph.arc(led).from, kLetting);
    const bool is_infinitive =
        graph.child(at, "understood") >= 0 || is_let_do || (led >= 0 && graph.arc(led).role == "domain");
    put_first([&](int one) {
      const Arc& led_down = graph.arc(one);
      if (is_infinitive || is_front_taken(graph, at)) return false;
      const bool is_quoting = graph.child(at, "quoted") >= 0;
      const bool is_asking = has_attribute(graph.word(at), "@ask") || has_attribute(graph.word(at), "@int");
      const bool goes_in_front = led_down.role == "condition" || (led_down.role == "time" && !is_quoting && !is_asking);
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

int mention_of(Rewriter& graph, int at) {
  const Concept model = graph.word(at);
  const int made = graph.add_concept(model.name);
  Concept& word = graph.word(made);
  // Of a person that nothing names the pronoun is known.
  const bool is_person = graph.is(at, "person") && !has_attribute(model, "@name") && !has_attribute(model, "@pl") &&
                         !has_attribute(model, "@agent");
  if (is_person) word.name = "he";
  // That it is there has no word of its own.
  if (graph.is(at, "be-located-at", "91")) word.name = "thing";
  word.sense = word.name == "thing" ? "" : model.sense;
  word.is_text = model.is_text;
  for (const char* kept : {"@v", "@person", "@pl", "@name", "@p1", "@p2", "@p3", "@agent", "@measure"}) {
    if (has_attribute(model, kept)) attribute_add(word, kept);
  }
  attribute_add(word, "@ref");
  if (is_woman(model)) {
    word.name = "she";
    std::erase(word.attributes, "@name");
  }
  // "The man and the woman" are they, whatever the first of them is.
  if (has_attribute(model, "@group")) {
    word.name = "they";
    word.attributes = {"@ref", "@pl"};
  }
  // The poor are they.
  if (has_attribute(model, "@people")) graph.word(made).name = "they";
  return made;
}

bool is_core_role(const std::string& role) {
  return role.starts_with("ARG");
}

bool is_core(const Arc& one) {
  return !one.inverse && is_core_role(one.role);
}

const Conjunction* conjunction_of(Rewriter& graph, int at) {
  for (const Conjunction& one : kConjunctions) {
    // contrast-01 is a frame, the others are none: and-01 would be another word.
    const bool is_frame = one.name == "contrast";
    if (is_same(graph.word(at).name, one.name) && graph.word(at).sense.empty() != is_frame) return &one;
  }
  return nullptr;
}

int joined_in(Rewriter& graph, int at) {
  // A circle of operands has no end.
  for (int left = graph.count(); left > 0; --left) {
    const int above = graph.parent(at);
    if (above < 0 || graph.arc(above).inverse || !graph.arc(above).role.starts_with("op")) break;
    at = graph.arc(above).from;
  }
  return at;
}

int subject_arc(Rewriter& graph, int clause) {
  if (has_attribute(graph.word(clause), "@psv")) return graph.child(clause, "ARG1");
  for (const char* role : {"ARG0", "ARG1", "domain"}) {
    if (const int led = graph.child(clause, role); led >= 0) return led;
  }
  return -1;
}

std::vector<int> clause_words(Rewriter& graph, std::vector<int> clauses) {
  std::vector<bool> seen(static_cast<std::size_t>(graph.count()));
  for (const int clause : clauses) seen[static_cast<std::size_t>(clause)] = true;
  for (std::size_t i = 0; i < clauses.size(); ++i) {
    for (const int led : graph.children(clauses[i])) {
      const int to = graph.arc(led).to;
      if (!seen[static_cast<std::size_t>(to)]) clauses.push_back(to);
      seen[static_cast<std::size_t>(to)] = true;
    }
  }
  return clauses;
}

bool is_plain_deed(Rewriter& graph, int at) {
  constexpr std::array kMore{"@can", "@must",    "@should", "@may", "@fut", "@would", "@likely", "@perf",  "@neg",
                             "@nom", "@whether", "@asked",  "@int", "@ask", "@imp",   "@quote",  "@agent", "@result"};
  return is_event(graph, at) && graph.child(at, "conjunct") < 0 &&
         std::none_of(kMore.begin(), kMore.end(), [&](const char* one) { return has_attribute(graph.word(at), one); });
}

void make_infinitive(Rewriter& graph, int clause, const char* mark) {
  attribute_add(graph.word(clause), mark);
  for (const char* tense : {"@past", "@pres"}) std::erase(graph.word(clause).attributes, tense);
}

bool is_uncounted(const std::string& name) {
  constexpr std::array kMass{
      "money",     "time",     "water",    "food",    "energy",  "attention", "information", "news",      "stuff",
      "traffic",   "trouble",  "noise",    "music",   "air",     "gas",       "oil",         "snow",      "rain",
      "sand",      "wood",     "gold",     "power",   "sense",   "fun",       "room",        "space",     "land",
      "evidence",  "crap",     "shit",     "luck",    "courage", "knowledge", "furniture",   "paper",     "coffee",
      "wine",      "milk",     "sugar",    "blood",   "freedom", "bullshit",  "weather",     "equipment", "emotion",
      "wealth",    "progress", "support",  "soup",    "bread",   "butter",    "cheese",      "tea",       "beer",
      "rice",      "flour",    "wool",     "silk",    "cotton",  "honey",     "salt",        "grass",     "help",
      "advice",    "cloth",    "clothing", "jewelry", "corn",    "toast",     "work",        "peace",     "love",
      "breakfast", "lunch",    "dinner"};
  return is_listed(name, kMass);
}

}  // namespace lexon
