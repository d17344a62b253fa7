#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/debug_death.h"
#include "testing/failing_allocator.h"
#include "testing/probe_rule.h"
#include "testing/rule_builder.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/split_rules.h"

namespace tree::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

static_assert(std::has_virtual_destructor_v<SplitRule>);
static_assert(sizeof(SplitRule) == 2 * sizeof(void*));  // one owning pointer
static_assert(std::is_convertible_v<SplitRule const&, SplitRuleImp const*>);
static_assert(!std::is_convertible_v<SplitRule&, SplitRuleImp*>);
static_assert(
    std::is_same_v<ValueSet*, decltype(std::declval<SplitRule const&>().GetMappedValues(0))>);
static_assert(std::is_same_v<bool, decltype(std::declval<SplitRule&>().AddMappedValues(
                                       std::declval<ValueSet const&>()))>);
static_assert(
    std::is_same_v<void, decltype(std::declval<SplitRule&>().AddMissingValueMapping(true))>);

SplitRuleImp const& RuleOf(SplitRule const& handle) {
  SplitRuleImp const* const rule = handle;
  return *rule;
}

SplitRule HandleFor(global::MeasurementLevel level) {
  VariableSettingsImp settings;
  settings.SetMeasurementLevel(level);
  settings.SetMissingValue(-99.0);
  return SplitRule(settings, 4);
}

/// A handle without a rule: the rule that it was given gave no clone.
SplitRule HandleWithoutRule() {
  ProbeRule probe(4);
  probe.isClonedToNull = true;
  return SplitRule(probe);
}

TEST(SplitRule, MakesANominalRuleForANominalVariable) {
  SplitRule handle = HandleFor(global::MeasurementNominal);

  ASSERT_NE(nullptr, dynamic_cast<NSplitRule const*>(&RuleOf(handle)));
  EXPECT_FALSE(RuleOf(handle).IsOrdered());
  EXPECT_EQ(4, handle.GetPredictorIndex());
  EXPECT_EQ(0, handle.GetNumChildren());
  EXPECT_EQ(nullptr, handle.GetMappedValues(-1));  // no categories
  EXPECT_FALSE(handle.AddMappedValues(AtMost(2.0)));
  EXPECT_TRUE(handle.AddMappedValues(Codes({1, 3})));
  EXPECT_THAT(CategoriesOf(handle, 0), ElementsAre(1, 3));
}

