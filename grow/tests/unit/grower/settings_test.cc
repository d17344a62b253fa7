// What each setting does to a tree.

#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/sample_data.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

double const kMissing = systemMissingValue();

/// 64 cases, 4 levels to grow: the number is the value of the one predictor.
SampleData Ladder() {
  std::vector<double> values;
  for (int i = 0; i < 64; ++i) values.push_back(i);
  SampleData data(64);
  data.Numbers(values).Ordered(values);
  return data;
}

int DepthOf(Node const& node) {
  int depth = 0;
  for (unsigned int i = 0; i < static_cast<unsigned int>(node.GetNumChildren()); ++i) {
    depth = std::max(depth, 1 + DepthOf(*node.GetChild(i)));
  }
  return depth;
}

std::vector<double> TerminalSizes(Grower const& grower) {
  std::vector<double> sizes;
  PrefixNodeIterator walk(grower.GetRootNode());
  while (Node const* const node = walk.Next()) {
    if (node->GetNumChildren() == 0) sizes.push_back(node->GetNodeSize(TrainingSample));
  }
  return sizes;
}

std::unique_ptr<Grower> Grown(SampleData const& data, AlgSettings const& settings,
                              GrowOptions const& options = {1}) {
  std::unique_ptr<Grower> grower = data.Make(settings, options);
  EXPECT_TRUE(grower->Grow()) << grower->GetFailureMessage();
  return grower;
}

SplitRuleImp const& RuleOf(Grower const& grower, unsigned int competitor = 0) {
  return *grower.GetTree()->GetCompetitorImp(competitor);
}

// ---- Stopping ----

TEST(Settings, DepthLimitsLevels) {
  SampleData const data = Ladder();
  for (int const depth : {0, 1, 3}) {
    RCartSettingsImp settings = data.NumberSettings();
    settings.GetStopRule()->SetMaxTreeDepth(depth);

    EXPECT_EQ(DepthOf(*Grown(data, settings)->GetRootNode()), depth);
  }
}

TEST(Settings, NegativeDepthLeavesTheRootAlone) {
  SampleData const data = Ladder();
  RCartSettingsImp settings = data.NumberSettings();
  settings.GetStopRule()->SetMaxTreeDepth(-1);

  EXPECT_EQ(Grown(data, settings)->GetNumNodes(AllNodes), 1);
}

TEST(Settings, NodesOfLessThanTheLeastSizeAreNotSplit) {
  SampleData const data = Ladder();
  RCartSettingsImp settings = data.NumberSettings();
  settings.GetStopRule()->SetMinNodeSize(32);

  EXPECT_THAT(TerminalSizes(*Grown(data, settings)), ElementsAre(16, 16, 16, 16));
}

TEST(Settings, LeastNodeSizeCanBeASharePercent) {
  SampleData const data = Ladder();
  RCartSettingsImp settings = data.NumberSettings();
  settings.GetStopRule()->SetMinNodePercentSize(50.1);

  EXPECT_THAT(TerminalSizes(*Grown(data, settings)), ElementsAre(32, 32));
}

TEST(Settings, ChildrenHaveTheLeastSize) {
  SampleData const data = Ladder();
  RCartSettingsImp settings = data.NumberSettings();
  settings.GetStopRule()->SetMinChildSize(20);

  EXPECT_THAT(TerminalSizes(*Grown(data, settings)), ElementsAre(32, 32));
}

TEST(Settings, LeastChildSizeCanBeASharePercent) {
  SampleData const data = Ladder();
  RCartSettingsImp settings = data.NumberSettings();
  settings.GetStopRule()->SetMinChildPercentSize(30.0);

  EXPECT_THAT(TerminalSizes(*Grown(data, settings)), ElementsAre(32, 32));
}

TEST(Settings, SplitsHaveToImproveTheTreeByTheLeastImprovement) {
  // Of 0..63 in halves: means 15.5 and 47.5 explain 16^2 = 256 of the squares per case; quarters
  // explain 8^2 = 64 in half of the cases each, so 32.
  SampleData const data = Ladder();
  RCartSettingsImp settings = data.NumberSettings();
  settings.GetStopRule()->SetMinImprovement(32.0);
  EXPECT_EQ(TerminalSizes(*Grown(data, settings)).size(), 4U);

  settings.GetStopRule()->SetMinImprovement(32.001);
  EXPECT_EQ(TerminalSizes(*Grown(data, settings)).size(), 2U);
}

