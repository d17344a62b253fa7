#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

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
using ::testing::IsEmpty;

static_assert(std::is_base_of_v<SplitRuleImp, NSplitRule>);
static_assert(std::is_same_v<int, decltype(std::declval<NSplitRule const&>().GetCatMapping(0))>);
static_assert(std::is_same_v<void, decltype(std::declval<NSplitRule&>().SetCatMapping(0, 0))>);
static_assert(
    std::is_convertible_v<decltype(std::declval<NSplitRule const&>().Clone()), SplitRuleImp*>);

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Codes 0 and 2 for child 0, code 1 for child 1.
NSplitRule TwoWayRule() { return NominalRule({Codes({0, 2}), Codes({1})}); }

/// The codes in the table that are not mapped, which tells how far it reaches.
std::vector<int> UnmappedCodes(NSplitRule const& rule) { return CategoriesOf(rule, -1); }

TEST(NSplitRule, BeginsWithItsCategoriesUnmapped) {
  NSplitRule const rule(4, 3);

  EXPECT_EQ(4, rule.GetPredictorIndex());
  EXPECT_EQ(0, rule.GetNumChildren());
  EXPECT_EQ(-1, rule.Classify(1.0));
  EXPECT_THAT(UnmappedCodes(rule), ElementsAre(0, 1, 2));
  EXPECT_EQ(-1, rule.GetMissingValueMapping());
  EXPECT_EQ(1, rule.GetCreationFlags());
}

TEST(NSplitRule, BeginsEmptyWithoutAPositiveNumberOfCategories) {
  for (int const count : {0, -1, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(count);
    NSplitRule const rule(4, count);

    EXPECT_EQ(0, rule.GetNumChildren());
    EXPECT_EQ(nullptr, rule.GetMappedValues(-1));
  }
}

TEST(NSplitRule, IsNotOrdered) { EXPECT_FALSE(NSplitRule(0, 0).IsOrdered()); }

TEST(NSplitRule, MapsACategory) {
  NSplitRule rule(0, 3);

  rule.SetCatMapping(1, 4);
  rule.SetCatMapping(0, 2);
  rule.SetCatMapping(1, 3);

  EXPECT_EQ(2, rule.GetCatMapping(0));
  EXPECT_EQ(3, rule.GetCatMapping(1));
  EXPECT_EQ(-1, rule.GetCatMapping(2));
  EXPECT_EQ(4, rule.GetNumChildren());
}

TEST(NSplitRule, MappingGrowsTheTableWithUnmappedCategories) {
  NSplitRule rule(0, 3);

  rule.SetCatMapping(5, 1);

  EXPECT_THAT(UnmappedCodes(rule), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_EQ(1, rule.GetCatMapping(5));
  EXPECT_EQ(2, rule.GetNumChildren());
}

TEST(NSplitRule, MappingTheCategoryAfterTheTableGrowsItByOne) {
  NSplitRule rule(0, 3);

  rule.SetCatMapping(3, 0);

  EXPECT_THAT(UnmappedCodes(rule), ElementsAre(0, 1, 2));
  EXPECT_THAT(CategoriesOf(rule, 0), ElementsAre(3));
}

TEST(NSplitRule, IgnoresNegativeCategories) {
  NSplitRule rule(0, 3);

  rule.SetCatMapping(-1, 4);
  rule.SetCatMapping(std::numeric_limits<int>::min(), 4);

  EXPECT_EQ(0, rule.GetNumChildren());
  EXPECT_THAT(UnmappedCodes(rule), ElementsAre(0, 1, 2));
}

TEST(NSplitRule, ReadsCategoriesOutsideItsTableAsUnmapped) {
  NSplitRule const rule = TwoWayRule();

  EXPECT_EQ(0, rule.GetCatMapping(2));
  EXPECT_EQ(-1, rule.GetCatMapping(3));
  EXPECT_EQ(-1, rule.GetCatMapping(-1));
  EXPECT_EQ(-1, rule.GetCatMapping(std::numeric_limits<int>::max()));
  EXPECT_EQ(-1, rule.GetCatMapping(std::numeric_limits<int>::min()));
}

TEST(NSplitRule, StoresAnyChild) {
  NSplitRule rule(0, 1);

  rule.SetCatMapping(0, -5);

  EXPECT_EQ(-5, rule.GetCatMapping(0));
  EXPECT_EQ(-1, rule.Classify(0.0));
  EXPECT_EQ(0, rule.GetNumChildren());
}

TEST(NSplitRule, Classifies) {
  struct Row {
    char const* name;
    double value;
    int expected;
  };
  Row const kRows[] = {
      {"first code", 0.0, 0},
      {"negative zero", -0.0, 0},
      {"middle code", 1.0, 1},
      {"last code", 2.0, 0},
      {"unmapped code in the table", 3.0, -1},
      {"last code of the table", 4.0, 1},
      {"code after the table", 5.0, -1},
      {"code beyond the table", 7.0, -1},
      {"fraction", 1.5, -1},
      {"just above a code", 1.0000000000000002, -1},
      {"just below a code", 0.9999999999999999, -1},
      {"fraction below the first code", -0.5, -1},
      {"fraction above the first code", 0.5, -1},
      {"negative", -1.0, -1},
      {"above the 32-bit range", 2147483648.0, -1},
      {"code and the size of the 32-bit range", 4294967297.0, -1},
      {"below the 32-bit range", -2147483649.0, -1},
      {"far above", 1e300, -1},
      {"infinity", kInfinity, -1},
      {"negative infinity", -kInfinity, -1},
      {"NaN", kNaN, -1},
      {"the missing value of the system", systemMissingValue(), -1},
  };
  NSplitRule rule = TwoWayRule();
  rule.SetCatMapping(4, 1);
  NSplitRule withMissingChild(rule);
  withMissingChild.AddMissingValueMapping(true);
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);

    EXPECT_EQ(row.expected, rule.Classify(row.value));
    EXPECT_EQ(row.expected < 0 ? 2 : row.expected, withMissingChild.Classify(row.value));
  }
}

