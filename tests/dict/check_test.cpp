// Damaged dictionaries: what a check says of them, and that nothing done with them fails worse than with a message.

#include "dict/dictionary.hpp"
#include "support/built_dictionary.hpp"
#include "support/capture.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

// Three records, each in a block of its own, so that places can be counted by hand:
//   words.dic  slot 1 at 3, slot 3 at 47; records at 4099 ([a] "x"), 8195 ([b] "x"), 12291 ([c] "y");
//              key block at 16384 with entries at 16387 (x: 2), 16392 (x: 3), 16397 (y: 4)
//   words.idx  block 1 with entries at 15 (a: 2), 20 (b: 3), 25 (c: 4); block 2 with an entry at 1039 (x: 5)
std::string three_entries() {
  const std::string gloss(3000, 'g');
  return "[a]{1} " + gloss + " \"x\" (N);\n[b]{2} " + gloss + " \"x\" (N);\n[c]{3} " + gloss + " \"y\" (N);\n";
}

struct Patch {
  const char* file;
  std::streamoff offset;
  std::string bytes;
};

Patch dic(std::streamoff offset, std::string bytes) {
  return {"words.dic", offset, std::move(bytes)};
}
Patch idx(std::streamoff offset, std::string bytes) {
  return {"words.idx", offset, std::move(bytes)};
}
std::string u16(int value) {
  return {static_cast<char>(value / 256), static_cast<char>(value % 256)};
}

struct Damage {
  const char* name;
  std::vector<Patch> patches;
  const char* message;  // begins the report
};

// Where the concept word of the first record stands.
constexpr std::streamoff kFirstCw = 7108;

