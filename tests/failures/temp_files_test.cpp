// Temporary files and drafts: private, under names that nobody can guess, and gone whatever happens. No shell.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "data/platform.hpp"
#include "run/compiled_file.hpp"
#include "support/capture.hpp"
#include "support/program.hpp"

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

unsigned mode_of(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
}

class TempFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = fresh_folder("temp-files-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    setenv("TMPDIR", folder_.c_str(), 1);
    old_mask_ = umask(022);
  }
  void TearDown() override {
    umask(old_mask_);
    unsetenv("TMPDIR");
  }

  [[nodiscard]] std::string path(const std::string& name) const { return folder_ + "/" + name; }
  [[nodiscard]] long count() const { return std::distance(fs::directory_iterator(folder_), fs::directory_iterator()); }

  std::string folder_;
  mode_t old_mask_ = 0;
};

TEST_F(TempFiles, ArePrivateUnlikeEachOtherAndGo) {
  umask(0);
  {
    const TempFile first;
    const TempFile second;
    EXPECT_EQ(fs::path(first.path()).parent_path(), folder_);
    EXPECT_EQ(mode_of(first.path()), 0600U);
    EXPECT_NE(first.path(), second.path());
    EXPECT_EQ(count(), 2);
  }
  EXPECT_EQ(count(), 0);
}

TEST_F(TempFiles, MoveAndCopyWhereTheyCannotMove) {
  for (const std::string& target : {path("moved"), std::string("/dev/shm/lexon-moved-") + std::to_string(getpid())}) {
    std::optional<TempFile> file(std::in_place);
    write_file(file->path(), "content");
    EXPECT_TRUE(file->move_to(target)) << target;
    file.reset();
    EXPECT_EQ(bytes_of(target), "content");
    fs::remove(target);
  }
  EXPECT_EQ(count(), 0);
  TempFile file;
  EXPECT_FALSE(file.move_to(path("missing/file")));
}

TEST_F(TempFiles, DraftsComeIntoPlaceWholeOrNotAtAll) {
  write_file(path("file"), "old");
  for (const bool is_finished : {true, false}) {
    DraftFile draft;
    ASSERT_TRUE(draft.open_beside(path("file")));
    std::fputs("new", draft.stream());
    EXPECT_EQ(bytes_of(path("file")), is_finished ? "old" : "new");
    if (is_finished) {
      EXPECT_TRUE(draft.put_in_place(path("file")));
    } else {
      std::fputs("er", draft.stream());
      draft.discard();
    }
    EXPECT_EQ(draft.stream(), nullptr);
    EXPECT_EQ(bytes_of(path("file")), "new");
    EXPECT_EQ(mode_of(path("file")), 0644U) << "as any new file";
    EXPECT_EQ(count(), 1);
  }
  DraftFile nowhere;
  EXPECT_FALSE(nowhere.open_beside(path("missing/file")));
}

TEST_F(TempFiles, ADraftThatCannotBePutInPlaceGoes) {
  fs::create_directory(path("folder"));
  DraftFile draft;
  ASSERT_TRUE(draft.open_beside(path("folder")));
  EXPECT_FALSE(draft.put_in_place(path("folder")));
  EXPECT_EQ(count(), 1);
}

// Where the system can do without a name, a program that is killed leaves no draft.
TEST_F(TempFiles, AKilledProgramLeavesNoDraft) {
  const pid_t child = fork();
  if (child == 0) {
    DraftFile draft;
    if (!draft.open_beside(path("file"))) _exit(1);
    std::fputs("half", draft.stream());
    std::fflush(draft.stream());
    kill(getpid(), SIGKILL);
  }
  EXPECT_EQ(wait_for_program(child), 128 + SIGKILL);
  EXPECT_EQ(count(), 0);
}

// The folder of open descriptors takes no file: what stands there is written in place.
TEST_F(TempFiles, WhereNoDraftFitsACompiledFileIsWrittenInPlaceAndEmptiedOnFailure) {
  write_file(path("rules.rul"), "old");
  const int descriptor = open(path("rules.rul").c_str(), O_RDWR | O_CLOEXEC);
  const int full = open("/dev/full", O_RDWR | O_CLOEXEC);
  for (const bool is_finished : {true, false}) {
    CompiledFile file;
    file.path = "/proc/self/fd/" + std::to_string(descriptor);
    ASSERT_TRUE(compiled_file_open_write(file));
    std::fputs("new", file.stream);
    if (is_finished) {
      EXPECT_TRUE(compiled_file_finish(file));
    } else {
      compiled_file_discard(file);
    }
    EXPECT_EQ(bytes_of(path("rules.rul")), is_finished ? "new" : "");
  }
  int error = 0;
  EXPECT_EQ(file_time(path("rules.rul"), error)->seconds, 0) << "older than every text";
  CompiledFile file;
  file.path = "/proc/self/fd/" + std::to_string(full);
  ASSERT_TRUE(compiled_file_open_write(file));
  std::fputs("new", file.stream);
  EXPECT_FALSE(compiled_file_finish(file));
  close(descriptor);
  close(full);
}

// What the programs call of the system's library.
TEST(Programs, CallNoShellAndNoOtherProgram) {
  for (const char* name : {"lexon", "lexon-dict"}) {
    const ProgramResult listed = run_program("/usr/bin/nm", {"-D", "--undefined-only", program_path(name)});
    ASSERT_EQ(listed.exit_status, 0) << listed.error;
    ASSERT_NE(listed.out.find(" U mkstemp"), std::string::npos) << "is this the list of calls?\n" << listed.out;
    for (const char* call : {"system", "popen", "execl", "execle", "execlp", "execv", "execve", "execvp", "fork", "vfork", "posix_spawn", "posix_spawnp",
                             "tmpnam", "tempnam", "mktemp"}) {
      EXPECT_EQ(listed.out.find(std::string(" U ") + call + "@"), std::string::npos) << name << " calls " << call;
    }
  }
}

}  // namespace
}  // namespace lexon::test
