// Arcs are looked for along the chains of a concept, so that a step costs as much as it looks at, however large the
// sentence is. An arc that is gone keeps its place, so that numbers of arcs hold through all steps.
#include "import/rewriter.hpp"

#include <map>
#include <utility>

namespace lexon {

namespace {

// Ties an arc in at its place. Arcs that are new, or that are moved in the order of the source, come last.
void chain_add(ArcChains& chains, int at, int arc_at) {
  int& first = chains.first[static_cast<std::size_t>(at)];
  int& last = chains.last[static_cast<std::size_t>(at)];
  int& next = chains.next[static_cast<std::size_t>(arc_at)];
  if (last < arc_at) {
    next = -1;
    (last < 0 ? first : chains.next[static_cast<std::size_t>(last)]) = arc_at;
    last = arc_at;
    return;
  }
  int* link = &first;
  while (*link < arc_at) link = &chains.next[static_cast<std::size_t>(*link)];
  next = *link;
  *link = arc_at;
}

void chain_remove(ArcChains& chains, int at, int arc_at) {
  int* link = &chains.first[static_cast<std::size_t>(at)];
  int before = -1;
  while (*link != arc_at) before = *link, link = &chains.next[static_cast<std::size_t>(*link)];
  *link = chains.next[static_cast<std::size_t>(arc_at)];
  int& last = chains.last[static_cast<std::size_t>(at)];
  if (last == arc_at) last = before;
}

void chains_grow(ArcChains& chains, const Meaning& meaning) {
  if (chains.first.size() == meaning.concepts.size() && chains.next.size() == meaning.arcs.size()) return;
  chains.first.resize(meaning.concepts.size(), -1);
  chains.last.resize(meaning.concepts.size(), -1);
  chains.next.resize(meaning.arcs.size(), -1);
}

}  // namespace

// The first step makes the chains, all others find them.
Rewriter::Rewriter(Meaning& meaning, const char* step) : meaning_(meaning), step_(step) {
  const std::size_t known = meaning.leaving.next.size();
  chains_grow(meaning.leaving, meaning);
  chains_grow(meaning.arriving, meaning);
  for (std::size_t i = known; i < meaning.arcs.size(); ++i) {
    chain_add(meaning.leaving, meaning.arcs[i].from, static_cast<int>(i));
    chain_add(meaning.arriving, meaning.arcs[i].to, static_cast<int>(i));
  }
}

// A copy of numbers and not a view of arcs: who walks over it may add arcs on the way, which moves the arcs in memory.
std::vector<int> Rewriter::children(int at) {
  const int first = first_from(at);
  std::size_t count = 0;
  for (int led = first; led >= 0; led = next_from(led)) count += arc(led).gone ? 0 : 1;
  std::vector<int> found;
  found.reserve(count);
  for (int led = first; led >= 0; led = next_from(led)) {
    if (!arc(led).gone) found.push_back(led);
  }
  return found;
}

int Rewriter::child(int at, std::string_view role, bool inverse) {
  for (int led = first_from(at); led >= 0; led = next_from(led)) {
    const Arc& one = arc(led);
    if (one.inverse == inverse && is_same(one.role, role) && !one.gone) return led;
  }
  return -1;
}

// The first in the order of the source, whichever way the walk from the root would come: steps that need that way ask for
// it themselves (first_arcs in clauses.hpp).
int Rewriter::parent(int at) {
  int led = first_to(at);
  while (led >= 0 && arc(led).gone) led = next_to(led);
  return led;
}

int Rewriter::mentions(int at) {
  int count = 0;
  for (int led = first_to(at); led >= 0; led = next_to(led)) count += arc(led).gone ? 0 : 1;
  return count;
}

// (b / boy :ARG0-of (w / want-01)) and (w / want-01 :ARG0 (b / boy)) say the same of want-01. The first of both kinds.
int Rewriter::argument(int frame, std::string_view role) {
  const int here = child(frame, role);
  for (int led = first_to(frame); led >= 0 && (here < 0 || led < here); led = next_to(led)) {
    const Arc& one = arc(led);
    if (one.inverse && is_same(one.role, role) && !one.gone) return led;
  }
  return here;
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
  std::vector<bool> seen(meaning_.concepts.size());
  std::vector<int> open{above};
  while (!open.empty()) {
    const int at = open.back();
    open.pop_back();
    if (at == below) return true;
    if (seen[static_cast<std::size_t>(at)]) continue;
    seen[static_cast<std::size_t>(at)] = true;
    for (int led = first_from(at); led >= 0; led = next_from(led)) {
      if (!arc(led).gone) open.push_back(arc(led).to);
    }
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
  lead_from(arc_at, from);
  lead_to(arc_at, to);
  arc(arc_at).role = std::move(role);
  arc(arc_at).inverse = inverse;
  return arc_at;
}

// An arc of a step's own making has no triple: it is in the graph, and no figure counts it.
int Rewriter::add(int from, int to, std::string role, bool inverse) {
  const int made = static_cast<int>(meaning_.arcs.size());
  meaning_.arcs.push_back({ArcEnd(from), ArcEnd(to), std::move(role), inverse, -1, false});
  chains_grow(meaning_.leaving, meaning_);
  chains_grow(meaning_.arriving, meaning_);
  chain_add(meaning_.leaving, from, made);
  chain_add(meaning_.arriving, to, made);
  return made;
}

void Rewriter::lead_from(int arc_at, int from) {
  if (arc(arc_at).from == from) return;
  chain_remove(meaning_.leaving, arc(arc_at).from, arc_at);
  chain_add(meaning_.leaving, from, arc_at);
  arc(arc_at).from.at_ = from;
}

void Rewriter::lead_to(int arc_at, int to) {
  if (arc(arc_at).to == to) return;
  chain_remove(meaning_.arriving, arc(arc_at).to, arc_at);
  chain_add(meaning_.arriving, to, arc_at);
  arc(arc_at).to.at_ = to;
}

void Rewriter::swap_places(int one_at, int other_at) {
  const Arc kept = arc(one_at);
  const Arc other = arc(other_at);
  replace(one_at, other.from, other.to, other.role, other.inverse);
  replace(other_at, kept.from, kept.to, kept.role, kept.inverse);
  std::swap(arc(one_at).triple, arc(other_at).triple);
  std::swap(arc(one_at).gone, arc(other_at).gone);
}

// An arc from `now` to `old` would lead from a concept to itself, so it goes; its words are said by `now`.
void Rewriter::redirect(int old, int now) {
  for (int led = first_to(old), next = -1; led >= 0; led = next) {
    next = next_to(led);
    if (arc(led).from != now) {
      lead_to(led, now);
    } else {
      remove(led, Fate::word);
    }
  }
  if (meaning_.root == old) meaning_.root = now;
}

// What led from `old` to `now` itself goes, as above. Arcs that are gone stay where they were, for the list of triples.
void Rewriter::move_children(int old, int now) {
  for (const int led : children(old)) {
    if (arc(led).to == now) {
      remove(led, Fate::word);
    } else {
      lead_from(led, now);
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
  chains_grow(meaning_.leaving, meaning_);
  chains_grow(meaning_.arriving, meaning_);
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
