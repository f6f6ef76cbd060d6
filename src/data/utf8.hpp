// Characters of text that is UTF-8, or some other 8-bit text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace lexon {

struct Utf8Character {
  std::uint32_t code;  // a byte that begins no character stands for itself
  std::size_t length;  // in bytes
  bool is_valid;
};

// The first character of `text`, which is not empty.
[[nodiscard]] constexpr Utf8Character utf8_first(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1, true};
  const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (length == 0 || text.size() < length) return {lead, 1, false};
  std::uint32_t code = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {lead, 1, false};
    code = code << 6 | (byte(i) & 0x3FU);
  }
  const bool is_too_long = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool is_none = is_too_long || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000);
  return is_none ? Utf8Character{lead, 1, false} : Utf8Character{code, length, true};
}

// How many characters `text` has.
[[nodiscard]] constexpr std::size_t utf8_count(std::string_view text) {
  std::size_t count = 0;
  for (; !text.empty(); text.remove_prefix(utf8_first(text).length)) ++count;
  return count;
}

}  // namespace lexon
