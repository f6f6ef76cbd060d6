// Loading a grammar: the dictionaries are opened, the rules compiled in memory; what is wrong becomes messages.
#include "api/grammar_body.hpp"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

#include "api/rule_messages.hpp"

namespace lexon {
inline namespace v1 {

namespace {

void add_error(std::vector<Message>& messages, const std::string& file, std::string text) {
  messages.push_back({MessageKind::error, file, 0, 0, std::move(text)});
}

std::string with_reason(const char* what, int error) {
  return error == 0 ? std::string(what) : std::string(what) + ": " + std::strerror(error);
}

std::FILE* stream_open(const std::string& path, const char* what, std::vector<Message>& messages) {
  errno = 0;
  std::FILE* stream = file_open(path, "rb");
  if (stream == nullptr) add_error(messages, path, with_reason(what, errno));
  return stream;
}

void stream_close(std::FILE* stream) {
  if (stream != nullptr) static_cast<void>(std::fclose(stream));
}

constexpr int kWordKeys[] = {kKeyHw, kKeyCw};
constexpr int kCooccurrenceKeys[] = {kKeyHw, kKeyGloss, kKeyCw, kKeyId, kKeyExtra1, kKeyExtra2};

// ---- rules

// The rule step in memory: its session, and what the parser has printed.
struct RuleStep {
  Session& session;
  core::Grammar& grammar;
  std::vector<Message>& messages;
  const std::string& file;
};

void keep_printed(RuleStep& step) {
  rule_messages_append(step.session.output.take(), step.file, step.messages);
}

bool finish(RuleStep& step, core::Status status) {
  keep_printed(step);
  if (status == core::Status::ok && step.grammar.rules == nullptr) {
    add_error(step.messages, step.file, "there is no rule");
    return false;
  }
  if (status == core::Status::ok) {
    status = rule_matrix_build(step.session, step.grammar.index, step.grammar.rules, NameSort::in_memory);
    keep_printed(step);
  }
  if (status == core::Status::memory) add_error(step.messages, step.file, "no room for the rules");
  return status == core::Status::ok;
}

bool parse(RuleStep& step, TextSource source) {
  const core::Status status = parse_rule_file(step.session, step.grammar.pool, source, step.grammar.rules);
  const bool succeeded = finish(step, status);
  if (!succeeded && status != core::Status::ok && status != core::Status::memory) {
    add_error(step.messages, step.file,
              "no rule is in force, as the last line is refused: mend it, or end the text with an empty line");
  }
  return succeeded;
}

bool load_compiled(RuleStep& step, std::FILE* stream) {
  return finish(step, rule_list_read(step.session, step.grammar.pool, step.grammar.rules, stream));
}

bool load_rules(RuleStep& step) {
  const std::string extension = path_split(step.file).extension;
  if (extension == ".mtx") {
    add_error(step.messages, step.file, "this is the index of compiled rules: name the rule text or the \".rul\" file");
    return false;
  }
  std::FILE* stream = stream_open(step.file, "the rules cannot be opened", step.messages);
  if (stream == nullptr) return false;
  const bool loaded = extension == ".rul" ? load_compiled(step, stream) : parse(step, stream);
  stream_close(stream);
  return loaded;
}

// ---- all of it

template <typename LoadRules>
void load_all(LoadedGrammar& grammar, const GrammarFiles& files, const std::string& rule_file,
              LoadRules load_rules_of) {
  std::vector<Message>& messages = grammar.messages;
  bool is_usable = grammar.words.open(files.dictionary, OpenDictionary::Use::words, messages);
  if (!files.cooccurrence.empty()) {
    is_usable = grammar.cooccurrence.open(files.cooccurrence, OpenDictionary::Use::cooccurrence, messages) && is_usable;
  }
  const auto session = std::make_unique<Session>();
  RuleStep step{*session, grammar.rules, messages, rule_file};
  grammar.is_usable = load_rules_of(step) && is_usable;
}

}  // namespace

OpenDictionary::~OpenDictionary() {
  stream_close(dictionary_);
  stream_close(index_);
  for (IndexDescriptor* slot : slots_) std::free(slot);
}

bool OpenDictionary::open(const std::string& path, Use use, std::vector<Message>& messages) {
  path_ = path;
  const bool is_words = use == Use::words;
  dictionary_ = stream_open(
      path, is_words ? "the dictionary cannot be opened" : "the co-occurrence dictionary cannot be opened", messages);
  if (dictionary_ == nullptr) return false;
  const int* keys = is_words ? kWordKeys : kCooccurrenceKeys;
  const std::size_t count = is_words ? std::size(kWordKeys) : std::size(kCooccurrenceKeys);
  for (std::size_t i = 0; i < count; ++i) {
    if (index_slot_read(dictionary_, keys[i], slots_.data()) != core::Status::ok) throw std::bad_alloc();
  }
  if (is_words && slots_[kKeyCw] == nullptr) {
    add_error(messages, path,
              "this is no dictionary with an index of concept words: make it with \"lexon-dict build\"");
    return false;
  }
  errno = 0;
  index_ = index_open(path_split(path).folder.c_str(), slots_.data(), kKeyHw, true);
  if (index_ != nullptr) return true;
  add_error(messages, path, with_reason("the index beside the dictionary cannot be opened", errno));
  return false;
}

DictionaryFiles OpenDictionary::files() const {
  if (index_ == nullptr) return {};
  return {dictionary_, index_, const_cast<IndexDescriptor**>(slots_.data())};
}

std::string OpenDictionary::name_of(const std::FILE* stream) const {
  if (stream == nullptr) return {};
  if (stream == dictionary_) return path_;
  return stream == index_ ? "the index of " + path_ : std::string();
}

Grammar::Grammar() noexcept = default;

Grammar Grammar::load(const GrammarFiles& files) {
  const auto body = std::make_shared<Body>();
  load_all(*body, files, files.rules, load_rules);
  Grammar grammar;
  grammar.body_ = body;
  return grammar;
}

Grammar Grammar::from_text(std::string_view rules, const GrammarFiles& files) {
  const auto body = std::make_shared<Body>();
  load_all(*body, files, {}, [&rules](RuleStep& step) { return parse(step, rules); });
  Grammar grammar;
  grammar.body_ = body;
  return grammar;
}

bool Grammar::is_usable() const noexcept {
  return body_ != nullptr && body_->is_usable;
}

namespace {

constinit const std::vector<Message> kNoMessages;

}  // namespace

const std::vector<Message>& Grammar::messages() const noexcept {
  return body_ == nullptr ? kNoMessages : body_->messages;
}

std::size_t Grammar::rule_count() const noexcept {
  return body_ == nullptr ? 0 : static_cast<std::size_t>(body_->rules.index.matrix.rule_count);
}

std::size_t Grammar::memory_bytes() const noexcept {
  if (body_ == nullptr) return 0;
  const RuleMatrix& matrix = body_->rules.index.matrix;
  const auto bytes_of = [](const MatrixSide& side) { return side.pool_size + 2 * std::size_t{side.matrix_size}; };
  return static_cast<std::size_t>(body_->rules.pool.bytes_used()) + bytes_of(matrix.left) + bytes_of(matrix.right);
}

}  // namespace v1
}  // namespace lexon
