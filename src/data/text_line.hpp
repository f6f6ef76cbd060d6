// Lines of text files, whatever their line ends.
#pragma once

#include <cstdint>
#include <cstdio>

namespace lexon {

// What reading a text line by line has shown. The numbers of lines count from 1; 0: there is no such line.
struct TextWatch {
  std::int64_t line = 0;       // the one read last
  bool goes_on = false;        // it was longer than the buffer: its rest comes next
  bool is_utf16 = false;       // the text begins with the mark of UTF-16
  bool has_mark = false;       // ... of UTF-8
  std::int64_t nul = 0;        // the first line with a NUL, which hides what stands behind it
  std::int64_t utf8 = 0;       // the first with a character of UTF-8 that has more than a byte
  std::int64_t other = 0;      // the first with bytes that are none
  std::int64_t long_line = 0;  // the first that came in pieces
};

// As `fgets`, with the pair CR LF read as one LF; a lone CR stays. Returns false at the end of the file. A line of
// `size` - 1 characters or more arrives in pieces. Null for `watch`: nobody wants to know.
[[nodiscard]] bool text_line_read(std::FILE* stream, char* buffer, int size, TextWatch* watch = nullptr);

}  // namespace lexon
