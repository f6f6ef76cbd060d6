#include "front/console.hpp"

#include <csignal>
#include <cstdio>
#include <string_view>

#include <unistd.h>

#include "data/state.hpp"
#include "dict/index.hpp"

namespace lexon {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPlainInterval{1000};
constexpr int kCancelledStatus = 130;

std::atomic<bool> cancel_wanted{false};

extern "C" void on_cancel_signal(int) {
  if (cancel_wanted.exchange(true)) _exit(kCancelledStatus);
  stop_requested = true;
}

double seconds_since(steady_clock::time_point start) {
  return std::chrono::duration<double>(steady_clock::now() - start).count();
}

}  // namespace

void cancel_on_signals() {
  struct sigaction action {};
  action.sa_handler = on_cancel_signal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

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
  could_not_start_ = true;
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
  could_not_start_ = !answer;
  return answer;
}

// True when the step has been cancelled.
bool ConsoleHost::wait_for_step() {
  steady_clock::time_point next_tick = steady_clock::now() + kTick;
  while (true) {
    const bool ended = progress_.worker.wait_until(next_tick);
    if (cancel_wanted) {
      step_cancel(progress_);
      return true;
    }
    if (ended && step_end_if_done(progress_)) return false;
    next_tick += kTick;
    if (step_tick(progress_)) return false;
    show_progress(false);
  }
}

void ConsoleHost::count_step(bool is_rule_step, bool cancelled) {
  if (is_rule_step && !cancelled) {
    rules_failed_ = run_status == run_state::failed;
    return;
  }
  if (cancelled) {
    ++tally_.cancelled;
  } else if (run_status == run_state::failed) {
    ++tally_.failed;
  } else if (run_status == run_state::over_time) {
    ++tally_.over_time;
  } else if (run_status == run_state::finished) {
    ++tally_.done;
  }
}

StepResult ConsoleHost::run_step(RunContext& context, const char* caption, std::int32_t number) {
  const bool is_rule_step = !context.rule_step_done;
  step_begin(progress_, context, caption, number);
  const bool cancelled = wait_for_step();
  count_step(is_rule_step, cancelled);
  show_progress(false);
  return cancelled ? StepResult::cancelled : StepResult::finished;
}

void ConsoleHost::show_progress(bool last) {
  if (!shows_line_ && !shows_plain_) return;
  const steady_clock::time_point now = steady_clock::now();
  if (!last && now - last_shown_ < (shows_line_ ? kTick : kPlainInterval)) return;
  last_shown_ = now;
  const double elapsed = seconds_since(start_);
  const long long lost = tally_.failed + tally_.over_time;
  const long long tried = tally_.done + lost;
  const std::string of = wanted_ > 0 ? " of " + std::to_string(wanted_) : std::string();
  std::fprintf(stderr, "%s%s %d%s, %.0f/s, %.1f s, failed %lld%s", shows_line_ ? "\r" : "", progress_.caption.c_str(),
               progress_.number, of.c_str(), elapsed > 0 ? static_cast<double>(tried) / elapsed : 0.0, elapsed, lost,
               shows_line_ ? "\033[K" : "\n");
  std::fflush(stderr);
}

void ConsoleHost::show_summary() {
  if (shows_line_) std::fputs("\r\033[K", stderr);
  if (!shows_summary_ || could_not_start_) return;
  std::fprintf(stderr, "%lld done, %lld failed, %lld over time, %lld cancelled; %.1f s\n",
               static_cast<long long>(tally_.done), static_cast<long long>(tally_.failed),
               static_cast<long long>(tally_.over_time), static_cast<long long>(tally_.cancelled),
               seconds_since(start_));
}

void ConsoleHost::finish() {
  show_summary();
  if (lookup_damage.blocks != 0) {
    std::fprintf(stderr, "lexon: damaged blocks met in a dictionary: %lld; \"lexon-dict check\" tells which\n",
                 static_cast<long long>(lookup_damage.blocks));
  }
  if (state.output == nullptr) return;
  output_failed_ = std::fflush(state.output) != 0 || std::ferror(state.output) != 0;
  if (output_failed_) std::fprintf(stderr, "lexon: the output could not be written whole\n");
}

int ConsoleHost::exit_status() const {
  if (could_not_start_) return 1;
  if (output_failed_) return 4;
  if (tally_.cancelled != 0 || cancel_wanted) return kCancelledStatus;
  return tally_.failed != 0 || tally_.over_time != 0 || rules_failed_ ? 3 : 0;
}

}  // namespace lexon
