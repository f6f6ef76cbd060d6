#include "data/output.hpp"

#include <cstdarg>
#include <cstdio>

#include "data/state.hpp"

namespace lexon {

void out_print(const char* format, ...) {
  if (state.output == nullptr) return;
  std::va_list arguments;
  va_start(arguments, format);
  std::vfprintf(state.output, format, arguments);
  va_end(arguments);
}

void out_flush() {
  if (state.output != nullptr) std::fflush(state.output);
}

}  // namespace lexon
