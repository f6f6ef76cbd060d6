// Steps about frames that say what a language says with a word or a form: causes, offices, degrees, modality.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {
namespace {

// A frame that stands for a role: the two arguments that it ties together. `role` goes from what is in `head` to what is
// in `dependent`; the table of roles must know it.
// A bank writes a role as a frame where it has to say something about the tie itself: (h / have-purpose-91 :ARG1 (k /
// knife) :ARG2 (c / cut-01)) is the knife with :purpose cut, and can be denied or asked for as a knot of its own. ARG1
// is nearly always what the role belongs to.
struct Reified {
  const char* name;
  const char* sense;
  const char* head;
  const char* dependent;
  const char* role;
};

constexpr Reified kReified[] = {
    {"cause", "01", "ARG1", "ARG0", "cause"},
    {"have-cause", "91", "ARG1", "ARG2", "cause"},
    {"have-reason", "91", "ARG1", "ARG2", "cause"},
    {"infer", "91", "ARG1", "ARG2", "cause"},
    {"identity", "91", "ARG1", "ARG2", "identity"},
    {"mean", "91", "ARG1", "ARG2", "apposition"},
    {"have-condition", "91", "ARG1", "ARG2", "condition"},
    {"have-concession", "91", "ARG1", "ARG2", "concession"},
    {"regardless", "91", "ARG1", "ARG2", "concession"},
    {"have-concessive-condition", "91", "ARG1", "ARG2", "concessive-conditional"},
    {"have-purpose", "91", "ARG1", "ARG2", "purpose"},
    {"have-goal", "91", "ARG1", "ARG2", "purpose"},
    {"have-instrument", "91", "ARG1", "ARG2", "instrument"},
    {"have-manner", "91", "ARG1", "ARG2", "manner"},
    {"have-frequency", "91", "ARG1", "ARG2", "frequency"},
    {"have-duration", "91", "ARG1", "ARG2", "duration"},
    {"have-extent", "91", "ARG1", "ARG2", "extent"},
    {"have-temporal", "91", "ARG1", "ARG2", "time"},
    {"be-temporally-at", "91", "ARG1", "ARG2", "time"},
    {"have-direction", "91", "ARG1", "ARG2", "direction"},
    {"have-source", "91", "ARG1", "ARG2", "source"},
    {"be-from", "91", "ARG1", "ARG2", "source"},
    {"have-topic", "91", "ARG1", "ARG2", "topic"},
    {"have-companion", "91", "ARG1", "ARG2", "accompanier"},
    {"accompany", "01", "ARG1", "ARG0", "accompanier"},
    {"have-material", "91", "ARG1", "ARG2", "consist-of"},
    {"have-substitute", "91", "ARG1", "ARG2", "substitute"},
    {"instead-of", "91", "ARG1", "ARG2", "substitute"},
    {"have-example", "91", "ARG1", "ARG2", "example"},
    {"exemplify", "01", "ARG1", "ARG0", "example"},
    {"resemble", "91", "ARG1", "ARG2", "likeness"},
    {"include", "91", "ARG1", "ARG2", "superset"},
    {"except", "01", "ARG2", "ARG1", "exception"},
    {"have-part", "91", "ARG1", "ARG2", "part"},
    {"have-age", "91", "ARG1", "ARG2", "age"},
    {"have-mod", "91", "ARG1", "ARG2", "mod"},
    {"have-color", "91", "ARG1", "ARG2", "color"},
    {"have-size", "91", "ARG1", "ARG2", "size"},
    {"be-destined-for", "91", "ARG1", "ARG2", "destination"},
    {"have-ord", "91", "ARG1", "ARG2", "ord"},
    {"hyperlink", "91", "ARG1", "ARG3", "source"},
    {"have-subtraction", "91", "ARG1", "ARG2", "exception"},
    {"have-medium", "91", "ARG1", "ARG2", "medium"},
    {"have-path", "91", "ARG1", "ARG2", "path"},
    {"have-start", "91", "ARG1", "ARG2", "source"},
    {"have-result", "91", "ARG1", "ARG2", "consequence"},
    {"have-cost", "91", "ARG1", "ARG2", "cost"},
    {"have-other-role", "91", "ARG1", "ARG2", "other-role"},
};

// These are said by a verb when they are the statement itself, and are roles only below what they speak of.
// (h / have-color-91 :ARG1 (b / boat) :ARG2 (r / red)) at the top states that the boat is red; a cause at the top ties
// two clauses, "it fell because it rained", and needs no verb.
bool is_statement(const Reified& one) {
  const std::string_view role = one.role;
  return role == "mod" || role == "age" || role == "color" || role == "size" || role == "destination" ||
         role == "part" || role == "superset" || role == "exception" || role == "apposition" || role == "example" ||
         role == "source" || role == "time" || role == "topic" || role == "accompanier" || role == "ord" ||
         role == "purpose" || role == "substitute" || role == "likeness" || role == "consist-of";
}

// Null for a frame that stands for no role.
const Reified* reified_of(Rewriter& graph, int at) {
  for (const Reified& one : kReified) {
    if (graph.is(at, one.name, one.sense)) return &one;
  }
  return nullptr;
}

// One end alone: "that is why ...", "... because". The frame's other end is not said.
// `up` is the arc of the head and `down` that of the dependent, -1 for the one that is missing: (c / cause-01 :ARG0 (r
// / rain-01)) has only `down`, and becomes rain with @as_cause, "because it rained"; with ARG1 alone it has @so_cause,
// "that is why".
void lone_apply(Rewriter& graph, int at, const Reified& one, int up, int down) {
  const int led = up >= 0 ? up : down;
  const bool is_above = graph.arc(led).to == at;
  if (is_above) {
    // "So the seventh planet was the Earth": the cause stands in another sentence.
    if (std::string_view(one.role) != "cause" || up < 0 || graph.mentions(at) > 1 || !graph.children(at).empty())
      return;
    attribute_add(graph.word(graph.arc(led).from), "@so_cause");
    graph.settle_concept(at, Fate::attribute);
    graph.remove(led, Fate::attribute);
    return;
  }
  // "... because": what it is tied to stands in another sentence, so a conjunction in front says it.
  if (graph.mentions(at) > 1) return;
  const bool is_plain = graph.children(at).size() == 1;
  if (!is_plain || std::string_view(one.role) == "superset") return;
  const int kept = graph.arc(led).to;
  attribute_add(graph.word(kept), std::string("@") + (up >= 0 ? "so_" : "as_") + one.role);
  graph.settle_concept(at, Fate::attribute);
  graph.remove(led, Fate::attribute);
  graph.redirect(at, kept);
}

// The frame is the statement itself: true where a verb says it, or its predicate has taken its place.
bool stated_apply(Rewriter& graph, int at, const Reified& one, int up, int down) {
  const int head = graph.other(up, at);
  const int dependent = graph.other(down, at);
  // "Like her brother, she sings": what a clause is like is said beside it.
  const int first = graph.is(head, "and") ? graph.child(head, "op1") : -1;
  const bool is_of_clause =
      std::string_view(one.role) == "likeness" && !graph.word(first >= 0 ? graph.arc(first).to : head).sense.empty();
  // "The war lasted ten years": what is no clause has no duration beside it.
  const bool is_bare = graph.child(head, "ARG0") < 0 && graph.child(head, "ARG1") < 0 &&
                       graph.child(head, "domain") < 0 && graph.word(head).name != "and";
  if (is_bare && graph.is(at, "have-duration", "91")) {
    graph.word(at).name = "last";
    graph.word(at).sense = "01";
    return true;
  }
  if (is_statement(one) && !is_of_clause) {
    // What it means, and how old it is, other words say.
    const bool is_verb = graph.is(at, "mean", "91") || graph.is(at, "have-age", "91");
    if (is_verb)
      graph.word(at).name = one.role == std::string_view("age") ? "age" : "mean", graph.word(at).sense = "01";
    return true;
  }
  if (is_of_clause) attribute_add(graph.word(head), "@front");
  // "The wind caused the noise": a thing is no clause that another could give the reason of.
  const Concept& caused = graph.word(first >= 0 ? graph.arc(first).to : head);
  const bool is_thing = caused.sense.empty() && !caused.variable.empty() && graph.child(head, "domain") < 0 &&
                        caused.name != "amr-unknown" && caused.name != "umr-unknown" &&
                        !caused.name.ends_with("choice");
  // "The failure of the engine caused the crash": of which nothing is said is no clause either.
  const bool is_bare_event = !caused.sense.empty() && graph.children(head).empty() && has_attribute(caused, "@v") &&
                             caused.attributes.size() == 1 && !caused.name.starts_with("have-");
  if (graph.is(at, "cause", "01") && (is_thing || is_bare_event)) return true;
  if (std::string_view(one.role) == "identity") {
    // "The trouble is that he lies" needs the verb.
    const bool is_told = !graph.word(dependent).sense.empty() && graph.word(head).sense.empty();
    if (is_told && (graph.child(dependent, "ARG0") >= 0 || graph.child(dependent, "ARG1") >= 0)) {
      if (graph.child(head, "poss") < 0) attribute_add(graph.word(head), "@def");
      return true;
    }
    // "Kim is the mayor".
    for (const std::string& attribute : graph.word(at).attributes) {
      if (attribute != "@v") attribute_add(graph.word(dependent), attribute);
    }
    graph.settle_concept(at, Fate::relation);
    graph.replace(up, dependent, head, "domain");
    graph.remove(down, Fate::relation);
    graph.redirect(at, dependent);
    graph.move_children(at, dependent);
    return true;
  }
  return false;
}

// The frame goes; its head and its dependent are tied together, written at the one that stood above the frame. Four
// cases: one end is missing; the frame is the statement itself and a verb says it; the dependent stood above, so that the
// role becomes an inverse one; else the head stays or takes the place of the frame.
void reified_apply(Rewriter& graph, int at, const Reified& one) {
  const int up = graph.argument(at, one.head);
  const int down = graph.argument(at, one.dependent);
  if (down < 0 && up < 0) return;
  if (up < 0 || down < 0) return lone_apply(graph, at, one, up, down);
  // "I am with you": of two who are together, who speaks comes first.
  const bool is_together = one.role == std::string_view("accompanier") && graph.is(graph.other(down, at), "i");
  if (is_together && graph.parent(at) < 0) std::swap(graph.arc(up).to, graph.arc(down).to);
  const int head = graph.other(up, at);
  const int dependent = graph.other(down, at);
  if (head == dependent) return;
  const bool head_above = graph.arc(up).to == at;
  const bool dependent_above = graph.arc(down).to == at;
  if (!head_above && !dependent_above && stated_apply(graph, at, one, up, down)) return;
  graph.settle_concept(at, Fate::relation);
  for (const std::string& attribute : graph.word(at).attributes) {
    // What is denied is the reason, not what it is a reason for: "not because it rained", "a letter not from her".
    const Concept& tied = graph.word(dependent);
    constexpr std::array kPlain{"source", "purpose", "destination", "topic", "time", "medium", "material"};
    const bool is_noun = is_listed(one.role, kPlain) && tied.sense.empty() && graph.child(dependent, "domain") < 0;
    const bool is_denied = attribute == "@neg";
    if (attribute != "@v")
      attribute_add(graph.word(is_denied ? dependent : head), is_denied && is_noun ? "@notp" : attribute);
  }
  // "Mainly because it rained".
  constexpr std::array kFocus{"only", "just", "even", "also", "simple", "precise"};
  const int share = std::string_view(one.role) == "cause" ? graph.child(at, "mod") : -1;
  if (share >= 0 && !is_one_of(graph, graph.arc(share).to, kFocus)) graph.arc(share).role = "manner";
  const bool is_why = is_unknown(graph, dependent);
  if (dependent_above && !head_above && is_why && dependent == graph.meaning().root) {
    // What causes it is what is asked for: "why are we surprised?"
    graph.meaning().root = head;
    graph.replace(down, head, dependent, one.role);
    graph.remove(up, Fate::relation);
    graph.move_children(at, head);
    for (const int led : graph.children(dependent)) graph.arc(led).from = head;
  } else if (dependent_above && !head_above) {
    graph.replace(down, dependent, head, one.role, true);
    graph.remove(up, Fate::relation);
    graph.redirect(at, dependent);
    graph.move_children(at, head);
  } else {
    graph.replace(down, head, dependent, one.role);
    graph.remove(up, Fate::relation);
    graph.redirect(at, head);
    graph.move_children(at, head);
  }
}

// (t / thing :ARG0-of (c / cause-01 :ARG1 x)): the cause of x; as ARG1 the result of it.
// Only where the thing has nothing else to be called by, and x nothing but its cause: else a clause with a verb, "what
// caused x".
void cause_noun_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  const bool is_below = above >= 0 && graph.arc(above).inverse && graph.is(graph.arc(above).from, "thing");
  if (!is_below || graph.children(graph.arc(above).from).size() != 1 || graph.children(at).size() != 1) return;
  const bool is_cause = graph.arc(above).role == "ARG0";
  const int led = graph.child(at, is_cause ? "ARG1" : "ARG0");
  if (led < 0 || graph.mentions(at) > 1) return;
  const int thing = graph.arc(above).from;
  graph.word(thing).name = is_cause ? "cause" : "result";
  graph.settle_concept(at, Fate::word);
  graph.remove(above, Fate::word);
  graph.replace(led, thing, graph.arc(led).to, "org");
}

