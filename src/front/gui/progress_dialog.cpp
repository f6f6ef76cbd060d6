// A step is waited for in an event loop of its own, which a timer looks after. What the dialog shows follows ten times
// a second, so that the run keeps the processor.
#include "front/gui/progress_dialog.hpp"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>
#include <system_error>

#include "front/gui/controls.hpp"
#include "front/signals.hpp"
#include "run/borders.hpp"
#include "run/files.hpp"

namespace lexon {

namespace {

// Here only for who collects the texts to translate.
// What steps call themselves.
[[maybe_unused]] constexpr const char* kCaptions[] = {
    QT_TRANSLATE_NOOP("lexon::ProgressDialog", "sentence no."),
    QT_TRANSLATE_NOOP("lexon::ProgressDialog", "converting/loading rules"),
};

// Finer than the bar has pixels.
constexpr int kBarSteps = 1000;
constexpr double kFirstRate = 1.0;  // seconds behind which a rate means something

// A label whose text changes all the time: its place does not.
QLabel* make_value(const char* role, const QString& longest, const QString& meaning, QWidget* parent) {
  QLabel* label = make_label(role, {}, parent);
  label->setMinimumWidth(label->fontMetrics().horizontalAdvance(longest));
  label->setAccessibleDescription(meaning);
  return label;
}

// A digit behind the point where the number is small.
QString number_text(double number) {
  return QLocale().toString(number, 'f', number < 10 ? 1 : 0);
}

// Minutes and seconds, with hours in front where there are any.
QString time_text(double seconds) {
  const auto whole = static_cast<long long>(seconds);
  const QString rest = QString::asprintf("%02lld", whole % 60);
  if (whole < 3600) return QString::number(whole / 60) + ":" + rest;
  return QString::asprintf("%lld:%02lld:", whole / 3600, whole / 60 % 60) + rest;
}

}  // namespace

// The count may be under way in a large input: it looks at `stop_` line by line.
InputCount::~InputCount() {
  stop_ = true;
  if (thread_.joinable()) thread_.join();
}

// On a thread of its own, which the run does not wait for. A pipe cannot be read twice, so it is not counted.
void InputCount::start(const std::string& input) {
  // Once for a run.
  if (thread_.joinable() || !QFileInfo(to_text(input)).isFile()) return;
  const auto count = [this, input] {
    const File file(text_open(input, stop_));
    if (file == nullptr) return;
    TextWatch lines;
    const std::int64_t found = skip_sentences(file.get(), std::numeric_limits<std::int64_t>::max(), lines, stop_);
    if (!stop_) sentences_ = found;
  };
  try {
    thread_ = std::thread(count);
  } catch (const std::system_error&) {
    // The run goes on without knowing how far it has to go.
  }
}

ProgressDialog::ProgressDialog(const RunSettings& settings, QWidget* parent)
    : QDialog(parent),
      start_minimised_(settings.run_at_once && !settings.show_progress),
      input_(settings.input_file),
      first_(std::max(settings.start_sentence, 1)),
      wanted_(settings.sentence_count),
      caption_(make_label("caption", {}, this)),
      number_(make_value("number", "0000000", tr("number of the sentence"), this)),
      elapsed_(make_value("elapsed", "0000.0", tr("elapsed time in seconds"), this)),
      limit_(make_value("limit", "0", tr("seconds that a sentence may take"), this)),
      bar_(new QProgressBar(this)),
      sentences_(make_value("sentences", tr("%1 of %2 sentences, %3 failed").arg("0000000", "0000000", "00000"),
                            tr("how far the run has come"), this)),
      time_(make_value("time", tr("%1 a second, %2 left").arg("00000", "000:00:00"), tr("rate of the run"), this)),
      cancel_(make_button("cancel", tr("&Cancel"), this)),
      step_end_(make_button("step_end", tr("OK"), this)) {
  setObjectName("progress_dialog");
  setWindowTitle(tr("Rendering"));
  setWindowFlag(Qt::WindowMinimizeButtonHint);
  setWindowModality(Qt::ApplicationModal);
  limit_->setText(QString::number(settings.max_time_per_sentence));
  step_end_->hide();
  // Return stays without effect: the one that pressed "Render" may still be held down. So does Space, as long as
  // nobody has gone to the button.
  for (QPushButton* button : {cancel_, step_end_}) button->setAutoDefault(false);
  bar_->setObjectName("bar");
  bar_->setAccessibleName(tr("Progress of the run"));
  bar_->setTextVisible(false);
  bar_->setRange(0, kBarSteps);
  bar_->setFocusPolicy(Qt::TabFocus);
  bar_->setFocus();
  cancel_->setToolTip(tr("Ends the run; what has been rendered is kept"));
  make_layout();
  watch_.setTimerType(Qt::PreciseTimer);
  watch_.setInterval(kWatch);
  connect(&watch_, &QTimer::timeout, this, &ProgressDialog::watch);
  connect(cancel_, &QPushButton::clicked, this, &ProgressDialog::reject);
  connect(step_end_, &QPushButton::clicked, &loop_, &QEventLoop::quit);
}

// The labels of changing figures keep the room of the longest, so that nothing moves.
void ProgressDialog::make_layout() {
  auto* step = new QHBoxLayout;
  step->addWidget(caption_);
  step->addWidget(number_, 1);
  auto* times = new QHBoxLayout;
  times->addWidget(make_label("elapsed_label", tr("elapsed time"), this));
  times->addWidget(elapsed_);
  times->addWidget(make_label("limit_label", tr("/ max time per sen"), this));
  times->addWidget(limit_);
  times->addSpacing(fontMetrics().height());
  times->addWidget(make_label("limit_note", tr("0 : limitless"), this));
  times->addStretch(1);
  auto* texts = new QVBoxLayout;
  texts->addLayout(step);
  texts->addLayout(times);
  texts->addWidget(bar_);
  texts->addWidget(sentences_);
  texts->addWidget(time_);
  auto* whole = new QHBoxLayout(this);
  const int gap = fontMetrics().height();
  whole->setContentsMargins(gap, gap, gap, gap);
  whole->addLayout(texts, 1);
  whole->addSpacing(gap);
  whole->addWidget(cancel_);
  whole->setSizeConstraint(QLayout::SetFixedSize);
}

void ProgressDialog::show_step(const QString& caption, std::int32_t number) {
  // As the run gives them; what the caption is called in the user's language is known to the caller.
  caption_->setText(caption);
  number_->setText(QString::number(number));
}

void ProgressDialog::show_elapsed(double seconds) {
  elapsed_->setText(QString::asprintf("%6.1f", seconds));
}

void ProgressDialog::show_progress(const RunProgress& progress) {
  const QLocale locale;
  const QString closed = locale.toString(static_cast<qlonglong>(progress.closed));
  const QString lost = locale.toString(static_cast<qlonglong>(progress.lost));
  const double rate = progress.seconds > 0 ? static_cast<double>(progress.closed) / progress.seconds : 0.0;
  // In the first second a rate jumps about and says nothing.
  const bool has_rate = progress.seconds >= kFirstRate && rate > 0;
  // Never below 0: the count of an input need not be that of the run.
  const std::int64_t open = std::max<std::int64_t>(progress.all - progress.closed, 0);
  if (progress.all > 0) {
    const QString all = locale.toString(static_cast<qlonglong>(progress.all));
    sentences_->setText(tr("%1 of %2 sentences, %3 failed").arg(closed, all, lost));
    bar_->setValue(static_cast<int>(kBarSteps * (progress.all - open) / progress.all));
  } else {
    sentences_->setText(tr("%1 sentences, %2 failed").arg(closed, lost));
  }
  const QString rate_shown = has_rate ? number_text(rate) : QString("–");
  time_->setText(progress.all == 0
                     ? tr("%1 a second, %2 gone").arg(rate_shown, time_text(progress.seconds))
                     : tr("%1 a second, %2 left")
                           .arg(rate_shown, has_rate ? time_text(static_cast<double>(open) / rate) : QString("–")));
}

// It stays up between the steps, and a user who has minimised it finds it so.
void ProgressDialog::show_once() {
  if (isVisible()) return;
  if (start_minimised_) {
    show_minimised(*this);
  } else {
    show();
  }
}

// Comes back when the step is over, cancelled or not.
StepResult ProgressDialog::run_step(RunContext& context, Step& step) {
  context_ = &context;
  step_ = &step;
  signals_stop(&step.stop_flag());
  step.begin();
  // 0 is the rule step.
  if (context.number != 0) {
    since_first_.start();
    if (wanted_ == 0) count_.start(input_);
  }
  show_all();
  show_once();
  watch_.start();
  loop_.exec();
  watch_.stop();
  step_ = nullptr;
  return step.result();
}

// The step first: one that is over needs no cancel. The end of a step presses the hidden button.
void ProgressDialog::watch() {
  const bool is_over = step_->wait_until(std::chrono::steady_clock::now());
  if (cancel_wanted_ || cancel_was_signalled()) step_->cancel();
  if (is_over) return step_end_->click();
  step_->watch();
  if (since_shown_.elapsed() >= kTick.count()) show_all();
}

// 0 as long as it is not known. The count is that of the whole input, the run may begin later.
std::int64_t ProgressDialog::all_sentences() const {
  if (wanted_ > 0) return wanted_;
  return std::max<std::int64_t>(count_.sentences() - (first_ - 1), 0);
}

void ProgressDialog::show_all() {
  // Only what is atomic in the context is read: the step is at work.
  since_shown_.start();
  show_step(tr(step_->caption()), static_cast<std::int32_t>(context_->number));
  show_elapsed(step_->elapsed());
  show_progress({context_->tried(), all_sentences(), context_->failed + context_->over_time,
                 since_first_.isValid() ? static_cast<double>(since_first_.elapsed()) / 1000.0 : 0.0});
}

// Between two steps the cancel is kept for the next one.
// The close box and Escape come here as well as the button.
void ProgressDialog::reject() {
  cancel_wanted_ = true;
  if (step_ != nullptr) step_->cancel();
}

}  // namespace lexon
