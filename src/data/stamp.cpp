#include "data/stamp.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cinttypes>
#include <cstring>
#include <memory>

namespace lexon {

namespace {

constexpr std::string_view kFirstLine = "lexon stamp 1\n";
constexpr std::size_t kMaxStamp = 65536;  // a larger file is no stamp

// Values stay on their line: "%" and what ends lines are written as "%" and two hexadecimal digits.
void append_escaped(std::string& out, std::string_view value) {
  for (const char c : value) {
    const bool is_plain = c != '%' && c != '\n' && c != '\r' && c != '\0';
    if (is_plain) {
      out += c;
    } else {
      constexpr const char* kDigits = "0123456789abcdef";
      const auto byte = static_cast<unsigned char>(c);
      (((out += '%') += kDigits[byte >> 4]) += kDigits[byte & 15]);
    }
  }
}

// Reads a number that ends where `text` ends.
template <typename Number>
bool number_read(std::string_view text, Number& number, int base) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc{} && end == text.data() + text.size();
}

// False for a "%" without its two digits.
bool unescape(std::string_view written, std::string& value) {
  for (std::size_t at = 0; at < written.size(); ++at) {
    if (written[at] != '%') {
      value += written[at];
      continue;
    }
    std::uint8_t byte = 0;
    if (at + 2 >= written.size() || !number_read(written.substr(at + 1, 2), byte, 16)) return false;
    value += static_cast<char>(byte);
    at += 2;
  }
  return true;
}

// Takes what stands before the next `separator` out of `text`; all of it if there is none.
std::string_view take_until(std::string_view& text, char separator) {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return taken;
}

}  // namespace

// Each byte goes into the low end of the value, which is then multiplied. Zeros only multiply, so that a run of them is one
// step; rule files have many. What eight bytes of ones do beside that follows from the low end alone, and a matrix is
// half made of them.
void ByteHash::add(const void* bytes, std::size_t size) {
  constexpr std::uint64_t kPrime = 0x100000001b3;
  constexpr std::uint64_t kPrimeTo4 = kPrime * kPrime * kPrime * kPrime;
  constexpr std::uint64_t kPrimeTo8 = kPrimeTo4 * kPrimeTo4;
  constexpr std::uint64_t kOnes = ~std::uint64_t{0};
  static constexpr std::array<std::uint64_t, 256> kOfOnes = [] {
    std::array<std::uint64_t, 256> added{};
    for (std::uint64_t low = 0; low < added.size(); ++low) {
      std::uint64_t value = low;
      for (int i = 0; i < 8; ++i) value = (value ^ 0xFF) * kPrime;
      added[low] = value - low * kPrimeTo8;
    }
    return added;
  }();
  const auto* at = static_cast<const std::uint8_t*>(bytes);
  const std::uint8_t* const end = at + size;
  std::uint64_t value = value_;
  const auto step = [&](std::uint8_t byte) { value = (value ^ byte) * kPrime; };
  const auto four_steps = [&](const std::uint8_t* from) {
    std::uint32_t four;
    std::memcpy(&four, from, sizeof four);
    if (four == 0) {
      value *= kPrimeTo4;
    } else {
      for (int i = 0; i < 4; ++i) step(from[i]);
    }
  };
  for (const std::uint8_t* const end_of_eights = at + size / 8 * 8; at != end_of_eights; at += 8) {
    std::uint64_t eight;
    std::memcpy(&eight, at, sizeof eight);
    if (eight == kOnes) {
      value = value * kPrimeTo8 + kOfOnes[value & 0xFF];
    } else {
      four_steps(at);
      four_steps(at + 4);
    }
  }
  for (; at != end; ++at) step(*at);
  value_ = value;
}

std::optional<FileMark> file_mark(std::FILE* stream) {
  constexpr std::size_t kChunk = std::size_t{1} << 16;
  const std::unique_ptr<std::uint8_t[]> chunk(
      new std::uint8_t[kChunk]);  // not cleared, since a start reads many a file
  FileMark mark;
  ByteHash hash;
  const std::optional<FileTime> time = stream_time(stream);
  if (!time) return std::nullopt;
  while (true) {
    const std::int64_t got = file_read_some_at(stream, mark.size, chunk.get(), kChunk);
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    hash.add(chunk.get(), static_cast<std::size_t>(got));
    mark.size += got;
  }
  mark.hash = hash.value();
  mark.time = *time;
  return mark;
}

