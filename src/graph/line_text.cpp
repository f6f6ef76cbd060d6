#include "graph/line_text.hpp"

#include <array>
#include <cstring>

#include "data/chars.hpp"

namespace lexon {

namespace {

constexpr int kCodeBase = 36;
constexpr int kLetterOffset = 55;  // 'A' stands for 10

// Unchecked, wanted: a lower-case letter comes out above 35, and what lies below 'A' can be negative.
int code_value(char c) {
  return is_digit(c) ? c - '0' : static_cast<unsigned char>(c) - kLetterOffset;
}

char code_character(int value) {
  const bool as_digit = value >= 0 && value <= 9;
  return static_cast<char>(as_digit ? '0' + value : value + kLetterOffset);
}

// The text behind the two characters of a number, or behind those of them that are there.
char* behind_code(char* text) {
  return text + strnlen(text, 2);
}

// Ends the text that began at `begin` at `end`, and takes the blanks and tabs in front away.
void cut_at(const char* begin, char* end) {
  *end = '\0';
  while (end > begin && is_blank(end[-1])) *--end = '\0';
}

// The characters that mean something to a scan; most of a line is others. The terminator is one of them.
constexpr std::array<bool, 256> kMarks = [] {
  std::array<bool, 256> marks{};
  for (const char c : {'\0', '\\', '"', '(', ')', ',', ':', '.'}) marks[static_cast<unsigned char>(c)] = true;
  return marks;
}();

char* skip_plain(char* at) {
  while (!kMarks[static_cast<unsigned char>(*at)]) ++at;
  return at;
}

int depth_change(char c) {
  return c == '(' ? 1 : c == ')' ? -1 : 0;
}

// The first `wanted` outside quotes and parentheses, or null. A parenthesis that was never opened counts as well.
// A backslash hides a quote or a backslash, and nothing else.
char* find_outside(char* at, char wanted) {
  int depth = 0;
  bool in_quotes = false;
  for (at = skip_plain(at); *at != '\0'; at = skip_plain(at + 1)) {
    const bool hides_next = *at == '\\' && (at[1] == '"' || at[1] == '\\');
    if (hides_next) {
      ++at;
      continue;
    }
    // Asked before the depth changes: a closer that is sought stands at depth 0 itself.
    if (*at == wanted && depth == 0 && !in_quotes) return at;
    if (*at == '"') in_quotes = !in_quotes;
    if (!in_quotes) depth += depth_change(*at);
  }
  return nullptr;
}

// Cuts the argument at `rest` at its `closer`, and moves `rest` behind that. Null if it has none, or starts wrongly.
char* cut_argument(char*& rest, char closer) {
  char* argument = skip_blanks(rest);
  // An argument begins with a word.
  if (*argument == '(') return nullptr;
  char* end = find_outside(argument, closer);
  if (end == nullptr) return nullptr;
  cut_at(argument, end);
  rest = end + 1;
  return argument;
}

// How far the scan of a word has come.
struct WordScan {
  char* at;
  bool in_quotes;
  int depth = 0;                 // of parentheses outside quotes; below 0 once one was closed that was never opened
  bool has_parentheses = false;  // one has been opened: from then on a dot outside of them ends the word
};

// Does a number or an attribute text begin here? A dot in front of "@" does wherever it stands, in quotes too.
bool ends_word(const WordScan& scan) {
  const bool outside = scan.depth == 0 && !scan.in_quotes;
  if (*scan.at == ':') return outside;
  if (*scan.at != '.') return false;
  return scan.at[1] == '@' || (outside && scan.has_parentheses);
}

// Inside a quotation a backslash hides a double quote only.
bool is_escape(const WordScan& scan) {
  if (*scan.at != '\\') return false;
  return scan.at[1] == '"' || (scan.at[1] == '\\' && !scan.in_quotes);
}

void take_character(WordScan& scan) {
  if (is_escape(scan)) {
    // The backslash goes, and what it has hidden is stepped over below.
    std::memmove(scan.at, scan.at + 1, std::strlen(scan.at));
  } else if (*scan.at == '"') {
    // wanted: a quote that opens in the middle of a word stays as text.
    if (scan.in_quotes) *scan.at = '\0';
    scan.in_quotes = !scan.in_quotes;
  } else if (!scan.in_quotes) {
    scan.depth += depth_change(*scan.at);
    scan.has_parentheses = scan.has_parentheses || *scan.at == '(';
  }
  ++scan.at;
}

}  // namespace

int node_code_read(const char* text) {
  const char first = text[0];
  const char second = first == '\0' ? '\0' : text[1];
  return code_value(first) * kCodeBase + code_value(second);
}

void node_code_write(int number, char (&code)[3]) {
  code[0] = code_character(number / kCodeBase);
  code[1] = code_character(number % kCodeBase);
  code[2] = '\0';
}

int split_relation(char* line, RelationText& text) {
  // A scan, not a grammar: what is wrong inside the parts is the reader's to find.
  text = {};
  text.label = skip_blanks(line);
  char* open = std::strchr(text.label, '(');
  if (open == nullptr) return -1;
  cut_at(text.label, open);
  char* rest = open + 1;
  text.from = cut_argument(rest, ',');
  if (text.from == nullptr) return -1;
  text.to = cut_argument(rest, ')');
  // wanted: the last line of a text needs its line end
  if (text.to == nullptr || *rest == '\0') return -1;
  text.rest = skip_blanks(rest);
  if (*text.rest != '=') return 1;
  // wanted: digits are added up one by one, so "12" gives 3.
  int sum = 0;
  for (const char* at = skip_blanks(text.rest + 1); is_digit(*at); ++at) sum += *at - '0';
  return sum;
}

int label_scope(char* label) {
  char* colon = std::strchr(label, ':');
  if (colon == nullptr) return 0;
  char* digits = skip_blanks(colon + 1);
  const int number = node_code_read(digits);
  const char* behind = behind_code(digits);
  const std::size_t length = std::strlen(behind);
  // What stands behind the number joins the label.
  std::memmove(colon, behind, length + 1);
  cut_at(label, colon + length);
  return number;
}

WordText split_word(char* text) {
  WordText word{};
  word.name = skip_blanks(text);
  word.quoted = *word.name == '"';
  if (word.quoted) ++word.name;
  WordScan scan{word.name, word.quoted};
  for (scan.at = skip_plain(scan.at); *scan.at != '\0' && !ends_word(scan); scan.at = skip_plain(scan.at)) {
    take_character(scan);
  }
  char* end = scan.at;
  // Blanks in front of a closing quote stay: the quote has become a terminator.
  for (char* last = end; last > word.name && last[-1] == ' '; --last) last[-1] = '\0';
  // Behind a number the attributes keep the dot in front of them; without one it is cut off here.
  word.attrs = *end == '.' ? end + 1 : end;
  if (*end == ':') {
    char* digits = skip_blanks(end + 1);
    word.number = node_code_read(digits);
    word.attrs = behind_code(digits);
  }
  *end = '\0';
  return word;
}

}  // namespace lexon
