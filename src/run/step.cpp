#include "run/step.hpp"

#include <algorithm>

namespace lexon {

namespace {

// Generation is recursive: a real grammar must never meet the end of this stack.
constexpr std::size_t kWorkerStack = std::size_t{256} << 20;
// What the deepest step below a guard may still need.
constexpr std::size_t kStackReserve = std::size_t{256} << 10;

}  // namespace

// The time of a sentence counts from the first look of the watcher that finds it at work, not from here. A stop for
// good outlives the sentence that it met.
void StepWorker::begin(std::int32_t number) {
  const std::lock_guard lock(mutex_);
  ++begun_;
  is_busy_ = true;
  has_limit_ = number != 0;
  over_time_ = false;
  session_.stop_requested = stops_;
}

void StepWorker::end() {
  const std::lock_guard lock(mutex_);
  is_busy_ = false;
}

bool StepWorker::is_over_time() {
  const std::lock_guard lock(mutex_);
  return over_time_;
}

void StepWorker::set_waiting(bool waits) {
  const std::lock_guard lock(mutex_);
  waits_ = waits;
}

// What the watcher does at each of its looks. It looks more often than a tick lasts: only `next_tick_` moves the time
// on, so that a limit of N seconds ends a sentence when the sum of its ticks has passed N, as it would with a look a
// tick.
void StepWorker::tick(Clock::time_point now, std::int32_t limit) {
  const std::lock_guard lock(mutex_);
  // A sentence that it has not seen before.
  if (!is_busy_ || watched_ != begun_) {
    watched_ = is_busy_ ? begun_ : 0;
    elapsed_ = 0.0;
    next_tick_ = now + kTick;
    // What it waits for takes the time of another one.
  } else if (waits_) {
    next_tick_ = now + kTick;
  } else if (now >= next_tick_) {
    elapsed_ += 0.1;
    next_tick_ += kTick;
  }
  const bool time_is_up = limit != 0 && limit < elapsed_ && is_busy_ && has_limit_;
  if (!time_is_up || session_.stop_requested) return;
  over_time_ = true;
  session_.stop_requested = true;
}

void StepWorker::stop() {
  const std::lock_guard lock(mutex_);
  stops_ = true;
  session_.stop_requested = true;
}

Step::Step(StepWork& work, const char* caption, std::int32_t limit, Session& output,
           const std::vector<Session*>& sessions)
    : work_(work), caption_(caption), limit_(limit), output_(output) {
  for (Session* session : sessions) {
    workers_.push_back(std::make_unique<StepWorker>(*session));
    threads_.push_back({this, workers_.back().get()});
  }
}

// Who leaves without the end of the step, by an exception, has cancelled it: the threads work with what lies in the
// caller.
Step::~Step() {
  {
    const std::lock_guard lock(mutex_);
    if (running_ != 0) cancelled_ = true;
  }
  if (cancelled_) cancel();
  for (std::size_t i = 0; i < started_; ++i) thread_join(workers_[i]->thread_);
}

// On each of the threads. Where the stack ends is known there alone.
void Step::serve(StepWorker& worker) {
  worker.session().state.stack_limit = stack_limit_of_this_thread(kStackReserve);
  work_.work(worker);
}

void Step::begin() {
  output_.stop_requested = false;
  running_ = workers_.size();
  // What a thread does: its work, and then it counts itself out.
  const auto body = [](void* argument) {
    const auto* thread = static_cast<Thread*>(argument);
    Step& step = *thread->step;
    step.serve(*thread->worker);
    const std::lock_guard lock(step.mutex_);
    if (--step.running_ == 0) step.over_.notify_all();
  };
  // With fewer threads than wanted the step goes on: those that are there do the work of all.
  while (started_ < workers_.size() &&
         thread_start(workers_[started_]->thread_, kWorkerStack, body, &threads_[started_])) {
    ++started_;
  }
  if (started_ == 0) serve(*workers_.front());
  const std::lock_guard lock(mutex_);
  running_ -= workers_.size() - started_;
}

bool Step::wait_until(std::chrono::steady_clock::time_point deadline) {
  std::unique_lock lock(mutex_);
  return over_.wait_until(lock, deadline, [this] { return running_ == 0; });
}

// The sessions are asked to hand on their output every tick; each does so at the next place that looks at the wish.
void Step::watch() {
  const auto now = std::chrono::steady_clock::now();
  const bool wants_flush = now >= next_flush_;
  if (wants_flush) {
    next_flush_ = now + kTick;
    output_.flush_wanted = true;
  }
  for (std::size_t i = 0; i < started_; ++i) {
    if (wants_flush) workers_[i]->session().flush_wanted = true;
    workers_[i]->tick(now, limit_);
  }
}

void Step::stop() {
  for (const auto& worker : workers_) worker->stop();
}

// The order matters: who is woken must find that the step is cancelled and that its session is to stop.
void Step::cancel() {
  cancelled_ = true;
  output_.stop_requested = true;
  stop();
  work_.wake();
}

double Step::elapsed() const {
  double longest = 0.0;
  for (const auto& worker : workers_) longest = std::max(longest, worker->elapsed_);
  return longest;
}

}  // namespace lexon
