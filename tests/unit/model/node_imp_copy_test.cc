#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <set>
#include <vector>

#include "testing/sample_trees.h"
#include "testing/tree_builder.h"
#include "testing/tree_comparison.h"
#include "tree/nodes.h"

namespace tree {
namespace {

using testing::ANode;
using testing::FirstDifference;
using testing::OwnedObjects;
using testing::RichClassificationTree;
using testing::RichRegressionTree;

void ExpectNothingShared(NodeImp const& a, NodeImp const& b) {
  std::set<void const*> const ofA = OwnedObjects(a);
  std::set<void const*> const ofB = OwnedObjects(b);
  std::vector<void const*> shared;
  std::set_intersection(ofA.begin(), ofA.end(), ofB.begin(), ofB.end(), std::back_inserter(shared));
  EXPECT_EQ(ofA.size(), ofB.size());
  EXPECT_TRUE(shared.empty());
}

// Changes every kind of part of a tree like the rich classification tree.
void ChangeEverything(NodeImp& node) {
  node.SetId(99);
  node.GetCompetitorImp(0)->SetDumbRule(0, 0.5);
  node.GetCompetitorImp(1)->SetProperty(SplitRuleMappingsReordered);
  node.GetSurrogateImp(0)->AddMissingValueMapping(true);
  node.GetClsInfoImp(TrainingSample)->SetClassCount(0, 77.0);
  node.GetClsInfoImp(TestSample)->SetPrediction(7);
  node.SetPredictorRange(0, -1.0, 1.0);
  node.SetNumPredictorValues(1, 4);
  node.GetChildImp(0)->SetId(98);
  node.GetChildImp(1)->GetChildImp(0)->GetClsInfoImp(TrainingSample)->SetClassCount(1, 55.0);
  node.RemoveChild(0);
}

TEST(NodeImpCopy, ClonesWholeTree) {
  for (auto const make : {RichClassificationTree, RichRegressionTree}) {
    std::unique_ptr<NodeImp> const source = make();

    std::unique_ptr<NodeImp> const clone(source->Clone());

    EXPECT_EQ(FirstDifference(*clone, *source), "");
    EXPECT_EQ(FirstDifference(*source, *make()), "");
    ExpectNothingShared(*clone, *source);
  }
}

TEST(NodeImpCopy, CopiesByConstructorAsByClone) {
  for (auto const make : {RichClassificationTree, RichRegressionTree}) {
    std::unique_ptr<NodeImp> const source = make();

    NodeImp const copy(*source);

    EXPECT_EQ(FirstDifference(copy, *source), "");
    EXPECT_EQ(copy.GetParent(), nullptr);
    ExpectNothingShared(copy, *source);
  }
}

TEST(NodeImpCopy, ClonesNodeWithNothing) {
  NodeImp const source;

  std::unique_ptr<NodeImp> const clone(source.Clone());

  EXPECT_EQ(FirstDifference(*clone, source), "");
}

TEST(NodeImpCopy, ClonesSubtreeUnderItsOwnRoot) {
  std::unique_ptr<NodeImp> const tree = RichClassificationTree();
  NodeImp const* const inner = tree->GetChildImp(1);

  std::unique_ptr<NodeImp> const clone(inner->Clone());

  EXPECT_EQ(clone->GetParent(), nullptr);
  EXPECT_EQ(clone->GetNumChildren(), 2);
  EXPECT_EQ(clone->GetChild(0)->GetParent(), clone.get());
  EXPECT_EQ(clone->GetChild(1)->GetParent(), clone.get());
  EXPECT_EQ(FirstDifference(*clone, *inner), "");
  EXPECT_EQ(inner->GetParent(), tree.get());
}

TEST(NodeImpCopy, CopiesTreesOfWhateverShape) {
  std::unique_ptr<NodeImp> const sources[] = {
      ANode(0).Over(ANode(1)).Build(),
      ANode(0).Over(ANode(1).Over(ANode(2).Over(ANode(3).Over(ANode(4))))).Build(),
      ANode(0).Over(ANode(1), ANode(2), ANode(3), ANode(4), ANode(5)).Build(),
      ANode(0)
          .Over(ANode(1).Over(ANode(2).Over(ANode(3), ANode(4))), ANode(5),
                ANode(6).Over(ANode(7), ANode(8).Over(ANode(9))))
          .Build(),
  };
  for (std::unique_ptr<NodeImp> const& source : sources) {
    std::unique_ptr<NodeImp> const clone(source->Clone());

    EXPECT_EQ(FirstDifference(*clone, *source), "");
    ExpectNothingShared(*clone, *source);
  }
}

TEST(NodeImpCopy, SharesNothingWithItsClone) {
  std::unique_ptr<NodeImp> const source = RichClassificationTree();
  std::unique_ptr<NodeImp> const clone(source->Clone());

  ChangeEverything(*clone);

  EXPECT_EQ(FirstDifference(*source, *RichClassificationTree()), "");
}

TEST(NodeImpCopy, IsNotChangedWithItsSource) {
  std::unique_ptr<NodeImp> const source = RichClassificationTree();
  NodeImp copy;
  copy = *source;

  ChangeEverything(*source);

  EXPECT_EQ(FirstDifference(copy, *RichClassificationTree()), "");
}

TEST(NodeImpCopy, OutlivesItsSource) {
  std::unique_ptr<NodeImp> source = RichClassificationTree();
  std::unique_ptr<NodeImp> const clone(source->Clone());

  source.reset();

  EXPECT_EQ(FirstDifference(*clone, *RichClassificationTree()), "");
}

TEST(NodeImpCopy, AssignsOverWhateverTheTargetHolds) {
  auto const empty = [] { return std::make_unique<NodeImp>(); };
  using Make = std::unique_ptr<NodeImp> (*)();
  Make const makers[] = {RichClassificationTree, RichRegressionTree, empty};
  for (Make const makeTarget : makers) {
    for (Make const makeSource : makers) {
      std::unique_ptr<NodeImp> const target = makeTarget();
      std::unique_ptr<NodeImp> const source = makeSource();

      NodeImp& result = *target = *source;

      EXPECT_EQ(&result, target.get());
      EXPECT_EQ(FirstDifference(*target, *source), "");
      EXPECT_EQ(FirstDifference(*source, *makeSource()), "");
      ExpectNothingShared(*target, *source);
    }
  }
}

TEST(NodeImpCopy, KeepsTheParentOfTheTarget) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1), ANode(2)).Build();
  NodeImp* const child = root->GetChildImp(1);
  std::unique_ptr<NodeImp> const source = RichClassificationTree();

  *child = *source;

  EXPECT_EQ(child->GetParent(), root.get());
  EXPECT_EQ(root->GetChildImp(1), child);
  EXPECT_EQ(child->GetChild(0)->GetParent(), child);
  EXPECT_EQ(FirstDifference(*child, *source), "");
}

