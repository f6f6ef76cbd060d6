#include "lab/child_process.hpp"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "front/process.hpp"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace lexon {
inline namespace v1 {
namespace lab {

pid_t process_start(const std::vector<std::string>& words, int input, int output) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  // Makes the descriptor `own`, or nothing at all, the program's descriptor `its`.
  const auto give = [&files](int own, int its, int mode) {
    if (own >= 0)
      posix_spawn_file_actions_adddup2(&files, own, its);
    else
      posix_spawn_file_actions_addopen(&files, its, "/dev/null", mode, 0);
  };
  give(input, STDIN_FILENO, O_RDONLY);
  give(output, STDOUT_FILENO, O_WRONLY);
  // What it has to say there would stand among our own messages.
  give(-1, STDERR_FILENO, O_WRONLY);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  // The program that starts it may have blocked signals, which a child inherits.
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  // The words are not written to, for all that the type says.
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_t process = -1;
  const int error = posix_spawnp(&process, arguments.front(), &files, &attributes, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&files);
  posix_spawnattr_destroy(&attributes);
  errno = error;
  return error == 0 ? process : -1;
}

void browser_show(const std::string& file, const std::string& instead) {
  const pid_t process = process_start({"xdg-open", file}, -1, -1);
  if (process == -1) return tell_line(std::string("xdg-open: ") + std::strerror(errno) + ": " + instead);
  // Some browsers are waited for till their last window closes.
  std::thread([process, instead] {
    int status = 0;
    while (waitpid(process, &status, 0) == -1 && errno == EINTR) {
    }
    if (status != 0) tell_line("xdg-open has found no browser: " + instead);
  }).detach();
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
