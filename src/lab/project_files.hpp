// Which files make up a grammar, for programs that are pointed at a folder.
#pragma once

#include <string>
#include <vector>

#include "lab/overlay.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

inline constexpr const char* kProjectFile = "lexon.json";

struct ProjectFiles {
  std::string folder;                // in which they lie; it ends with "/"
  std::string rules{};               // the rules, as text or as a source; empty: none was found
  std::vector<std::string> words{};  // entry text, which counts as one, or one dictionary that is built already
  std::string cooccurrence{};        // text or built; empty: none
  std::vector<std::string> graphs{};
  std::vector<std::string> silenced{};  // codes of findings that are not wanted
  std::string coverage{};               // data of `lexon-lab coverage`; empty: none
  int blocks = 200;
  std::string fault{};  // what is wrong with the project file; empty: nothing, or there is none

  bool operator==(const ProjectFiles&) const = default;
  // All files by `file_key` but the coverage.
  [[nodiscard]] std::vector<std::string> keys() const;
};

// The files that "lexon.json" in the folder names, or else those that have names as in the examples: rules.lxr,
// rules.txt, *.rules; entries.txt, words.txt, literals.txt, *.entries; cr.txt; input.txt, graphs.txt, *.graphs. A folder
// without graphs takes those of the folder above.
[[nodiscard]] ProjectFiles project_files_of(const std::string& folder, const Overlay* unsaved = nullptr);

// The same from settings in JSON, as they stand in "lexon.json": "rules": FILE, "entries": FILE or [FILE, ...],
// "cooccurrence": FILE, "graphs": FILE or [FILE, ...], "coverage": FILE, "no": [CODE, ...], "blocks": N. Paths are
// relative to the folder; a "*" in the last component stands for any text. What is not named is guessed.
[[nodiscard]] ProjectFiles project_files_from(const std::string& folder, const std::string& json,
                                              const std::string& name_of_json, const Overlay* unsaved = nullptr);

// The nearest folder from that of the file up to `top` that has a project file or rules; that of the file if none has.
[[nodiscard]] std::string project_folder_of(const std::string& file, const std::string& top);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
