#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/virtual_slot.h"
#include "tree/misclassification.h"
#include "tree/support.h"

namespace tree::testing {
namespace {

static_assert(ScoreTypeDefault == 0 && ScoreTypeCustom == 1);
static_assert(std::is_same_v<int, std::underlying_type_t<ScoreType>>);
static_assert(std::is_convertible_v<ScoreType, int>);  // unscoped

static_assert(std::is_abstract_v<Scores>);
static_assert(std::has_virtual_destructor_v<Scores>);
static_assert(sizeof(Scores) == sizeof(void*));  // no fields
static_assert(std::is_base_of_v<Scores, ScoresImp>);
static_assert(std::is_copy_constructible_v<ScoresImp> && std::is_copy_assignable_v<ScoresImp>);
static_assert(std::is_convertible_v<decltype(std::declval<ScoresImp const&>().Clone()), Scores*>);
static_assert(std::is_same_v<decltype(&ScoresImp::SetDefault), void (ScoresImp::*)()>);
static_assert(std::is_same_v<decltype(&ScoresImp::Resize), void (ScoresImp::*)(int)>);

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMinInt = std::numeric_limits<int>::min();

using Values = std::vector<double>;

Values ValuesOf(Scores const& scores) {
  Values values;
  for (int index = 0; index < scores.GetNumClasses(); ++index) values.push_back(scores.Get(index));
  return values;
}

/// Scores 5, 6, 7.
ScoresImp Custom3() {
  ScoresImp scores;
  for (int index = 0; index < 3; ++index) scores.Set(index, 5.0 + index);
  return scores;
}

TEST(ScoresImp, BeginsEmptyAndDefault) {
  ScoresImp const scores;

  EXPECT_EQ(scores.GetNumClasses(), 0);
  EXPECT_EQ(scores.GetType(), ScoreTypeDefault);
}

TEST(ScoresImp, ReadsTheMissingValueOutOfRange) {
  ScoresImp const scores = Custom3();

  for (int const index : {-1, 3, 4, kMaxInt, kMinInt}) {
    SCOPED_TRACE(index);
    EXPECT_EQ(scores.Get(index), systemMissingValue());
  }
  EXPECT_EQ(ScoresImp().Get(0), systemMissingValue());
  EXPECT_EQ(ValuesOf(scores), (Values{5.0, 6.0, 7.0}));
}

TEST(ScoresImp, SetsAScoreBeyondItsEndWithZerosBelow) {
  ScoresImp scores;

  EXPECT_TRUE(scores.Set(4, 2.5));

  EXPECT_EQ(ValuesOf(scores), (Values{0.0, 0.0, 0.0, 0.0, 2.5}));
  EXPECT_EQ(scores.GetType(), ScoreTypeCustom);
}

TEST(ScoresImp, SetsAScoreInPlaceOrJustBehindTheLast) {
  ScoresImp scores = Custom3();

  EXPECT_TRUE(scores.Set(1, -8.0));
  EXPECT_TRUE(scores.Set(3, 9.0));

  EXPECT_EQ(ValuesOf(scores), (Values{5.0, -8.0, 7.0, 9.0}));
}

TEST(ScoresImp, AcceptsAnyScore) {
  for (double const score : {-1.0, 0.0, 1e300, kInfinity, -kInfinity, systemMissingValue()}) {
    SCOPED_TRACE(score);
    ScoresImp scores;

    EXPECT_TRUE(scores.Set(0, score));

    EXPECT_EQ(scores.Get(0), score);
  }
  ScoresImp scores;
  EXPECT_TRUE(scores.Set(0, kNaN));
  EXPECT_TRUE(std::isnan(scores.Get(0)));
}

TEST(ScoresImp, BecomesCustomEvenByTheDefaultScore) {
  ScoresImp scores;
  scores.Resize(1);

  scores.Set(0, 0.0);

  EXPECT_EQ(scores.GetType(), ScoreTypeCustom);
}

TEST(ScoresImp, RefusesIndexesThatHaveNoCountAndChangesNothing) {
  for (int const index : {-1, kMinInt, kMaxInt}) {
    ScoresImp scores;
    scores.Resize(2);

    EXPECT_FALSE(scores.Set(index, 1.0));

    EXPECT_EQ(scores.GetType(), ScoreTypeDefault);
    EXPECT_EQ(ValuesOf(scores), (Values{0.0, 0.0}));
  }
}

TEST(ScoresImp, GivesEveryCategoryItsIndexByTheDefaultType) {
  ScoresImp scores;
  scores.Resize(3);

  EXPECT_TRUE(scores.Set(ScoreTypeDefault));

  EXPECT_EQ(ValuesOf(scores), (Values{0.0, 1.0, 2.0}));
  EXPECT_EQ(scores.GetType(), ScoreTypeDefault);
}

TEST(ScoresImp, AcceptsTheDefaultTypeAgain) {
  ScoresImp scores = Custom3();

  EXPECT_TRUE(scores.Set(ScoreTypeDefault));
  EXPECT_TRUE(scores.Set(ScoreTypeDefault));

  EXPECT_EQ(ValuesOf(scores), (Values{0.0, 1.0, 2.0}));
  EXPECT_TRUE(ScoresImp().Set(ScoreTypeDefault));
}

TEST(ScoresImp, RefusesEveryOtherType) {
  for (int const type : {1, 2, -1, kMaxInt, kMinInt}) {
    SCOPED_TRACE(type);
    ScoresImp custom = Custom3();
    ScoresImp fresh;

    EXPECT_FALSE(custom.Set(static_cast<ScoreType>(type)));
    EXPECT_FALSE(fresh.Set(static_cast<ScoreType>(type)));

    EXPECT_EQ(custom.GetType(), ScoreTypeCustom);
    EXPECT_EQ(ValuesOf(custom), (Values{5.0, 6.0, 7.0}));
    EXPECT_EQ(fresh.GetType(), ScoreTypeDefault);
  }
}

TEST(ScoresImp, WritesDefaultScoresWithoutAChangeOfTheirNumber) {
  ScoresImp scores = Custom3();

  scores.SetDefault();

  EXPECT_EQ(ValuesOf(scores), (Values{0.0, 1.0, 2.0}));
  EXPECT_EQ(scores.GetType(), ScoreTypeDefault);
}

TEST(ScoresImp, ResizesWithZerosAndNotWithDefaultScores) {
  ScoresImp scores;

  scores.Resize(3);

  EXPECT_EQ(ValuesOf(scores), (Values{0.0, 0.0, 0.0}));
  EXPECT_EQ(scores.GetType(), ScoreTypeDefault);
}

TEST(ScoresImp, KeepsScoresAndTypeWhenResized) {
  ScoresImp scores = Custom3();

  scores.Resize(5);
  EXPECT_EQ(ValuesOf(scores), (Values{5.0, 6.0, 7.0, 0.0, 0.0}));
  scores.Resize(2);
  EXPECT_EQ(ValuesOf(scores), (Values{5.0, 6.0}));
  scores.Resize(3);
  EXPECT_EQ(ValuesOf(scores), (Values{5.0, 6.0, 0.0}));
  scores.Resize(3);
  EXPECT_EQ(ValuesOf(scores), (Values{5.0, 6.0, 0.0}));
  scores.Resize(0);
  EXPECT_EQ(scores.GetNumClasses(), 0);
  EXPECT_EQ(scores.GetType(), ScoreTypeCustom);
}

TEST(ScoresImp, CopiesScoresAndTypeDeeply) {
  ScoresImp const source = Custom3();

  ScoresImp copy(source);
  std::unique_ptr<Scores> const clone(source.Clone());
  ScoresImp assigned;
  assigned.Set(5, 1.0);
  ScoresImp const& result = assigned = source;

  EXPECT_EQ(&result, &assigned);
  EXPECT_NE(dynamic_cast<ScoresImp*>(clone.get()), nullptr);
  for (Scores* const each :
       {static_cast<Scores*>(&copy), clone.get(), static_cast<Scores*>(&assigned)}) {
    EXPECT_EQ(ValuesOf(*each), (Values{5.0, 6.0, 7.0}));
    EXPECT_EQ(each->GetType(), ScoreTypeCustom);
    each->Set(ScoreTypeDefault);
  }
  EXPECT_EQ(ValuesOf(source), (Values{5.0, 6.0, 7.0}));
  EXPECT_EQ(source.GetType(), ScoreTypeCustom);
}

TEST(ScoresImp, CopiesTheDefaultTypeToo) {
  ScoresImp source;
  source.Resize(2);
  ScoresImp target = Custom3();

  target = source;

  EXPECT_EQ(target.GetType(), ScoreTypeDefault);
  EXPECT_EQ(ValuesOf(target), (Values{0.0, 0.0}));
}

TEST(ScoresImp, SurvivesAssignmentToItself) {
  ScoresImp scores = Custom3();
  ScoresImp const& same = scores;

  scores = same;

  EXPECT_EQ(ValuesOf(scores), (Values{5.0, 6.0, 7.0}));
  EXPECT_EQ(scores.GetType(), ScoreTypeCustom);
}

TEST(ScoresImp, StaysAsItWasWhenMemoryRunsOut) {
  ScoresImp scores;
  scores.Resize(2);
  long const live = CountLiveAllocations();
  {
    FailingAllocator const failing(1, true);

    EXPECT_THROW(scores.Set(100, 1.0), std::bad_alloc);
    EXPECT_THROW(scores.Resize(100), std::bad_alloc);
    EXPECT_THROW(static_cast<void>(scores.Clone()), std::bad_alloc);
  }

  EXPECT_EQ(ValuesOf(scores), (Values{0.0, 0.0}));
  EXPECT_EQ(scores.GetType(), ScoreTypeDefault);
  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(ScoresImp, LosesNothingWhenACopyRunsOutOfMemory) {
  ScoresImp const source = Custom3();
  long const live = CountLiveAllocations();

  EXPECT_EQ(WithEveryAllocationFailing([&source] { delete source.Clone(); }), 2);

  EXPECT_EQ(CountLiveAllocations(), live);
}

#if TREE_HAS_SLOTS
TEST(ScoresImp, KeepsTheOrderOfItsVirtualOperations) {
  EXPECT_EQ(VirtualSlot(static_cast<Scores* (Scores::*)() const>(&Scores::Clone)), kFirstSlot + 0);
  EXPECT_EQ(VirtualSlot(static_cast<int (Scores::*)() const>(&Scores::GetNumClasses)),
            kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(static_cast<ScoreType (Scores::*)() const>(&Scores::GetType)),
            kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(static_cast<double (Scores::*)(int) const>(&Scores::Get)), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Scores::*)(ScoreType)>(&Scores::Set)), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Scores::*)(int, double)>(&Scores::Set)), kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(&ScoresImp::SetDefault), -1);
  EXPECT_EQ(VirtualSlot(&ScoresImp::Resize), -1);
}
#endif

#ifndef NDEBUG
TEST(ScoresImpDeathTest, StopsAtANegativeCount) {
  ScoresImp scores;

  EXPECT_DEATH(scores.Resize(-1), "ScoresImp::Resize: index -1 is out of range");
}
#else
TEST(ScoresImp, GoesOnAfterANegativeCountInReleaseBuilds) {
  ScoresImp scores = Custom3();

  scores.Resize(-1);

  EXPECT_GE(scores.GetNumClasses(), 0);
}
#endif

}  // namespace
}  // namespace tree::testing
