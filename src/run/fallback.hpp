// What is said of a sentence that could not be rendered: its words, in an order that needs no rules.
#pragma once

#include <string>
#include <string_view>

namespace lexon {

// The words of one sentence of a graph file, from `[S` to `[/S`, with blanks between them: the entry word first, then
// from each word what its relations lead to, in the order of their lines and to the end of each branch; then the words
// that no road leads to, as they stand. A word is written without restrictions, number and attributes; a reference to a
// scope stands for the words of that scope. Empty if the text has no word. Lines that are no relation are passed over.
std::string fallback_words(std::string_view graph);

}  // namespace lexon
