#include "data/platform.hpp"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>

namespace lexon {

namespace {

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

bool file_copy(const std::string& source, const std::string& target) {
  std::FILE* from = std::fopen(source.c_str(), "rb");
  if (from == nullptr) return false;
  std::FILE* to = std::fopen(target.c_str(), "wb");
  bool copied = to != nullptr && copy_all(from, to);
  if (to != nullptr) copied = std::fclose(to) == 0 && copied;
  std::fclose(from);
  return copied;
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

std::string temp_file_make() {
  std::string name = temp_file_in(system_temp_folder());
  return name.empty() ? temp_file_in(".") : name;
}

std::string temp_file_make_beside(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  std::string name = temp_file_in(slash == std::string::npos ? "." : path.substr(0, slash));
  if (name.empty()) return name;
  const mode_t mask = umask(0);
  umask(mask);
  if (chmod(name.c_str(), 0666 & ~mask) == 0) return name;
  std::remove(name.c_str());
  return {};
}

bool file_move(const std::string& source, const std::string& target) {
  if (std::rename(source.c_str(), target.c_str()) == 0) return true;
  if (!file_copy(source, target)) return false;
  return std::remove(source.c_str()) == 0;
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

bool file_read_at(std::FILE* stream, std::int64_t offset, void* to, std::size_t size) {
  return stream != nullptr && pread(fileno(stream), to, size, offset) == static_cast<ssize_t>(size);
}

bool thread_start(ThreadHandle& thread, std::size_t stack_bytes, void (*body)(void*), void* argument) {
  constexpr std::size_t kLeastStack = std::size_t{1} << 20;
  auto* start = static_cast<ThreadStart*>(std::malloc(sizeof(ThreadStart)));
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

void thread_join(ThreadHandle& thread) { pthread_join(thread.id, nullptr); }

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
