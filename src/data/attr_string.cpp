#include "data/attr_string.hpp"

#include <cstring>
#include <string_view>

#include "data/records.hpp"

namespace lexon {

namespace {

using std::string_view;

// The first place of ",attr" in `text` whose next character is `behind`, or npos. With `behind` NUL any will do.
std::size_t find_behind_comma(string_view text, string_view attr, char behind) {
  for (std::size_t at = text.find(','); at != string_view::npos; at = text.find(',', at + 1)) {
    if (text.compare(at + 1, attr.size(), attr) != 0) continue;
    const std::size_t end = at + 1 + attr.size();
    if (behind == '\0' || (end < text.size() && text[end] == behind)) return at;
  }
  return string_view::npos;
}

// wanted: as the last element the attribute counts only if the first ",attr" of the text is the one at its end.
std::size_t find_as_last(string_view text, string_view attr) {
  const std::size_t at = find_behind_comma(text, attr, '\0');
  const bool ends_the_text = at != string_view::npos && at + 1 + attr.size() == text.size();
  return ends_the_text ? at : string_view::npos;
}

// The place of `attr` in `text`, or npos.
std::size_t position_of(string_view text, string_view attr) {
  if (text == attr) return 0;
  if (text.empty()) return string_view::npos;
  if (const std::size_t at = find_behind_comma(text, attr, ','); at != string_view::npos) return at + 1;
  const bool stands_first = text.size() > attr.size() && text.starts_with(attr) && text[attr.size()] == ',';
  if (stands_first) return 0;
  const std::size_t last = find_as_last(text, attr);
  return last == string_view::npos ? last : last + 1;
}

}  // namespace

const char* attr_find(const char* text, const char* attr) {
  if (text == nullptr || attr == nullptr) return nullptr;
  const std::size_t at = position_of(text, attr);
  return at == string_view::npos ? nullptr : text + at;
}

char* attr_find(char* text, const char* attr) {
  return const_cast<char*>(attr_find(static_cast<const char*>(text), attr));
}

bool attr_in(const char* attrs, const char* attr) {
  if (attrs == nullptr || attr == nullptr) return false;
  const string_view wanted(attr);
  for (const char* at = attrs;;) {
    const bool matches = std::strncmp(at, wanted.data(), wanted.size()) == 0;
    if (matches && (at[wanted.size()] == ',' || at[wanted.size()] == '\0')) return true;
    at = std::strchr(at, ',');
    if (at == nullptr) return false;
    ++at;
  }
}

bool attr_has(const WordEntry* entry, const char* attr) {
  return entry != nullptr && attr_in(entry->attrs, attr);
}

void attr_erase(char* text, const char* attr) {
  if (text == nullptr || attr == nullptr) return;
  const std::size_t length = std::strlen(attr);
  char* at = text;
  while (*at != '\0') {
    const bool matches = std::strncmp(at, attr, length) == 0 && (at[length] == ',' || at[length] == '\0');
    if (matches && length != 0) {
      const char* rest = at + length + (at[length] == ',' ? 1 : 0);
      std::memmove(at, rest, std::strlen(rest) + 1);
      continue;
    }
    char* comma = std::strchr(at, ',');
    if (comma == nullptr) return;
    at = comma + 1;
  }
}

}  // namespace lexon
