#include "support.hpp"

#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "data/platform.hpp"
#include "data/pool.hpp"
#include "dicttool/build.hpp"
#include "rules/matrix.hpp"
#include "support/grammar.hpp"

namespace lexon::fuzz {

using lexon::test::grammar;
using lexon::test::session;

namespace fs = std::filesystem;

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "a property does not hold: %s\n", what);
  std::abort();
}

std::vector<std::string_view> sections_of(std::string_view input, std::size_t count) {
  constexpr std::string_view kSeparator = "%%\n";
  std::vector<std::string_view> sections;
  while (sections.size() + 1 < count) {
    std::size_t end = input.find(kSeparator);
    while (end != std::string_view::npos && end != 0 && input[end - 1] != '\n') end = input.find(kSeparator, end + 1);
    if (end == std::string_view::npos) break;
    sections.push_back(input.substr(0, end));
    input.remove_prefix(end + kSeparator.size());
  }
  sections.push_back(input);
  sections.resize(count);
  return sections;
}

// A file, since a reader may ask for its size.
Source::Source(std::string_view bytes) : stream_(std::tmpfile()) {
  require(stream_ != nullptr, "a temporary file can be had");
  require(bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), stream_) == bytes.size(),
          "a temporary file can be written");
  std::rewind(stream_);
}

Source::~Source() {
  std::fclose(stream_);
}

Sink::Sink() : stream_(open_memstream(&buffer_, &size_)) {
  require(stream_ != nullptr, "a stream in memory can be had");
}

Sink::~Sink() {
  std::fclose(stream_);
  std::free(buffer_);
}

std::string Sink::text() const {
  std::fflush(stream_);
  return {buffer_, size_};
}

Output::Output() : before_(session.output.stream()) {
  session.output.redirect(sink_.get());
}

Output::~Output() {
  session.output.redirect(before_);
}

std::FILE* nowhere() {
  static std::FILE* const stream = std::fopen("/dev/null", "w");
  return stream;
}

void fresh_start() {
  // What the deepest step below a guard may need; the sanitizers widen every frame.
  constexpr std::size_t kStackReserve = std::size_t{1} << 20;
  // Asked for once: the system tells it from a file, which costs more than a small input.
  static const char* const stack_limit = stack_limit_of_this_thread(kStackReserve);
  session.stop_requested = false;

  session.pool.release_all();
  rule_matrix_clear(grammar.index);
  grammar.pool.release_all();
  session_use(session, grammar);
  session.pool.set_fault(nullptr);
  session.state = {};
  session.output.redirect(nowhere());
  session.state.stack_limit = stack_limit;
  sentence_clear(session);
  session.sentence.dictionary = {};
  session.sentence.cr_dictionary = {};
}

namespace {

// Made at the first use, removed at the end of the process.
struct Folder {
  std::string path;
  Folder() : path((fs::temp_directory_path() / "lexon-fuzz-XXXXXX").string()) {
    require(mkdtemp(path.data()) != nullptr, "a temporary folder can be made");
  }
  ~Folder() {
    std::error_code error;
    fs::remove_all(path, error);
  }
};

}  // namespace

std::string folder_path(const std::string& name) {
  static const Folder folder;
  return folder.path + "/" + name;
}

void file_write(const std::string& path, std::string_view bytes) {
  std::FILE* stream = std::fopen(path.c_str(), "wb");
  require(stream != nullptr, "a file can be written");
  if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), stream);
  require(std::fclose(stream) == 0, "a file can be written");
}

std::string file_read(const std::string& path) {
  std::string bytes;
  std::FILE* stream = std::fopen(path.c_str(), "rb");
  require(stream != nullptr, "a file can be read");
  char chunk[4096];
  for (std::size_t got = 0; (got = std::fread(chunk, 1, sizeof chunk, stream)) != 0;) bytes.append(chunk, got);
  std::fclose(stream);
  return bytes;
}

namespace {

// Signals come in milliseconds of processor time: the first asks the core to stop, the second finds it still there.
constexpr long kGrace = 2000;
constexpr long kMicro = 1000;
std::atomic<bool> is_asked{false};

void on_time(int) {
  if (!is_asked.exchange(true)) {
    session.stop_requested = true;
    return;
  }
  constexpr std::string_view kMessage = "a loop goes on although the core was asked to stop\n";
  static_cast<void>(!write(STDERR_FILENO, kMessage.data(), kMessage.size()));
  std::abort();
}

void timer_set(long first, long next) {
  const auto interval = [](long milliseconds) {
    return timeval{milliseconds / 1000, static_cast<suseconds_t>(milliseconds % 1000 * kMicro)};
  };
  const itimerval timer{interval(next), interval(first)};
  setitimer(ITIMER_VIRTUAL, &timer, nullptr);
}

}  // namespace

StepLimit::StepLimit(int milliseconds) {
  struct sigaction action {};
  action.sa_handler = on_time;
  action.sa_flags = SA_RESTART;
  sigaction(SIGVTALRM, &action, nullptr);
  is_asked = false;
  session.stop_requested = false;
  timer_set(milliseconds, kGrace);
}

StepLimit::~StepLimit() {
  timer_set(0, 0);
  session.stop_requested = false;
}

bool StepLimit::is_over() {
  return is_asked;
}

void Dictionary::use(std::string_view entries) {
  if (opened_.dictionary != nullptr && entries_ == entries && !is_cut_) return;
  is_cut_ = false;
  entries_ = entries;
  BuildOptions options;
  options.entries = folder_path(name_ + ".txt");
  options.dictionary = folder_path(name_ + ".dic");
  options.skip_bad = true;
  options.memory = std::size_t{1} << 20;
  file_write(options.entries, entries);
  BuildFigures figures;
  require(dictionary_build(session, options, nowhere(), figures), "a dictionary is built when bad lines are left out");
  require(dictionary_open(options.dictionary, PairCheck::none, opened_), "a built dictionary can be opened");
}

void Dictionary::cut(std::int64_t size) {
  is_cut_ = true;
  require(truncate(folder_path(name_ + ".dic").c_str(), size) == 0, "a file can be cut");
}

}  // namespace lexon::fuzz
