#include "dicttool/terminal_count.hpp"

#include <unistd.h>

namespace lexon {

namespace {

// Short work shows nothing; a line that changes more often cannot be read.
constexpr std::chrono::seconds kFirst{1};
constexpr std::chrono::milliseconds kInterval{200};

}  // namespace

TerminalCount::TerminalCount(std::FILE* stream, const char* what)
    : stream_(isatty(fileno(stream)) != 0 ? stream : nullptr), what_(what), next_(Clock::now() + kFirst) {}

void TerminalCount::show() {
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  is_shown_ = true;
  // "\033[K" takes away what a longer line has left behind the new one.
  std::fprintf(stream_, "\r%lld %s\033[K", static_cast<long long>(count_), what_);
  std::fflush(stream_);
}

void TerminalCount::hide() {
  if (!is_shown_) return;
  is_shown_ = false;
  std::fputs("\r\033[K", stream_);
}

}  // namespace lexon
