#include "front/signals.hpp"

#include <csignal>

#include <unistd.h>

#include "data/state.hpp"
#include "front/outcome.hpp"

namespace lexon {

namespace {

constinit std::atomic<bool> signalled{false};

extern "C" void on_cancel_signal(int) {
  if (signalled.exchange(true)) _exit(kCancelledStatus);
  stop_requested = true;
}

void handle_signals(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

}  // namespace

void cancel_on_signals() {
  handle_signals(on_cancel_signal);
}

void leave_signals_alone() {
  handle_signals(SIG_DFL);
}

bool cancel_was_signalled() {
  return signalled;
}

}  // namespace lexon
