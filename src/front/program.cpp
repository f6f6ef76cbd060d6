#include "front/program.hpp"

#include <cstdio>
#include <new>
#include <span>

#include "front/process.hpp"

namespace lexon {

namespace {

// The same text as help and behind a mistake; the stream tells them apart.
void print_usage(const Program& program, std::FILE* stream) {
  std::fputs(usage_text(program.usage).c_str(), stream);
}

// The status of an answer on standard output.
int answered(const Program& program) {
  if (standard_output_is_whole()) return 0;
  tell_line(program.name + std::string(": the output could not be written whole"));
  return 4;
}

// In this order: what is wrong with the words is told only where neither help nor the version was asked for.
int start(const Program& program, int argc, char** argv) {
  const std::span words(argv, static_cast<std::size_t>(argc));
  CommandLine line = command_line_read(words.subspan(words.empty() ? 0 : 1));
  if (line.error.empty() && !program.has_parts && (line.shard || line.index_input || !line.report_file.empty())) {
    line.error = "--shard, --index-input and --report are for \"lexon\"";
  }
  if (line.help) {
    print_usage(program, stdout);
    return answered(program);
  }
  if (line.version) {
    std::printf("%s %s\n", program.name, LEXON_VERSION);
    return answered(program);
  }
  // A call without words asks for help in its own way, and is told as a wrong one.
  if (!line.error.empty() || (words.size() < 2 && !program.starts_without)) {
    if (!line.error.empty()) tell_line(program.name + (": " + line.error));
    print_usage(program, stderr);
    return 2;
  }
  return program.run(line, argc, argv);
}

}  // namespace

int program_main(const Program& program, int argc, char** argv) {
  process_begin();
  try {
    return start(program, argc, argv);
  } catch (const std::bad_alloc&) {
    // Without a string of its own, for which there may be no memory.
    std::fprintf(stderr, "%s: No memory!\n", program.name);
    return 1;
  }
}

}  // namespace lexon
