#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/sample_trees.h"
#include "testing/tree_builder.h"
#include "testing/tree_comparison.h"
#include "testing/virtual_slot.h"
#include "tree/nodes.h"
#include "tree/support.h"

namespace tree {
namespace {

using testing::ANode;
using ::testing::ElementsAre;
using testing::FirstDifference;
using testing::RichClassificationTree;
using testing::RichRegressionTree;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Every value but 0 means the second sample.
constexpr DataSample kSecondSamples[] = {TestSample, DataSample(5), DataSample(-1),
                                         DataSample(std::numeric_limits<int>::min())};

std::vector<unsigned int> ChildIds(NodeImp const& node) {
  std::vector<unsigned int> ids;
  for (int position = 0; position < node.GetNumChildren(); ++position) {
    ids.push_back(node.GetChild(static_cast<unsigned int>(position))->GetId());
  }
  return ids;
}

std::vector<double> PredictorValues(NodeImp const& node, int index) {
  int count = -1;
  EXPECT_TRUE(node.GetNumPredictorValues(index, &count));
  std::vector<double> values(static_cast<std::size_t>(count));
  EXPECT_TRUE(node.GetPredictorValues(index, values.data(), count));
  return values;
}

TEST(NodeImp, StartsAsClassificationNodeWithNothingElse) {
  NodeImp const node;

  EXPECT_EQ(node.GetParent(), nullptr);
  EXPECT_EQ(node.GetNumChildren(), 0);
  EXPECT_EQ(node.GetChild(0), nullptr);
  EXPECT_EQ(node.GetNumCompetitors(), 0);
  EXPECT_EQ(node.GetCompetitor(0), nullptr);
  EXPECT_EQ(node.GetNumSurrogates(), 0);
  EXPECT_EQ(node.GetSurrogate(0), nullptr);
  EXPECT_EQ(node.GetId(), 0u);
  EXPECT_TRUE(node.IsClassificationNode());
  EXPECT_EQ(node.GetNumPredictors(), 0);
  for (DataSample const sample : {TrainingSample, TestSample}) {
    EXPECT_EQ(node.GetClsInfo(sample), nullptr);
    EXPECT_EQ(node.GetRegInfo(sample), nullptr);
    EXPECT_EQ(node.GetClsInfoImp(sample), nullptr);
    EXPECT_EQ(node.GetRegInfoImp(sample), nullptr);
    EXPECT_EQ(node.GetNodeSize(sample), 0.0);
    EXPECT_EQ(node.GetUnweightedNodeSize(sample), 0.0);
    EXPECT_EQ(node.GetPercentageNodeSize(sample), 0.0);
  }
}

TEST(NodeImp, IsReadThroughItsAbstractClass) {
  std::unique_ptr<NodeImp> const tree = RichClassificationTree();
  Node const& node = *tree;

  EXPECT_EQ(node.GetNumChildren(), 2);
  EXPECT_EQ(node.GetChild(1)->GetId(), 2u);
  EXPECT_EQ(node.GetChild(1)->GetParent(), &node);
  EXPECT_EQ(node.GetNumCompetitors(), 2);
  EXPECT_EQ(node.GetNumSurrogates(), 2);
  EXPECT_EQ(node.GetBiggestChildPos(), 1);
  EXPECT_EQ(node.GetAssignment(), 1.0);
  EXPECT_EQ(node.GetNodeSize(TrainingSample), 11.0);
  EXPECT_EQ(node.GetNumPredictors(), 2);
  static_assert(std::is_abstract_v<Node>);
  static_assert(std::has_virtual_destructor_v<Node>);
}

#if TREE_HAS_SLOTS
TEST(NodeImp, KeepsTheOrderOfItsVirtualOperations) {
  using testing::kFirstSlot;
  using testing::VirtualSlot;

  EXPECT_EQ(VirtualSlot(&Node::GetParent), kFirstSlot);
  EXPECT_EQ(VirtualSlot(&Node::GetNumChildren), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(&Node::GetChild), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(&Node::GetNumCompetitors), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(&Node::GetBiggestChildPos), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(&Node::GetCompetitor), kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(&Node::GetNumSurrogates), kFirstSlot + 6);
  EXPECT_EQ(VirtualSlot(&Node::GetSurrogate), kFirstSlot + 7);
  EXPECT_EQ(VirtualSlot(&Node::GetId), kFirstSlot + 8);
  EXPECT_EQ(VirtualSlot(&Node::GetAssignment), kFirstSlot + 9);
  EXPECT_EQ(VirtualSlot(&Node::GetNodeSize), kFirstSlot + 10);
  EXPECT_EQ(VirtualSlot(&Node::GetUnweightedNodeSize), kFirstSlot + 11);
  EXPECT_EQ(VirtualSlot(&Node::GetPercentageNodeSize), kFirstSlot + 12);
  EXPECT_EQ(VirtualSlot(&Node::GetNumPredictors), kFirstSlot + 13);
  EXPECT_EQ(VirtualSlot(&Node::GetPredictorRange), kFirstSlot + 14);
  EXPECT_EQ(VirtualSlot(&Node::GetNumPredictorValues), kFirstSlot + 15);
  EXPECT_EQ(VirtualSlot(&Node::GetPredictorValues), kFirstSlot + 16);
  EXPECT_EQ(VirtualSlot(&Node::GetPredictorMissingValueFlag), kFirstSlot + 17);
  EXPECT_EQ(VirtualSlot(&Node::GetClsInfo), kFirstSlot + 18);
  EXPECT_EQ(VirtualSlot(&Node::GetRegInfo), kFirstSlot + 19);
  EXPECT_EQ(VirtualSlot(&NodeImp::RemoveChildren), kFirstSlot + 20);
  EXPECT_EQ(VirtualSlot(&NodeImp::Classify), kFirstSlot + 21);
  EXPECT_EQ(VirtualSlot(&NodeImp::IsClassificationNode), kFirstSlot + 22);
  EXPECT_EQ(VirtualSlot(&NodeImp::SetId), -1);
  EXPECT_EQ(VirtualSlot(&NodeImp::Clone), -1);
  EXPECT_EQ(VirtualSlot(&NodeImp::Clean), -1);
  EXPECT_EQ(VirtualSlot(&NodeImp::DropObservationThroughTree), -1);
}
#endif

TEST(NodeImp, NumbersItsDataSamples) {
  static_assert(std::is_same_v<std::underlying_type_t<DataSample>, int>);
  EXPECT_EQ(TrainingSample, 0);
  EXPECT_EQ(TestSample, 1);
}

TEST(NodeImp, StoresItsId) {
  NodeImp node;

  for (unsigned int const id : {7u, 0u, std::numeric_limits<unsigned int>::max()}) {
    node.SetId(id);

    EXPECT_EQ(node.GetId(), id);
  }
}

TEST(NodeImp, StoresItsClassificationFlag) {
  NodeImp node;

  node.SetClassificationNode(false);
  EXPECT_FALSE(node.IsClassificationNode());

  node.SetClassificationNode(true);
  EXPECT_TRUE(node.IsClassificationNode());
}

TEST(NodeImp, HandsOutItsChildrenByPosition) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1), ANode(2)).Build();

  EXPECT_EQ(root->GetNumChildren(), 2);
  EXPECT_EQ(root->GetChild(0)->GetId(), 1u);
  EXPECT_EQ(root->GetChild(1)->GetId(), 2u);
  EXPECT_EQ(root->GetChildImp(1), root->GetChild(1));
  EXPECT_EQ(root->GetChild(0)->GetParent(), root.get());
  EXPECT_EQ(root->GetParent(), nullptr);
}

