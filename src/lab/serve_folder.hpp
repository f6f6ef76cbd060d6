// The project folder as a page may see it: texts of this folder and none outside.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lexon {
inline namespace v1 {
namespace lab {

// A file as it stands on the disk.
struct FolderText {
  std::string text;
  std::string stamp;  // what it holds, as a short word: equal stamps, equal texts
};

// Why a file is refused, for a person; and whether it is for want of it.
struct FolderFault {
  std::string text;
  bool is_missing = false;
};

// Reads and writes regular files below one folder, by paths relative to it. A path that leads out of it, by "..", from
// the root or over a symbolic link, is refused, and so is a hidden name. May be used by several threads at once.
class Folder {
 public:
  // The largest text that is read or written.
  static constexpr std::size_t kMostBytes = std::size_t{16} << 20;

  // Throws Fault if the folder cannot be had.
  explicit Folder(const std::string& path);
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  // Absolute, without links.
  [[nodiscard]] const std::string& path() const { return path_; }
  // The path relative to the folder of a file named on the command line. Throws Fault if it lies elsewhere.
  [[nodiscard]] std::string relative(const std::string& file) const;

  // None: `fault` says why.
  [[nodiscard]] std::optional<FolderText> read(const std::string& relative, FolderFault& fault) const;
  // Puts `text` in the place of the file that has this stamp, whole or not at all, with the file's mode; an empty stamp:
  // of none. Gives the new stamp; none: `fault` says why, and if `is_changed`, the file is not the one of the stamp.
  [[nodiscard]] std::optional<std::string> save(const std::string& relative, std::string_view text,
                                                const std::string& stamp, FolderFault& fault, bool& is_changed);

 private:
  [[nodiscard]] int open_folder_of(const std::string& relative, std::string& name, FolderFault& fault) const;

  std::string path_;
  int descriptor_ = -1;  // of the folder: it stays the same one if it is moved
};

// Does the path lead down from the folder and nowhere else, by names that are not hidden?
[[nodiscard]] bool is_path_inside(const std::string& relative);

// Line (from 1) of the first byte that is not UTF-8, or zero; 0: all is well.
[[nodiscard]] std::int64_t line_that_is_no_text(std::string_view text);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
