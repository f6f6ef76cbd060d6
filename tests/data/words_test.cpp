#include "data/words.hpp"

#include "data/pool.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

class Words : public ::testing::Test {
 protected:
  void TearDown() override { session.pool.release_all(); }

  // A list of words with these priorities, named a, b, c and on.
  static WordEntry* list_of(const std::vector<int>& priorities) {
    WordEntry* head = nullptr;
    WordEntry** link = &head;
    char name[] = "a";
    for (const int priority : priorities) {
      *link = entry_new(session, name, nullptr);
      (*link)->priority = static_cast<std::uint8_t>(priority);
      link = &(*link)->next;
      ++name[0];
    }
    return head;
  }

  static std::string names(const WordEntry* list) {
    std::string all;
    for (; list != nullptr; list = list->next) all += list->hw;
    return all;
  }
};

TEST_F(Words, SortIsStableByUnsignedPriority) {
  const std::pair<std::vector<int>, const char*> rows[] = {{{1, 3, 3, 2}, "bcda"}, {{0, 127, 128, 255}, "dcba"}, {{5, 5, 5}, "abc"}, {{7}, "a"}, {{}, ""}};
  for (const auto& [priorities, expected] : rows) {
    WordEntry* list = list_of(priorities);
    entry_list_sort(list);
    EXPECT_EQ(names(list), expected);
  }
}

TEST_F(Words, CopyIsDeepAndCanChangeTheSurface) {
  WordEntry* word = entry_new(session, "dog", "N");
  word->id = temp_text(session, "42");
  word->id_len = 2;
  word->priority = 7;
  WordEntry* copy = nullptr;
  ASSERT_EQ(entry_copy(session, *word, copy, "cats"), Status::ok);
  word->attrs[0] = 'X';
  EXPECT_STREQ(copy->hw, "cats");
  EXPECT_EQ(copy->total_size, word->total_size + 1);
  EXPECT_STREQ(copy->attrs, "N");
  EXPECT_STREQ(copy->id, "42");
  EXPECT_EQ(copy->priority, 7);
  EXPECT_EQ(copy->cw, nullptr);
}

TEST_F(Words, AttributesAreCopiedToTheirTerminatorWhateverTheirLengthSays) {
  WordEntry* word = entry_new(session, "x", "A,B,C");
  WordEntry* copy = nullptr;
  word->attr_len = 9;
  ASSERT_EQ(entry_copy(session, *word, copy), Status::ok);
  EXPECT_STREQ(copy->attrs, "A,B,C");
  word->attr_len = 1;
  ASSERT_EQ(entry_copy(session, *word, copy), Status::ok);
  EXPECT_STREQ(copy->attrs, "A,B,C");
}

TEST_F(Words, ListsAreCopiedInOrderAndDroppedFromTheHead) {
  WordEntry* list = list_of({1, 2, 3});
  WordEntry* copy = nullptr;
  ASSERT_EQ(entry_list_copy(session, list, copy), Status::ok);
  EXPECT_EQ(names(copy), "abc");
  entry_drop_head(session, copy);
  EXPECT_EQ(names(copy), "bc");
  entry_list_free(session, copy);
  EXPECT_EQ(copy, nullptr);
  entry_drop_head(session, copy);
  EXPECT_EQ(names(list), "abc");
}

}  // namespace
}  // namespace lexon::test
