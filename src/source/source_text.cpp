#include "source/source_text.hpp"

#include <algorithm>
#include <array>
#include <iterator>

#include "data/chars.hpp"

namespace lexon {

namespace {

// Loops and conditions around each other: the reader keeps one `Open` for each, and the expansion calls itself for
// each.
constexpr std::size_t kMostNesting = 100;
// The directives. A line that begins with "%" and another word is a rule whose first piece is a mark.
constexpr std::array<std::string_view, 9> kNames = {"define", "list", "table", "for",    "if",
                                                    "elif",   "else", "end",   "include"};

bool is_directive_name(std::string_view text) {
  return std::find(kNames.begin(), kNames.end(), text) != kNames.end();
}

bool is_name_start(char c) {
  return is_letter(c) || c == '_';
}

bool is_name_character(char c) {
  return is_name_start(c) || is_digit(c);
}

// How many bytes at the head of `text` are a name; 0 if none begins there.
std::size_t name_length(std::string_view text) {
  // A digit cannot begin a name.
  if (text.empty() || !is_name_start(text.front())) return 0;
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_name_character) - text.begin());
}

std::size_t blanks_before(std::string_view text) {
  return std::min(text.find_first_not_of(" \t"), text.size());
}

// The directive that a line is; empty if it is none.
std::string_view directive_of(std::string_view line) {
  line.remove_prefix(blanks_before(line));
  if (!line.starts_with('%')) return {};
  const std::string_view name = line.substr(1, name_length(line.substr(1)));
  return is_directive_name(name) ? name : std::string_view();
}

// A comment of the source alone: it is not copied, while one behind ";" is.
bool is_source_comment(std::string_view line) {
  return line.substr(blanks_before(line)).starts_with("%;");
}

// A directive without its comment.
// `%` is skipped with the sign behind it, so that the second of "%%" begins nothing.
std::string_view without_comment(std::string_view line) {
  for (std::size_t at = 0; (at = line.find('%', at)) != std::string_view::npos; at += 2) {
    if (line.substr(at + 1).starts_with(';')) line = line.substr(0, at);
  }
  while (!line.empty() && is_blank(line.back())) line.remove_suffix(1);
  return line;
}

// Comments of the rules and empty lines go out byte for byte, without a look at marks.
bool is_copied(std::string_view line) {
  line.remove_prefix(blanks_before(line));
  return line.empty() || line.front() == ';';
}

// Text that goes out as it is; nothing of an empty one. `column`: where it stands in its line.
void text_append(SourceLine& pieces, std::string_view text, std::uint32_t line, std::size_t column) {
  if (text.empty()) return;
  pieces.push_back({std::string(text), {}, false, false, false, line, static_cast<std::uint32_t>(column)});
}

// Reads the mark at the head of `text`, its "%" included, into `piece`. Returns its length; 0 and `fault` for none.
// `text` has at least one sign behind the "%", and it is "{" or the first of a name.
std::size_t mark_read(std::string_view text, SourcePiece& piece, std::string& fault) {
  piece.is_mark = true;
  if (text[1] == '{') {
    // Without it there is nothing inside, and the fault is the same.
    const std::size_t end = text.find('}');
    const std::string_view inside = end == std::string_view::npos ? std::string_view() : text.substr(2, end - 2);
    const std::size_t dot = inside.find('.');
    if (!is_source_name(inside.substr(0, dot))) {
      fault = "no name in these braces: write %{NAME}, %{ROW.COLUMN}, or %% for the sign itself";
      return 0;
    }
    piece.is_braced = true;
    piece.text = inside.substr(0, dot);
    if (dot != std::string_view::npos) piece.field = inside.substr(dot + 1);
    return end + 1;
  }
  const std::size_t length = name_length(text.substr(1));
  piece.text = text.substr(1, length);
  // A dot with a name behind it is taken for a column here. Whether the name is a row at all is known only when it has
  // a value: of a text, the expansion puts the dot and the name back.
  const std::string_view behind = text.substr(1 + length);
  const std::size_t field = behind.starts_with('.') ? name_length(behind.substr(1)) : 0;
  if (field != 0) piece.field = behind.substr(1, field);
  return 1 + length + (field != 0 ? 1 + field : 0);
}

