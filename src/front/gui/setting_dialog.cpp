// Every control stands in a table, with its role, its text and its field. A change of a path or of the trace level
// goes into the fields at once; the numbers follow with the next of these, or with OK.
#include "front/gui/setting_dialog.hpp"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "front/gui/controls.hpp"
#include "front/gui/number_edit.hpp"
#include "front/gui/path_edit.hpp"
#include "front/gui/recent.hpp"
#include "run/output_check.hpp"

namespace lexon {

namespace {

// `role` names the controls for tests and tools; texts are translated when they are shown. An ampersand marks the
// letter of the shortcut.
struct PathRow {
  const char* role;
  const char* label;
  const char* help;
  PathUse use;
  bool enabled;
  bool is_needed;       // by every run
  const char* filters;  // as the user sees them; a line for each
  std::string RunSettings::*field;
};

constexpr int kColumns = 90;       // of text, across the dialog
constexpr int kFileColumns = 110;  // across a file dialog

// The texts show the filters as users know them, and `toolkit_filters` makes of them what the toolkit reads.
constexpr const char* kDictionaryFilters =
    QT_TRANSLATE_NOOP("lexon::SettingDialog", "Dictionary Files (*.dic)\nAll Files (*.*)");
constexpr const char* kRuleFilters =
    QT_TRANSLATE_NOOP("lexon::SettingDialog", "Rule Files (*.rul;*.txt)\nAll Files (*.*)\nGrammar Sources (*.lxr)");
constexpr const char* kInputFilters = QT_TRANSLATE_NOOP("lexon::SettingDialog", "Text Files (*.txt)\nAll Files (*.*)");
constexpr const char* kOutputFilters =
    QT_TRANSLATE_NOOP("lexon::SettingDialog", "Text Files (*.txt; *.trc)\nAll Files (*.*)");

// In the order of the rows. The output stands last; `output_edit` relies on that.
constexpr std::array<PathRow, kPathFields> kPathRows{{
    {"dictionary_file", QT_TRANSLATE_NOOP("lexon::SettingDialog", "&W Dictionary"),
     QT_TRANSLATE_NOOP("lexon::SettingDialog",
                       "The word dictionary: the words of the language. lexon-dict build makes it; its index lies in "
                       "the same folder."),
     PathUse::read, true, true, kDictionaryFilters, &RunSettings::dictionary_file},
    {"cr_dictionary_file", QT_TRANSLATE_NOOP("lexon::SettingDialog", "C&R Dictionary"),
     QT_TRANSLATE_NOOP("lexon::SettingDialog",
                       "The co-occurrence dictionary: which words go with which. A run without one leaves this empty."),
     PathUse::read, true, false, kDictionaryFilters, &RunSettings::cr_dictionary_file},
    {"kb_dictionary_file", QT_TRANSLATE_NOOP("lexon::SettingDialog", "&KB Dictionary"),
     QT_TRANSLATE_NOOP("lexon::SettingDialog", "Not in use."), PathUse::read, false, false, kDictionaryFilters,
     &RunSettings::kb_dictionary_file},
    {"rule_file", QT_TRANSLATE_NOOP("lexon::SettingDialog", "R&ules"),
     QT_TRANSLATE_NOOP("lexon::SettingDialog",
                       "The rules, as text, as a grammar source (.lxr) or compiled (.rul). Compiled files are written "
                       "beside the text."),
     PathUse::read, true, true, kRuleFilters, &RunSettings::rule_file},
    {"input_file", QT_TRANSLATE_NOOP("lexon::SettingDialog", "&Input File"),
     QT_TRANSLATE_NOOP("lexon::SettingDialog", "The graphs that sentences are made of."), PathUse::read, true, true,
     kInputFilters, &RunSettings::input_file},
    {"output_file", QT_TRANSLATE_NOOP("lexon::SettingDialog", "&Output File"),
     QT_TRANSLATE_NOOP(
         "lexon::SettingDialog",
         "What the run writes: sentences, messages and the trace. A file that is there is emptied first."),
     PathUse::write, true, true, kOutputFilters, &RunSettings::output_file},
}};

// As for paths; `note` stands behind the control and may be empty.
struct NumberRow {
  const char* role;
  const char* label;
  const char* note;
  const char* help;
  int first;  // of the arrows
  int last;
  std::int32_t RunSettings::*field;
};

constexpr std::array<NumberRow, kNumberFields> kNumberRows{{
    {"start_sentence", QT_TRANSLATE_NOOP("lexon::SettingDialog", "&Start Number of Sentence"), "",
     QT_TRANSLATE_NOOP("lexon::SettingDialog",
                       "The first sentence to render, counted from 1. The arrows go to 100; any number can be typed."),
     1, 100, &RunSettings::start_sentence},
    {"sentence_count", QT_TRANSLATE_NOOP("lexon::SettingDialog", "&Number of Sentences"),
     QT_TRANSLATE_NOOP("lexon::SettingDialog", "0 : all"),
     QT_TRANSLATE_NOOP("lexon::SettingDialog",
                       "How many sentences; 0 is all up to the end of the input. The arrows go to 100; any number can "
                       "be typed."),
     0, 100, &RunSettings::sentence_count},
    {"max_time_per_sentence", QT_TRANSLATE_NOOP("lexon::SettingDialog", "Max &Time per Sentence"),
     QT_TRANSLATE_NOOP("lexon::SettingDialog", "seconds, 0 : limitless"),
     QT_TRANSLATE_NOOP("lexon::SettingDialog",
                       "A sentence that takes more seconds is given up, and the run goes on with the next; 0 is no "
                       "limit. The arrows go to 100; any number can be typed."),
     0, 100, &RunSettings::max_time_per_sentence},
}};

constexpr const char* kLevelHelp = QT_TRANSLATE_NOOP(
    "lexon::SettingDialog",
    "How much of the work is written into the output: 0 is sentences alone, 4 is all. A whole trace is large: try it "
    "on a sentence or two.");
constexpr const char* kConversionHelp =
    QT_TRANSLATE_NOOP("lexon::SettingDialog", "Converts the rules, and stops before the first sentence.");

// The toolkit's list of filters. It takes the pattern from the last brackets and hides these from the user. Here
// "*.*" would hide the files without an extension.
QStringList toolkit_filters(const char* filters) {
  QStringList list;
  for (const QString& shown : SettingDialog::tr(filters).split('\n')) {
    const qsizetype open = shown.lastIndexOf('(');
    QString pattern = shown.sliced(open + 1, shown.size() - open - 2);
    if (pattern == "*.*") pattern = "*";
    list << shown + " (" + pattern.replace(';', ' ') + ")";
  }
  return list;
}

// The folder of the present file, else the one that a file was chosen in last.
void start_from(QFileDialog& dialog, const QString& present) {
  const QFileInfo file(present);
  const QString last = last_folder();
  dialog.setDirectory(!present.isEmpty() && file.dir().exists() ? file.dir()
                                                                : QDir(last.isEmpty() ? QDir::currentPath() : last));
  if (present.isEmpty()) return;
  dialog.selectFile(file.fileName());
  if (!file.fileName().endsWith(".lxr")) return;
  for (const QString& filter : dialog.nameFilters()) {
    if (filter.contains("*.lxr")) dialog.selectNameFilter(filter);
  }
}

// The toolkit's own file dialog, where the desktop has none, cuts sizes and dates off.
void show_whole_columns(QFileDialog& dialog) {
  auto* list = dialog.findChild<QTreeView*>("treeView");
  if (list == nullptr) return;
  dialog.setViewMode(QFileDialog::Detail);
  dialog.resize(dialog.sizeHint().expandedTo({kFileColumns * dialog.fontMetrics().averageCharWidth(), 0}));
  list->header()->setStretchLastSection(false);
  list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
}

// A name without an extension gets that of texts, as long as texts are what is shown.
void have_suffix(QFileDialog& dialog) {
  const auto take = [&dialog](const QString& filter) {
    dialog.setDefaultSuffix(filter.contains("*.txt") ? "txt" : QString());
  };
  take(dialog.selectedNameFilter());
  QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, take);
}

// The help of a control in all three places where users look for it.
void explain(QWidget* control, QLabel* label, const QString& help) {
  for (QWidget* widget : {control, static_cast<QWidget*>(label)}) {
    if (widget == nullptr) continue;
    widget->setToolTip(help);
    widget->setWhatsThis(help);
  }
  if (control->accessibleDescription().isEmpty()) control->setAccessibleDescription(help);
}

// The label that names a control and, by its mnemonic, leads to it.
QLabel* make_row_label(const char* text, QWidget* control) {
  auto* label = new QLabel(SettingDialog::tr(text), control->parentWidget());
  label->setObjectName(control->objectName() + "_label");
  label->setBuddy(control);
  control->setAccessibleName(SettingDialog::tr(text).remove('&'));
  return label;
}

// A row of a short control and a note behind it.
void add_labelled(QGridLayout& rows, const char* text, QWidget* control, const char* note, const char* help) {
  auto* place = new QHBoxLayout;
  place->addWidget(control);
  place->addWidget(new QLabel(*note == '\0' ? QString() : SettingDialog::tr(note), control->parentWidget()), 1);
  const int row = rows.rowCount();
  QLabel* label = make_row_label(text, control);
  explain(control, label, SettingDialog::tr(help));
  rows.addWidget(label, row, 0);
  rows.addLayout(place, row, 1);
}

}  // namespace

