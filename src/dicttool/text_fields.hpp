// Lines and fields of the texts that words are imported from.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lexon {

// Bad lines of an import that are told one by one; of more only the number is told.
inline constexpr std::int64_t kShownLines = 20;

// The next line of `rest`, without its end, which may be that of Windows. False behind the last one.
inline bool take_line(std::string_view& rest, std::string_view& line) {
  if (rest.empty()) return false;
  const std::size_t end = std::min(rest.find('\n'), rest.size());
  line = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  if (line.ends_with('\r')) line.remove_suffix(1);
  return true;
}

// What stands between separators; one empty field for an empty text.
inline std::vector<std::string_view> fields_of(std::string_view text, char separator) {
  std::vector<std::string_view> fields;
  while (true) {
    const std::size_t end = text.find(separator);
    fields.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return fields;
    text.remove_prefix(end + 1);
  }
}

// The whole of a file, or of standard input for "-", without a byte order mark. False if it cannot be had: `reason` says
// why.
[[nodiscard]] bool text_read(const std::string& path, std::string& text, std::string& reason);

}  // namespace lexon
