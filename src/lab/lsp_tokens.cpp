// Each kind of text has its scanner below: `scan_rule`, `scan_directive` (a source: directives, else rules), `scan_entry`,
// `scan_graph`. They follow the parsers as far as these go on, and then go on themselves where a parser would refuse the
// line, since most lines that an editor asks about are not finished.

#include "lab/lsp_tokens.hpp"

#include <algorithm>
#include <array>
#include <cstring>

#include "data/chars.hpp"
#include "data/sentence.hpp"
#include "graph/line_kind.hpp"
#include "graph/line_text.hpp"
#include "rules/scanners.hpp"
#include "source/source_text.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// The line under the scanner, with a NUL behind it.
struct LineScanner::Scan {
  std::string text;
  std::size_t at = 0;  // what is read next; never beyond the NUL
  std::vector<Token>& tokens;
  std::size_t until;  // the byte that the editor asks about; npos: none

  [[nodiscard]] char operator*() const { return text[at]; }
  [[nodiscard]] bool is_end() const { return at >= text.size(); }
  void blanks() {
    while (!is_end() && is_blank(text[at])) ++at;
  }
  void commas() {
    while (!is_end() && (is_blank(text[at]) || text[at] == ',')) ++at;
  }
  // Names without a character are none.
  void add(TokenKind kind, TokenUse use, std::size_t begin, std::size_t end) {
    if (end > begin) tokens.push_back({kind, use, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end)});
  }
  // Does the place that is asked about lie between here and `end`, or at it?
  [[nodiscard]] bool is_asked(std::size_t begin, std::size_t end) const { return until >= begin && until <= end; }
  void add_mark_tokens(std::size_t begin, std::size_t end);
};

namespace {

// Of a %name.
bool is_name_char(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

// Where a token of a rule ends, as the rule parser has it: parentheses within a name keep their separators.
std::size_t token_end(std::string_view text, std::size_t at) {
  int depth = 0;
  for (; at < text.size(); ++at) {
    if (text[at] == '(') {
      ++depth;
    } else if (text[at] == ')' && depth > 0) {
      --depth;
    } else if (is_separator(text[at])) {
      break;
    }
  }
  return at;
}

// Does a source put something in here? "%%" counts: it is a percent sign once the source is expanded.
bool has_mark(std::string_view text) {
  for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1)) {
    if (at + 1 < text.size() && (is_name_char(text[at + 1]) || text[at + 1] == '{' || text[at + 1] == '%')) return true;
  }
  return false;
}

}  // namespace

// The %names in a stretch of a source.
void LineScanner::Scan::add_mark_tokens(std::size_t begin, std::size_t end) {
  while (begin < end && (begin = text.find('%', begin)) < end) {
    ++begin;
    // Two stand for a percent sign.
    if (begin < end && text[begin] == '%') {
      ++begin;
      continue;
    }
    const bool is_braced = begin < end && text[begin] == '{';
    if (is_braced) ++begin;
    std::size_t stop = begin;
    // A column behind a dot is no part of the name.
    while (stop < end && is_name_char(text[stop])) ++stop;
    add(TokenKind::mark, TokenUse::asks, begin, stop);
    begin = stop;
  }
}

void LineScanner::scan(std::string_view line, std::vector<Token>& tokens, std::size_t until) {
  Scan scan{std::string(line), 0, tokens, until};
  // The parsers' scanners that are used below end at a NUL.
  std::replace(scan.text.begin(), scan.text.end(), '\0', ' ');
  wanted_ = Wanted::nothing;
  wanted_begin_ = until;
  switch (kind_) {
    case TextKind::rules: scan_rule(scan); break;
    case TextKind::source: scan_directive(scan); break;
    case TextKind::table:
      // Columns between tabulators, each of which may be a value of a loop.
      for (std::size_t at = 0; at <= line.size();) {
        const std::size_t end = std::min(line.find('\t', at), line.size());
        scan.add(TokenKind::value, TokenUse::other, at, end);
        at = end + 1;
      }
      break;
    case TextKind::entries:
    case TextKind::cooccurrence:
      scan_entry(scan);
      // A place behind the line asks for nothing: that is how lines are scanned for their tokens alone.
      if (kind_ == TextKind::entries && until <= line.size()) {
        // Between the last parentheses stand attributes.
        const std::size_t quote = scan.text.find("\" (");
        const std::size_t open = quote == std::string::npos ? std::string::npos : quote + 2;
        const std::size_t close = open == std::string::npos ? open : std::min(scan.text.find(')', open), line.size());
        if (open != std::string::npos && until > open && until <= close) {
          wanted_ = Wanted::attribute;
          wanted_begin_ = std::max(line.substr(0, until).find_last_of(",("), open) + 1;
        }
      }
      break;
    case TextKind::graphs: scan_graph(scan); break;
  }
}

