// Writing to the run's one output stream.
#pragma once

namespace lexon {

// `printf` to the output. Callers test the trace level first, so that nothing is formatted in vain.
[[gnu::format(printf, 1, 2)]] void out_print(const char* format, ...);

void out_flush();

}  // namespace lexon
