#include "lab/gold.hpp"

#include <algorithm>
#include <cstdint>

#include "lab/text_file.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::string_view kLabelBegin = "[S";
constexpr std::string_view kMark = "\xEF\xBB\xBF";  // the byte order mark in UTF-8

// The pieces between tabs, or between blanks; empty ones too, so that they can be put together again.
template <typename Text>
std::vector<Text> cut(std::string_view text, char at) {
  std::vector<Text> pieces;
  while (true) {
    const std::size_t end = text.find(at);
    pieces.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    text.remove_prefix(end + 1);
  }
}

std::vector<std::string_view> words_of(std::string_view text) {
  return text.empty() ? std::vector<std::string_view>() : cut<std::string_view>(text, ' ');
}

}  // namespace

Gold::Gold(std::string_view text) {
  has_mark_ = text.starts_with(kMark);
  // The mark is put back when the file is written.
  if (has_mark_) text.remove_prefix(kMark.size());
  const std::vector<std::string_view> lines = lines_of(text);
  lines_.assign(lines.begin(), lines.end());
  has_last_line_end_ = text.empty() || text.ends_with('\n');
  if (const std::size_t end = text.find('\n'); end != std::string_view::npos && end > 0 && text[end - 1] == '\r')
    line_end_ = "\r\n";
  // One place in front of each line, and one behind the last.
  inserted_.resize(lines_.size() + 1);
  // One label makes the whole file one by label.
  is_by_label_ = std::ranges::any_of(lines_, [](const std::string& line) { return line.starts_with(kLabelBegin); });
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const std::string& line = lines_[i];
    if (!is_by_label_) {
      sentences_.push_back({{}, cut<std::string>(line, '\t'), i, 1});
    } else if (line.starts_with(kLabelBegin)) {
      sentences_.push_back({label_in(line), {}, i + 1, 0});
      by_label_[sentences_.back().label].push_back(sentences_.size() - 1);
    } else if (!line.empty() && line.front() != ';' && !sentences_.empty()) {
      Expected& sentence = sentences_.back();
      if (sentence.texts.empty()) sentence.first_line = i;
      // Comments between two texts are counted along.
      sentence.line_count = i + 1 - sentence.first_line;
      sentence.texts.emplace_back(line.front() == '\\' ? line.substr(1) : line);
    }
  }
  is_used_.resize(sentences_.size());
}

// By label the next one of that label, in constant time; in the plain form the next line, whatever the label.
const Expected* Gold::next(std::string_view label) {
  std::size_t found = at_;
  if (is_by_label_) {
    const auto same = by_label_.find(std::string(label));
    found = same == by_label_.end() || same->second.empty() ? sentences_.size() : same->second.front();
    // Of a label that stands twice the second comes next.
    if (found < sentences_.size()) same->second.pop_front();
  }
  if (found >= sentences_.size()) return nullptr;
  // In the plain form the place of the next one; by label it is not asked for.
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

// Lines keep their numbers until `text` puts all together, so that what `Expected` knows of them stays true.
void Gold::update(const Expected* expected, std::string_view label, std::string_view found) {
  if (expected == nullptr) {
    std::vector<std::string>& inserted = inserted_[std::min(last_line_, lines_.size())];
    // A new sentence brings its label along.
    if (is_by_label_) inserted.push_back('[' + std::string(label) + ']');
    inserted.push_back(is_by_label_ ? gold_line(found) : std::string(found));
    return;
  }
  if (!is_by_label_) {
    std::string& line = lines_[expected->first_line];
    line = expected->texts.size() == 1 ? std::string(found) : std::string(found) + '\t' + line;
  } else if (expected->texts.size() == 1) {
    lines_[expected->first_line] = gold_line(found);
  } else {
    inserted_[expected->first_line].push_back(gold_line(found));
  }
}

std::string Gold::text() const {
  std::string result = has_mark_ ? std::string(kMark) : std::string();
  for (std::size_t i = 0; i < inserted_.size(); ++i) {
    for (const std::string& line : inserted_[i]) result += line + line_end_;
    if (i < lines_.size()) result += lines_[i] + line_end_;
  }
  // A last line that was not closed stays so, unless something stands behind it now.
  if (!has_last_line_end_ && inserted_.back().empty()) result.resize(result.size() - line_end_.size());
  return result;
}

std::string gold_line(std::string_view text) {
  // What would be read as nothing, as a comment, as a label or as an escape.
  const bool needs_escape = text.empty() || text.front() == ';' || text.front() == '[' || text.front() == '\\';
  return (needs_escape ? "\\" : "") + std::string(text);
}

// The common words stand once, and between them what either has alone, the old in front of the new.
std::string word_diff(std::string_view before, std::string_view now, bool in_colours) {
  const std::vector<std::string_view> old_words = words_of(before);
  const std::vector<std::string_view> new_words = words_of(now);
  // The length of the longest common part (words in the same order, not side by side) of what stands behind each pair of
  // places, from the back: the way through it that keeps the most words is then read off from the front.
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
  // Words from `from` to `to` of one of the two, as one mark.
  const auto marked = [&](const std::vector<std::string_view>& words, std::size_t from, std::size_t to, bool is_new) {
    // Nothing was taken out there, or put in.
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
