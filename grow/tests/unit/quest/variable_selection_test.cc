#include "quest/variable_selection.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace tree::grow {
namespace {

PredictorTests Ordered(double p, double pOfLevene) {
  return {true, true, std::log(p), std::log(pOfLevene)};
}
PredictorTests Nominal(double p) { return {true, false, std::log(p), 0.0}; }
PredictorTests Unused() { return {false, true, -1000.0, -1000.0}; }

TEST(SelectPredictor, TakesTheLeastPValueThatIsSignificant) {
  std::vector<PredictorTests> const tests = {Ordered(0.02, 1e-9), Nominal(0.012), Ordered(0.5, 0.5),
                                             Ordered(0.3, 0.9)};

  SelectedPredictor const selected = SelectPredictor(tests, 0.05);

  // 0.012 < 0.05 / 4
  EXPECT_TRUE(IsSelectedByMeans(tests, 0.05));
  EXPECT_EQ(selected.predictor, 1U);
  EXPECT_FALSE(selected.byLevene);
  EXPECT_NEAR(selected.adjustedLogP, std::log(4.0 * 0.012), 1e-14);
}

TEST(SelectPredictor, AsksForSpreadWhereNoMeansDiffer) {
  // 0.013 is not below 0.05 / 4, but 0.007 is below 0.05 / (4 + 3).
  std::vector<PredictorTests> const tests = {Ordered(0.02, 0.5), Nominal(0.013),
                                             Ordered(0.5, 0.007), Ordered(0.3, 0.9)};

  SelectedPredictor const selected = SelectPredictor(tests, 0.05);

  EXPECT_FALSE(IsSelectedByMeans(tests, 0.05));
  EXPECT_EQ(selected.predictor, 2U);
  EXPECT_TRUE(selected.byLevene);
  EXPECT_NEAR(selected.adjustedLogP, std::log(7.0 * 0.007), 1e-14);
}

TEST(SelectPredictor, TakesTheLeastPValueOfTheFirstTestsWhereNothingIsSignificant) {
  std::vector<PredictorTests> const tests = {Ordered(0.02, 0.5), Nominal(0.013),
                                             Ordered(0.5, 0.0072), Ordered(0.3, 0.9)};

  SelectedPredictor const selected = SelectPredictor(tests, 0.05);

  EXPECT_EQ(selected.predictor, 1U);
  EXPECT_FALSE(selected.byLevene);
}

TEST(SelectPredictor, CountsOnlyPredictorsThatAreUsed) {
  std::vector<PredictorTests> const tests = {Unused(), Nominal(0.04), Unused()};

  SelectedPredictor const selected = SelectPredictor(tests, 0.05);

  EXPECT_TRUE(IsSelectedByMeans(tests, 0.05));
  EXPECT_EQ(selected.predictor, 1U);
  EXPECT_NEAR(selected.adjustedLogP, std::log(0.04), 1e-14);
}

TEST(SelectPredictor, TakesTheFirstOfEqualOnes) {
  std::vector<PredictorTests> const means = {Nominal(0.3), Ordered(0.001, 0.5), Nominal(0.001)};
  std::vector<PredictorTests> const spread = {Nominal(0.3), Ordered(0.9, 1e-6), Ordered(0.8, 1e-6)};

  EXPECT_EQ(SelectPredictor(means, 0.05).predictor, 1U);
  EXPECT_EQ(SelectPredictor(spread, 0.05).predictor, 1U);
}

TEST(SelectPredictor, NeverFindsAProbabilityAboveOne) {
  std::vector<PredictorTests> const tests = {Nominal(0.9), Nominal(0.8)};

  EXPECT_EQ(SelectPredictor(tests, 0.05).adjustedLogP, 0.0);
}

TEST(SelectPredictor, TakesAnyLevel) {
  std::vector<PredictorTests> const tests = {Ordered(0.5, 1e-9), Nominal(0.3)};

  // Nothing is below 0; everything is below 2.
  for (double const alpha : {0.0, -1.0, std::nan("")}) {
    EXPECT_FALSE(IsSelectedByMeans(tests, alpha));
    EXPECT_EQ(SelectPredictor(tests, alpha).predictor, 1U);
    EXPECT_FALSE(SelectPredictor(tests, alpha).byLevene);
  }
  EXPECT_TRUE(IsSelectedByMeans(tests, 2.0));
}

TEST(IsSelectedByMeans, IsFalseWithoutPredictors) {
  EXPECT_FALSE(IsSelectedByMeans(std::vector<PredictorTests>{}, 0.05));
  EXPECT_FALSE(IsSelectedByMeans(std::vector<PredictorTests>{Unused()}, 0.05));
}

}  // namespace
}  // namespace tree::grow
