#include "lab/check_graphs.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <map>

#include "data/chars.hpp"
#include "data/records.hpp"
#include "data/sentence.hpp"
#include "data/text_line.hpp"
#include "graph/line_kind.hpp"
#include "graph/line_text.hpp"
#include "lab/check_rules.hpp"
#include "lab/text_file.hpp"
#include "rules/scanners.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// Longer ones are refused with their line. Rules follow shorter ones still, see `kRelationLabelLimit`.
constexpr std::size_t kLongestLabel = sizeof(Relation::label) - 1;

// One file of graphs, line by line, as the reader of a run goes over it: blocks that are passed over hide lines, what stands
// outside of a sentence is lost, and a sentence that is not closed runs into the next.
class GraphText {
 public:
  GraphText(GraphSurvey& survey, Names& names, std::vector<Finding>& findings, const CheckText& text, std::size_t file)
      : survey_(survey), names_(names), findings_(findings), text_(text), file_(file) {}

  void read() {
    std::string_view rest = text_.text;
    std::array<char, kLineSize> buffer;  // lines come in pieces of this size, as in a run
    while (text_line_read(rest, buffer.data(), kLineSize, &watch_)) {
      line_ = buffer.data();
      if (!passed_block_.empty()) {
        block_line(buffer.data());
        continue;
      }
      graph_line(buffer.data());
      line_ = "";
    }
    if (!passed_block_.empty() || !open_tag_.empty()) {
      report(block_line_, 0, 1, Level::error, "unclosed", "this block is not closed, and hides what stands behind it",
             passed_block_.empty() ? "write {/name} behind it" : "write " + std::string(passed_block_) + "] behind it");
      if (!passed_block_.empty()) findings_.back().fix = {Fix::Kind::text_end, "", std::string(passed_block_) + "]\n"};
    } else if (is_open_) {
      report(open_line_, 0, 1, Level::error, "unclosed", "this sentence is not closed", "write [/S] behind it");
      findings_.back().fix = {Fix::Kind::text_end, "", "[/S]\n"};
      sentence_end();
    }
    // A file that is no graphs at all, or whose sentences all stand in a block that is passed over.
    if (open_line_ == 0) {
      // The form of meaning banks: (w / want-01 :ARG0 (b / boy)).
      const bool is_penman = (text_.text.starts_with('(') || text_.text.find("\n(") != std::string::npos) &&
                             text_.text.find(" / ") != std::string::npos;
      report(0, 0, 0, Level::warning, "no-sentence", "this file holds no sentence",
             is_penman ? "it looks like PENMAN: lexon-import makes graphs of it"
                       : "a sentence begins with a line [S] and ends with a line [/S]");
      findings_.back().column = findings_.back().end_column = 0;
    }
    check_encoding(text_.file, watch_, findings_);
  }

 private:
  // A sentence (number 0) or a scope in it, as far as its lines have been read.
  struct Scope {
    std::int64_t line = 0;  // where it is first met
    std::size_t column = 0;
    bool has_relations = false;
    bool has_entry = false;
    std::string entry_word{};  // the first with @entry, with its number
    std::int64_t entry_line = 0;
    std::int64_t relation_line = 0;  // of its first relation
  };

  // A finding at bytes of a line. The text is known of the line that is being read alone; of others the column is that of
  // their first character.
  void report(std::int64_t line, std::size_t begin, std::size_t end, Level level, const char* code, std::string what,
              std::string remedy) {
    const std::string_view text = line == watch_.line ? std::string_view(line_) : std::string_view();
    if (text.empty()) {
      findings_.push_back({text_.file, line, begin + 1, end + 1, level, code, std::move(what), std::move(remedy)});
    } else {
      findings_.push_back(
          finding_at(text_.file, line, text, begin, end, level, code, std::move(what), std::move(remedy)));
    }
  }

  // A line in a block that is read otherwise: a word block has a word a line, other blocks are passed over.
  void block_line(char* line) {
    if (std::string_view(line).starts_with(passed_block_)) {
      passed_block_ = {};
      return;
    }
    // Of a block of words each line is one word; lines that begin a comment or another block are not.
    if (passed_block_ != kWordBlockEnd || *line == ';' || *line == '[') return;
    line[std::strcspn(line, "\n")] = '\0';
    // `word` cuts the line into pieces, and findings show it whole.
    const std::string as_read(line);
    line_ = as_read.c_str();
    if (*skip_blanks(line) != '\0') word(line, line, 0);
    line_ = "";
  }

  void open_block(std::string_view end) {
    // A block of words opens a sentence by itself, without [S].
    passed_block_ = end;
    block_line_ = watch_.line;
    if (end == kWordBlockEnd) sentence_start();
  }

