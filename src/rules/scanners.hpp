// The scanners of the rule language. Each leaves the cursor behind what it took, and none passes the line's NUL: that
// alone ends a line, a line feed is a character like others.
#pragma once

#include <cstddef>

#include "data/chars.hpp"
#include "data/pool.hpp"
#include "data/status.hpp"
#include "rules/rule.hpp"

namespace lexon {

inline constexpr std::size_t kAttrTokenLimit = 256;
inline constexpr std::size_t kRoleTokenLimit = 64;
inline constexpr std::size_t kRelationLabelLimit = 3;

// The characters that end a token or a label.
[[nodiscard]] constexpr bool is_separator(char c) {
  return is_blank(c) || c == ',' || c == ')' || c == ':' || c == '}' || c == '"';
}

// What ends a section of a pattern, the end of the line included.
[[nodiscard]] constexpr bool is_section_end(char c) {
  return c == '\0' || c == '}' || c == '"' || c == ':';
}

// Steps over any run of commas and blanks.
[[nodiscard]] const char* skip_commas(const char* text);

// Is the "]" at `position` the one that closes a surface form? It is if a reserved character or a closer stands
// behind it, blanks apart.
[[nodiscard]] bool is_hw_text_end(const char* position);

// Read the body of a bracket item; the cursor stands behind its opening. Null if the line ends at once, or for want of
// memory: that, too, shows as an error of syntax.
[[nodiscard]] char* scan_hw_text(Pool& pool, const char*& cursor);
[[nodiscard]] char* scan_cw_text(Pool& pool, const char*& cursor);

// Read a token or a label into `item.text`, cut at `limit` characters; the rest is skipped. `no_effect` if the line
// ended in it or directly behind it.
[[nodiscard]] Status scan_attr_token(Pool& pool, const char*& cursor, CondItem& item, std::size_t limit);
[[nodiscard]] Status scan_relation_label(Pool& pool, const char*& cursor, CondItem& item, std::size_t limit);

}  // namespace lexon
