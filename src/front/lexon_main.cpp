// The console program.
#include <cstdio>
#include <span>

#include "front/command_line.hpp"
#include "front/console.hpp"
#include "run/driver.hpp"

int main(int argc, char** argv) {
  const lexon::CommandLine line =
      lexon::command_line_read(std::span<const char* const>(argv, static_cast<std::size_t>(argc)).subspan(1));
  if (line.help) {
    std::fputs(lexon::usage_text(), stdout);
    return 0;
  }
  if (line.version) {
    std::puts("lexon " LEXON_VERSION);
    return 0;
  }
  if (argc < 2 || !line.error.empty()) {
    if (!line.error.empty()) std::fprintf(stderr, "lexon: %s\n", line.error.c_str());
    std::fputs(lexon::usage_text(), stderr);
    return 2;
  }
  lexon::cancel_on_signals();
  lexon::ConsoleHost host(line);
  lexon::run_driver(line.settings, host);
  return host.exit_status();
}
