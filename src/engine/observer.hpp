// Who watches the engine at work. A session without an observer pays a test for null at each of the places that tell.
//
// What the calls hand out lives in the sentence's pool and can be gone after the call: what is to be kept is copied. An
// observer may look at everything and change nothing, but for `Session::stop_requested`. A search can go on for ever:
// what an observer keeps must not grow with it. Why a rule was refused is asked in the call (engine/refusal.hpp).
#pragma once

#include <cstdint>
#include <span>

#include "data/records.hpp"
#include "data/session.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"

namespace lexon {

class Observer {
 public:
  virtual ~Observer() = default;

  // ---- The sentence, from the end of its reading on. Every one that begins ends, whatever comes of it.

  virtual void sentence_begins(Session&) {}
  // The search of generation is over; what it has made stands in lists and records, if the status is ok.
  virtual void generated(Session&, Status) {}
  virtual void sentence_ends(Session&, Status) {}

  // ---- The search, and post-edit.

  // A list of rules was asked for. The right place is empty at the end of a list. A search that goes on with the rest
  // of an older list asks for none.
  virtual void offered(Session&, const Window&, const RuleCandidate* /*list*/) {}
  // The same in post-edit.
  virtual void offered_in_post_edit(Session&, const Window&, std::span<const RuleBlock> /*rules*/) {}
  // A rule was held against `before`; on a fit `after` holds what it has brought in. A fit of a word test has narrowed
  // the words; a word test that is `refused` asks for a step back.
  virtual void tried(Session&, const RuleCandidate&, const Window& /*before*/, const Window& /*after*/, Fit) {}
  // A rule was carried out and has left the window there. A candidate can be carried out again, with the next word of a
  // co-occurrence choice or with another solution of its scope.
  virtual void applied(Session&, const RuleCandidate&, const Window& /*after*/) {}
  // The newest step is about to be taken back: the candidate has matched, and been carried out unless its scope failed.
  virtual void undone(Session&, const RuleCandidate&) {}
  // The word in force of a node is about to be given up for its next one.
  virtual void word_given_up(Session&, const Node&) {}

  // ---- Scopes, by number.

  virtual void scope_entered(Session&, const RuleCandidate&, int /*scope*/) {}
  // A finished scope is searched for another solution.
  virtual void scope_returned_into(Session&, int /*scope*/) {}
  virtual void scope_left(Session&, int /*scope*/, bool /*has_failed*/) {}
};

// Asks for the rules of a window in the sight of the observer.
[[nodiscard]] RuleCandidate* window_rules(Session& session, const Window& window);

}  // namespace lexon
