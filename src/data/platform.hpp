// What differs between platforms: file times, temporary files, moving files, the worker's stack.
#pragma once

#include <atomic>
#include <compare>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace lexon {

// The last-write time of a file at the file system's full resolution; none if it cannot be had, and `error` then
// receives the system's error code.
struct FileTime {
  std::int64_t seconds;
  std::int64_t nanoseconds;
  auto operator<=>(const FileTime&) const = default;
};
[[nodiscard]] std::optional<FileTime> file_time(const std::string& path, int& error);
// The same of an open file, whatever its name leads to by now.
[[nodiscard]] std::optional<FileTime> stream_time(std::FILE* stream);
// Which file is open, and what tells that it was written to meanwhile.
struct FileState {
  std::uint64_t device;
  std::uint64_t number;
  std::int64_t size;
  FileTime written;
  bool operator==(const FileState&) const = default;
};
[[nodiscard]] std::optional<FileState> file_state(std::FILE* stream);
// Sets it. False if the system refuses; the file then is as old as it is.
bool stream_time_set(std::FILE* stream, FileTime time);
bool file_time_set(const std::string& path, FileTime time);

// Is the open file the one that stands under `path` now?
[[nodiscard]] bool is_file_at(std::FILE* stream, const std::string& path);

// What may be written under a name.
struct WritableName {
  bool by_replacing;  // nothing stands there, or a link, or a file that is not write-protected
  bool in_place;      // a file that is not write-protected and has no other name
};
[[nodiscard]] WritableName writable_name(const std::string& path);

// While it lives, no other program that asks for the lock of the same folder has it. The system ends it with a program
// that is killed. Where a foreign program keeps it, or the system has none, it is given up after a second.
class FolderLock {
 public:
  explicit FolderLock(const std::string& path_in_folder);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int descriptor_;
};

// While it lives, no other program has a lock of the same open file; it waits for the one before. Where the system has no
// locks, or a signal ends the wait, it goes without.
class FileLock {
 public:
  explicit FileLock(std::FILE* stream);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

 private:
  int descriptor_;
};

// A stream that is closed with its owner.
struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// An empty file without a name for writing and reading, in the system's temporary place, or in the current folder if
// that cannot be written. It is gone when it is closed, or when the program is killed. Null if it cannot be made.
[[nodiscard]] File unnamed_file();

// A file in the making, in the folder where it shall stand. It has no name where the system can do without, until it is
// put in place; else an unpredictable one. It gets the permissions of any new file.
class DraftFile {
 public:
  DraftFile() = default;
  ~DraftFile() { discard(); }
  DraftFile(const DraftFile&) = delete;
  DraftFile& operator=(const DraftFile&) = delete;

  // Opens it for writing and reading. False if the folder takes no file.
  [[nodiscard]] bool open_beside(const std::string& target);
  // Null before it is opened and once it is gone.
  [[nodiscard]] std::FILE* stream() const { return stream_; }
  // Writes out what is buffered. False if not all that was written has reached the file.
  [[nodiscard]] bool is_whole();
  // The same, and waits until it is on the disk: a power cut behind `put_in_place` then leaves the old file or this.
  [[nodiscard]] bool sync();
  // Puts what was written in the place of `target` and closes the stream. False if it is not whole or cannot be put
  // there; then it is gone, and `target` stands as before.
  [[nodiscard]] bool put_in_place(const std::string& target);
  // Nothing happens without an open file.
  void discard();

 private:
  [[nodiscard]] bool take_name(const std::string& target);

  std::FILE* stream_ = nullptr;
  std::string path_;  // empty while it has no name
  bool is_synced_ = false;
};

// Removes the drafts in the folder of a path whose programs were killed before they could do it themselves.
void left_drafts_remove(const std::string& path_in_folder);

// Waits until the names in the folder of `path` are on the disk, where the system can do that.
void folder_sync(const std::string& path);

// Is the open stream something that can be read or written as a file? False for a directory.
[[nodiscard]] bool is_a_file(std::FILE* stream);
// Opens a regular file that is there, with mode "rb" or "rb+". Null for what cannot be opened, with the reason in
// `errno`, and for what is no regular file (a FIFO, a socket, a device, a folder), which is not touched: EINVAL, of a folder EISDIR.
[[nodiscard]] std::FILE* regular_file_open(const std::string& path, const char* mode);

// Has all that was written to the stream reached its file?
[[nodiscard]] bool is_written(std::FILE* stream);

// The size of an open file in bytes; 0 if it cannot be told.
[[nodiscard]] std::int64_t file_size(std::FILE* stream);

// Opens for reading what may keep a reader waiting: a pipe, a terminal, a socket. To open it never waits; a FIFO whose
// writer is not there yet waits at its first read. A read that has to wait looks at `stop`: once that is set it fails,
// and may be tried again when it is cleared. `is_waiting_file` tells whether a path leads to such a file.
[[nodiscard]] bool is_waiting_file(const std::string& path);
[[nodiscard]] std::FILE* waiting_file_open(const std::string& path, const std::atomic<bool>& stop);
// Was the stream opened by `waiting_file_open`?
[[nodiscard]] bool is_waiting_stream(std::FILE* stream);

// Reads exactly `size` bytes at `offset`, past the stream's own buffer and position. False if fewer stand there, if
// they cannot be read, or for a null stream.
[[nodiscard]] bool file_read_at(std::FILE* stream, std::int64_t offset, void* to, std::size_t size);
// Reads up to `size` bytes likewise: how many there were, fewer only at the end; -1 if they cannot be read.
[[nodiscard]] std::int64_t file_read_some_at(std::FILE* stream, std::int64_t offset, void* to, std::size_t size);

// Processor time of the calling thread.
[[nodiscard]] std::int64_t thread_processor_milliseconds();

// A thread with a large stack. `thread_join` must be called once for each that was started.
struct ThreadHandle {
  unsigned long id;
};
// Runs `body(argument)` on a new thread with a stack of `stack_bytes`, or as much as can be had. False on failure.
[[nodiscard]] bool thread_start(ThreadHandle& thread, std::size_t stack_bytes, void (*body)(void*), void* argument);
void thread_join(ThreadHandle& thread);

// The lowest address that the calling thread's stack may grow to, plus `reserve` bytes; null if it cannot be told.
[[nodiscard]] const char* stack_limit_of_this_thread(std::size_t reserve);

}  // namespace lexon
