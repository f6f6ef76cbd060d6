// A text as the protocol of language servers sees it: lines, and columns in units of UTF-16.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lexon {
inline namespace v1 {
namespace lab {

// Both count from 0.
struct TextPosition {
  std::int64_t line = 0;
  std::int64_t character = 0;  // UTF-16 units
};

// A text with its lines. Read-only; a change makes another.
class LinedText {
 public:
  explicit LinedText(std::shared_ptr<const std::string> text);

  [[nodiscard]] const std::string& text() const { return *text_; }
  [[nodiscard]] const std::shared_ptr<const std::string>& shared() const { return text_; }
  [[nodiscard]] std::size_t line_count() const { return starts_.size(); }
  // Without its end; empty behind the last.
  [[nodiscard]] std::string_view line(std::size_t number) const;
  [[nodiscard]] std::size_t start(std::size_t line) const { return starts_[line]; }
  // The line that a byte of the text stands in.
  [[nodiscard]] std::size_t line_of(std::size_t offset) const;

  // Places outside of the text count as the nearest one inside.
  [[nodiscard]] std::size_t offset(const TextPosition& position) const;
  [[nodiscard]] std::size_t byte_in_line(const TextPosition& position) const;
  [[nodiscard]] TextPosition position(std::size_t line, std::size_t byte) const;

  // The text with what stands between two places replaced.
  [[nodiscard]] std::string replaced(const TextPosition& begin, const TextPosition& end, std::string_view by) const;

 private:
  std::shared_ptr<const std::string> text_;
  std::vector<std::size_t> starts_;
};

// UTF-16 units of a text. A byte that is no UTF-8 counts as one.
[[nodiscard]] std::int64_t utf16_length(std::string_view text);
// The byte behind so many units; in the middle of a pair its begin.
[[nodiscard]] std::size_t utf16_byte(std::string_view text, std::int64_t units);

// The path of a "file:" URI; none for another one.
[[nodiscard]] std::optional<std::string> path_of_uri(std::string_view uri);
[[nodiscard]] std::string uri_of_path(std::string_view path);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
