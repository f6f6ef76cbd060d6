// Whole runs in one input: settings, entries, rules, graphs and co-occurrence entries, between lines "%%". Each
// sentence may take a step limit of processor time. The settings are letters: 0 to 4 the trace level, P no post-edit,
// and with a number behind them M the request for memory that is refused, C and K the size that the word dictionary
// and the co-occurrence dictionary are cut to once they are open.
//
// Unless memory is refused, the run is made twice: from the rule text, and from the compiled files at another trace
// level. The sentences have to be the same.
#include <algorithm>

#include "data/chars.hpp"
#include "data/pool.hpp"
#include "rule_text.hpp"
#include "rules/compiled.hpp"
#include "rules/matrix.hpp"
#include "run/render.hpp"
#include "support.hpp"
#include "support/grammar.hpp"

namespace {

using lexon::test::grammar;
using lexon::test::index_build;
using lexon::test::session;

using namespace lexon;

enum Section : std::size_t { settings, entries, rules, graphs, pairs, kSections };
using Sections = std::vector<std::string_view>;

constexpr int kMostSentences = 8;
constexpr int kMilliseconds = 30;

// What the rule step leaves for a later run.
struct Compiled {
  std::string rules;
  std::string matrix;
};

struct Dictionaries {
  fuzz::Dictionary words{"words"};
  fuzz::Dictionary pairs{"pairs"};
};

// What a run works with.
struct Run {
  DictionaryFiles words{};
  DictionaryFiles pairs{};
  std::FILE* input = nullptr;
  Rule* rules = nullptr;
  bool post_edit = true;
  AllocationFault fault{0, false};
};

// The number that `text` begins with, which is taken off.
std::int64_t number_take(std::string_view& text) {
  constexpr std::int64_t kMost = 1000000;
  std::int64_t number = 0;
  for (; !text.empty() && is_digit(text.front()); text.remove_prefix(1)) {
    number = std::min(number * 10 + (text.front() - '0'), kMost);
  }
  return number;
}

void settings_apply(std::string_view text, Dictionaries& dictionaries, Run& run) {
  while (!text.empty()) {
    const char c = text.front();
    text.remove_prefix(1);
    if (c >= '0' && c <= '4') session.state.trace_level = static_cast<std::int8_t>(c - '0');
    if (c == 'P') run.post_edit = false;
    if (c == 'M') run.fault.countdown = number_take(text);
    if (c == 'C') dictionaries.words.cut(number_take(text));
    if (c == 'K' && run.pairs.dictionary != nullptr) dictionaries.pairs.cut(number_take(text));
  }
}

void dictionaries_open(const Sections& input, Dictionaries& dictionaries, Run& run) {
  dictionaries.words.use(input[entries]);
  run.words = dictionaries.words.files();
  if (input[pairs].empty()) return;
  dictionaries.pairs.use(input[pairs]);
  run.pairs = dictionaries.pairs.files();
}

// What becomes of the sentences of a run, what it says about them, and whether any ran into the limit.
struct Said {
  std::vector<std::string> sentences;  // the status and the text of each
  std::string output;
  bool is_cut = false;
};

// False at the end of the input.
bool sentence_render(const Run& run, Said& said) {
  const fuzz::StepLimit limit(kMilliseconds);
  std::array<char, kSentenceSize> text{};
  lookups_attend(session, run.words, run.pairs);
  const Status status = render_sentence(session, run.words, run.input, text.data(), run.pairs, run.post_edit);
  session.pool.release_all();
  fuzz::require(session.pool.blocks() == 0, "a sentence gives back what it took");
  said.sentences.push_back(std::to_string(code(status)) + " " + (status == Status::ok ? text.data() : ""));
  said.is_cut = fuzz::StepLimit::is_over();
  return status != Status::end_of_input;
}

Said sentences_render(const Run& run) {
  const fuzz::Output output;
  Said said;
  for (int i = 0; i < kMostSentences && !said.is_cut; ++i) {
    if (!sentence_render(run, said)) break;
  }
  said.output = output.text();
  return said;
}

// The text without its time figures.
std::string without_times(std::string_view text) {
  std::string kept;
  for (std::size_t end = 0; !text.empty(); text.remove_prefix(end)) {
    end = std::min(text.find('\n'), text.size() - 1) + 1;
    if (!text.starts_with(";;Time ")) kept += text.substr(0, end);
  }
  return kept;
}

// The rule step: from the text, or from what an earlier one has compiled. Without a sound result there are no rules.
void rules_convert(std::string_view text, Run& run, Compiled& compiled) {
  const fuzz::ParsedRules parsed = fuzz::rules_parsed(text);
  if (parsed.status != Status::ok || index_build(parsed.rules) != Status::ok) return;
  run.rules = parsed.rules;
  compiled.rules = fuzz::rules_compiled(parsed.rules);
  const fuzz::Sink matrix;
  fuzz::require(rule_matrix_save(session, grammar.index, matrix.get()) == Status::ok, "a matrix can be saved");
  compiled.matrix = matrix.text();
}

void rules_load(const Compiled& compiled, Run& run) {
  const fuzz::Source rule_file(compiled.rules);
  fuzz::require(rule_list_read(session, grammar.pool, run.rules, rule_file.get()) == Status::ok,
                "compiled rules can be read");
  const fuzz::Source matrix_file(compiled.matrix);
  fuzz::require(rule_matrix_load(session, grammar.index, matrix_file.get(), run.rules) == Status::ok,
                "a saved matrix can be loaded");
  session_use(session, grammar);
}

template <typename RuleStep>
Said run_with(const Sections& input, Dictionaries& dictionaries, bool other_level, RuleStep rule_step) {
  fuzz::fresh_start();
  Run run;
  dictionaries_open(input, dictionaries, run);
  const fuzz::Source document(input[graphs]);
  run.input = document.get();
  rule_step(run);
  settings_apply(input[settings], dictionaries, run);
  session.pool.set_fault(&run.fault);
  if (other_level && session.state.trace_level > 0)
    session.state.trace_level = static_cast<std::int8_t>(5 - session.state.trace_level);
  return run.rules == nullptr ? Said{} : sentences_render(run);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Dictionaries dictionaries;
  const Sections input = fuzz::sections_of(fuzz::bytes_of(data, size), kSections);
  Compiled compiled;
  const Said first =
      run_with(input, dictionaries, false, [&](Run& run) { rules_convert(input[rules], run, compiled); });
  const bool is_traced = session.state.trace_level > 0;
  const bool is_refused = input[settings].find('M') != std::string_view::npos;
  if (first.is_cut || is_refused || compiled.rules.empty()) return 0;
  const Said second = run_with(input, dictionaries, true, [&](Run& run) { rules_load(compiled, run); });
  if (second.is_cut) return 0;
  fuzz::require(first.sentences == second.sentences, "compiled rules, and any trace, do as the text does");
  const bool says_same = is_traced || without_times(first.output) == without_times(second.output);
  fuzz::require(says_same, "a run from compiled rules says what one from the text says");
  return 0;
}
