// Dictionary files as an input of a target writes them: blocks are mostly zeros, which would only hide what matters.
// An input is a row of parts, each a letter, a length (two bytes, high byte first), and as many bytes:
//
//   D, I   a block of the dictionary file, of the index file; its rest is zeros
//   d, i   bytes of these files as they stand
//   L      two bytes: the link at the end of the last block
//   K      a key that is asked for
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "dict/layout.hpp"

namespace lexon::fuzz {

struct DictionaryImage {
  std::string dictionary;
  std::string index;
  std::vector<std::string> keys;
};

class ImageReader {
 public:
  explicit ImageReader(std::string_view parts) : rest_(parts) {}

  [[nodiscard]] DictionaryImage read() {
    for (int i = 0; i < kMostParts && rest_.size() >= 3; ++i) take(rest_[0], next_bytes());
    return image_;
  }

 private:
  static constexpr int kMostParts = 100;

  std::string_view next_bytes() {
    const auto byte = [this](std::size_t at) { return static_cast<unsigned char>(rest_[at]); };
    const std::size_t length = static_cast<std::size_t>(byte(1)) << 8 | byte(2);
    const std::string_view bytes = rest_.substr(3, length);
    rest_.remove_prefix(std::min(rest_.size(), 3 + length));
    return bytes;
  }

  void take(char kind, std::string_view bytes) {
    switch (kind) {
      case 'D': return add_block(image_.dictionary, bytes, kDictBlockSize);
      case 'I': return add_block(image_.index, bytes, kIndexBlockSize);
      case 'd': image_.dictionary += bytes; return;
      case 'i': image_.index += bytes; return;
      case 'L': return link(bytes);
      case 'K': image_.keys.emplace_back(bytes); return;
      default: return;
    }
  }

  void add_block(std::string& file, std::string_view bytes, std::size_t block_size) {
    file += bytes.substr(0, block_size);
    file.resize(file.size() + block_size - std::min(bytes.size(), block_size));
    last_ = &file;
  }

  void link(std::string_view bytes) const {
    if (last_ != nullptr && bytes.size() == 2) last_->replace(last_->size() - 2, 2, bytes);
  }

  std::string_view rest_;
  DictionaryImage image_;
  std::string* last_ = nullptr;
};

// The parts that say the same as two files and some keys.
[[nodiscard]] inline std::string parts_of(std::string_view dictionary, std::string_view index,
                                          const std::vector<std::string>& keys) {
  std::string parts;
  const auto add = [&parts](char kind, std::string_view bytes) {
    parts += {kind, static_cast<char>(bytes.size() >> 8), static_cast<char>(bytes.size())};
    parts += bytes;
  };
  const auto add_blocks = [&add](char kind, std::string_view file, std::size_t size) {
    for (; file.size() >= size; file.remove_prefix(size)) {
      const std::string_view content = file.substr(0, size - 2);
      add(kind, content.substr(0, content.find_last_not_of('\0') + 1));
      const std::string_view link = file.substr(size - 2, 2);
      if (link != std::string_view("\0\0", 2)) add('L', link);
    }
  };
  add_blocks('D', dictionary, kDictBlockSize);
  add_blocks('I', index, kIndexBlockSize);
  for (const std::string& key : keys) add('K', key);
  return parts;
}

}  // namespace lexon::fuzz
