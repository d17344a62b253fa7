#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/foreign_node.h"
#include "testing/sample_trees.h"
#include "testing/tree_builder.h"
#include "testing/tree_comparison.h"
#include "testing/watched.h"
#include "tree/nodes.h"
#include "tree/support.h"

// Who deletes what, and when, told by objects that report their end.

namespace tree {
namespace {

using testing::ANode;
using testing::CountLiveAllocations;
using testing::RichClassificationTree;
using testing::RichRegressionTree;
using testing::Watched;

using WatchedNode = Watched<NodeImp>;
using WatchedClsInfo = Watched<ClsInfoImp>;
using WatchedRegInfo = Watched<RegInfoImp>;

SplitRuleImp* NewWatchedRule(int* deaths) {
  auto* const rule = new Watched<OSplitRule>(deaths, systemMissingValue(), 0);
  rule->SetCutPoint(5.0);
  return rule;
}

// Counts of deaths of everything that one node can own.
struct Deaths {
  int children = 0;
  int grandchildren = 0;
  int competitors = 0;
  int surrogates = 0;
  int clsInfos[2] = {0, 0};
  int regInfos[2] = {0, 0};
};

// Two children (the first with a child of its own), two competitors and two surrogates.
void FillWithWatchedParts(NodeImp& node, Deaths& deaths) {
  node.SetNumChildren(2);
  node.SetChild(0, new WatchedNode(&deaths.children));
  node.SetChild(1, new WatchedNode(&deaths.children));
  node.GetChildImp(0)->SetNumChildren(1);
  node.GetChildImp(0)->SetChild(0, new WatchedNode(&deaths.grandchildren));
  node.SetNumCompetitors(2);
  node.SetNumSurrogates(2);
  for (unsigned int const position : {0u, 1u}) {
    node.SetCompetitor(position, NewWatchedRule(&deaths.competitors));
    node.SetSurrogate(position, NewWatchedRule(&deaths.surrogates));
  }
}

void FillWithWatchedClasses(NodeImp& node, Deaths& deaths) {
  node.SetClsInfo(new WatchedClsInfo(&deaths.clsInfos[0]), TrainingSample);
  node.SetClsInfo(new WatchedClsInfo(&deaths.clsInfos[1]), TestSample);
}

void FillWithWatchedRegression(NodeImp& node, Deaths& deaths) {
  node.SetRegInfo(new WatchedRegInfo(&deaths.regInfos[0]), TrainingSample);
  node.SetRegInfo(new WatchedRegInfo(&deaths.regInfos[1]), TestSample);
}

// A node that records how its children are removed.
class RecordingNode : public NodeImp {
 public:
  bool RemoveChildren(bool argument) override {
    arguments.push_back(argument);
    competitorsThen.push_back(GetNumCompetitors());
    return NodeImp::RemoveChildren(argument);
  }

