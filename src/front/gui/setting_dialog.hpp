// The Setting dialog: the paths and numbers of a run.
#pragma once

#include <QDialog>

#include <array>

#include "run/settings.hpp"

class QCheckBox;
class QComboBox;
class QGridLayout;
class QMenu;
class QPushButton;

namespace lexon {

class NumberEdit;
class PathEdit;

inline constexpr int kPathFields = 6;
inline constexpr int kNumberFields = 3;

// Works on fields of its own: what was given stays as it is, and the caller takes the fields over after OK.
class SettingDialog : public QDialog {
  Q_OBJECT

 public:
  SettingDialog(const RunSettings& settings, QWidget* parent);

  [[nodiscard]] const RunSettings& fields() const { return fields_; }

  // The labels of the paths that a run needs and these settings do not name.
  [[nodiscard]] static QStringList empty_fields(const RunSettings& settings);

  // OK asks before it takes an output file that is there and holds something, except this one.
  void may_overwrite(const std::string& output_file) { own_output_ = output_file; }
  // OK asks nothing.
  void ask_nothing() { asks_ = false; }

  void accept() override;

 private:
  void make_layout();
  void add_path_row(QGridLayout& rows, int row);
  void add_number_row(QGridLayout& rows, int row);
  void add_trace_row(QGridLayout& rows);
  void add_check_row(QGridLayout& rows);
  [[nodiscard]] QWidget* make_buttons();
  [[nodiscard]] QPushButton* make_projects_button(QWidget* parent);
  void fill_projects(QMenu& menu);
  void take_project(const RunSettings& project);
  void focus_first_empty();

  // Between the controls and the fields.
  void read_controls();
  void write_controls();
  // Lets the user choose a file for a row of paths.
  void browse(int row);
  [[nodiscard]] PathEdit& output_edit() const;
  void mark_conflict();
  // True if the user does not want a file written over that is there; the dialog stays then.
  [[nodiscard]] bool keeps_other_output();

  RunSettings fields_;      // what the controls show, but for numbers, which follow later
  std::string own_output_;  // may be written over without a question; empty: none
  bool asks_ = true;
  // In the order of the tables in the source. All controls belong to the dialog.
  std::array<PathEdit*, kPathFields> paths_{};
  std::array<NumberEdit*, kNumberFields> numbers_{};
  QComboBox* trace_level_ = nullptr;
  QCheckBox* rules_conversion_only_ = nullptr;
};

}  // namespace lexon