TEST(NSplitRule, CountsUpToTheHighestChildInUse) {
  NSplitRule rule(0, 3);
  EXPECT_EQ(0, rule.GetNumChildren());

  rule.SetCatMapping(1, 6);
  rule.SetCatMapping(2, 3);
  EXPECT_EQ(7, rule.GetNumChildren());
  rule.AddMissingValueMapping(true);
  EXPECT_EQ(8, rule.GetNumChildren());
  rule.SetCatMapping(0, 9);
  EXPECT_EQ(10, rule.GetNumChildren());
}

TEST(NSplitRule, CountsTheLargestIntegerAsItself) {
  NSplitRule rule(0, 1);
  rule.SetCatMapping(0, std::numeric_limits<int>::max());

  EXPECT_EQ(std::numeric_limits<int>::max(), rule.GetNumChildren());
}

TEST(NSplitRule, MakesAChildOfEachSetAdded) {
  NSplitRule rule(0, 0);

  EXPECT_TRUE(rule.AddMappedValues(Codes({0, 2})));
  EXPECT_EQ(1, rule.GetNumChildren());
  EXPECT_TRUE(rule.AddMappedValues(Codes({1})));

  EXPECT_EQ(2, rule.GetNumChildren());
  EXPECT_THAT(CategoriesOf(rule, 0), ElementsAre(0, 2));
  EXPECT_THAT(CategoriesOf(rule, 1), ElementsAre(1));
}

TEST(NSplitRule, TakesTheNumberOfTheNewChildBeforeItMovesCodes) {
  NSplitRule rule = TwoWayRule();

  EXPECT_TRUE(rule.AddMappedValues(Codes({1, 4})));

  EXPECT_EQ(2, rule.GetCatMapping(1));
  EXPECT_EQ(2, rule.GetCatMapping(4));
  EXPECT_THAT(CategoriesOf(rule, 1), IsEmpty());
  EXPECT_EQ(3, rule.GetNumChildren());
}

