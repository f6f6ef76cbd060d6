#include "lab/progress.hpp"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string_view>

#include <unistd.h>

#include "lab/commands.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// Short work shows nothing; a line that changes more often cannot be read.
constexpr std::chrono::seconds kFirst{1};
constexpr std::chrono::milliseconds kInterval{200};

// The one writable variable of the workbench: a handler of a signal has nothing else to write to.
constinit std::atomic<bool> interrupted{false};

// What takes a line of progress off a terminal.
constexpr std::string_view kLineAway = "\r\033[K";

// Handlers may call what is safe in a signal, and no more.
extern "C" void note_interrupt(int) {
  interrupted = true;
}

extern "C" void end_at_interrupt(int signal) {
  constexpr std::string_view kTold = "lexon-lab: interrupted\n";
  // `write` alone: printing may not be done in a handler.
  ssize_t written = isatty(STDERR_FILENO) != 0 ? write(STDERR_FILENO, kLineAway.data(), kLineAway.size()) : 0;
  written += write(STDERR_FILENO, kTold.data(), kTold.size());
  static_cast<void>(written);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

// What is ignored already stays so: whoever started the program wants it.
void handle_interrupts(void (*handler)(int)) {
  struct sigaction before {};
  sigaction(SIGINT, nullptr, &before);
  // As under nohup, or in the background of a shell without jobs.
  if (before.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
}

}  // namespace

void interrupts_end_program() {
  handle_interrupts(end_at_interrupt);
}

void interrupts_are_noted() {
  handle_interrupts(note_interrupt);
}

bool is_interrupted() {
  return interrupted;
}

void interrupt_forget() {
  interrupted = false;
}

void interrupt_check() {
  if (interrupted) throw Fault("interrupted");
}

Progress::Progress(const std::vector<std::string>& inputs)
    : shows_(isatty(STDERR_FILENO) != 0), start_(Clock::now()), next_(start_ + kFirst) {
  for (const std::string& path : inputs) {
    std::error_code error;
    const std::uintmax_t size = path == "-" ? 0 : std::filesystem::file_size(path, error);
    if (path == "-" || error) {
      size_ = 0;  // one that is not known leaves the sum unknown
      return;
    }
    size_ += static_cast<double>(size);
  }
}

Progress::Progress(std::size_t sentences)
    : shows_(isatty(STDERR_FILENO) != 0),
      of_(sentences),
      size_(static_cast<double>(sentences)),
      start_(Clock::now()),
      next_(start_ + kFirst) {}

Progress::~Progress() {
  if (is_shown_) std::fwrite(kLineAway.data(), 1, kLineAway.size(), stderr);
}

void Progress::passed(std::size_t bytes) {
  interrupt_check();
  const std::scoped_lock lock(mutex_);
  // In the unit that the whole is known in: sentences, or bytes.
  passed_ += of_ > 0 ? 1 : static_cast<double>(bytes);
  ++sentences_;
  // Threads that come by between two lines only count.
  const Clock::time_point now = Clock::now();
  if (!shows_ || now < next_) return;
  next_ = now + kInterval;
  is_shown_ = true;
  const double seconds = std::chrono::duration<double>(now - start_).count();
  std::fprintf(stderr, "\r%lld", static_cast<long long>(sentences_));
  if (of_ > 0) std::fprintf(stderr, " of %zu", of_);
  std::fprintf(stderr, " sentences, %.0f/s", static_cast<double>(sentences_) / seconds);
  // Of a pipe nobody knows the end.
  if (size_ > 0 && passed_ > 0) std::fprintf(stderr, ", %.0f s left", seconds * (size_ - passed_) / passed_);
  std::fputs("\033[K", stderr);
  std::fflush(stderr);
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
