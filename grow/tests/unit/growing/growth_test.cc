#include "growing/growth.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"
#include "growing/indexed_tree.h"

namespace tree::grow {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::unique_ptr<SplitRuleImp> CutAt(int predictor, double cutPoint) {
  auto rule = std::make_unique<OSplitRule>(kMissing, predictor);
  rule->SetCutPoint(cutPoint);
  return rule;
}

RuleList One(std::unique_ptr<SplitRuleImp> rule) {
  RuleList rules;
  if (rule != nullptr) rules.push_back(std::move(rule));
  return rules;
}

/// A method that does as a test says.
class ScriptedMethod : public SplitMethod {
 public:
  using Script = std::function<RuleList(CaseLists const&, GrowingNode const&)>;

  explicit ScriptedMethod(Script splits, Script surrogates = nullptr)
      : splits_(std::move(splits)), surrogates_(std::move(surrogates)) {}

  std::vector<RuleList> FindSplits(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                   Workers&) override {
    std::vector<RuleList> rules;
    for (GrowingNode const& node : nodes) {
      asked.push_back(node.node->GetId());
      rules.push_back(splits_(lists, node));
    }
    return rules;
  }
  std::vector<RuleList> FindSurrogates(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                       std::vector<SplitRuleImp const*> const& primaries,
                                       ChildOfPlace const&, Workers&) override {
    std::vector<RuleList> rules(nodes.size());
    for (std::size_t node = 0; node < nodes.size(); ++node) {
      if (surrogates_ != nullptr && primaries[node] != nullptr) {
        rules[node] = surrogates_(lists, nodes[node]);
      }
    }
    return rules;
  }

  std::vector<unsigned int> asked;  // ids of the nodes, in order

 private:
  Script splits_;
  Script surrogates_;
};

/// Cuts the first predictor, which is not missing and not nominal, behind the middle case.
RuleList CutInTheMiddle(TrainingData const& data, CaseLists const& lists, GrowingNode const& node) {
  std::vector<double> values;
  for (std::uint32_t const index : lists.Cases(node.ranges))
    values.push_back(data.ValueOf(0, index));
  std::sort(values.begin(), values.end());
  double const cut = values[(values.size() - 1) / 2];
  return cut < values.back() ? One(CutAt(0, cut)) : RuleList();
}

/// Grows a tree of a sample by a method.
class Grown {
 public:
  Grown(PreparedSample& sample, SplitMethod& method, GrowthLimits const& limits,
        std::unique_ptr<SplitRuleImp> given = nullptr)
      : root(std::make_unique<NodeImp>()) {
    CaseLists lists = sample.MakeLists();
    TrainingData const& data = sample.GetData();
    std::unique_ptr<ClassModel> classes;
    if (data.GetNumClasses() > 0) {
      classes = std::make_unique<ClassModel>(PriorsImp(), CostImp(), sample.ClassWeights(lists));
    }
    NodeStatistics const statistics(data, TrainingSample, classes.get(), 100.0);
    Growth growth(data, lists, method, statistics, limits, nextId, sample.GetWorkers());
    growth.PlantRoot(*root);
    if (given != nullptr) {
      root->SetNumCompetitors(1);
      root->SetCompetitor(0, given.release());
    }
    growth.Grow();
  }

