#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/debug_death.h"
#include "testing/failing_allocator.h"
#include "testing/rule_builder.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/split_rules.h"
#include "tree/support.h"

namespace tree::testing {
namespace {

using ::testing::ElementsAre;

using Item = OSplitRule::OSplitRuleItem;

static_assert(std::is_aggregate_v<Item> && std::is_standard_layout_v<Item>);
static_assert(std::is_same_v<double, decltype(Item::cutPoint)>);
static_assert(std::is_same_v<int, decltype(Item::child)>);
static_assert(std::is_same_v<bool, decltype(Item::openAtCut)>);
static_assert(offsetof(Item, cutPoint) < offsetof(Item, child));
static_assert(offsetof(Item, child) < offsetof(Item, openAtCut));

static_assert(std::is_base_of_v<SplitRuleImp, OSplitRule>);
static_assert(
    std::is_same_v<double, decltype(std::declval<OSplitRule const&>().GetMissingValue())>);
static_assert(std::is_same_v<double, decltype(std::declval<OSplitRule const&>().GetCutPoint())>);
static_assert(std::is_same_v<Item*, decltype(std::declval<OSplitRule&>().IsPresent(0.0))>);
static_assert(std::is_same_v<void, decltype(std::declval<OSplitRule&>().InsertCutPoint(
                                       std::declval<OValueSet const&>(), true))>);
static_assert(
    std::is_convertible_v<decltype(std::declval<OSplitRule const&>().Clone()), SplitRuleImp*>);

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Cut points with nothing assigned below them.
OSplitRule WaitingAt(std::initializer_list<double> cutPoints) {
  OSplitRule rule(kMissing, 0);
  for (double const cutPoint : cutPoints) rule.InsertCutPoint(Above(cutPoint), true);
  return rule;
}

/// Makes the item at `cutPoint` belong to `child`.
void Assign(OSplitRule& rule, double cutPoint, int child) {
  Item* const item = rule.IsPresent(cutPoint);
  ASSERT_NE(nullptr, item) << cutPoint;
  item->child = child;
}

void ExpectItem(OSplitRule& rule, double cutPoint, int child, bool openAtCut) {
  Item const* const item = rule.IsPresent(cutPoint);
  ASSERT_NE(nullptr, item) << cutPoint;
  EXPECT_EQ(cutPoint, item->cutPoint);
  EXPECT_EQ(child, item->child) << "child at " << cutPoint;
  EXPECT_EQ(openAtCut, item->openAtCut) << "openness at " << cutPoint;
}

TEST(OSplitRule, AnItemBeginsUnassigned) {
  Item const item;

  EXPECT_EQ(-1.0, item.cutPoint);
  EXPECT_EQ(-1, item.child);
  EXPECT_TRUE(item.openAtCut);
}

TEST(OSplitRule, BeginsWithoutCutPoints) {
  OSplitRule rule(-9.0, 3);

  EXPECT_EQ(3, rule.GetPredictorIndex());
  EXPECT_EQ(-9.0, rule.GetMissingValue());
  EXPECT_EQ(systemMissingValue(), rule.GetCutPoint());
  EXPECT_EQ(nullptr, rule.IsPresent(-1.0));
  EXPECT_EQ(0, rule.GetNumChildren());
  EXPECT_EQ(-1, rule.Classify(0.0));
  EXPECT_FALSE(rule.IsValid());
  EXPECT_EQ(-1, rule.GetMissingValueMapping());
  EXPECT_EQ(1, rule.GetCreationFlags());
}

TEST(OSplitRule, TakesTheMissingValueOfSettings) {
  VariableSettingsImp settings;
  settings.SetMissingValue(-99.0);

  OSplitRule const rule(settings, 3);

  EXPECT_EQ(3, rule.GetPredictorIndex());
  EXPECT_EQ(-99.0, rule.GetMissingValue());
  EXPECT_EQ(0, rule.GetNumChildren());
  EXPECT_EQ(systemMissingValue(), OSplitRule(VariableSettingsImp(), 0).GetMissingValue());
}

TEST(OSplitRule, IsOrdered) { EXPECT_TRUE(OSplitRule(kMissing, 0).IsOrdered()); }

TEST(OSplitRule, SetCutPointMakesTheBinaryRule) {
  OSplitRule rule(kMissing, 0);

  rule.SetCutPoint(5.0);

  ExpectItem(rule, 5.0, 0, false);
  EXPECT_EQ(5.0, rule.GetCutPoint());
  EXPECT_EQ(0, rule.Classify(5.0));
  EXPECT_EQ(1, rule.Classify(5.0001));
  EXPECT_EQ(0, rule.Classify(-1e300));
  EXPECT_EQ(2, rule.GetNumChildren());
  EXPECT_TRUE(rule.IsValidBinary());
  EXPECT_TRUE(rule.IsStandard());
  EXPECT_THAT(IntervalsOf(rule), ElementsAre("(-inf, 5]", "(5, inf)"));
}

TEST(OSplitRule, SetCutPointWithoutItemsReplacesTheUpperChild) {
  OSplitRule rule = OrdinalRule({Everything()});
  ASSERT_EQ(0, rule.Classify(5.0));

  rule.SetCutPoint(5.0);

  EXPECT_EQ(0, rule.Classify(5.0));
  EXPECT_EQ(1, rule.Classify(6.0));
}

TEST(OSplitRule, SetCutPointMovesTheFirstCutPointAndNothingElse) {
  OSplitRule rule = ThreeWayRule();
  rule.IsPresent(2.0)->openAtCut = true;
  Assign(rule, 2.0, 5);

  rule.SetCutPoint(3.0);

  EXPECT_EQ(nullptr, rule.IsPresent(2.0));
  ExpectItem(rule, 3.0, 5, true);
  ExpectItem(rule, 7.0, 1, false);
  EXPECT_EQ(2, rule.Classify(8.0));
  EXPECT_EQ(3.0, rule.GetCutPoint());
}

TEST(OSplitRule, GetCutPointIsTheFirstOne) { EXPECT_EQ(2.0, ThreeWayRule().GetCutPoint()); }

TEST(OSplitRule, FindsTheItemOfExactlyACutPoint) {
  OSplitRule rule = ThreeWayRule();

  EXPECT_EQ(7.0, rule.IsPresent(7.0)->cutPoint);
  EXPECT_EQ(nullptr, rule.IsPresent(std::nextafter(7.0, 8.0)));
  EXPECT_EQ(nullptr, rule.IsPresent(0.0));
  EXPECT_EQ(nullptr, rule.IsPresent(kNaN));
}

TEST(OSplitRule, AnItemIsChangedThroughItsPointer) {
  OSplitRule rule = ThreeWayRule();

  rule.IsPresent(7.0)->child = 4;

  EXPECT_EQ(4, rule.Classify(5.0));
  EXPECT_EQ(5, rule.GetNumChildren());
}

TEST(OSplitRule, ClassifiesByTheFirstCutPointAtOrAboveAValue) {
  struct Row {
    char const* name;
    double value;
    int expected;
  };
  constexpr Row kRows[] = {
      {"far below", -1e300, 0},
      {"negative infinity", -kInfinity, 0},
      {"below the first cut point", 1.0, 0},
      {"at the first cut point", 2.0, 0},
      {"just above the first cut point", 2.0000000000000004, 1},
      {"between", 5.0, 1},
      {"at the last cut point", 7.0, 1},
      {"just above the last cut point", 7.000000000000001, 2},
      {"far above", 1e300, 2},
      {"infinity", kInfinity, 2},
      {"NaN", kNaN, 2},
      {"the rule's missing value, below all", kMissing, -1},
      {"beside the missing value", -9.000000000000002, 0},
  };
  OSplitRule const rule = ThreeWayRule();
  for (Row const& row : kRows) {
    EXPECT_EQ(row.expected, rule.Classify(row.value)) << row.name;
  }
}

TEST(OSplitRule, ClassifiesAValueAtAnOpenCutPointBelowItAllTheSame) {
  OSplitRule const rule = OrdinalRule({Below(2.0), From(2.0)});

  EXPECT_EQ(0, rule.Classify(2.0));
}

TEST(OSplitRule, SendsItsMissingValueToItsMapping) {
  OSplitRule rule = BinaryRule(5.0);
  EXPECT_EQ(-1, rule.Classify(kMissing));

  rule.AddMissingValueMapping(true);

  EXPECT_EQ(2, rule.Classify(kMissing));
  EXPECT_EQ(0, rule.Classify(systemMissingValue()));
}

TEST(OSplitRule, SendsNaNToTheUpperChildEvenIfNaNIsItsMissingValue) {
  OSplitRule rule(kNaN, 0);
  rule.SetCutPoint(5.0);
  rule.AddMissingValueMapping(true);

  EXPECT_EQ(1, rule.Classify(kNaN));
}

TEST(OSplitRule, SendsValuesOfAnUnassignedIntervalToTheUpperChild) {
  OSplitRule rule = OrdinalRule({OpenClosed(2.0, 7.0)});
  EXPECT_EQ(-1, rule.Classify(1.0));
  EXPECT_EQ(0, rule.Classify(5.0));
  EXPECT_EQ(-1, rule.Classify(9.0));

  rule.AddMappedValues(Above(7.0));

  EXPECT_EQ(1, rule.Classify(1.0));
}

TEST(OSplitRule, CountsUpToTheHighestChildInUse) {
  OSplitRule rule = ThreeWayRule();
  EXPECT_EQ(3, rule.GetNumChildren());

  Assign(rule, 2.0, 6);
  EXPECT_EQ(7, rule.GetNumChildren());
  rule.AddMissingValueMapping(true);
  EXPECT_EQ(8, rule.GetNumChildren());
  Assign(rule, 2.0, -1);
  Assign(rule, 7.0, -1);
  EXPECT_EQ(8, rule.GetNumChildren());
}

TEST(OSplitRule, CountsTheUpperChild) {
  OSplitRule rule = BinaryRule(5.0);
  rule.ReorderMappings({0, 4});

  EXPECT_EQ(5, rule.GetNumChildren());
}

TEST(OSplitRule, CountsNoUnassignedChildren) {
  OSplitRule rule = ThreeWayRule();
  Assign(rule, 2.0, -1);
  Assign(rule, 7.0, -1);

  EXPECT_EQ(3, rule.GetNumChildren());
  EXPECT_EQ(1, OrdinalRule({OpenClosed(2.0, 7.0)}).GetNumChildren());
}

TEST(OSplitRule, CountsTheLargestIntegerAsItself) {
  OSplitRule rule = BinaryRule(5.0);
  Assign(rule, 5.0, std::numeric_limits<int>::max());

  EXPECT_EQ(std::numeric_limits<int>::max(), rule.GetNumChildren());
}

TEST(OSplitRule, IsValidWhenEveryIntervalHasItsChild) {
  OSplitRule rule = ThreeWayRule();
  EXPECT_TRUE(rule.IsValid());

  Assign(rule, 7.0, -1);
  EXPECT_FALSE(rule.IsValid());
  EXPECT_FALSE(OrdinalRule({AtMost(2.0)}).IsValid());
  EXPECT_TRUE(OrdinalRule({Everything()}).IsValid());
}

TEST(OSplitRule, IsValidBinaryWithExactlyOneCutPointAndAllChildren) {
  OSplitRule unassigned = BinaryRule(5.0);
  Assign(unassigned, 5.0, -1);

  EXPECT_TRUE(BinaryRule(5.0).IsValidBinary());
  EXPECT_FALSE(unassigned.IsValidBinary());
  EXPECT_FALSE(OSplitRule(kMissing, 0).IsValidBinary());
  EXPECT_FALSE(OrdinalRule({Everything()}).IsValidBinary());
  EXPECT_FALSE(OrdinalRule({AtMost(2.0)}).IsValidBinary());
  EXPECT_FALSE(ThreeWayRule().IsValidBinary());
}

TEST(OSplitRule, ReverseSwapsTheChildrenOfABinaryRuleAndStandardSwapsThemBack) {
  OSplitRule rule = BinaryRule(5.0);

  rule.SetReverse();
  EXPECT_EQ(1, rule.Classify(5.0));
  EXPECT_EQ(0, rule.Classify(6.0));
  EXPECT_FALSE(rule.IsStandard());
  rule.SetReverse();
  EXPECT_EQ(1, rule.Classify(5.0));
  rule.SetStandard();
  EXPECT_EQ(0, rule.Classify(5.0));
  EXPECT_EQ(1, rule.Classify(6.0));
  EXPECT_TRUE(rule.IsStandard());
}

TEST(OSplitRule, StandardAndReverseTakeChildrenZeroAndOneWhateverThereWas) {
  OSplitRule rule = BinaryRule(5.0);
  rule.ReorderMappings({5, 7});
  EXPECT_TRUE(rule.IsStandard());

  OSplitRule reversed(rule);
  rule.SetStandard();
  reversed.SetReverse();

  EXPECT_EQ(0, rule.Classify(5.0));
  EXPECT_EQ(1, rule.Classify(6.0));
  EXPECT_EQ(1, reversed.Classify(5.0));
  EXPECT_EQ(0, reversed.Classify(6.0));
}

TEST(OSplitRule, IsStandardUnlessABinaryRuleSendsTheUpperValuesToChildZero) {
  OSplitRule bothToZero = BinaryRule(5.0);
  bothToZero.ReorderMappings({0, 0});
  OSplitRule threeWays = ThreeWayRule();
  threeWays.ReorderMappings({1, 2, 0});

  EXPECT_FALSE(bothToZero.IsStandard());
  EXPECT_TRUE(threeWays.IsStandard());
  EXPECT_TRUE(OSplitRule(kMissing, 0).IsStandard());
  EXPECT_TRUE(OrdinalRule({Everything()}).IsStandard());
}

TEST(OSplitRule, StandardAndReverseLeaveOtherRulesAlone) {
  struct Row {
    char const* name;
    OSplitRule rule;
  };
  OSplitRule unassigned = BinaryRule(5.0);
  Assign(unassigned, 5.0, -1);
  Row const kRows[] = {
      {"no cut points", OSplitRule(kMissing, 0)},
      {"no cut points but a child", OrdinalRule({Everything()})},
      {"upper child missing", OrdinalRule({AtMost(2.0)})},
      {"lower child missing", unassigned},
      {"two cut points", ThreeWayRule()},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    OSplitRule standard(row.rule);
    OSplitRule reversed(row.rule);

    standard.SetStandard();
    reversed.SetReverse();

    EXPECT_EQ(0, row.rule.Compare(standard));
    EXPECT_EQ(0, row.rule.Compare(reversed));
  }
}

TEST(OSplitRule, MakesAChildOfEachIntervalAdded) {
  OSplitRule rule(kMissing, 0);

  EXPECT_TRUE(rule.AddMappedValues(AtMost(2.0)));
  EXPECT_EQ(1, rule.GetNumChildren());
  EXPECT_TRUE(rule.AddMappedValues(OpenClosed(2.0, 7.0)));
  EXPECT_EQ(2, rule.GetNumChildren());
  EXPECT_TRUE(rule.AddMappedValues(Above(7.0)));

  EXPECT_EQ(3, rule.GetNumChildren());
  ExpectItem(rule, 2.0, 0, false);
  ExpectItem(rule, 7.0, 1, false);
  EXPECT_EQ(2, rule.Classify(8.0));
  EXPECT_THAT(IntervalsOf(rule), ElementsAre("(-inf, 2]", "(2, 7]", "(7, inf)"));
}

TEST(OSplitRule, TakesIntervalsFromTheTopDown) {
  OSplitRule rule = OrdinalRule({Above(7.0), OpenClosed(2.0, 7.0), AtMost(2.0)});

  EXPECT_THAT(IntervalsOf(rule), ElementsAre("(7, inf)", "(2, 7]", "(-inf, 2]"));
  EXPECT_EQ(2, rule.Classify(2.0));
  EXPECT_EQ(1, rule.Classify(7.0));
  EXPECT_EQ(0, rule.Classify(8.0));
}

TEST(OSplitRule, TakesIntervalsFromTheMiddleOut) {
  OSplitRule rule = OrdinalRule({OpenClosed(2.0, 7.0), Above(7.0), AtMost(2.0)});

  EXPECT_THAT(IntervalsOf(rule), ElementsAre("(2, 7]", "(7, inf)", "(-inf, 2]"));
}

TEST(OSplitRule, KeepsTheOpennessOfTheEndsAdded) {
  OSplitRule const rule = OrdinalRule({Below(2.0), ClosedOpen(2.0, 7.0), From(7.0)});

  EXPECT_THAT(IntervalsOf(rule), ElementsAre("(-inf, 2)", "[2, 7)", "[7, inf)"));
}

TEST(OSplitRule, KeepsTheOpennessOfTheIntervalThatOwnsTheCutPoint) {
  OSplitRule const rule = OrdinalRule({From(7.0), OpenClosed(2.0, 7.0), Below(2.0)});

  EXPECT_THAT(IntervalsOf(rule), ElementsAre("(7, inf)", "[2, 7]", "(-inf, 2)"));
}

TEST(OSplitRule, TheWholeLineIsTheUpperChildAlone) {
  OSplitRule rule = OrdinalRule({Everything()});

  EXPECT_EQ(1, rule.GetNumChildren());
  EXPECT_EQ(0, rule.Classify(5.0));
  EXPECT_EQ(systemMissingValue(), rule.GetCutPoint());
  EXPECT_EQ("(-inf, inf)", IntervalOf(rule, 0));
}

TEST(OSplitRule, AnUpperIntervalBecomesTheNextChildAfterAMissingOne) {
  OSplitRule rule = OrdinalRule({AtMost(2.0)});
  rule.AddMissingValueMapping(true);

  EXPECT_TRUE(rule.AddMappedValues(Above(2.0)));

  EXPECT_EQ(1, rule.Classify(kMissing));
  EXPECT_EQ(2, rule.Classify(3.0));
}

TEST(OSplitRule, AddsOverlapsThatItsTestsDoNotFind) {
  OSplitRule rule = ThreeWayRule();

  EXPECT_TRUE(rule.AddMappedValues(OpenClosed(7.0, 9.0)));

  ExpectItem(rule, 9.0, 3, false);
  EXPECT_EQ(3, rule.Classify(8.0));
  EXPECT_EQ(2, rule.Classify(10.0));
}

TEST(OSplitRule, RefusesSetsOfAnotherKindWithoutChange) {
  OSplitRule const before = OrdinalRule({AtMost(2.0)});
  OSplitRule rule(before);

  EXPECT_FALSE(rule.AddMappedValues(Codes({3})));
  EXPECT_FALSE(rule.AddMappedValues(ForeignSet(false)));
  EXPECT_FALSE(rule.AddMappedValues(ForeignSet(true)));

  EXPECT_EQ(0, before.Compare(rule));
}

TEST(OSplitRule, RefusesInvalidIntervalsWithoutChange) {
  OSplitRule const before = ThreeWayRule();
  OSplitRule rule(before);

  EXPECT_FALSE(rule.AddMappedValues(OpenClosed(3.0, 3.0)));
  EXPECT_FALSE(rule.AddMappedValues(Above(9.0)));
  EXPECT_FALSE(rule.AddMappedValues(OpenClosed(1.0, 3.0)));

  EXPECT_EQ(0, before.Compare(rule));
}

TEST(OSplitRule, StaysAsItIsWhenAnIntervalCannotBeStored) {
  OSplitRule const before = OrdinalRule({AtMost(2.0)});
  OValueSet const interval = OpenClosed(4.0, 7.0);

  long const failures = WithEveryAllocationFailing([&] {
    OSplitRule rule(before);
    bool added = false;
    try {
      added = rule.AddMappedValues(interval);
    } catch (std::bad_alloc const&) {
    }
    EXPECT_EQ(added ? 1 : 0, before.Compare(rule));
  });

  EXPECT_LE(2, failures);  // the copy's, and at least one of the addition
}

TEST(OSplitRule, InsertsARightEndWithANewChildBelowIt) {
  OSplitRule rule(kMissing, 0);

  rule.InsertCutPoint(OpenClosed(2.0, 7.0), false);
  rule.InsertCutPoint(Open(7.0, 9.0), false);

  ExpectItem(rule, 7.0, 0, false);
  ExpectItem(rule, 9.0, 1, true);
  EXPECT_EQ(nullptr, rule.IsPresent(2.0));
}

TEST(OSplitRule, InsertsALeftEndThatWaitsForItsChild) {
  OSplitRule rule(kMissing, 0);

  rule.InsertCutPoint(OpenClosed(2.0, 7.0), true);
  rule.InsertCutPoint(ClosedOpen(4.0, 7.0), true);

  ExpectItem(rule, 2.0, -1, true);
  ExpectItem(rule, 4.0, -1, false);
  EXPECT_EQ(nullptr, rule.IsPresent(7.0));
  EXPECT_EQ(0, rule.GetNumChildren());
}

TEST(OSplitRule, InsertsCutPointsInAscendingOrder) {
  OSplitRule rule(kMissing, 0);
  for (double const cutPoint : {5.0, 1.0, 9.0, 3.0, 7.0})
    rule.InsertCutPoint(AtMost(cutPoint), false);

  EXPECT_EQ(1.0, rule.GetCutPoint());
  EXPECT_EQ(1, rule.Classify(1.0));
  EXPECT_EQ(3, rule.Classify(3.0));
  EXPECT_EQ(0, rule.Classify(5.0));
  EXPECT_EQ(4, rule.Classify(7.0));
  EXPECT_EQ(2, rule.Classify(9.0));
}

TEST(OSplitRule, InsertsNaNLast) {
  OSplitRule rule = BinaryRule(5.0);

  rule.InsertCutPoint(AtMost(kNaN), false);

  EXPECT_EQ(5.0, rule.GetCutPoint());
  EXPECT_EQ(0, rule.Classify(5.0));
  EXPECT_EQ(1, rule.Classify(6.0));
  EXPECT_EQ(3, rule.GetNumChildren());
}

TEST(OSplitRule, ARightEndAssignsAWaitingItemItsChildAndOpenness) {
  OSplitRule rule(kMissing, 0);
  rule.InsertCutPoint(Above(2.0), true);
  ExpectItem(rule, 2.0, -1, true);

  rule.InsertCutPoint(AtMost(2.0), false);

  ExpectItem(rule, 2.0, 0, false);
}

TEST(OSplitRule, ALeftEndGivesAWaitingItemItsOpennessAlone) {
  OSplitRule rule(kMissing, 0);
  rule.InsertCutPoint(Above(2.0), true);

  rule.InsertCutPoint(From(2.0), true);

  ExpectItem(rule, 2.0, -1, false);
}

TEST(OSplitRule, AnAssignedItemIsLeftAlone) {
  OSplitRule rule = OrdinalRule({AtMost(2.0), OpenClosed(2.0, 7.0)});

  rule.InsertCutPoint(Below(2.0), false);
  rule.InsertCutPoint(Above(2.0), true);

  ExpectItem(rule, 2.0, 0, false);
  EXPECT_EQ(2, rule.GetNumChildren());
}

TEST(OSplitRule, ChecksIntervalsByItsTestsAndNoOthers) {
  struct Row {
    char const* name;
    OValueSet interval;
    bool expected;
  };
  struct Group {
    char const* name;
    OSplitRule rule;
    std::vector<Row> rows;
  };
  Group const kGroups[] = {
      {"a rule without anything",
       OSplitRule(kMissing, 0),
       {
           {"whole line", Everything(), true},
           {"up to", AtMost(2.0), true},
           {"up to zero", AtMost(0.0), true},
           {"above", Above(2.0), true},
           {"above zero", Above(0.0), true},
           {"interval", OpenClosed(2.0, 7.0), true},
           {"interval from zero", OpenClosed(0.0, 7.0), true},
           {"ends in reverse", OpenClosed(7.0, 2.0), true},
           {"narrow", OpenClosed(2.0, 2.0000000000000004), true},
           {"equal ends, half open", OpenClosed(2.0, 2.0), false},
           {"equal ends, closed", Closed(2.0, 2.0), false},
           {"equal ends, open", Open(2.0, 2.0), false},
           {"ends at zeros of either sign", OpenClosed(-0.0, 0.0), false},
           {"ends NaN", OpenClosed(kNaN, kNaN), true},
       }},
      {"the whole line",
       OrdinalRule({Everything()}),
       {
           {"whole line again", Everything(), false},
           {"above", Above(2.0), false},
           {"up to", AtMost(2.0), true},
           {"interval", OpenClosed(2.0, 7.0), true},
       }},
      {"(-inf, 2]",
       OrdinalRule({AtMost(2.0)}),
       {
           {"below the first cut point", AtMost(1.0), false},
           {"interval below the first cut point", OpenClosed(-5.0, 1.0), false},
           {"at the first cut point", AtMost(2.0), false},
           {"interval that ends at the first cut point", OpenClosed(-5.0, 2.0), false},
           {"beyond the first cut point, unbounded below", AtMost(3.0), true},
           {"interval across the cut point", OpenClosed(1.0, 3.0), false},
           {"interval from the cut point", OpenClosed(2.0, 7.0), true},
           {"interval from the cut point, closed", Closed(2.0, 7.0), true},
           {"interval from less than a unit above", OpenClosed(2.5, 7.0), false},
           {"interval from a unit above", OpenClosed(3.0, 7.0), true},
           {"above the cut point", Above(2.0), true},
           {"above less, unbounded above", Above(1.0), true},
           {"whole line", Everything(), true},
       }},
      {"(-inf, 0], an end that unbounded sides seem to have",
       OrdinalRule({AtMost(0.0)}),
       {
           {"above", Above(0.0), true},
           {"above more", Above(5.0), true},
           {"whole line", Everything(), true},
       }},
      {"(-5, 5], with the interval below waiting",
       OrdinalRule({OpenClosed(-5.0, 5.0)}),
       {
           {"above", Above(5.0), true},
           {"whole line, whose right end seems to be inside", Everything(), true},
           {"up to the waiting item", AtMost(-5.0), true},
       }},
      {"(2, 7], with the interval below waiting",
       OrdinalRule({OpenClosed(2.0, 7.0)}),
       {
           {"up to the waiting item", AtMost(2.0), true},
           {"less than the waiting item", AtMost(1.0), true},
           {"end inside the assigned interval", AtMost(3.0), false},
           {"end just above the waiting item", AtMost(2.0000000000000004), false},
           {"end just below the cut point", AtMost(6.999999999999999), false},
           {"end at the assigned cut point", AtMost(7.0), false},
           {"end beyond, unbounded below", AtMost(8.0), true},
           {"interval inside the assigned one", OpenClosed(3.0, 5.0), false},
           {"interval a unit below", OpenClosed(0.0, 1.0), true},
           {"interval less than a unit below", OpenClosed(0.0, 1.5), false},
           {"interval across the waiting item", OpenClosed(1.0, 3.0), false},
           {"interval to the waiting item", OpenClosed(0.0, 2.0), true},
           {"interval from the cut point", OpenClosed(7.0, 9.0), true},
           {"above the cut point", Above(7.0), true},
       }},
      {"(-inf, 2] and (5, 7], with (2, 5] waiting",
       OrdinalRule({AtMost(2.0), OpenClosed(5.0, 7.0)}),
       {
           {"end inside the waiting interval", AtMost(4.0), true},
           {"end of the waiting interval", AtMost(5.0), true},
           {"the waiting interval", OpenClosed(2.0, 5.0), true},
           {"interval inside the waiting one", OpenClosed(3.0, 4.0), true},
           {"end inside the upper interval", AtMost(6.0), false},
       }},
      {"cut points 2 and 7 of which no interval is assigned",
       WaitingAt({2.0, 7.0}),
       {
           {"end below", AtMost(1.0), true},
           {"end between", AtMost(5.0), true},
           {"end at the last cut point", AtMost(7.0), true},
           {"interval above the last cut point", OpenClosed(8.0, 9.0), true},
       }},
      {"(-inf, 2], (2, 7], (7, inf)",
       ThreeWayRule(),
       {
           {"whole line", Everything(), false},
           {"above", Above(9.0), false},
           {"above the last cut point", Above(7.0), false},
           {"interval above the last cut point", OpenClosed(8.0, 9.0), false},
           {"interval from just above the last cut point", OpenClosed(7.000000000000001, 9.0),
            false},
           {"interval from the last cut point", OpenClosed(7.0, 9.0), true},
           {"beyond all, unbounded below", AtMost(9.0), true},
           {"up to the second cut point", AtMost(7.0), false},
           {"up to between", AtMost(5.0), false},
           {"interval across all", OpenClosed(0.0, 9.0), false},
           {"interval that exists", OpenClosed(2.0, 7.0), false},
       }},
      {"(-inf, -5], (-5, inf), below the end that unbounded sides seem to have",
       OrdinalRule({AtMost(-5.0), Above(-5.0)}),
       {
           {"unbounded below", AtMost(-3.0), true},
           {"interval above", OpenClosed(-4.0, -3.0), false},
       }},
  };
  for (Group const& group : kGroups) {
    SCOPED_TRACE(group.name);
    for (Row const& row : group.rows) {
      EXPECT_EQ(row.expected, group.rule.IsValidInterval(row.interval))
          << row.name << ": " << Written(row.interval);
    }
  }
}

TEST(OSplitRule, ReadsNothingBackUnlessItIsValid) {
  OSplitRule rule = OrdinalRule({OpenClosed(2.0, 7.0), Above(7.0)});  // nothing up to 2

  for (int child = -1; child < 3; ++child) EXPECT_EQ("none", IntervalOf(rule, child)) << child;
  OSplitRule const withoutUpperChild = OrdinalRule({AtMost(2.0)});
  for (int child = -1; child < 3; ++child) {
    EXPECT_EQ("none", IntervalOf(withoutUpperChild, child)) << child;
  }
}

TEST(OSplitRule, ReadsNothingBackForAChildWithoutValues) {
  OSplitRule rule = ThreeWayRule();
  rule.AddMissingValueMapping(true);

  EXPECT_EQ("none", IntervalOf(rule, -1));
  EXPECT_EQ("none", IntervalOf(rule, 3));
  EXPECT_EQ("none", IntervalOf(rule, 4));
}

TEST(OSplitRule, ReadsBackOnlyTheLowestIntervalOfAChild) {
  OSplitRule rule =
      OrdinalRule({AtMost(2.0), OpenClosed(2.0, 4.0), OpenClosed(4.0, 7.0), Above(7.0)});

  rule.ReorderMappings({1, 0, 1, 2});

  EXPECT_EQ("(-inf, 2]", IntervalOf(rule, 1));
}

TEST(OSplitRule, ReadsBackTheUpperIntervalOfTheUpperChildThoughItHasAnother) {
  OSplitRule rule = ThreeWayRule();

  rule.ReorderMappings({0, 1, 0});

  EXPECT_EQ("(7, inf)", IntervalOf(rule, 0));
}

TEST(OSplitRule, ReadsBackUnboundedIntervalsThatAreNotEmpty) {
  OSplitRule const rule = OrdinalRule({AtMost(-7.0), OpenClosed(-7.0, 7.0), Above(7.0)});
  for (int child = 0; child < 3; ++child) {
    SCOPED_TRACE(child);
    std::unique_ptr<ValueSet> const set(rule.GetMappedValues(child));

    EXPECT_FALSE(dynamic_cast<OValueSet const&>(*set).IsEmpty());
  }
}

TEST(OSplitRule, ReadsBackANewSetThatTheCallerDeletes) {
  OSplitRule const rule = ThreeWayRule();
  long const before = CountLiveAllocations();

  ValueSet* const first = rule.GetMappedValues(1);
  ValueSet* const second = rule.GetMappedValues(1);

  EXPECT_NE(first, second);
  EXPECT_FALSE(first->IsNominalValueSet());
  delete first;
  delete second;
  EXPECT_EQ(before, CountLiveAllocations());
}

TEST(OSplitRule, ReadsIntoASetThatNoLongerHangsOnTheRule) {
  auto rule = std::make_unique<OSplitRule>(ThreeWayRule());
  std::unique_ptr<ValueSet> const set(rule->GetMappedValues(1));

  rule.reset();

  EXPECT_EQ("(2, 7]", Written(dynamic_cast<OValueSet const&>(*set)));
}

/// A rule of which no field has its default.
OSplitRule ChangedRule() {
  OSplitRule rule(-1.0, 4);
  for (OValueSet const& interval : {AtMost(2.0), OpenClosed(2.0, 7.0), Above(7.0)}) {
    rule.AddMappedValues(interval);
  }
  ChangeCore(rule);
  return rule;
}

void ExpectChanged(OSplitRule const& rule) {
  EXPECT_TRUE(rule == ChangedRule());
  EXPECT_EQ(0, rule.Compare(ChangedRule()));
  EXPECT_EQ(-1.0, rule.GetMissingValue());
  EXPECT_THAT(IntervalsOf(rule), ElementsAre("(-inf, 2]", "(2, 7]", "(7, inf)", "none"));
}

TEST(OSplitRule, CopyHasAllFields) {
  OSplitRule const source = ChangedRule();

  OSplitRule const copy(source);

  ExpectChanged(copy);
}

TEST(OSplitRule, CloneIsANewRuleOfTheSameKindWithAllFields) {
  OSplitRule const source = ChangedRule();

  std::unique_ptr<SplitRuleImp> const clone(source.Clone());

  EXPECT_NE(&source, clone.get());
  ExpectChanged(dynamic_cast<OSplitRule const&>(*clone));
}

TEST(OSplitRule, AssignmentCopiesAllFields) {
  OSplitRule const source = ChangedRule();
  OSplitRule target = BinaryRule(5.0);

  EXPECT_EQ(&target, &(target = source));

  ExpectChanged(target);
}

TEST(OSplitRule, AssignmentToItselfChangesNothing) {
  OSplitRule rule = ChangedRule();
  OSplitRule const& same = rule;

  rule = same;

  ExpectChanged(rule);
}

TEST(OSplitRule, CopiesAreIndependent) {
  OSplitRule source = ChangedRule();
  OSplitRule const copy(source);
  std::unique_ptr<SplitRuleImp> const clone(source.Clone());
  OSplitRule assigned(kMissing, 0);
  assigned = source;

  source.SetCutPoint(-5.0);
  Assign(source, 7.0, 8);
  source.SetDumbRule(0, 0.1);

  ExpectChanged(copy);
  ExpectChanged(dynamic_cast<OSplitRule const&>(*clone));
  ExpectChanged(assigned);
}

TEST(OSplitRule, EmptyCloneHasThePredictorAndTheMissingValueAndNothingElse) {
  OSplitRule const source = ChangedRule();

  std::unique_ptr<SplitRuleImp> const clone(source.EmptyClone());

  auto const& ordinal = dynamic_cast<OSplitRule const&>(*clone);
  EXPECT_TRUE(OSplitRule(-1.0, 4) == ordinal);
  EXPECT_EQ(0, OSplitRule(-1.0, 4).Compare(ordinal));
  EXPECT_EQ(-1.0, ordinal.GetMissingValue());
  EXPECT_EQ(0, ordinal.GetNumChildren());
}

TEST(OSplitRule, ClonesBelongToTheCaller) {
  OSplitRule const source = ChangedRule();
  long const before = CountLiveAllocations();

  delete source.Clone();
  delete source.EmptyClone();

  EXPECT_EQ(before, CountLiveAllocations());
}

TEST(OSplitRule, IsDeletedThroughItsBase) {
  int deaths = 0;
  std::unique_ptr<SplitRuleImp> rule = std::make_unique<Watched<OSplitRule>>(&deaths, kMissing, 0);

  rule.reset();

  EXPECT_EQ(1, deaths);
}

TEST(OSplitRule, LeaksNothingWhenItCannotAllocate) {
  OSplitRule const source = ThreeWayRule();
  long const before = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&source] {
    std::unique_ptr<SplitRuleImp> const clone(source.Clone());
    std::unique_ptr<SplitRuleImp> const emptyClone(source.EmptyClone());
    std::unique_ptr<ValueSet> const values(source.GetMappedValues(1));
  });

