// Text on its way to a file, or kept in memory: sentences, banners, messages and trace.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>
#include <string_view>

namespace lexon {

struct Session;

// Collects what is printed. With a stream the text goes there when the buffer is full or on `flush`; without one it
// stays in memory until `take`, and a collector is asked whether it wants it. Not thread-safe.
class Output {
 public:
  // What becomes of text that is kept in memory.
  class Collector {
   public:
    virtual ~Collector() = default;
    // There is much of it, or somebody wants to see it. May `take` it, or leave it.
    virtual void collect(Output& output) = 0;
  };

  Output() = default;
  // Does not own the stream. Null: the text is kept.
  explicit Output(std::FILE* stream) : stream_(stream) {}
  ~Output() { flush(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // What is printed from now on goes to `stream`; what was printed before went to the stream before.
  void redirect(std::FILE* stream);
  [[nodiscard]] std::FILE* stream() const { return stream_; }
  // Not owned; null: nobody asks for the text. Is of use where there is no stream.
  void set_collector(Collector* collector) { collector_ = collector; }

  void append(std::string_view text) {
    if (text.empty()) return;
    line_is_open_ = text.back() != '\n';
    buffer_ += text;
    if (buffer_.size() >= full_) hand_on();
  }
  [[gnu::format(printf, 2, 3)]] void print(const char* format, ...);
  void vprint(const char* format, std::va_list arguments);

  // A line of its own, also behind one that was left open. `line` is given without its end.
  void banner(std::string_view line);

  // Hands everything to the stream and the system. Errors stay with the stream (`std::ferror`). Without a stream the
  // collector is asked.
  void flush();

  // What was kept in memory since the last call.
  [[nodiscard]] std::string take();
  [[nodiscard]] std::size_t kept() const { return buffer_.size(); }

 private:
  static constexpr std::size_t kFull = std::size_t{64} << 10;
  void hand_on();

  std::FILE* stream_ = nullptr;
  Collector* collector_ = nullptr;
  std::size_t full_ = kFull;  // of the buffer, when it is to be handed on
  std::string buffer_;
  bool line_is_open_ = false;  // the text that was printed last has not ended its line
};

// `printf` to the session's output; nothing once the worker was asked to stop. Callers test the trace level first, so
// that nothing is formatted in vain.
[[gnu::format(printf, 2, 3)]] void out_print(Session& session, const char* format, ...);

// A place where the text so far is handed on if `flush_wanted` is set: at least one in every loop that can run long.
void out_flush(Session& session);

}  // namespace lexon
