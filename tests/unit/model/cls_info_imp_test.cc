#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>

#include "testing/failing_allocator.h"
#include "testing/virtual_slot.h"
#include "tree/nodes.h"
#include "tree/support.h"

namespace tree {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Three classes with counts 1, 2, 5, probabilities 0.1, 0.2, 0.7, and every other field set.
ClsInfoImp ThreeClasses() {
  ClsInfoImp info;
  info.SetNumClasses(3);
  double const counts[] = {1.0, 2.0, 5.0};
  double const probabilities[] = {0.1, 0.2, 0.7};
  for (int index = 0; index < 3; ++index) {
    info.SetClassCount(index, counts[index]);
    info.SetClassProbability(index, probabilities[index]);
  }
  info.SetPrediction(2);
  info.SetUnweightedCount(7.0);
  info.SetPercentSize(12.5);
  return info;
}

// Counts alone. Dropping the classes keeps the room for them, and writing a count there brings the
// class back without a probability.
ClsInfoImp WithoutProbabilities(int numClasses) {
  ClsInfoImp info;
  info.SetNumClasses(numClasses);
  info.SetNumClasses(0);
  for (int index = 0; index < numClasses; ++index) info.SetClassCount(index, index + 1.0);
  return info;
}

TEST(ClsInfoImp, StartsWithoutClassesAndCases) {
  ClsInfoImp const info;

  EXPECT_EQ(info.GetNumClasses(), 0);
  EXPECT_EQ(info.GetCount(), 0.0);
  EXPECT_EQ(info.GetUnweightedCount(), 0.0);
  EXPECT_EQ(info.GetClassPercent(0), 0.0);
  EXPECT_EQ(info.GetClassProbability(0), -1.0);
  EXPECT_EQ(info.GetPrediction(), 0);
  EXPECT_EQ(info.GetPercentSize(), systemMissingValue());
}

TEST(ClsInfoImp, IsReadThroughItsAbstractClass) {
  ClsInfoImp const info = ThreeClasses();
  ClsInfo const& read = info;

  EXPECT_EQ(read.GetPrediction(), 2);
  EXPECT_EQ(read.GetClassCount(1), 2.0);
  EXPECT_EQ(read.GetClassPercent(1), 0.25);
  EXPECT_EQ(read.GetClassProbability(1), 0.2);
  EXPECT_EQ(read.GetNumClasses(), 3);
  static_assert(std::is_abstract_v<ClsInfo>);
  static_assert(std::has_virtual_destructor_v<ClsInfo>);
}

#if TREE_HAS_SLOTS
TEST(ClsInfoImp, KeepsTheOrderOfItsVirtualOperations) {
  using testing::kFirstSlot;
  using testing::VirtualSlot;

  EXPECT_EQ(VirtualSlot(&ClsInfo::GetPrediction), kFirstSlot);
  EXPECT_EQ(VirtualSlot(&ClsInfo::GetClassCount), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(&ClsInfo::GetClassPercent), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(&ClsInfo::GetClassProbability), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(&ClsInfo::GetNumClasses), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(&ClsInfoImp::GetPercentSize), kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(&ClsInfoImp::GetUnweightedCount), kFirstSlot + 6);
  EXPECT_EQ(VirtualSlot(&ClsInfoImp::GetCount), kFirstSlot + 7);
  EXPECT_EQ(VirtualSlot(&ClsInfoImp::SetPrediction), kFirstSlot + 8);
  EXPECT_EQ(VirtualSlot(&ClsInfoImp::SetUnweightedCount), kFirstSlot + 9);
  EXPECT_EQ(VirtualSlot(&ClsInfoImp::SetPercentSize), kFirstSlot + 10);
  EXPECT_EQ(VirtualSlot(&ClsInfoImp::SetNumClasses), -1);
  EXPECT_EQ(VirtualSlot(&ClsInfoImp::Clone), -1);
}
#endif

TEST(ClsInfoImp, StoresItsPredictionAsGiven) {
  ClsInfoImp info;

  for (int const prediction : {2, -7, std::numeric_limits<int>::max()}) {
    info.SetPrediction(prediction);

    EXPECT_EQ(info.GetPrediction(), prediction);
  }
}

TEST(ClsInfoImp, StoresUnweightedCountAndPercentSizeAsGiven) {
  ClsInfoImp info = ThreeClasses();

  for (double const value : {0.0, -3.5, 250.0, kInfinity}) {
    info.SetUnweightedCount(value);
    info.SetPercentSize(value + 1.0);

    EXPECT_EQ(info.GetUnweightedCount(), value);
    EXPECT_EQ(info.GetPercentSize(), value + 1.0);
  }
  EXPECT_EQ(info.GetCount(), 8.0);
}

TEST(ClsInfoImp, DividesClassCountByAllForItsPercent) {
  ClsInfoImp info;
  info.SetNumClasses(2);
  info.SetClassCount(0, 3.0);
  info.SetClassCount(1, 1.0);

  EXPECT_EQ(info.GetCount(), 4.0);
  EXPECT_EQ(info.GetClassPercent(0), 0.75);
  EXPECT_EQ(info.GetClassPercent(1), 0.25);
}

TEST(ClsInfoImp, GivesPercentZeroUnlessThereAreCases) {
  struct Row {
    char const* name;
    double first;
    double second;
    double percentOfFirst;
  };
  Row const rows[] = {
      {"no cases", 0.0, 0.0, 0.0},
      {"counts that cancel out", 2.0, -2.0, 0.0},
      {"less than no cases", 1.0, -3.0, 0.0},
      {"a NaN among the counts", 1.0, kNaN, 0.0},
      {"the smallest number of cases", std::numeric_limits<double>::denorm_min(), 0.0, 1.0},
      {"infinitely many cases", 1.0, kInfinity, 0.0},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    ClsInfoImp info;
    info.SetNumClasses(2);
    info.SetClassCount(0, row.first);
    info.SetClassCount(1, row.second);

    EXPECT_EQ(info.GetClassPercent(0), row.percentOfFirst);
  }
}

TEST(ClsInfoImp, AddsCountsInIndexOrderFromZero) {
  ClsInfoImp info;
  info.SetNumClasses(3);
  info.SetClassCount(0, 1e16);
  info.SetClassCount(1, 1.0);
  info.SetClassCount(2, -1e16);

  // 1e16 + 1 rounds to 1e16, so the 1 is lost in this order and in no other.
  EXPECT_EQ(info.GetCount(), 0.0);

  info.SetClassCount(1, -1e16);
  info.SetClassCount(2, 1.0);

  EXPECT_EQ(info.GetCount(), 1.0);
}

TEST(ClsInfoImp, AnswersMinusOneForProbabilityOutOfRange) {
  ClsInfoImp const info = ThreeClasses();

  for (int const index :
       {-1, 3, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_EQ(info.GetClassProbability(index), -1.0) << index;
  }
}

TEST(ClsInfoImp, HasZeroCountAndProbabilityForNewClass) {
  ClsInfoImp info;

  info.SetNumClasses(2);

  EXPECT_EQ(info.GetNumClasses(), 2);
  for (int const index : {0, 1}) {
    EXPECT_EQ(info.GetClassCount(index), 0.0);
    EXPECT_EQ(info.GetClassProbability(index), 0.0);
  }
}

TEST(ClsInfoImp, KeepsClassesThatStayAndForgetsDroppedOnes) {
  ClsInfoImp info = ThreeClasses();

  info.SetNumClasses(1);
  info.SetNumClasses(4);

  EXPECT_EQ(info.GetNumClasses(), 4);
  EXPECT_EQ(info.GetClassCount(0), 1.0);
  EXPECT_EQ(info.GetClassProbability(0), 0.1);
  for (int const index : {1, 2, 3}) {
    EXPECT_EQ(info.GetClassCount(index), 0.0) << index;
    EXPECT_EQ(info.GetClassProbability(index), 0.0) << index;
  }
}

TEST(ClsInfoImp, KeepsEverythingWhenNumberOfClassesStays) {
  ClsInfoImp info = ThreeClasses();

  info.SetNumClasses(3);

  EXPECT_TRUE(info == ThreeClasses());
}

TEST(ClsInfoImp, RaisesNumberOfClassesByCountAtTheEnd) {
  ClsInfoImp info = ThreeClasses();
  info.SetNumClasses(1);

  info.SetClassCount(2, 9.0);

  EXPECT_EQ(info.GetNumClasses(), 3);
  EXPECT_EQ(info.GetClassCount(1), 0.0);
  EXPECT_EQ(info.GetClassCount(2), 9.0);
  EXPECT_EQ(info.GetClassProbability(0), 0.1);
  EXPECT_EQ(info.GetClassProbability(1), -1.0);
}

TEST(ClsInfoImp, ReadsCountsWithoutChangingTheNumberOfClasses) {
  ClsInfoImp const info = ThreeClasses();

  for (int index = 0; index < 3; ++index) static_cast<void>(info.GetClassCount(index));

  EXPECT_EQ(info.GetNumClasses(), 3);
}

TEST(ClsInfoImp, SizesProbabilitiesWhenTheFirstOneIsSet) {
  ClsInfoImp info = WithoutProbabilities(3);
  ASSERT_EQ(info.GetNumClasses(), 3);
  ASSERT_EQ(info.GetClassProbability(0), -1.0);

  info.SetClassProbability(1, 0.4);

  EXPECT_EQ(info.GetClassProbability(0), 0.0);
  EXPECT_EQ(info.GetClassProbability(1), 0.4);
  EXPECT_EQ(info.GetClassProbability(2), 0.0);
  EXPECT_EQ(info.GetClassProbability(3), -1.0);
}

TEST(ClsInfoImp, KeepsOtherProbabilitiesWhenOneIsSet) {
  ClsInfoImp info = ThreeClasses();

  info.SetClassProbability(1, 0.25);

  EXPECT_EQ(info.GetClassProbability(0), 0.1);
  EXPECT_EQ(info.GetClassProbability(1), 0.25);
  EXPECT_EQ(info.GetClassProbability(2), 0.7);
}

TEST(ClsInfoImp, ClonesEveryField) {
  ClsInfoImp const source = ThreeClasses();

  std::unique_ptr<ClsInfoImp> const clone(source.Clone());

  EXPECT_NE(clone.get(), &source);
  EXPECT_TRUE(*clone == source);
  EXPECT_EQ(clone->GetPrediction(), 2);
  EXPECT_EQ(clone->GetClassCount(2), 5.0);
  EXPECT_EQ(clone->GetClassProbability(2), 0.7);
  EXPECT_EQ(clone->GetPercentSize(), 12.5);
  EXPECT_EQ(clone->GetUnweightedCount(), 7.0);
}

TEST(ClsInfoImp, SharesNothingWithItsClone) {
  ClsInfoImp const source = ThreeClasses();
  std::unique_ptr<ClsInfoImp> const clone(source.Clone());

  clone->SetClassCount(0, 100.0);
  clone->SetClassProbability(0, 0.9);
  clone->SetNumClasses(1);

  EXPECT_TRUE(source == ThreeClasses());
}

TEST(ClsInfoImp, CopiesByConstructorAsByClone) {
  ClsInfoImp const source = WithoutProbabilities(2);

  ClsInfoImp const copy(source);
  std::unique_ptr<ClsInfoImp> const clone(source.Clone());

  EXPECT_TRUE(copy == *clone);
  EXPECT_EQ(copy.GetClassProbability(1), -1.0);
}

TEST(ClsInfoImp, GivesCopyOfObjectWithoutProbabilitiesOneOfMinusOnePerClass) {
  ClsInfoImp const source = WithoutProbabilities(2);
  ClsInfoImp copy;

  copy = source;

  EXPECT_EQ(copy.GetClassCount(1), 2.0);
  EXPECT_EQ(copy.GetClassProbability(0), -1.0);
  EXPECT_EQ(copy.GetClassProbability(1), -1.0);
  EXPECT_FALSE(copy == source);

  // Probabilities are there already, so the others stay -1.0 when one is set.
  copy.SetClassProbability(0, 0.5);

  EXPECT_EQ(copy.GetClassProbability(1), -1.0);
}

TEST(ClsInfoImp, AssignsOverMoreClassesAndOverFewer) {
  for (int const numClasses : {0, 1, 3, 8}) {
    SCOPED_TRACE(numClasses);
    ClsInfoImp target;
    target.SetNumClasses(numClasses);
    for (int index = 0; index < numClasses; ++index) {
      target.SetClassCount(index, 50.0);
      target.SetClassProbability(index, 0.5);
    }

    ClsInfoImp& result = target = ThreeClasses();

    EXPECT_EQ(&result, &target);
    EXPECT_TRUE(target == ThreeClasses());
    EXPECT_EQ(target.GetNumClasses(), 3);
    EXPECT_EQ(target.GetClassProbability(3), -1.0);
  }
}

TEST(ClsInfoImp, StaysAsItIsWhenAssignedToItself) {
  ClsInfoImp info = WithoutProbabilities(2);
  ClsInfoImp const& itself = info;

  info = itself;

  EXPECT_EQ(info.GetClassCount(1), 2.0);
  EXPECT_EQ(info.GetClassProbability(0), -1.0);
  info.SetClassProbability(0, 0.5);
  EXPECT_EQ(info.GetClassProbability(1), 0.0);  // there was no probability, not one of -1.0
}

TEST(ClsInfoImp, EqualsOnlyWhatAgreesInEveryField) {
  struct Row {
    char const* name;
    void (*change)(ClsInfoImp&);
  };
  Row const rows[] = {
      {"unweighted count", [](ClsInfoImp& info) { info.SetUnweightedCount(7.5); }},
      {"number of classes", [](ClsInfoImp& info) { info.SetNumClasses(2); }},
      {"first count", [](ClsInfoImp& info) { info.SetClassCount(0, 1.5); }},
      {"last count", [](ClsInfoImp& info) { info.SetClassCount(2, 5.5); }},
      {"first probability", [](ClsInfoImp& info) { info.SetClassProbability(0, 0.15); }},
      {"last probability", [](ClsInfoImp& info) { info.SetClassProbability(2, 0.75); }},
      {"prediction", [](ClsInfoImp& info) { info.SetPrediction(1); }},
      {"percent size", [](ClsInfoImp& info) { info.SetPercentSize(13.0); }},
      {"tiny difference", [](ClsInfoImp& info) { info.SetUnweightedCount(7.000000000000001); }},
  };
  ClsInfoImp const original = ThreeClasses();
  EXPECT_TRUE(original == ThreeClasses());
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    ClsInfoImp changed = ThreeClasses();

    row.change(changed);

    EXPECT_FALSE(changed == original);
    EXPECT_FALSE(original == changed);
    EXPECT_TRUE(changed == changed);
  }
}

TEST(ClsInfoImp, TellsMissingProbabilitiesFromZeroes) {
  ClsInfoImp zeroes;
  zeroes.SetNumClasses(1);
  zeroes.SetClassCount(0, 1.0);

  EXPECT_FALSE(WithoutProbabilities(1) == zeroes);
  EXPECT_FALSE(zeroes == WithoutProbabilities(1));
}

TEST(ClsInfoImp, NeverEqualsWhatHoldsNaN) {
  struct Row {
    char const* name;
    void (*change)(ClsInfoImp&);
  };
  Row const rows[] = {
      {"unweighted count", [](ClsInfoImp& info) { info.SetUnweightedCount(kNaN); }},
      {"count", [](ClsInfoImp& info) { info.SetClassCount(1, kNaN); }},
      {"probability", [](ClsInfoImp& info) { info.SetClassProbability(1, kNaN); }},
      {"percent size", [](ClsInfoImp& info) { info.SetPercentSize(kNaN); }},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    ClsInfoImp info = ThreeClasses();

    row.change(info);

    EXPECT_FALSE(info == info);
  }
}

TEST(ClsInfoImp, TakesNegativeZeroForZero) {
  ClsInfoImp const positive;
  ClsInfoImp negative;

  negative.SetUnweightedCount(-0.0);

  EXPECT_TRUE(positive == negative);
}

TEST(ClsInfoImp, StaysValidAndLeaksNothingWhenMemoryRunsOut) {
  ClsInfoImp const source = ThreeClasses();
  long const live = testing::CountLiveAllocations();

  long const clones = testing::WithEveryAllocationFailing(
      [&source] { std::unique_ptr<ClsInfoImp> const clone(source.Clone()); });
  long const assignments = testing::WithEveryAllocationFailing([&source] {
    ClsInfoImp target;
    try {
      target = source;
    } catch (std::bad_alloc const&) {
      // Whatever was reached, each class can be read.
      for (int index = 0; index < target.GetNumClasses(); ++index) {
        EXPECT_EQ(target.GetClassCount(index), 0.0);
      }
      EXPECT_EQ(target.GetPrediction(), 0);
      throw;
    }
    EXPECT_TRUE(target == source);
  });
  long const resizes = testing::WithEveryAllocationFailing([] {
    ClsInfoImp info;
    info.SetNumClasses(5);
    EXPECT_EQ(info.GetNumClasses(), 5);
    EXPECT_EQ(info.GetClassProbability(4), 0.0);
  });

  EXPECT_EQ(clones, 3);  // the object and two arrays
  EXPECT_EQ(assignments, 2);
  EXPECT_EQ(resizes, 2);
  EXPECT_EQ(testing::CountLiveAllocations(), live);
}

#ifndef NDEBUG
TEST(ClsInfoImpDeathTest, StopsAtClassOutOfRange) {
  ClsInfoImp info = ThreeClasses();

  EXPECT_DEATH(static_cast<void>(info.GetClassCount(3)), "index 3 is out of range");
  EXPECT_DEATH(info.SetClassCount(-1, 1.0), "index -1 is out of range");
  EXPECT_DEATH(info.SetClassProbability(4, 1.0), "index 4 is out of range");
}
#endif

}  // namespace
}  // namespace tree
