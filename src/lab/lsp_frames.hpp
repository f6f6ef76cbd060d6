// Messages as they go over a stream: a head with "Content-Length: N", an empty line, N bytes.
#pragma once

#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>

namespace lexon {
inline namespace v1 {
namespace lab {

enum class Frame { message, bad, end };

// Reads the next one. `bad`: a head without a length, which is passed over; `text` then says what is wrong. `end`: the
// stream ended, maybe within a message.
[[nodiscard]] Frame frame_read(std::FILE* stream, std::string& text);

// Writes messages whole, whatever thread they come from.
class FrameWriter {
 public:
  explicit FrameWriter(std::FILE* stream) : stream_(stream) {}
  void write(std::string_view text);

 private:
  std::mutex mutex_;
  std::FILE* stream_;
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