// Controls are filled before they are connected, so that filling them reads nothing back.
SettingDialog::SettingDialog(const RunSettings& settings, QWidget* parent) : QDialog(parent), fields_(settings) {
  setObjectName("setting_dialog");
  setWindowTitle(tr("Setting"));
  make_layout();
  write_controls();
  for (PathEdit* path : paths_) connect(path, &QLineEdit::textEdited, this, &SettingDialog::read_controls);
  connect(trace_level_, &QComboBox::editTextChanged, this, &SettingDialog::read_controls);
  auto* help = new QAction(this);
  help->setShortcut(QKeySequence(QKeySequence::HelpContents));
  connect(help, &QAction::triggered, this, [this] { open_manual(this); });
  addAction(help);
  focus_first_empty();
  resize(sizeHint().expandedTo({kColumns * fontMetrics().averageCharWidth(), 0}));
}

// In the order of the rows, by the names that the user sees.
QStringList SettingDialog::empty_fields(const RunSettings& settings) {
  QStringList labels;
  for (const PathRow& it : kPathRows) {
    if (it.is_needed && (settings.*it.field).empty()) labels << tr(it.label).remove('&');
  }
  return labels;
}

// With nothing empty the focus stays where the toolkit puts it: on the first field.
void SettingDialog::focus_first_empty() {
  for (std::size_t i = 0; i < kPathRows.size(); ++i) {
    if (kPathRows[i].is_needed && paths_[i]->text().isEmpty()) return paths_[i]->setFocus();
  }
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
  rows->addWidget(make_buttons(), rows->rowCount(), 0, 1, 3);
}

