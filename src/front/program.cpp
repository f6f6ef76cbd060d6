#include "front/program.hpp"

#include <csignal>
#include <cstdio>
#include <new>
#include <span>

namespace lexon {

namespace {

void print_usage(const Program& program, std::FILE* stream) {
  std::fputs(usage_text(program.usage).c_str(), stream);
}

int start(const Program& program, int argc, char** argv) {
  const std::span words(argv, static_cast<std::size_t>(argc));
  const CommandLine line = command_line_read(words.subspan(words.empty() ? 0 : 1));
  if (line.help) {
    print_usage(program, stdout);
    return 0;
  }
  if (line.version) {
    std::printf("%s %s\n", program.name, LEXON_VERSION);
    return 0;
  }
  if (!line.error.empty() || (words.size() < 2 && !program.starts_without)) {
    if (!line.error.empty()) std::fprintf(stderr, "%s: %s\n", program.name, line.error.c_str());
    print_usage(program, stderr);
    return 2;
  }
  return program.run(line, argc, argv);
}

}  // namespace

int program_main(const Program& program, int argc, char** argv) {
  // A file that must not grow further is a write that fails, and is told like others.
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    return start(program, argc, argv);
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "%s: No memory!\n", program.name);
    return 1;
  }
}

}  // namespace lexon
