// The console program.
#include <csignal>
#include <cstdio>
#include <new>
#include <span>

#include "front/command_line.hpp"
#include "front/console.hpp"
#include "front/signals.hpp"
#include "run/driver.hpp"

namespace {

void print_usage(std::FILE* stream) {
  std::fputs(lexon::usage_text("lexon DICTIONARY RULES INPUT OUTPUT").c_str(), stream);
}

int run(int argc, char** argv) {
  const lexon::CommandLine line =
      lexon::command_line_read(std::span<const char* const>(argv, static_cast<std::size_t>(argc)).subspan(1));
  if (line.help) {
    print_usage(stdout);
    return 0;
  }
  if (line.version) {
    std::puts("lexon " LEXON_VERSION);
    return 0;
  }
  if (argc < 2 || !line.error.empty()) {
    if (!line.error.empty()) std::fprintf(stderr, "lexon: %s\n", line.error.c_str());
    print_usage(stderr);
    return 2;
  }
  lexon::cancel_on_signals();
  lexon::ConsoleHost host(line);
  lexon::run_driver(line.settings, host);
  return host.exit_status();
}

}  // namespace

int main(int argc, char** argv) {
  // A file that must not grow further is a write that fails, and is told like others.
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    return run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("lexon: No memory!\n", stderr);
    return 1;
  }
}
