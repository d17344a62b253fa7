#include "quest/normal_split.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::IsEmpty;

/// The first choice.
double SplitOf(std::vector<ClassMoments> const& classes) {
  std::vector<double> const points = NormalSplitPoints(classes);
  EXPECT_FALSE(points.empty());
  return points.empty() ? std::nan("") : points[0];
}

TEST(NormalSplitPoints, HaveTheMiddleBetweenTheMeansForSecondChoice) {
  std::vector<double> const points = NormalSplitPoints(
      std::vector<ClassMoments>{{0.25, 1.0, 0.3}, {0.25, 2.0, 0.3}, {0.5, 8.0, 4.0}});

  ASSERT_EQ(points.size(), 2U);
  EXPECT_LT(points[0], 4.0);
  EXPECT_DOUBLE_EQ(points[1], 4.75);
}

TEST(NormalSplitPoints, AreOneWhereTheBoundaryIsInTheMiddle) {
  EXPECT_EQ(NormalSplitPoints(std::vector<ClassMoments>{{1.0, 2.0, 0.0}, {1.0, 4.0, 0.0}}).size(),
            1U);
}

TEST(NormalSplitPoints, AreInTheMiddleOfClassesThatAreAlike) {
  EXPECT_DOUBLE_EQ(SplitOf({{0.5, 2.0, 1.5}, {0.5, 8.0, 1.5}}), 5.0);
}

TEST(NormalSplitPoints, MoveAwayFromTheMoreProbableOfClassesThatVaryAlike) {
  // (m1 + m2) / 2 + s^2 log(p1 / p2) / (m2 - m1)
  EXPECT_NEAR(SplitOf({{0.6, 2.0, 1.5}, {0.3, 8.0, 1.5}}), 5.0 + 1.5 * std::log(2.0) / 6.0, 1e-12);
}

TEST(NormalSplitPoints, AreBetweenTheMeansNearerToTheOneThatVariesLess) {
  // exp(-x^2 / 2) = exp(-(x - 3)^2 / 8) / 2: 3 x^2 + 6 x - 9 - 8 log 2 = 0.
  double const expected = -1.0 + std::sqrt(1.0 + 3.0 + 8.0 / 3.0 * std::log(2.0));

  EXPECT_NEAR(SplitOf({{1.0, 0.0, 1.0}, {1.0, 3.0, 4.0}}), expected, 1e-12);
  EXPECT_NEAR(SplitOf({{1.0, 0.0, 1.0}, {1.0, -3.0, 4.0}}), -expected, 1e-12);
}

TEST(NormalSplitPoints, DoNotDependOnTheOrderOfClasses) {
  std::vector<ClassMoments> classes = {
      {0.2, 1.0, 2.0}, {0.1, 7.0, 1.0}, {0.4, 2.0, 0.5}, {0.3, 9.0, 3.0}};
  double const expected = SplitOf(classes);

  std::reverse(classes.begin(), classes.end());

  EXPECT_NEAR(SplitOf(classes), expected, 1e-12);
}

TEST(NormalSplitPoints, MergeClassesToTheTwoThatAreNearEachOther) {
  // 1 and 2 become one of probability 0.5, mean 1.5 and variance 0.3 + 0.25, 8 the other one.
  std::vector<ClassMoments> const classes = {{0.25, 1.0, 0.3}, {0.25, 2.0, 0.3}, {0.5, 8.0, 0.55}};

  EXPECT_NEAR(SplitOf(classes), 4.75, 1e-12);
}

TEST(NormalSplitPoints, TakeProbabilitiesOnAnyScale) {
  double const expected = SplitOf({{0.2, 1.0, 2.0}, {0.8, 7.0, 1.0}});

  EXPECT_NEAR(SplitOf({{20.0, 1.0, 2.0}, {80.0, 7.0, 1.0}}), expected, 1e-12);
}

TEST(NormalSplitPoints, FollowAChangeOfUnits) {
  double const expected = SplitOf({{0.2, 1.0, 2.0}, {0.8, 7.0, 1.0}});

  EXPECT_NEAR(SplitOf({{0.2, 1e9 + 1e-3, 2e-6}, {0.8, 1e9 + 7e-3, 1e-6}}), 1e9 + 1e-3 * expected,
              1e-6);
  EXPECT_NEAR(SplitOf({{0.2, 1e100, 2e200}, {0.8, 7e100, 1e200}}) / 1e100, expected, 1e-12);
}