TEST(Settings, ImprovementsOfNumbersAreMeanSquares) {
  SampleData const data = Ladder();

  auto const grower = Grown(data, data.NumberSettings());

  EXPECT_DOUBLE_EQ(RuleOf(*grower).GetStatistic(SplitImprovement), 256.0);
}

TEST(Settings, FrequenciesCountAsCasesForSizes) {
  SampleData data(4);
  data.Numbers({0, 1, 10, 11}).Ordered({0, 1, 2, 3}).Frequencies({50, 50, 50, 50});
  RCartSettingsImp settings(data.Core());  // at least 100 cases in a node, 50 in a child

  EXPECT_THAT(TerminalSizes(*Grown(data, settings)), ElementsAre(50, 50, 50, 50));
}

TEST(Settings, CaseWeightsDoNotCountAsCasesForSizes) {
  SampleData data(4);
  data.Numbers({0, 1, 10, 11}).Ordered({0, 1, 2, 3}).Weights({50, 50, 50, 50});
  RCartSettingsImp settings(data.Core());

  auto const grower = Grown(data, settings);

  EXPECT_EQ(grower->GetNumNodes(AllNodes), 1);
  EXPECT_EQ(grower->GetRootNode()->GetNodeSize(TrainingSample), 200.0);
  EXPECT_EQ(grower->GetRootNode()->GetUnweightedNodeSize(TrainingSample), 4.0);
}

TEST(Settings, CaseWeightsMoveMeans) {
  SampleData data(3);
  data.Numbers({0, 0, 9}).Ordered({1, 1, 1}).Weights({0.5, 0.5, 2});

  EXPECT_DOUBLE_EQ(Grown(data, data.NumberSettings())->GetRootNode()->GetAssignment(), 6.0);
}

// ---- Limits on rules and predictors ----

SampleData ThreePredictors() {
  SampleData data(8);
  data.Classes({0, 0, 0, 0, 1, 1, 1, 1})
      .Ordered({1, 2, 3, 4, 5, 6, 7, 8})
      .Ordered({1, 2, 3, 5, 4, 6, 7, 8})
      .Ordered({1, 5, 3, 4, 2, 6, 8, 7});
  return data;
}

TEST(Settings, KeepAtMostSoManySplitsWithThePrimaryOne) {
  SampleData const data = ThreePredictors();
  CCartSettingsImp settings = data.ClassSettings();
  EXPECT_EQ(Grown(data, settings)->GetRootNode()->GetNumCompetitors(), 3);

  settings.SetMaxNumCompetitors(2);
  EXPECT_EQ(Grown(data, settings)->GetRootNode()->GetNumCompetitors(), 2);
}

TEST(Settings, KeepAtMostSoManySurrogates) {
  SampleData const data = ThreePredictors();
  CCartSettingsImp settings = data.ClassSettings();
  EXPECT_EQ(Grown(data, settings)->GetRootNode()->GetNumSurrogates(), 2);

  settings.SetMaxNumSurrogates(0);
  EXPECT_EQ(Grown(data, settings)->GetRootNode()->GetNumSurrogates(), 0);
}

TEST(Settings, SurrogatesComeInOrderOfAssociation) {
  // The second predictor errs in 2 of 8 cases, the third one in 2 of 8, too: at x2 <= 4.5 or
  // otherwise no better; of the four on the smaller side, half are still told right.
  SampleData const data = ThreePredictors();

  auto const grower = Grown(data, data.ClassSettings());
  NodeImp const& root = *grower->GetTree();

  ASSERT_EQ(root.GetNumSurrogates(), 2);
  EXPECT_EQ(root.GetSurrogateImp(0)->GetPredictorIndex(), 1);
  EXPECT_DOUBLE_EQ(root.GetSurrogateImp(0)->GetStatistic(SurrogateAssociation), 0.75);
  EXPECT_EQ(root.GetSurrogateImp(1)->GetPredictorIndex(), 2);
}