// A disabled row shows what its field holds and takes nothing.
void SettingDialog::add_path_row(QGridLayout& rows, int row) {
  const PathRow& it = kPathRows[static_cast<std::size_t>(row)];
  auto* path = new PathEdit(it.role, it.use, tr(it.help), this);
  path->setEnabled(it.enabled);
  QLabel* label = make_row_label(it.label, path);
  label->setToolTip(tr(it.help));
  QPushButton* button = make_button((std::string(it.role) + "_browse").c_str(), tr("&Browse"), this);
  button->setAccessibleName(tr("Browse for %1").arg(path->accessibleName()));
  button->setEnabled(it.enabled);
  connect(button, &QPushButton::clicked, this, [this, row] { browse(row); });
  paths_[static_cast<std::size_t>(row)] = path;
  rows.addWidget(label, row, 0);
  rows.addWidget(path, row, 1);
  rows.addWidget(button, row, 2);
}

// The limits of the row are those of its arrows alone.
void SettingDialog::add_number_row(QGridLayout& rows, int row) {
  const NumberRow& it = kNumberRows[static_cast<std::size_t>(row)];
  auto* number = new NumberEdit(it.first, it.last, this);
  number->setObjectName(it.role);
  numbers_[static_cast<std::size_t>(row)] = number;
  add_labelled(rows, it.label, number, it.note, it.help);
}

