// A bounded text under construction.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace lexon {

// Holds up to `Size` - 1 characters and a terminator. What does not fit is cut, and `fits()` tells of it.
template <std::size_t Size>
class Scratch {
 public:
  // Only the terminator is written: scratches stand in hot places.
  Scratch() { text_[0] = '\0'; }

  Scratch& append(std::string_view text) {
    const std::size_t room = Size - 1 - length_;
    const std::size_t taken = text.size() < room ? text.size() : room;
    if (taken != 0) std::memcpy(text_.data() + length_, text.data(), taken);
    length_ += taken;
    text_[length_] = '\0';
    if (taken < text.size()) cut_ = true;
    return *this;
  }

  Scratch& append(char c) { return append(std::string_view(&c, 1)); }

  void clear() {
    length_ = 0;
    text_[0] = '\0';
    cut_ = false;
  }

  // Forgets what stands behind the first `length` characters.
  void cut_to(std::size_t length) {
    if (length >= length_) return;
    length_ = length;
    text_[length_] = '\0';
  }

  [[nodiscard]] bool fits() const { return !cut_; }
  [[nodiscard]] bool empty() const { return length_ == 0; }
  [[nodiscard]] std::size_t size() const { return length_; }
  [[nodiscard]] char* c_str() { return text_.data(); }
  [[nodiscard]] const char* c_str() const { return text_.data(); }
  [[nodiscard]] std::string_view view() const { return {text_.data(), length_}; }

 private:
  std::array<char, Size> text_;
  std::size_t length_ = 0;
  bool cut_ = false;
};

}  // namespace lexon
