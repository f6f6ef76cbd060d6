#include "data/pool.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace lexon {
namespace {

class Pool : public ::testing::Test {
 protected:
  void TearDown() override { temp_release_all(); }
};

TEST_F(Pool, NothingForLessThanOneByteAndTheHeapForLargeCells) {
  const PoolFigures before = pool_figures();
  EXPECT_EQ(temp_alloc(0), nullptr);
  EXPECT_EQ(temp_alloc(-1), nullptr);
  EXPECT_EQ(checked_malloc(0), nullptr);
  void* large = temp_alloc(4097);
  ASSERT_NE(large, nullptr);
  std::memset(large, 1, 4097);
  EXPECT_EQ(pool_figures().sentence_bytes_used, before.sentence_bytes_used);
  temp_free(large, 4097);
}

TEST_F(Pool, ACellGivenBackIsTheNextOfItsClassAndPool) {
  void* first = temp_alloc(16);
  void* second = temp_alloc(16);
  temp_free(first, 12);
  temp_free(second, 16);
  EXPECT_NE(temp_alloc(8), second);
  EXPECT_EQ(temp_alloc(9), second);
  EXPECT_EQ(temp_alloc(16), first);
  temp_free(nullptr, 16);
}

TEST_F(Pool, AStringGoesBackByItsPresentLength) {
  char* text = temp_text("0123456789");
  text[7] = '\0';
  temp_free_string(text);
  EXPECT_EQ(temp_alloc(8), text);
  char* empty = temp_text("");
  temp_free_string(empty);
  temp_free_string(nullptr);
  EXPECT_NE(temp_alloc(1), empty);
}

TEST_F(Pool, EndsAt200BlocksAndStartsAfreshAfterARelease) {
  int cells = 0;
  while (temp_alloc(4096) != nullptr) ++cells;
  EXPECT_EQ(cells, 15 * (200 - pool_figures().permanent_blocks));
  EXPECT_NE(temp_alloc(8), nullptr) << "what is left of the last blocks";
  EXPECT_EQ(temp_release_all(), 0);
  EXPECT_EQ(pool_figures().sentence_blocks, 0);
  EXPECT_NE(temp_alloc(4096), nullptr);
}

TEST_F(Pool, ThePermanentPoolOutlivesTheSentence) {
  char* kept = perm_text("kept");
  void* cell = perm_alloc(100);
  static_cast<void>(temp_alloc(100));
  temp_release_all();
  EXPECT_STREQ(kept, "kept");
  perm_free(cell, 100);
  EXPECT_NE(temp_alloc(100), cell);
  EXPECT_EQ(perm_alloc(128), cell);
}

}  // namespace
}  // namespace lexon