// A line that is being read, and the place in it.
// `at` counts in the line as a whole, so that it is the column that a message shows.
struct Words {
  std::string_view text;
  std::size_t at = 0;

  void skip_blanks() { at += blanks_before(text.substr(at)); }
  [[nodiscard]] bool at_end() const { return at == text.size(); }
  [[nodiscard]] std::string_view rest() const { return text.substr(at); }

  // The next word up to a blank, or up to one of `ends`.
  std::string_view take(std::string_view ends = {}) {
    skip_blanks();
    std::size_t length = 0;
    while (length < rest().size() && !is_blank(rest()[length]) && ends.find(rest()[length]) == std::string_view::npos)
      ++length;
    const std::string_view taken = rest().substr(0, length);
    at += length;
    skip_blanks();
    return taken;
  }

  // Takes the next word if it is this one, and else leaves everything as it was.
  bool take_if(std::string_view word) {
    const Words before = *this;
    if (take() == word) return true;
    *this = before;
    return false;
  }

  bool take_sign(char sign) {
    if (!rest().starts_with(sign)) return false;
    ++at;
    skip_blanks();
    return true;
  }
};

// Reads a file line by line. A directive with an %end opens an entry of `open_`, and what follows goes into its body
// until that %end. Faults are noted and the reading goes on, so that one call finds all of them; no text comes of a
// file with faults, so what a faulty node holds does not matter, but that its %end finds it.
class Reader {
 public:
  explicit Reader(SourceText& text) : text_(text), rest_(text.content) {}

  void read() {
    // The byte order mark goes: it would stand in front of the first rule.
    if (rest_.starts_with("\xEF\xBB\xBF")) rest_.remove_prefix(3);
    open_.push_back({nullptr, {}, 0});
    // `take_line_in` may take more lines than the one.
    while (next()) take_line_in();
    close_all();
    text_.body = std::move(root_);
  }

 private:
  // What waits for its %end.
  // The first entry of `open_` stands for the file itself and is never closed.
  struct Open {
    std::vector<SourceNode>* list;  // where the node lies; null for the file itself
    std::string_view directive;
    std::size_t index;  // of the node in the list
  };

  // Makes the next line the current one (`line_`, `end_`, `number_`). False behind the last.
  bool next() {
    if (rest_.empty()) return false;
    ++number_;
    line_ = lexon::take_line(rest_, end_);
    return true;
  }

  void fault(std::size_t column, std::string what) {
    text_.faults.push_back({number_, static_cast<std::uint32_t>(std::min(column, line_.size())), std::move(what)});
  }

  // Nodes are kept by their index, as the list around them grows no more while they are open.
  SourceNode& node_of(const Open& open) { return (*open.list)[open.index]; }

  // Where the next node goes: the way of the innermost loop or condition that was opened last.
  std::vector<SourceNode>& body() {
    // Nothing is open but the file.
    if (open_.size() == 1) return root_;
    return node_of(open_.back()).ways.back().body;
  }

  SourceNode& append(SourceKind kind, std::size_t column) {
    SourceNode& node = body().emplace_back();
    node.kind = kind;
    node.line = number_;
    node.column = static_cast<std::uint32_t>(column);
    return node;
  }

  // The current line, and with a rule those that it goes on in. The order of the questions matters: "%;" is no
  // directive, and a line that is neither comment nor directive is a rule, whatever stands in it.
  void take_line_in() {
    if (is_source_comment(line_)) return;
    if (const std::string_view directive = directive_of(line_); !directive.empty()) return take_directive(directive);
    if (is_copied(line_)) {
      append(SourceKind::plain, 0).plain = {line_.data(), line_.size() + end_.size()};
      return;
    }
    SourceNode& node = append(SourceKind::rule, 0);
    bool is_open = false;
    // `is_open` says whether the line ends with the sign for going on.
    source_line_read(line_, number_, 0, node.text, text_.faults, &is_open);
    while (is_open && next()) is_open = take_continuation(node.text);
    // The end of the last line that the rule stands on: the expansion has it on one.
    node.end = end_;
  }

