// Line by line: metadata belong to the graph that follows; a graph is parsed as soon as its last parenthesis is there.
// In a UMR file the document level that follows a graph still belongs to it, so a graph is handed on when the next
// one's metadata begin.
//
//   # ::id lpp.3 ::date 2012                     metadata: pairs of a key and a value
//   # ::snt The boy wants to go.                 the reference; runs to the end of the line
//   (w / want-01 :ARG0 (b / boy) :ARG1 (g / go-02 :ARG0 b) :quant 3 :value "3")
//
// UMR writes blocks instead: "# :: snt3", "Words: ...", "# sentence level graph:", the graph, "# alignment:", and
// "# document level annotation:" with a list of triples.
//
// A mistake in a graph is told with its place, what has been read is kept, and reading goes on at the next role.
#include "import/penman.hpp"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>

namespace lexon {
namespace {

bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

// The lines of one graph with the number of the first. They are kept until the last parenthesis is there, as the parser
// looks at a graph as a whole: a variable may stand in front of its definition.
struct Lines {
  std::vector<std::string> text;
  int first = 0;  // counts from 1
};

// One sign or word of a graph. A role keeps its colon, a text has lost its quotes and escapes; signs have no text. `end`
// comes again and again, so that nobody needs to ask twice whether there is more.
struct Token {
  enum class Kind { open, close, slash, role, text, symbol, end } kind = Kind::end;
  std::string text;
  SourcePlace place;
};

// Cuts the lines of a graph into tokens, with one in view. A "#" at the beginning of a word makes the rest of its line a
// comment.
class Tokens {
 public:
  explicit Tokens(const Lines& lines) : lines_(lines) { next(); }

  const Token& head() const { return head_; }

  Token take() {
    Token taken = std::move(head_);
    next();
    return taken;
  }

 private:
  const Lines& lines_;
  std::size_t line_ = 0;  // both are those of the first sign behind the token in view
  std::size_t at_ = 0;
  Token head_;

  SourcePlace place() const { return {lines_.first + static_cast<int>(line_), static_cast<int>(at_) + 1}; }

  void next() {
    head_ = {};
    while (line_ < lines_.text.size()) {
      const std::string& line = lines_.text[line_];
      while (at_ < line.size() && is_blank(line[at_])) ++at_;
      if (at_ < line.size() && line[at_] != '#') return cut(line);
      ++line_;
      at_ = 0;
    }
    // The end: what is missing is missed on the last line.
    head_.place = {lines_.first + static_cast<int>(lines_.text.size()) - 1, 1};
  }

  // A word ends at a blank, a parenthesis or a quote, but not at "/": dates and addresses have it inside, and between a
  // variable and its concept it has blanks around it.
  void cut(const std::string& line) {
    head_.place = place();
    const char c = line[at_];
    if (c == '(' || c == ')' || c == '/') {
      head_.kind = c == '(' ? Token::Kind::open : c == ')' ? Token::Kind::close : Token::Kind::slash;
      ++at_;
      return;
    }
    if (c == '"') return cut_text(line);
    const std::size_t begin = at_;
    while (at_ < line.size() && !is_blank(line[at_]) && line[at_] != '(' && line[at_] != ')' && line[at_] != '"') ++at_;
    head_.kind = c == ':' ? Token::Kind::role : Token::Kind::symbol;
    head_.text = line.substr(begin, at_ - begin);
    // An alignment, `~e.3` or `~3,4`, says where the word stands in the reference; no graph needs it. Other tildes belong to
    // the word: an address has them.
    const std::size_t tilde = head_.text.rfind('~');
    if (tilde == std::string::npos || tilde == 0 || tilde + 1 == head_.text.size()) return;
    if (head_.text.find_first_not_of("0123456789e.,", tilde + 1) == std::string::npos) head_.text.resize(tilde);
  }

