#include "import/meaning.hpp"

namespace lexon {

// Two steps may find the same, and a word shows each attribute once.
void attribute_add(Concept& word, std::string_view attribute) {
  if (has_attribute(word, attribute)) return;
  if (word.attributes.empty()) word.attributes.reserve(4);
  word.attributes.emplace_back(attribute);
}

// The first step that takes a triple says what became of it: what happens to the arc later happens to another arc that
// only has its number.
void settle(Meaning& meaning, int triple, Fate fate, const char* why) {
  if (triple < 0) return;
  Triple& settled = meaning.triples[static_cast<std::size_t>(triple)];
  if (settled.fate != Fate::open) return;
  settled.fate = fate;
  settled.why = why;
}

}  // namespace lexon
