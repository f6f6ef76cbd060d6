// Paths and opening of files, and the messages about them.
#pragma once

#include <atomic>
#include <cstdio>
#include <string>

namespace lexon {

// A path in its parts: the folder with its separator, the name, and the extension with its dot. The extension begins
// at the last "." of the last component.
struct PathParts {
  std::string folder;
  std::string name;
  std::string extension;
};
[[nodiscard]] PathParts path_split(const std::string& path);

// Opens a file; null if it cannot be had or is a folder, and `errno` then says why.
[[nodiscard]] std::FILE* file_open(const std::string& path, const char* mode);

// Opens a text for reading, which may be a pipe: a read that waits for data fails once `stop` is set. Null if it cannot
// be had or is a folder.
[[nodiscard]] std::FILE* text_open(const std::string& path, const std::atomic<bool>& stop);

// The message that names a file: "Can't Open <what> : <path>!".
[[nodiscard]] std::string cannot_open(const char* what, const std::string& path);

}  // namespace lexon
