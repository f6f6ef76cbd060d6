// What the steps of rewriting share: looking at a graph from one concept, and changing arcs so that no triple is lost
// from sight.
#pragma once

#include <algorithm>
#include <array>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "import/meaning.hpp"

namespace lexon {

class Rewriter {
 public:
  // `step` names what the list of triples gives as the reason.
  Rewriter(Meaning& meaning, const char* step);

  Meaning& meaning() { return meaning_; }
  int count() const { return static_cast<int>(meaning_.concepts.size()); }
  Concept& word(int at) { return meaning_.concepts[static_cast<std::size_t>(at)]; }
  Arc& arc(int at) { return meaning_.arcs[static_cast<std::size_t>(at)]; }
  bool is(int at, std::string_view name, std::string_view sense = {}) {
    const Concept& one = word(at);
    return is_same(one.name, name) && is_same(one.sense, sense) && !one.is_text;
  }

  // The arcs that are written at a concept, in the order of the source.
  std::vector<int> children(int at);
  // The first of them with this role and direction; -1 for none.
  int child(int at, std::string_view role, bool inverse = false);
  // The first arc that leads to a concept; -1 for the root.
  int parent(int at);
  // How many arcs lead to it.
  int mentions(int at);
  // The arc by which `frame` has the role, written at either end; -1 for none.
  int argument(int frame, std::string_view role);
  // The other end of an arc.
  int other(int arc_at, int end) { return arc(arc_at).from == end ? arc(arc_at).to : arc(arc_at).from; }
  // The arcs to what a concept counts up, op1, op2, ... for the prefix "op", in the order of their numbers, which is not
  // always that of the source. Of two with the same number the first counts.
  std::vector<int> numbered(int at, std::initializer_list<std::string_view> prefixes);
  // True if `below` can be reached from `above` over arcs as they are written.
  bool reaches(int above, int below);

  // Takes an arc out: its triple is expressed in another way (`fate` attribute or word) or left out.
  void remove(int arc_at, Fate fate);
  // The concept is not a word of its own any more.
  void settle_concept(int at, Fate fate) { settle(meaning_, word(at).triple, fate, step_); }
  // A new arc in the place of an old one, whose triple it carries.
  int replace(int arc_at, int from, int to, std::string role, bool inverse = false);
  int add(int from, int to, std::string role, bool inverse = false);
  // An arc gets another beginning or another end.
  void lead_from(int arc_at, int from);
  void lead_to(int arc_at, int to);
  // Two arcs change places in the order of the source.
  void swap_places(int one_at, int other_at);
  // Everything that led to `old` leads to `now`, the beginning of the sentence included.
  void redirect(int old, int now);
  // The other end of an arc takes the place of a concept that is no word of its own: it gets what led there and what is
  // written there. The arc itself was expressed as `how`.
  void stand_in(int at, int arc_at, Fate how = Fate::attribute);
  // What is written at `old` is written at `now`.
  void move_children(int old, int now);
  // A concept of the step's own making.
  int add_concept(std::string name);

 private:
  // Along the chains of a concept, arcs that are gone included.
  int first_from(int at) { return meaning_.leaving.first[static_cast<std::size_t>(at)]; }
  int next_from(int arc_at) { return meaning_.leaving.next[static_cast<std::size_t>(arc_at)]; }
  int first_to(int at) { return meaning_.arriving.first[static_cast<std::size_t>(at)]; }
  int next_to(int arc_at) { return meaning_.arriving.next[static_cast<std::size_t>(arc_at)]; }

  Meaning& meaning_;
  const char* step_;
};

template <std::size_t N>
bool is_listed(std::string_view name, const std::array<const char*, N>& names) {
  // Letter by letter, as the first mostly settles it; nothing is measured.
  return std::any_of(names.begin(), names.end(), [&](const char* one) {
    for (const char letter : name) {
      if (*one != letter || letter == '\0') return false;
      ++one;
    }
    return *one == '\0';
  });
}

// True for a concept with one of these names, whatever its sense.
template <std::size_t N>
bool is_one_of(Rewriter& graph, int at, const std::array<const char*, N>& names) {
  return is_listed(graph.word(at).name, names);
}

// The first arc with this role that leads to one of these names; -1 for none.
template <std::size_t N>
int child_among(Rewriter& graph, int at, std::string_view role, const std::array<const char*, N>& names) {
  for (const int led : graph.children(at)) {
    const Arc& one = graph.arc(led);
    if (!one.inverse && one.role == role && is_one_of(graph, one.to, names)) return led;
  }
  return -1;
}

// The concepts that stand for people and things spoken of before, and those that point at them.
inline constexpr std::array kPersonalPronouns{"i", "we", "you", "he", "she", "it", "they"};
inline constexpr std::array kDemonstratives{"this", "that", "these", "those"};

// Times that last: "all night", "the whole summer".
inline constexpr std::array kSpans{"day",  "night", "morning", "afternoon", "evening", "week",
                                   "year", "month", "summer",  "winter",    "spring",  "autumn"};

// Verbs below which a question is reported and not asked.
inline constexpr std::array kReporting{
    "know",     "wonder",    "understand", "forget",    "remember", "learn",   "explain",  "tell",    "see",
    "ask",      "find-out",  "show",       "discover",  "teach",    "inquire", "question", "say",     "decide",
    "realize",  "hear",      "doubt",      "matter",    "idea",     "care",    "imagine",  "guess",   "notice",
    "describe", "determine", "reveal",     "important", "clear",    "sure",    "certain",  "obvious", "unclear"};

bool is_personal_pronoun(Rewriter& graph, int at);
// What a question asks for, in either bank: amr-unknown, umr-unknown.
bool is_unknown(Rewriter& graph, int at);
// A frame that is said as a verb, or as a noun of an event; the driver and the order (step persons) are none.
bool is_event(Rewriter& graph, int at);
// A frame that says how something looks from outside, and has no subject of its own: seem-01, appear-02.
bool is_seeming(Rewriter& graph, int at);

}  // namespace lexon
