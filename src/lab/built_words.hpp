// Dictionaries made of entry text as it stands in an editor, for programs that render while it is being written.
#pragma once

#include <string>
#include <vector>

#include "lab/overlay.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Owns a temporary folder, which goes with it. What was built is kept until one of its texts changes.
class BuiltWords {
 public:
  BuiltWords() = default;
  ~BuiltWords();
  BuiltWords(const BuiltWords&) = delete;
  BuiltWords& operator=(const BuiltWords&) = delete;

  // The path of a dictionary with all entries of these files, one behind the other; empty for no file. A file that is
  // built already is taken as it is, if it is the only one. Entries that cannot be read are left out. What was handed
  // out before stays open where it is in use, and its path is no longer of use. Throws Fault.
  [[nodiscard]] std::string dictionary_of(const std::vector<std::string>& files, const Overlay* unsaved);

 private:
  std::string folder_;
  std::string path_;
  std::vector<std::string> files_;
  std::vector<TextMark> marks_;
  int count_ = 0;
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
