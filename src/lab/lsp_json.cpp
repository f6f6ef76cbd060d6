#include "lab/lsp_json.hpp"

#include <algorithm>
#include <array>
#include <charconv>

#include <nlohmann/json.hpp>

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// The protocol's numbers for the kinds of an OutlineItem, in their order.
constexpr std::array kSymbolKinds = {
    std::string_view("3"),   // namespace
    std::string_view("12"),  // function
    std::string_view("14"),  // constant
    std::string_view("15"),  // string
    std::string_view("24"),  // event
    std::string_view("20"),  // key
};

void append_number(std::string& out, std::int64_t number) {
  std::array<char, 24> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  out.append(digits.data(), end);
}

void append_position(std::string& out, const TextPosition& position) {
  out += R"({"line":)";
  append_number(out, position.line);
  out += R"(,"character":)";
  append_number(out, position.character);
  out += '}';
}

// With its name, "range" or "selectionRange".
void append_range(std::string& out, std::string_view name, const TextPosition& begin, const TextPosition& end) {
  ((out += '"') += name) += R"(":{"start":)";
  append_position(out, begin);
  out += R"(,"end":)";
  append_position(out, end);
  out += '}';
}

TextPosition begin_of_line(std::size_t line) {
  return {static_cast<std::int64_t>(line), 0};
}

TextPosition end_of_line(const LinedText& text, std::size_t line) {
  return text.position(line, text.line(line).size());
}

void append_head(std::string& out, const OutlineItem& item) {
  append_text(out += R"({"name":)", item.name);
  (out += R"(,"kind":)") += kSymbolKinds[static_cast<std::size_t>(item.kind)];
}

void append_tree(std::string& out, const std::vector<OutlineItem>& items, const LinedText& text) {
  out += '[';
  for (const OutlineItem& item : items) {
    if (&item != &items.front()) out += ',';
    append_head(out, item);
    const TextPosition begin = begin_of_line(item.begin);
    const TextPosition line_end = end_of_line(text, item.begin);
    append_range(out += ',', "range", begin, item.end == item.begin ? line_end : end_of_line(text, item.end));
    append_range(out += ',', "selectionRange", begin, line_end);
    if (!item.detail.empty()) append_text(out += R"(,"detail":)", item.detail);
    if (!item.children.empty()) append_tree(out += R"(,"children":)", item.children, text);
    out += '}';
  }
  out += ']';
}

// `uri` is JSON.
void append_list(std::string& out, const std::vector<OutlineItem>& items, const LinedText& text,
                 const std::string& uri) {
  for (const OutlineItem& item : items) {
    if (out.size() > 1) out += ',';
    append_head(out, item);
    ((out += R"(,"location":{"uri":)") += uri) += ',';
    append_range(out, "range", begin_of_line(item.begin), end_of_line(text, item.end));
    out += "}}";
    append_list(out, item.children, text, uri);
  }
}

}  // namespace

void append_text(std::string& out, std::string_view text) {
  // Names in rules are plain as a rule, and then need no library.
  const bool is_plain =
      std::ranges::all_of(text, [](char c) { return c >= ' ' && c < '\x7f' && c != '"' && c != '\\'; });
  if (is_plain) {
    ((out += '"') += text) += '"';
  } else {
    out += nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  }
}

std::string in_json(std::string_view text) {
  std::string out;
  append_text(out, text);
  return out;
}

void append_range(std::string& out, const NameUse& use) {
  append_range(out, "range", use.text->position(use.line, use.part.begin), use.text->position(use.line, use.part.end));
}

std::string outline_tree(const std::vector<OutlineItem>& items, const LinedText& text) {
  std::string out;
  append_tree(out, items, text);
  return out;
}

std::string outline_list(const std::vector<OutlineItem>& items, const LinedText& text, const std::string& uri) {
  std::string out = "[";
  append_list(out, items, text, in_json(uri));
  return out + ']';
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
