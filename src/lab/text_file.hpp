// Files as texts.
#pragma once

#include <string>
#include <string_view>

namespace lexon {
inline namespace v1 {
namespace lab {

// All of a file; of standard input for "-". Throws Fault if it cannot be had.
[[nodiscard]] std::string text_file_read(const std::string& path);

// Puts the text in the place of the file, whole or not at all. Throws Fault.
void text_file_write(const std::string& path, std::string_view text);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
