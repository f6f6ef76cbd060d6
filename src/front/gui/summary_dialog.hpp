// What came of a run, behind its end.
#pragma once

#include <QDialog>
#include <QStringList>

#include <cstdint>
#include <vector>

#include "front/outcome.hpp"
#include "run/report.hpp"
#include "run/settings.hpp"

class QGridLayout;
class QLabel;
class QProcess;
class QPushButton;
class QTreeWidget;

namespace lexon {

// A sentence that failed or ran out of time.
struct LostSentence {
  std::int64_t number = 0;  // in the input
  SentenceReport report;
};

inline constexpr std::size_t kKeptSentences = 1000;  // that were lost, in a summary
inline constexpr int kPageSentences = 50;            // on a page that nobody has chosen sentences for

struct RunSummary {
  RunSettings settings;
  Outcome outcome;
  double seconds = 0.0;
  std::int64_t first = 1;          // sentence
  std::int64_t unclosed_at = 0;    // line of the sentence that the end of the input ended; 0: there is none
  std::vector<LostSentence> lost;  // the first of them, kKeptSentences at most
  QStringList notes;
};

// Tells what was done and where it lies, opens it, and shows why sentences failed. A page of the run comes from the
// workbench, where that is installed.
class SummaryDialog : public QDialog {
  Q_OBJECT

 public:
  SummaryDialog(const RunSummary& summary, QWidget* parent);

  // Did the user ask for a new start with the same settings?
  [[nodiscard]] bool wants_again() const { return wants_again_; }

  // The words of the command that writes the page: of the sentence in `row` of those that were lost; -1: of the run,
  // its lost sentences or, without any, its first ones.
  [[nodiscard]] QStringList page_words(int row, const QString& page) const;

 private:
  void make_layout();
  void add_row(QGridLayout& rows, const char* role, const QString& label, const QString& text);
  void add_lost(QGridLayout& rows);
  [[nodiscard]] QWidget* make_buttons();
  [[nodiscard]] QString headline() const;
  [[nodiscard]] QString counts() const;
  void show_detail();
  void look_for_workbench();
  void open_page();
  void page_is_made(int exit_code);

  RunSummary summary_;
  bool wants_again_ = false;
  QString page_;
  QTreeWidget* lost_ = nullptr;
  QLabel* detail_ = nullptr;
  QPushButton* open_page_ = nullptr;
  QProcess* workbench_;
};

}  // namespace lexon
