// What the engine tells of its work. All fixed texts of the engine stand in trace.cpp, spelled as users know them;
// call sites say what happened. Every function tests the trace level itself, begins each line with the trace indent
// unless it says otherwise, and at a level that does not print formats and flushes nothing. Lines name a scope
// by its number, not its index. Candidates, rules and nodes are only read.
#pragma once

#include <cstdint>

#include "data/records.hpp"
#include "engine/loop.hpp"
#include "engine/side.hpp"

namespace lexon {

struct Session;

// ---- Printers of the engine's state. They print at every level: callers test it, or use the traces below.

// The list and the two nodes of the window. `with_words` shows the word lists of fresh nodes in full.
// Printing can change the list: a node without words is taken out.
void dump_list(Session& session, const Window& window, bool with_words);

// The list in one line with the two places marked; either may be null. A node without words is taken out.
void print_list_line(Session& session, const Window& window);

// The word in force (`one`), or the words that are open. Null, or a node without words, prints nothing.
void dump_node(Session& session, const Node* node, bool one);

// ---- Level 2: lists and applied rules.

// `dump_list` at level 2.
void trace_list(Session& session, const Window& window, bool with_words);

// The banner of an application and its rule; from level 4 on the rules behind it, but not for a post-edit rule.
void trace_rule_applied(Session& session, const RuleCandidate& candidate);
// The line of "=" that closes the banner.
void trace_rule_end(Session& session);

// How the node of a result has come to its place.
enum class Result : std::uint8_t { stood, inserted, shifted };

// A ">>>>>" line for a place of the window, and its word in force.
void trace_result_node(Session& session, Side side, Result result, const Node* node);
void trace_copied_node(Session& session, const Node* copy);

// The two lines on the way to backtracking, flushed: a rule was refused (`has_candidate`), or none was left.
void trace_to_backtrack(Session& session, bool has_candidate);

// "No Matched Word!" for the marked node of this side.
void trace_no_matched_word(Session& session, Side side);

// ---- Level 2: scopes.

// The steps into and out of a scope, a line each. The first two, and a return into the scope, are flushed.
enum class ScopeStep : std::uint8_t {
  entered_left,
  entered_right,
  finished,
  returned_into,
  return_finished,
  post_edit_entered,
  post_edit_finished,
};
void trace_scope(Session& session, ScopeStep step, int scope);

// "#1" is a scope entered from the right place, "#2" from the left one, "#3" one that was gone back into.
void trace_scope_failed(Session& session, int number, int scope);

// ---- At every level.

// A finished scope inside the one that is being undone is gone back into. Flushed.
void trace_return_to_inner_scope(Session& session);
// A search that ran out counts as finished. No indent.
void trace_search_taken_as_finished(Session& session);

// ---- Level 3: matching.

// The additions of `rule` would make the attributes longer than the limit: the message, flushed, and the rule.
void trace_attrs_too_long(Session& session, const Rule& rule);

// ---- Level 3: backtracking. The numbers are part of the format: they name the branch.

// What a banner announces: the word test that asked for a step back, the application that is undone in place, or a merge
// or exchange.
enum class Undoing : std::uint8_t { word_test, application, list_change };

// The banner, with the rule and both nodes. Flushed at the end; that of an application, line by line.
void trace_backtrack(Session& session, Undoing what, const RuleCandidate& candidate, const Window& window);

void trace_next_rule(Session& session, int number);
// The word in force of a place gives way to its next one, or all its words are given up.
enum class WordChange : std::uint8_t { next, clear_all };
void trace_word_change(Session& session, WordChange change, Side side, int number);
void trace_no_entry(Session& session, Side side);       // "#2" stands in front for the left side
void trace_no_next_entry(Session& session, Side side);  // of a failed scope, and its "next rule" line
void trace_ignore_rules(Session& session);
void trace_ignore_rules(Session& session, int number);

// ---- Level 3: a forced backtracking ends.

// Where it ends: as another word is in force or will be; by the next co-occurrence choice of the left side; at a word of
// an inserted right node; at a target that is given up in the window.
enum class ForcedEnd : std::uint8_t { word, left_choice, right_entry, left_place, right_place };
void trace_forced_ends(Session& session, ForcedEnd end);

}  // namespace lexon
