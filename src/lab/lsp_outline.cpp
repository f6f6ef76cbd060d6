#include "lab/lsp_outline.hpp"

#include <algorithm>
#include <utility>

#include "data/utf8.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::size_t kMostEntries = 5000;  // lines of a file; a longer outline would be of no use
constexpr std::size_t kLongestName = 80;    // bytes, to the end of the character

std::string_view without_blanks(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

// The title of a comment that is drawn as a heading, "; ---- Title ----"; empty if it is none. A ruler without a title is
// none, nor are signs of one kind that are fewer than three.
std::string title_of(std::string_view line) {
  line = without_blanks(line);
  if (line.empty() || line.front() != ';') return {};
  line = without_blanks(
      line.substr(line.find_first_not_of(';') == std::string_view::npos ? line.size() : line.find_first_not_of(';')));
  constexpr std::string_view kRuler = "-=*#~_";
  constexpr std::size_t kShortest = 3;
  const std::size_t rule = line.find_first_not_of(line.empty() ? ' ' : line.front());
  if (line.empty() || kRuler.find(line.front()) == std::string_view::npos || rule == std::string_view::npos ||
      rule < kShortest)
    return {};
  std::string_view title = without_blanks(line.substr(rule));
  const std::size_t last = title.find_last_not_of("-=*#~_ \t");
  return last == std::string_view::npos ? std::string() : std::string(title.substr(0, last + 1));
}

std::string shortened(std::string_view text) {
  text = without_blanks(text);
  if (text.size() <= kLongestName) return std::string(text);
  std::size_t end = 0;
  while (end < kLongestName) end += std::max<std::size_t>(utf8_first(text.substr(end)).length, 1);
  return std::string(text.substr(0, end)) + "…";
}

bool is_blank_line(std::string_view line) {
  return without_blanks(line).empty();
}

// The word behind the percent sign that a line of a source begins with; else empty.
std::string_view directive_of(std::string_view line) {
  line = without_blanks(line);
  if (!line.starts_with('%')) return {};
  // A directive has small letters alone.
  const std::size_t end = line.find_first_not_of("abcdefghijklmnopqrstuvwxyz", 1);
  return line.substr(1, std::min(end, line.size()) - 1);
}

// Does the line begin what goes on to its %end? A list or table with "=" is whole in one line.
bool opens_block(std::string_view line) {
  const std::string_view word = directive_of(line);
  const bool may_be_list = (word == "list" || word == "table") && line.find('=') == std::string_view::npos;
  return word == "for" || word == "if" || may_be_list;
}

// Puts an item where it belongs: under the section that is open.
void add(std::vector<OutlineItem>& items, OutlineItem item) {
  auto& where = !items.empty() && items.back().kind == OutlineItem::Kind::section ? items.back().children : items;
  where.push_back(std::move(item));
}

void outline_rules(const LinedText& text, TextKind kind, std::vector<OutlineItem>& items) {
  for (std::size_t line = 0; line < text.line_count(); ++line) {
    const std::string_view shown = text.line(line);
    const std::string_view body = without_blanks(shown);
    // Headings among the comments are found by `sections_of`.
    if (body.empty() || body.front() == ';') continue;
    const std::string_view word = kind == TextKind::source ? directive_of(body) : std::string_view();
    if (word.empty()) {
      // A rule: its priority, behind the last P, stands as the detail.
      const std::size_t end = body.rfind('P');
      const std::size_t digits = end == std::string_view::npos ? end : body.find_first_not_of("0123456789", end + 1);
      const bool has_priority = end != std::string_view::npos && digits != end + 1;
      const std::string priority =
          has_priority ? std::string(body.substr(end, std::min(digits, body.size()) - end)) : "";
      add(items, {OutlineItem::Kind::rule,
                  shortened(body.substr(0, has_priority ? end : body.size())),
                  priority,
                  line,
                  line,
                  {}});
      continue;
    }
    if (word == "define" || word == "list" || word == "table" || word == "for" || word == "if" || word == "include") {
      std::size_t last = line;
      if (opens_block(body)) {
        // To the %end of its own depth, or the end of the text.
        int depth = 0;
        for (last = line; last < text.line_count(); ++last) {
          if (opens_block(text.line(last))) ++depth;
          if (directive_of(text.line(last)) == "end" && --depth == 0) break;
        }
        last = std::min(last, text.line_count() - 1);
      }
      const bool is_loop = word == "for" || word == "if";
      add(items,
          {is_loop ? OutlineItem::Kind::loop : OutlineItem::Kind::definition, shortened(body), "", line, last, {}});
      // The rules within a loop are items too; the lines of a list are not.
      if (!is_loop) line = last;
    }
  }
}

void outline_graphs(const LinedText& text, std::vector<OutlineItem>& items) {
  for (std::size_t line = 0; line < text.line_count(); ++line) {
    const std::string_view body = without_blanks(text.line(line));
    if (!body.starts_with("[S")) continue;
    // To its [/S], or up to the next one where that is missing. Its first relation stands as the detail.
    std::size_t end = line;
    std::string first;
    for (std::size_t next = line + 1; next < text.line_count(); ++next) {
      const std::string_view inner = without_blanks(text.line(next));
      if (inner.starts_with("[S")) break;
      if (first.empty() && !inner.empty() && inner.front() != ';' && inner.front() != '[') first = shortened(inner);
      end = next;
      if (inner.starts_with("[/S")) break;
    }
    add(items, {OutlineItem::Kind::sentence, shortened(body), first, line, end, {}});
    line = end;
  }
}

void outline_entries(const LinedText& text, std::vector<OutlineItem>& items) {
  // A dictionary has no outline that anybody would read.
  if (text.line_count() > kMostEntries) return;
  for (std::size_t line = 0; line < text.line_count(); ++line) {
    const std::string_view body = without_blanks(text.line(line));
    if (!body.starts_with('[')) continue;
    const std::size_t end = body.find("]{");
    add(items, {OutlineItem::Kind::entry,
                shortened(body.substr(0, end == std::string_view::npos ? end : end + 1)),
                end == std::string_view::npos ? "" : shortened(body.substr(end + 1)),
                line,
                line,
                {}});
  }
}

// What stands under a heading, to the last line in front of the next one that is not blank.
struct Section {
  std::string title;
  std::size_t begin;  // lines from 0
  std::size_t end;    // the last
};

std::vector<Section> sections_of(const LinedText& text) {
  std::vector<Section> sections;
  for (std::size_t line = 0; line < text.line_count(); ++line) {
    std::string title = title_of(text.line(line));
    if (!title.empty()) sections.push_back({std::move(title), line, text.line_count() - 1});
  }
  for (std::size_t i = 0; i < sections.size(); ++i) {
    std::size_t& end = sections[i].end;
    if (i + 1 < sections.size()) end = sections[i + 1].begin - 1;
    // Blank lines in front of a heading belong to neither.
    while (end > sections[i].begin && is_blank_line(text.line(end))) --end;
  }
  return sections;
}

}  // namespace

