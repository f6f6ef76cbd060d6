// The files of the page, which are part of the program.
#pragma once

#include <span>
#include <string_view>

namespace lexon {
inline namespace v1 {
namespace lab {

struct PageFile {
  std::string_view name;
  std::string_view type;  // as HTTP names it
  std::string_view content;
};

// Without `editor.js` if `make web` had not been run when the program was built: the page then has plain text areas.
[[nodiscard]] std::span<const PageFile> page_files();

}  // namespace lab
}  // namespace v1
}  // namespace lexon
