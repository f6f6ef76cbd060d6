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
  unsigned char bits = 0;
  for (const char c : piece) bits |= static_cast<unsigned char>(c);
  // The head of a line alone is looked at where it comes in pieces.
  if (bits >= 0x80 && begins_line) watch_characters(watch, piece);
}

}  // namespace

bool text_line_read(TextSource source, char* buffer, int size, TextWatch* watch) {
  int length = source.take_plain(buffer, size - 1);
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