TEST(NSplitRule, CountsAChildOfMissingValuesBeforeANewOne) {
  NSplitRule rule = TwoWayRule();
  rule.AddMissingValueMapping(true);

  rule.AddMappedValues(Codes({7}));

  EXPECT_EQ(3, rule.Classify(7.0));
  EXPECT_EQ(2, rule.Classify(8.0));
}

TEST(NSplitRule, AcceptsAnEmptySetAndAddsNoChild) {
  NSplitRule const before = TwoWayRule();
  NSplitRule rule(before);

  EXPECT_TRUE(rule.AddMappedValues(NValueSet()));

  EXPECT_EQ(2, rule.GetNumChildren());
  EXPECT_EQ(0, before.Compare(rule));
}

TEST(NSplitRule, IgnoresNegativeCodesOfASet) {
  NSplitRule rule(0, 0);

  EXPECT_TRUE(rule.AddMappedValues(Codes({-4, 1, -1})));

  EXPECT_THAT(CategoriesOf(rule, 0), ElementsAre(1));
  EXPECT_TRUE(rule.AddMappedValues(Codes({-4})));
  EXPECT_EQ(1, rule.GetNumChildren());
}

TEST(NSplitRule, RefusesSetsOfAnotherKindWithoutChange) {
  NSplitRule const before = TwoWayRule();
  NSplitRule rule(before);

  EXPECT_FALSE(rule.AddMappedValues(AtMost(2.0)));
  EXPECT_FALSE(rule.AddMappedValues(ForeignSet(true)));
  EXPECT_FALSE(rule.AddMappedValues(ForeignSet(false)));

  EXPECT_EQ(0, before.Compare(rule));
}

TEST(NSplitRule, RefusesASetWhoseTableCannotBeAllocatedWithoutChange) {
  NSplitRule const before = TwoWayRule();
  NSplitRule rule(before);
  NValueSet const values = Codes({1, 9});
  {
    FailingAllocator const allocator(2);  // after the iterator

    EXPECT_FALSE(rule.AddMappedValues(values));
    EXPECT_TRUE(allocator.HasFailed());
  }

  EXPECT_EQ(0, before.Compare(rule));
  EXPECT_THAT(UnmappedCodes(rule), IsEmpty());
}

TEST(NSplitRule, RefusesACodeThatNoTableCanReach) {
  NSplitRule const before = TwoWayRule();
  NSplitRule rule(before);

  EXPECT_FALSE(rule.AddMappedValues(Codes({std::numeric_limits<int>::max()})));

  EXPECT_EQ(0, before.Compare(rule));
}

TEST(NSplitRule, RoutesAsBeforeWhenAddingRunsOutOfMemoryAnywhere) {
  NSplitRule const before = TwoWayRule();
  NValueSet const values = Codes({1, 9});

  long const failures = WithEveryAllocationFailing([&] {
    NSplitRule rule(before);
    bool added = false;
    try {
      added = rule.AddMappedValues(values);
    } catch (std::bad_alloc const&) {
    }
    EXPECT_EQ(added ? 3 : 0, before.Compare(rule));
  });

  EXPECT_LE(3, failures);
}

TEST(NSplitRule, ReadsCodesBackInAscendingOrder) {
  NSplitRule const rule = NominalRule({Codes({7, 3, 5})});

  EXPECT_THAT(CategoriesOf(rule, 0), ElementsAre(3, 5, 7));
}

TEST(NSplitRule, ReadsNothingBackForAChildWithoutCodes) {
  NSplitRule rule = TwoWayRule();
  rule.AddMissingValueMapping(true);

  EXPECT_EQ(nullptr, rule.GetMappedValues(2));
  EXPECT_EQ(nullptr, rule.GetMappedValues(3));
  EXPECT_EQ(nullptr, NSplitRule(0, 0).GetMappedValues(0));
}

TEST(NSplitRule, ReadsBackANewSetThatTheCallerDeletes) {
  NSplitRule const rule = TwoWayRule();
  long const before = CountLiveAllocations();

  ValueSet* const first = rule.GetMappedValues(0);
  ValueSet* const second = rule.GetMappedValues(0);

  EXPECT_NE(first, second);
  EXPECT_TRUE(first->IsNominalValueSet());
  delete first;
  delete second;
  EXPECT_EQ(before, CountLiveAllocations());
}

