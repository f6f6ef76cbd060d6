// lexon-lab: the workbench. Why a sentence comes out as it does, where rules and words fail, what changed.

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <new>
#include <vector>

#include "front/process.hpp"
#include "lab/commands.hpp"
#include "lab/progress.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// All commands are declared, and the one that was named is run: its help knows the others, and the shell calls any of them.
int run_command(const std::vector<std::string>& words) {
  CLI::App app("Shows why sentences come out as they do, and finds mistakes in rules, words and graphs.", "lexon-lab");
  app.set_version_flag("--version", std::string("lexon-lab ") + LEXON_VERSION);
  app.require_subcommand(1);
  const std::vector<Command> commands = {
      add_check(app),   add_coverage(app), add_expand(app), add_explain(app), add_lsp(app),
      add_profile(app), add_render(app),   add_report(app), add_serve(app),   add_shell(app),
      add_test(app),    add_view(app),     add_why(app),
  };
  try {
    // The library takes the words from the back.
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;  // --help and --version come this way too
  }
  for (const Command& command : commands) {
    // It has one subcommand at the most.
    if (command.app->parsed()) return command.run();
  }
  return kUsage;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon

namespace {

using namespace lexon::lab;

// The status of a command whose output has to arrive.
int with_output_written(int status) {
  if (lexon::standard_output_is_whole()) return status;
  std::fputs("lexon-lab: the output could not be written whole\n", stderr);
  return kOutputShort;
}

}  // namespace

int main(int argc, char** argv) {
  lexon::process_begin();
  interrupts_end_program();
  try {
    return with_output_written(run_command({argv + (argc > 0 ? 1 : 0), argv + argc}));
  } catch (const std::bad_alloc&) {
    std::fputs("lexon-lab: memory is exhausted\n", stderr);
  } catch (const std::exception& fault) {
    lexon::tell_line(std::string("lexon-lab: ") + fault.what());
  }
  return kFailed;
}
