#include "run/workers.hpp"

#include <array>
#include <new>

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

// The step's border: what the standard library throws for exhausted memory becomes a status here. A step that was
// asked to stop has been silent since, so it has not been done, whatever it returns.
Status guarded(Status (*step)(RunContext&), RunContext& context) {
  try {
    const Status status = step(context);
    return stop_requested ? Status::stopped : status;
  } catch (const std::bad_alloc&) {
    return Status::memory;
  }
}

// The rules in memory are whole, so the run goes on.
Status parse_and_write_rules(RunContext& context) {
  if (const Status s = parse_rule_file(context.rule_text, context.rules); s != Status::ok) return s;
  if (const Status s = rule_list_write(context.rules, context.compiled_rules.stream); s != Status::ok) return s;
  context.rules_unwritten = !compiled_file_finish(context.compiled_rules);
  return Status::ok;
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

Status convert(RunContext& context) {
  const Status status = parse_and_write_rules(context);
  return status == Status::ok ? build_and_save_matrix(context) : status;
}

// Says which file a message of the reader was about.
void name_file(const CompiledFile& file) {
  out_print(";;in %s\n", file.path.c_str());
}

Status load(RunContext& context) {
  if (const Status s = rule_list_read(context.rules, context.compiled_rules.stream); s != Status::ok) {
    if (s == Status::no_effect) name_file(context.compiled_rules);
    return s;
  }
  compiled_file_discard(context.compiled_rules);
  if (context.rebuild_matrix) return build_and_save_matrix(context);
  // wanted: the step has succeeded whatever the reading of the matrix gives.
  const Status s = rule_matrix_load(context.compiled_matrix.stream, context.rules);
  if (s == Status::no_effect) name_file(context.compiled_matrix);
  return s == Status::memory ? s : Status::ok;
}

Status render(RunContext& context) {
  std::array<char, kSentenceSize> text;
  return render_sentence(word_dictionary_of(context), context.input, text.data(), cr_dictionary_of(context),
                         context.post_edit);
}

}  // namespace

void convert_worker(RunContext& context) {
  end_step(guarded(convert, context));
}

void load_worker(RunContext& context) {
  end_step(guarded(load, context));
}

void sentence_worker(RunContext& context) {
  const Status status = guarded(render, context);
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
