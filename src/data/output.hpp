// Text on its way to a file, or kept in memory: sentences, banners, messages and trace.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>
#include <string_view>

namespace lexon {

struct Session;

// Collects what is printed. With a stream the text goes there when the buffer is full or on `flush`; without one it
// stays in memory until `take`. Not thread-safe.
class Output {
 public:
  Output() = default;
  // Does not own the stream. Null: the text is kept.
  explicit Output(std::FILE* stream) : stream_(stream) {}
  ~Output() { flush(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // What is printed from now on goes to `stream`; what was printed before went to the stream before.
  void redirect(std::FILE* stream);
  [[nodiscard]] std::FILE* stream() const { return stream_; }

  void append(std::string_view text) {
    if (text.empty()) return;
    line_is_open_ = text.back() != '\n';
    buffer_ += text;
    if (buffer_.size() >= kFull) write_if_streaming();
  }
  [[gnu::format(printf, 2, 3)]] void print(const char* format, ...);
  void vprint(const char* format, std::va_list arguments);

  // A line of its own, also behind one that was left open. `line` is given without its end.
  void banner(std::string_view line);

  // Hands everything to the stream and the system. Errors stay with the stream (`std::ferror`).
  void flush();

  // What was kept in memory since the last call.
  [[nodiscard]] std::string take();

 private:
  static constexpr std::size_t kFull = std::size_t{64} << 10;
  void write_if_streaming();

  std::FILE* stream_ = nullptr;
  std::string buffer_;
  bool line_is_open_ = false;  // the text that was printed last has not ended its line
};

// `printf` to the session's output; nothing once the worker was asked to stop. Callers test the trace level first, so
// that nothing is formatted in vain.
[[gnu::format(printf, 2, 3)]] void out_print(Session& session, const char* format, ...);

// A place where a reader of the output would want to see all that was printed so far.
void out_flush(Session& session);

}  // namespace lexon
