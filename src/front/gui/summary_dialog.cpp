#include "front/gui/summary_dialog.hpp"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QTreeWidget>

#include <algorithm>

#include "front/gui/controls.hpp"

namespace lexon {

namespace {

// The name of the program that makes pages.
constexpr const char* kWorkbench = "lexon-lab";
constexpr int kColumns = 80;    // of text, across the dialog
constexpr int kListLines = 8;   // of lost sentences, at first
constexpr int kShownNotes = 5;  // in the window; all of them stand on standard error

// Here only for who collects the texts to translate.
// What reports call a sentence that was lost.
[[maybe_unused]] constexpr const char* kStatuses[] = {
    QT_TRANSLATE_NOOP("lexon::SummaryDialog", "failed"),
    QT_TRANSLATE_NOOP("lexon::SummaryDialog", "over time"),
};

// The workbench that was installed with this program, else the one that the shell would find; empty if there is none.
QString workbench_path() {
  const QString beside = QCoreApplication::applicationDirPath() + "/" + kWorkbench;
  return QFileInfo(beside).isExecutable() ? beside : QStandardPaths::findExecutable(kWorkbench);
}

// One page for an output, so that pages do not pile up.
QString page_path(const RunSettings& settings) {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
  QDir().mkpath(folder);
  const QByteArray output = QByteArray::fromStdString(settings.output_file);
  return folder + "/page-" + QCryptographicHash::hash(output, QCryptographicHash::Sha1).toHex().left(12) + ".html";
}

// Words and relations of a report, whose bytes need not be characters.
QStringList texts_of(const std::vector<std::string>& texts) {
  QStringList list;
  for (const std::string& text : texts) list << to_text(text);
  return list;
}

// What the workbench knows a sentence by, whatever its label: several may have the same.
QString name_of(std::int64_t number) {
  return "#" + QString::number(number);
}

}  // namespace

// The window is there at once; whether there can be pages shows a moment later.
SummaryDialog::SummaryDialog(const RunSummary& summary, QWidget* parent)
    : QDialog(parent), summary_(summary), workbench_(new QProcess(this)) {
  setObjectName("summary_dialog");
  setWindowTitle(tr("The run has ended"));
  make_layout();
  look_for_workbench();
}

void SummaryDialog::make_layout() {
  auto* rows = new QGridLayout(this);
  const int gap = fontMetrics().height();
  rows->setContentsMargins(gap, gap, gap, gap);
  rows->setColumnStretch(1, 1);
  QLabel* head = make_label("headline", headline(), this);
  QFont font = head->font();
  font.setBold(true);
  head->setFont(font);
  rows->addWidget(head, 0, 0, 1, 2);
  // A conversion has no sentences to count.
  if (!summary_.settings.rules_conversion_only) add_row(*rows, "counts", tr("Sentences:"), counts());
  add_row(*rows, "output", tr("Output:"), QDir::toNativeSeparators(to_text(summary_.settings.output_file)));
  if (!summary_.notes.isEmpty()) {
    QStringList notes = summary_.notes.first(std::min<qsizetype>(summary_.notes.size(), kShownNotes));
    const auto more = static_cast<int>(summary_.notes.size() - notes.size());
    if (more > 0) notes << tr("and %n more, on standard error", nullptr, more);
    add_row(*rows, "notes", tr("Notes:"), notes.join('\n'));
  }
  if (!summary_.lost.empty()) add_lost(*rows);
  rows->setRowMinimumHeight(rows->rowCount(), gap / 2);
  rows->addWidget(make_buttons(), rows->rowCount(), 0, 1, 2);
  resize(sizeHint().expandedTo({kColumns * fontMetrics().averageCharWidth(), 0}));
}

// The value can be selected, and is read out together with its label.
void SummaryDialog::add_row(QGridLayout& rows, const char* role, const QString& label, const QString& text) {
  const int row = rows.rowCount();
  QLabel* value = make_label(role, text, this);
  value->setWordWrap(true);
  value->setTextInteractionFlags(Qt::TextSelectableByMouse);
  value->setAccessibleName(label + " " + text);
  rows.addWidget(make_label((std::string(role) + "_label").c_str(), label, this), row, 0, Qt::AlignTop);
  rows.addWidget(value, row, 1);
}

// The sentences that failed, and below them what is known of the one that is chosen.
void SummaryDialog::add_lost(QGridLayout& rows) {
  lost_ = new QTreeWidget(this);
  lost_->setObjectName("failures");
  lost_->setAccessibleName(tr("Sentences that were not rendered"));
  lost_->setHeaderLabels({tr("No."), tr("Sentence"), tr("What happened"), tr("Seconds")});
  lost_->setRootIsDecorated(false);
  lost_->setUniformRowHeights(true);
  for (const LostSentence& lost : summary_.lost) {
    auto* row = new QTreeWidgetItem(
        lost_, {QString::number(lost.number), to_text(lost.report.label), tr(lost.report.status.c_str()),
                QLocale().toString(lost.report.milliseconds / 1000.0, 'f', 3)});
    // Numbers stand at the right.
    for (const int column : {0, 3}) row->setTextAlignment(column, Qt::AlignRight);
  }
  for (int column = 0; column < lost_->columnCount(); ++column) lost_->resizeColumnToContents(column);
  lost_->header()->setStretchLastSection(false);
  lost_->header()->setSectionResizeMode(1, QHeaderView::Stretch);
  lost_->setMinimumHeight(kListLines * fontMetrics().lineSpacing());
  detail_ = make_label("detail", {}, this);
  detail_->setWordWrap(true);
  detail_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  detail_->setMinimumHeight(2 * fontMetrics().lineSpacing());
  connect(lost_, &QTreeWidget::currentItemChanged, this, &SummaryDialog::show_detail);
  connect(lost_, &QTreeWidget::itemActivated, this, &SummaryDialog::open_page);
  const int row = rows.rowCount();
  rows.addWidget(lost_, row, 0, 1, 2);
  rows.setRowStretch(row, 1);
  rows.addWidget(detail_, row + 1, 0, 1, 2);
  lost_->setCurrentItem(lost_->topLevelItem(0));
}

// Return closes: what starts a program wants a button of its own.
QWidget* SummaryDialog::make_buttons() {
  auto* box = new QDialogButtonBox(this);
  QPushButton* output = make_button("open_output", tr("Open &Output"), box);
  open_page_ = make_button("open_page", tr("Open &Page"), box);
  QPushButton* again = make_button("again", tr("Start &Again"), box);
  QPushButton* close = make_button("close", tr("&Close"), box);
  for (QPushButton* button : {output, open_page_, again}) box->addButton(button, QDialogButtonBox::ActionRole);
  box->addButton(close, QDialogButtonBox::RejectRole);
  output->setToolTip(tr("Opens the output with the program that the desktop has for texts"));
  open_page_->setToolTip(tr("Shows how the sentence in the list, or the first ones, came about"));
  again->setToolTip(tr("Ends this program and starts it anew with the same settings"));
  open_page_->setEnabled(false);
  close->setDefault(true);
  connect(output, &QPushButton::clicked, this, [this] { open_file(to_text(summary_.settings.output_file), this); });
  connect(open_page_, &QPushButton::clicked, this, &SummaryDialog::open_page);
  connect(again, &QPushButton::clicked, this, [this] {
    wants_again_ = true;
    accept();
  });
  connect(box, &QDialogButtonBox::rejected, this, &SummaryDialog::reject);
  return box;
}

// What is worst comes first.
QString SummaryDialog::headline() const {
  const Outcome& outcome = summary_.outcome;
  if (outcome.output_failed) return tr("The output could not be written whole.");
  if (outcome.cancelled) return tr("The run was cancelled. What was rendered before is kept.");
  if (outcome.rules_failed) return tr("The rules could not be converted; the output says why.");
  if (summary_.settings.rules_conversion_only) return tr("The rules are converted.");
  if (outcome.failed + outcome.over_time != 0) return tr("The run is done, but not every sentence could be rendered.");
  if (outcome.done == 0) return tr("The input has no sentence there.");
  return tr("All sentences are done.");
}

// Beyond what was done only what happened.
QString SummaryDialog::counts() const {
  const QLocale locale;
  const auto counted = [&locale](const QString& text, std::int64_t count) {
    return text.arg(locale.toString(static_cast<qlonglong>(count)));
  };
  const Outcome& outcome = summary_.outcome;
  QStringList texts{counted(tr("%1 done"), outcome.done)};
  if (outcome.failed != 0) texts << counted(tr("%1 failed"), outcome.failed);
  if (outcome.over_time != 0) texts << counted(tr("%1 over time"), outcome.over_time);
  if (summary_.unclosed_at != 0) texts << counted(tr("1 unclosed, in line %1"), summary_.unclosed_at);
  if (outcome.left_out != 0) texts << counted(tr("%1 lines of graphs left out"), outcome.left_out);
  return texts.join(", ") + tr("; %1 seconds").arg(locale.toString(summary_.seconds, 'f', 1));
}

// Of the report of that sentence, which the run kept; nothing is rendered again.
void SummaryDialog::show_detail() {
  const int row = lost_->indexOfTopLevelItem(lost_->currentItem());
  if (row < 0) return detail_->clear();
  const SentenceReport& report = summary_.lost[static_cast<std::size_t>(row)].report;
  QStringList texts{tr("%1 steps, %2 of them taken back.").arg(report.steps).arg(report.steps_back)};
  if (!report.unknown_words.empty()) {
    texts << tr("Not in the dictionary: %1.").arg(texts_of(report.unknown_words).join(", "));
  }
  if (!report.unused_relations.empty()) {
    texts << tr("Relations left over: %1.").arg(texts_of(report.unused_relations).join(", "));
  }
  detail_->setText(texts.join(' '));
}

// An older workbench makes no pages.
void SummaryDialog::look_for_workbench() {
  const QString workbench = workbench_path();
  if (workbench.isEmpty() || summary_.settings.rules_conversion_only) return open_page_->hide();
  connect(workbench_, &QProcess::finished, this, [this](int exit_code, QProcess::ExitStatus status) {
    disconnect(workbench_, &QProcess::finished, nullptr, nullptr);
    connect(workbench_, &QProcess::finished, this, &SummaryDialog::page_is_made);
    // It is asked for its help: that needs no files and is over at once.
    const bool makes_pages = status == QProcess::NormalExit && exit_code == 0;
    open_page_->setEnabled(makes_pages);
    open_page_->setVisible(makes_pages);
  });
  workbench_->start(workbench, {"view", "--help"});
}

// The same files and switches as the run, so that the page shows what happened there.
QStringList SummaryDialog::page_words(int row, const QString& page) const {
  const RunSettings& settings = summary_.settings;
  QStringList words{"view", "-d", to_text(settings.dictionary_file), "-r", to_text(settings.rule_file)};
  if (!settings.cr_dictionary_file.empty()) words << "-c" << to_text(settings.cr_dictionary_file);
  if (!settings.post_edit) words << "--no-post-edit";
  words << "-T" << QString::number(settings.max_time_per_sentence) << "-o" << page;
  // The chosen one, else the first that were lost, else the first of the run.
  QStringList sentences;
  if (row >= 0) {
    sentences << name_of(summary_.lost[static_cast<std::size_t>(row)].number);
  } else if (!summary_.lost.empty()) {
    const std::size_t shown = std::min(summary_.lost.size(), static_cast<std::size_t>(kPageSentences));
    for (std::size_t i = 0; i < shown; ++i) sentences << name_of(summary_.lost[i].number);
  } else {
    const std::int64_t shown = std::min<std::int64_t>(summary_.outcome.done, kPageSentences);
    for (std::int64_t i = 0; i < shown; ++i) sentences << name_of(summary_.first + i);
  }
  for (const QString& sentence : sentences) words << "-s" << sentence;
  return words << to_text(settings.input_file);
}

// The workbench renders the sentences once more and may take a while; the button waits for it, the window does not.
void SummaryDialog::open_page() {
  // A double click on the list comes here too, also while a page is being made.
  if (!open_page_->isEnabled()) return;
  const int row = lost_ == nullptr ? -1 : lost_->indexOfTopLevelItem(lost_->currentItem());
  open_page_->setEnabled(false);
  // Kept, since the workbench tells its end and not what it wrote.
  page_ = page_path(summary_.settings);
  workbench_->start(workbench_path(), page_words(row, page_));
}

// Status 2 is a wrong command line: nothing was written then, and an old page may stand there.
void SummaryDialog::page_is_made(int exit_code) {
  open_page_->setEnabled(true);
  // A page of sentences that fail is a page too.
  if (exit_code != 2 && QFileInfo(page_).size() > 0) return open_file(page_, this);
  QMessageBox box(QMessageBox::Warning, "Lexon",
                  tr("The page could not be made.") + "\n\n" + QString::fromUtf8(workbench_->readAllStandardError()),
                  QMessageBox::Ok, this);
  box.setObjectName("cannot_open");
  box.setTextFormat(Qt::PlainText);
  box.exec();
}

}  // namespace lexon