  // A text ends with its line at the latest: one quote too few costs a line and not the file.
  void cut_text(const std::string& line) {
    head_.kind = Token::Kind::text;
    for (++at_; at_ < line.size() && line[at_] != '"'; ++at_) {
      if (line[at_] == '\\' && at_ + 1 < line.size()) ++at_;
      head_.text += line[at_];
    }
    if (at_ < line.size()) ++at_;
    // An alignment may stick to the closing quote; anything else is a word of its own.
    if (at_ == line.size() || line[at_] != '~') return;
    while (at_ < line.size() && !is_blank(line[at_]) && line[at_] != ')' && line[at_] != '(') ++at_;
  }
};

// The name of a concept and the number of its frame: `want-01` is want and 01. Two digits make a frame, or three:
// covid-19 is one by mistake, which no reader can know.
void split_sense(Concept& word, const std::string& text) {
  const std::size_t dash = text.rfind('-');
  const bool has_sense = dash != std::string::npos && dash > 0 && dash + 3 <= text.size() && text.size() <= dash + 4 &&
                         std::all_of(text.begin() + static_cast<std::ptrdiff_t>(dash) + 1, text.end(), is_digit);
  // An annotator who finds no sense in the frame files writes -XX or -00; the verb is mostly used in its first one.
  const bool has_none = text.size() > 3 && (text.ends_with("-XX") || text.ends_with("-00"));
  if (has_none) {
    word.name = text.substr(0, text.size() - 3);
    word.sense = "01";
    attribute_add(word, "@v");
    return;
  }
  word.name = has_sense ? text.substr(0, dash) : text;
  word.sense = has_sense ? text.substr(dash + 1) : "";
  if (has_sense) attribute_add(word, "@v");
}

// A role as it is written, cut into its name and its direction. A few names end in "-of" by themselves.
void split_role(Arc& arc, std::string_view role) {
  role.remove_prefix(1);
  const bool is_whole = role == "consist-of" || role == "prep-out-of" || role == "prep-on-behalf-of";
  arc.inverse = !is_whole && role.size() > 3 && role.ends_with("-of");
  if (arc.inverse) role.remove_suffix(3);
  arc.role = role;
  // mod and domain are one role, read from its two ends.
  if (arc.inverse && arc.role == "mod") arc.role = "domain", arc.inverse = false;
  if (arc.inverse && arc.role == "domain") arc.role = "mod", arc.inverse = false;
}

// Builds the meaning of one graph. It walks without recursion, so that no nesting of a source fills the stack. Whatever is
// wrong, what has been read stays: a sentence with a word less is worth more to the user than none, and the message says
// what is missing.
class GraphParser {
 public:
  GraphParser(const Lines& lines, Meaning& meaning, std::vector<SourceError>& errors)
      : tokens_(lines), meaning_(meaning), errors_(errors) {}

  void parse() {
    // As many as most sentences have, so that few are moved in memory.
    meaning_.triples.reserve(32);
    meaning_.concepts.reserve(24);
    meaning_.arcs.reserve(24);
    meaning_.place = tokens_.head().place;
    if (tokens_.head().kind != Token::Kind::open) return error(tokens_.head().place, "a graph begins with \"(\"");
    tokens_.take();
    meaning_.root = concept_begin(-1);
    bool is_readable = true;
    while (is_readable && !open_.empty() && tokens_.head().kind != Token::Kind::end) is_readable = step();
    // A graph that was given up for its size has been told of.
    if (!open_.empty() && is_readable) {
      error(tokens_.head().place, "the graph has " + std::to_string(open_.size()) +
                                      " parentheses that are not closed; it is read as far as it goes");
    }
    resolve();
  }

 private:
  // A target that is a bare symbol: whether it is a variable is known at the end of the graph, as a variable may be used
  // in front of its definition.
  struct Pending {
    int arc;
    std::string symbol;
  };

  Tokens tokens_;
  Meaning& meaning_;
  std::vector<SourceError>& errors_;
  std::vector<int> open_;  // the concepts whose parentheses are open, the outermost first
  std::vector<Pending> pending_;
  std::unordered_map<std::string, int> variables_;  // the first definition of each

