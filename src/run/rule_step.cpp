#include "run/rule_step.hpp"

#include <new>
#include <string>
#include <string_view>

#include "data/output.hpp"
#include "rules/compiled.hpp"
#include "rules/matrix.hpp"
#include "rules/parser.hpp"
#include "run/rule_files.hpp"
#include "run/step.hpp"

namespace lexon {

namespace {

// From the open text, or from what a grammar source has expanded to in memory.
Status parse_and_write_rules(RunContext& context) {
  Session& session = context.session;
  Grammar& grammar = context.grammar;
  std::string_view expansion = context.source.expansion.text;
  const TextSource text = context.rule_text != nullptr ? TextSource(context.rule_text) : TextSource(expansion);
  if (const Status s = parse_rule_file(session, grammar.pool, text, grammar.rules, &context.rule_notes);
      s != Status::ok)
    return s;
  context.rules_refused = context.rule_notes.refused;
  if (context.in_memory) return Status::ok;
  if (const Status s = rule_list_write(session, grammar.rules, context.compiled_rules.stream); s != Status::ok)
    return s;
  context.rules_are_whole = true;
  return Status::ok;
}

// The matrix is built of the rules in memory; the file is for the next run.
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

// Rules that are not compiled rules at all give `no_effect`: the text takes their place. Any other failure is final.
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

// The step's border: what the standard library throws for exhausted memory becomes a status here. A step that was
// asked to stop has been silent since, so it has not been done, whatever it returns.
Status make_ready(RunContext& context) {
  try {
    const Status status = context.convert ? convert(context) : load(context);
    return context.session.stop_requested ? Status::stopped : status;
  } catch (const std::bad_alloc&) {
    return Status::memory;
  }
}

// The step as the threads of a step run it: one of them, without a time limit.
class RuleWork final : public StepWork {
 public:
  explicit RuleWork(RunContext& context) : context_(context) {}

  void work(StepWorker& worker) override {
    worker.begin(0);
    const Status status = make_ready(context_);
    context_.rules_without_room = status == Status::memory;
    context_.rules_failed = status != Status::ok;
    context_.session.output.flush();
  }

 private:
  RunContext& context_;
};

}  // namespace

StepResult run_rule_step(RunContext& context, Host& host) {
  RuleWork work(context);
  Step step(work, "converting/loading rules", 0, context.session, {&context.session});
  const StepResult result = host.run_step(context, step);
  // The matrix has its size only now, and the session's scratch is made to it.
  if (result == StepResult::finished) session_use(context.session, context.grammar);
  return result;
}

}  // namespace lexon
