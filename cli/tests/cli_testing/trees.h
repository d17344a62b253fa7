#ifndef TREE_CLI_TESTS_CLI_TESTING_TREES_H_
#define TREE_CLI_TESTS_CLI_TESTING_TREES_H_

#include <memory>
#include <utility>

#include "output/names.h"
#include "testing/tree_builder.h"
#include "tree/grow/data_set.h"
#include "tree/grow/split_statistics.h"
#include "tree/nodes.h"
#include "tree/settings.h"
#include "tree/split_rules.h"

// Trees of penguins: what is printed of them, drawn and written can be worked out by hand.

namespace tree::cli::testing {

inline constexpr int kFlipper = 0;
inline constexpr int kIsland = 1;  // Biscoe, Dream, Torgersen
inline constexpr int kSize = 2;    // small, medium, large

inline TreeNames PenguinNames() {
  return {{"species", {"Adelie", "Gentoo"}},
          {{"flipper", {}},
           {"island", {"Biscoe", "Dream", "Torgersen"}},
           {"size", {"small", "medium", "large"}}}};
}

/// The same without classes: the target is the mass in grams.
inline TreeNames MassNames() {
  TreeNames names = PenguinNames();
  names.target = {"mass"};
  return names;
}

/// Values up to the cut to child 0, others to child 1.
inline std::unique_ptr<OSplitRule> CutAt(int predictor, double cut) {
  auto rule = std::make_unique<OSplitRule>(systemMissingValue(), predictor);
  rule->SetCutPoint(cut);
  return rule;
}

/// Biscoe to child 0, Dream and Torgersen to child 1.
inline std::unique_ptr<NSplitRule> ByIsland() {
  auto rule = std::make_unique<NSplitRule>(kIsland, 3);
  rule->SetCatMapping(0, 0);
  rule->SetCatMapping(1, 1);
  rule->SetCatMapping(2, 1);
  return rule;
}

template <class Rule>
std::unique_ptr<SplitRuleImp> With(std::unique_ptr<Rule> rule, StatisticFlag flag,
                                   double statistic) {
  rule->SetStatistic(flag, statistic);
  return rule;
}

/// Five nodes: 0 (100 cases) over 1 (60) and 2 (40, terminal), 1 over 3 (50) and 4 (10).
inline std::unique_ptr<NodeImp> ClassTree() {
  using tree::testing::ANode;
  return ANode(0)
      .SplitBy(With(CutAt(kFlipper, 206.5), grow::SplitImprovement, 0.25),
               ANode(1)
                   .SplitBy(With(ByIsland(), grow::SplitImprovement, 0.0625),
                            ANode(3).Classes({50.0, 0.0}, 0), ANode(4).Classes({4.0, 6.0}, 1))
                   .Dumb(0, 0.8125)
                   .Classes({54.0, 6.0}, 0),
               ANode(2).Classes({6.0, 34.0}, 1))
      .Dumb(0, 0.6)
      .Competitor(With(CutAt(kSize, 0.5), grow::SplitImprovement, 0.125))
      .Surrogate(With(ByIsland(), grow::SurrogateAssociation, 0.75))
      .Classes({60.0, 40.0}, 0)
      .Build();
}

inline tree::testing::NodeBuilder ANumberNode(unsigned int id, double count, double mean) {
  return tree::testing::ANode(id).Regression(count, mean);
}

/// Three nodes: 0 (10 cases, mean 4000) over 1 (4, mean 3250) and 2 (6, mean 4500).
inline std::unique_ptr<NodeImp> NumberTree() {
  std::unique_ptr<NodeImp> root =
      tree::testing::ANode(0)
          .SplitBy(With(CutAt(kSize, 1.5), grow::SplitImprovement, 375000.0),
                   ANumberNode(1, 4.0, 3250.0), ANumberNode(2, 6.0, 4500.0))
          .Dumb(1, 0.6)
          .Regression(10.0, 4000.0)
          .Build();
  RegInfoImp* const info = root->GetRegInfoImp(TrainingSample);
  info->SetMinimum(2700.0);
  info->SetMaximum(6300.0);
  info->SetExtendedStatistic(RegInfoImp::StoreStdDev, 801.5);
  return root;
}

/// Settings with as many predictors as the penguins have.
inline CCartSettingsImp ClassSettings() {
  CoreSettingsImp core;
  for (int index = 0; index < 3; ++index) core.AddPredictor();
  return CCartSettingsImp(core);
}

}  // namespace tree::cli::testing

#endif  // TREE_CLI_TESTS_CLI_TESTING_TREES_H_