// (k / know-01 :ARG1 (t / thing :ARG0-of (c / cause-01 :ARG1 (l / leave-11 :ARG0 s)))): to know why she left; below other
// verbs the reason why she left.
void reason_apply(Rewriter& graph, int at) {
  const int above = graph.parent(at);
  const int thing = above < 0 ? -1 : graph.arc(above).from;
  const bool is_reason = thing >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG0" &&
                         (graph.is(thing, "thing") || graph.is(thing, "reason"));
  if (!is_reason || graph.children(thing).size() != 1 || graph.children(at).size() != 1 || graph.mentions(at) > 1)
    return;
  const int led = graph.child(at, "ARG1");
  const int told = led < 0 ? -1 : graph.arc(led).to;
  if (told < 0 || graph.word(told).sense.empty() || graph.mentions(told) > 1 || graph.children(told).empty()) return;
  const int asked = graph.parent(thing);
  const bool is_asked = asked >= 0 && !graph.arc(asked).inverse && graph.arc(asked).role.starts_with("ARG") &&
                        is_one_of(graph, graph.arc(asked).from, kReporting) && graph.mentions(thing) == 1;
  graph.settle_concept(at, Fate::word);
  graph.remove(above, Fate::word);
  if (!is_asked) {
    graph.word(thing).name = "reason";
    graph.replace(led, thing, told, "cause", true);
    return;
  }
  graph.settle_concept(thing, Fate::word);
  graph.remove(led, Fate::word);
  graph.redirect(thing, told);
  graph.add(told, graph.add_concept("amr-unknown"), "cause");
}

// (k / know-01 :ARG1 (t / thing :cause-of (l / leave-11 :ARG0 s))): the same without a frame.
void reason_role_apply(Rewriter& graph, int at) {
  const int led =
      graph.child(at, "cause", true) >= 0 ? graph.child(at, "cause", true) : graph.child(at, "reason", true);
  const int asked = led < 0 ? -1 : graph.parent(at);
  const bool is_asked = asked >= 0 && !graph.arc(asked).inverse && graph.arc(asked).role.starts_with("ARG") &&
                        is_one_of(graph, graph.arc(asked).from, kReporting) && graph.mentions(at) == 1;
  if (led < 0 || graph.children(at).size() != 1) return;
  const int told = graph.arc(led).to;
  if (graph.word(told).sense.empty() || graph.mentions(told) > 1) return;
  graph.arc(led).role = "cause";
  graph.word(at).name = "reason";
  if (!is_asked) return;
  graph.settle_concept(at, Fate::word);
  graph.remove(led, Fate::word);
  graph.redirect(at, told);
  graph.add(told, graph.add_concept("amr-unknown"), "cause");
}

// (r / regardless-91 :ARG1 c :ARG2 x): whatever x is; "no matter how", if x asks.
void regardless_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "ARG2");
  if (led < 0) return;
  const int what = graph.arc(led).to;
  bool is_asked = false;
  for (const int below : graph.children(what)) {
    const int word = graph.arc(below).to;
    const int degree = graph.child(word, "degree");
    is_asked |= is_unknown(graph, word) || (degree >= 0 && is_unknown(graph, graph.arc(degree).to));
  }
  const int word = graph.add_concept(is_asked ? "no-matter" : "regardless-of");
  graph.add(word, what, "op1");
  graph.arc(led).to = word;
}

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

bool is_party(const Concept& group) {
  return has_attribute(group, "@political-party") || has_attribute(group, "@political-organization");
}

