// Reading numbers and texts out of a block, safe against any content.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "dict/layout.hpp"

namespace lexon {

using ByteView = std::span<const std::uint8_t>;

// Reads on from a place in `bytes`, high byte first. The first read past the end fails the reader for good; that read
// and all later ones give 0 or nothing. Ask `ok()` once a record. Texts point into the bytes.
class BlockReader {
 public:
  explicit BlockReader(ByteView bytes, std::size_t at = 0) : bytes_(bytes), at_(at) {
    if (at > bytes.size()) ok_ = false;
  }

  [[nodiscard]] std::uint8_t u8() {
    const std::uint8_t* from = take(1);
    return from == nullptr ? std::uint8_t{0} : *from;
  }
  [[nodiscard]] std::uint16_t u16() {
    const std::uint8_t* from = take(2);
    return from == nullptr ? std::uint16_t{0} : load_u16(from);
  }
  [[nodiscard]] std::uint32_t u32() {
    const std::uint8_t* from = take(4);
    return from == nullptr ? 0 : load_u32(from);
  }

  [[nodiscard]] ByteView bytes(std::size_t length) {
    const std::uint8_t* from = take(length);
    return from == nullptr ? ByteView{} : ByteView{from, length};
  }
  [[nodiscard]] std::string_view text(std::size_t length) {
    const ByteView found = bytes(length);
    return {reinterpret_cast<const char*>(found.data()), found.size()};
  }
  // A text behind its two-byte length.
  [[nodiscard]] std::string_view text() { return text(u16()); }

  void skip(std::size_t length) { (void)take(length); }

  // What was read makes no sense: the reader fails like one that ran past the end.
  void fail() { ok_ = false; }

  [[nodiscard]] bool ok() const { return ok_; }
  [[nodiscard]] std::size_t at() const { return at_; }
  // Bytes are left, and no read has failed.
  [[nodiscard]] bool more() const { return ok_ && at_ < bytes_.size(); }

 private:
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
  bool ok_ = true;
};

}  // namespace lexon