  std::vector<bool> arguments;
  std::vector<int> competitorsThen;
};

TEST(NodeImpOwnership, DeletesAllItHoldsAtItsEnd) {
  Deaths deaths;
  {
    NodeImp node;
    FillWithWatchedParts(node, deaths);
    FillWithWatchedClasses(node, deaths);
    EXPECT_EQ(deaths.children + deaths.competitors + deaths.surrogates, 0);
  }
  EXPECT_EQ(deaths.children, 2);
  EXPECT_EQ(deaths.grandchildren, 1);
  EXPECT_EQ(deaths.competitors, 2);
  EXPECT_EQ(deaths.surrogates, 2);
  EXPECT_EQ(deaths.clsInfos[0], 1);
  EXPECT_EQ(deaths.clsInfos[1], 1);

  {
    NodeImp node;
    FillWithWatchedRegression(node, deaths);
  }
  EXPECT_EQ(deaths.regInfos[0], 1);
  EXPECT_EQ(deaths.regInfos[1], 1);
}

TEST(NodeImpOwnership, LeaksNothingOfItsOwn) {
  long const live = CountLiveAllocations();

  for (int round = 0; round < 2; ++round) {
    RichClassificationTree();
    RichRegressionTree();
  }

  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(NodeImpOwnership, IsDeletedThroughItsInterface) {
  int deaths = 0;
  Node* const node = new WatchedNode(&deaths);

  delete node;

  EXPECT_EQ(deaths, 1);
}

TEST(NodeImpOwnership, DoesNotDeleteItsParent) {
  int deaths = 0;
  auto parent = std::make_unique<WatchedNode>(&deaths);
  parent->SetNumChildren(1);
  parent->SetChild(0, new NodeImp);

  parent->RemoveChild(0);

  EXPECT_EQ(deaths, 0);
}

TEST(NodeImpOwnership, GivesBackWhatItHeldWhenCountsAreSet) {
  for (int const count : {0, 1, 2, 5}) {
    SCOPED_TRACE(count);
    auto const unsignedCount = static_cast<unsigned int>(count);
    Deaths deaths;
    NodeImp node;
    FillWithWatchedParts(node, deaths);
    std::unique_ptr<NodeImp> const children[] = {std::unique_ptr<NodeImp>(node.GetChildImp(0)),
                                                 std::unique_ptr<NodeImp>(node.GetChildImp(1))};
    std::unique_ptr<SplitRuleImp> const rules[] = {
        std::unique_ptr<SplitRuleImp>(node.GetCompetitorImp(0)),
        std::unique_ptr<SplitRuleImp>(node.GetCompetitorImp(1)),
        std::unique_ptr<SplitRuleImp>(node.GetSurrogateImp(0)),
        std::unique_ptr<SplitRuleImp>(node.GetSurrogateImp(1))};

    node.SetNumChildren(count);
    node.SetNumCompetitors(unsignedCount);
    node.SetNumSurrogates(unsignedCount);

    EXPECT_EQ(node.GetNumChildren(), count);
    EXPECT_EQ(node.GetNumCompetitors(), count);
    EXPECT_EQ(node.GetNumSurrogates(), count);
    for (unsigned int position = 0; position < unsignedCount; ++position) {
      EXPECT_EQ(node.GetChildImp(position), nullptr);
      EXPECT_EQ(node.GetChild(position), nullptr);
      EXPECT_EQ(node.GetCompetitorImp(position), nullptr);
      EXPECT_EQ(node.GetSurrogateImp(position), nullptr);
    }
    EXPECT_EQ(deaths.children, 0);
    EXPECT_EQ(deaths.competitors, 0);
    EXPECT_EQ(deaths.surrogates, 0);
  }
}

TEST(NodeImpOwnership, SetsEachCountAlone) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedParts(node, deaths);
  std::unique_ptr<SplitRuleImp> const rules[] = {
      std::unique_ptr<SplitRuleImp>(node.GetCompetitorImp(0)),
      std::unique_ptr<SplitRuleImp>(node.GetCompetitorImp(1))};

  node.SetNumCompetitors(3);

  EXPECT_EQ(node.GetNumChildren(), 2);
  EXPECT_NE(node.GetChild(0), nullptr);
  EXPECT_EQ(node.GetNumSurrogates(), 2);
  EXPECT_NE(node.GetSurrogateImp(0), nullptr);
}

TEST(NodeImpOwnership, TakesNegativeNumberOfChildrenForNone) {
  NodeImp node;
  node.SetNumChildren(2);

  node.SetNumChildren(-1);

  EXPECT_EQ(node.GetNumChildren(), 0);
}

TEST(NodeImpOwnership, BecomesParentOfTheChildItTakes) {
  int deaths = 0;
  {
    NodeImp node;
    auto* const child = new WatchedNode(&deaths);
    node.SetNumChildren(2);

    node.SetChild(1, child);

    EXPECT_EQ(node.GetChildImp(1), child);
    EXPECT_EQ(node.GetChild(0), nullptr);
    EXPECT_EQ(child->GetParent(), &node);
    EXPECT_EQ(deaths, 0);
  }
  EXPECT_EQ(deaths, 1);
}

TEST(NodeImpOwnership, DoesNotDeleteTheChildThatIsReplaced) {
  int deaths = 0;
  NodeImp node;
  node.SetNumChildren(1);
  auto const old = std::make_unique<WatchedNode>(&deaths);
  node.SetChild(0, old.get());

  node.SetChild(0, new NodeImp);
  EXPECT_EQ(deaths, 0);
  EXPECT_NE(node.GetChildImp(0), old.get());
  EXPECT_EQ(old->GetParent(), &node);

  std::unique_ptr<NodeImp> const replaced(node.GetChildImp(0));
  node.SetChild(0, nullptr);
  EXPECT_EQ(deaths, 0);
  EXPECT_EQ(node.GetChildImp(0), nullptr);
}

TEST(NodeImpOwnership, KeepsTheChildThatIsStoredAgain) {
  int deaths = 0;
  {
    NodeImp node;
    node.SetNumChildren(1);
    node.SetChild(0, new WatchedNode(&deaths));

    node.SetChild(0, node.GetChildImp(0));

    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(node.GetChildImp(0)->GetParent(), &node);
  }
  EXPECT_EQ(deaths, 1);
}

TEST(NodeImpOwnership, DeletesTheRuleThatIsReplaced) {
  int competitors[] = {0, 0};
  int surrogates[] = {0, 0};
  NodeImp node;
  node.SetNumCompetitors(2);
  node.SetNumSurrogates(2);
  for (unsigned int const position : {0u, 1u}) {
    node.SetCompetitor(position, NewWatchedRule(&competitors[position]));
    node.SetSurrogate(position, NewWatchedRule(&surrogates[position]));
  }

  SplitRuleImp* const competitor = testing::NominalRule(4).release();
  SplitRuleImp* const surrogate = testing::NominalRule(5).release();
  node.SetCompetitor(1, competitor);
  node.SetSurrogate(1, surrogate);

  EXPECT_EQ(node.GetCompetitorImp(1), competitor);
  EXPECT_EQ(node.GetSurrogateImp(1), surrogate);
  EXPECT_EQ(competitors[0], 0);
  EXPECT_EQ(competitors[1], 1);
  EXPECT_EQ(surrogates[0], 0);
  EXPECT_EQ(surrogates[1], 1);

  node.SetCompetitor(0, nullptr);
  node.SetSurrogate(0, nullptr);

  EXPECT_EQ(node.GetCompetitorImp(0), nullptr);
  EXPECT_EQ(node.GetSurrogateImp(0), nullptr);
  EXPECT_EQ(competitors[0], 1);
  EXPECT_EQ(surrogates[0], 1);
}

TEST(NodeImpOwnership, KeepsTheRuleThatIsStoredAgain) {
  int deaths = 0;
  {
    NodeImp node;
    node.SetNumCompetitors(1);
    node.SetNumSurrogates(1);
    node.SetCompetitor(0, NewWatchedRule(&deaths));
    node.SetSurrogate(0, NewWatchedRule(&deaths));

    node.SetCompetitor(0, node.GetCompetitorImp(0));
    node.SetSurrogate(0, node.GetSurrogateImp(0));

    EXPECT_EQ(deaths, 0);
  }
  EXPECT_EQ(deaths, 2);
}

TEST(NodeImpOwnership, ReplacesClassDistributionOfOneSampleOnly) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedClasses(node, deaths);
  ClsInfo const* const ofTest = node.GetClsInfo(TestSample);
  auto* const info = new ClsInfoImp;