bool LineScanner::needs(std::string_view line) const {
  if (goes_on_ || in_block_ || !block_end_.empty()) return true;
  // Else only what may open a block, or go on in the next line.
  const std::size_t begin = line.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return false;
  // Of graphs a block or sentence mark; of sources a directive, or a rule that goes on.
  return kind_ == TextKind::graphs ? line[begin] == '[' : line[begin] == '%' || line.ends_with('\\');
}

// ---- Rules

// One condition or action: "^past", "+pl", "[dogs]", "[[dog(>animal)]]". `wanted` is what else may stand in its place;
// `plain_use` what a name without a sign does. Moves on at least one character, so that its callers come to an end.
void LineScanner::scan_item(Scan& scan, Wanted wanted, TokenUse plain_use) {
  const bool is_source = kind_ == TextKind::source;
  const std::size_t start = scan.at;
  TokenUse use = plain_use;
  if (*scan == '^')
    use = TokenUse::asks, ++scan.at;
  else if (*scan == '-')
    use = TokenUse::takes, ++scan.at;
  else if (*scan == '+')
    use = TokenUse::gives, ++scan.at;
  const bool is_condition = wanted == Wanted::attribute;
  // Among conditions the signs are part of what is asked for.
  if (is_condition) use = TokenUse::asks;
  const std::size_t begin = scan.at;
  if (!scan.is_end() && *scan == '[') {
    // A form in brackets, or a concept word in two; a form may begin with a bracket of its own.
    ++scan.at;
    // "[[" begins a concept word unless the form itself is a bracket.
    const bool is_concept = *scan == '[' && !is_hw_text_end(scan.text.c_str() + scan.at + 1);
    if (is_concept) ++scan.at;
    const std::size_t body = scan.at;
    if (is_concept) {
      while (!scan.is_end() && *scan != ']') ++scan.at;
    } else {
      while (!scan.is_end() && !is_hw_text_end(scan.text.c_str() + scan.at)) ++scan.at;
    }
    scan.add(is_concept ? TokenKind::concept_word : TokenKind::form, use, body, scan.at);
    if (scan.is_asked(body, scan.at)) {
      wanted_ = is_concept ? Wanted::concept_word : Wanted::form;
      wanted_begin_ = body;
    }
    // An open bracket at the end of the line has nothing to close it.
    scan.at = std::min(scan.at + (is_concept ? 2 : 1), scan.text.size());
  } else {
    scan.at = token_end(scan.text, begin);
    const std::string_view token = std::string_view(scan.text).substr(begin, scan.at - begin);
    // A name that is put together from marks is whole only once the source is expanded.
    if (is_source && has_mark(token)) {
      scan.add_mark_tokens(begin, scan.at);
    } else {
      scan.add(TokenKind::attribute, use, begin, scan.at);
    }
    if (scan.is_asked(start, scan.at)) {
      wanted_ = wanted;
      // In front of the sign the sign is still to be written too.
      wanted_begin_ = begin <= scan.until ? begin : start;
    }
  }
  if (scan.at == start) ++scan.at;
  const std::size_t behind = scan.at;
  scan.commas();
  // Behind a comma or blank another item may begin.
  const bool may_begin = scan.at > behind && scan.until > behind && scan.until <= scan.at;
  if (may_begin) {
    wanted_ = wanted;
    wanted_begin_ = scan.until;
  }
}