TEST(NodeImpCopy, TakesNoParentFromItsSource) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1), ANode(2)).Build();
  NodeImp target;

  target = *root->GetChildImp(0);

  EXPECT_EQ(target.GetParent(), nullptr);
  EXPECT_EQ(target.GetId(), 1u);
}

TEST(NodeImpCopy, StaysAsItIsWhenAssignedToItself) {
  std::unique_ptr<NodeImp> const node = RichClassificationTree();
  std::set<void const*> const before = OwnedObjects(*node);
  NodeImp const& itself = *node;

  NodeImp& result = *node = itself;

  EXPECT_EQ(&result, node.get());
  EXPECT_EQ(OwnedObjects(*node), before);
  EXPECT_EQ(FirstDifference(*node, *RichClassificationTree()), "");
}

TEST(NodeImpCopy, TakesItsOwnSubtreeInItsPlace) {
  std::unique_ptr<NodeImp> const root = RichClassificationTree();
  std::unique_ptr<NodeImp> const subtree(root->GetChildImp(1)->Clone());

  *root = *root->GetChildImp(1);

  EXPECT_EQ(FirstDifference(*root, *subtree), "");
  EXPECT_EQ(root->GetParent(), nullptr);
}

TEST(NodeImpCopy, TakesTheTreeItStandsInBelowItself) {
  std::unique_ptr<NodeImp> const root = RichClassificationTree();
  NodeImp* const leaf = root->GetChildImp(0);

  *leaf = *root;

  EXPECT_EQ(FirstDifference(*leaf, *RichClassificationTree()), "");
  EXPECT_EQ(leaf->GetParent(), root.get());
  EXPECT_EQ(root->GetChildImp(0), leaf);
  EXPECT_EQ(leaf->GetChildImp(0)->GetNumChildren(), 0);
}