  node.SetClsInfo(info, TrainingSample);

  EXPECT_EQ(node.GetClsInfo(TrainingSample), info);
  EXPECT_EQ(node.GetClsInfoImp(TrainingSample), info);
  EXPECT_EQ(node.GetClsInfo(TestSample), ofTest);
  EXPECT_EQ(deaths.clsInfos[0], 1);
  EXPECT_EQ(deaths.clsInfos[1], 0);
}

TEST(NodeImpOwnership, ReplacesRegressionStatisticsOfOneSampleOnly) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedRegression(node, deaths);
  RegInfo const* const ofTraining = node.GetRegInfo(TrainingSample);
  auto* const info = new RegInfoImp;

  node.SetRegInfo(info, DataSample(5));

  EXPECT_EQ(node.GetRegInfo(TestSample), info);
  EXPECT_EQ(node.GetRegInfoImp(TestSample), info);
  EXPECT_EQ(node.GetRegInfo(TrainingSample), ofTraining);
  EXPECT_EQ(deaths.regInfos[0], 0);
  EXPECT_EQ(deaths.regInfos[1], 1);
}

TEST(NodeImpOwnership, DeletesAllClassDistributionsForRegressionStatistics) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedClasses(node, deaths);
  auto* const info = new RegInfoImp;
  info->SetCount(9.0);

  node.SetRegInfo(info, TestSample);

  EXPECT_EQ(deaths.clsInfos[0], 1);
  EXPECT_EQ(deaths.clsInfos[1], 1);
  EXPECT_EQ(node.GetClsInfo(TrainingSample), nullptr);
  EXPECT_EQ(node.GetClsInfo(TestSample), nullptr);
  EXPECT_EQ(node.GetRegInfo(TrainingSample), nullptr);
  EXPECT_EQ(node.GetRegInfo(TestSample), info);
  EXPECT_FALSE(node.IsClassificationNode());
  EXPECT_EQ(node.GetNodeSize(TrainingSample), 0.0);
  EXPECT_EQ(node.GetNodeSize(TestSample), 9.0);
}