  EXPECT_EQ(5, failures);
  EXPECT_EQ(before, CountLiveAllocations());
}

TEST(OSplitRule, StaysAsItIsWhenAssignmentCannotAllocate) {
  OSplitRule const source = ChangedRule();
  OSplitRule const before = BinaryRule(5.0);
  OSplitRule target(before);
  {
    FailingAllocator const allocator(1);

    EXPECT_THROW(target = source, std::bad_alloc);
  }

  EXPECT_TRUE(before == target);
  EXPECT_EQ(0, before.Compare(target));
}

TEST(OSplitRule, StaysAsItIsWhenCopyingMappingsCannotAllocate) {
  OSplitRule source = ThreeWayRule();
  source.AddMissingValueMapping(true);
  OSplitRule const before = BinaryRule(5.0);
  OSplitRule target(before);
  {
    FailingAllocator const allocator(1);

    EXPECT_THROW(target.CopyMappings(source), std::bad_alloc);
  }

  EXPECT_TRUE(before == target);
  EXPECT_EQ(0, before.Compare(target));
}

TEST(OSplitRule, CopiesTheMappingsAlone) {
  OSplitRule const source = ChangedRule();
  OSplitRule target(kMissing, 2);
  target.SetCutPoint(5.0);
  target.SetDumbRule(0, 0.5);

  EXPECT_TRUE(target.CopyMappings(source));

  EXPECT_THAT(IntervalsOf(target), ElementsAre("(-inf, 2]", "(2, 7]", "(7, inf)", "none"));
  EXPECT_EQ(3, target.GetMissingValueMapping());
  EXPECT_EQ(kMissing, target.GetMissingValue());
  EXPECT_EQ(2, target.GetPredictorIndex());
  EXPECT_EQ(0, target.GetDumbChildPos());
  EXPECT_FALSE(target.HasStatistic(StatisticFlag1));
  EXPECT_EQ(1, target.GetCreationFlags());
}

