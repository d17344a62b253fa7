#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include "testing/failing_allocator.h"
#include "testing/value_set_builder.h"
#include "tree/values.h"

namespace tree::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kHighest = 2147483647;
constexpr int kLowest = -2147483647 - 1;

static_assert(!std::is_polymorphic_v<NValueSetImp>);
static_assert(!std::is_base_of_v<ValueSet, NValueSetImp>);
static_assert(std::is_same_v<bool, decltype(std::declval<NValueSetImp&>().Add(1))>);
static_assert(
    std::is_same_v<NValueSetIter*, decltype(std::declval<NValueSetImp const&>().GetIterator())>);

NValueSetImp Of(std::initializer_list<int> codes) {
  NValueSetImp set;
  for (int const code : codes) set.Add(code);
  return set;
}

TEST(NValueSetImp, BeginsEmpty) {
  NValueSetImp const set;

  EXPECT_EQ(0, set.GetNumElements());
  EXPECT_FALSE(set.Contains(0.0));
  EXPECT_THAT(CodesOf(set), IsEmpty());
}

TEST(NValueSetImp, AddsACodeOnce) {
  NValueSetImp set;

  EXPECT_TRUE(set.Add(3));
  EXPECT_FALSE(set.Add(3));

  EXPECT_EQ(1, set.GetNumElements());
  EXPECT_THAT(CodesOf(set), ElementsAre(3));
}

TEST(NValueSetImp, KeepsTheOrderOfAddition) {
  NValueSetImp set = Of({5, 1, 3});

  EXPECT_FALSE(set.Add(5));

  EXPECT_EQ(3, set.GetNumElements());
  EXPECT_THAT(CodesOf(set), ElementsAre(5, 1, 3));
}

TEST(NValueSetImp, HoldsAny32BitCode) {
  NValueSetImp set;

  EXPECT_TRUE(set.Add(kLowest));
  EXPECT_TRUE(set.Add(-1));
  EXPECT_TRUE(set.Add(0));
  EXPECT_TRUE(set.Add(kHighest));
  EXPECT_FALSE(set.Add(kLowest));

  EXPECT_THAT(CodesOf(set), ElementsAre(kLowest, -1, 0, kHighest));
}

TEST(NValueSetImp, ContainsExactlyItsCodes) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  struct Row {
    char const* name;
    double value;
    bool expected;
  };
  constexpr Row kRows[] = {
      {"the first code", 3.0, true},
      {"the last code", -7.0, true},
      {"another code", 4.0, false},
      {"zero", 0.0, true},
      {"negative zero", -0.0, true},
      {"fraction", 3.5, false},
      {"fraction that truncates to zero", 0.5, false},
      {"negative fraction that truncates to zero", -0.5, false},
      {"next above a code", 3.0000000000000004, false},
      {"highest", 2147483647.0, true},
      {"fraction above the highest", 2147483647.5, false},
      {"one above the highest, converted to the lowest", 2147483648.0, false},
      {"lowest", -2147483648.0, true},
      {"fraction below the lowest", -2147483648.5, false},
      {"one below the lowest, converted to the lowest", -2147483649.0, false},
      {"infinity, converted to the lowest", kInfinity, false},
      {"negative infinity, converted to the lowest", -kInfinity, false},
      {"NaN, converted to the lowest", std::numeric_limits<double>::quiet_NaN(), false},
  };
  NValueSetImp const set = Of({3, kHighest, kLowest, 0, -7});
  for (Row const& row : kRows) {
    EXPECT_EQ(row.expected, set.Contains(row.value)) << row.name;
  }
}

TEST(NValueSetImp, CopyIsIndependent) {
  NValueSetImp source = Of({5, 1});
  NValueSetImp copy(source);

  source.Add(7);
  copy.Add(9);

  EXPECT_THAT(CodesOf(source), ElementsAre(5, 1, 7));
  EXPECT_THAT(CodesOf(copy), ElementsAre(5, 1, 9));
}

TEST(NValueSetImp, AssignmentIsIndependent) {
  NValueSetImp source = Of({5, 1});
  NValueSetImp target = Of({8});
  target = source;

  source.Add(7);
  target.Add(9);

  EXPECT_THAT(CodesOf(source), ElementsAre(5, 1, 7));
  EXPECT_THAT(CodesOf(target), ElementsAre(5, 1, 9));
}

TEST(NValueSetImp, AssignmentToItselfDoesNothing) {
  NValueSetImp set = Of({5, 1});
  NValueSetImp const& same = set;

  set = same;

  EXPECT_THAT(CodesOf(set), ElementsAre(5, 1));
}

TEST(NValueSetImp, GivesANewIteratorEachTime) {
  NValueSetImp const set = Of({5, 1});
  long const before = CountLiveAllocations();

  std::unique_ptr<NValueSetIter> const first(set.GetIterator());
  std::unique_ptr<NValueSetIter> const second(set.GetIterator());

  EXPECT_EQ(before + 2, CountLiveAllocations());
  EXPECT_THAT(Rest(*first), ElementsAre(5, 1));
  EXPECT_THAT(Rest(*second), ElementsAre(5, 1));
}

TEST(NValueSetImp, StaysAsItIsWhenACodeCannotBeStored) {
  NValueSetImp set;
  long const before = CountLiveAllocations();
  {
    FailingAllocator const allocator(1);

    EXPECT_THROW(set.Add(3), std::bad_alloc);
  }

  EXPECT_EQ(before, CountLiveAllocations());
  EXPECT_EQ(0, set.GetNumElements());
  EXPECT_TRUE(set.Add(3));
}

}  // namespace
}  // namespace tree::testing
