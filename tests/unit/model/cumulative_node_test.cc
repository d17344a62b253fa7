#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/foreign_node.h"
#include "testing/tree_builder.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/nodes.h"
#include "tree/support.h"

namespace tree {
namespace {

using testing::ANode;
using testing::ForeignClsInfo;
using testing::ForeignNode;
using testing::ForeignRegInfo;

using Nodes = std::vector<Node const*>;

static_assert(CumulativeNode::NodeSizeWeighted == 0);
static_assert(CumulativeNode::NodeSizeUnweighted == 1);
static_assert(CumulativeNode::NodeSizePercentage == 2);
static_assert(std::is_same_v<std::underlying_type_t<CumulativeNode::NodeSizeType>, int>);
static_assert(std::is_same_v<decltype(std::declval<CumulativeNode&>().GetClsInfo(TrainingSample)),
                             ClsInfoImp const*>);
static_assert(std::is_same_v<decltype(std::declval<CumulativeNode&>().GetRegInfo(TrainingSample)),
                             RegInfoImp const*>);
static_assert(std::is_same_v<decltype(std::declval<CumulativeNode const&>().Validate()), bool>);
static_assert(std::has_virtual_destructor_v<CumulativeNode>);

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Adding these in order gives 1; from behind, or the last two first, it gives 0.
constexpr double kInOrder[] = {1e16, -1e16, 1.0};

constexpr CumulativeNode::NodeSizeType kSizeTypes[] = {CumulativeNode::NodeSizeWeighted,
                                                       CumulativeNode::NodeSizeUnweighted,
                                                       CumulativeNode::NodeSizePercentage};

std::unique_ptr<NodeImp> ClassNode(std::initializer_list<double> counts) {
  return ANode(0).Classes(counts).Build();
}

std::unique_ptr<NodeImp> RegressionNode(double count, double mean) {
  return ANode(0).Regression(count, mean).Build();
}

// Statistics with a weighted count other than the node's size.
RegInfoImp RegressionStatistics(double count, double mean, std::vector<double> const& bins = {}) {
  RegInfoImp info;
  info.SetCount(count);
  info.SetMean(mean);
  info.SetNumBins(static_cast<int>(bins.size()));
  int bin = 0;
  for (double const size : bins) info.SetBinSize(bin++, size);
  return info;
}

ForeignNode NodeWith(RegInfo const& info, double size) {
  ForeignNode node;
  node.training.size = size;
  node.training.regInfo = &info;
  return node;
}

ForeignNode NodeWith(ClsInfo const& info) {
  ForeignNode node;
  node.training.clsInfo = &info;
  return node;
}

// Three sizes per sample, all different, so that no one can stand in for another.
ForeignNode NodeOfManySizes(ClsInfo const& info) {
  ForeignNode node = NodeWith(info);
  node.training.size = 1.0;
  node.training.unweightedSize = 2.0;
  node.training.percentageSize = 3.0;
  node.test.size = 10.0;
  node.test.unweightedSize = 20.0;
  node.test.percentageSize = 30.0;
  return node;
}

// --- Which groups are valid -----------------------------------------------------------------

TEST(CumulativeNode, IsValidWhenItsFirstNodeHasStatisticsOfTheTrainingSample) {
  std::unique_ptr<NodeImp> const classes = ANode(0).Classes({1.0}).Build();
  std::unique_ptr<NodeImp> const regression = ANode(0).Regression(1.0, 2.0).Build();
  std::unique_ptr<NodeImp> const classesOfTest = ANode(0).Classes({1.0}, 0, TestSample).Build();
  std::unique_ptr<NodeImp> const regressionOfTest =
      ANode(0).Regression(1.0, 2.0, TestSample).Build();
  std::unique_ptr<NodeImp> const nothing = ANode(0).Build();
  struct {
    char const* name;
    Nodes nodes;
    bool valid;
  } const rows[] = {
      {"no nodes", {}, false},
      {"a class distribution", {classes.get()}, true},
      {"regression statistics", {regression.get()}, true},
      {"no statistics", {nothing.get()}, false},
      {"a class distribution of the test sample only", {classesOfTest.get()}, false},
      {"regression statistics of the test sample only", {regressionOfTest.get()}, false},
      {"statistics in the first node only", {classes.get(), nothing.get()}, true},
      {"statistics in later nodes only", {nothing.get(), classes.get(), regression.get()}, false},
      {"classes, then regression", {classes.get(), regression.get()}, true},
      {"regression, then classes", {regression.get(), classes.get()}, true},
  };

  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    CumulativeNode group(row.nodes);

    EXPECT_EQ(group.Validate(), row.valid);
    EXPECT_EQ(group.GetNodeSize(TrainingSample) != systemMissingValue(), row.valid);
    EXPECT_EQ(group.GetClsInfo(TrainingSample) != nullptr, row.valid);
    EXPECT_EQ(group.GetRegInfo(TrainingSample) != nullptr, row.valid);
  }
}

TEST(CumulativeNode, AnswersMissingSizesAndNoStatisticsWhenItIsNotValid) {
  ForeignClsInfo const info({1.0});
  ForeignNode const withStatistics = NodeOfManySizes(info);
  ForeignNode const without;
  CumulativeNode empty((Nodes()));
  CumulativeNode invalid({&without, &withStatistics});

  for (CumulativeNode* const group : {&empty, &invalid}) {
    for (DataSample const sample : {TrainingSample, TestSample}) {
      EXPECT_EQ(group->GetNodeSize(sample), systemMissingValue());
      EXPECT_EQ(group->GetUnweightedNodeSize(sample), systemMissingValue());
      EXPECT_EQ(group->GetPercentageNodeSize(sample), systemMissingValue());
      for (CumulativeNode::NodeSizeType const type : kSizeTypes) {
        EXPECT_EQ(group->GetNodeSize(type, sample), systemMissingValue());
      }
      EXPECT_EQ(group->GetNodeSize(static_cast<CumulativeNode::NodeSizeType>(3), sample),
                systemMissingValue());
      EXPECT_EQ(group->GetClsInfo(sample), nullptr);
      EXPECT_EQ(group->GetRegInfo(sample), nullptr);
    }
  }
}

TEST(CumulativeNode, DoesNotExamineNodesBeyondTheFirstWhenItIsMade) {
  class CountingNode : public ForeignNode {
   public:
    ClsInfo const* GetClsInfo(DataSample sample) const override {
      ++numQuestions;
      return ForeignNode::GetClsInfo(sample);
    }
    RegInfo const* GetRegInfo(DataSample sample) const override {
      ++numQuestions;
      return ForeignNode::GetRegInfo(sample);
    }
    mutable int numQuestions = 0;
  };
  CountingNode const first;
  CountingNode const second;
  CountingNode const third;

  CumulativeNode const group({&first, &second, &third});

  EXPECT_GT(first.numQuestions, 0);
  EXPECT_EQ(second.numQuestions, 0);
  EXPECT_EQ(third.numQuestions, 0);
}

TEST(CumulativeNode, KeepsTheValidityThatItHadWhenItWasMade) {
  std::unique_ptr<NodeImp> const filled = ANode(0).Classes({2.0}).Build();
  std::unique_ptr<NodeImp> const bare = ANode(0).Build();
  CumulativeNode valid({filled.get()});
  CumulativeNode invalid({bare.get()});

  filled->SetClsInfo(nullptr, TrainingSample);
  bare->SetClsInfo(new ClsInfoImp, TrainingSample);

  EXPECT_EQ(valid.GetNodeSize(TrainingSample), 0.0);
  ASSERT_NE(valid.GetClsInfo(TrainingSample), nullptr);
  EXPECT_EQ(valid.GetClsInfo(TrainingSample)->GetNumClasses(), 0);
  EXPECT_FALSE(valid.Validate());
  EXPECT_EQ(invalid.GetNodeSize(TrainingSample), systemMissingValue());
  EXPECT_EQ(invalid.GetClsInfo(TrainingSample), nullptr);
  EXPECT_TRUE(invalid.Validate());
}

TEST(CumulativeNode, CopiesTheListOfItsNodes) {
  std::unique_ptr<NodeImp> const first = ClassNode({2.0});
  std::unique_ptr<NodeImp> const second = ClassNode({3.0});
  Nodes nodes = {first.get(), second.get()};
  CumulativeNode const group(nodes);

  nodes.clear();

  EXPECT_EQ(group.GetNodeSize(TrainingSample), 5.0);
}

// --- Sizes ----------------------------------------------------------------------------------

TEST(CumulativeNode, AddsUpSizesAndPercentages) {
  std::unique_ptr<NodeImp> const first = ClassNode({30.0});
  std::unique_ptr<NodeImp> const second = ClassNode({70.0});
  first->GetClsInfoImp(TrainingSample)->SetPercentSize(30.0);
  second->GetClsInfoImp(TrainingSample)->SetPercentSize(70.0);

  CumulativeNode const group({first.get(), second.get()});

  EXPECT_EQ(group.GetNodeSize(TrainingSample), 100.0);
  EXPECT_EQ(group.GetPercentageNodeSize(TrainingSample), 100.0);
}

TEST(CumulativeNode, AddsUpTheSizeOfTheGivenTypeAndSample) {
  ForeignClsInfo const info({1.0});
  ForeignNode const node = NodeOfManySizes(info);
  CumulativeNode const group({&node, &node, &node});

  EXPECT_EQ(group.GetNodeSize(CumulativeNode::NodeSizeWeighted, TrainingSample), 3.0);
  EXPECT_EQ(group.GetNodeSize(CumulativeNode::NodeSizeUnweighted, TrainingSample), 6.0);
  EXPECT_EQ(group.GetNodeSize(CumulativeNode::NodeSizePercentage, TrainingSample), 9.0);
  EXPECT_EQ(group.GetNodeSize(CumulativeNode::NodeSizeWeighted, TestSample), 30.0);
  EXPECT_EQ(group.GetNodeSize(CumulativeNode::NodeSizeUnweighted, TestSample), 60.0);
  EXPECT_EQ(group.GetNodeSize(CumulativeNode::NodeSizePercentage, TestSample), 90.0);
}

TEST(CumulativeNode, NamesTheThreeSizeTypesByOperations) {
  ForeignClsInfo const info({1.0});
  ForeignNode const node = NodeOfManySizes(info);
  CumulativeNode const group({&node, &node});

  EXPECT_EQ(group.GetNodeSize(TrainingSample), 2.0);
  EXPECT_EQ(group.GetUnweightedNodeSize(TrainingSample), 4.0);
  EXPECT_EQ(group.GetPercentageNodeSize(TrainingSample), 6.0);
  EXPECT_EQ(group.GetNodeSize(TestSample), 20.0);
  EXPECT_EQ(group.GetUnweightedNodeSize(TestSample), 40.0);
  EXPECT_EQ(group.GetPercentageNodeSize(TestSample), 60.0);
}

TEST(CumulativeNode, AddsNothingForAnUnknownSizeType) {
  ForeignClsInfo const info({1.0});
  ForeignNode const node = NodeOfManySizes(info);
  CumulativeNode const group({&node, &node});

  for (int const type : {3, -1, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(group.GetNodeSize(static_cast<CumulativeNode::NodeSizeType>(type), TrainingSample),
              0.0);
  }
}

TEST(CumulativeNode, PassesAnySampleOnToItsNodes) {
  ForeignClsInfo const info({1.0});
  ForeignNode const node = NodeOfManySizes(info);
  CumulativeNode const group({&node});

  EXPECT_EQ(group.GetNodeSize(static_cast<DataSample>(7)), 10.0);
}

TEST(CumulativeNode, AddsUpSizesInTheOrderOfItsNodes) {
  ForeignClsInfo const info({1.0});
  std::vector<ForeignNode> nodes(3, NodeWith(info));
  for (std::size_t i = 0; i < 3; ++i) nodes[i].training.size = kInOrder[i];

  CumulativeNode const group({&nodes[0], &nodes[1], &nodes[2]});

  EXPECT_EQ(group.GetNodeSize(TrainingSample), 1.0);
}

TEST(CumulativeNode, CountsANodeAsOftenAsItIsListed) {
  std::unique_ptr<NodeImp> const node = ClassNode({1.0, 2.0});
  CumulativeNode group({node.get(), node.get()});

  EXPECT_EQ(group.GetNodeSize(TrainingSample), 6.0);
  EXPECT_EQ(group.GetClsInfo(TrainingSample)->GetClassCount(1), 4.0);
}

// --- Class distributions --------------------------------------------------------------------

TEST(CumulativeNode, AddsUpClassCountsClassByClass) {
  std::unique_ptr<NodeImp> const first = ClassNode({1.0, 2.0, 3.0});
  std::unique_ptr<NodeImp> const second = ClassNode({10.0, 0.5, 0.0});
  CumulativeNode group({first.get(), second.get()});

  ClsInfoImp const* const info = group.GetClsInfo(TrainingSample);

  ASSERT_EQ(info->GetNumClasses(), 3);
  EXPECT_EQ(info->GetClassCount(0), 11.0);
  EXPECT_EQ(info->GetClassCount(1), 2.5);
  EXPECT_EQ(info->GetClassCount(2), 3.0);
  EXPECT_EQ(info->GetCount(), 16.5);
}

TEST(CumulativeNode, AddsUpUnweightedCountsOfClassDistributions) {
  std::unique_ptr<NodeImp> const first = ClassNode({1.0});
  std::unique_ptr<NodeImp> const second = ClassNode({1.0});
  first->GetClsInfoImp(TrainingSample)->SetUnweightedCount(40.0);
  second->GetClsInfoImp(TrainingSample)->SetUnweightedCount(2.0);
  CumulativeNode group({first.get(), second.get()});

  EXPECT_EQ(group.GetClsInfo(TrainingSample)->GetUnweightedCount(), 42.0);
}

TEST(CumulativeNode, MergesClassDistributionsOfTheGivenSample) {
  std::unique_ptr<NodeImp> const node =
      ANode(0).Classes({1.0, 2.0}).Classes({5.0, 6.0, 7.0}, 0, TestSample).Build();
  CumulativeNode group({node.get()});

  ClsInfoImp const* const info = group.GetClsInfo(TestSample);

  ASSERT_EQ(info->GetNumClasses(), 3);
  EXPECT_EQ(info->GetClassCount(0), 5.0);
  EXPECT_EQ(info->GetUnweightedCount(), 18.0);
}

TEST(CumulativeNode, SkipsNodesWithoutAClassDistribution) {
  std::unique_ptr<NodeImp> const regression = RegressionNode(5.0, 1.0);
  std::unique_ptr<NodeImp> const bare = ANode(0).Build();
  std::unique_ptr<NodeImp> const classes = ClassNode({1.0, 2.0});
  CumulativeNode group({regression.get(), bare.get(), classes.get(), bare.get()});

  ClsInfoImp const* const info = group.GetClsInfo(TrainingSample);

  ASSERT_EQ(info->GetNumClasses(), 2);
  EXPECT_EQ(info->GetClassCount(0), 1.0);
  EXPECT_EQ(info->GetClassCount(1), 2.0);
  EXPECT_EQ(info->GetUnweightedCount(), 3.0);
}

TEST(CumulativeNode, MergesNoClassesWhenNoNodeHasAny) {
  std::unique_ptr<NodeImp> const regression = RegressionNode(5.0, 1.0);
  CumulativeNode group({regression.get()});

  ClsInfoImp const* const info = group.GetClsInfo(TrainingSample);

  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->GetNumClasses(), 0);
  EXPECT_EQ(info->GetCount(), 0.0);
  EXPECT_EQ(info->GetUnweightedCount(), 0.0);
}

TEST(CumulativeNode, TakesTheNumberOfClassesFromTheFirstNodeThatHasAny) {
  std::unique_ptr<NodeImp> const two = ClassNode({1.0, 2.0});
  std::unique_ptr<NodeImp> const three = ClassNode({10.0, 20.0, 40.0});
  CumulativeNode smallFirst({two.get(), three.get()});
  CumulativeNode largeFirst({three.get(), two.get()});

  ClsInfoImp const* const small = smallFirst.GetClsInfo(TrainingSample);
  ClsInfoImp const* const large = largeFirst.GetClsInfo(TrainingSample);

  ASSERT_EQ(small->GetNumClasses(), 2);
  EXPECT_EQ(small->GetClassCount(1), 22.0);
  EXPECT_EQ(small->GetUnweightedCount(), 73.0);
  ASSERT_EQ(large->GetNumClasses(), 3);
  EXPECT_EQ(large->GetClassCount(0), 11.0);
  EXPECT_EQ(large->GetClassCount(1), 22.0);
  EXPECT_EQ(large->GetClassCount(2), 40.0);
  EXPECT_EQ(large->GetUnweightedCount(), 73.0);
}

TEST(CumulativeNode, TakesZeroClassesFromAFirstNodeWithADistributionOfNone) {
  std::unique_ptr<NodeImp> const none = ClassNode({});
  std::unique_ptr<NodeImp> const two = ClassNode({1.0, 2.0});
  CumulativeNode group({none.get(), two.get()});

  ClsInfoImp const* const info = group.GetClsInfo(TrainingSample);

  EXPECT_EQ(info->GetNumClasses(), 0);
  EXPECT_EQ(info->GetUnweightedCount(), 3.0);
}

TEST(CumulativeNode, CountsNodesWithoutWeightInClassDistributions) {
  ClsInfoImp info;
  info.SetNumClasses(1);
  info.SetClassCount(0, 6.0);
  info.SetUnweightedCount(5.0);
  ForeignNode node = NodeWith(info);
  node.training.size = 0.0;
  CumulativeNode group({&node});

  EXPECT_EQ(group.GetClsInfo(TrainingSample)->GetClassCount(0), 6.0);
  EXPECT_EQ(group.GetClsInfo(TrainingSample)->GetUnweightedCount(), 5.0);
}

TEST(CumulativeNode, AddsUpClassCountsInTheOrderOfItsNodes) {
  std::vector<std::unique_ptr<NodeImp>> nodes;
  for (double const count : kInOrder) nodes.push_back(ClassNode({count}));
  CumulativeNode group({nodes[0].get(), nodes[1].get(), nodes[2].get()});

  EXPECT_EQ(group.GetClsInfo(TrainingSample)->GetClassCount(0), 1.0);
  EXPECT_EQ(group.GetClsInfo(TrainingSample)->GetUnweightedCount(), 1.0);
}

TEST(CumulativeNode, TakesTheUnweightedSizeOfANodeWithAForeignClassDistribution) {
  ForeignClsInfo const foreign({1.0, 2.0});
  ForeignNode node = NodeWith(foreign);
  node.training.size = 100.0;
  node.training.unweightedSize = 17.0;
  std::unique_ptr<NodeImp> const own = ClassNode({4.0, 4.0});
  CumulativeNode group({&node, own.get()});

  ClsInfoImp const* const info = group.GetClsInfo(TrainingSample);

  ASSERT_EQ(info->GetNumClasses(), 2);
  EXPECT_EQ(info->GetClassCount(0), 5.0);
  EXPECT_EQ(info->GetClassCount(1), 6.0);
  EXPECT_EQ(info->GetUnweightedCount(), 25.0);
}

TEST(CumulativeNode, ReadsAForeignClassDistributionForAllClassesOfTheFirstOne) {
  std::unique_ptr<NodeImp> const own = ClassNode({1.0, 2.0, 4.0});
  // Answers for classes that it does not count.
  class Talkative : public ForeignClsInfo {
   public:
    Talkative() : ForeignClsInfo({8.0}) {}
    double GetClassCount(int index) const override { return 8.0 + index; }
  };
  Talkative const fewer;
  ForeignNode const node = NodeWith(fewer);
  CumulativeNode group({own.get(), &node});

  ClsInfoImp const* const info = group.GetClsInfo(TrainingSample);

  ASSERT_EQ(info->GetNumClasses(), 3);
  EXPECT_EQ(info->GetClassCount(0), 9.0);
  EXPECT_EQ(info->GetClassCount(1), 11.0);
  EXPECT_EQ(info->GetClassCount(2), 14.0);
}

// The merged object is not const in truth, so a test may give the fields that are not merged values
// of their own.
TEST(CumulativeNode, LeavesPredictionAndPercentSizeOfTheMergedDistributionAlone) {
  std::unique_ptr<NodeImp> const node = ANode(0).Classes({1.0, 2.0}, 1).Build();
  node->GetClsInfoImp(TrainingSample)->SetPercentSize(33.0);
  CumulativeNode group({node.get()});

  ClsInfoImp* const info = const_cast<ClsInfoImp*>(group.GetClsInfo(TrainingSample));

  EXPECT_EQ(info->GetPrediction(), 0);
  EXPECT_EQ(info->GetPercentSize(), systemMissingValue());
  info->SetPrediction(5);
  info->SetPercentSize(77.0);
  group.GetClsInfo(TrainingSample);
  EXPECT_EQ(info->GetPrediction(), 5);
  EXPECT_EQ(info->GetPercentSize(), 77.0);
}

TEST(CumulativeNode, OverwritesTheDistributionThatItReturnedBefore) {
  std::unique_ptr<NodeImp> const node =
      ANode(0).Classes({1.0, 2.0, 3.0}).Classes({5.0, 7.0}, 0, TestSample).Build();
  CumulativeNode group({node.get()});
  ClsInfoImp const* const before = group.GetClsInfo(TrainingSample);

  ClsInfoImp const* const after = group.GetClsInfo(TestSample);

  EXPECT_EQ(before, after);
  ASSERT_EQ(before->GetNumClasses(), 2);
  EXPECT_EQ(before->GetClassCount(0), 5.0);
  EXPECT_EQ(before->GetClassCount(1), 7.0);
  EXPECT_EQ(before->GetUnweightedCount(), 12.0);
}

TEST(CumulativeNode, SeesChangesOfItsNodesAtTheNextCall) {
  std::unique_ptr<NodeImp> const node = ClassNode({1.0});
  CumulativeNode group({node.get()});
  group.GetClsInfo(TrainingSample);

  node->GetClsInfoImp(TrainingSample)->SetClassCount(0, 9.0);

  EXPECT_EQ(group.GetClsInfo(TrainingSample)->GetClassCount(0), 9.0);
}

// --- Regression statistics ------------------------------------------------------------------

TEST(CumulativeNode, TakesTheMeanOverAllCases) {
  std::unique_ptr<NodeImp> const first = RegressionNode(10.0, 2.0);
  std::unique_ptr<NodeImp> const second = RegressionNode(30.0, 4.0);
  CumulativeNode group({first.get(), second.get()});

  RegInfoImp const* const info = group.GetRegInfo(TrainingSample);

  EXPECT_EQ(info->GetMean(), 3.5);
  EXPECT_EQ(info->GetCount(), 40.0);
}

TEST(CumulativeNode, WeighsMeansByNodeSizesAndAddsUpCounts) {
  RegInfoImp const low = RegressionStatistics(99.0, 2.0);
  RegInfoImp const high = RegressionStatistics(1.0, 4.0);
  ForeignNode const first = NodeWith(low, 10.0);
  ForeignNode const second = NodeWith(high, 30.0);
  CumulativeNode group({&first, &second});

  RegInfoImp const* const info = group.GetRegInfo(TrainingSample);

  EXPECT_EQ(info->GetMean(), 3.5);
  EXPECT_EQ(info->GetCount(), 100.0);
}

TEST(CumulativeNode, MergesRegressionStatisticsOfTheGivenSample) {
  std::unique_ptr<NodeImp> const node =
      ANode(0).Regression(10.0, 2.0).Regression(4.0, 7.0, TestSample).Build();
  CumulativeNode group({node.get()});

  RegInfoImp const* const info = group.GetRegInfo(TestSample);

  EXPECT_EQ(info->GetMean(), 7.0);
  EXPECT_EQ(info->GetCount(), 4.0);
}

TEST(CumulativeNode, StoresTheUnweightedCountsAddedUp) {
  RegInfoImp with = RegressionStatistics(10.0, 1.0);
  with.SetExtendedStatistic(RegInfoImp::StoreUnweightedCount, 7.0);
  RegInfoImp const without = RegressionStatistics(20.0, 1.0);  // reads as the weighted count
  ForeignNode const first = NodeWith(with, 10.0);
  ForeignNode const second = NodeWith(without, 20.0);
  CumulativeNode group({&first, &second});

  double stored = 0.0;
  bool const isStored = group.GetRegInfo(TrainingSample)
                            ->GetExtendedStatistic(RegInfoImp::StoreUnweightedCount, &stored);

  EXPECT_TRUE(isStored);
  EXPECT_EQ(stored, 27.0);
}

TEST(CumulativeNode, ReportsAMissingStandardDeviation) {
  RegInfoImp statistics = RegressionStatistics(10.0, 1.0);
  statistics.SetExtendedStatistic(RegInfoImp::StoreStdDev, 2.0);
  ForeignNode const node = NodeWith(statistics, 10.0);
  CumulativeNode group({&node, &node});

  double stored = 0.0;
  RegInfoImp const* const info = group.GetRegInfo(TrainingSample);

  EXPECT_EQ(info->GetStdDev(), systemMissingValue());
  EXPECT_TRUE(info->GetExtendedStatistic(RegInfoImp::StoreStdDev, &stored));
  EXPECT_EQ(stored, systemMissingValue());
}

TEST(CumulativeNode, SkipsRegressionNodesOfSizeZeroEntirely) {
  RegInfoImp const weightless = RegressionStatistics(50.0, 1000.0, {1.0, 2.0, 4.0});
  RegInfoImp const weighty = RegressionStatistics(10.0, 2.0, {8.0, 16.0});
  ForeignNode const first = NodeWith(weightless, 0.0);
  ForeignNode const second = NodeWith(weighty, 10.0);
  CumulativeNode group({&first, &second, &first});

  RegInfoImp const* const info = group.GetRegInfo(TrainingSample);

  EXPECT_EQ(info->GetMean(), 2.0);
  EXPECT_EQ(info->GetCount(), 10.0);
  EXPECT_EQ(info->GetUnweightedCount(), 10.0);
  ASSERT_EQ(info->GetNumBins(), 2);
  EXPECT_EQ(info->GetBinSize(0), 8.0);
  EXPECT_EQ(info->GetBinSize(1), 16.0);
}

TEST(CumulativeNode, SkipsOnlyWeightsOfExactlyZero) {
  RegInfoImp const statistics = RegressionStatistics(3.0, 5.0);
  for (double const size : {std::numeric_limits<double>::denorm_min(), -1.0}) {
    ForeignNode const node = NodeWith(statistics, size);
    CumulativeNode group({&node});

    EXPECT_EQ(group.GetRegInfo(TrainingSample)->GetCount(), 3.0) << size;
  }
  ForeignNode const negativeZero = NodeWith(statistics, -0.0);
  CumulativeNode group({&negativeZero});
  EXPECT_EQ(group.GetRegInfo(TrainingSample)->GetCount(), 0.0);
}

TEST(CumulativeNode, SkipsNodesWithoutRegressionStatistics) {
  std::unique_ptr<NodeImp> const classes = ClassNode({50.0});
  std::unique_ptr<NodeImp> const regression = RegressionNode(10.0, 2.0);
  CumulativeNode group({classes.get(), regression.get(), classes.get()});

  RegInfoImp const* const info = group.GetRegInfo(TrainingSample);

  EXPECT_EQ(info->GetMean(), 2.0);
  EXPECT_EQ(info->GetCount(), 10.0);
  EXPECT_EQ(info->GetUnweightedCount(), 10.0);
}

TEST(CumulativeNode, HasAMissingMeanWhenItsWeightsAddUpToZero) {
  RegInfoImp const statistics = RegressionStatistics(3.0, 5.0);
  ForeignNode const plus = NodeWith(statistics, 2.0);
  ForeignNode const minus = NodeWith(statistics, -2.0);
  std::unique_ptr<NodeImp> const classes = ClassNode({1.0});
  CumulativeNode cancelled({&plus, &minus});
  CumulativeNode nobody({classes.get()});

  EXPECT_EQ(cancelled.GetRegInfo(TrainingSample)->GetMean(), systemMissingValue());
  EXPECT_EQ(cancelled.GetRegInfo(TrainingSample)->GetCount(), 6.0);
  EXPECT_EQ(nobody.GetRegInfo(TrainingSample)->GetMean(), systemMissingValue());
  EXPECT_EQ(nobody.GetRegInfo(TrainingSample)->GetCount(), 0.0);
  EXPECT_EQ(nobody.GetRegInfo(TrainingSample)->GetUnweightedCount(), 0.0);
  EXPECT_EQ(nobody.GetRegInfo(TrainingSample)->GetStdDev(), systemMissingValue());
  EXPECT_EQ(nobody.GetRegInfo(TrainingSample)->GetNumBins(), 0);
}

TEST(CumulativeNode, AddsUpBinsOneByOne) {
  RegInfoImp const first = RegressionStatistics(1.0, 0.0, {1.0, 2.0, 4.0});
  RegInfoImp const second = RegressionStatistics(1.0, 0.0, {10.0, 20.0, 40.0});
  ForeignNode const firstNode = NodeWith(first, 1.0);
  ForeignNode const secondNode = NodeWith(second, 1.0);
  CumulativeNode group({&firstNode, &secondNode});

  RegInfoImp const* const info = group.GetRegInfo(TrainingSample);

  ASSERT_EQ(info->GetNumBins(), 3);
  EXPECT_EQ(info->GetBinSize(0), 11.0);
  EXPECT_EQ(info->GetBinSize(1), 22.0);
  EXPECT_EQ(info->GetBinSize(2), 44.0);
}

TEST(CumulativeNode, TakesTheNumberOfBinsFromTheFirstNodeThatHasAny) {
  RegInfoImp const none = RegressionStatistics(1.0, 0.0);
  RegInfoImp const two = RegressionStatistics(1.0, 0.0, {1.0, 2.0});
  RegInfoImp const three = RegressionStatistics(1.0, 0.0, {10.0, 20.0, 40.0});
  ForeignNode const noneNode = NodeWith(none, 1.0);
  ForeignNode const twoNode = NodeWith(two, 1.0);
  ForeignNode const threeNode = NodeWith(three, 1.0);
  CumulativeNode smallFirst({&noneNode, &twoNode, &threeNode});
  CumulativeNode largeFirst({&noneNode, &threeNode, &twoNode, &noneNode});

  RegInfoImp const* const small = smallFirst.GetRegInfo(TrainingSample);
  RegInfoImp const* const large = largeFirst.GetRegInfo(TrainingSample);

  ASSERT_EQ(small->GetNumBins(), 2);
  EXPECT_EQ(small->GetBinSize(0), 11.0);
  EXPECT_EQ(small->GetBinSize(1), 22.0);
  EXPECT_EQ(small->GetCount(), 3.0);
  ASSERT_EQ(large->GetNumBins(), 3);
  EXPECT_EQ(large->GetBinSize(0), 11.0);
  EXPECT_EQ(large->GetBinSize(1), 22.0);
  EXPECT_EQ(large->GetBinSize(2), 40.0);
  EXPECT_EQ(large->GetCount(), 4.0);
}

TEST(CumulativeNode, AddsUpRegressionStatisticsInTheOrderOfItsNodes) {
  std::vector<RegInfoImp> statistics;
  for (double const value : kInOrder) {
    statistics.push_back(RegressionStatistics(value, value, {value}));
  }
  ForeignNode const nodes[] = {NodeWith(statistics[0], 1.0), NodeWith(statistics[1], 1.0),
                               NodeWith(statistics[2], 1.0)};
  CumulativeNode group({&nodes[0], &nodes[1], &nodes[2]});

  RegInfoImp const* const info = group.GetRegInfo(TrainingSample);

  EXPECT_EQ(info->GetMean(), 1.0 / 3.0);
  EXPECT_EQ(info->GetCount(), 1.0);
  EXPECT_EQ(info->GetUnweightedCount(), 1.0);
  EXPECT_EQ(info->GetBinSize(0), 1.0);
}

TEST(CumulativeNode, TakesTheSizesOfANodeWithForeignRegressionStatistics) {
  ForeignRegInfo const foreign(2.0, {1.0, 3.0});
  ForeignNode node = NodeWith(foreign, 10.0);
  node.training.unweightedSize = 7.0;
  RegInfoImp const own = RegressionStatistics(30.0, 4.0, {4.0, 4.0});
  ForeignNode const ownNode = NodeWith(own, 30.0);
  CumulativeNode group({&node, &ownNode});

  RegInfoImp const* const info = group.GetRegInfo(TrainingSample);

  EXPECT_EQ(info->GetMean(), 3.5);
  EXPECT_EQ(info->GetCount(), 40.0);
  EXPECT_EQ(info->GetUnweightedCount(), 37.0);
  ASSERT_EQ(info->GetNumBins(), 2);
  EXPECT_EQ(info->GetBinSize(0), 5.0);
  EXPECT_EQ(info->GetBinSize(1), 7.0);
}

TEST(CumulativeNode, ReadsForeignRegressionStatisticsForAllBinsOfTheFirstOnes) {
  RegInfoImp const own = RegressionStatistics(1.0, 4.0, {1.0, 2.0});
  // Answers for bins that it does not count.
  class Talkative : public ForeignRegInfo {
   public:
    Talkative() : ForeignRegInfo(2.0, {8.0}) {}
    double GetBinSize(int index) const override { return 8.0 + index; }
  };
  Talkative const fewer;
  ForeignNode const ownNode = NodeWith(own, 1.0);
  ForeignNode const foreignNode = NodeWith(fewer, 1.0);
  CumulativeNode group({&ownNode, &foreignNode});

  RegInfoImp const* const info = group.GetRegInfo(TrainingSample);

  ASSERT_EQ(info->GetNumBins(), 2);
  EXPECT_EQ(info->GetBinSize(0), 9.0);
  EXPECT_EQ(info->GetBinSize(1), 11.0);
}

TEST(CumulativeNode, LeavesRangeAndPredictionOfTheMergedStatisticsAlone) {
  RegInfoImp statistics = RegressionStatistics(10.0, 2.0);
  statistics.SetMinimum(1.0);
  statistics.SetMaximum(9.0);
  statistics.SetExtendedStatistic(RegInfoImp::StorePrediction, 8.0);
  ForeignNode const node = NodeWith(statistics, 10.0);
  CumulativeNode group({&node});

  // Not const in truth, so a test may give the fields that are not merged values of their own.
  RegInfoImp* const info = const_cast<RegInfoImp*>(group.GetRegInfo(TrainingSample));

  EXPECT_EQ(info->GetMinimum(), kInfinity);
  EXPECT_EQ(info->GetMaximum(), -kInfinity);
  EXPECT_EQ(info->GetExtendedStatisticPos(RegInfoImp::StorePrediction), -1);
  EXPECT_EQ(info->GetPrediction(), 2.0);  // the mean stands in
  info->SetMinimum(-5.0);
  info->SetMaximum(5.0);
  info->SetExtendedStatistic(RegInfoImp::StorePrediction, 0.25);
  group.GetRegInfo(TrainingSample);
  EXPECT_EQ(info->GetMinimum(), -5.0);
  EXPECT_EQ(info->GetMaximum(), 5.0);
  EXPECT_EQ(info->GetPrediction(), 0.25);
}

TEST(CumulativeNode, OverwritesTheRegressionStatisticsThatItReturnedBefore) {
  RegInfoImp const training = RegressionStatistics(10.0, 2.0, {1.0, 2.0, 4.0});
  RegInfoImp const test = RegressionStatistics(5.0, 3.0, {8.0});
  ForeignNode node = NodeWith(training, 10.0);
  node.test.size = 5.0;
  node.test.regInfo = &test;
  CumulativeNode group({&node});
  RegInfoImp const* const before = group.GetRegInfo(TrainingSample);

  RegInfoImp const* const after = group.GetRegInfo(TestSample);

  EXPECT_EQ(before, after);
  EXPECT_EQ(before->GetMean(), 3.0);
  EXPECT_EQ(before->GetCount(), 5.0);
  EXPECT_EQ(before->GetUnweightedCount(), 5.0);
  ASSERT_EQ(before->GetNumBins(), 1);
  EXPECT_EQ(before->GetBinSize(0), 8.0);
}

// --- Ownership, copies, failure -------------------------------------------------------------

TEST(CumulativeNode, DoesNotOwnItsNodes) {
  int deaths = 0;
  auto const node = std::make_unique<testing::Watched<NodeImp>>(&deaths);
  node->SetClsInfo(new ClsInfoImp, TrainingSample);
  {
    CumulativeNode group({node.get()});
    group.GetClsInfo(TrainingSample);
  }

  EXPECT_EQ(deaths, 0);
}

TEST(CumulativeNode, CopiesReadTheSameNodesIntoStatisticsOfTheirOwn) {
  std::unique_ptr<NodeImp> const node =
      ANode(0).Classes({1.0}).Classes({5.0}, 0, TestSample).Build();
  std::unique_ptr<NodeImp> const other = ClassNode({100.0});
  CumulativeNode group({node.get()});
  ClsInfoImp const* const original = group.GetClsInfo(TrainingSample);

  CumulativeNode copied(group);
  CumulativeNode assigned({other.get(), other.get()});
  assigned = group;

  for (CumulativeNode* const copy : {&copied, &assigned}) {
    ClsInfoImp const* const info = copy->GetClsInfo(TestSample);
    EXPECT_NE(info, original);
    EXPECT_EQ(info->GetClassCount(0), 5.0);
    EXPECT_EQ(copy->GetNodeSize(TrainingSample), 1.0);
    EXPECT_EQ(original->GetClassCount(0), 1.0);
  }
}

TEST(CumulativeNode, CopiesTheValidityWithTheNodes) {
  std::unique_ptr<NodeImp> const node = ClassNode({1.0});
  CumulativeNode const invalid((Nodes()));
  CumulativeNode const copied(invalid);
  CumulativeNode assigned({node.get()});

  assigned = invalid;

  EXPECT_EQ(copied.GetNodeSize(TrainingSample), systemMissingValue());
  EXPECT_EQ(assigned.GetNodeSize(TrainingSample), systemMissingValue());
}

TEST(CumulativeNode, StaysUsableWhenMemoryRunsOut) {
  std::unique_ptr<NodeImp> const classes = ClassNode({1.0, 2.0});
  RegInfoImp const statistics = RegressionStatistics(10.0, 2.0, {1.0, 2.0});
  ForeignNode const regression = NodeWith(statistics, 10.0);
  long const liveBefore = testing::CountLiveAllocations();

  long const numFailures = testing::WithEveryAllocationFailing([&] {
    CumulativeNode group({classes.get(), &regression});
    try {
      group.GetClsInfo(TrainingSample);
      group.GetRegInfo(TrainingSample);
    } catch (std::bad_alloc const&) {
      EXPECT_EQ(group.GetClsInfo(TrainingSample)->GetClassCount(1), 2.0);
      EXPECT_EQ(group.GetRegInfo(TrainingSample)->GetBinSize(1), 2.0);
      throw;
    }
  });

  EXPECT_GT(numFailures, 2);
  EXPECT_EQ(testing::CountLiveAllocations(), liveBefore);
}

// --- Promises to programs linked earlier ----------------------------------------------------

#if TREE_HAS_SLOTS
TEST(CumulativeNode, HasItsVirtualOperationsInOrder) {
  using testing::kFirstSlot;
  using testing::VirtualSlot;
  using Size = double (CumulativeNode::*)(DataSample) const;
  using SizeByType = double (CumulativeNode::*)(CumulativeNode::NodeSizeType, DataSample) const;

  EXPECT_EQ(VirtualSlot(static_cast<Size>(&CumulativeNode::GetNodeSize)), kFirstSlot);
  EXPECT_EQ(VirtualSlot(&CumulativeNode::GetUnweightedNodeSize), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(&CumulativeNode::GetPercentageNodeSize), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(&CumulativeNode::GetClsInfo), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(&CumulativeNode::GetRegInfo), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(static_cast<SizeByType>(&CumulativeNode::GetNodeSize)), -1);
  EXPECT_EQ(VirtualSlot(&CumulativeNode::Validate), -1);
}
#endif

// A node that notes what it is asked, with statistics that do so too.
class AskedNode : public ForeignNode {
 public:
  double GetNodeSize(DataSample sample) const override {
    questions->push_back("size");
    return ForeignNode::GetNodeSize(sample);
  }
  ClsInfo const* GetClsInfo(DataSample sample) const override {
    questions->push_back("classes");
    return ForeignNode::GetClsInfo(sample);
  }