  void error(SourcePlace place, std::string text) { errors_.push_back({place, std::move(text)}); }

  // Every triple of the source goes on the list as it is read, before anybody knows what becomes of it.
  int triple_add(SourcePlace place, std::string source, std::string role, std::string target) {
    meaning_.triples.push_back({place, std::move(source), std::move(role), std::move(target)});
    return static_cast<int>(meaning_.triples.size()) - 1;
  }

  int concept_add(Concept word) {
    meaning_.concepts.push_back(std::move(word));
    return static_cast<int>(meaning_.concepts.size()) - 1;
  }

  // Behind an opening parenthesis: `variable / concept`. `arc` is the one that leads here, -1 for the root. In all three
  // cases a concept is opened, as the closing parenthesis will close one.
  int concept_begin(int arc) {
    Concept word;
    const SourcePlace place = tokens_.head().place;
    if (tokens_.head().kind == Token::Kind::symbol) {
      word.variable = tokens_.take().text;
    } else {
      error(place, "a variable is missing behind \"(\"");
      word.variable = "_" + std::to_string(meaning_.concepts.size());
    }
    if (tokens_.head().kind == Token::Kind::slash) tokens_.take();
    const bool has_concept = tokens_.head().kind == Token::Kind::symbol || tokens_.head().kind == Token::Kind::text;
    if (has_concept) {
      const Token name = tokens_.take();
      word.is_text = name.kind == Token::Kind::text;
      split_sense(word, name.text);
      word.triple = triple_add(name.place, word.variable, ":instance", name.text);
    } else if (const auto known = variables_.find(word.variable); known != variables_.end()) {
      open_.push_back(known->second);  // `(x)` alone: a further mention
      if (arc >= 0) lead(arc, known->second);
      return known->second;
    } else {
      error(place, "the variable " + word.variable + " has no concept; write \"(" + word.variable + " / concept\"");
      word.name = "thing";
      word.triple = triple_add(place, word.variable, ":instance", "");
    }
    const std::string variable = word.variable;
    const int at = concept_add(std::move(word));
    // The concept stays, so that no triple is lost; other mentions mean the first.
    if (!variables_.emplace(variable, at).second) {
      error(place, "the variable " + variable + " is defined twice; the second one is read as another concept");
    }
    if (arc >= 0) lead(arc, at);
    open_.push_back(at);
    return at;
  }

  // The arc leads to a concept that has a variable, and its triple names that.
  void lead(int arc, int at) {
    Arc& led = meaning_.arcs[static_cast<std::size_t>(arc)];
    led.to.read(at);
    meaning_.triples[static_cast<std::size_t>(led.triple)].target = variable_of(at);
  }

  // One role with its target, or a closing parenthesis. False: the graph cannot be read on.
  bool step() {
    const Token token = tokens_.take();
    if (token.kind == Token::Kind::close) {
      open_.pop_back();
      return true;
    }
    if (token.kind != Token::Kind::role) {
      const bool is_open = token.kind == Token::Kind::open;
      const std::string what = is_open ? "(" : token.kind == Token::Kind::slash ? "/" : token.text;
      error(token.place,
            "a role or \")\" is missing in front of \"" + what + '"' + (is_open ? "; it is left out" : ""));
      if (is_open) skip_parenthesis(token.place);
      return true;
    }
    if (meaning_.triples.size() + 2 >= kMaxTriples || open_.size() >= kMaxDepth) {
      error(token.place, "the graph has more than " + std::to_string(kMaxTriples) + " triples or " +
                             std::to_string(kMaxDepth) + " concepts in one another; the rest of it is left out");
      return false;
    }
    target(token);
    return true;
  }