// A relation label in the third section of a pattern, or a role with its direction in the fourth.
void LineScanner::scan_label(Scan& scan, bool is_role) {
  const bool is_source = kind_ == TextKind::source;
  if (is_role && (*scan == '<' || *scan == '>')) ++scan.at;
  const std::size_t begin = scan.at;
  while (!scan.is_end() && !is_separator(*scan)) ++scan.at;
  const std::string_view token = std::string_view(scan.text).substr(begin, scan.at - begin);
  if (is_source && has_mark(token)) {
    scan.add_mark_tokens(begin, scan.at);
  } else {
    scan.add(is_role ? TokenKind::role : TokenKind::label, TokenUse::follows, begin, scan.at);
  }
  if (scan.is_asked(begin, scan.at)) {
    wanted_ = is_role ? Wanted::role : Wanted::label;
    wanted_begin_ = begin;
  }
  // A sign that belongs to no label is passed over, so that the scan comes to an end.
  if (scan.at == begin && !scan.is_end()) ++scan.at;
  scan.commas();
}

// A piece of a pattern: an item, a colon between two sections, or the pattern's end.
void LineScanner::scan_in_pattern(Scan& scan) {
  // Sections: conditions, actions, labels, roles.
  const Wanted wanted = section_ == 0   ? Wanted::attribute
                        : section_ == 1 ? Wanted::action
                        : section_ == 2 ? Wanted::label
                                        : Wanted::role;
  const std::size_t before = scan.at;
  scan.commas();
  if (scan.is_asked(before, scan.at)) {
    wanted_ = wanted;
    wanted_begin_ = scan.until;
  }
  if (scan.is_end()) return;
  if (*scan == ':') {
    // A colon too many stays in the last section.
    section_ = std::min(section_ + 1, 3);
    ++scan.at;
    // At the end of the line no other branch is reached any more.
    if (scan.is_end() && scan.until == scan.at) {
      wanted_ = section_ == 1 ? Wanted::action : section_ == 2 ? Wanted::label : Wanted::role;
      wanted_begin_ = scan.until;
    }
  } else if (*scan == '}' || *scan == '"') {
    in_pattern_ = false;
    ++patterns_;
    ++scan.at;
  } else if (section_ < 2) {
    scan_item(scan, wanted, section_ == 0 ? TokenUse::asks : TokenUse::gives);
  } else {
    scan_label(scan, section_ == 3);
  }
}

// A rule: a type, contexts in parentheses, two patterns in braces or quotes with up to four sections between colons, a
// priority. What it leaves open at a backslash (of a source) is kept in the members for the next line.
void LineScanner::scan_rule(Scan& scan) {
  const bool is_source = kind_ == TextKind::source;
  if (!goes_on_) {
    patterns_ = section_ = 0;
    in_pattern_ = false;
    scan.blanks();
    if (scan.is_end() || *scan == ';') return;
    // The type names nothing.
    while (!scan.is_end() && std::string_view("({\"").find(*scan) == std::string_view::npos) {
      // A comment without a rule in front of it.
      if (*scan == ';') return;
      ++scan.at;
    }
  }
  goes_on_ = is_source && scan.text.ends_with('\\');
  // The backslash is no part of the rule.
  if (goes_on_) scan.text.pop_back();

  while (!scan.is_end()) {
    if (in_pattern_) {
      scan_in_pattern(scan);
      continue;
    }
    scan.blanks();
    if (scan.is_end()) break;
    if (is_source && *scan == '%') {
      // A mark may stand for anything: a pattern, a part of one, a priority.
      const std::size_t begin = scan.at++;
      while (!scan.is_end() && (is_name_char(*scan) || *scan == '{' || *scan == '.' || *scan == '}')) ++scan.at;
      scan.add_mark_tokens(begin, scan.at);
    } else if (*scan == '(') {
      ++scan.at;
      scan.commas();
      if (scan.is_end() && scan.until == scan.at) {
        wanted_ = Wanted::attribute;
        wanted_begin_ = scan.until;
      }
      // Groups have conditions alone.
      while (!scan.is_end() && *scan != ')') scan_item(scan, Wanted::attribute, TokenUse::asks);
      if (!scan.is_end()) ++scan.at;
      if (!scan.is_end() && *scan == '*') ++scan.at;
    } else if ((*scan == '{' || *scan == '"') && patterns_ < 2) {
      in_pattern_ = true;
      section_ = 0;
      ++scan.at;
      if (scan.is_end() && scan.until == scan.at) {
        wanted_ = Wanted::attribute;
        wanted_begin_ = scan.until;
      }
    } else if (*scan == 'P') {
      const std::size_t begin = scan.at++;
      while (!scan.is_end() && is_digit(*scan)) ++scan.at;
      // The "P" belongs to it.
      scan.add(TokenKind::priority, TokenUse::other, begin, scan.at);
      // "P%n": the priority may be put in, too. Behind it stands a comment at most.
      if (is_source) scan.add_mark_tokens(scan.at, std::min(scan.text.find(';', scan.at), scan.text.size()));
      break;
    } else {
      break;
    }
  }
  if (is_source) ask_for_mark(scan);
}

