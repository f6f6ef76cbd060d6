#include "import/meaning.hpp"

#include <algorithm>

namespace lexon {

bool has_attribute(const Concept& word, std::string_view attribute) {
  return std::find(word.attributes.begin(), word.attributes.end(), attribute) != word.attributes.end();
}

void attribute_add(Concept& word, std::string_view attribute) {
  if (!has_attribute(word, attribute)) word.attributes.emplace_back(attribute);
}

void settle(Meaning& meaning, int triple, Fate fate, const char* why) {
  if (triple < 0) return;
  Triple& settled = meaning.triples[static_cast<std::size_t>(triple)];
  if (settled.fate != Fate::open) return;
  settled.fate = fate;
  settled.why = why;
}

}  // namespace lexon
