// A frame file, as far as it is read:
//
//   frameset / predicate / roleset id="give_up.07"
//     aliases / alias pos="v|n|j|l": give_up; l is a verb with a noun, make_effort
//     roles / role n="1" f="PPT" descr="thing given up"
//     example
//       text: the words of a sentence with spaces between them
//       propbank / rel relloc="3": the place of the verb, counted from 0
//       propbank / arg type="ARG1" start="5": the words of an argument, and the place of the first
//
// What introduces an argument is counted over the examples: they show how people build a sentence with the frame. Where
// no example has the argument, the description of the role says it: "thing listened to".
#include "dicttool/propbank.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <pugixml.hpp>
#include <set>

#include "dicttool/text_fields.hpp"

namespace lexon {

namespace {

constexpr int kArguments = 5;  // ARG1 to ARG5; ARG0 is the subject and needs nothing

constexpr std::string_view kPrepositions[] = {"about",  "above",   "across", "after",  "against", "along",   "among",
                                              "around", "as",      "at",     "before", "behind",  "between", "by",
                                              "for",    "from",    "in",     "into",   "like",    "near",    "of",
                                              "off",    "on",      "onto",   "out",    "over",    "through", "to",
                                              "toward", "towards", "under",  "upon",   "with",    "within",  "without"};

// Words that make a participle behind them a passive.
constexpr std::string_view kBeing[] = {"is", "are", "was", "were", "be",  "been", "being",
                                       "am", "'s",  "'re", "'m",   "get", "got",  "gets"};

template <std::size_t N>
bool has(const std::string_view (&list)[N], std::string_view word) {
  return std::find(std::begin(list), std::end(list), word) != std::end(list);
}

std::string lowered(std::string_view text) {
  std::string low(text);
  for (char& c : low) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  return low;
}

// The words between white space of any kind.
std::vector<std::string> words_of(std::string_view text) {
  std::vector<std::string> words(1);
  for (const char c : text) {
    const bool is_space = c == ' ' || c == '\n' || c == '\t' || c == '\r';
    if (!is_space) words.back() += c;
    if (is_space && !words.back().empty()) words.emplace_back();
  }
  if (words.back().empty()) words.pop_back();
  return words;
}

// A name as people write it.
std::string written(std::string_view name) {
  std::string form(name);
  std::replace(form.begin(), form.end(), '_', ' ');
  std::replace(form.begin(), form.end(), '-', ' ');
  return form;
}

// What the examples of one sense show.
struct Usage {
  std::array<std::map<std::string, int>, kArguments + 1> introduced;  // by number of the argument
  int agents = 0;                                                     // examples with ARG0
  int active = 0;                                                     // ARG1 in front of the verb, without ARG0
  int passive = 0;                                                    // the same behind a form of "be"
};

// What stands at the beginning of an argument behind the verb. "To sing" and "to music" look alike: only a verb makes an
// infinitive.
std::string introduction(const std::vector<std::string>& words, const VerbSet& verbs) {
  std::string first = lowered(words[0]);
  if (first == "to" && words.size() > 1 && verbs.contains(words[1])) return "infinitive";
  if (has(kPrepositions, first)) return first;
  if (first == "that") return "clause";
  return first.ends_with("ing") ? "gerund" : "object";
}

// Which part of speech an example shows. A noun says nothing about the verb; an adjective, "acquainted with", is built as
// the passive is.
std::string_view part_of(const std::string& word, std::string_view title, const FrameSense& sense) {
  const std::string_view kind = title.substr(0, title.find(':'));
  if (kind.ends_with("-n")) return "noun";
  if (kind.ends_with("-j")) return "adj";
  std::string_view other;
  for (const FrameName& name : sense.names) {
    const std::string first = lowered(name.form.substr(0, name.form.find(' ')));
    const bool is_it = word == first || word == first + 's';
    if (is_it && std::string_view(name.part) == "verb") return "verb";
    // "Listening" may be either: it counts as a form of the verb.
    if (is_it && !word.ends_with("ing")) other = name.part;
  }
  return other.empty() ? "verb" : other;
}

// Counts what one example shows of the arguments. Without a place of the verb it shows nothing.
void example_count(const pugi::xml_node& example, const FrameSense& sense, const VerbSet& verbs, Usage& usage) {
  const pugi::xml_node marks = example.child("propbank");
  const pugi::xml_node verb = marks.child("rel");
  const std::vector<std::string> text = words_of(example.child_value("text"));
  const std::vector<std::string> verb_words = words_of(verb.text().get());
  const std::string place = verb.attribute("relloc").value();
  const bool has_place = !place.empty() && place[0] >= '0' && place[0] <= '9';
  const int at = has_place ? verb.attribute("relloc").as_int() : -1;
  if (at < 0 || verb_words.empty()) return;
  const std::string_view part = part_of(lowered(verb_words[0]), example.attribute("name").value(), sense);
  const auto is_verb = [](const FrameName& name) { return std::string_view(name.part) == "verb"; };
  const bool has_verb = std::any_of(sense.names.begin(), sense.names.end(), is_verb);
  if (part == "noun" && has_verb) return;
  bool has_agent = false;
  int object = -1;
  for (const pugi::xml_node& argument : marks.children("arg")) {
    const std::string_view type = argument.attribute("type").value();
    const std::string_view start = argument.attribute("start").value();
    // Modifiers (ARGM) say nothing about the frame.
    const bool is_numbered = type.size() == 4 && type.starts_with("ARG") && type[3] >= '0' && type[3] <= '9';
    if (!is_numbered || start.empty() || start[0] < '0' || start[0] > '9') continue;
    const int number = type[3] - '0';
    const int from = argument.attribute("start").as_int();
    has_agent |= number == 0;
    if (number == 1) object = from;
    const std::vector<std::string> words = words_of(argument.text().get());
    // Only what stands behind the word shows how it introduces it; an adjective has its subject as ARG1.
    const bool is_counted = number > (part == "adj" ? 1 : 0) && number <= kArguments && from >= at && !words.empty();
    if (!is_counted) continue;
    ++usage.introduced[static_cast<std::size_t>(number)][introduction(words, verbs)];
  }
  usage.agents += has_agent;
  // Without an agent, and with its object in front: the subject of an active verb, or of a passive.
  if (part == "adj" || has_agent || object < 0 || object >= at) return;
  bool is_passive = false;
  for (int i = std::max(0, at - 2); i < at && i < static_cast<int>(text.size()); ++i) {
    is_passive |= has(kBeing, lowered(text[static_cast<std::size_t>(i)]));
  }
  const std::string last = verb_words[0].substr(verb_words[0].size() - 1);
  // The letters that participles end in; "is running" is no passive.
  is_passive = is_passive && (last == "d" || last == "n" || last == "t");
  ++(is_passive ? usage.passive : usage.active);
}

// The preposition that the description of a role names, "thing listened to", or that its kind asks for; "" for none. Of
// an object only where the verb stands in front of it: an object is a plain noun as a rule.
std::string told_preposition(std::string_view description, std::string_view lemma, bool is_object) {
  struct Kind {
    const char* word;
    const char* preposition;
  };
  constexpr Kind kKinds[] = {{"source", "from"},     {"giver", "from"},      {"seller", "from"},    {"start", "from"},
                             {"benefactive", "for"}, {"beneficiary", "for"}, {"price", "for"},      {"reason", "for"},
                             {"instrument", "with"}, {"topic", "about"},     {"matter", "about"},   {"recipient", "to"},
                             {"hearer", "to"},       {"listener", "to"},     {"destination", "to"}, {"goal", "to"}};
  std::string text = lowered(description);
  const std::string whole = text;
  for (char& c : text) c = c >= 'a' && c <= 'z' ? c : ' ';
  const std::vector<std::string> words = words_of(text);
  if (words.empty()) return "";
  const std::string& last = words.back();
  const std::string stem(lemma.substr(0, 3));
  const bool names_verb =
      std::any_of(words.begin(), words.end(), [&](const auto& one) { return one.starts_with(stem); });
  if (has(kPrepositions, last) && last != "off" && last != "around" && (!is_object || names_verb)) {
    // A verb like "listen to" has its preposition already.
    const std::vector<std::string> own = words_of(written(lemma));
    return std::find(own.begin(), own.end(), last) != own.end() ? "" : last;
  }
  if (is_object) return "";
  if (has(kPrepositions, words[0])) return words[0];
  for (const Kind& kind : kKinds) {
    if (whole.find(kind.word) != whole.npos) return kind.preposition;
  }
  return "";
}

// What most of the examples have, the shapes of clauses left out.
std::pair<std::string, int> most(const std::map<std::string, int>& counts) {
  std::pair<std::string, int> best;
  for (const auto& [what, count] : counts) {
    const bool is_clause = what == "infinitive" || what == "gerund" || what == "clause";
    if (!is_clause && count > best.second) best = {what, count};
  }
  return best;
}

int count_of(const std::map<std::string, int>& counts, const char* what) {
  const auto found = counts.find(what);
  return found == counts.end() ? 0 : found->second;
}

// What a role is, beside its description.
struct Role {
  std::string_view function;  // PropBank's: GOL, DIR, EXT
  std::string_view description;
  bool is_behind_verb = false;  // ARG1 is the subject, so that nothing stands between it and the verb
};

// Where something goes, as its description says: no place gets a thing as a person does.
bool is_place_of_motion(std::string_view description) {
  constexpr std::string_view kPlaces[] = {"direction", "destination", "location", "where"};
  return std::any_of(std::begin(kPlaces), std::end(kPlaces),
                     [&](std::string_view word) { return description.find(word) != description.npos; });
}

// The features of one argument by its examples.
void argument_features(int number, const std::map<std::string, int>& counts, const Role& role, std::string& features) {
  const std::string name = ";arg" + std::to_string(number) + '.';
  const int clauses = count_of(counts, "clause");
  for (const char* shape : {"infinitive", "gerund"}) {
    // The infinitive and the gerund are for a subject that is known, so that they count more than their number.
    const int seen = count_of(counts, shape);
    if (seen > 0 && 10 * seen >= 3 * clauses) features += name + shape;
  }
  if (clauses > count_of(counts, "infinitive") + count_of(counts, "gerund")) features += name + "clause";
  const auto [best, times] = most(counts);
  if (best.empty()) return;
  int all = 0;
  for (const auto& [what, count] : counts) all += count;
  // An object is a plain noun, unless the examples leave no doubt: "look at" and "look for", but no "look it".
  // Who does it together with the subject has "with", be it shown once: "met up with her".
  const bool is_partner = role.function == "COM" && best == "with" && count_of(counts, "object") == 0;
  const bool is_doubtful =
      number == 1 && !is_partner && (times < 2 || 2 * times <= all || 4 * count_of(counts, "object") > all);
  // How much something grows stands behind what grows, by five percent, and so does what it is done with.
  const char* behind = role.function == "EXT" ? "by" : role.function == "MNR" ? "with" : nullptr;
  const bool is_behind = behind != nullptr && best == "object" && number > 1;
  // In front of the object stands who gets it, and nothing else: "called her a friend", "pulled it to the door".
  const bool is_place = is_place_of_motion(role.description);
  const bool is_receiver = role.is_behind_verb || (role.function == "GOL" && !is_place);
  const bool says_nothing = best == "object" && (number != 2 || !is_receiver);
  if (is_behind) features += name + behind;
  if (best == "object" && number == 2 && is_place && !role.is_behind_verb) features += name + "to";
  if (!is_doubtful && !says_nothing && !is_behind) features += name + best;
}

// The preposition of a role by its function, where nothing else tells it: what the act is done with, to or for.
std::string function_preposition(std::string_view function) {
  struct Kind {
    const char* function;
    const char* preposition;
  };
  constexpr Kind kKinds[] = {{"GOL", "to"}, {"DIR", "from"}, {"SRC", "from"}, {"MNR", "with"}, {"COM", "with"},
                             {"EXT", "by"}, {"LOC", "in"},   {"PRP", "for"},  {"CAU", "for"}};
  for (const Kind& kind : kKinds) {
    if (function == kind.function) return kind.preposition;
  }
  return "";
}

// The preposition of an ARG1 that no example shows: with whom, through where, about what. What verbs have as an object is
// shown by some example nearly always.
std::string lone_preposition(const Role& role) {
  if (role.function == "COM") return "with";
  if (role.function == "LOC") return "through";
  return role.description.find("topic") != role.description.npos ? "about" : "";
}

std::string features_of(const pugi::xml_node& roleset, const FrameSense& sense, const VerbSet& verbs) {
  Usage usage;
  for (const pugi::xml_node& example : roleset.children("example")) example_count(example, sense, verbs, usage);
  std::map<std::string, pugi::xml_node> roles;
  for (const pugi::xml_node& role : roleset.child("roles").children("role")) roles[role.attribute("n").value()] = role;
  std::string features;
  // A verb without an agent among its roles puts its first argument in front, as "fall" does.
  const bool is_alone = !roles.contains("0") && roles.contains("1") && usage.passive <= usage.active;
  const bool is_often = usage.active >= 2 && usage.active > 2 * usage.passive && 2 * usage.active >= usage.agents;
  if (is_alone || is_often) features += ";arg1.subject";
  const bool is_subject = is_alone || is_often;
  for (int number = 1; number <= kArguments; ++number) {
    const auto& counts = usage.introduced[static_cast<std::size_t>(number)];
    const auto found = roles.find(std::to_string(number));
    const pugi::xml_node node = found == roles.end() ? pugi::xml_node() : found->second;
    const Role role{node.attribute("f").value(), node.attribute("descr").value(), is_subject};
    // Examples count more than descriptions.
    if (!counts.empty()) {
      argument_features(number, counts, role, features);
      // Where the examples have clauses alone, the description says what a noun has: "go back to sleep", "to the town".
      if (number == 1 || !most(counts).first.empty()) continue;
    }
    if (!node) continue;
    std::string told = told_preposition(node.attribute("descr").value(), sense.lemma, number == 1);
    if (told.empty() && number != 1) told = function_preposition(role.function);
    if (told.empty() && number == 1) told = lone_preposition(role);
    if (!told.empty()) features += ";arg" + std::to_string(number) + '.' + told;
  }
  return features;
}

}  // namespace

FrameFault frames_read(std::string_view text, const VerbSet& verbs,
                       const std::function<void(const FrameSense&)>& sink) {
  pugi::xml_document document;
  const pugi::xml_parse_result parsed = document.load_buffer(text.data(), text.size());
  if (!parsed) {
    const auto end = text.begin() + std::min(parsed.offset, static_cast<std::ptrdiff_t>(text.size()));
    return {1 + std::count(text.begin(), end, '\n'), parsed.description()};
  }
  for (const pugi::xml_node& predicate : document.child("frameset").children("predicate")) {
    for (const pugi::xml_node& sense : predicate.children("roleset")) {
      const std::string id = sense.attribute("id").value();
      // "run.02": the lemma and the number of the sense. What has no such id is no sense.
      const std::size_t dot = id.rfind('.');
      if (dot == id.npos || dot == 0) continue;
      FrameSense read{id.substr(0, dot), id.substr(dot + 1), {}, {}};
      std::replace(read.lemma.begin(), read.lemma.end(), '_', '-');
      std::string light;
      for (const pugi::xml_node& alias : sense.child("aliases").children("alias")) {
        const std::string_view part = alias.attribute("pos").value();
        const char* kind = part == "v" ? "verb" : part == "n" ? "noun" : part == "j" ? "adj" : nullptr;
        const std::vector<std::string> words = words_of(written(alias.text().get()));
        // "Make mistake": the verb that English puts in front of the noun.
        constexpr std::string_view kLight[] = {"make", "take", "give", "have", "do"};
        if (part == "l" && words.size() == 2 && has(kLight, words[0])) light = ";light." + words[0];
        std::string form;
        for (const std::string& word : words) form += (form.empty() ? "" : " ") + word;
        if (kind != nullptr && !form.empty()) read.names.push_back({std::move(form), kind});
      }
      // A sense without aliases is named as its file is.
      if (read.names.empty()) read.names.push_back({written(read.lemma), "verb"});
      read.features = features_of(sense, read, verbs) + light;
      sink(read);
    }
  }
  return {};
}

}  // namespace lexon
