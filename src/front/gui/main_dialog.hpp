// The main dialog: owns the settings of the run, has them changed, and starts it.
#pragma once

#include <QDialog>

#include "front/command_line.hpp"
#include "front/outcome.hpp"

class QLabel;
class QPushButton;

namespace lexon {

class MainDialog : public QDialog {
  Q_OBJECT

 public:
  explicit MainDialog(const CommandLine& line);

  // Shows the dialog and lets it come to its end; a run that starts at once starts before it is shown. The status that
  // the program ends with.
  [[nodiscard]] int run();

  [[nodiscard]] const RunSettings& settings() const { return settings_; }

  void render();
  void open_setting();
  void open_about();

  // Behind a run the dialog ends. One that could not start leaves the dialog to the user, who mends the settings,
  // unless there is no user. `wants_again`: the user wants a new start with the same settings.
  void end_run(const Outcome& outcome, bool wants_again);

  // The words of the command line for a new start; empty if nobody wants one.
  [[nodiscard]] const std::vector<std::string>& words_for_again() const { return words_for_again_; }

 private:
  void make_layout();
  void make_actions();
  void show_state();

  RunSettings settings_;
  std::string own_output_;  // what the last run of this dialog wrote
  bool yes_;
  QStringList notes_;  // of the command line
  std::vector<std::string> words_for_again_;
  int exit_status_ = 0;
  QPushButton* render_;
  QPushButton* setting_;
  QPushButton* cancel_;
  QLabel* notice_;
};

}  // namespace lexon
