// Steps about single words: names, dates, quantities, pronouns. A concept that only frames its value, `date-entity`,
// `temporal-quantity`, `name`, is no word: the value takes its place, with an attribute that says what it is.
#include <algorithm>
#include <array>

#include "import/clauses.hpp"
#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {
namespace {

// Digits with the signs that numbers have among them: 3, 1,500, 2.5, 1990-2000.
// A sign alone is no number: "-" is how a bank denies something.
bool is_number(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789.,-") == std::string::npos &&
         text.find_first_of("0123456789") != std::string::npos;
}

// As people write a long number: whole millions and billions with the word, others with commas.
// 12000 becomes 12,000 and 3000000 becomes 3 million; a year, 1984, is too short for either.
std::string number_text(const std::string& digits) {
  if (digits.size() < 5 || digits[0] == '0' || digits.find_first_not_of("0123456789") != digits.npos) return digits;
  constexpr std::pair<std::size_t, const char*> kUnits[] = {{12, " trillion"}, {9, " billion"}, {6, " million"}};
  for (const auto& [zeros, unit] : kUnits) {
    if (digits.size() <= zeros) continue;
    const std::size_t whole = digits.size() - zeros;
    const std::size_t last = digits.find_last_not_of('0');
    if (last < whole) return digits.substr(0, whole) + unit;
    // "1.2 billion".
    if (last <= whole + 1) return digits.substr(0, whole) + '.' + digits.substr(whole, last + 1 - whole) + unit;
  }
  std::string text;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) text += ',';
    text += digits[i];
  }
  return text;
}

// True for a name whose head is a common noun, or that is a plural: "the Central Court", "the Hill Islands".
bool takes_article(const std::string& type, const std::string& name) {
  constexpr std::array kNames{"U.S.", "US", "USA",  "U.S.A.", "UK",  "U.K.",        "UN",
                              "U.N.", "EU", "E.U.", "FBI",    "CIA", "Netherlands", "Philippines"};
  // Waters, deserts and ships: the Nile.
  constexpr std::array kTypes{"river", "ocean", "sea", "canal", "desert", "ship"};
  if (is_listed(name, kNames) || is_listed(type, kTypes)) return true;
  constexpr std::array kHeads{
      "States",     "Nations", "Islands", "Emirates", "Kingdom",    "Republic", "Union",     "Federation",
      "Ministry",   "Church",  "Senate",  "Court",    "Commission", "Council",  "Committee", "Association",
      "Department", "Agency",  "Party",   "Army",     "Navy",       "Bureau",   "Institute", "Organization",
      "Foundation", "House",   "Academy", "Alliance", "Empire",     "Act",      "East"};
  // The head stands before "of", the Republic of Elbonia, or last, the Central Court. A single word is a plain name:
  // Act.
  const std::string head = name.substr(0, name.find(" of "));
  const std::size_t space = head.rfind(' ');
  const std::string last = space == head.npos ? head : head.substr(space + 1);
  const bool is_compound = head.size() < name.size() || space != head.npos;
  return is_compound && is_listed(last, kHeads);
}

// True for a thing whose type has a noun in front of it: "the fishing boat Aurora". People and places go by their names.
bool keeps_type(Rewriter& graph, int at) {
  constexpr std::array kNames{"person", "country",   "city",  "state",    "province",
                              "county", "continent", "river", "language", "family"};
  constexpr std::array kNoNoun{"this", "that", "these", "all",  "other", "such",    "same", "only",
                               "even", "just", "also",  "both", "own",   "another", "too",  "new"};
  const Concept& type = graph.word(at);
  const bool is_known = is_listed(type.name, kNames);
  if (is_known || !type.sense.empty() || type.name.find('-') != type.name.npos) return false;
  // (b / boat :name ... :mod (f / fishing)): the noun in front would be lost with the type, so both are said.
  for (const int led : graph.children(at)) {
    const Concept& word = graph.word(graph.arc(led).to);
    const bool is_noun = graph.arc(led).role == "mod" && !graph.arc(led).inverse && word.sense.empty() &&
                         !word.variable.empty() && graph.child(graph.arc(led).to, "name") < 0 &&
                         graph.children(graph.arc(led).to).empty() && !has_attribute(word, "@name") &&
                         !is_listed(word.name, kNoNoun);
    if (is_noun) return true;
  }
  return false;
}

// The first mention of a type that names all its kind is no word of the sentence: "the country France".
void name_apply(Rewriter& graph, int at, int led) {
  const int name = graph.arc(led).to;
  std::string text;
  for (const int operand : graph.numbered(name, {"op"})) {
    if (!text.empty()) text += ' ';
    text += graph.word(graph.arc(operand).to).name;
    graph.remove(operand, Fate::word);
  }
  if (text.empty()) return;
  if (keeps_type(graph, at)) {
    graph.word(name).name = text;
    if (graph.child(at, "poss") < 0) attribute_add(graph.word(at), "@def");
    return attribute_add(graph.word(name), "@name");
  }
  // Else the type is an attribute, and the rules choose by it: in Oslo (@city), on Monday, by Ada (@person).
  graph.remove(led, Fate::word);
  graph.settle_concept(name, Fate::word);
  graph.settle_concept(at, Fate::attribute);
  Concept& named = graph.word(at);
  attribute_add(named, "@name");
  const std::string type = named.name;
  attribute_add(named, "@" + type);
  constexpr std::array kPeople{"man",       "woman",   "boy",     "girl",     "child",     "king",   "queen",
                               "president", "teacher", "actor",   "actress",  "singer",    "writer", "author",
                               "doctor",    "mayor",   "officer", "minister", "professor", "player", "prince",
                               "princess",  "uncle",   "aunt",    "brother",  "sister",    "friend"};
  if (is_listed(type, kPeople)) attribute_add(named, "@person");
  if (takes_article(type, text)) attribute_add(named, "@the");
  if (text.ends_with('s')) attribute_add(named, "@ends");
  named.name = text;
  named.sense.clear();
}

}  // namespace

// (c / city :wiki "Oslo" :name ...): an address in an encyclopedia is no part of the sentence. The triple is told as left
// out, as it is the one that rules can do nothing with.
void step_wiki(Meaning& meaning) {
  Rewriter graph(meaning, "wiki");
  for (Arc& one : meaning.arcs) {
    // From whose point of view a clause is certain is no part of it either.
    const bool is_note = one.role == "wiki" || one.role == "modal-predicate";
    if (is_note && !one.gone) one.gone = true, settle(meaning, one.triple, Fate::left_out, "wiki");
  }
}

// (c / city :name (n / name :op1 "New" :op2 "York")) becomes one word, New York, with @name and @city. What is written at
// the city, a relative clause or a part, stays with it.
void step_names(Meaning& meaning) {
  Rewriter graph(meaning, "names");
  for (int at = 0; at < graph.count(); ++at) {
    const int led = graph.child(at, "name");
    if (led >= 0 && graph.is(graph.arc(led).to, "name")) name_apply(graph, at, led);
  }
  // "They called him Tom": a name that is spoken of itself.
  for (int at = 0; at < graph.count(); ++at) {
    const std::vector<int> words = graph.is(at, "name") ? graph.numbered(at, {"op"}) : std::vector<int>{};
    if (words.empty() || words.size() != graph.children(at).size()) continue;
    std::string text;
    for (const int operand : words) {
      if (!text.empty()) text += ' ';
      text += graph.word(graph.arc(operand).to).name;
      graph.remove(operand, Fate::word);
    }
    graph.word(at).name = text;
    attribute_add(graph.word(at), "@name");
  }
}