TEST(OSplitRule, CopiesMappingsOfItself) {
  OSplitRule rule = ChangedRule();

  EXPECT_TRUE(rule.CopyMappings(rule));

  ExpectChanged(rule);
}

TEST(OSplitRule, CopiesMappingsIndependently) {
  OSplitRule source = ThreeWayRule();
  OSplitRule target(kMissing, 0);
  target.CopyMappings(source);

  source.SetCutPoint(-5.0);

  EXPECT_EQ("(-inf, 2]", IntervalOf(target, 0));
}

TEST(OSplitRule, CopiesNoMappingsOfAnotherKind) {
  NSplitRule nominal = NominalRule({Codes({0})});
  nominal.AddMissingValueMapping(true);
  OSplitRule const before = BinaryRule(5.0);
  OSplitRule rule(before);

  EXPECT_FALSE(rule.CopyMappings(nominal));

  EXPECT_TRUE(before == rule);
  EXPECT_EQ(0, before.Compare(rule));
}

TEST(OSplitRule, ComparesWithATolerance) {
  struct Row {
    char const* name;
    double a;
    double b;
    int expected;
  };
  Row const kRows[] = {
      {"apart by 1e-13", 5.0, 5.0 + 1e-13, 0},
      {"apart by 1e-11", 5.0, 5.0 + 1e-11, 1},
      {"apart by the tolerance", 0.0, 1e-12, 0},
      {"apart by just more", 0.0, std::nextafter(1e-12, 1.0), 1},
      {"apart by the tolerance downwards", 0.0, -1e-12, 0},
      {"apart by just more downwards", 0.0, -std::nextafter(1e-12, 1.0), 1},
      {"infinite and finite", kInfinity, 5.0, 1},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);

    EXPECT_EQ(row.expected, BinaryRule(row.a).Compare(BinaryRule(row.b)));
    EXPECT_EQ(row.expected, BinaryRule(row.b).Compare(BinaryRule(row.a)));
  }
}

