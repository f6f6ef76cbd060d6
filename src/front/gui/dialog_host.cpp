#include "front/gui/dialog_host.hpp"

#include <QMessageBox>

#include <cstdio>

#include "front/gui/controls.hpp"
#include "front/gui/main_dialog.hpp"
#include "front/signals.hpp"
#include "run/context.hpp"

namespace lexon {

namespace {

int show_box(const char* role, QMessageBox::Icon icon, const std::string& text, QMessageBox::StandardButtons buttons,
             QWidget* parent) {
  // without a caption of its own it bears the program's name
  QMessageBox box(icon, "Lexon", to_text(text), buttons, parent);
  box.setObjectName(role);
  box.setTextFormat(Qt::PlainText);
  return box.exec();
}

}  // namespace

DialogHost::DialogHost(MainDialog& main, bool yes)
    : main_(main),
      yes_(yes),
      progress_(main.settings().max_time_per_sentence, main.settings().run_at_once && !main.settings().show_progress,
                main.settings().run_at_once ? nullptr : &main) {}

// A minimised window hides all that stands on it.
QWidget* DialogHost::window_to_stand_on() const {
  return main_.isMinimized() ? nullptr : &main_;
}

void DialogHost::report_stop(const std::string& text) {
  outcome_.could_not_start = true;
  show_box("report_stop", QMessageBox::Critical, text, QMessageBox::Ok, window_to_stand_on());
}

bool DialogHost::ask_yes_no(const std::string& text) {
  const bool goes_on = yes_ || show_box("ask_yes_no", QMessageBox::Question, text, QMessageBox::Yes | QMessageBox::No,
                                        window_to_stand_on()) == QMessageBox::Yes;
  outcome_.could_not_start = !goes_on;
  return goes_on;
}

void DialogHost::minimise() {
  main_.showMinimized();
}

StepResult DialogHost::run_step(RunContext& context, const char* caption, std::int32_t number) {
  const bool is_rule_step = !context.rule_step_done;
  const StepResult result = progress_.run_step(context, caption, number);
  outcome_.count_step(is_rule_step, result);
  return result;
}

void DialogHost::finish() {
  if (cancel_was_signalled()) outcome_.cancelled = true;
  progress_.hide();
  show_notes(outcome_.finish());
  main_.end_run(outcome_);
}

// Nobody waits for a box behind a run that started by itself.
void DialogHost::show_notes(const std::vector<std::string>& notes) {
  std::string text;
  for (const std::string& note : notes) {
    std::fprintf(stderr, "lexon-gui: %s\n", note.c_str());
    text += (text.empty() ? "" : "\n") + note;
  }
  if (text.empty() || main_.settings().run_at_once) return;
  show_box("notes", QMessageBox::Warning, text, QMessageBox::Ok, window_to_stand_on());
}

}  // namespace lexon
