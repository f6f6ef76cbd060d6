// Graphs from the text of a document, and back into lines that a test can compare.
//
//   words   go#37{0:@entry} "big cat"{0:}          rows in order, as name#number and their blocks, newest first;
//                                                  a word that was quoted stands in quotes
//   nodes   go#37 k0 L1 go=go/TEMP {0:@entry,>agn} the kind, the word list by its number from 0, the candidates as
//                                                  hw=cw/attributes (the same again if the cw is the hw), the blocks
//   arcs    agn:1(go,dog)                          label, scope and ends; "agn:1" alone is not connected
//   scopes  1=go                                   rows from 1 on; "-" for no entry
//
// The number is left out where it is 0. Items are joined by "; ".
#pragma once

#include <string>

#include "data/records.hpp"
#include "data/status.hpp"

namespace lexon::test {

// What came of reading one sentence.
struct GraphRead {
  Status status;
  Node* root;          // also in row 0 of the scope table
  std::string output;  // what was printed meanwhile
};

// Clears the sentence's tables and pool and reads the sentence that `stream` stands at.
[[nodiscard]] GraphRead graph_read(std::FILE* stream);

// The same from the first sentence of `text`.
[[nodiscard]] GraphRead graph_of(const std::string& text);

// The same for the relation lines of one sentence, its tags left out.
[[nodiscard]] GraphRead graph_of_lines(const std::string& lines);

[[nodiscard]] std::string words_text();
[[nodiscard]] std::string nodes_text();
[[nodiscard]] std::string arcs_text();
[[nodiscard]] std::string scopes_text();

// A node by its name and number; a failure of the test and null if there is none.
[[nodiscard]] Node* graph_node(const std::string& name, int number = 0);

// The blocks of a node, as in `nodes_text`.
[[nodiscard]] std::string blocks_of(const std::string& name, int number = 0);

}  // namespace lexon::test
