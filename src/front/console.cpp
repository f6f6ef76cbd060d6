#include "front/console.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>

#include <unistd.h>

#include "front/process.hpp"
#include "front/signals.hpp"
#include "run/context.hpp"
#include "run/notes.hpp"
#include "run/output_check.hpp"

namespace lexon {

namespace {

using std::chrono::steady_clock;

// Of plain lines, which go to a log.
constexpr std::chrono::milliseconds kPlainInterval{1000};

// The fixed messages of the core end their line or not; here the system's reason follows on the same one.
std::string with_reason(std::string text, const std::string& reason) {
  if (text.ends_with('\n')) text.pop_back();
  return reason.empty() ? text : text + " (" + reason + ')';
}

// "4 lines left out: line 3 (why), line 8 (why), line 9 (why), ..."
std::string left_out_text(const InputNotes& input) {
  std::string text = counted(input.left_out, "line", "lines") + " left out: ";
  const std::int64_t shown = std::min(input.left_out, static_cast<std::int64_t>(input.first.size()));
  for (std::int64_t i = 0; i < shown; ++i) {
    const InputNotes::Line& line = input.first[static_cast<std::size_t>(i)];
    text += (i == 0 ? "line " : ", line ") + std::to_string(line.number) + " (" + line.why + ')';
  }
  return shown < input.left_out ? text + ", ..." : text;
}

// Of the wall clock: the figures of a run, not of its processor time.
double seconds_since(steady_clock::time_point start) {
  return std::chrono::duration<double>(steady_clock::now() - start).count();
}

}  // namespace

// A line that is written over is of use to a terminal alone. A conversion of rules has no sentences to sum up.
ConsoleHost::ConsoleHost(const CommandLine& line)
    : wanted_(line.settings.sentence_count),
      answers_yes_(line.yes),
      shows_line_(line.progress == ProgressStyle::automatic && isatty(STDERR_FILENO) != 0),
      shows_plain_(line.progress == ProgressStyle::plain),
      shows_summary_(line.progress != ProgressStyle::none && !line.settings.rules_conversion_only),
      start_(steady_clock::now()),
      last_shown_(start_) {
  outcome_.strict = line.settings.strict;
}

void ConsoleHost::report_stop(const std::string& text, const std::string& reason) {
  // What could not be opened ends the run before a sentence.
  outcome_.could_not_start = true;
  tell_line(with_reason(text, reason));
}

void ConsoleHost::note(const Note& note) {
  // The line of progress stands where the note is to begin.
  outcome_.has_losses = outcome_.has_losses || note.is_loss;
  clear_progress();
  if (!note.has_place) tell("lexon: ");
  for (std::string_view rest = note.text; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    tell_line(line);
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
}

bool ConsoleHost::open_report(const std::string& path, const RunSettings& settings) {
  // The test for outputs that are read knows one output. The report takes its place, and what the run itself writes
  // that of the input where both have one name.
  RunSettings other = settings;
  other.output_file = std::filesystem::absolute(path).lexically_normal().string();
  if (other.output_file == settings.output_file) other.input_file = settings.output_file;
  if (const std::string conflict = output_conflict(other); !conflict.empty()) {
    report_stop("--report: " + conflict, {});
    return false;
  }
  report_ = std::make_unique<ReportFile>(path);
  if (report_->is_open()) return true;
  report_stop("--report: " + path + " cannot be written", std::strerror(errno));
  return false;
}

// "No" ends the run as one that could not start.
bool ConsoleHost::ask_yes_no(const std::string& text, const std::string& reason) {
  tell(with_reason(text, reason) + " [y/N] ");
  bool answer = answers_yes_;
  // Who cannot be asked has said no, unless --yes said otherwise; either way the answer can be read.
  if (!answer && isatty(STDIN_FILENO) != 0) {
    const int first = std::getchar();
    answer = first == 'y' || first == 'Y';
  } else {
    std::fprintf(stderr, "%s\n", answer ? "yes" : "no");
  }
  outcome_.could_not_start = !answer;
  return answer;
}

StepResult ConsoleHost::run_step(RunContext& context, Step& step) {
  context_ = &context;
  signals_stop(&step.stop_flag());
  step.begin();
  // A signal sets the flag of the step at once, and the cancel follows here, at the next look.
  for (bool is_over = false; !is_over;) {
    is_over = step.wait_until(steady_clock::now() + kWatch);
    if (cancel_was_signalled()) step.cancel();
    step.watch();
    show_progress(step);
  }
  // Behind the step nobody else touches the context.
  outcome_.count_step(context, step.result());
  return step.result();
}

// Reads what is atomic in the context: the step is at work.
void ConsoleHost::show_progress(const Step& step) {
  if (!shows_line_ && !shows_plain_) return;
  const steady_clock::time_point now = steady_clock::now();
  // Not at every look: a terminal is slow.
  if (now - last_shown_ < (shows_line_ ? kTick : kPlainInterval)) return;
  last_shown_ = now;
  const double elapsed = seconds_since(start_);
  const auto tried = static_cast<double>(context_->tried());
  const long long lost = context_->failed + context_->over_time;
  // An input is not counted in advance: without -N nobody knows how many there will be.
  const std::string of = wanted_ > 0 ? " of " + std::to_string(wanted_) : std::string();
  std::fprintf(stderr, "%s%s %lld%s, %.0f/s, %.1f s, failed %lld%s", shows_line_ ? "\r" : "", step.caption(),
               static_cast<long long>(context_->number), of.c_str(), elapsed > 0 ? tried / elapsed : 0.0, elapsed, lost,
               shows_line_ ? "\033[K" : "\n");
  std::fflush(stderr);
}

// The line is empty then, and the cursor at its beginning.
void ConsoleHost::clear_progress() const {
  if (shows_line_) std::fputs("\r\033[K", stderr);
}

// Beyond what was done only what happened.
void ConsoleHost::show_summary() const {
  clear_progress();
  if (!shows_summary_ || outcome_.could_not_start || context_ == nullptr) return;
  // The words that tests and scripts look for: counts in this order, none that is 0 but the first.
  const InputNotes& input = context_->input_notes;
  std::string text = std::to_string(outcome_.done) + " done";
  const auto add = [&text](std::int64_t count, const char* what) {
    if (count != 0) text += ", " + std::to_string(count) + what;
  };
  add(outcome_.failed, " failed");
  add(outcome_.over_time, " over time");
  add(outcome_.cancelled ? 1 : 0, " cancelled");
  add(input.unclosed.number != 0 ? 1 : 0, " unclosed");
  if (input.left_out != 0) text += "; " + left_out_text(input);
  std::fprintf(stderr, "%s; %.1f s\n", text.c_str(), seconds_since(start_));
}

// A signal that comes between the last step and this point still counts as a cancel.
void ConsoleHost::finish(RunContext& context) {
  signals_remember();
  if (cancel_was_signalled()) outcome_.cancelled = true;
  for (const std::string& note : outcome_.finish(context)) tell_line("lexon: " + note);
  if (report_ != nullptr && !report_->close()) {
    outcome_.output_failed = true;
    tell_line("lexon: the report could not be written whole");
  }
  show_summary();
}

}  // namespace lexon
