#include "data/platform.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include "data/pool.hpp"

namespace lexon {

namespace {

// The name of every draft begins with it; sixteen digits follow that nobody can guess.
constexpr const char* kDraftName = ".lexon-draft-";
constexpr int kNameTries = 16;

std::string draft_name_in(const std::string& folder) {
  std::uint64_t number = 0;
  if (getrandom(&number, sizeof(number), 0) != sizeof(number)) return {};
  std::array<char, 40> name;
  std::snprintf(name.data(), name.size(), "%s%016llx", kDraftName, static_cast<unsigned long long>(number));
  return folder + "/" + name.data();
}

// A draft is locked as long as its program lives. False if another one holds the lock, or has removed the file before
// it was locked; where the system knows no locks nobody removes it.
bool hold_draft(int descriptor) {
  struct stat status {};
  const bool is_held = flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
  return is_held && fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

// Makes an empty draft with a name, open for writing and reading; -1 on failure.
int named_draft_in(const std::string& folder, mode_t mode, std::string& name) {
  for (int i = 0; i < kNameTries; ++i) {
    name = draft_name_in(folder);
    const int descriptor = name.empty() ? -1 : open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, mode);
    if (descriptor >= 0 && hold_draft(descriptor)) return descriptor;
    if (descriptor < 0 && errno != EEXIST) break;
    if (descriptor >= 0) close(descriptor);
  }
  name.clear();
  return -1;
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

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// The path of an open descriptor, without the heap: a refusal of memory would leave the descriptor open.
std::array<char, 32> descriptor_path(int descriptor) {
  std::array<char, 32> path;
  std::snprintf(path.data(), path.size(), "/proc/self/fd/%d", descriptor);
  return path;
}

// Gives the file behind a descriptor a name of its own in `folder`; the empty text if the system cannot.
std::string link_in(const std::string& folder, int descriptor) {
  const std::array<char, 32> source = descriptor_path(descriptor);
  for (int i = 0; i < kNameTries; ++i) {
    std::string name = draft_name_in(folder);
    if (name.empty()) return {};
    if (linkat(AT_FDCWD, source.data(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) return name;
    if (errno != EEXIST) return {};
  }
  return {};
}

// An open private file without a name, which can be opened again by the path of its descriptor; -1 if the system cannot.
int nameless_file_in(const std::string& folder) {
  const int descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (descriptor < 0 || access(descriptor_path(descriptor).data(), R_OK | W_OK) == 0) return descriptor;
  close(descriptor);
  return -1;
}

FileTime write_time(const struct stat& status) {
  return {status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

std::array<timespec, 2> times_for(FileTime time) {
  return {timespec{0, UTIME_OMIT}, timespec{static_cast<time_t>(time.seconds), static_cast<long>(time.nanoseconds)}};
}

// A file that is read without ever waiting longer than a moment.
struct WaitingFile {
  int descriptor;
  const std::atomic<bool>& stop;
  bool awaits_writer;  // a FIFO looks as if it had ended as long as nobody has opened it for writing
};

extern "C" ssize_t waiting_file_read(void* cookie, char* to, std::size_t size) {
  constexpr int kMoment = 50;  // milliseconds
  auto& file = *static_cast<WaitingFile*>(cookie);
  while (!file.stop) {
    if (!file.awaits_writer) {
      const ssize_t got = read(file.descriptor, to, size);
      if (got >= 0 || (errno != EAGAIN && errno != EINTR)) return got;
    }
    pollfd wanted{file.descriptor, POLLIN, 0};
    if (poll(&wanted, 1, kMoment) > 0) file.awaits_writer = false;
  }
  errno = EINTR;
  return -1;
}

extern "C" int waiting_file_close(void* cookie) {
  const auto* file = static_cast<WaitingFile*>(cookie);
  const int result = close(file->descriptor);
  delete file;
  return result;
}

// A pipe without a name has its writer, or never gets one again.
bool is_named_fifo(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !S_ISFIFO(status.st_mode)) return false;
  std::array<char, 2> target{};
  return readlink(descriptor_path(descriptor).data(), target.data(), 1) == 1 && target[0] == '/';
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
  return write_time(status);
}

std::optional<FileTime> stream_time(std::FILE* stream) {
  struct stat status {};
  if (fstat(fileno(stream), &status) != 0) return std::nullopt;
  return write_time(status);
}

std::optional<FileState> file_state(std::FILE* stream) {
  struct stat status {};
  if (fstat(fileno(stream), &status) != 0) return std::nullopt;
  return FileState{status.st_dev, status.st_ino, status.st_size, write_time(status)};
}

bool stream_time_set(std::FILE* stream, FileTime time) {
  // What is written out later would set it anew.
  return std::fflush(stream) == 0 && futimens(fileno(stream), times_for(time).data()) == 0;
}

bool file_time_set(const std::string& path, FileTime time) {
  return utimensat(AT_FDCWD, path.c_str(), times_for(time).data(), 0) == 0;
}

bool is_file_at(std::FILE* stream, const std::string& path) {
  struct stat opened {};
  struct stat named {};
  if (fstat(fileno(stream), &opened) != 0 || stat(path.c_str(), &named) != 0) return false;
  return opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

WritableName writable_name(const std::string& path) {
  struct stat named {};
  struct stat file {};
  if (lstat(path.c_str(), &named) != 0) return {.by_replacing = errno == ENOENT, .in_place = false};
  const bool is_link = S_ISLNK(named.st_mode);
  if (is_link && stat(path.c_str(), &file) != 0) return {.by_replacing = true, .in_place = false};
  if (!is_link) file = named;
  const bool is_writable = S_ISREG(file.st_mode) && access(path.c_str(), W_OK) == 0;
  return {.by_replacing = is_writable, .in_place = is_writable && !is_link && file.st_nlink == 1};
}

FolderLock::FolderLock(const std::string& path_in_folder)
    : descriptor_(open(folder_of(path_in_folder).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  constexpr int kTries = 200;
  constexpr std::chrono::milliseconds kPause{5};
  if (descriptor_ < 0) return;
  for (int i = 0; i < kTries && flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK; ++i) {
    std::this_thread::sleep_for(kPause);
  }
}

FolderLock::~FolderLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

FileLock::FileLock(std::FILE* stream) : descriptor_(fileno(stream)) {
  if (flock(descriptor_, LOCK_EX) != 0) descriptor_ = -1;
}

FileLock::~FileLock() {
  if (descriptor_ >= 0) flock(descriptor_, LOCK_UN);
}

File unnamed_file() {
  for (const std::string& folder : {system_temp_folder(), std::string(".")}) {
    int descriptor = nameless_file_in(folder);
    std::string name;
    if (descriptor < 0) {
      descriptor = named_draft_in(folder, 0600, name);
      if (descriptor < 0) continue;
      std::remove(name.c_str());
    }
    File file(fdopen(descriptor, "wb+"));
    if (file == nullptr) close(descriptor);
    return file;
  }
  return nullptr;
}

bool DraftFile::open_beside(const std::string& target) {
  const std::string folder = folder_of(target);
  int descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
  if (descriptor >= 0) {
    static_cast<void>(flock(descriptor, LOCK_EX | LOCK_NB));
  } else {
    descriptor = named_draft_in(folder, 0666, path_);
  }
  stream_ = descriptor < 0 ? nullptr : fdopen(descriptor, "wb+");
  if (stream_ == nullptr && descriptor >= 0) close(descriptor);
  if (stream_ == nullptr) discard();
  return stream_ != nullptr;
}

bool DraftFile::is_whole() {
  return is_written(stream_);
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
  const int descriptor = named_draft_in(folder, 0666, path_);
  std::FILE* copy = descriptor < 0 ? nullptr : fdopen(descriptor, "wb+");
  if (copy == nullptr) {
    if (descriptor >= 0) close(descriptor);
    return false;
  }
  std::rewind(stream_);
  const bool is_copied = copy_all(stream_, copy) && is_written(copy) && (!is_synced_ || fsync(descriptor) == 0);
  std::fclose(std::exchange(stream_, copy));
  return is_copied;
}

bool DraftFile::put_in_place(const std::string& target) {
  bool done = is_whole() && take_name(target);
  // Some systems tell of a full disk at the end, so the stream is closed first; the draft stays locked.
  const int lock = fcntl(fileno(stream_), F_DUPFD_CLOEXEC, 0);
  done = std::fclose(std::exchange(stream_, nullptr)) == 0 && done;
  done = done && std::rename(path_.c_str(), target.c_str()) == 0;
  if (done) path_.clear();
  discard();
  if (lock >= 0) close(lock);
  return done;
}

void DraftFile::discard() {
  if (stream_ != nullptr) std::fclose(std::exchange(stream_, nullptr));
  if (!path_.empty()) std::remove(path_.c_str());
  path_.clear();
}

void left_drafts_remove(const std::string& path_in_folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(folder_of(path_in_folder).c_str()), closedir);
  if (folder == nullptr) return;
  while (const dirent* entry = readdir(folder.get())) {
    if (std::strncmp(entry->d_name, kDraftName, std::strlen(kDraftName)) != 0) continue;
    const int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW | O_CLOEXEC;
    const int descriptor = openat(dirfd(folder.get()), entry->d_name, flags);
    if (descriptor < 0) continue;
    struct stat status {};
    const bool is_left =
        fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && flock(descriptor, LOCK_EX | LOCK_NB) == 0;
    if (is_left) unlinkat(dirfd(folder.get()), entry->d_name, 0);
    close(descriptor);
  }
}

void folder_sync(const std::string& path) {
  const int descriptor = open(folder_of(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  // Some file systems cannot sync a folder; they order their names by themselves.
  static_cast<void>(fsync(descriptor));
  close(descriptor);
}

bool is_a_file(std::FILE* stream) {
  struct stat status {};
  return fstat(fileno(stream), &status) == 0 && !S_ISDIR(status.st_mode);
}

std::FILE* regular_file_open(const std::string& path, const char* mode) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return nullptr;
  errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
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

bool is_written(std::FILE* stream) {
  return std::fflush(stream) == 0 && std::ferror(stream) == 0;
}

std::int64_t file_size(std::FILE* stream) {
  struct stat status {};
  return fstat(fileno(stream), &status) == 0 ? status.st_size : 0;
}

bool is_waiting_file(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return false;
  return S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode) || S_ISSOCK(status.st_mode);
}

std::FILE* waiting_file_open(const std::string& path, const std::atomic<bool>& stop) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  auto* file = new (std::nothrow) WaitingFile{descriptor, stop, is_named_fifo(descriptor)};
  const cookie_io_functions_t calls = {
      .read = waiting_file_read, .write = nullptr, .seek = nullptr, .close = waiting_file_close};
  std::FILE* stream = file == nullptr ? nullptr : fopencookie(file, "r", calls);
  if (stream != nullptr) return stream;
  delete file;
  close(descriptor);
  return nullptr;
}

bool is_waiting_stream(std::FILE* stream) {
  return stream != nullptr && fileno(stream) < 0;
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

std::int64_t thread_processor_milliseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
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
