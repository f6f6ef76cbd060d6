#include "rules/scanners.hpp"

#include <string_view>

#include "data/pool.hpp"
#include "data/scratch.hpp"
#include "data/session.hpp"

namespace lexon {
namespace {

// The one escape of the rule language; before anything else a backslash is a character like others.
bool is_escape(const char* position) {
  return position[0] == '\\' && (position[1] == '[' || position[1] == ']');
}

// Parentheses inside a token hold back the ")" that would end it, and nothing else: a comma ends it at any depth.
const char* attr_token_end(const char* at) {
  int depth = 0;
  for (; *at != '\0'; ++at) {
    if (*at == '(') {
      ++depth;
    } else if (*at == ')' && depth > 0) {
      --depth;
    } else if (is_separator(*at)) {
      break;
    }
  }
  return at;
}

// A label knows no parentheses: the first ")" ends it.
const char* label_end(const char* at) {
  while (*at != '\0' && !is_separator(*at)) ++at;
  return at;
}

// Moves the cursor to `end` and keeps what it passed, cut at `limit`.
Status token_keep(Pool& pool, const char*& cursor, const char* end, CondItem& item, std::size_t limit) {
  const std::string_view token(cursor, static_cast<std::size_t>(end - cursor));
  cursor = end;
  // A token has to end in front of something: a line that ends with it has lost its closer.
  if (*end == '\0') return Status::no_effect;
  item.text = perm_text(pool, token.substr(0, limit));
  return item.text == nullptr ? Status::memory : Status::ok;
}

}  // namespace

const char* skip_commas(const char* text) {
  while (is_blank(*text) || *text == ',') ++text;
  return text;
}

// A form may hold brackets: `[a]b]` is the form "a]b". So a "]" alone does not close it.
bool is_hw_text_end(const char* position) {
  if (*position != ']') return false;
  const char next = *skip_blanks(position + 1);
  return next != '\0' && is_separator(next);
}

// The empty form "[]" is a text as well. A form that the line cuts off is kept: the missing closer shows behind it.
char* scan_hw_text(Pool& pool, const char*& cursor) {
  Scratch<kLineSize> form;
  while (*cursor != '\0' && !is_hw_text_end(cursor)) {
    // The bracket behind the backslash is taken without a test, so that it closes nothing.
    if (is_escape(cursor)) ++cursor;
    form.append(*cursor++);
  }
  if (form.empty() && *cursor != ']') return nullptr;
  if (*cursor == ']') ++cursor;
  return perm_text(pool, form.view());
}

// A concept word holds no "]" and knows no escape.
char* scan_cw_text(Pool& pool, const char*& cursor) {
  const char* const start = cursor;
  while (*cursor != '\0' && *cursor != ']') ++cursor;
  const std::string_view word(start, static_cast<std::size_t>(cursor - start));
  if (word.empty() && *cursor == '\0') return nullptr;
  // wanted: two characters are passed unseen, whatever the second one is.
  for (int passed = 0; passed < 2 && *cursor != '\0'; ++passed) ++cursor;
  return perm_text(pool, word);
}

Status scan_attr_token(Pool& pool, const char*& cursor, CondItem& item, std::size_t limit) {
  return token_keep(pool, cursor, attr_token_end(cursor), item, limit);
}

Status scan_relation_label(Pool& pool, const char*& cursor, CondItem& item, std::size_t limit) {
  return token_keep(pool, cursor, label_end(cursor), item, limit);
}

}  // namespace lexon
