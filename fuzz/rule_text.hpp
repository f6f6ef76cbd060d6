// What the targets that hold rules share.
#pragma once

#include <string>
#include <string_view>

#include "rules/rule.hpp"
#include "support.hpp"

namespace lexon::fuzz {

struct ParsedRules {
  Rule* rules = nullptr;
  Status status = Status::ok;
};

[[nodiscard]] ParsedRules rules_parsed(std::string_view text);

// The canonical text of the list.
[[nodiscard]] std::string rules_printed(const Rule* rules);

// Is the canonical text sure to say the same again? That asks for texts of plain characters, and lines that fit.
[[nodiscard]] bool is_printable(const Rule* rules);

// The bytes of the compiled file; empty if the list cannot be written.
[[nodiscard]] std::string rules_compiled(const Rule* rules);

}  // namespace lexon::fuzz