void Stamp::put(std::string_view key, std::string_view value) {
  const auto line = std::find_if(lines.begin(), lines.end(), [key](const auto& l) { return l.first == key; });
  if (line == lines.end()) {
    lines.emplace_back(key, value);
  } else {
    line->second = value;
  }
}

void Stamp::put(std::string_view key, std::int64_t number) {
  put(key, std::string_view(std::to_string(number)));
}

// A mark is written as size, hash in 16 hexadecimal digits, seconds and nanoseconds.
void Stamp::put(std::string_view key, const FileMark& mark) {
  std::array<char, 96> text;
  std::snprintf(text.data(), text.size(), "%" PRId64 " %016" PRIx64 " %" PRId64 " %" PRId64, mark.size, mark.hash,
                mark.time.seconds, mark.time.nanoseconds);
  put(key, std::string_view(text.data()));
}

const std::string* Stamp::text(std::string_view key) const {
  const auto line = std::find_if(lines.begin(), lines.end(), [key](const auto& l) { return l.first == key; });
  return line == lines.end() ? nullptr : &line->second;
}

std::optional<std::int64_t> Stamp::number(std::string_view key) const {
  const std::string* value = text(key);
  std::int64_t number = 0;
  if (value == nullptr || !number_read(*value, number, 10)) return std::nullopt;
  return number;
}

std::optional<FileMark> Stamp::mark(std::string_view key) const {
  const std::string* value = text(key);
  if (value == nullptr) return std::nullopt;
  std::string_view rest = *value;
  FileMark mark;
  const bool is_mark =
      number_read(take_until(rest, ' '), mark.size, 10) && number_read(take_until(rest, ' '), mark.hash, 16) &&
      number_read(take_until(rest, ' '), mark.time.seconds, 10) && number_read(rest, mark.time.nanoseconds, 10);
  if (!is_mark) return std::nullopt;
  return mark;
}

StampState stamp_read(const std::string& path, Stamp& stamp) {
  stamp.lines.clear();
  const File stream(regular_file_open(path, "rb"));
  if (stream == nullptr) {
    if (errno == ENOENT) return StampState::missing;
    return errno == EINVAL || errno == EISDIR ? StampState::damaged : StampState::unopened;
  }
  // Most stamps are short.
  std::string content;
  std::array<char, 1024> piece;
  while (content.size() <= kMaxStamp) {
    const std::size_t got = std::fread(piece.data(), 1, piece.size(), stream.get());
    if (got == 0) break;
    content.append(piece.data(), got);
  }
  const bool is_stamp = content.size() <= kMaxStamp && content.starts_with(kFirstLine) && content.back() == '\n';
  if (!is_stamp) return StampState::damaged;
  Stamp read;
  for (std::string_view rest = std::string_view(content).substr(kFirstLine.size()); !rest.empty();) {
    std::string_view line = take_until(rest, '\n');
    const bool has_value = line.find('=') != std::string_view::npos;
    const std::string_view key = take_until(line, '=');
    std::string value;
    if (!has_value || read.text(key) != nullptr || !unescape(line, value)) return StampState::damaged;
    read.put(key, std::string_view(value));
  }
  stamp = std::move(read);
  return StampState::whole;
}

bool stamp_write(const std::string& path, const Stamp& stamp, bool synced) {
  std::string content(kFirstLine);
  for (const auto& [key, value] : stamp.lines) {
    (content += key) += '=';
    append_escaped(content, value);
    content += '\n';
  }
  DraftFile draft;
  if (!draft.open_beside(path)) return false;
  // What does not reach the file is noticed when it is put in place.
  static_cast<void>(std::fwrite(content.data(), 1, content.size(), draft.stream()));
  if (synced && !draft.sync()) return false;
  if (!draft.put_in_place(path)) return false;
  if (synced) folder_sync(path);
  return true;
}

}  // namespace lexon