TEST(Settings, NominalPredictorsWithTooManyCategoriesAreLeftOutAndSaidSo) {
  SampleData data(4);
  data.Classes({0, 0, 1, 1}).Nominal({0, 1, 2, 3});
  CCartSettingsImp settings = data.ClassSettings();
  EXPECT_EQ(Grown(data, settings)->GetNumNodes(AllNodes), 3);

  settings.SetMaxNominalPredCategories(3);
  auto const grower = Grown(data, settings);

  EXPECT_EQ(grower->GetNumNodes(AllNodes), 1);
  EXPECT_THAT(grower->GetRemarks(),
              ElementsAre("predictor \"x0\" is not used: it has 4 categories, and the settings "
                          "allow 3"));
}

TEST(Settings, NominalPredictorsWithHugeCodesAreLeftOutAndSaidSo) {
  SampleData data(4);
  data.Classes({0, 0, 1, 1}).Nominal({0, 0, 1, 2000000});

  auto const grower = Grown(data, data.ClassSettings());

  EXPECT_EQ(grower->GetNumNodes(AllNodes), 1);
  EXPECT_THAT(grower->GetRemarks(), ElementsAre(HasSubstr("more than 1000000")));
}

TEST(Settings, CategoriesThatANodeHasNotSeenAreLeftToSurrogates) {
  SampleData data(8);
  data.Classes({0, 0, 0, 1, 1, 1, 0, 1})
      .Nominal({0, 0, 0, 1, 1, 1, kMissing, kMissing})
      .Ordered({1, 1, 5, 5, 5, 5, 5, 1});

  auto const grower = Grown(data, data.ClassSettings());
  auto const& rule = dynamic_cast<NSplitRule const&>(RuleOf(*grower));
  double const unseen[] = {7.0, 5.0};

  EXPECT_EQ(rule.Classify(7.0), -1);
  EXPECT_EQ(grower->GetTree()->Classify(unseen), rule.GetCatMapping(1));
}

TEST(Settings, ThePredictorsMissingValueIsTheRules) {
  // Taken for a number, -9 would be less than all others and go where class 0 does.
  std::vector<double> classes;
  std::vector<double> values;
  for (int i = 0; i < 60; ++i) {
    classes.push_back(i < 20 ? 0.0 : 1.0);
    values.push_back(i < 20 ? 1.0 + i % 2 : i < 50 ? 5.0 + i % 2 : -9.0);
  }
  SampleData data(60);
  data.Classes(classes).MissingIs(-9.0).Ordered(values);
  CCartSettingsImp const cart = data.ClassSettings();
  auto const chaid = data.LooseSettings<CChaidSettingsImp>();
  auto const quest = data.LooseSettings<QuestSettingsImp>();
  struct {
    char const* name;
    AlgSettings const* settings;
  } const kRows[] = {{"CART", &cart}, {"CHAID", &chaid}, {"QUEST", &quest}};
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);

    auto const grower = Grown(data, *row.settings);
    NodeImp const& root = *grower->GetTree();
    double const missing[] = {-9.0};
    double const low[] = {kMissing};  // a number like others here

    ASSERT_EQ(root.GetNumChildren(), 2);
    EXPECT_EQ(dynamic_cast<OSplitRule const&>(RuleOf(*grower)).GetMissingValue(), -9.0);
    EXPECT_EQ(root.DropObservationThroughTree(missing, nullptr), root.GetChild(1));
    EXPECT_EQ(root.DropObservationThroughTree(low, nullptr), root.GetChild(0));
    EXPECT_THAT(TerminalSizes(*grower), ElementsAre(20, 40));
  }
}

TEST(Settings, TheDumbRuleIsTheBiggestChildWithItsShare) {
  SampleData data(4);
  data.Classes({0, 1, 1, 1}).Ordered({1, 2, 3, kMissing});

  auto const grower = Grown(data, data.ClassSettings());

  EXPECT_EQ(grower->GetRootNode()->GetBiggestChildPos(), 1);
  EXPECT_DOUBLE_EQ(RuleOf(*grower).GetDumbChildProb(), 2.0 / 3.0);
  EXPECT_EQ(grower->GetRootNode()->GetChild(1)->GetNodeSize(TrainingSample), 3.0);
}

// ---- Classes ----

/// 9 of class 0, 3 of class 1.
SampleData Unbalanced() {
  SampleData data(12);
  data.Classes({0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1}).Ordered({1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2});
  return data;
}

double ShareOfClass1(Node const& node) {
  return node.GetClsInfo(TrainingSample)->GetClassProbability(1);
}