std::vector<OutlineItem> outline_of(const LinedText& text, TextKind kind) {
  std::vector<OutlineItem> items;
  switch (kind) {
    case TextKind::rules:
    case TextKind::source: outline_rules(text, kind, items); break;
    case TextKind::graphs: outline_graphs(text, items); break;
    case TextKind::entries:
    case TextKind::cooccurrence: outline_entries(text, items); break;
    case TextKind::table: break;
  }
  const std::vector<Section> sections = sections_of(text);
  if (sections.empty()) return items;
  // Each item goes under the heading above it; those above the first heading stay where they are.
  std::vector<OutlineItem> result;
  // Both lists are in the order of the lines, so one pass puts them together.
  auto next = items.begin();
  const auto take_until = [&](std::size_t line, std::vector<OutlineItem>& to) {
    for (; next != items.end() && next->begin < line; ++next) to.push_back(std::move(*next));
  };
  take_until(sections.front().begin, result);
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const Section& section = sections[i];
    OutlineItem item{OutlineItem::Kind::section, section.title, "", section.begin, section.end, {}};
    take_until(i + 1 < sections.size() ? sections[i + 1].begin : text.line_count(), item.children);
    // A loop can hold the next heading: the range of an item has to contain those of its children.
    for (const OutlineItem& child : item.children) item.end = std::max(item.end, child.end);
    result.push_back(std::move(item));
  }
  return result;
}

std::vector<Fold> folds_of(const LinedText& text, TextKind kind) {
  std::vector<Fold> folds;
  for (const Section& section : sections_of(text)) {
    if (section.end > section.begin) folds.push_back({section.begin, section.end, false});
  }
  std::vector<std::size_t> open;  // lines of blocks of a source without their %end yet
  std::size_t comment = 0;
  bool in_comment = false;
  std::size_t sentence = 0;
  bool in_sentence = false;
  // One step behind the last line, so that a comment at the end of the text is closed.
  for (std::size_t line = 0; line <= text.line_count(); ++line) {
    const std::string_view body = without_blanks(text.line(line));
    // A heading ends a comment, and is the fold of its section.
    const bool is_comment = line < text.line_count() && body.starts_with(';') && title_of(body).empty();
    if (is_comment && !in_comment) comment = line;
    if (!is_comment && in_comment && line > comment + 1) folds.push_back({comment, line - 1, true});
    in_comment = is_comment;
    if (kind == TextKind::graphs) {
      const bool begins = body.starts_with("[S");
      const bool ends = body.starts_with("[/S");
      if (begins) sentence = line;
      // An editor folds from a line to a later one.
      if (ends && in_sentence && line > sentence) folds.push_back({sentence, line, false});
      in_sentence = begins || (in_sentence && !ends);
    }
    if (kind == TextKind::source) {
      if (opens_block(body)) open.push_back(line);
      if (directive_of(body) == "end" && !open.empty()) {
        if (line > open.back()) folds.push_back({open.back(), line, false});
        open.pop_back();
      }
    }
  }
  std::ranges::sort(folds, {}, &Fold::begin);
  return folds;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
