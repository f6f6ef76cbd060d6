// The names in a line of rules, of a source, of entries or of graphs, and what stands at a place that is still being
// written. Reads what is wrong or unfinished, too: a scanner for editors, beside the parsers that say what is in force.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lexon {
inline namespace v1 {
namespace lab {

enum class TextKind : std::uint8_t {
  rules,
  source,  // of rules, with directives
  table,   // values of a source, with tabulators between
  entries,
  cooccurrence,  // entry text whose fields hold pairs of words
  graphs
};

enum class TokenKind : std::uint8_t {
  attribute,     // with its signs but for "^", "+" and "-"
  label,         // of a relation, in graphs and in the third section of a pattern
  role,          // a relation of the co-occurrence dictionary
  form,          // between [ and ]
  concept_word,  // between [[ and ]], or the word of a graph or an entry
  pair,          // the text of a co-occurrence entry, in which a role may stand
  value,         // a word of a text, list or table of a source, which may become any of these
  mark,          // %name of a source
  mark_name,     // where a source gives a name its value
  priority,      // "P12"
};

// What a token is for.
enum class TokenUse : std::uint8_t {
  gives,    // an action, a graph or an entry that gives the attribute; of a word or a %name: where it is defined
  asks,     // a condition
  takes,    // an action that strikes the attribute out
  follows,  // a pattern that follows the relation
  other
};

struct Token {
  TokenKind kind;
  TokenUse use;
  std::uint32_t begin;  // bytes of the line
  std::uint32_t end;
};

// What may be written at a place.
enum class Wanted : std::uint8_t {
  nothing,
  attribute,     // in a condition, or where an entry or graph gives it
  action,        // behind its sign
  label,         // of a relation
  role,          // with its direction
  form,          // between brackets
  concept_word,  // between two of them
  graph_word,    // a concept word in a graph
  mark,          // a %name, behind the percent sign
  directive      // likewise
};

// Goes through a text line by line; what a line leaves open is known to the next.
class LineScanner {
 public:
  explicit LineScanner(TextKind kind) : kind_(kind) {}

  // Appends the tokens of the line, which comes without its end. With `until` of at most its size, `wanted` tells what
  // may stand there; `wanted_begin` where it begins.
  void scan(std::string_view line, std::vector<Token>& tokens, std::size_t until = std::string_view::npos);
  // Does the line matter to those behind it? Others may be left out.
  [[nodiscard]] bool needs(std::string_view line) const;
  [[nodiscard]] Wanted wanted() const { return wanted_; }
  [[nodiscard]] std::size_t wanted_begin() const { return wanted_begin_; }
  // Do lines stand for themselves in this kind of text?
  [[nodiscard]] static bool is_line_by_line(TextKind kind) {
    return kind == TextKind::rules || kind == TextKind::table || kind == TextKind::entries ||
           kind == TextKind::cooccurrence;
  }

 private:
  struct Scan;
  void scan_item(Scan& scan, Wanted wanted, TokenUse plain_use);
  void scan_label(Scan& scan, bool is_role);
  void scan_in_pattern(Scan& scan);
  void scan_rule(Scan& scan);
  void scan_directive(Scan& scan);
  void scan_for(Scan& scan, std::size_t word_end);
  static void scan_values(Scan& scan, std::size_t at, std::size_t end);
  static std::size_t name_at(const Scan& scan, std::size_t at, std::size_t& stop);
  void ask_for_mark(const Scan& scan);
  void scan_entry(Scan& scan) const;
  void scan_graph(Scan& scan);

  TextKind kind_;
  // Of the line that was scanned last.
  Wanted wanted_ = Wanted::nothing;
  std::size_t wanted_begin_ = 0;
  // Of a rule that goes on in the next line.
  bool goes_on_ = false;
  int patterns_ = 0;  // that are behind; a rule has two
  int section_ = 0;   // of the pattern, from 0
  bool in_pattern_ = false;
  // Of a source: within a list or table that is written over lines, or within a block of a graph.
  bool in_block_ = false;
  std::string block_end_;  // of the graph's block, as a line begins with it; empty: in none
};

// A name as all its spellings have it: ">agn" and "<agn" are marks of the label "agn", "#N" is a copy's "N".
struct Symbol {
  enum class Kind : std::uint8_t { none, attribute, label, form, concept_word, mark };
  Kind kind = Kind::none;
  std::string name;

  bool operator==(const Symbol&) const = default;
  [[nodiscard]] bool is_renamed() const { return kind == Kind::attribute || kind == Kind::label; }
};

[[nodiscard]] Symbol symbol_of(const Token& token, std::string_view line);

// The bytes of the line in which this token names the symbol; empty (begin == end) if it does not.
struct TokenPart {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
};
[[nodiscard]] TokenPart symbol_in(const Token& token, std::string_view line, const Symbol& symbol);

// Names that the engine gives itself.
[[nodiscard]] bool is_built_in(const Symbol& symbol);
// Why the name cannot be one of this kind; empty: it can. `in_graphs`: it has to stand there too; `most`: bytes of a
// label.
[[nodiscard]] std::string name_fault(Symbol::Kind kind, std::string_view name, bool in_graphs, std::size_t most);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