// Behind a percent sign a name is wanted.
void LineScanner::ask_for_mark(const Scan& scan) {
  if (scan.until > scan.text.size()) return;
  std::size_t begin = scan.until;
  while (begin > 0 && is_name_char(scan.text[begin - 1])) --begin;
  if (begin > 0 && scan.text[begin - 1] == '{') --begin;
  if (begin == 0 || scan.text[begin - 1] != '%') return;
  wanted_ = Wanted::mark;
  wanted_begin_ = scan.text[begin] == '{' ? begin + 1 : begin;
}

// ---- Sources

// The words between `at` and `end`; whether each is an attribute, a label or neither is known from its other uses.
void LineScanner::scan_values(Scan& scan, std::size_t at, std::size_t end) {
  // What cannot be part of a name that a value of a list stands for.
  constexpr std::string_view kAround = " \t,:(){}\"|^+-;";
  scan.add_mark_tokens(at, end);
  while (at < end) {
    at = std::min(scan.text.find_first_not_of(kAround, at), end);
    const std::size_t stop = std::min(scan.text.find_first_of(kAround, at), end);
    const std::string_view word = std::string_view(scan.text).substr(at, stop - at);
    // A word with a mark in it is no name before the source is expanded.
    if (!has_mark(word)) scan.add(TokenKind::value, TokenUse::other, at, stop);
    at = stop;
  }
}

// The name behind blanks; from what is returned to `stop`.
std::size_t LineScanner::name_at(const Scan& scan, std::size_t at, std::size_t& stop) {
  at = std::min(scan.text.find_first_not_of(" \t", at), scan.text.size());
  stop = at;
  while (stop < scan.text.size() && is_name_char(scan.text[stop])) ++stop;
  return at;
}

// %for NAME, NAME in LIST, or in values as they stand; `word_end` is behind the directive.
void LineScanner::scan_for(Scan& scan, std::size_t word_end) {
  const std::size_t in = scan.text.find(" in ", word_end);
  for (std::size_t at = word_end; at < std::min(in, scan.text.size());) {
    std::size_t stop = 0;
    at = name_at(scan, at, stop);
    // Something else stands where a name should: the source is being written.
    if (stop == at) break;
    scan.add(TokenKind::mark_name, TokenUse::gives, at, stop);
    at = stop + (stop < scan.text.size() && scan.text[stop] == ',' ? 1 : 0);
  }
  if (in == std::string::npos) return;
  std::size_t stop = 0;
  const std::size_t at = name_at(scan, in + 4, stop);
  if (stop > at) {
    scan.add(TokenKind::mark, TokenUse::asks, at, stop);
  } else {
    scan_values(scan, in + 4, scan.text.size());
  }
  if (scan.is_asked(in + 4, std::max(stop, in + 4))) {
    wanted_ = Wanted::mark;
    wanted_begin_ = at;
  }
}

// A line of a source: a directive, a line of a list or table that is written over several, or a rule.
void LineScanner::scan_directive(Scan& scan) {
  // The line above is a rule that ends with a backslash.
  if (goes_on_ && !in_block_) return scan_rule(scan);
  scan.blanks();
  const std::size_t begin = scan.at;
  if (scan.is_end() || *scan != '%') {
    if (!in_block_) {
      scan.at = 0;
      return scan_rule(scan);
    }
    // A line of a list or table.
    if (!scan.is_end() && *scan != ';') scan_values(scan, begin, scan.text.size());
    return;
  }
  std::size_t word_end = begin + 1;
  while (word_end < scan.text.size() && is_name_char(scan.text[word_end])) ++word_end;
  const std::string word = scan.text.substr(begin + 1, word_end - begin - 1);
  if (scan.is_asked(begin + 1, word_end)) {
    wanted_ = Wanted::directive;
    wanted_begin_ = begin + 1;
  }
  if (word == "end") {
    in_block_ = false;
  } else if (in_block_) {
    scan_values(scan, begin, scan.text.size());
  } else if (word == "define" || word == "list" || word == "table") {
    std::size_t stop = 0;
    const std::size_t at = name_at(scan, word_end, stop);
    scan.add(TokenKind::mark_name, TokenUse::gives, at, stop);
    const std::size_t sign = scan.text.find('=', stop);
    // Without it a list or table goes on to its %end; with it the one of a table names a file.
    if (sign == std::string::npos) {
      in_block_ = word != "define";
    } else if (word != "table") {
      scan_values(scan, sign + 1, scan.text.size());
    }
  } else if (word == "for") {
    scan_for(scan, word_end);
  } else if (word == "if" || word == "elif") {
    scan_values(scan, word_end, scan.text.size());
  } else if (word != "include" && word != "else" && word_end > begin + 1) {
    // No directive: a rule that begins with a mark.
    scan.at = 0;
    scan_rule(scan);
  }
}

