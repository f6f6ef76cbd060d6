// The nodes of the sentence's graph, with their words from the dictionary.
#pragma once

#include "data/records.hpp"
#include "data/status.hpp"

namespace lexon {

struct Session;

// The node of a row of the word table, built if needed. On failure `node` is null, and the status is that of the
// lookup, of the literal entry, or `memory`.
[[nodiscard]] Status node_build(Session& session, int row, Node*& node);

// The word list of a word that the dictionary does not hold. An old list in `head` is released; it stays on failure.
[[nodiscard]] Status literal_entry(Session& session, const char* word, WordEntry*& head);

}  // namespace lexon