  std::unique_ptr<NodeImp> root;
  unsigned int nextId = 1;
};

Sample EightCases() {
  return {.target = {0, 1, 0, 1, 0, 1, 0, 1}, .predictors = {{{1, 2, 3, 4, 5, 6, 7, 8}}}};
}

std::vector<unsigned int> IdsOf(NodeImp const& root) {
  std::vector<unsigned int> ids;
  IndexedTree const tree(root);
  for (std::size_t position = 0; position < tree.GetNumNodes(); ++position) {
    ids.push_back(tree.GetNode(position).GetId());
  }
  return ids;
}

std::vector<double> TerminalSizes(NodeImp const& root) {
  std::vector<double> sizes;
  IndexedTree const tree(root);
  for (std::size_t position = 0; position < tree.GetNumNodes(); ++position) {
    if (tree.IsTerminal(position)) {
      sizes.push_back(tree.GetNode(position).GetUnweightedNodeSize(TrainingSample));
    }
  }
  return sizes;
}

/// Grows with this method, cutting in the middle.
std::vector<double> SizesWith(Sample const& cases, GrowthLimits const& limits) {
  PreparedSample sample(cases);
  ScriptedMethod method([&](CaseLists const& lists, GrowingNode const& node) {
    return CutInTheMiddle(sample.GetData(), lists, node);
  });
  return TerminalSizes(*Grown(sample, method, limits).root);
}

TEST(Growth, GrowsLevelByLevel) {
  PreparedSample sample(EightCases());
  ScriptedMethod method([&](CaseLists const& lists, GrowingNode const& node) {
    return CutInTheMiddle(sample.GetData(), lists, node);
  });

  Grown const grown(sample, method, {.maxLevels = 2});

  EXPECT_THAT(method.asked, ElementsAre(0, 1, 2));
  EXPECT_THAT(IdsOf(*grown.root), ElementsAre(0, 1, 3, 4, 2, 5, 6));
  EXPECT_EQ(grown.nextId, 7U);
  EXPECT_THAT(TerminalSizes(*grown.root), ElementsAre(2, 2, 2, 2));
}

TEST(Growth, EndsWhereTheLimitsSay) {
  struct {
    char const* name;
    GrowthLimits limits;
    std::vector<double> sizes;
  } const kRows[] = {
      {"no levels", {.maxLevels = 0}, {8}},
      {"one level", {.maxLevels = 1}, {4, 4}},
      {"all levels", {.maxLevels = 99}, {1, 1, 1, 1, 1, 1, 1, 1}},
      {"size of nodes", {.maxLevels = 99, .minNodeSize = 4.0}, {2, 2, 2, 2}},
      {"more than a node has", {.maxLevels = 99, .minNodeSize = 4.5}, {4, 4}},
      {"size of children", {.maxLevels = 99, .minChildSize = 4.0}, {4, 4}},
      {"too large children", {.maxLevels = 99, .minChildSize = 4.5}, {8}},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);

    EXPECT_EQ(SizesWith(EightCases(), row.limits), row.sizes);
  }
}

TEST(Growth, CountsRepeatedCasesAgainstTheLimits) {
  Sample cases = EightCases();
  cases.frequencies = {5, 1, 1, 1, 1, 1, 1, 1};

  EXPECT_THAT(SizesWith(cases, {.maxLevels = 99, .minNodeSize = 6.0}), ElementsAre(5, 1, 2, 4));
}

TEST(Growth, LeavesPureNodesAlone) {
  Sample cases = EightCases();
  cases.target = {1, 1, 1, 1, 0, 0, 1, 0};

  EXPECT_THAT(SizesWith(cases, {.maxLevels = 99}), ElementsAre(4, 2, 1, 1));
}

TEST(Growth, EndsWhereTheMethodFindsNoSplit) {
  PreparedSample sample(EightCases());
  ScriptedMethod method([&](CaseLists const& lists, GrowingNode const& node) {
    return node.node->GetId() == 1 ? RuleList() : CutInTheMiddle(sample.GetData(), lists, node);
  });

  Grown const grown(sample, method, {.maxLevels = 2});

  EXPECT_THAT(TerminalSizes(*grown.root), ElementsAre(4, 2, 2));
  EXPECT_EQ(grown.root->GetChildImp(0)->GetNumCompetitors(), 0);
}

TEST(Growth, GivesTheRootItsStatisticsAndSummaries) {
  PreparedSample sample({.target = {0.0, 1.0, 1.0}, .predictors = {{{4.0, kMissing, 2.0}}}});
  ScriptedMethod method([](CaseLists const&, GrowingNode const&) { return RuleList(); });

  Grown const grown(sample, method, {.maxLevels = 3});

  EXPECT_EQ(grown.root->GetClsInfo(TrainingSample)->GetClassCount(1), 2.0);
  EXPECT_EQ(grown.root->GetPercentageNodeSize(TrainingSample), 3.0);
  double minimum = 0.0;
  double maximum = 0.0;
  bool hasMissing = false;
  EXPECT_TRUE(grown.root->GetPredictorRange(0, &minimum, &maximum));
  EXPECT_TRUE(grown.root->GetPredictorMissingValueFlag(0, &hasMissing));
  EXPECT_EQ(minimum, 2.0);
  EXPECT_EQ(maximum, 4.0);
  EXPECT_TRUE(hasMissing);
}

TEST(Growth, StoresPrimarySplitCompetitorsAndSurrogates) {
  Sample cases = EightCases();
  cases.predictors.push_back(cases.predictors[0]);
  PreparedSample sample(cases);
  ScriptedMethod method(
      [](CaseLists const&, GrowingNode const&) {
        RuleList rules = One(CutAt(0, 2.5));
        rules.push_back(CutAt(1, 3.5));
        return rules;
      },
      [](CaseLists const&, GrowingNode const&) { return One(CutAt(1, 4.5)); });

  Grown const grown(sample, method, {.maxLevels = 1});

  ASSERT_EQ(grown.root->GetNumCompetitors(), 2);
  EXPECT_EQ(grown.root->GetCompetitorImp(1)->GetPredictorIndex(), 1);
  ASSERT_EQ(grown.root->GetNumSurrogates(), 1);
  EXPECT_EQ(grown.root->GetSurrogateImp(0)->GetPredictorIndex(), 1);
  EXPECT_EQ(grown.root->GetCompetitorImp(0)->GetDumbChildPos(), 1);
  EXPECT_EQ(grown.root->GetCompetitorImp(0)->GetDumbChildProb(), 0.75);
}

