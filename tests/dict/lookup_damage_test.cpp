// Lookups in damaged dictionaries, and lookups that are stopped.

#include <gtest/gtest.h>

#include <string>

#include "dict/dict_bytes.hpp"
#include "support/session.hpp"

namespace lexon::test {
namespace {

struct DamageRow {
  const char* what;
  std::string dictionary;
  std::string index;
  int field;
  const char* key;
  const char* result;
};

TEST(Lookup, DamagedFilesEndALookupCleanly) {
  const std::string head = header_of(1, 1, 2, 2);
  const std::string full = head + kWords + kCwKeys;
  const std::string tree = index_block(entry("a", 2)) + index_block(entry("u", 3));
  const auto words = [&head](const std::string& blocks) { return head + blocks; };
  const std::string two = record("a", "u") + record("b", "u");
  const std::string huge = u16(60000) + text("b") + text("") + text("u");
  const std::string bad_field = sized(text("b") + text("") + u16(500) + "u");
  const std::string bad_end = sized(text("b") + text("") + text("u") + u16(9) + u16(8) + "12345678");
  const DamageRow rows[] = {
      {"no index", full, "", kKeyHw, "a", "22"},
      {"truncated index block", full, kFlatIndex.substr(0, 1023), kKeyHw, "a", "22"},
      {"index block of a number behind the file", full, index_block(entry("a", 2), 9), kKeyHw, "b", "22"},
      {"index entry past the used length", full, index_block(entry("a", 2) + "\1"), kKeyHw, "b", "22"},
      {"index block with a used length beyond its end", full, "\xFF\xFF" + std::string(1022, '\0'), kKeyHw, "b", "22"},
      {"index block in a circle", full, index_block(entry("a", 2), 1), kKeyHw, "b", "b,b"},
      {"index blocks in a larger circle", full, index_block("", 2) + index_block("", 3) + index_block(entry("a", 2), 4) + index_block("", 2), kKeyHw, "b",
       "b,b"},
      {"index without entries", full, index_block(""), kKeyHw, "b", "none"},
      {"an entry that leads nowhere", full, index_block(entry("a", 0)), kKeyHw, "b", "none"},

      {"a data block for a key block", words(kWords), kFlatIndex, kKeyCw, "u", "none"},
      {"data where keys should be", words(data(two) + data(two)), tree, kKeyCw, "u", "202"},
      {"keys where data should be", words(keys(entry("a", 2))), tree, kKeyHw, "a", "203"},
      {"keys in the middle of a data chain", words(data(two, 3) + keys("")), tree, kKeyHw, "c", "203"},
      {"data in the middle of a key chain", words(data(two) + keys(entry("t", 2), 4) + data("")), tree, kKeyCw, "u", "202"},
      {"words found are dropped at a wrong type", words(data(record("a", "u"), 4) + keys(entry("u", 2)) + keys("")), tree, kKeyCw, "u", "203"},

      {"no dictionary block at all", head, tree, kKeyHw, "a", "none"},
      {"truncated data block", words(data(two)).substr(0, 8000), tree, kKeyHw, "a", "none"},
      {"the chain ends where it cannot be read", words(data(record("a", ""), 7)), tree, kKeyHw, "a", "a"},
      {"data block in a circle", words(data(record("a", ""), 2)), tree, kKeyHw, "a", "a"},
      {"data blocks in a larger circle", words(data(record("a", "x"), 3) + data(record("a", "y"), 4) + data("", 3)), tree, kKeyHw, "b", "none"},
      {"key block in a circle", words(data(two) + keys(entry("u", 2), 3)), tree, kKeyCw, "u", "a,b"},
      {"block number 1 reads as 2", words(data(two)), index_block(entry("a", 1)), kKeyHw, "b", "b"},

      {"record larger than its block", words(data(record("a", "u") + huge)), tree, kKeyHw, "b", "none"},
      {"record of size 0", words(data(record("a", "u") + u16(0) + two)), tree, kKeyHw, "b", "none"},
      {"used length in the middle of a record", words(dict_block(1, two, 0, 30)), tree, kKeyHw, "b", "none"},
      {"used length of 0", words(padded(std::string("\0\0\1", 3), 4096)), tree, kKeyHw, "b", "none"},
      {"used length beyond the block", words(dict_block(1, two, 0, 65535)), tree, kKeyHw, "b", "b"},
      {"a field past the record's end equals nothing", words(data(bad_field + record("b", "u")) + keys(entry("u", 2))), tree, kKeyCw, "u", "b"},
      {"a damaged record is passed over", words(data(bad_end + record("b", "u"))), tree, kKeyHw, "b", "b"},
      {"key entry past the used length", words(data(two) + keys(entry("u", 2) + u16(900))), tree, kKeyCw, "u", "a,b"},
  };
  for (const DamageRow& row : rows) {
    TestedDictionary dictionary(row.dictionary, row.index);
    EXPECT_EQ(dictionary.find(row.field, row.key), row.result) << row.what;
  }
}

TEST(Lookup, AStopEndsIt) {
  TestedDictionary dictionary(header_of(1, 1, 2, 2) + kWords + kCwKeys, kFlatIndex);
  session.stop_requested = true;
  EXPECT_EQ(dictionary.find(kKeyHw, "a"), "120");
  EXPECT_EQ(dictionary.find(kKeyCw, "u", false), "120");
  session.stop_requested = false;
  EXPECT_EQ(dictionary.find(kKeyHw, "a"), "a");
}

}  // namespace
}  // namespace lexon::test
