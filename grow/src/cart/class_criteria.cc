#include "cart/class_criteria.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace tree::grow {
namespace {

double SumOf(ClassWeights const& weights) {
  return std::accumulate(weights.begin(), weights.end(), 0.0);
}

/// p(L) p(R) difference^2 within the node, times the probability of the node.
double TwoingValue(double left, double right, double difference) {
  return left * right / (left + right) * difference * difference;
}

}  // namespace

// With weights l and r of the classes and their sums L and R, the loss of impurity
//   (L + R) i(t) - L i(tL) - R i(tR)
// is what the sums of squares gain.
double GiniImprovement(ClassWeights const& left, ClassWeights const& right) {
  double leftSquares = 0.0;
  double rightSquares = 0.0;
  double squares = 0.0;
  double leftSum = 0.0;
  double rightSum = 0.0;
  for (std::size_t j = 0; j < left.size(); ++j) {
    double const both = left[j] + right[j];
    leftSum += left[j];
    rightSum += right[j];
    leftSquares += left[j] * left[j];
    rightSquares += right[j] * right[j];
    squares += both * both;
  }
  return leftSquares / leftSum + rightSquares / rightSum - squares / (leftSum + rightSum);
}

double TwoingImprovement(ClassWeights const& left, ClassWeights const& right) {
  double const leftSum = SumOf(left);
  double const rightSum = SumOf(right);
  double difference = 0.0;
  for (std::size_t j = 0; j < left.size(); ++j) {
    difference += std::abs(left[j] / leftSum - right[j] / rightSum);
  }
  return TwoingValue(leftSum, rightSum, difference / 2.0);
}

double OrderedTwoingImprovement(ClassWeights const& left, ClassWeights const& right) {
  double const leftSum = SumOf(left);
  double const rightSum = SumOf(right);
  double difference = 0.0;
  double largest = 0.0;
  // The last class would make the first superclass hold all.
  for (std::size_t j = 0; j + 1 < left.size(); ++j) {
    difference += left[j] / leftSum - right[j] / rightSum;
    largest = std::max(largest, std::abs(difference));
  }
  return TwoingValue(leftSum, rightSum, largest);
}

ClassImprovement FindClassImprovement(CartSplitCriteria criteria) {
  switch (static_cast<int>(criteria)) {
    case 0:
      return GiniImprovement;
    case 1:
      return TwoingImprovement;
    case 2:
      return OrderedTwoingImprovement;
    default:
      return nullptr;
  }
}

}  // namespace tree::grow
