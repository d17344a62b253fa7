#include "growing/risk.h"

#include <cmath>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/sample.h"

namespace tree::grow {
namespace {

using Cases = std::vector<std::uint32_t>;

LossSums Of(PreparedSample const& sample, Cases const& cases, double prediction) {
  return LossSums::Of(sample.GetData(), cases, prediction);
}

PriorsImp Custom(double first, double second) {
  PriorsImp priors;
  priors.Set(0, first);
  priors.Set(1, second);
  return priors;
}

PriorsImp Shares() {
  PriorsImp priors;
  priors.Set(PriorTypeAlternate);
  return priors;
}

CostImp Costs(double ofFirst, double ofSecond) {
  CostImp costs;
  costs.Set(1, 0, ofFirst);
  costs.Set(0, 1, ofSecond);
  return costs;
}

/// Class 0: cases 0 to 3; class 1: cases 4 to 9.
Sample TenCases() { return {.target = {0, 0, 0, 0, 1, 1, 1, 1, 1, 1}}; }

/// Cases 0, 1, 2 and 4, 5 are taken for class 0, the others for class 1: one case of class 0 and
/// two cases of class 1 are mistaken.
LossSums ThreeMistakes(PreparedSample const& sample) {
  LossSums losses(2);
  losses += Of(sample, {0, 1, 2, 4, 5}, 0.0);
  losses += Of(sample, {3, 6, 7, 8, 9}, 1.0);
  return losses;
}

TEST(RiskModel, IsTheMeanCostWherePriorsAreShares) {
  PreparedSample const sample(TenCases());
  ClassModel const classes(Shares(), Costs(1.0, 4.0), {4.0, 6.0});

  RiskEstimate const estimate = RiskModel(classes, true).Estimate(ThreeMistakes(sample));

  // One mistake costs 1, two cost 4: the mean is 0.9, that of the squares 33 / 10.
  EXPECT_NEAR(estimate.risk, 0.9, 1e-12);
  EXPECT_NEAR(estimate.stdError, std::sqrt((3.3 - 0.81) / 10.0), 1e-12);
}

TEST(RiskModel, WeighsTheRisksOfTheClassesByTheirPriors) {
  PreparedSample const sample(TenCases());
  ClassModel const classes(Custom(0.8, 0.2), Costs(1.0, 3.0), {4.0, 6.0});

  RiskEstimate const estimate = RiskModel(classes, false).Estimate(ThreeMistakes(sample));

  // Class 0: a quarter costs 1; class 1: a third costs 3.
  EXPECT_NEAR(estimate.risk, 0.8 * 0.25 + 0.2 * 1.0, 1e-12);
  double const first = 0.64 * (0.25 - 0.0625) / 4.0;
  double const second = 0.04 * (3.0 - 1.0) / 6.0;
  EXPECT_NEAR(estimate.stdError, std::sqrt(first + second), 1e-12);
}

TEST(RiskModel, IsTheSameBothWaysWhereTheSampleHasThePriors) {
  PreparedSample const sample(TenCases());
  ClassModel const classes(Custom(0.4, 0.6), Costs(2.0, 3.0), {4.0, 6.0});
  LossSums const losses = ThreeMistakes(sample);

  EXPECT_NEAR(RiskModel(classes, true).Estimate(losses).risk,
              RiskModel(classes, false).Estimate(losses).risk, 1e-12);
}

TEST(RiskModel, LeavesOutClassesThatTheSampleLacks) {
  PreparedSample const sample(TenCases());
  ClassModel const classes(Custom(0.8, 0.2), Costs(1.0, 3.0), {4.0, 6.0});

  RiskEstimate const estimate = RiskModel(classes, false).Estimate(Of(sample, {0, 1}, 1.0));

  EXPECT_NEAR(estimate.risk, 0.8, 1e-12);
  EXPECT_EQ(estimate.stdError, 0.0) << "all cases cost the same";
}

TEST(RiskModel, CountsRepeatedCases) {
  // Case 0 stands for three, case 1 for one; both weigh as much.
  PreparedSample const sample(
      {.target = {0.0, 1.0}, .weights = {3.0, 1.0}, .frequencies = {3.0, 1.0}});
  ClassModel const classes(Shares(), CostImp(), {3.0, 1.0});

  RiskEstimate const estimate = RiskModel(classes, true).Estimate(Of(sample, {0, 1}, 0.0));

  EXPECT_NEAR(estimate.risk, 0.25, 1e-12);
  EXPECT_NEAR(estimate.stdError, std::sqrt(0.25 * 0.75 / 4.0), 1e-12);
}

TEST(RiskModel, LetsWeightsWeighMeansAndNotCountCases) {
  PreparedSample const sample({.target = {0.0, 1.0}, .weights = {7.5, 2.5}});
  ClassModel const shares(Shares(), CostImp(), {7.5, 2.5});
  ClassModel const even(Custom(0.5, 0.5), CostImp(), {7.5, 2.5});

  EXPECT_NEAR(RiskModel(shares, true).Estimate(Of(sample, {0, 1}, 0.0)).risk, 0.25, 1e-12);
  EXPECT_NEAR(RiskModel(shares, true).Estimate(Of(sample, {0, 1}, 0.0)).stdError,
              std::sqrt(0.25 * 0.75 / 2.0), 1e-12);
  EXPECT_NEAR(RiskModel(even, false).Estimate(Of(sample, {0, 1}, 0.0)).risk, 0.5, 1e-12);
}

TEST(RiskModel, IsTheMeanSquaredErrorOfNumbers) {
  PreparedSample const sample({.target = {1.0, 3.0, 8.0}, .hasClasses = false});

  LossSums losses(0);
  losses += Of(sample, {0, 1}, 2.0);
  losses += Of(sample, {2}, 6.0);
  RiskEstimate const estimate = RiskModel().Estimate(losses);

  // Squares 1, 1 and 4; fourth powers 1, 1 and 16.
  EXPECT_NEAR(estimate.risk, 2.0, 1e-12);
  EXPECT_NEAR(estimate.stdError, std::sqrt((6.0 - 4.0) / 3.0), 1e-12);
}

TEST(RiskModel, WeighsTheErrorsOfNumbers) {
  PreparedSample const sample({.target = {1.0, 3.0},
                               .hasClasses = false,
                               .weights = {0.5, 1.5},
                               .frequencies = {1.0, 4.0}});

  RiskEstimate const estimate = RiskModel().Estimate(Of(sample, {0, 1}, 1.0));

  // Squares 0 and 4, weighing 1/4 and 3/4; five cases.
  EXPECT_NEAR(estimate.risk, 3.0, 1e-12);
  EXPECT_NEAR(estimate.stdError, std::sqrt((12.0 - 9.0) / 5.0), 1e-12);
}

TEST(RiskModel, IsZeroWithoutCases) {
  PreparedSample const sample(TenCases());
  ClassModel const classes(Shares(), CostImp(), {4.0, 6.0});

  EXPECT_EQ(RiskModel(classes, true).Estimate(LossSums(2)).risk, 0.0);
  EXPECT_EQ(RiskModel(classes, false).Estimate(LossSums(2)).stdError, 0.0);
  EXPECT_EQ(RiskModel().Estimate(LossSums(0)).risk, 0.0);
  EXPECT_EQ(RiskModel(classes, false).Estimate(Of(sample, {}, 1.0)).risk, 0.0);
}

TEST(RiskModel, IsZeroWithoutMistakes) {
  PreparedSample const classSample(TenCases());
  PreparedSample const numberSample({.target = {2.0, 2.0}, .hasClasses = false});
  ClassModel const classes(Shares(), CostImp(), {4.0, 6.0});

  RiskEstimate const ofClasses =
      RiskModel(classes, true).Estimate(Of(classSample, {0, 1, 2, 3}, 0.0));
  RiskEstimate const ofNumbers = RiskModel().Estimate(Of(numberSample, {0, 1}, 2.0));

  EXPECT_EQ(ofClasses.risk, 0.0);
  EXPECT_EQ(ofClasses.stdError, 0.0);
  EXPECT_EQ(ofNumbers.risk, 0.0);
  EXPECT_EQ(ofNumbers.stdError, 0.0);
}

TEST(LossSums, AreTakenBackAsTheyWereAdded) {
  PreparedSample const sample(TenCases());
  ClassModel const classes(Custom(0.8, 0.2), Costs(1.0, 3.0), {4.0, 6.0});
  LossSums losses = ThreeMistakes(sample);
  RiskEstimate const before = RiskModel(classes, false).Estimate(losses);

  losses += Of(sample, {0, 9}, 1.0);
  losses -= Of(sample, {0, 9}, 1.0);

  RiskEstimate const after = RiskModel(classes, false).Estimate(losses);
  EXPECT_EQ(after.risk, before.risk);
  EXPECT_EQ(after.stdError, before.stdError);
}

TEST(LossSums, OfNumbersAreTakenBack) {
  PreparedSample const sample({.target = {1.0, 3.0, 8.0}, .hasClasses = false});
  LossSums losses = Of(sample, {0, 1, 2}, 4.0);

  losses -= Of(sample, {2}, 4.0);

  // Squares 9 and 1; fourth powers 81 and 1.
  EXPECT_NEAR(RiskModel().Estimate(losses).risk, 5.0, 1e-12);
  EXPECT_NEAR(RiskModel().Estimate(losses).stdError, std::sqrt((41.0 - 25.0) / 2.0), 1e-12);
}

}  // namespace
}  // namespace tree::grow