// Whoever is of the Green Party is a Green.
void party_to_member(Concept& party) {
  if (party.name.ends_with(" Party")) party.name.resize(party.name.size() - 6);
  if (party.name == "Democratic") party.name = "Democrat";
  std::erase(party.attributes, "@name");
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

// Who has no name is called by the office; a name keeps it as a title.
// Three ways: Mayor Brown (a name keeps the office as :title), Brown, the mayor of Oslo (as :apposition, if the office
// has a whole to name), and the mayor of Oslo (a person without a name becomes the office, whose concept then is no
// word of its own).
void call_by_office(Rewriter& graph, int at, const Office& office, int holds, int whole, int titled) {
  const int holder = graph.other(holds, at);
  const int title = graph.other(titled, at);
  const bool is_named = has_attribute(graph.word(holder), "@name") || !graph.is(holder, "person");
  graph.remove(holds, Fate::relation);
  const bool has_whole = whole >= 0 && graph.arc(whole).from == at;
  const bool is_behind =
      has_attribute(graph.word(holder), "@name") && has_whole && !is_personal_pronoun(graph, graph.arc(whole).to);
  const bool is_of_title = has_attribute(graph.word(holder), "@name");
  if (has_whole) graph.replace(whole, is_of_title ? title : holder, graph.arc(whole).to, office.role);
  if (is_behind) {
    // "Kim, the mayor of Oslo, ..."
    stand_behind(graph, titled, holder, title);
  } else if (is_named) {
    graph.replace(titled, holder, title, "title");
  } else {
    graph.remove(titled, Fate::word);
    graph.settle_concept(holder, Fate::word);
    Concept& person = graph.word(holder);
    person.name = graph.word(title).name;
    person.sense = graph.word(title).sense;
    person.triple = graph.word(title).triple;
    for (const std::string& attribute : graph.word(title).attributes) attribute_add(person, attribute);
    graph.move_children(title, holder);
    graph.redirect(title, holder);
  }
  graph.move_children(at, holder);
}

// The arcs to who holds an office, to what it belongs to, and to what it is called; -1 for those that are missing.
struct OfficeArcs {
  int holds;
  int whole;
  int titled;
};

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

// Either the holder stands above, and is called by the office; or the frame is the statement, "she is the mayor". A holder
// with a name keeps it, and the office stands beside it as a title; another becomes the office.
void office_apply(Rewriter& graph, int at, const Office& office) {
  if (graph.children(at).empty() && graph.mentions(at) == 1) {
    // A role that nobody has of nothing.
    graph.settle_concept(at, Fate::left_out);
    return graph.remove(graph.parent(at), Fate::left_out);
  }
  auto [holds, whole, titled] = office_arcs(graph, at, office);
  if (titled < 0 && std::string_view(office.name) == "have-role") std::swap(titled, whole);
  if (holds < 0) {
    // Nobody holds it in this sentence: the office is named, or what it belongs to.
    const int named = titled >= 0 ? titled : whole;
    if (named >= 0 && graph.arc(named).from == at) graph.stand_in(at, named, Fate::word);
    return;
  }
  const int holder = graph.other(holds, at);
  // What is stated of him may stand below him in the source: "if we cheat, we are fools".
  const int stated = graph.parent(at);
  const bool is_stated = at == graph.meaning().root || (stated >= 0 && stated != holds && !graph.arc(stated).inverse);
  if (is_stated && graph.arc(holds).to == at) {
    holds = graph.replace(holds, at, holder, graph.arc(holds).role);
  }
  const bool holder_above = graph.arc(holds).to == at;
  if (!holder_above && (titled >= 0 || whole >= 0)) {
    // What is denied or asked of the statement is that of its predicate.
    const int predicate = graph.other(titled >= 0 ? titled : whole, at);
    for (const std::string& attribute : graph.word(at).attributes) {
      if (attribute != "@v") attribute_add(graph.word(predicate), attribute);
    }
  }
  if (titled < 0) return group_apply(graph, at, office, holds, whole);
  const int title = graph.other(titled, at);
  if (graph.arc(titled).from != at || title == holder) return;
  graph.settle_concept(at, Fate::relation);
  // "You found a new friend": nobody else is spoken of, so the office stands for who holds it.
  const int above = graph.parent(at);
  const bool is_met = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG1";
  if (!holder_above && is_met && graph.is(holder, "person") && graph.children(holder).empty() &&
      graph.mentions(holder) == 1) {
    graph.settle_concept(holder, Fate::word);
    graph.remove(holds, Fate::word);
    graph.remove(titled, Fate::relation);
    graph.redirect(at, title);
    if (whole >= 0) graph.replace(whole, title, graph.other(whole, at), office.role);
    return graph.move_children(at, title);
  }
  if (!holder_above) {
    // The statement itself: "she is the mayor of Oslo".
    graph.replace(holds, title, holder, "domain");
    graph.remove(titled, Fate::relation);
    graph.redirect(at, title);
    if (whole >= 0) graph.replace(whole, title, graph.other(whole, at), office.role);
    // "She is the mayor of Oslo": of some offices there is one.
    constexpr std::array kOnly{"president", "head",    "leader",    "director", "mayor",  "king",    "queen",
                               "chairman",  "captain", "emperor",   "founder",  "owner",  "author",  "boss",
                               "chief",     "pope",    "commander", "father",   "mother", "husband", "wife"};
    if (whole >= 0 && is_listed(graph.word(title).name, kOnly)) attribute_add(graph.word(title), "@def");
    graph.move_children(at, title);
    return;
  }
  call_by_office(graph, at, office, holds, whole, titled);
}

// The attribute of a degree that is a word of its own; null for others, which stay words: "very much".
// English puts these into the form of the adjective or in a fixed place beside it, so rules need to know them before
// they choose the word.
const char* degree_attribute(const Concept& degree) {
  struct Named {
    const char* name;
    const char* attribute;
  };
  constexpr Named kDegrees[] = {{"more", "@more"}, {"most", "@most"}, {"less", "@less"},   {"least", "@least"},
                                {"too", "@too"},   {"so", "@so"},     {"equal", "@equal"}, {"enough", "@enough"},
                                {"as", "@equal"},  {"very", "@very"}};
  for (const auto& [name, attribute] : kDegrees) {
    if (degree.name == name) return attribute;
  }
  return nullptr;
}

// (d / distance-quantity :extent-of (r / run-02)), to which something is compared: "farther than he ran".
// Such a quantity has one purpose, to name what was measured; the event then stands for it.
void measured_apply(Rewriter& graph, int at) {
  const std::vector<int> below = graph.children(at);
  if (below.size() != 1 || !graph.arc(below[0]).inverse || !graph.word(at).sense.empty()) return;
  constexpr std::array kMeasures{"extent", "degree", "quant", "duration", "frequency"};
  const bool is_measure = is_listed(graph.arc(below[0]).role, kMeasures);
  if (is_measure && !graph.word(graph.arc(below[0]).to).sense.empty()) graph.stand_in(at, below[0]);
}

// What is said of a fact, and of no way to do something: it is easier to wait.
bool is_judgement(const std::string& name) {
  constexpr std::array kJudging{"difficult", "easy",       "hard",      "important", "good", "bad",  "possible",
                                "necessary", "likely",     "common",    "nice",      "fun",  "safe", "dangerous",
                                "expensive", "impossible", "essential", "fair",      "right"};
  return is_listed(name, kJudging);
}

// What is asked, exclaimed or denied of a frame that goes is that of what takes its place.
void move_mood(Rewriter& graph, int from, int to) {
  for (const char* mood : {"@int", "@exp", "@quote", "@neg"}) {
    if (std::erase(graph.word(from).attributes, mood) > 0) attribute_add(graph.word(to), mood);
  }
}

// (f / find-01 :ARG1 (h / have-degree-91 :ARG1 (h2 / horse) :ARG2 fast :ARG3 most)): to find the fastest horse. What is only
// said or thought stays a clause.
// A superlative below a verb of seeking is no statement about the horse: nobody says "to find that the horse is
// fastest". `at` is the frame of the degree, `bearer` the horse and `quality` fast.
bool sought_apply(Rewriter& graph, int at, int quality, int bearer) {
  const int above = graph.parent(at);
  const bool is_object = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                         has_attribute(graph.word(quality), "@most") && graph.word(bearer).sense.empty() &&
                         !graph.word(bearer).variable.empty() && graph.mentions(at) == 1;
  constexpr std::array kTelling{"say", "think", "know", "believe", "mean", "tell", "show", "agree", "hope", "opine"};
  // "This is the hardest question of all": what bears the quality is a predicate itself.
  const bool is_predicate = graph.word(bearer).sense.empty() && graph.child(bearer, "domain") >= 0;
  if (!is_object && !is_predicate) return false;
  const bool is_told = !is_predicate && is_listed(graph.word(graph.arc(above).from).name, kTelling);
  const int bears = graph.child(at, "ARG1");
  const int led = graph.child(at, "ARG2");
  if (is_told || bears < 0 || led < 0 || graph.arc(bears).to != bearer) return false;
  for (const char* role : {"ARG0", "ARG1", "domain"}) {
    const int own = graph.child(quality, role);
    if (own >= 0 && graph.arc(own).to == bearer) graph.remove(own, Fate::relation);
  }
  graph.remove(bears, Fate::relation);
  graph.replace(led, bearer, quality, "mod");
  if (is_predicate) {
    for (const char* role : {"superlative-of", "compared-to"}) {
      const int measured = graph.child(quality, role);
      if (measured >= 0 && !has_attribute(graph.word(quality), "@equal")) graph.arc(measured).from = bearer;
    }
    move_mood(graph, quality, bearer);
  }
  graph.redirect(at, bearer);
  graph.move_children(at, bearer);
  return true;
}

// (e / equal :quant (p / product-of :op1 2)), or the product alone: twice as large; with more, "three times larger".
void times_more(Rewriter& graph, int led, int quality) {
  constexpr std::pair<const char*, const char*> kTimes[] = {
      {"2", "twice"},      {"3", "three-times"},       {"4", "four-times"},         {"5", "five-times"},
      {"10", "ten-times"}, {"100", "a-hundred-times"}, {"1000", "a-thousand-times"}};
  const int degree = graph.arc(led).to;
  const int quant = graph.child(degree, "quant");
  const int product = graph.is(degree, "product-of") ? degree : quant < 0 ? -1 : graph.arc(quant).to;
  const int number = product >= 0 && graph.is(product, "product-of") ? graph.child(product, "op1") : -1;
  if (number < 0 || graph.children(product).size() != 1) return;
  for (const auto& [digits, word] : kTimes) {
    if (!graph.is(graph.arc(number).to, digits)) continue;
    graph.settle_concept(graph.arc(number).to, Fate::word);
    graph.remove(number, Fate::word);
    graph.word(product).name = word;
    if (product == degree) attribute_add(graph.word(quality), "@equal");
    if (quant >= 0) graph.arc(quant).role = "degree";
  }
}

// How much of it there is: an attribute for what is a word of its own in English, a comparative for amounts.
void degree_said(Rewriter& graph, int led, int quality) {
  const int degree = graph.arc(led).to;
  times_more(graph, led, quality);
  const char* attribute = degree_attribute(graph.word(degree));
  // "More money than he": more is the comparative of much and many.
  constexpr std::array kAmounts{"more", "most", "less", "enough"};
  const bool is_amount =
      (graph.is(quality, "much") || graph.is(quality, "many")) && is_listed(graph.word(degree).name, kAmounts);
  // "Fewer people".
  const bool is_fewer = graph.is(quality, "few") && graph.is(degree, "more");
  if ((is_amount || is_fewer) && graph.mentions(degree) == 1) {
    graph.word(quality).name = is_fewer ? "fewer" : graph.word(degree).name;
    graph.settle_concept(degree, Fate::word);
    graph.remove(led, Fate::word);
    graph.move_children(degree, quality);
  } else if (attribute != nullptr && graph.mentions(degree) == 1) {
    attribute_add(graph.word(quality), attribute);
    graph.settle_concept(degree, Fate::attribute);
    graph.remove(led, Fate::attribute);
    graph.move_children(degree, quality);
  } else {
    graph.replace(led, quality, degree, "degree");
  }
}

// "A boy who is older than his sister": a comparison with something is a clause behind the noun.
bool is_behind(Rewriter& graph, int quality, int bearer, std::string_view role) {
  constexpr std::array kAmounts{"many", "much", "few", "more", "less", "little"};
  return role == "ARG4" && has_attribute(graph.word(quality), "@more") && graph.word(bearer).sense.empty() &&
         !is_one_of(graph, quality, kAmounts);
}

// (t / tree :ARG1-of (h / have-degree-91 :ARG2 tall :ARG3 most :ARG5 (t2 / tree :location g))): the tallest tree in the garden.
// A set of the same things is not named a second time.
bool set_of_same(Rewriter& graph, int led, int bearer) {
  const int set = graph.arc(led).to;
  const bool is_noun = graph.word(set).sense.empty() && !graph.word(set).variable.empty();
  if (!is_noun || graph.word(set).name != graph.word(bearer).name || graph.mentions(set) > 1) return false;
  for (const int below : graph.children(set)) {
    const bool is_all = graph.arc(below).role == "mod" &&
                        (graph.is(graph.arc(below).to, "all") || graph.is(graph.arc(below).to, "every"));
    if (!is_all) continue;
    graph.settle_concept(graph.arc(below).to, Fate::word);
    graph.remove(below, Fate::word);
  }
  graph.settle_concept(set, Fate::word);
  graph.remove(led, Fate::word);
  graph.move_children(set, bearer);
  return true;
}

// What it is compared to, the set in which it is the most, and what follows: "so tall that ...".
// ARG4 is what it is compared to (taller than he), ARG5 the set in which it is the most (of the town), ARG6 what
// follows from a degree (so tall that ..., too small to ...).
void degree_measured(Rewriter& graph, int at, int quality, int bearer_led) {
  constexpr std::pair<const char*, const char*> kOthers[] = {
      {"ARG4", "compared-to"}, {"ARG5", "superlative-of"}, {"ARG6", "consequence"}};
  for (const auto& [role, label] : kOthers) {
    const int led = graph.child(at, role);
    if (led < 0) continue;
    // More often than what is said to be more often is no comparison.
    if (bearer_led >= 0 && graph.arc(led).to == graph.other(bearer_led, at)) {
      graph.remove(led, Fate::left_out);
      continue;
    }
    if (std::string_view(role) == "ARG5" && bearer_led >= 0 && set_of_same(graph, led, graph.other(bearer_led, at)))
      continue;
    // "The oldest house of the town", "an older house than mine": what it is measured by stands behind the noun.
    const bool is_with_noun = bearer_led >= 0 && graph.arc(bearer_led).to == at && std::string_view(role) != "ARG6" &&
                              !has_attribute(graph.word(quality), "@equal") &&
                              !is_behind(graph, quality, graph.other(bearer_led, at), role);
    const int kept = is_with_noun ? graph.other(bearer_led, at) : quality;
    graph.replace(led, kept, graph.arc(led).to, label);
    // "Such a cold day that we stayed": what follows stands behind the noun.
    const int above = std::string_view(role) == "ARG6" ? graph.parent(quality) : -1;
    const bool is_of_noun = above >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG1" &&
                            graph.word(graph.arc(above).from).sense.empty() && bearer_led >= 0 &&
                            graph.other(bearer_led, at) == graph.arc(above).from;
    if (is_of_noun) graph.arc(graph.child(quality, "consequence")).from = graph.arc(above).from;
    // "As many books as I".
    const bool is_amount = graph.is(quality, "many") || graph.is(quality, "much") || graph.is(quality, "few");
    const bool is_as_many = is_amount && bearer_led >= 0 && graph.arc(bearer_led).to == at &&
                            has_attribute(graph.word(quality), "@equal") && std::string_view(role) == "ARG4";
    if (is_as_many) graph.replace(led, graph.other(bearer_led, at), graph.arc(led).to, "role");
    measured_apply(graph, graph.arc(led).to);
  }
}

// Nobody bears it: "as soon as possible".
// (h / have-degree-91 :ARG2 (s / soon) :ARG3 (e / equal) :ARG4 p) as :time of a clause: the quality alone takes the
// place of the frame.
void bearerless_apply(Rewriter& graph, int at, int quality_led, int quality) {
  if (graph.arc(quality_led).from == at) {
    graph.remove(quality_led, Fate::relation);
    graph.redirect(at, quality);
  } else {
    graph.remove(quality_led, Fate::relation);
  }
  graph.move_children(at, quality);
}

// "As soon as possible": what it is compared to is that the bearer is possible.
void again_apply(Rewriter& graph, int quality, int bearer) {
  const int compared = graph.child(quality, "compared-to");
  const int possible = compared < 0 ? -1 : graph.arc(compared).to;
  const int again = possible >= 0 && graph.is(possible, "possible", "01") ? graph.child(possible, "ARG1") : -1;
  if (again >= 0 && graph.arc(again).to == bearer) graph.remove(again, Fate::relation);
}

// "She knows more things than he", "there are too many stars".
void counted_apply(Rewriter& graph, int quality, int bearer) {
  const bool is_counted = graph.is(quality, "many") || graph.is(quality, "few") || graph.is(bearer, "thing");
  if (is_counted) attribute_add(graph.word(bearer), "@pl");
}

// "There are too many rules": how many of it there are is the statement.
void amount_stated(Rewriter& graph, int at, int quality_led, int bearer_led) {
  const int quality = graph.other(quality_led, at);
  const int bearer = graph.other(bearer_led, at);
  const std::string& amount = graph.word(quality).name;
  if (amount.find_first_of("0123456789") == 0 && amount != "1") attribute_add(graph.word(bearer), "@pl");
  const int being = graph.add_concept("exist");
  graph.word(being).sense = "91";
  graph.word(being).attributes = {"@v", has_attribute(graph.word(bearer), "@pl") ? "@theres" : "@there"};
  // "There is not enough water to drink": what is denied is the amount.
  graph.redirect(at, being);
  graph.replace(bearer_led, being, bearer, "ARG1");
  graph.replace(quality_led, bearer, quality, "quant");
  // "There is more water than I thought."
  if (const int led = graph.child(quality, "compared-to"); led >= 0 && !has_attribute(graph.word(quality), "@equal"))
    graph.arc(led).from = bearer;
  if (const int led = graph.child(quality, "consequence"); led >= 0) {
    graph.replace(led, being, graph.arc(led).to, graph.is(quality, "enough") ? "purpose" : "consequence");
    const int again = graph.child(graph.arc(led).to, "ARG1");
    if (again >= 0 && graph.arc(again).to == bearer) graph.remove(again, Fate::relation);
  }
  graph.move_children(at, being);
}

// "I have enough time to read", "he had so much money that he bought it": what follows from an amount stands behind the
// verb that has the noun.
void amount_follows(Rewriter& graph, int quality, int bearer) {
  const int led = graph.child(quality, "consequence");
  const int above = led < 0 ? -1 : graph.parent(bearer);
  if (above < 0 || graph.arc(above).inverse || graph.word(graph.arc(above).from).sense.empty()) return;
  const int verb = graph.arc(above).from;
  if (graph.reaches(graph.arc(led).to, verb)) return;
  const bool is_for = graph.is(quality, "enough") || has_attribute(graph.word(quality), "@too");
  graph.replace(led, verb, graph.arc(led).to, is_for ? "purpose" : "consequence");
}

// The frame goes, and one arc between the quality and its bearer is left. Five cases in this order, x the bearer: x stands
// above and the quality has a role of its own for it (x :ARG1-of important-01); the quality stands above, or it or the verb
// above names x already, so that nothing but the frame's own arcs goes; x stands above, x :mod tall; x is an event, which
// gets a :manner; else the quality is the statement, tall :domain x.
void tie_to_bearer(Rewriter& graph, int at, bool is_quantity, int quality_led, int bearer_led) {
  const int quality = graph.other(quality_led, at);
  const int bearer = graph.other(bearer_led, at);
  const bool bearer_above = graph.arc(bearer_led).to == at;
  const bool quality_above = graph.arc(quality_led).to == at;
  // The quality may name its bearer by a role of its own: important-01 :ARG1 x, amuse-01 :ARG0 x.
  const auto names_bearer = [&](int frame, const char* role) {
    const int own = graph.argument(frame, role);
    return own >= 0 && graph.other(own, frame) == bearer && own != bearer_led;
  };
  // A few adjectives call who bears them by another number.
  if (!is_quantity && !quality_above && graph.argument(quality, "ARG1") < 0 && names_bearer(quality, "ARG2"))
    graph.arc(graph.argument(quality, "ARG2")).role = "ARG1";
  if (!is_quantity && sought_apply(graph, at, quality, bearer)) return;
  // Or the verb above does: "she grew tall", "he ran farther".
  const int above = quality_above ? graph.parent(quality) : -1;
  const int governor = above >= 0 && !graph.arc(above).inverse ? graph.arc(above).from : -1;
  const bool is_above = governor >= 0 && !graph.word(governor).sense.empty() &&
                        (governor == bearer || (graph.arc(above).role == "ARG2" &&
                                                (names_bearer(governor, "ARG1") || names_bearer(governor, "ARG0"))));
  // "It barked so loudly that we woke": the manner is said by the frame.
  const int manner = graph.child(quality, "manner", true);
  if (manner >= 0 && graph.arc(manner).to == bearer) graph.remove(manner, Fate::relation);
  // (h / house :ARG1-of (have-degree-91 :ARG2 (b / big :domain h) :ARG3 more)): the house stands above its quality.
  const int domain = bearer_above && !quality_above && !is_quantity ? graph.child(quality, "domain") : -1;
  if (domain >= 0 && graph.arc(domain).to == bearer) graph.remove(domain, Fate::relation);
  const bool names_frame = names_bearer(quality, "ARG1") || names_bearer(quality, "ARG0");
  const bool is_known = is_above || names_frame || names_bearer(quality, "domain");
  again_apply(graph, quality, bearer);
  // What is said to bear it may not be what it is a quality of: "it was so deeply rooted that ...".
  const int own = is_quantity ? -1 : graph.argument(quality, "ARG1");
  const bool is_of_another = own >= 0 && own != quality_led && graph.other(own, quality) != bearer;
  if (bearer_above && !quality_above && names_frame && !is_of_another && !is_quantity) {
    // The bearer stands above and the quality leads back to it: a taller tree.
    const int led = own >= 0 ? own : graph.argument(quality, "ARG0");
    const std::string role = own >= 0 ? "ARG1" : "ARG0";
    graph.replace(led, bearer, quality, role, true);
    graph.remove(quality_led, Fate::relation);
    graph.remove(bearer_led, Fate::relation);
  } else if (quality_above || is_known) {
    if (quality_above && !is_known && !is_of_another) {
      graph.replace(bearer_led, quality, bearer, is_quantity ? "quant" : "domain", is_quantity);
    } else {
      graph.remove(bearer_led, Fate::relation);
    }
    graph.remove(quality_led, Fate::relation);
    if (!quality_above && !bearer_above) graph.redirect(at, quality);
  } else if (bearer_above) {
    graph.remove(bearer_led, Fate::relation);
    const bool is_compared =
        !is_quantity && graph.child(quality, "compared-to") >= 0 && is_behind(graph, quality, bearer, "ARG4");
    if (is_compared) attribute_add(graph.word(quality), "@v");
    if (has_attribute(graph.word(quality), "@least")) attribute_add(graph.word(bearer), "@def");
    if (is_quantity) amount_follows(graph, quality, bearer);
    graph.replace(quality_led, bearer, quality, is_quantity ? "quant" : is_compared ? "ARG1" : "mod", is_compared);
  } else if (!graph.word(bearer).sense.empty() && !is_quantity && graph.word(quality).sense.empty() &&
             !is_judgement(graph.word(quality).name) && graph.mentions(bearer) == 1 &&
             (graph.child(bearer, "ARG0") >= 0 || graph.child(bearer, "ARG1") >= 0)) {
    // The bearer is an event: "he fell as gently as a tree falls".
    graph.remove(bearer_led, Fate::relation);
    graph.replace(quality_led, bearer, quality, "manner");
    move_mood(graph, quality, bearer);
    graph.redirect(at, bearer);
    return graph.move_children(at, bearer);
  } else if (is_quantity && graph.word(bearer).sense.empty() && !is_personal_pronoun(graph, bearer) &&
             !has_attribute(graph.word(bearer), "@name")) {
    return amount_stated(graph, at, quality_led, bearer_led);
  } else {
    graph.replace(bearer_led, quality, bearer, "domain");
    graph.remove(quality_led, Fate::relation);
    graph.redirect(at, quality);
  }
  graph.move_children(at, quality);
}

// (x :ARG1-of (have-degree-91 :ARG2 tall :ARG3 more :ARG4 y)): tall is the quality, x its bearer.
void degree_apply(Rewriter& graph, int at, bool is_quantity) {
  int quality_led = graph.argument(at, "ARG2");
  // A quantity may be the degree itself: "enough oil".
  if (quality_led < 0 && is_quantity) quality_led = graph.argument(at, "ARG3");
  if (quality_led < 0) return;
  const int quality = graph.other(quality_led, at);
  const int bearer_led = graph.argument(at, "ARG1");
  if (is_quantity && bearer_led >= 0) counted_apply(graph, quality, graph.other(bearer_led, at));
  graph.settle_concept(at, Fate::relation);
  // What is denied is the degree: "no thicker than a finger".
  move_mood(graph, at, quality);
  if (const int led = graph.child(at, "ARG3"); led >= 0 && led != quality_led) degree_said(graph, led, quality);
  degree_measured(graph, at, quality, bearer_led);
  if (bearer_led < 0) return bearerless_apply(graph, at, quality_led, quality);
  tie_to_bearer(graph, at, is_quantity, quality_led, bearer_led);
}

// A frame that a modal verb says, and the role of the clause that it governs.
// A bank has what English says with a modal verb as a frame above the clause: (o / obligate-01 :ARG1 i :ARG2 (g / go-02
// :ARG0 i)) is "I must go". Somebody who obliges or recommends, ARG0, makes a verb of it again.
struct Modal {
  const char* name;
  const char* sense;
  const char* governed;
  const char* attribute;
};

constexpr Modal kModals[] = {
    {"possible", "01", "ARG1", "@can"},     {"obligate", "01", "ARG2", "@must"}, {"obligate", "01", "ARG1", "@must"},
    {"recommend", "01", "ARG1", "@should"}, {"use", "03", "ARG1", "@used"},
};

// The governed clause takes the place of the frame and an attribute in its stead; negation and mood of the frame go with
// it. Nothing happens where a modal verb could not say it: no clause, somebody who recommends, a second modal.
void modality_apply(Rewriter& graph, int at, const Modal& modal) {
  // "It can be cleaned and sold": what holds of several clauses leads to each.
  std::vector<int> further;
  for (int led = 0; led < static_cast<int>(graph.meaning().arcs.size()); ++led) {
    const Arc& one = graph.arc(led);
    if (!one.gone && one.inverse && one.to == at && one.role == modal.governed) further.push_back(led);
  }
  for (std::size_t i = 1; i < further.size(); ++i) {
    attribute_add(graph.word(graph.arc(further[i]).from), modal.attribute);
    graph.remove(further[i], Fate::attribute);
  }
  const int led = graph.argument(at, modal.governed);
  if (led < 0) return;
  const int clause = graph.other(led, at);
  if (graph.is(clause, "and") || graph.is(clause, "or")) {
    // What holds of several holds of each: "we should listen and wait".
    const bool is_denied = has_attribute(graph.word(at), "@neg");
    for (const int operand : graph.children(clause)) {
      const int part = graph.arc(operand).to;
      const bool is_said = !graph.word(part).sense.empty() || graph.child(part, "domain") >= 0;
      if (!is_said || graph.arc(operand).inverse) continue;
      attribute_add(graph.word(part), modal.attribute);
      if (is_denied) attribute_add(graph.word(part), "@neg");
    }
    const bool above = graph.arc(led).to == at;
    graph.settle_concept(at, Fate::attribute);
    graph.remove(led, Fate::attribute);
    if (!above) graph.redirect(at, clause);
    return graph.move_children(at, clause);
  }
  const bool is_clause = !graph.word(clause).sense.empty() || graph.child(clause, "domain") >= 0;
  // Somebody who recommends is a subject: "she recommends that ...".
  // (r / recommend-01 :ARG0 s :ARG1 c).
  const bool has_agent = graph.argument(at, "ARG0") >= 0;
  if (!is_clause || has_agent || clause == at) return;
  // English has one modal verb in a clause: the inner frame keeps it.
  for (const char* attribute : {"@can", "@must", "@should"}) {
    if (has_attribute(graph.word(clause), attribute)) return;
  }
  // A negated possibility: "cannot". The two negations of "it is not possible not to" stay apart.
  if (has_attribute(graph.word(at), "@neg") && has_attribute(graph.word(clause), "@neg")) return;
  graph.settle_concept(at, Fate::attribute);
  attribute_add(graph.word(clause), modal.attribute);
  // Who is not obliged may do it all the same: "you need not go".
  if (graph.is(at, "obligate", "01") && has_attribute(graph.word(at), "@neg") &&
      std::erase(graph.word(clause).attributes, "@must"))
    attribute_add(graph.word(clause), "@need");
  for (const std::string& attribute : graph.word(at).attributes) {
    if (attribute != "@v") attribute_add(graph.word(clause), attribute);
  }
  const bool above = graph.arc(led).to == at;
  graph.remove(led, Fate::attribute);
  if (!above) graph.redirect(at, clause);
  // Who is obliged is the subject of what he is obliged to do.
  for (const char* role : {"ARG1", "ARG2"}) {
    const int who = graph.child(at, role);
    if (who < 0) continue;
    const int person = graph.arc(who).to;
    int subject = graph.argument(clause, "ARG0");
    // "The boy must come": of some verbs it is ARG1.
    if (subject < 0) {
      const int own = graph.argument(clause, graph.child(clause, "domain") >= 0 ? "domain" : "ARG1");
      if (own >= 0 && graph.other(own, clause) == person) subject = own;
    }
    if (subject >= 0 && graph.other(subject, clause) == person) {
      graph.remove(who, Fate::relation);
    } else {
      graph.replace(who, clause, person, subject < 0 ? "ARG0" : "beneficiary");
    }
  }
  graph.move_children(at, clause);
}

// (f / flower :ARG0-of (h / have-03 :ARG1 t)): the flower with t. (f / flower :ARG1-of (h / have-03 :ARG0 i)): my flower.
// What is denied, or is said of the having itself, needs the verb: the flower that has no thorns.
void having_apply(Rewriter& graph, int at) {
  const int holder = graph.parent(at);
  const bool is_had = holder >= 0 && graph.arc(holder).role == "ARG1";
  const int thing = graph.child(at, is_had ? "ARG0" : "ARG1");
  const bool is_inside = holder >= 0 && graph.arc(holder).inverse && (is_had || graph.arc(holder).role == "ARG0");
  if (!is_inside || thing < 0 || graph.children(at).size() != 1 || graph.mentions(at) > 1) return;
  const std::vector<std::string>& marks = graph.word(at).attributes;
  if (std::any_of(marks.begin(), marks.end(), [](const std::string& mark) { return mark != "@v"; })) return;
  graph.settle_concept(at, Fate::relation);
  graph.replace(thing, graph.arc(holder).from, graph.arc(thing).to, is_had ? "poss" : "possession");
  graph.remove(holder, Fate::relation);
}

// (r / rush-01 :ARG1-of (r2 / resemble-01 :ARG2 (w / wind))): to rush like the wind, or as if it did something. What a noun
// resembles stays a relative clause.
// A clause with an agent, "as if it flew", is told from a thing, "like the wind", by its ARG0.
void likeness_apply(Rewriter& graph, int at) {
  const int led = graph.parent(at);
  const int like = graph.child(at, "ARG2");
  const bool is_inside = led >= 0 && graph.arc(led).inverse && graph.arc(led).role == "ARG1";
  if (!is_inside || like < 0 || graph.children(at).size() != 1 || graph.mentions(at) > 1) return;
  const int event = graph.arc(led).from;
  if (graph.word(event).sense.empty() || has_attribute(graph.word(at), "@neg")) return;
  const int other = graph.arc(like).to;
  const bool is_clause = !graph.word(other).sense.empty() && graph.child(other, "ARG0") >= 0;
  graph.settle_concept(at, Fate::relation);
  graph.replace(like, event, other, is_clause ? "conj-as-if" : "likeness");
  graph.remove(led, Fate::relation);
}

// How often, as a bare number: "once", "twice".
// From three on English counts times: (r / ring-01 :frequency 3) becomes ring with :frequency (time :quant 3), "three
// times".
void frequency_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "frequency");
  if (led < 0) return;
  const std::string number = graph.word(graph.arc(led).to).name;
  const bool is_several = number == "several" || number == "many" || number == "multiple" || number == "few";
  if (is_several && graph.children(graph.arc(led).to).empty()) {
    const int times = graph.add_concept("time");
    graph.add(times, graph.arc(led).to, "quant");
    graph.arc(led).to = times;
    return attribute_add(graph.word(times), "@pl");
  }
  if (number.empty() || number.find_first_not_of("0123456789") != number.npos) return;
  if (number == "1" || number == "2") {
    graph.word(graph.arc(led).to).name = number == "1" ? "once" : "twice";
    return;
  }
  const int times = graph.add_concept("time");
  graph.move_children(graph.arc(led).to, times);
  graph.add(times, graph.arc(led).to, "quant");
  graph.arc(led).to = times;
  attribute_add(graph.word(times), "@pl");
  attribute_add(graph.word(times), "@measure");
}

