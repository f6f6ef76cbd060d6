// The command line of a run: four paths, then switches.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/settings.hpp"
#include "run/shard.hpp"

namespace lexon {

enum class ProgressStyle { automatic, plain, none };

// What the console program wants beside the settings of the run.
struct CommandLine {
  RunSettings settings;
  bool help = false;
  bool version = false;
  bool yes = false;                  // the answer to every question
  std::optional<std::int32_t> jobs;  // none: as the program wants it
  std::optional<ShardNumber> shard;  // none: the whole run
  bool forced_target = false;        // the shard begins with one
  bool index_input = false;          // find the sentences of the input and do nothing else
  std::string report_file;           // a row for each sentence; empty: none is wanted
  ProgressStyle progress = ProgressStyle::automatic;
  std::string error;  // what is wrong with the command line; empty if nothing is
  // What the user may not have meant, though the run goes on: numbers, and paths that are missing or too long. With
  // `strict` the first of the paths is an error.
  std::vector<std::string> notes;
  std::vector<std::string> path_faults;
};

// Reads the words of a command line, the program's name not among them. A switch is "-" or "^" and a letter, of either
// case, its value joined to it or the next word. Relative paths are made absolute. Anything that is no switch and a
// fifth bare word leave an `error`.
[[nodiscard]] CommandLine command_line_read(std::span<const char* const> words);

// How to call a program: `call` is its name and its paths.
[[nodiscard]] std::string usage_text(std::string_view call);

}  // namespace lexon
