// One run from its settings to its last banner.
#pragma once

#include <string>
#include <vector>

#include "run/host.hpp"
#include "run/settings.hpp"

namespace lexon {

// Opens the files of the run, has the rules converted or loaded, and renders one sentence after the other. All that
// it has to say goes into the output file or through `host`. It closes what it opens.
void run_driver(const RunSettings& settings, Host& host);

}  // namespace lexon