const Damage kDamages[] = {
    {"BlockType", {dic(8194, "\7")}, "words.dic: offset 8194: a block of type 7\n"},
    {"UsedLengthTooLarge", {dic(12288, u16(4095))}, "words.dic: offset 12288: a used length of 4095\n"},
    {"UsedLengthTooSmall", {dic(12288, u16(2))}, "words.dic: offset 12288: a used length of 2\n"},
    {"UsedLengthWithinARecord", {dic(12288, u16(100))}, "words.dic: offset 12291: a record that reaches behind the used part of its block\n"},
    {"RecordSize", {dic(4099, u16(1))}, "words.dic: offset 4099: a record that reaches behind"},
    {"FieldLength", {dic(4104, u16(4000))}, "words.dic: offset 4099: a record with a field that reaches behind its end\n"},
    {"LinkToNoBlock", {dic(8190, u16(9))}, "words.dic: offset 8190: a link to block 9, which is no such block\n"},
    {"LinkToAnotherType", {dic(8190, u16(5))}, "words.dic: offset 8190: a link to block 5, which is no such block\n"},
    {"LinkToItself", {dic(8190, u16(2))}, "words.dic: offset 8190: links that run in a circle\n"},
    {"LinksInACircle", {dic(8190, u16(3)), dic(12286, u16(4)), dic(16382, u16(2))}, "words.dic: offset 8190: links that run in a circle\n"},
    {"TwoLinksToOneBlock", {dic(8190, u16(4)), dic(12286, u16(4))}, "words.dic: offset 12286: a second link to block 4\n"},
    {"KeyLength", {dic(16387, u16(500))}, "words.dic: offset 16387: an entry that reaches behind"},
    {"KeyOrder", {dic(16399, "a")}, "words.dic: offset 16397: a key that is lower than the one before it\n"},
    {"KeyToNoRecords", {dic(16390, u16(5))}, "words.dic: offset 16387: an entry that leads to no block of records\n"},
    {"KeyToOtherRecords", {dic(16390, u16(4))}, "words.dic: offset 4099: by cw \"x\": 1 records are found, and 2 are there\n"},
    {"KeyTwiceToOneBlock", {dic(16395, u16(2))}, "words.dic: offset 4099: by cw \"x\": other records are found than are there\n"},
    {"KeyThatNoRecordHas", {dic(16399, "z")}, "words.dic: offset 12291: by cw \"y\": 0 records are found, and 1 are"},
    {"RecordWithAnotherKey",
     {dic(kFirstCw, "z")},
     "words.dic: offset 8195: by cw \"x\": an entry leads to no record\n"
     "words.dic: offset 4099: by cw \"z\": 0 records are found, and 1 are there\n"},
    {"RecordWithAnotherSurfaceForm", {dic(4103, "A")}, "words.idx: offset 15: an entry whose key is not the lowest of block 2\n"},
    {"NulInAKey", {dic(kFirstCw, std::string(1, '\0'))}, "words.dic: offset 4099: by cw \"?\": a NUL character is in the key\n"},
    {"EmptyIndexBlock", {idx(0, u16(15))}, "words.dic: offset 3: a tree that leads nowhere\n"},
    {"IndexUsedLength", {idx(0, u16(1023))}, "words.idx: offset 0: a used length of 1023\n"},
    {"IndexKeyLength", {idx(20, u16(900))}, "words.idx: offset 20: an entry that reaches behind"},
    {"IndexKeyOrder", {idx(22, "A")}, "words.idx: offset 20: a key that is lower than the one before it\n"},
    {"IndexKey", {idx(22, "aa"), idx(23, u16(3))}, "words.idx: offset 20: an entry whose key is not the lowest of block 3\n"},
    {"IndexToNoBlock", {idx(23, u16(99))}, "words.idx: offset 20: an entry that leads to no block of the level below\n"},
    {"IndexToKeyBlock", {idx(23, u16(5))}, "words.idx: offset 20: an entry that leads to no block of the level below\n"},
    {"IndexToOneBlockTwice",
     {idx(28, u16(3))},
     "words.idx: offset 25: an entry whose key is not the lowest of block 3\n"
     "words.dic: offset 12288: a block that no tree leads to\n"},
    {"IndexLinkToItself", {idx(1022, u16(1))}, "words.idx: offset 1022: links that run in a circle\n"},
    {"IndexLinkToNoBlock", {idx(1022, u16(7))}, "words.idx: offset 1022: a link to block 7, which is no such block\n"},
    {"RootNumber", {dic(19, u16(3))}, "words.dic: offset 3: a slot without a tree\n"},
    {"RootOfAnotherTree", {dic(19, u16(2))}, "words.idx: offset 1039: an entry that leads to no block of the level below\n"},
    {"TooManyLevels", {dic(16, "\2")}, "words.idx: offset 15: an entry whose key is not the lowest of block 2\n"},
    {"NoLevels", {dic(16, std::string(1, '\0'))}, "words.dic: offset 3: not a dictionary: its first slot"},
    {"TooFewLevelsForConceptWords", {dic(60, "\1")}, "words.dic: offset 47: a slot without a tree\n"},
    {"NoConceptWords", {dic(47, std::string(1, '\0'))}, "words.dic: offset 47: no index of concept words\n"},
    {"IndexOfAttributes", {dic(69, "words.idx")}, "words.dic: offset 69: an index of a field that is no key\n"},
    {"NameOfTheIndex", {dic(3, "W")}, "words.dic: its index Words.idx cannot be opened: No such file"},
    {"AnotherFormat", {dic(0, std::string(4096, '\0'))}, "words.dic: offset 3: not a dictionary: its first slot"},
};