TEST(OSplitRule, Compares) {
  struct Row {
    char const* name;
    std::function<void(OSplitRule&)> change;
    int expected;
  };
  Row const kRows[] = {
      {"nothing", [](OSplitRule&) {}, 0},
      {"child of the first item", [](OSplitRule& rule) { Assign(rule, 2.0, 4); }, 1},
      {"child of the last item", [](OSplitRule& rule) { Assign(rule, 7.0, 4); }, 1},
      {"first cut point", [](OSplitRule& rule) { rule.SetCutPoint(3.0); }, 1},
      {"last cut point", [](OSplitRule& rule) { rule.IsPresent(7.0)->cutPoint = 8.0; }, 1},
      {"one more item", [](OSplitRule& rule) { rule.InsertCutPoint(AtMost(9.0), false); }, 1},
      {"upper child alone",
       [](OSplitRule& rule) {
         rule = OrdinalRule({AtMost(2.0), OpenClosed(2.0, 7.0)});
         rule.SetStatistic(StatisticFlag1, 1.0);
       },
       1},
      {"missing value mapping", [](OSplitRule& rule) { rule.AddMissingValueMapping(true); }, 1},
      {"openness", [](OSplitRule& rule) { rule.IsPresent(2.0)->openAtCut = true; }, 0},
      {"what is no mapping",
       [](OSplitRule& rule) {
         rule.SetStatistic(StatisticFlag1, 1.0);
         rule.SetDumbRule(0, 0.5);
         rule.SetProperty(SplitRuleMappingsReordered);
       },
       0},
      {"missing value",
       [](OSplitRule& rule) {
         OSplitRule other(0.0, 0);
         other.CopyMappings(rule);
         rule = other;
       },
       3},
      {"missing value and mapping",
       [](OSplitRule& rule) {
         rule = OSplitRule(0.0, 0);
         rule.AddMissingValueMapping(true);
       },
       3},
      {"predictor", [](OSplitRule& rule) { rule = OSplitRule(kMissing, 1); }, 2},
      {"predictor and missing value", [](OSplitRule& rule) { rule = OSplitRule(0.0, 1); }, 2},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    OSplitRule const rule = ThreeWayRule();
    OSplitRule other(rule);

    row.change(other);

    EXPECT_EQ(row.expected, rule.Compare(other));
    EXPECT_EQ(row.expected, other.Compare(rule));
  }
}

