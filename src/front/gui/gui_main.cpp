// The windowed program.
#include <QApplication>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

#include "front/gui/controls.hpp"
#include "front/gui/main_dialog.hpp"
#include "front/gui/opening.hpp"
#include "front/process.hpp"
#include "front/program.hpp"

namespace {

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

// The toolkit is there for as long as the windows are, and no longer.
int run_windows(const lexon::CommandLine& line, int argc, char** argv) {
  if (!has_display()) {
    std::fprintf(stderr, "lexon-gui: there is no display; \"lexon\" runs in a terminal\n");
    return 1;
  }
  int toolkit_argc = argc < 1 ? argc : 1;  // the switches are all ours
  const QApplication application(toolkit_argc, argv);
  // The toolkit takes the user's locale; the numbers in the output keep their point.
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setDesktopFileName("lexon-gui");
  // Between two windows of a run none is open, which is no end.
  QApplication::setQuitOnLastWindowClosed(false);
  lexon::resources_load();
  lexon::translations_load();
  QApplication::setWindowIcon(lexon::program_icon());
  lexon::MainDialog main(line);
  const int status = main.run();
  // There is no second run in a process: another process takes this one's place, with the same settings.
  if (!main.words_for_again().empty()) {
    const std::string program = lexon::to_path(QApplication::applicationFilePath());
    if (!lexon::start_program(program, main.words_for_again())) {
      lexon::tell_line("lexon-gui: " + program + " cannot be started again");
    }
  }
  return status;
}

// "--open FILE...": what a file manager calls.
int open_files(int argc, char** argv) {
  lexon::process_begin();
  const std::span words(argv, static_cast<std::size_t>(argc));
  // Nothing starts by itself: the user sees which file has come into which field.
  return run_windows(lexon::line_of_files(words.subspan(2)), argc, argv);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::string_view(argv[1]) == "--open") return open_files(argc, argv);
  return lexon::program_main({.name = "lexon-gui",
                              .usage = "lexon-gui [DICTIONARY [RULES [INPUT [OUTPUT]]]]",
                              .starts_without = true,
                              .run = run_windows},
                             argc, argv);
}