TEST(Settings, EqualPriorsAreTheDefault) {
  SampleData const data = Unbalanced();
  CCartSettingsImp settings(data.Core());

  EXPECT_DOUBLE_EQ(ShareOfClass1(*Grown(data, settings)->GetRootNode()), 0.5);
}

TEST(Settings, PriorsCanBeTheSharesOfTheSample) {
  SampleData const data = Unbalanced();

  auto const grower = Grown(data, data.ClassSettings());

  EXPECT_DOUBLE_EQ(ShareOfClass1(*grower->GetRootNode()), 0.25);
  EXPECT_EQ(grower->GetRootNode()->GetChild(1)->GetAssignment(), 0.0);  // 3 of each
}

TEST(Settings, PriorsCanBeGiven) {
  SampleData const data = Unbalanced();
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetPriors()->Set(0, 0.2);
  settings.GetPriors()->Set(1, 0.8);

  auto const grower = Grown(data, settings);

  EXPECT_DOUBLE_EQ(ShareOfClass1(*grower->GetRootNode()), 0.8);
  EXPECT_EQ(grower->GetRootNode()->GetChild(1)->GetAssignment(), 1.0);
}

TEST(Settings, CostsDecideWhatANodePredicts) {
  SampleData const data = Unbalanced();
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetCost()->Set(0, 1, 5.0);  // taking a 1 for a 0

  auto const grower = Grown(data, settings);

  EXPECT_EQ(grower->GetRootNode()->GetAssignment(), 1.0);  // 9 against 3 times 5
  EXPECT_DOUBLE_EQ(ShareOfClass1(*grower->GetRootNode()), 0.25);
}

/// The first predictor isolates class 1, the second one class 2; both classes are as frequent.
SampleData TwoWays() {
  SampleData data(8);
  data.Classes({0, 0, 0, 0, 1, 1, 2, 2})
      .Ordered({1, 1, 1, 1, 2, 2, 1, 1})
      .Ordered({1, 1, 1, 1, 1, 1, 2, 2});
  return data;
}

TEST(Settings, OfEqualSplitsTheFirstPredictorIsChosen) {
  SampleData const data = TwoWays();

  EXPECT_EQ(RuleOf(*Grown(data, data.ClassSettings())).GetPredictorIndex(), 0);
}

TEST(Settings, AlteredPriorsLetSplitsMindTheCosts) {
  SampleData const data = TwoWays();
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetCost()->Set(0, 2, 4.0);
  settings.GetCost()->Set(1, 2, 4.0);
  EXPECT_EQ(RuleOf(*Grown(data, settings)).GetPredictorIndex(), 0);

  settings.GetPriors()->AlterValues(true);
  EXPECT_EQ(RuleOf(*Grown(data, settings)).GetPredictorIndex(), 1);
}

/// Four classes of 4 cases. Cutting off one class leaves Gini 1 - 3/9 on 12 cases: 16 (3/4) - 12
/// (2/3) = 4 of 16. Halves leave 1/2 on both: 16 (3/4) - 16 / 2 = 4 of 16: the same, and the first
/// predictor is chosen. Twoing gives halves 1/4 and the single class 3/16 (both classes whole).
SampleData FourClasses() {
  std::vector<double> classes;
  std::vector<double> single;
  std::vector<double> halves;
  for (int i = 0; i < 16; ++i) {
    classes.push_back(i / 4);
    single.push_back(i / 4 == 0 ? 0 : 1);
    halves.push_back(i / 8);
  }
  SampleData data(16);
  data.Classes(classes).Ordered(single).Ordered(halves);
  return data;
}

TEST(Settings, GiniIsTheDefaultCriterion) {
  SampleData const data = FourClasses();

  auto const grower = Grown(data, data.ClassSettings());

  EXPECT_EQ(RuleOf(*grower).GetPredictorIndex(), 0);
  EXPECT_DOUBLE_EQ(RuleOf(*grower).GetStatistic(SplitImprovement), 0.25);
}

TEST(Settings, TwoingPrefersEvenSplits) {
  SampleData const data = FourClasses();
  CCartSettingsImp settings = data.ClassSettings();
  settings.SetSplitCriteria(static_cast<CartSplitCriteria>(1));

  auto const grower = Grown(data, settings);

  EXPECT_EQ(RuleOf(*grower).GetPredictorIndex(), 1);
  EXPECT_DOUBLE_EQ(RuleOf(*grower).GetStatistic(SplitImprovement), 0.25);
  EXPECT_DOUBLE_EQ(RuleOf(*grower, 1).GetStatistic(SplitImprovement), 0.1875);
}

