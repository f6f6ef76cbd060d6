// One run from its settings to its last banner.
#pragma once

#include <string>
#include <vector>

#include "run/host.hpp"
#include "run/settings.hpp"

namespace lexon {

// Opens the files of the run, has the rules converted or loaded, and renders one sentence after the other. All that
// it has to say goes into the output file or through `host`. One run in a process; only one that could not start may be
// followed by another.
void run_driver(const RunSettings& settings, Host& host);

// What went wrong with files on the way, without ending the run: the output has no place for it. Cleared by the start
// of a run and set when `finish` is called; the front end tells it.
struct RunFaults {
  std::vector<std::string> notes;  // each names the file, and the place if it is known
  bool file_is_short;              // a file could not be read or written to its end
};
extern RunFaults run_faults;

}  // namespace lexon