// (d / date-entity :month 3 :day 4 :year 2012): the month becomes the word, month(>3).@date.@month, and day and year stand
// below it. A date without any of its parts stays what it is, and is a word that no dictionary knows: the report says so.
void step_dates(Meaning& meaning) {
  // What a date is called by, if it has several parts.
  // The first that is there: the month of a full date, the year of a bare one.
  constexpr std::array kHeads{"month", "weekday", "dayperiod", "season", "time", "year", "decade", "century", "day"};
  Rewriter graph(meaning, "dates");
  for (int at = 0; at < graph.count(); ++at) {
    if (!graph.is(at, "date-entity")) continue;
    // "The third quarter of 2010".
    if (const int quarter = graph.child(at, "quarter"); quarter >= 0) {
      graph.word(at).name = "quarter";
      graph.word(graph.arc(quarter).to).sense = "ord";
      attribute_add(graph.word(graph.arc(quarter).to), "@ord");
      graph.arc(quarter).role = "ord";
      if (const int year = graph.child(at, "year"); year >= 0) graph.arc(year).role = "part-of";
      continue;
    }
    int led = -1;
    // (d / date-entity :year 2001 :month 7): "July 2001", so the month is the head and the year stands below it.
    for (const char* part : kHeads) {
      if (led = graph.child(at, part); led >= 0) break;
    }
    if (led < 0) continue;
    const std::string part = graph.arc(led).role;
    const int head = graph.arc(led).to;
    // "On Thursday, March 2".
    if (const int weekday = graph.child(at, "weekday"); part == "month" && weekday >= 0) {
      for (const char* below : {"day", "year"}) {
        if (const int one = graph.child(at, below); one >= 0) graph.lead_from(one, head);
      }
      graph.word(head).sense = graph.word(head).name;
      graph.word(head).name = "month";
      graph.word(head).attributes = {"@date", "@month"};
      const int named = graph.arc(weekday).to;
      attribute_add(graph.word(named), "@date");
      attribute_add(graph.word(named), "@weekday");
      graph.replace(led, named, head, "apposition");
      graph.stand_in(at, weekday, Fate::word);
      continue;
    }
    // "At 12:20 yesterday".
    const int day = part == "time" ? graph.child(at, "mod") : -1;
    if (day >= 0) graph.arc(day).role = "weekday";
    attribute_add(graph.word(head), "@date");
    attribute_add(graph.word(head), "@" + part);
    // The dictionary has months by number, month(>7), and no other word is called so.
    if (part == "month") graph.word(head).sense = graph.word(head).name, graph.word(head).name = "month";
    if (part == "decade") graph.word(head).name += 's';
    graph.stand_in(at, led, Fate::word);
    // "This morning", "tonight": a part of today.
    const int pointer = part == "dayperiod" ? graph.child(head, "mod") : -1;
    if (pointer < 0 || !graph.is(graph.arc(pointer).to, "today") || graph.mentions(graph.arc(pointer).to) > 1) continue;
    if (!graph.is(head, "night")) {
      graph.word(graph.arc(pointer).to).name = "this";
      continue;
    }
    graph.settle_concept(graph.arc(pointer).to, Fate::word);
    graph.remove(pointer, Fate::word);
    graph.word(head).name = "tonight";
    graph.word(head).attributes.clear();
  }
}

namespace {

// (r / rate-entity-91 :ARG3 (t / temporal-quantity :quant 1 :unit (d / day))): every day.
// A bank gives a rate four arguments: what there is so much of (ARG1) in which period (ARG2), or only the interval at
// which something happens again (ARG3, in some files ARG4).
void rate_apply(Rewriter& graph, int at) {
  int led = graph.child(at, "ARG3");
  if (led < 0) led = graph.child(at, "ARG4");
  if (const int per = graph.child(at, "ARG2"), what = graph.child(at, "ARG1"); per >= 0 && what >= 0) {
    // "Two per year".
    graph.arc(per).role = "rate";
    const int one = graph.child(graph.arc(per).to, "quant");
    if (one >= 0 && graph.is(graph.arc(one).to, "1")) graph.remove(one, Fate::attribute);
    return graph.stand_in(at, what);
  }
  if (led < 0 || graph.child(at, "ARG1") >= 0 || graph.child(at, "ARG2") >= 0) return;
  const int period = graph.arc(led).to;
  attribute_add(graph.word(period), "@every");
  const int number = graph.child(period, "quant");
  if (number >= 0 && graph.word(graph.arc(number).to).name == "1") graph.remove(number, Fate::attribute);
  graph.stand_in(at, led);
}

// (r / relative-position :op1 (c / city) :quant (d / distance)): a distance from the city. Without a distance its direction
// stands for it: north of the city.
// A bank writes the point as :op1, how far from it something is as :quant, and on which side as :direction.
void position_apply(Rewriter& graph, int at) {
  const int point = graph.child(at, "op1");
  const int distance = graph.child(at, "quant");
  const int led = distance >= 0 ? distance : graph.child(at, "direction");
  if (led < 0) return;
  if (point >= 0) graph.arc(point).role = distance >= 0 ? "source" : "part-of";
  // "Ten miles away."
  if (point >= 0 && distance >= 0 && graph.is(graph.arc(point).to, "here"))
    graph.word(graph.arc(point).to).name = "away";
  graph.stand_in(at, led, Fate::word);
}

// (m / multiple :op1 1000): thousands of. (m / more-than :op1 (f / few)): more than a few.
// "Multiple" is what a bank has for a round number that nobody counted; the number itself says which word English has.
void multiple_apply(Rewriter& graph, int at) {
  constexpr std::pair<const char*, const char*> kPowers[] = {
      {"12", "dozens"},          {"100", "hundreds"},
      {"1000", "thousands"},     {"10000", "tens-of-thousands"},
      {"1000000", "millions"},   {"100000", "hundreds-of-thousands"},
      {"1000000000", "billions"}};
  const int led = graph.child(at, "op1");
  if (led < 0) return;
  // The number may stand inside of a quantity: multiple years is years by the million.
  // (m / multiple :op1 (t / temporal-quantity :quant 1000 :unit (y / year))): thousands of years. The unit has taken
  // the place of the quantity by now.
  const int inner = graph.is(at, "multiple") ? graph.child(graph.arc(led).to, "quant") : -1;
  const int number = graph.arc(inner >= 0 ? inner : led).to;
  if (graph.is(number, "few")) graph.word(number).name = "a-few";
  if (!graph.is(at, "multiple")) return;
  // "For weeks".
  if (inner >= 0 && graph.is(number, "1")) {
    graph.remove(inner, Fate::attribute);
    std::erase(graph.word(graph.arc(led).to).attributes, "@sg");
    attribute_add(graph.word(graph.arc(led).to), "@pl");
    return graph.stand_in(at, led, Fate::word);
  }
  for (const auto& [digits, word] : kPowers) {
    if (!graph.is(number, digits)) continue;
    if (inner >= 0) {
      graph.word(number).name = word;
      attribute_add(graph.word(graph.arc(led).to), "@pl");
      return graph.stand_in(at, led, Fate::word);
    }
    graph.word(at).name = word;
    graph.settle_concept(number, Fate::word);
    return graph.remove(led, Fate::word);
  }
}

// "A few steps"; what a word picks out has few alone: "these few steps", "very few steps".
void few_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "few") && graph.children(at).empty() ? graph.parent(at) : -1;
  if (led < 0 || graph.arc(led).inverse || graph.arc(led).role != "quant") return;
  const int noun = graph.arc(led).from;
  if (graph.child(noun, "poss") >= 0 || graph.is(noun, "person")) return;
  for (const int one : graph.children(noun)) {
    const int mod = graph.arc(one).to;
    if (graph.is(mod, "this") || graph.is(mod, "that") || graph.is(mod, "only")) return;
  }
  graph.word(at).name = "a-few";
}

