// A step is waited for in an event loop of its own, which a timer looks after.
#include "front/gui/progress_dialog.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "front/gui/controls.hpp"
#include "front/signals.hpp"

namespace lexon {

namespace {

// A label whose text changes all the time: its place does not.
QLabel* make_value(const char* role, const char* longest, const char* meaning, QWidget* parent) {
  QLabel* label = make_label(role, {}, parent);
  label->setMinimumWidth(label->fontMetrics().horizontalAdvance(longest));
  label->setAccessibleDescription(meaning);
  return label;
}

}  // namespace

ProgressDialog::ProgressDialog(std::int32_t limit, bool start_minimised, QWidget* parent)
    : QDialog(parent),
      start_minimised_(start_minimised),
      caption_(make_label("caption", {}, this)),
      number_(make_value("number", "0000000", "number of the sentence", this)),
      elapsed_(make_value("elapsed", "0000.0", "elapsed time in seconds", this)),
      limit_(make_value("limit", "0", "seconds that a sentence may take", this)),
      cancel_(make_button("cancel", "&Cancel", this)),
      step_end_(make_button("step_end", "OK", this)) {
  setObjectName("progress_dialog");
  setWindowTitle("Rendering");
  setWindowFlag(Qt::WindowMinimizeButtonHint);
  setWindowModality(Qt::ApplicationModal);
  limit_->setText(QString::number(limit));
  step_end_->hide();
  // Return stays without effect: the one that pressed "Render" may still be held down.
  for (QPushButton* button : {cancel_, step_end_}) button->setAutoDefault(false);
  make_layout();
  watch_.setTimerType(Qt::PreciseTimer);
  watch_.setInterval(kWatch);
  connect(&watch_, &QTimer::timeout, this, &ProgressDialog::watch);
  connect(cancel_, &QPushButton::clicked, this, &ProgressDialog::reject);
  connect(step_end_, &QPushButton::clicked, &loop_, &QEventLoop::quit);
}

void ProgressDialog::make_layout() {
  auto* step = new QHBoxLayout;
  step->addWidget(caption_);
  step->addWidget(number_, 1);
  auto* times = new QHBoxLayout;
  times->addWidget(make_label("elapsed_label", "elapsed time", this));
  times->addWidget(elapsed_);
  times->addWidget(make_label("limit_label", "/ max time per sen", this));
  times->addWidget(limit_);
  times->addSpacing(fontMetrics().height());
  times->addWidget(make_label("limit_note", "0 : limitless", this));
  times->addStretch(1);
  auto* texts = new QVBoxLayout;
  texts->addLayout(step);
  texts->addLayout(times);
  auto* whole = new QHBoxLayout(this);
  const int gap = fontMetrics().height();
  whole->setContentsMargins(gap, gap, gap, gap);
  whole->addLayout(texts, 1);
  whole->addSpacing(gap);
  whole->addWidget(cancel_);
  whole->setSizeConstraint(QLayout::SetFixedSize);
}

void ProgressDialog::show_step(const QString& caption, std::int32_t number) {
  caption_->setText(caption);
  number_->setText(QString::number(number));
}

void ProgressDialog::show_elapsed(double seconds) {
  elapsed_->setText(QString::asprintf("%6.1f", seconds));
}

void ProgressDialog::show_once() {
  if (isVisible()) return;
  if (start_minimised_) {
    showMinimized();
  } else {
    show();
  }
}

StepResult ProgressDialog::run_step(RunContext& context, Step& step) {
  context_ = &context;
  step_ = &step;
  signals_stop(&step.stop_flag());
  step.begin();
  show_step(step.caption(), static_cast<std::int32_t>(context.number));
  show_elapsed(0.0);
  show_once();
  watch_.start();
  loop_.exec();
  watch_.stop();
  step_ = nullptr;
  return step.result();
}

void ProgressDialog::watch() {
  const bool is_over = step_->wait_until(std::chrono::steady_clock::now());
  if (cancel_wanted_ || cancel_was_signalled()) step_->cancel();
  if (is_over) return step_end_->click();
  step_->watch();
  show_step(step_->caption(), static_cast<std::int32_t>(context_->number));
  show_elapsed(step_->elapsed());
}

// Between two steps the cancel is kept for the next one.
void ProgressDialog::reject() {
  cancel_wanted_ = true;
  if (step_ != nullptr) step_->cancel();
}

}  // namespace lexon