// "One of these": what something is taken from is several.
void plural_apply(Concept& whole) {
  attribute_add(whole, "@pl");
  if (whole.name == "this") whole.name = "these";
  if (whole.name == "that") whole.name = "those";
}

// "At the top of the tree": a place that is a part of another is written as what the other has.
// (l / live-01 :location (h / hill :part (t / top))) becomes (l / live-01 :location (t / top :part-of (h / hill))): the
// place itself is where one lives.
void part_place_apply(Rewriter& graph, int at) {
  constexpr std::array kPlaces{"middle", "center",  "top",   "bottom", "side", "edge",  "end",
                               "corner", "front",   "back",  "heart",  "rear", "begin", "beginning",
                               "inside", "outside", "north", "south",  "east", "west",  "interior"};
  const int above = graph.parent(at);
  const int led = graph.child(at, "part");
  if (above < 0 || led < 0 || graph.arc(above).inverse || graph.mentions(at) > 1) return;
  const int part = graph.arc(led).to;
  const bool is_place = is_listed(graph.word(part).name, kPlaces);
  if (!is_place || !graph.children(part).empty() || graph.mentions(part) > 1) return;
  graph.arc(above).to = part;
  graph.replace(led, part, at, "part-of");
}

// How often, said as how many of it there are: "he asked so many times". Only of what is a clause.
void times_apply(Rewriter& graph, int at) {
  const int led = graph.word(at).sense.empty() ? -1 : graph.child(at, "quant");
  constexpr std::array kMany{"many", "several", "multiple", "numerous"};
  const bool is_many = led >= 0 && is_listed(graph.word(graph.arc(led).to).name, kMany);
  if (!is_many || graph.child(at, "frequency") >= 0) return;
  const int above = graph.parent(at);
  constexpr std::array kOuter{"concession", "cause", "condition", "op1", "op2"};
  const bool is_clause = above < 0 || graph.arc(above).inverse || is_listed(graph.arc(above).role, kOuter);
  if (!is_clause || (graph.child(at, "ARG0") < 0 && above < 0)) return;
  const int times = graph.add_concept("time");
  graph.replace(led, times, graph.arc(led).to, "quant");
  graph.add(at, times, "frequency");
  attribute_add(graph.word(times), "@measure");
  attribute_add(graph.word(times), "@pl");
}

