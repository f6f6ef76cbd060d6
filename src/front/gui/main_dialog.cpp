#include "front/gui/main_dialog.hpp"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "front/gui/about_dialog.hpp"
#include "front/gui/controls.hpp"
#include "front/gui/dialog_host.hpp"
#include "front/gui/opening.hpp"
#include "front/gui/picture.hpp"
#include "front/gui/recent.hpp"
#include "front/gui/setting_dialog.hpp"
#include "front/process.hpp"
#include "front/signals.hpp"
#include "run/driver.hpp"
#include "run/output_check.hpp"

namespace lexon {

namespace {

// Height of the picture, in lines of text, so that it grows with the font; then the size of the title beside other
// text.
constexpr int kPictureLines = 6;
constexpr double kTitleScale = 1.6;

QLabel* make_title(QWidget* parent) {
  QLabel* title = make_label("title", "Lexon", parent);
  QFont font = title->font();
  font.setPointSizeF(font.pointSizeF() * kTitleScale);
  font.setBold(true);
  title->setFont(font);
  return title;
}

}  // namespace

// Without a word about threads the dialogs use all processors; the program in a terminal uses one.
MainDialog::MainDialog(const CommandLine& line)
    : settings_(line.settings),
      yes_(line.yes),
      render_(make_button("render", tr("&Render"), this)),
      setting_(make_button("setting", tr("&Setting"), this)),
      cancel_(make_button("cancel", tr("&Cancel"), this)),
      notice_(make_label("notice", {}, this)) {
  settings_.jobs = line.jobs.value_or(0);
  for (const auto* notes : {&line.notes, &line.path_faults}) {
    for (const std::string& note : *notes) {
      tell_line("lexon-gui: " + note);
      notes_ << to_text(note);
    }
  }
  setObjectName("main_dialog");
  setWindowTitle("Lexon");
  setWindowIcon(program_icon());
  // No maximise box: the layout has a fixed size.
  setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                 Qt::WindowCloseButtonHint);
  make_layout();
  make_actions();
  show_state();
}

// The picture sets the width, and the text below wraps to it.
void MainDialog::make_layout() {
  auto* picture = new Picture(":/lexon/picture.svg", kPictureLines, this);
  picture->setObjectName("picture");
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(render_);
  buttons->addWidget(setting_);
  buttons->addStretch(1);
  buttons->addWidget(cancel_);

  auto* whole = new QVBoxLayout(this);
  const int gap = fontMetrics().height();
  whole->setContentsMargins(gap, gap, gap, gap);
  whole->addWidget(picture);
  whole->addSpacing(gap / 2);
  whole->addWidget(make_title(this));
  notice_->setWordWrap(true);
  notice_->setFixedWidth(picture->sizeHint().width());
  whole->addWidget(notice_);
  whole->addSpacing(gap / 2);
  whole->addLayout(buttons);
  whole->setSizeConstraint(QLayout::SetFixedSize);
}

// Tells what is still to be named, and has the focus where the user goes on.
void MainDialog::show_state() {
  const QStringList empty = SettingDialog::empty_fields(settings_);
  QStringList lines{tr("A rule-driven natural-language generator")};
  if (empty.isEmpty()) {
    lines << tr("Press Render to start.");
  } else {
    lines << tr("Name the files under Setting, then press Render.") << tr("Not named yet: %1").arg(empty.join(", "));
  }
  notice_->setText((lines + notes_).join('\n'));
  (empty.isEmpty() ? render_ : setting_)->setFocus();
}

// The system menu cannot be extended on every platform: the entry stands in the context menu.
void MainDialog::make_actions() {
  render_->setDefault(true);
  connect(render_, &QPushButton::clicked, this, &MainDialog::render);
  connect(setting_, &QPushButton::clicked, this, &MainDialog::open_setting);
  connect(cancel_, &QPushButton::clicked, this, &MainDialog::reject);
  render_->setToolTip(tr("Starts the run"));
  setting_->setToolTip(tr("Names the files of the run, and how many sentences"));
  cancel_->setToolTip(tr("Ends the program without a run"));
  auto* about = new QAction(tr("&About Lexon..."), this);
  about->setObjectName("about");
  connect(about, &QAction::triggered, this, &MainDialog::open_about);
  auto* help = new QAction(tr("&Manual"), this);
  help->setObjectName("help");
  help->setShortcut(QKeySequence(QKeySequence::HelpContents));
  connect(help, &QAction::triggered, this, [this] { open_manual(this); });
  addActions({about, help});
  setContextMenuPolicy(Qt::ActionsContextMenu);
}

// A run that starts at once never shows this dialog.
// The status of the program.
int MainDialog::run() {
  if (settings_.run_at_once) {
    render();
  } else {
    exec();
  }
  return exit_status_;
}

// The driver comes back when the run has ended; meanwhile the dialogs live in the loop of its host.
void MainDialog::render() {
  // While a run is at work signals cancel it; before and behind it they end the program.
  cancel_on_signals();
  DialogHost host(*this, yes_);
  // Asked in front of the run, which empties the output; a second run may write over it without a question.
  if (output_conflict(settings_).empty()) own_output_ = settings_.output_file;
  run_driver(settings_, host);
  leave_signals_alone();
  if (!settings_.run_at_once && !host.outcome().could_not_start) remember_project(settings_);
}

// A run that could not start is no end: its status counts only if nobody is there to mend the settings.
void MainDialog::end_run(const Outcome& outcome, bool wants_again) {
  if (wants_again) words_for_again_ = words_of(settings_, yes_);
  exit_status_ = outcome.exit_status();
  if (!outcome.could_not_start || settings_.run_at_once) return accept();
  exit_status_ = 0;
  setting_->setFocus();
}

// Cancel leaves the settings as they were: the dialog works on its own.
void MainDialog::open_setting() {
  SettingDialog dialog(settings_, this);
  dialog.may_overwrite(own_output_);
  if (yes_) dialog.ask_nothing();
  if (dialog.exec() != QDialog::Accepted) return;
  settings_ = dialog.fields();
  show_state();
}

// Modal, as all dialogs of the program.
void MainDialog::open_about() {
  AboutDialog(this).exec();
}

}  // namespace lexon