TEST(NodeImp, HandsOutNothingBeyondTheEnd) {
  std::unique_ptr<NodeImp> const root = RichClassificationTree();

  for (unsigned int const position : {2u, 3u, std::numeric_limits<unsigned int>::max()}) {
    SCOPED_TRACE(position);
    EXPECT_EQ(root->GetChild(position), nullptr);
    EXPECT_EQ(root->GetCompetitor(position), nullptr);
    EXPECT_EQ(root->GetSurrogate(position), nullptr);
  }
}

TEST(NodeImp, HandsOutHandlesToCopiesOfItsRules) {
  std::unique_ptr<NodeImp> const root = RichClassificationTree();

  for (unsigned int const position : {0u, 1u}) {
    SCOPED_TRACE(position);
    std::unique_ptr<SplitRule> const competitor(root->GetCompetitor(position));
    std::unique_ptr<SplitRule> const surrogate(root->GetSurrogate(position));
    SplitRuleImp const* const ofCompetitor = *competitor;
    SplitRuleImp const* const ofSurrogate = *surrogate;

    EXPECT_NE(ofCompetitor, root->GetCompetitorImp(position));
    EXPECT_EQ(ofCompetitor->Compare(*root->GetCompetitorImp(position)), 0);
    EXPECT_TRUE(*ofCompetitor == *root->GetCompetitorImp(position));
    EXPECT_NE(ofSurrogate, root->GetSurrogateImp(position));
    EXPECT_EQ(ofSurrogate->Compare(*root->GetSurrogateImp(position)), 0);
    EXPECT_TRUE(*ofSurrogate == *root->GetSurrogateImp(position));
  }
}

