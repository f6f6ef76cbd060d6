// Every control stands in a table, with its role, its text and its field. A change of a path or of the trace level
// goes into the fields at once; the numbers follow with the next of these, or with OK.
#include "front/gui/setting_dialog.hpp"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QIntValidator>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "front/gui/controls.hpp"
#include "front/gui/number_edit.hpp"
#include "front/gui/path_edit.hpp"
#include "run/output_check.hpp"

namespace lexon {

namespace {

struct PathRow {
  const char* role;
  const char* label;
  PathUse use;
  bool enabled;
  const char* filters;  // as the user sees them; a line for each
  std::string RunSettings::*field;
};

constexpr int kColumns = 90;  // of text, across the dialog

constexpr const char* kDictionaryFilters = "Dictionary Files (*.dic)\nAll Files (*.*)";

constexpr std::array<PathRow, kPathFields> kPathRows{{
    {"dictionary_file", "&W Dictionary", PathUse::read, true, kDictionaryFilters, &RunSettings::dictionary_file},
    {"cr_dictionary_file", "C&R Dictionary", PathUse::read, true, kDictionaryFilters, &RunSettings::cr_dictionary_file},
    {"kb_dictionary_file", "&KB Dictionary", PathUse::read, false, kDictionaryFilters,
     &RunSettings::kb_dictionary_file},
    {"rule_file", "R&ules", PathUse::read, true, "Rule Files (*.rul;*.txt)\nAll Files (*.*)", &RunSettings::rule_file},
    {"input_file", "&Input File", PathUse::read, true, "Text Files (*.txt)\nAll Files (*.*)", &RunSettings::input_file},
    {"output_file", "&Output File", PathUse::write, true, "Text Files (*.txt; *.trc)\nAll Files (*.*)",
     &RunSettings::output_file},
}};

struct NumberRow {
  const char* role;
  const char* label;
  const char* note;
  int first;  // of the arrows
  int last;
  std::int32_t RunSettings::*field;
};

constexpr std::array<NumberRow, kNumberFields> kNumberRows{{
    {"start_sentence", "&Start Number of Sentence", "", 1, 100, &RunSettings::start_sentence},
    {"sentence_count", "&Number of Sentences", "0 : all", 0, 100, &RunSettings::sentence_count},
    {"max_time_per_sentence", "Max &Time per Sentence", "seconds, 0 : limitless", 0, 100,
     &RunSettings::max_time_per_sentence},
}};

// The toolkit's list of filters. It takes the pattern from the last brackets and hides these from the user. Here
// "*.*" would hide the files without an extension.
QStringList toolkit_filters(const char* filters) {
  QStringList list;
  for (const QString& shown : QString(filters).split('\n')) {
    const qsizetype open = shown.lastIndexOf('(');
    QString pattern = shown.sliced(open + 1, shown.size() - open - 2);
    if (pattern == "*.*") pattern = "*";
    list << shown + " (" + pattern.replace(';', ' ') + ")";
  }
  return list;
}

void start_from(QFileDialog& dialog, const QString& present) {
  const QFileInfo file(present);
  dialog.setDirectory(!present.isEmpty() && file.dir().exists() ? file.dir() : QDir::current());
  if (!present.isEmpty()) dialog.selectFile(file.fileName());
}

// The label that names a control and, by its mnemonic, leads to it.
QLabel* make_row_label(const char* text, QWidget* control) {
  auto* label = new QLabel(text, control->parentWidget());
  label->setObjectName(control->objectName() + "_label");
  label->setBuddy(control);
  control->setAccessibleName(QString(text).remove('&'));
  return label;
}

// A row of a short control and a note behind it.
void add_labelled(QGridLayout& rows, const char* label, QWidget* control, const char* note) {
  auto* place = new QHBoxLayout;
  place->addWidget(control);
  place->addWidget(new QLabel(note, control->parentWidget()), 1);
  const int row = rows.rowCount();
  rows.addWidget(make_row_label(label, control), row, 0);
  rows.addLayout(place, row, 1);
}

}  // namespace

SettingDialog::SettingDialog(const RunSettings& settings, QWidget* parent) : QDialog(parent), fields_(settings) {
  setObjectName("setting_dialog");
  setWindowTitle("Setting");
  make_layout();
  write_controls();
  for (PathEdit* path : paths_) connect(path, &QLineEdit::textEdited, this, &SettingDialog::read_controls);
  connect(trace_level_, &QComboBox::editTextChanged, this, &SettingDialog::read_controls);
  resize(sizeHint().expandedTo({kColumns * fontMetrics().averageCharWidth(), 0}));
}

// Rows of a label, a control and, behind a path, its button.
void SettingDialog::make_layout() {
  auto* rows = new QGridLayout(this);
  const int gap = fontMetrics().height();
  rows->setContentsMargins(gap, gap, gap, gap);
  rows->setColumnStretch(1, 1);
  for (int row = 0; row < kPathFields; ++row) add_path_row(*rows, row);
  rows->setRowMinimumHeight(rows->rowCount(), gap / 2);
  for (int row = 0; row < kNumberFields; ++row) add_number_row(*rows, row);
  add_trace_row(*rows);
  add_check_row(*rows);
  rows->setRowMinimumHeight(rows->rowCount(), gap / 2);
  rows->setRowStretch(rows->rowCount() - 1, 1);
  rows->addWidget(make_button_box(), rows->rowCount(), 0, 1, 3);
}

void SettingDialog::add_path_row(QGridLayout& rows, int row) {
  const PathRow& it = kPathRows[static_cast<std::size_t>(row)];
  auto* path = new PathEdit(it.role, it.use, this);
  path->setEnabled(it.enabled);
  QLabel* label = make_row_label(it.label, path);
  QPushButton* button = make_button((std::string(it.role) + "_browse").c_str(), "&Browse", this);
  button->setAccessibleName("Browse for " + path->accessibleName());
  button->setEnabled(it.enabled);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, [this, row] { browse(row); });
  paths_[static_cast<std::size_t>(row)] = path;
  rows.addWidget(label, row, 0);
  rows.addWidget(path, row, 1);
  rows.addWidget(button, row, 2);
}

