#include "run/workers.hpp"

#include <array>

#include "data/output.hpp"
#include "data/pool.hpp"
#include "data/state.hpp"
#include "rules/compiled.hpp"
#include "rules/matrix.hpp"
#include "rules/parser.hpp"
#include "run/render.hpp"

namespace lexon {

constinit std::atomic<std::int32_t> run_status{run_state::running};

namespace {

// A stopped step has no result of its own: who stopped it says what it was.
void end_step(Status status) {
  out_flush();
  if (status == Status::stopped) return;
  const std::int32_t result = status == Status::ok ? run_state::finished : run_state::failed;
  run_status = status == Status::end_of_input ? run_state::end_of_input : result;
}

Status parse_and_write_rules(RunContext& context) {
  if (const Status s = parse_rule_file(context.rule_text, context.rules); s != Status::ok) return s;
  if (const Status s = rule_list_write(context.rules, context.compiled_rules.stream); s != Status::ok) return s;
  return compiled_file_finish(context.compiled_rules) ? Status::ok : Status::no_effect;
}

Status build_and_save_matrix(RunContext& context) {
  if (const Status s = rule_matrix_build(context.rules); s != Status::ok) return s;
  return rule_matrix_save(context.compiled_matrix.stream);
}

DictionaryFiles word_dictionary_of(RunContext& context) {
  return {context.dictionary, context.dictionary_index, context.dictionary_slots.data()};
}

DictionaryFiles cr_dictionary_of(RunContext& context) {
  return {context.cr_dictionary, context.cr_index, context.cr_slots.data()};
}

}  // namespace

void convert_worker(RunContext& context) {
  Status status = parse_and_write_rules(context);
  if (status == Status::ok) status = build_and_save_matrix(context);
  end_step(status);
}

void load_worker(RunContext& context) {
  Status status = rule_list_read(context.rules, context.compiled_rules.stream);
  if (status == Status::ok) {
    compiled_file_discard(context.compiled_rules);
    if (context.rebuild_matrix) {
      status = build_and_save_matrix(context);
    } else {
      // wanted: the step has succeeded whatever the reading of the matrix gives.
      static_cast<void>(rule_matrix_load(context.compiled_matrix.stream, context.rules));
    }
  }
  end_step(status);
}

void sentence_worker(RunContext& context) {
  std::array<char, kSentenceSize> text;
  const Status status = render_sentence(word_dictionary_of(context), context.input, text.data(),
                                        cr_dictionary_of(context), context.post_edit);
  static_cast<void>(temp_release_all());
  end_step(status);
}

void no_rules_worker(RunContext&) {
  end_step(Status::no_effect);
}

Worker choose_worker(const RunContext& context) {
  if (context.rule_step_done) return context.rules != nullptr ? sentence_worker : no_rules_worker;
  return context.convert ? convert_worker : load_worker;
}

}  // namespace lexon
