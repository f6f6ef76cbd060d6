#include "run/step.hpp"

#include <condition_variable>
#include <mutex>

#include "data/platform.hpp"
#include "data/state.hpp"
#include "run/workers.hpp"

namespace lexon {

namespace {

// Generation is recursive: a real grammar must never meet the end of this stack.
constexpr std::size_t kWorkerStack = std::size_t{256} << 20;
// What the deepest step below a guard may still need.
constexpr std::size_t kStackReserve = std::size_t{256} << 10;

}  // namespace

struct WorkerThread::Shared {
  std::mutex mutex;
  std::condition_variable changed;
  void (*body)(RunContext&) = nullptr;
  RunContext* context = nullptr;
  bool running = false;
  bool ends = false;
  bool has_thread = false;
  ThreadHandle thread{};

  void serve() {
    state.stack_limit = stack_limit_of_this_thread(kStackReserve);
    std::unique_lock lock(mutex);
    while (true) {
      changed.wait(lock, [this] { return running || ends; });
      if (!running) return;
      lock.unlock();
      body(*context);
      lock.lock();
      running = false;
      changed.notify_all();
    }
  }
};

WorkerThread::WorkerThread() : shared_(new Shared) {
  const auto body = [](void* shared) { static_cast<Shared*>(shared)->serve(); };
  shared_->has_thread = thread_start(shared_->thread, kWorkerStack, body, shared_);
}

WorkerThread::~WorkerThread() {
  {
    const std::lock_guard lock(shared_->mutex);
    shared_->ends = true;
    shared_->changed.notify_all();
  }
  if (shared_->has_thread) thread_join(shared_->thread);
  delete shared_;
}

void WorkerThread::start(void (*body)(RunContext&), RunContext& context) {
  if (!shared_->has_thread) return body(context);
  const std::lock_guard lock(shared_->mutex);
  shared_->body = body;
  shared_->context = &context;
  shared_->running = true;
  shared_->changed.notify_all();
}

bool WorkerThread::is_running() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->running;
}

bool WorkerThread::wait_until(std::chrono::steady_clock::time_point deadline) {
  std::unique_lock lock(shared_->mutex);
  return shared_->changed.wait_until(lock, deadline, [this] { return !shared_->running; });
}

void WorkerThread::wait() {
  std::unique_lock lock(shared_->mutex);
  shared_->changed.wait(lock, [this] { return !shared_->running; });
}

namespace {

// True once the worker has left. A step that ended before it saw the flag keeps its own status.
void stop_worker(ProgressState& progress) {
  stop_requested = true;
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
  stop_requested = false;
  progress.worker.start(choose_worker(context), context);
}

bool step_tick(ProgressState& progress) {
  progress.elapsed += 0.1;
  const bool is_running = progress.worker.is_running();
  const bool time_is_up = progress.limit != 0 && progress.limit < progress.elapsed && progress.number != 0;
  if (is_running && !time_is_up) return false;
  if (is_running) {
    stop_worker(progress);
    run_status = run_state::over_time;
  }
  end_step(progress);
  return true;
}

bool step_end_if_done(ProgressState& progress) {
  if (progress.worker.is_running()) return false;
  end_step(progress);
  return true;
}

void step_cancel(ProgressState& progress) {
  stop_worker(progress);
  end_step(progress);
}

}  // namespace lexon
