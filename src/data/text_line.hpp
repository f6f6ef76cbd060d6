// Lines of text files, whatever their line ends.
#pragma once

#include <cstdio>

namespace lexon {

// As `fgets`, with the pair CR LF read as one LF; a lone CR stays. Returns false at the end of the file. A line of
// `size` - 1 characters or more arrives in pieces.
[[nodiscard]] bool text_line_read(std::FILE* stream, char* buffer, int size);

}  // namespace lexon
