#include "support/program.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/capture.hpp"
#include "support/test.hpp"

namespace lexon::test {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void become_program(const std::string& path, const std::vector<std::string>& arguments, const std::string& folder, const std::string& out,
                                 const std::string& error) {
  std::vector<char*> words{const_cast<char*>(path.c_str())};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  setsid();  // no terminal: questions are not asked
  const bool ready = dup2(open("/dev/null", O_RDONLY), 0) >= 0 && dup2(open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 1) >= 0 &&
                     dup2(open(error.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2) >= 0 && chdir(folder.c_str()) == 0;
  if (ready) execv(path.c_str(), words.data());
  _exit(127);
}

// What was made is removed with this object.
struct Folders {
  std::vector<std::string> paths;
  ~Folders() {
    std::error_code error;
    for (const std::string& path : paths) fs::remove_all(path, error);
  }
};

}  // namespace

std::string program_path(const std::string& name) {
  return name.starts_with('/') ? name : std::string(LEXON_PROGRAMS) + "/" + name;
}

int wait_for_program(int process) {
  int status = 0;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

ProgramResult run_program(const std::string& name, const std::vector<std::string>& arguments, const std::string& folder) {
  const std::string path = program_path(name);
  const std::string stem = fresh_folder("program");
  const std::string out = stem + "/out";
  const std::string error = stem + "/error";
  const pid_t child = fork();
  if (child == 0) become_program(path, arguments, folder, out, error);
  const int exit_status = wait_for_program(child);
  ProgramResult result{exit_status, bytes_of(out), bytes_of(error)};
  fs::remove_all(stem);
  return result;
}

std::string fresh_folder(const std::string& name) {
  std::string stem = name;
  std::replace(stem.begin(), stem.end(), '/', '-');
  std::string folder = ::testing::TempDir() + "lexon-" + stem + "-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) return {};
  static Folders made{};
  return made.paths.emplace_back(std::move(folder));
}

void write_file(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string mask_times(const std::string& text) {
  constexpr std::string_view kBegin = ";;Time ";
  std::string masked = text;
  for (std::size_t at = masked.find(kBegin); at != std::string::npos; at = masked.find(kBegin, at)) {
    at += kBegin.size();
    const std::size_t end = masked.find_first_not_of(" .0123456789", at);
    if (end != std::string::npos && masked.compare(end, 4, "\tSec") == 0) masked.replace(at, end - at, "?");
  }
  return masked;
}

}  // namespace lexon::test
