// Character classes of the formats, for 8-bit text. Locale plays no part.
#pragma once

namespace lexon {

[[nodiscard]] constexpr bool is_blank(char c) {
  return c == ' ' || c == '\t';
}
[[nodiscard]] constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
[[nodiscard]] constexpr bool is_letter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Steps over blanks. Works on `char*` and `const char*`, and stops at the terminator.
template <typename Char>
[[nodiscard]] constexpr Char* skip_blanks(Char* text) {
  while (is_blank(*text)) ++text;
  return text;
}

}  // namespace lexon