// "I saw the others": alone and with nothing that counts it, what is other is several.
// (s / see-01 :ARG0 i :ARG1 (o / other)). Beside a noun, (b / boat :mod (o / other)), it stays an adjective: its arc is
// no argument.
void others_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "other") && graph.children(at).empty() ? graph.parent(at) : -1;
  if (led < 0 || graph.arc(led).inverse) return;
  const std::string& role = graph.arc(led).role;
  if (role.starts_with("ARG") || role == "beneficiary" || role == "accompanier") attribute_add(graph.word(at), "@pl");
}

// (w / wheat :quant (a / about :op1 (t / ton :quant 5))): about five tons of wheat.
void restricted_unit_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "op1");
  const int above = led < 0 ? -1 : graph.parent(at);
  const int unit = led < 0 ? -1 : graph.arc(led).to;
  if (above < 0 || graph.arc(above).role != "quant" || graph.arc(above).inverse || graph.children(at).size() != 1)
    return;
  const int number = has_attribute(graph.word(unit), "@measure") ? graph.child(unit, "quant") : -1;
  if (number < 0 || !graph.word(at).sense.empty() || graph.mentions(unit) > 1) return;
  const int count = graph.arc(number).to;
  graph.replace(led, at, count, "op1");
  graph.replace(number, unit, at, "quant");
  graph.lead_to(above, unit);
  attribute_add(graph.word(unit), "@pl");
}

// "One day she left": (l / leave-11 :time (d / day :quant 1)) tells of no number.
void some_day_apply(Rewriter& graph, int at) {
  constexpr std::array kTimes{"day", "night", "morning", "evening", "afternoon", "summer", "winter", "spring"};
  const int led = is_one_of(graph, at, kTimes) ? graph.child(at, "quant") : -1;
  const int above = led < 0 ? -1 : graph.parent(at);
  if (above < 0 || graph.arc(above).role != "time" || !graph.is(graph.arc(led).to, "1")) return;
  graph.word(graph.arc(led).to).name = "one";
  graph.arc(led).role = "mod";
}

// "At this" is no time; "at this time" is.
void pointing_time_apply(Rewriter& graph) {
  for (std::size_t i = 0, end = graph.meaning().arcs.size(); i < end; ++i) {
    const int led = static_cast<int>(i);
    const bool is_time = graph.arc(led).role == "time" || graph.arc(led).role == "temporal";
    const int what = graph.arc(led).to;
    const bool is_bare = (graph.is(what, "this") || graph.is(what, "that")) && graph.children(what).empty();
    if (!is_time || !is_bare || graph.arc(led).inverse || graph.arc(led).gone || graph.mentions(what) > 1) continue;
    const int time = graph.add_concept("time");
    graph.add(time, what, "mod");
    graph.lead_to(led, time);
  }
}

// "In the north", "during the day": where and when something is, by words that are adverbs elsewhere.
void pointed_apply(Rewriter& graph) {
  constexpr std::array kSides{"north", "south", "east", "west", "northeast", "northwest", "southeast", "southwest"};
  for (std::size_t i = 0, end = graph.meaning().arcs.size(); i < end; ++i) {
    const int led = static_cast<int>(i);
    const Arc one = graph.arc(led);
    if (one.gone || one.inverse || !graph.children(one.to).empty() || graph.mentions(one.to) > 1) continue;
    const bool is_side = one.role == "location" && is_one_of(graph, one.to, kSides);
    const bool is_day = one.role == "time" && graph.is(one.to, "day");
    if (!is_side && !is_day) continue;
    attribute_add(graph.word(one.to), "@def");
    const int preposition = graph.add_concept(is_side ? "in" : "during");
    graph.replace(led, one.from, preposition, one.role);
    graph.add(preposition, one.to, "op1");
  }
}

// Whoever is of a country are its people: "French people".
void people_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "person") && graph.children(at).size() == 1 ? graph.child(at, "mod") : -1;
  const bool is_known = has_attribute(graph.word(at), "@sg") || has_attribute(graph.word(at), "@pl");
  if (led >= 0 && !is_known && has_attribute(graph.word(graph.arc(led).to), "@country"))
    attribute_add(graph.word(at), "@pl");
}

// A quantity becomes its unit; without one it is the thing that is measured.
// (d / distance-quantity :quant 3 :unit (m / mile)) becomes mile.@measure with :quant 3.
void unit_apply(Rewriter& graph, int at) {
  const bool is_quantity = graph.word(at).name.ends_with("-quantity") && graph.word(at).sense.empty();
  if (const int unit = is_quantity ? graph.child(at, "unit") : -1; unit >= 0) {
    // One unit of two quantities is two words: "between two and three years".
    if (graph.mentions(graph.arc(unit).to) > 1)
      graph.lead_to(unit, graph.add_concept(std::string(graph.word(graph.arc(unit).to).name)));
    attribute_add(graph.word(graph.arc(unit).to), "@measure");
    if (has_attribute(graph.word(at), "@pl")) attribute_add(graph.word(graph.arc(unit).to), "@pl");
    graph.stand_in(at, unit, Fate::word);
  }
  if (graph.child(at, "unit") < 0) {
    // Without a unit it is the thing that is measured.
    if (graph.is(at, "monetary-quantity")) graph.word(at).name = "money";
    if (graph.is(at, "temporal-quantity")) graph.word(at).name = "time";
    if (graph.is(at, "distance-quantity")) graph.word(at).name = "distance";
  }
}

