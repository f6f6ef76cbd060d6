#include "run/files.hpp"

#include <cerrno>

#include "data/platform.hpp"

namespace lexon {

// The extension begins at the last dot of the name; a dot in a folder is none, and neither is a missing one.
PathParts path_split(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::size_t base = slash == std::string::npos ? 0 : slash + 1;
  const std::size_t dot = path.rfind('.');
  const std::size_t end = dot == std::string::npos || dot < base ? path.size() : dot;
  return {path.substr(0, base), path.substr(base, end - base), path.substr(end)};
}

// A folder can be opened for reading on this system, and then fails at the first read: it is refused here.
std::FILE* file_open(const std::string& path, const char* mode) {
  errno = 0;
  std::FILE* stream = std::fopen(path.c_str(), mode);
  if (stream == nullptr || is_a_file(stream)) return stream;
  std::fclose(stream);
  errno = EISDIR;
  return nullptr;
}

// A read of a pipe may last for ever, so it looks at `stop`; a file needs no such care and is read faster.
std::FILE* text_open(const std::string& path, const std::atomic<bool>& stop) {
  return is_waiting_file(path) ? waiting_file_open(path, stop) : file_open(path, "r");
}

std::string cannot_open(const char* what, const std::string& path) {
  return std::string("Can't Open ") + what + " : " + path + "!";
}

}  // namespace lexon
