#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "testing/failing_allocator.h"
#include "testing/virtual_slot.h"
#include "tree/nodes.h"

namespace tree {
namespace {

using Flags = RegInfoImp::StatisticStorageFlags;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr Flags kStdDev = RegInfoImp::StoreStdDev;
constexpr Flags kPrediction = RegInfoImp::StorePrediction;
constexpr Flags kUnweightedCount = RegInfoImp::StoreUnweightedCount;

constexpr Flags kNoSingleFlags[] = {Flags(0),   Flags(3),   Flags(5),        Flags(255),
                                    Flags(256), Flags(257), Flags(1u << 31), Flags(~0u)};

// Every field set, and every statistic that a getter reads.
RegInfoImp Filled() {
  RegInfoImp info;
  info.SetCount(40.0);
  info.SetMean(2.5);
  info.SetMinimum(-1.0);
  info.SetMaximum(7.0);
  info.SetNumBins(2);
  info.SetBinSize(0, 30.0);
  info.SetBinSize(1, 10.0);
  info.SetExtendedStatistic(kStdDev, 1.5);
  info.SetExtendedStatistic(kPrediction, 2.75);
  info.SetExtendedStatistic(kUnweightedCount, 38.0);
  return info;
}

void ExpectNew(RegInfoImp const& info) {
  EXPECT_EQ(info.GetCount(), 0.0);
  EXPECT_EQ(info.GetMean(), 0.0);
  EXPECT_EQ(info.GetMinimum(), kInfinity);
  EXPECT_EQ(info.GetMaximum(), -kInfinity);
  EXPECT_EQ(info.GetStdDev(), 0.0);
  EXPECT_EQ(info.GetPrediction(), 0.0);
  EXPECT_EQ(info.GetUnweightedCount(), 0.0);
  EXPECT_EQ(info.GetNumBins(), 0);
  for (unsigned int bit = 1; bit <= 128; bit <<= 1) {
    EXPECT_EQ(info.GetExtendedStatisticPos(Flags(bit)), -1) << bit;
  }
}

TEST(RegInfoImp, StartsWithoutCasesOverAnEmptyRange) { ExpectNew(RegInfoImp()); }

TEST(RegInfoImp, GoesBackToItsStartWhenCleared) {
  RegInfoImp info = Filled();

  info.Clear();

  ExpectNew(info);
  EXPECT_TRUE(info == RegInfoImp());
}

TEST(RegInfoImp, IsReadThroughItsAbstractClass) {
  RegInfoImp const info = Filled();
  RegInfo const& read = info;

  EXPECT_EQ(read.GetMean(), 2.5);
  EXPECT_EQ(read.GetMinimum(), -1.0);
  EXPECT_EQ(read.GetMaximum(), 7.0);
  EXPECT_EQ(read.GetStdDev(), 1.5);
  EXPECT_EQ(read.GetPrediction(), 2.75);
  EXPECT_EQ(read.GetNumBins(), 2);
  EXPECT_EQ(read.GetBinSize(1), 10.0);
  EXPECT_EQ(read.GetBinLeftEndPoint(1), 3.0);
  EXPECT_EQ(read.GetBinRightEndPoint(1), 7.0);
  static_assert(std::is_abstract_v<RegInfo>);
  static_assert(std::has_virtual_destructor_v<RegInfo>);
}

#if TREE_HAS_SLOTS
TEST(RegInfoImp, KeepsTheOrderOfItsVirtualOperations) {
  using testing::kFirstSlot;
  using testing::VirtualSlot;

  EXPECT_EQ(VirtualSlot(&RegInfo::GetMean), kFirstSlot);
  EXPECT_EQ(VirtualSlot(&RegInfo::GetMinimum), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(&RegInfo::GetMaximum), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(&RegInfo::GetStdDev), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(&RegInfo::GetPrediction), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(&RegInfo::GetNumBins), kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(&RegInfo::GetBinSize), kFirstSlot + 6);
  EXPECT_EQ(VirtualSlot(&RegInfo::GetBinLeftEndPoint), kFirstSlot + 7);
  EXPECT_EQ(VirtualSlot(&RegInfo::GetBinRightEndPoint), kFirstSlot + 8);
  EXPECT_EQ(VirtualSlot(&RegInfoImp::GetCount), kFirstSlot + 9);
  EXPECT_EQ(VirtualSlot(&RegInfoImp::GetUnweightedCount), kFirstSlot + 10);
  EXPECT_EQ(VirtualSlot(&RegInfoImp::SetCount), kFirstSlot + 11);
  EXPECT_EQ(VirtualSlot(&RegInfoImp::SetMean), -1);
}
#endif

TEST(RegInfoImp, NumbersItsStorageFlagsAsSingleBits) {
  static_assert(std::is_same_v<std::underlying_type_t<Flags>, unsigned int>);
  EXPECT_EQ(RegInfoImp::StoreStdDev, 1u);
  EXPECT_EQ(RegInfoImp::StorePrediction, 2u);
  EXPECT_EQ(RegInfoImp::StoreUnweightedCount, 4u);
}

TEST(RegInfoImp, StoresEachNumberInItsOwnField) {
  RegInfoImp info;

  info.SetCount(1.0);
  info.SetMean(2.0);
  info.SetMinimum(30.0);
  info.SetMaximum(-4.0);

  EXPECT_EQ(info.GetCount(), 1.0);
  EXPECT_EQ(info.GetMean(), 2.0);
  EXPECT_EQ(info.GetMinimum(), 30.0);
  EXPECT_EQ(info.GetMaximum(), -4.0);
}

TEST(RegInfoImp, KeepsBinsThatStayWhenTheirNumberChanges) {
  RegInfoImp info = Filled();

  info.SetNumBins(1);
  info.SetNumBins(3);

  EXPECT_EQ(info.GetNumBins(), 3);
  EXPECT_EQ(info.GetBinSize(0), 30.0);
  EXPECT_EQ(info.GetBinSize(1), 0.0);
  EXPECT_EQ(info.GetBinSize(2), 0.0);
}

TEST(RegInfoImp, TakesNegativeNumberOfBinsForNone) {
  RegInfoImp info = Filled();

  info.SetNumBins(-1);

  EXPECT_EQ(info.GetNumBins(), 0);
}

TEST(RegInfoImp, DividesItsRangeIntoBinsOfEqualWidth) {
  RegInfoImp info;
  info.SetMinimum(0.0);
  info.SetMaximum(10.0);
  info.SetNumBins(4);

  EXPECT_EQ(info.GetBinLeftEndPoint(0), 0.0);
  EXPECT_EQ(info.GetBinRightEndPoint(0), 2.5);
  EXPECT_EQ(info.GetBinLeftEndPoint(1), 2.5);
  EXPECT_EQ(info.GetBinRightEndPoint(1), 5.0);
  EXPECT_EQ(info.GetBinLeftEndPoint(3), 7.5);
  EXPECT_EQ(info.GetBinRightEndPoint(3), 10.0);
}

TEST(RegInfoImp, StartsItsBinsAtTheMinimum) {
  RegInfoImp info;
  info.SetMinimum(-3.0);
  info.SetMaximum(5.0);
  info.SetNumBins(2);

  EXPECT_EQ(info.GetBinLeftEndPoint(0), -3.0);
  EXPECT_EQ(info.GetBinRightEndPoint(0), 1.0);
  EXPECT_EQ(info.GetBinRightEndPoint(1), 5.0);
}

TEST(RegInfoImp, MultipliesBeforeItDividesForEndPoints) {
  RegInfoImp info;
  info.SetMinimum(0.0);
  info.SetMaximum(1.0);
  info.SetNumBins(49);

  // 1 / 49 * 49 would give 0.9999999999999999.
  EXPECT_EQ(info.GetBinRightEndPoint(48), 1.0);
  EXPECT_EQ(info.GetBinLeftEndPoint(49), 1.0);
}

TEST(RegInfoImp, AddsMinimumLastForEndPoints) {
  RegInfoImp info;
  info.SetMinimum(1e308);
  info.SetMaximum(1e308);
  info.SetNumBins(100);

  // A hundred times the minimum would be infinite.
  EXPECT_EQ(info.GetBinRightEndPoint(0), 1e308);
}

TEST(RegInfoImp, HasNoFiniteEndPointsWithoutBins) {
  RegInfoImp info;
  info.SetMinimum(0.0);
  info.SetMaximum(10.0);

  EXPECT_FALSE(std::isfinite(info.GetBinLeftEndPoint(0)));
  EXPECT_FALSE(std::isfinite(info.GetBinRightEndPoint(0)));
  EXPECT_FALSE(std::isfinite(RegInfoImp().GetBinLeftEndPoint(1)));
}

TEST(RegInfoImp, FallsBackOnWhatItHasWithoutOptionalStatistics) {
  RegInfoImp info;
  info.SetMean(3.0);
  info.SetCount(12.0);

  EXPECT_EQ(info.GetStdDev(), 0.0);
  EXPECT_EQ(info.GetPrediction(), 3.0);
  EXPECT_EQ(info.GetUnweightedCount(), 12.0);
}

TEST(RegInfoImp, AnswersByItsOptionalStatisticsWhenSet) {
  RegInfoImp info;
  info.SetMean(3.0);
  info.SetCount(12.0);

  info.SetExtendedStatistic(kUnweightedCount, 11.0);
  info.SetExtendedStatistic(kPrediction, 4.0);
  info.SetExtendedStatistic(kStdDev, 0.5);

  EXPECT_EQ(info.GetStdDev(), 0.5);
  EXPECT_EQ(info.GetPrediction(), 4.0);
  EXPECT_EQ(info.GetUnweightedCount(), 11.0);
  EXPECT_EQ(info.GetMean(), 3.0);
  EXPECT_EQ(info.GetCount(), 12.0);
}

TEST(RegInfoImp, PacksStatisticsInOrderOfTheirFlags) {
  RegInfoImp info;

  info.SetExtendedStatistic(kUnweightedCount, 9.0);
  info.SetExtendedStatistic(kStdDev, 1.5);

  EXPECT_EQ(info.GetExtendedStatisticPos(kStdDev), 0);
  EXPECT_EQ(info.GetExtendedStatisticPos(kUnweightedCount), 1);
  EXPECT_EQ(info.GetExtendedStatisticPos(kPrediction), -1);
  EXPECT_EQ(info.GetExtendedStatisticInsertionPos(kPrediction), 1);
  EXPECT_EQ(info.GetExtendedStatisticInsertionPos(kStdDev), -1);
  EXPECT_EQ(info.GetExtendedStatisticInsertionPos(kUnweightedCount), -1);
  EXPECT_EQ(info.GetExtendedStatistic(kStdDev), 1.5);
  EXPECT_EQ(info.GetExtendedStatistic(kUnweightedCount), 9.0);
}

TEST(RegInfoImp, InsertsFirstStatisticAtPositionZero) {
  RegInfoImp const info;

  for (unsigned int bit = 1; bit <= 128; bit <<= 1) {
    EXPECT_EQ(info.GetExtendedStatisticInsertionPos(Flags(bit)), 0) << bit;
  }
}

TEST(RegInfoImp, KeepsEachOfItsEightStatisticsInWhateverOrderTheyCome) {
  unsigned int const orders[][8] = {
      {1, 2, 4, 8, 16, 32, 64, 128}, {128, 64, 32, 16, 8, 4, 2, 1}, {16, 1, 128, 4, 64, 2, 32, 8}};
  for (auto const& order : orders) {
    RegInfoImp info;
    unsigned int present = 0;
    for (unsigned int const bit : order) {
      info.SetExtendedStatistic(Flags(bit), bit * 10.0);
      present |= bit;

      int below = 0;
      for (unsigned int each = 1; each <= 128; each <<= 1) {
        SCOPED_TRACE(each);
        bool const held = (present & each) != 0;
        double value = -1.0;
        EXPECT_EQ(info.GetExtendedStatisticPos(Flags(each)), held ? below : -1);
        EXPECT_EQ(info.GetExtendedStatisticInsertionPos(Flags(each)), held ? -1 : below);
        EXPECT_EQ(info.GetExtendedStatistic(Flags(each), &value), held);
        EXPECT_EQ(value, held ? each * 10.0 : -1.0);
        below += held ? 1 : 0;
      }
    }
  }
}

TEST(RegInfoImp, OverwritesStatisticThatIsSet) {
  RegInfoImp info;
  info.SetExtendedStatistic(kStdDev, 1.0);
  info.SetExtendedStatistic(kUnweightedCount, 5.0);

  info.SetExtendedStatistic(kStdDev, 2.0);

  EXPECT_EQ(info.GetStdDev(), 2.0);
  EXPECT_EQ(info.GetExtendedStatisticPos(kUnweightedCount), 1);
  EXPECT_EQ(info.GetUnweightedCount(), 5.0);
}

TEST(RegInfoImp, LeavesTargetAloneWhenStatisticIsAbsent) {
  RegInfoImp info;
  info.SetExtendedStatistic(kPrediction, 5.0);
  double value = 77.0;

  EXPECT_FALSE(info.GetExtendedStatistic(kStdDev, &value));
  EXPECT_EQ(value, 77.0);

  EXPECT_TRUE(info.GetExtendedStatistic(kPrediction, &value));
  EXPECT_EQ(value, 5.0);
}

TEST(RegInfoImp, ReadsReservedStatisticsByNoGetter) {
  RegInfoImp info;
  info.SetMean(3.0);
  info.SetCount(12.0);

  for (unsigned int bit = 8; bit <= 128; bit <<= 1) info.SetExtendedStatistic(Flags(bit), 99.0);

  EXPECT_EQ(info.GetStdDev(), 0.0);
  EXPECT_EQ(info.GetPrediction(), 3.0);
  EXPECT_EQ(info.GetUnweightedCount(), 12.0);
}

TEST(RegInfoImp, KnowsNoPositionForWhatIsNoSingleFlag) {
  RegInfoImp const filled = Filled();
  RegInfoImp const empty;

  for (Flags const flag : kNoSingleFlags) {
    SCOPED_TRACE(static_cast<unsigned int>(flag));
    EXPECT_EQ(filled.GetExtendedStatisticPos(flag), -1);
    EXPECT_EQ(filled.GetExtendedStatisticInsertionPos(flag), -1);
    EXPECT_EQ(empty.GetExtendedStatisticPos(flag), -1);
    EXPECT_EQ(empty.GetExtendedStatisticInsertionPos(flag), -1);
  }
}

TEST(RegInfoImp, IgnoresStatisticOfWhatIsNoSingleFlag) {
  for (Flags const flag : kNoSingleFlags) {
    SCOPED_TRACE(static_cast<unsigned int>(flag));
    RegInfoImp info;

    info.SetExtendedStatistic(flag, 5.0);

    ExpectNew(info);
    double value = 77.0;
    EXPECT_FALSE(info.GetExtendedStatistic(flag, &value));
    EXPECT_EQ(value, 77.0);
  }
}

TEST(RegInfoImp, CopiesEveryField) {
  RegInfoImp source = Filled();
  source.SetExtendedStatistic(RegInfoImp::StoreReserved3, 6.0);

  RegInfoImp const constructed(source);
  RegInfoImp assigned;
  assigned.SetNumBins(5);
  assigned.SetExtendedStatistic(RegInfoImp::StoreReserved1, 1.0);
  RegInfoImp& result = assigned = source;
  RegInfoImp filled;
  filled.CopyData(source);

  EXPECT_EQ(&result, &assigned);
  RegInfoImp const* const copies[] = {&constructed, &assigned, &filled};
  for (RegInfoImp const* const copy : copies) {
    EXPECT_EQ(copy->GetCount(), 40.0);
    EXPECT_EQ(copy->GetMean(), 2.5);
    EXPECT_EQ(copy->GetMinimum(), -1.0);
    EXPECT_EQ(copy->GetMaximum(), 7.0);
    EXPECT_EQ(copy->GetNumBins(), 2);
    EXPECT_EQ(copy->GetBinSize(0), 30.0);
    EXPECT_EQ(copy->GetBinSize(1), 10.0);
    EXPECT_EQ(copy->GetStdDev(), 1.5);
    EXPECT_EQ(copy->GetPrediction(), 2.75);
    EXPECT_EQ(copy->GetUnweightedCount(), 38.0);
    EXPECT_EQ(copy->GetExtendedStatistic(RegInfoImp::StoreReserved3), 6.0);
    EXPECT_EQ(copy->GetExtendedStatisticPos(RegInfoImp::StoreReserved1), -1);
    EXPECT_TRUE(*copy == source);
  }
}

TEST(RegInfoImp, SharesNothingWithItsCopy) {
  RegInfoImp const source = Filled();
  RegInfoImp copy(source);

  copy.SetBinSize(0, 99.0);
  copy.SetExtendedStatistic(kStdDev, 99.0);
  copy.SetMean(99.0);

  EXPECT_TRUE(source == Filled());
}

TEST(RegInfoImp, StoresStandardDeviationOfZeroInCopyOfWhatHasNone) {
  RegInfoImp source;
  source.SetExtendedStatistic(kPrediction, 5.0);

  RegInfoImp const constructed(source);
  RegInfoImp assigned;
  assigned = source;

  EXPECT_EQ(source.GetExtendedStatisticPos(kStdDev), -1);
  RegInfoImp const* const copies[] = {&constructed, &assigned};
  for (RegInfoImp const* const copy : copies) {
    double value = -1.0;
    EXPECT_TRUE(copy->GetExtendedStatistic(kStdDev, &value));
    EXPECT_EQ(value, 0.0);
    EXPECT_EQ(copy->GetExtendedStatisticPos(kPrediction), 1);
    EXPECT_EQ(copy->GetPrediction(), 5.0);
    EXPECT_TRUE(*copy == source);
    EXPECT_TRUE(source == *copy);
  }
}

TEST(RegInfoImp, StoresNoOtherStatisticInCopyOfWhatHasNone) {
  RegInfoImp source;
  source.SetMean(2.0);
  source.SetCount(8.0);

  RegInfoImp copy(source);
  copy.SetMean(3.0);
  copy.SetCount(9.0);

  EXPECT_EQ(copy.GetPrediction(), 3.0);
  EXPECT_EQ(copy.GetUnweightedCount(), 9.0);
}

TEST(RegInfoImp, StaysAsItIsWhenAssignedToItself) {
  RegInfoImp info;
  info.SetExtendedStatistic(kPrediction, 5.0);
  RegInfoImp const& itself = info;

  info = itself;

  EXPECT_EQ(info.GetExtendedStatisticPos(kStdDev), -1);
  EXPECT_EQ(info.GetPrediction(), 5.0);
}

TEST(RegInfoImp, EqualsOnlyWhatReadsTheSame) {
  struct Row {
    char const* name;
    void (*change)(RegInfoImp&);
  };
  Row const rows[] = {
      {"mean", [](RegInfoImp& info) { info.SetMean(2.25); }},
      {"minimum", [](RegInfoImp& info) { info.SetMinimum(-2.0); }},
      {"maximum", [](RegInfoImp& info) { info.SetMaximum(8.0); }},
      {"standard deviation", [](RegInfoImp& info) { info.SetExtendedStatistic(kStdDev, 1.0); }},
      {"prediction", [](RegInfoImp& info) { info.SetExtendedStatistic(kPrediction, 3.0); }},
      {"number of bins", [](RegInfoImp& info) { info.SetNumBins(3); }},
      {"first bin", [](RegInfoImp& info) { info.SetBinSize(0, 29.0); }},
      {"last bin", [](RegInfoImp& info) { info.SetBinSize(1, 11.0); }},
      {"unweighted count",
       [](RegInfoImp& info) { info.SetExtendedStatistic(kUnweightedCount, 39.0); }},
      {"count", [](RegInfoImp& info) { info.SetCount(41.0); }},
      {"tiny difference", [](RegInfoImp& info) { info.SetMean(2.5000000000000004); }},
  };
  RegInfoImp const original = Filled();
  EXPECT_TRUE(original == Filled());
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    RegInfoImp changed = Filled();

    row.change(changed);

    EXPECT_FALSE(changed == original);
    EXPECT_FALSE(original == changed);
    EXPECT_TRUE(changed == changed);
  }
}

TEST(RegInfoImp, EqualsWhateverStoresTheSameAnswers) {
  RegInfoImp plain;
  plain.SetMean(2.0);
  plain.SetCount(8.0);
  RegInfoImp stored = plain;

  stored.SetExtendedStatistic(kPrediction, 2.0);
  stored.SetExtendedStatistic(kUnweightedCount, 8.0);
  stored.SetExtendedStatistic(RegInfoImp::StoreReserved2, 123.0);

  EXPECT_TRUE(plain == stored);
  EXPECT_TRUE(stored == plain);
}

TEST(RegInfoImp, NeverEqualsWhatReadsAsNaN) {
  struct Row {
    char const* name;
    void (*change)(RegInfoImp&);
  };
  Row const rows[] = {
      {"mean", [](RegInfoImp& info) { info.SetMean(kNaN); }},
      {"minimum", [](RegInfoImp& info) { info.SetMinimum(kNaN); }},
      {"maximum", [](RegInfoImp& info) { info.SetMaximum(kNaN); }},
      {"standard deviation", [](RegInfoImp& info) { info.SetExtendedStatistic(kStdDev, kNaN); }},
      {"prediction", [](RegInfoImp& info) { info.SetExtendedStatistic(kPrediction, kNaN); }},
      {"bin", [](RegInfoImp& info) { info.SetBinSize(1, kNaN); }},
      {"unweighted count",
       [](RegInfoImp& info) { info.SetExtendedStatistic(kUnweightedCount, kNaN); }},
      {"count", [](RegInfoImp& info) { info.SetCount(kNaN); }},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    RegInfoImp info = Filled();

    row.change(info);

    EXPECT_FALSE(info == info);
  }
}

TEST(RegInfoImp, ComparesInfinitiesAsEqual) {
  RegInfoImp a;
  RegInfoImp b;

  a.SetMean(kInfinity);
  b.SetMean(kInfinity);
  EXPECT_TRUE(a == b);

  b.SetMean(-kInfinity);
  EXPECT_FALSE(a == b);
}

TEST(RegInfoImp, StaysAsItIsWhenMemoryRunsOut) {
  RegInfoImp small;
  small.SetNumBins(1);
  small.SetExtendedStatistic(kPrediction, 1.0);
  RegInfoImp const before = small;
  RegInfoImp const large = Filled();
  long const live = testing::CountLiveAllocations();

  auto const expectUnchangedAfter = [&](auto const& operation) {
    return testing::WithEveryAllocationFailing([&] {
      RegInfoImp info(small);
      try {
        operation(info);
      } catch (std::bad_alloc const&) {
        EXPECT_TRUE(info == before);
        EXPECT_EQ(info.GetExtendedStatisticPos(kStdDev), 0);
        EXPECT_EQ(info.GetExtendedStatisticPos(kPrediction), 1);
        EXPECT_EQ(info.GetExtendedStatisticPos(kUnweightedCount), -1);
        throw;
      }
    });
  };
  long const copying = testing::WithEveryAllocationFailing([&] { RegInfoImp const copy(small); });
  ASSERT_EQ(copying, 2);  // bins and statistics
  EXPECT_EQ(expectUnchangedAfter([&](RegInfoImp& info) { info = large; }), copying + 2);
  EXPECT_EQ(expectUnchangedAfter([](RegInfoImp& info) { info.SetNumBins(50); }), copying + 1);
  EXPECT_EQ(expectUnchangedAfter(
                [](RegInfoImp& info) { info.SetExtendedStatistic(kUnweightedCount, 5.0); }),
            copying + 1);
  EXPECT_EQ(testing::CountLiveAllocations(), live);
}

#ifndef NDEBUG
TEST(RegInfoImpDeathTest, StopsAtBinOrStatisticItDoesNotHave) {
  RegInfoImp info = Filled();

  EXPECT_DEATH(static_cast<void>(info.GetBinSize(2)),
               "RegInfoImp::GetBinSize: index 2 is out of range");
  EXPECT_DEATH(info.SetBinSize(-1, 0.0), "RegInfoImp::SetBinSize: index -1 is out of range");
  EXPECT_DEATH(static_cast<void>(info.GetExtendedStatistic(RegInfoImp::StoreReserved1)),
               "RegInfoImp::GetExtendedStatistic: the statistic is not set");
}
#endif

}  // namespace
}  // namespace tree
