#include "front/signals.hpp"

#include <atomic>
#include <csignal>
#include <cstdint>
#include <ctime>

#include <unistd.h>

#include "front/outcome.hpp"

namespace lexon {

namespace {

// Signals that come closer together count as one.
constexpr std::int64_t kOneStroke = 250;  // milliseconds

// When the first of the signals came, in milliseconds; 0: none has come.
constinit std::atomic<std::int64_t> signalled{0};
// Atomic and without a lock: a handler may be called in the middle of anything.
// What a signal sets: the stop request of the session in work; null before there is one.
constinit std::atomic<std::atomic<bool>*> to_stop{nullptr};
constinit std::atomic<bool> nobody{false};  // is set when the work is over
static_assert(std::atomic<std::int64_t>::is_always_lock_free);

// Never 0, which stands for "none has come". May be called from a handler.
std::int64_t milliseconds_now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000 + 1;
}

// Who ends a program and then its group sends two signals at once, and means one. Where no work has begun the program
// may be waiting to open a file, and nothing would tell it of the signal.
extern "C" void on_cancel_signal(int) {
  std::atomic<bool>* flag = to_stop;
  if (flag == nullptr) _exit(kCancelledStatus);
  const std::int64_t now = milliseconds_now();
  std::int64_t first = 0;
  if (!signalled.compare_exchange_strong(first, now) && now - first > kOneStroke) _exit(kCancelledStatus);
  *flag = true;
}

// Who started the program may have asked that a hang-up leaves it alone.
bool hang_up_is_ignored() {
  struct sigaction action {};
  return sigaction(SIGHUP, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void handle_signals(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  // Writes go on where they were; who waits for input looks at the flag by itself.
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  if (!hang_up_is_ignored()) sigaction(SIGHUP, &action, nullptr);
}

}  // namespace

void signals_stop(std::atomic<bool>* flag) {
  to_stop = flag;
}

// From now on a signal is only noted: the outcome is being told.
void signals_remember() {
  to_stop = &nobody;
}

void cancel_on_signals() {
  to_stop = nullptr;
  handle_signals(on_cancel_signal);
}

void leave_signals_alone() {
  handle_signals(SIG_DFL);
}

bool cancel_was_signalled() {
  return signalled != 0;
}

}  // namespace lexon
