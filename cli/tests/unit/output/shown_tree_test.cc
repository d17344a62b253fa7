#include "output/shown_tree.h"

#include <cmath>
#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/trees.h"

namespace tree::cli {
namespace {

using namespace testing;  // NOLINT(google-build-using-namespace): what the trees are made of
using ::testing::ElementsAre;

TEST(ShownTree, KnowsWhatKindOfTreeItIs) {
  std::unique_ptr<NodeImp> const classes = ClassTree();
  std::unique_ptr<NodeImp> const numbers = NumberTree();
  TreeNames const names = PenguinNames();

  EXPECT_TRUE(ShownTree(*classes, names, ClassSettings()).HasClasses());
  EXPECT_FALSE(ShownTree(*numbers, names, RCartSettingsImp(CoreSettingsImp())).HasClasses());
}

TEST(ShownTree, KnowsWhetherThereIsATestSample) {
  std::unique_ptr<NodeImp> const without = ClassTree();
  std::unique_ptr<NodeImp> const with =
      tree::testing::ANode(0).Classes({3.0, 1.0}, 0).Classes({1.0, 1.0}, 0, TestSample).Build();
  TreeNames const names = PenguinNames();

  EXPECT_FALSE(ShownTree(*without, names, ClassSettings()).HasTestSample());
  EXPECT_TRUE(ShownTree(*with, names, ClassSettings()).HasTestSample());
}

TEST(ShownTree, PredictsALabelOrANumber) {
  std::unique_ptr<NodeImp> const classes = ClassTree();
  std::unique_ptr<NodeImp> const numbers = NumberTree();
  TreeNames const names = PenguinNames();

  CCartSettingsImp const forClasses = ClassSettings();
  ShownTree const ofClasses(*classes, names, forClasses);
  EXPECT_EQ(ofClasses.Prediction(*classes), "Adelie");
  EXPECT_EQ(ofClasses.Prediction(*classes->GetChild(1)), "Gentoo");
  RCartSettingsImp const forNumbers{CoreSettingsImp()};
  ShownTree const ofNumbers(*numbers, names, forNumbers);
  EXPECT_EQ(ofNumbers.Prediction(*numbers), "4000");
}

TEST(ShownTree, CountsMistakesWhereThereAreNoCosts) {
  std::unique_ptr<NodeImp> const root = ClassTree();
  TreeNames const names = PenguinNames();
  CCartSettingsImp const settings = ClassSettings();
  ShownTree const tree(*root, names, settings);

  EXPECT_EQ(tree.Loss(*root), 40.0);
  EXPECT_EQ(tree.Loss(*root->GetChild(1)), 6.0);
}

TEST(ShownTree, AddsTheCostsOfMistakesForEveryMethodThatHasThem) {
  std::unique_ptr<NodeImp> const root = ClassTree();  // 60 Adelie, 40 Gentoo, predicted Adelie
  TreeNames const names = PenguinNames();
  CCartSettingsImp cart = ClassSettings();
  CChaidSettingsImp chaid(*cart.GetCoreSettings());
  QuestSettingsImp quest(*cart.GetCoreSettings());
  for (Cost* const costs : {cart.GetCost(), chaid.GetCost(), quest.GetCost()}) {
    costs->Set(0, 1, 2.5);  // an Adelie predicted for a Gentoo
    costs->Set(1, 0, 7.0);
  }

  for (AlgSettings const* const settings : std::vector<AlgSettings const*>{&cart, &chaid, &quest}) {
    ShownTree const tree(*root, names, *settings);
    EXPECT_EQ(tree.Loss(*root), 100.0);
    EXPECT_EQ(tree.Loss(*root->GetChild(1)), 42.0);
  }
}

TEST(ShownTree, GivesTheSumOfSquaredDifferences) {
  // 1, 2 and 6, the last one of weight 2: mean 3.75, standard deviation as growers have it.
  std::unique_ptr<NodeImp> const root = tree::testing::ANode(0).Regression(4.0, 3.75).Build();
  RegInfoImp* const info = root->GetRegInfoImp(TrainingSample);
  double const squares = 2.75 * 2.75 + 1.75 * 1.75 + 2.0 * 2.25 * 2.25;
  info->SetExtendedStatistic(RegInfoImp::StoreUnweightedCount, 3.0);
  info->SetExtendedStatistic(RegInfoImp::StoreStdDev, std::sqrt(squares / 4.0 * 3.0 / 2.0));

  EXPECT_DOUBLE_EQ(ShownTree::Deviance(*root), squares);

  info->SetExtendedStatistic(RegInfoImp::StoreUnweightedCount, 1.0);
  EXPECT_EQ(ShownTree::Deviance(*root), 0.0);
}

TEST(ShownTree, GivesSizesInPercentOfTheRoot) {
  std::unique_ptr<NodeImp> const root = ClassTree();
  TreeNames const names = PenguinNames();
  CCartSettingsImp const settings = ClassSettings();
  ShownTree const tree(*root, names, settings);

  EXPECT_EQ(tree.PercentSize(*root, TrainingSample), 100.0);
  EXPECT_EQ(tree.PercentSize(*root->GetChild(1), TrainingSample), 40.0);
  EXPECT_EQ(tree.PercentSize(*root->GetChild(1), TestSample), 0.0);
}

TEST(ShownTree, GivesProbabilitiesByClass) {
  std::unique_ptr<NodeImp> const root = ClassTree();

  EXPECT_THAT(ShownTree::Probabilities(*root), ElementsAre(0.6, 0.4));
}

TEST(DepthWalk, GivesEveryNodeWithItsDepth) {
  std::unique_ptr<NodeImp> const root = ClassTree();
  std::vector<std::size_t> depths;
  std::vector<unsigned int> ids;

  DepthWalk walk(*root);
  while (Node const* const node = walk.Next()) {
    ids.push_back(node->GetId());
    depths.push_back(walk.GetDepth());
  }

  EXPECT_THAT(ids, ElementsAre(0, 1, 3, 4, 2));
  EXPECT_THAT(depths, ElementsAre(0, 1, 2, 2, 1));
}

}  // namespace
}  // namespace tree::cli
