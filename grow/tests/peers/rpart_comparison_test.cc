// Trees of rpart, grown again: each node, split, competitor and surrogate, the way of each case,
// and the sequence of pruning. Where rpart departs from the definitions, they are what counts here;
// the README of the fixtures and docs/peers.md say where.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "peers/rpart/fixture.h"
#include "peers/rpart/grown_tree.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow::rpart {
namespace {

constexpr double kTolerance = 1e-9;  // relative: as exact as the fixtures were checked

std::filesystem::path FixtureFolder() { return TREE_GROW_RPART_FIXTURES; }

Fixture ReadByName(std::string const& name) {
  return ReadFixture(FixtureFolder() / "trees" / (name + ".txt"));
}

std::vector<std::string> FixtureNames() {
  std::vector<std::string> names;
  for (auto const& entry : std::filesystem::directory_iterator(FixtureFolder() / "trees")) {
    names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// Whether two numbers are equal on the scale of what they are parts of.
testing::AssertionResult AreClose(double ours, double theirs, double scale) {
  if (std::abs(ours - theirs) <= kTolerance * std::abs(scale)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "ours is " << testing::PrintToString(ours) << ", theirs "
                                     << testing::PrintToString(theirs);
}
testing::AssertionResult AreClose(double ours, double theirs) {
  return AreClose(ours, theirs, theirs);
}

/// A fixture with its tree grown again.
class RpartComparison : public testing::TestWithParam<std::string> {
 protected:
  RpartComparison()
      : fixture_(ReadByName(GetParam())),
        tree_(fixture_, FixtureFolder() / "data"),
        pairs_(tree_.PairNodes()) {}

  /// Without a pair for each node, the tests would compare less than they say.
  void SetUp() override {
    EXPECT_EQ(pairs_.size(), fixture_.nodes.size());
    EXPECT_EQ(tree_.GetGrower().GetNumNodes(AllNodes), static_cast<int>(fixture_.nodes.size()));
  }

  bool IsOfClasses() const { return !fixture_.classes.empty(); }
  double RootWeight() const { return fixture_.nodes.front().weight; }
  double RootDeviance() const { return fixture_.nodes.front().deviance; }

  /// rpart's improvement on our scale: that of the whole tree, per case.
  double ImprovementOf(Node const& node, Split const& split) const {
    return split.improve * (IsOfClasses() ? 1.0 : node.deviance) / RootWeight();
  }
  template <class Rule>  // a split or a surrogate
  bool HasSameWays(Rule const& theirs, SplitRuleImp const& ours, int leftChild,
                   std::set<std::string> const& either = {}) const {
    return tree_.Divides(ours, theirs.ways, leftChild, either) ||
           std::any_of(theirs.ties.begin(), theirs.ties.end(), [&](Ways const& tie) {
             return tree_.Divides(ours, tie, leftChild, either);
           });
  }
  /// Categories of which there is no right way: even ones of a node with even sides.
  std::set<std::string> FreeCategories(NodePair const& pair, Surrogate const& surrogate) const {
    bool const possible =
        pair.theirs->way == Default::kNone && std::holds_alternative<Sets>(surrogate.ways);
    return possible ? tree_.EvenCategories(pair, surrogate.predictor) : std::set<std::string>();
  }

  Fixture fixture_;
  GrownTree tree_;
  std::vector<NodePair> pairs_;
};

std::string At(Node const& node) { return "node " + std::to_string(node.number); }

TEST_P(RpartComparison, SplitsTheSameNodesTheSameWay) {
  for (NodePair const& pair : pairs_) {
    SCOPED_TRACE(At(*pair.theirs));

    EXPECT_EQ(pair.ours->GetUnweightedNodeSize(TrainingSample),
              static_cast<double>(pair.theirs->numCases));
    EXPECT_TRUE(AreClose(pair.ours->GetNodeSize(TrainingSample), pair.theirs->weight));
    ASSERT_EQ(pair.ours->GetNumChildren(), pair.theirs->splits.empty() ? 0 : 2);
    if (pair.theirs->splits.empty()) continue;
    SplitRuleImp const& primary = *pair.ours->GetCompetitorImp(0);
    EXPECT_EQ(tree_.PredictorOf(primary).name, pair.theirs->splits.front().predictor);
    if (tree_.PredictorOf(primary).name != pair.theirs->splits.front().predictor) continue;
    EXPECT_TRUE(HasSameWays(pair.theirs->splits.front(), primary, pair.leftChild))
        << "ours is " << tree_.Describe(primary);
  }
}

TEST_P(RpartComparison, ListsTheSameCompetitorsByImprovement) {
  for (NodePair const& pair : pairs_) {
    if (pair.theirs->splits.empty()) continue;
    SCOPED_TRACE(At(*pair.theirs));
    std::map<std::string, SplitRuleImp const*> ours;  // by predictor: equal ones in any order

    ASSERT_EQ(pair.ours->GetNumCompetitors(), static_cast<int>(pair.theirs->splits.size()));
    for (std::size_t i = 0; i < pair.theirs->splits.size(); ++i) {
      SplitRuleImp const& rule = *pair.ours->GetCompetitorImp(static_cast<unsigned int>(i));
      ours[tree_.PredictorOf(rule).name] = &rule;
      EXPECT_TRUE(AreClose(rule.GetStatistic(SplitImprovement),
                           ImprovementOf(*pair.theirs, pair.theirs->splits[i])))
          << "at position " << i;
    }
    for (Split const& split : pair.theirs->splits) {
      SCOPED_TRACE(split.predictor);
      ASSERT_EQ(ours.count(split.predictor), 1U);
      SplitRuleImp const& rule = *ours[split.predictor];
      EXPECT_TRUE(
          AreClose(rule.GetStatistic(SplitImprovement), ImprovementOf(*pair.theirs, split)));
      // The sides of a competitor have no order of their own.
      EXPECT_TRUE(HasSameWays(split, rule, 0) || HasSameWays(split, rule, 1))
          << "ours is " << tree_.Describe(rule);
    }
  }
}

/// Sums are exact here, so that splits that are equal come out equal, and keep their order.
TEST_P(RpartComparison, PutsEqualCompetitorsInOrderOfPredictors) {
  for (NodePair const& pair : pairs_) {
    SCOPED_TRACE(At(*pair.theirs));
    for (int i = 1; i < pair.ours->GetNumCompetitors(); ++i) {
      SplitRuleImp const& one = *pair.ours->GetCompetitorImp(static_cast<unsigned int>(i - 1));
      SplitRuleImp const& next = *pair.ours->GetCompetitorImp(static_cast<unsigned int>(i));

      double const improvement = one.GetStatistic(SplitImprovement);
      if (!AreClose(next.GetStatistic(SplitImprovement), improvement)) continue;
      EXPECT_LT(one.GetPredictorIndex(), next.GetPredictorIndex());
    }
  }
}

TEST_P(RpartComparison, ListsTheSameSurrogatesByAssociation) {
  for (NodePair const& pair : pairs_) {
    if (pair.theirs->splits.empty()) continue;
    SCOPED_TRACE(At(*pair.theirs));
    NodeImp const& node = tree_.AsGrownFirst(pair);
    std::vector<Surrogate> const& theirs =
        pair.theirs->byDefinition ? pair.theirs->byDefinition->list : pair.theirs->surrogates;

    EXPECT_EQ(node.GetNumSurrogates(), static_cast<int>(theirs.size()));
    if (node.GetNumSurrogates() != static_cast<int>(theirs.size())) continue;
    for (std::size_t i = 0; i < theirs.size(); ++i) {
      SCOPED_TRACE(theirs[i].predictor);
      SplitRuleImp const& rule = *node.GetSurrogateImp(static_cast<unsigned int>(i));
      EXPECT_EQ(tree_.PredictorOf(rule).name, theirs[i].predictor);
      if (tree_.PredictorOf(rule).name != theirs[i].predictor) continue;
      EXPECT_TRUE(AreClose(rule.GetStatistic(SurrogateAssociation), theirs[i].adj));
      EXPECT_TRUE(HasSameWays(theirs[i], rule, pair.leftChild, FreeCategories(pair, theirs[i])))
          << "ours is " << tree_.Describe(rule);
    }
  }
}

TEST_P(RpartComparison, SendsCasesThatNothingPlacesTheSameWay) {
  for (NodePair const& pair : pairs_) {
    if (pair.theirs->splits.empty()) continue;
    SCOPED_TRACE(At(*pair.theirs));
    std::map<Default, int> const expected{{Default::kLeft, pair.leftChild},
                                          {Default::kRight, 1 - pair.leftChild},
                                          {Default::kNone, 0}};  // even: our first child

    EXPECT_EQ(pair.ours->GetBiggestChildPos(), expected.at(pair.theirs->way));
  }
}

TEST_P(RpartComparison, RoutesEachCaseToTheSameTerminalNode) {
  std::map<NodeImp const*, unsigned long long> numberOf;
  for (NodePair const& pair : pairs_) numberOf[pair.ours] = pair.theirs->number;
  std::vector<double> values(fixture_.predictors.size());
  ASSERT_EQ(tree_.GetData().GetNumCases(), fixture_.numRows);

  for (std::size_t row = 0; row < fixture_.numRows; ++row) {
    if (fixture_.terminalNodes[row] == 0) continue;
    CopyCase(tree_.GetData(), tree_.GetRoles().predictors, row, values.data());
    NodeImp const* const end =
        tree_.GetGrower().GetTree()->DropObservationThroughTree(values.data(), nullptr);

    EXPECT_EQ(numberOf[end], fixture_.terminalNodes[row]) << "row " << row;
  }
}

TEST_P(RpartComparison, PredictsTheSameOfEachNode) {
  for (NodePair const& pair : pairs_) {
    SCOPED_TRACE(At(*pair.theirs));
    if (!IsOfClasses()) {
      RegInfoImp const& info = *pair.ours->GetRegInfoImp(TrainingSample);
      double const count = info.GetUnweightedCount();
      double const variance = info.GetStdDev() * info.GetStdDev() * (count - 1.0) / count;
      EXPECT_TRUE(AreClose(pair.ours->GetAssignment(), pair.theirs->predictedMean));
      EXPECT_TRUE(AreClose(variance * info.GetCount(), pair.theirs->deviance, RootDeviance()));
      continue;
    }
    ClsInfo const& info = *pair.ours->GetClsInfo(TrainingSample);
    ASSERT_EQ(info.GetNumClasses(), static_cast<int>(fixture_.classes.size()));
    EXPECT_EQ(fixture_.classes[static_cast<std::size_t>(info.GetPrediction())].label,
              pair.theirs->predictedClass);
    for (int j = 0; j < info.GetNumClasses(); ++j) {
      SCOPED_TRACE(fixture_.classes[static_cast<std::size_t>(j)].label);
      EXPECT_TRUE(AreClose(info.GetClassCount(j),
                           pair.theirs->weightsByClass[static_cast<std::size_t>(j)]));
      EXPECT_TRUE(
          AreClose(info.GetClassProbability(j), pair.theirs->shares[static_cast<std::size_t>(j)]));
    }
  }
}

TEST_P(RpartComparison, PrunesInTheSameSequence) {
  std::vector<PruningStep> steps;

  ASSERT_TRUE(tree_.GetGrower().GetPruningSequence(&steps));

  double const rootRisk = steps.back().risk;
  std::reverse(steps.begin(), steps.end());
  EXPECT_TRUE(AreClose(rootRisk, RootDeviance() / RootWeight()));
  ASSERT_EQ(steps.size(), fixture_.weakestLinks.size());
  for (std::size_t i = 0; i < steps.size(); ++i) {
    SCOPED_TRACE("subtree " + std::to_string(i));
    Subtree const& theirs = fixture_.weakestLinks[i];
    EXPECT_EQ(steps[i].numTerminalNodes, static_cast<int>(theirs.numSplits) + 1);
    EXPECT_TRUE(AreClose(steps[i].risk / rootRisk, theirs.relativeError));
    bool const isWholeTree = i + 1 == steps.size();  // of which rpart tells where it stopped
    EXPECT_TRUE(AreClose(steps[i].complexity / rootRisk, isWholeTree ? 0.0 : theirs.cp, 1.0));
  }
}

/// rpart's own complexities may be others, but the subtrees that it arrives at are the same.
TEST_P(RpartComparison, ArrivesAtTheSubtreesOfRpart) {
  std::vector<PruningStep> steps;

  ASSERT_TRUE(tree_.GetGrower().GetPruningSequence(&steps));

  std::map<std::size_t, double> relativeErrors;  // by number of splits
  for (PruningStep const& step : steps) {
    relativeErrors[static_cast<std::size_t>(step.numTerminalNodes) - 1] =
        step.risk / steps.back().risk;
  }
  for (std::size_t i = 0; i < fixture_.subtrees.size(); ++i) {
    Subtree const& subtree = fixture_.subtrees[i];
    SCOPED_TRACE("subtree with " + std::to_string(subtree.numSplits) + " splits");
    // Of equal complexities, rpart's rounding can make a subtree of its own.
    if (i > 0 && AreClose(subtree.cp, fixture_.subtrees[i - 1].cp, 1.0)) continue;
    if (i + 1 < fixture_.subtrees.size() &&
        AreClose(subtree.cp, fixture_.subtrees[i + 1].cp, 1.0)) {
      continue;
    }
    ASSERT_EQ(relativeErrors.count(subtree.numSplits), 1U);
    EXPECT_TRUE(AreClose(relativeErrors[subtree.numSplits], subtree.relativeError));
  }
}

INSTANTIATE_TEST_SUITE_P(Fixtures, RpartComparison, testing::ValuesIn(FixtureNames()),
                         [](auto const& instance) { return instance.param; });

TEST(RpartFrequencies, CountCellsOfATableAsThePeopleInThem) {
  Fixture const people = ReadByName("titanic_people");
  Fixture cells = people;
  cells.dataFile = ReadByName("titanic_cells").dataFile;
  cells.weights = ReadByName("titanic_cells").weights;

  GrownTree const tree(cells, FixtureFolder() / "data", WeightsMean::kFrequencies);

  std::vector<NodePair> const pairs = tree.PairNodes();
  EXPECT_EQ(pairs.size(), people.nodes.size());
  for (NodePair const& pair : pairs) {
    SCOPED_TRACE(At(*pair.theirs));
    EXPECT_EQ(pair.ours->GetUnweightedNodeSize(TrainingSample),
              static_cast<double>(pair.theirs->numCases));
    EXPECT_EQ(pair.ours->GetNumChildren(), pair.theirs->splits.empty() ? 0 : 2);
  }
}

}  // namespace
}  // namespace tree::grow::rpart
