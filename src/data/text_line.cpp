#include "data/text_line.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "data/utf8.hpp"

namespace lexon {

int TextSource::next_in_memory() {
  if (rest_->empty()) return EOF;
  const std::size_t length = rest_->starts_with("\r\n") ? 2 : 1;
  if (copy_ != nullptr) copy_->append(rest_->substr(0, length));
  const char c = (*rest_)[length - 1];
  rest_->remove_prefix(length);
  return static_cast<unsigned char>(c);
}

int TextSource::take_plain(char* to, int most) {
  if (rest_ == nullptr) return 0;
  const std::string_view line = rest_->substr(0, static_cast<std::size_t>(most));
  const std::size_t length = std::min(line.find('\n'), line.size() - 1) + 1;
  if (line.empty() || line.substr(0, length).find('\r') != std::string_view::npos) return 0;
  std::memcpy(to, line.data(), length);
  if (copy_ != nullptr) copy_->append(line.substr(0, length));
  rest_->remove_prefix(length);
  return static_cast<int>(length);
}

int TextSource::take_of_file(char* to, int size) {
  if (stream_ == nullptr || (rest_ != nullptr && !rest_->empty())) return 0;
  // `fgets` does not tell how much it has read, and a line may hold NULs. In room full of line ends its terminator shows:
  // behind the line's own end, or in front of the first end that it has left.
  std::memset(to, '\n', static_cast<std::size_t>(size));
  const bool is_read = std::fgets(to, size, stream_) != nullptr;
  const void* found = std::memchr(to, '\n', static_cast<std::size_t>(size));
  int length = size - 1;
  if (found != nullptr) {
    const auto at = static_cast<int>(static_cast<const char*>(found) - to);
    // Where the reading fails it leaves no terminator behind what it has read.
    const bool is_of_line = at + 1 < size && to[at + 1] == '\0';
    length = !is_read ? at : is_of_line ? at + 1 : at - 1;
  }
  if (copy_ != nullptr) copy_->append(to, static_cast<std::size_t>(length));
  if (length >= 2 && to[length - 1] == '\n' && to[length - 2] == '\r') to[--length - 1] = '\n';
  if (length == 0 || to[length - 1] != '\r') return length;
  // The LF of a pair may stand behind the room.
  const int behind = getc_unlocked(stream_);
  if (behind == '\n') {
    to[length - 1] = '\n';
    if (copy_ != nullptr) copy_->push_back('\n');
  } else if (behind != EOF) {
    std::ungetc(behind, stream_);
  }
  return length;
}

int TextSource::next_in_file() {
  const int c = getc_unlocked(stream_);
  if (c == EOF) return EOF;
  if (copy_ != nullptr) copy_->push_back(static_cast<char>(c));
  if (c != '\r') return c;
  const int behind = getc_unlocked(stream_);
  if (behind == '\n') {
    if (copy_ != nullptr) copy_->push_back('\n');
    return behind;
  }
  if (behind != EOF) std::ungetc(behind, stream_);
  return c;
}

namespace {

void set_first(std::int64_t& place, std::int64_t line) {
  if (place == 0) place = line;
}

// A piece may end within a character: what its last bytes lack says nothing.
bool may_be_cut(std::string_view rest, bool goes_on) {
  return goes_on && rest.size() < 4 && static_cast<unsigned char>(rest.front()) >= 0xC2;
}

void watch_characters(TextWatch& watch, std::string_view piece) {
  while (!piece.empty()) {
    const Utf8Character character = utf8_first(piece);
    if (!character.is_valid && !may_be_cut(piece, watch.goes_on)) set_first(watch.other, watch.line);
    if (character.length > 1) set_first(watch.utf8, watch.line);
    piece.remove_prefix(character.length);
  }
}

bool is_ascii(std::string_view text) {
  std::uint64_t bits = 0;
  for (; text.size() >= sizeof bits; text.remove_prefix(sizeof bits)) {
    std::uint64_t word;
    std::memcpy(&word, text.data(), sizeof word);
    bits |= word;
  }
  for (const char c : text) bits |= static_cast<unsigned char>(c);
  return (bits & 0x8080808080808080U) == 0;
}

void watch_piece(TextWatch& watch, std::string_view piece) {
  const bool begins_line = !watch.goes_on;
  if (begins_line) ++watch.line;
  watch.goes_on = piece.back() != '\n';
  if (begins_line && watch.line == 1) {
    watch.is_utf16 = piece.starts_with("\xFF\xFE") || piece.starts_with("\xFE\xFF");
    watch.has_mark = piece.starts_with("\xEF\xBB\xBF");
  }
  if (!begins_line) set_first(watch.long_line, watch.line);
  if (piece.find('\0') != std::string_view::npos) set_first(watch.nul, watch.line);
  // The head of a line alone is looked at where it comes in pieces.
  if (begins_line && !is_ascii(piece)) watch_characters(watch, piece);
}

}  // namespace

bool text_line_read(TextSource source, char* buffer, int size, TextWatch* watch) {
  int length = source.take_plain(buffer, size - 1);
  if (length == 0) length = source.take_of_file(buffer, size);
  while (length < size - 1 && (length == 0 || buffer[length - 1] != '\n')) {
    const int c = source.next();
    if (c == EOF) break;
    buffer[length++] = static_cast<char>(c);
  }
  if (length == 0) return false;
  buffer[length] = '\0';
  if (watch != nullptr) watch_piece(*watch, {buffer, static_cast<std::size_t>(length)});
  return true;
}

}  // namespace lexon