TEST(NodeImp, HandsOutNewHandleOnEveryCall) {
  std::unique_ptr<NodeImp> const root = RichClassificationTree();

  std::unique_ptr<SplitRule> const first(root->GetCompetitor(0));
  std::unique_ptr<SplitRule> const second(root->GetCompetitor(0));
  std::unique_ptr<SplitRule> const third(root->GetSurrogate(0));
  std::unique_ptr<SplitRule> const fourth(root->GetSurrogate(0));

  EXPECT_NE(first, second);
  EXPECT_NE(static_cast<SplitRuleImp const*>(*first), static_cast<SplitRuleImp const*>(*second));
  EXPECT_NE(third, fourth);
}

TEST(NodeImp, IsNotChangedThroughHandles) {
  std::unique_ptr<NodeImp> const root = RichClassificationTree();
  std::unique_ptr<SplitRule> const handle(root->GetCompetitor(0));

  handle->AddMissingValueMapping(true);

  EXPECT_EQ(handle->GetMissingValueMapping(), 2);
  EXPECT_EQ(root->GetCompetitorImp(0)->GetMissingValueMapping(), -1);
}

TEST(NodeImp, HandsOutNoHandleWhereNoRuleIsStored) {
  NodeImp node;
  node.SetNumCompetitors(1);
  node.SetNumSurrogates(1);

  EXPECT_EQ(node.GetCompetitor(0), nullptr);
  EXPECT_EQ(node.GetSurrogate(0), nullptr);
  EXPECT_EQ(node.GetNumCompetitors(), 1);
  EXPECT_EQ(node.GetNumSurrogates(), 1);
}

TEST(NodeImp, PredictsByTrainingSampleOfItsKind) {
  struct Row {
    char const* name;
    std::unique_ptr<NodeImp> node;
    double assignment;
  };
  std::unique_ptr<NodeImp> withPrediction = ANode(0).Regression(10.0, 2.5).Build();
  withPrediction->GetRegInfoImp(TrainingSample)
      ->SetExtendedStatistic(RegInfoImp::StorePrediction, -8.0);
  Row const rows[] = {
      {"class", ANode(0).Classes({1.0, 9.0}, 1).Build(), 1.0},
      {"class that is not the most frequent", ANode(0).Classes({1.0, 9.0}, 0).Build(), 0.0},
      {"class beyond the classes", ANode(0).Classes({1.0}, -3).Build(), -3.0},
      {"class whatever the test sample says",
       ANode(0).Classes({1.0}, 2).Classes({5.0}, 4, TestSample).Build(), 2.0},
      {"mean", ANode(0).Regression(10.0, 2.5).Build(), 2.5},
      {"mean whatever the test sample says",
       ANode(0).Regression(10.0, 2.5).Regression(1.0, 77.0, TestSample).Build(), 2.5},
      {"stored prediction", std::move(withPrediction), -8.0},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.node->GetAssignment(), row.assignment);
  }
}

TEST(NodeImp, SizesItselfByStatisticsOfTheSample) {
  std::unique_ptr<NodeImp> const classes =
      ANode(0).Classes({3.0, 1.5}).Classes({2.0}, 0, TestSample).Build();
  classes->GetClsInfoImp(TrainingSample)->SetUnweightedCount(4.0);
  classes->GetClsInfoImp(TestSample)->SetUnweightedCount(7.0);
  std::unique_ptr<NodeImp> const regression =
      ANode(0).Regression(30.0, 0.0).Regression(20.0, 0.0, TestSample).Build();
  regression->GetRegInfoImp(TestSample)
      ->SetExtendedStatistic(RegInfoImp::StoreUnweightedCount, 19.0);

  EXPECT_EQ(classes->GetNodeSize(TrainingSample), 4.5);
  EXPECT_EQ(classes->GetNodeSize(TestSample), 2.0);
  EXPECT_EQ(classes->GetUnweightedNodeSize(TrainingSample), 4.0);
  EXPECT_EQ(classes->GetUnweightedNodeSize(TestSample), 7.0);
  EXPECT_EQ(regression->GetNodeSize(TrainingSample), 30.0);
  EXPECT_EQ(regression->GetNodeSize(TestSample), 20.0);
  EXPECT_EQ(regression->GetUnweightedNodeSize(TrainingSample), 30.0);
  EXPECT_EQ(regression->GetUnweightedNodeSize(TestSample), 19.0);
}

