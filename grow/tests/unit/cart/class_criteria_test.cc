#include "cart/class_criteria.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using Side = std::vector<double>;  // what each class has on a side

// Ten cases of two classes, four of the first; the split sends 3 + 1 to the left.
Side const kLeft = {3.0, 1.0};
Side const kRight = {1.0, 5.0};

/// As a search uses the criterion.
template <class Criterion>
double ImprovementOf(Side const& left, Side const& right) {
  Score const score = Criterion::ScoreOf(left.data(), right.data(), left.size());
  Side node(left);
  for (std::size_t j = 0; j < node.size(); ++j) node[j] += right[j];
  return score.numerator / score.denominator - Criterion::OffsetOf(node.data(), node.size());
}

double SumOf(Side const& side) { return std::accumulate(side.begin(), side.end(), 0.0); }

double GiniImpurity(Side const& side) {
  double impurity = 1.0;
  for (double const each : side) impurity -= each / SumOf(side) * (each / SumOf(side));
  return impurity;
}

/// The decrease of impurity, each side weighed by what it has.
double GiniDecrease(Side const& left, Side const& right) {
  Side node(left);
  for (std::size_t j = 0; j < node.size(); ++j) node[j] += right[j];
  return SumOf(node) * GiniImpurity(node) - SumOf(left) * GiniImpurity(left) -
         SumOf(right) * GiniImpurity(right);
}

/// What the classes of a set have together, and the other classes together.
Side Superclasses(Side const& side, std::uint32_t set) {
  Side two(2);
  for (std::size_t j = 0; j < side.size(); ++j) two[(set >> j) & 1U] += side[j];
  return two;
}

TEST(Gini, IsTheLossOfWeightedImpurity) {
  // 10 (1 - 0.16 - 0.36) - 4 (1 - 9/16 - 1/16) - 6 (1 - 1/36 - 25/36) = 4.8 - 1.5 - 5/3
  EXPECT_NEAR(ImprovementOf<Gini>(kLeft, kRight), 4.8 - 1.5 - 5.0 / 3.0, 1e-12);
}

TEST(Gini, IsAllOfTheImpurityForPureSides) {
  EXPECT_NEAR(ImprovementOf<Gini>({0.5, 0.0}, {0.0, 0.5}), 0.5, 1e-15);
  // 3 (1 - 3/9) - 0 - 2 (1 - 2/4)
  EXPECT_NEAR(ImprovementOf<Gini>({1.0, 0.0, 0.0}, {0.0, 1.0, 1.0}), 1.0, 1e-15);
}

TEST(Gini, HasNoQuotientWhereASideIsEmpty) {
  Side const none = {0.0, 0.0};

  EXPECT_EQ(Gini::ScoreOf(none.data(), kRight.data(), 2).denominator, 0.0);
  EXPECT_EQ(Gini::ScoreOf(kLeft.data(), none.data(), 2).denominator, 0.0);
  EXPECT_EQ(Gini::OffsetOf(none.data(), 2), 0.0);
}

TEST(Twoing, IsTheSquareOfTheDifferenceBetweenTheSides) {
  // 0.4 * 0.6 / 4 * (|3/4 - 1/6| + |1/4 - 5/6|)^2 * 10
  double const difference = 2.0 * 7.0 / 12.0;
  EXPECT_NEAR(ImprovementOf<Twoing>(kLeft, kRight), 0.6 * difference * difference, 1e-12);
}

TEST(Twoing, IsHalfOfGiniForTwoClasses) {
  double const gini = ImprovementOf<Gini>(kLeft, kRight);

  EXPECT_NEAR(2.0 * ImprovementOf<Twoing>(kLeft, kRight), gini, 1e-12);
  EXPECT_NEAR(2.0 * ImprovementOf<OrderedTwoing>(kLeft, kRight), gini, 1e-12);
}

TEST(Twoing, TakesTheBestPairOfSuperclasses) {
  // {0, 2} against {1}: the sides are pure, so the difference is 1 and the value 6 * 4 / 10.
  EXPECT_NEAR(ImprovementOf<Twoing>({3.0, 0.0, 3.0}, {0.0, 4.0, 0.0}), 2.4, 1e-12);
}

