#ifndef TREE_GROW_SRC_CART_SIDES_H_
#define TREE_GROW_SRC_CART_SIDES_H_

// The two sides of a split that is being looked for. All cases begin on the right; the search moves
// them to the left, one by one, and asks for the improvement on the way.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "cart/class_criteria.h"

namespace tree::grow {

/// The classes of the cases of a sample, by their index in it.
struct ClassTarget {
  std::vector<std::uint32_t> classes;  ///< the class of each case
  std::vector<double> weights;         ///< of each case; empty when each weighs 1
  /// By class: prior probability over weighted number of cases in the sample.
  std::vector<double> factors;

  double WeightOf(std::uint32_t index) const { return weights.empty() ? 1.0 : weights[index]; }
};

/// The sides of a split by classes.
class ClassSides {
 public:
  /// `target`: **borrowed** for this object's life.
  ClassSides(ClassTarget const& target, ClassImprovement improvement);

  /// Puts a case on the right, at the beginning.
  void AddToRight(std::uint32_t index) {
    right_[target_.classes[index]] += target_.WeightOf(index);
  }
  /// Moves a case from the right to the left.
  void MoveToLeft(std::uint32_t index) {
    double const weight = target_.WeightOf(index);
    left_[target_.classes[index]] += weight;
    right_[target_.classes[index]] -= weight;
  }
  /// What the split as it stands improves. Requires cases on both sides.
  double Improvement();
  /// Takes all cases away.
  void Clear();

  /// Cases that move together, such as those of one category: their weights by class.
  using Group = std::vector<double>;
  Group EmptyGroup() const { return Group(target_.factors.size()); }
  void AddTo(Group& group, std::uint32_t index) const {
    group[target_.classes[index]] += target_.WeightOf(index);
  }
  void AddToRight(Group const& group);
  void MoveToLeft(Group const& group);
  void MoveToRight(Group const& group);
  /// Whether the best division of groups cuts them in the order of `KeyOf`: for two classes.
  bool HasKey() const { return target_.factors.size() == 2; }
  /// The probability of the second of two classes in the group; 0.0 where priors of 0 make it weigh
  /// nothing.
  double KeyOf(Group const& group) const;

 private:
  ClassTarget const& target_;
  ClassImprovement improvement_;
  // Plain sums of weights: whole numbers stay exact, so that equal splits have equal improvements.
  std::vector<double> left_;
  std::vector<double> right_;
  ClassWeights leftWeights_;
  ClassWeights rightWeights_;
};

/// The numbers of the cases of a sample, by their index in it.
struct NumberTarget {
  std::vector<double> values;   ///< of each case
  std::vector<double> weights;  ///< of each case; empty when each weighs 1

  double WeightOf(std::uint32_t index) const { return weights.empty() ? 1.0 : weights[index]; }
};

/// The sides of a split by numbers.
class NumberSides {
 public:
  /// `target`: **borrowed** for this object's life.
  explicit NumberSides(NumberTarget const& target) : target_(target) {}

  /// Puts a case on the right, at the beginning.
  void AddToRight(std::uint32_t index) { Add(index, 1.0, right_); }
  /// Moves a case from the right to the left.
  void MoveToLeft(std::uint32_t index) {
    Add(index, 1.0, left_);
    Add(index, -1.0, right_);
  }
  /// What the split as it stands improves: the sum of squares around the means that it explains,
  /// w(L) w(R) / w (mean(L) - mean(R))^2. Requires cases on both sides. Source: Breiman, Friedman,
  /// Olshen and Stone 1984, section 8.4, least squares regression.
  double Improvement() const;
  /// Takes all cases away.
  void Clear() { left_ = right_ = {}; }

  /// Cases that move together, such as those of one category.
  struct Group {
    double weight = 0.0;
    double sum = 0.0;
  };
  static Group EmptyGroup() { return {}; }
  void AddTo(Group& group, std::uint32_t index) const { Add(index, 1.0, group); }
  void AddToRight(Group const& group) { Add(group, 1.0, right_); }
  void MoveToLeft(Group const& group) {
    Add(group, 1.0, left_);
    Add(group, -1.0, right_);
  }
  void MoveToRight(Group const& group) {
    Add(group, -1.0, left_);
    Add(group, 1.0, right_);
  }
  /// Whether the best division of groups cuts them in the order of `KeyOf`: always.
  static bool HasKey() { return true; }
  /// The mean of the group.
  static double KeyOf(Group const& group) { return group.sum / group.weight; }

 private:
  void Add(std::uint32_t index, double sign, Group& side) const {
    double const weight = sign * target_.WeightOf(index);
    side.weight += weight;
    side.sum += weight * target_.values[index];
  }
  static void Add(Group const& group, double sign, Group& side) {
    side.weight += sign * group.weight;
    side.sum += sign * group.sum;
  }

  NumberTarget const& target_;
  Group left_;
  Group right_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_SIDES_H_
