// Text on its way to a file, or kept in memory: sentences, banners, messages and trace.
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace lexon {

struct Session;

// A number as text, with zeros in front up to `width` characters, its sign among them.
class Decimal {
 public:
  explicit Decimal(std::int64_t value, std::size_t width = 1) {
    char* to = text_.data();
    const std::uint64_t size =
        value < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    if (value < 0) *to++ = '-';
    std::array<char, 20> digits;
    const auto count =
        static_cast<std::size_t>(std::to_chars(digits.data(), digits.data() + 20, size).ptr - digits.data());
    for (std::size_t used = count + (value < 0 ? 1 : 0); used < width && used < kMostWidth; ++used) *to++ = '0';
    to += std::string_view(digits.data(), count).copy(to, count);
    size_ = static_cast<std::size_t>(to - text_.data());
  }
  operator std::string_view() const { return {text_.data(), size_}; }  // NOLINT(google-explicit-constructor)

 private:
  static constexpr std::size_t kMostWidth = 24;
  std::array<char, kMostWidth> text_;
  std::size_t size_;
};

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

  // What is printed from now on goes to `stream`; what was printed before went to the stream before. Takes the room that
  // printing needs, so that no line of usual length fails for memory. Throws `std::bad_alloc`.
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
  // Texts, one behind the other.
  template <std::convertible_to<std::string_view>... Pieces>
  void put(const Pieces&... pieces) {
    (append(pieces), ...);
  }
  [[gnu::format(printf, 2, 3)]] void print(const char* format, ...);
  void vprint(const char* format, std::va_list arguments);

  // A line of its own behind a stop, which may have cut one off. `line` is given without its end.
  void banner(std::string_view line);

  // Hands everything to the stream and the system. Errors stay with the stream (`std::ferror`). Without a stream the
  // collector is asked.
  void flush();

  // What was kept in memory since the last call. What comes is kept in `room`, which loses what it holds: a text that is
  // done with spares the next one its growing.
  [[nodiscard]] std::string take(std::string room = {});
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

}  // namespace lexon