TEST(OSplitRule, ANaNAsMissingValueDiffersFromEverything) {
  OSplitRule const rule(kNaN, 0);

  EXPECT_EQ(3, rule.Compare(rule));
  EXPECT_EQ(3, rule.Compare(OSplitRule(0.0, 0)));
}

TEST(OSplitRule, ComparesWithRulesOfAnotherKind) {
  OSplitRule const rule = BinaryRule(5.0);
  NSplitRule withMapping(0, 3);
  withMapping.AddMissingValueMapping(true);

  EXPECT_EQ(3, rule.Compare(NSplitRule(0, 3)));
  EXPECT_EQ(3, rule.Compare(withMapping));
  EXPECT_EQ(2, rule.Compare(NSplitRule(1, 3)));
}

TEST(OSplitRule, ReordersAllChildren) {
  OSplitRule rule = ThreeWayRule();
  rule.AddMissingValueMapping(true);
  rule.SetDumbRule(1, 0.5);

  rule.ReorderMappings({2, 3, 1, 0});

  EXPECT_EQ(2, rule.Classify(2.0));
  EXPECT_EQ(3, rule.Classify(7.0));
  EXPECT_EQ(1, rule.Classify(8.0));
  EXPECT_EQ(0, rule.Classify(kMissing));
  EXPECT_EQ(3, rule.GetDumbChildPos());
  EXPECT_TRUE(rule.HasProperty(SplitRuleMappingsReordered));
}

