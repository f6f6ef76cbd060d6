#include "lab/serve_folder.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "data/platform.hpp"
#include "data/stamp.hpp"
#include "data/utf8.hpp"
#include "lab/commands.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::size_t kLongestPath = 1024;

// Of what a text holds: a file that was written anew with the same text has not changed for who edits it.
std::string stamp_of(std::string_view text) {
  ByteHash hash;
  hash.add(text.data(), text.size());
  char word[48];
  std::snprintf(word, sizeof word, "%zx-%016llx", text.size(), static_cast<unsigned long long>(hash.value()));
  return word;
}

// The names of a path, if it leads down from the folder and nowhere else.
bool names_of(const std::string& relative, std::vector<std::string>& names) {
  if (relative.empty() || relative.size() > kLongestPath || relative.find('\0') != std::string::npos) return false;
  if (relative.find('\\') != std::string::npos) return false;
  // No name may be empty, which "/" at either end would make it, nor "." or "..": these count as hidden.
  std::string_view rest = relative;
  while (true) {
    const std::size_t slash = rest.find('/');
    const std::string_view name = rest.substr(0, slash);
    if (name.empty() || name.front() == '.') return false;
    names.emplace_back(name);
    if (slash == std::string_view::npos) return true;
    rest.remove_prefix(slash + 1);
  }
}

// A descriptor that closes itself.
struct Descriptor {
  int number;  // -1: none
  explicit Descriptor(int of) : number(of) {}
  ~Descriptor() {
    if (number >= 0) close(number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
};

// As much as the file had when it was looked at; fewer bytes if it has shrunk since. None: `errno` says why.
std::optional<std::string> read_whole(int descriptor, const struct stat& status) {
  std::string text;
  text.resize(static_cast<std::size_t>(status.st_size));
  std::size_t have = 0;
  while (have < text.size()) {
    const ssize_t got = ::read(descriptor, text.data() + have, text.size() - have);
    // A signal has come by.
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    have += static_cast<std::size_t>(got);
  }
  // The file may have become shorter while it was read.
  text.resize(have);
  return text;
}

}  // namespace

Folder::Folder(const std::string& path) {
  std::error_code error;
  // cppcheck-suppress useInitializationList ; the error is wanted
  path_ = std::filesystem::canonical(path, error).string();
  if (!error) descriptor_ = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor_ < 0) {
    const int why = error ? error.value() : errno;
    throw Fault(path + ": the folder cannot be opened: " + std::strerror(why));
  }
}

Folder::~Folder() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::string Folder::relative(const std::string& file) const {
  namespace fs = std::filesystem;
  // A name that is not found from here is one of the folder.
  std::error_code error;
  // As the command line names it, from the current folder.
  const bool is_here = fs::exists(file, error);
  const fs::path whole = fs::weakly_canonical(is_here ? fs::path(file) : fs::path(path_) / file, error);
  std::string inside = error ? std::string() : whole.lexically_relative(path_).string();
  std::vector<std::string> names;
  if (!names_of(inside, names)) {
    throw Fault(file + ": lies outside of the folder " + path_ +
                ", beyond which a page may see nothing: name a folder that holds all files");
  }
  return inside;
}

