// lexon-lab: the workbench. Why a sentence comes out as it does, where rules and words fail, what changed.

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <new>
#include <vector>

#include "front/process.hpp"
#include "lab/commands.hpp"

namespace {

using namespace lexon::lab;

int run(int argc, char** argv) {
  CLI::App app("Shows why sentences come out as they do, and finds mistakes in rules, words and graphs.", "lexon-lab");
  app.set_version_flag("--version", std::string("lexon-lab ") + LEXON_VERSION);
  app.require_subcommand(1);
  const std::vector<Command> commands = {
      add_check(app),
      add_expand(app),
      add_render(app),
      add_test(app),
  };
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }
  for (const Command& command : commands) {
    if (command.app->parsed()) return command.run();
  }
  return kUsage;
}

// The status of a command whose output has to arrive.
int with_output_written(int status) {
  if (lexon::standard_output_is_whole()) return status;
  std::fputs("lexon-lab: the output could not be written whole\n", stderr);
  return kOutputShort;
}

}  // namespace

int main(int argc, char** argv) {
  lexon::process_begin();
  try {
    return with_output_written(run(argc, argv));
  } catch (const std::bad_alloc&) {
    std::fputs("lexon-lab: memory is exhausted\n", stderr);
  } catch (const std::exception& fault) {
    lexon::tell_line(std::string("lexon-lab: ") + fault.what());
  }
  return kFailed;
}