// What has nothing but a value is that value; percent is a word, and its value a number of it.
// (o / ordinal-entity :value 2) becomes 2(>ord).@ord, "second"; (u / url-entity :value "a.b") the text alone; (p /
// percentage-entity :value 5) becomes percent.@measure with :quant 5.
void entity_value_apply(Rewriter& graph, int at) {
  const bool has_value = graph.is(at, "ordinal-entity") || graph.is(at, "percentage-entity") ||
                         graph.is(at, "url-entity") || graph.is(at, "string-entity") ||
                         graph.is(at, "email-address-entity") || graph.is(at, "phone-number-entity") ||
                         graph.is(at, "score-entity") || graph.is(at, "hyperlink", "91");
  if (const int value = has_value ? graph.child(at, "value") : -1; value >= 0) {
    const int head = graph.arc(value).to;
    const bool is_ordinal = graph.is(at, "ordinal-entity");
    // "Percent" is a word, and its value a number of it; the others are their value.
    if (graph.is(at, "percentage-entity")) {
      graph.word(at).name = "percent";
      attribute_add(graph.word(at), "@measure");
      graph.replace(value, at, head, "quant");
      // "The 100 percent share": beside another article a hundred has none.
      if (graph.word(head).name == "100") graph.word(head).sense = "num";
    } else {
      if (is_ordinal) graph.word(head).sense = "ord", attribute_add(graph.word(head), "@ord");
      // "The first bridge in ten years".
      const int range = is_ordinal ? graph.child(at, "range") : -1;
      const int noun = graph.parent(at);
      if (range >= 0 && noun >= 0 && !graph.arc(noun).inverse)
        graph.replace(range, graph.arc(noun).from, graph.arc(range).to, "location");
      // "The second block from the left".
      const int start = is_ordinal ? graph.child(at, "range-start") : -1;
      if (start >= 0 && noun >= 0 && !graph.arc(noun).inverse)
        graph.replace(start, graph.arc(noun).from, graph.arc(start).to, "source");
      graph.stand_in(at, value, Fate::word);
    }
  }
}

// 1/3 is a third, 2/3 two thirds; up to tenths, as beyond them people write digits.
void fraction_apply(Concept& word) {
  constexpr std::array kParts{"third", "quarter", "fifth", "sixth", "seventh", "eighth", "ninth", "tenth"};
  constexpr std::array kCounts{"a", "two", "three", "four", "five", "six", "seven", "eight", "nine"};
  const std::string digits = word.name;
  if (!word.variable.empty() || digits.size() < 3 || digits[1] != '/' || digits[0] < '1' || digits[0] > '9') return;
  if (digits == "1/2") {
    word.name = "half";
    return;
  }
  const std::size_t count = static_cast<std::size_t>(digits[0] - '1');
  for (std::size_t part = 0; part < kParts.size(); ++part) {
    if (digits.substr(2) != std::to_string(part + 3) || count + 1 >= part + 3) continue;
    const bool is_one = count == 0;
    word.name = kCounts[count] + std::string(is_one && *kParts[part] == 'e' ? "n " : " ") + kParts[part];
    if (!is_one) word.name += 's';
  }
}

// (s / score-entity :op1 3 :op2 1): 3-1.
void score_apply(Rewriter& graph, int at) {
  const std::vector<int> sides = graph.is(at, "score-entity") ? graph.numbered(at, {"op"}) : std::vector<int>{};
  if (sides.size() != 2 || graph.children(at).size() != 2) return;
  graph.word(at).name = graph.word(graph.arc(sides[0]).to).name + "-" + graph.word(graph.arc(sides[1]).to).name;
  for (const int side : sides) graph.remove(side, Fate::word);
  // How a match ended stands behind its verb.
  const int led = graph.parent(at);
  if (led >= 0 && graph.arc(led).role == "quant" && !graph.word(graph.arc(led).from).sense.empty())
    graph.arc(led).role = "extent";
}

// Words beside a noun that determine it: each belongs to the noun, wherever the source writes it, and some go with a
// plural. A number as :mod is a name: chapter 2.
// (g / garden :mod (o / other :mod (a / any))): a bank lets "any" qualify "other", but English puts both before the
// noun, so both belong to the garden.
void determiners_apply(Rewriter& graph) {
  constexpr std::array kDetermining{"any", "some", "every", "no", "this", "that", "all", "these"};
  constexpr std::array kSeveral{"all", "both", "most", "these", "those"};
  for (int led = 0; led < static_cast<int>(graph.meaning().arcs.size()); ++led) {
    Arc& one = graph.arc(led);
    if (one.gone || one.inverse || one.role != "mod") continue;
    // "Any other garden", "all these".
    const std::string name = graph.word(one.to).name;
    const bool is_determiner = is_listed(name, kDetermining);
    const bool is_pointing = graph.is(one.from, "this") || graph.is(one.from, "that");
    const bool is_moved = (is_determiner && (graph.is(one.from, "other") || graph.is(one.from, "same"))) ||
                          (is_pointing && graph.is(one.to, "all"));
    const int above = is_moved ? graph.parent(one.from) : -1;
    if (above >= 0 && graph.arc(above).role == "mod" && !graph.arc(above).inverse)
      graph.lead_from(led, graph.arc(above).from);
    // "Many other towns".
    // "Yet another town".
    if (graph.is(one.from, "another") && name == "yet") {
      graph.word(one.from).name = "yet-another";
      graph.settle_concept(one.to, Fate::word);
      settle(graph.meaning(), one.triple, Fate::word, "quantities");
      one.gone = true;
      continue;
    }
    constexpr std::array kCounting{"many", "several", "few"};
    const int counted = graph.is(one.from, "other") && is_listed(name, kCounting) ? graph.parent(one.from) : -1;
    if (counted >= 0 && graph.arc(counted).role == "mod" && !graph.arc(counted).inverse) {
      graph.lead_from(led, graph.arc(counted).from);
      one.role = "quant";
    }
    if (graph.word(one.to).variable.empty() && is_number(name)) one.role = "number";
    // "All the time".
    const bool is_several = is_listed(name, kSeveral) && !is_uncounted(graph.word(one.from).name);
    const bool is_all_that = graph.is(one.from, "that") || graph.is(one.from, "this");
    // "All night".
    const int span = name == "all" && is_listed(graph.word(one.from).name, kSpans) ? graph.parent(one.from) : -1;
    const bool is_span = span >= 0 && (graph.arc(span).role == "duration" || graph.arc(span).role == "time") &&
                         !has_attribute(graph.word(one.from), "@pl");
    if (is_span) attribute_add(graph.word(one.from), "@sg");
    // "Both the girl and her brother".
    const bool is_both = name == "both" && graph.is(one.from, "and");
    // The noun of an event below "other" is several, too: "from all other attempts".
    if (is_several && !is_all_that && !is_uncounted(graph.word(one.from).name) &&
        (graph.word(one.from).sense.empty() || is_moved) && !is_span && !is_both)
      attribute_add(graph.word(one.from), "@pl");
  }
}

// Half, a third, two thirds: what a part of is said.
bool is_share(const std::string& name) {
  constexpr std::array kShares{"half", "third", "quarter", "fifth", "sixth", "seventh", "eighth", "ninth", "tenth"};
  const std::size_t space = name.find(' ');
  const std::string part = space == name.npos ? name : name.substr(space + 1);
  return is_listed(part, kShares) ||
         (space != name.npos && part.ends_with('s') && is_listed(part.substr(0, part.size() - 1), kShares));
}