TEST(SplitRule, MakesAnOrdinalRuleForEveryOtherVariable) {
  for (int const level : {1, 2, 3, -1, 256, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(level);
    SplitRule handle = HandleFor(static_cast<global::MeasurementLevel>(level));

    auto const* const rule = dynamic_cast<OSplitRule const*>(&RuleOf(handle));
    ASSERT_NE(nullptr, rule);
    EXPECT_EQ(-99.0, rule->GetMissingValue());
    EXPECT_EQ(4, handle.GetPredictorIndex());
    EXPECT_EQ(0, handle.GetNumChildren());
    EXPECT_FALSE(handle.AddMappedValues(Codes({1, 3})));
    EXPECT_TRUE(handle.AddMappedValues(AtMost(2.0)));
    EXPECT_EQ(1, handle.GetNumChildren());
  }
}

TEST(SplitRule, HoldsACloneOfTheRuleGiven) {
  std::vector<std::string> log;
  ProbeRule probe(4, &log);
  probe.SetDumbRule(1, 0.5);

  {
    SplitRule const handle(probe);
    EXPECT_THAT(log, ElementsAre("clone probe"));
    EXPECT_NE(&probe, &RuleOf(handle));
    EXPECT_TRUE(probe == RuleOf(handle));
  }

  EXPECT_THAT(log, ElementsAre("clone probe", "delete clone of probe"));
}

TEST(SplitRule, GivesItsRuleForReading) {
  SplitRule const handle(ThreeWayRule());

  EXPECT_EQ(0, RuleOf(handle).Compare(ThreeWayRule()));
  EXPECT_EQ(&RuleOf(handle), &RuleOf(handle));
}

TEST(SplitRule, CopyHoldsACloneOfItsOwn) {
  std::vector<std::string> log;
  ProbeRule const probe(4, &log);
  SplitRule const source(probe);
  log.clear();

  {
    SplitRule const copy(source);
    EXPECT_THAT(log, ElementsAre("clone clone of probe"));
    EXPECT_NE(&RuleOf(source), &RuleOf(copy));
  }

  EXPECT_THAT(log, ElementsAre("clone clone of probe", "delete clone of clone of probe"));
}

TEST(SplitRule, AssignmentClonesTheOtherRuleThenDeletesItsOwn) {
  std::vector<std::string> log;
  SplitRule target(ProbeRule(1, &log, "old"));
  SplitRule const source(ProbeRule(4, &log, "new"));
  log.clear();

  EXPECT_EQ(&target, &(target = source));

  EXPECT_THAT(log, ElementsAre("clone clone of new", "delete clone of old"));
  EXPECT_EQ(4, target.GetPredictorIndex());
  EXPECT_NE(&RuleOf(source), &RuleOf(target));
}

TEST(SplitRule, AssignmentToItselfLeavesItWithAnEqualRule) {
  SplitRule handle(ThreeWayRule());
  SplitRule const& same = handle;

  handle = same;

  EXPECT_TRUE(ThreeWayRule() == RuleOf(handle));
  EXPECT_EQ(0, RuleOf(handle).Compare(ThreeWayRule()));
}

TEST(SplitRule, AssignmentChangesTheKind) {
  SplitRule handle = HandleFor(global::MeasurementNominal);

  handle = HandleFor(global::MeasurementContinuous);

  EXPECT_TRUE(RuleOf(handle).IsOrdered());
}

TEST(SplitRule, AssignmentGivesARuleToAHandleWithoutOne) {
  SplitRule handle = HandleWithoutRule();

  handle = SplitRule(ThreeWayRule());

  EXPECT_EQ(3, handle.GetNumChildren());
}

TEST(SplitRule, CopiesShowTheRuleAsItWasWhenCopied) {
  SplitRule source = HandleFor(global::MeasurementContinuous);
  source.AddMappedValues(AtMost(2.0));
  SplitRule const copy(source);
  SplitRule assigned = HandleFor(global::MeasurementNominal);
  assigned = source;

  source.AddMappedValues(Above(2.0));
  source.AddMissingValueMapping(true);

  EXPECT_EQ(3, source.GetNumChildren());
  EXPECT_EQ(1, copy.GetNumChildren());
  EXPECT_EQ(1, assigned.GetNumChildren());
  EXPECT_EQ(-1, copy.GetMissingValueMapping());
}

TEST(SplitRule, ShowsNoLaterChangeOfTheRuleGiven) {
  OSplitRule rule = BinaryRule(5.0);
  SplitRule const handle(rule);

  rule.SetReverse();

  EXPECT_EQ("(-inf, 5]", IntervalOf(handle, 0));
}

TEST(SplitRule, KeepsNothingOfTheSettings) {
  auto settings = std::make_unique<VariableSettingsImp>();
  settings->SetMissingValue(-99.0);
  SplitRule const handle(*settings, 0);

  settings->SetMissingValue(0.0);
  settings.reset();

  EXPECT_EQ(-99.0, dynamic_cast<OSplitRule const&>(RuleOf(handle)).GetMissingValue());
}

TEST(SplitRule, ForwardsQuestionsToItsRule) {
  ProbeRule probe(4);
  probe.numChildren = 6;
  probe.AddMissingValueMapping(true);
  probe.SetStatistic(StatisticFlag2, 2.5);
  probe.SetProperty(SplitRuleCreatedAlternate);
  SplitRule const handle(probe);
  double value = 42.0;

  EXPECT_EQ(4, handle.GetPredictorIndex());
  EXPECT_EQ(6, handle.GetNumChildren());
  EXPECT_EQ(6, handle.GetMissingValueMapping());
  EXPECT_TRUE(handle.HasProperty(SplitRuleCreatedAlternate));
  EXPECT_FALSE(handle.HasProperty(SplitRuleCreatedDefault));
  EXPECT_TRUE(handle.HasStatistic(StatisticFlag2));
  EXPECT_FALSE(handle.HasStatistic(StatisticFlag1));
  EXPECT_FALSE(handle.GetStatistic(StatisticFlag1, &value));
  EXPECT_EQ(42.0, value);
  EXPECT_TRUE(handle.GetStatistic(StatisticFlag2, &value));
  EXPECT_EQ(2.5, value);
}

TEST(SplitRule, ForwardsTheReadingOfMappedValues) {
  NValueSet set = Codes({1});
  ProbeRule probe(4);
  probe.mappedValues = &set;
  SplitRule const handle(probe);

  EXPECT_EQ(&set, handle.GetMappedValues(7));

  EXPECT_EQ(7, dynamic_cast<ProbeRule const&>(RuleOf(handle)).lastChild);
}

TEST(SplitRule, ForwardsTheAddingOfMappedValues) {
  NValueSet const set = Codes({1});
  for (bool const accepts : {false, true}) {
    SCOPED_TRACE(accepts);
    ProbeRule probe(4);
    probe.acceptsValues = accepts;
    SplitRule handle(probe);

    EXPECT_EQ(accepts, handle.AddMappedValues(set));

    EXPECT_EQ(&set, dynamic_cast<ProbeRule const&>(RuleOf(handle)).lastValues);
  }
}

TEST(SplitRule, ForwardsTheMappingOfMissingValues) {
  SplitRule ownChild(BinaryRule(5.0));
  SplitRule lastChild(BinaryRule(5.0));

  ownChild.AddMissingValueMapping(true);
  lastChild.AddMissingValueMapping(false);

  EXPECT_EQ(2, ownChild.GetMissingValueMapping());
  EXPECT_EQ(3, ownChild.GetNumChildren());
  EXPECT_EQ(1, lastChild.GetMissingValueMapping());
  EXPECT_EQ(2, lastChild.GetNumChildren());
}

TEST(SplitRule, AnswersWithoutARule) {
  SplitRule const handle = HandleWithoutRule();
  double value = 42.0;

  EXPECT_EQ(nullptr, static_cast<SplitRuleImp const*>(handle));
  EXPECT_EQ(0, handle.GetNumChildren());
  EXPECT_EQ(nullptr, handle.GetMappedValues(0));
  EXPECT_EQ(0, handle.GetMissingValueMapping());
  EXPECT_FALSE(handle.GetStatistic(StatisticFlag1, &value));
  EXPECT_EQ(42.0, value);
  EXPECT_FALSE(handle.HasStatistic(StatisticFlag1));
  EXPECT_FALSE(handle.HasStatistic(static_cast<StatisticFlag>(0)));
  EXPECT_FALSE(handle.HasProperty(SplitRuleCreatedDefault));
}

TEST(SplitRule, DeletesItsRuleThroughTheVirtualDestructor) {
  std::vector<std::string> log;
  auto handle = std::make_unique<SplitRule>(ProbeRule(4, &log));
  log.clear();

  handle.reset();

  EXPECT_THAT(log, ElementsAre("delete clone of probe"));
}

TEST(SplitRule, IsDeletedThroughItsVirtualDestructor) {
  int deaths = 0;
  std::unique_ptr<SplitRule> handle =
      std::make_unique<Watched<SplitRule>>(&deaths, BinaryRule(5.0));

  handle.reset();

  EXPECT_EQ(1, deaths);
}

TEST(SplitRule, EndsWithoutARuleAndWithoutALeak) {
  long const before = CountLiveAllocations();

  { SplitRule const handle = HandleWithoutRule(); }

  EXPECT_EQ(before, CountLiveAllocations());
}

TEST(SplitRule, LeaksNothingWhenItCannotAllocate) {
  OSplitRule const rule = ThreeWayRule();
  VariableSettingsImp nominal;
  nominal.SetMeasurementLevel(global::MeasurementNominal);
  long const before = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&] {
    SplitRule const ordinalHandle(VariableSettingsImp(), 0);
    SplitRule const nominalHandle(nominal, 0);
    SplitRule const handle(rule);
    SplitRule const copy(handle);
  });

  EXPECT_EQ(6, failures);
  EXPECT_EQ(before, CountLiveAllocations());
}

