// What the console program and the windowed program have in common: how they start, and what they answer without a run.
#pragma once

#include "front/command_line.hpp"

namespace lexon {

struct Program {
  const char* name;
  const char* usage;    // how to call it: its name and its paths
  bool starts_without;  // also without a word on its command line
  int (*run)(const CommandLine& line, int argc, char** argv);
  bool has_parts = false;  // takes --shard, --index-input and --report
};

// The main function of `program`. Returns the exit status: that of `run`, 0 for help and version, 2 for a wrong command
// line, 1 where memory is exhausted outside the steps of a run, 4 for an answer that did not arrive.
[[nodiscard]] int program_main(const Program& program, int argc, char** argv);

}  // namespace lexon
