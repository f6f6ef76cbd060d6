// Stamps: a small text file beside others says what those held when they were written, so that a later reader notices
// when one of them was cut, changed or exchanged. A first line names the kind of file, then comes one "key=value" a
// line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/platform.hpp"

namespace lexon {

// The 64-bit FNV-1a hash of the bytes added so far. It finds accidents; it does not stop somebody who forges.
class ByteHash {
 public:
  void add(const void* bytes, std::size_t size);
  [[nodiscard]] std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xcbf29ce484222325;
};

// What a file held, and its last-write time. Copies of a file have the same content and other dates.
struct FileMark {
  std::int64_t size = 0;
  std::uint64_t hash = 0;
  FileTime time = {0, 0};

  [[nodiscard]] bool same_content(const FileMark& other) const { return size == other.size && hash == other.hash; }
  bool operator==(const FileMark&) const = default;
};

// The mark of the file behind an open stream, read from its start to its end past the stream's own buffer and
// position. None if it cannot be read; the size is what was read.
[[nodiscard]] std::optional<FileMark> file_mark(std::FILE* stream);

// The lines of a stamp, in the order in which their keys were first put.
struct Stamp {
  std::vector<std::pair<std::string, std::string>> lines;

  // Replaces what stands under the key. A key is plain text without "="; a value may hold any bytes.
  void put(std::string_view key, std::string_view value);
  void put(std::string_view key, std::int64_t number);
  void put(std::string_view key, const FileMark& mark);

  // What stands under the key; null or none if nothing does, or nothing of that form.
  [[nodiscard]] const std::string* text(std::string_view key) const;
  [[nodiscard]] std::optional<std::int64_t> number(std::string_view key) const;
  [[nodiscard]] std::optional<FileMark> mark(std::string_view key) const;

  bool operator==(const Stamp&) const = default;
};

// What stands under the name of a stamp: no file, a stamp, something that is none, or a file that cannot be opened, for
// whatever reason `errno` has.
enum class StampState { missing, whole, damaged, unopened };

// Reads the stamp at `path`; it is empty unless the result is `whole`.
[[nodiscard]] StampState stamp_read(const std::string& path, Stamp& stamp);

// Writes a stamp in one move: a reader sees the one that stood there or this one. With `synced` it is on the disk
// when the call returns. False if it cannot be written; then `path` stands as before.
[[nodiscard]] bool stamp_write(const std::string& path, const Stamp& stamp, bool synced);

}  // namespace lexon
