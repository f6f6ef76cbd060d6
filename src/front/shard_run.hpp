// A shard of a run from the command line, and the pass that finds where sentences begin.
#pragma once

#include "front/command_line.hpp"
#include "front/console.hpp"

namespace lexon {

// Renders the shard, unless it is done already, and writes its marker. Returns the exit status.
[[nodiscard]] int run_shard(const CommandLine& line, RunSettings settings, ConsoleHost& host);

// Writes the offsets of the input. Returns the exit status.
[[nodiscard]] int index_input(const RunSettings& settings, ConsoleHost& host);

}  // namespace lexon