// (d / depart-01 :condition-of (t / thing)): what it is a condition of stands in another sentence: "if you depart".
// @as_condition, @as_cause, @as_concession: the conjunction stands in front of the clause, and nothing follows.
void outer_apply(Rewriter& graph, int at) {
  // A thing of which nothing is said is "it" by now.
  const bool is_open = graph.is(at, "thing") || graph.is(at, "it");
  const int led = is_open && graph.children(at).empty() && graph.mentions(at) == 1 ? graph.parent(at) : -1;
  if (led < 0 || !graph.arc(led).inverse) return;
  const std::string& role = graph.arc(led).role;
  if (role != "condition" && role != "cause" && role != "concession") return;
  attribute_add(graph.word(graph.arc(led).from), "@as_" + role);
  graph.settle_concept(at, Fate::attribute);
  graph.remove(led, Fate::attribute);
}

// (h / here :location-of (s / shop)): "a shop is here".
// "Here" cannot be the head of a sentence, so a verb of being is made, with the shop as ARG1 and here as ARG2.
void here_apply(Rewriter& graph, int at) {
  const int led = graph.is(at, "here") || graph.is(at, "there") ? graph.child(at, "location", true) : -1;
  if (led < 0 || graph.children(at).size() != 1 || !graph.word(graph.arc(led).to).sense.empty()) return;
  const int being = graph.add_concept("be-located-at");
  graph.word(being).sense = "91";
  attribute_add(graph.word(being), "@v");
  graph.redirect(at, being);
  const int what = graph.arc(led).to;
  graph.replace(led, being, what, "ARG1");
  graph.add(being, at, "ARG2");
}