/// A rule of which no field has its default.
NSplitRule ChangedRule() {
  NSplitRule rule(4, 5);
  rule.AddMappedValues(Codes({0, 2}));
  rule.AddMappedValues(Codes({1}));
  ChangeCore(rule);
  return rule;
}

void ExpectChanged(NSplitRule const& rule) {
  EXPECT_TRUE(rule == ChangedRule());
  EXPECT_EQ(0, rule.Compare(ChangedRule()));
  EXPECT_THAT(CategoriesOf(rule, 0), ElementsAre(0, 2));
  EXPECT_THAT(CategoriesOf(rule, 1), ElementsAre(1));
  EXPECT_THAT(UnmappedCodes(rule), ElementsAre(3, 4));
}

TEST(NSplitRule, CopyHasAllFields) {
  NSplitRule const source = ChangedRule();

  NSplitRule const copy(source);

  ExpectChanged(copy);
}

TEST(NSplitRule, CloneIsANewRuleOfTheSameKindWithAllFields) {
  NSplitRule const source = ChangedRule();

  std::unique_ptr<SplitRuleImp> const clone(source.Clone());

  EXPECT_NE(&source, clone.get());
  ExpectChanged(dynamic_cast<NSplitRule const&>(*clone));
}

TEST(NSplitRule, AssignmentCopiesAllFields) {
  NSplitRule const source = ChangedRule();
  NSplitRule target = NominalRule({Codes({8, 9})});

  EXPECT_EQ(&target, &(target = source));

  ExpectChanged(target);
}

TEST(NSplitRule, AssignmentToItselfChangesNothing) {
  NSplitRule rule = ChangedRule();
  NSplitRule const& same = rule;

  rule = same;

  ExpectChanged(rule);
}

TEST(NSplitRule, CopiesAreIndependent) {
  NSplitRule source = ChangedRule();
  NSplitRule const copy(source);
  std::unique_ptr<SplitRuleImp> const clone(source.Clone());
  NSplitRule assigned(0, 0);
  assigned = source;

  source.SetCatMapping(0, 8);
  source.SetCatMapping(9, 8);
  source.SetDumbRule(0, 0.1);

  ExpectChanged(copy);
  ExpectChanged(dynamic_cast<NSplitRule const&>(*clone));
  ExpectChanged(assigned);
}

TEST(NSplitRule, EmptyCloneHasThePredictorAndNothingElse) {
  NSplitRule const source = ChangedRule();

  std::unique_ptr<SplitRuleImp> const clone(source.EmptyClone());

  auto const& nominal = dynamic_cast<NSplitRule const&>(*clone);
  EXPECT_TRUE(NSplitRule(4, 0) == nominal);
  EXPECT_EQ(0, nominal.GetNumChildren());
  EXPECT_THAT(UnmappedCodes(nominal), IsEmpty());
}

TEST(NSplitRule, ClonesBelongToTheCaller) {
  NSplitRule const source = ChangedRule();
  long const before = CountLiveAllocations();

  delete source.Clone();
  delete source.EmptyClone();

  EXPECT_EQ(before, CountLiveAllocations());
}

TEST(NSplitRule, IsDeletedThroughItsBase) {
  int deaths = 0;
  std::unique_ptr<SplitRuleImp> rule = std::make_unique<Watched<NSplitRule>>(&deaths, 0, 3);

  rule.reset();

  EXPECT_EQ(1, deaths);
}

TEST(NSplitRule, LeaksNothingWhenItCannotAllocate) {
  NSplitRule const source = TwoWayRule();
  long const before = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&source] {
    NSplitRule const fresh(0, 3);
    std::unique_ptr<SplitRuleImp> const clone(source.Clone());
    std::unique_ptr<SplitRuleImp> const emptyClone(source.EmptyClone());
    std::unique_ptr<ValueSet> const values(source.GetMappedValues(0));
  });

  EXPECT_LE(6, failures);
  EXPECT_EQ(before, CountLiveAllocations());
}