// ---- Entries

// [form]{id} "concept word" (attributes) <language,frequency,priority>; a co-occurrence entry has its texts in the same
// places, and no attributes. A quote may be escaped; parentheses within an attribute keep their commas.
void LineScanner::scan_entry(Scan& scan) const {
  scan.blanks();
  if (scan.is_end() || *scan != '[') return;
  const bool is_pairs = kind_ == TextKind::cooccurrence;
  const std::string& text = scan.text;
  const std::size_t form = ++scan.at;
  std::size_t id = text.find("]{", form);
  // Without an id in braces the parser takes the line for no entry.
  if (id == std::string::npos) return;
  scan.add(is_pairs ? TokenKind::pair : TokenKind::form, TokenUse::gives, form, id);
  id += 2;
  const std::size_t id_end = text.find('}', id);
  if (id_end == std::string::npos) return;
  if (is_pairs) scan.add(TokenKind::pair, TokenUse::gives, id, id_end);
  // The end of the concept word is the first quote that is not escaped.
  const std::size_t open = text.find('"', id_end);
  std::size_t close = open;
  do {
    if (close == std::string::npos) return;
    close = text.find('"', close + 1);
  } while (close != std::string::npos && text[close - 1] == '\\');
  if (close == std::string::npos) return;
  scan.add(is_pairs ? TokenKind::pair : TokenKind::concept_word, TokenUse::gives, open + 1, close);
  // Attributes follow at once, or there are none.
  const std::size_t list = text.find('(', close);
  if (list == std::string::npos || text.find_first_not_of(" \t", close + 1) != list) return;
  int depth = 1;
  for (std::size_t at = list + 1, begin = at; at < text.size() && depth > 0; ++at) {
    if (text[at] == '(') ++depth;
    if (text[at] == ')') --depth;
    // A comma between attributes, or the parenthesis that closes the list.
    if ((text[at] != ',' || depth > 1) && depth > 0) continue;
    while (begin < at && is_blank(text[begin])) ++begin;
    std::size_t end = at;
    while (end > begin && is_blank(text[end - 1])) --end;
    scan.add(TokenKind::attribute, TokenUse::gives, begin, end);
    begin = at + 1;
  }
}

// ---- Graphs

