// Entering the scope of a scope reference: a nested list is generated, and its result stands in the reference's word.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "data/records.hpp"
#include "data/status.hpp"
#include "engine/loop.hpp"
#include "engine/side.hpp"

namespace lexon {

struct Session;

// The place of the window whose scope the rule enters, if any. The right place is asked first.
[[nodiscard]] std::optional<Side> scope_to_enter(const Session& session, const Window& window, const Rule& rule);

struct ScopeResult {
  Status status;
  bool wants_undo;  // the scope has failed, what was handed in is taken back, and the outer list is to be undone
};

// Generates the scope of the reference at this place. After ok the reference's word holds what the scope's entry word
// brought. Leaves `home_scope` on the outer scope.
[[nodiscard]] ScopeResult scope_enter(Session& session, Side side, Window& window, const RuleCandidate& candidate,
                                      std::int32_t& home_scope);

// The attributes of the reference's word become `own`, a comma and the attributes of the scope's entry word without
// "@entry". `own` may lie in the old attributes. The word's sizes follow.
[[nodiscard]] Status reference_attrs_join(Session& session, WordEntry& word, std::string_view own,
                                          const WordEntry& entry_word);

}  // namespace lexon
