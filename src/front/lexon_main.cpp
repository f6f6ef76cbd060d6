// The console program.
#include "front/console.hpp"
#include "front/program.hpp"
#include "front/signals.hpp"
#include "run/driver.hpp"

namespace {

int run_in_terminal(const lexon::CommandLine& line, int, char**) {
  lexon::cancel_on_signals();
  lexon::ConsoleHost host(line);
  for (const auto* list : {&line.notes, &line.path_faults}) {
    for (const std::string& note : *list) host.note({note});
  }
  lexon::RunSettings settings = line.settings;
  settings.jobs = line.jobs.value_or(1);
  lexon::run_driver(settings, host);
  return host.exit_status();
}

}  // namespace

int main(int argc, char** argv) {
  return lexon::program_main({.name = "lexon",
                              .usage = "lexon DICTIONARY RULES INPUT OUTPUT",
                              .starts_without = false,
                              .run = run_in_terminal},
                             argc, argv);
}
