// Temporary files and drafts: private, under names that nobody can guess, and gone whatever happens. No shell.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "data/platform.hpp"
#include "support/capture.hpp"
#include "support/program.hpp"
#include "support/test.hpp"

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

TEST_F(TempFiles, UnnamedOnesHoldWhatIsWrittenAndLeaveNothing) {
  const File file = unnamed_file();
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(count(), 0);
  EXPECT_EQ(std::fputs("content", file.get()), 1);
  std::rewind(file.get());
  EXPECT_EQ(std::fgetc(file.get()), 'c');
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

// What the programs call of the system's library.
TEST(Programs, CallNoShellAndNoOtherProgram) {
  for (const char* name : {"lexon", "lexon-dict"}) {
    const ProgramResult listed = run_program("/usr/bin/nm", {"-D", "--undefined-only", program_path(name)});
    ASSERT_EQ(listed.exit_status, 0) << listed.error;
    ASSERT_NE(listed.out.find(" U fdopen"), std::string::npos) << "is this the list of calls?\n" << listed.out;
    for (const char* call : {"system", "popen", "execl", "execle", "execlp", "execv", "execve", "execvp", "fork", "vfork", "posix_spawn", "posix_spawnp",
                             "tmpnam", "tempnam", "mktemp"}) {
      EXPECT_EQ(listed.out.find(std::string(" U ") + call + "@"), std::string::npos) << name << " calls " << call;
    }
  }
}

}  // namespace
}  // namespace lexon::test
