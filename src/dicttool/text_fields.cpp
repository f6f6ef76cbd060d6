#include "dicttool/text_fields.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "data/platform.hpp"

namespace lexon {

// Standard input is read like a file. What would be read as nonsense, a folder or UTF-16, is refused by its reason.
bool text_read(const std::string& path, std::string& text, std::string& reason) {
  text.clear();
  const bool is_standard = path == "-";
  errno = 0;
  const File opened(is_standard ? nullptr : std::fopen(path.c_str(), "rb"));
  std::FILE* stream = is_standard ? stdin : opened.get();
  // A folder opens like a file, and only fails to be read.
  if (stream != nullptr && !is_a_file(stream)) errno = EISDIR;
  if (stream == nullptr || errno == EISDIR) {
    reason = std::string("cannot be opened: ") + std::strerror(errno);
    return false;
  }
  // The size is not asked for: of a pipe it is not known.
  std::array<char, 1 << 16> chunk;
  while (const std::size_t got = std::fread(chunk.data(), 1, chunk.size(), stream)) text.append(chunk.data(), got);
  if (std::ferror(stream) != 0) {
    reason = std::string("cannot be read to its end: ") + std::strerror(errno);
    return false;
  }
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    reason = "this text is UTF-16: save it as UTF-8";
    return false;
  }
  // A byte order mark would become a part of the first field.
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  return true;
}

}  // namespace lexon
