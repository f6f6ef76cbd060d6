#include "front/shard_run.hpp"

#include <atomic>
#include <cstdio>

#include "front/process.hpp"
#include "front/signals.hpp"
#include "run/driver.hpp"
#include "run/notes.hpp"

namespace lexon {

namespace {

// A signal ends the work in it.
class StoppedBySignals {
 public:
  explicit StoppedBySignals(std::atomic<bool>& stop) { signals_stop(&stop); }
  ~StoppedBySignals() { signals_stop(nullptr); }
  StoppedBySignals(const StoppedBySignals&) = delete;
  StoppedBySignals& operator=(const StoppedBySignals&) = delete;
};

// A search for borders that a signal ended has no fault to tell.
int stopped_for(const std::string& fault, ConsoleHost& host) {
  if (cancel_was_signalled()) return kCancelledStatus;
  host.report_stop(fault, {});
  return host.exit_status();
}

// Not a loss: the parts come out the same, only later.
void note_unkept(const RunSettings& settings, ConsoleHost& host) {
  host.note({Borders::path_beside(settings.input_file) +
                 ": cannot be written, so every shard reads the whole input to find its sentences",
             false, true});
}

// As the run's own summary has it.
std::string result_text(const ShardResult& result) {
  std::string text = std::to_string(result.done) + " done";
  if (result.failed != 0) text += ", " + std::to_string(result.failed) + " failed";
  if (result.over_time != 0) text += ", " + std::to_string(result.over_time) + " over time";
  return text;
}

// Has the run come to its end, whatever became of its sentences?
bool is_finished(const Outcome& outcome) {
  return !outcome.could_not_start && !outcome.output_failed && !outcome.cancelled && !outcome.rules_failed;
}

// The marker comes last. The fault, or empty.
std::string mark_done(const RunSettings& settings, const Outcome& outcome, ShardPlan& plan) {
  const std::string& path = settings.output_file;
  // Else the part would be of another input than its neighbours, and nobody would know.
  if (!is_input_of(settings.input_file, plan.borders)) {
    return settings.input_file + ": has changed meanwhile, so " + path + " is not marked as done: run it again";
  }
  const auto mark = content_mark(path);
  ShardResult& result = plan.marker.result;
  result = {mark.value_or(FileMark{}), outcome.done,       outcome.failed,     outcome.over_time,
            outcome.left_out,          outcome.has_losses, outcome.target_left};
  const std::string marker = shard_marker_path(path);
  if (mark && shard_marker_write(marker, plan.marker)) return {};
  // The output stays: who looks at it finds it whole, but joining wants the marker.
  return marker + ": cannot be written, so the shard counts as unfinished";
}

}  // namespace

int run_shard(const CommandLine& line, RunSettings settings, ConsoleHost& host) {
  std::atomic<bool> stop = false;
  ShardPlan plan;
  {
    // To find the borders takes a pass over the input where nobody has written them down.
    const StoppedBySignals stopped(stop);
    const std::string fault = shard_plan(settings, *line.shard, line.forced_target, LEXON_VERSION, stop, plan);
    if (!fault.empty()) return stopped_for(fault, host);
  }
  // The name has grown by that of the part.
  if (settings.output_file.size() > kPathLimit) {
    return stopped_for(
        settings.output_file + ": this name is longer than " + std::to_string(kPathLimit) + " characters", host);
  }
  if (!plan.borders_are_kept) note_unkept(settings, host);
  const std::string marker = shard_marker_path(settings.output_file);
  // A run that is repeated for some parts need not know which: those that are done end at once, with the status they
  // had.
  if (const auto result = shard_done(settings, plan)) {
    if (line.progress != ProgressStyle::none) {
      tell_line(settings.output_file + ": is done already: " + result_text(*result));
    }
    return result->exit_status(settings.strict);
  }
  // From here on the output is unfinished, until the marker stands there again.
  std::remove(marker.c_str());
  if (!line.report_file.empty() && !host.open_report(line.report_file, settings)) return host.exit_status();
  // A part that was cancelled or cut short keeps what it has, unmarked.
  run_driver(settings, host);
  if (!is_finished(host.outcome())) return host.exit_status();
  const std::string fault = mark_done(settings, host.outcome(), plan);
  if (fault.empty()) return host.exit_status();
  tell_line(fault);
  return 4;
}

// Borders that are there and fit are not found again.
int index_input(const RunSettings& settings, ConsoleHost& host) {
  std::atomic<bool> stop = false;
  const StoppedBySignals stopped(stop);
  Borders borders;
  bool is_kept = true;
  const std::string fault = borders_of(settings.input_file, settings.start_sentence, false, stop, borders, is_kept);
  if (!fault.empty()) return stopped_for(fault, host);
  const std::string path = Borders::path_beside(settings.input_file);
  if (!is_kept) {
    tell_line(path + ": cannot be written");
    return 4;
  }
  std::printf("%s: %s\n", path.c_str(), counted(borders.sentences, "sentence", "sentences").c_str());
  return standard_output_is_whole() ? 0 : 4;
}

}  // namespace lexon
