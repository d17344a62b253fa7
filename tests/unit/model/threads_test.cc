#include <gtest/gtest.h>

#include <barrier>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "testing/sample_trees.h"
#include "testing/tree_comparison.h"
#include "tree/nodes.h"
#include "tree/support.h"

// Several threads read one tree at the same time. The tests are worth most under the thread
// sanitizer, which sees a write to shared state even when it does no harm in this run.

namespace tree {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 50;

// Runs `work` in several threads that begin at the same time.
void RunInThreads(std::function<void()> const& work) {
  std::barrier start(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&start, &work] {
      start.arrive_and_wait();
      for (int round = 0; round < kRounds; ++round) work();
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, RouteCasesThroughOneTree) {
  std::unique_ptr<NodeImp const> const tree = testing::RichClassificationTree();
  double const missing = systemMissingValue();
  struct Row {
    double values[4];
    unsigned int terminal;
  };
  Row const rows[] = {
      {{20.0, 1.9, 0.0, 0.0}, 1},              // by the primary rule
      {{50.0, 1.7, 0.0, 0.0}, 3},              // by two primary rules
      {{missing, 1.6, 0.0, 0.0}, 1},           // by a surrogate
      {{missing, missing, 2.0, 0.0}, 1},       // by the second, nominal surrogate
      {{missing, missing, 1.0, 0.0}, 3},       // and by the surrogate below
      {{50.0, missing, missing, missing}, 2},  // not to be placed by node 2
  };

  RunInThreads([&tree, &rows] {
    for (Row const& row : rows) {
      NodeImp const* const end = tree->DropObservationThroughTree(row.values, nullptr);
      EXPECT_EQ(end->GetId(), row.terminal);
      EXPECT_EQ(tree->DropObservationThroughTree(row.values, end), end);
    }
  });
}

TEST(Threads, TraverseOneTree) {
  std::unique_ptr<NodeImp const> const tree = testing::RichClassificationTree();

  RunInThreads([&tree] {
    std::vector<unsigned int> ids;
    PrefixNodeIterator iterator(tree.get());
    while (iterator.HasMore() == 0) ids.push_back(iterator.Next()->GetId());
    EXPECT_EQ(ids, (std::vector<unsigned int>{0, 1, 2, 3, 4}));
  });
}

TEST(Threads, CloneAndCompareOneTree) {
  std::unique_ptr<NodeImp const> const classification = testing::RichClassificationTree();
  std::unique_ptr<NodeImp const> const regression = testing::RichRegressionTree();

  RunInThreads([&] {
    std::unique_ptr<NodeImp const> const clone(classification->Clone());
    EXPECT_EQ(testing::FirstDifference(*clone, *classification), "");
    NodeImp assigned;
    assigned = *regression;
    EXPECT_EQ(testing::FirstDifference(assigned, *regression), "");
  });
}

TEST(Threads, ReadAllThatOneTreeHolds) {
  std::unique_ptr<NodeImp const> const classification = testing::RichClassificationTree();
  std::unique_ptr<NodeImp const> const regression = testing::RichRegressionTree();

  RunInThreads([&] {
    Node const& node = *classification;
    EXPECT_EQ(node.GetAssignment(), 1.0);
    EXPECT_EQ(node.GetNodeSize(TrainingSample), 11.0);
    EXPECT_EQ(node.GetUnweightedNodeSize(TestSample), 3.0);
    EXPECT_EQ(node.GetPercentageNodeSize(TrainingSample), systemMissingValue());
    EXPECT_EQ(node.GetClsInfo(TrainingSample)->GetClassPercent(0), 5.0 / 11.0);
    EXPECT_EQ(node.GetClsInfo(TrainingSample)->GetClassProbability(2), -1.0);
    EXPECT_EQ(node.GetBiggestChildPos(), 1);
    EXPECT_EQ(classification->FindCompetitorPos(3), 1);
    std::unique_ptr<SplitRule> const competitor(node.GetCompetitor(1));
    std::unique_ptr<ValueSet> const values(competitor->GetMappedValues(0));
    EXPECT_TRUE(values->Contains(2.0));
    std::unique_ptr<SplitRule> const surrogate(node.GetSurrogate(0));
    EXPECT_EQ(surrogate->GetPredictorIndex(), 1);
    double predictorValues[3] = {};
    EXPECT_TRUE(node.GetPredictorValues(0, predictorValues, 3));
    EXPECT_EQ(predictorValues[1], 40.0);

    Node const& child = *regression->GetChild(1);
    EXPECT_EQ(child.GetPercentageNodeSize(TrainingSample), 0.75);
    EXPECT_EQ(child.GetAssignment(), 4.0);
    RegInfo const& info = *child.GetParent()->GetRegInfo(TrainingSample);
    EXPECT_EQ(info.GetStdDev(), 1.25);
    EXPECT_EQ(info.GetBinRightEndPoint(0), 4.0);
  });
}

}  // namespace
}  // namespace tree
