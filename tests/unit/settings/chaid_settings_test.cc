#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

#include "testing/foreign_settings.h"
#include "testing/settings_builder.h"
#include "testing/virtual_slot.h"
#include "tree/settings.h"

namespace tree::testing {
namespace {

static_assert(SplitMergeMethod0 == 0 && SplitMergeMethod1 == 1);
static_assert(std::is_same_v<int, std::underlying_type_t<SplitMergeMethod>>);
static_assert(std::is_convertible_v<SplitMergeMethod, int>);  // unscoped

static_assert(std::is_abstract_v<ChaidSettings>);
static_assert(std::is_base_of_v<AlgSettings, ChaidSettings>);
static_assert(std::is_copy_assignable_v<ChaidSettings>);
static_assert(std::is_same_v<decltype(&ChaidSettings::GetSplitMergeMethod),
                             SplitMergeMethod (ChaidSettings::*)() const>);

// One of two overloads, so it is named by its type.
constexpr void (ChaidSettings::*kInit)(double, double, double, SplitMergeMethod, bool,
                                       bool) = &ChaidSettings::Init;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Values {
  double splitNode;
  double merge;
  double mergeSplit;
  int method;
  bool allowSplitMerge;
  bool useBonferroni;
};

constexpr Values kDefaults = {0.05, 0.05, 0.025, 0, false, true};
constexpr Values kOthers = {0.125, 0.25, 0.375, 1, true, false};

void ExpectValues(ChaidSettings const& settings, Values const& expected) {
  EXPECT_EQ(settings.GetAlphaOfSplitNode(), expected.splitNode);
  EXPECT_EQ(settings.GetAlphaOfMerge(), expected.merge);
  EXPECT_EQ(settings.GetAlphaOfMergeSplit(), expected.mergeSplit);
  EXPECT_EQ(settings.GetSplitMergeMethod(), expected.method);
  EXPECT_EQ(settings.GetAllowSplitMerge(), expected.allowSplitMerge);
  EXPECT_EQ(settings.GetUseBonferroniAdj(), expected.useBonferroni);
}

void InitWith(ChaidSettings& settings, Values const& values) {
  settings.Init(values.splitNode, values.merge, values.mergeSplit,
                static_cast<SplitMergeMethod>(values.method), values.allowSplitMerge,
                values.useBonferroni);
}

RChaidSettingsImp NewSettings() { return RChaidSettingsImp(CoreOf(3)); }

TEST(ChaidSettings, BeginsWithItsDefaults) {
  RChaidSettingsImp const settings = NewSettings();

  ExpectValues(settings, kDefaults);
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 3);
  EXPECT_EQ(settings.GetMaxNominalPredCategories(), 32);
}

TEST(ChaidSettings, StopsAtDepthThreeAndLeavesTheOtherStoppingLimits) {
  Fields expected;
  Fields actual;
  StopRuleImp rule;
  rule.SetMaxTreeDepth(3);
  Describe("stop", rule, expected);

  RChaidSettingsImp const settings = NewSettings();
  Describe("stop", *settings.GetStopRule(), actual);

  EXPECT_EQ(actual, expected);
}

TEST(ChaidSettings, IsInitialisedInOrder) {
  RChaidSettingsImp settings = NewSettings();

  settings.Init(0.125, 0.25, 0.375, SplitMergeMethod1, true, false);

  ExpectValues(settings, kOthers);
}

TEST(ChaidSettings, DerivesAndChecksNothingInInit) {
  Values const odd[] = {{-1.0, 0.5, 7.0, 2, false, false},
                        {2.0, -3.0, kInfinity, -1, true, true},
                        {0.0, 0.1, 0.1, std::numeric_limits<int>::max(), true, false}};
  for (Values const& values : odd) {
    RChaidSettingsImp settings = NewSettings();

    InitWith(settings, values);

    ExpectValues(settings, values);
  }
}

TEST(ChaidSettings, LeavesTheSharedPartAloneInInit) {
  std::unique_ptr<AlgSettings> const settings = FilledSettings(AlgRChaid, 1);
  Fields const shared = GroupOf(Describe(*settings), "shared: ");

  InitWith(dynamic_cast<ChaidSettings&>(*settings), kOthers);

  EXPECT_EQ(GroupOf(Describe(*settings), "shared: "), shared);
}

TEST(ChaidSettings, HalvesTheMergeLevelForSplittingMergedCategories) {
  RChaidSettingsImp settings = NewSettings();
  InitWith(settings, kOthers);

  settings.SetAlphaOfMerge(0.1);

  Values expected = kOthers;
  expected.merge = 0.1;
  expected.mergeSplit = 0.05;
  ExpectValues(settings, expected);
}

TEST(ChaidSettings, SetsTheLevelForSplittingMergedCategoriesByItself) {
  RChaidSettingsImp settings = NewSettings();

  settings.SetAlphaOfMerge(0.1);
  settings.SetAlphaOfMergeSplit(0.075);

  Values expected = kDefaults;
  expected.merge = 0.1;
  expected.mergeSplit = 0.075;
  ExpectValues(settings, expected);
  settings.SetAlphaOfMerge(0.5);
  EXPECT_EQ(settings.GetAlphaOfMergeSplit(), 0.25);
}

TEST(ChaidSettings, SetsTheLevelForSplittingANodeByItself) {
  RChaidSettingsImp settings = NewSettings();

  settings.SetAlphaOfSplitNode(0.2);

  Values expected = kDefaults;
  expected.splitNode = 0.2;
  ExpectValues(settings, expected);
}

TEST(ChaidSettings, StoresAnyLevel) {
  for (double const alpha : {0.0, 1.0, -0.5, 2.0, kInfinity, -kInfinity}) {
    SCOPED_TRACE(alpha);
    RChaidSettingsImp settings = NewSettings();

    settings.SetAlphaOfSplitNode(alpha);
    settings.SetAlphaOfMerge(alpha);

    EXPECT_EQ(settings.GetAlphaOfSplitNode(), alpha);
    EXPECT_EQ(settings.GetAlphaOfMerge(), alpha);
    EXPECT_EQ(settings.GetAlphaOfMergeSplit(), alpha / 2.0);
    settings.SetAlphaOfMergeSplit(alpha);
    EXPECT_EQ(settings.GetAlphaOfMergeSplit(), alpha);
  }
  RChaidSettingsImp settings = NewSettings();
  settings.SetAlphaOfMerge(kNaN);
  settings.SetAlphaOfSplitNode(kNaN);
  EXPECT_TRUE(std::isnan(settings.GetAlphaOfSplitNode()));
  EXPECT_TRUE(std::isnan(settings.GetAlphaOfMerge()));
  EXPECT_TRUE(std::isnan(settings.GetAlphaOfMergeSplit()));
}

TEST(ChaidSettings, IgnoresMethodsThatAreNotNamed) {
  for (int const held : {0, 1}) {
    for (int const method :
         {2, -1, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
      SCOPED_TRACE(method);
      RChaidSettingsImp settings = NewSettings();
      settings.SetSplitMergeMethod(static_cast<SplitMergeMethod>(held));

      settings.SetSplitMergeMethod(static_cast<SplitMergeMethod>(method));

      EXPECT_EQ(settings.GetSplitMergeMethod(), held);
    }
  }
}

TEST(ChaidSettings, StoresBothMethods) {
  RChaidSettingsImp settings = NewSettings();

  settings.SetSplitMergeMethod(SplitMergeMethod1);
  EXPECT_EQ(settings.GetSplitMergeMethod(), SplitMergeMethod1);
  settings.SetSplitMergeMethod(SplitMergeMethod0);
  EXPECT_EQ(settings.GetSplitMergeMethod(), SplitMergeMethod0);
}

TEST(ChaidSettings, StoresEachFlagByItself) {
  RChaidSettingsImp settings = NewSettings();
  Values expected = kDefaults;

  settings.SetAllowSplitMerge(true);
  expected.allowSplitMerge = true;
  ExpectValues(settings, expected);
  settings.SetUseBonferroniAdj(false);
  expected.useBonferroni = false;
  ExpectValues(settings, expected);
  settings.SetAllowSplitMerge(false);
  expected.allowSplitMerge = false;
  ExpectValues(settings, expected);
  settings.SetUseBonferroniAdj(true);
  expected.useBonferroni = true;
  ExpectValues(settings, expected);
}

TEST(ChaidSettings, CopiesItsFieldsFromEitherVariant) {
  RChaidSettingsImp regression = NewSettings();
  CChaidSettingsImp classification(CoreOf(3));
  InitWith(regression, kOthers);
  InitWith(classification, kOthers);
  for (AlgSettings const* const source : {static_cast<AlgSettings const*>(&regression),
                                          static_cast<AlgSettings const*>(&classification)}) {
    RChaidSettingsImp target = NewSettings();

    target.CopyFrom(*source);

    ExpectValues(target, kOthers);
  }
}

TEST(ChaidSettings, CopiesLevelsUncheckedAndUnderived) {
  Values const odd = {-1.0, 0.5, 7.0, 9, true, false};
  RChaidSettingsImp source = NewSettings();
  InitWith(source, odd);
  RChaidSettingsImp target = NewSettings();

  target.CopyFrom(source);
  RChaidSettingsImp const copy(source);

  ExpectValues(target, odd);
  ExpectValues(copy, odd);
}

TEST(ChaidSettings, IsAssignedAsItIsCopied) {
  RChaidSettingsImp source = NewSettings();
  InitWith(source, kOthers);
  CChaidSettingsImp target(CoreOf(1));
  target.SetMaxNumIterations(9);

  ChaidSettings& base = target;
  EXPECT_EQ(&(base = static_cast<ChaidSettings const&>(source)), &base);

  ExpectValues(target, kOthers);
  EXPECT_EQ(target.GetMaxNumIterations(), 9);
  EXPECT_EQ(target.GetMaxNumCompetitors(), 3);
}

TEST(ChaidSettings, CopiesTheSharedPartAloneFromAnythingElse) {
  Claiming<RChaidSettingsImp> disguised(AlgQuest, CoreOf(2));  // a CHAID that denies it
  InitWith(disguised, kOthers);
  Claiming<PlainSettings> impostor(AlgRChaid, CoreOf(2));  // no CHAID, though it says so
  Claiming<RCartSettingsImp> cart(AlgCChaid, CoreOf(2));
  PlainSettings plain(CoreOf(2));
  for (AlgSettings const* const source :
       {static_cast<AlgSettings const*>(&disguised), static_cast<AlgSettings const*>(&impostor),
        static_cast<AlgSettings const*>(&cart), static_cast<AlgSettings const*>(&plain)}) {
    SCOPED_TRACE(source->GetType());
    RChaidSettingsImp target(CoreOf(5, global::MeasurementContinuous));

    target.CopyFrom(*source);

    ExpectValues(target, kDefaults);
    EXPECT_EQ(target.GetCoreSettings()->GetNumPredictors(), 2);
    EXPECT_EQ(target.GetMaxNumCompetitors(), 2);
    EXPECT_EQ(target.GetStopRule()->GetMaxTreeDepth(), source->GetStopRule()->GetMaxTreeDepth());
  }
}

TEST(ChaidSettings, CopiesItsFieldsFromAForeignVariant) {
  ForeignCChaidSettings source(CoreOf(2));
  InitWith(source, kOthers);
  RChaidSettingsImp target = NewSettings();

  target.CopyFrom(source);

  ExpectValues(target, kOthers);
}

#if TREE_HAS_SLOTS
TEST(ChaidSettings, AddsNoVirtualOperation) {
  using Chaid = ChaidSettings;
  EXPECT_EQ(VirtualSlot(static_cast<void (Chaid::*)(AlgSettings const&)>(&Chaid::CopyFrom)),
            kFirstSlot + 9);  // in the place that it has in the base
  EXPECT_EQ(VirtualSlot(&Chaid::GetAlphaOfSplitNode), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::SetAlphaOfSplitNode), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::GetAlphaOfMerge), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::SetAlphaOfMerge), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::GetAlphaOfMergeSplit), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::SetAlphaOfMergeSplit), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::GetSplitMergeMethod), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::SetSplitMergeMethod), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::GetAllowSplitMerge), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::SetAllowSplitMerge), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::GetUseBonferroniAdj), -1);
  EXPECT_EQ(VirtualSlot(&Chaid::SetUseBonferroniAdj), -1);
  EXPECT_EQ(VirtualSlot(kInit), -1);
}
#endif

}  // namespace
}  // namespace tree::testing
