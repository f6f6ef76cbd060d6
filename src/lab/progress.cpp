#include "lab/progress.hpp"

#include <cstdio>
#include <filesystem>

#include <unistd.h>

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::chrono::seconds kFirst{1};
constexpr std::chrono::milliseconds kInterval{200};

}  // namespace

Progress::Progress(const std::vector<std::string>& inputs)
    : shows_(isatty(STDERR_FILENO) != 0), start_(Clock::now()), next_(start_ + kFirst) {
  for (const std::string& path : inputs) {
    std::error_code error;
    const std::uintmax_t size = path == "-" ? 0 : std::filesystem::file_size(path, error);
    if (path == "-" || error) {
      size_ = 0;
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
  if (is_shown_) std::fputs("\r\033[K", stderr);
}

void Progress::passed(std::size_t bytes) {
  const std::scoped_lock lock(mutex_);
  passed_ += of_ > 0 ? 1 : static_cast<double>(bytes);
  ++sentences_;
  const Clock::time_point now = Clock::now();
  if (!shows_ || now < next_) return;
  next_ = now + kInterval;
  is_shown_ = true;
  const double seconds = std::chrono::duration<double>(now - start_).count();
  std::fprintf(stderr, "\r%lld", static_cast<long long>(sentences_));
  if (of_ > 0) std::fprintf(stderr, " of %zu", of_);
  std::fprintf(stderr, " sentences, %.0f/s", static_cast<double>(sentences_) / seconds);
  if (size_ > 0 && passed_ > 0) std::fprintf(stderr, ", %.0f s left", seconds * (size_ - passed_) / passed_);
  std::fputs("\033[K", stderr);
  std::fflush(stderr);
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
