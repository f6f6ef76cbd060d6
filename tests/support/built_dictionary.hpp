// Dictionaries built from text in a folder of their own, and asked from outside.
#pragma once

#include <string>
#include <vector>

#include "dicttool/build.hpp"

namespace lexon::test {

// A fresh empty folder of the running test, with files and subfolders that tests make in it. It goes with the object.
class BuildFolder {
 public:
  BuildFolder();
  ~BuildFolder();
  BuildFolder(const BuildFolder&) = delete;
  BuildFolder& operator=(const BuildFolder&) = delete;

  [[nodiscard]] std::string path(const std::string& name) const { return path_ + "/" + name; }
  // The names of all files in it, sorted.
  [[nodiscard]] std::vector<std::string> names() const;

 private:
  std::string path_;
};

struct BuildResult {
  bool done = false;
  std::string log;  // without the name of the folder
  BuildFigures figures;
};

// Writes `entries` to entries.txt in the folder and builds `name` of it.
[[nodiscard]] BuildResult build_text(const BuildFolder& folder, const std::string& entries, const std::string& name = "words.dic", BuildOptions options = {});

// What the tools say of a dictionary of the folder: messages without the folder's name in front.
struct ToolResult {
  bool done = false;
  std::string out;
  std::string log;
};
[[nodiscard]] ToolResult list_of(const BuildFolder& folder, const std::string& name = "words.dic");
[[nodiscard]] ToolResult check_of(const BuildFolder& folder, const std::string& name = "words.dic");
[[nodiscard]] ToolResult find_of(const BuildFolder& folder, int key_field, const std::string& key);

// Opens a dictionary of the folder as a run does, and looks words up in it.
class Asked {
 public:
  explicit Asked(const BuildFolder& folder, const std::string& name = "words.dic");
  ~Asked();
  Asked(const Asked&) = delete;
  Asked& operator=(const Asked&) = delete;

  // The ids of the words found, in their order, one behind each other with a blank; "status N" for a failed lookup.
  [[nodiscard]] std::string ids(int key_field, const std::string& key);
  // How many blocks had words.
  [[nodiscard]] int groups(int key_field, const std::string& key);

 private:
  struct State;
  State* state_;
};

}  // namespace lexon::test
