// The one codec of all binary files: numbers high byte first, texts behind their lengths, within bounds.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

namespace lexon {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

[[nodiscard]] inline std::string_view as_text(ByteView bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

[[nodiscard]] constexpr std::uint16_t load_u16(const std::uint8_t* from) {
  return static_cast<std::uint16_t>((from[0] << 8) | from[1]);
}
[[nodiscard]] constexpr std::uint32_t load_u32(const std::uint8_t* from) {
  return (static_cast<std::uint32_t>(load_u16(from)) << 16) | load_u16(from + 2);
}
constexpr void store_u16(std::uint8_t* to, std::uint32_t value) {
  to[0] = static_cast<std::uint8_t>(value >> 8);
  to[1] = static_cast<std::uint8_t>(value);
}
constexpr void store_u32(std::uint8_t* to, std::uint32_t value) {
  store_u16(to, value >> 16);
  store_u16(to + 2, value & 0xFFFF);
}

// Appending to bytes that grow. Lengths are two bytes: a text is at most 65,535 long.
void append_u16(Bytes& out, std::size_t value);
void append_u32(Bytes& out, std::uint32_t value);
void append_text(Bytes& out, std::string_view text);

// Reads on from a place in bytes that somebody else owns; texts point into them. The first read past the end fails
// the reader for good: that read and all later ones give 0 or nothing. Ask `ok()` once a record.
class ByteReader {
 public:
  explicit ByteReader(ByteView bytes, std::size_t at = 0) : bytes_(bytes), at_(at), ok_(at <= bytes.size()) {}

  std::uint8_t u8() {
    const std::uint8_t* from = take(1);
    return from == nullptr ? std::uint8_t{0} : *from;
  }
  std::uint16_t u16() {
    const std::uint8_t* from = take(2);
    return from == nullptr ? std::uint16_t{0} : load_u16(from);
  }
  std::uint32_t u32() {
    const std::uint8_t* from = take(4);
    return from == nullptr ? 0 : load_u32(from);
  }

  [[nodiscard]] ByteView bytes(std::size_t length) {
    const std::uint8_t* from = take(length);
    return from == nullptr ? ByteView{} : ByteView{from, length};
  }
  [[nodiscard]] std::string_view text(std::size_t length) { return as_text(bytes(length)); }
  // Bytes or a text behind their length. Both are checked at once, since records are made of such fields.
  [[nodiscard]] ByteView bytes() {
    const std::uint8_t* const from = bytes_.data() + at_;
    const std::size_t left = bytes_.size() - at_;
    ok_ = ok_ && left >= kLengthSize && load_u16(from) <= left - kLengthSize;
    if (!ok_) return {};
    const ByteView field{from + kLengthSize, load_u16(from)};
    at_ += kLengthSize + field.size();
    return field;
  }
  [[nodiscard]] std::string_view text() { return text(u16()); }

  // Takes `Count` lengths of 0, if these stand next.
  template <std::size_t Count = 1>
  [[nodiscard]] bool next_are_empty() {
    static constexpr std::array<std::uint8_t, kLengthSize * Count> kEmpty{};
    const bool are_empty = ok_ && bytes_.size() - at_ >= kEmpty.size() &&
                           std::memcmp(bytes_.data() + at_, kEmpty.data(), kEmpty.size()) == 0;
    if (are_empty) at_ += kEmpty.size();
    return are_empty;
  }

  void skip(std::size_t length) { (void)take(length); }

  // What was read makes no sense: the reader fails like one that ran past the end.
  void fail() { ok_ = false; }

  [[nodiscard]] bool ok() const { return ok_; }
  [[nodiscard]] std::size_t at() const { return at_; }
  // Bytes are left, and no read has failed.
  [[nodiscard]] bool more() const { return ok_ && at_ < bytes_.size(); }
  [[nodiscard]] bool next_is(char c) const { return more() && bytes_[at_] == static_cast<std::uint8_t>(c); }

 private:
  static constexpr std::size_t kLengthSize = 2;

  // The next `length` bytes, or null if there are fewer.
  const std::uint8_t* take(std::size_t length) {
    if (!ok_ || length > bytes_.size() - at_) {
      ok_ = false;
      return nullptr;
    }
    const std::uint8_t* from = bytes_.data() + at_;
    at_ += length;
    return from;
  }

  ByteView bytes_;
  std::size_t at_;
  bool ok_;
};

// Writes into room that somebody else owns. What does not fit is not written, and `ok()` says so.
class ByteWriter {
 public:
  explicit ByteWriter(std::span<std::uint8_t> room) : room_(room) {}

  void u8(std::uint8_t value) {
    if (std::uint8_t* to = reserve(1); to != nullptr) *to = value;
  }
  void u16(std::uint16_t value) {
    if (std::uint8_t* to = reserve(2); to != nullptr) store_u16(to, value);
  }
  void u32(std::uint32_t value) {
    if (std::uint8_t* to = reserve(4); to != nullptr) store_u32(to, value);
  }
  void put(std::string_view text) {
    if (text.empty()) return;
    if (std::uint8_t* to = reserve(text.size()); to != nullptr) std::memcpy(to, text.data(), text.size());
  }

  // A length that is filled in when what it measures stands behind it.
  std::size_t length_open() {
    u16(0);
    return size_;
  }
  void length_close(std::size_t opened) {
    if (ok_) store_u16(room_.data() + opened - 2, static_cast<std::uint32_t>(size_ - opened));
  }

  [[nodiscard]] bool ok() const { return ok_; }
  [[nodiscard]] ByteView written() const { return room_.first(size_); }

 private:
  // Room for `width` bytes more, or null.
  std::uint8_t* reserve(std::size_t width) {
    ok_ = ok_ && width <= room_.size() - size_;
    if (!ok_) return nullptr;
    size_ += width;
    return room_.data() + size_ - width;
  }

  std::span<std::uint8_t> room_;
  std::size_t size_ = 0;
  bool ok_ = true;
};

}  // namespace lexon
