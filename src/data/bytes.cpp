#include "data/bytes.hpp"

namespace lexon {

void append_u16(Bytes& out, std::size_t value) {
  out.push_back(static_cast<std::uint8_t>(value >> 8));
  out.push_back(static_cast<std::uint8_t>(value));
}

void append_u32(Bytes& out, std::uint32_t value) {
  append_u16(out, value >> 16);
  append_u16(out, value & 0xFFFF);
}

void append_text(Bytes& out, std::string_view text) {
  append_u16(out, text.size());
  out.insert(out.end(), text.begin(), text.end());
}

}  // namespace lexon
