#include "data/output.hpp"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string_view>

#include "data/state.hpp"

namespace lexon {

namespace {

// Longer texts than this are rare; of them the format alone says whether they end their line.
constexpr std::size_t kShortText = 2048;

}  // namespace

void out_print(const char* format, ...) {
  if (state.output == nullptr || stop_requested.load(std::memory_order_relaxed)) return;
  std::array<char, kShortText> text;
  std::va_list arguments;
  va_start(arguments, format);
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
  if (length < 0 || static_cast<std::size_t>(length) >= text.size()) {
    std::vfprintf(state.output, format, again);
    state.line_is_open = !std::string_view(format).ends_with('\n');
  } else if (length > 0) {
    std::fwrite(text.data(), 1, static_cast<std::size_t>(length), state.output);
    state.line_is_open = text[static_cast<std::size_t>(length) - 1] != '\n';
  }
  va_end(again);
  va_end(arguments);
}

void out_banner(const char* line) {
  if (state.output == nullptr) return;
  std::fprintf(state.output, "%s%s\n", state.line_is_open ? "\n" : "", line);
  state.line_is_open = false;
}

void out_flush() {
  if (state.output != nullptr) std::fflush(state.output);
}

}  // namespace lexon
