#include "growing/class_priors.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tree::grow {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;

auto Near(double value) { return DoubleNear(value, 1e-12); }

PriorsImp Custom(std::vector<double> const& values) {
  PriorsImp priors;
  for (int index = 0; index < static_cast<int>(values.size()); ++index) {
    priors.Set(index, values[static_cast<std::size_t>(index)]);
  }
  return priors;
}

TEST(CostOf, ReadsPredictedClassesAsRowsAndObservedOnesAsColumns) {
  CostImp costs;
  costs.Set(0, 1, 5.0);
  costs.Set(1, 0, 2.0);

  EXPECT_EQ(CostOf(costs, 0, 1), 5.0);
  EXPECT_EQ(CostOf(costs, 1, 0), 2.0);
}

TEST(CostOf, TakesTheDefaultForWhatTheMatrixLacks) {
  CostImp costs;
  costs.Set(0, 1, 5.0);

  EXPECT_EQ(CostOf(costs, 0, 2), 1.0);
  EXPECT_EQ(CostOf(costs, 2, 1), 1.0);
  EXPECT_EQ(CostOf(costs, 2, 2), 0.0);
  EXPECT_EQ(CostOf(CostImp(), 0, 1), 1.0);
}

TEST(FindPriors, MakesAllClassesAlikeByDefault) {
  EXPECT_THAT(FindPriors(PriorsImp(), {10.0, 30.0}), ElementsAre(0.5, 0.5));
}

TEST(FindPriors, TakesTheSharesOfTheTrainingCases) {
  PriorsImp priors;
  priors.Set(PriorTypeAlternate);

  EXPECT_THAT(FindPriors(priors, {10.0, 30.0}), ElementsAre(0.25, 0.75));
}

TEST(FindPriors, TakesCustomValuesAndNormsThem) {
  EXPECT_THAT(FindPriors(Custom({0.2, 0.6}), {10.0, 30.0}), ElementsAre(Near(0.25), Near(0.75)));
}

TEST(FindPriors, TakesZeroForClassesThatNobodySet) {
  EXPECT_THAT(FindPriors(Custom({1.0}), {10.0, 30.0}), ElementsAre(1.0, 0.0));
}

TEST(FindPriors, LeavesOutTheCostsEvenWhereAlteredPriorsAreWanted) {
  PriorsImp priors = Custom({0.2, 0.8});
  priors.AlterValues(true);

  EXPECT_THAT(FindPriors(priors, {10.0, 10.0}), ElementsAre(Near(0.2), Near(0.8)));
}

TEST(FindPriors, LeavesNothingToClassesWithoutCases) {
  EXPECT_THAT(FindPriors(PriorsImp(), {10.0, 0.0, 30.0}), ElementsAre(0.5, 0.0, 0.5));
  EXPECT_THAT(FindPriors(Custom({0.2, 0.5, 0.3}), {10.0, 0.0, 30.0}),
              ElementsAre(Near(0.4), 0.0, Near(0.6)));
}

TEST(FindPriors, MakesClassesAlikeWhereNoneIsLeftAPrior) {
  EXPECT_THAT(FindPriors(Custom({0.0, 1.0, 0.0}), {10.0, 0.0, 30.0}), ElementsAre(0.5, 0.0, 0.5));
}

TEST(AlterPriors, WeighsByTheCostsOfEachColumn) {
  CostImp costs;
  costs.Set(1, 0, 3.0);  // a case of class 0 taken for class 1
  costs.Set(0, 1, 1.0);

  EXPECT_THAT(AlterPriors({0.5, 0.5}, costs), ElementsAre(0.75, 0.25));
}

TEST(AlterPriors, TakesTheDefaultForCostsThatTheMatrixLacks) {
  CostImp costs;
  costs.Set(1, 0, 5.0);

  // Columns add up to 5 + 1, 1 + 1 and 1 + 1.
  EXPECT_THAT(AlterPriors({0.2, 0.3, 0.5}, costs),
              ElementsAre(Near(1.2 / 2.8), Near(0.6 / 2.8), Near(1.0 / 2.8)));
}

TEST(AlterPriors, AltersAsThePriorsThemselvesDo) {
  CostImp costs;
  costs.SetDefault(CostImp::CostMatrixMain, 3);
  costs.Set(0, 1, 4.0);
  costs.Set(2, 1, 0.5);
  costs.Set(1, 2, 7.0);
  PriorsImp priors = Custom({0.5, 0.2, 0.3});
  priors.AlterValues(true);

  std::vector<double> const altered = AlterPriors({0.5, 0.2, 0.3}, costs);

  ASSERT_TRUE(priors.ComputeAltered(costs));
  EXPECT_THAT(altered, ElementsAre(Near(priors.GetAltered(0)), Near(priors.GetAltered(1)),
                                   Near(priors.GetAltered(2))));
}

TEST(AlterPriors, LeavesPriorsAsTheyAreWhereNothingCosts) {
  CostImp free;
  free.Set(0, 1, 0.0);
  free.Set(1, 0, 0.0);

  EXPECT_THAT(AlterPriors({0.25, 0.75}, free), ElementsAre(0.25, 0.75));
}

}  // namespace
}  // namespace tree::grow
