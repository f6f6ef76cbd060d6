#include "lab/text_file.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "data/platform.hpp"
#include "data/utf8.hpp"
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
  // The size is not asked for: of a pipe it is not known, and a file can grow while it is read.
  std::FILE* stream = opened == nullptr ? stdin : opened.get();
  std::string text;
  std::array<char, 65536> piece;
  while (const std::size_t size = std::fread(piece.data(), 1, piece.size(), stream)) text.append(piece.data(), size);
  // A folder opens like a file, and fails here.
  if (std::ferror(stream) != 0) throw Fault(path + ": cannot be read to its end: " + std::strerror(errno));
  return text;
}

bool is_plain_file(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error);
}

void text_file_write(const std::string& path, std::string_view text) {
  // A draft beside the file takes its place when it is whole: who reads the file meanwhile sees the old or the new one.
  DraftFile draft;
  errno = 0;
  // In the same folder, since a file can only be renamed within its file system.
  if (draft.open_beside(path)) {
    std::fwrite(text.data(), 1, text.size(), draft.stream());
    if (draft.put_in_place(path)) return;
  }
  throw Fault(path + ": cannot be written: " + std::strerror(errno));
}

std::vector<std::string_view> lines_of(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    // The last line may have no end.
    const std::string_view line = text.substr(0, text.find('\n'));
    lines.push_back(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return lines;
}

void EncodedLines::look_at(std::string_view line, std::int64_t number) {
  const auto is_ascii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  // Most lines hold nothing else.
  if (std::ranges::all_of(line, is_ascii)) return;
  while (!line.empty()) {
    const Utf8Character character = utf8_first(line);
    if (!character.is_valid && other == 0) other = number;
    if (character.is_valid && character.length > 1 && utf8 == 0) utf8 = number;
    line.remove_prefix(character.length);
  }
}

EncodedLines encoded_lines(std::string_view text) {
  EncodedLines lines;
  std::int64_t number = 0;
  for (const std::string_view line : lines_of(text)) lines.look_at(line, ++number);
  return lines;
}

std::string label_in(std::string_view line) {
  const std::size_t close = line.find(']');
  return line.empty() ? std::string()
                      : std::string(line.substr(1, close == std::string_view::npos ? close : close - 1));
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
