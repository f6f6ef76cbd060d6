// A text as the protocol of language servers sees it: lines, and columns in units of UTF-16.
#pragma once

#include <cstdint>
#include <deque>
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

 private:
  std::shared_ptr<const std::string> text_;
  std::vector<std::size_t> starts_;  // of each line, its first byte; rising, the first is 0
};

// A text while changes are made to it one after the other, each in terms of what the ones before it have left. Only the
// lines that a change touches are made anew: a rename in thousands of places comes as thousands of changes.
class TextEdit {
 public:
  // The text must outlive it.
  explicit TextEdit(const LinedText& text);

  // Puts `by` in the place of what stands between two places, which count as the nearest ones inside of the text.
  void replace(const TextPosition& begin, const TextPosition& end, std::string_view by);
  [[nodiscard]] std::string text() const;

 private:
  struct Spot {
    std::size_t line;
    std::size_t byte;
  };
  [[nodiscard]] Spot spot_of(const TextPosition& position) const;

  std::vector<std::string_view> lines_;  // with their ends; never empty, and all but the last have one
  std::deque<std::string> written_;      // what lines point into that are no longer those of the text
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
