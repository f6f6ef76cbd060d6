#include "run/workers.hpp"

#include <array>
#include <new>
#include <string>

#include "data/output.hpp"
#include "rules/compiled.hpp"
#include "rules/matrix.hpp"
#include "rules/parser.hpp"
#include "run/render.hpp"
#include "run/rule_files.hpp"

namespace lexon {

namespace {

// A stopped step has no result of its own: who stopped it says what it was.
void end_step(RunContext& context, Status status) {
  context.session.output.flush();
  if (status == Status::stopped) return;
  const std::int32_t result = status == Status::ok ? run_state::finished : run_state::failed;
  context.run_status = status == Status::end_of_input ? run_state::end_of_input : result;
}

void end_rule_step(RunContext& context, Status status) {
  context.rules_without_room = status == Status::memory;
  end_step(context, status);
}

// The step's border: what the standard library throws for exhausted memory becomes a status here. A step that was
// asked to stop has been silent since, so it has not been done, whatever it returns.
Status guarded(Status (*step)(RunContext&), RunContext& context) {
  try {
    const Status status = step(context);
    return context.session.stop_requested ? Status::stopped : status;
  } catch (const std::bad_alloc&) {
    return Status::memory;
  }
}

Status parse_and_write_rules(RunContext& context) {
  Session& session = context.session;
  Grammar& grammar = context.grammar;
  if (const Status s = parse_rule_file(session, grammar.pool, context.rule_text, grammar.rules, &context.rule_notes);
      s != Status::ok)
    return s;
  context.rules_refused = context.rule_notes.refused;
  if (context.in_memory) return Status::ok;
  if (const Status s = rule_list_write(session, grammar.rules, context.compiled_rules.stream); s != Status::ok)
    return s;
  context.rules_are_whole = true;
  return Status::ok;
}

Status build_and_save_matrix(RunContext& context) {
  Session& session = context.session;
  Grammar& grammar = context.grammar;
  if (const Status s = rule_matrix_build(session, grammar.index, grammar.rules); s != Status::ok) return s;
  return context.in_memory ? Status::ok : rule_matrix_save(session, grammar.index, context.compiled_matrix.stream);
}

Status convert(RunContext& context) {
  const Status status = parse_and_write_rules(context);
  return status == Status::ok ? build_and_save_matrix(context) : status;
}

// A compiled file cannot be used: the text takes its place if there is one, else the output says why. What was loaded
// of the rules goes first, so that the text has all the room for itself.
Status convert_instead(RunContext& context, const CompiledFile& file, const std::string& fault) {
  if (!rule_files_make_anew(context, file.path + ": cannot be used: " + fault)) {
    out_print(context.session, ";;%s\n;;in %s\n", fault.c_str(), file.path.c_str());
    return Status::no_effect;
  }
  rule_matrix_clear(context.grammar.index);
  context.grammar.rules = nullptr;
  context.grammar.pool.release_all();
  return convert(context);
}

Status load(RunContext& context) {
  Session& session = context.session;
  Grammar& grammar = context.grammar;
  std::string fault;
  if (const Status s = rule_list_read(session, grammar.pool, grammar.rules, context.compiled_rules.stream, &fault);
      s != Status::ok) {
    return s == Status::no_effect ? convert_instead(context, context.compiled_rules, fault) : s;
  }
  if (context.rebuild_matrix) return build_and_save_matrix(context);
  Status s = rule_matrix_load(session, grammar.index, context.compiled_matrix.stream, grammar.rules, &fault);
  if (s != Status::no_effect) return s;
  s = convert_instead(context, context.compiled_matrix, fault);
  // wanted: without a text the step has succeeded whatever the reading of the matrix gives.
  return context.convert ? s : Status::ok;
}

Status render(RunContext& context) {
  std::array<char, kSentenceSize> text;
  return render_sentence(context.session, context.dictionary.files(), context.input, text.data(),
                         context.cr_dictionary.files(), context.post_edit, &context.input_notes);
}

}  // namespace

void convert_worker(RunContext& context) {
  end_rule_step(context, guarded(convert, context));
}

void load_worker(RunContext& context) {
  end_rule_step(context, guarded(load, context));
}

void sentence_worker(RunContext& context) {
  const Status status = guarded(render, context);
  if (context.session.state.abort == Status::memory) ++context.starved;
  // A read that was stopped while it waited for data is no fault of the file.
  if (status == Status::stopped) std::clearerr(context.input);
  context.session.pool.release_all();
  end_step(context, status);
}

void no_rules_worker(RunContext& context) {
  end_step(context, Status::no_effect);
}

Worker choose_worker(const RunContext& context) {
  if (context.rule_step_done) return context.grammar.rules != nullptr ? sentence_worker : no_rules_worker;
  return context.convert ? convert_worker : load_worker;
}

}  // namespace lexon
