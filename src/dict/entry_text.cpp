#include "dict/entry_text.hpp"

#include <array>
#include <cstring>

#include "data/bytes.hpp"
#include "data/chain.hpp"
#include "data/chars.hpp"
#include "data/words.hpp"

namespace lexon {

namespace {

// A two-letter code, blanks, and the mark that stands for it in a word.
constexpr std::array<const char*, 4> kLanguages = {"ES 0", "ID 1", "IT 2", "SW 3"};
constexpr std::size_t kCodeLength = 2;

const char* mark_of(const char* row) {
  return skip_blanks(row + kCodeLength);
}

// What is wrong with an entry line, for the builder and the workbench; a sentence prints the number alone.
struct ErrorText {
  Status status;
  const char* text;
};
constexpr std::array<ErrorText, 9> kErrorTexts = {{
    {Status::ok, "no error"},
    {kBadHw, "the surface form does not begin with \"[\" or does not end with \"]\" in front of \"{\", or is too long"},
    {kBadGloss, "no concept word and no attribute list behind the id"},
    {kBadCwOrAttrs, "the concept word is not closed, or the attribute list is missing, not closed or too long"},
    {kBadId, "no \"}\" behind the id"},
    {kBadExtra1, "no \"]\" behind the first extra text"},
    {kBadExtra2, "no \"}\" behind the second extra text"},
    {kBadNumbers, "bad text between \"<\" and \">\""},
    {Status::memory, "memory is exhausted"},
}};

}  // namespace

// A text without a row stands for itself, so the mark is its first character.
const char* language_to_mark(const char* text) {
  for (const char* row : kLanguages) {
    if (text[0] == row[0] && text[1] == row[1]) return mark_of(row);
  }
  return text;
}

const char* language_to_code(const char* text) {
  for (const char* row : kLanguages) {
    if (*text == *mark_of(row)) return row;
  }
  return text;
}

const char* entry_error_text(Status status) {
  for (const ErrorText& row : kErrorTexts) {
    if (row.status == status) return row.text;
  }
  return "unknown error";
}

void entry_print(Output& output, const WordEntry* entry, const char* prefix) {
  if (entry == nullptr) return;
  const char* language = language_to_code(entry->language);
  // A row begins with its code, and a mark without a row is one character.
  const std::size_t language_length = language == entry->language ? 1 : kCodeLength;
  output.put(text_or_empty(prefix), "[", text_or_empty(entry->hw), "]{", text_or_empty(entry->id), "} ",
             text_or_empty(entry->gloss), " \"", text_or_empty(entry->cw), "\" (", text_or_empty(entry->attrs), ") <",
             std::string_view(language, strnlen(language, language_length)), ",", Decimal(load_u32(entry->frequency)),
             ",", Decimal(entry->priority), ">;\n");
}

void entry_list_print(Output& output, const WordEntry* list, const char* prefix) {
  for (const WordEntry& word : chain<&WordEntry::next>(list)) entry_print(output, &word, prefix);
}

}  // namespace lexon
