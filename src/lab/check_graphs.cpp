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
#include "rules/scanners.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::size_t kLongestLabel = sizeof(Relation::label) - 1;

// One file of graphs, line by line, as the reader of a run goes over it.
class GraphText {
 public:
  GraphText(GraphSurvey& survey, Names& names, std::vector<Finding>& findings, const CheckText& text, std::size_t file)
      : survey_(survey), names_(names), findings_(findings), text_(text), file_(file) {}

  void read() {
    std::string_view rest = text_.text;
    std::array<char, kLineSize> buffer;
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
    if (open_line_ == 0) {
      report(0, 0, 0, Level::warning, "no-sentence", "this file holds no sentence",
             "a sentence begins with a line [S] and ends with a line [/S]");
      findings_.back().column = findings_.back().end_column = 0;
    }
    check_encoding(text_.file, watch_, findings_);
  }

 private:
  struct Scope {
    std::int64_t line = 0;  // where it is first met
    std::size_t column = 0;
    bool has_relations = false;
    bool has_entry = false;
    std::int64_t relation_line = 0;
  };

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

  void block_line(char* line) {
    if (std::string_view(line).starts_with(passed_block_)) {
      passed_block_ = {};
      return;
    }
    if (passed_block_ != kWordBlockEnd || *line == ';' || *line == '[') return;
    line[std::strcspn(line, "\n")] = '\0';
    const std::string as_read(line);
    line_ = as_read.c_str();
    if (*skip_blanks(line) != '\0') word(line, line, 0);
    line_ = "";
  }

  void open_block(std::string_view end) {
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
        if (is_open_ && has_relations_) {
          report(watch_.line, static_cast<std::size_t>(line - buffer), std::strlen(buffer), Level::error,
                 "sentence-in-sentence",
                 "a sentence begins inside that of line " + std::to_string(open_line_) + ", and the two become one",
                 "write [/S] in front of it");
          findings_.back().fix = {Fix::Kind::line_before, "", "[/S]\n"};
        }
        sentence_start();
        break;
      case LineKind::graph_line: relation(buffer); break;
    }
  }

  void sentence_start() {
    if (!is_open_) open_line_ = watch_.line;
    is_open_ = true;
  }

  void sentence_end() {
    if (is_open_ || has_relations_) {
      for (const auto& [number, scope] : scopes_) check_scope(number, scope);
    }
    scopes_.clear();
    is_open_ = has_relations_ = false;
  }

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

  void relation(char* buffer) {
    const std::string as_read(buffer);
    RelationText parts;
    const bool is_relation = split_relation(buffer, parts) > 0;
    line_ = as_read.c_str();
    const std::size_t length = as_read.find_last_not_of("\r\n") + 1;
    if (!is_open_) {
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
    const int number = label_scope(parts.label) & 0xFF;
    const std::string_view label(parts.label);
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

  void word(const char* buffer, char* text, int scope) {
    const auto offset = [buffer](const char* part) { return static_cast<std::size_t>(part - buffer); };
    const WordText parts = split_word(text);
    const std::string_view name(parts.name);
    const std::size_t at = offset(parts.name);
    if (name.empty() && parts.number > 0) {
      Scope& inner = scopes_[parts.number];
      if (inner.line == 0) {
        inner.line = watch_.line;
        inner.column = at;
      }
    } else if (!name.empty()) {
      use(parts.quoted ? survey_.quoted : survey_.words, name, at, at + name.size());
    }
    bool has_entry = false;
    for (const char* attr = parts.attrs; *attr != '\0';) {
      attr += std::strspn(attr, ". ");
      const std::size_t size = std::strcspn(attr, ". ");
      if (size == 0) break;
      const std::string_view attribute(attr, size);
      has_entry = has_entry || attribute == "@entry";
      use(survey_.attributes, attribute, offset(attr), offset(attr) + size);
      attr += size;
    }
    Scope& own = scopes_[scope];
    own.has_entry = own.has_entry || has_entry;
    own.has_relations = true;
    has_relations_ = true;
    if (own.relation_line == 0) own.relation_line = watch_.line;
  }

  void use(std::unordered_map<NameId, GraphSurvey::Use>& uses, std::string_view name, std::size_t begin,
           std::size_t end) {
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
  const char* line_ = "";  // as read
  BlockTag open_tag_;
  std::string_view passed_block_;  // what ends it; empty if none is open
  std::int64_t block_line_ = 0;
  bool is_open_ = false;
  bool has_relations_ = false;
  std::int64_t open_line_ = 0;
  std::map<int, Scope> scopes_;  // 0: the sentence itself
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
