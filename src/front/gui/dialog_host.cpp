#include "front/gui/dialog_host.hpp"

#include <QMessageBox>

#include <utility>

#include "front/gui/controls.hpp"
#include "front/gui/main_dialog.hpp"
#include "front/process.hpp"
#include "front/signals.hpp"
#include "run/context.hpp"

namespace lexon {

namespace {

constexpr std::size_t kShownNotes = 20;  // in one box

int show_box(const char* role, QMessageBox::Icon icon, const std::string& text, QMessageBox::StandardButtons buttons,
             QWidget* parent) {
  // without a caption of its own it bears the program's name
  QMessageBox box(icon, "Lexon", to_text(text), buttons, parent);
  box.setObjectName(role);
  box.setTextFormat(Qt::PlainText);
  return box.exec();
}

std::string with_reason(const std::string& text, const std::string& reason) {
  return reason.empty() ? text : text + "\n\n" + reason;
}

}  // namespace

DialogHost::DialogHost(MainDialog& main, bool yes)
    : main_(main),
      yes_(yes),
      progress_(main.settings().max_time_per_sentence, main.settings().run_at_once && !main.settings().show_progress,
                main.settings().run_at_once ? nullptr : &main) {
  outcome_.strict = main.settings().strict;
}

// A minimised window hides all that stands on it.
QWidget* DialogHost::window_to_stand_on() const {
  return main_.isMinimized() ? nullptr : &main_;
}

void DialogHost::report_stop(const std::string& text, const std::string& reason) {
  outcome_.could_not_start = true;
  show_box("report_stop", QMessageBox::Critical, with_reason(text, reason), QMessageBox::Ok, window_to_stand_on());
}

bool DialogHost::ask_yes_no(const std::string& text, const std::string& reason) {
  const bool goes_on = yes_ || show_box("ask_yes_no", QMessageBox::Question, with_reason(text, reason),
                                        QMessageBox::Yes | QMessageBox::No, window_to_stand_on()) == QMessageBox::Yes;
  outcome_.could_not_start = !goes_on;
  return goes_on;
}

void DialogHost::note(const Note& note) {
  outcome_.has_losses = outcome_.has_losses || note.is_loss;
  notes_.push_back(note.text);
}

void DialogHost::minimise() {
  main_.showMinimized();
}

StepResult DialogHost::run_step(RunContext& context, Step& step) {
  const StepResult result = progress_.run_step(context, step);
  outcome_.count_step(context, result);
  return result;
}

void DialogHost::finish(RunContext& context) {
  signals_remember();
  if (cancel_was_signalled()) outcome_.cancelled = true;
  progress_.hide();
  for (std::string& note : outcome_.finish(context)) notes_.push_back(std::move(note));
  show_notes(notes_);
  main_.end_run(outcome_);
}

// Nobody waits for a box behind a run that started by itself.
void DialogHost::show_notes(const std::vector<std::string>& notes) {
  std::string text;
  for (std::size_t i = 0; i < notes.size(); ++i) {
    tell_line("lexon-gui: " + notes[i]);
    if (i < kShownNotes) text += (text.empty() ? "" : "\n") + notes[i];
  }
  if (notes.size() > kShownNotes) text += "\n... " + std::to_string(notes.size() - kShownNotes) + " more";
  if (text.empty() || main_.settings().run_at_once) return;
  show_box("notes", QMessageBox::Warning, text, QMessageBox::Ok, window_to_stand_on());
}

}  // namespace lexon
