// Node lists from a line of text, and back. A node is written like this, most of it optional:
//
//   [!cat=animal~id/N,SG|dog/N{1:>agn}(02)]
//
//   [ ]        the node stands in the window; the first such node is the left one
//   !          the mark "to be tried again in place"
//   hw=cw~id/attributes, words separated by "|", the word in force first
//   ^5         behind the words: the kind, where it is not that of an ordinary word
//   {1:text}   the attribute block of scope 1, head first; {text} is one of scope 0
//   (02)       the states of the records, newest first; "m" is a window marker; a chosen chain follows as <id,id>
//
// The words "<<" and ">>" make boundaries, with the attributes SHEAD and STAIL if none are given. The word
// "SCOPE:01" makes a reference to scope 1. All other nodes have their words as master list too.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "data/records.hpp"

namespace lexon::test {

// A word, or a list of words, in the notation above. In the sentence's pool.
[[nodiscard]] WordEntry* words_of(std::string_view text);

// A node that stands in no list.
[[nodiscard]] Node* node_of_text(std::string_view text);

// A linked list with its window, and the two nodes that the window marks (null: not marked).
struct List {
  explicit List(std::string_view text);

  Node* lnode = nullptr;
  Node* rnode = nullptr;
  std::vector<Node*> nodes;  // as read, in order; index 0 is the first node of the text

  [[nodiscard]] Node& at(std::size_t index) const { return *nodes.at(index); }
};

// Hangs an arc on both nodes. Both nodes' lists take it at their end.
Relation* arc_between(Node& from, Node& to, const char* label, int scope = 0);

// The way back. A broken list ends with " ..." behind 1,000 nodes.
[[nodiscard]] std::string text_of_words(const WordEntry* words);
[[nodiscard]] std::string text_of_node(const Node* node);
[[nodiscard]] std::string text_of_list(const Node* any, const Node* lnode = nullptr, const Node* rnode = nullptr);

}  // namespace lexon::test
