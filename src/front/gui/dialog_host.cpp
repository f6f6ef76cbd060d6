#include "front/gui/dialog_host.hpp"

#include <QMessageBox>

#include <algorithm>
#include <utility>

#include "front/gui/controls.hpp"
#include "front/gui/main_dialog.hpp"
#include "front/process.hpp"
#include "front/signals.hpp"
#include "run/context.hpp"

namespace lexon {

namespace {

// Which button ended the box. Texts hold names of files, which may look like markup.
int show_box(const char* role, QMessageBox::Icon icon, const std::string& text, QMessageBox::StandardButtons buttons,
             QWidget* parent) {
  // without a caption of its own it bears the program's name
  QMessageBox box(icon, "Lexon", to_text(text), buttons, parent);
  box.setObjectName(role);
  box.setTextFormat(Qt::PlainText);
  return box.exec();
}

// What the system says stands apart from the fixed message.
std::string with_reason(const std::string& text, const std::string& reason) {
  return reason.empty() ? text : text + "\n\n" + reason;
}

}  // namespace

// A run that starts at once has its main dialog minimised, and a window that stood on it would be hidden as well.
DialogHost::DialogHost(MainDialog& main, bool yes)
    : main_(main), yes_(yes), progress_(main.settings(), main.settings().run_at_once ? nullptr : &main) {
  outcome_.strict = main.settings().strict;
  time_.start();
}

// A minimised window hides all that stands on it.
QWidget* DialogHost::window_to_stand_on() const {
  return main_.isMinimized() ? nullptr : &main_;
}

void DialogHost::report_stop(const std::string& text, const std::string& reason) {
  outcome_.could_not_start = true;
  show_box("report_stop", QMessageBox::Critical, with_reason(text, reason), QMessageBox::Ok, window_to_stand_on());
}

// No ends the run, without another message: the user has just said so.
bool DialogHost::ask_yes_no(const std::string& text, const std::string& reason) {
  const bool goes_on = yes_ || show_box("ask_yes_no", QMessageBox::Question, with_reason(text, reason),
                                        QMessageBox::Yes | QMessageBox::No, window_to_stand_on()) == QMessageBox::Yes;
  outcome_.could_not_start = !goes_on;
  return goes_on;
}

// Kept to the end, when they can be read at leisure.
void DialogHost::note(const Note& note) {
  outcome_.has_losses = outcome_.has_losses || note.is_loss;
  notes_.push_back(note.text);
}

void DialogHost::minimise() {
  show_minimised(main_);
}

// Nobody looks at a summary of a run that started by itself.
bool DialogHost::wants_reports() const {
  return !main_.settings().run_at_once;
}

// On a thread of the step. Nothing here is shown, and what is kept is looked at behind the step.
void DialogHost::report(const SentenceReport& sentence) {
  const std::int64_t number = std::max(main_.settings().start_sentence, 1) + reported_++;
  if (sentence.status != "done" && lost_.size() < kKeptSentences) lost_.push_back({number, sentence});
}

// Both steps of a run show the same window.
StepResult DialogHost::run_step(RunContext& context, Step& step) {
  const StepResult result = progress_.run_step(context, step);
  outcome_.count_step(context, result);
  return result;
}

void DialogHost::finish(RunContext& context) {
  signals_remember();
  if (cancel_was_signalled()) outcome_.cancelled = true;
  // Notes go to standard error too: the summary shows the first of them, and a run that started by itself has none.
  // The summary takes its place.
  progress_.hide();
  for (std::string& note : outcome_.finish(context)) notes_.push_back(std::move(note));
  for (const std::string& note : notes_) tell_line("lexon-gui: " + note);
  const bool wants_again = show_summary(context);
  main_.end_run(outcome_, wants_again);
}

// True if the user wants a new start with the same settings.
bool DialogHost::show_summary(const RunContext& context) {
  if (outcome_.could_not_start || main_.settings().run_at_once) return false;
  RunSummary summary;
  summary.settings = main_.settings();
  summary.outcome = outcome_;
  // The host is done with them: a run has one summary.
  summary.lost = std::move(lost_);
  summary.seconds = static_cast<double>(time_.elapsed()) / 1000.0;
  summary.first = std::max(main_.settings().start_sentence, 1);
  summary.unclosed_at = context.input_notes.unclosed.number;
  for (const std::string& note : notes_) summary.notes << to_text(note);
  SummaryDialog dialog(summary, window_to_stand_on());
  dialog.exec();
  return dialog.wants_again();
}

}  // namespace lexon
