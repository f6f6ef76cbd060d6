#include "front/outcome.hpp"

#include <cstdio>

#include "run/context.hpp"
#include "run/driver.hpp"

namespace lexon {

// A rule step that failed for its last line alone is told as a loss of rules, not as a failed one.
void Outcome::count_step(const RunContext& context, StepResult result) {
  has_losses = has_losses || context.input_notes.left_out != 0 || context.rules_refused.value_or(0) != 0;
  cancelled = cancelled || result == StepResult::cancelled;
  rules_failed = context.rules_failed && !context.rule_notes.last_line_fails;
  done = context.done;
  failed = context.failed;
  over_time = context.over_time;
}

// What is still in the buffer goes out here, and shows whether the disk had room for it.
std::vector<std::string> Outcome::finish(RunContext& context) {
  std::vector<std::string> notes = context.notes;
  output_failed = context.file_is_short;
  target_left = context.target_left;
  left_out = context.input_notes.left_out;
  // Without an output nothing has been opened, and the reason was told.
  std::FILE* stream = context.output.get();
  if (stream == nullptr) return notes;
  context.session.output.flush();
  const bool is_short = !is_written(stream);
  output_failed = output_failed || is_short;
  if (is_short) notes.emplace_back("the output could not be written whole");
  return notes;
}

// What is worst decides: no start, then an output that is not whole, then a cancel, then what was lost.
int Outcome::exit_status() const {
  if (could_not_start) return 1;
  if (output_failed) return 4;
  if (cancelled) return kCancelledStatus;
  return failed != 0 || over_time != 0 || rules_failed || (strict && has_losses) ? 3 : 0;
}

}  // namespace lexon
