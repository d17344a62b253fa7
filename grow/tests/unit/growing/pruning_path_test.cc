#include "growing/pruning_path.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <set>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "testing/tree_builder.h"

namespace tree::grow {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tree::testing::ANode;

using Positions = std::set<std::size_t>;

/// The terminal nodes of the subtree of a step.
Positions TerminalNodes(IndexedTree const& tree, PruningPath const& path, std::size_t step) {
  PrunedSubtree subtree(tree, path);
  subtree.AdvanceTo(
      step, [](std::size_t) {}, [](std::size_t) {});
  Positions terminal;
  for (std::size_t position = 0; position < tree.GetNumNodes(); ++position) {
    if (subtree.IsTerminal(position)) terminal.insert(position);
  }
  return terminal;
}

std::vector<double> ComplexitiesOf(PruningPath const& path) {
  std::vector<double> complexities;
  for (PruningPath::Step const& step : path.GetSteps()) complexities.push_back(step.complexity);
  return complexities;
}

std::vector<std::size_t> SizesOf(PruningPath const& path) {
  std::vector<std::size_t> sizes;
  for (PruningPath::Step const& step : path.GetSteps()) sizes.push_back(step.numTerminalNodes);
  return sizes;
}

/// 0 over 1 and 4, 1 over 2 and 3, 4 over 5 and 6.
std::unique_ptr<NodeImp> SevenNodes() {
  return ANode(0)
      .Over(ANode(1).Over(ANode(2), ANode(3)), ANode(4).Over(ANode(5), ANode(6)))
      .Build();
}

TEST(PruningPath, CutsTheWeakestLinkFirst) {
  auto const root = SevenNodes();
  IndexedTree const tree(*root);

  // Node 1 saves 2 with one more terminal node, node 4 saves 1; the root saves 12 - 6 with one more
  // once both are terminal.
  PruningPath const path(tree, {12.0, 4.0, 1.0, 1.0, 2.0, 1.0, 0.0});

  EXPECT_THAT(ComplexitiesOf(path), ElementsAre(0.0, 1.0, 2.0, 6.0));
  EXPECT_THAT(SizesOf(path), ElementsAre(4, 3, 2, 1));
  EXPECT_THAT(path.GetSteps()[0].collapsed, IsEmpty());
  EXPECT_THAT(path.GetSteps()[1].collapsed, ElementsAre(4));
  EXPECT_THAT(path.GetSteps()[2].collapsed, ElementsAre(1));
  EXPECT_THAT(path.GetSteps()[3].collapsed, ElementsAre(0));
}

TEST(PruningPath, CutsLinksOfEqualStrengthTogether) {
  auto const root = SevenNodes();
  IndexedTree const tree(*root);

  PruningPath const path(tree, {12.0, 4.0, 1.0, 2.0, 2.0, 1.0, 0.0});

  EXPECT_THAT(ComplexitiesOf(path), ElementsAre(0.0, 1.0, 6.0));
  EXPECT_THAT(path.GetSteps()[1].collapsed, ElementsAre(1, 4));
}

TEST(PruningPath, NamesOnlyTheTopsOfWhatCollapses) {
  auto const root = SevenNodes();
  IndexedTree const tree(*root);

  // All links save 1 per terminal node.
  PruningPath const path(tree, {3.0, 1.0, 0.0, 0.0, 1.0, 0.0, 0.0});

  EXPECT_THAT(ComplexitiesOf(path), ElementsAre(0.0, 1.0));
  EXPECT_THAT(SizesOf(path), ElementsAre(4, 1));
  EXPECT_THAT(path.GetSteps()[1].collapsed, ElementsAre(0));
}

TEST(PruningPath, BeginsWithTheSmallestTreeOfTheSameRisk) {
  auto const root = SevenNodes();
  IndexedTree const tree(*root);

  // Below node 1 nothing is saved.
  PruningPath const path(tree, {8.0, 2.0, 1.0, 1.0, 2.0, 1.0, 0.0});

  EXPECT_THAT(ComplexitiesOf(path), ElementsAre(0.0, 0.0, 1.0, 4.0));
  EXPECT_THAT(path.GetSteps()[1].collapsed, ElementsAre(1));
  EXPECT_EQ(path.FindStep(0.0), 1U);
}

TEST(PruningPath, TakesRisksThatGrowByRoundingForEqual) {
  auto const root = ANode(0).Over(ANode(1), ANode(2)).Build();
  IndexedTree const tree(*root);

  PruningPath const path(tree, {0.3, 0.1, 0.2});  // 0.1 + 0.2 is a little more than 0.3

  EXPECT_THAT(ComplexitiesOf(path), ElementsAre(0.0, 0.0));
}

TEST(PruningPath, KeepsTheWholeTreeFirstOnEveryScaleOfRisk) {
  auto const root = SevenNodes();
  IndexedTree const tree(*root);
  for (double const scale : {1e-30, 1e-12, 1.0, 1e11, 1e13, 1e30}) {
    SCOPED_TRACE(scale);

    // Below node 1 nothing is saved.
    PruningPath const path(tree, {8.0 * scale, 2.0 * scale, scale, scale, 2.0 * scale, scale, 0.0});

    EXPECT_THAT(SizesOf(path), ElementsAre(4, 3, 2, 1));
    EXPECT_THAT(path.GetSteps()[0].collapsed, IsEmpty());
  }
}

TEST(PruningPath, HasOneStepForARootAlone) {
  auto const root = ANode(0).Build();
  IndexedTree const tree(*root);

  PruningPath const path(tree, {5.0});

  EXPECT_THAT(SizesOf(path), ElementsAre(1));
  EXPECT_EQ(path.FindStep(100.0), 0U);
  EXPECT_EQ(path.TypicalComplexity(0), std::numeric_limits<double>::infinity());
}

TEST(PruningPath, HoldsTreesWithoutRisk) {
  auto const root = SevenNodes();
  IndexedTree const tree(*root);

  PruningPath const path(tree, std::vector<double>(7));

  EXPECT_THAT(SizesOf(path), ElementsAre(4, 1));
  EXPECT_THAT(ComplexitiesOf(path), ElementsAre(0.0, 0.0));
}

TEST(PruningPath, FindsTheLastStepThatIsNotMoreComplex) {
  auto const root = SevenNodes();
  IndexedTree const tree(*root);
  PruningPath const path(tree, {12.0, 4.0, 1.0, 1.0, 2.0, 1.0, 0.0});  // 0, 1, 2, 6

  EXPECT_EQ(path.FindStep(0.0), 0U);
  EXPECT_EQ(path.FindStep(0.999), 0U);
  EXPECT_EQ(path.FindStep(1.0), 1U);
  EXPECT_EQ(path.FindStep(5.0), 2U);
  EXPECT_EQ(path.FindStep(1e9), 3U);
  EXPECT_EQ(path.FindStep(std::numeric_limits<double>::infinity()), 3U);
}

TEST(PruningPath, StandsForStepsByGeometricMeans) {
  auto const root = SevenNodes();
  IndexedTree const tree(*root);
  PruningPath const path(tree, {12.0, 4.0, 1.0, 1.0, 2.0, 1.0, 0.0});  // 0, 1, 2, 6

  EXPECT_EQ(path.TypicalComplexity(0), 0.0);
  EXPECT_NEAR(path.TypicalComplexity(1), std::sqrt(2.0), 1e-12);
  EXPECT_NEAR(path.TypicalComplexity(2), std::sqrt(12.0), 1e-12);
  EXPECT_EQ(path.TypicalComplexity(3), std::numeric_limits<double>::infinity());
}

/// A random tree of two or three children a node, and risks that no split makes worse.
class RandomTree {
 public:
  explicit RandomTree(std::uint32_t seed) : random_(seed), root_(Grow(0)), tree_(*root_) {
    risks_.resize(tree_.GetNumNodes());
    for (std::size_t position = risks_.size(); position-- > 0;) {
      if (tree_.IsTerminal(position)) {
        risks_[position] = random_.Below(5);
        continue;
      }
      auto const numChildren = static_cast<std::size_t>(tree_.GetNode(position).GetNumChildren());
      for (std::size_t child = 0; child < numChildren; ++child) {
        risks_[position] += risks_[tree_.ChildOf(position, child)];
      }
      risks_[position] += random_.Below(6);
    }
  }