  // Behind an opening parenthesis that no role leads to: up to its closing one, which would close the concept above else.
  void skip_parenthesis(SourcePlace place) {
    const int lost = triple_add(place, variable_of(open_.back()), ":", tokens_.head().text);
    settle(meaning_, lost, Fate::left_out, "source: no role leads to the concept");
    for (int depth = 1; depth > 0 && tokens_.head().kind != Token::Kind::end;) {
      const Token::Kind kind = tokens_.take().kind;
      depth += kind == Token::Kind::open ? 1 : kind == Token::Kind::close ? -1 : 0;
    }
  }

  // Behind a role: a concept in parentheses, a text, or a symbol, which waits for the end of the graph. A role without
  // target keeps its triple, as left out.
  void target(const Token& role) {
    const Token::Kind kind = tokens_.head().kind;
    if (kind == Token::Kind::role || kind == Token::Kind::close || kind == Token::Kind::end || role.text.size() < 2) {
      error(role.place, "the role " + role.text + " has no target; it is left out");
      const int lost = triple_add(role.place, variable_of(open_.back()), role.text, "");
      settle(meaning_, lost, Fate::left_out, "source: the role has no target");
      return;
    }
    Arc arc;
    arc.from.read(open_.back());
    split_role(arc, role.text);
    const Token head = tokens_.take();
    arc.triple = triple_add(role.place, variable_of(arc.from), role.text, head.text);
    meaning_.arcs.push_back(arc);
    const int at = static_cast<int>(meaning_.arcs.size()) - 1;
    if (kind == Token::Kind::open) {
      concept_begin(at);
    } else if (kind == Token::Kind::text) {
      constant(at, head.text, true);
    } else {
      pending_.push_back({at, head.text});
    }
  }

  std::string variable_of(int word) const { return meaning_.concepts[static_cast<std::size_t>(word)].variable; }

  // A constant is a concept without variable, one for each place where it is written.
  void constant(int arc, const std::string& text, bool is_text) {
    Concept word;
    word.name = text;
    word.is_text = is_text;
    meaning_.arcs[static_cast<std::size_t>(arc)].to.read(concept_add(std::move(word)));
  }

  // A symbol is a further mention of a concept if it is a variable of this graph, and a constant otherwise.
  void resolve() {
    for (const Pending& pending : pending_) {
      const auto known = variables_.find(pending.symbol);
      if (known == variables_.end()) {
        constant(pending.arc, pending.symbol, false);
      } else {
        meaning_.arcs[static_cast<std::size_t>(pending.arc)].to.read(known->second);
      }
    }
    pending_.clear();
    // No word is said of itself, and steps that turn arcs round would lose what else is said of it.
    for (Arc& arc : meaning_.arcs) {
      if (arc.from != arc.to) continue;
      arc.gone = true;
      settle(meaning_, arc.triple, Fate::left_out, "source: a word stands below itself");
    }
  }
};

// ---- the document level of UMR -------------------------------------------------------------------------------------

// (parent :relation child) inside `:temporal (...)`: the child lies before, after or at the time of the parent. What is
// before the time of the document is past, what is after it future; what is tied to such a word without being after it
// is of its time. A chain is followed in the order of the file alone: a parent that comes later gives nothing.
void document_level(const std::string& text, Meaning& meaning) {
  const std::size_t section = text.find(":temporal");
  if (section == std::string::npos) return;
  std::map<std::string, std::string> tense{{"document-creation-time", "@pres"}};
  std::size_t at = text.find('(', section);
  int depth = 0;
  std::string triple;
  for (; at != std::string::npos && at < text.size(); ++at) {
    const char c = text[at];
    if (c == '(') {
      ++depth;
      triple.clear();
    } else if (c == ')') {
      char parent[64] = "";
      char relation[32] = "";
      char child[64] = "";
      if (std::sscanf(triple.c_str(), " %63s :%31s %63s", parent, relation, child) == 3) {
        const auto known = tense.find(parent);
        const std::string when = relation;
        if (known != tense.end() && known->second == "@pres") {
          tense.emplace(child, when == "before" ? "@past" : when == "after" ? "@fut" : "@pres");
        } else if (known != tense.end() && when != "after") {
          tense.emplace(child, known->second);
        }
      }
      triple.clear();
      if (--depth <= 0) break;
    } else if (depth > 0) {
      triple += c;
    }
  }
  for (Concept& word : meaning.concepts) {
    if (const auto known = tense.find(word.variable); known != tense.end() && !word.variable.empty()) {
      attribute_add(word, known->second);
    }
  }
}

// ---- the file ------------------------------------------------------------------------------------------------------

// A graph that is never closed ends here, so that no source fills the memory.
constexpr std::size_t kMaxLines = 20000;
// So do errors between graphs, in a file that is none of graphs, and a document level without an end.
constexpr std::size_t kMaxErrors = 1000;
constexpr std::size_t kMaxDocument = 4000000;

// Sorts the lines of a file into metadata, graphs and document levels, and hands each graph on when it is whole.
class FileReader {
 public:
  FileReader(const std::string& name, const MeaningSink& sink) : name_(name), sink_(sink) {}