TEST(NodeImp, HasSizeZeroWithoutStatisticsOfTheSample) {
  std::unique_ptr<NodeImp> const classes = ANode(0).Classes({3.0}).Build();
  std::unique_ptr<NodeImp> const regression = ANode(0).Regression(3.0, 1.0, TestSample).Build();

  EXPECT_EQ(classes->GetNodeSize(TestSample), 0.0);
  EXPECT_EQ(classes->GetUnweightedNodeSize(TestSample), 0.0);
  EXPECT_EQ(classes->GetPercentageNodeSize(TestSample), 0.0);
  EXPECT_EQ(regression->GetNodeSize(TrainingSample), 0.0);
  EXPECT_EQ(regression->GetUnweightedNodeSize(TrainingSample), 0.0);
  EXPECT_EQ(regression->GetPercentageNodeSize(TrainingSample), 0.0);
}

TEST(NodeImp, SizesItselfByItsFlagWhateverStatisticsItHolds) {
  std::unique_ptr<NodeImp> const node = ANode(0).Classes({3.0}).Build();
  node->GetClsInfoImp(TrainingSample)->SetPercentSize(40.0);

  node->SetClassificationNode(false);

  EXPECT_EQ(node->GetNodeSize(TrainingSample), 0.0);
  EXPECT_EQ(node->GetUnweightedNodeSize(TrainingSample), 0.0);
  EXPECT_EQ(node->GetPercentageNodeSize(TrainingSample), 0.0);
  EXPECT_NE(node->GetClsInfo(TrainingSample), nullptr);
}

TEST(NodeImp, TakesEveryOtherSampleForTheSecond) {
  for (DataSample const sample : kSecondSamples) {
    SCOPED_TRACE(static_cast<int>(sample));
    std::unique_ptr<NodeImp> const written = ANode(0).Classes({3.0}, 0, sample).Build();
    written->GetClsInfoImp(TestSample)->SetPercentSize(40.0);
    std::unique_ptr<NodeImp> const regression = ANode(0).Regression(5.0, 2.0, sample).Build();

    EXPECT_EQ(written->GetClsInfo(TrainingSample), nullptr);
    EXPECT_NE(written->GetClsInfo(TestSample), nullptr);
    EXPECT_EQ(written->GetClsInfo(sample), written->GetClsInfo(TestSample));
    EXPECT_EQ(written->GetClsInfoImp(sample), written->GetClsInfo(TestSample));
    EXPECT_EQ(written->GetNodeSize(sample), 3.0);
    EXPECT_EQ(written->GetUnweightedNodeSize(sample), 3.0);
    EXPECT_EQ(written->GetPercentageNodeSize(sample), 40.0);
    EXPECT_EQ(regression->GetRegInfo(TrainingSample), nullptr);
    EXPECT_NE(regression->GetRegInfo(TestSample), nullptr);
    EXPECT_EQ(regression->GetRegInfo(sample), regression->GetRegInfo(TestSample));
    EXPECT_EQ(regression->GetRegInfoImp(sample), regression->GetRegInfo(TestSample));
    EXPECT_EQ(regression->GetNodeSize(sample), 5.0);
    EXPECT_EQ(regression->GetUnweightedNodeSize(sample), 5.0);
    EXPECT_EQ(regression->GetPercentageNodeSize(sample), 1.0);
  }
}

TEST(NodeImp, HasThePercentSizeStoredInClassificationTree) {
  std::unique_ptr<NodeImp> const root =
      ANode(0)
          .Over(ANode(1).Classes({30.0}).Classes({1.0}, 0, TestSample))
          .Classes({120.0})
          .Build();
  NodeImp const* const child = root->GetChildImp(0);
  EXPECT_EQ(child->GetPercentageNodeSize(TrainingSample), systemMissingValue());

  child->GetClsInfoImp(TrainingSample)->SetPercentSize(25.0);
  child->GetClsInfoImp(TestSample)->SetPercentSize(-1.0);

  EXPECT_EQ(child->GetPercentageNodeSize(TrainingSample), 25.0);
  EXPECT_EQ(child->GetPercentageNodeSize(TestSample), -1.0);
}

TEST(NodeImp, HasItsShareOfTheRootInRegressionTree) {
  std::unique_ptr<NodeImp> const root =
      ANode(0)
          .Over(ANode(1)
                    .Over(ANode(2).Regression(15.0, 0.0).Regression(1.0, 0.0, TestSample))
                    .Regression(30.0, 0.0))
          .Regression(120.0, 0.0)
          .Regression(4.0, 0.0, TestSample)
          .Build();
  Node const* const child = root->GetChild(0);
  Node const* const grandchild = child->GetChild(0);

  EXPECT_EQ(root->GetPercentageNodeSize(TrainingSample), 1.0);
  EXPECT_EQ(child->GetPercentageNodeSize(TrainingSample), 0.25);
  EXPECT_EQ(grandchild->GetPercentageNodeSize(TrainingSample), 0.125);
  EXPECT_EQ(grandchild->GetPercentageNodeSize(TestSample), 0.25);
  EXPECT_EQ(child->GetPercentageNodeSize(TestSample), 0.0);
}

