#include "lab/lsp_document.hpp"

#include <algorithm>
#include <charconv>
#include <utility>

#include "data/utf8.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// Characters beyond the first plane take four bytes and two units.
constexpr std::size_t kPairLength = 4;

// A character in the two ways to count it.
struct Step {
  std::size_t bytes;   // of UTF-8
  std::int64_t units;  // of UTF-16
};

// A carriage return alone ends a line too, as the protocol has it.
bool has_end(std::string_view line) {
  return line.ends_with('\n') || line.ends_with('\r');
}

std::string_view without_end(std::string_view line) {
  while (has_end(line)) line.remove_suffix(1);
  return line;
}

// Bytes of the first line with its end: a line feed, a carriage return, or both in this order.
std::size_t line_length(std::string_view text) {
  std::size_t end = 0;
  while (end < text.size() && text[end] != '\n' && text[end] != '\r') ++end;
  if (end == text.size()) return end;
  return end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
}

Step step_at(std::string_view rest) {
  const std::size_t length = std::max<std::size_t>(utf8_first(rest).length, 1);
  return {length, length == kPairLength ? 2 : 1};
}

}  // namespace

std::int64_t utf16_length(std::string_view text) {
  // Most lines are plain, and there every byte is a unit.
  // Only what stands behind is looked at character by character.
  const auto plain = std::ranges::find_if(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
  auto units = static_cast<std::int64_t>(plain - text.begin());
  text.remove_prefix(static_cast<std::size_t>(units));
  while (!text.empty()) {
    const Step step = step_at(text);
    units += step.units;
    text.remove_prefix(std::min(step.bytes, text.size()));
  }
  return units;
}

std::size_t utf16_byte(std::string_view text, std::int64_t units) {
  std::size_t at = 0;
  while (at < text.size() && units > 0) {
    const Step step = step_at(text.substr(at));
    // In the middle of a pair.
    if (step.units > units) break;
    units -= step.units;
    at = std::min(at + step.bytes, text.size());
  }
  return at;
}

LinedText::LinedText(std::shared_ptr<const std::string> text) : text_(std::move(text)) {
  // An end of the last line is followed by an empty one.
  std::size_t start = 0;
  for (std::string_view rest = *text_;; rest = std::string_view(*text_).substr(start)) {
    // An empty text has one line.
    starts_.push_back(start);
    const std::size_t length = line_length(rest);
    if (!has_end(rest.substr(0, length))) break;
    start += length;
  }
}

std::string_view LinedText::line(std::size_t number) const {
  if (number >= starts_.size()) return {};
  // The text up to the next line, its end taken off.
  const std::size_t end = number + 1 < starts_.size() ? starts_[number + 1] : text_->size();
  return without_end(std::string_view(*text_).substr(starts_[number], end - starts_[number]));
}

std::size_t LinedText::line_of(std::size_t offset) const {
  // The first line starts at 0, so that there is one before.
  const auto behind = std::ranges::upper_bound(starts_, offset);
  return static_cast<std::size_t>(behind - starts_.begin()) - 1;
}

std::size_t LinedText::byte_in_line(const TextPosition& position) const {
  if (position.line < 0 || static_cast<std::size_t>(position.line) >= starts_.size()) return 0;
  return utf16_byte(line(static_cast<std::size_t>(position.line)), position.character);
}

std::size_t LinedText::offset(const TextPosition& position) const {
  if (position.line < 0) return 0;
  if (static_cast<std::size_t>(position.line) >= starts_.size()) return text_->size();
  return starts_[static_cast<std::size_t>(position.line)] + byte_in_line(position);
}

TextPosition LinedText::position(std::size_t number, std::size_t byte) const {
  return {static_cast<std::int64_t>(number), utf16_length(line(number).substr(0, byte))};
}

TextEdit::TextEdit(const LinedText& text) {
  const std::string_view all = text.text();
  for (std::size_t line = 0; line < text.line_count(); ++line) {
    const std::size_t end = line + 1 < text.line_count() ? text.start(line + 1) : all.size();
    lines_.push_back(all.substr(text.start(line), end - text.start(line)));
  }
}

// Behind the last line: the end of the text.
TextEdit::Spot TextEdit::spot_of(const TextPosition& position) const {
  if (position.line < 0) return {0, 0};
  const auto line = static_cast<std::size_t>(position.line);
  if (line >= lines_.size()) return {lines_.size() - 1, lines_.back().size()};
  return {line, utf16_byte(without_end(lines_[line]), position.character)};
}

void TextEdit::replace(const TextPosition& begin, const TextPosition& end, std::string_view by) {
  Spot from = spot_of(begin);
  Spot to = spot_of(end);
  // A range that is turned round is empty.
  if (std::pair(to.line, to.byte) < std::pair(from.line, from.byte)) to = from;
  // A line that ends with a lone carriage return may go on with a line feed now.
  if (from.byte == 0 && from.line > 0) {
    --from.line;
    from.byte = lines_[from.line].size();
  }
  // What stays of the first line, what is new, what stays of the last one, and then in lines again.
  std::string& text = written_.emplace_back(lines_[from.line].substr(0, from.byte));
  text.append(by).append(lines_[to.line].substr(to.byte));
  std::vector<std::string_view> now;
  std::string_view rest = text;
  while (const std::size_t length = line_length(rest)) {
    now.push_back(rest.substr(0, length));
    rest.remove_prefix(length);
  }
  // The last line of a text has no end, if it is empty.
  const bool is_last = to.line + 1 == lines_.size();
  if (is_last && (now.empty() || has_end(now.back()))) now.emplace_back();
  // Most often as many lines as before, so that none behind them has to move.
  const auto first = lines_.begin() + static_cast<std::ptrdiff_t>(from.line);
  const auto last = lines_.begin() + static_cast<std::ptrdiff_t>(to.line) + 1;
  const auto kept = std::min(last - first, std::ssize(now));
  std::copy(now.begin(), now.begin() + kept, first);
  if (kept < last - first)
    lines_.erase(first + kept, last);
  else
    lines_.insert(last, now.begin() + kept, now.end());
}

std::string TextEdit::text() const {
  std::string all;
  for (const std::string_view line : lines_) all += line;
  return all;
}

std::optional<std::string> path_of_uri(std::string_view uri) {
  constexpr std::string_view kScheme = "file://";
  if (!uri.starts_with(kScheme)) return std::nullopt;
  uri.remove_prefix(kScheme.size());
  // A host, most often none: whatever it is called, it is this machine.
  uri.remove_prefix(std::min(uri.find('/'), uri.size()));
  // Question and fragment name no file.
  uri = uri.substr(0, uri.find_first_of("?#"));
  std::string path;
  for (std::size_t at = 0; at < uri.size(); ++at) {
    unsigned value = 0;
    const char* digits = uri.data() + at + 1;
    const bool is_escape =
        uri[at] == '%' && at + 2 < uri.size() && std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2;
    path += is_escape ? static_cast<char>(value) : uri[at];
    if (is_escape) at += 2;
  }
  // The system would take the path to end at the NUL, and open another file.
  if (path.empty() || path.find('\0') != std::string::npos) return std::nullopt;
  return path;
}

// Escapes all but what may stand as it is in any part of a URI, byte by byte, as editors do it.
std::string uri_of_path(std::string_view path) {
  std::string uri = "file://";
  for (const char c : path) {
    const bool is_letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    constexpr std::string_view kPlain = "/-._~";
    if (is_letter || kPlain.find(c) != std::string_view::npos) {
      uri += c;
    } else {
      constexpr const char* kDigits = "0123456789ABCDEF";
      const auto byte = static_cast<unsigned char>(c);
      ((uri += '%') += kDigits[byte >> 4]) += kDigits[byte & 15];
    }
  }
  return uri;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
