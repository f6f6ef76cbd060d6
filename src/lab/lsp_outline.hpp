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
  std::string name;  // what the line begins with, cut where it is long
  std::string
      detail;         // a rule's priority, a sentence's first relation, what an entry has behind its form; may be empty
  std::size_t begin;  // lines from 0
  std::size_t end;    // the last
  std::vector<OutlineItem> children;  // of a section; they lie within its lines
};

// Sections begin at comments like "; ---- title ----". Entries are left out where there are more than some thousand.
[[nodiscard]] std::vector<OutlineItem> outline_of(const LinedText& text, TextKind kind);

struct Fold {
  std::size_t begin;  // the line that stays in sight
  std::size_t end;    // the last one that is hidden
  bool is_comment;
};

// Sections, sentences, loops and other blocks of sources, and runs of comments.
[[nodiscard]] std::vector<Fold> folds_of(const LinedText& text, TextKind kind);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
