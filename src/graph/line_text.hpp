// Cutting the lines of a graph document into their parts. All functions work in place on a terminated text and never
// read behind its terminator.
#pragma once

namespace lexon {

// Two base-36 characters as a number, unchecked: what is no digit counts as its code minus 55. A missing character
// counts as the terminator.
[[nodiscard]] int node_code_read(const char* text);

// The reverse, with a terminator: 0 to 9 as digits, the rest as letters. Regular from 0 to 1295.
void node_code_write(int number, char (&code)[3]);

// The parts of a relation line, label ( from , to ) rest. They point into the line; null where the cutting did not
// come to them.
struct RelationText {
  char* label;
  char* from;
  char* to;
  char* rest;
};

// Cuts a relation line. Above 0 it is well formed: 1, or the sum of the digits behind "=". A line needs its line end.
[[nodiscard]] int split_relation(char* line, RelationText& text);

// Takes the number behind the first ":" out of a label, and returns it; 0 without a ":".
[[nodiscard]] int label_scope(char* label);

// A word of the graph as written. The texts point into the text that was cut.
struct WordText {
  char* name;
  char* attrs;  // with dots between; empty if none
  int number;   // of the instance, 0 if none
  bool quoted;  // begins with a double quote
};

// Cuts a word, its number and its attributes. `text` has no line end.
[[nodiscard]] WordText split_word(char* text);

}  // namespace lexon
