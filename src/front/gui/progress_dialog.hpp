// The progress dialog: shows the step that is under way and how far the run has come, and cancels it.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <atomic>
#include <thread>

#include "run/context.hpp"
#include "run/settings.hpp"
#include "run/step.hpp"

class QLabel;
class QProgressBar;
class QPushButton;

namespace lexon {

// Counts the sentences of an input on a thread of its own, beside the run that renders them.
class InputCount {
 public:
  InputCount() = default;
  ~InputCount();
  InputCount(const InputCount&) = delete;
  InputCount& operator=(const InputCount&) = delete;

  // A pipe is left alone: what is read of it is gone.
  void start(const std::string& input);
  // In the whole input; 0 as long as it is not known.
  [[nodiscard]] std::int64_t sentences() const { return sentences_; }

 private:
  std::atomic<bool> stop_{false};
  std::atomic<std::int64_t> sentences_{0};
  std::thread thread_;
};

// How far a run has come.
struct RunProgress {
  std::int64_t closed = 0;  // sentences
  std::int64_t all = 0;     // that there are; 0: not known
  std::int64_t lost = 0;    // of those that are closed
  double seconds = 0.0;     // since the first was begun
};

// One for a run. It comes up with the first step and stays up between the steps, so that a run of many short
// sentences does not flicker.
class ProgressDialog : public QDialog {
  Q_OBJECT

 public:
  ProgressDialog(const RunSettings& settings, QWidget* parent);

  // Begins the step, looks after it until it is over, and lets the windows live meanwhile.
  [[nodiscard]] StepResult run_step(RunContext& context, Step& step);

  // What the dialog says of a step.
  void show_step(const QString& caption, std::int32_t number);
  void show_elapsed(double seconds);
  void show_progress(const RunProgress& progress);

  // The user's cancel: the button, Escape, and the window's close button.
  void reject() override;

 private:
  void make_layout();
  void show_once();
  void watch();
  void show_all();
  [[nodiscard]] std::int64_t all_sentences() const;

  bool start_minimised_;
  std::string input_;
  std::int64_t first_;   // sentence to be rendered
  std::int64_t wanted_;  // sentences; 0: up to the end of the input
  QTimer watch_;
  QEventLoop loop_;  // runs while a step does
  bool cancel_wanted_ = false;
  InputCount count_;
  QElapsedTimer since_shown_;
  QElapsedTimer since_first_;  // sentence; not valid in the rule step

  QLabel* caption_;
  QLabel* number_;
  QLabel* elapsed_;
  QLabel* limit_;
  QProgressBar* bar_;
  QLabel* sentences_;
  QLabel* time_;
  QPushButton* cancel_;
  const RunContext* context_ = nullptr;  // of the step that is under way, as is this:
  Step* step_ = nullptr;
  QPushButton* step_end_;  // hidden: what the end of a step presses
};

}  // namespace lexon