// label:scope(from:instance.attrs, to:instance.attrs), outside of the blocks that hold no relations.
void LineScanner::scan_graph(Scan& scan) {
  if (!block_end_.empty()) {
    if (scan.text.starts_with(block_end_)) block_end_.clear();
    return;
  }
  const std::string line = scan.text;
  scan.blanks();
  BlockTag no_tag;
  switch (line_kind(std::string_view(scan.text).substr(scan.at), no_tag)) {
    case LineKind::word_block: block_end_ = kWordBlockEnd; return;
    case LineKind::skipped_block: block_end_ = kSkippedBlockEnd; return;
    // A tag of another block changes nothing for the lines of relations.
    case LineKind::graph_line: break;
    default: return;
  }
  if (scan.until <= line.size()) {
    // Before the first parenthesis a label, behind a dot an attribute, else a word.
    const std::string_view head = std::string_view(line).substr(0, scan.until);
    const std::size_t open = head.find('(');
    if (open == std::string_view::npos) {
      // Behind the colon stands the number of a scope.
      const bool is_label = head.find(':') == std::string_view::npos;
      wanted_ = is_label ? Wanted::label : Wanted::nothing;
      wanted_begin_ = std::min(head.find_first_not_of(" \t"), scan.until);
    } else {
      int depth = 0;
      bool in_quotes = false;
      std::size_t begin = open + 1;
      bool is_attribute = false;
      // A comma begins a word and a dot an attribute, unless they stand in quotes or in a word's own parentheses.
      for (std::size_t at = open + 1; at < head.size(); ++at) {
        const char c = head[at];
        if (c == '"') in_quotes = !in_quotes;
        if (in_quotes) continue;
        if (c == '(') ++depth;
        if (c == ')') --depth;
        if (depth > 0) continue;
        if (c == ',' || c == '.') {
          begin = at + 1;
          is_attribute = c == '.';
        }
      }
      while (begin < head.size() && is_blank(head[begin])) ++begin;
      wanted_ = in_quotes ? Wanted::nothing : is_attribute ? Wanted::attribute : Wanted::graph_word;
      wanted_begin_ = begin;
    }
  }
  // From here on the parser's own functions split the line. They write NULs into it, which moves no byte.
  scan.text += '\n';
  char* const buffer = scan.text.data();
  RelationText parts;
  if (split_relation(buffer, parts) <= 0 || parts.label == nullptr || parts.from == nullptr || parts.to == nullptr)
    return;
  const auto offset = [buffer](const char* part) { return static_cast<std::size_t>(part - buffer); };
  // Takes the number off the label.
  static_cast<void>(label_scope(parts.label));
  const std::size_t label_at = offset(parts.label);
  scan.add(TokenKind::label, TokenUse::gives, label_at, label_at + std::strlen(parts.label));
  for (char* side : {parts.from, parts.to}) {
    const WordText word = split_word(side);
    const std::size_t name = offset(word.name);
    // A word in quotes is a name, which no entry is looked up for.
    if (!word.quoted) scan.add(TokenKind::concept_word, TokenUse::gives, name, name + std::strlen(word.name));
    for (const char* attr = word.attrs; *attr != '\0';) {
      attr += std::strspn(attr, ". ");
      const std::size_t size = std::strcspn(attr, ". ");
      scan.add(TokenKind::attribute, TokenUse::gives, offset(attr), offset(attr) + size);
      attr += size;
    }
  }
}

// ---- Symbols

namespace {

// What the engine itself puts into lists and words.
constexpr std::array<std::string_view, 12> kBuiltIn = {"SHEAD", "STAIL", "CHEAD", "CTAIL", "SCOPE", "@entry",
                                                       "TEMP",  "NUM",   "ANUM",  "#ORIG", "#COPY", "H#NIL"};

bool is_built_in_name(std::string_view name) {
  return std::ranges::find(kBuiltIn, name) != kBuiltIn.end();
}

// The part of an attribute that names something, and whether that is a label: "##N" is a copy's "N", ">agn" a mark of
// "agn".
std::string_view core_of(std::string_view name, bool& is_label) {
  is_label = false;
  if (is_built_in_name(name)) return name;
  const std::size_t copies = name.find_first_not_of('#');
  if (copies != std::string_view::npos) name.remove_prefix(copies);
  // A sign alone is a name of its own.
  is_label = name.size() > 1 && (name.front() == '>' || name.front() == '<');
  if (is_label) name.remove_prefix(1);
  return name;
}

}  // namespace

Symbol symbol_of(const Token& token, std::string_view line) {
  const std::string_view text = line.substr(token.begin, token.end - token.begin);
  switch (token.kind) {
    case TokenKind::attribute:
    case TokenKind::value: {
      bool is_label = false;
      const std::string_view name = core_of(text, is_label);
      return {is_label ? Symbol::Kind::label : Symbol::Kind::attribute, std::string(name)};
    }
    case TokenKind::label:
    case TokenKind::role: return {Symbol::Kind::label, std::string(text)};
    case TokenKind::form: return {Symbol::Kind::form, std::string(text)};
    case TokenKind::concept_word: return {Symbol::Kind::concept_word, std::string(text)};
    case TokenKind::mark:
    case TokenKind::mark_name: return {Symbol::Kind::mark, std::string(text)};
    default: return {};
  }
}

