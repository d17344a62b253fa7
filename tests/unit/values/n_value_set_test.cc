#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include "testing/failing_allocator.h"
#include "testing/value_set_builder.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/values.h"

namespace tree::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

static_assert(std::is_base_of_v<ValueSet, NValueSet>);
static_assert(std::has_virtual_destructor_v<NValueSet>);
static_assert(sizeof(NValueSet) == 2 * sizeof(void*));  // one owning pointer
static_assert(
    std::is_same_v<NValueSetIter*, decltype(std::declval<NValueSet const&>().GetIterator())>);
static_assert(std::is_same_v<bool, decltype(std::declval<NValueSet&>().Add(1))>);

TEST(NValueSet, BeginsEmpty) {
  NValueSet const set;

  EXPECT_EQ(0, set.GetNumElements());
  EXPECT_THAT(CodesOf(set), IsEmpty());
}

TEST(NValueSet, IsANominalSet) {
  NValueSet const set;
  ValueSet const& asValueSet = set;

  EXPECT_TRUE(asValueSet.IsNominalValueSet());
}

TEST(NValueSet, AddsACodeOnce) {
  NValueSet set;

  EXPECT_TRUE(set.Add(3));
  EXPECT_FALSE(set.Add(3));

  EXPECT_EQ(1, set.GetNumElements());
}

TEST(NValueSet, ContainsExactlyItsCodes) {
  NValueSet const set = Codes({3, 0});

  EXPECT_TRUE(set.Contains(3.0));
  EXPECT_TRUE(set.Contains(0.0));
  EXPECT_FALSE(set.Contains(3.5));
  EXPECT_FALSE(set.Contains(1.0));
  EXPECT_FALSE(set.Contains(std::numeric_limits<double>::quiet_NaN()));
}

TEST(NValueSet, IteratesInOrderOfAddition) {
  EXPECT_THAT(CodesOf(Codes({5, 1, 3})), ElementsAre(5, 1, 3));
}

TEST(NValueSet, GivesANewIteratorThatTheCallerDeletes) {
  NValueSet const set = Codes({5, 1});
  long const before = CountLiveAllocations();

  NValueSetIter* const iterator = set.GetIterator();

  EXPECT_EQ(before + 1, CountLiveAllocations());
  EXPECT_EQ(-1, iterator->GetData());
  delete iterator;
  EXPECT_EQ(before, CountLiveAllocations());
  EXPECT_EQ(2, set.GetNumElements());
}

TEST(NValueSet, CopyIsIndependent) {
  NValueSet source = Codes({5, 1});
  NValueSet copy(source);

  source.Add(7);
  copy.Add(9);

  EXPECT_THAT(CodesOf(source), ElementsAre(5, 1, 7));
  EXPECT_THAT(CodesOf(copy), ElementsAre(5, 1, 9));
}

TEST(NValueSet, AssignmentIsIndependent) {
  NValueSet source = Codes({5, 1});
  NValueSet target = Codes({8, 6, 4});

  EXPECT_EQ(&target, &(target = source));
  source.Add(7);
  target.Add(9);

  EXPECT_THAT(CodesOf(source), ElementsAre(5, 1, 7));
  EXPECT_THAT(CodesOf(target), ElementsAre(5, 1, 9));
}

TEST(NValueSet, AssignmentToItselfDoesNothing) {
  NValueSet set = Codes({5, 1});
  NValueSet const& same = set;

  set = same;

  EXPECT_THAT(CodesOf(set), ElementsAre(5, 1));
}

TEST(NValueSet, FreesItsObject) {
  long const before = CountLiveAllocations();

  {
    NValueSet const set = Codes({5, 1});
    NValueSet const copy(set);
    NValueSet assigned;
    assigned = set;
    EXPECT_LT(before, CountLiveAllocations());
  }

  EXPECT_EQ(before, CountLiveAllocations());
}

TEST(NValueSet, IsDeletedThroughItsInterface) {
  int deaths = 0;
  std::unique_ptr<ValueSet> set = std::make_unique<Watched<NValueSet>>(&deaths);

  set.reset();

  EXPECT_EQ(1, deaths);
}

TEST(NValueSet, StaysAsItIsWhenAssignmentCannotAllocate) {
  NValueSet const source = Codes({1, 2, 3, 4});
  NValueSet target = Codes({9});
  {
    FailingAllocator const allocator(1);

    EXPECT_THROW(target = source, std::bad_alloc);
  }

  EXPECT_THAT(CodesOf(target), ElementsAre(9));
}

TEST(NValueSet, LeaksNothingWhenItCannotAllocate) {
  NValueSet const source = Codes({1, 2, 3, 4});
  long const before = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&source] {
    NValueSet set;
    set.Add(1);
    NValueSet const copy(source);
    std::unique_ptr<NValueSetIter> const iterator(copy.GetIterator());
  });

  EXPECT_EQ(5, failures);
  EXPECT_EQ(before, CountLiveAllocations());
}

#if TREE_HAS_SLOTS
TEST(NValueSet, KeepsTheOrderOfItsVirtualOperations) {
  EXPECT_EQ(kFirstSlot + 0, VirtualSlot(&ValueSet::Contains));
  EXPECT_EQ(kFirstSlot + 1, VirtualSlot(&ValueSet::IsNominalValueSet));
  EXPECT_EQ(kFirstSlot + 2, VirtualSlot(&NValueSet::GetIterator));
  EXPECT_EQ(kFirstSlot + 3, VirtualSlot(&NValueSet::GetNumElements));
  EXPECT_EQ(kFirstSlot + 4, VirtualSlot(&NValueSet::Add));
}
#endif

}  // namespace
}  // namespace tree::testing