  IndexedTree const& Tree() const { return tree_; }
  std::vector<double> const& Risks() const { return risks_; }

 private:
  std::unique_ptr<NodeImp> Grow(int depth) {
    auto node = std::make_unique<NodeImp>();
    bool const ends = depth >= 4 || numInner_ >= 7 || (depth > 0 && random_.Below(3) == 0);
    if (ends) return node;
    ++numInner_;
    unsigned int const numChildren = 2 + (random_.Below(5) == 0 ? 1U : 0U);
    node->SetNumChildren(static_cast<int>(numChildren));
    for (unsigned int child = 0; child < numChildren; ++child) {
      node->SetChild(child, Grow(depth + 1).release());
    }
    return node;
  }

  RandomNumbers random_;
  int numInner_ = 0;
  std::unique_ptr<NodeImp> root_;
  IndexedTree tree_;
  std::vector<double> risks_;
};

/// The terminal nodes of all pruned subtrees of a branch.
std::vector<Positions> AllSubtrees(IndexedTree const& tree, std::size_t top) {
  std::vector<Positions> subtrees = {{}};
  auto const numChildren = static_cast<std::size_t>(tree.GetNode(top).GetNumChildren());
  for (std::size_t child = 0; child < numChildren; ++child) {
    std::vector<Positions> more;
    for (Positions const& below : AllSubtrees(tree, tree.ChildOf(top, child))) {
      for (Positions const& so : subtrees) {
        more.push_back(so);
        more.back().insert(below.begin(), below.end());
      }
    }
    subtrees = more;
  }
  if (numChildren == 0) subtrees.clear();
  subtrees.push_back({top});
  return subtrees;
}

/// The smallest of the subtrees that minimise risk plus complexity times size.
Positions SmallestMinimiser(std::vector<Positions> const& subtrees,
                            std::vector<double> const& risks, double complexity) {
  auto const costOf = [&](Positions const& subtree) {
    double cost = complexity * static_cast<double>(subtree.size());
    for (std::size_t const position : subtree) cost += risks[position];
    return cost;
  };
  Positions const* best = nullptr;
  double least = std::numeric_limits<double>::infinity();
  for (Positions const& subtree : subtrees) {
    double const cost = costOf(subtree);
    bool const equal = std::abs(cost - least) < 1e-9;
    if (equal ? subtree.size() < best->size() : cost < least) best = &subtree;
    least = std::min(least, cost);
  }
  return *best;
}

TEST(PruningPath, MinimisesAmongAllSubtreesOfRandomTrees) {
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomTree const random(seed);
    std::vector<Positions> const subtrees = AllSubtrees(random.Tree(), 0);

    PruningPath const path(random.Tree(), random.Risks());

    std::vector<double> complexities = {0.0, 1e-6, 1e6};
    for (std::size_t step = 0; step + 1 < path.GetSteps().size(); ++step) {
      double const begin = path.GetSteps()[step].complexity;
      double const end = path.GetSteps()[step + 1].complexity;
      complexities.push_back(end);
      complexities.push_back((begin + end) / 2.0);
    }
    for (double const complexity : complexities) {
      SCOPED_TRACE(complexity);
      ASSERT_EQ(TerminalNodes(random.Tree(), path, path.FindStep(complexity)),
                SmallestMinimiser(subtrees, random.Risks(), complexity));
    }
  }
}