  // The next line of a rule that goes on. Does it go on behind this one too?
  // Comments may stand between the lines of a rule; they do not end it.
  bool take_continuation(SourceLine& pieces) {
    const std::size_t column = blanks_before(line_);
    if (is_source_comment(line_) || line_.substr(column).starts_with(';')) return true;
    if (!directive_of(line_).empty()) {
      fault(column, "the rule above goes on here, by its %\\: strike that out, or write the rest of the rule first");
      return false;
    }
    bool is_open = false;
    source_line_read(line_.substr(column), number_, static_cast<std::uint32_t>(column), pieces, text_.faults, &is_open);
    return is_open;
  }

  void take_directive(std::string_view name) {
    const std::size_t column = blanks_before(line_);
    Words words{without_comment(line_), column + 1 + name.size()};
    words.skip_blanks();
    if (name == "define") return take_define(words, column);
    if (name == "list") return take_collection(words, column, SourceKind::list);
    if (name == "table") return take_collection(words, column, SourceKind::table);
    if (name == "for") return take_loop(words, column);
    if (name == "if") return take_branch(words, column);
    if (name == "elif" || name == "else") return take_way(words, column, name);
    if (name == "include") return take_include(words, column);
    take_end(column);
  }

  // A variable called "if" could not be written where a line begins: %if would be the directive.
  static std::string name_taken(std::string_view word) {
    return '"' + std::string(word) + "\" is the name of a directive: choose another name";
  }

  // The name that a directive defines, up to a blank or "=". `form`: what the directive looks like, for the message.
  // `name` is filled in any case, as a table without a good name is still read up to its %end.
  bool take_name(Words& words, std::string& name, const char* form) {
    const std::size_t at = words.at;
    const std::string_view word = words.take("=");
    name = word;
    if (!is_source_name(word)) {
      fault(at, std::string("a name is missing here, of letters, digits and _: write ") + form);
      return false;
    }
    if (is_directive_name(word)) {
      fault(at, name_taken(word));
      return false;
    }
    return true;
  }

  void take_define(Words& words, std::size_t column) {
    constexpr const char* kForm = "%define NAME = TEXT";
    std::string name;
    if (!take_name(words, name, kForm)) return;
    if (!words.take_sign('=')) return fault(words.at, std::string("\"=\" is missing here: write ") + kForm);
    SourceNode& node = append(SourceKind::define, column);
    node.name = std::move(name);
    take_text(words, node.text);
  }

  // What is left of the words, with its marks.
  void take_text(const Words& words, SourceLine& pieces) {
    source_line_read(words.rest(), number_, static_cast<std::uint32_t>(words.at), pieces, text_.faults);
  }

  // %list and %table. With "=" the values stand on the line (of a table: the name of its file), without it below, up to
  // the %end. A collection whose name is missing is read and left out.
  void take_collection(Words& words, std::size_t column, SourceKind kind) {
    const bool is_list = kind == SourceKind::list;
    std::string name;
    const bool is_named = take_name(words, name, is_list ? "%list NAME = VALUES" : "%table NAME = \"FILE.tsv\"");
    SourceNode node;
    node.kind = kind;
    node.line = number_;
    node.column = static_cast<std::uint32_t>(column);
    node.name = std::move(name);
    // "=" decides between the two forms; what stands behind the name without it is told as a fault.
    const bool has_sign = words.take_sign('=');
    node.is_block = is_named && !has_sign;
    if (is_named && !has_sign && !words.at_end()) {
      return fault(words.at, is_list
                                 ? "\"=\" is missing here: write %list NAME = VALUES, or the values one a line below"
                                 : "\"=\" is missing here: write %table NAME = \"FILE.tsv\", or the rows below");
    }
    if (node.is_block) {
      take_rows(node);
    } else if (is_list) {
      take_text(words, node.text);
    } else if (is_named && !take_quoted(words, node.text)) {
      return;
    }
    if (is_named) body().push_back(std::move(node));
  }

  // The lines up to the %end.
  // Another directive in between means that the %end was forgotten: it is taken as what it is, and the values end
  // there.
  void take_rows(SourceNode& node) {
    const std::uint32_t begin = number_;
    while (next()) {
      if (directive_of(line_) == "end") {
        check_end(line_, node.kind == SourceKind::list ? "list" : "table");
        return;
      }
      if (is_source_comment(line_) || is_copied(line_)) continue;
      if (const std::string_view other = directive_of(line_); !other.empty()) {
        fault(blanks_before(line_), "a directive within the values of " + node.name + ": write %end above it");
        return take_line_in();
      }
      SourceLine& row = node.rows.emplace_back();
      source_line_read(line_, number_, 0, row, text_.faults);
    }
    // The file is at its end. The message belongs to the line where the values begin.
    number_ = begin;
    fault(0, "the values of " + node.name + " have no end: write %end below the last one");
  }