TEST(Settings, OrderedTwoingJoinsNeighbouringClassesOnly) {
  // The first predictor parts {0, 2} from {1, 3}, the second one {0, 1} from {2, 3}.
  std::vector<double> classes;
  std::vector<double> parity;
  std::vector<double> halves;
  for (int i = 0; i < 16; ++i) {
    classes.push_back(i / 4);
    parity.push_back(i / 4 % 2);
    halves.push_back(i / 8);
  }
  SampleData data(16);
  data.Classes(classes).Ordered(parity).Ordered(halves);
  CCartSettingsImp settings = data.ClassSettings();
  settings.SetSplitCriteria(static_cast<CartSplitCriteria>(1));
  EXPECT_EQ(RuleOf(*Grown(data, settings)).GetPredictorIndex(), 0);

  settings.SetSplitCriteria(static_cast<CartSplitCriteria>(2));
  EXPECT_EQ(RuleOf(*Grown(data, settings)).GetPredictorIndex(), 1);
}

// ---- What nodes know ----

TEST(Settings, NodesKnowTheirDistributionInBothSamples) {
  SampleData data(8);
  data.Classes({0, 0, 1, 1, 0, 1, 1, 1})
      .Ordered({1, 1, 2, 2, 1, 1, 2, 2})
      .Samples({0, 0, 0, 0, 1, 1, 1, 1});

  auto const grower = Grown(data, data.ClassSettings());
  auto const& left = dynamic_cast<NodeImp const&>(*grower->GetRootNode()->GetChild(0));

  EXPECT_EQ(left.GetNodeSize(TrainingSample), 2.0);
  EXPECT_EQ(left.GetPercentageNodeSize(TrainingSample), 50.0);
  EXPECT_EQ(left.GetNodeSize(TestSample), 2.0);
  EXPECT_EQ(left.GetClsInfo(TestSample)->GetClassCount(1), 1.0);
  EXPECT_EQ(left.GetClsInfo(TestSample)->GetPrediction(), 0);
}

TEST(Settings, RegressionNodesKnowTheSpreadOfTheirNumbers) {
  SampleData data(5);
  data.Numbers({1, 2, 3, 4, 10}).Ordered({1, 1, 1, 1, 1}).Samples({0, 0, 0, 0, 1});

  auto const grower = Grown(data, data.NumberSettings());
  RegInfo const& training = *grower->GetRootNode()->GetRegInfo(TrainingSample);
  RegInfo const& test = *grower->GetRootNode()->GetRegInfo(TestSample);

  EXPECT_DOUBLE_EQ(training.GetMean(), 2.5);
  EXPECT_DOUBLE_EQ(training.GetStdDev(), std::sqrt(5.0 / 3.0));
  EXPECT_EQ(training.GetMinimum(), 1.0);
  EXPECT_EQ(training.GetMaximum(), 4.0);
  EXPECT_EQ(training.GetBinSize(0), 1.0);
  EXPECT_EQ(training.GetBinSize(training.GetNumBins() - 1), 1.0);
  EXPECT_EQ(test.GetMean(), 10.0);
}

TEST(Settings, NodesKnowWhatTheirPredictorsHave) {
  SampleData data(4);
  data.Classes({0, 0, 1, 1}).Ordered({1, 2, 3, kMissing}).Nominal({2, 0, 5, 5});

  auto const grower = Grown(data, data.ClassSettings());
  Node const& root = *grower->GetRootNode();
  double minimum = 0.0;
  double maximum = 0.0;
  bool missing = false;
  int count = 0;
  double categories[3] = {};

  ASSERT_TRUE(root.GetPredictorRange(0, &minimum, &maximum));
  ASSERT_TRUE(root.GetPredictorMissingValueFlag(0, &missing));
  ASSERT_TRUE(root.GetNumPredictorValues(1, &count));
  ASSERT_TRUE(root.GetPredictorValues(1, categories, 3));
  EXPECT_EQ(minimum, 1.0);
  EXPECT_EQ(maximum, 3.0);
  EXPECT_TRUE(missing);
  EXPECT_EQ(count, 3);
  EXPECT_THAT(categories, ElementsAre(0, 2, 5));
}

}  // namespace
}  // namespace tree::grow
