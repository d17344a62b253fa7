#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

#include "testing/failing_allocator.h"
#include "testing/virtual_slot.h"
#include "tree/settings.h"

namespace tree::testing {
namespace {

static_assert(std::is_abstract_v<StopRule>);
static_assert(std::has_virtual_destructor_v<StopRule>);
static_assert(sizeof(StopRule) == sizeof(void*));  // no fields
static_assert(std::is_base_of_v<StopRule, StopRuleImp>);
static_assert(std::is_copy_constructible_v<StopRuleImp> && std::is_copy_assignable_v<StopRuleImp>);
static_assert(
    std::is_convertible_v<decltype(std::declval<StopRuleImp const&>().Clone()), StopRule*>);
static_assert(std::is_same_v<decltype(&StopRuleImp::Init),
                             void (StopRuleImp::*)(double, int, double, int, double, int)>);
static_assert(std::is_same_v<decltype(&StopRuleImp::operator==),
                             bool (StopRuleImp::*)(StopRuleImp const&) const>);

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMinInt = std::numeric_limits<int>::min();

struct Values {
  double minImprovement;
  int minNodeSize;
  double minNodePercentSize;
  int minChildSize;
  double minChildPercentSize;
  int maxTreeDepth;
};

constexpr Values kDefaults = {0.0001, 100, 0.0, 50, 0.0, 0};
constexpr Values kOthers = {0.5, 11, 12.5, 13, 14.5, 15};

StopRuleImp RuleOf(Values const& values) {
  return StopRuleImp(values.minImprovement, values.minNodeSize, values.minNodePercentSize,
                     values.minChildSize, values.minChildPercentSize, values.maxTreeDepth);
}

void ExpectValues(StopRule const& rule, Values const& expected) {
  EXPECT_EQ(rule.GetMinImprovement(), expected.minImprovement);
  EXPECT_EQ(rule.GetMinNodeSize(), expected.minNodeSize);
  EXPECT_EQ(rule.GetMinNodePercentSize(), expected.minNodePercentSize);
  EXPECT_EQ(rule.GetMinChildSize(), expected.minChildSize);
  EXPECT_EQ(rule.GetMinChildPercentSize(), expected.minChildPercentSize);
  EXPECT_EQ(rule.GetMaxTreeDepth(), expected.maxTreeDepth);
}

TEST(StopRuleImp, BeginsWithItsDefaults) {
  StopRuleImp const rule;

  ExpectValues(rule, kDefaults);
}

TEST(StopRuleImp, TakesItsValuesInOrder) {
  StopRuleImp const rule(0.5, 11, 12.5, 13, 14.5, 15);

  ExpectValues(rule, kOthers);
}

TEST(StopRuleImp, IsInitialisedInTheSameOrder) {
  StopRuleImp rule;

  rule.Init(0.5, 11, 12.5, 13, 14.5, 15);

  ExpectValues(rule, kOthers);
}

TEST(StopRuleImp, StoresWhatTheSettersRefuseByInitAndConstructor) {
  Values const odd[] = {{-1.0, -2, -3.5, -5, 100.5, -6},
                        {kInfinity, kMinInt, -kInfinity, kMaxInt, kInfinity, kMinInt}};
  for (Values const& values : odd) {
    StopRuleImp rule;

    rule.Init(values.minImprovement, values.minNodeSize, values.minNodePercentSize,
              values.minChildSize, values.minChildPercentSize, values.maxTreeDepth);

    ExpectValues(rule, values);
    ExpectValues(RuleOf(values), values);
  }
  StopRuleImp const nan(kNaN, 0, kNaN, 0, kNaN, 0);
  EXPECT_TRUE(std::isnan(nan.GetMinImprovement()));
  EXPECT_TRUE(std::isnan(nan.GetMinNodePercentSize()));
  EXPECT_TRUE(std::isnan(nan.GetMinChildPercentSize()));
}

TEST(StopRuleImp, StoresAnyImprovement) {
  for (double const improvement : {0.0, -1.0, 1e300, kInfinity, -kInfinity}) {
    SCOPED_TRACE(improvement);
    StopRuleImp rule;

    rule.SetMinImprovement(improvement);

    Values expected = kDefaults;
    expected.minImprovement = improvement;
    ExpectValues(rule, expected);
  }
  StopRuleImp rule;
  rule.SetMinImprovement(kNaN);
  EXPECT_TRUE(std::isnan(rule.GetMinImprovement()));
}

TEST(StopRuleImp, StoresAnyTreeDepth) {
  for (int const depth : {0, 1, -3, kMaxInt, kMinInt}) {
    SCOPED_TRACE(depth);
    StopRuleImp rule;

    rule.SetMaxTreeDepth(depth);

    Values expected = kDefaults;
    expected.maxTreeDepth = depth;
    ExpectValues(rule, expected);
  }
}

TEST(StopRuleImp, IgnoresNegativeSizes) {
  struct Case {
    int size;
    bool stored;
  };
  for (auto const& [size, stored] :
       {Case{0, true}, Case{1, true}, Case{kMaxInt, true}, Case{-1, false}, Case{kMinInt, false}}) {
    SCOPED_TRACE(size);
    StopRuleImp byNode = RuleOf(kOthers);
    StopRuleImp byChild = RuleOf(kOthers);

    byNode.SetMinNodeSize(size);
    byChild.SetMinChildSize(size);

    Values node = kOthers;
    Values child = kOthers;
    if (stored) node.minNodeSize = child.minChildSize = size;
    ExpectValues(byNode, node);
    ExpectValues(byChild, child);
  }
}

TEST(StopRuleImp, IgnoresWhatIsNoPercentage) {
  struct Case {
    double percent;
    bool stored;
  };
  Case const table[] = {{0.0, true},        {100.0, true},
                        {50.0, true},       {std::numeric_limits<double>::denorm_min(), true},
                        {-0.5, false},      {100.0000001, false},
                        {kNaN, false},      {std::nextafter(100.0, 101.0), false},
                        {kInfinity, false}, {-std::numeric_limits<double>::denorm_min(), false},
                        {-kInfinity, false}};
  for (auto const& [percent, stored] : table) {
    SCOPED_TRACE(percent);
    StopRuleImp byNode = RuleOf(kOthers);
    StopRuleImp byChild = RuleOf(kOthers);

    byNode.SetMinNodePercentSize(percent);
    byChild.SetMinChildPercentSize(percent);

    Values node = kOthers;
    Values child = kOthers;
    if (stored) node.minNodePercentSize = child.minChildPercentSize = percent;
    ExpectValues(byNode, node);
    ExpectValues(byChild, child);
  }
}

TEST(StopRuleImp, IsSetThroughItsInterface) {
  StopRuleImp held;
  StopRule& rule = held;

  rule.SetMinImprovement(0.5);
  rule.SetMinNodeSize(11);
  rule.SetMinNodePercentSize(12.5);
  rule.SetMinChildSize(13);
  rule.SetMinChildPercentSize(14.5);
  rule.SetMaxTreeDepth(15);

  ExpectValues(held, kOthers);
}

TEST(StopRuleImp, CopiesAllFields) {
  StopRuleImp source = RuleOf(kOthers);

  StopRuleImp const copy(source);
  std::unique_ptr<StopRule> const clone(source.Clone());
  StopRuleImp assigned;
  StopRuleImp const& result = assigned = source;
  source.Init(9.0, 9, 9.0, 9, 9.0, 9);

  EXPECT_EQ(&result, &assigned);
  EXPECT_NE(dynamic_cast<StopRuleImp*>(clone.get()), nullptr);
  ExpectValues(copy, kOthers);
  ExpectValues(*clone, kOthers);
  ExpectValues(assigned, kOthers);
}

TEST(StopRuleImp, SurvivesAssignmentToItself) {
  StopRuleImp rule = RuleOf(kOthers);
  StopRuleImp const& same = rule;

  rule = same;

  ExpectValues(rule, kOthers);
}

TEST(StopRuleImp, EqualsARuleWithTheSameFields) {
  EXPECT_TRUE(StopRuleImp() == StopRuleImp());
  EXPECT_TRUE(RuleOf(kOthers) == RuleOf(kOthers));
  EXPECT_FALSE(RuleOf(kOthers) == StopRuleImp());
}

// One field changed, against `kOthers`.
struct Difference {
  char const* name;
  void (*change)(Values& values);
};

TEST(StopRuleImp, DiffersByEachField) {
  Difference const table[] = {
      {"improvement", [](Values& values) { values.minImprovement += 1e-11; }},
      {"node size", [](Values& values) { values.minNodeSize += 1; }},
      {"node percent", [](Values& values) { values.minNodePercentSize += 1e-11; }},
      {"child size", [](Values& values) { values.minChildSize += 1; }},
      {"child percent", [](Values& values) { values.minChildPercentSize += 1e-11; }},
      {"tree depth", [](Values& values) { values.maxTreeDepth += 1; }},
      {"improvement below", [](Values& values) { values.minImprovement -= 1.1e-12; }},
      {"node percent below", [](Values& values) { values.minNodePercentSize -= 1e-11; }},
      {"child percent below", [](Values& values) { values.minChildPercentSize -= 1e-11; }},
      {"improvement not a number", [](Values& values) { values.minImprovement = kNaN; }},
      {"node percent not a number", [](Values& values) { values.minNodePercentSize = kNaN; }},
      {"child percent not a number", [](Values& values) { values.minChildPercentSize = kNaN; }},
  };
  for (auto const& difference : table) {
    SCOPED_TRACE(difference.name);
    Values changed = kOthers;
    difference.change(changed);

    EXPECT_FALSE(RuleOf(kOthers) == RuleOf(changed));
    EXPECT_FALSE(RuleOf(changed) == RuleOf(kOthers));
  }
}

TEST(StopRuleImp, ToleratesATrillionthInItsDoubles) {
  Difference const table[] = {
      {"improvement", [](Values& values) { values.minImprovement += 1e-13; }},
      {"node percent", [](Values& values) { values.minNodePercentSize += 1e-13; }},
      {"child percent", [](Values& values) { values.minChildPercentSize += 1e-13; }},
      {"improvement below", [](Values& values) { values.minImprovement -= 0.9e-12; }},
      {"node percent below", [](Values& values) { values.minNodePercentSize -= 1e-13; }},
      {"child percent below", [](Values& values) { values.minChildPercentSize -= 1e-13; }},
  };
  for (auto const& difference : table) {
    SCOPED_TRACE(difference.name);
    Values changed = kOthers;
    difference.change(changed);

    EXPECT_TRUE(RuleOf(kOthers) == RuleOf(changed));
    EXPECT_TRUE(RuleOf(changed) == RuleOf(kOthers));
  }
}

TEST(StopRuleImp, CountsExactlyATrillionthAsEqual) {
  Values zero = kOthers;
  Values trillionth = kOthers;
  zero.minImprovement = zero.minNodePercentSize = zero.minChildPercentSize = 0.0;
  trillionth.minImprovement = 1e-12;
  trillionth.minNodePercentSize = trillionth.minChildPercentSize = -1e-12;

  EXPECT_TRUE(RuleOf(zero) == RuleOf(trillionth));

  trillionth.minImprovement = std::nextafter(1e-12, 1.0);

  EXPECT_FALSE(RuleOf(zero) == RuleOf(trillionth));
}

TEST(StopRuleImp, MeasuresItsToleranceAbsolutely) {
  Values large = kOthers;
  large.minImprovement = 1e6;
  Values next = large;
  next.minImprovement = std::nextafter(1e6, 2e6);  // 1.2e-10 away: alike to 16 digits

  EXPECT_FALSE(RuleOf(large) == RuleOf(next));
}

TEST(StopRuleImp, NeverEqualsWithNumbersThatHaveNoDifference) {
  StopRuleImp const nan(kNaN, 1, 2.0, 3, 4.0, 5);
  StopRuleImp const infinite(kInfinity, 1, 2.0, 3, 4.0, 5);

  EXPECT_FALSE(nan == nan);
  EXPECT_FALSE(infinite == infinite);
}

TEST(StopRuleImp, LosesNothingWhenACloneRunsOutOfMemory) {
  StopRuleImp const rule = RuleOf(kOthers);
  long const live = CountLiveAllocations();

  EXPECT_EQ(WithEveryAllocationFailing([&rule] { delete rule.Clone(); }), 1);

  EXPECT_EQ(CountLiveAllocations(), live);
}

#if TREE_HAS_SLOTS
TEST(StopRuleImp, KeepsTheOrderOfItsVirtualOperations) {
  using Rule = StopRule;
  EXPECT_EQ(VirtualSlot(static_cast<Rule* (Rule::*)() const>(&Rule::Clone)), kFirstSlot + 0);
  EXPECT_EQ(VirtualSlot(static_cast<double (Rule::*)() const>(&Rule::GetMinImprovement)),
            kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(static_cast<int (Rule::*)() const>(&Rule::GetMinNodeSize)), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(static_cast<double (Rule::*)() const>(&Rule::GetMinNodePercentSize)),
            kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(static_cast<int (Rule::*)() const>(&Rule::GetMinChildSize)),
            kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(static_cast<double (Rule::*)() const>(&Rule::GetMinChildPercentSize)),
            kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(static_cast<int (Rule::*)() const>(&Rule::GetMaxTreeDepth)),
            kFirstSlot + 6);
  EXPECT_EQ(VirtualSlot(static_cast<void (Rule::*)(double)>(&Rule::SetMinImprovement)),
            kFirstSlot + 7);
  EXPECT_EQ(VirtualSlot(static_cast<void (Rule::*)(int)>(&Rule::SetMinNodeSize)), kFirstSlot + 8);
  EXPECT_EQ(VirtualSlot(static_cast<void (Rule::*)(double)>(&Rule::SetMinNodePercentSize)),
            kFirstSlot + 9);
  EXPECT_EQ(VirtualSlot(static_cast<void (Rule::*)(int)>(&Rule::SetMinChildSize)), kFirstSlot + 10);
  EXPECT_EQ(VirtualSlot(static_cast<void (Rule::*)(double)>(&Rule::SetMinChildPercentSize)),
            kFirstSlot + 11);
  EXPECT_EQ(VirtualSlot(static_cast<void (Rule::*)(int)>(&Rule::SetMaxTreeDepth)), kFirstSlot + 12);
  EXPECT_EQ(VirtualSlot(&StopRuleImp::Init), -1);
  EXPECT_EQ(VirtualSlot(&StopRuleImp::operator==), -1);
}
#endif

}  // namespace
}  // namespace tree::testing
