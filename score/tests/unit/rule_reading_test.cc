#include "rule_reading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "testing/probe_rule.h"
#include "tree/score/input_error.h"

namespace tree::score {

inline bool operator==(RuleTable::Cut const& a, RuleTable::Cut const& b) {
  return a.cutPoint == b.cutPoint && a.child == b.child;
}

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Cut = RuleTable::Cut;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

RuleTable Read(SplitRuleImp const& rule) {
  RuleTable table;
  ReadRule(rule, table);
  return table;
}

std::string ReadToError(SplitRuleImp const& rule) {
  try {
    Read(rule);
  } catch (InputError const& error) {
    return error.what();
  }
  return "none";
}

void AddUpTo(OSplitRule& rule, double rightEnd) {
  OValueSet interval;
  interval.SetRightEnd(rightEnd);
  rule.InsertCutPoint(interval, false);
}

TEST(RuleTable, HoldsABinaryRule) {
  OSplitRule rule(-9.0, 3);
  rule.SetCutPoint(5.0);
  rule.SetReverse();

  RuleTable const table = Read(rule);

  EXPECT_EQ(table.predictor, 3);
  EXPECT_TRUE(table.ordered);
  EXPECT_EQ(table.missingValue, -9.0);
  EXPECT_EQ(table.missingChild, -1);
  EXPECT_THAT(table.cuts, ElementsAre(Cut{5.0, 1}));
  EXPECT_EQ(table.upperChild, 0);
}

TEST(RuleTable, HoldsABinaryRuleThatIsCutAtItsMissingValue) {
  OSplitRule rule(5.0, 0);
  rule.SetCutPoint(5.0);

  EXPECT_THAT(Read(rule).cuts, ElementsAre(Cut{5.0, 0}));
}

TEST(RuleTable, HoldsABinaryRuleOfWhichOnlyTheMissingValueIsBelow) {
  OSplitRule rule(-kInfinity, 0);
  rule.SetCutPoint(-kInfinity);

  EXPECT_THAT(Read(rule).cuts, ElementsAre(Cut{-kInfinity, 0}));
}

TEST(RuleTable, HoldsAllCutPointsInOrder) {
  OSplitRule rule(-9.0, 0);
  for (double const cut : {7.0, -kInfinity, 2.0, kInfinity}) AddUpTo(rule, cut);

  EXPECT_THAT(Read(rule).cuts,
              ElementsAre(Cut{-kInfinity, 1}, Cut{2.0, 2}, Cut{7.0, 0}, Cut{kInfinity, 3}));
}

TEST(RuleTable, LeavesOutCutsThatDivideNothing) {
  OSplitRule rule(-9.0, 0);
  for (double const cut : {1.0, 2.0, 3.0, 4.0}) AddUpTo(rule, cut);
  rule.AddMappedValues(OValueSet());
  rule.ReorderMappings({0, 1, 1, 0, 0});

  RuleTable const table = Read(rule);

  EXPECT_THAT(table.cuts, ElementsAre(Cut{1.0, 0}, Cut{3.0, 1}));
  EXPECT_EQ(table.upperChild, 0);
}

TEST(RuleTable, GivesUnassignedIntervalsToTheUpperChild) {
  OSplitRule rule(-9.0, 0);
  for (double const cut : {1.0, 2.0, 3.0}) AddUpTo(rule, cut);
  rule.AddMappedValues(OValueSet());
  rule.IsPresent(2.0)->child = -1;

  EXPECT_THAT(Read(rule).cuts, ElementsAre(Cut{1.0, 0}, Cut{2.0, 3}, Cut{3.0, 2}));
}

TEST(RuleTable, HoldsNothingOfAnEmptyRule) {
  OSplitRule const rule(-9.0, 0);

  RuleTable const table = Read(rule);

  EXPECT_THAT(table.cuts, IsEmpty());
  EXPECT_EQ(table.upperChild, -1);
  EXPECT_EQ(table.GetHighestChild(), -1);
}

TEST(RuleTable, HoldsTheChildOfMissingValues) {
  OSplitRule rule(-9.0, 0);
  rule.SetCutPoint(5.0);
  rule.AddMissingValueMapping(true);

  EXPECT_EQ(Read(rule).missingChild, 2);
  EXPECT_EQ(Read(rule).GetHighestChild(), 2);
}

TEST(RuleTable, HoldsATableOfCodes) {
  NSplitRule rule(1, 0);
  rule.SetCatMapping(0, 1);
  rule.SetCatMapping(40, 0);

  RuleTable const table = Read(rule);

  EXPECT_FALSE(table.ordered);
  ASSERT_EQ(table.codes.size(), 41U);
  EXPECT_EQ(table.codes[0], 1);
  EXPECT_EQ(table.codes[39], -1);
  EXPECT_EQ(table.codes[40], 0);
}

TEST(RuleTable, HoldsNoCodesOfATableWithoutChildren) {
  NSplitRule rule(1, 100);
  rule.AddMissingValueMapping(true);

  EXPECT_THAT(Read(rule).codes, IsEmpty());
  EXPECT_EQ(Read(rule).missingChild, 0);
}

TEST(RuleTable, RefusesARuleOfAnotherClass) {
  class Derived : public OSplitRule {
    using OSplitRule::OSplitRule;
  };

  EXPECT_EQ(ReadToError(tree::testing::ProbeRule(0)),
            "a split rule is of a class that is not known");
  EXPECT_EQ(ReadToError(Derived(0.0, 0)), "a split rule is of a class that is not known");
}

TEST(RuleTable, RefusesANegativePredictor) {
  EXPECT_EQ(ReadToError(NSplitRule(-1, 0)), "a split rule has a negative predictor index");
}

TEST(RuleTable, RefusesCutPointsOutOfOrder) {
  struct Case {
    char const* name;
    std::vector<double> cuts;
    double first;  // what the first cut is changed to
  };
  for (Case const& each :
       {Case{"not a number, alone", {2.0}, kNan}, Case{"not a number, first", {2.0, 3.0}, kNan},
        Case{"not a number, last", {2.0, kNan}, 2.0}, Case{"descending", {2.0, 3.0}, 4.0},
        Case{"twice", {2.0, 3.0}, 3.0},
        Case{"the lowest in the middle", {-kInfinity, 1.0, 2.0}, 1.5}}) {
    SCOPED_TRACE(each.name);
    OSplitRule rule(-9.0, 0);
    for (double const cut : each.cuts) AddUpTo(rule, cut);
    rule.AddMappedValues(OValueSet());
    rule.SetCutPoint(each.first);

    EXPECT_EQ(ReadToError(rule), "cut points are not in ascending order");
  }
}

}  // namespace
}  // namespace tree::score