TEST(PruningPath, GoesFromTheWholeTreeToTheRootThroughNestedSubtrees) {
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomTree const random(seed);
    IndexedTree const& tree = random.Tree();

    PruningPath const path(tree, random.Risks());

    double lastRisk = -1.0;
    for (std::size_t step = 0; step < path.GetSteps().size(); ++step) {
      Positions const terminal = TerminalNodes(tree, path, step);
      ASSERT_EQ(terminal.size(), path.GetSteps()[step].numTerminalNodes);
      double risk = 0.0;
      for (std::size_t const position : terminal) risk += random.Risks()[position];
      ASSERT_GE(risk, lastRisk) << "smaller subtrees have no less risk";
      lastRisk = risk;
      if (step == 0) {
        for (std::size_t const position : terminal) ASSERT_TRUE(tree.IsTerminal(position));
        continue;
      }
      ASSERT_LT(terminal.size(), path.GetSteps()[step - 1].numTerminalNodes);
      ASSERT_GE(path.GetSteps()[step].complexity, path.GetSteps()[step - 1].complexity);
      for (std::size_t const position : TerminalNodes(tree, path, step - 1)) {
        bool const within = std::any_of(terminal.begin(), terminal.end(), [&](std::size_t top) {
          return top <= position && position < tree.EndOf(top);
        });
        ASSERT_TRUE(within) << "node " << position << " at step " << step;
      }
    }
    EXPECT_THAT(TerminalNodes(tree, path, path.GetSteps().size() - 1), ElementsAre(0));
  }
}

