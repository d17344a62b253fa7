#include "quest/discriminant_coordinates.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pointwise;

TEST(DiscriminantCoordinates, OfTwoClassesAreTheirSharesStandardised) {
  // Shares of the second class 1/4, 1/2, 3/4 in categories of 4, 8 and 4.
  std::vector<double> const weights = {3.0, 1.0, 4.0, 4.0, 1.0, 3.0};

  std::vector<double> const coordinates = DiscriminantCoordinates(weights, 2);

  // Mean 0, variance (4 + 4) / 16 x^2 = 1; all that is far is as far, so either end may be
  // positive.
  double const end = std::sqrt(2.0);
  double const sign = coordinates[2] > 0.0 ? 1.0 : -1.0;
  EXPECT_THAT(coordinates, ElementsAre(DoubleNear(-sign * end, 1e-12), DoubleNear(0.0, 1e-12),
                                       DoubleNear(sign * end, 1e-12)));
}

TEST(DiscriminantCoordinates, HaveThePositiveSignWhereTheyAreFarthest) {
  std::vector<double> const weights = {1.0, 9.0, 9.0, 1.0, 8.0, 1.0, 9.0, 2.0};

  EXPECT_GT(DiscriminantCoordinates(weights, 2)[0], 1.0);
}

TEST(DiscriminantCoordinates, AreNoneWhereAllCategoriesHaveTheSameShares) {
  EXPECT_THAT(DiscriminantCoordinates(std::vector{1.0, 2.0, 3.0, 6.0, 0.5, 1.0}, 2), IsEmpty());
  EXPECT_THAT(DiscriminantCoordinates(std::vector{0.1, 0.7, 0.3, 2.1}, 2), IsEmpty());
  EXPECT_THAT(DiscriminantCoordinates(std::vector{5.0, 0.0, 3.0, 0.0}, 2), IsEmpty());
}

TEST(DiscriminantCoordinates, LeaveClassesWithoutWeightAside) {
  std::vector<double> const weights = {3.0, 1.0, 4.0, 4.0, 1.0, 9.0};
  std::vector<double> const padded = {3.0, 0.0, 1.0, 4.0, 0.0, 4.0, 1.0, 0.0, 9.0};

  EXPECT_THAT(DiscriminantCoordinates(padded, 3),
              Pointwise(DoubleNear(1e-12), DiscriminantCoordinates(weights, 2)));
}

struct Table {
  std::vector<double> weights;  // [category][class]
  std::size_t numClasses = 0;
};

Table RandomTable(RandomNumbers& random) {
  Table table;
  table.numClasses = 2 + random.Below(4);
  table.weights.resize(table.numClasses * (2 + random.Below(8)));
  for (double& weight : table.weights) weight = random.Multiple(0.125, 300);
  return table;
}

/// The share of the variance of these scores that is between classes.
double SeparationOf(Table const& table, std::vector<double> const& scores) {
  std::vector<double> sizes(table.numClasses, 0.0);
  std::vector<double> sums(table.numClasses, 0.0);
  double squares = 0.0;
  for (std::size_t row = 0; row < scores.size(); ++row) {
    for (std::size_t j = 0; j < table.numClasses; ++j) {
      double const weight = table.weights[row * table.numClasses + j];
      sizes[j] += weight;
      sums[j] += weight * scores[row];
      squares += weight * scores[row] * scores[row];
    }
  }
  double const size = std::accumulate(sizes.begin(), sizes.end(), 0.0);
  double const sum = std::accumulate(sums.begin(), sums.end(), 0.0);
  double between = -sum * sum / size;
  for (std::size_t j = 0; j < table.numClasses; ++j) between += sums[j] * sums[j] / sizes[j];
  return between / (squares - sum * sum / size);
}

TEST(DiscriminantCoordinates, SeparateClassesBetterThanAnyScoresNearThem) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    Table const table = RandomTable(random);

    std::vector<double> const coordinates =
        DiscriminantCoordinates(table.weights, table.numClasses);

    double const separation = SeparationOf(table, coordinates);
    for (std::size_t row = 0; row < coordinates.size(); ++row) {
      for (double const step : {-0.5, -0.01, 0.01, 0.5}) {
        std::vector<double> moved = coordinates;
        moved[row] += step;
        EXPECT_LE(SeparationOf(table, moved), separation + 1e-10);
      }
    }
    for (int trial = 0; trial < 50; ++trial) {
      std::vector<double> scores(coordinates.size());
      for (double& score : scores) score = random.Multiple(1.0, 1000);
      scores[0] += 0.5;
      EXPECT_LE(SeparationOf(table, scores), separation + 1e-10);
    }
  }
}

TEST(DiscriminantCoordinates, HaveMeanZeroAndVarianceOne) {
  for (std::uint32_t seed = 1; seed <= 50; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    Table const table = RandomTable(random);

    std::vector<double> const coordinates =
        DiscriminantCoordinates(table.weights, table.numClasses);

    double size = 0.0;
    double sum = 0.0;
    double squares = 0.0;
    for (std::size_t row = 0; row < coordinates.size(); ++row) {
      double const* const begin = table.weights.data() + row * table.numClasses;
      double const weight = std::accumulate(begin, begin + table.numClasses, 0.0);
      size += weight;
      sum += weight * coordinates[row];
      squares += weight * coordinates[row] * coordinates[row];
    }
    EXPECT_NEAR(sum / size, 0.0, 1e-10);
    EXPECT_NEAR(squares / size, 1.0, 1e-10);
  }
}

TEST(DiscriminantCoordinates, FollowTheirCategories) {
  std::vector<double> const weights = {7.0, 1.0, 2.0, 4.0, 4.0, 9.0, 1.0, 9.0, 3.0, 5.0, 5.0, 1.0};
  std::vector<double> const turned = {5.0, 5.0, 1.0, 1.0, 9.0, 3.0, 4.0, 4.0, 9.0, 7.0, 1.0, 2.0};
  std::vector<double> expected = DiscriminantCoordinates(weights, 3);

  std::reverse(expected.begin(), expected.end());

  EXPECT_THAT(DiscriminantCoordinates(turned, 3), Pointwise(DoubleNear(1e-10), expected));
}

TEST(DiscriminantCoordinates, DoNotDependOnTheScaleOfWeights) {
  std::vector<double> const weights = {7.0, 1.0, 2.0, 4.0, 4.0, 9.0, 1.0, 9.0, 3.0};
  std::vector<double> scaled = weights;
  for (double& weight : scaled) weight *= 1e-30;

  EXPECT_THAT(DiscriminantCoordinates(scaled, 3),
              Pointwise(DoubleNear(1e-12), DiscriminantCoordinates(weights, 3)));
}

}  // namespace
}  // namespace tree::grow
