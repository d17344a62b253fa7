#include "output/rule_text.h"

#include <memory>

#include <gtest/gtest.h>

#include "cli_testing/trees.h"
#include "testing/value_set_builder.h"

namespace tree::cli {
namespace {

using namespace testing;  // NOLINT(google-build-using-namespace): what the trees are made of

TEST(RuleText, ComparesNumbersWithTheCutPoint) {
  EXPECT_EQ(ValuesText(*CutAt(kFlipper, 206.5), 0, PenguinNames()), "<= 206.5");
  EXPECT_EQ(ValuesText(*CutAt(kFlipper, 206.5), 1, PenguinNames()), "> 206.5");
}

TEST(RuleText, NamesTheChildrenOfAReversedRule) {
  std::unique_ptr<OSplitRule> const rule = CutAt(kFlipper, 206.5);
  rule->SetReverse();

  EXPECT_EQ(ValuesText(*rule, 0, PenguinNames()), "> 206.5");
  EXPECT_EQ(ValuesText(*rule, 1, PenguinNames()), "<= 206.5");
}

TEST(RuleText, GivesBothEndsOfAnInterval) {
  OSplitRule rule(systemMissingValue(), kFlipper);
  rule.AddMappedValues(tree::testing::AtMost(2.0));
  rule.AddMappedValues(tree::testing::OpenClosed(2.0, 7.0));
  rule.AddMappedValues(tree::testing::Above(7.0));

  EXPECT_EQ(ValuesText(rule, 0, PenguinNames()), "<= 2");
  EXPECT_EQ(ValuesText(rule, 1, PenguinNames()), "> 2 and <= 7");
  EXPECT_EQ(ValuesText(rule, 2, PenguinNames()), "> 7");
}

TEST(RuleText, ComparesOrderedCategoriesWithTheLabelBelowTheCut) {
  EXPECT_EQ(ValuesText(*CutAt(kSize, 0.5), 0, PenguinNames()), "<= small");
  EXPECT_EQ(ValuesText(*CutAt(kSize, 1.5), 1, PenguinNames()), "> medium");
  EXPECT_EQ(ValuesText(*CutAt(kSize, 1.0), 0, PenguinNames()), "<= medium");
}

TEST(RuleText, ListsCategories) {
  EXPECT_EQ(ValuesText(*ByIsland(), 0, PenguinNames()), "= Biscoe");
  EXPECT_EQ(ValuesText(*ByIsland(), 1, PenguinNames()), "= Dream,Torgersen");
}

TEST(RuleText, PutsLabelsInQuotesWhereTheyWouldBeMisread) {
  TreeNames names = PenguinNames();
  names.predictors[kIsland].labels[1] = "Dream, the";

  EXPECT_EQ(ValuesText(*ByIsland(), 1, names), "= \"Dream, the\",Torgersen");
}

TEST(RuleText, SaysWhereMissingValuesGo) {
  std::unique_ptr<OSplitRule> const toTheLast = CutAt(kFlipper, 206.5);
  toTheLast->AddMissingValueMapping(false);
  std::unique_ptr<OSplitRule> const toTheirOwn = CutAt(kFlipper, 206.5);
  toTheirOwn->AddMissingValueMapping(true);

  EXPECT_EQ(ValuesText(*toTheLast, 0, PenguinNames()), "<= 206.5");
  EXPECT_EQ(ValuesText(*toTheLast, 1, PenguinNames()), "> 206.5 or missing");
  EXPECT_EQ(ValuesText(*toTheirOwn, 2, PenguinNames()), "missing");
}

TEST(RuleText, SaysWhatSendsCasesToANode) {
  std::unique_ptr<NodeImp> const root = ClassTree();
  Node const& inner = *root->GetChild(0);

  EXPECT_EQ(ConditionText(*root, PenguinNames()), "root");
  EXPECT_EQ(ConditionText(*root->GetChild(1), PenguinNames()), "flipper > 206.5");
  EXPECT_EQ(ConditionText(*inner.GetChild(1), PenguinNames()), "island = Dream,Torgersen");
  EXPECT_EQ(PositionInParent(*inner.GetChild(1)), 1);
}

}  // namespace
}  // namespace tree::cli
