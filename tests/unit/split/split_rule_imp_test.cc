#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/debug_death.h"
#include "testing/probe_rule.h"
#include "testing/rule_builder.h"
#include "testing/virtual_slot.h"
#include "tree/split_rules.h"
#include "tree/support.h"

namespace tree::testing {
namespace {

static_assert(std::is_same_v<unsigned int, std::underlying_type_t<SplitRulePropertyFlag>>);
static_assert(std::is_convertible_v<SplitRulePropertyFlag, unsigned int>);  // unscoped
static_assert(SplitRuleCreatedDefault == 1 && SplitRuleCreatedAlternate == 2);
static_assert(SplitRuleMappingsReordered == 4);
static_assert(std::is_same_v<unsigned int, std::underlying_type_t<StatisticFlag>>);
static_assert(std::is_convertible_v<StatisticFlag, unsigned int>);  // unscoped
static_assert(StatisticFlag1 == 1 && StatisticFlag2 == 2 && StatisticFlag3 == 4);
static_assert(StatisticFlag4 == 8 && StatisticFlag5 == 16 && StatisticFlag6 == 32);
static_assert(StatisticFlag7 == 64);

static_assert(std::is_abstract_v<SplitRuleImp> && std::has_virtual_destructor_v<SplitRuleImp>);
using Core = SplitRuleImp;
static_assert(std::is_same_v<int, decltype(std::declval<Core const&>().GetNumChildren())>);
static_assert(std::is_same_v<ValueSet*, decltype(std::declval<Core const&>().GetMappedValues(0))>);
static_assert(std::is_same_v<Core*, decltype(std::declval<Core const&>().Clone())>);
static_assert(std::is_same_v<Core*, decltype(std::declval<Core const&>().EmptyClone())>);
static_assert(std::is_same_v<
              bool, decltype(std::declval<Core&>().CopyMappings(std::declval<Core const&>()))>);
static_assert(std::is_same_v<int, decltype(std::declval<Core const&>().Classify(0.0))>);
static_assert(std::is_same_v<
              int, decltype(std::declval<Core const&>().Compare(std::declval<Core const&>()))>);
static_assert(std::is_same_v<bool, decltype(std::declval<Core const&>().IsOrdered())>);
static_assert(std::is_same_v<void, decltype(std::declval<Core&>().ReorderMappings(
                                       std::declval<std::vector<int> const&>()))>);
static_assert(std::is_same_v<bool, decltype(std::declval<Core&>().AddMappedValues(
                                       std::declval<ValueSet const&>()))>);
static_assert(std::is_same_v<int, decltype(std::declval<Core const&>().GetCreationFlags())>);

StatisticFlag Statistic(unsigned int bits) { return static_cast<StatisticFlag>(bits); }

SplitRulePropertyFlag Property(unsigned int bits) {
  return static_cast<SplitRulePropertyFlag>(bits);
}

TEST(SplitRuleImp, BeginsWithItsDefaults) {
  ProbeRule const rule(7);

  EXPECT_EQ(7, rule.GetPredictorIndex());
  EXPECT_EQ(-1, rule.GetDumbChildPos());
  EXPECT_EQ(-1.0, rule.GetDumbChildProb());
  EXPECT_EQ(-1, rule.GetMissingValueMapping());
  EXPECT_EQ(1, rule.GetCreationFlags());
  EXPECT_TRUE(rule.HasProperty(SplitRuleCreatedDefault));
  EXPECT_FALSE(rule.HasProperty(SplitRuleCreatedAlternate));
  EXPECT_FALSE(rule.HasProperty(SplitRuleMappingsReordered));
}

TEST(SplitRuleImp, BeginsWithoutStatistics) {
  ProbeRule const rule(0);
  for (unsigned int bits = 1; bits < 256; ++bits) {
    SCOPED_TRACE(bits);
    double value = 42.0;

    EXPECT_FALSE(rule.HasStatistic(Statistic(bits)));
    EXPECT_FALSE(rule.GetStatistic(Statistic(bits), &value));
    EXPECT_EQ(42.0, value);
    EXPECT_EQ(systemMissingValue(), rule.GetStatistic(Statistic(bits)));
  }
}

TEST(SplitRuleImp, KeepsAnyPredictorIndex) {
  for (int const index :
       {-1, 0, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    EXPECT_EQ(index, ProbeRule(index).GetPredictorIndex());
  }
}

TEST(SplitRuleImp, HasAPropertyWhenAnyOfItsBitsIsSet) {
  ProbeRule rule(0);
  rule.SetProperty(SplitRuleMappingsReordered);

  EXPECT_TRUE(rule.HasProperty(Property(1 | 2)));
  EXPECT_TRUE(rule.HasProperty(Property(2 | 4)));
  EXPECT_FALSE(rule.HasProperty(Property(2 | 8)));
  EXPECT_FALSE(rule.HasProperty(Property(0)));
}

TEST(SplitRuleImp, ACreationKindReplacesTheOther) {
  ProbeRule rule(0);

  rule.SetProperty(SplitRuleCreatedAlternate);
  EXPECT_EQ(2, rule.GetCreationFlags());
  rule.SetProperty(SplitRuleMappingsReordered);
  EXPECT_EQ(6, rule.GetCreationFlags());
  rule.SetProperty(SplitRuleCreatedDefault);
  EXPECT_EQ(5, rule.GetCreationFlags());
}

TEST(SplitRuleImp, SetsPropertyWords) {
  struct Row {
    char const* name;
    unsigned int bits;
    int expected;
  };
  constexpr Row kRows[] = {
      {"none", 0, 1},
      {"the kind that it has", 1, 1},
      {"reordered only", 4, 5},
      {"both kinds", 3, 3},
      {"the other kind and reordered", 6, 6},
      {"an unknown bit", 8, 9},
      {"the other kind and an unknown bit", 10, 10},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    ProbeRule rule(0);

    rule.SetProperty(Property(row.bits));

    EXPECT_EQ(row.expected, rule.GetCreationFlags());
  }
}

TEST(SplitRuleImp, StoresTheDumbRuleUnchecked) {
  ProbeRule rule(0);

  rule.SetDumbRule(3, 0.25);
  EXPECT_EQ(3, rule.GetDumbChildPos());
  EXPECT_EQ(0.25, rule.GetDumbChildProb());
  rule.SetDumbRule(-7, 250.0);
  EXPECT_EQ(-7, rule.GetDumbChildPos());
  EXPECT_EQ(250.0, rule.GetDumbChildProb());
}

TEST(SplitRuleImp, MapsMissingValuesByItsVirtualNumberOfChildren) {
  ProbeRule rule(0);
  rule.numChildren = 7;

  rule.AddMissingValueMapping(true);
  EXPECT_EQ(7, rule.GetMissingValueMapping());
  rule.AddMissingValueMapping(false);
  EXPECT_EQ(6, rule.GetMissingValueMapping());
  rule.numChildren = 0;
  rule.AddMissingValueMapping(true);
  EXPECT_EQ(0, rule.GetMissingValueMapping());
  rule.AddMissingValueMapping(false);
  EXPECT_EQ(-1, rule.GetMissingValueMapping());
}

TEST(SplitRuleImp, AnOwnChildOfMissingValuesComesAfterTheChildrenInUse) {
  OSplitRule rule = BinaryRule(5.0);

  rule.AddMissingValueMapping(true);

  EXPECT_EQ(2, rule.GetMissingValueMapping());
  EXPECT_EQ(3, rule.GetNumChildren());
}

TEST(SplitRuleImp, MissingValuesJoinTheLastChild) {
  OSplitRule rule = BinaryRule(5.0);

  rule.AddMissingValueMapping(false);

  EXPECT_EQ(1, rule.GetMissingValueMapping());
  EXPECT_EQ(2, rule.GetNumChildren());
}

TEST(SplitRuleImp, MappingMissingValuesAgainCountsTheirChildIn) {
  OSplitRule rule = BinaryRule(5.0);

  rule.AddMissingValueMapping(true);
  rule.AddMissingValueMapping(true);
  EXPECT_EQ(3, rule.GetMissingValueMapping());
  rule.AddMissingValueMapping(false);
  EXPECT_EQ(3, rule.GetMissingValueMapping());
}

TEST(SplitRuleImp, FindsTheSlotOfTheHighestOfTheSevenLowBits) {
  struct Row {
    unsigned int bits;
    int expected;
  };
  constexpr Row kRows[] = {
      {0, -1},  {1, 0},   {2, 1},    {3, 1},    {4, 2},           {5, 2},
      {7, 2},   {8, 3},   {9, 3},    {12, 3},   {15, 3},          {16, -1},
      {17, -1}, {31, -1}, {32, -1},  {64, -1},  {127, -1},        {128, -1},
      {129, 0}, {136, 3}, {144, -1}, {256, -1}, {0xFFFFFF80, -1}, {0xFFFFFF84, 2},
  };
  for (Row const& row : kRows) {
    EXPECT_EQ(row.expected, SplitRuleImp::GetFlagPosition(Statistic(row.bits))) << row.bits;
  }
}

TEST(SplitRuleImp, KeepsEachStatisticInItsOwnSlot) {
  ProbeRule rule(0);

  rule.SetStatistic(StatisticFlag1, 1.5);
  rule.SetStatistic(StatisticFlag2, 2.5);
  rule.SetStatistic(StatisticFlag3, 3.5);
  rule.SetStatistic(StatisticFlag4, 4.5);

  EXPECT_EQ(1.5, rule.GetStatistic(StatisticFlag1));
  EXPECT_EQ(2.5, rule.GetStatistic(StatisticFlag2));
  EXPECT_EQ(3.5, rule.GetStatistic(StatisticFlag3));
  EXPECT_EQ(4.5, rule.GetStatistic(StatisticFlag4));
}

TEST(SplitRuleImp, WritesAStatisticThroughThePointer) {
  ProbeRule rule(0);
  rule.SetStatistic(StatisticFlag3, 3.5);
  double value = 42.0;

  EXPECT_TRUE(rule.GetStatistic(StatisticFlag3, &value));

  EXPECT_EQ(3.5, value);
}

TEST(SplitRuleImp, OverwritesAStatistic) {
  ProbeRule rule(0);
  rule.SetStatistic(StatisticFlag2, 1.0);

  rule.SetStatistic(StatisticFlag2, 2.0);

  EXPECT_EQ(2.0, rule.GetStatistic(StatisticFlag2));
}

TEST(SplitRuleImp, HasAStatisticWhenAllOfItsBitsArePresent) {
  ProbeRule rule(0);
  rule.SetStatistic(StatisticFlag1, 1.0);
  rule.SetStatistic(StatisticFlag3, 3.0);

  EXPECT_TRUE(rule.HasStatistic(StatisticFlag1));
  EXPECT_TRUE(rule.HasStatistic(Statistic(1 | 4)));
  EXPECT_FALSE(rule.HasStatistic(Statistic(1 | 2)));
  EXPECT_TRUE(rule.HasStatistic(Statistic(0)));
}

TEST(SplitRuleImp, NoBitsAreAPresentStatisticWithoutAValue) {
  ProbeRule rule(0);
  double value = 42.0;

  rule.SetStatistic(Statistic(0), 5.0);

  EXPECT_TRUE(rule.HasStatistic(Statistic(0)));
  EXPECT_FALSE(rule.GetStatistic(Statistic(0), &value));
  EXPECT_EQ(42.0, value);
  EXPECT_EQ(systemMissingValue(), rule.GetStatistic(Statistic(0)));
  EXPECT_FALSE(rule.HasStatistic(StatisticFlag1));
}

TEST(SplitRuleImp, ACombinedFlagStoresInTheSlotOfItsHighestBitOnly) {
  ProbeRule rule(0);
  double value = 42.0;

  rule.SetStatistic(Statistic(3), 5.0);

  EXPECT_TRUE(rule.HasStatistic(StatisticFlag1));
  EXPECT_TRUE(rule.HasStatistic(StatisticFlag2));
  EXPECT_TRUE(rule.GetStatistic(StatisticFlag1, &value));
  EXPECT_EQ(systemMissingValue(), value);
  EXPECT_EQ(5.0, rule.GetStatistic(StatisticFlag2));
  EXPECT_EQ(5.0, rule.GetStatistic(Statistic(3)));
}

TEST(SplitRuleImp, IgnoresAFlagThatIsPresentInPart) {
  ProbeRule rule(0);
  rule.SetStatistic(StatisticFlag1, 1.0);

  rule.SetStatistic(Statistic(3), 5.0);

  EXPECT_FALSE(rule.HasStatistic(StatisticFlag2));
  EXPECT_EQ(1.0, rule.GetStatistic(StatisticFlag1));
  EXPECT_EQ(systemMissingValue(), rule.GetStatistic(StatisticFlag2));
}

TEST(SplitRuleImp, TakesAFlagThatIsPresentInFull) {
  ProbeRule rule(0);
  rule.SetStatistic(Statistic(3), 5.0);

  rule.SetStatistic(StatisticFlag1, 6.0);
  rule.SetStatistic(Statistic(3), 7.0);

  EXPECT_EQ(6.0, rule.GetStatistic(StatisticFlag1));
  EXPECT_EQ(7.0, rule.GetStatistic(StatisticFlag2));
}

TEST(SplitRuleImp, MarksStatisticsWithoutASlotAsPresentAndDropsTheirValue) {
  for (unsigned int const bits : {16U, 32U, 64U, 128U, 17U, 48U}) {
    SCOPED_TRACE(bits);
    ProbeRule rule(0);
    double value = 42.0;

    rule.SetStatistic(Statistic(bits), 5.0);

    EXPECT_TRUE(rule.HasStatistic(Statistic(bits)));
    EXPECT_FALSE(rule.GetStatistic(Statistic(bits), &value));
    EXPECT_EQ(42.0, value);
    EXPECT_EQ(systemMissingValue(), rule.GetStatistic(Statistic(bits)));
    rule.SetStatistic(Statistic(15 & ~bits), 0.0);
    for (unsigned int const stored : {1U, 2U, 4U, 8U}) {
      EXPECT_NE(5.0, rule.GetStatistic(Statistic(stored)));
    }
  }
}

TEST(SplitRuleImp, BitsAboveTheSevenLowOnesTakeNoPartInTheSlot) {
  ProbeRule rule(0);

  rule.SetStatistic(Statistic(128 | 1), 5.0);

  EXPECT_TRUE(rule.HasStatistic(Statistic(128 | 1)));
  EXPECT_EQ(5.0, rule.GetStatistic(StatisticFlag1));
}

TEST(SplitRuleImp, CopyHasAllFields) {
  ProbeRule source(7);
  source.numChildren = 2;
  ChangeCore(source);

  ProbeRule const copy(source);

  EXPECT_EQ(7, copy.GetPredictorIndex());
  EXPECT_EQ(1.5, copy.GetStatistic(StatisticFlag1));
  EXPECT_EQ(2.5, copy.GetStatistic(StatisticFlag2));
  EXPECT_EQ(3.5, copy.GetStatistic(StatisticFlag3));
  EXPECT_EQ(4.5, copy.GetStatistic(StatisticFlag4));
  EXPECT_TRUE(copy.HasStatistic(StatisticFlag6));
  EXPECT_FALSE(copy.HasStatistic(StatisticFlag5));
  EXPECT_EQ(1, copy.GetDumbChildPos());
  EXPECT_EQ(0.75, copy.GetDumbChildProb());
  EXPECT_EQ(2, copy.GetCreationFlags());
  EXPECT_EQ(2, copy.GetMissingValueMapping());
}

TEST(SplitRuleImp, AssignmentCopiesAllFieldsThePredictorIndexToo) {
  ProbeRule source(7);
  ChangeCore(source);
  ProbeRule target(1);

  target = source;

  EXPECT_EQ(7, target.GetPredictorIndex());
  EXPECT_TRUE(target == source);
}

TEST(SplitRuleImp, AssignmentToItselfChangesNothing) {
  ProbeRule rule(7);
  ChangeCore(rule);
  ProbeRule const before(rule);
  ProbeRule const& same = rule;

  rule = same;

  EXPECT_TRUE(rule == before);
}

TEST(SplitRuleImp, CopyIsIndependent) {
  ProbeRule source(7);
  ChangeCore(source);
  ProbeRule const copy(source);

  source.SetDumbRule(5, 0.5);
  source.SetStatistic(StatisticFlag1, 9.0);

  EXPECT_EQ(1, copy.GetDumbChildPos());
  EXPECT_EQ(1.5, copy.GetStatistic(StatisticFlag1));
}

TEST(SplitRuleImp, EqualityLooksAtEveryField) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  struct Row {
    char const* name;
    std::function<void(ProbeRule&)> change;
    bool expected;
  };
  Row const kRows[] = {
      {"nothing", [](ProbeRule&) {}, true},
      {"predictor index",
       [](ProbeRule& rule) {
         rule = ProbeRule(1);
         ChangeCore(rule);
       },
       false},
      {"slot 0", [](ProbeRule& rule) { rule.SetStatistic(StatisticFlag1, 9.0); }, false},
      {"slot 1", [](ProbeRule& rule) { rule.SetStatistic(StatisticFlag2, 9.0); }, false},
      {"slot 2", [](ProbeRule& rule) { rule.SetStatistic(StatisticFlag3, 9.0); }, false},
      {"slot 3", [](ProbeRule& rule) { rule.SetStatistic(StatisticFlag4, 9.0); }, false},
      {"slot 3 by the least step",
       [](ProbeRule& rule) { rule.SetStatistic(StatisticFlag4, std::nextafter(4.5, 5.0)); }, false},
      {"mask alone", [](ProbeRule& rule) { rule.SetStatistic(StatisticFlag7, 0.0); }, false},
      {"dumb child", [](ProbeRule& rule) { rule.SetDumbRule(0, 0.75); }, false},
      {"dumb child probability", [](ProbeRule& rule) { rule.SetDumbRule(1, 0.5); }, false},
      {"dumb child probability NaN", [](ProbeRule& rule) { rule.SetDumbRule(1, kNaN); }, false},
      {"missing value mapping", [](ProbeRule& rule) { rule.AddMissingValueMapping(false); }, false},
      {"properties", [](ProbeRule& rule) { rule.SetProperty(SplitRuleMappingsReordered); }, false},
      {"what the kind adds", [](ProbeRule& rule) { rule.numChildren = 99; }, true},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    ProbeRule rule(0);
    ChangeCore(rule);
    ProbeRule other(rule);

    row.change(other);

    EXPECT_EQ(row.expected, rule == other);
    EXPECT_EQ(row.expected, other == rule);
  }
}

TEST(SplitRuleImp, ARuleWithNaNEqualsNotEvenItself) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  for (unsigned int const bits : {1U, 2U, 4U, 8U}) {
    SCOPED_TRACE(bits);
    ProbeRule rule(0);

    rule.SetStatistic(Statistic(bits), kNaN);

    EXPECT_FALSE(rule == rule);
  }
  ProbeRule rule(0);
  rule.SetDumbRule(0, kNaN);
  EXPECT_FALSE(rule == rule);
}

TEST(SplitRuleImp, ZerosOfEitherSignAreEqual) {
  ProbeRule a(0);
  ProbeRule b(0);
  a.SetStatistic(StatisticFlag1, 0.0);
  b.SetStatistic(StatisticFlag1, -0.0);
  a.SetDumbRule(0, 0.0);
  b.SetDumbRule(0, -0.0);

  EXPECT_TRUE(a == b);
}

TEST(SplitRuleImp, EqualityIsBlindToKindAndMapping) {
  OSplitRule const ordinal = BinaryRule(5.0);
  OSplitRule const otherMissingValue(0.0, 0);
  NSplitRule const nominal = NominalRule({Codes({0, 2}), Codes({1})});

  EXPECT_TRUE(ordinal == BinaryRule(6.0));
  EXPECT_TRUE(ordinal == otherMissingValue);
  EXPECT_TRUE(ordinal == nominal);
  EXPECT_TRUE(nominal == ordinal);
}

TEST(SplitRuleImp, ComparesPredictorsFirstThenMissingValueMappings) {
  ProbeRule rule(0);
  rule.numChildren = 2;
  ProbeRule sameMapping(rule);
  ProbeRule otherMapping(rule);
  otherMapping.AddMissingValueMapping(true);
  ProbeRule otherPredictor(1);
  ProbeRule otherInBoth(1);
  otherInBoth.AddMissingValueMapping(true);

  EXPECT_EQ(0, rule.Compare(sameMapping));
  EXPECT_EQ(1, rule.Compare(otherMapping));
  EXPECT_EQ(2, rule.Compare(otherPredictor));
  EXPECT_EQ(2, rule.Compare(otherInBoth));
  EXPECT_EQ(0, rule.Compare(rule));
}

TEST(SplitRuleImp, CompareLooksAtNoOtherField) {
  ProbeRule const rule(0);
  ProbeRule other(0);
  other.numChildren = 5;
  other.SetStatistic(StatisticFlag1, 9.0);
  other.SetDumbRule(1, 0.5);
  other.SetProperty(SplitRuleCreatedAlternate);

  EXPECT_EQ(0, rule.Compare(other));
}

TEST(SplitRuleImp, CopyMappingsTakesTheMissingValueMappingAlone) {
  ProbeRule source(7);
  source.numChildren = 2;
  ChangeCore(source);
  ProbeRule target(1);

  EXPECT_TRUE(target.CopyMappings(source));

  EXPECT_EQ(2, target.GetMissingValueMapping());
  ProbeRule expected(1);
  expected.numChildren = 2;
  expected.AddMissingValueMapping(true);
  EXPECT_TRUE(expected == target);
}

TEST(SplitRuleImp, ReorderingRenumbersMissingValueMappingAndDumbChild) {
  ProbeRule rule(0);
  rule.numChildren = 2;
  rule.AddMissingValueMapping(true);
  rule.SetDumbRule(1, 0.5);

  rule.ReorderMappings({7, 8, 9});

  EXPECT_EQ(9, rule.GetMissingValueMapping());
  EXPECT_EQ(8, rule.GetDumbChildPos());
  EXPECT_EQ(0.5, rule.GetDumbChildProb());
}

TEST(SplitRuleImp, ReorderingRenumbersChildZeroToo) {
  ProbeRule rule(0);
  rule.AddMissingValueMapping(true);
  rule.SetDumbRule(0, 0.5);

  rule.ReorderMappings({4});

  EXPECT_EQ(4, rule.GetMissingValueMapping());
  EXPECT_EQ(4, rule.GetDumbChildPos());
}

TEST(SplitRuleImp, ReorderingLeavesWhatIsNotMapped) {
  ProbeRule rule(0);
  rule.SetDumbRule(-3, 0.5);

  rule.ReorderMappings({});

  EXPECT_EQ(-1, rule.GetMissingValueMapping());
  EXPECT_EQ(-3, rule.GetDumbChildPos());
}

TEST(SplitRuleImp, ReorderingMarksTheRuleForGood) {
  ProbeRule rule(0);

  rule.ReorderMappings({});

  EXPECT_EQ(5, rule.GetCreationFlags());
  rule.SetProperty(SplitRuleCreatedAlternate);
  EXPECT_TRUE(rule.HasProperty(SplitRuleMappingsReordered));
}

#if TREE_HAS_SLOTS
TEST(SplitRuleImp, KeepsTheOrderOfItsVirtualOperations) {
  EXPECT_EQ(kFirstSlot + 0, VirtualSlot(&Core::GetNumChildren));
  EXPECT_EQ(kFirstSlot + 1, VirtualSlot(&Core::GetMappedValues));
  EXPECT_EQ(kFirstSlot + 2, VirtualSlot(&Core::Clone));
  EXPECT_EQ(kFirstSlot + 3, VirtualSlot(&Core::EmptyClone));
  EXPECT_EQ(kFirstSlot + 4, VirtualSlot(&Core::CopyMappings));
  EXPECT_EQ(kFirstSlot + 5, VirtualSlot(&Core::Classify));
  EXPECT_EQ(kFirstSlot + 6, VirtualSlot(&Core::Compare));
  EXPECT_EQ(kFirstSlot + 7, VirtualSlot(&Core::IsOrdered));
  EXPECT_EQ(kFirstSlot + 8, VirtualSlot(&Core::ReorderMappings));
  EXPECT_EQ(kFirstSlot + 9, VirtualSlot(&Core::AddMappedValues));
}

TEST(SplitRuleImp, AccessorsAndEqualityAreNotVirtual) {
  EXPECT_EQ(-1, VirtualSlot(&Core::GetPredictorIndex));
  EXPECT_EQ(-1, VirtualSlot(&Core::GetCreationFlags));
  EXPECT_EQ(-1, VirtualSlot(&Core::HasProperty));
  EXPECT_EQ(-1, VirtualSlot(&Core::SetProperty));
  EXPECT_EQ(-1, VirtualSlot(&Core::GetDumbChildPos));
  EXPECT_EQ(-1, VirtualSlot(&Core::GetDumbChildProb));
  EXPECT_EQ(-1, VirtualSlot(&Core::SetDumbRule));
  EXPECT_EQ(-1, VirtualSlot(&Core::GetMissingValueMapping));
  EXPECT_EQ(-1, VirtualSlot(&Core::AddMissingValueMapping));
  EXPECT_EQ(-1, VirtualSlot(&Core::HasStatistic));
  EXPECT_EQ(-1, VirtualSlot(&Core::SetStatistic));
  EXPECT_EQ(-1, VirtualSlot(&Core::operator==));
}
#endif

class SplitRuleImpDeathTest : public DeathTest {};

TEST_F(SplitRuleImpDeathTest, NamesTheChildWithoutANewPosition) {
  EXPECT_ASSERTION(
      {
        ProbeRule rule(0);
        rule.numChildren = 2;
        rule.AddMissingValueMapping(true);
        rule.ReorderMappings({1, 0});
      },
      "SplitRuleImp::ReorderMappings: index 2");
  EXPECT_ASSERTION(
      {
        ProbeRule rule(0);
        rule.SetDumbRule(3, 0.5);
        rule.ReorderMappings({1, 0});
      },
      "SplitRuleImp::ReorderMappings: index 3");
}

}  // namespace
}  // namespace tree::testing
