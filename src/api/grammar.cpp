// Loading a grammar: the dictionaries are opened, the rules compiled in memory; what is wrong becomes messages.
#include "api/inside.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

#include "api/messages.hpp"

namespace lexon {
inline namespace v1 {

namespace {

// ---- rules

// The rule step, in memory.
// Nothing here is owned; all of it outlives the step. `file` is empty for rules from a text, and `unsaved` may be: then
// every file counts as it stands on the disk.
struct RuleStep {
  Session& session;
  core::Grammar& grammar;
  std::vector<Message>& messages;
  const std::string& file;
  SourceMap& source;
  std::string& expansion;
  const TextLookup& unsaved;
};

// The rest of the step, behind parsing or reading the rules.
bool finish(RuleStep& step, core::Status status) {
  // A run goes on without a rule and fails every sentence; here a grammar is told to be of no use before the first.
  if (status == core::Status::ok && step.grammar.rules == nullptr) {
    error_append(step.messages, step.file, "there is no rule");
    return false;
  }
  if (status == core::Status::ok) {
    status = rule_matrix_build(step.session, step.grammar.index, step.grammar.rules);
    if (status != core::Status::ok) error_append(step.messages, step.file, kNoRoomForRules);
  }
  return status == core::Status::ok;
}

// Refused rules are messages and no failure; a last line that is refused fails the whole text.
bool parse(RuleStep& step, TextSource source) {
  RuleNotes notes;
  const core::Status status = parse_rule_file(step.session, step.grammar.pool, source, step.grammar.rules, &notes);
  rule_notes_append(step.messages, step.file, notes, step.source);
  if (source.has_failed()) error_append(step.messages, step.file, "the rules cannot be read to their end");
  return finish(step, status);
}

// The matrix is built of the rules that are read; a file of it beside them is left alone.
bool load_compiled(RuleStep& step, std::FILE* stream) {
  std::string fault;
  const core::Status status = rule_list_read(step.session, step.grammar.pool, step.grammar.rules, stream, &fault);
  if (status == core::Status::memory) error_append(step.messages, step.file, kNoRoomForRules);
  if (!fault.empty()) fault_append(step.messages, step.file, fault);
  return finish(step, status);
}

// Nothing is written, as of compiled rules.
bool load_source(RuleStep& step, ExpandedFile&& source) {
  source_messages_append(step.messages, source.expansion.messages);
  if (source.expansion.has_errors()) return false;
  step.source = std::move(source.expansion.map);
  step.expansion = std::move(source.expansion.text);
  // The expansion stays with the grammar: the map leads from its lines to those of the source.
  std::string_view text = step.expansion;
  return parse(step, text);
}

// In this order: what is a grammar source, whatever its extension says; then what an editor has not saved; then the
// file.
bool load_rules(RuleStep& step) {
  if (ExpandedFile source = expand_beside(step.file, Expanding::in_memory, step.unsaved); source.is_source)
    return load_source(step, std::move(source));
  const std::string extension = path_split(step.file).extension;
  if (extension == ".mtx") {
    error_append(step.messages, step.file,
                 "this is the index of compiled rules: name the rule text or the \".rul\" file");
    return false;
  }
  if (const std::string* unsaved = step.unsaved ? step.unsaved(step.file) : nullptr; unsaved != nullptr) {
    std::string_view text = *unsaved;
    return parse(step, text);
  }
  errno = 0;
  const File stream(file_open(step.file, "rb"));
  if (stream == nullptr) {
    error_append(step.messages, step.file, std::string("the rules cannot be opened: ") + std::strerror(errno));
    return false;
  }
  return extension == ".rul" ? load_compiled(step, stream.get()) : parse(step, stream.get());
}

// ---- all of it

// Without slots for concept words no graph finds a word. A damaged pair is told and can be used.
bool open_words(Dictionary& words, const std::string& path, std::vector<Message>& messages) {
  const bool is_open = dictionary_open(path, PairCheck::quick, words);
  if (!words.fault.empty()) fault_append(messages, path, words.fault);
  if (!is_open || words.slots[kKeyCw] != nullptr) return is_open;
  error_append(messages, path, "it has no index of concept words: make it with \"lexon-dict build\"");
  return false;
}

// As in a run, the kind of index names that the dictionary opened last has is that of both.
// True also for a dictionary that is kept: it was open when it was loaded.
bool open_cooccurrence(LoadedGrammar& grammar, const std::string& path, unsigned kept) {
  Dictionary& pairs = grammar.cooccurrence;
  const bool is_open = (kept & Inside::cooccurrence) != 0 || dictionary_open(path, PairCheck::quick, pairs);
  if (!pairs.fault.empty()) fault_append(grammar.messages, path, pairs.fault);
  if (is_open && pairs.name_size != grammar.words.name_size && grammar.words.name_size != 0) {
    error_append(grammar.messages, path,
                 "the name of its index is of another kind than that of the dictionary, so that looking words up there "
                 "fails or finds nothing: build one of the two again under a name of the other's kind");
    if ((kept & Inside::words) == 0) grammar.words.name_size = pairs.name_size;
    grammar.has_mixed_names = true;
  }
  return is_open;
}

// What of the grammar was there before is not made again.
template <typename LoadRules>
void load_all(LoadedGrammar& grammar, const GrammarFiles& files, const std::string& rule_file,
              const TextLookup& unsaved, LoadRules load_rules_of, unsigned kept = Inside::none) {
  // Everything is tried even when something has failed: who loads a grammar sees all that is wrong with it at once.
  bool is_usable = (kept & Inside::words) != 0 || open_words(grammar.words, files.dictionary, grammar.messages);
  if (!files.cooccurrence.empty()) is_usable = open_cooccurrence(grammar, files.cooccurrence, kept) && is_usable;
  if ((kept & Inside::rules) != 0) {
    grammar.is_usable = is_usable;
    return;
  }
  // The rules have all blocks for themselves while they are loaded; a sentence gets what they leave.
  grammar.rules.pool.limit_blocks(std::clamp(files.blocks, 1, kMostBlocks));
  const auto session = std::make_unique<Session>();
  RuleStep step{*session, grammar.rules, grammar.messages, rule_file, grammar.source, grammar.expansion, unsaved};
  grammar.is_usable = load_rules_of(step) && is_usable;
  grammar.printed = session->output.take();
}

}  // namespace

LoadedGrammar::LoadedGrammar(const GrammarParts& kept)
    : parts{kept.rules != nullptr ? kept.rules : std::make_shared<core::Grammar>(),
            kept.words != nullptr ? kept.words : std::make_shared<Dictionary>(),
            kept.cooccurrence != nullptr ? kept.cooccurrence : std::make_shared<Dictionary>()} {}

Grammar::Grammar() noexcept = default;

Grammar Grammar::load(const GrammarFiles& files) {
  return Inside::load(files, {});
}

Grammar Inside::load(const GrammarFiles& files, const TextLookup& unsaved) {
  const auto body = std::make_shared<Grammar::Body>();
  load_all(*body, files, files.rules, unsaved, load_rules);
  Grammar grammar;
  grammar.body_ = body;
  return grammar;
}

// Messages about the text name no file.
Grammar Grammar::from_text(std::string_view rules, const GrammarFiles& files) {
  const auto body = std::make_shared<Body>();
  load_all(*body, files, {}, {}, [&rules](RuleStep& step) { return parse(step, rules); });
  Grammar grammar;
  grammar.body_ = body;
  return grammar;
}

Grammar Inside::load_changed(const GrammarFiles& files, const std::string_view* text, const Grammar& before,
                             unsigned kept) {
  // Words that took on the kind of the other dictionary are not as their file has them.
  const LoadedGrammar& old = *before.body_;
  if (old.has_mixed_names) kept &= ~unsigned{words | cooccurrence};
  GrammarParts parts;
  if ((kept & words) != 0) parts.words = old.parts.words;
  if ((kept & cooccurrence) != 0) parts.cooccurrence = old.parts.cooccurrence;
  if ((kept & rules) != 0) parts.rules = old.parts.rules;
  const auto body = std::make_shared<Grammar::Body>(std::move(parts));
  if ((kept & rules) != 0) {
    body->source = old.source;
    body->expansion = old.expansion;
    body->printed = old.printed;
  }
  if (text == nullptr) {
    load_all(*body, files, files.rules, {}, load_rules, kept);
  } else {
    load_all(
        *body, files, {}, {},
        [text](RuleStep& step) {
          std::string_view rest = *text;
          return parse(step, rest);
        },
        kept);
  }
  // The second time nothing of the words is kept, so that it ends there.
  // Only words of its own may take on the names of the other kind: others render with those that are kept.
  if (body->has_mixed_names && (kept & words) != 0) return load_changed(files, text, before, kept & ~unsigned{words});
  Grammar grammar;
  grammar.body_ = body;
  return grammar;
}

const LoadedGrammar* Inside::loaded(const Grammar& grammar) {
  return grammar.body_.get();
}

bool Grammar::is_usable() const noexcept {
  return body_ != nullptr && body_->is_usable;
}

namespace {

// For a grammar that was never loaded.
constinit const std::vector<Message> kNoMessages;

}  // namespace

const std::vector<Message>& Grammar::messages() const noexcept {
  return body_ == nullptr ? kNoMessages : body_->messages;
}

// Each dictionary in front of its index; who copies them keeps a pair in one folder.
std::vector<std::string> Grammar::dictionary_files() const {
  std::vector<std::string> files;
  if (body_ == nullptr) return files;
  for (const Dictionary* dictionary : {&body_->words, &body_->cooccurrence}) {
    if (dictionary->index == nullptr) continue;
    files.push_back(dictionary->path);
    files.push_back(dictionary->index_path);
  }
  return files;
}

std::string_view Grammar::expansion() const noexcept {
  return body_ == nullptr ? std::string_view() : body_->expansion;
}

std::string_view Grammar::printed() const noexcept {
  return body_ == nullptr ? std::string_view() : body_->printed;
}

// Those in force: refused rules are not among them.
std::size_t Grammar::rule_count() const noexcept {
  return body_ == nullptr ? 0 : static_cast<std::size_t>(body_->rules.index.matrix.rule_count);
}

std::size_t Grammar::memory_bytes() const noexcept {
  if (body_ == nullptr) return 0;
  const RuleMatrix& matrix = body_->rules.index.matrix;
  // Of rules and matrix: dictionaries stay in their files. Each side has two matrices.
  const auto bytes_of = [](const MatrixSide& side) { return side.pool_size + 2 * std::size_t{side.matrix_size}; };
  return static_cast<std::size_t>(body_->rules.pool.bytes_used()) + bytes_of(matrix.left) + bytes_of(matrix.right);
}

}  // namespace v1
}  // namespace lexon
