#include "graph/line_kind.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "data/chars.hpp"
#include "data/sentence.hpp"

namespace lexon {

namespace {

// The first row that a line begins with decides, so a longer beginning stands in front of the shorter ones that it
// contains. What follows the beginning on the line is not looked at.
struct LineForm {
  std::string_view begin;
  LineKind kind;
};

// These count inside an open block tag as well. A line that is nothing but its end is empty.
constexpr LineForm kFormsEverywhere[] = {
    {";", LineKind::ignored},        {"<", LineKind::ignored},       {"\n", LineKind::ignored},
    {"{sem", LineKind::graph_start}, {"{/sem", LineKind::graph_end}, {"{", LineKind::block_tag},
};

// wanted: a block tag hides the end of a sentence too
constexpr LineForm kFormsOutsideTags[] = {
    {"[/S", LineKind::sentence_end}, {"[/", LineKind::ignored},        {"[W", LineKind::word_block},
    {"[R", LineKind::skipped_block}, {"[S", LineKind::sentence_start}, {"[", LineKind::ignored},
};

template <std::size_t Count>
const LineForm* form_of(std::string_view line, const LineForm (&forms)[Count]) {
  const auto* form =
      std::find_if(std::begin(forms), std::end(forms), [line](const LineForm& f) { return line.starts_with(f.begin); });
  return form == std::end(forms) ? nullptr : form;
}

// Goes over lines, of which it looks at no more than how they begin, up to where a sentence ends. `next` reads one and
// returns null at the end. Has a sentence ended?
template <typename NextLine>
bool to_sentence_end(NextLine next) {
  // Blocks end by a mark in the first column, or with the text; no other line of theirs means anything.
  const auto pass_block = [&next](std::string_view end) {
    for (const char* line = next(); line != nullptr && !std::string_view(line).starts_with(end);) line = next();
  };
  BlockTag open_tag;
  while (const char* line = next()) {
    // Blanks may stand in front, but no tabs.
    const char* start = line + std::strspn(line, " ");
    switch (line_kind(start, open_tag)) {
      case LineKind::sentence_end: return true;
      case LineKind::block_tag: block_tag_change(open_tag, start); break;
      case LineKind::word_block: pass_block(kWordBlockEnd); break;
      case LineKind::skipped_block: pass_block(kSkippedBlockEnd); break;
      default: break;
    }
  }
  return false;
}

}  // namespace

LineKind line_kind(std::string_view line, const BlockTag& open_tag) {
  if (line.empty()) return LineKind::ignored;
  // Most lines are relations, and no other form begins with a letter.
  if (is_letter(line.front())) return open_tag.empty() ? LineKind::graph_line : LineKind::ignored;
  if (const LineForm* form = form_of(line, kFormsEverywhere); form != nullptr) return form->kind;
  if (!open_tag.empty()) return LineKind::ignored;
  const LineForm* form = form_of(line, kFormsOutsideTags);
  return form != nullptr ? form->kind : LineKind::graph_line;
}

// wanted: a closing tag that matches nothing opens a tag whose name begins with "/".
void block_tag_change(BlockTag& open_tag, std::string_view line) {
  const bool closes = line.starts_with("{/") && !open_tag.empty() && line.substr(2).starts_with(open_tag.view());
  // An opening tag takes the place of one that is open.
  open_tag.clear();
  if (closes) return;
  const std::string_view name = line.substr(1, line.find_first_of("\n:}", 1) - 1);
  open_tag.append(name.substr(0, kTagLength));
}

bool sentence_text_read(TextSource source, std::string& text, TextLimit* limit) {
  text.clear();
  source.keep(&text);
  std::array<char, kLineSize> line;
  const bool ends = to_sentence_end([&]() -> const char* {
    if (limit != nullptr && text.size() >= limit->bytes) limit->is_met = true;
    if (limit != nullptr && limit->is_met) return nullptr;
    return text_line_read(source, line.data(), kLineSize) ? line.data() : nullptr;
  });
  return ends || !text.empty();
}

bool sentence_pass(TextSource source, TextWatch* lines) {
  std::array<char, kLineSize> line;
  return to_sentence_end(
      [&]() -> const char* { return text_line_read(source, line.data(), kLineSize, lines) ? line.data() : nullptr; });
}

}  // namespace lexon
