#include "lab/text_file.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "data/platform.hpp"
#include "lab/commands.hpp"
#include "run/files.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

std::string text_file_read(const std::string& path, const Overlay* unsaved) {
  if (const auto text = unsaved != nullptr ? unsaved->find(path) : nullptr; text != nullptr) return *text;
  errno = 0;
  const File opened(path == "-" ? nullptr : file_open(path, "rb"));
  if (path != "-" && opened == nullptr) throw Fault(path + ": cannot be opened: " + std::strerror(errno));
  std::FILE* stream = opened == nullptr ? stdin : opened.get();
  std::string text;
  std::array<char, 65536> piece;
  while (const std::size_t size = std::fread(piece.data(), 1, piece.size(), stream)) text.append(piece.data(), size);
  if (std::ferror(stream) != 0) throw Fault(path + ": cannot be read to its end: " + std::strerror(errno));
  return text;
}

void text_file_write(const std::string& path, std::string_view text) {
  DraftFile draft;
  errno = 0;
  if (draft.open_beside(path)) {
    std::fwrite(text.data(), 1, text.size(), draft.stream());
    if (draft.put_in_place(path)) return;
  }
  throw Fault(path + ": cannot be written: " + std::strerror(errno));
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
