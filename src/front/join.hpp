// `lexon join`: the outputs of all shards of a run become the output of the run.
#pragma once

#include <span>

namespace lexon {

// `words` stand behind "join". Returns the exit status: that of the run, 1 if the shards are not all there, whole and of
// one run, 2 for a wrong command line, 4 if the output could not be written.
[[nodiscard]] int join_shards(std::span<char* const> words);

}  // namespace lexon
