// Answers with a piece for each of many places, written as text at once: as values of the JSON library, a node of a tree
// for each number, they take ten times as long.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/lsp_document.hpp"
#include "lab/lsp_model.hpp"
#include "lab/lsp_outline.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Appends the text as a string of JSON, with its quotes. A byte that is no UTF-8 becomes U+FFFD.
void append_text(std::string& out, std::string_view text);
[[nodiscard]] std::string in_json(std::string_view text);

// Appends `"range":{...}` of the place where a name stands.
void append_range(std::string& out, const NameUse& use);

// The items as DocumentSymbols within each other, or as a flat list of SymbolInformation for clients that know no trees.
[[nodiscard]] std::string outline_tree(const std::vector<OutlineItem>& items, const LinedText& text);
[[nodiscard]] std::string outline_list(const std::vector<OutlineItem>& items, const LinedText& text,
                                       const std::string& uri);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
