#include "data/attr_string.hpp"

#include <cstring>
#include <string_view>

#include "data/records.hpp"

namespace lexon {

namespace {

using std::string_view;

// The place of `attr` in `text`, or npos. From one place of its first character to the next; the empty attribute may
// stand anywhere.
std::size_t position_of(string_view text, string_view attr) {
  if (text == attr) return 0;
  const auto next_from = [=](std::size_t at) { return attr.empty() ? at : text.find(attr.front(), at); };
  bool stands_first = false;
  std::size_t first = string_view::npos;  // behind a comma
  for (std::size_t at = next_from(0); at <= text.size(); at = next_from(at + 1)) {
    if (at != 0 && text[at - 1] != ',') continue;
    if (!text.substr(at).starts_with(attr)) continue;
    const std::size_t end = at + attr.size();
    const bool is_whole = end < text.size() && text[end] == ',';
    if (at == 0) {
      stands_first = is_whole;
    } else if (is_whole) {
      return at;
    } else if (first == string_view::npos) {
      first = at;
    }
  }
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
