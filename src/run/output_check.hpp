// Keeps a run from writing over what it reads.
#pragma once

#include <string>

#include "run/settings.hpp"

namespace lexon {

// The message that refuses an output which is also a file that the run reads or keeps: the dictionaries, their indexes,
// the rules, the compiled files and the input, by whatever path, link or hard link. Empty if it is none of them;
// devices and pipes never are. To be asked before the output is opened: it must not exist for that, nothing is written.
[[nodiscard]] std::string output_conflict(const RunSettings& settings);

}  // namespace lexon
