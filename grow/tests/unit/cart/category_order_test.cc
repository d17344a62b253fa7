#include "cart/category_order.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;

auto Near(double value) { return DoubleNear(value, 1e-12); }

TEST(PrincipalScores, FollowTheSharesOfTwoClasses) {
  // Shares of the second class: 1/4, 3/4, 1/2.
  std::vector<double> const scores = PrincipalScores({3.0, 1.0, 1.0, 3.0, 5.0, 5.0}, 2);

  ASSERT_EQ(scores.size(), 3U);
  EXPECT_NEAR(scores[2], (scores[0] + scores[1]) / 2.0, 1e-12);
  EXPECT_NEAR(std::abs(scores[1] - scores[0]), std::sqrt(0.5), 1e-12);
}

TEST(PrincipalScores, LieOnTheLineAlongWhichClassesVary) {
  // All differences are along (1, -1, 0), as a component (1, -1, 0) / sqrt(2) of either sign.
  std::vector<double> const scores =
      PrincipalScores({8.0, 0.0, 2.0, 2.0, 2.0, 1.0, 0.0, 16.0, 4.0}, 3);

  double const sign = scores[0] > 0.0 ? 1.0 : -1.0;
  EXPECT_THAT(scores, ElementsAre(Near(sign * 0.8 * std::sqrt(0.5)), Near(0.0),
                                  Near(-sign * 0.8 * std::sqrt(0.5))));
}

TEST(PrincipalScores, AreEqualForCategoriesAlike) {
  std::vector<double> const scores =
      PrincipalScores({1.0, 2.0, 3.0, 7.0, 1.0, 0.0, 2.0, 4.0, 6.0}, 3);

  EXPECT_NEAR(scores[0], scores[2], 1e-14);
}

TEST(PrincipalScores, DoNotFailForCategoriesThatWeighNothing) {
  // As with priors of 0 for the only classes of a category.
  std::vector<double> const scores = PrincipalScores({3.0, 1.0, 0.0, 0.0, 1.0, 3.0}, 2);

  EXPECT_EQ(scores[1], 0.0);
  EXPECT_TRUE(std::isfinite(scores[0]));
}

TEST(PrincipalScores, VaryAtLeastAsMuchAsScoresInAnyOtherDirection) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const numClasses = 2 + random.Below(4);
    std::size_t const numCategories = 3 + random.Below(15);
    std::vector<double> weights(numClasses * numCategories);
    for (double& weight : weights) weight = random.Multiple(0.5, 20);
    auto const weightOf = [&](std::size_t category) {
      auto const begin = weights.begin() + static_cast<std::ptrdiff_t>(category * numClasses);
      return std::accumulate(begin, begin + static_cast<std::ptrdiff_t>(numClasses), 0.0);
    };
    auto const varianceOf = [&](std::vector<double> const& scores) {
      double sum = 0.0;
      double mean = 0.0;
      for (std::size_t category = 0; category < numCategories; ++category) {
        sum += weightOf(category);
        mean += weightOf(category) * scores[category];
      }
      mean /= sum;
      double variance = 0.0;
      for (std::size_t category = 0; category < numCategories; ++category) {
        variance += weightOf(category) * (scores[category] - mean) * (scores[category] - mean);
      }
      return variance;
    };

    double const found = varianceOf(PrincipalScores(weights, numClasses));

    for (int attempt = 0; attempt < 50; ++attempt) {
      std::vector<double> direction(numClasses);
      for (double& each : direction) each = random.Below(2001) - 1000.0;
      double const norm = std::sqrt(
          std::inner_product(direction.begin(), direction.end(), direction.begin(), 1e-300));
      std::vector<double> scores(numCategories);
      for (std::size_t category = 0; category < numCategories; ++category) {
        for (std::size_t j = 0; j < numClasses; ++j) {
          scores[category] +=
              weights[category * numClasses + j] / weightOf(category) * direction[j] / norm;
        }
      }
      EXPECT_LE(varianceOf(scores), found * (1.0 + 1e-9));
    }
  }
}

TEST(SuperclassShares, AddUpTheClassesOfEachCategory) {
  // Categories with 1, 2, 5 and 6, 0, 2 of three classes, and one that weighs nothing.
  auto const shares = SuperclassShares({1.0, 2.0, 5.0, 6.0, 0.0, 2.0, 0.0, 0.0, 0.0}, 3);

  EXPECT_THAT(shares, ElementsAre(ElementsAre(0.125, 0.75, 0.0), ElementsAre(0.375, 0.75, 0.0)));
}

}  // namespace
}  // namespace tree::grow