  // A text in double quotes, to the end of the words.
  bool take_quoted(const Words& words, SourceLine& pieces) {
    const std::string_view rest = words.rest();
    if (rest.size() < 3 || rest.front() != '"' || rest.back() != '"') {
      fault(words.at, "the name of a file is missing here: write it in double quotes");
      return false;
    }
    // The name may hold marks, as in "%lang.tsv".
    source_line_read(rest.substr(1, rest.size() - 2), number_, static_cast<std::uint32_t>(words.at) + 1, pieces,
                     text_.faults);
    return true;
  }

  void take_include(const Words& words, std::size_t column) {
    SourceLine path;
    if (take_quoted(words, path)) append(SourceKind::include, column).text = std::move(path);
  }

  // Adds a loop or condition, whose body is read next. One that is nested too deep ends the reading: `rest_` is
  // emptied, and nothing waits for an %end any more.
  void open(SourceNode&& node, std::string_view directive) {
    // The list stays where it is while the node is open: its own body grows, and not the list around it.
    std::vector<SourceNode>& list = body();
    list.push_back(std::move(node));
    open_.push_back({&list, directive, list.size() - 1});
    if (open_.size() <= kMostNesting) return;
    fault(0, "loops and conditions are nested too deep, with more than 100 around each other");
    rest_ = {};
    open_.resize(1);
  }

  // Values in brackets, or the name of a list.
  // `name` is empty for values in brackets. Their marks get values when the loop is walked.
  bool take_values(Words& words, std::string& name, SourceLine& values) {
    if (words.take_sign('(')) {
      const std::size_t close = words.rest().find(')');
      if (close == std::string_view::npos) {
        fault(words.at, "this list is not closed: write ) behind its last value");
        return false;
      }
      source_line_read(words.rest().substr(0, close), number_, static_cast<std::uint32_t>(words.at), values,
                       text_.faults);
      words.at += close + 1;
      words.skip_blanks();
      return true;
    }
    const std::size_t at = words.at;
    name = words.take();
    if (is_source_name(name)) return true;
    fault(at, "a list is missing here: write the name of a list or table, or values in brackets, (a b c)");
    return false;
  }

  // A loop or condition that cannot be read is opened all the same, for its %end.
  void take_loop(Words& words, std::size_t column) {
    SourceNode node;
    node.kind = SourceKind::loop;
    node.line = number_;
    node.column = static_cast<std::uint32_t>(column);
    node.ways.emplace_back();
    constexpr const char* kForm = "%for NAME in LIST";
    bool is_read = true;
    do {
      std::string name;
      const std::size_t at = words.at;
      const std::string_view word = words.take(",");
      name = word;
      if (!is_source_name(word) || is_directive_name(word)) {
        fault(at, is_directive_name(word) ? name_taken(word)
                                          : std::string("the name of a variable is missing here: write ") + kForm);
        is_read = false;
        break;
      }
      // Several names take a value each, turn by turn.
      node.names.push_back(std::move(name));
    } while (words.take_sign(','));
    if (is_read && !words.take_if("in")) {
      fault(words.at, std::string("\"in\" is missing here: write ") + kForm);
      is_read = false;
    }
    is_read = is_read && take_values(words, node.name, node.text);
    if (is_read && !words.at_end()) fault(words.at, "nothing may stand behind the list of a loop: strike this out");
    open(std::move(node), "for");
  }