// A list that can be typed into: the field takes any number, as the command line does.
void SettingDialog::add_trace_row(QGridLayout& rows) {
  trace_level_ = new QComboBox(this);
  trace_level_->setObjectName("trace_level");
  trace_level_->addItems({"0", "1", "2", "3", "4"});
  trace_level_->setEditable(true);
  trace_level_->setInsertPolicy(QComboBox::NoInsert);
  trace_level_->setValidator(new QIntValidator(trace_level_));
  trace_level_->setMinimumWidth(numbers_.front()->sizeHint().width());
  add_labelled(rows, QT_TRANSLATE_NOOP("lexon::SettingDialog", "Output Trace &Level"), trace_level_,
               QT_TRANSLATE_NOOP("lexon::SettingDialog", "0 : text alone"), kLevelHelp);
  trace_level_->lineEdit()->setAccessibleName(trace_level_->accessibleName());
}

// A click flips the field.
void SettingDialog::add_check_row(QGridLayout& rows) {
  rules_conversion_only_ = new QCheckBox(tr("Rules &Conversion Only"), this);
  rules_conversion_only_->setObjectName("rules_conversion_only");
  explain(rules_conversion_only_, nullptr, tr(kConversionHelp));
  connect(rules_conversion_only_, &QCheckBox::clicked, this,
          [this] { fields_.rules_conversion_only = !fields_.rules_conversion_only; });
  rows.addWidget(rules_conversion_only_, rows.rowCount(), 1);
}

// Help and projects at the left, OK and Cancel in the order of the platform at the right.
QWidget* SettingDialog::make_buttons() {
  auto* whole = new QWidget(this);
  auto* row = new QHBoxLayout(whole);
  row->setContentsMargins(0, 0, 0, 0);
  QPushButton* projects = make_projects_button(whole);
  QPushButton* help = make_button("help", tr("&Help"), whole);
  auto* box = new QDialogButtonBox(whole);
  QPushButton* ok = make_button("ok", tr("OK"), box);
  QPushButton* cancel = make_button("cancel", tr("Cancel"), box);
  box->addButton(ok, QDialogButtonBox::AcceptRole);
  box->addButton(cancel, QDialogButtonBox::RejectRole);
  row->addWidget(projects);
  row->addWidget(help);
  row->addStretch(1);
  row->addWidget(box);
  help->setToolTip(tr("Opens the manual at this dialog"));
  ok->setDefault(true);
  connect(help, &QPushButton::clicked, this, [this] { open_manual(this); });
  connect(box, &QDialogButtonBox::accepted, this, &SettingDialog::accept);
  connect(box, &QDialogButtonBox::rejected, this, &SettingDialog::reject);
  return whole;
}

// Without a project there is nothing to choose, and the button says so by being disabled.
QPushButton* SettingDialog::make_projects_button(QWidget* parent) {
  QPushButton* button = make_button("projects", tr("Recent &Projects"), parent);
  button->setToolTip(tr("Fills the fields with the settings of an earlier run"));
  auto* menu = new QMenu(button);
  menu->setToolTipsVisible(true);
  fill_projects(*menu);
  button->setMenu(menu);
  button->setEnabled(!menu->isEmpty());
  return button;
}

