// The windowed program.
#include <QApplication>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "front/command_line.hpp"
#include "front/gui/controls.hpp"
#include "front/gui/main_dialog.hpp"

namespace {

void print_usage(std::FILE* stream) {
  std::fputs(lexon::usage_text("lexon-gui [DICTIONARY [RULES [INPUT [OUTPUT]]]]").c_str(), stream);
}

// The toolkit ends the program by a signal where there is no display.
bool has_display() {
#ifdef __linux__
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return true;
  }
  return false;
#else
  return true;
#endif
}

int run_windows(int argc, char** argv, const lexon::CommandLine& line) {
  int toolkit_argc = argc < 1 ? argc : 1;  // the switches are all ours
  const QApplication application(toolkit_argc, argv);
  // The toolkit takes the user's locale; the numbers in the output keep their point.
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setDesktopFileName("lexon-gui");
  QApplication::setQuitOnLastWindowClosed(false);
  lexon::resources_load();
  QApplication::setWindowIcon(lexon::program_icon());
  return lexon::MainDialog(line).run();
}

}  // namespace

int main(int argc, char** argv) {
  // A file that must not grow further is a write that fails, and is told like others.
  std::signal(SIGXFSZ, SIG_IGN);
  const lexon::CommandLine line =
      lexon::command_line_read(std::span<const char* const>(argv, static_cast<std::size_t>(argc)).subspan(1));
  if (line.help) {
    print_usage(stdout);
    return 0;
  }
  if (line.version) {
    std::puts("lexon-gui " LEXON_VERSION);
    return 0;
  }
  if (!line.error.empty()) {
    std::fprintf(stderr, "lexon-gui: %s\n", line.error.c_str());
    print_usage(stderr);
    return 2;
  }
  if (!has_display()) {
    std::fprintf(stderr, "lexon-gui: there is no display; \"lexon\" runs in a terminal\n");
    return 1;
  }
  return run_windows(argc, argv, line);
}
