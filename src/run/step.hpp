// A step of a run, on threads of its own: the rule step, or all sentences.
//
// The front end's thread begins a step and looks after it every kWatch until it is over: it lets the time limit act,
// hands on the user's cancel and asks for the output. A thread cannot be killed, it is asked to stop and leaves by its
// returns.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "data/platform.hpp"
#include "data/session.hpp"
#include "run/host.hpp"

namespace lexon {

inline constexpr std::chrono::milliseconds kTick{100};  // what the time limit counts
inline constexpr std::chrono::milliseconds kWatch{20};  // how often a front end looks after a step

// One thread of a step and the session that it works with.
class StepWorker {
 public:
  explicit StepWorker(Session& session) : session_(session) {}

  [[nodiscard]] Session& session() const { return session_; }

  // ---- For the thread itself.

  // A sentence begins: its time counts from here, and what was asked of the one before is over with it. Number 0 has
  // no limit.
  void begin(std::int32_t number);
  // It has ended, and nothing is timed until the next one.
  void end();
  // Was the present sentence stopped for its time?
  [[nodiscard]] bool is_over_time();
  // While the thread waits for another its sentence takes no time.
  void set_waiting(bool waits);

 private:
  friend class Step;
  using Clock = std::chrono::steady_clock;

  void tick(Clock::time_point now, std::int32_t limit);
  void stop();

  Session& session_;
  ThreadHandle thread_{};
  std::mutex mutex_;        // guards what the thread and its watcher share
  std::int64_t begun_ = 0;  // sentences
  bool is_busy_ = false;    // one is under way
  bool has_limit_ = false;
  bool waits_ = false;
  bool over_time_ = false;
  bool stops_ = false;  // for good
  // The watcher's own.
  std::int64_t watched_ = 0;  // the sentence that the next two belong to
  double elapsed_ = 0.0;      // seconds, in steps of 0.1: it counts ticks, not the clock
  Clock::time_point next_tick_{};
};

// What a step does.
class StepWork {
 public:
  virtual ~StepWork() = default;
  // On each of the threads, which may run it at the same time. Must not throw.
  virtual void work(StepWorker& worker) = 0;
  // On the watcher's thread, behind a cancel: wakes whoever waits for another thread.
  virtual void wake() {}
};

class Step {
 public:
  // One thread for each session. `caption` is for display, `limit` in seconds, 0 for none. Nothing is owned, and
  // `output` is the session that the output lies in.
  Step(StepWork& work, const char* caption, std::int32_t limit, Session& output, const std::vector<Session*>& sessions);
  // Stops what still runs, and waits for it.
  ~Step();
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;

  // Starts the threads, or as many as can be had. Without any the work is done before this returns.
  void begin();
  // Waits for the end, or until `deadline`. True when the step is over.
  [[nodiscard]] bool wait_until(std::chrono::steady_clock::time_point deadline);
  // To be called every kWatch.
  void watch();
  // The user's cancel: asks all threads to stop. The step is over soon, not yet.
  void cancel();
  // The same, for its own threads: what they do is of no use any more.
  void stop();

  [[nodiscard]] const char* caption() const { return caption_; }
  // Of the sentence that has been at work longest; for the watcher's thread.
  [[nodiscard]] double elapsed() const;
  // What signals may set to stop the step at once.
  [[nodiscard]] std::atomic<bool>& stop_flag() { return output_.stop_requested; }
  [[nodiscard]] bool is_cancelled() const { return cancelled_; }
  [[nodiscard]] StepResult result() const { return cancelled_ ? StepResult::cancelled : StepResult::finished; }

 private:
  struct Thread {
    Step* step;
    StepWorker* worker;
  };
  void serve(StepWorker& worker);

  StepWork& work_;
  const char* caption_;
  std::int32_t limit_;
  Session& output_;
  std::vector<std::unique_ptr<StepWorker>> workers_;
  std::vector<Thread> threads_;  // what each is started with
  std::size_t started_ = 0;
  std::atomic<bool> cancelled_{false};
  std::mutex mutex_;
  std::condition_variable over_;
  std::size_t running_ = 0;
  std::chrono::steady_clock::time_point next_flush_{};
};

}  // namespace lexon