TEST(Twoing, IsZeroWhereASideIsEmpty) {
  EXPECT_EQ(ImprovementOf<Twoing>({0.0, 0.0}, kRight), 0.0);
  EXPECT_EQ(ImprovementOf<Twoing>(kLeft, {0.0, 0.0}), 0.0);
}

TEST(OrderedTwoing, LeavesClassesInTheirOrder) {
  // {0} against {1, 2}: 3/6 - 0; {0, 1} against {2}: 1/2 - 1. Both differences are 1/2.
  EXPECT_NEAR(ImprovementOf<OrderedTwoing>({3.0, 0.0, 3.0}, {0.0, 4.0, 0.0}), 2.4 / 4.0, 1e-12);
}

TEST(OrderedTwoing, EqualsTwoingWhereTheBestSuperclassesAreNeighbours) {
  Side const left = {3.0, 2.0, 0.0};
  Side const right = {0.0, 1.0, 4.0};

  EXPECT_NEAR(ImprovementOf<OrderedTwoing>(left, right), ImprovementOf<Twoing>(left, right), 1e-12);
}

TEST(OrderedTwoing, IsZeroWhereASideIsEmpty) {
  EXPECT_EQ(ImprovementOf<OrderedTwoing>({0.0, 0.0}, kRight), 0.0);
  EXPECT_EQ(ImprovementOf<OrderedTwoing>(kLeft, {0.0, 0.0}), 0.0);
}

TEST(ClassCriteria, AreZeroForSidesAlike) {
  Side const left = {1.0, 2.0, 3.0};
  Side const right = {2.0, 4.0, 6.0};

  EXPECT_NEAR(ImprovementOf<Gini>(left, right), 0.0, 1e-12);
  EXPECT_NEAR(ImprovementOf<Twoing>(left, right), 0.0, 1e-12);
  EXPECT_NEAR(ImprovementOf<OrderedTwoing>(left, right), 0.0, 1e-12);
}

TEST(ClassCriteria, AreNotChangedByExchangingTheSides) {
  Side const left = {1.0, 2.0, 4.0};
  Side const right = {5.0, 3.0, 1.0};

  EXPECT_NEAR(ImprovementOf<Gini>(left, right), ImprovementOf<Gini>(right, left), 1e-12);
  EXPECT_NEAR(ImprovementOf<Twoing>(left, right), ImprovementOf<Twoing>(right, left), 1e-12);
  EXPECT_NEAR(ImprovementOf<OrderedTwoing>(left, right), ImprovementOf<OrderedTwoing>(right, left),
              1e-12);
}

/// Twoing goes by its definition here: the best pair of superclasses, by half of their Gini.
TEST(ClassCriteria, AgreeWithImpuritiesOfRandomSides) {
  for (std::uint32_t seed = 1; seed <= 500; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::uint32_t const numClasses = 2 + random.Below(4);
    Side left(numClasses);
    Side right(numClasses);
    for (double& each : left) each = random.Below(5) * 0.25;
    for (double& each : right) each = random.Below(5) * 0.25;
    left[random.Below(numClasses)] += 0.5;
    right[random.Below(numClasses)] += 0.5;
    double twoing = 0.0;
    for (std::uint32_t set = 1; set + 1 < (1U << numClasses); ++set) {
      twoing =
          std::max(twoing, GiniDecrease(Superclasses(left, set), Superclasses(right, set)) / 2.0);
    }
    double ordered = 0.0;
    for (std::uint32_t last = 1; last < numClasses; ++last) {
      std::uint32_t const set = (1U << last) - 1;
      ordered =
          std::max(ordered, GiniDecrease(Superclasses(left, set), Superclasses(right, set)) / 2.0);
    }

    EXPECT_NEAR(ImprovementOf<Gini>(left, right), GiniDecrease(left, right), 1e-12);
    EXPECT_NEAR(ImprovementOf<Twoing>(left, right), twoing, 1e-12);
    EXPECT_NEAR(ImprovementOf<OrderedTwoing>(left, right), ordered, 1e-12);
  }
}

}  // namespace
}  // namespace tree::grow
