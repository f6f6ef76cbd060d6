// Long work: how far it has come, in a line on standard error if that is a terminal; and its end by the interrupt key.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace lexon {
inline namespace v1 {
namespace lab {

// A program that does one thing ends at the interrupt key, at once: the progress line goes, one line says why, and whoever
// started it sees that a signal ended it. Nothing changes where the signal is ignored, as behind `nohup`.
void interrupts_end_program();

// A program that goes on behind its work only notes the key. Work that asks comes to its end; `Progress` asks for all
// who count by it.
void interrupts_are_noted();
[[nodiscard]] bool is_interrupted();
// Forgets it, before the next piece of work.
void interrupt_forget();
// Throws Fault if the key was noted.
void interrupt_check();

// "1234 sentences, 320/s, 12 s left", from the second second on; it goes away at the end. Threads may share one.
class Progress {
 public:
  // What is left is reckoned from the sizes of the files; without a size (a pipe) it is not shown.
  explicit Progress(const std::vector<std::string>& inputs);
  // Of so many sentences.
  explicit Progress(std::size_t sentences);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // A sentence of this many bytes is done; how many does not matter where the sentences are counted. Throws Fault if the
  // work was interrupted.
  void passed(std::size_t bytes = 1);

 private:
  using Clock = std::chrono::steady_clock;

  std::mutex mutex_;  // for all below
  bool shows_;        // standard error is a terminal
  bool is_shown_ = false;
  std::size_t of_ = 0;  // sentences; 0: not known
  double size_ = 0;     // bytes, or sentences; 0: not known
  double passed_ = 0;
  std::int64_t sentences_ = 0;
  Clock::time_point start_;
  Clock::time_point next_;
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
