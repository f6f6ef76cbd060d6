// What several steps ask about clauses: their subject and core, and who is named where.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "import/rewriter.hpp"

namespace lexon {

// A frame, or anything that is said of a subject.
bool is_clause(Rewriter& graph, int at);

// Who has a clause of his own stands behind: "she gave the key to the woman who lived there".
bool is_long_receiver(Rewriter& graph, int receiver);

// Verbs whose receiver stands in front of what he receives; for a pronoun that is received see giving_apply.
bool gives(Rewriter& graph, int at);

// True for a clause that a question was asked into: "what do you think he will do if it rains?" A clause in front of it would
// hide where the answer stands.
bool is_asked_into(Rewriter& graph, int clause);
// True for such a clause, and for one that begins with a conjunction of its own: "if the bridge breaks when we cross it?"
bool is_front_taken(Rewriter& graph, int clause);

// For each concept the arc by which the walk from the beginning of the sentence first comes to it; -1 for none.
std::vector<int> first_arcs(Rewriter& graph);

// A word of its own for a further mention of a concept. Of the attributes it has those that say what it is; what is said
// about it, degree or negation, stays with the first.
// (w / want-01 :ARG0 (b / boy) :ARG1 (s / sing-01 :ARG0 b)) has one concept for two mentions: the second becomes boy.@ref,
// of which a rule makes "he", or nothing.
int mention_of(Rewriter& graph, int at);

// Arguments of a frame, in contrast to circumstances.
bool is_core_role(const std::string& role);

bool is_core(const Arc& one);

// A concept that joins its operands, and the attribute of all operands but the first.
struct Conjunction {
  std::string_view name;
  const char* attribute;
};

// Null for what joins nothing.
// contrast-01 has ARG1 and ARG2 instead of operands; the choices name alternatives, of which each bank has its own.
const Conjunction* conjunction_of(Rewriter& graph, int at);

// What a concept is a part of, however often it is joined: (a / and :op1 (b / but :op1 at)) is a. Itself if it is not joined.
int joined_in(Rewriter& graph, int at);

// The subject of a clause as the source writes it: its agent, or else what it is said of.
int subject_arc(Rewriter& graph, int clause);

// The verbs of states.txt, as text.
extern const char* const kStates;

// A frame whose verb tells of a state, which stands in the present if nothing else is known.
bool is_state(Rewriter& graph, int at);

// Verbs that may have direct speech as what is said.
inline constexpr std::array kSaying{
    "say",    "ask",     "answer",  "reply",    "exclaim",  "cry",     "demand",   "add",       "remark",
    "repeat", "state",   "murmur",  "respond",  "object",   "inquire", "explain",  "call-out",  "tell",
    "think",  "declare", "shout",   "whisper",  "announce", "observe", "continue", "interrupt", "confess",
    "insist", "protest", "comment", "complain", "warn",     "admit",   "conclude", "suggest",   "mutter",
    "agree",  "call",    "mumble",  "sigh",     "yell",     "scream",  "enquire",  "go-on"};

// All concepts that some clauses are made of, themselves first; graphs have circles and meet again, so each is there once.
// Used to ask whether anybody in a quotation says "I".
std::vector<int> clause_words(Rewriter& graph, std::vector<int> clauses);

// A deed that is told without modal verb and negation, and may become an infinitive.
bool is_plain_deed(Rewriter& graph, int at);

// Marks `clause` as an infinitive that `mark` tells of: it has no tense.
void make_infinitive(Rewriter& graph, int clause, const char* mark);

// Nouns of which there is a lot, and not lots of them; frames are no matter here.
bool is_uncounted(const std::string& name);

}  // namespace lexon
