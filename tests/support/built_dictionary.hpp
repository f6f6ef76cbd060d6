// Dictionaries built from text in a folder of their own, and asked from outside.
#pragma once

#include "dict/dictionary.hpp"
#include "dicttool/build.hpp"
#include "support/folder.hpp"
#include "support/session.hpp"

namespace lexon::test {

struct BuildResult {
  bool done = false;
  std::string log;  // without the name of the folder
  BuildFigures figures;
};

// Writes `entries` to entries.txt in the folder and builds `name` of it.
[[nodiscard]] BuildResult build_text(const Folder& folder, const std::string& entries, const std::string& name = "words.dic", BuildOptions options = {});

// What the tools say of a dictionary of the folder: messages without the folder's name in front.
struct ToolResult {
  bool done = false;
  std::string out;
  std::string log;
};
[[nodiscard]] ToolResult list_of(const Folder& folder, const std::string& name = "words.dic");
[[nodiscard]] ToolResult check_of(const Folder& folder, const std::string& name = "words.dic");
[[nodiscard]] ToolResult find_of(const Folder& folder, int key_field, const std::string& key);

// Opens a dictionary of the folder as a run does, and looks words up in it.
class Asked {
 public:
  explicit Asked(const Folder& folder, const std::string& name = "words.dic");

  // The ids of the words found, in their order, one behind each other with a blank; "status N" for a failed lookup.
  [[nodiscard]] std::string ids(int key_field, const std::string& key);
  // How many blocks had words.
  [[nodiscard]] int groups(int key_field, const std::string& key);

 private:
  Dictionary opened_;
};

// While it lives, sentences look their words up in it, by surface form and by concept word. `files` says what for: it
// is the word dictionary or the co-occurrence dictionary of the sentence.
class TestDictionary {
 public:
  explicit TestDictionary(const std::string& entries, DictionaryFiles& files = session.sentence.dictionary);
  ~TestDictionary() { files_ = {}; }
  TestDictionary(const TestDictionary&) = delete;
  TestDictionary& operator=(const TestDictionary&) = delete;

 private:
  Folder folder_;
  DictionaryFiles& files_;
  Dictionary opened_;
};

}  // namespace lexon::test
