#include "data/platform.hpp"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "data/pool.hpp"

namespace lexon {

namespace {

// Makes an empty private file; the empty text on failure.
std::string temp_file_in(const std::string& folder) {
  std::string name = folder + "/lexon-XXXXXX";
  const int descriptor = mkstemp(name.data());
  if (descriptor < 0) return {};
  close(descriptor);
  return name;
}

std::string system_temp_folder() {
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

bool copy_all(std::FILE* from, std::FILE* to) {
  std::array<char, 65536> buffer;
  while (const std::size_t taken = std::fread(buffer.data(), 1, buffer.size(), from)) {
    if (std::fwrite(buffer.data(), 1, taken, to) != taken) return false;
  }
  return std::ferror(from) == 0;
}

// Copies what is left of `from` into a new file. What cannot be copied whole is not left there in part.
bool copy_to(std::FILE* from, const std::string& target) {
  std::FILE* to = std::fopen(target.c_str(), "wb");
  if (to == nullptr) return false;
  const bool copied = copy_all(from, to);
  const bool closed = std::fclose(to) == 0;
  if (copied && closed) return true;
  std::remove(target.c_str());
  return false;
}

bool file_copy(const std::string& source, const std::string& target) {
  std::FILE* from = std::fopen(source.c_str(), "rb");
  if (from == nullptr) return false;
  const bool copied = copy_to(from, target);
  std::fclose(from);
  return copied;
}

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// The permissions of any new file, for one that was made private.
bool make_ordinary(int descriptor) {
  const mode_t mask = umask(0);
  umask(mask);
  return fchmod(descriptor, 0666 & ~mask) == 0;
}

// Gives the file behind a descriptor a name of its own in `folder`; the empty text if the system cannot.
std::string link_in(const std::string& folder, int descriptor) {
  constexpr int kTries = 16;
  const std::string source = "/proc/self/fd/" + std::to_string(descriptor);
  for (int i = 0; i < kTries; ++i) {
    std::string name = temp_file_in(folder);
    if (name.empty() || std::remove(name.c_str()) != 0) return {};
    if (linkat(AT_FDCWD, source.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) return name;
    if (errno != EEXIST) return {};
  }
  return {};
}

struct ThreadStart {
  void (*body)(void*);
  void* argument;
};

void* thread_main(void* given) {
  const ThreadStart start = *static_cast<ThreadStart*>(given);
  std::free(given);
  start.body(start.argument);
  return nullptr;
}

bool thread_create(pthread_t& id, std::size_t stack_bytes, ThreadStart* start) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  const bool sized = pthread_attr_setstacksize(&attributes, stack_bytes) == 0;
  const bool created = sized && pthread_create(&id, &attributes, thread_main, start) == 0;
  pthread_attr_destroy(&attributes);
  return created;
}

}  // namespace

std::optional<FileTime> file_time(const std::string& path, int& error) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || access(path.c_str(), R_OK) != 0) {
    error = errno;
    return std::nullopt;
  }
  if (S_ISDIR(status.st_mode)) {
    error = EISDIR;
    return std::nullopt;
  }
  return FileTime{status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

std::optional<FileTime> stream_time(std::FILE* stream) {
  struct stat status {};
  if (fstat(fileno(stream), &status) != 0) return std::nullopt;
  return FileTime{status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

TempFile::TempFile() : path_(temp_file_in(system_temp_folder())) {
  if (path_.empty()) path_ = temp_file_in(".");
}

TempFile::~TempFile() {
  if (!path_.empty()) std::remove(path_.c_str());
}

bool TempFile::move_to(const std::string& target) {
  if (path_.empty()) return false;
  const bool moved = std::rename(path_.c_str(), target.c_str()) == 0;
  if (!moved && !file_copy(path_, target)) return false;
  if (!moved) std::remove(path_.c_str());
  path_.clear();
  return true;
}

bool DraftFile::open_beside(const std::string& target) {
  const std::string folder = folder_of(target);
  int descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
  if (descriptor < 0) {
    path_ = temp_file_in(folder);
    if (path_.empty()) return false;
    descriptor = open(path_.c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor >= 0 && !make_ordinary(descriptor)) close(std::exchange(descriptor, -1));
  }
  stream_ = descriptor < 0 ? nullptr : fdopen(descriptor, "wb+");
  if (stream_ == nullptr && descriptor >= 0) close(descriptor);
  if (stream_ == nullptr) discard();
  return stream_ != nullptr;
}

bool DraftFile::is_whole() {
  return std::fflush(stream_) == 0 && std::ferror(stream_) == 0;
}

bool DraftFile::sync() {
  is_synced_ = is_whole() && fsync(fileno(stream_)) == 0;
  return is_synced_;
}

// Where the file cannot be linked, its content is copied to one that has a name.
bool DraftFile::take_name(const std::string& target) {
  if (!path_.empty()) return true;
  const std::string folder = folder_of(target);
  path_ = link_in(folder, fileno(stream_));
  if (!path_.empty()) return true;
  path_ = temp_file_in(folder);
  if (path_.empty()) return false;
  std::rewind(stream_);
  if (!copy_to(stream_, path_)) return false;
  const int descriptor = open(path_.c_str(), O_RDWR | O_CLOEXEC);
  const bool made = descriptor >= 0 && make_ordinary(descriptor) && (!is_synced_ || fsync(descriptor) == 0);
  if (descriptor >= 0) close(descriptor);
  return made;
}

bool DraftFile::put_in_place(const std::string& target) {
  bool done = is_whole() && take_name(target);
  done = std::fclose(std::exchange(stream_, nullptr)) == 0 && done;
  done = done && std::rename(path_.c_str(), target.c_str()) == 0;
  if (done) path_.clear();
  discard();
  return done;
}

void DraftFile::discard() {
  if (stream_ != nullptr) std::fclose(std::exchange(stream_, nullptr));
  if (!path_.empty()) std::remove(path_.c_str());
  path_.clear();
}

void folder_sync(const std::string& path) {
  const int descriptor = open(folder_of(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  // Some file systems cannot sync a folder; they order their names by themselves.
  static_cast<void>(fsync(descriptor));
  close(descriptor);
}

void file_time_reset(const std::string& path) {
  const std::array<timespec, 2> times = {timespec{0, UTIME_OMIT}, timespec{0, 0}};
  // Without effect the file is merely as old as it is.
  static_cast<void>(utimensat(AT_FDCWD, path.c_str(), times.data(), 0));
}

bool is_a_file(std::FILE* stream) {
  struct stat status {};
  return fstat(fileno(stream), &status) == 0 && !S_ISDIR(status.st_mode);
}

std::FILE* regular_file_open(const std::string& path, const char* mode) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return nullptr;
  errno = EINVAL;
  if (!S_ISREG(status.st_mode)) return nullptr;
  // What has taken the file's place since is not waited for, and not read either.
  const int access = std::strchr(mode, '+') != nullptr ? O_RDWR : O_RDONLY;
  const int descriptor = open(path.c_str(), access | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  const bool is_regular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
  std::FILE* stream = is_regular ? fdopen(descriptor, mode) : nullptr;
  if (stream != nullptr) return stream;
  const int error = is_regular ? errno : EINVAL;
  close(descriptor);
  errno = error;
  return nullptr;
}

bool file_read_at(std::FILE* stream, std::int64_t offset, void* to, std::size_t size) {
  return stream != nullptr && file_read_some_at(stream, offset, to, size) == static_cast<std::int64_t>(size);
}

std::int64_t file_read_some_at(std::FILE* stream, std::int64_t offset, void* to, std::size_t size) {
  auto* bytes = static_cast<char*>(to);
  std::size_t done = 0;
  // A read may be cut short or interrupted without being at the end.
  while (done < size) {
    const ssize_t got = pread(fileno(stream), bytes + done, size - done, offset + static_cast<std::int64_t>(done));
    if (got == 0) break;
    if (got < 0 && errno != EINTR) return -1;
    if (got > 0) done += static_cast<std::size_t>(got);
  }
  return static_cast<std::int64_t>(done);
}

bool thread_start(ThreadHandle& thread, std::size_t stack_bytes, void (*body)(void*), void* argument) {
  constexpr std::size_t kLeastStack = std::size_t{1} << 20;
  auto* start = static_cast<ThreadStart*>(checked_malloc(sizeof(ThreadStart)));
  if (start == nullptr) return false;
  *start = {body, argument};
  for (; stack_bytes >= kLeastStack; stack_bytes /= 2) {
    pthread_t id{};
    if (!thread_create(id, stack_bytes, start)) continue;
    thread.id = id;
    return true;
  }
  std::free(start);
  return false;
}

void thread_join(ThreadHandle& thread) {
  pthread_join(thread.id, nullptr);
}

const char* stack_limit_of_this_thread(std::size_t reserve) {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return nullptr;
  void* lowest = nullptr;
  std::size_t size = 0;
  const int result = pthread_attr_getstack(&attributes, &lowest, &size);
  pthread_attr_destroy(&attributes);
  return result == 0 && size > reserve ? static_cast<const char*>(lowest) + reserve : nullptr;
}

}  // namespace lexon
