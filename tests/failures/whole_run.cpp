#include "whole_run.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <new>

#include "data/pool.hpp"
#include "dict/index.hpp"
#include "dicttool/build.hpp"
#include "front/console.hpp"
#include "run/driver.hpp"
#include "support/capture.hpp"
#include "support/program.hpp"
#include "support/test.hpp"

namespace fs = std::filesystem;

namespace {

bool reads_are_short = false;

}  // namespace

// The linker puts these in the place of the calls.
extern "C" {
ssize_t __real_pread(int file, void* to, std::size_t size, off_t offset);

ssize_t __wrap_pread(int file, void* to, std::size_t size, off_t offset) {
  return __real_pread(file, to, reads_are_short && size > 1 ? size / 2 : size, offset);
}
}

namespace lexon::test {

namespace {

constexpr std::int64_t kFarAway = std::int64_t{1} << 40;

// The folder for temporary files while it lives.
class TempFolder {
 public:
  explicit TempFolder(const std::string& path) {
    if (const char* before = std::getenv("TMPDIR"); before != nullptr) before_ = before;
    setenv("TMPDIR", path.c_str(), 1);
  }
  ~TempFolder() {
    if (before_.empty()) {
      unsetenv("TMPDIR");
    } else {
      setenv("TMPDIR", before_.c_str(), 1);
    }
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

 private:
  std::string before_;
};

// Standard error goes to a file while it lives.
class ErrorFile {
 public:
  explicit ErrorFile(const std::string& path) : before_(dup(2)) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(file, 2);
    close(file);
  }
  ~ErrorFile() {
    std::fflush(stderr);
    dup2(before_, 2);
    close(before_);
  }
  ErrorFile(const ErrorFile&) = delete;
  ErrorFile& operator=(const ErrorFile&) = delete;

 private:
  int before_;
};

void build(const std::string& entries, const std::string& dictionary) {
  BuildFigures figures;
  BuildOptions options;
  options.entries = entries;
  options.dictionary = dictionary;
  options.memory = std::size_t{1} << 20;
  const auto own = std::make_unique<Session>();
  ASSERT_TRUE(dictionary_build(*own, options, stderr, figures)) << entries;
}

std::string source_of(const std::string& name) {
  return name == "english" ? std::string(LEXON_EXAMPLES) + "/english" : std::string(LEXON_GOLDEN) + "/" + name;
}

int whole_run(std::span<const char* const> words) {
  try {
    CommandLine line = command_line_read(words);
    line.settings.fault = &refused;
    ConsoleHost host(line);
    run_driver(line.settings, host);
    return host.exit_status();
  } catch (const std::bad_alloc&) {
    std::fputs("lexon: No memory!\n", stderr);
    return 1;
  }
}

}  // namespace

RunCase::RunCase(const std::string& name) : folder_(fresh_folder("failures-" + name)) {
  const std::string source = source_of(name);
  fs::create_directory(path("temp"));
  for (const char* file : {"rules.txt", "input.txt"}) fs::copy_file(source + "/" + file, path(file));
  build(source + "/entries.txt", path("words.dic"));
  arguments_ = {path("words.dic"), path("rules.txt"), path("input.txt"), path("output.txt"), "--quiet"};
  const std::string settings = source + "/settings.txt";
  std::istringstream words(fs::exists(settings) ? bytes_of(settings) : "-L0 -N0");
  for (std::string word; words >> word;) arguments_.push_back(word);
  if (!fs::exists(source + "/cr.txt")) return;
  build(source + "/cr.txt", path("cr.dic"));
  arguments_.push_back("-C" + path("cr.dic"));
}

RunCase::Result RunCase::run(bool converts, AllocationFault fault, const char* more) const {
  if (converts) {
    fs::remove(path("rules.rul"));
    fs::remove(path("rules.mtx"));
  }
  std::vector<const char*> words;
  for (const std::string& word : arguments_) words.push_back(word.c_str());
  if (more != nullptr) words.push_back(more);
  Result result;
  {
    const TempFolder temp(path("temp"));
    const ErrorFile error(path("error"));
    refused = fault.countdown == 0 ? AllocationFault{kFarAway, false} : fault;
    result.exit_status = whole_run(words);
    result.allocations = kFarAway - std::exchange(refused, {}).countdown;
  }
  result.output = mask_times(bytes_of(path("output.txt")));
  result.error = bytes_of(path("error"));
  return result;
}

std::string RunCase::names() const {
  std::vector<std::string> all;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder_)) {
    const std::string name = fs::relative(entry.path(), folder_).string();
    if (!name.starts_with("rules.rul") && name != "rules.mtx") all.push_back(name);
  }
  std::sort(all.begin(), all.end());
  std::string joined;
  for (const std::string& name : all) joined += name + " ";
  return joined;
}

std::vector<std::string> run_case_names() {
  std::vector<std::string> names = {"english"};
  for (const fs::directory_entry& entry : fs::directory_iterator(LEXON_GOLDEN)) {
    if (entry.is_directory()) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> sentences_in(const std::string& output) {
  std::vector<std::string> pieces(1);
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    pieces.back() += line + "\n";
    const bool is_banner = line == ";;Done!" || line == ";;Failed!" || line == ";;Time Over!" || line == ";;Cancelled!";
    if (is_banner) pieces.emplace_back();
  }
  if (pieces.back().empty()) pieces.pop_back();
  return pieces;
}

ShortReads::ShortReads() {
  reads_are_short = true;
}

ShortReads::~ShortReads() {
  reads_are_short = false;
}

std::size_t open_files() {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

}  // namespace lexon::test
