// A folder for files that go with the program.
#pragma once

#include <string>

namespace lexon {
inline namespace v1 {
namespace lab {

// A folder in the system's temporary place that this user alone can enter. It is removed with all that is in it when its
// owner ends; that of a program that was killed is removed when the next one is made.
class TemporaryFolder {
 public:
  // Throws Fault if none can be made.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
  int lock_ =
      -1;  // a descriptor of the folder with a lock, which the system ends with the program: who gets it is alone
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
