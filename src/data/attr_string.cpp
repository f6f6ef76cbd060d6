#include "data/attr_string.hpp"

#include <cstring>
#include <string_view>

#include "data/records.hpp"

namespace lexon {

namespace {

using std::string_view;

// Does ",attr" stand at a comma of the text?
bool stands_behind(string_view text, std::size_t comma, string_view attr) {
  const string_view rest = text.substr(comma + 1);
  if (rest.empty() || attr.empty()) return attr.empty();
  return rest[0] == attr[0] && rest.starts_with(attr);
}

// The place of `attr` in `text`, or npos.
std::size_t position_of(string_view text, string_view attr) {
  if (text == attr) return 0;
  std::size_t first = string_view::npos;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != ',' || !stands_behind(text, at, attr)) continue;
    const std::size_t end = at + 1 + attr.size();
    if (end < text.size() && text[end] == ',') return at + 1;
    if (first == string_view::npos) first = at + 1;
  }
  const bool stands_first = text.size() > attr.size() && text[attr.size()] == ',' && text.starts_with(attr);
  if (stands_first) return 0;
  // wanted: as the last element the attribute counts only if the first ",attr" of the text is the one at its end.
  return first != string_view::npos && first + attr.size() == text.size() ? first : string_view::npos;
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

// From one place of the first character to the next: there are few of them, and `strchr` leaps over the rest.
bool attr_in(const char* attrs, const char* attr) {
  if (attrs == nullptr || attr == nullptr) return false;
  // The empty attribute is an element wherever nothing stands between commas or ends.
  if (*attr == '\0')
    return *attrs == '\0' || *attrs == ',' || attrs[std::strlen(attrs) - 1] == ',' ||
           std::strstr(attrs, ",,") != nullptr;
  for (const char* start = std::strchr(attrs, *attr); start != nullptr; start = std::strchr(start + 1, *attr)) {
    if (start != attrs && start[-1] != ',') continue;
    const char* at = start + 1;
    const char* wanted = attr + 1;
    while (*wanted != '\0' && *wanted == *at) ++wanted, ++at;
    if (*wanted == '\0' && (*at == ',' || *at == '\0')) return true;
  }
  return false;
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
