// Conditions on one word: surface form, concept word, and room for the attributes that a rule adds.
#pragma once

#include "data/records.hpp"
#include "engine/loop.hpp"
#include "engine/side.hpp"
#include "rules/rule.hpp"

namespace lexon {

struct Session;

// Has the word this surface form and this concept word? A null text is not asked for. The surface form counts as
// fitting if `node` (may be null) holds words of a class.
[[nodiscard]] bool test_surface_one(const Node* node, const WordEntry& word, const char* hw, const char* cw);

// Does the word satisfy all conditions? A null word satisfies none, not even an empty list.
[[nodiscard]] bool test_surface(const Node* node, const WordEntry* word, const CondItem* hw_conds,
                                const CondItem* cw_conds);

// Do the additions of the rule's pattern of this side stay within the limit of an attribute string?
[[nodiscard]] bool attr_room_suffices(Side side, const Rule& rule, const Window& window);

// The same; traced if not.
[[nodiscard]] bool attr_room_ok(Session& session, Side side, const Rule& rule, const Window& window);

}  // namespace lexon