// A verb and its noun that a bank writes as one frame, which no dictionary has: (h / have-fun-00 :ARG0 b :ARG1 g).
struct LightPhrase {
  const char* name;
  const char* verb;
  const char* sense;
  const char* noun;
  const char* preposition;  // of what is done with it: fun with a friend
  bool is_counted;          // a way, but fun
};

constexpr LightPhrase kLightPhrases[] = {
    {"have-business", "have", "03", "business", "with", false},
    {"have-fun", "have", "03", "fun", "with", false},
    {"have-breakfast", "have", "03", "breakfast", "with", false},
    {"have-lunch", "have", "03", "lunch", "with", false},
    {"have-dinner", "have", "03", "dinner", "with", false},
    {"have-party", "have", "03", "party", "for", true},
    {"have-chance", "have", "03", "chance", "of", true},
    {"have-effect", "have", "03", "effect", "on", true},
    {"have-impact", "have", "03", "impact", "on", true},
    {"have-influence", "have", "03", "influence", "on", false},
    {"have-access", "have", "03", "access", "to", false},
    {"have-faith", "have", "03", "faith", "in", false},
    {"have-pity", "have", "03", "pity", "on", false},
    {"have-patience", "have", "03", "patience", "with", false},
    {"have-problem", "have", "03", "problem", "with", true},
    {"have-talk", "have", "03", "talk", "with", true},
    {"have-time", "have", "03", "time", "for", false},
    {"have-baby", "have", "03", "baby", "with", true},
    {"find-way", "find", "01", "way", "to", true},
    {"find-solution", "find", "01", "solution", "to", true},
    {"find-job", "find", "01", "job", "with", true},
    {"lose-way", "lose", "02", "way", "to", true},
    {"lose-interest", "lose", "02", "interest", "in", false},
    {"lose-hope", "lose", "02", "hope", "of", false},
    {"make-decision", "make", "01", "decision", "on", true},
    {"make-effort", "make", "01", "effort", "for", true},
    {"make-friend", "make", "01", "friends", "with", false},
    {"make-friends", "make", "01", "friends", "with", false},
    {"make-progress", "make", "01", "progress", "with", false},
    {"make-mistake", "make", "01", "mistake", "in", true},
    {"make-plan", "make", "01", "plan", "for", true},
    {"make-sense", "make", "01", "sense", "to", false},
    {"make-use", "make", "01", "use", "of", false},
    {"make-peace", "make", "01", "peace", "with", false},
    {"make-money", "make", "01", "money", "from", false},
    {"make-love", "make", "01", "love", "to", false},
    {"make-noise", "make", "01", "noise", "with", true},
    {"make-room", "make", "01", "room", "for", false},
    {"make-promise", "make", "01", "promise", "to", true},
    {"take-part", "take", "01", "part", "in", false},
    {"take-care", "take", "01", "care", "of", false},
    {"take-photo", "take", "01", "photo", "of", true},
    {"take-walk", "take", "01", "walk", "in", true},
    {"take-bath", "take", "01", "bath", "in", true},
    {"take-shower", "take", "01", "shower", "in", true},
    {"take-break", "take", "01", "break", "from", true},
    {"take-nap", "take", "01", "nap", "in", true},
    {"take-action", "take", "01", "action", "on", false},
    {"take-control", "take", "01", "control", "of", false},
    {"take-notice", "take", "01", "notice", "of", false},
    {"take-revenge", "take", "01", "revenge", "on", false},
    {"take-responsibility", "take", "01", "responsibility", "for", false},
    {"take-look", "take", "01", "look", "at", true},
    {"pay-attention", "pay", "01", "attention", "to", false},
    {"pay-heed", "pay", "01", "heed", "to", false},
    {"pay-visit", "pay", "01", "visit", "to", true},
    {"pay-tribute", "pay", "01", "tribute", "to", false},
    {"do-homework", "do", "02", "homework", "for", false},
    {"do-harm", "do", "02", "harm", "to", false},
    {"do-damage", "do", "02", "damage", "to", false},
    {"do-research", "do", "02", "research", "on", false},
    {"do-work", "do", "02", "work", "for", false},
    {"give-birth", "give", "01", "birth", "to", false},
    {"give-speech", "give", "01", "speech", "to", true},
    {"give-way", "give", "01", "way", "to", false},
    {"give-rise", "give", "01", "rise", "to", false},
    {"give-permission", "give", "01", "permission", "to", false},
    {"get-job", "get", "01", "job", "with", true},
    {"get-divorce", "get", "01", "divorce", "from", true},
    {"set-fire", "set", "01", "fire", "to", false},
    {"keep-watch", "keep", "02", "watch", "over", false},
    {"keep-company", "keep", "02", "company", "with", false},
    {"keep-secret", "keep", "02", "secret", "from", true},
    {"tell-story", "tell", "01", "story", "to", true},
    {"tell-lie", "tell", "01", "lie", "to", true},
    {"tell-joke", "tell", "01", "joke", "to", true},
    {"run-risk", "run", "01", "risk", "of", true},
    {"play-role", "play", "08", "role", "in", true},
    {"play-part", "play", "08", "part", "in", true},
    {"hold-meeting", "hold", "04", "meeting", "with", true},
    {"hold-talk", "hold", "04", "talks", "with", false},
};

