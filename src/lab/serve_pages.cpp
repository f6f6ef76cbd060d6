#include "lab/serve_pages.hpp"

#include <array>

namespace lexon {

namespace embedded {
extern const std::string_view page_html, page_css, page_app_js, page_panes_js;
extern const std::string_view view_js, view_css;
#ifdef LEXON_HAS_EDITOR
extern const std::string_view page_editor_js;
#endif
}  // namespace embedded

inline namespace v1 {
namespace lab {

std::span<const PageFile> page_files() {
  constexpr std::string_view kHtml = "text/html; charset=utf-8";
  constexpr std::string_view kCss = "text/css; charset=utf-8";
  // Of a kind that the server does not pack, which takes longer than the way.
  constexpr std::string_view kScript = "application/javascript; charset=utf-8";
  static const std::array kFiles = {
      PageFile{"index.html", kHtml, embedded::page_html},       PageFile{"style.css", kCss, embedded::page_css},
      PageFile{"app.js", kScript, embedded::page_app_js},       PageFile{"panes.js", kScript, embedded::page_panes_js},
      PageFile{"view.js", kScript, embedded::view_js},          PageFile{"view.css", kCss, embedded::view_css},
#ifdef LEXON_HAS_EDITOR
      PageFile{"editor.js", kScript, embedded::page_editor_js},
#endif
  };
  return kFiles;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
