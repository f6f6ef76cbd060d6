#include "lab/lsp_frames.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <optional>

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::size_t kMostHead = 65536;                    // bytes that are kept of a line of the head
constexpr std::size_t kMostMessage = std::size_t{1} << 30;  // bytes; more is passed over

// A line of the head without its end; none at the end of the stream.
std::optional<std::string> head_line(std::FILE* stream) {
  std::string line;
  // The end of a line may be a line feed alone; what is too long is cut, not refused.
  for (int c = std::getc(stream); c != EOF; c = std::getc(stream)) {
    if (c == '\n') {
      if (line.ends_with('\r')) line.pop_back();
      return line;
    }
    if (line.size() < kMostHead) line += static_cast<char>(c);
  }
  return std::nullopt;
}

// Of "Content-Length: N", in any case and with blanks around the number; none if the line says something else.
std::optional<std::size_t> length_of(std::string_view line) {
  constexpr std::string_view kName = "content-length:";
  const auto is_same = [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; };
  if (line.size() < kName.size() ||
      !std::equal(kName.begin(), kName.end(), line.begin(), [&](char b, char a) { return is_same(a, b); }))
    return std::nullopt;
  line.remove_prefix(kName.size());
  while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
  while (!line.empty() && (line.back() == ' ' || line.back() == '\t')) line.remove_suffix(1);
  std::size_t length = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), length);
  if (error != std::errc() || end != line.data() + line.size()) return std::nullopt;
  return length;
}

}  // namespace

Frame frame_read(std::FILE* stream, std::string& text) {
  std::optional<std::size_t> length;
  bool has_head = false;
  while (true) {
    const std::optional<std::string> line = head_line(stream);
    if (!line) return Frame::end;
    if (line->empty()) {
      // Lines between messages do no harm.
      if (!has_head) continue;
      break;
    }
    has_head = true;
    // Other lines of the head, such as the type of the content, are passed over.
    if (const auto found = length_of(*line)) length = found;
  }
  if (!length) {
    text = "a message begins with a head that holds \"Content-Length: N\"";
    return Frame::bad;
  }
  if (*length > kMostMessage) {
    text = "a message of more than 1 GiB is not read";
    // Read and thrown away, so that the message behind it is found.
    std::array<char, 65536> passed;
    for (std::size_t left = *length; left > 0;) {
      const std::size_t size = std::fread(passed.data(), 1, std::min(left, passed.size()), stream);
      if (size == 0) return Frame::end;
      left -= size;
    }
    return Frame::bad;
  }
  // The memory comes with the bytes: a length alone takes none.
  text.clear();
  while (text.size() < *length) {
    const std::size_t before = text.size();
    text.resize(std::min(*length, before + (std::size_t{1} << 20)));
    const std::size_t size = std::fread(text.data() + before, 1, text.size() - before, stream);
    if (size != text.size() - before) return Frame::end;
  }
  return Frame::message;
}

void FrameWriter::write(std::string_view text) {
  const std::scoped_lock lock(mutex_);
  std::fprintf(stream_, "Content-Length: %zu\r\n\r\n", text.size());
  std::fwrite(text.data(), 1, text.size(), stream_);
  std::fflush(stream_);
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