TEST(PrunedSubtree, TellsWhichNodesAreTerminalNoMoreAndWhichHaveBecomeSo) {
  auto const root = SevenNodes();
  IndexedTree const tree(*root);
  PruningPath const path(tree, {12.0, 4.0, 1.0, 1.0, 2.0, 1.0, 0.0});
  PrunedSubtree subtree(tree, path);
  std::vector<std::size_t> removed;
  std::vector<std::size_t> added;
  auto const advanceTo = [&](std::size_t step) {
    removed.clear();
    added.clear();
    subtree.AdvanceTo(
        step, [&](std::size_t position) { removed.push_back(position); },
        [&](std::size_t position) { added.push_back(position); });
  };

  advanceTo(0);
  EXPECT_THAT(added, IsEmpty());
  EXPECT_TRUE(subtree.IsTerminal(5));
  advanceTo(1);
  EXPECT_THAT(removed, ElementsAre(5, 6));
  EXPECT_THAT(added, ElementsAre(4));
  advanceTo(3);
  EXPECT_THAT(removed, ElementsAre(2, 3, 1, 4)) << "by the steps between";
  EXPECT_THAT(added, ElementsAre(1, 0));
  EXPECT_FALSE(subtree.IsTerminal(1));
}

TEST(NodeRisks, AreTheExpectedCostsOfPredictions) {
  // Two classes of 40 and 60 cases; priors alike.
  auto const root = ANode(0)
                        .Classes({40.0, 60.0}, 0)
                        .Over(ANode(1).Classes({30.0, 6.0}, 0), ANode(2).Classes({10.0, 54.0}, 1))
                        .Build();
  ClassModel const classes(PriorsImp(), CostImp(), {40.0, 60.0});
  IndexedTree const tree(*root);

  std::vector<double> const risks = NodeRisks(tree, &classes);

  EXPECT_NEAR(risks[0], 0.5, 1e-12);
  EXPECT_NEAR(risks[1], 0.5 * 6.0 / 60.0, 1e-12);
  EXPECT_NEAR(risks[2], 0.5 * 10.0 / 40.0, 1e-12);
}

TEST(NodeRisks, AreMeanSquaredErrorsOfTheWholeSample) {
  auto const root = ANode(0).Over(ANode(1), ANode(2)).Build();
  auto const fill = [](NodeImp& node, double count, double unweighted, double stdDev) {
    auto info = std::make_unique<RegInfoImp>();
    info->SetCount(count);
    info->SetExtendedStatistic(RegInfoImp::StoreUnweightedCount, unweighted);
    info->SetExtendedStatistic(RegInfoImp::StoreStdDev, stdDev);
    node.SetRegInfo(info.release(), TrainingSample);
  };
  fill(*root, 10.0, 5.0, 3.0);
  fill(*root->GetChildImp(0), 4.0, 2.0, 1.0);
  fill(*root->GetChildImp(1), 6.0, 1.0, 0.0);
  IndexedTree const tree(*root);

  std::vector<double> const risks = NodeRisks(tree, nullptr);

  // Variances are s^2 (n - 1) / n, weighed by what the nodes weigh.
  EXPECT_NEAR(risks[0], 9.0 * 4.0 / 5.0, 1e-12);
  EXPECT_NEAR(risks[1], 1.0 * 1.0 / 2.0 * 4.0 / 10.0, 1e-12);
  EXPECT_EQ(risks[2], 0.0);
}

}  // namespace
}  // namespace tree::grow