TEST(NSplitRule, IsNeverACopyThatLostItsTable) {
  NSplitRule const source = TwoWayRule();
  FailingAllocator const allocator(1);

  EXPECT_THROW(NSplitRule{source}, std::bad_alloc);
}

TEST(NSplitRule, StaysAsItIsWhenItCannotAllocate) {
  struct Row {
    char const* name;
    std::function<void(NSplitRule&, NSplitRule const&)> change;
  };
  Row const kRows[] = {
      {"assignment", [](NSplitRule& rule, NSplitRule const& other) { rule = other; }},
      {"copying mappings",
       [](NSplitRule& rule, NSplitRule const& other) { rule.CopyMappings(other); }},
      {"mapping a category", [](NSplitRule& rule, NSplitRule const&) { rule.SetCatMapping(9, 1); }},
  };
  NSplitRule const other = ChangedRule();
  NSplitRule const before = TwoWayRule();
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    NSplitRule rule(before);
    {
      FailingAllocator const allocator(1);

      EXPECT_THROW(row.change(rule, other), std::bad_alloc);
    }

    EXPECT_TRUE(before == rule);
    EXPECT_EQ(0, before.Compare(rule));
    EXPECT_THAT(UnmappedCodes(rule), IsEmpty());
  }
}

TEST(NSplitRule, CopiesTheMappingsAlone) {
  NSplitRule const source = ChangedRule();
  NSplitRule target(2, 0);
  target.AddMappedValues(Codes({8}));
  target.SetDumbRule(0, 0.5);

  EXPECT_TRUE(target.CopyMappings(source));

  EXPECT_THAT(CategoriesOf(target, 0), ElementsAre(0, 2));
  EXPECT_THAT(CategoriesOf(target, 1), ElementsAre(1));
  EXPECT_EQ(-1, target.GetCatMapping(8));
  EXPECT_EQ(2, target.GetMissingValueMapping());
  EXPECT_EQ(2, target.GetPredictorIndex());
  EXPECT_EQ(0, target.GetDumbChildPos());
  EXPECT_FALSE(target.HasStatistic(StatisticFlag1));
  EXPECT_EQ(1, target.GetCreationFlags());
}

TEST(NSplitRule, CopiesMappingsOfItself) {
  NSplitRule rule = ChangedRule();

  EXPECT_TRUE(rule.CopyMappings(rule));

  ExpectChanged(rule);
}

TEST(NSplitRule, CopiesMappingsIndependently) {
  NSplitRule source = TwoWayRule();
  NSplitRule target(0, 0);
  target.CopyMappings(source);

  source.SetCatMapping(0, 8);

  EXPECT_EQ(0, target.GetCatMapping(0));
}

TEST(NSplitRule, CopiesNoMappingsOfAnotherKind) {
  OSplitRule ordinal = BinaryRule(5.0);
  ordinal.AddMissingValueMapping(true);
  NSplitRule const before = TwoWayRule();
  NSplitRule rule(before);

  EXPECT_FALSE(rule.CopyMappings(ordinal));

  EXPECT_TRUE(before == rule);
  EXPECT_EQ(0, before.Compare(rule));
}

