#include "front/gui/main_dialog.hpp"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "front/gui/about_dialog.hpp"
#include "front/gui/controls.hpp"
#include "front/gui/dialog_host.hpp"
#include "front/gui/picture.hpp"
#include "front/gui/setting_dialog.hpp"
#include "front/signals.hpp"
#include "run/driver.hpp"
#include "run/output_check.hpp"

namespace lexon {

namespace {

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

MainDialog::MainDialog(const CommandLine& line)
    : settings_(line.settings),
      yes_(line.yes),
      render_(make_button("render", "&Render", this)),
      cancel_(make_button("cancel", "&Cancel", this)),
      setting_(make_button("setting", "&Setting", this)) {
  settings_.jobs = line.jobs.value_or(0);
  setObjectName("main_dialog");
  setWindowTitle("Lexon");
  setWindowIcon(program_icon());
  setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                 Qt::WindowCloseButtonHint);
  make_layout();
  make_actions();
}

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
  whole->addWidget(make_label("notice",
                              "A rule-driven natural-language generator\n"
                              "Name the files under Setting, then press Render.",
                              this));
  whole->addSpacing(gap / 2);
  whole->addLayout(buttons);
  whole->setSizeConstraint(QLayout::SetFixedSize);
}

// The system menu cannot be extended on every platform: the entry stands in the context menu, and under F1.
void MainDialog::make_actions() {
  render_->setDefault(true);
  connect(render_, &QPushButton::clicked, this, &MainDialog::render);
  connect(setting_, &QPushButton::clicked, this, &MainDialog::open_setting);
  connect(cancel_, &QPushButton::clicked, this, &MainDialog::reject);
  auto* about = new QAction("&About Lexon...", this);
  about->setObjectName("about");
  about->setShortcut(QKeySequence(Qt::Key_F1));
  connect(about, &QAction::triggered, this, &MainDialog::open_about);
  addAction(about);
  setContextMenuPolicy(Qt::ActionsContextMenu);
}

int MainDialog::run() {
  if (settings_.run_at_once) {
    render();
  } else {
    exec();
  }
  return exit_status_;
}

void MainDialog::render() {
  cancel_on_signals();
  DialogHost host(*this, yes_);
  if (output_conflict(settings_).empty()) own_output_ = settings_.output_file;
  run_driver(settings_, host);
  leave_signals_alone();
}

void MainDialog::end_run(const Outcome& outcome) {
  exit_status_ = outcome.exit_status();
  if (!outcome.could_not_start || settings_.run_at_once) return accept();
  exit_status_ = 0;
  setting_->setFocus();
}

void MainDialog::open_setting() {
  SettingDialog dialog(settings_, this);
  dialog.may_overwrite(own_output_);
  if (yes_) dialog.ask_nothing();
  if (dialog.exec() == QDialog::Accepted) settings_ = dialog.fields();
}

void MainDialog::open_about() {
  AboutDialog(this).exec();
}

}  // namespace lexon