// "He found a way to the sea": the noun is the object, and what was the object has the preposition of the noun.
void light_phrase_apply(Rewriter& graph, int at) {
  const auto phrase = std::find_if(std::begin(kLightPhrases), std::end(kLightPhrases),
                                   [&](const LightPhrase& one) { return graph.word(at).name == one.name; });
  if (graph.is(at, "get-rid", "05")) graph.word(at).name = "get-rid-of";
  // A weekend is no deed, though frame files have one for it.
  if (graph.is(at, "weekend", "01")) {
    graph.word(at).sense.clear();
    graph.word(at).attributes.clear();
  }
  if (phrase == std::end(kLightPhrases) || graph.word(at).sense.empty()) return;
  graph.word(at).name = phrase->verb;
  graph.word(at).sense = phrase->sense;
  const int noun = graph.add_concept(phrase->noun);
  attribute_add(graph.word(noun), "@indef");
  if (!phrase->is_counted) attribute_add(graph.word(noun), "MASS");
  const int led = graph.child(at, "ARG1");
  graph.add(at, noun, "ARG1");
  if (led < 0) return;
  if (graph.argument(at, "ARG0") < 0) {
    graph.arc(led).role = "ARG0";
    return;
  }
  const int object = graph.arc(led).to;
  if (std::string_view(phrase->preposition) == "to" && phrase->is_counted && is_event(graph, object)) {
    graph.arc(led).role = "purpose";
    return;
  }
  const int preposition = graph.add_concept(phrase->preposition);
  graph.replace(led, at, preposition, "prep");
  graph.add(preposition, object, "op1");
}

// Frames that are a word or a phrase of their own.
void phrase_apply(Rewriter& graph, int at) {
  // (w / work-01 :temporal (u / use-03)): what used to be done.
  const int once = graph.is(at, "use", "03") && graph.children(at).empty() ? graph.parent(at) : -1;
  if (once >= 0 && (graph.arc(once).role == "time" || graph.arc(once).role == "temporal")) {
    attribute_add(graph.word(graph.arc(once).from), "@used");
    graph.settle_concept(at, Fate::attribute);
    graph.remove(once, Fate::attribute);
  }
  // What is an example of something that is not told: for example.
  const int shown = graph.is(at, "have-example", "91") && graph.child(at, "ARG2") < 0 ? graph.child(at, "ARG1") : -1;
  if (shown >= 0 && graph.mentions(graph.arc(shown).to) == 1) {
    graph.add(graph.arc(shown).to, graph.add_concept("for-example"), "mod");
    graph.stand_in(at, shown, Fate::word);
  }
  // Who thanks, with nobody to be thanked, says thanks.
  const int who = graph.is(at, "thank", "01") && graph.children(at).size() == 1 ? graph.child(at, "ARG0") : -1;
  if (who >= 0 && graph.is(graph.arc(who).to, "i")) {
    if (graph.mentions(graph.arc(who).to) == 1) graph.settle_concept(graph.arc(who).to, Fate::left_out);
    graph.remove(who, Fate::left_out);
    graph.word(at).name = "thanks";
    graph.word(at).sense.clear();
    graph.word(at).attributes.clear();
  }
  // Whom nobody dares to do it dares to do it himself.
  const int daring = graph.is(at, "dare", "01") && graph.argument(at, "ARG0") < 0 ? graph.child(at, "ARG1") : -1;
  if (daring >= 0 && graph.child(at, "ARG2") >= 0) graph.arc(daring).role = "ARG0";
  // "It is a shame that ..."
  const int shame = graph.is(at, "shame", "02") || graph.is(at, "pity", "01") ? graph.child(at, "ARG1") : -1;
  if (shame >= 0 && graph.argument(at, "ARG0") < 0 && !graph.word(graph.arc(shame).to).sense.empty()) {
    graph.arc(shame).role = "domain";
    graph.word(at).sense.clear();
    std::erase(graph.word(at).attributes, "@v");
  }
  // "She preferred to wait instead of leaving".
  const int instead = graph.is(at, "prefer", "01") ? graph.child(at, "ARG2") : -1;
  if (instead >= 0 && !graph.word(graph.arc(instead).to).sense.empty()) graph.arc(instead).role = "substitute";
  // "The tailor, a thin man": what somebody is, said beside him.
  const int is_what = graph.word(at).sense.empty() ? graph.child(at, "domain", true) : -1;
  if (is_what >= 0) {
    const int noun = graph.arc(is_what).to;
    const bool is_noun = graph.word(noun).sense.empty() && !graph.children(noun).empty() && graph.mentions(noun) == 1;
    if (is_noun) {
      graph.replace(is_what, at, noun, "apposition");
      attribute_add(graph.word(noun), "@indef");
      attribute_add(graph.word(noun), "@closed");
    }
  }
  // What is a trouble to somebody: "the road is an issue".
  const int issue = graph.is(at, "issue", "02") ? graph.child(at, "ARG0") : -1;
  if (issue >= 0) {
    graph.arc(issue).role = "domain";
    if (const int whose = graph.child(at, "ARG1"); whose >= 0) graph.arc(whose).role = "beneficiary";
    graph.word(at).sense.clear();
    std::erase(graph.word(at).attributes, "@v");
  }
  // Nobody opines; people think.
  if (graph.is(at, "opine", "01")) graph.word(at).name = "think";
  // What is one of several, without them: "for example".
  const int above = graph.is(at, "exemplify", "01") && graph.children(at).empty() ? graph.parent(at) : -1;
  if (above >= 0 && graph.arc(above).inverse && graph.arc(above).role == "ARG0") {
    graph.word(at).name = "for-example";
    graph.word(at).sense.clear();
    graph.replace(above, graph.arc(above).from, at, "mod");
  }
  // Who has written a text, above it: "by Ada Hill".
  if (const int author = graph.is(at, "byline", "91") ? graph.child(at, "ARG1") : -1; author >= 0) {
    graph.word(at).name = "by";
    graph.word(at).sense.clear();
    std::erase(graph.word(at).attributes, "@v");
    graph.arc(author).role = "op1";
  }
}

// What something is not like stays a clause: "a garden that is not like mine".
// As a role, :likeness, it could not be denied.
bool is_unlike(Rewriter& graph, int at) {
  const int like = graph.argument(at, "ARG1");
  return graph.word(at).name == "resemble" && has_attribute(graph.word(at), "@neg") &&
         (like < 0 || graph.arc(like).to == at || graph.word(graph.arc(like).to).sense.empty());
}

// Roles that lead from a number to what is counted, and to who feels something.
void role_apply(Rewriter& graph, Arc& one) {
  // "A number of birds": the number is the head.
  if (one.role == "quant" && one.inverse && graph.word(one.from).sense.empty()) {
    one.role = "consist-of", one.inverse = false;
    constexpr std::array kOfMany{"number", "group", "series", "range", "variety", "couple", "set", "row"};
    const bool is_many = is_listed(graph.word(one.from).name, kOfMany);
    if (is_many && graph.word(one.to).sense.empty()) attribute_add(graph.word(one.to), "@pl");
  }
  // "The foreign minister": a topic that is a quality.
  constexpr std::array kQualities{"foreign",  "domestic",  "public",   "military",      "social", "political",
                                  "economic", "financial", "national", "international", "legal",  "medical"};
  const bool is_quality = one.role == "topic" && !one.inverse && is_one_of(graph, one.to, kQualities);
  if (is_quality && graph.children(one.to).empty() && graph.word(one.from).sense.empty()) one.role = "mod";
  // "It is a lot for me": who feels it is no subject where there is one.
  if (one.role != "experiencer" || one.inverse) return;
  const bool has_subject =
      graph.child(one.from, "ARG0") >= 0 || graph.child(one.from, "ARG1") >= 0 || graph.child(one.from, "domain") >= 0;
  if (has_subject) one.role = "beneficiary";
}

// "She lay down in the grass": a bare direction stands nearer to its verb than a place does.
// What has words of its own, "up the hill", stays a direction: a particle stands alone.
void directions_apply(Rewriter& graph) {
  constexpr std::array kBare{"up",      "down",  "away",  "back",  "out",  "off",  "around",
                             "forward", "home",  "along", "by",    "past", "over", "across",
                             "through", "aside", "ahead", "apart", "in",   "on",   "about"};
  for (Arc& one : graph.meaning().arcs) {
    // Of the arguments of a motion those that tell its end: (b / bring-01 :ARG1 x :ARG2 y :ARG3 (d / down)).
    const bool is_end =
        (one.role == "ARG3" || one.role == "ARG4") && graph.word(one.to).sense.empty() && graph.mentions(one.to) == 1;
    if ((one.role != "direction" && !is_end) || one.gone || one.inverse) continue;
    const std::string word = graph.word(one.to).name;
    const bool is_in_verb = graph.word(one.from).name.ends_with('-' + word);
    if (is_in_verb) graph.move_children(one.to, one.from);
    const bool is_direction = graph.children(one.to).empty();
    if (!is_direction || !is_listed(word, kBare)) continue;
    one.role = "particle";
    // The verb may have the word in its name: sit-down-02.
    if (is_in_verb) {
      graph.settle_concept(one.to, Fate::word);
      one.gone = true;
      settle(graph.meaning(), one.triple, Fate::word, "reified");
    }
  }
}

// "Some of the workers": a part that is called by the same deed as the whole is not called by it twice.
void same_deed_apply(Rewriter& graph, int part, int whole) {
  for (const char* role : {"ARG0", "ARG1"}) {
    const int own = graph.child(part, role, true);
    const int model = graph.child(whole, role, true);
    if (own < 0 || model < 0 || graph.word(part).name != graph.word(whole).name) continue;
    const int deed = graph.arc(own).to;
    const bool is_same = graph.word(deed).name == graph.word(graph.arc(model).to).name;
    if (!is_same || !graph.children(deed).empty() || graph.mentions(deed) > 1) continue;
    graph.settle_concept(deed, Fate::word);
    graph.remove(own, Fate::word);
  }
}

