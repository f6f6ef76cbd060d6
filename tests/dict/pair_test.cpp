// The two files of a dictionary belong to each other: what a broken-off build leaves, which pairs are refused, and
// which index a build replaces.

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "dict/pair_stamp.hpp"
#include "support/built_dictionary.hpp"
#include "support/capture.hpp"
#include "support/test.hpp"

namespace {

// The rename, counted down to, that fails or kills the program; 0: none does.
int rename_to_come = 0;
bool rename_kills = false;

}  // namespace

extern "C" {
int __real_rename(const char* from, const char* to);
int __wrap_rename(const char* from, const char* to) {
  if (rename_to_come == 0 || --rename_to_come != 0) return __real_rename(from, to);
  if (rename_kills) _exit(9);
  errno = EIO;
  return -1;
}
}

namespace lexon::test {
namespace {

namespace fs = std::filesystem;

std::string entries_of(const std::string& id, std::size_t gloss = 0) {
  return "[a]{" + id + "} " + std::string(gloss, 'g') + " \"c\" (N);\n";
}

// The id of the one word, or why the pair is refused, without the name of the folder.
std::string opened(const Folder& folder, PairCheck check, const std::string& name = "words.dic") {
  Dictionary dictionary;
  if (!dictionary_open(folder.path(name), check, dictionary)) {
    return "refused: " + dictionary.fault.substr(folder.path("").size(), 9);
  }
  return Asked(folder, name).ids(kKeyHw, "a");
}

TEST(Pair, ABrokenOffBuildLeavesTheOldPairTheNewOneOrWhatIsRefused) {
  struct Row {
    int rename;  // 1 and 4: the stamps, 2: the index, 3: the dictionary
    const char* left;
  };
  for (const Row& row : {Row{1, "old"}, Row{2, "old"}, Row{3, "refused: words.dic"}, Row{4, "new"}}) {
    for (const bool kills : {true, false}) {
      for (const bool has_old_stamp : {true, false}) {
        const Folder folder;
        ASSERT_TRUE(build_text(folder, entries_of("old")).done);
        if (!has_old_stamp) fs::remove(folder.path("words.idx.stamp"));
        rename_kills = kills;
        // The surface form is another one too, so that the indexes differ.
        const std::string text = "[0]{x} \"c\" (N);\n" + entries_of("new", 5000 / 2);
        if (kills) {
          const pid_t child = fork();
          if (child == 0) {
            rename_to_come = row.rename;
            (void)build_text(folder, text);
            _exit(0);
          }
          int status = 0;
          ASSERT_EQ(waitpid(child, &status, 0), child);
          ASSERT_EQ(WEXITSTATUS(status), 9);
        } else {
          rename_to_come = row.rename;
          EXPECT_EQ(build_text(folder, text).done, row.rename == 4);
          ASSERT_EQ(rename_to_come, 0);
        }
        for (const PairCheck check : {PairCheck::quick, PairCheck::whole}) {
          EXPECT_EQ(opened(folder, check), row.left) << row.rename << kills << has_old_stamp;
        }
        EXPECT_TRUE(build_text(folder, text).done) << "and is built again without being asked twice";
        EXPECT_EQ(opened(folder, PairCheck::whole), "new");
      }
    }
  }
}

TEST(Pair, WhatIsNotOfOneBuildIsRefused) {
  struct Row {
    const char* what;
    const char* command;  // in the folder; "other" holds another pair of the same sizes
    const char* quick;
    const char* whole;
  };
  const Row rows[] = {
      {"nothing", "true", "1", "1"},
      {"no stamp", "rm words.idx.stamp", "1", "1"},
      {"the dictionary of another build", "cp other/words.dic .", "refused: words.dic", "refused: words.dic"},
      {"the index of another build", "cp other/words.idx .", "refused: words.idx", "refused: words.idx"},
      {"all of another build", "cp other/words.* .", "2", "2"},
      {"a dictionary under another name", "mv words.dic other.dic && mv other.dic words.dic", "1", "1"},
      {"copies with other dates", "touch -d 2001-01-01 words.dic words.idx", "1", "1"},
      {"a bit in the middle", "printf x | dd of=words.dic bs=1 seek=100000 conv=notrunc 2>/dev/null", "1", "refused: words.dic"},
      {"a bit at the end", "printf x | dd of=words.idx bs=1 seek=2000 conv=notrunc 2>/dev/null", "refused: words.idx", "refused: words.idx"},
      {"a dictionary that is cut", "truncate -s -4096 words.dic", "refused: words.dic", "refused: words.dic"},
      {"an empty stamp", ": >words.idx.stamp", "refused: words.idx", "refused: words.idx"},
      {"a stamp of nothing", "echo 'lexon stamp 1' >words.idx.stamp", "refused: words.dic", "refused: words.dic"},
  };
  const auto text = [](const std::string& id, const std::string& key) {
    std::string all = "[" + key + "]{0} \"c\" (N);\n" + entries_of(id);
    for (int i = 100; i < 180; ++i) all += "[b" + std::to_string(i) + "]{} " + std::string(3000, 'g') + " \"c\" (N);\n";
    return all;
  };
  for (const Row& row : rows) {
    const Folder folder;
    ASSERT_TRUE(build_text(folder, text("2", "B")).done);
    const std::string go = "cd '" + folder.path("") + "' && ";
    ASSERT_EQ(std::system((go + "mkdir other && mv words.* other").c_str()), 0);
    ASSERT_TRUE(build_text(folder, text("1", "A")).done);
    ASSERT_EQ(std::system((go + row.command).c_str()), 0) << row.what;
    EXPECT_EQ(opened(folder, PairCheck::quick), row.quick) << row.what;
    EXPECT_EQ(opened(folder, PairCheck::whole), row.whole) << row.what;
    const bool is_whole = std::string(row.whole).size() == 1;
    const ToolResult check = check_of(folder);
    EXPECT_EQ(check.done, is_whole) << row.what << "\n" << check.log;
  }
}

TEST(Pair, ABuildReplacesItsOwnIndexAlone) {
  struct Row {
    const char* what;
    const char* before;  // built before; empty: nothing
    const char* command;
    const char* name;
    const char* refused;  // begins the message; empty: it is built
  };
  const Row rows[] = {
      {"nothing there", "", "true", "a.dic", ""},
      {"its own", "a.dic", "true", "a.dic", ""},
      {"its own without a stamp", "a.dic", "rm a.idx.stamp", "a.dic", ""},
      {"its own, damaged", "a.dic", ": >a.idx", "a.dic", ""},
      {"its own, without the dictionary", "a.dic", "rm a.dic", "a.dic", ""},
      {"its own, under a new name", "a.dic", "mv a.dic a.dict", "a.dict", ""},
      {"a foreign file", "", "echo text >a.idx", "a.dic", "a.idx: is there and is not the index of"},
      {"a foreign file, and no dictionary", "", "echo text >a.idx; echo x >a.dic", "a.dic", "a.idx: is there and"},
      {"of another extension", "a.dic", "true", "a.dict", "a.idx: is the index of a.dic; "},
      {"the same without a stamp", "a.dic", "rm a.idx.stamp", "a.dict", "a.idx: is there and is not the index of"},
      {"a dot that becomes a line", "x.y.dic", "true", "x_y.dic", "x_y.idx: is the index of x.y.dic; "},
      {"a line that was a dot", "x_y.dic", "true", "x.y.dic", "x_y.idx: is the index of x_y.dic; "},
      {"a foreign stamp", "", "echo text >a.idx.stamp", "a.dic", "a.idx.stamp: is not the stamp of an index; "},
      {"a link to a foreign file", "", "echo text >b; ln -s b a.idx", "a.dic", "a.idx: is there and is not"},
  };
  for (const Row& row : rows) {
    const Folder folder;
    const bool is_built = *row.before == '\0' || build_text(folder, entries_of("1"), row.before).done;
    ASSERT_TRUE(is_built) << row.what;
    ASSERT_EQ(std::system(("cd '" + folder.path("") + "' && " + row.command).c_str()), 0) << row.what;
    const BuildResult built = build_text(folder, entries_of("2"), row.name);
    EXPECT_EQ(built.done, *row.refused == '\0') << row.what << "\n" << built.log;
    EXPECT_EQ(built.log.find(row.refused), 0U) << row.what << "\n" << built.log;
    EXPECT_TRUE(build_text(folder, entries_of("2"), row.name, {.force = true}).done) << row.what;
    EXPECT_EQ(opened(folder, PairCheck::whole, row.name), "2") << row.what;
  }
}

}  // namespace
}  // namespace lexon::test
