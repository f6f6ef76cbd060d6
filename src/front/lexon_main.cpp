// The console program.
#include <cstdio>
#include <span>
#include <string_view>

#include "front/console.hpp"
#include "front/join.hpp"
#include "front/process.hpp"
#include "front/program.hpp"
#include "front/shard_run.hpp"
#include "front/signals.hpp"
#include "run/driver.hpp"

namespace {

// The order matters: signals before anything that can wait, notes about the command line before those of files.
int run_in_terminal(const lexon::CommandLine& line, int, char**) {
  lexon::cancel_on_signals();
  lexon::ConsoleHost host(line);
  for (const auto* list : {&line.notes, &line.path_faults}) {
    for (const std::string& note : *list) host.note({note});
  }
  // Without a word about threads: one.
  lexon::RunSettings settings = line.settings;
  settings.jobs = line.jobs.value_or(1);
  if (line.index_input) return lexon::index_input(settings, host);
  if (line.shard) return lexon::run_shard(line, settings, host);
  if (!line.report_file.empty() && !host.open_report(line.report_file, settings)) return host.exit_status();
  lexon::run_driver(settings, host);
  return host.exit_status();
}

}  // namespace

// The status is that of the run; see the usage text.
int main(int argc, char** argv) {
  const std::span words(argv, static_cast<std::size_t>(argc));
  // The only command of its own; every other word in its place is the path of a dictionary.
  if (argc > 1 && std::string_view(words[1]) == "join") {
    lexon::process_begin();
    return lexon::join_shards(words.subspan(2));
  }
  return lexon::program_main({.name = "lexon",
                              .usage = "lexon DICTIONARY RULES INPUT OUTPUT",
                              .starts_without = false,
                              .run = run_in_terminal,
                              .has_parts = true},
                             argc, argv);
}