TEST(NodeImp, HasTheSizeOfRootForItsShareUnlessThatIsPositive) {
  for (double const rootSize : {0.0, -5.0, -std::numeric_limits<double>::infinity()}) {
    SCOPED_TRACE(rootSize);
    std::unique_ptr<NodeImp> const root =
        ANode(0).Over(ANode(1).Regression(30.0, 0.0)).Regression(rootSize, 0.0).Build();

    EXPECT_EQ(root->GetPercentageNodeSize(TrainingSample), rootSize);
    EXPECT_EQ(root->GetChild(0)->GetPercentageNodeSize(TrainingSample), rootSize);
  }
  std::unique_ptr<NodeImp> const root =
      ANode(0).Over(ANode(1).Regression(30.0, 0.0)).Regression(kNaN, 0.0).Build();
  EXPECT_TRUE(std::isnan(root->GetChild(0)->GetPercentageNodeSize(TrainingSample)));
}

TEST(NodeImp, HasShareZeroUnderRootWithoutStatistics) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1).Regression(30.0, 0.0)).Build();

  EXPECT_EQ(root->GetChild(0)->GetPercentageNodeSize(TrainingSample), 0.0);
}

TEST(NodeImp, KeepsSummariesThatStayWhenTheirNumberChanges) {
  NodeImp node;
  node.SetNumPredictors(2);
  EXPECT_EQ(node.GetNumPredictors(), 2);
  node.SetPredictorRange(0, 1.0, 2.0);
  node.SetPredictorRange(1, 3.0, 4.0);
  node.SetPredictorMissingValueFlag(1, true);

  node.SetNumPredictors(1);
  node.SetNumPredictors(3);

  EXPECT_EQ(node.GetNumPredictors(), 3);
  double const minima[] = {1.0, 0.0, 0.0};
  double const maxima[] = {2.0, 0.0, 0.0};
  for (int index = 0; index < 3; ++index) {
    SCOPED_TRACE(index);
    double minimum = -1.0;
    double maximum = -1.0;
    bool missing = true;
    EXPECT_TRUE(node.GetPredictorRange(index, &minimum, &maximum));
    EXPECT_TRUE(node.GetPredictorMissingValueFlag(index, &missing));
    EXPECT_EQ(minimum, minima[index]);
    EXPECT_EQ(maximum, maxima[index]);
    EXPECT_FALSE(missing);
    EXPECT_THAT(PredictorValues(node, index), ElementsAre());
  }
}

TEST(NodeImp, ReadsAndWritesTheSummaryOfThePredictorNamed) {
  NodeImp node;
  node.SetNumPredictors(3);
  double const values[] = {5.0, 6.0, 7.0};

  node.SetPredictorRange(1, -4.0, 4.0);
  node.SetPredictorValues(1, values, 3);
  node.SetNumPredictorValues(1, 2);
  node.SetPredictorMissingValueFlag(1, true);
  node.SetNumPredictorValues(2, 1);

  double minimum = -1.0;
  double maximum = -1.0;
  bool missing = false;
  EXPECT_TRUE(node.GetPredictorRange(1, &minimum, &maximum));
  EXPECT_EQ(minimum, -4.0);
  EXPECT_EQ(maximum, 4.0);
  EXPECT_TRUE(node.GetPredictorMissingValueFlag(1, &missing));
  EXPECT_TRUE(missing);
  EXPECT_TRUE(node.GetPredictorMissingValueFlag(0, &missing));
  EXPECT_FALSE(missing);
  EXPECT_THAT(PredictorValues(node, 0), ElementsAre());
  EXPECT_THAT(PredictorValues(node, 1), ElementsAre(5.0, 6.0));
  EXPECT_THAT(PredictorValues(node, 2), ElementsAre(0.0));
}

TEST(NodeImp, PassesOnThatTooManyPredictorValuesAreRefused) {
  std::unique_ptr<NodeImp> const node = ANode(0).Predictor(0.0, 1.0, {5.0, 6.0}).Build();
  double values[] = {-1.0, -1.0, -1.0};

  EXPECT_FALSE(node->GetPredictorValues(0, values, 3));
  EXPECT_FALSE(node->GetPredictorValues(0, values, -1));
  EXPECT_THAT(values, ElementsAre(-1.0, -1.0, -1.0));
  EXPECT_TRUE(node->GetPredictorValues(0, values, 1));
  EXPECT_THAT(values, ElementsAre(5.0, -1.0, -1.0));
}

