#include "data/attr_string.hpp"

#include "data/records.hpp"
#include "support/test.hpp"

namespace lexon {
namespace {

struct Row {
  const char* text;
  const char* attr;
  int found_at;  // -1: not found
  bool has;      // by the exact test
};

// The two tests differ in the last element alone.
const Row kRows[] = {
    {"a", "a", 0, true},         {"a,b", "b", 2, true},         {"a,b", "a", 0, true},
    {"ab,b", "b", 3, true},      {"b,ab", "a", -1, false},      {"x,abc,ab", "ab", -1, true},
    {"x,ab,abc", "ab", 2, true}, {"x,abc,ab,y", "ab", 6, true}, {"ab,abc", "ab", 0, true},
    {"abc", "ab", -1, false},    {"", "a", -1, false},          {"", "", 0, true},
    {",,a", "a", 2, true},       {"a,,,b", "b", 4, true},       {"a,b,;,c", "c", 6, true},
    {"a,b,;,c", ";", 4, true},   {"a,b", "a,b", 0, true},       {"\xC3\xA4,\xC3\xB6", "\xC3\xB6", 3, true},
};

TEST(AttrString, FindAndHas) {
  for (const Row& row : kRows) {
    const char* found = attr_find(row.text, row.attr);
    EXPECT_EQ(found == nullptr ? -1 : static_cast<int>(found - row.text), row.found_at) << row.text << " " << row.attr;
    std::string attrs = row.text;
    WordEntry word{};
    word.attrs = attrs.data();
    EXPECT_EQ(attr_has(&word, row.attr), row.has) << row.text << " " << row.attr;
  }
  WordEntry empty{};
  EXPECT_EQ(attr_find(static_cast<const char*>(nullptr), "a"), nullptr);
  EXPECT_FALSE(attr_has(nullptr, "a"));
  EXPECT_FALSE(attr_has(&empty, "a"));
  EXPECT_FALSE(attr_in("a", nullptr));
}

TEST(AttrString, Erase) {
  const char* rows[][3] = {
      {"@entry", "@entry", ""}, {"a,@entry,b", "@entry", "a,b"}, {"@entry2,a", "@entry", "@entry2,a"}, {"a,@entry", "@entry", "a,"},
      {"a,a,b,a", "a", "b,"},   {",,a,b", "a", ",,b"},           {"x@entry,a", "@entry", "x@entry,a"},
  };
  for (const auto& row : rows) {
    std::string text = row[0];
    attr_erase(text.data(), row[1]);
    EXPECT_STREQ(text.c_str(), row[2]) << row[0];
  }
}

}  // namespace
}  // namespace lexon
