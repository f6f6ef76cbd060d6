// What differs between platforms: file times, temporary files, moving files, the worker's stack.
#pragma once

#include <compare>
#include <cstdint>
#include <cstdio>
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

// Makes an empty private file with an unpredictable name in the system's temporary place, or in the current folder if
// that cannot be written. The empty text on failure. The caller removes it.
[[nodiscard]] std::string temp_file_make();

// The same in the folder of `path`, with the permissions that a new file gets; the empty text on failure.
[[nodiscard]] std::string temp_file_make_beside(const std::string& path);

// Moves a file to `target`, replacing what is there; copies where a rename cannot do it.
[[nodiscard]] bool file_move(const std::string& source, const std::string& target);

// Puts the file's last-write time far back, so that every other file is newer.
void file_time_reset(const std::string& path);

// Is the open stream something that can be read or written as a file? False for a directory.
[[nodiscard]] bool is_a_file(std::FILE* stream);

// Reads exactly `size` bytes at `offset`, past the stream's own buffer and position. False if fewer stand there, or for
// a null stream.
[[nodiscard]] bool file_read_at(std::FILE* stream, std::int64_t offset, void* to, std::size_t size);

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
