#ifndef TREE_GROW_SRC_CART_CLASS_CRITERIA_H_
#define TREE_GROW_SRC_CART_CLASS_CRITERIA_H_

// What a division of a node into two improves, by the probabilities of the classes on its sides:
// p(j, L) and p(j, R), the shares of all cases that are of class j and on that side, after priors.
// An improvement is the difference of a score, a quotient that is compared at every cut point
// without dividing, and an offset that is the same for all divisions of the node.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace tree::grow {

/// A quotient; of greater ones, the better.
struct Score {
  double numerator;
  double denominator;
};

/// The decrease of Gini impurity, 1 - sum of p(j | t)^2, times the probability of the node:
/// sum p(j, L)^2 / p(L) + sum p(j, R)^2 / p(R) - sum p(j, t)^2 / p(t). Source: Breiman, Friedman,
/// Olshen and Stone 1984, section 4.3.1.
struct Gini {
  static constexpr bool kOrderedClasses = false;

  static Score ScoreOf(double const* left, double const* right, std::size_t numClasses) {
    double leftSum = 0.0;
    double rightSum = 0.0;
    double leftSquares = 0.0;
    double rightSquares = 0.0;
    for (std::size_t j = 0; j < numClasses; ++j) {
      leftSum += left[j];
      rightSum += right[j];
      leftSquares += left[j] * left[j];
      rightSquares += right[j] * right[j];
    }
    return {leftSquares * rightSum + rightSquares * leftSum, leftSum * rightSum};
  }
  static double OffsetOf(double const* node, std::size_t numClasses) {
    double sum = 0.0;
    double squares = 0.0;
    for (std::size_t j = 0; j < numClasses; ++j) {
      sum += node[j];
      squares += node[j] * node[j];
    }
    return sum > 0.0 ? squares / sum : 0.0;
  }
};

/// The twoing value p(L) p(R) / 4 times the square of the sum of |p(j | L) - p(j | R)|, times the
/// probability of the node: the decrease of Gini impurity of the best pair of superclasses, halved.
/// Source: Breiman et al. 1984, section 4.3.2.
struct Twoing {
  static constexpr bool kOrderedClasses = false;

  static Score ScoreOf(double const* left, double const* right, std::size_t numClasses) {
    double const leftSum = std::accumulate(left, left + numClasses, 0.0);
    double const rightSum = std::accumulate(right, right + numClasses, 0.0);
    if (!(leftSum > 0.0) || !(rightSum > 0.0)) return {0.0, 1.0};
    double difference = 0.0;
    for (std::size_t j = 0; j < numClasses; ++j) {
      difference += std::abs(left[j] * rightSum - right[j] * leftSum);
    }
    // (difference / (leftSum rightSum))^2 leftSum rightSum / (4 (leftSum + rightSum))
    return {difference * difference, 4.0 * leftSum * rightSum * (leftSum + rightSum)};
  }
  static double OffsetOf(double const*, std::size_t) { return 0.0; }
};

/// The twoing value of the best pair of superclasses {0..k}, {k+1..} of ordered classes, times the
/// probability of the node. Source: Breiman et al. 1984, section 4.3.3.
struct OrderedTwoing {
  static constexpr bool kOrderedClasses = true;

  static Score ScoreOf(double const* left, double const* right, std::size_t numClasses) {
    double const leftSum = std::accumulate(left, left + numClasses, 0.0);
    double const rightSum = std::accumulate(right, right + numClasses, 0.0);
    if (!(leftSum > 0.0) || !(rightSum > 0.0)) return {0.0, 1.0};
    double difference = 0.0;
    double largest = 0.0;
    // The last class would make the first superclass hold all.
    for (std::size_t j = 0; j + 1 < numClasses; ++j) {
      difference += left[j] * rightSum - right[j] * leftSum;
      largest = std::max(largest, std::abs(difference));
    }
    return {largest * largest, leftSum * rightSum * (leftSum + rightSum)};
  }
  static double OffsetOf(double const*, std::size_t) { return 0.0; }
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_CLASS_CRITERIA_H_