TEST(NodeImp, RefusesPredictorOutOfRangeAndLeavesOutputsAlone) {
  std::unique_ptr<NodeImp> const node =
      ANode(0).Predictor(1.0, 2.0, {5.0}, true).Predictor(3.0, 4.0, {6.0}, true).Build();

  for (int const index :
       {-1, 2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    SCOPED_TRACE(index);
    double minimum = -7.0;
    double maximum = -8.0;
    double value = -9.0;
    int count = -10;
    bool missing = false;

    EXPECT_FALSE(node->GetPredictorRange(index, &minimum, &maximum));
    EXPECT_FALSE(node->GetNumPredictorValues(index, &count));
    EXPECT_FALSE(node->GetPredictorValues(index, &value, 1));
    EXPECT_FALSE(node->GetPredictorValues(index, &value, 0));
    EXPECT_FALSE(node->GetPredictorMissingValueFlag(index, &missing));

    EXPECT_EQ(minimum, -7.0);
    EXPECT_EQ(maximum, -8.0);
    EXPECT_EQ(value, -9.0);
    EXPECT_EQ(count, -10);
    EXPECT_FALSE(missing);
  }
}

TEST(NodeImp, ClosesTheGapWhenChildIsRemoved) {
  struct Row {
    int position;
    std::vector<unsigned int> left;
  };
  Row const rows[] = {{0, {2, 3}}, {1, {1, 3}}, {2, {1, 2}}};
  for (Row const& row : rows) {
    SCOPED_TRACE(row.position);
    std::unique_ptr<NodeImp> const root =
        ANode(0).SplitAt(0, 5.0, ANode(1), ANode(2), ANode(3)).SurrogateAt(1, 6.0).Build();

    root->RemoveChild(row.position);

    EXPECT_EQ(ChildIds(*root), row.left);
    EXPECT_EQ(root->GetNumCompetitors(), 1);
    EXPECT_EQ(root->GetNumSurrogates(), 1);
  }
}

TEST(NodeImp, IgnoresRemovalOfChildItDoesNotHave) {
  std::unique_ptr<NodeImp> const root = RichClassificationTree();

  for (int const position : {-1, root->GetNumChildren(), std::numeric_limits<int>::min(),
                             std::numeric_limits<int>::max()}) {
    root->RemoveChild(position);

    EXPECT_EQ(FirstDifference(*root, *RichClassificationTree()), "") << position;
  }
}

TEST(NodeImp, ChangesNoRuleWhenChildIsRemoved) {
  std::unique_ptr<NodeImp> const root = RichClassificationTree();

  root->RemoveChild(0);

  std::unique_ptr<NodeImp> const whole = RichClassificationTree();
  EXPECT_EQ(root->GetNumCompetitors(), 2);
  EXPECT_EQ(root->GetNumSurrogates(), 2);
  for (unsigned int const position : {0u, 1u}) {
    EXPECT_TRUE(*root->GetCompetitorImp(position) == *whole->GetCompetitorImp(position));
    EXPECT_EQ(root->GetCompetitorImp(position)->Compare(*whole->GetCompetitorImp(position)), 0);
    EXPECT_TRUE(*root->GetSurrogateImp(position) == *whole->GetSurrogateImp(position));
    EXPECT_EQ(root->GetSurrogateImp(position)->Compare(*whole->GetSurrogateImp(position)), 0);
  }
}

TEST(NodeImp, BecomesTerminalNodeThatKeepsItsCompetitors) {
  for (bool const argument : {true, false}) {
    SCOPED_TRACE(argument);
    std::unique_ptr<NodeImp> const root = RichClassificationTree();

    EXPECT_TRUE(root->RemoveChildren(argument));

    // What is left is the rich tree's root without children and surrogates.
    std::unique_ptr<NodeImp> const expected = RichClassificationTree();
    std::unique_ptr<NodeImp> const children[] = {
        std::unique_ptr<NodeImp>(expected->GetChildImp(0)),
        std::unique_ptr<NodeImp>(expected->GetChildImp(1))};
    std::unique_ptr<SplitRuleImp> const surrogates[] = {
        std::unique_ptr<SplitRuleImp>(expected->GetSurrogateImp(0)),
        std::unique_ptr<SplitRuleImp>(expected->GetSurrogateImp(1))};
    expected->SetNumChildren(0);
    expected->SetNumSurrogates(0);
    EXPECT_EQ(root->GetNumChildren(), 0);
    EXPECT_EQ(root->GetNumSurrogates(), 0);
    EXPECT_EQ(root->GetNumCompetitors(), 2);
    EXPECT_EQ(FirstDifference(*root, *expected), "");
  }
}

TEST(NodeImp, CanRemoveChildrenItDoesNotHave) {
  NodeImp node;

  EXPECT_TRUE(node.RemoveChildren(true));

  EXPECT_EQ(FirstDifference(node, NodeImp()), "");
}

TEST(NodeImp, PutsChildrenWhereTheOrderSays) {
  struct Row {
    char const* name;
    std::vector<int> order;
    std::vector<unsigned int> result;
  };
  Row const rows[] = {
      {"as they are", {0, 1, 2}, {1, 2, 3}},
      {"rotated", {2, 0, 1}, {2, 3, 1}},
      {"rotated the other way", {1, 2, 0}, {3, 1, 2}},
      {"reversed", {2, 1, 0}, {3, 2, 1}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    std::unique_ptr<NodeImp> const root =
        ANode(0).SplitAt(0, 5.0, ANode(1), ANode(2), ANode(3)).Build();

    root->ReorderSiblings(row.order);

    EXPECT_EQ(ChildIds(*root), row.result);
    for (unsigned int const position : {0u, 1u, 2u}) {
      EXPECT_EQ(root->GetChild(position)->GetParent(), root.get());
    }
  }
}

TEST(NodeImp, RenumbersPrimaryRuleAndSurrogatesWhenReordered) {
  std::unique_ptr<NodeImp> const root = ANode(0)
                                            .SplitAt(0, 5.0, ANode(1), ANode(2))
                                            .Dumb(1)
                                            .CompetitorAt(1, 6.0)
                                            .SurrogateAt(2, 7.0)
                                            .SurrogateAt(3, 8.0)
                                            .Build();

  root->ReorderSiblings({1, 0});

  SplitRuleImp const* const renumbered[] = {root->GetCompetitorImp(0), root->GetSurrogateImp(0),
                                            root->GetSurrogateImp(1)};
  for (SplitRuleImp const* const rule : renumbered) {
    SCOPED_TRACE(rule->GetPredictorIndex());
    EXPECT_EQ(rule->Classify(0.0), 1);
    EXPECT_EQ(rule->Classify(100.0), 0);
    EXPECT_TRUE(rule->HasProperty(SplitRuleMappingsReordered));
  }
  EXPECT_EQ(root->GetBiggestChildPos(), 0);
}

TEST(NodeImp, LeavesOtherCompetitorsAloneWhenReordered) {
  std::unique_ptr<NodeImp> const root = ANode(0)
                                            .SplitAt(0, 5.0, ANode(1), ANode(2))
                                            .CompetitorAt(1, 6.0)
                                            .CompetitorAt(2, 7.0)
                                            .Build();

  root->ReorderSiblings({1, 0});

  for (unsigned int const position : {1u, 2u}) {
    SplitRuleImp const* const competitor = root->GetCompetitorImp(position);
    EXPECT_EQ(competitor->Classify(0.0), 0);
    EXPECT_EQ(competitor->Classify(100.0), 1);
    EXPECT_FALSE(competitor->HasProperty(SplitRuleMappingsReordered));
  }
}

TEST(NodeImp, RoutesCasesToTheSameChildrenAfterReordering) {
  std::unique_ptr<NodeImp> const root =
      ANode(0).SplitAt(0, 5.0, ANode(1), ANode(2)).SurrogateAt(1, 7.0).Dumb(1).Build();
  double const missing = systemMissingValue();
  double const low[] = {1.0, missing};
  double const high[] = {9.0, missing};
  double const lowBySurrogate[] = {missing, 1.0};
  double const nothing[] = {missing, missing};

  root->ReorderSiblings({1, 0});

  EXPECT_EQ(root->DropObservationThroughTree(low, nullptr)->GetId(), 1u);
  EXPECT_EQ(root->DropObservationThroughTree(high, nullptr)->GetId(), 2u);
  EXPECT_EQ(root->DropObservationThroughTree(lowBySurrogate, nullptr)->GetId(), 1u);
  EXPECT_EQ(root->DropObservationThroughTree(nothing, nullptr)->GetId(), 2u);
}

TEST(NodeImp, ReordersOnlyItsOwnChildren) {
  std::unique_ptr<NodeImp> const root =
      ANode(0).SplitAt(0, 5.0, ANode(1).SplitAt(0, 2.0, ANode(3), ANode(4)), ANode(2)).Build();

  root->ReorderSiblings({1, 0});

  EXPECT_THAT(ChildIds(*root), ElementsAre(2, 1));
  EXPECT_THAT(ChildIds(*root->GetChildImp(1)), ElementsAre(3, 4));
  EXPECT_FALSE(root->GetChildImp(1)->GetCompetitorImp(0)->HasProperty(SplitRuleMappingsReordered));
}

TEST(NodeImp, KeepsIdFlagParentAndSummariesWhenCleaned) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(0)).Build();
  NodeImp* const node = root->GetChildImp(0);
  *node = *RichRegressionTree();

  node->Clean();

  EXPECT_EQ(node->GetId(), 10u);
  EXPECT_FALSE(node->IsClassificationNode());
  EXPECT_EQ(node->GetParent(), root.get());
  EXPECT_EQ(node->GetNumPredictors(), 1);
  EXPECT_THAT(PredictorValues(*node, 0), ElementsAre(0.0, 1.0, 2.0));
}

