// What a language server knows of a project: its texts, who gives and asks for names, what checks and runs have shown.
// Nothing here knows of the protocol.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "lab/check_project.hpp"
#include "lab/coverage.hpp"
#include "lab/lsp_document.hpp"
#include "lab/lsp_tokens.hpp"
#include "lab/project_files.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// A text of a project.
struct TextFile {
  std::string path;  // as the project names it, not a `file_key`
  TextKind kind;
  std::string uri;  // as the editor names it
};

// How often names stand in a text.
struct NameCounts {
  std::unordered_map<std::string, std::int64_t> attributes;
  std::unordered_map<std::string, std::int64_t> labels;
  std::unordered_map<std::string, std::int64_t> marks;
};

// The texts of files, open or not, read again when they have changed. For one thread.
class TextStore {
 public:
  // Null if it cannot be read.
  [[nodiscard]] std::shared_ptr<const LinedText> text(const std::string& path);
  // An editor has it open under this URI, which may lead over links, and says what it holds.
  void open(const std::string& path, const std::string& uri, std::string text);
  void close(const std::string& path);
  [[nodiscard]] bool is_open(const std::string& path) const { return open_.contains(file_key(path)); }
  // The one that the editor has for it, else one of its own.
  [[nodiscard]] std::string uri(const std::string& path) const;
  [[nodiscard]] const Overlay& unsaved() const { return unsaved_; }
  // Of a text that is known already, what has changed is counted alone. Valid until the next call for the file.
  [[nodiscard]] const NameCounts& names(const TextFile& file);

 private:
  // Names as they were counted last, in this text as one of this kind.
  struct CountedText {
    std::shared_ptr<const LinedText> text;
    TextKind kind = TextKind::rules;
    NameCounts counts;
  };
  // A file that no editor has open, as it was read.
  struct Known {
    TextMark mark;
    std::shared_ptr<const LinedText> text;  // null: it could not be read
  };
  struct Open {
    std::shared_ptr<const LinedText> text;
    std::string uri;
  };
  Overlay unsaved_;
  std::map<std::string, Open> open_;  // by `file_key`
  std::map<std::string, Known> known_;
  std::map<std::string, CountedText> counted_;  // by path
};

// Which entries of the dictionaries have an attribute.
struct EntryAttribute {
  std::int64_t entries = 0;
  std::string first;  // the form of one of them
};
using EntryAttributes = std::unordered_map<std::string, EntryAttribute>;

// What a look at the whole project has shown. Read-only once it is made, and shared by threads.
struct Analysis {
  std::vector<Finding> findings;
  std::vector<std::shared_ptr<const WordIndex>> words;
  std::shared_ptr<const EntryAttributes> attributes;  // of `words`; never null
  Expansion expansion;                                // of a source
  std::vector<std::string> sources;                   // the files of a source, itself the first; else empty
  std::unordered_map<std::string, RuleCount> counts;  // of the last run, by rule text in its canonical form
  std::int64_t counted_sentences = -1;                // -1: there are no counts
};

// Makes them, and keeps what has not changed. For one thread at a time.
class Analyst {
 public:
  [[nodiscard]] std::shared_ptr<const Analysis> look_at(const ProjectFiles& files, const Overlay& unsaved);

 private:
  CheckCache cache_;
  std::vector<std::shared_ptr<const WordIndex>> words_;  // at the last look
  std::shared_ptr<const EntryAttributes> attributes_;    // of these
};

// A place where a name stands.
struct NameUse {
  const TextFile* file;  // of the model
  std::shared_ptr<const LinedText> text;
  std::size_t line;  // from 0
  TokenPart part;    // what of the token is the name
  Token token;
};

// A project as one request sees it: made for the request, and gone with it. The store must outlive it.
class Model {
 public:
  Model(TextStore& store, ProjectFiles files, std::shared_ptr<const Analysis> analysis);

  [[nodiscard]] const ProjectFiles& files() const { return files_; }
  // The texts of the project that names stand in; dictionaries that are built already are left out.
  [[nodiscard]] const std::vector<TextFile>& texts() const { return texts_; }
  [[nodiscard]] const TextFile* text_file(const std::string& path) const;

  // The token that stands there or ends there; null: none. Where two meet, the one behind.
  [[nodiscard]] bool token_at(const TextFile& file, const TextPosition& position, Token& token) const;
  [[nodiscard]] Symbol symbol_at(const TextFile& file, const TextPosition& position, TokenPart& part) const;
  // The rule, mark, label or attribute that a value of a source stands for is known from its other uses.
  [[nodiscard]] Symbol settled(Symbol symbol, const Token& token) const;

  // Calls `use` for each place, file by file, till it returns false.
  void for_each_use(const Symbol& symbol, const std::function<bool(const NameUse&)>& use) const;
  [[nodiscard]] std::vector<NameUse> uses(const Symbol& symbol) const;

  // All names of the project of this kind with how often they stand in texts and entries.
  [[nodiscard]] std::map<std::string, std::int64_t> names(Symbol::Kind kind) const;
  // Words that begin so: forms or concept words.
  [[nodiscard]] std::vector<std::string> words_like(std::string_view prefix, bool are_concepts, std::size_t most) const;

  // What is told of a name, or of a rule, as Markdown; empty: nothing.
  [[nodiscard]] std::string name_text(const Symbol& symbol) const;
  [[nodiscard]] std::string rule_text(const TextFile& file, std::size_t line) const;
  [[nodiscard]] std::vector<NameUse> definitions(const Symbol& symbol) const;

  // Why the name cannot be changed to this one; empty: it can. `to` may be empty: is it one that can be renamed at all?
  [[nodiscard]] std::string rename_fault(const Symbol& symbol, const std::string* to) const;

 private:
  [[nodiscard]] std::string place_name(const NameUse& use) const;
  void append_words(const std::string& word, bool are_concepts, std::string& out) const;
  [[nodiscard]] std::string made_by_marks(const Symbol& symbol) const;

  TextStore& store_;
  ProjectFiles files_;
  std::shared_ptr<const Analysis> analysis_;  // null until the first look is done
  std::vector<TextFile> texts_;
  std::vector<std::string> built_;  // dictionaries that are no text
};

// The rules of a text in their canonical form.
[[nodiscard]] std::vector<std::string> canonical_rules(std::string_view text);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