  // One comparison: [not] NAME [== | != VALUE, or [not] in LIST]. The name may be written as a mark too. It counts as
  // braced, so that its dot always means a column: `a.b` of a text is an error, not a text with ".b" behind it.
  bool take_test(Words& words, SourceTest& test) {
    test.is_negated = words.take_if("not");
    const std::size_t at = words.at;
    std::string_view word = words.take();
    test.name.line = number_;
    test.name.column = static_cast<std::uint32_t>(at);
    if (word.starts_with('%')) word.remove_prefix(1);
    if (word.starts_with('{') && word.ends_with('}')) word = word.substr(1, word.size() - 2);
    const std::size_t dot = word.find('.');
    test.name.text = word.substr(0, dot);
    if (dot != std::string_view::npos) test.name.field = word.substr(dot + 1);
    test.name.is_mark = test.name.is_braced = true;
    if (!is_source_name(test.name.text)) {
      fault(at, "a condition begins with a name: write NAME, NAME == VALUE, NAME != VALUE or NAME in LIST");
      return false;
    }
    const bool is_different = words.take_if("!=");
    if (is_different || words.take_if("==")) {
      test.kind = SourceTest::Kind::equal;
      // Two negations make none.
      test.is_negated = test.is_negated != is_different;
      return take_compared(words, test.value);
    }
    // "not" behind the name belongs to "in". If none follows, the test was the name alone, and the caller reads on from
    // here.
    const Words before = words;
    const bool is_outside = words.take_if("not");
    if (words.take_if("in")) {
      test.kind = SourceTest::Kind::among;
      test.is_negated = test.is_negated != is_outside;
      return take_values(words, test.list_name, test.value);
    }
    words = before;
    return true;
  }

  // A word, or a text in double quotes.
  bool take_compared(Words& words, SourceLine& value) {
    if (words.at_end()) {
      fault(words.at, "a value is missing here: write a word, or a text in double quotes");
      return false;
    }
    std::size_t at = words.at;
    std::string_view word;
    if (words.rest().front() == '"') {
      const std::size_t end = words.rest().find('"', 1);
      if (end == std::string_view::npos) {
        fault(at, "this text is not closed: write \" behind it");
        return false;
      }
      word = words.rest().substr(1, end - 1);
      ++at;
      words.at += end + 1;
      words.skip_blanks();
    } else {
      word = words.take();
    }
    source_line_read(word, number_, static_cast<std::uint32_t>(at), value, text_.faults);
    return true;
  }

  // The tests of a %if or %elif, to the end of the line.
  void take_tests(Words& words, std::vector<SourceTest>& tests) {
    bool joined_by_or = false;
    while (true) {
      SourceTest test;
      test.joined_by_or = joined_by_or;
      if (!take_test(words, test)) return;
      tests.push_back(std::move(test));
      if (words.at_end()) return;
      // The tests are taken from left to right; which of the two words binds closer is the walk's matter.
      joined_by_or = words.take_if("or");
      if (joined_by_or || words.take_if("and")) continue;
      return fault(words.at, "\"and\" or \"or\" is missing here, or this belongs into double quotes");
    }
  }

  void take_branch(Words& words, std::size_t column) {
    SourceNode node;
    node.kind = SourceKind::branch;
    node.line = number_;
    node.column = static_cast<std::uint32_t>(column);
    take_tests(words, node.ways.emplace_back().tests);
    open(std::move(node), "if");
  }

  // %elif or %else: the next way of the condition around it. Only %else has no tests, which is how a second one is
  // noticed; a %elif that cannot be read looks the same, but then the file has a fault already.
  void take_way(Words& words, std::size_t column, std::string_view name) {
    const bool is_else = name == "else";
    const std::string shown = "%" + std::string(name);
    if (open_.back().directive != "if") return fault(column, shown + " stands in no %if: strike it out");
    SourceNode& node = node_of(open_.back());
    if (node.ways.size() > 1 && node.ways.back().tests.empty()) {
      return fault(column, shown + " stands behind the %else of its %if: put it in front");
    }
    SourceWay& way = node.ways.emplace_back();
    if (!is_else) {
      take_tests(words, way.tests);
    } else if (!words.at_end()) {
      fault(words.at, "nothing may stand behind %else: write %elif for another condition");
    }
  }

  // `line`: the %end; `directive`: what it closes.
  // "%end for" may say what it closes, and must be right then.
  void check_end(std::string_view line, std::string_view directive) {
    Words words{without_comment(line), blanks_before(line) + 4};
    words.skip_blanks();
    const std::size_t at = words.at;
    const std::string_view what = words.take();
    if (what.empty() || what == directive) return;
    fault(at, "this %end closes the %" + std::string(directive) + " above it: write %end " + std::string(directive) +
                  ", or look for the %end that is missing");
  }

  void take_end(std::size_t column) {
    if (open_.size() == 1) return fault(column, "this %end closes nothing: strike it out");
    check_end(line_, open_.back().directive);
    open_.pop_back();
  }

