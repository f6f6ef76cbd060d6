// The C functions over the C++ ones. No exception passes: what finds no memory is null.
#include <exception>
#include <new>

#include <lexon/lexon.h>
#include <lexon/lexon.hpp>

// The handles: each owns one object of the C++ library.
struct lexon_grammar {
  lexon::Grammar grammar;
};
struct lexon_generator {
  lexon::Generator generator;
};
struct lexon_result {
  std::vector<lexon::Sentence> sentences;
};

namespace {

// Null if `make` finds no memory.
template <typename Make>
auto made(Make make) -> decltype(make()) {
  try {
    return make();
  } catch (const std::exception&) {
    return nullptr;
  }
}

// A null path is one that is not given; 0 blocks are those that a run has without a switch.
lexon::GrammarFiles paths_of(const lexon_grammar_files& files) {
  const auto text = [](const char* path) { return std::string(path != nullptr ? path : ""); };
  lexon::GrammarFiles paths{text(files.dictionary), text(files.rules), text(files.cooccurrence)};
  if (files.blocks != 0) paths.blocks = files.blocks;
  return paths;
}

// The texts stay those of the C++ message, which lives as long as its grammar or result.
lexon_message shown(const lexon::Message& message) {
  // The kinds of both languages have the same numbers.
  return {static_cast<lexon_message_kind>(message.kind), message.file.c_str(), message.line, message.column,
          message.text.c_str()};
}

// Beyond the end, and of no handle, all fields are zero.
lexon_message message_at(const std::vector<lexon::Message>* messages, size_t index) {
  return messages != nullptr && index < messages->size() ? shown((*messages)[index]) : lexon_message{};
}

// Null beyond the end, and of no result.
const lexon::Sentence* sentence_at(const lexon_result* result, size_t index) {
  return result != nullptr && index < result->sentences.size() ? &result->sentences[index] : nullptr;
}

}  // namespace

const char* lexon_version(void) {
  return lexon::version();
}

// Null for want of memory alone: a grammar that cannot be used is a handle, and its messages tell why.
lexon_grammar* lexon_grammar_load(const char* dictionary, const char* rules, const char* cooccurrence) {
  const lexon_grammar_files files{dictionary, rules, cooccurrence, nullptr, 0, 0};
  return lexon_grammar_open(&files);
}

// An empty text is a text: rules that are null are not taken for a path.
lexon_grammar* lexon_grammar_from_text(const char* dictionary, const char* rules, size_t size,
                                       const char* cooccurrence) {
  const lexon_grammar_files files{
      dictionary, nullptr, cooccurrence, rules != nullptr ? rules : "", rules != nullptr ? size : 0, 0};
  return lexon_grammar_open(&files);
}

// Text goes before a path of rules where both are given.
lexon_grammar* lexon_grammar_open(const lexon_grammar_files* files) {
  if (files == nullptr) return nullptr;
  return made([files] {
    // Whether there is a text decides, not whether it is empty.
    const lexon::GrammarFiles paths = paths_of(*files);
    return new lexon_grammar{files->rules_text != nullptr
                                 ? lexon::Grammar::from_text({files->rules_text, files->rules_size}, paths)
                                 : lexon::Grammar::load(paths)};
  });
}

// Null is allowed, as in all functions that free.
void lexon_grammar_free(lexon_grammar* grammar) {
  delete grammar;
}

// What asks a null handle has the answer of an empty one: a caller may look at messages and counts without a test.
int lexon_grammar_is_usable(const lexon_grammar* grammar) {
  return grammar != nullptr && grammar->grammar.is_usable() ? 1 : 0;
}

size_t lexon_grammar_rule_count(const lexon_grammar* grammar) {
  return grammar != nullptr ? grammar->grammar.rule_count() : 0;
}

size_t lexon_grammar_message_count(const lexon_grammar* grammar) {
  return grammar != nullptr ? grammar->grammar.messages().size() : 0;
}

lexon_message lexon_grammar_message(const lexon_grammar* grammar, size_t index) {
  return message_at(grammar != nullptr ? &grammar->grammar.messages() : nullptr, index);
}

// The generator shares the grammar, which may be freed before it.
lexon_generator* lexon_generator_new(const lexon_grammar* grammar) {
  if (grammar == nullptr) return nullptr;
  return made([&] { return new lexon_generator{lexon::Generator(grammar->grammar)}; });
}

void lexon_generator_free(lexon_generator* generator) {
  delete generator;
}

// Nothing here keeps two callers of one generator apart; `lexon_generator_stop` alone may come from another thread.
lexon_result* lexon_generator_render(lexon_generator* generator, const char* graphs, size_t size,
                                     const lexon_settings* settings) {
  if (generator == nullptr) return nullptr;
  // Without settings, and where a field of them is 0, all is as a run has it by itself.
  lexon::Settings with;
  if (settings != nullptr) {
    with.trace_level = settings->trace_level;
    with.post_edit = settings->no_post_edit == 0;
    with.time_limit = settings->time_limit;
    with.begins_with_target = settings->begins_with_target != 0;
  }
  const std::string_view text = graphs != nullptr ? std::string_view(graphs, size) : std::string_view();
  return made([&] { return new lexon_result{generator->generator.render(text, with)}; });
}

void lexon_result_free(lexon_result* result) {
  delete result;
}

void lexon_generator_stop(lexon_generator* generator) {
  if (generator != nullptr) generator->generator.stop();
}

size_t lexon_result_count(const lexon_result* result) {
  return result != nullptr ? result->sentences.size() : 0;
}

// The pointers stay valid until the result is freed. The order is that of the fields in the header.
lexon_sentence lexon_result_sentence(const lexon_result* result, size_t index) {
  const lexon::Sentence* sentence = sentence_at(result, index);
  if (sentence == nullptr) return {};
  return {static_cast<lexon_status>(sentence->status),
          sentence->code,
          sentence->text.c_str(),
          sentence->text.size(),
          sentence->label.c_str(),
          sentence->trace.c_str(),
          sentence->trace.size(),
          sentence->messages.size(),
          sentence->steps,
          sentence->memory_bytes,
          sentence->seconds,
          sentence->leaves_target ? 1 : 0};
}

const char* lexon_result_fallback(const lexon_result* result, size_t index) {
  const lexon::Sentence* sentence = sentence_at(result, index);
  return sentence != nullptr ? sentence->fallback.c_str() : "";
}

lexon_message lexon_result_message(const lexon_result* result, size_t sentence, size_t index) {
  const lexon::Sentence* from = sentence_at(result, sentence);
  return message_at(from != nullptr ? &from->messages : nullptr, index);
}