void SettingDialog::add_number_row(QGridLayout& rows, int row) {
  const NumberRow& it = kNumberRows[static_cast<std::size_t>(row)];
  auto* number = new NumberEdit(it.first, it.last, this);
  number->setObjectName(it.role);
  numbers_[static_cast<std::size_t>(row)] = number;
  add_labelled(rows, it.label, number, it.note);
}

void SettingDialog::add_trace_row(QGridLayout& rows) {
  trace_level_ = new QComboBox(this);
  trace_level_->setObjectName("trace_level");
  trace_level_->addItems({"0", "1", "2", "3", "4"});
  trace_level_->setEditable(true);
  trace_level_->setInsertPolicy(QComboBox::NoInsert);
  trace_level_->setValidator(new QIntValidator(trace_level_));
  trace_level_->setMinimumWidth(numbers_.front()->sizeHint().width());
  add_labelled(rows, "Output Trace &Level", trace_level_, "0 : text alone");
}

void SettingDialog::add_check_row(QGridLayout& rows) {
  rules_conversion_only_ = new QCheckBox("Rules &Conversion Only", this);
  rules_conversion_only_->setObjectName("rules_conversion_only");
  connect(rules_conversion_only_, &QCheckBox::clicked, this,
          [this] { fields_.rules_conversion_only = !fields_.rules_conversion_only; });
  rows.addWidget(rules_conversion_only_, rows.rowCount(), 1);
}

QWidget* SettingDialog::make_button_box() {
  auto* box = new QDialogButtonBox(this);
  QPushButton* ok = make_button("ok", "OK", box);
  box->addButton(ok, QDialogButtonBox::AcceptRole);
  box->addButton(make_button("cancel", "Cancel", box), QDialogButtonBox::RejectRole);
  ok->setDefault(true);
  connect(box, &QDialogButtonBox::accepted, this, &SettingDialog::accept);
  connect(box, &QDialogButtonBox::rejected, this, &SettingDialog::reject);
  return box;
}

// A path that still reads as it was written keeps its bytes, which need not be characters. A level that is no number
// yet leaves the field alone.
void SettingDialog::read_controls() {
  for (std::size_t i = 0; i < kPathRows.size(); ++i) {
    std::string& field = fields_.*kPathRows[i].field;
    if (const QString text = paths_[i]->text(); text != to_text(field)) field = to_path(text);
  }
  for (std::size_t i = 0; i < kNumberRows.size(); ++i) fields_.*kNumberRows[i].field = numbers_[i]->value();
  bool is_number = false;
  const int level = trace_level_->currentText().toInt(&is_number);
  if (is_number) fields_.trace_level = level;
  mark_conflict();
}

void SettingDialog::write_controls() {
  for (std::size_t i = 0; i < kPathRows.size(); ++i) paths_[i]->setText(to_text(fields_.*kPathRows[i].field));
  for (std::size_t i = 0; i < kNumberRows.size(); ++i) numbers_[i]->setValue(fields_.*kNumberRows[i].field);
  trace_level_->setCurrentText(QString::number(fields_.trace_level));
  rules_conversion_only_->setChecked(fields_.rules_conversion_only);
  mark_conflict();
}

PathEdit& SettingDialog::output_edit() const {
  return *paths_.back();
}

void SettingDialog::mark_conflict() {
  output_edit().set_conflict(to_text(output_conflict(fields_)));
}

void SettingDialog::browse(int row) {
  read_controls();
  const PathRow& it = kPathRows[static_cast<std::size_t>(row)];
  QFileDialog dialog(this);
  dialog.setObjectName(QString(it.role) + "_dialog");
  dialog.setWindowTitle(paths_[static_cast<std::size_t>(row)]->accessibleName());
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setAcceptMode(it.use == PathUse::read ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
  dialog.setFileMode(it.use == PathUse::read ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
  dialog.setNameFilters(toolkit_filters(it.filters));
  start_from(dialog, to_text(fields_.*it.field));
  if (dialog.exec() != QDialog::Accepted) return;
  fields_.*it.field = to_path(dialog.selectedFiles().constFirst());
  if (it.use == PathUse::write) own_output_ = fields_.*it.field;  // the file dialog has asked
  write_controls();
}

// An output that is also an input is marked, and the run will not start; there is nothing to ask.
bool SettingDialog::keeps_other_output() {
  const QFileInfo file(to_text(fields_.output_file));
  const bool is_other = file.isFile() && file.size() != 0 && fields_.output_file != own_output_;
  if (!asks_ || !is_other || !output_edit().fault().isEmpty()) return false;
  QMessageBox box(QMessageBox::Question, "Lexon", file.filePath() + " is there already. Shall the run write over it?",
                  QMessageBox::Yes | QMessageBox::No, this);
  box.setObjectName("ask_overwrite");
  box.setTextFormat(Qt::PlainText);
  if (box.exec() == QMessageBox::Yes) return false;
  output_edit().setFocus();
  return true;
}

void SettingDialog::accept() {
  read_controls();
  if (!keeps_other_output()) QDialog::accept();
}

}  // namespace lexon