  // What has no %end is told at its own line, the innermost first.
  void close_all() {
    for (; open_.size() > 1; open_.pop_back()) {
      const SourceNode& node = node_of(open_.back());
      text_.faults.push_back({node.line, node.column,
                              "this %" + std::string(open_.back().directive) +
                                  " has no end: write %end behind the last line that belongs to it"});
    }
  }

  // `rest_`, `line_` and `end_` are views of its content, as are the plain lines of the tree.
  SourceText& text_;
  std::string_view rest_;
  std::string_view line_;
  std::string_view end_;
  // The number of the current line, from 1.
  std::uint32_t number_ = 0;
  std::vector<SourceNode> root_;
  std::vector<Open> open_;
};

}  // namespace

bool is_source_name(std::string_view text) {
  return !text.empty() && name_length(text) == text.size();
}

std::span<const std::string_view> directive_names() {
  return kNames;
}

// Blanks are spaces and tabs. In front those two are what `blanks_before` skips; behind, `is_blank` says the same.
std::string_view trimmed(std::string_view text) {
  text.remove_prefix(blanks_before(text));
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view take_line(std::string_view& rest, std::string_view& end) {
  // A "\r" belongs to the end only in front of "\n". The last line may have no end at all.
  const std::size_t feed = rest.find('\n');
  const std::size_t length = feed == std::string_view::npos ? rest.size() : feed;
  const bool has_return = feed != std::string_view::npos && length > 0 && rest[length - 1] == '\r';
  const std::string_view line = rest.substr(0, has_return ? length - 1 : length);
  const std::size_t whole = feed == std::string_view::npos ? rest.size() : feed + 1;
  end = rest.substr(line.size(), whole - line.size());
  rest.remove_prefix(whole);
  return line;
}

bool has_directives(std::string_view content) {
  if (content.starts_with("\xEF\xBB\xBF")) content.remove_prefix(3);
  while (!content.empty()) {
    std::string_view end;
    const std::string_view line = take_line(content, end);
    if (!directive_of(line).empty() || is_source_comment(line)) return true;
  }
  return false;
}

void source_line_read(std::string_view text, std::uint32_t line, std::uint32_t column, SourceLine& pieces,
                      std::vector<SourceFault>& faults, bool* is_open) {
  std::size_t from = 0;
  std::size_t at = 0;
  while ((at = text.find('%', at)) != std::string_view::npos && at + 1 < text.size()) {
    const char behind = text[at + 1];
    if (behind == ';' || behind == '\\') {
      // What stands behind is a comment. Of the blanks in front one is kept where the rule goes on.
      // "%;" ends the text here; behind "%\" the rule goes on in the next line.
      std::string_view before = text.substr(from, at - from);
      const bool goes_on = behind == '\\';
      const std::size_t end = before.find_last_not_of(" \t");
      const std::size_t kept = end == std::string_view::npos ? 0 : end + 1;
      before = before.substr(0, goes_on ? std::min(kept + 1, before.size()) : kept);
      text_append(pieces, before, line, column + from);
      if (is_open != nullptr) *is_open = goes_on;
      return;
    }
    // "%%": the first sign goes out with the text in front of it, the second is passed over.
    if (behind == '%') {
      text_append(pieces, text.substr(from, at + 1 - from), line, column + from);
      from = at += 2;
      continue;
    }
    // Before anything else the sign stands for itself, as in "100%]".
    if (behind != '{' && !is_name_start(behind)) {
      ++at;
      continue;
    }
    text_append(pieces, text.substr(from, at - from), line, column + from);
    SourcePiece piece;
    piece.line = line;
    piece.begins_line = column == 0 && trimmed(text.substr(0, at)).empty();
    piece.column = column + static_cast<std::uint32_t>(at);
    std::string fault;
    const std::size_t length = mark_read(text.substr(at), piece, fault);
    if (length == 0) faults.push_back({line, piece.column, std::move(fault)});
    if (length != 0) pieces.push_back(std::move(piece));
    // Behind a faulty "%{" the reading goes on, for the faults that follow.
    from = at += std::max<std::size_t>(length, 2);
  }
  text_append(pieces, text.substr(std::min(from, text.size())), line, column + from);
}

void source_text_read(SourceText& text) {
  Reader(text).read();
}

}  // namespace lexon
