#include "run/step.hpp"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "data/platform.hpp"
#include "data/session.hpp"
#include "run/workers.hpp"

namespace lexon {

namespace {

// Generation is recursive: a real grammar must never meet the end of this stack.
constexpr std::size_t kWorkerStack = std::size_t{256} << 20;
// What the deepest step below a guard may still need.
constexpr std::size_t kStackReserve = std::size_t{256} << 10;
// To wake a thread that sleeps can take longer than a short sentence, so both sides stay awake for about as long.
constexpr std::chrono::microseconds kAwake{100};
// Where others want the processor, who stays awake hands it to them for milliseconds: so many waits then sleep at once.
constexpr int kSleeps = 200;

// How one side waits, without sleeping at first, for what the other side does.
class Vigil {
 public:
  template <typename Done>
  void wait_awake(Done done) {
    using Clock = std::chrono::steady_clock;
    if (sleeps_ > 0) {
      --sleeps_;
      return;
    }
    auto before = Clock::now();
    const auto end = before + kAwake;
    while (!done() && before < end) {
      std::this_thread::yield();
      const auto now = Clock::now();
      if (now - before > kAwake) sleeps_ = kSleeps;
      before = now;
    }
  }

 private:
  int sleeps_ = 0;  // waits to come that do not stay awake
};

}  // namespace

// The flags change under the mutex, for who sleeps, and are read without it by who is awake.
struct WorkerThread::Shared {
  std::mutex mutex;
  std::condition_variable changed;
  void (*body)(RunContext&) = nullptr;
  RunContext* context = nullptr;
  void (*notice)(void*) = nullptr;
  void* noticed = nullptr;
  std::atomic<bool> running{false};
  std::atomic<bool> ends{false};
  bool has_thread = false;
  ThreadHandle thread{};
  Vigil callers;
  Vigil workers;

  void set(std::atomic<bool>& flag, bool value) {
    {
      const std::lock_guard lock(mutex);
      flag = value;
    }
    changed.notify_all();
  }

  // False when there is none any more.
  bool wait_for_step() {
    const auto is_due = [this] { return running || ends; };
    workers.wait_awake(is_due);
    if (!is_due()) {
      std::unique_lock lock(mutex);
      changed.wait(lock, is_due);
    }
    return running;
  }

  void serve() {
    const char* stack_limit = stack_limit_of_this_thread(kStackReserve);
    while (wait_for_step()) {
      context->session.state.stack_limit = stack_limit;
      body(*context);
      set(running, false);
      if (notice != nullptr) notice(noticed);
    }
  }
};

WorkerThread::WorkerThread() : shared_(new Shared) {
  const auto body = [](void* shared) { static_cast<Shared*>(shared)->serve(); };
  shared_->has_thread = thread_start(shared_->thread, kWorkerStack, body, shared_);
}

WorkerThread::~WorkerThread() {
  shared_->set(shared_->ends, true);
  if (shared_->has_thread) thread_join(shared_->thread);
  delete shared_;
}

void WorkerThread::notify_end(void (*notice)(void*), void* who) {
  shared_->notice = notice;
  shared_->noticed = who;
}

void WorkerThread::start(void (*body)(RunContext&), RunContext& context) {
  if (!shared_->has_thread) {
    context.session.state.stack_limit = stack_limit_of_this_thread(kStackReserve);
    return body(context);
  }
  shared_->body = body;
  shared_->context = &context;
  shared_->set(shared_->running, true);
}

bool WorkerThread::is_running() const {
  return shared_->running;
}

bool WorkerThread::wait_until(std::chrono::steady_clock::time_point deadline) {
  const auto is_over = [this] { return !shared_->running; };
  shared_->callers.wait_awake(is_over);
  if (is_over()) return true;
  std::unique_lock lock(shared_->mutex);
  return shared_->changed.wait_until(lock, deadline, is_over);
}

void WorkerThread::wait() {
  std::unique_lock lock(shared_->mutex);
  shared_->changed.wait(lock, [this] { return !shared_->running; });
}

namespace {

// True once the worker has left. A step that ended before it saw the flag keeps its own status.
void stop_worker(ProgressState& progress, RunContext& context) {
  context.session.stop_requested = true;
  progress.worker.wait();
}

void end_step(ProgressState& progress) {
  progress.ticks = false;
  progress.elapsed = 0.0;
}

}  // namespace

void step_begin(ProgressState& progress, RunContext& context, const char* caption, std::int32_t number) {
  progress.caption = caption;
  progress.number = number;
  progress.elapsed = 0.0;
  progress.ticks = true;
  context.session.stop_requested = false;
  progress.worker.start(choose_worker(context), context);
}

bool step_tick(ProgressState& progress, RunContext& context) {
  progress.elapsed += 0.1;
  const bool is_running = progress.worker.is_running();
  const bool time_is_up = progress.limit != 0 && progress.limit < progress.elapsed && progress.number != 0;
  if (is_running && !time_is_up) {
    context.session.flush_wanted = true;
    return false;
  }
  if (is_running) {
    stop_worker(progress, context);
    if (context.run_status == run_state::running) context.run_status = run_state::over_time;
  }
  end_step(progress);
  return true;
}

bool step_end_if_done(ProgressState& progress) {
  if (progress.worker.is_running()) return false;
  end_step(progress);
  return true;
}

void step_cancel(ProgressState& progress, RunContext& context) {
  stop_worker(progress, context);
  end_step(progress);
}

}  // namespace lexon
