// Text on its way to a file, or kept in memory: sentences, banners, messages and trace.
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "data/pool.hpp"

namespace lexon {

struct Session;

// Copies texts to `end`, one behind the other, and returns where they end. Those whose length the compiler knows take a
// move or two.
template <std::same_as<std::string_view>... Texts>
[[gnu::always_inline]] inline char* texts_copy(char* end, const Texts... texts) {
  const auto copy = [&end](const std::string_view text) __attribute__((always_inline)) {
    if (__builtin_constant_p(text.size())) {
      std::memcpy(end, text.data(), text.size());
    } else {
      text_copy(end, text.data(), text.size());
    }
    end += text.size();
  };
  (copy(texts), ...);
  return end;
}

// A number as text, with zeros in front up to `width` characters, its sign among them.
class Decimal {
 public:
  explicit Decimal(std::int64_t value, std::size_t width = 1) {
    // Most numbers of a trace have one digit.
    if (value >= 0 && value <= 9 && width <= 1) {
      text_[0] = static_cast<char>('0' + value);
      size_ = 1;
      return;
    }
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

  void append(std::string_view text) { put(text); }
  // Texts, one behind the other.
  template <std::convertible_to<std::string_view>... Pieces>
  [[gnu::always_inline]] void put(const Pieces&... pieces) {
    put_texts(std::string_view(pieces)...);
  }
  [[gnu::format(printf, 2, 3)]] void print(const char* format, ...);
  void vprint(const char* format, std::va_list arguments);

  // A line of its own behind a stop, which may have cut one off. `line` is given without its end.
  void banner(std::string_view line);

  // Hands everything to the stream and the system. Errors stay with the stream (`std::ferror`). Without a stream the
  // collector is asked.
  void flush();

  // What was kept in memory since the last call, in `room`, which loses what it holds: a text that is done with spares
  // the next one its growing.
  [[nodiscard]] std::string take(std::string room = {});
  [[nodiscard]] std::size_t kept() const { return size_; }
  // Prints what `other` keeps, which has nothing left then. Throws `std::bad_alloc`, and then it still has all.
  void take_from(Output& other);

 private:
  static constexpr std::size_t kFull = std::size_t{64} << 10;
  void hand_on();
  void grow(std::size_t size);

  // Where the next text begins, with room for `size` characters. Never null, even for none.
  [[nodiscard]] char* room_for(std::size_t size) {
    if (room_ - size_ <= size) grow(size + 1);
    return text_.get() + size_;
  }
  // A text was written there, and ends at `end`.
  void written(const char* end) {
    const auto size = static_cast<std::size_t>(end - text_.get());
    if (size == size_) return;
    size_ = size;
    line_is_open_ = end[-1] != '\n';
    if (size_ >= full_) hand_on();
  }

  template <std::same_as<std::string_view>... Texts>
  [[gnu::always_inline]] void put_texts(const Texts... texts) {
    written(texts_copy(room_for((texts.size() + ...)), texts...));
  }

  std::FILE* stream_ = nullptr;
  Collector* collector_ = nullptr;
  std::size_t full_ = kFull;  // of the text, when it is to be handed on
  std::unique_ptr<char[]> text_;
  std::size_t size_ = 0;       // of the text
  std::size_t room_ = 0;       // for it
  bool line_is_open_ = false;  // the text that was printed last has not ended its line
};

// `printf` to the session's output; nothing once the worker was asked to stop. Callers test the trace level first, so
// that nothing is formatted in vain.
[[gnu::format(printf, 2, 3)]] void out_print(Session& session, const char* format, ...);

}  // namespace lexon
