// The words of the sentence's graph, each with its attributes in every scope that mentions it.
#pragma once

#include <cstring>
#include <span>

#include "data/session.hpp"

namespace lexon {

// Cuts `text` (in place) into word, number and attributes and enters them for `scope`. Returns the row's index, or -1
// when the word could not be entered: memory, or a limit, and then the sentence is refused. `guesses`: rows that may be
// the word's, to be looked at first; any number will do.
[[nodiscard]] int graph_word_add(Session& session, char* text, int scope, std::span<const int> guesses = {});

// The number of a scope reference: an empty name with a number from 1 to 99; else 0.
[[nodiscard]] int scope_number_of(const GraphWord& row);

// `strcmp` for names of which most differ in the first character.
[[nodiscard]] inline int names_compare(const char* name, const char* other) {
  const int order = static_cast<unsigned char>(*name) - static_cast<unsigned char>(*other);
  return order != 0 ? order : std::strcmp(name, other);
}

// The order of the tables of words and of nodes: by name in byte order, then by number.
[[nodiscard]] inline bool sorts_before(const char* name, int number, const char* other_name, int other_number) {
  const int order = names_compare(name, other_name);
  return order != 0 ? order < 0 : number < other_number;
}

}  // namespace lexon