TEST(NodeImpCopy, CopiesStatisticsOfEitherSampleAlone) {
  for (DataSample const sample : {TrainingSample, TestSample}) {
    SCOPED_TRACE(static_cast<int>(sample));
    std::unique_ptr<NodeImp> const sources[] = {ANode(0).Classes({1.0, 2.0}, 1, sample).Build(),
                                                ANode(0).Regression(3.0, 4.0, sample).Build()};
    for (std::unique_ptr<NodeImp> const& source : sources) {
      NodeImp const copy(*source);

      EXPECT_EQ(FirstDifference(copy, *source), "");
    }
  }
}

TEST(NodeImpCopy, CopiesClassificationFlagWithoutStatistics) {
  NodeImp regression;
  regression.SetClassificationNode(false);
  NodeImp classification;
  NodeImp target;

  target = regression;
  EXPECT_FALSE(target.IsClassificationNode());

  target = classification;
  EXPECT_TRUE(target.IsClassificationNode());
}

TEST(NodeImpCopy, CopiesOnlyStatisticsThatItsFlagNames) {
  std::unique_ptr<NodeImp> const classes = ANode(0).Classes({1.0}).Build();
  std::unique_ptr<NodeImp> const regression = ANode(0).Regression(1.0, 2.0).Build();
  classes->SetClassificationNode(false);
  regression->SetClassificationNode(true);

  NodeImp const copyOfClasses(*classes);
  NodeImp const copyOfRegression(*regression);

  EXPECT_FALSE(copyOfClasses.IsClassificationNode());
  EXPECT_EQ(copyOfClasses.GetClsInfo(TrainingSample), nullptr);
  EXPECT_TRUE(copyOfRegression.IsClassificationNode());
  EXPECT_EQ(copyOfRegression.GetRegInfo(TrainingSample), nullptr);
}

TEST(NodeImpCopy, GivesItsDistributionProbabilitiesOfMinusOneWhereThereWereNone) {
  std::unique_ptr<NodeImp> const source = ANode(0).Build();
  auto* const info = new ClsInfoImp;
  info->SetNumClasses(2);
  info->SetNumClasses(0);
  info->SetClassCount(1, 5.0);
  source->SetClsInfo(info, TrainingSample);

  NodeImp const copy(*source);

  // A probability exists in the copy and not in its source, so they differ.
  EXPECT_EQ(copy.GetClsInfo(TrainingSample)->GetClassProbability(1), -1.0);
  EXPECT_FALSE(*copy.GetClsInfoImp(TrainingSample) == *info);
}

TEST(NodeImpCopy, StoresStandardDeviationWhereThereWasNone) {
  std::unique_ptr<NodeImp> const source = ANode(0).Regression(5.0, 2.0).Build();

  NodeImp const copy(*source);

  double value = -1.0;
  EXPECT_TRUE(
      copy.GetRegInfoImp(TrainingSample)->GetExtendedStatistic(RegInfoImp::StoreStdDev, &value));
  EXPECT_EQ(value, 0.0);
  EXPECT_TRUE(*copy.GetRegInfoImp(TrainingSample) == *source->GetRegInfoImp(TrainingSample));
}

TEST(NodeImpCopy, CopiesSummariesExactly) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  std::unique_ptr<NodeImp> const source = ANode(0)
                                              .Predictor(kInfinity, -kInfinity)
                                              .Predictor(kNaN, 0.0, {kNaN, 1.0, kInfinity}, true)
                                              .Predictor(5.0, 1.0, {2.0})
                                              .Build();
  std::unique_ptr<NodeImp> const target =
      ANode(0).Predictor(9.0, 9.0, {9.0, 9.0}, true).Predictor(8.0, 8.0).Build();

  *target = *source;

  EXPECT_EQ(FirstDifference(*target, *source), "");
}

TEST(NodeImpCopy, KeepsPositionsWithoutRuleOrChild) {
  NodeImp source;
  source.SetNumChildren(3);
  source.SetChild(1, ANode(5).Build().release());
  source.SetNumCompetitors(2);
  source.SetCompetitor(1, testing::NominalRule(3).release());
  source.SetNumSurrogates(2);
  source.SetSurrogate(0, testing::NominalRule(4).release());

  NodeImp const copy(source);

  EXPECT_EQ(copy.GetNumChildren(), 3);
  EXPECT_EQ(copy.GetCompetitorImp(0), nullptr);
  EXPECT_EQ(copy.GetSurrogateImp(1), nullptr);
  EXPECT_EQ(FirstDifference(copy, source), "");
}

