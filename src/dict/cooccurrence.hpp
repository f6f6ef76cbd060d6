// Choosing among words by how well they go with a neighbour, and the members of word classes.
//
// The co-occurrence dictionary has the form of the word dictionary. Its entries:
//   hw = first text, relation and second text run together    priority: the strength of the pair, 0 to 255
//   hw = a relation                                           priority: its default strength, 0 to 127
//   cw = "sup" and a relation or class, id = a member of it   priority: members are tried from the highest down
#pragma once

#include "data/records.hpp"
#include "data/status.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

// Scores the words of `side` against the word of the other under the rule's ROLE, and moves the
// best to the front of its list. `chosen` is null for a first check and the rest of a chain on a retry; afterwards it
// holds the chain from the member that gave the value. Returns the best score: above 0 the rule may go on, 0 it may
// not, -1 a failed lookup, 1 no check was needed.
[[nodiscard]] int cooccurrence_check(Session& session, WordEntry*& left, WordEntry*& right, const Rule& rule,
                                     WordEntry*& chosen, Side side);

// The members of a relation or class by falling priority; null for none, for a null or empty text, and when the lookup
// fails.
[[nodiscard]] WordEntry* sup_members(Session& session, const char* text);

// The words of the class named by the first HW condition of the side's pattern, or null. A failed lookup, or a stop,
// ends the list.
[[nodiscard]] WordEntry* word_class_entries(Session& session, const Rule& rule, Side side);

// A word with this surface form and the texts of all attribute conditions of the pattern, or null.
[[nodiscard]] WordEntry* entry_from_class_member(Session& session, const NodePattern& pattern, const char* hw);

}  // namespace lexon
