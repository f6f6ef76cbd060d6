#include "lab/overlay.hpp"

#include <filesystem>
#include <utility>

#include <sys/stat.h>

namespace lexon {
inline namespace v1 {
namespace lab {

namespace fs = std::filesystem;

std::string file_key(const std::string& path) {
  std::error_code error;
  // A file that is still to be written has a name too.
  const fs::path whole = fs::weakly_canonical(fs::absolute(path, error), error);
  return error || whole.empty() ? path : whole.string();
}

void Overlay::put(const std::string& path, std::string text) {
  texts_[file_key(path)] = std::make_shared<const std::string>(std::move(text));
}

void Overlay::drop(const std::string& path) {
  texts_.erase(file_key(path));
}

std::shared_ptr<const std::string> Overlay::find(const std::string& path) const {
  // Before the key is made, which asks the file system.
  if (texts_.empty()) return nullptr;
  const auto found = texts_.find(file_key(path));
  return found == texts_.end() ? nullptr : found->second;
}

// No lookup at all where there is nothing to find, so that files are read without asking.
TextLookup Overlay::lookup() const {
  if (texts_.empty()) return {};
  return [this](const std::string& path) { return find(path).get(); };
}

TextMark text_mark(const std::string& path, const Overlay* unsaved) {
  TextMark mark;
  if (unsaved != nullptr) mark.unsaved = unsaved->find(path);
  // What is not there has the mark of an empty TextMark, and so is noticed when it comes.
  struct stat state {};
  if (mark.unsaved != nullptr || ::stat(path.c_str(), &state) != 0) return mark;
  constexpr std::int64_t kSecond = 1'000'000'000;
  mark.size = state.st_size;
  mark.time = state.st_mtim.tv_sec * kSecond + state.st_mtim.tv_nsec;
  mark.number = state.st_ino;
  return mark;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
