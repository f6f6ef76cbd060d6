#include "lab/gold.hpp"

#include <algorithm>
#include <cstdint>

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::string_view kLabelBegin = "[S";

std::vector<std::string> cut(std::string_view text, char at) {
  std::vector<std::string> pieces;
  while (true) {
    const std::size_t end = text.find(at);
    pieces.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    text.remove_prefix(end + 1);
  }
}

std::string label_of(std::string_view line) {
  const std::size_t close = line.find(']');
  return std::string(line.substr(1, close == std::string_view::npos ? close : close - 1));
}

std::string as_line(std::string_view text) {
  const bool needs_escape = text.empty() || text.front() == ';' || text.front() == '[' || text.front() == '\\';
  return (needs_escape ? "\\" : "") + std::string(text);
}

// Words with the blanks behind them, so that the text can be put together again.
std::vector<std::string_view> words_of(std::string_view text) {
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    words.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return words;
}

}  // namespace

Gold::Gold(std::string_view text) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
  if (!text.empty()) {
    lines_ = cut(text, '\n');
    has_last_line_end_ = lines_.back().empty();
    if (has_last_line_end_) lines_.pop_back();
  }
  for (std::string& line : lines_) {
    if (line.ends_with('\r')) line.pop_back();
  }
  inserted_.resize(lines_.size() + 1);
  is_by_label_ = std::ranges::any_of(lines_, [](const std::string& line) { return line.starts_with(kLabelBegin); });
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const std::string& line = lines_[i];
    if (!is_by_label_) {
      sentences_.push_back({{}, cut(line, '\t'), i, 1});
    } else if (line.starts_with(kLabelBegin)) {
      sentences_.push_back({label_of(line), {}, i + 1, 0});
    } else if (!line.empty() && line.front() != ';' && !sentences_.empty()) {
      Expected& sentence = sentences_.back();
      if (sentence.texts.empty()) sentence.first_line = i;
      sentence.line_count = i + 1 - sentence.first_line;
      sentence.texts.emplace_back(line.front() == '\\' ? line.substr(1) : line);
    }
  }
  is_used_.resize(sentences_.size());
}

const Expected* Gold::next(std::string_view label) {
  std::size_t found = at_;
  if (is_by_label_) {
    found = 0;
    while (found < sentences_.size() && (is_used_[found] || sentences_[found].label != label)) ++found;
  }
  if (found >= sentences_.size()) return nullptr;
  at_ = found + 1;
  is_used_[found] = true;
  last_line_ = sentences_[found].first_line + sentences_[found].line_count;
  return &sentences_[found];
}

std::vector<const Expected*> Gold::rest() const {
  std::vector<const Expected*> result;
  for (std::size_t i = 0; i < sentences_.size(); ++i) {
    if (!is_used_[i]) result.push_back(&sentences_[i]);
  }
  return result;
}

void Gold::update(const Expected* expected, std::string_view label, std::string_view found) {
  if (expected == nullptr) {
    std::string& inserted = inserted_[std::min(last_line_, lines_.size())];
    if (is_by_label_) inserted += '[' + std::string(label) + "]\n";
    inserted += (is_by_label_ ? as_line(found) : std::string(found)) + '\n';
    return;
  }
  if (!is_by_label_) {
    std::string& line = lines_[expected->first_line];
    line = expected->texts.size() == 1 ? std::string(found) : std::string(found) + '\t' + line;
  } else if (expected->texts.size() == 1) {
    lines_[expected->first_line] = as_line(found);
  } else {
    inserted_[expected->first_line] += as_line(found) + '\n';
  }
}

std::string Gold::text() const {
  std::string result;
  for (std::size_t i = 0; i < lines_.size(); ++i) result += inserted_[i] + lines_[i] + '\n';
  result += inserted_.back();
  if (!has_last_line_end_ && inserted_.back().empty()) result.pop_back();
  return result;
}

std::string word_diff(std::string_view before, std::string_view now, bool in_colours) {
  const std::vector<std::string_view> old_words = words_of(before);
  const std::vector<std::string_view> new_words = words_of(now);
  // The longest common part of what is behind each pair of places.
  const std::size_t width = new_words.size() + 1;
  std::vector<std::uint32_t> common((old_words.size() + 1) * width);
  for (std::size_t i = old_words.size(); i-- > 0;) {
    for (std::size_t j = new_words.size(); j-- > 0;) {
      common[i * width + j] = old_words[i] == new_words[j]
                                  ? common[(i + 1) * width + j + 1] + 1
                                  : std::max(common[(i + 1) * width + j], common[i * width + j + 1]);
    }
  }
  std::string result;
  const auto add = [&result](std::string_view text) {
    if (!result.empty()) result += ' ';
    result += text;
  };
  const auto marked = [&](const std::vector<std::string_view>& words, std::size_t from, std::size_t to, bool is_new) {
    if (from == to) return;
    std::string text;
    for (std::size_t i = from; i < to; ++i) text += (i == from ? "" : " ") + std::string(words[i]);
    text = is_new ? "{+" + text + "+}" : "[-" + text + "-]";
    add(in_colours ? (is_new ? "\x1b[32m" : "\x1b[31m") + text + "\x1b[0m" : text);
  };
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < old_words.size() || j < new_words.size()) {
    const std::size_t old_begin = i;
    const std::size_t new_begin = j;
    while (i < old_words.size() || j < new_words.size()) {
      const bool is_common = i < old_words.size() && j < new_words.size() && old_words[i] == new_words[j];
      if (is_common) break;
      const bool goes_on_old =
          j == new_words.size() || (i < old_words.size() && common[(i + 1) * width + j] >= common[i * width + j + 1]);
      ++(goes_on_old ? i : j);
    }
    marked(old_words, old_begin, i, false);
    marked(new_words, new_begin, j, true);
    for (; i < old_words.size() && j < new_words.size() && old_words[i] == new_words[j]; ++i, ++j) add(old_words[i]);
  }
  return result;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
