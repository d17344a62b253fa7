#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "testing/debug_death.h"
#include "testing/failing_allocator.h"
#include "testing/value_set_builder.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/values.h"

namespace tree::testing {
namespace {

using ::testing::ElementsAre;

static_assert(std::is_abstract_v<NValueSetIter> && std::has_virtual_destructor_v<NValueSetIter>);
static_assert(sizeof(NValueSetIter) == sizeof(void*));  // no fields
static_assert(std::is_base_of_v<NValueSetIter, NValueSetIterImp>);
static_assert(std::is_same_v<int, decltype(std::declval<NValueSetIter const&>().GetData())>);
static_assert(std::is_same_v<bool, decltype(std::declval<NValueSetIter&>().Advance())>);

NValueSetImp Of(std::initializer_list<int> codes) {
  NValueSetImp set;
  for (int const code : codes) set.Add(code);
  return set;
}

TEST(NValueSetIterImp, HasNoCodeBeforeTheFirstAdvance) {
  NValueSetImp const set = Of({5, 1});
  NValueSetIterImp const iterator(&set);

  EXPECT_EQ(-1, iterator.GetData());
}

TEST(NValueSetIterImp, FirstAdvanceMovesToTheFirstCode) {
  NValueSetImp const set = Of({5, 1});
  NValueSetIterImp iterator(&set);

  EXPECT_TRUE(iterator.Advance());

  EXPECT_EQ(5, iterator.GetData());
}

TEST(NValueSetIterImp, ReadingDoesNotMove) {
  NValueSetImp const set = Of({5, 1});
  NValueSetIterImp iterator(&set);
  iterator.Advance();

  EXPECT_EQ(5, iterator.GetData());
  EXPECT_EQ(5, iterator.GetData());
}

TEST(NValueSetIterImp, AdvancesOverAllCodesInOrderOfAddition) {
  NValueSetImp const set = Of({5, 1, 3});
  NValueSetIterImp iterator(&set);

  EXPECT_TRUE(iterator.Advance());
  EXPECT_EQ(5, iterator.GetData());
  EXPECT_TRUE(iterator.Advance());
  EXPECT_EQ(1, iterator.GetData());
  EXPECT_TRUE(iterator.Advance());
  EXPECT_EQ(3, iterator.GetData());
  EXPECT_FALSE(iterator.Advance());
}

TEST(NValueSetIterImp, EndsAtOnceInAnEmptySet) {
  NValueSetImp const set;
  NValueSetIterImp iterator(&set);

  EXPECT_EQ(-1, iterator.GetData());
  EXPECT_FALSE(iterator.Advance());
}

TEST(NValueSetIterImp, HasNoCodeAtTheEnd) {
  NValueSetImp const set = Of({5});
  NValueSetIterImp iterator(&set);
  iterator.Advance();

  ASSERT_FALSE(iterator.Advance());

  EXPECT_EQ(-1, iterator.GetData());
}

TEST(NValueSetIterImp, WalksItsSetByItself) {
  NValueSetImp const set = Of({5, 1, 3});
  NValueSetIterImp ahead(&set);
  NValueSetIterImp behind(&set);
  ahead.Advance();
  ahead.Advance();

  behind.Advance();

  EXPECT_EQ(1, ahead.GetData());
  EXPECT_EQ(5, behind.GetData());
}

TEST(NValueSetIterImp, CopyGoesOnFromWhereItStands) {
  NValueSetImp const set = Of({5, 1, 3});
  NValueSetIterImp iterator(&set);
  iterator.Advance();

  NValueSetIterImp copy(iterator);
  NValueSetIterImp assigned(&set);
  assigned = iterator;

  EXPECT_EQ(5, copy.GetData());
  EXPECT_THAT(Rest(copy), ElementsAre(1, 3));
  EXPECT_THAT(Rest(assigned), ElementsAre(1, 3));
  EXPECT_EQ(5, iterator.GetData());
}

TEST(NValueSetIterImp, BorrowsItsSet) {
  auto const set = std::make_unique<NValueSetImp>(Of({5}));
  long const before = CountLiveAllocations();

  delete new NValueSetIterImp(set.get());

  EXPECT_EQ(before, CountLiveAllocations());
  EXPECT_EQ(1, set->GetNumElements());
}

TEST(NValueSetIterImp, IsDeletedThroughItsInterface) {
  NValueSetImp const set;
  int deaths = 0;
  std::unique_ptr<NValueSetIter> iterator =
      std::make_unique<Watched<NValueSetIterImp>>(&deaths, &set);

  iterator.reset();

  EXPECT_EQ(1, deaths);
}

#if TREE_HAS_SLOTS
TEST(NValueSetIterImp, KeepsTheOrderOfItsVirtualOperations) {
  EXPECT_EQ(kFirstSlot + 0, VirtualSlot(&NValueSetIter::GetData));
  EXPECT_EQ(kFirstSlot + 1, VirtualSlot(&NValueSetIter::Advance));
}
#endif

class NValueSetIterImpDeathTest : public DeathTest {};

TEST_F(NValueSetIterImpDeathTest, NamesTheAdvanceBeyondTheEnd) {
  EXPECT_ASSERTION(
      {
        NValueSetImp const set;
        NValueSetIterImp iterator(&set);
        iterator.Advance();
        iterator.Advance();
      },
      "NValueSetIterImp::Advance: ");
}

}  // namespace
}  // namespace tree::testing