// An ampersand in a name is no mnemonic.
void SettingDialog::fill_projects(QMenu& menu) {
  const QList<RunSettings> projects = recent_projects();
  for (const RunSettings& project : projects) {
    QAction* action = menu.addAction(project_name(project).replace('&', "&&"));
    action->setToolTip(to_text(project.rule_file) + "\n" + to_text(project.input_file));
    connect(action, &QAction::triggered, this, [this, project] { take_project(project); });
  }
  if (projects.isEmpty()) return;
  menu.addSeparator();
  connect(menu.addAction(tr("&Forget These")), &QAction::triggered, this, [this] {
    forget_projects();
    findChild<QPushButton*>("projects")->setEnabled(false);
  });
}

// What the dialog does not show stays as it is.
void SettingDialog::take_project(const RunSettings& project) {
  for (const PathRow& it : kPathRows) fields_.*it.field = project.*it.field;
  for (const NumberRow& it : kNumberRows) fields_.*it.field = project.*it.field;
  fields_.trace_level = project.trace_level;
  fields_.rules_conversion_only = project.rules_conversion_only;
  write_controls();
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

// The level comes behind paths and numbers: a change of it reads all controls back.
void SettingDialog::write_controls() {
  for (std::size_t i = 0; i < kPathRows.size(); ++i) paths_[i]->setText(to_text(fields_.*kPathRows[i].field));
  for (std::size_t i = 0; i < kNumberRows.size(); ++i) numbers_[i]->setValue(fields_.*kNumberRows[i].field);
  trace_level_->setCurrentText(QString::number(fields_.trace_level));
  rules_conversion_only_->setChecked(fields_.rules_conversion_only);
  mark_conflict();
}

// The last row of the table.
PathEdit& SettingDialog::output_edit() const {
  return *paths_.back();
}

// What would be overwritten shows at the output, whichever field was changed last.
void SettingDialog::mark_conflict() {
  output_edit().set_conflict(to_text(output_conflict(fields_)));
}

// A file dialog that is cancelled leaves the field as it is. The current folder stays the same.
void SettingDialog::browse(int row) {
  read_controls();
  const PathRow& it = kPathRows[static_cast<std::size_t>(row)];
  QFileDialog dialog(this);
  dialog.setObjectName(QString(it.role) + "_dialog");
  dialog.setWindowTitle(paths_[static_cast<std::size_t>(row)]->accessibleName());
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setAcceptMode(it.use == PathUse::read ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
  dialog.setFileMode(it.use == PathUse::read ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
  dialog.setNameFilters(toolkit_filters(it.filters));
  start_from(dialog, to_text(fields_.*it.field));
  if (it.use == PathUse::write) have_suffix(dialog);
  show_whole_columns(dialog);
  if (dialog.exec() != QDialog::Accepted) return;
  const QString chosen = dialog.selectedFiles().constFirst();
  remember_folder(QFileInfo(chosen).absolutePath());
  fields_.*it.field = to_path(chosen);
  if (it.use == PathUse::write) own_output_ = fields_.*it.field;  // the file dialog has asked
  write_controls();
}

// An output that is also an input is marked, and the run will not start; there is nothing to ask.
bool SettingDialog::keeps_other_output() {
  const QFileInfo file(to_text(fields_.output_file));
  const bool is_other = file.isFile() && file.size() != 0 && fields_.output_file != own_output_;
  // An empty file is nothing that could be lost, and the output of this program's own run may be written over.
  if (!asks_ || !is_other || !output_edit().fault().isEmpty()) return false;
  QMessageBox box(QMessageBox::Question, "Lexon",
                  tr("%1 is there already. Shall the run write over it?").arg(file.filePath()),
                  QMessageBox::Yes | QMessageBox::No, this);
  box.setObjectName("ask_overwrite");
  box.setTextFormat(Qt::PlainText);
  if (box.exec() == QMessageBox::Yes) return false;
  output_edit().setFocus();
  return true;
}

// The number fields tell nothing of their changes: they are read here.
void SettingDialog::accept() {
  read_controls();
  if (!keeps_other_output()) QDialog::accept();
}

}  // namespace lexon
