#include "association/expected_frequencies.h"

#include <cmath>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tree::grow {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::Pointwise;

constexpr FitLimits kExact{1e-12, 10000};

/// Of a table with two columns, the odds ratio of the first two rows.
double OddsRatio(std::span<double const> cells) {
  return cells[0] * cells[3] / (cells[1] * cells[2]);
}

TEST(ExpectedFrequencies, AreProductsOfSharesWithoutWeights) {
  std::vector<double> const cells = {10.0, 20.0, 30.0, 40.0};
  ExpectedFrequencies fit(kExact);

  auto const expected = fit.FitIndependence({cells, {}, 2});

  EXPECT_THAT(expected, ElementsAre(12.0, 18.0, 28.0, 42.0));
}

TEST(ExpectedFrequencies, FitTheSumsOfRowsAndColumnsWithWeights) {
  // Weighted, the model has an odds ratio of 1: unweighted, that of the reciprocal mean weights.
  std::vector<double> const cells = {10.0, 20.0, 30.0, 40.0};
  std::vector<double> const weights = {2.0, 1.0, 0.5, 4.0};
  ExpectedFrequencies fit(kExact);

  auto const expected = fit.FitIndependence({cells, weights, 2});

  EXPECT_NEAR(expected[0] + expected[1], 30.0, 1e-9);
  EXPECT_NEAR(expected[2] + expected[3], 70.0, 1e-9);
  EXPECT_NEAR(expected[0] + expected[2], 40.0, 1e-9);
  EXPECT_NEAR(expected[1] + expected[3], 60.0, 1e-9);
  EXPECT_NEAR(OddsRatio(expected), (1.0 / 2.0) * (1.0 / 4.0) / ((1.0 / 1.0) * (1.0 / 0.5)), 1e-9);
}

TEST(ExpectedFrequencies, TakeWeightsOnAnyScale) {
  std::vector<double> const cells = {10.0, 20.0, 30.0, 40.0, 7.0, 9.0};
  std::vector<double> const weights = {2.0, 1.0, 0.5, 4.0, 1.0, 3.0};
  std::vector<double> scaled = weights;
  for (double& weight : scaled) weight *= 1024.0;
  ExpectedFrequencies fit(kExact);
  auto const borrowed = fit.FitIndependence({cells, weights, 2});
  std::vector<double> const expected(borrowed.begin(), borrowed.end());

  auto const same = fit.FitIndependence({cells, scaled, 2});

  EXPECT_THAT(same, Pointwise(DoubleNear(1e-9), expected));
}

TEST(ExpectedFrequencies, StopAtTheLastIteration) {
  std::vector<double> const cells = {10.0, 20.0, 30.0, 40.0};
  std::vector<double> const weights = {2.0, 1.0, 0.5, 4.0};
  ExpectedFrequencies none({1e-12, 0});
  ExpectedFrequencies one({1e-12, 1});

  auto const unfitted = none.FitIndependence({cells, weights, 2});
  auto const fittedOnce = one.FitIndependence({cells, weights, 2});

  EXPECT_THAT(unfitted, ElementsAre(6.0, 18.0, 56.0, 10.5));
  EXPECT_NEAR(fittedOnce[0] + fittedOnce[2], 40.0, 1e-12);         // columns last
  EXPECT_GT(std::abs(fittedOnce[0] + fittedOnce[1] - 30.0), 0.1);  // rows not yet
}

TEST(ExpectedFrequencies, StopWhereNothingChangesByMoreThanEpsilon) {
  std::vector<double> const cells = {10.0, 20.0, 30.0, 40.0};
  std::vector<double> const weights = {2.0, 1.0, 0.5, 4.0};
  ExpectedFrequencies coarse({1000.0, 10000});
  ExpectedFrequencies one({1e-12, 1});

  auto const expected = coarse.FitIndependence({cells, weights, 2});

  EXPECT_THAT(expected, Pointwise(DoubleNear(0.0), one.FitIndependence({cells, weights, 2})));
}

TEST(ExpectedFrequencies, ReproduceATableOfTwoColumnsByRowEffects) {
  std::vector<double> const cells = {10.0, 20.0, 30.0, 40.0, 5.0, 900.0};
  std::vector<double> const scores = {3.0, 8.0};
  ExpectedFrequencies fit(kExact);

  auto const expected = fit.FitRowEffects({cells, {}, 2}, scores);

  EXPECT_THAT(expected, Pointwise(DoubleNear(1e-8), cells));
}

TEST(ExpectedFrequencies, FitMeanScoresByRowEffects) {
  std::vector<double> const cells = {20.0, 24.0, 80.0, 82.0,  22.0, 38.0, 104.0, 125.0,
                                     13.0, 28.0, 81.0, 113.0, 7.0,  18.0, 54.0,  92.0};
  std::vector<double> const scores = {1.0, 2.0, 4.0, 5.0};
  ExpectedFrequencies fit(kExact);

  auto const expected = fit.FitRowEffects({cells, {}, 4}, scores);

  for (std::size_t row = 0; row < 4; ++row) {
    SCOPED_TRACE(row);
    double missedSize = 0.0;
    double missedScore = 0.0;
    for (std::size_t column = 0; column < 4; ++column) {
      std::size_t const index = 4 * row + column;
      missedSize += cells[index] - expected[index];
      missedScore += scores[column] * (cells[index] - expected[index]);
      // In each row the odds to the first one are those of the scores.
      double const step =
          std::log(expected[index] / expected[column]) - std::log(expected[4 * row] / expected[0]);
      double const whole =
          std::log(expected[4 * row + 3] / expected[3]) - std::log(expected[4 * row] / expected[0]);
      EXPECT_NEAR(step, whole * (scores[column] - 1.0) / 4.0, 1e-9);
    }
    EXPECT_NEAR(missedSize, 0.0, 1e-9);
    EXPECT_NEAR(missedScore, 0.0, 1e-8);
  }
}

TEST(ExpectedFrequencies, ConvergeByRowEffectsWhereRowsHaveOnlyExtremes) {
  std::vector<double> const cells = {1000.0, 0.0, 0.0, 0.0, 0.0, 3.0, 500.0, 2.0, 500.0};
  std::vector<double> const scores = {0.0, 0.001, 100.0};
  ExpectedFrequencies fit({1e-6, 1000});

  auto const expected = fit.FitRowEffects({cells, {}, 3}, scores);

  for (std::size_t index = 0; index < cells.size(); ++index) {
    EXPECT_TRUE(std::isfinite(expected[index]));
    EXPECT_GE(expected[index], 0.0);
  }
  EXPECT_NEAR(expected[0] + expected[1], 1000.0, 1e-2);
  EXPECT_NEAR(expected[5], 3.0, 1e-2);
}

TEST(ExpectedFrequencies, TakeScoresOnAnyScale) {
  std::vector<double> const cells = {20.0, 24.0, 80.0, 22.0, 104.0, 125.0};
  ExpectedFrequencies fit(kExact);
  auto const borrowed = fit.FitRowEffects({cells, {}, 3}, std::vector{0.0, 1.0, 3.0});
  std::vector<double> const expected(borrowed.begin(), borrowed.end());

  auto const same = fit.FitRowEffects({cells, {}, 3}, std::vector{-1e308, -1e308 / 3.0, 1e308});

  EXPECT_THAT(same, Pointwise(DoubleNear(1e-9), expected));
}

}  // namespace
}  // namespace tree::grow
