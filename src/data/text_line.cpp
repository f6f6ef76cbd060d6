#include "data/text_line.hpp"

namespace lexon {

namespace {

// The next character of a text file, a CR LF pair counting as its LF; EOF at the end.
int next_char(std::FILE* stream) {
  const int c = getc_unlocked(stream);
  if (c != '\r') return c;
  const int behind = getc_unlocked(stream);
  if (behind == '\n') return behind;
  if (behind != EOF) std::ungetc(behind, stream);
  return c;
}

}  // namespace

bool text_line_read(std::FILE* stream, char* buffer, int size) {
  int length = 0;
  while (length < size - 1) {
    const int c = next_char(stream);
    if (c == EOF) break;
    buffer[length++] = static_cast<char>(c);
    if (c == '\n') break;
  }
  if (length == 0) return false;
  buffer[length] = '\0';
  return true;
}

}  // namespace lexon