TokenPart symbol_in(const Token& token, std::string_view line, const Symbol& symbol) {
  const std::string_view text = line.substr(token.begin, token.end - token.begin);
  const auto part = [&token](std::size_t at, std::size_t size) {
    return TokenPart{static_cast<std::uint32_t>(token.begin + at), static_cast<std::uint32_t>(token.begin + at + size)};
  };
  if (token.kind == TokenKind::pair) {
    // "a/rel/b": three texts in one, kept apart by a relation that brings its own signs.
    if (symbol.kind != Symbol::Kind::label) return {};
    // A relation that stands alone gives the value of all pairs that are not listed.
    if (text == symbol.name) return part(0, text.size());
    const auto is_sign = [](char c) { return !is_name_char(c) && static_cast<unsigned char>(c) < 128; };
    // Without signs around it the relation could be a part of either word.
    if (symbol.name.size() < 2 || !is_sign(symbol.name.front()) || !is_sign(symbol.name.back())) return {};
    const std::size_t at = text.find(symbol.name);
    return at == std::string_view::npos ? TokenPart() : part(at, symbol.name.size());
  }
  if (token.kind == TokenKind::value) {
    bool is_label = false;
    const std::string_view name = core_of(text, is_label);
    // A value without a sign may be either; with the sign of a mark it is a label.
    const bool fits = symbol.is_renamed() && name == symbol.name && (!is_label || symbol.kind == Symbol::Kind::label);
    return fits ? part(text.size() - name.size(), name.size()) : TokenPart();
  }
  // Tokens that are whole names.
  if (symbol_of(token, line) != symbol) return {};
  // The name is the end of the token: signs stand in front.
  return part(text.size() - symbol.name.size(), symbol.name.size());
}

bool is_built_in(const Symbol& symbol) {
  return symbol.kind == Symbol::Kind::attribute && is_built_in_name(symbol.name);
}

std::string name_fault(Symbol::Kind kind, std::string_view name, bool in_graphs, std::size_t most) {
  if (name.empty()) return "a name has at least one character";
  // What the name would be read as, in a rule, a graph and an entry.
  const std::string text(name);
  const bool is_attribute = kind == Symbol::Kind::attribute;
  const auto is_read = [&](TextKind of, const std::string& before, const std::string& behind, TokenKind wanted) {
    std::vector<Token> tokens;
    // The scanner decides, so that a new name is read by the same rules as those that are there.
    LineScanner(of).scan(before + text + behind, tokens);
    return std::ranges::any_of(tokens, [&](const Token& token) {
      return token.kind == wanted && token.begin == before.size() && token.end == before.size() + text.size();
    });
  };
  // A label has to be read as one by a pattern, and where graphs have it by these; an attribute by entries too.
  const bool is_sound = is_attribute
                            ? is_read(TextKind::rules, ":{", "} {} P1;", TokenKind::attribute) &&
                                  (!in_graphs || is_read(TextKind::graphs, "a(b.", ", c)", TokenKind::attribute)) &&
                                  is_read(TextKind::entries, "[a]{} \"b\" (", ") <E,0,0>;", TokenKind::attribute)
                            : is_read(TextKind::rules, ":\"N::", "\" {} P1;", TokenKind::label) &&
                                  (!in_graphs || is_read(TextKind::graphs, "", "(b, c)", TokenKind::label));
  // The scanner is more patient than the parsers: what it takes for a name may still end one there.
  constexpr std::string_view kSigns = "^+-[]{}()\";:,.|\\% \t\r\n";
  if (!is_sound || name.find_first_of(is_attribute ? "[]{}()\";:,.|\\%\t\r\n " : kSigns) != std::string_view::npos ||
      std::string_view("^+-").find(name.front()) != std::string_view::npos) {
    return "\"" + text + "\" cannot be a name: it would be read as something else";
  }
  if (is_attribute && (name.front() == '>' || name.front() == '<')) {
    return "\"" + text + "\" is the mark of a relation: choose a name without > or <";
  }
  if (is_attribute && name.front() == '#') return "\"" + text + "\" is the mark of a copy: choose a name without #";
  if (is_built_in_name(name)) return "\"" + text + "\" is a name that Lexon gives itself";
  if (!is_attribute && name.size() > most) {
    return "\"" + text + "\" is too long: " + std::to_string(most) + " characters of this label count";
  }
  return {};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
