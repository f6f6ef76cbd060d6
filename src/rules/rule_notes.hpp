// What the parser found wrong with rules, for front ends that show it beside the text. The lines that it prints into
// the output stand apart from these.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "data/text_line.hpp"

namespace lexon {

enum class RuleFault : std::uint8_t {
  type,
  left_missing,
  left_quote,  // an inserted pattern where the type takes none
  left_brace,  // a pattern of what is there where the type takes an inserted one
  right_missing,
  right_quote,
  right_brace,
  right_brace_behind_mid,
  mid,
  item_open,  // the line ends in a token
  bracket_open,
  group_open,
  group_character,  // one that no group holds
  paren_in_cond,
  not_in_action,
  paren_in_action,
  second_form,
  second_concept,
  relation,
  role,
  role_open,
  section_too_many,
  pattern_open,
  endless,
  no_priority,  // from here on the rule stays
  no_relation,
};

struct RuleNote {
  std::int64_t line = 0;   // from 1
  std::size_t column = 0;  // byte of `text`
  RuleFault fault{};
  std::string text;  // the line, or the piece of it that counts as one, without its end
};

// All that the parse of one file leaves.
struct RuleNotes {
  TextWatch text;
  std::vector<RuleNote> notes;   // in file order
  std::int64_t refused = 0;      // rules that are left out
  std::int64_t memory_line = 0;  // where memory was exhausted; 0: nowhere
  bool last_line_fails = false;  // the last line is refused, and the conversion with it
};

// Does a rule with this fault stay in force?
[[nodiscard]] constexpr bool is_warning(RuleFault fault) {
  return fault >= RuleFault::no_priority;
}

// What is wrong, and how it is written right: one line.
[[nodiscard]] const char* rule_fault_text(RuleFault fault);

}  // namespace lexon
