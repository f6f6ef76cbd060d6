// Reading one sentence of a graph document.
#pragma once

#include <cstdio>

#include "data/records.hpp"
#include "data/status.hpp"

namespace lexon {

// Reads from where the last call stopped up to the end of the next sentence, and builds its graph in the sentence's
// tables, which the caller has cleared. `root` receives the entry node, or null. Returns ok when it stopped at the end
// mark, or `end_of_input`, `memory`, or what every loop must leave with. A sentence that breaks a limit is read to its
// end and `sentence.refused`; its graph is then of no use.
[[nodiscard]] Status read_graph(std::FILE* input, Node*& root);

}  // namespace lexon
