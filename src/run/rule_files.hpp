// Deciding what to do with the rule file: convert the text, or reuse the compiled files beside it.
#pragma once

#include <string>

#include "run/context.hpp"

namespace lexon {

// Sets `convert`, `rebuild_matrix`, the paths and the open files of the context. On failure the result is the message
// for the user; the empty text means that all is open.
//
// | rule_file | compiled rules                     | matrix                    | what is opened                   |
// |-----------|------------------------------------|---------------------------|----------------------------------|
// | x.txt     | missing, older than x.txt or empty | any                       | text; both compiled for writing  |
// | x.txt     | as new as x.txt                    | as new as the rules       | both compiled for reading        |
// | x.txt     | as new as x.txt                    | missing or older          | rules for reading, matrix anew   |
// | x.rul     | there                              | as new / missing or older | likewise                         |
// | x.mtx     |                                    |                           | refused                          |
[[nodiscard]] std::string rule_files_open(const std::string& rule_file, RunContext& context);

}  // namespace lexon
