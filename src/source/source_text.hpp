// What a grammar source says, before its names have values: a tree of rule lines and directives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lexon {

// A place in a source file. Lines count from 1, columns are bytes from 0.
struct SourcePlace {
  std::uint32_t file = 0;  // its number among the files of an expansion
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

// A stretch of a line: text that goes out as it is, or a mark that a value takes the place of.
struct SourcePiece {
  std::string text;   // of a mark: the name
  std::string field;  // of a mark: the column behind the dot; empty without one
  bool is_mark = false;
  bool begins_line = false;
  bool is_braced = false;  // the mark is written %{name}, so that the dot belongs to it in any case
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};
using SourceLine = std::vector<SourcePiece>;

// What a node is. `plain`: a line that is copied; `branch`: %if with its %elif and %else.
enum class SourceKind : std::uint8_t { plain, rule, define, list, table, loop, branch, include };

// One comparison of a condition.
struct SourceTest {
  enum class Kind : std::uint8_t { is_set, equal, among };
  Kind kind = Kind::is_set;
  bool is_negated = false;
  bool joined_by_or = false;  // with the test before it
  SourcePiece name;
  SourceLine value;       // what it is compared with; the values of a bracketed list
  std::string list_name;  // of `among`; empty for a bracketed list
};

struct SourceNode;

// A way of a branch: what stands behind %if, an %elif or the %else, which has no tests.
struct SourceWay {
  std::vector<SourceTest> tests;
  std::vector<SourceNode> body;
};

// A directive, a rule or a copied line. Which members are filled follows from `kind`.
struct SourceNode {
  SourceKind kind = SourceKind::plain;
  std::uint32_t line = 0;
  std::uint32_t column = 0;
  std::string_view plain;          // a comment or an empty line, with its end
  std::string name;                // what is defined, or the list that is looped over
  std::vector<std::string> names;  // the variables of a loop
  SourceLine text;                 // the rule, the value, the values in brackets, the path
  std::vector<SourceLine> rows;    // of a list or table that is written in the source, a line each
  bool is_block = false;           // the rows are meant, not the text
  std::string_view end = "\n";     // of a rule line
  std::vector<SourceWay> ways;     // of a branch; a loop has one
};

// Something wrong at a place: what, and how it is put right.
struct SourceFault {
  std::uint32_t line = 0;
  std::uint32_t column = 0;
  std::string text;
};

// A file of a source.
struct SourceText {
  std::string content;  // what the tree's views lie in
  std::vector<SourceNode> body;
  std::vector<SourceFault> faults;
};

// Is a line of `content` a directive? Without one the content is rule text.
[[nodiscard]] bool has_directives(std::string_view content);

// Reads `text.content` into the tree. What cannot be read is noted and left out.
void source_text_read(SourceText& text);

// Reads the marks of a text that begins at this place; a fault is appended. `is_open` receives whether the text ends in
// a mark by which it goes on in the next line.
void source_line_read(std::string_view text, std::uint32_t line, std::uint32_t column, SourceLine& pieces,
                      std::vector<SourceFault>& faults, bool* is_open = nullptr);

// May it name something? Letters, digits and "_", no digit first.
[[nodiscard]] bool is_source_name(std::string_view text);
// The names of the directives, without their "%".
[[nodiscard]] std::span<const std::string_view> directive_names();

// The text without blanks at its ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

// The next line of `rest`, which loses it, without its end; `end` receives that.
[[nodiscard]] std::string_view take_line(std::string_view& rest, std::string_view& end);

}  // namespace lexon
