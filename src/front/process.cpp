#include "front/process.hpp"

#include <array>
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include "data/platform.hpp"
#include "data/utf8.hpp"

namespace lexon {

namespace {

// Also the second set of controls, from U+0080 on.
// What a terminal would obey instead of showing it; a tab is shown.
bool is_control(std::uint32_t code) {
  return (code < 0x20 && code != '\t') || (code >= 0x7F && code < 0xA0);
}

// Line ends pass; the rest goes out as it may be shown.
ssize_t write_shown(void* under, const char* text, std::size_t size) {
  auto* stream = static_cast<std::FILE*>(under);
  for (std::string_view rest(text, size); !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(line.size());
    const std::string shown = escaped(line);
    std::fwrite(shown.data(), 1, shown.size(), stream);
    if (rest.empty()) break;
    std::fputc('\n', stream);
    rest.remove_prefix(1);
  }
  return std::fflush(stream) == 0 ? static_cast<ssize_t>(size) : 0;
}

}  // namespace

// Where the system gives no such stream the text goes out as it is.
ShownStream::ShownStream(std::FILE* under) : under_(under), stream_(under) {
  if (isatty(fileno(under)) == 0) return;
  cookie_io_functions_t functions{};
  functions.write = write_shown;
  std::FILE* shown = fopencookie(under, "w", functions);
  if (shown == nullptr) return;
  std::setvbuf(shown, nullptr, _IOLBF, BUFSIZ);
  stream_ = shown;
}

// Closing hands on what is left; the stream below stays open.
ShownStream::~ShownStream() {
  if (stream_ != under_) std::fclose(stream_);
}

// A program may be started with closed streams. The next file that it opens would then become its standard output, and
// messages would go into it.
void process_begin() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free number is the one that is closed.
    if (fcntl(descriptor, F_GETFD) == -1) static_cast<void>(open("/dev/null", O_RDWR));
  }
  // A limit of the file size and a closed pipe are failed writes like any other, and are told as such.
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
}

bool standard_output_is_whole() {
  return is_written(stdout);
}

std::string escaped(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const Utf8Character character = utf8_first(text);
    // Each byte of a control character by itself; bytes that are no UTF-8 pass as they are.
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
  // A file or a pipe gets the bytes as they are.
  const std::string shown = isatty(STDERR_FILENO) != 0 ? escaped(text) : std::string(text);
  std::fwrite(shown.data(), 1, shown.size(), stderr);
}

void tell_line(std::string_view line) {
  tell(line);
  std::fputc('\n', stderr);
}

}  // namespace lexon