TEST(NodeImpOwnership, DeletesAllRegressionStatisticsForClassDistribution) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedRegression(node, deaths);
  auto* const info = new ClsInfoImp;

  node.SetClsInfo(info, TestSample);

  EXPECT_EQ(deaths.regInfos[0], 1);
  EXPECT_EQ(deaths.regInfos[1], 1);
  EXPECT_EQ(node.GetRegInfo(TrainingSample), nullptr);
  EXPECT_EQ(node.GetRegInfo(TestSample), nullptr);
  EXPECT_EQ(node.GetClsInfo(TrainingSample), nullptr);
  EXPECT_EQ(node.GetClsInfo(TestSample), info);
  EXPECT_TRUE(node.IsClassificationNode());
}

TEST(NodeImpOwnership, TakesNullForStatisticsToBeDropped) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedClasses(node, deaths);

  node.SetClsInfo(nullptr, TestSample);
  EXPECT_EQ(deaths.clsInfos[0], 0);
  EXPECT_EQ(deaths.clsInfos[1], 1);
  EXPECT_TRUE(node.IsClassificationNode());

  node.SetRegInfo(nullptr, TestSample);
  EXPECT_EQ(deaths.clsInfos[0], 1);
  EXPECT_FALSE(node.IsClassificationNode());

  FillWithWatchedRegression(node, deaths);
  node.SetClsInfo(nullptr, TrainingSample);
  EXPECT_EQ(deaths.regInfos[0], 1);
  EXPECT_EQ(deaths.regInfos[1], 1);
  EXPECT_TRUE(node.IsClassificationNode());
}

TEST(NodeImpOwnership, KeepsStatisticsThatAreStoredAgain) {
  Deaths deaths;
  {
    NodeImp node;
    FillWithWatchedClasses(node, deaths);
    node.SetClassificationNode(false);

    node.SetClsInfo(node.GetClsInfoImp(TestSample), TestSample);

    EXPECT_EQ(deaths.clsInfos[1], 0);
    EXPECT_TRUE(node.IsClassificationNode());
  }
  EXPECT_EQ(deaths.clsInfos[1], 1);
  {
    NodeImp node;
    FillWithWatchedRegression(node, deaths);

    node.SetRegInfo(node.GetRegInfoImp(TrainingSample), TrainingSample);

    EXPECT_EQ(deaths.regInfos[0], 0);
  }
  EXPECT_EQ(deaths.regInfos[0], 1);
}

TEST(NodeImpOwnership, DeletesStatisticsOfAnotherClassAndHoldsNone) {
  int foreignDeaths = 0;
  Deaths deaths;
  NodeImp node;
  FillWithWatchedClasses(node, deaths);

  node.SetClsInfo(new Watched<testing::ForeignClsInfo>(&foreignDeaths, std::vector<double>{1.0}),
                  TrainingSample);

  EXPECT_EQ(foreignDeaths, 1);
  EXPECT_EQ(deaths.clsInfos[0], 1);
  EXPECT_EQ(node.GetClsInfo(TrainingSample), nullptr);
  EXPECT_TRUE(node.IsClassificationNode());

  node.SetRegInfo(new Watched<testing::ForeignRegInfo>(&foreignDeaths, 2.0), TestSample);

  EXPECT_EQ(foreignDeaths, 2);
  EXPECT_EQ(deaths.clsInfos[1], 1);
  EXPECT_EQ(node.GetRegInfo(TestSample), nullptr);
  EXPECT_FALSE(node.IsClassificationNode());
}

