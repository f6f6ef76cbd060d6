// Files as texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "lab/overlay.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// All of a file, or of the unsaved text that stands for it; of standard input for "-". A pipe can be read once only.
// Throws Fault if it cannot be had.
[[nodiscard]] std::string text_file_read(const std::string& path, const Overlay* unsaved = nullptr);

// Can the file be read again and from any place? A pipe and a terminal cannot, nor can what is not there.
[[nodiscard]] bool is_plain_file(const std::string& path);

// Puts the text in the place of the file, whole or not at all. Throws Fault.
void text_file_write(const std::string& path, std::string_view text);

// The lines of a text, without their ends (LF or CR LF). What stands behind the last end is a line if it is not empty.
// They point into `text`.
[[nodiscard]] std::vector<std::string_view> lines_of(std::string_view text);
std::vector<std::string_view> lines_of(std::string&& text) = delete;  // they would outlive it

// The first line, from 1, with a character of UTF-8 that has more than a byte, and the first with bytes that are none;
// 0: there is no such line.
struct EncodedLines {
  std::int64_t utf8 = 0;
  std::int64_t other = 0;

  // Looks at one more line, of this number.
  void look_at(std::string_view line, std::int64_t number);
};
[[nodiscard]] EncodedLines encoded_lines(std::string_view text);

// The label in a line that opens a sentence: "S:3" of "[S:3] or more".
[[nodiscard]] std::string label_in(std::string_view line);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
