// A sign of life for people at a terminal: how far long work has come.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>

namespace lexon {

// Counts what is done, and shows the count in one line that is written over and over, from the second second on. Shows
// nothing where `stream` is no terminal. The line is gone when this ends, or when `hide` is called in front of a message.
class TerminalCount {
 public:
  // `what`: the noun behind the number, as in "12000 entries". Both have to outlive this.
  TerminalCount(std::FILE* stream, const char* what);
  ~TerminalCount() { hide(); }
  TerminalCount(const TerminalCount&) = delete;
  TerminalCount& operator=(const TerminalCount&) = delete;

  void count() {
    // The clock is asked now and then, since some work is a microsecond long.
    constexpr std::int64_t kNowAndThen = 256;
    if (++count_ % kNowAndThen == 0 && stream_ != nullptr) show();
  }
  void hide();

 private:
  using Clock = std::chrono::steady_clock;
  void show();

  std::FILE* stream_;  // null: no terminal
  const char* what_;
  std::int64_t count_ = 0;
  Clock::time_point next_;  // when the line is to be written again
  bool is_shown_ = false;
};

}  // namespace lexon