TEST(Growth, SendsMissingValuesBySurrogatesAndByTheDumbRule) {
  PreparedSample sample({.target = {0, 1, 0, 1, 0, 1},
                         .predictors = {{{1.0, 9.0, 9.0, kMissing, kMissing, kMissing}},
                                        {{5.0, 5.0, 5.0, 0.0, kMissing, 5.0}}}});
  ScriptedMethod method([](CaseLists const&, GrowingNode const&) { return One(CutAt(0, 5.0)); },
                        [](CaseLists const&, GrowingNode const&) { return One(CutAt(1, 2.0)); });

  Grown const grown(sample, method, {.maxLevels = 1});

  EXPECT_THAT(TerminalSizes(*grown.root), ElementsAre(2, 4));
}

TEST(Growth, SplitsTheRootByTheRuleThatItCameWith) {
  PreparedSample sample(EightCases());
  ScriptedMethod method([](CaseLists const&, GrowingNode const&) { return RuleList(); });

  Grown const grown(sample, method, {.maxLevels = 1, .minNodeSize = 1000.0}, CutAt(0, 1.5));

  EXPECT_THAT(TerminalSizes(*grown.root), ElementsAre(1, 7));
  EXPECT_THAT(method.asked, IsEmpty());
}

TEST(Growth, GoesOnBelowTheRuleThatTheRootCameWith) {
  PreparedSample sample(EightCases());
  ScriptedMethod method([&](CaseLists const& lists, GrowingNode const& node) {
    return CutInTheMiddle(sample.GetData(), lists, node);
  });

  Grown const grown(sample, method, {.maxLevels = 2}, CutAt(0, 2.5));

  EXPECT_THAT(method.asked, ElementsAre(1, 2));
  EXPECT_THAT(TerminalSizes(*grown.root), ElementsAre(1, 1, 3, 3));
}

TEST(Growth, SplitsInMoreThanTwo) {
  PreparedSample sample({.target = {0, 1, 0, 1, 0, 1},
                         .predictors = {{{0, 1, 2, 2, 1, 2}, true}, {{1, 2, 3, 4, 5, 6}}}});
  ScriptedMethod method([](CaseLists const&, GrowingNode const& node) {
    if (node.level > 0) return One(CutAt(1, 4.5));
    auto rule = std::make_unique<NSplitRule>(0, 3);
    for (int code = 0; code < 3; ++code) rule->SetCatMapping(code, 2 - code);
    return One(std::move(rule));
  });

  Grown const grown(sample, method, {.maxLevels = 2});

  ASSERT_EQ(grown.root->GetNumChildren(), 3);
  EXPECT_THAT(TerminalSizes(*grown.root), ElementsAre(2, 1, 1, 1, 1));
}

TEST(Growth, MayLeaveAChildWithoutCases) {
  PreparedSample sample({.target = {1.0, 2.0, 3.0, 4.0},
                         .hasClasses = false,
                         .predictors = {{{1.0, 2.0, 3.0, 4.0}}}});
  ScriptedMethod method([](CaseLists const&, GrowingNode const&) { return RuleList(); });

  Grown const grown(sample, method, {.maxLevels = 3}, CutAt(0, 9.0));

  EXPECT_THAT(TerminalSizes(*grown.root), ElementsAre(4, 0));
}

TEST(Growth, FindsTheSplitsOfTheRootWithoutSplittingIt) {
  PreparedSample sample(EightCases());
  CaseLists lists = sample.MakeLists();
  ScriptedMethod method([](CaseLists const&, GrowingNode const&) { return One(CutAt(0, 2.5)); });
  ClassModel const classes(PriorsImp(), CostImp(), {4.0, 4.0});
  NodeStatistics const statistics(sample.GetData(), TrainingSample, &classes, 8.0);
  unsigned int nextId = 1;
  Growth growth(sample.GetData(), lists, method, statistics, {}, nextId, sample.GetWorkers());
  NodeImp root;
  growth.PlantRoot(root);

  RuleList const rules = growth.FindRootSplits();

  EXPECT_EQ(rules.size(), 1U);
  EXPECT_EQ(root.GetNumChildren(), 0);
  EXPECT_EQ(root.GetNumCompetitors(), 0);
}

