// Numbers and blocks of the compiled files, high byte first, read and written within bounds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace lexon {

// Reads from bytes that somebody else owns. The first read past the end fails the reader; from then on all reads give
// 0 or nothing, and it stands at its end.
class ByteReader {
 public:
  explicit ByteReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  std::span<const std::uint8_t> block(std::size_t length) {
    if (length > rest_.size()) {
      ok_ = false;
      length = 0;
      rest_ = {};
    }
    const auto taken = rest_.first(length);
    rest_ = rest_.subspan(length);
    return taken;
  }

  std::uint32_t number(std::size_t width) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : block(width)) value = value << 8 | byte;
    return value;
  }
  std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
  std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
  std::uint32_t u32() { return number(4); }

  // A block with its length in front.
  std::span<const std::uint8_t> block16() { return block(u16()); }

  [[nodiscard]] bool next_is(char c) const { return !rest_.empty() && rest_.front() == static_cast<std::uint8_t>(c); }
  [[nodiscard]] bool at_end() const { return rest_.empty(); }
  [[nodiscard]] bool ok() const { return ok_; }

 private:
  std::span<const std::uint8_t> rest_;
  bool ok_ = true;
};

// Writes into bytes that somebody else owns. What does not fit is not written, and `ok()` tells of it.
class ByteWriter {
 public:
  explicit ByteWriter(std::span<std::uint8_t> room) : room_(room) {}

  void number(std::uint32_t value, std::size_t width) {
    if (!reserve(width)) return;
    put_number(size_, value, width);
    size_ += width;
  }
  void u8(std::uint8_t value) { number(value, 1); }
  void u16(std::uint16_t value) { number(value, 2); }
  void u32(std::uint32_t value) { number(value, 4); }

  void put(std::string_view text) {
    if (text.empty() || !reserve(text.size())) return;
    std::memcpy(room_.data() + size_, text.data(), text.size());
    size_ += text.size();
  }

  // A length that is filled in when what it measures stands behind it.
  std::size_t length_open() {
    u16(0);
    return size_;
  }
  void length_close(std::size_t opened) {
    if (ok_) put_number(opened - 2, static_cast<std::uint32_t>(size_ - opened), 2);
  }

  [[nodiscard]] bool ok() const { return ok_; }
  [[nodiscard]] std::span<const std::uint8_t> written() const { return room_.first(size_); }

 private:
  bool reserve(std::size_t width) {
    ok_ = ok_ && width <= room_.size() - size_;
    return ok_;
  }

  void put_number(std::size_t at, std::uint32_t value, std::size_t width) {
    for (std::size_t i = width; i-- > 0; value >>= 8) room_[at + i] = static_cast<std::uint8_t>(value & 0xFF);
  }

  std::span<std::uint8_t> room_;
  std::size_t size_ = 0;
  bool ok_ = true;
};

}  // namespace lexon
