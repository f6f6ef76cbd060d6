// How far a long reading has come: a line on standard error, if that is a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace lexon {
inline namespace v1 {
namespace lab {

// "1234 sentences, 320/s, 12 s left", from the second second on; it goes away at the end.
class Progress {
 public:
  // What is left is reckoned from the sizes of the files; without a size (a pipe) it is not shown.
  explicit Progress(const std::vector<std::string>& inputs);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // A sentence of this many bytes is done.
  void passed(std::size_t bytes);

 private:
  using Clock = std::chrono::steady_clock;

  bool shows_;
  bool is_shown_ = false;
  double size_ = 0;  // bytes; 0: not known
  double passed_ = 0;
  std::int64_t sentences_ = 0;
  Clock::time_point start_;
  Clock::time_point next_;
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
