// Writing to the run's one output stream.
#pragma once

namespace lexon {

// `printf` to the output. Callers test the trace level first, so that nothing is formatted in vain. A worker that was
// asked to stop prints nothing any more.
[[gnu::format(printf, 1, 2)]] void out_print(const char* format, ...);

// What the driver says of a step, in a line of its own, also of one that was stopped in the middle of a line. `line` is
// given without its end.
void out_banner(const char* line);

void out_flush();

}  // namespace lexon
