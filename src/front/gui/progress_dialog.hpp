// The progress dialog: shows the step that is under way, and cancels it.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <atomic>

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

  // Runs one step on the worker's thread and lets the windows live meanwhile.
  [[nodiscard]] StepResult run_step(RunContext& context, const char* caption, std::int32_t number);

  // What the dialog says of a step.
  void show_step(const QString& caption, std::int32_t number);
  void show_elapsed(double seconds);

  // The user's cancel: the button, Escape, and the window's close button.
  void reject() override;

 protected:
  void customEvent(QEvent* event) override;

 private:
  void make_layout();
  void show_once();
  void wait_for_end();
  void tick();
  void end_if_over();
  void leave_cancelled();
  void let_events_through();

  std::atomic<bool> wakes_{false};  // the worker is to tell of its end
  ProgressState progress_;
  QTimer tick_;
  QEventLoop loop_;  // runs while a step does, unless that is over at once
  QElapsedTimer since_events_;
  StepResult result_ = StepResult::finished;
  bool cancel_wanted_ = false;

  QLabel* caption_;
  QLabel* number_;
  QLabel* elapsed_;
  QLabel* limit_;
  QPushButton* cancel_;
  RunContext* context_ = nullptr;  // of the step that is under way
  QPushButton* step_end_;          // hidden: what the end of a step presses
};

}  // namespace lexon
