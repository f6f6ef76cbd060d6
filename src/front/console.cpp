#include "front/console.hpp"

#include <cstdio>

#include <unistd.h>

#include "front/signals.hpp"

namespace lexon {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPlainInterval{1000};

double seconds_since(steady_clock::time_point start) {
  return std::chrono::duration<double>(steady_clock::now() - start).count();
}

}  // namespace

ConsoleHost::ConsoleHost(const CommandLine& line)
    : wanted_(line.settings.sentence_count),
      answers_yes_(line.yes),
      shows_line_(line.progress == ProgressStyle::automatic && isatty(STDERR_FILENO) != 0),
      shows_plain_(line.progress == ProgressStyle::plain),
      shows_summary_(line.progress != ProgressStyle::none && !line.settings.rules_conversion_only),
      start_(steady_clock::now()),
      last_shown_(start_) {
  progress_.limit = line.settings.max_time_per_sentence;
}

void ConsoleHost::report_stop(const std::string& text) {
  outcome_.could_not_start = true;
  const bool ends_line = text.ends_with('\n');
  std::fprintf(stderr, "%s%s", text.c_str(), ends_line ? "" : "\n");
}

bool ConsoleHost::ask_yes_no(const std::string& text) {
  std::fprintf(stderr, "%s [y/N] ", text.c_str());
  bool answer = answers_yes_;
  if (!answer && isatty(STDIN_FILENO) != 0) {
    const int first = std::getchar();
    answer = first == 'y' || first == 'Y';
  } else {
    std::fprintf(stderr, "%s\n", answer ? "yes" : "no");
  }
  outcome_.could_not_start = !answer;
  return answer;
}

StepResult ConsoleHost::wait_for_step() {
  steady_clock::time_point next_tick = steady_clock::now() + kTick;
  while (true) {
    const bool ended = progress_.worker.wait_until(next_tick);
    if (cancel_was_signalled()) {
      step_cancel(progress_);
      return StepResult::cancelled;
    }
    if (ended && step_end_if_done(progress_)) return StepResult::finished;
    next_tick += kTick;
    if (step_tick(progress_)) return StepResult::finished;
    show_progress(false);
  }
}

StepResult ConsoleHost::run_step(RunContext& context, const char* caption, std::int32_t number) {
  const bool is_rule_step = !context.rule_step_done;
  step_begin(progress_, context, caption, number);
  const StepResult result = wait_for_step();
  outcome_.count_step(is_rule_step, result);
  show_progress(false);
  return result;
}

void ConsoleHost::show_progress(bool last) {
  if (!shows_line_ && !shows_plain_) return;
  const steady_clock::time_point now = steady_clock::now();
  if (!last && now - last_shown_ < (shows_line_ ? kTick : kPlainInterval)) return;
  last_shown_ = now;
  const double elapsed = seconds_since(start_);
  const long long lost = outcome_.failed + outcome_.over_time;
  const long long tried = outcome_.done + lost;
  const std::string of = wanted_ > 0 ? " of " + std::to_string(wanted_) : std::string();
  std::fprintf(stderr, "%s%s %d%s, %.0f/s, %.1f s, failed %lld%s", shows_line_ ? "\r" : "", progress_.caption.c_str(),
               progress_.number, of.c_str(), elapsed > 0 ? static_cast<double>(tried) / elapsed : 0.0, elapsed, lost,
               shows_line_ ? "\033[K" : "\n");
  std::fflush(stderr);
}

void ConsoleHost::show_summary() {
  if (shows_line_) std::fputs("\r\033[K", stderr);
  if (!shows_summary_ || outcome_.could_not_start) return;
  std::fprintf(stderr, "%lld done, %lld failed, %lld over time, %lld cancelled; %.1f s\n",
               static_cast<long long>(outcome_.done), static_cast<long long>(outcome_.failed),
               static_cast<long long>(outcome_.over_time), static_cast<long long>(outcome_.cancelled),
               seconds_since(start_));
}

void ConsoleHost::finish() {
  if (cancel_was_signalled()) outcome_.cancelled = true;
  show_summary();
  for (const std::string& note : outcome_.finish()) std::fprintf(stderr, "lexon: %s\n", note.c_str());
}

}  // namespace lexon