TEST(NodeImpOwnership, DeletesRemovedChildWithAllBelowIt) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedParts(node, deaths);

  node.RemoveChild(1);
  EXPECT_EQ(deaths.children, 1);
  EXPECT_EQ(deaths.grandchildren, 0);

  node.RemoveChild(0);
  EXPECT_EQ(deaths.children, 2);
  EXPECT_EQ(deaths.grandchildren, 1);
  EXPECT_EQ(deaths.competitors, 0);
  EXPECT_EQ(deaths.surrogates, 0);
}

TEST(NodeImpOwnership, DeletesNothingWhenNoChildIsRemoved) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedParts(node, deaths);

  node.RemoveChild(-1);
  node.RemoveChild(2);

  EXPECT_EQ(deaths.children, 0);
}

TEST(NodeImpOwnership, DeletesNothingWhenChildrenAreReordered) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedParts(node, deaths);

  node.ReorderSiblings({1, 0});

  EXPECT_EQ(deaths.children, 0);
  EXPECT_EQ(node.GetNumChildren(), 2);
}

TEST(NodeImpOwnership, DeletesChildrenAndSurrogatesWhenChildrenAreRemoved) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedParts(node, deaths);
  FillWithWatchedClasses(node, deaths);

  node.RemoveChildren(true);

  EXPECT_EQ(deaths.children, 2);
  EXPECT_EQ(deaths.grandchildren, 1);
  EXPECT_EQ(deaths.surrogates, 2);
  EXPECT_EQ(deaths.competitors, 0);
  EXPECT_EQ(deaths.clsInfos[0], 0);
  EXPECT_EQ(deaths.clsInfos[1], 0);
}

TEST(NodeImpOwnership, DeletesChildrenOfWhateverShape) {
  int deaths = 0;
  NodeImp root;
  root.SetNumChildren(4);  // positions 0 and 3 stay empty
  for (unsigned int const position : {1u, 2u}) {
    auto* const child = new WatchedNode(&deaths);
    root.SetChild(position, child);
    child->SetNumChildren(3);  // the middle one stays empty
    child->SetChild(0, new WatchedNode(&deaths));
    child->SetChild(2, new WatchedNode(&deaths));
  }

  root.RemoveChildren(false);

  EXPECT_EQ(deaths, 6);
  EXPECT_EQ(root.GetNumChildren(), 0);
}

// Writes its id down at its end.
class LastWords : public NodeImp {
 public:
  LastWords(std::vector<unsigned int>* deleted, unsigned int id) : deleted_(deleted) { SetId(id); }
  LastWords(LastWords const&) = delete;
  LastWords& operator=(LastWords const&) = delete;
  ~LastWords() override { deleted_->push_back(GetId()); }

 private:
  std::vector<unsigned int>* deleted_;
};

TEST(NodeImpOwnership, DeletesEveryChildAfterWhatIsBelowIt) {
  std::vector<unsigned int> deleted;
  auto const grow = [&deleted](NodeImp& node, std::vector<unsigned int> const& ids) {
    node.SetNumChildren(static_cast<int>(ids.size()));
    for (unsigned int position = 0; position < ids.size(); ++position) {
      node.SetChild(position, new LastWords(&deleted, ids[position]));
    }
  };
  NodeImp root;
  grow(root, {1, 2, 3});
  grow(*root.GetChildImp(0), {11, 12});
  grow(*root.GetChildImp(2), {31, 32});
  grow(*root.GetChildImp(2)->GetChildImp(0), {311});

  root.RemoveChildren(true);

  auto const place = [&deleted](unsigned int id) {
    return std::find(deleted.begin(), deleted.end(), id) - deleted.begin();
  };
  EXPECT_EQ(deleted.size(), 8U);
  EXPECT_LT(place(11), place(1));
  EXPECT_LT(place(12), place(1));
  EXPECT_LT(place(311), place(31));
  EXPECT_LT(place(31), place(3));
  EXPECT_LT(place(32), place(3));
}

