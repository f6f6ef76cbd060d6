// The step about frames of people: offices, relations.
#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {

namespace {

// An office: the roles of who holds it, of what it belongs to, and of its title; the two numberings of the frame differ.
// `role` ties the title to what it belongs to.
// A bank says of a person what he is to a group or to another person: (p / person :ARG0-of (h / have-org-role-91 :ARG1
// (t / town) :ARG2 (m / mayor))) is the mayor of the town, and (h / have-rel-role-91 :ARG0 p :ARG1 i :ARG2 (f /
// friend)) makes p my friend. In sense 92 and in have-role all numbers are one higher.
struct Office {
  const char* name;
  const char* sense;
  const char* holder;
  const char* whole;
  const char* title;
  const char* role;
};

constexpr Office kOffices[] = {
    {"have-org-role", "91", "ARG0", "ARG1", "ARG2", "org"},  {"have-org-role", "92", "ARG1", "ARG2", "ARG3", "org"},
    {"have-rel-role", "91", "ARG0", "ARG1", "ARG2", "poss"}, {"have-rel-role", "92", "ARG1", "ARG2", "ARG3", "poss"},
    {"have-role", "91", "ARG1", "ARG2", "ARG3", "org"},
};

// What a name is called besides, behind it: "Kim, the mayor of Oslo". A comma closes it where more will follow.
// In front of a name stands a bare noun, Mayor Brown; what has words of its own behind it, or several in front, would
// be a heap there.
void stand_behind(Rewriter& graph, int led, int named, int title) {
  const int above = graph.parent(named);
  graph.replace(led, named, title, "apposition");
  attribute_add(graph.word(title), "@def");
  const int clause = above >= 0 && !graph.arc(above).inverse ? graph.arc(above).from : -1;
  const std::string role = clause < 0 ? "" : graph.arc(above).role;
  const bool is_subject = role == "ARG0" || role == "domain" || (role == "ARG1" && graph.child(clause, "ARG0") < 0);
  // "They met Kim, the mayor of Rome, on Monday".
  constexpr std::array kBehind{"time", "location", "duration"};
  const bool is_inside = clause >= 0 && std::any_of(kBehind.begin(), kBehind.end(), [&](const char* one) {
                           const int circumstance = graph.child(clause, one);
                           return circumstance >= 0 && graph.word(graph.arc(circumstance).to).sense.empty();
                         });
  // A relative clause behind the name brings a comma of its own.
  const std::vector<int> below = graph.children(named);
  const bool is_last = std::none_of(below.begin(), below.end(), [&](int one) { return graph.arc(one).inverse; });
  if ((is_subject || is_inside) && is_last) attribute_add(graph.word(title), "@closed");
}

// True for what no noun may have in front of it: several words, or what comes behind its own noun.
bool has_words_behind(Rewriter& graph, int at) {
  constexpr std::array kBehind{"mod", "part-of", "org", "poss", "location", "source", "topic"};
  const std::vector<int> below = graph.children(at);
  return std::any_of(below.begin(), below.end(), [&](int led) {
    const Arc& one = graph.arc(led);
    return one.inverse ? !graph.children(one.to).empty() : is_listed(one.role, kBehind);
  });
}

// Parties have a noun for whoever is of them, other groups have none: "a Green", but "a member of the choir".
bool is_party(const Concept& group) {
  return has_attribute(group, "@political-party") || has_attribute(group, "@political-organization");
}

// Whoever is of the Green Party is a Green.
void party_to_member(Concept& party) {
  if (party.name.ends_with(" Party")) party.name.resize(party.name.size() - 6);
  if (party.name == "Democratic") party.name = "Democrat";
  for (const char* mark : {"@name", "@the"}) std::erase(party.attributes, mark);
}

// The arcs to who holds an office, to what it belongs to, and to what it is called; -1 for those that are missing.
struct OfficeArcs {
  int holds;
  int whole;
  int titled;
};

// (h / have-org-role-91 :ARG0 p :ARG1 c :ARG2 (m / mayor)): p holds it, it belongs to c, and m is its title.
OfficeArcs office_arcs(Rewriter& graph, int at, const Office& office) {
  OfficeArcs found{graph.argument(at, office.holder), graph.argument(at, office.whole),
                   graph.argument(at, office.title)};
  // Annotators mix the two numberings: who holds it comes first, its name last.
  if (found.holds < 0 || graph.argument(at, "ARG0") >= 0 || (found.titled < 0 && graph.argument(at, "ARG3") >= 0)) {
    const bool from_zero = graph.argument(at, "ARG0") >= 0;
    found.holds = graph.argument(at, from_zero ? "ARG0" : "ARG1");
    found.whole = graph.argument(at, from_zero ? "ARG1" : "ARG2");
    found.titled = graph.argument(at, from_zero ? "ARG2" : "ARG3");
    if (from_zero && found.titled < 0) found.titled = graph.argument(at, "ARG3");
  }
  return found;
}

// No office is named: whoever is of a group. As the statement: "she is a Whig".
// `holds` and `whole` are the arcs to the holder and to the group: (p / person :ARG0-of (h / have-org-role-91 :ARG1 (w
// / whigs))) has no ARG2. Above the frame the holder stays and has the group with the office's role; below it the group
// takes the place of the frame.
void group_apply(Rewriter& graph, int at, const Office& office, int holds, int whole) {
  const int holder = graph.other(holds, at);
  const bool holder_above = graph.arc(holds).to == at;
  if (whole < 0 || graph.arc(whole).from != at) return;
  if (!holder_above) {
    // "She is a Whig".
    const int group = graph.arc(whole).to;
    if (is_party(graph.word(group)) && graph.mentions(group) == 1) party_to_member(graph.word(group));
    graph.settle_concept(at, Fate::relation);
    graph.replace(holds, group, holder, "domain");
    graph.remove(whole, Fate::relation);
    graph.redirect(at, group);
    return graph.move_children(at, group);
  }
  graph.settle_concept(at, Fate::relation);
  graph.remove(holds, Fate::relation);
  const Concept& group = graph.word(graph.arc(whole).to);
  if (is_party(group) && graph.is(holder, "person") && graph.mentions(graph.arc(whole).to) == 1) {
    party_to_member(graph.word(graph.arc(whole).to));
    graph.settle_concept(graph.arc(whole).to, Fate::word);
    graph.remove(whole, Fate::word);
    graph.word(holder).name = graph.word(graph.arc(whole).to).name;
    // Of whom nothing else is said, all are meant: "Greens like trees".
    if (graph.children(holder).empty() && !has_attribute(graph.word(holder), "@sg"))
      attribute_add(graph.word(holder), "@pl");
  } else {
    graph.replace(whole, holder, graph.arc(whole).to, office.role);
  }
  graph.move_children(at, holder);
}

// (p / person :ARG0-of (h / have-org-role-91 :ARG2 (m / mayor))): "the mayor". A person of whom no name is given is what
// he is called, and the concept of the person is no word.
void holder_becomes_title(Rewriter& graph, int titled, int holder, int title) {
  graph.remove(titled, Fate::word);
  graph.settle_concept(holder, Fate::word);
  Concept& person = graph.word(holder);
  person.name = graph.word(title).name;
  person.sense = graph.word(title).sense;
  person.triple = graph.word(title).triple;
  graph.move_children(title, holder);
  graph.redirect(title, holder);
}

// Who has no name is called by the office; a name keeps it as a title.
// Three ways: Mayor Brown (a name keeps the office as :title), Brown, the mayor of Oslo (as :apposition, if the office
// has a whole to name), and the mayor of Oslo (a person without a name becomes the office, whose concept then is no
// word of its own).
void call_by_office(Rewriter& graph, int at, const Office& office, const OfficeArcs& arcs) {
  const int holder = graph.other(arcs.holds, at);
  const int title = graph.other(arcs.titled, at);
  const int whole = arcs.whole;
  const bool is_named = has_attribute(graph.word(holder), "@name") || !graph.is(holder, "person");
  graph.remove(arcs.holds, Fate::relation);
  const bool has_whole = whole >= 0 && graph.arc(whole).from == at;
  const bool is_behind =
      has_attribute(graph.word(holder), "@name") && has_whole && !is_personal_pronoun(graph, graph.arc(whole).to);
  const bool is_of_title = has_attribute(graph.word(holder), "@name");
  if (has_whole) graph.replace(whole, is_of_title ? title : holder, graph.arc(whole).to, office.role);
  if (is_behind) {
    // "Kim, the mayor of Oslo, ..."
    stand_behind(graph, arcs.titled, holder, title);
  } else if (is_named) {
    graph.replace(arcs.titled, holder, title, "title");
  } else {
    for (const std::string& attribute : graph.word(title).attributes) attribute_add(graph.word(holder), attribute);
    holder_becomes_title(graph, arcs.titled, holder, title);
  }
  graph.move_children(at, holder);
}

// Words of the office that are written beside it.
void title_words_apply(Rewriter& graph, int at, int titled) {
  if (titled < 0 || graph.arc(titled).from != at) return;
  // (m / minister :topic (f / finance)): "the finance minister".
  const int title = graph.arc(titled).to;
  const int field = graph.child(title, "topic");
  const bool is_field = field >= 0 && graph.children(graph.arc(field).to).empty() &&
                        graph.word(graph.arc(field).to).sense.empty() && graph.mentions(graph.arc(field).to) == 1;
  if (is_field) graph.arc(field).role = "mod";
  // "The former mayor": when he was it belongs to the office.
  constexpr std::array kOfficeTimes{"former", "current", "future", "present", "then", "previous", "late", "longtime"};
  const int when = graph.child(at, "time");
  if (when >= 0 && is_one_of(graph, graph.arc(when).to, kOfficeTimes) && graph.children(graph.arc(when).to).empty())
    graph.replace(when, title, graph.arc(when).to, "mod");
}

// The title takes the place of the frame, and what it belongs to stands beside it: "the mayor of Oslo".
void title_stands_in(Rewriter& graph, int at, const Office& office, const OfficeArcs& arcs) {
  const int title = graph.other(arcs.titled, at);
  graph.remove(arcs.titled, Fate::relation);
  graph.redirect(at, title);
  if (arcs.whole >= 0) graph.replace(arcs.whole, title, graph.other(arcs.whole, at), office.role);
  graph.move_children(at, title);
}

// The frame is the statement: "she is the mayor of Oslo".
void office_stated(Rewriter& graph, int at, const Office& office, const OfficeArcs& arcs) {
  const int holder = graph.other(arcs.holds, at);
  const int title = graph.other(arcs.titled, at);
  if (is_unknown(graph, holder)) attribute_add(graph.word(holder), "@wh_who");
  graph.replace(arcs.holds, title, holder, "domain");
  title_stands_in(graph, at, office, arcs);
  // Of some offices there is one.
  constexpr std::array kOnly{"president", "head",    "leader",    "director", "mayor",  "king",    "queen",
                             "chairman",  "captain", "emperor",   "founder",  "owner",  "author",  "boss",
                             "chief",     "pope",    "commander", "father",   "mother", "husband", "wife"};
  if (arcs.whole >= 0 && is_listed(graph.word(title).name, kOnly)) attribute_add(graph.word(title), "@def");
}

// An office with a title, whose holder stands below it in the source: he may be nobody that the sentence speaks of
// besides, else the office is said of him.
void office_below(Rewriter& graph, int at, const Office& office, const OfficeArcs& arcs) {
  const int holder = graph.other(arcs.holds, at);
  const bool is_person = graph.is(holder, "person");
  // (f / find-01 :ARG0 y :ARG1 (h / have-rel-role-91 :ARG0 (p / person) :ARG1 y :ARG2 (f2 / friend))): "you found a
  // friend", who is the person.
  const int above = graph.parent(at);
  const bool is_met = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG1";
  if (is_met && is_person && graph.children(holder).empty() && graph.mentions(holder) == 1) {
    graph.settle_concept(holder, Fate::word);
    graph.remove(arcs.holds, Fate::word);
    return title_stands_in(graph, at, office, arcs);
  }
  // (w / woman :ARG1-of (h / have-rel-role-91 :ARG0 (p / person :ARG1-of (l / lose-02)) :ARG2 (h2 / husband))): "a woman
  // with a husband who was lost", whose husband he is stands above.
  const bool is_whole_above = arcs.whole >= 0 && graph.arc(arcs.whole).to == at && graph.arc(arcs.whole).inverse;
  if (is_whole_above && is_person && graph.mentions(at) == 1) {
    graph.remove(arcs.holds, Fate::relation);
    holder_becomes_title(graph, arcs.titled, holder, graph.other(arcs.titled, at));
    graph.replace(arcs.whole, graph.arc(arcs.whole).from, holder, "poss", true);
    return graph.move_children(at, holder);
  }
  office_stated(graph, at, office, arcs);
}

// Either the holder stands above, and is called by the office; or the frame is the statement, "she is the mayor". A holder
// with a name keeps it, and the office stands beside it as a title; another becomes the office.
void office_apply(Rewriter& graph, int at, const Office& office) {
  if (graph.children(at).empty() && graph.mentions(at) == 1) {
    // A role that nobody has of nothing.
    graph.settle_concept(at, Fate::left_out);
    return graph.remove(graph.parent(at), Fate::left_out);
  }
  OfficeArcs arcs = office_arcs(graph, at, office);
  title_words_apply(graph, at, arcs.titled);
  if (arcs.titled < 0 && std::string_view(office.name) == "have-role") std::swap(arcs.titled, arcs.whole);
  const int said = arcs.titled >= 0 ? arcs.titled : arcs.whole;
  if (arcs.holds < 0) {
    // Nobody holds it in this sentence: the office is named, or what it belongs to.
    if (said >= 0 && graph.arc(said).from == at) graph.stand_in(at, said, Fate::word);
    return;
  }
  const int holder = graph.other(arcs.holds, at);
  // What is stated of him may stand below him in the source: "if we cheat, we are fools".
  const int above = graph.parent(at);
  const bool is_stated = at == graph.meaning().root || (above >= 0 && above != arcs.holds && !graph.arc(above).inverse);
  if (is_stated && graph.arc(arcs.holds).to == at)
    arcs.holds = graph.replace(arcs.holds, at, holder, graph.arc(arcs.holds).role);
  const bool holder_above = graph.arc(arcs.holds).to == at;
  if (!holder_above && said >= 0) {
    // What is denied or asked of the statement is that of its predicate.
    for (const std::string& attribute : graph.word(at).attributes) {
      if (attribute != "@v") attribute_add(graph.word(graph.other(said, at)), attribute);
    }
  }
  if (arcs.titled < 0) return group_apply(graph, at, office, arcs.holds, arcs.whole);
  if (graph.arc(arcs.titled).from != at || graph.other(arcs.titled, at) == holder) return;
  graph.settle_concept(at, Fate::relation);
  if (holder_above) return call_by_office(graph, at, office, arcs);
  office_below(graph, at, office, arcs);
}

// (h / have-rel-role-91 :ARG1 (i / i) :ARG2 (f / friend)): nobody in particular is the friend, so "I have a friend".
void friend_had(Rewriter& graph, int at) {
  const int whose = graph.is(at, "have-rel-role", "91") ? graph.child(at, "ARG1") : -1;
  const int relative = whose < 0 || graph.argument(at, "ARG0") >= 0 ? -1 : graph.child(at, "ARG2");
  if (relative < 0 || is_unknown(graph, graph.arc(relative).to) || is_unknown(graph, graph.arc(whose).to)) return;
  graph.word(at).name = "have";
  graph.word(at).sense = "03";
  graph.arc(whose).role = "ARG0";
  graph.arc(relative).role = "ARG1";
  if (graph.children(graph.arc(relative).to).empty()) attribute_add(graph.word(graph.arc(relative).to), "@indef");
}

}  // namespace

