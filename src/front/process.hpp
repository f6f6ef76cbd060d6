// How the process stands to its surroundings: standard descriptors, signals of failing writes, and its terminal.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace lexon {

// First of all in every program. Standard descriptors that are closed are opened on the null device, so that no file of
// the run gets their numbers. A write to a closed pipe, or to a file that must not grow, fails like any other instead
// of ending the program.
void process_begin();

// False if something that was written to standard output has not arrived.
[[nodiscard]] bool standard_output_is_whole();

// A line on standard error. What could steer a terminal (control characters, in names and in lines of files) is
// written as \xNN if it goes to one.
void tell_line(std::string_view line);

// The same without its line end.
void tell(std::string_view text);

// A stream over another one that escapes what goes to a terminal, line by line; over one that goes elsewhere it is that
// stream itself.
class ShownStream {
 public:
  explicit ShownStream(std::FILE* under);
  // Writes out what is buffered.
  ~ShownStream();
  ShownStream(const ShownStream&) = delete;
  ShownStream& operator=(const ShownStream&) = delete;

  [[nodiscard]] std::FILE* stream() const { return stream_; }

 private:
  std::FILE* under_;
  std::FILE* stream_;
};

// `text` with what steers a terminal written as \xNN; tabs stay.
[[nodiscard]] std::string escaped(std::string_view text);

}  // namespace lexon