// "More than half of the houses", "two thirds of his sheep", "most of her friends"; "all her friends". The rest of the
// noun phrase stands behind "of", so a share of what is owned or known keeps its article.
void share_apply(Rewriter& graph, int led, int number) {
  const int noun = graph.arc(led).from;
  Concept& share = graph.word(number);
  const Concept& whole = graph.word(noun);
  if (has_attribute(whole, "@measure") || !whole.sense.empty() || !share.sense.empty() || whole.variable.empty())
    return;
  const bool is_owned = graph.child(noun, "poss") >= 0;
  constexpr std::array kBefore{"all", "both"};
  if (is_owned && is_listed(share.name, kBefore)) graph.arc(led).role = "mod";
  const bool is_pointed = child_among(graph, noun, "mod", kDemonstratives) >= 0;
  // "Many of those sailors".
  constexpr std::array kPicked{"most", "lot", "many", "some"};
  // "Most of the soup".
  const bool is_of_mass = share.name == "most" && is_uncounted(whole.name);
  const bool is_most =
      is_of_mass || (is_owned && share.name == "most") || (is_pointed && is_listed(share.name, kPicked));
  if (!is_most && !is_share(share.name)) return;
  if (share.name == "lot") share.name = "a lot";
  if (!is_most && share.name != "half" && share.name.find(' ') == std::string::npos)
    share.name = (share.name == "eighth" ? "an " : "a ") + share.name;
  attribute_add(graph.word(noun), "@part");
  if (is_owned || has_attribute(whole, "@name")) return;
  if (!is_pointed) attribute_add(graph.word(noun), "@def");
  if (!is_uncounted(whole.name)) attribute_add(graph.word(noun), "@pl");
}

// "A growing number of doctors": a participle of what counts them stands in front of it.
void growing_apply(Rewriter& graph, int led) {
  constexpr std::array kCounts{"number", "amount", "share", "proportion", "part", "majority", "minority"};
  const int count = graph.arc(led).to;
  if (!is_one_of(graph, count, kCounts) || !graph.word(count).sense.empty()) return;
  const int noun = graph.arc(led).from;
  if (!is_uncounted(graph.word(noun).name) && graph.word(noun).sense.empty()) attribute_add(graph.word(noun), "@pl");
  for (const int one : graph.children(count)) {
    const int frame = graph.arc(one).to;
    constexpr std::array kMoving{"grow", "increase", "rise", "shrink", "decline", "decrease", "dwindle", "overwhelm"};
    if (!graph.arc(one).inverse || !is_one_of(graph, frame, kMoving) || !graph.children(frame).empty()) continue;
    graph.replace(one, count, frame, "mod");
    attribute_add(graph.word(frame), "@ger");
  }
}

// "Elected to the council", but "elected mayor".
void elected_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "elect", "01") ? graph.child(at, "ARG2") : -1;
  constexpr std::array kBodies{"parliament", "congress",  "senate", "council",     "assembly",
                               "board",      "committee", "house",  "legislature", "government-organization"};
  if (led < 0) return;
  const int body = graph.arc(led).to;
  if (is_one_of(graph, body, kBodies) || has_attribute(graph.word(body), "@government-organization"))
    graph.arc(led).role = "destination";
}

// "It fell by a third", "by up to 40 percent": how much something changes.
void change_apply(Rewriter& graph, int at) {
  constexpr std::array kChanging{"rise",   "fall",  "drop",    "increase", "decrease", "reduce",
                                 "cut",    "grow",  "decline", "lower",    "raise",    "expand",
                                 "shrink", "climb", "jump",    "soar",     "plunge",   "slip"};
  const int led = is_one_of(graph, at, kChanging) && !graph.word(at).sense.empty() ? graph.child(at, "ARG2") : -1;
  if (led < 0) return;
  Concept& extent = graph.word(graph.arc(led).to);
  const int within = graph.child(graph.arc(led).to, "op1");
  const bool is_range = within >= 0 && has_attribute(graph.word(graph.arc(within).to), "@measure");
  const bool is_part = extent.sense.empty() && !extent.variable.empty() && is_share(extent.name);
  if (!is_range && !is_part) return;
  if (is_part && extent.name != "half" && extent.name.find(' ') == std::string::npos) extent.name = "a " + extent.name;
  graph.arc(led).role = "circumstance";
  attribute_add(extent, "@p_by");
}

// Numbers other than one go with a plural, and words that say how many.
// (s / star :quant 3) has @pl, (s / star :quant 1) @sg. A frame that a bank gives instead of a number, "how many
// stars", counts as many.
void counted_apply(Rewriter& graph) {
  constexpr std::array kMany{"many", "few",  "several", "multiple",    "various",    "numerous",
                             "all",  "both", "most",    "amr-unknown", "umr-unknown"};
  for (int led = 0; led < static_cast<int>(graph.meaning().arcs.size()); ++led) {
    const Arc& one = graph.arc(led);
    if (one.gone || one.inverse || one.role != "quant") continue;
    // "Only four": the number stands below the word that restricts it. "One or two": the last one counts.
    const std::vector<int> counts = graph.is(one.to, "or") ? graph.numbered(one.to, {"op"}) : std::vector<int>{};
    const int inner = counts.empty() ? graph.child(one.to, "op1") : counts.back();
    const Concept& number = graph.word(inner >= 0 ? graph.arc(inner).to : one.to);
    const bool is_plain = number.sense.empty() && is_number(number.name);
    const bool is_lot =
        number.name == "lot" && graph.word(one.from).sense.empty() && !is_uncounted(graph.word(one.from).name);
    constexpr std::array kPeople{"person",  "man",     "woman",   "child", "boy",     "girl",   "friend",
                                 "farmer",  "soldier", "animal",  "tree",  "house",   "book",   "flower",
                                 "bird",    "dog",     "country", "city",  "company", "letter", "question",
                                 "problem", "place",   "thing",   "word",  "idea"};
    const bool is_some = number.name == "some" && is_one_of(graph, one.from, kPeople);
    // "Most of the money was".
    const bool is_amount = (number.name == "all" || number.name == "most" || number.name.ends_with("-unknown")) &&
                           is_uncounted(graph.word(one.from).name);
    // "More books".
    const bool is_more = number.name == "more" && inner < 0 && graph.word(one.from).sense.empty() &&
                         !is_uncounted(graph.word(one.from).name) && !has_attribute(graph.word(one.from), "@measure");
    // "Thirty percent of the boats".
    const bool is_percentage =
        number.name == "percent" && graph.word(one.from).sense.empty() && !is_uncounted(graph.word(one.from).name);
    const bool is_many = is_lot || is_more || is_percentage || is_some || (is_listed(number.name, kMany) && !is_amount);
    if (is_plain || is_many) attribute_add(graph.word(one.from), number.name == "1" ? "@sg" : "@pl");
    share_apply(graph, led, inner >= 0 ? graph.arc(inner).to : one.to);
    growing_apply(graph, led);
  }
}

}  // namespace