  void graph_line(char* buffer) {
    char* line = buffer + std::strspn(buffer, " ");
    switch (line_kind(line, open_tag_)) {
      case LineKind::ignored:
      case LineKind::graph_end: break;
      case LineKind::graph_start: sentence_start(); break;
      case LineKind::block_tag:
        block_tag_change(open_tag_, line);
        block_line_ = watch_.line;
        break;
      case LineKind::sentence_end: sentence_end(); break;
      case LineKind::word_block: open_block(kWordBlockEnd); break;
      case LineKind::skipped_block: open_block(kSkippedBlockEnd); break;
      case LineKind::sentence_start:
        // A second [S] in front of the first relation changes nothing.
        if (is_open_ && has_relations_) {
          report(watch_.line, static_cast<std::size_t>(line - buffer), std::strlen(buffer), Level::error,
                 "sentence-in-sentence",
                 "a sentence begins inside that of line " + std::to_string(open_line_) + ", and the two become one",
                 "write [/S] in front of it");
          findings_.back().fix = {Fix::Kind::line_before, "", "[/S]\n"};
        }
        label(line, static_cast<std::size_t>(line - buffer));
        sentence_start();
        break;
      case LineKind::graph_line: relation(buffer); break;
    }
  }

  // Programs ask for sentences by their labels, and expected texts are held against them by these. Sentences without a
  // label are told apart by their numbers.
  void label(const char* line, std::size_t at) {
    const std::string name = label_in(line);
    if (name.find(':') == std::string::npos) return;
    const auto [known, is_new] = labels_.try_emplace(name, watch_.line);
    if (is_new) return;
    report(watch_.line, at, at + name.size() + 2, Level::warning, "label-twice",
           "the sentence of line " + std::to_string(known->second) + " has the label [" + name + "] too",
           "give each sentence a label of its own");
  }

  // A second start inside a sentence leaves the first one in force.
  void sentence_start() {
    if (!is_open_) open_line_ = watch_.line;
    is_open_ = true;
  }

  // Scopes are judged as a whole: their relations can stand in any order.
  void sentence_end() {
    if (is_open_ || has_relations_) {
      for (const auto& [number, scope] : scopes_) check_scope(number, scope);
    }
    scopes_.clear();
    is_open_ = has_relations_ = false;
  }

  // At the end of a sentence: can the scope be reached, and entered? The sentence itself has the number 0.
  void check_scope(int number, const Scope& scope) {
    char code[3];
    node_code_write(number, code);
    if (!scope.has_relations) {
      report(scope.line, scope.column, scope.column + 3, Level::error, "scope-empty",
             std::string("scope ") + code + " stands for a word, and no relation has its number",
             std::string("write label:") + code + "(...) where a relation belongs to the scope");
    } else if (number != 0 && scope.line == 0) {
      report(scope.relation_line, 0, 1, Level::error, "scope-unused",
             std::string("no relation leads to scope ") + code + ", so that nothing of it is said",
             std::string("write :") + code + " where the scope stands for a word");
    } else if (!scope.has_entry) {
      const bool is_sentence = number == 0;
      report(is_sentence && open_line_ != 0 ? open_line_ : scope.relation_line, 0, 1, Level::error,
             is_sentence ? "no-entry" : "scope-entry",
             is_sentence ? "no word of this sentence has @entry: generation begins at the first in alphabetical order"
                         : std::string("no word of scope ") + code + " has @entry, so that it cannot be entered",
             is_sentence ? "write .@entry behind the word that governs all others"
                         : std::string("write .@entry behind one of its words, in a relation with :") + code);
    }
  }

  // Takes a relation apart, which cuts the line into texts; findings show the line as it was read.
  void relation(char* buffer) {
    const std::string as_read(buffer);
    RelationText parts;
    const bool is_relation = split_relation(buffer, parts) > 0;
    line_ = as_read.c_str();
    const std::size_t length = as_read.find_last_not_of("\r\n") + 1;
    if (!is_open_) {
      // Outside of sentences any text may stand; this is about what looks like a relation.
      const bool is_meant = is_relation && *parts.label != '\0' && std::strpbrk(parts.label, " \t[") == nullptr &&
                            *parts.from != '\0' && *parts.to != '\0';
      if (is_meant) {
        report(watch_.line, 0, length, Level::error, "stray-relation", "this relation stands outside of any sentence",
               "write [S] in front of it");
        findings_.back().fix = {Fix::Kind::line_before, "", "[S]\n"};
      }
      return;
    }
    const auto offset = [buffer](const char* part) { return static_cast<std::size_t>(part - buffer); };
    const auto bad = [&](const char* what, const char* remedy) {
      report(watch_.line, 0, length, Level::error, "graph-syntax", what, remedy);
    };
    if (!is_relation) return bad("this line is no relation and is left out", "write label(from, to)");
    if (*parts.label == '\0' || *parts.label == ':') return bad("the relation has no label", "write label(from, to)");
    if (*parts.from == '\0' || *parts.from == '.')
      return bad("the relation leads from no word", "write label(from, to)");
    if (*parts.to == '\0' || *parts.to == '.') return bad("the relation leads to no word", "write label(from, to)");
    const std::size_t label_at = offset(parts.label);
    if (const char* colon = std::strchr(parts.label, ':'); colon != nullptr && !has_scope_code(colon)) {
      bad("the number of a scope has two characters, and what follows here is read as one",
          "write a digit and another digit or letter behind the colon, as in label:01(from, to)");
    }
    // Takes the number off the label, which is a name of its own from here on. 0 without a number.
    const int number = label_scope(parts.label) & 0xFF;
    const std::string_view label(parts.label);
    // A run leaves out the whole line, so its words are not counted either.
    if (label.size() > kLongestLabel) {
      return report(watch_.line, label_at, label_at + label.size(), Level::error, "label-cut",
                    "the label " + std::string(label) + " has more than five characters, and the line is left out",
                    "use a label of up to three characters");
    }
    use(survey_.labels, label, label_at, label_at + label.size());
    Scope& scope = scopes_[number];
    if (scope.relation_line == 0) scope.relation_line = watch_.line;
    scope.has_relations = has_relations_ = true;
    word(buffer, parts.from, number);
    word(buffer, parts.to, number);
  }