TEST(NSplitRule, Compares) {
  struct Row {
    char const* name;
    std::function<void(NSplitRule&)> change;
    int expected;         // of the unchanged rule with the changed one
    int expectedReverse;  // of the changed rule with the unchanged one
  };
  Row const kRows[] = {
      {"nothing", [](NSplitRule&) {}, 0, 0},
      {"child of a code", [](NSplitRule& rule) { rule.SetCatMapping(1, 0); }, 1, 1},
      {"child of the last code", [](NSplitRule& rule) { rule.SetCatMapping(2, 1); }, 1, 1},
      {"one more code", [](NSplitRule& rule) { rule.SetCatMapping(4, 0); }, 3, 3},
      {"one code less", [](NSplitRule& rule) { rule.SetCatMapping(0, -1); }, 3, 3},
      {"child of one code, then one less",
       [](NSplitRule& rule) {
         rule.SetCatMapping(0, 1);
         rule.SetCatMapping(2, -1);
       },
       3, 3},
      {"one code less, then child of one",
       [](NSplitRule& rule) {
         rule.SetCatMapping(0, -1);
         rule.SetCatMapping(2, 1);
       },
       3, 3},
      {"unmapped code beyond the table", [](NSplitRule& rule) { rule.SetCatMapping(9, -1); }, 0, 0},
      {"negative child for an unmapped code", [](NSplitRule& rule) { rule.SetCatMapping(9, -5); },
       1, 1},
      {"missing value mapping", [](NSplitRule& rule) { rule.AddMissingValueMapping(true); }, 1, 1},
      {"missing value mapping and one more code",
       [](NSplitRule& rule) {
         rule.AddMissingValueMapping(true);
         rule.SetCatMapping(4, 0);
       },
       3, 3},
      {"no codes, so that only the other direction counts the lack",
       [](NSplitRule& rule) { rule = NSplitRule(0, 3); }, 1, 3},
      {"no codes but a child of missing values",
       [](NSplitRule& rule) {
         rule = NSplitRule(0, 3);
         rule.AddMissingValueMapping(true);
       },
       3, 3},
      {"what is no mapping",
       [](NSplitRule& rule) {
         rule.SetStatistic(StatisticFlag1, 1.0);
         rule.SetDumbRule(0, 0.5);
         rule.SetProperty(SplitRuleMappingsReordered);
       },
       0, 0},
      {"predictor", [](NSplitRule& rule) { rule = NSplitRule(1, 3); }, 2, 2},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    NSplitRule const rule = TwoWayRule();
    NSplitRule other(rule);

    row.change(other);

    EXPECT_EQ(row.expected, rule.Compare(other));
    EXPECT_EQ(row.expectedReverse, other.Compare(rule));
  }
}

TEST(NSplitRule, ComparesEmptyTablesOfAnyLengthAsAlike) {
  EXPECT_EQ(0, NSplitRule(0, 3).Compare(NSplitRule(0, 0)));
  EXPECT_EQ(0, NSplitRule(0, 0).Compare(NSplitRule(0, 3)));
}

TEST(NSplitRule, ComparesWithRulesOfAnotherKind) {
  NSplitRule const rule(0, 3);
  OSplitRule withMapping(kMissing, 0);
  withMapping.AddMissingValueMapping(true);

  EXPECT_EQ(3, rule.Compare(OSplitRule(kMissing, 0)));
  EXPECT_EQ(3, rule.Compare(withMapping));
  EXPECT_EQ(2, rule.Compare(OSplitRule(kMissing, 1)));
}

TEST(NSplitRule, ReordersAllChildrenAndLeavesUnmappedCodes) {
  NSplitRule rule = TwoWayRule();
  rule.SetCatMapping(5, -1);
  rule.AddMissingValueMapping(true);
  rule.SetDumbRule(1, 0.5);

  rule.ReorderMappings({2, 0, 1});

  EXPECT_EQ(2, rule.Classify(0.0));
  EXPECT_EQ(0, rule.Classify(1.0));
  EXPECT_EQ(2, rule.Classify(2.0));
  EXPECT_EQ(1, rule.Classify(9.0));
  EXPECT_THAT(UnmappedCodes(rule), ElementsAre(3, 4, 5));
  EXPECT_EQ(0, rule.GetDumbChildPos());
  EXPECT_TRUE(rule.HasProperty(SplitRuleMappingsReordered));
}

#if TREE_HAS_SLOTS
TEST(NSplitRule, ItsOwnOperationsAreNotVirtual) {
  EXPECT_EQ(-1, VirtualSlot(&NSplitRule::SetCatMapping));
  EXPECT_EQ(-1, VirtualSlot(&NSplitRule::GetCatMapping));
}
#endif

class NSplitRuleDeathTest : public DeathTest {};

TEST_F(NSplitRuleDeathTest, NamesTheChildWithoutANewPosition) {
  EXPECT_ASSERTION(TwoWayRule().ReorderMappings({0}), "NSplitRule::ReorderMappings: index 1");
}

}  // namespace
}  // namespace tree::testing
