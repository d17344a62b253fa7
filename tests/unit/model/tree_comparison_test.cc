#include "testing/tree_comparison.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "testing/sample_trees.h"
#include "testing/tree_builder.h"
#include "tree/nodes.h"

// The comparison that other tests rely on: it has to find every kind of difference.

namespace tree {
namespace {

using testing::ANode;
using testing::FirstDifference;
using testing::RichClassificationTree;
using testing::RichRegressionTree;

struct Row {
  char const* difference;
  void (*change)(NodeImp&);
};

void ExpectFound(Row const& row, std::unique_ptr<NodeImp> (*make)()) {
  SCOPED_TRACE(row.difference);
  std::unique_ptr<NodeImp> const original = make();
  std::unique_ptr<NodeImp> const changed = make();

  row.change(*changed);

  EXPECT_EQ(FirstDifference(*original, *changed), row.difference);
}

TEST(TreeComparison, FindsNoDifferenceBetweenTreesMadeAlike) {
  EXPECT_EQ(FirstDifference(*RichClassificationTree(), *RichClassificationTree()), "");
  EXPECT_EQ(FirstDifference(*RichRegressionTree(), *RichRegressionTree()), "");
}

TEST(TreeComparison, NamesTheFieldOfClassificationTreeThatDiffers) {
  Row const rows[] = {
      {"root: id: 0 and 9", [](NodeImp& node) { node.SetId(9); }},
      {"root: classification flag: 1 and 0",
       [](NodeImp& node) { node.SetClassificationNode(false); }},
      {"root: number of children: 2 and 1", [](NodeImp& node) { node.RemoveChild(1); }},
      {"root/1: id: 2 and 9", [](NodeImp& node) { node.GetChildImp(1)->SetId(9); }},
      {"root/1/0, training sample: count of class 1: 2 and 3",
       [](NodeImp& node) {
         node.GetChildImp(1)->GetChildImp(0)->GetClsInfoImp(TrainingSample)->SetClassCount(1, 3.0);
       }},
      {"root, competitor 0: predictor index: 0 and 5",
       [](NodeImp& node) { node.SetCompetitor(0, new OSplitRule(0.0, 5)); }},
      {"root, competitor 0: split alike (0 by Compare): 0 and 1",
       [](NodeImp& node) {
         static_cast<OSplitRule*>(node.GetCompetitorImp(0))->SetCutPoint(41.0);
       }},
      {"root, competitor 0: property flags: 1 and 5",
       [](NodeImp& node) { node.GetCompetitorImp(0)->SetProperty(SplitRuleMappingsReordered); }},
      {"root, competitor 0: missing value mapping: -1 and 1",
       [](NodeImp& node) { node.GetCompetitorImp(0)->AddMissingValueMapping(false); }},
      {"root, competitor 0: dumb child: 1 and 0",
       [](NodeImp& node) { node.GetCompetitorImp(0)->SetDumbRule(0, 0.75); }},
      {"root, competitor 1: dumb child probability: 0.625 and 0.5",
       [](NodeImp& node) { node.GetCompetitorImp(1)->SetDumbRule(0, 0.5); }},
      {"root, competitor 1: presence: 1 and 0",
       [](NodeImp& node) { node.SetCompetitor(1, nullptr); }},
      {"root, surrogate 0: statistic 8 present: 0 and 1",
       [](NodeImp& node) { node.GetSurrogateImp(0)->SetStatistic(StatisticFlag4, 1.0); }},
      {"root, surrogate 1: statistic 2: 3.5 and 4.5",
       [](NodeImp& node) { node.GetSurrogateImp(1)->SetStatistic(StatisticFlag2, 4.5); }},
      {"root, training sample: class distribution present: 1 and 0",
       [](NodeImp& node) { node.SetClsInfo(nullptr, TrainingSample); }},
      {"root, test sample: number of classes: 2 and 3",
       [](NodeImp& node) { node.GetClsInfoImp(TestSample)->SetNumClasses(3); }},
      {"root, test sample: probability of class 0: 0.66666666666666663 and 0.5",
       [](NodeImp& node) { node.GetClsInfoImp(TestSample)->SetClassProbability(0, 0.5); }},
      {"root, test sample: predicted class: 0 and 1",
       [](NodeImp& node) { node.GetClsInfoImp(TestSample)->SetPrediction(1); }},
      {"root, test sample: unweighted count: 3 and 4",
       [](NodeImp& node) { node.GetClsInfoImp(TestSample)->SetUnweightedCount(4.0); }},
      {"root: number of predictors: 2 and 1", [](NodeImp& node) { node.SetNumPredictors(1); }},
      {"root, predictor 0: minimum: 18 and 17",
       [](NodeImp& node) { node.SetPredictorRange(0, 17.0, 90.0); }},
      {"root, predictor 1: maximum: 2 and 2.5",
       [](NodeImp& node) { node.SetPredictorRange(1, 1.5, 2.5); }},
      {"root, predictor 1: missing value flag: 0 and 1",
       [](NodeImp& node) { node.SetPredictorMissingValueFlag(1, true); }},
      {"root, predictor 0: number of values: 3 and 2",
       [](NodeImp& node) { node.SetNumPredictorValues(0, 2); }},
      {"root, predictor 0: value 2: 90 and 0",
       [](NodeImp& node) {
         node.SetNumPredictorValues(0, 2);
         node.SetNumPredictorValues(0, 3);
       }},
  };
  for (Row const& row : rows) ExpectFound(row, RichClassificationTree);
}

TEST(TreeComparison, NamesTheFieldOfRegressionTreeThatDiffers) {
  Row const rows[] = {
      {"root, training sample: regression statistics present: 1 and 0",
       [](NodeImp& node) { node.SetRegInfo(nullptr, TrainingSample); }},
      {"root, test sample: count: 12 and 13",
       [](NodeImp& node) { node.GetRegInfoImp(TestSample)->SetCount(13.0); }},
      {"root, training sample: mean: 3.5 and 4",
       [](NodeImp& node) { node.GetRegInfoImp(TrainingSample)->SetMean(4.0); }},
      {"root, training sample: minimum: -1 and 0",
       [](NodeImp& node) { node.GetRegInfoImp(TrainingSample)->SetMinimum(0.0); }},
      {"root, training sample: maximum: 9 and 8",
       [](NodeImp& node) { node.GetRegInfoImp(TrainingSample)->SetMaximum(8.0); }},
      {"root, training sample: standard deviation: 1.25 and 1",
       [](NodeImp& node) {
         node.GetRegInfoImp(TrainingSample)->SetExtendedStatistic(RegInfoImp::StoreStdDev, 1.0);
       }},
      {"root, training sample: number of bins: 2 and 1",
       [](NodeImp& node) { node.GetRegInfoImp(TrainingSample)->SetNumBins(1); }},
      {"root, training sample: bin 1: 20 and 21",
       [](NodeImp& node) { node.GetRegInfoImp(TrainingSample)->SetBinSize(1, 21.0); }},
      {"root, test sample: extended statistic 2 present: 0 and 1",
       [](NodeImp& node) {
         node.GetRegInfoImp(TestSample)->SetExtendedStatistic(RegInfoImp::StorePrediction, 3.25);
       }},
      {"root, training sample: extended statistic 128: 0.5 and 1",
       [](NodeImp& node) {
         node.GetRegInfoImp(TrainingSample)->SetExtendedStatistic(RegInfoImp::StoreReserved5, 1.0);
       }},
  };
  for (Row const& row : rows) ExpectFound(row, RichRegressionTree);
}

TEST(TreeComparison, NoticesChildThatNamesAnotherParent) {
  std::unique_ptr<NodeImp> const a = ANode(0).Over(ANode(1)).Build();
  std::unique_ptr<NodeImp> const b = ANode(0).Over(ANode(1)).Build();
  NodeImp other;
  other.SetNumChildren(1);

  other.SetChild(0, b->GetChildImp(0));  // b still holds the child, too

  EXPECT_EQ(FirstDifference(*a, *b), "root/0: has the node above as parent: 1 and 0");
  other.SetChild(0, nullptr);
}

TEST(TreeComparison, NoticesChildThatIsMissing) {
  std::unique_ptr<NodeImp> const a = ANode(0).Over(ANode(1)).Build();
  NodeImp b;
  b.SetNumChildren(1);

  EXPECT_EQ(FirstDifference(*a, b), "root/0: presence: 1 and 0");
}

TEST(TreeComparison, CountsEachObjectOfTreeOnce) {
  // Nodes 0 to 4; rules 4 of node 0 and 2 of node 2; distributions 2 of node 0, 1 each of 1, 2, 3.
  EXPECT_EQ(testing::OwnedObjects(*RichClassificationTree()).size(), 5u + 6u + 5u);
}

}  // namespace
}  // namespace tree
