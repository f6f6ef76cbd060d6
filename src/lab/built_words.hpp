// Dictionaries made of entry text as it stands in an editor, for programs that render while it is being written.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "lab/overlay.hpp"
#include "lab/temporary_folder.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Owns the files that it makes, which go with it. What was built is kept until one of its texts changes.
class BuiltWords {
 public:
  // The path of a dictionary with all entries of these files, one behind the other; empty for no file. A file that is
  // built already is taken as it is, if it is the only one. Entries that cannot be read are left out. What was handed
  // out before stays open where it is in use, and its path is no longer of use. Throws Fault.
  [[nodiscard]] std::string dictionary_of(const std::vector<std::string>& files, const Overlay* unsaved);

 private:
  std::unique_ptr<TemporaryFolder> folder_;  // null until something is built
  std::string path_;                         // of the last one
  std::vector<std::string> files_;           // that it was built of; none if that failed
  std::vector<TextMark> marks_;              // of these, as they were
  int count_ = 0;                            // of what was built
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
