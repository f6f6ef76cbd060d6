#include "data/output.hpp"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <utility>

#include "data/session.hpp"

namespace lexon {

void Output::hand_on() {
  if (stream_ != nullptr) {
    std::fwrite(buffer_.data(), 1, buffer_.size(), stream_);
    buffer_.clear();
  } else if (collector_ != nullptr) {
    collector_->collect(*this);
  }
  full_ = buffer_.size() + kFull;
}

void Output::redirect(std::FILE* stream) {
  flush();
  stream_ = stream;
  if (stream != nullptr) buffer_.reserve(2 * kFull);
}

void Output::vprint(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  std::array<char, 2048> line;
  const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
  if (length >= 0 && static_cast<std::size_t>(length) < line.size()) {
    append({line.data(), static_cast<std::size_t>(length)});
  } else if (length >= 0) {
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, again);
    text.pop_back();
    append(text);
  }
  va_end(again);
}

void Output::print(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  vprint(format, arguments);
  va_end(arguments);
}

void Output::banner(std::string_view line) {
  if (line_is_open_) append("\n");
  append(line);
  append("\n");
}

void Output::flush() {
  hand_on();
  if (stream_ != nullptr) std::fflush(stream_);
}

std::string Output::take(std::string room) {
  full_ = kFull;
  room.clear();
  return std::exchange(buffer_, std::move(room));
}

void out_print(Session& session, const char* format, ...) {
  if (session.stop_requested.load(std::memory_order_relaxed)) return;
  std::va_list arguments;
  va_start(arguments, format);
  session.output.vprint(format, arguments);
  va_end(arguments);
}

}  // namespace lexon