// A descriptor of the folder that the file lies in, and the file's `name` there; -1: `fault` says why. It goes down name by
// name from the descriptor that the project folder was opened with, so that no link leads out of it, not even one that
// takes a folder's place while this runs.
int Folder::open_folder_of(const std::string& relative, std::string& name, FolderFault& fault) const {
  std::vector<std::string> names;
  if (!names_of(relative, names)) {
    fault.text = "\"" + relative.substr(0, 200) + "\" is no path of a file in the project folder";
    return -1;
  }
  int folder = fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
  for (std::size_t i = 0; folder >= 0 && i + 1 < names.size(); ++i) {
    // Closing must not hide why the next one could not be opened.
    const int next = openat(folder, names[i].c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    const int why = errno;
    close(folder);
    folder = next;
    errno = why;
  }
  if (folder < 0) {
    fault.is_missing = errno == ENOENT;
    const bool is_link = errno == ELOOP || errno == ENOTDIR;
    fault.text = relative + ": " +
                 (is_link ? "its folder is a symbolic link or no folder, and links are not followed: name the real path"
                          : std::strerror(errno));
  }
  name = names.back();
  return folder;
}

std::optional<FolderText> Folder::read(const std::string& relative, FolderFault& fault) const {
  std::string name;
  const Descriptor folder(open_folder_of(relative, name, fault));
  if (folder.number < 0) return std::nullopt;
  // A pipe that nobody writes to would keep the request waiting.
  const Descriptor file(openat(folder.number, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  // What is asked is asked of the open file, which nobody can exchange any more.
  struct stat status {};
  if (file.number < 0 || fstat(file.number, &status) != 0) {
    fault.is_missing = errno == ENOENT;
    fault.text =
        relative + ": " +
        (errno == ELOOP ? "is a symbolic link, and links are not followed: name the real file" : std::strerror(errno));
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) {
    fault.text = relative + ": is no regular file";
    return std::nullopt;
  }
  // In front of reading: the size is that of the open file.
  if (static_cast<std::uintmax_t>(status.st_size) > kMostBytes) {
    fault.text = relative + ": is larger than " + std::to_string(kMostBytes >> 20) +
                 " MiB, which is too much for a page: use an editor and the other commands";
    return std::nullopt;
  }
  std::optional<std::string> text = read_whole(file.number, status);
  if (!text) {
    fault.text = relative + ": cannot be read to its end: " + std::strerror(errno);
    return std::nullopt;
  }
  std::string stamp = stamp_of(*text);
  return FolderText{std::move(*text), std::move(stamp)};
}

std::optional<std::string> Folder::save(const std::string& relative, std::string_view text, const std::string& stamp,
                                        FolderFault& fault, bool& is_changed) {
  is_changed = false;
  std::string name;
  const Descriptor folder(open_folder_of(relative, name, fault));
  if (folder.number < 0) return std::nullopt;
  const std::optional<FolderText> now = read(relative, fault);
  // A file that cannot be read cannot be compared, and is not overwritten.
  if (!now && !fault.is_missing) return std::nullopt;
  // An empty stamp stands for no file, so that one that has come meanwhile is not overwritten either.
  if ((now ? now->stamp : std::string()) != stamp) {
    is_changed = true;
    fault.text = relative + (now ? ": has changed on the disk since it was read here"
                                 : ": is no longer there: it was removed or renamed since it was read here");
    return std::nullopt;
  }
  // A new file can stand in the place of one that is write-protected, which nobody wants.
  if (now && faccessat(folder.number, name.c_str(), W_OK, 0) != 0) {
    fault.text = relative + ": is write-protected, so nothing was saved: " + std::strerror(errno);
    return std::nullopt;
  }
  struct stat status {};
  const bool has_mode = now && fstatat(folder.number, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  // By way of the descriptor: no link can be put in the way.
  const std::string target = "/proc/self/fd/" + std::to_string(folder.number) + '/' + name;
  DraftFile draft;
  errno = 0;
  if (draft.open_beside(target)) {
    std::fwrite(text.data(), 1, text.size(), draft.stream());
    // The mode comes first: nobody may read the new file who could not read the old one.
    const bool keeps_mode = !has_mode || fchmod(fileno(draft.stream()), status.st_mode & 07777) == 0;
    // Where the owner cannot be kept, it is that of who saves.
    if (has_mode) static_cast<void>(!fchown(fileno(draft.stream()), status.st_uid, status.st_gid));
    if (keeps_mode && draft.sync() && draft.put_in_place(target)) {
      folder_sync(target);
      return stamp_of(text);
    }
  }
  fault.text = relative + ": cannot be saved: " + std::strerror(errno) + "; what stands on the disk is as before";
  return std::nullopt;
}

bool is_path_inside(const std::string& relative) {
  std::vector<std::string> names;
  return names_of(relative, names);
}

std::int64_t line_that_is_no_text(std::string_view text) {
  std::int64_t line = 1;
  for (; !text.empty();) {
    const Utf8Character character = utf8_first(text);
    // A NUL is valid UTF-8, and no text.
    if (!character.is_valid || character.code == 0) return line;
    if (character.code == '\n') ++line;
    text.remove_prefix(character.length);
  }
  return 0;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