// (t / temporal-quantity :quant 3 :unit (y / year)) becomes year.@measure with the quantity below it. Number is settled
// here, too: three years, all years, but one year. Loops follow one another as each looks at what the one before has made.
void step_quantities(Meaning& meaning) {
  Rewriter graph(meaning, "quantities");
  pointing_time_apply(graph);
  pointed_apply(graph);
  for (int at = 0, end = graph.count(); at < end; ++at) {
    unit_apply(graph, at);
    entity_value_apply(graph, at);
    score_apply(graph, at);
    fraction_apply(graph.word(at));
  }
  // Behind the loop above, which has made a unit of each quantity.
  for (int at = 0, end = graph.count(); at < end; ++at) {
    if (graph.is(at, "rate-entity", "91")) rate_apply(graph, at);
    if (graph.is(at, "relative-position")) position_apply(graph, at);
  }
  determiners_apply(graph);
  counted_apply(graph);
  for (int at = 0; at < graph.count(); ++at) {
    people_apply(graph, at);
    restricted_unit_apply(graph, at);
    multiple_apply(graph, at);
    few_apply(graph, at);
    change_apply(graph, at);
    elected_apply(graph, at);
    others_apply(graph, at);
    some_day_apply(graph, at);
  }
  for (int at = 0; at < graph.count(); ++at) {
    const int led = graph.parent(at);
    const bool is_restricted = led >= 0 && graph.arc(led).role == "op1" &&
                               graph.word(graph.arc(led).from).sense.empty() && graph.word(at).name.size() > 4;
    if (led >= 0 && (graph.arc(led).role == "quant" || is_restricted) && is_number(graph.word(at).name)) {
      graph.word(at).name = number_text(graph.word(at).name);
    }
  }
}

