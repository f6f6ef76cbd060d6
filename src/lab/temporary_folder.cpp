#include "lab/temporary_folder.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string_view>

#include "lab/commands.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

namespace fs = std::filesystem;

// Such a name nobody else gives a folder: one that was left is removed with all that is in it.
constexpr std::string_view kName = "lexon-lab-temporary-";
constexpr std::string_view kMade = "XXXXXX";  // what mkdtemp makes unique
// Between a folder's making and its lock another program could take it for one that was left.
constexpr time_t kSecondsTillLocked = 60;

// The folder's descriptor with its lock; -1: it is no folder, or another program has it.
int locked(const fs::path& folder) {
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0 || flock(descriptor, LOCK_EX | LOCK_NB) == 0) return descriptor;
  close(descriptor);
  return -1;
}

// Folders of this user's programs that were killed.
void left_ones_remove(const fs::path& place) {
  std::error_code error;
  for (fs::directory_iterator each(place, error), end; !error && each != end; each.increment(error)) {
    const std::string name = each->path().filename().string();
    if (!name.starts_with(kName) || name.size() != kName.size() + kMade.size()) continue;
    const int lock = locked(each->path());
    if (lock < 0) continue;
    struct stat status {};
    const bool is_left = fstat(lock, &status) == 0 && status.st_uid == geteuid() &&
                         std::time(nullptr) - status.st_mtim.tv_sec > kSecondsTillLocked;
    std::error_code ignored;
    if (is_left) fs::remove_all(each->path(), ignored);
    close(lock);
  }
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  std::error_code error;
  const fs::path place = fs::temp_directory_path(error);
  if (error) throw Fault("there is no folder for temporary files (TMPDIR): " + error.message());
  left_ones_remove(place);
  std::string name = (place / kName).string() + std::string(kMade);
  if (::mkdtemp(name.data()) == nullptr) {
    throw Fault(place.string() + ": no temporary folder can be made here: " + std::strerror(errno) +
                "; name another place by TMPDIR");
  }
  path_ = name;
  lock_ = locked(path_);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code error;
  fs::remove_all(path_, error);
  if (lock_ >= 0) close(lock_);
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
