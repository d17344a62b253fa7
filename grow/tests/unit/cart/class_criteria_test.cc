#include "cart/class_criteria.h"

#include <gtest/gtest.h>

namespace tree::grow {
namespace {

// Ten cases of two classes, four of the first; the split sends 3 + 1 to the left.
ClassWeights const kLeft = {3.0, 1.0};
ClassWeights const kRight = {1.0, 5.0};

TEST(GiniImprovement, IsTheLossOfWeightedImpurity) {
  // 10 (1 - 0.16 - 0.36) - 4 (1 - 9/16 - 1/16) - 6 (1 - 1/36 - 25/36) = 4.8 - 1.5 - 5/3
  EXPECT_NEAR(GiniImprovement(kLeft, kRight), 4.8 - 1.5 - 5.0 / 3.0, 1e-12);
}

TEST(GiniImprovement, IsAllOfTheImpurityForPureSides) {
  EXPECT_NEAR(GiniImprovement({0.5, 0.0}, {0.0, 0.5}), 0.5, 1e-15);
  EXPECT_NEAR(GiniImprovement({1.0, 0.0, 0.0}, {0.0, 1.0, 1.0}), 2.0 - 1.0, 1e-15);
}

TEST(TwoingImprovement, IsTheSquareOfTheDifferenceBetweenTheSides) {
  // 0.4 * 0.6 / 4 * (|3/4 - 1/6| + |1/4 - 5/6|)^2 * 10
  double const difference = 2.0 * 7.0 / 12.0;
  EXPECT_NEAR(TwoingImprovement(kLeft, kRight), 0.6 * difference * difference, 1e-12);
}

TEST(TwoingImprovement, IsHalfOfGiniForTwoClasses) {
  EXPECT_NEAR(2.0 * TwoingImprovement(kLeft, kRight), GiniImprovement(kLeft, kRight), 1e-12);
  EXPECT_NEAR(2.0 * OrderedTwoingImprovement(kLeft, kRight), GiniImprovement(kLeft, kRight), 1e-12);
}

TEST(TwoingImprovement, TakesTheBestPairOfSuperclasses) {
  // {0, 2} against {1}: the sides are pure, so the difference is 1 and the value 6 * 4 / 10.
  EXPECT_NEAR(TwoingImprovement({3.0, 0.0, 3.0}, {0.0, 4.0, 0.0}), 2.4, 1e-12);
}

TEST(OrderedTwoingImprovement, LeavesClassesInTheirOrder) {
  // {0} against {1, 2}: 3/6 - 0; {0, 1} against {2}: 1/2 - 1. Both differences are 1/2.
  EXPECT_NEAR(OrderedTwoingImprovement({3.0, 0.0, 3.0}, {0.0, 4.0, 0.0}), 2.4 / 4.0, 1e-12);
}

TEST(OrderedTwoingImprovement, EqualsTwoingWhereTheBestSuperclassesAreNeighbours) {
  ClassWeights const left = {3.0, 2.0, 0.0};
  ClassWeights const right = {0.0, 1.0, 4.0};

  EXPECT_NEAR(OrderedTwoingImprovement(left, right), TwoingImprovement(left, right), 1e-12);
}

TEST(ClassImprovements, AreZeroForSidesAlike) {
  ClassWeights const left = {1.0, 2.0, 3.0};
  ClassWeights const right = {2.0, 4.0, 6.0};

  EXPECT_NEAR(GiniImprovement(left, right), 0.0, 1e-12);
  EXPECT_NEAR(TwoingImprovement(left, right), 0.0, 1e-12);
  EXPECT_NEAR(OrderedTwoingImprovement(left, right), 0.0, 1e-12);
}

TEST(ClassImprovements, AreNotChangedByExchangingTheSides) {
  ClassWeights const left = {1.0, 2.0, 4.0};
  ClassWeights const right = {5.0, 3.0, 1.0};

  for (ClassImprovement const improvement :
       {GiniImprovement, TwoingImprovement, OrderedTwoingImprovement}) {
    EXPECT_NEAR(improvement(left, right), improvement(right, left), 1e-12);
  }
}

TEST(FindClassImprovement, KnowsThreeCriteria) {
  EXPECT_EQ(FindClassImprovement(static_cast<CartSplitCriteria>(0)), GiniImprovement);
  EXPECT_EQ(FindClassImprovement(static_cast<CartSplitCriteria>(1)), TwoingImprovement);
  EXPECT_EQ(FindClassImprovement(static_cast<CartSplitCriteria>(2)), OrderedTwoingImprovement);
  EXPECT_EQ(FindClassImprovement(static_cast<CartSplitCriteria>(3)), nullptr);
  EXPECT_EQ(FindClassImprovement(static_cast<CartSplitCriteria>(-1)), nullptr);
}

}  // namespace
}  // namespace tree::grow
