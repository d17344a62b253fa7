#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "testing/failing_allocator.h"
#include "testing/value_set_builder.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/values.h"

namespace tree::testing {
namespace {

static_assert(std::is_abstract_v<ValueSet> && std::has_virtual_destructor_v<ValueSet>);
static_assert(sizeof(ValueSet) == sizeof(void*));  // no data
static_assert(std::is_base_of_v<ValueSet, OValueSet>);
static_assert(std::has_virtual_destructor_v<OValueSet>);
static_assert(sizeof(OValueSet) == 2 * sizeof(void*));  // one owning pointer

TEST(OValueSet, BeginsAsTheWholeLine) {
  OValueSet const interval;

  EXPECT_EQ("(-inf, inf)", Written(interval));
  EXPECT_TRUE(interval.Contains(0.0));
  EXPECT_TRUE(interval.Contains(-1e300));
  EXPECT_TRUE(interval.Contains(1e300));
  EXPECT_TRUE(interval.Contains(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_FALSE(interval.IsEmpty());
  EXPECT_TRUE(interval == AtMost(3.0));
  EXPECT_FALSE(interval == From(3.0));
}

TEST(OValueSet, IsTheOpenIntervalBetweenTwoEnds) {
  OValueSet const interval(1.0, 3.0);

  EXPECT_EQ("(1, 3)", Written(interval));
  EXPECT_TRUE(interval.Contains(2.0));
  EXPECT_FALSE(interval.Contains(1.0));
  EXPECT_TRUE(interval.Contains(3.0));
  EXPECT_TRUE(interval.Contains(3.5));
  EXPECT_TRUE(interval.Contains(0.5));
  EXPECT_FALSE(interval.Contains(4.1));
  EXPECT_FALSE(interval.Contains(-0.1));
}

TEST(OValueSet, IsNoNominalSet) {
  OValueSet const interval;
  ValueSet const& set = interval;

  EXPECT_FALSE(set.IsNominalValueSet());
}

TEST(OValueSet, ReadsEachEndByItself) {
  OValueSet interval = OpenClosed(1.0, 3.0);
  EXPECT_EQ(1.0, interval.GetLeftEnd());
  EXPECT_EQ(3.0, interval.GetRightEnd());
  EXPECT_TRUE(interval.IsOpenLeft());
  EXPECT_FALSE(interval.IsOpenRight());

  interval = AtMost(3.0);

  EXPECT_FALSE(interval.IsBoundedLeft());
  EXPECT_TRUE(interval.IsBoundedRight());
}

TEST(OValueSet, ChangesEachEndByItself) {
  OValueSet interval(1.0, 3.0);

  interval.SetOpenLeft(false);
  EXPECT_EQ("[1, 3)", Written(interval));
  interval.SetOpenRight(false);
  EXPECT_EQ("[1, 3]", Written(interval));
  interval.SetLeftEnd(0.0);
  EXPECT_EQ("[0, 3]", Written(interval));
  interval.SetRightEnd(4.0);
  EXPECT_EQ("[0, 4]", Written(interval));
}

TEST(OValueSet, UnboundingASideCopiesTheOtherEnd) {
  OValueSet interval(1.0, 3.0);

  interval.SetBoundedLeft(false);
  EXPECT_EQ("(-inf, 3)", Written(interval));
  EXPECT_EQ(3.0, interval.GetLeftEnd());
  interval.SetBoundedLeft(true);
  interval.SetLeftEnd(2.0);
  interval.SetBoundedRight(false);
  EXPECT_EQ("(2, inf)", Written(interval));
  EXPECT_EQ(2.0, interval.GetRightEnd());
  interval.SetBoundedRight(true);
  EXPECT_EQ("(2, 2)", Written(interval));
}

TEST(OValueSet, TellsWhetherItIsEmpty) {
  OValueSet interval(0.0, 1.5);
  EXPECT_TRUE(OValueSet(0.0, 0.5).IsEmpty());
  EXPECT_FALSE(interval.IsEmpty());
  EXPECT_FALSE(Closed(2.0, 2.0).IsEmpty());

  interval.Empty();

  EXPECT_TRUE(interval.IsEmpty());
  EXPECT_EQ("(0, 0)", Written(interval));
}

TEST(OValueSet, ComparesByTheLeftEnds) {
  OValueSet const a(2.0, 5.0);
  OValueSet b;
  b.SetRightEnd(0.0);  // unbounded on the left, where 0 is stored

  EXPECT_TRUE(a == OValueSet(2.0, 7.0));
  EXPECT_FALSE(a == OValueSet(3.0, 5.0));
  EXPECT_TRUE(a < OValueSet(3.0, 5.0));
  EXPECT_FALSE(a < a);
  EXPECT_FALSE(a < b);
  EXPECT_TRUE(b < a);
}

TEST(OValueSet, CopyHasAllFields) {
  OValueSet source;
  source.SetRightEnd(3.0);
  source.SetOpenRight(false);

  OValueSet const copy(source);

  EXPECT_EQ("(-inf, 3]", Written(copy));
  EXPECT_EQ(0.0, copy.GetLeftEnd());
}

TEST(OValueSet, CopyIsIndependent) {
  OValueSet source(1.0, 3.0);
  OValueSet copy(source);

  source.SetLeftEnd(0.0);
  copy.SetRightEnd(9.0);

  EXPECT_EQ("(0, 3)", Written(source));
  EXPECT_EQ("(1, 9)", Written(copy));
}

TEST(OValueSet, AssignmentCopiesTheFieldsIntoItsOwnObject) {
  OValueSet source = ClosedOpen(1.0, 3.0);
  OValueSet target;
  long const before = CountAllocations();

  EXPECT_EQ(&target, &(target = source));

  EXPECT_EQ(before, CountAllocations());
  source.Empty();
  EXPECT_EQ("[1, 3)", Written(target));
}

TEST(OValueSet, AssignmentToItselfDoesNothing) {
  OValueSet interval = ClosedOpen(1.0, 3.0);
  OValueSet const& same = interval;

  interval = same;

  EXPECT_EQ("[1, 3)", Written(interval));
}

TEST(OValueSet, OwnsOneObject) {
  long const before = CountLiveAllocations();

  {
    OValueSet const whole;
    EXPECT_EQ(before + 1, CountLiveAllocations());
    OValueSet const bounded(1.0, 2.0);
    EXPECT_EQ(before + 2, CountLiveAllocations());
    OValueSet const copy(bounded);
    EXPECT_EQ(before + 3, CountLiveAllocations());
  }

  EXPECT_EQ(before, CountLiveAllocations());
}

TEST(OValueSet, IsDeletedThroughItsInterface) {
  int deaths = 0;
  std::unique_ptr<ValueSet> set = std::make_unique<Watched<OValueSet>>(&deaths);

  set.reset();

  EXPECT_EQ(1, deaths);
}

TEST(OValueSet, LeaksNothingWhenItsObjectCannotBeAllocated) {
  OValueSet const source(1.0, 2.0);
  long const before = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&source] {
    OValueSet const whole;
    OValueSet const bounded(1.0, 2.0);
    OValueSet const copy(source);
  });

  EXPECT_EQ(3, failures);
  EXPECT_EQ(before, CountLiveAllocations());
}

#if TREE_HAS_SLOTS
TEST(OValueSet, KeepsTheOrderOfItsVirtualOperations) {
  EXPECT_EQ(kFirstSlot + 0, VirtualSlot(&ValueSet::Contains));
  EXPECT_EQ(kFirstSlot + 1, VirtualSlot(&ValueSet::IsNominalValueSet));
  EXPECT_EQ(kFirstSlot + 2, VirtualSlot(&OValueSet::operator<));
  EXPECT_EQ(kFirstSlot + 3, VirtualSlot(&OValueSet::operator==));
  EXPECT_EQ(kFirstSlot + 4, VirtualSlot(&OValueSet::GetLeftEnd));
  EXPECT_EQ(kFirstSlot + 5, VirtualSlot(&OValueSet::GetRightEnd));
  EXPECT_EQ(kFirstSlot + 6, VirtualSlot(&OValueSet::IsOpenLeft));
  EXPECT_EQ(kFirstSlot + 7, VirtualSlot(&OValueSet::IsOpenRight));
  EXPECT_EQ(kFirstSlot + 8, VirtualSlot(&OValueSet::IsBoundedLeft));
  EXPECT_EQ(kFirstSlot + 9, VirtualSlot(&OValueSet::IsBoundedRight));
  EXPECT_EQ(kFirstSlot + 10, VirtualSlot(&OValueSet::IsEmpty));
  EXPECT_EQ(kFirstSlot + 11, VirtualSlot(&OValueSet::SetLeftEnd));
  EXPECT_EQ(kFirstSlot + 12, VirtualSlot(&OValueSet::SetRightEnd));
  EXPECT_EQ(kFirstSlot + 13, VirtualSlot(&OValueSet::SetOpenLeft));
  EXPECT_EQ(kFirstSlot + 14, VirtualSlot(&OValueSet::SetOpenRight));
  EXPECT_EQ(kFirstSlot + 15, VirtualSlot(&OValueSet::SetBoundedLeft));
  EXPECT_EQ(kFirstSlot + 16, VirtualSlot(&OValueSet::SetBoundedRight));
  EXPECT_EQ(kFirstSlot + 17, VirtualSlot(&OValueSet::Empty));
}
#endif

}  // namespace
}  // namespace tree::testing