class Listener : public ProgressListener {
 public:
  bool Report(double fraction, char const*) noexcept override {
    fractions.push_back(fraction);
    return !stop;
  }
  std::vector<double> fractions;
  bool stop = false;
};

TEST(Growth, SplitsMoreNodesThanItTakesAtATime) {
  Sample cases{.target = {}, .predictors = {{}}};
  for (std::size_t index = 0; index < 3000; ++index) {
    cases.target.push_back(static_cast<double>(index % 2));
    cases.predictors[0].values.push_back(static_cast<double>(index * 7 % 3000));
  }
  for (int const numThreads : {1, 3}) {
    SCOPED_TRACE(numThreads);
    PreparedSample sample(cases, Form::kAsItComes, numThreads);
    ScriptedMethod method([&](CaseLists const& lists, GrowingNode const& node) {
      return CutInTheMiddle(sample.GetData(), lists, node);
    });
    Listener listener;
    sample.GetWorkers().SetListener(&listener);
    sample.GetWorkers().Begin();
    sample.GetWorkers().BeginStage("growing", 0.0, 1.0);

    Grown const grown(sample, method, {.maxLevels = 50});

    EXPECT_EQ(TerminalSizes(*grown.root), std::vector<double>(3000, 1.0));
    std::vector<unsigned int> const ids = IdsOf(*grown.root);
    EXPECT_EQ(std::set<unsigned int>(ids.begin(), ids.end()).size(), 5999U);
    EXPECT_TRUE(std::is_sorted(listener.fractions.begin(), listener.fractions.end()));
  }
}

TEST(Growth, EndsWhenTheListenerAsksToStop) {
  PreparedSample sample(EightCases());
  ScriptedMethod method([&](CaseLists const& lists, GrowingNode const& node) {
    return CutInTheMiddle(sample.GetData(), lists, node);
  });
  Listener listener;
  listener.stop = true;
  sample.GetWorkers().Begin();
  sample.GetWorkers().SetListener(&listener);

  EXPECT_THROW(Grown(sample, method, {.maxLevels = 5}), Cancelled);
}

/// Splits by anything, and whether every case is in the node that it is routed to.
TEST(Growth, CountsInEachNodeTheCasesThatAreRoutedThere) {
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const count = 20 + random.Below(200);
    Sample cases{.target = {}, .hasClasses = seed % 2 == 0, .predictors = {{}, {}, {{}, true}}};
    for (std::size_t index = 0; index < count; ++index) {
      cases.target.push_back(random.Below(3));
      for (Sample::Predictor& predictor : cases.predictors) {
        predictor.values.push_back(random.Below(6) == 0 ? kMissing : random.Below(12));
      }
      cases.weights.push_back(random.Multiple(0.5, 6));
    }
    PreparedSample sample(cases, seed % 3 == 0 ? Form::kSorted : Form::kAsItComes);
    auto const draw = [&](CaseLists const&, GrowingNode const&) -> RuleList {
      std::uint32_t const predictor = random.Below(3);
      if (predictor < 2) {
        return One(CutAt(static_cast<int>(predictor), random.Below(11) + 0.5));
      }
      auto rule = std::make_unique<NSplitRule>(2, 12);
      for (int code = 0; code < 12; ++code)
        rule->SetCatMapping(code, code < 2 ? code : static_cast<int>(random.Below(3)) - 1);
      return One(std::move(rule));
    };
    ScriptedMethod method(draw, draw);

    Grown const grown(sample, method, {.maxLevels = 4});

    IndexedTree const tree(*grown.root);
    RoutedCases const routed(tree, sample.GetData(), AllCases(sample.GetData()),
                             sample.GetWorkers());
    for (std::size_t position = 0; position < tree.GetNumNodes(); ++position) {
      SCOPED_TRACE(position);
      NodeImp const& node = tree.GetNode(position);
      double weight = 0.0;
      std::set<double> codes;
      for (std::uint32_t const index : routed.CasesOf(position)) {
        weight += cases.weights[index];
        double const value = sample.GetData().ValueOf(2, index);
        if (value != kMissing) codes.insert(value);
      }
      ASSERT_EQ(node.GetUnweightedNodeSize(TrainingSample),
                static_cast<double>(routed.CasesOf(position).size()));
      ASSERT_EQ(node.GetNodeSize(TrainingSample), weight);
      int numCodes = 0;
      ASSERT_TRUE(node.GetNumPredictorValues(2, &numCodes));
      ASSERT_EQ(static_cast<std::size_t>(numCodes), codes.size());
    }
  }
}

}  // namespace
}  // namespace tree::grow
