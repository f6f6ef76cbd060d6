#include "data/stamp.hpp"

#include "support/folder.hpp"

#include <sys/stat.h>

namespace lexon::test {
namespace {

TEST(Stamp, TheHashIsTheKnownOne) {
  struct Row {
    std::string bytes;
    std::uint64_t hash;  // published values of FNV-1a; the last one is worked out by its definition
  };
  const std::string runs = "ab" + std::string(13, '\0') + std::string(21, '\xFF') + "cdefg" + std::string(4, '\0') + "hi";
  for (const Row& row : {Row{"", 0xcbf29ce484222325}, Row{"a", 0xaf63dc4c8601ec8c}, Row{"foobar", 0x85944171f73967e8}, Row{runs, 0x017a9abb20520b27}}) {
    ByteHash hash;
    hash.add(row.bytes.data(), row.bytes.size());
    EXPECT_EQ(hash.value(), row.hash) << row.bytes;
    ByteHash by_bytes;
    for (const char c : row.bytes) by_bytes.add(&c, 1);
    EXPECT_EQ(by_bytes.value(), row.hash) << row.bytes;
  }
}

TEST(Stamp, ComesBackAsItWasWritten) {
  const Folder folder;
  const std::string path = folder.path("pair.stamp");
  std::FILE* file = std::fopen(folder.write("file", std::string(70000, 'x')).c_str(), "rb");
  const std::optional<FileMark> mark = file_mark(file);
  std::fclose(file);
  ASSERT_TRUE(mark.has_value());
  EXPECT_EQ(mark->size, 70000);
  Stamp stamp;
  stamp.put("name", std::string_view("old"));
  stamp.put("file", *mark);
  stamp.put("count", std::int64_t{-7});
  stamp.put("name", std::string_view("50%\n=\0\r.dic", 11));
  ASSERT_TRUE(stamp_write(path, stamp, true));
  Stamp read;
  ASSERT_EQ(stamp_read(path, read), StampState::whole);
  EXPECT_EQ(read, stamp);
  EXPECT_EQ(read.mark("file"), mark);
  EXPECT_EQ(read.number("count"), -7);
  EXPECT_EQ(read.mark("count"), std::nullopt);
  EXPECT_EQ(read.number("none"), std::nullopt);
}

TEST(Stamp, WhatIsNoStampIsToldApart) {
  const Folder folder;
  struct Row {
    const char* what;
    std::string content;
    StampState state;
  };
  const Row rows[] = {
      {"no lines", "lexon stamp 1\n", StampState::whole},
      {"empty", "", StampState::damaged},
      {"another file", "name=x\n", StampState::damaged},
      {"cut within a line", "lexon stamp 1\nname=x", StampState::damaged},
      {"no value", "lexon stamp 1\nname\n", StampState::damaged},
      {"a key twice", "lexon stamp 1\na=1\na=2\n", StampState::damaged},
      {"an escape cut short", "lexon stamp 1\na=%0\n", StampState::damaged},
      {"endless", "lexon stamp 1\na=" + std::string(100000, 'x') + "\n", StampState::damaged},
  };
  Stamp stamp;
  for (const Row& row : rows) EXPECT_EQ(stamp_read(folder.write("s", row.content), stamp), row.state) << row.what;
  EXPECT_EQ(stamp_read(folder.path("none"), stamp), StampState::missing);
  const std::string fifo = folder.path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(stamp_read(fifo, stamp), StampState::damaged) << "and does not wait";
}

}  // namespace
}  // namespace lexon::test
