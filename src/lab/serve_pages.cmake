# Writes serve_pages.cpp, which takes the files of the page into the program. The editor is there if `make web` was run.
set(web ${PROJECT_SOURCE_DIR}/web)
set(page_files ${web}/index.html ${web}/app.js ${web}/panes.js ${web}/style.css ${web}/view/view.js ${web}/view/view.css)
file(GLOB editor CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/build/web/editor.js)
list(APPEND page_files ${editor})
set(type_html "text/html; charset=utf-8")
set(type_js "text/javascript; charset=utf-8")
set(type_css "text/css; charset=utf-8")
set(declared "")
set(rows "")
set(number 0)
foreach(file IN LISTS page_files)
  get_filename_component(name ${file} NAME)
  string(REGEX REPLACE ".*\\." "" kind ${name})
  string(APPEND declared "__asm__(\".section .rodata\\n.hidden lexon_page_${number}, lexon_page_end_${number}\\n\"
        \".global lexon_page_${number}, lexon_page_end_${number}\\nlexon_page_${number}:\\n.incbin \\\"${file}\\\"\\n\"
        \"lexon_page_end_${number}:\\n.byte 0\\n.previous\\n\");
extern \"C\" const char lexon_page_${number}[] __attribute__((visibility(\"hidden\")));
extern \"C\" const char lexon_page_end_${number}[] __attribute__((visibility(\"hidden\")));
")
  string(APPEND rows "    PageFile{\"${name}\", \"${type_${kind}}\", std::string_view(lexon_page_${number}, lexon_page_end_${number})},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/serve_pages.cpp @ONLY CONTENT
"#include \"lab/serve_pages.hpp\"

#include <array>

@declared@
namespace lexon {
inline namespace v1 {
namespace lab {

std::span<const PageFile> page_files() {
  static const std::array kFiles = {
@rows@  };
  return kFiles;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
")
set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/serve_pages.cpp PROPERTIES OBJECT_DEPENDS "${page_files}")