TEST(NodeImpOwnership, DeletesEverythingWhenCleaned) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedParts(node, deaths);
  FillWithWatchedClasses(node, deaths);

  node.Clean();

  EXPECT_EQ(deaths.children, 2);
  EXPECT_EQ(deaths.grandchildren, 1);
  EXPECT_EQ(deaths.competitors, 2);
  EXPECT_EQ(deaths.surrogates, 2);
  EXPECT_EQ(deaths.clsInfos[0], 1);
  EXPECT_EQ(deaths.clsInfos[1], 1);

  FillWithWatchedRegression(node, deaths);
  node.Clean();
  EXPECT_EQ(deaths.regInfos[0], 1);
  EXPECT_EQ(deaths.regInfos[1], 1);
}

TEST(NodeImpOwnership, RemovesChildrenByTheVirtualOperationWhenCleaned) {
  RecordingNode node;
  node.SetNumCompetitors(1);
  node.SetCompetitor(0, testing::NominalRule(0).release());

  node.Clean();

  EXPECT_EQ(node.arguments, std::vector<bool>{false});
  EXPECT_EQ(node.competitorsThen, std::vector<int>{1});  // competitors go afterwards
}

TEST(NodeImpOwnership, RemovesChildrenByTheVirtualOperationWhenAssignedTo) {
  RecordingNode node;
  NodeImp const other;

  static_cast<NodeImp&>(node) = other;

  EXPECT_EQ(node.arguments, std::vector<bool>{false});
}

TEST(NodeImpOwnership, DeletesItsOldPartsWhenAssignedTo) {
  Deaths deaths;
  std::unique_ptr<NodeImp> const sources[] = {RichClassificationTree(), RichRegressionTree(),
                                              std::make_unique<NodeImp>()};
  int round = 0;
  for (std::unique_ptr<NodeImp> const& source : sources) {
    ++round;
    NodeImp node;
    FillWithWatchedParts(node, deaths);
    FillWithWatchedClasses(node, deaths);

    node = *source;

    EXPECT_EQ(deaths.children, 2 * round);
    EXPECT_EQ(deaths.grandchildren, round);
    EXPECT_EQ(deaths.competitors, 2 * round);
    EXPECT_EQ(deaths.surrogates, 2 * round);
    EXPECT_EQ(deaths.clsInfos[0], round);
    EXPECT_EQ(deaths.clsInfos[1], round);
    EXPECT_EQ(testing::FirstDifference(node, *source), "");
  }
}

TEST(NodeImpOwnership, DeletesNothingWhenAssignedToItself) {
  Deaths deaths;
  NodeImp node;
  FillWithWatchedParts(node, deaths);
  FillWithWatchedClasses(node, deaths);
  NodeImp const& itself = node;

  node = itself;

  EXPECT_EQ(deaths.children + deaths.grandchildren + deaths.competitors + deaths.surrogates, 0);
  EXPECT_EQ(deaths.clsInfos[0] + deaths.clsInfos[1], 0);
}

TEST(NodeImpOwnership, LeavesCopiedObjectsToTheirOwner) {
  Deaths deaths;
  NodeImp source;
  FillWithWatchedParts(source, deaths);
  FillWithWatchedRegression(source, deaths);

  { std::unique_ptr<NodeImp> const clone(source.Clone()); }

  EXPECT_EQ(deaths.children + deaths.grandchildren + deaths.competitors + deaths.surrogates, 0);
  EXPECT_EQ(deaths.regInfos[0] + deaths.regInfos[1], 0);
}

#ifndef NDEBUG
TEST(NodeImpOwnershipDeathTest, StopsAtChildThatIsNoNodeImp) {
  NodeImp node;
  node.SetNumChildren(1);
  testing::ForeignNode foreign;

  EXPECT_DEATH(node.SetChild(0, &foreign), "NodeImp::SetChild: the child is not a NodeImp");
}
#endif

}  // namespace
}  // namespace tree
