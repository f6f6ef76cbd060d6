#include "data/pool.hpp"

#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

class Cells : public ::testing::Test {
 protected:
  void TearDown() override { session.pool.release_all(); }
};

TEST_F(Cells, NothingForLessThanOneByteAndTheHeapForLargeCells) {
  const std::int64_t before = session.pool.bytes_used();
  EXPECT_EQ(temp_alloc(session, 0), nullptr);
  EXPECT_EQ(temp_alloc(session, -1), nullptr);
  EXPECT_EQ(checked_malloc(0), nullptr);
  void* large = temp_alloc(session, 4097);
  ASSERT_NE(large, nullptr);
  std::memset(large, 1, 4097);
  EXPECT_EQ(session.pool.bytes_used(), before);
  temp_free(session, large, 4097);
}

TEST_F(Cells, ACellGivenBackIsTheNextOfItsClassAndPool) {
  void* first = temp_alloc(session, 16);
  void* second = temp_alloc(session, 16);
  temp_free(session, first, 12);
  temp_free(session, second, 16);
  EXPECT_NE(temp_alloc(session, 8), second);
  EXPECT_EQ(temp_alloc(session, 9), second);
  EXPECT_EQ(temp_alloc(session, 16), first);
  temp_free(session, nullptr, 16);
}

TEST_F(Cells, AStringGoesBackByItsPresentLength) {
  char* text = temp_text(session, "0123456789");
  text[7] = '\0';
  temp_free_string(session, text);
  EXPECT_EQ(temp_alloc(session, 8), text);
  char* empty = temp_text(session, "");
  temp_free_string(session, empty);
  temp_free_string(session, nullptr);
  EXPECT_NE(temp_alloc(session, 1), empty);
}

TEST_F(Cells, EndsAt200BlocksAndStartsAfreshAfterARelease) {
  int cells = 0;
  while (temp_alloc(session, 4096) != nullptr) ++cells;
  EXPECT_EQ(cells, 15 * 200);
  EXPECT_NE(temp_alloc(session, 8), nullptr) << "what is left of the last blocks";
  session.pool.release_all();
  EXPECT_EQ(session.pool.blocks(), 0);
  EXPECT_NE(temp_alloc(session, 4096), nullptr);
}

TEST_F(Cells, PromisedCellsFillThePoolUntilTheyAreTakenBack) {
  constexpr std::int64_t kHalf = std::int64_t{kFirstBlockSize} * kMaxBlocks / 64 / 2;
  ASSERT_TRUE(session.pool.promise(40, kHalf));
  int cells = 0;
  for (; cells < 15 * 50; ++cells) ASSERT_NE(temp_alloc(session, 4096), nullptr);
  session.pool.promise_take_back(40, kHalf);
  while (temp_alloc(session, 4096) != nullptr) ++cells;
  EXPECT_EQ(cells, 15 * 200);
  session.pool.release_all();
  EXPECT_TRUE(session.pool.promise(64, kHalf));
  EXPECT_FALSE(session.pool.promise(64, 2 * kHalf));
  EXPECT_EQ(temp_alloc(session, 8), nullptr);
  EXPECT_TRUE(session.pool.is_exhausted());
}

}  // namespace
}  // namespace lexon::test