TEST(NodeImp, HoldsNeitherChildrenNorRulesNorStatisticsWhenCleaned) {
  for (auto const& node : {RichClassificationTree().release(), RichRegressionTree().release()}) {
    std::unique_ptr<NodeImp> const owned(node);
    owned->Clean();

    EXPECT_EQ(node->GetNumChildren(), 0);
    EXPECT_EQ(node->GetNumCompetitors(), 0);
    EXPECT_EQ(node->GetNumSurrogates(), 0);
    for (DataSample const sample : {TrainingSample, TestSample}) {
      EXPECT_EQ(node->GetClsInfo(sample), nullptr);
      EXPECT_EQ(node->GetRegInfo(sample), nullptr);
    }
  }
}

#ifndef NDEBUG
TEST(NodeImpDeathTest, StopsAtPositionOutOfRange) {
  std::unique_ptr<NodeImp> const node = RichClassificationTree();
  double const value = 0.0;

  EXPECT_DEATH(node->GetChildImp(2), "NodeImp::GetChildImp: index 2 is out of range");
  EXPECT_DEATH(node->GetCompetitorImp(3), "NodeImp::GetCompetitorImp: index 3 is out of range");
  EXPECT_DEATH(node->GetSurrogateImp(4), "NodeImp::GetSurrogateImp: index 4 is out of range");
  EXPECT_DEATH(node->SetChild(2, nullptr), "NodeImp::SetChild: index 2 is out of range");
  EXPECT_DEATH(node->SetCompetitor(2, nullptr), "NodeImp::SetCompetitor: index 2 is out of range");
  EXPECT_DEATH(node->SetSurrogate(2, nullptr), "NodeImp::SetSurrogate: index 2 is out of range");
  EXPECT_DEATH(node->SetPredictorRange(2, 0.0, 1.0),
               "NodeImp::SetPredictorRange: index 2 is out of range");
  EXPECT_DEATH(node->SetNumPredictorValues(-1, 0),
               "NodeImp::SetNumPredictorValues: index -1 is out of range");
  EXPECT_DEATH(node->SetPredictorValues(5, &value, 1),
               "NodeImp::SetPredictorValues: index 5 is out of range");
  EXPECT_DEATH(node->SetPredictorMissingValueFlag(2, true),
               "NodeImp::SetPredictorMissingValueFlag: index 2 is out of range");
}

TEST(NodeImpDeathTest, StopsAtPredictionWithoutStatisticsOfTrainingSample) {
  NodeImp const classification;
  std::unique_ptr<NodeImp> const regression = ANode(0).Regression(1.0, 2.0, TestSample).Build();

  EXPECT_DEATH(static_cast<void>(classification.GetAssignment()),
               "NodeImp::GetAssignment: .*no statistics of the training sample");
  EXPECT_DEATH(static_cast<void>(regression->GetAssignment()),
               "NodeImp::GetAssignment: .*no statistics of the training sample");
}

TEST(NodeImpDeathTest, StopsAtOrderThatIsNoPermutation) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1), ANode(2)).Build();

  EXPECT_DEATH(root->ReorderSiblings({0}), "NodeImp::ReorderSiblings: index 1 is out of range");
  EXPECT_DEATH(root->ReorderSiblings({0, 2}), "NodeImp::ReorderSiblings: index 2 is out of range");
  EXPECT_DEATH(root->ReorderSiblings({-1, 0}),
               "NodeImp::ReorderSiblings: index -1 is out of range");
}
#endif

}  // namespace
}  // namespace tree
