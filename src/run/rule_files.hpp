// The rule text and the compiled files beside it: deciding whether the text is converted or the compiled files are
// reused, opening them, and putting new ones in their place.
//
// The dates decide. A stamp beside the compiled files tells what the text and both files held when they were written:
// it makes notes, and changes no decision. Runs that work side by side in one folder see one pair or the other, whole.
#pragma once

#include <string>

#include "run/context.hpp"
#include "run/settings.hpp"

namespace lexon {

// What stands beside a rule file; all empty without one.
struct CompiledPaths {
  std::string rules;
  std::string matrix;
  std::string stamp;
};
[[nodiscard]] CompiledPaths compiled_paths_of(const std::string& rule_file);

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
//
// A grammar source (x.lxr with directives) is expanded first, and its expansion x.lxr.txt takes its place; its messages
// lie in the context. With `in_memory` no expansion is written.
// With `rebuild` what could be reused counts as older. With `in_memory` nothing is opened for writing, and of x.txt no
// compiled file at all.
[[nodiscard]] std::string rule_files_open(const RunSettings& settings, RunContext& context);

// For the worker that loads: the compiled files fail, for the reason `why`. Opens them for writing, so that the text
// can be converted after all, and notes it. False without a text; nothing has happened then.
[[nodiscard]] bool rule_files_make_anew(RunContext& context, const std::string& why);

// Behind the rule step. What was written comes into its place; both files stand empty if the step has failed, and are
// gone if it was cancelled while it converted.
void rule_files_finish(RunContext& context, bool succeeded);
void rule_files_cancel(RunContext& context);

}  // namespace lexon