void apply(const Folder& folder, const Patch& patch) {
  std::fstream file(folder.path(patch.file), std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(patch.offset);
  file << patch.bytes;
  // Without a stamp it is the places that are reported, and not that the file has changed.
  std::filesystem::remove(folder.path("words.idx.stamp"));
}

TEST(Check, ReportsEveryDamageWithItsPlace) {
  const Folder folder;
  for (const Damage& damage : kDamages) {
    ASSERT_TRUE(build_text(folder, three_entries(), "words.dic", {.force = true}).done);
    ASSERT_TRUE(check_of(folder).done) << "the places in the table";
    for (const Patch& patch : damage.patches) apply(folder, patch);
    const ToolResult check = check_of(folder);
    EXPECT_FALSE(check.done) << damage.name;
    EXPECT_EQ(check.log.find(damage.message), 0U) << damage.name << "\n" << check.log;
    // The other tools must only survive.
    (void)list_of(folder);
    (void)find_of(folder, kKeyCw, "x");
    (void)find_of(folder, kKeyHw, "b");
  }
}

TEST(Check, ChainsOfSeveralBlocksAreSound) {
  const Folder folder;
  ASSERT_TRUE(build_text(folder, three_entries()).done);
  // The second data block is linked to the first and has no entries of its own.
  const Patch patches[] = {dic(8190, u16(3)), idx(20, u16(1) + "c" + u16(4)), idx(0, u16(25)), dic(16392, u16(1) + "y" + u16(4)), dic(16384, u16(13))};
  for (const Patch& patch : patches) apply(folder, patch);
  EXPECT_TRUE(check_of(folder).done) << check_of(folder).log;
  Asked asked(folder);
  EXPECT_EQ(asked.ids(kKeyHw, "b"), "2");
  EXPECT_EQ(asked.ids(kKeyCw, "x"), "1 2");
}

TEST(Check, ReportsFilesThatAreCut) {
  const std::tuple<const char*, std::uintmax_t, const char*> rows[] = {
      {"words.dic", 0, "words.dic: offset 0: not a dictionary: the file is shorter than its header\n"},
      {"words.dic", 4095, "words.dic: offset 0: not a dictionary: the file is shorter than its header\n"},
      {"words.dic", 4096, "words.idx: offset 15: an entry that leads to no block of the level below\n"},
      {"words.dic", 16384 + 4095, "words.dic: offset 16384: the file ends within a block\n"},
      {"words.idx", 2047, "words.idx: offset 1024: the file ends within a block\n"},
      {"words.idx", 0, "words.dic: offset 3: a slot without a tree\n"},
  };
  for (const auto& [file, size, message] : rows) {
    const Folder folder;
    ASSERT_TRUE(build_text(folder, three_entries()).done);
    std::filesystem::resize_file(folder.path(file), size);
    std::filesystem::remove(folder.path("words.idx.stamp"));
    const ToolResult check = check_of(folder);
    EXPECT_FALSE(check.done) << file << size;
    EXPECT_EQ(check.log.find(message), 0U) << file << size << "\n" << check.log;
  }
}

TEST(Check, ReportsFilesThatAreNotThere) {
  const Folder folder;
  ASSERT_TRUE(build_text(folder, three_entries()).done);
  std::filesystem::create_directory(folder.path("folder"));
  EXPECT_EQ(check_of(folder, "none.dic").log, "none.dic: cannot be opened: No such file or directory\n");
  EXPECT_EQ(check_of(folder, "folder").log, "folder: cannot be opened: Is a directory\n");
  std::filesystem::remove(folder.path("words.idx"));
  EXPECT_EQ(check_of(folder).log, "words.dic: its index words.idx cannot be opened: No such file or directory\n");
}

TEST(Check, ALongReportIsCut) {
  const Folder folder;
  std::string text;
  for (int i = 0; i < 150; ++i) text += "[" + std::to_string(1000 + i) + "]{} " + std::string(3000, 'g') + " \"x\" (N);\n";
  ASSERT_TRUE(build_text(folder, text).done);
  for (int i = 0; i < 150; ++i) apply(folder, dic(4096 * (i + 1) + 2, "\7"));
  const std::string log = check_of(folder).log;
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 101);
  EXPECT_TRUE(log.ends_with("more damage is only counted\n"));
}

TEST(Check, AKeyOfTooManyRecordsIsNoDamage) {
  std::string text;
  for (int i = 0; i < 13000; ++i) text += "[" + std::to_string(i) + "]{} " + std::string(1000, 'g') + " \"x\" (N);\n";
  const Folder folder;
  ASSERT_TRUE(build_text(folder, text).done);
  const ToolResult check = check_of(folder);
  EXPECT_TRUE(check.done);
  EXPECT_EQ(check.log, "words.dic: note: by cw \"x\" there are 13000 records, more than a sentence can hold\n");
}

TEST(List, WritesWhatIsSoundOfADamagedDictionary) {
  const std::tuple<Patch, std::size_t, const char*> rows[] = {
      {dic(8194, "\7"), 2, "words.dic: offset 8192: neither records nor keys\n"},
      {dic(8195, u16(1)), 2, "words.dic: offset 8195: a damaged record\n"},
      {dic(8199, "\n"), 2, "words.dic: offset 8195: a record without a text form\n"},
  };
  for (const auto& [patch, lines, log] : rows) {
    const Folder folder;
    ASSERT_TRUE(build_text(folder, three_entries()).done);
    apply(folder, patch);
    const ToolResult list = list_of(folder);
    EXPECT_FALSE(list.done);
    EXPECT_EQ(std::count(list.out.begin(), list.out.end(), '\n'), static_cast<std::ptrdiff_t>(lines));
    EXPECT_EQ(list.log, log);
  }
}

}  // namespace
}  // namespace lexon::test
