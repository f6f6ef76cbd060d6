// Arcs are looked for one by one: a sentence has a few dozen, and no step may make a list that the next step has to keep
// true. An arc that is gone keeps its place, so that numbers of arcs hold through all steps.
#include "import/rewriter.hpp"

#include <map>
#include <utility>

namespace lexon {

// A copy of numbers and not a view of arcs: who walks over it may add arcs on the way, which moves the arcs in memory.
std::vector<int> Rewriter::children(int at) {
  std::vector<int> found;
  for (std::size_t i = 0; i < meaning_.arcs.size(); ++i) {
    if (meaning_.arcs[i].from == at && !meaning_.arcs[i].gone) found.push_back(static_cast<int>(i));
  }
  return found;
}

int Rewriter::child(int at, std::string_view role, bool inverse) {
  for (std::size_t i = 0; i < meaning_.arcs.size(); ++i) {
    const Arc& one = meaning_.arcs[i];
    if (one.from == at && !one.gone && one.inverse == inverse && one.role == role) return static_cast<int>(i);
  }
  return -1;
}

// The first in the order of the source, whichever way the walk from the root would come: steps that need that way ask for
// it themselves (first_arcs in clauses.hpp).
int Rewriter::parent(int at) {
  for (std::size_t i = 0; i < meaning_.arcs.size(); ++i) {
    if (meaning_.arcs[i].to == at && !meaning_.arcs[i].gone) return static_cast<int>(i);
  }
  return -1;
}

int Rewriter::mentions(int at) {
  int count = 0;
  for (const Arc& one : meaning_.arcs) count += one.to == at && !one.gone;
  return count;
}

// (b / boy :ARG0-of (w / want-01)) and (w / want-01 :ARG0 (b / boy)) say the same of want-01.
int Rewriter::argument(int frame, std::string_view role) {
  for (std::size_t i = 0; i < meaning_.arcs.size(); ++i) {
    const Arc& one = meaning_.arcs[i];
    const bool is_here = (one.from == frame && !one.inverse) || (one.to == frame && one.inverse);
    if (is_here && !one.gone && one.role == role) return static_cast<int>(i);
  }
  return -1;
}

// A number of more than three digits is part of a name that a bank made up, and not a place in a list.
std::vector<int> Rewriter::numbered(int at, std::initializer_list<std::string_view> prefixes) {
  std::map<int, int> sorted;
  for (const int led : children(at)) {
    const std::string_view role = arc(led).role;
    if (arc(led).inverse) continue;
    for (const std::string_view prefix : prefixes) {
      if (!role.starts_with(prefix)) continue;
      const std::string_view number = role.substr(prefix.size());
      if (number.empty() || number.size() > 3 || number.find_first_not_of("0123456789") != number.npos) break;
      sorted.emplace(std::stoi(std::string(number)), led);
      break;
    }
  }
  std::vector<int> found;
  found.reserve(sorted.size());
  for (const auto& [number, led] : sorted) found.push_back(led);
  return found;
}

// Depth first, each concept once: a graph may have circles.
bool Rewriter::reaches(int above, int below) {
  std::vector<std::vector<int>> under(meaning_.concepts.size());
  for (const Arc& one : meaning_.arcs) {
    if (!one.gone) under[static_cast<std::size_t>(one.from)].push_back(one.to);
  }
  std::vector<bool> seen(meaning_.concepts.size());
  std::vector<int> open{above};
  while (!open.empty()) {
    const int at = open.back();
    open.pop_back();
    if (at == below) return true;
    if (seen[static_cast<std::size_t>(at)]) continue;
    seen[static_cast<std::size_t>(at)] = true;
    for (const int to : under[static_cast<std::size_t>(at)]) open.push_back(to);
  }
  return false;
}

// An arc stays in the list, so that its triple can be told; whoever walks over arcs asks for `gone`.
void Rewriter::remove(int arc_at, Fate fate) {
  arc(arc_at).gone = true;
  settle(meaning_, arc(arc_at).triple, fate, step_);
}

// The triple stays open: what writes the graph settles it as a relation.
int Rewriter::replace(int arc_at, int from, int to, std::string role, bool inverse) {
  Arc& changed = arc(arc_at);
  changed.from = from;
  changed.to = to;
  changed.role = std::move(role);
  changed.inverse = inverse;
  return arc_at;
}

// An arc of a step's own making has no triple: it is in the graph, and no figure counts it.
int Rewriter::add(int from, int to, std::string role, bool inverse) {
  meaning_.arcs.push_back({from, to, std::move(role), inverse, -1, false});
  return static_cast<int>(meaning_.arcs.size()) - 1;
}

// An arc from `now` to `old` would lead from a concept to itself, so it goes; its words are said by `now`.
void Rewriter::redirect(int old, int now) {
  for (Arc& one : meaning_.arcs) {
    if (one.to == old && one.from != now) one.to = now;
    if (one.to == old && one.from == now) one.gone = true, settle(meaning_, one.triple, Fate::word, step_);
  }
  if (meaning_.root == old) meaning_.root = now;
}

// What led from `old` to `now` itself goes, as above. Arcs that are gone stay where they were, for the list of triples.
void Rewriter::move_children(int old, int now) {
  for (Arc& one : meaning_.arcs) {
    if (one.from != old || one.gone) continue;
    if (one.to == now) {
      one.gone = true;
      settle(meaning_, one.triple, Fate::word, step_);
    } else {
      one.from = now;
    }
  }
}

// The order matters: the arc goes first, or what led to `at` would be turned into an arc from `now` to itself.
void Rewriter::stand_in(int at, int arc_at, Fate how) {
  const int now = other(arc_at, at);
  remove(arc_at, how);
  settle_concept(at, Fate::attribute);
  redirect(at, now);
  move_children(at, now);
}

// It has no triple and no variable: nothing of the source is lost with it, and no table of attributes can name it.
int Rewriter::add_concept(std::string name) {
  Concept made;
  made.name = std::move(name);
  meaning_.concepts.push_back(std::move(made));
  return count() - 1;
}

bool is_personal_pronoun(Rewriter& graph, int at) {
  return is_one_of(graph, at, kPersonalPronouns);
}

bool is_unknown(Rewriter& graph, int at) {
  return graph.is(at, "amr-unknown") || graph.is(at, "umr-unknown");
}

// (d / drive-01 with @agent) is the driver and (o / order-01 with @result) the order: frames no longer, though they
// keep the sense by which the dictionary finds the noun.
bool is_event(Rewriter& graph, int at) {
  const Concept& word = graph.word(at);
  return !word.sense.empty() && !has_attribute(word, "@agent") && !has_attribute(word, "@result");
}

bool is_seeming(Rewriter& graph, int at) {
  return graph.is(at, "seem", "01") || graph.is(at, "appear", "02");
}

}  // namespace lexon
