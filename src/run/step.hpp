// One step of a run on the worker thread, under a tick of 100 milliseconds.
//
// The front end's thread begins a step, then calls `step_tick` every 100 milliseconds or waits in
// `step_wait`; the worker cannot be killed, it is asked to stop and leaves by its returns.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "run/context.hpp"
#include "run/host.hpp"

namespace lexon {

inline constexpr std::chrono::milliseconds kTick{100};

// The thread that runs the steps. One for a run: a step is handed over, not a thread made for it.
class WorkerThread {
 public:
  WorkerThread();
  // Waits for a running step.
  ~WorkerThread();
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;

  // From now on the thread calls `notice(who)` behind the end of every step, for a front end that cannot sleep in
  // `wait`. To be set before the first step.
  void notify_end(void (*notice)(void*), void* who);

  // Runs `body(context)` on the thread. Only one step at a time. Without a thread it runs on the caller's.
  void start(void (*body)(RunContext&), RunContext& context);

  [[nodiscard]] bool is_running() const;

  // Waits for the step's end, or until `deadline`. True when the step has ended.
  bool wait_until(std::chrono::steady_clock::time_point deadline);

  // Waits for the step's end.
  void wait();

 private:
  struct Shared;
  Shared* shared_;
};

// The state of the steps of a run, reused for every one.
struct ProgressState {
  std::string caption;
  std::int32_t number = 0;  // 0: the rule step, which has no time limit
  WorkerThread worker;
  double elapsed = 0.0;    // seconds, in steps of 0.1: it counts ticks, not the clock
  std::int32_t limit = 0;  // seconds; 0: limitless
  bool start_minimised = false;
  bool ticks = false;  // a step is under way
};

// Starts the worker of the step. Takes back an earlier request to stop: a front end that was asked to cancel in the
// meantime looks again behind this call.
void step_begin(ProgressState& progress, RunContext& context, const char* caption, std::int32_t number);

// To be called every 100 milliseconds. True when the step has ended, by itself or because its time is up; the worker
// has left then.
[[nodiscard]] bool step_tick(ProgressState& progress, RunContext& context);

// Ends a step that has ended by itself between two ticks. False if it still runs.
[[nodiscard]] bool step_end_if_done(ProgressState& progress);

// The user's cancel: asks the worker to stop and waits for it.
void step_cancel(ProgressState& progress, RunContext& context);

}  // namespace lexon