  // Does a colon stand in front of two characters that can be a number, and of no third?
  static bool has_scope_code(const char* colon) {
    const char* code = colon + 1 + std::strspn(colon + 1, " \t");
    std::size_t length = 0;
    while (std::isalnum(static_cast<unsigned char>(code[length])) != 0) ++length;
    return length == 2;
  }

  // A word of a relation of this scope, or of a word block. Cuts `text`, which lies in `buffer`.
  void word(const char* buffer, char* text, int scope) {
    const auto offset = [buffer](const char* part) { return static_cast<std::size_t>(part - buffer); };
    // The parts lie in `buffer`; name, attributes and number each end at a NUL of their own.
    const WordText parts = split_word(text);
    const std::string_view name(parts.name);
    const std::size_t at = offset(parts.name);
    // A number without a name stands for a scope; with one it tells two nodes of a word apart.
    if (name.empty() && parts.number > 0) {
      Scope& inner = scopes_[parts.number];
      // The first place where the scope stands for a word is shown if nothing belongs to it.
      if (inner.line == 0) {
        inner.line = watch_.line;
        inner.column = at;
      }
    } else if (!name.empty()) {
      use(parts.quoted ? survey_.quoted : survey_.words, name, at, at + name.size());
    }
    // Words of one name with other numbers are other nodes.
    Scope& own = scopes_[scope];
    // Two nodes of one name must not share their @entry.
    const std::string who = std::string(name) + (parts.number > 0 ? ':' + std::to_string(parts.number) : "");
    for (const char* attr = parts.attrs; *attr != '\0';) {
      attr += std::strspn(attr, ". ");
      const std::size_t size = std::strcspn(attr, ". ");
      if (size == 0) break;
      const std::string_view attribute(attr, size);
      if (attribute == "@entry") entry(own, who, offset(attr));
      use(survey_.attributes, attribute, offset(attr), offset(attr) + size);
      attr += size;
    }
    own.has_relations = true;
    has_relations_ = true;
    if (own.relation_line == 0) own.relation_line = watch_.line;
  }

  // A word has its @entry as often as it is named; another word with one is most likely a slip.
  void entry(Scope& scope, const std::string& who, std::size_t at) {
    if (scope.has_entry && scope.entry_word != who) {
      report(watch_.line, at, at + std::strlen("@entry"), Level::warning, "second-entry",
             "a second word with @entry: " + scope.entry_word + " in line " + std::to_string(scope.entry_line) +
                 " has it too, and one of them is passed over",
             "leave it with the word that governs all others");
      return;
    }
    if (!scope.has_entry) scope.entry_line = watch_.line;
    scope.has_entry = true;
    scope.entry_word = who;
  }

  // Counts a name, and keeps the place where it stands first.
  void use(std::unordered_map<NameId, GraphSurvey::Use>& uses, std::string_view name, std::size_t begin,
           std::size_t end) {
    // Only the first place is kept: a name may stand in millions of lines.
    GraphSurvey::Use& found = uses[names_.enter(name)];
    if (found.count++ != 0) return;
    const Finding place = finding_at({}, watch_.line, line_, begin, end, Level::note, "", {}, {});
    found = {1, file_, watch_.line, place.column, place.end_column};
  }

  GraphSurvey& survey_;
  Names& names_;
  std::vector<Finding>& findings_;
  const CheckText& text_;
  std::size_t file_;
  TextWatch watch_;
  const char* line_ = "";          // as read
  BlockTag open_tag_;              // of a block {name} ... {/name}, whose lines are passed over
  std::string_view passed_block_;  // what ends it; empty if none is open
  std::int64_t block_line_ = 0;
  bool is_open_ = false;                                  // a sentence has begun
  bool has_relations_ = false;                            // and holds some
  std::int64_t open_line_ = 0;                            // of its begin; 0: none has begun so far
  std::map<int, Scope> scopes_;                           // 0: the sentence itself
  std::unordered_map<std::string, std::int64_t> labels_;  // of sentences so far, with their lines
};

}  // namespace

GraphSurvey survey_graphs(const CheckInput& input, Names& names, std::vector<Finding>& findings) {
  GraphSurvey survey;
  survey.is_there = !input.graphs.empty();
  for (std::size_t i = 0; i < input.graphs.size(); ++i) {
    GraphText(survey, names, findings, input.graphs[i], i).read();
  }
  return survey;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
