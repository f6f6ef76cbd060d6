// What a text consists of, for outlines, and what of it folds.
#pragma once

#include <string>
#include <vector>

#include "lab/lsp_document.hpp"
#include "lab/lsp_tokens.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

struct OutlineItem {
  enum class Kind : std::uint8_t { section, rule, definition, loop, sentence, entry };
  Kind kind;
  std::string name;
  std::string detail;
  std::size_t begin;  // lines from 0
  std::size_t end;    // the last
  std::vector<OutlineItem> children;
};

// Sections begin at comments like "; ---- title ----". Entries are left out where there are more than some thousand.
[[nodiscard]] std::vector<OutlineItem> outline_of(const LinedText& text, TextKind kind);

struct Fold {
  std::size_t begin;
  std::size_t end;
  bool is_comment;
};

// Sections, sentences, loops and other blocks of sources, and runs of comments.
[[nodiscard]] std::vector<Fold> folds_of(const LinedText& text, TextKind kind);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