namespace {

// True for somebody who is called by an office or by what he is to others.
// (p / person :ARG0-of (h / have-org-role-91 :ARG2 m)): the office will be the word for this person, so no pronoun may
// be.
bool has_role(Rewriter& graph, int at) {
  for (const int led : graph.children(at)) {
    const std::string& frame = graph.word(graph.arc(led).to).name;
    if (frame.starts_with("have-") && frame.ends_with("-role")) return true;
  }
  return false;
}

// A noun that nothing counts is several.
void several_apply(Rewriter& graph, int at) {
  Concept& word = graph.word(at);
  constexpr std::array kGroups{"group", "crowd", "people", "family", "crew", "team", "public", "population", "debris"};
  const bool is_noun = word.sense.empty() && !word.variable.empty() && !has_attribute(word, "@name") &&
                       !has_attribute(word, "@sg") && !is_personal_pronoun(graph, at) && !is_unknown(graph, at);
  constexpr std::array kJoining{"and", "or", "this", "that", "these", "those", "other", "thing"};
  if (is_noun && graph.child(at, "quant") < 0 && !is_listed(word.name, kGroups) && !is_listed(word.name, kJoining))
    attribute_add(word, "@pl");
}

// Among and between is several, and so is what something breaks into.
void many_apply(Rewriter& graph, int at) {
  const int within =
      graph.is(at, "among") || (graph.is(at, "between") && graph.child(at, "op2") < 0) ? graph.child(at, "op1") : -1;
  if (within >= 0) several_apply(graph, graph.arc(within).to);
  constexpr std::array kBreaking{"break", "split", "divide", "cut", "tear", "smash", "shatter", "chop", "slice", "rip"};
  constexpr std::array kPieces{"piece",    "part",  "half",  "bit",   "slice",
                               "fragment", "strip", "chunk", "shred", "section"};
  for (const char* role : {"ARG2", "ARG3", "consequence", "destination"}) {
    const int led = is_one_of(graph, at, kBreaking) ? graph.child(at, role) : -1;
    if (led >= 0 && is_one_of(graph, graph.arc(led).to, kPieces)) several_apply(graph, graph.arc(led).to);
  }
  // Each of several people has a hand: their hands.
  const int owner = graph.child(at, "part", true) >= 0 ? graph.child(at, "part", true) : graph.child(at, "poss");
  const bool is_theirs = owner >= 0 && (graph.is(graph.arc(owner).to, "they") || graph.is(graph.arc(owner).to, "we") ||
                                        has_attribute(graph.word(graph.arc(owner).to), "@pl"));
  constexpr std::array kBody{"head",   "hand", "eye",  "ear",   "leg",   "arm",   "foot",     "face",
                             "nose",   "back", "neck", "heart", "mouth", "lip",   "shoulder", "knee",
                             "finger", "tail", "wing", "body",  "brain", "tooth", "chest",    "throat"};
  if (is_theirs && is_one_of(graph, at, kBody)) several_apply(graph, at);
}

// "A dark blue dress": how dark a colour is stands beside it as it is. "For a long time".
void plain_word_apply(Rewriter& graph, int at) {
  // "Out of the box."
  if (graph.is(at, "out") && graph.child(at, "op1") >= 0) graph.word(at).name = "out-of";
  constexpr std::array kColours{"blue", "green", "red", "brown", "grey", "gray", "yellow", "purple", "pink", "orange"};
  constexpr std::array kShades{"dark", "light", "bright", "pale", "deep"};
  const int shade = is_one_of(graph, at, kColours) ? child_among(graph, at, "mod", kShades) : -1;
  const int above = shade < 0 ? -1 : graph.parent(at);
  if (above >= 0 && graph.children(graph.arc(shade).to).empty() && graph.children(at).size() == 1) {
    // The shade first, as both stand in the order of the graph.
    const bool is_of_noun = graph.arc(above).role == "mod" || graph.arc(above).inverse;
    if (is_of_noun) graph.lead_from(shade, graph.arc(above).from), graph.swap_places(shade, above);
  }
  // "A matter of great importance".
  constexpr std::array kWorth{"importance", "significance", "consequence", "value",        "interest", "beauty",
                              "strength",   "quality",      "courage",     "intelligence", "talent",   "wealth"};
  const int worth = graph.word(at).sense.empty() ? child_among(graph, at, "mod", kWorth) : -1;
  if (worth >= 0 && graph.child(graph.arc(worth).to, "mod") >= 0) graph.arc(worth).role = "consist-of";
  // "For the first time".
  const int when = graph.child(at, "time");
  const int turn = when >= 0 && graph.is(graph.arc(when).to, "time") ? graph.arc(when).to : -1;
  const bool is_turn =
      turn >= 0 && (graph.child(turn, "ord") >= 0 || child_among(graph, turn, "mod", std::array{"last", "only"}) >= 0);
  // "The first time that she saw it, she laughed."
  const bool is_told_of = turn >= 0 && graph.child(turn, "time", true) >= 0;
  if (is_turn && is_told_of) attribute_add(graph.word(turn), "@bare");
  if (is_turn && is_event(graph, at) && !is_told_of) {
    const int preposition = graph.add_concept("for");
    graph.add(preposition, turn, "op1");
    graph.lead_to(when, preposition);
  }
  // "She left without her hat."
  const int lacking = graph.child(at, "manner");
  const int frame = lacking >= 0 && graph.is(graph.arc(lacking).to, "have", "03") ? graph.arc(lacking).to : -1;
  const int owner = frame >= 0 && has_attribute(graph.word(frame), "@neg") ? graph.child(frame, "ARG0") : -1;
  const int lacked = owner >= 0 && graph.mentions(frame) == 1 && graph.mentions(graph.arc(owner).to) > 1
                         ? graph.child(frame, "ARG1")
                         : -1;
  if (lacked >= 0 && graph.children(frame).size() == 2) {
    graph.word(frame).name = "without";
    graph.word(frame).sense.clear();
    graph.word(frame).attributes.clear();
    graph.remove(owner, Fate::relation);
    graph.arc(lacked).role = "op1";
  }
  // "Do as you like."
  constexpr std::array kLiking{"like", "want", "please", "wish", "choose"};
  const int way = graph.child(at, "manner");
  const bool is_liked = way >= 0 && is_one_of(graph, graph.arc(way).to, kLiking) &&
                        graph.child(graph.arc(way).to, "ARG0") >= 0 && graph.child(graph.arc(way).to, "ARG1") < 0;
  if (is_liked) graph.arc(way).role = "likeness";
  const int lasting = graph.child(at, "duration");
  const int how_long = lasting < 0 ? -1 : graph.arc(lasting).to;
  if (how_long >= 0 && graph.word(how_long).name == "long" && graph.children(how_long).empty() &&
      graph.mentions(how_long) == 1) {
    graph.word(how_long).name = "for-a-long-time";
    graph.word(how_long).sense.clear();
    graph.word(how_long).attributes.clear();
  }
}

// (w / water-01 :ARG1 (f / flower-01)): a thing whose name is a verb as well, of which no deed is told.
void plain_thing_apply(Rewriter& graph, int at) {
  constexpr std::array kThings{"flower", "blossom", "fence",  "bridge", "seed",   "stamp",  "map",   "butter", "oil",
                               "water",  "fuel",    "salt",   "dust",   "house",  "ship",   "nail",  "bottle", "saddle",
                               "bomb",   "wine",    "shadow", "fish",   "mirror", "garden", "fruit", "root",   "wall"};
  const int led = is_one_of(graph, at, kThings) && !graph.word(at).sense.empty() ? graph.parent(at) : -1;
  if (led < 0 || graph.arc(led).inverse || !is_core_role(graph.arc(led).role) || !graph.children(at).empty()) return;
  if (graph.word(at).attributes.size() > 1) return;
  graph.word(at).sense.clear();
  std::erase(graph.word(at).attributes, "@v");
}

// Whoever is fed are the poor, not poorly; but "you grow old".
void poor_apply(Rewriter& graph, int led) {
  constexpr std::array kPeople{"poor", "rich", "young", "old",  "homeless", "unemployed", "elderly",
                               "sick", "dead", "blind", "deaf", "disabled", "wealthy",    "needy"};
  constexpr std::array kTurning{"grow", "become", "get", "turn", "stay", "remain", "look", "feel", "seem", "sound"};
  const Arc& one = graph.arc(led);
  if (is_one_of(graph, one.to, kPeople) && one.role.starts_with("ARG") && graph.word(one.to).sense.empty() &&
      !is_one_of(graph, one.from, kTurning))
    attribute_add(graph.word(one.to), "@people");
}

// Words that mean something else together than one by one.
void idiom_apply(Rewriter& graph, int at) {
  // "Far from the city", "away from it".
  const int distant = graph.is(at, "far") || graph.is(at, "away") ? graph.child(at, "op1") : -1;
  if (distant >= 0) graph.arc(distant).role = "source";
  for (const int led : graph.children(at)) {
    const int word = graph.arc(led).to;
    if (graph.arc(led).inverse || !graph.children(word).empty()) continue;
    const std::string& role = graph.arc(led).role;
    // (i / institution :mod (o / only :polarity -)): not only the institution.
    if (role == "mod" && graph.mentions(word) == 1 && graph.is(word, "only") &&
        has_attribute(graph.word(word), "@neg")) {
      graph.word(word).name = "not-only";
      std::erase(graph.word(word).attributes, "@neg");
    }
    poor_apply(graph, led);
  }
  // "In the middle of the night".
  constexpr std::array kParts{"middle", "center", "centre",    "edge", "end",    "bottom",
                              "start",  "rest",   "beginning", "half", "corner", "outskirts"};
  const int parted = is_one_of(graph, at, kParts) && graph.word(at).sense.empty() ? graph.child(at, "op1") : -1;
  if (parted >= 0 && graph.child(at, "op2") < 0) graph.arc(parted).role = "part-of";
  // "Alone in the darkness": a place is no quality.
  const int within_it = graph.is(at, "dark") && graph.children(at).empty() ? graph.parent(at) : -1;
  if (within_it >= 0 && graph.arc(within_it).role == "location") graph.word(at).name = "darkness";
  // (t / thing :example-of (t2 / thing) :mod (s / such)): such an example.
  const int of = graph.is(at, "thing") ? graph.child(at, "example", true) : -1;
  if (of >= 0 && graph.is(graph.arc(of).to, "thing") && graph.children(graph.arc(of).to).empty() &&
      graph.mentions(graph.arc(of).to) == 1) {
    graph.settle_concept(graph.arc(of).to, Fate::word);
    graph.remove(of, Fate::word);
    graph.word(at).name = "example";
  }
  // "Exactly", she said: an answer in one word is an adverb.
  constexpr std::array kAnswers{"exact", "absolute", "precise", "definite", "certain", "probable", "obvious",
                                "total", "natural",  "indeed",  "sure",     "perfect", "literal",  "honest"};
  const int said = graph.parent(at);
  const bool is_answer = graph.word(at).sense.empty() && is_listed(graph.word(at).name, kAnswers) &&
                         graph.children(at).empty() && (said < 0 || graph.is(graph.arc(said).from, "say", "01"));
  if (is_answer) attribute_add(graph.word(at), "@answer");
  many_apply(graph, at);
  // (t / that :ARG0-of (w / watch-01)): those that watched.
  if (graph.is(at, "that") && graph.child(at, "ARG0", true) >= 0) {
    attribute_add(graph.word(at), "@pl");
    attribute_add(graph.word(at), "@person");
    // "Many people who want it": a number has no pronoun behind it.
    graph.word(at).name = graph.child(at, "quant") >= 0 ? "person" : "those";
  }
  // (w / way :mod (a / all) :destination (h / home)): all the way home.
  const int every = graph.is(at, "way") ? graph.child(at, "mod") : -1;
  if (every >= 0 && graph.is(graph.arc(every).to, "all") && graph.mentions(graph.arc(every).to) == 1) {
    graph.word(at).name = "all-the-way";
    graph.settle_concept(graph.arc(every).to, Fate::word);
    return graph.remove(every, Fate::word);
  }
  // (t / time :mod (a / all)): all the time.
  const int above = graph.is(at, "time") && graph.children(at).size() == 1 ? graph.parent(at) : -1;
  const int all = above < 0 ? -1 : graph.child(at, "mod");
  if (all < 0 || graph.arc(above).inverse || !graph.is(graph.arc(all).to, "all")) return;
  const std::string& role = graph.arc(above).role;
  if (role != "frequency" && role != "duration" && role != "time" && role != "temporal") return;
  graph.word(at).name = "all-the-time";
  graph.word(at).attributes.clear();
  graph.settle_concept(graph.arc(all).to, Fate::word);
  graph.remove(all, Fate::word);
}

// (w / woman :mod (r / rest)): the rest of the women.
// The part becomes the head and the whole stands behind it, as in "the top of the tree": banks have it the other way
// round.
void rest_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "mod");
  if (led < 0 || !graph.is(graph.arc(led).to, "rest") || graph.mentions(graph.arc(led).to) > 1) return;
  const int rest = graph.arc(led).to;
  graph.redirect(at, rest);
  attribute_add(graph.word(rest), "@several");
  graph.replace(led, rest, at, "part-of");
  attribute_add(graph.word(at), "@pl");
  attribute_add(graph.word(at), "@def");
}