// (p / person :ARG0-of (h / have-org-role-91 :ARG1 c :ARG2 (m / mayor))): the mayor of c. A person with a name keeps it:
// mayor Brown.
void step_office(Meaning& meaning) {
  Rewriter graph(meaning, "office");
  // A part of somebody is his.
  for (Arc& one : meaning.arcs) {
    // The place of a thing that does nothing there: "the place of the wall".
    const bool is_place = one.role == "location" && one.inverse && !one.gone && graph.is(one.from, "location");
    if (is_place && graph.word(one.to).sense.empty()) one.role = "part-of", one.inverse = false;
    const bool is_of = one.role == "part-of" && !one.inverse && !one.gone;
    // Where somebody is from is his: "your village".
    const bool is_home = one.role == "source" && one.inverse && !one.gone && graph.word(one.from).sense.empty();
    if (is_home && is_personal_pronoun(graph, one.to)) one.role = "poss", one.inverse = false;
    if (is_of && is_personal_pronoun(graph, one.to)) one.role = "poss";
  }
  // A noun of several words beside a name: "Aurora, the old fishing boat".
  for (int at = 0; at < graph.count(); ++at) {
    if (!has_attribute(graph.word(at), "@name")) continue;
    for (const int led : graph.children(at)) {
      const int noun = graph.arc(led).to;
      const bool is_mod = graph.arc(led).role == "mod" && !graph.arc(led).inverse;
      if (!is_mod || graph.children(noun).empty() || graph.mentions(noun) > 1) continue;
      const Concept& word = graph.word(noun);
      const bool is_noun = word.sense.empty() && !word.variable.empty() && !has_attribute(word, "@name") &&
                           graph.child(noun, "degree") < 0 && has_words_behind(graph, noun);
      if (is_noun) stand_behind(graph, led, at, noun);
    }
  }
  for (int at = 0; at < graph.count(); ++at) {
    friend_had(graph, at);
    for (const Office& office : kOffices) {
      if (graph.is(at, office.name, office.sense)) {
        office_apply(graph, at, office);
        break;
      }
    }
  }
  // "He had two daughters", and not his own two.
  for (int at = 0; at < graph.count(); ++at) {
    const int owner = graph.is(at, "have", "03") ? graph.child(at, "ARG0") : -1;
    const int had = owner < 0 ? -1 : graph.child(at, "ARG1");
    const int again = had < 0 ? -1 : graph.child(graph.arc(had).to, "poss");
    const int mod = again < 0 ? -1 : graph.child(graph.arc(had).to, "mod");
    const bool is_own = mod >= 0 && graph.is(graph.arc(mod).to, "own");
    if (again < 0 || is_own || graph.arc(again).to != graph.arc(owner).to) continue;
    graph.remove(again, Fate::relation);
    const int counted = graph.child(graph.arc(had).to, "quant");
    if (counted >= 0 && graph.is(graph.arc(counted).to, "few")) graph.word(graph.arc(counted).to).name = "a-few";
  }
  // "Each of his sons".
  for (int at = 0, end = graph.count(); at < end; ++at) {
    const int led = graph.child(at, "poss") >= 0 ? graph.child(at, "mod") : -1;
    const int above = led >= 0 && graph.is(graph.arc(led).to, "each") ? graph.parent(at) : -1;
    if (above < 0 || graph.arc(above).inverse || !graph.word(at).sense.empty()) continue;
    const int each = graph.arc(led).to;
    graph.lead_to(above, each);
    graph.replace(led, each, at, "superset");
    attribute_add(graph.word(at), "@pl");
  }
  // "Kim, 81, sang".
  for (int at = 0; at < graph.count(); ++at) {
    const int led = has_attribute(graph.word(at), "@name") ? graph.child(at, "age") : -1;
    const int years = led < 0 || !graph.is(graph.arc(led).to, "year") ? -1 : graph.child(graph.arc(led).to, "quant");
    if (years < 0 || graph.children(graph.arc(led).to).size() != 1 || graph.mentions(graph.arc(led).to) > 1) continue;
    graph.settle_concept(graph.arc(led).to, Fate::word);
    const int number = graph.arc(years).to;
    graph.remove(years, Fate::word);
    stand_behind(graph, led, at, number);
  }
}

}  // namespace lexon
