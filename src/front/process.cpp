#include "front/process.hpp"

#include <array>
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include "data/utf8.hpp"

namespace lexon {

namespace {

bool is_control(std::uint32_t code) {
  return (code < 0x20 && code != '\t') || (code >= 0x7F && code < 0xA0);
}

}  // namespace

void process_begin() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free number is the one that is closed.
    if (fcntl(descriptor, F_GETFD) == -1) static_cast<void>(open("/dev/null", O_RDWR));
  }
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
}

bool standard_output_is_whole() {
  return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

std::string escaped(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const Utf8Character character = utf8_first(text);
    for (const char c : text.substr(0, character.length)) {
      std::array<char, 5> code;
      std::snprintf(code.data(), code.size(), "\\x%02X", static_cast<unsigned char>(c));
      shown += is_control(character.code) ? std::string(code.data()) : std::string(1, c);
    }
    text.remove_prefix(character.length);
  }
  return shown;
}

void tell(std::string_view text) {
  const std::string shown = isatty(STDERR_FILENO) != 0 ? escaped(text) : std::string(text);
  std::fwrite(shown.data(), 1, shown.size(), stderr);
}

void tell_line(std::string_view line) {
  tell(line);
  std::fputc('\n', stderr);
}

}  // namespace lexon