TEST(OSplitRule, ReorderingKeepsCutPointsAndOpenness) {
  OSplitRule rule = OrdinalRule({Below(2.0), From(2.0)});

  rule.ReorderMappings({1, 0});

  EXPECT_THAT(IntervalsOf(rule), ElementsAre("[2, inf)", "(-inf, 2)"));
}

#if TREE_HAS_SLOTS
TEST(OSplitRule, ItsOwnOperationsAreNotVirtual) {
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::GetMissingValue));
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::SetCutPoint));
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::GetCutPoint));
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::IsPresent));
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::InsertCutPoint));
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::IsValidInterval));
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::IsValid));
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::IsValidBinary));
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::IsStandard));
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::SetStandard));
  EXPECT_EQ(-1, VirtualSlot(&OSplitRule::SetReverse));
}
#endif

class OSplitRuleDeathTest : public DeathTest {};

TEST_F(OSplitRuleDeathTest, NamesTheChildWithoutANewPosition) {
  EXPECT_ASSERTION(ThreeWayRule().ReorderMappings({1, 0}), "OSplitRule::ReorderMappings: index 2");
}

TEST_F(OSplitRuleDeathTest, NamesTheUnassignedChildReordered) {
  EXPECT_ASSERTION(OrdinalRule({AtMost(2.0)}).ReorderMappings({0}),
                   "OSplitRule::ReorderMappings: index -1");
}

}  // namespace
}  // namespace tree::testing