TEST(NormalSplitPoints, StayNextToAClassThatDoesNotVary) {
  double const nextToLow = SplitOf({{0.5, 2.0, 0.0}, {0.5, 4.0, 1.0}});
  double const nextToHigh = SplitOf({{0.5, 2.0, 1.0}, {0.5, 4.0, 0.0}});

  EXPECT_GT(nextToLow, 2.0);
  EXPECT_LT(nextToLow, 2.001);
  EXPECT_LT(nextToHigh, 4.0);
  EXPECT_GT(nextToHigh, 3.999);
  EXPECT_EQ(SplitOf({{0.9, 2.0, 0.0}, {0.1, 4.0, 0.0}}), 3.0);
}

TEST(NormalSplitPoints, AreInTheMiddleWhereOneClassIsMoreProbableEverywhere) {
  // The narrow one is so improbable that it is the less probable at its own mean.
  EXPECT_EQ(SplitOf({{0.001, 2.0, 1.0}, {0.999, 4.0, 4.0}}), 3.0);
}

TEST(NormalSplitPoints, PartClassesWithTheSameMeanByTheirSpread) {
  // exp(-x^2 / 2) = exp(-x^2 / 8) / 2, lower root.
  double const expected = -std::sqrt(8.0 / 3.0 * std::numbers::ln2);

  EXPECT_NEAR(SplitOf({{1.0, 5.0, 1.0}, {1.0, 5.0, 4.0}}), 5.0 + expected, 1e-12);
  EXPECT_NEAR(SplitOf({{1.0, 5.0, 4.0}, {1.0, 5.0, 1.0}}), 5.0 + expected, 1e-12);
}

TEST(NormalSplitPoints, SetTheMostProbableClassApartWhereAllMeansAreTheSame) {
  // 0.4 against the other two: 0.6 with variance 4.
  double const expected = SplitOf({{0.4, 5.0, 1.0}, {0.6, 5.0, 4.0}});

  EXPECT_NEAR(SplitOf({{0.3, 5.0, 4.0}, {0.4, 5.0, 1.0}, {0.3, 5.0, 4.0}}), expected, 1e-12);
}

TEST(NormalSplitPoints, AreNoneWhereNothingDiffers) {
  struct Case {
    char const* name;
    std::vector<ClassMoments> classes;
  };
  Case const cases[] = {
      {"no class", {}},
      {"one class", {{1.0, 3.0, 2.0}}},
      {"the same means and variances", {{0.5, 3.0, 2.0}, {0.5, 3.0, 2.0}}},
      {"constants", {{0.5, 3.0, 0.0}, {0.5, 3.0, 0.0}}},
      {"the same means, and the same class is likelier everywhere",
       {{0.01, 3.0, 1.0}, {0.99, 3.0, 4.0}}},
  };
  for (Case const& one : cases) {
    SCOPED_TRACE(one.name);

    EXPECT_THAT(NormalSplitPoints(one.classes), IsEmpty());
  }
}

/// The logarithm of a normal density times the probability, but for what all have.
double LogDensity(ClassMoments const& moments, double x) {
  return std::log(moments.probability) - 0.5 * std::log(moments.variance) -
         0.5 * (x - moments.mean) * (x - moments.mean) / moments.variance;
}

TEST(NormalSplitPoints, HaveBothClassesEquallyProbableAndLieBetweenTheMeansIfTheyCan) {
  int numBetween = 0;
  for (std::uint32_t seed = 1; seed <= 2000; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    ClassMoments const low{random.Multiple(0.01, 99), random.Multiple(0.1, 50),
                           std::exp(random.Multiple(0.1, 80) - 4.0)};
    ClassMoments const high{random.Multiple(0.01, 99), low.mean + random.Multiple(0.1, 50),
                            std::exp(random.Multiple(0.1, 80) - 4.0)};
    auto const excess = [&](double x) { return LogDensity(low, x) - LogDensity(high, x); };

    double const split = SplitOf({high, low});

    bool const rootBetween = excess(low.mean) > 0.0 && excess(high.mean) < 0.0;
    if (rootBetween) {
      ++numBetween;
      EXPECT_GE(split, low.mean);
      EXPECT_LE(split, high.mean);
    }
    bool const isMiddle = std::abs(split - (low.mean + high.mean) / 2.0) < 1e-12;
    if (rootBetween || !isMiddle) {
      EXPECT_NEAR(excess(split), 0.0, 1e-6 * (1.0 + std::abs(LogDensity(low, split))));
    }
  }
  EXPECT_GT(numBetween, 1000);
}

}  // namespace
}  // namespace tree::grow
