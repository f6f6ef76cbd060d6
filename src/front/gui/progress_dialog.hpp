// The progress dialog: shows the step that is under way, and cancels it.
#pragma once

#include <QDialog>
#include <QEventLoop>
#include <QTimer>

#include "run/context.hpp"
#include "run/step.hpp"

class QLabel;
class QPushButton;

namespace lexon {

// One for a run. It comes up with the first step and stays up between the steps, so that a run of many short
// sentences does not flicker.
class ProgressDialog : public QDialog {
  Q_OBJECT

 public:
  // `limit`: seconds for a sentence, 0 for no limit.
  ProgressDialog(std::int32_t limit, bool start_minimised, QWidget* parent);

  // Begins the step, looks after it until it is over, and lets the windows live meanwhile.
  [[nodiscard]] StepResult run_step(RunContext& context, Step& step);

  // What the dialog says of a step.
  void show_step(const QString& caption, std::int32_t number);
  void show_elapsed(double seconds);

  // The user's cancel: the button, Escape, and the window's close button.
  void reject() override;

 private:
  void make_layout();
  void show_once();
  void watch();

  bool start_minimised_;
  QTimer watch_;
  QEventLoop loop_;  // runs while a step does
  bool cancel_wanted_ = false;

  QLabel* caption_;
  QLabel* number_;
  QLabel* elapsed_;
  QLabel* limit_;
  QPushButton* cancel_;
  const RunContext* context_ = nullptr;  // of the step that is under way, as is this:
  Step* step_ = nullptr;
  QPushButton* step_end_;  // hidden: what the end of a step presses
};

}  // namespace lexon
