#include "lab/built_words.hpp"

#include <algorithm>
#include <filesystem>
#include <memory>

#include "data/session.hpp"
#include "dicttool/build.hpp"
#include "lab/commands.hpp"
#include "lab/text_file.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace fs = std::filesystem;

std::string BuiltWords::dictionary_of(const std::vector<std::string>& files, const Overlay* unsaved) {
  if (files.empty()) return {};
  std::vector<TextMark> marks;
  marks.reserve(files.size());
  for (const std::string& file : files) marks.push_back(text_mark(file, unsaved));
  // Neither files nor unsaved texts have changed.
  if (files == files_ && marks == marks_) return path_;
  std::string all;
  // The texts one behind the other, each of which ends its last line.
  for (const std::string& file : files) {
    std::string text = text_file_read(file, unsaved);
    // The mark of UTF-8 is passed over at the beginning of a text alone, and this one may come behind another.
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    // The header of a built dictionary holds NULs.
    constexpr std::size_t kHead = 4096;
    if (std::string_view(text).substr(0, kHead).find('\0') != std::string_view::npos) {
      if (files.size() > 1) throw Fault(file + ": is built already: name it alone, or name the entries as text");
      return file;
    }
    all += text;
    if (!all.empty() && all.back() != '\n') all += '\n';
  }
  // At the first build; it goes with this object.
  if (folder_ == nullptr) folder_ = std::make_unique<TemporaryFolder>();
  // A dictionary that is open must not change, so each build has a name of its own.
  std::error_code error;
  if (!path_.empty()) {
    for (const char* extension : {".dic", ".idx", ".idx.stamp"}) {
      fs::remove(fs::path(path_).replace_extension(extension), error);
    }
  }
  const std::string text_path = folder_->path() + "/entries.txt";
  text_file_write(text_path, all);
  path_ = folder_->path() + '/' + 'w' + std::to_string(++count_) + ".dic";
  const auto session = std::make_unique<Session>();
  BuildFigures figures;
  // What is wrong with entries is for `check` to say.
  const File log = unnamed_file();
  if (log == nullptr ||
      !dictionary_build(*session, {.entries = text_path, .dictionary = path_, .skip_bad = true}, log.get(), figures)) {
    files_.clear();
    throw Fault(files.front() + ": no dictionary can be made of the entries: lexon-dict build tells why");
  }
  fs::remove(text_path, error);
  files_ = files;
  marks_ = std::move(marks);
  return path_;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