TEST(SplitRule, KeepsItsRuleWhenAssignmentCannotAllocate) {
  SplitRule const source(BinaryRule(5.0));
  SplitRule target(ThreeWayRule());
  {
    FailingAllocator const allocator(1);

    EXPECT_THROW(target = source, std::bad_alloc);
  }

  EXPECT_EQ(0, RuleOf(target).Compare(ThreeWayRule()));
}

#if TREE_HAS_SLOTS
TEST(SplitRule, OnlyItsDestructorIsVirtual) {
  EXPECT_EQ(-1, VirtualSlot(&SplitRule::GetNumChildren));
  EXPECT_EQ(-1, VirtualSlot(&SplitRule::GetMappedValues));
  EXPECT_EQ(-1, VirtualSlot(&SplitRule::AddMappedValues));
  EXPECT_EQ(-1, VirtualSlot(&SplitRule::AddMissingValueMapping));
  EXPECT_EQ(-1, VirtualSlot(&SplitRule::GetMissingValueMapping));
  EXPECT_EQ(-1, VirtualSlot(&SplitRule::GetStatistic));
  EXPECT_EQ(-1, VirtualSlot(&SplitRule::HasStatistic));
  EXPECT_EQ(-1, VirtualSlot(&SplitRule::HasProperty));
  EXPECT_EQ(-1, VirtualSlot(&SplitRule::GetPredictorIndex));
}
#endif

class SplitRuleDeathTest : public DeathTest {
 protected:
  SplitRule handle_ = HandleWithoutRule();
};

TEST_F(SplitRuleDeathTest, NamesTheOperationThatNeedsARule) {
  EXPECT_ASSERTION(handle_.AddMappedValues(Codes({1})), "SplitRule::AddMappedValues: ");
  EXPECT_ASSERTION(handle_.AddMissingValueMapping(true), "SplitRule::AddMissingValueMapping: ");
  EXPECT_ASSERTION(static_cast<void>(handle_.GetPredictorIndex()),
                   "SplitRule::GetPredictorIndex: ");
}

TEST_F(SplitRuleDeathTest, NamesTheCopyThatNeedsARule) {
  EXPECT_ASSERTION(SplitRule{handle_}, "SplitRule.*: ");
  EXPECT_ASSERTION(SplitRule(BinaryRule(5.0)) = handle_, "SplitRule.*: ");
}

}  // namespace
}  // namespace tree::testing
