// Reading one sentence of a graph document.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

#include "data/records.hpp"
#include "data/status.hpp"
#include "data/text_line.hpp"

namespace lexon {

struct Session;

// What of an input came to no sentence, over all its sentences, for front ends that show it beside the text. The lines
// that the reader prints into the output stand apart from this.
struct InputNotes {
  struct Line {
    std::int64_t number;  // from 1
    const char* why;
  };
  TextWatch text;
  bool has_sentence = false;    // one has been opened
  std::int64_t left_out = 0;    // lines of graphs
  std::array<Line, 3> first{};  // of these
  Line unclosed{};              // the sentence or the block that the end of the file ended; number 0: none
};

// Reads from where the last call stopped up to the end of the next sentence, and builds its graph in the sentence's
// tables, which the caller has cleared. `root` receives the entry node, or null. Returns ok when it stopped at the end
// mark, or `end_of_input`, `memory`, or what every loop must leave with. A sentence that breaks a limit is read to its
// end and `sentence.refused`; its graph is then of no use. `notes` goes on from call to call; null: nobody wants to
// know.
[[nodiscard]] Status read_graph(Session& session, TextSource input, Node*& root, InputNotes* notes = nullptr);

}  // namespace lexon