  void line(std::string text, int number) {
    if (!text.empty() && text.back() == '\r') text.pop_back();
    const std::string_view bare = trimmed(text);
    if (depth_ > 0 && (begins_another(text, bare) || lines_.text.size() == kMaxLines)) graph_end();
    if (depth_ > 0) return graph_line(text);
    if (bare.starts_with('#')) return metadata(bare);
    if (bare.starts_with("Words:")) {
      next_.text = trimmed(bare.substr(6));
      return;
    }
    if (section_ == Section::document) {
      document_line(text, number);
    } else if (section_ == Section::graph && bare.starts_with('(')) {
      if (!is_umr_) hand_on();
      lines_ = {{}, number};
      graph_line(text);
    } else if (section_ == Section::graph && !bare.empty() && !is_umr_) {
      errors_.push_back({{number, 1}, "neither a comment nor a graph: \"" + std::string(bare.substr(0, 40)) + '"'});
      if (errors_.size() == kMaxErrors) hand_on();
    }
  }

  void end() {
    if (depth_ > 0) graph_end();
    hand_on();
  }

 private:
  enum class Section { graph, document, other };

  std::string name_;  // labels begin with it where the file gives none
  const MeaningSink& sink_;
  Section section_ = Section::graph;  // of UMR; an AMR file is all graph
  bool is_umr_ = false;
  int count_ = 0;  // graphs so far, for labels
  int depth_ = 0;  // open parentheses; 0 between graphs
  Lines lines_;
  Meaning next_;                     // the metadata of the graph to come
  std::optional<Meaning> ready_;     // a graph that waits for its document level
  std::string document_;             // the lines of the document level of that graph
  std::vector<SourceError> errors_;  // since the last graph was handed on

  // A line that cannot belong to the graph that is open: its closing parentheses are missing.
  static bool begins_another(const std::string& text, std::string_view bare) {
    return text.starts_with('(') || (bare.starts_with("#") && bare.find("::") != std::string_view::npos) ||
           bare.starts_with("####") || bare.starts_with("# alignment") || bare.starts_with("# document");
  }

  void document_line(const std::string& text, int number) {
    if (document_.size() >= kMaxDocument) return;
    document_ += text + '\n';
    if (document_.size() < kMaxDocument) return;
    errors_.push_back({{number, 1},
                       "the document level has more than " + std::to_string(kMaxDocument) +
                           " characters; the rest of it is left out"});
  }

  // Counts parentheses only: the parser looks at the rest. A text ends with its line at the latest, for both.
  void graph_line(const std::string& text) {
    lines_.text.push_back(text);
    std::optional<std::size_t> quote;  // of the text that is open
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (quote && text[i] == '\\') {
        ++i;
        continue;
      }
      if (text[i] == '"') quote = quote ? std::nullopt : std::optional(i);
      if (quote) continue;
      if (text[i] == '#' && (i == 0 || is_blank(text[i - 1]))) break;
      if (text[i] == '(') ++depth_;
      if (text[i] == ')' && --depth_ == 0) {
        graph_end();
        return rest_tell(std::string_view(text).substr(i + 1), static_cast<int>(i) + 2);
      }
    }
    if (quote) {
      errors_.push_back({{lines_.first + static_cast<int>(lines_.text.size()) - 1, static_cast<int>(*quote) + 1},
                         "the text is not closed; it ends with its line"});
    }
  }