// (b / bird :mod (k / kind :mod (a / all))): all kinds of birds. What has nothing beside it is no such head: "kind".
void kind_apply(Rewriter& graph, int at) {
  constexpr std::array kKinds{"kind", "type", "sort", "breed", "brand", "genre", "species", "variety"};
  constexpr std::array kManyKinds{"all", "many", "several", "various", "different", "other", "these", "those", "both"};
  const int led = graph.word(at).sense.empty() && !has_attribute(graph.word(at), "@name") ? graph.child(at, "mod") : -1;
  const int kind = led < 0 ? -1 : graph.arc(led).to;
  if (kind < 0 || !is_one_of(graph, kind, kKinds) || !graph.word(kind).sense.empty() || graph.mentions(kind) > 1)
    return;
  const std::vector<int> below = graph.children(kind);
  if (below.empty() || is_personal_pronoun(graph, at)) return;
  bool is_several = has_attribute(graph.word(kind), "@pl");
  for (const int one : below) {
    is_several |= is_listed(graph.word(graph.arc(one).to).name, kManyKinds);
    if (graph.arc(one).inverse && graph.arc(one).role == "mod") return;
  }
  graph.redirect(at, kind);
  graph.replace(led, kind, at, "part-of");
  if (is_several) attribute_add(graph.word(kind), "@pl");
  attribute_add(graph.word(at), is_several && !is_uncounted(graph.word(at).name) ? "@pl" : "@noart");
}

// "Some person" is someone, "every thing" everything. "Some people", a plural, stays what it is.
void someone_apply(Rewriter& graph, int at) {
  const bool is_person = graph.is(at, "person") || graph.is(at, "individual-person");
  if (!is_person && !graph.is(at, "thing")) return;
  // "Some more questions": a frame below names the things.
  const int named = is_person ? -1 : graph.child(at, "ARG1", true);
  if (named >= 0 && graph.children(graph.arc(named).to).empty() && graph.children(at).size() > 2) return;
  for (const int led : graph.children(at)) {
    constexpr std::array kWords{"some", "any", "every", "no"};
    const std::string word = graph.word(graph.arc(led).to).name;
    if (has_attribute(graph.word(at), "@pl") && word != "every") continue;
    const bool is_any = is_listed(word, kWords);
    if (graph.arc(led).role != "mod" || !is_any || !graph.children(graph.arc(led).to).empty()) continue;
    graph.settle_concept(graph.arc(led).to, Fate::word);
    graph.remove(led, Fate::word);
    graph.word(at).name = word + (is_person ? "one" : "thing");
    return;
  }
}

}  // namespace

// Any word can stand in such a role, so the dictionary says it, as where a bank makes a concept of it (beneath :op1 mat).
// Read from below the role stays: a table may have a label for it.
void step_prepositions(Meaning& meaning) {
  Rewriter graph(meaning, "prepositions");
  constexpr std::string_view kBefore = "prep-";
  for (int at = 0, end = static_cast<int>(meaning.arcs.size()); at < end; ++at) {
    const Arc one = graph.arc(at);
    if (one.gone || one.inverse || one.role.size() == kBefore.size() || !one.role.starts_with(kBefore)) continue;
    const int preposition = graph.add_concept(one.role.substr(kBefore.size()));
    graph.replace(at, one.from, preposition, "prep");
    graph.add(preposition, one.to, "op1");
  }
}

// (p / person :mod (s / some)) is someone; (p / person :refer-person 3rd :refer-number plural) is they. Only what stands
// alone becomes a pronoun: whatever is said of a person must still have a word to stand with.
void step_pronouns(Meaning& meaning) {
  Rewriter graph(meaning, "pronouns");
  for (int at = 0; at < graph.count(); ++at) someone_apply(graph, at);
  for (int at = 0, end = graph.count(); at < end; ++at) {
    rest_apply(graph, at);
    kind_apply(graph, at);
    plain_word_apply(graph, at);
    plain_thing_apply(graph, at);
    idiom_apply(graph, at);
    Concept& word = graph.word(at);
    const int counted = word.name == "thing" && word.sense.empty() ? graph.child(at, "quant") : -1;
    if (counted >= 0 && !has_attribute(word, "@name")) {
      // "He knows much": the quantity stands for the thing.
      constexpr std::array kStanding{"much", "lot", "enough", "more"};
      const int quantity = graph.arc(counted).to;
      const std::string& name = graph.word(quantity).name;
      const bool is_standing = is_listed(name, kStanding);
      if (is_standing && graph.mentions(quantity) == 1) graph.stand_in(at, counted, Fate::word);
      continue;
    }
    // Who speaks, and to whom, is never a person, whatever is said of him: (p / person :refer-person 1st :refer-number
    // plural :mod (a / all)) is "we all".
    const bool is_speaking = word.sense.empty() && (word.name == "person" || word.name == "individual-person") &&
                             (has_attribute(word, "@p1") || has_attribute(word, "@p2")) &&
                             !has_attribute(word, "@name") && !has_role(graph, at);
    if (is_speaking && !graph.children(at).empty()) {
      word.name = has_attribute(word, "@p2") ? "you" : has_attribute(word, "@pl") ? "we" : "i";
      continue;
    }
    // What a thing is about that nobody tells is not said.
    const int about = word.name == "thing" && word.sense.empty() && word.attributes.empty() &&
                              graph.children(at).empty() && graph.mentions(at) == 1
                          ? graph.parent(at)
                          : -1;
    if (about >= 0 && graph.arc(about).role == "topic" && !graph.arc(about).inverse) {
      graph.settle_concept(at, Fate::left_out);
      graph.remove(about, Fate::left_out);
      continue;
    }
    // An event of which nothing is said was spoken of before.
    if (word.name == "event" && word.sense.empty() && graph.children(at).empty()) word.name = "that";
    const bool is_bare =
        word.sense.empty() && graph.children(at).empty() &&
        (word.name == "person" || word.name == "thing" || word.name == "animal" || word.name == "individual-person");
    if (!is_bare) continue;
    // The person comes from the table of roles, which has made @p1, @p2, @p3 of :refer-person, and @pl of
    // :refer-number.
    const bool is_many = has_attribute(word, "@pl");
    const char* name = nullptr;
    if (has_attribute(word, "@p1")) name = is_many ? "we" : "i";
    if (has_attribute(word, "@p2")) name = "you";
    if (has_attribute(word, "@p3")) name = is_many ? "they" : word.name == "person" ? "he" : "it";
    // UMR's thing of which nothing is said stands for what was spoken of.
    if (word.name == "thing" && name == nullptr && !is_many && graph.parent(at) >= 0) name = "it";
    if (name != nullptr) word.name = name;
  }
}

}  // namespace lexon