TEST(NodeImpCopy, CopiesEachRuleInItsOwnKind) {
  std::unique_ptr<NodeImp> const source = RichClassificationTree();

  NodeImp const copy(*source);

  EXPECT_TRUE(copy.GetCompetitorImp(0)->IsOrdered());
  EXPECT_FALSE(copy.GetCompetitorImp(1)->IsOrdered());
  EXPECT_EQ(copy.GetCompetitorImp(0)->Classify(40.0), 0);
  EXPECT_EQ(copy.GetCompetitorImp(0)->Classify(41.0), 1);
  EXPECT_EQ(copy.GetCompetitorImp(1)->Classify(2.0), 0);
}

// A node that tells readers other things than it holds.
class Pretender : public NodeImp {
 public:
  int GetNumCompetitors() const override { return 1; }
  int GetNumSurrogates() const override { return 0; }
  int GetNumPredictors() const override { return 2; }
  bool GetPredictorRange(int index, double* minimum, double* maximum) const override {
    *minimum = 5.0;
    *maximum = 6.0;
    return index == 0;
  }
  bool GetNumPredictorValues(int index, int* count) const override {
    *count = 2;
    return index == 0;
  }
  bool GetPredictorValues(int /*index*/, double* values, int count) const override {
    std::fill_n(values, count, 7.0);
    return true;
  }
  bool GetPredictorMissingValueFlag(int index, bool* flag) const override {
    *flag = true;
    return index == 0;
  }
};

TEST(NodeImpCopy, ReadsItsSourceThroughItsVirtualOperations) {
  Pretender source;
  source.SetNumCompetitors(2);
  source.SetCompetitor(0, new OSplitRule(systemMissingValue(), 3));
  source.SetCompetitor(1, new OSplitRule(systemMissingValue(), 4));
  source.SetNumSurrogates(1);
  source.SetSurrogate(0, new OSplitRule(systemMissingValue(), 5));
  source.SetNumPredictors(3);

  NodeImp const copy(source);

  EXPECT_EQ(copy.GetNumCompetitors(), 1);
  EXPECT_EQ(copy.GetCompetitorImp(0)->GetPredictorIndex(), 3);
  EXPECT_EQ(copy.GetNumSurrogates(), 0);
  EXPECT_EQ(copy.GetNumPredictors(), 2);
  double minimum = 0.0;
  double maximum = 0.0;
  EXPECT_TRUE(copy.GetPredictorRange(0, &minimum, &maximum));
  EXPECT_EQ(minimum, 5.0);
  EXPECT_EQ(maximum, 6.0);
  int numValues = 0;
  EXPECT_TRUE(copy.GetNumPredictorValues(0, &numValues));
  EXPECT_EQ(numValues, 2);
  double values[2] = {};
  EXPECT_TRUE(copy.GetPredictorValues(0, values, 2));
  EXPECT_EQ(values[1], 7.0);
  bool flag = false;
  EXPECT_TRUE(copy.GetPredictorMissingValueFlag(0, &flag));
  EXPECT_TRUE(flag);
}

TEST(NodeImpCopy, KeepsASummaryOfWhichItsSourceSaysNothing) {
  Pretender const source;
  NodeImp target;
  target.SetNumPredictors(3);
  target.SetPredictorRange(1, 10.0, 20.0);
  double const values[] = {1.0, 2.0, 3.0};
  target.SetPredictorValues(1, values, 3);
  target.SetPredictorMissingValueFlag(1, true);

  target = source;

  EXPECT_EQ(target.GetNumPredictors(), 2);
  double minimum = 0.0;
  double maximum = 0.0;
  EXPECT_TRUE(target.GetPredictorRange(1, &minimum, &maximum));
  EXPECT_EQ(minimum, 10.0);
  EXPECT_EQ(maximum, 20.0);
  int numValues = 0;
  EXPECT_TRUE(target.GetNumPredictorValues(1, &numValues));
  EXPECT_EQ(numValues, 3);
  bool flag = false;
  EXPECT_TRUE(target.GetPredictorMissingValueFlag(1, &flag));
  EXPECT_TRUE(flag);
}

}  // namespace
}  // namespace tree
