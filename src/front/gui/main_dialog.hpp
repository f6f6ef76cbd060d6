// The main dialog: owns the settings of the run, has them changed, and starts it.
#pragma once

#include <QDialog>

#include "front/command_line.hpp"
#include "front/outcome.hpp"

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
  // unless there is no user.
  void end_run(const Outcome& outcome);

 private:
  void make_layout();
  void make_actions();

  RunSettings settings_;
  std::string own_output_;  // what the last run of this dialog wrote
  bool yes_;
  int exit_status_ = 0;
  QPushButton* render_;
  QPushButton* cancel_;
  QPushButton* setting_;
};

}  // namespace lexon
