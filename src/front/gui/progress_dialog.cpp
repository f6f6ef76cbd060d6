// A step begins, and most sentences are over before the wait for them would be worth an event loop. The others are
// waited for in a loop of their own, which the worker's end, the limit or the user's cancel leaves.
#include "front/gui/progress_dialog.hpp"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "front/gui/controls.hpp"
#include "front/signals.hpp"

namespace lexon {

namespace {

// How long windows may be left alone while one short sentence follows the other.
constexpr int kEventsInterval = 20;  // milliseconds

constexpr auto kStepEnded = static_cast<QEvent::Type>(QEvent::User + 1);

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
      caption_(make_label("caption", {}, this)),
      number_(make_value("number", "0000000", "number of the sentence", this)),
      elapsed_(make_value("elapsed", "0000.0", "elapsed time in seconds", this)),
      limit_(make_value("limit", "0", "seconds that a sentence may take", this)),
      cancel_(make_button("cancel", "&Cancel", this)),
      step_end_(make_button("step_end", "OK", this)) {
  progress_.limit = limit;
  progress_.start_minimised = start_minimised;
  setObjectName("progress_dialog");
  setWindowTitle("Rendering");
  setWindowFlag(Qt::WindowMinimizeButtonHint);
  setWindowModality(Qt::ApplicationModal);
  limit_->setText(QString::number(limit));
  step_end_->hide();
  // Return stays without effect: the one that pressed "Render" may still be held down.
  for (QPushButton* button : {cancel_, step_end_}) button->setAutoDefault(false);
  make_layout();
  tick_.setTimerType(Qt::PreciseTimer);
  tick_.setInterval(kTick);
  connect(&tick_, &QTimer::timeout, this, &ProgressDialog::tick);
  connect(cancel_, &QPushButton::clicked, this, &ProgressDialog::reject);
  connect(step_end_, &QPushButton::clicked, this, &ProgressDialog::end_if_over);
  const auto wake = [](void* who) {
    auto* dialog = static_cast<ProgressDialog*>(who);
    if (dialog->wakes_) QCoreApplication::postEvent(dialog, new QEvent(kStepEnded));
  };
  progress_.worker.notify_end(wake, this);
  since_events_.start();
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
  if (progress_.start_minimised) {
    showMinimized();
  } else {
    show();
  }
}

StepResult ProgressDialog::run_step(RunContext& context, const char* caption, std::int32_t number) {
  result_ = StepResult::finished;
  context_ = &context;
  signals_stop(&context.session.stop_requested);
  step_begin(progress_, context, caption, number);
  show_step(caption, number);
  show_elapsed(progress_.elapsed);
  show_once();
  progress_.worker.wait_until(std::chrono::steady_clock::now());
  end_if_over();
  if (progress_.ticks) wait_for_end();
  let_events_through();
  return result_;
}

void ProgressDialog::wait_for_end() {
  wakes_ = true;
  tick_.start();
  end_if_over();  // it may have ended just before it was asked to tell
  if (progress_.ticks) loop_.exec();
  tick_.stop();
  wakes_ = false;
}

void ProgressDialog::tick() {
  end_if_over();
  if (!progress_.ticks) return;
  if (step_tick(progress_, *context_)) return loop_.quit();
  show_elapsed(progress_.elapsed);
}

// A notice of the worker may come late, when the next step is under way already.
void ProgressDialog::customEvent(QEvent* event) {
  if (event->type() == kStepEnded) step_end_->click();
}

void ProgressDialog::end_if_over() {
  if (!progress_.ticks) return;
  if (cancel_wanted_ || cancel_was_signalled()) {
    leave_cancelled();
  } else if (step_end_if_done(progress_)) {
    loop_.quit();
  }
}

void ProgressDialog::leave_cancelled() {
  step_cancel(progress_, *context_);
  result_ = StepResult::cancelled;
  loop_.quit();
}

// Between two steps the cancel is kept for the next one.
void ProgressDialog::reject() {
  cancel_wanted_ = true;
  if (progress_.ticks) leave_cancelled();
}

void ProgressDialog::let_events_through() {
  if (since_events_.elapsed() < kEventsInterval) return;
  QCoreApplication::processEvents();
  since_events_.restart();
}

}  // namespace lexon
