// Files as texts.
#pragma once

#include <string>
#include <string_view>

#include <string_view>
#include "lab/overlay.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// All of a file, or of the unsaved text that stands for it; of standard input for "-". Throws Fault if it cannot be had.
[[nodiscard]] std::string text_file_read(const std::string& path, const Overlay* unsaved = nullptr);

// Puts the text in the place of the file, whole or not at all. Throws Fault.
void text_file_write(const std::string& path, std::string_view text);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
