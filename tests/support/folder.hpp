// A folder for the files of one test.
#pragma once

#include "support/test.hpp"

namespace lexon::test {

// A fresh empty folder, with files and subfolders that the test makes in it. It goes with the object.
class Folder {
 public:
  Folder() {
    std::string pattern = ::testing::TempDir() + "lexon-test-XXXXXX";
    path_ = mkdtemp(pattern.data());
  }
  ~Folder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  [[nodiscard]] std::string path(const std::string& name) const { return path_ + "/" + name; }
  // Writes a file, and its subfolder if need be; the path.
  std::string write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
  }
  // The names of all files in it, sorted.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }
  // A text without the name of the folder.
  [[nodiscard]] std::string plain(std::string text) const {
    for (std::size_t at = 0; (at = text.find(path(""), at)) != std::string::npos;) text.erase(at, path("").size());
    return text;
  }

 private:
  std::string path_;
};

}  // namespace lexon::test
