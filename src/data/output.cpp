#include "data/output.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <utility>

#include "data/session.hpp"

namespace lexon {

void Output::hand_on() {
  if (stream_ != nullptr) {
    if (size_ != 0) std::fwrite(text_.get(), 1, size_, stream_);
    size_ = 0;
  } else if (collector_ != nullptr) {
    collector_->collect(*this);
  }
  full_ = size_ + kFull;
}

void Output::grow(std::size_t size) {
  const std::size_t room = std::max(2 * room_, size_ + size);
  std::unique_ptr<char[]> text(new char[room]);
  if (size_ != 0) std::memcpy(text.get(), text_.get(), size_);
  text_ = std::move(text);
  room_ = room;
}

void Output::redirect(std::FILE* stream) {
  flush();
  stream_ = stream;
  if (stream != nullptr) (void)room_for(2 * kFull);
}

void Output::vprint(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  constexpr std::size_t kUsualLine = 2048;
  char* begin = room_for(kUsualLine);
  const int length = std::vsnprintf(begin, kUsualLine, format, arguments);
  const auto size = static_cast<std::size_t>(std::max(length, 0));
  if (size >= kUsualLine) {
    begin = room_for(size + 1);
    std::vsnprintf(begin, size + 1, format, again);
  }
  written(begin + size);
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
  room.assign(text_.get(), std::exchange(size_, 0));
  return room;
}

void Output::take_from(Output& other) {
  put(std::string_view(other.text_.get(), other.size_));
  other.size_ = 0;
  other.full_ = kFull;
}

void out_print(Session& session, const char* format, ...) {
  if (session.stop_requested.load(std::memory_order_relaxed)) return;
  std::va_list arguments;
  va_start(arguments, format);
  session.output.vprint(format, arguments);
  va_end(arguments);
}

}  // namespace lexon
