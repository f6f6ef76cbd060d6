#include "graph/line_kind.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "data/sentence.hpp"

namespace lexon {

namespace {

// The first row that a line begins with decides.
struct LineForm {
  std::string_view begin;
  LineKind kind;
};

constexpr LineForm kFormsEverywhere[] = {
    {";", LineKind::ignored},        {"<", LineKind::ignored},       {"\n", LineKind::ignored},
    {"{sem", LineKind::graph_start}, {"{/sem", LineKind::graph_end}, {"{", LineKind::block_tag},
};

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

using Line = std::array<char, kLineSize>;

bool line_read(TextSource source, Line& line) {
  return text_line_read(source, line.data(), kLineSize);
}

void block_pass(TextSource source, Line& line, std::string_view end) {
  while (line_read(source, line) && !std::string_view(line.data()).starts_with(end)) continue;
}

}  // namespace

LineKind line_kind(std::string_view line, const BlockTag& open_tag) {
  if (line.empty()) return LineKind::ignored;
  if (const LineForm* form = form_of(line, kFormsEverywhere); form != nullptr) return form->kind;
  if (!open_tag.empty()) return LineKind::ignored;
  const LineForm* form = form_of(line, kFormsOutsideTags);
  return form != nullptr ? form->kind : LineKind::graph_line;
}

// wanted: a closing tag that matches nothing opens a tag whose name begins with "/".
void block_tag_change(BlockTag& open_tag, std::string_view line) {
  const bool closes = line.starts_with("{/") && !open_tag.empty() && line.substr(2).starts_with(open_tag.view());
  open_tag.clear();
  if (closes) return;
  const std::string_view name = line.substr(1, line.find_first_of("\n:}", 1) - 1);
  open_tag.append(name.substr(0, kTagLength));
}

bool sentence_text_read(TextSource source, std::string& text) {
  text.clear();
  source.keep(&text);
  BlockTag open_tag;
  Line line;
  while (line_read(source, line)) {
    const char* start = line.data() + std::strspn(line.data(), " ");
    switch (line_kind(start, open_tag)) {
      case LineKind::sentence_end: return true;
      case LineKind::block_tag: block_tag_change(open_tag, start); break;
      case LineKind::word_block: block_pass(source, line, kWordBlockEnd); break;
      case LineKind::skipped_block: block_pass(source, line, kSkippedBlockEnd); break;
      default: break;
    }
  }
  return !text.empty();
}

}  // namespace lexon