  std::vector<std::string>* questions = nullptr;
};

TEST(CumulativeNode, AsksEveryNodeForItsSizeBeforeItsClasses) {
  ForeignClsInfo const info({1.0, 2.0});
  std::vector<std::string> questions;
  AskedNode first;
  first.questions = &questions;
  first.training.clsInfo = &info;
  AskedNode second = first;
  second.training.clsInfo = nullptr;
  CumulativeNode group(Nodes{&first, &second});
  questions.clear();

  group.GetClsInfo(TrainingSample);

  EXPECT_EQ(questions, (std::vector<std::string>{"size", "classes", "size", "classes"}));
}

TEST(CumulativeNode, AsksForEveryStandardDeviationThoughItReportsNone) {
  class AskedRegInfo : public ForeignRegInfo {
   public:
    using ForeignRegInfo::ForeignRegInfo;
    double GetStdDev() const override {
      ++numQuestions;
      return 1.0;
    }
    mutable int numQuestions = 0;
  };
  AskedRegInfo const info(2.0);
  ForeignNode const node = NodeWith(info, 4.0);
  ForeignNode const empty = NodeWith(info, 0.0);
  CumulativeNode group(Nodes{&node, &empty, &node});

  RegInfoImp const* const merged = group.GetRegInfo(TrainingSample);

  EXPECT_EQ(info.numQuestions, 2);
  EXPECT_EQ(merged->GetStdDev(), systemMissingValue());
}

}  // namespace
}  // namespace tree
