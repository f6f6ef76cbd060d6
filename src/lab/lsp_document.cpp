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

struct Step {
  std::size_t bytes;
  std::int64_t units;
};

Step step_at(std::string_view rest) {
  const std::size_t length = std::max<std::size_t>(utf8_first(rest).length, 1);
  return {length, length == kPairLength ? 2 : 1};
}

}  // namespace

std::int64_t utf16_length(std::string_view text) {
  // Most lines are plain, and there every byte is a unit.
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
    if (step.units > units) break;
    units -= step.units;
    at = std::min(at + step.bytes, text.size());
  }
  return at;
}

LinedText::LinedText(std::shared_ptr<const std::string> text) : text_(std::move(text)) {
  starts_.push_back(0);
  const std::string& all = *text_;
  for (std::size_t at = 0; at < all.size(); ++at) {
    const bool ends = all[at] == '\n' || (all[at] == '\r' && (at + 1 == all.size() || all[at + 1] != '\n'));
    if (ends) starts_.push_back(at + 1);
  }
}

std::string_view LinedText::line(std::size_t number) const {
  if (number >= starts_.size()) return {};
  const std::size_t end = number + 1 < starts_.size() ? starts_[number + 1] : text_->size();
  std::string_view line = std::string_view(*text_).substr(starts_[number], end - starts_[number]);
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  return line;
}

std::size_t LinedText::line_of(std::size_t offset) const {
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

std::string LinedText::replaced(const TextPosition& begin, const TextPosition& end, std::string_view by) const {
  const std::size_t from = offset(begin);
  const std::size_t to = std::max(offset(end), from);
  std::string result;
  result.reserve(text_->size() - (to - from) + by.size());
  result.append(*text_, 0, from).append(by).append(*text_, to);
  return result;
}

std::optional<std::string> path_of_uri(std::string_view uri) {
  constexpr std::string_view kScheme = "file://";
  if (!uri.starts_with(kScheme)) return std::nullopt;
  uri.remove_prefix(kScheme.size());
  // A host, most often none.
  uri.remove_prefix(std::min(uri.find('/'), uri.size()));
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
  if (path.empty() || path.find('\0') != std::string::npos) return std::nullopt;
  return path;
}

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
