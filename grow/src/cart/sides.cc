#include "cart/sides.h"

#include <algorithm>

namespace tree::grow {

ClassSides::ClassSides(ClassTarget const& target, ClassImprovement improvement)
    : target_(target),
      improvement_(improvement),
      left_(target.factors.size()),
      right_(target.factors.size()),
      leftWeights_(target.factors.size()),
      rightWeights_(target.factors.size()) {}

double ClassSides::Improvement() {
  for (std::size_t j = 0; j < left_.size(); ++j) {
    leftWeights_[j] = target_.factors[j] * left_[j];
    rightWeights_[j] = target_.factors[j] * right_[j];
  }
  return improvement_(leftWeights_, rightWeights_);
}

void ClassSides::AddToRight(Group const& group) {
  for (std::size_t j = 0; j < group.size(); ++j) right_[j] += group[j];
}

void ClassSides::MoveToLeft(Group const& group) {
  for (std::size_t j = 0; j < group.size(); ++j) {
    left_[j] += group[j];
    right_[j] -= group[j];
  }
}

void ClassSides::MoveToRight(Group const& group) {
  for (std::size_t j = 0; j < group.size(); ++j) {
    left_[j] -= group[j];
    right_[j] += group[j];
  }
}

double ClassSides::KeyOf(Group const& group) const {
  double const second = target_.factors[1] * group[1];
  double const sum = target_.factors[0] * group[0] + second;
  return sum > 0.0 ? second / sum : 0.0;
}

void ClassSides::Clear() {
  std::fill(left_.begin(), left_.end(), 0.0);
  std::fill(right_.begin(), right_.end(), 0.0);
}

double NumberSides::Improvement() const {
  double const difference = left_.sum / left_.weight - right_.sum / right_.weight;
  return left_.weight * right_.weight / (left_.weight + right_.weight) * difference * difference;
}

}  // namespace tree::grow
