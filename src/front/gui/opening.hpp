// Files that a file manager hands over, and a command line that starts the program with the same settings again.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "front/command_line.hpp"

namespace lexon {

// Puts each file into the field of its kind. Compiled rules (.rul), grammar sources (.lxr) and dictionaries (.dic) are
// known by their names; a dictionary whose name has "cr" or "cooc..." as a word, or that comes second, is the one for
// co-occurrence. Texts are known by their lines: rules, graphs, an output. A file that has no field leaves a note, and
// so does one of a kind that is there already.
[[nodiscard]] CommandLine line_of_files(std::span<const char* const> files);

// The words that `command_line_read` makes the same settings of, except that no run starts at once.
[[nodiscard]] std::vector<std::string> words_of(const RunSettings& settings, bool yes);

// Starts `program` with these words, and leaves it to itself. False if it cannot be started.
[[nodiscard]] bool start_program(const std::string& program, const std::vector<std::string>& words);

}  // namespace lexon