// What is taken out of a whole, and the whole.
// A bank writes "some of us" as (s / some :superset we); where it has the frame include-91 for it, that has become
// :superset by now. The part is the head in English, too. What is left to do is number, as a whole is several things, and
// the word for the part, which is not said twice: one of the stars.
void sets_apply(Rewriter& graph) {
  // "The former general".
  for (Arc& one : graph.meaning().arcs) {
    constexpr std::array kOffice{"former", "current", "future", "present", "then"};
    const bool is_time = !one.gone && !one.inverse && (one.role == "time" || one.role == "temporal");
    if (is_time && is_one_of(graph, one.to, kOffice) && graph.word(one.from).sense.empty() &&
        !graph.word(one.from).variable.empty() && graph.child(one.from, "domain") < 0 && graph.children(one.to).empty())
      one.role = "mod";
  }
  // "Two of them".
  for (int at = 0, end = graph.count(); at < end; ++at) {
    const int number = is_personal_pronoun(graph, at) ? graph.child(at, "quant") : -1;
    if (number < 0 || !graph.children(graph.arc(number).to).empty() || is_unknown(graph, graph.arc(number).to))
      continue;
    const int several = graph.arc(number).to;
    graph.redirect(at, several);
    graph.replace(number, several, at, "superset");
  }
  for (int at = 0; at < graph.count(); ++at) {
    // "Some of us": how many are taken out of a whole stands for those that are taken.
    const int whole = graph.child(at, "superset");
    if (whole < 0) continue;
    // "One of my stars".
    const int owner = graph.child(at, "poss");
    if (owner >= 0 && graph.word(graph.arc(whole).to).name == graph.word(at).name)
      graph.arc(owner).from = graph.arc(whole).to;
    if (graph.is(at, "someone") || graph.is(at, "something")) {
      graph.word(at).name = "some";
      attribute_add(graph.word(at), "@pl");
    }
    same_deed_apply(graph, at, graph.arc(whole).to);
    if (const int led = graph.child(at, "ARG3"); led >= 0) graph.arc(led).role = "quant";
    // "Each of us": the word that picks them out stands for the persons.
    constexpr std::array kPicked{"each", "any", "all", "both"};
    const int picked = graph.child(at, "mod");
    const bool is_person = graph.is(at, "person") || graph.is(at, "thing");
    if (picked >= 0 && is_person && is_one_of(graph, graph.arc(picked).to, kPicked)) {
      graph.stand_in(at, picked, Fate::word);
      continue;
    }
    const int quantity = graph.child(at, "quant");
    // "Some of the money" names the money once.
    const bool is_again = graph.word(at).name == graph.word(graph.arc(whole).to).name && quantity >= 0 &&
                          !graph.is(graph.arc(quantity).to, "1");
    if (quantity < 0 || !(is_again || graph.is(at, "thing") || graph.is(at, "person"))) continue;
    if (!graph.is(graph.arc(quantity).to, "1")) attribute_add(graph.word(graph.arc(quantity).to), "@pl");
    graph.stand_in(at, quantity, Fate::word);
  }
  // "It is among the new books": what something is among is several.
  for (int at = 0; at < graph.count(); ++at) {
    const int led = graph.is(at, "include", "91") ? graph.child(at, "ARG2") : -1;
    if (led < 0) continue;
    Concept& whole = graph.word(graph.arc(led).to);
    if (!has_attribute(whole, "@name")) plural_apply(whole);
  }
  // "One of these things": what others are taken from is several.
  for (const Arc& one : graph.meaning().arcs) {
    const bool is_whole = one.role == "superset" && !one.inverse && !one.gone;
    const Concept& whole = graph.word(one.to);
    const bool is_noun = whole.sense.empty() && !whole.variable.empty() && !has_attribute(whole, "@name");
    if (!is_whole || !is_noun) continue;
    plural_apply(graph.word(one.to));
    if (graph.child(one.to, "mod") < 0 && graph.child(one.to, "quant") < 0) attribute_add(graph.word(one.to), "@def");
    // "One of the stars" names the stars once.
    const int number = graph.child(one.from, "quant");
    const bool is_one = number < 0 ? !has_attribute(graph.word(one.from), "@pl") : graph.is(graph.arc(number).to, "1");
    if (!is_one || graph.word(one.from).name != whole.name) continue;
    graph.word(one.from).name = "one";
    if (graph.child(one.from, "ord") >= 0) attribute_add(graph.word(one.from), "@def");
    if (number < 0) continue;
    graph.settle_concept(graph.arc(number).to, Fate::word);
    graph.remove(number, Fate::word);
  }
}

}  // namespace

// (c / cause-01 :ARG0 (r / rain-01) :ARG1 (s / stay-01)) becomes (s / stay-01 :cause (r / rain-01)). Nouns that a frame
// makes come first, "the cause of", as they would be taken apart else.
void step_reified(Meaning& meaning) {
  Rewriter graph(meaning, "reified");
  for (int at = 0, end = graph.count(); at < end; ++at) {
    if (graph.is(at, "have", "03")) having_apply(graph, at);
    if (graph.is(at, "cause", "01")) reason_apply(graph, at), cause_noun_apply(graph, at);
    if (graph.is(at, "thing") || graph.is(at, "reason")) reason_role_apply(graph, at);
    if (graph.is(at, "regardless", "91")) regardless_apply(graph, at);
    if (graph.is(at, "resemble", "01")) likeness_apply(graph, at);
    phrase_apply(graph, at);
    light_phrase_apply(graph, at);
  }
  // In the order of the source, so that of two nested frames the outer one comes first, and its role leads to the inner
  // frame, which then gives its own place up.
  for (int at = 0; at < graph.count(); ++at) {
    const Reified* one = is_unlike(graph, at) ? nullptr : reified_of(graph, at);
    if (one != nullptr) reified_apply(graph, at, *one);
  }
  // Behind the frames, as have-frequency-91 and others have become roles only now. Concepts made here are not looked
  // at.
  for (int at = 0, end = graph.count(); at < end; ++at) {
    frequency_apply(graph, at);
    times_apply(graph, at);
    part_place_apply(graph, at);
    outer_apply(graph, at);
    here_apply(graph, at);
  }
  for (Arc& one : meaning.arcs) {
    if (!one.gone) role_apply(graph, one);
  }
  // (w / wife :part (e / ear)), where the ear is spoken of elsewhere: her ear.
  for (int led = 0; led < static_cast<int>(meaning.arcs.size()); ++led) {
    const Arc one = graph.arc(led);
    if (one.gone || one.inverse || one.role != "part" || graph.mentions(one.to) < 2) continue;
    graph.replace(led, one.to, one.from, "poss");
  }
  // "An equal share": of a quality that nothing else is said of, the number of the role is no matter.
  for (Arc& one : meaning.arcs) {
    const bool is_far = one.role == "ARG3" || one.role == "ARG4" || one.role == "ARG5";
    if (one.gone || !one.inverse || !is_far || !is_event(graph, one.to) || graph.mentions(one.to) > 1) continue;
    // "..., which is typical of the town".
    const bool is_of_clause = is_event(graph, one.from) && graph.child(one.to, "ARG2") >= 0;
    const bool is_bare = graph.children(one.to).empty() && graph.word(one.from).sense.empty();
    if ((is_bare || is_of_clause) && graph.child(one.to, "ARG1") < 0) one.role = "ARG1";
  }
  directions_apply(graph);
  sets_apply(graph);
}

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
    for (const Office& office : kOffices) {
      if (graph.is(at, office.name, office.sense)) {
        office_apply(graph, at, office);
        break;
      }
    }
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

namespace {

// "Such a secret place": such belongs to the noun, though it says how secret it is.
// (p / place :mod (s / secret :degree (s2 / such))).
void such_apply(Rewriter& graph, int at) {
  const int led = graph.child(at, "degree");
  const int above = led >= 0 && graph.is(graph.arc(led).to, "such") ? graph.parent(at) : -1;
  if (above < 0) return;
  const bool is_inside = graph.arc(above).inverse ? graph.arc(above).role == "ARG1" : graph.arc(above).role == "mod";
  if (is_inside) graph.replace(led, graph.arc(above).from, graph.arc(led).to, "mod");
}

// "The oldest house ever": behind the noun.
void ever_apply(Rewriter& graph, int at) {
  const int above = has_attribute(graph.word(at), "@most") ? graph.parent(at) : -1;
  const bool is_with_noun = above >= 0 && (graph.arc(above).role == "mod" || graph.arc(above).inverse);
  for (const char* role : {"time", "temporal"}) {
    const int led = is_with_noun ? graph.child(at, role) : -1;
    if (led >= 0 && graph.is(graph.arc(led).to, "ever"))
      graph.replace(led, graph.arc(above).from, graph.arc(led).to, "time");
  }
}

// "It helped him more": of what somebody does, how much stands behind it.
// (h / help-01 :ARG0 it :ARG1 he :quant (m / more)).
void amount_apply(Rewriter& graph, int at) {
  const int led = is_event(graph, at) && graph.child(at, "ARG0") >= 0 ? graph.child(at, "quant") : -1;
  constexpr std::array kAmounts{"more", "less", "most", "enough"};
  const bool is_amount = led >= 0 && is_one_of(graph, graph.arc(led).to, kAmounts);
  if (is_amount && graph.children(graph.arc(led).to).empty()) graph.arc(led).role = "extent";
}

}  // namespace

// (h / have-degree-91 :ARG1 x :ARG2 (t / tall) :ARG3 (m / more) :ARG4 y): tall with @more, its bearer x, compared to y.
void step_degree(Meaning& meaning) {
  Rewriter graph(meaning, "degree");
  for (int at = 0; at < graph.count(); ++at) {
    // "Such a small town": the degree of a quality stands in front of the noun.
    const int degree = graph.child(at, "degree");
    const int above = degree >= 0 && graph.is(graph.arc(degree).to, "such") ? graph.parent(at) : -1;
    const bool is_inside =
        above >= 0 && (graph.arc(above).inverse ? graph.arc(above).role == "ARG1" : graph.arc(above).role == "mod");
    if (is_inside) graph.replace(degree, graph.arc(above).from, graph.arc(degree).to, "mod");
    if (graph.is(at, "have-degree", "91") || graph.is(at, "have-degree", "92")) degree_apply(graph, at, false);
    if (graph.is(at, "have-quant", "91")) degree_apply(graph, at, true);
    ever_apply(graph, at);
    amount_apply(graph, at);
  }
  for (int at = 0; at < graph.count(); ++at) such_apply(graph, at);
}

namespace {

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

}  // namespace lexon