  // A comment may stand behind a graph. Anything else is one parenthesis too many, or another graph.
  void rest_tell(std::string_view rest, int column) {
    const std::string_view bare = trimmed(rest);
    if (bare.empty() || bare.front() == '#') return;
    column += static_cast<int>(bare.data() - rest.data());
    errors_.push_back({{lines_.first + static_cast<int>(lines_.text.size()) - 1, column},
                       "the graph ends in front of \"" + std::string(bare.substr(0, 40)) +
                           "\", which is left out; a graph begins on a line of its own"});
  }

  // The graph waits in `ready_`: of UMR the document level comes behind it. An AMR graph is handed on when the next one or
  // the end comes, which is one graph of memory and no delay that anybody sees.
  void graph_end() {
    hand_on();
    depth_ = 0;
    Meaning meaning = std::move(next_);
    next_ = {};
    ++count_;
    if (meaning.label.empty()) meaning.label = name_ + "." + std::to_string(count_);
    GraphParser(lines_, meaning, errors_).parse();
    ready_ = std::move(meaning);
    if (is_umr_) section_ = Section::other;
  }

  // Errors without a graph are handed on, too: a line between two graphs may be a graph that lost its parenthesis.
  void hand_on() {
    if (ready_ && !document_.empty()) document_level(document_, *ready_);
    document_.clear();
    if (ready_) {
      sink_(*ready_, errors_);
    } else if (!errors_.empty()) {
      Meaning none;
      sink_(none, errors_);
    }
    ready_.reset();
    errors_.clear();
  }

  // UMR's heads of sections, or the pairs of AMR. "# :: snt3" begins a sentence and makes the file one of UMR for good.
  void metadata(std::string_view bare) {
    if (bare.starts_with("# :: snt")) {
      hand_on();
      is_umr_ = true;
      section_ = Section::other;
      std::string_view label = trimmed(bare.substr(5));
      label = label.substr(0, label.find_first_of(" \t"));
      next_ = {};
      next_.label = name_ + "." + std::string(label);
    } else if (bare.starts_with("# sentence level graph")) {
      section_ = Section::graph;
    } else if (bare.starts_with("# alignment")) {
      section_ = Section::other;
    } else if (bare.starts_with("# document level")) {
      section_ = Section::document;
    } else {
      pairs(bare);
    }
  }

  // `# ::id lpp.3 ::date 2012`: the keys that are asked for. Where there is no `::snt`, `::tok` is the reference, which is
  // the sentence with blanks between its tokens.
  void pairs(std::string_view bare) {
    for (std::size_t at = bare.find("::"); at != std::string_view::npos;) {
      const std::size_t gap = bare.find_first_of(" \t", at);
      if (gap == std::string_view::npos) return;
      const std::string_view key = bare.substr(at + 2, gap - at - 2);
      std::size_t next = bare.find(" ::", gap);
      const bool runs_to_the_end = key == "snt" || key == "tok";
      if (runs_to_the_end) next = std::string_view::npos;
      const std::string value(trimmed(bare.substr(gap, next == std::string_view::npos ? next : next - gap)));
      if (key == "id") {
        if (!is_umr_) hand_on();
        next_.label = value;
      } else if (key == "snt" || (key == "tok" && next_.text.empty())) {
        next_.text = value;
      }
      at = next == std::string_view::npos ? next : next + 1;
    }
  }
};

}  // namespace

void penman_read(std::istream& in, const std::string& name, const MeaningSink& sink) {
  FileReader reader(name, sink);
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (number == 1 && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    reader.line(std::move(line), number);
  }
  reader.end();
}

}  // namespace lexon
