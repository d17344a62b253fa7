#ifndef TREE_GROW_SRC_CART_SIDES_H_
#define TREE_GROW_SRC_CART_SIDES_H_

// The two sides of a split that is being looked for. All cases begin on the right; a search moves
// them to the left, one by one or a group at a time, and asks for the score on the way. Sums are
// kept in whole numbers, so the score of a division does not depend on how it was reached.
//
// All kinds of sides have the same operations, called where a search would not have the time for a
// virtual call:
//   SetNode(sums)      says which node it is: before everything else
//   Start(group)       puts the cases of the group on the right
//   Move(index)        moves a case to the left
//   MoveGroup(g, sign) moves a group to the left (1) or back (-1)
//   Reaches(quotient)  whether the score of the division as it stands may be so great: cheap, and
//                      wrong only where rounding decides
//   StaysBelow(q, n)   whether no score can reach q while any n cases move to the left one by one:
//                      for cases that weigh 1; false where it is not known
//   GetQuotient()      the score, the same for a division and its mirror image; 0 for none
//   ImprovementOf(q)   the improvement, on the scale of the tree, of a score
// and know groups of cases, such as those of one category, as `GetGroupSize()` sums:
//   AddTo(group, index)      adds a case
//   GroupOf(sums, group)     makes the group of a whole node

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "cart/class_criteria.h"
#include "growing/node_sums.h"

namespace tree::grow {

/// The target of the cases as the sides of a split see it. Pointers are by place.
struct ClassTarget {
  std::uint16_t const* classes = nullptr;
  std::int64_t const* weights = nullptr;  ///< null where each case weighs 1
  std::vector<double>
      factors;  ///< by class: what a unit of weight adds to the probability of a node
};

/// The sides of a split by classes.
template <class Criterion>
class ClassSides {
 public:
  using Sum = std::int64_t;

  explicit ClassSides(ClassTarget const& target)
      : target_(&target),
        left_(target.factors.size()),
        total_(target.factors.size()),
        probabilities_(2 * target.factors.size()) {}

  /// A group is the weight of each class.
  std::size_t GetGroupSize() const { return left_.size(); }
  void AddTo(Sum* group, std::uint32_t index) const {
    group[target_->classes[index]] += WeightOf(index);
  }
  static void GroupOf(NodeSums const& sums, Sum* group) {
    std::copy(sums.classWeights.begin(), sums.classWeights.end(), group);
  }

  void SetNode(NodeSums const&) {}
  void Start(Sum const* group) {
    total_.assign(group, group + total_.size());
    left_.assign(left_.size(), 0);
    for (std::size_t j = 0; j < total_.size(); ++j) {
      probabilities_[j] = target_->factors[j] * static_cast<double>(total_[j]);
    }
    offset_ = Criterion::OffsetOf(probabilities_.data(), total_.size());
  }
  void Prefetch(std::uint32_t index) const { __builtin_prefetch(target_->classes + index); }
  void Move(std::uint32_t index) { left_[target_->classes[index]] += WeightOf(index); }
  void MoveGroup(Sum const* group, Sum sign) {
    for (std::size_t j = 0; j < left_.size(); ++j) left_[j] += sign * group[j];
  }
  static bool StaysBelow(double, std::int64_t) { return false; }
  bool Reaches(double quotient) {
    Score const score = GetScore();
    return score.numerator >= quotient * score.denominator;
  }
  double GetQuotient() {
    Score const score = GetScore();
    return score.denominator > 0.0 ? score.numerator / score.denominator : 0.0;
  }
  double ImprovementOf(double quotient) const { return quotient - offset_; }

  /// Whether the best division of groups cuts them in the order of `KeyOf`: for two classes.
  bool HasKey() const { return left_.size() == 2; }
  /// The probability of the second of two classes in the group; 0 where priors of 0 make it weigh
  /// nothing.
  double KeyOf(Sum const* group) const {
    double const second = target_->factors[1] * static_cast<double>(group[1]);
    double const sum = target_->factors[0] * static_cast<double>(group[0]) + second;
    return sum > 0.0 ? second / sum : 0.0;
  }
  std::vector<double> const& GetFactors() const { return target_->factors; }
  static bool HasOrderedClasses() { return Criterion::kOrderedClasses; }

 private:
  Score GetScore() {
    std::size_t const numClasses = left_.size();
    double* const left = probabilities_.data();
    double* const right = left + numClasses;
    for (std::size_t j = 0; j < numClasses; ++j) {
      left[j] = target_->factors[j] * static_cast<double>(left_[j]);
      right[j] = target_->factors[j] * static_cast<double>(total_[j] - left_[j]);
    }
    return Criterion::ScoreOf(left, right, numClasses);
  }
  Sum WeightOf(std::uint32_t index) const {
    return target_->weights == nullptr ? 1 : target_->weights[index];
  }

  ClassTarget const* target_;
  std::vector<Sum> left_;
  std::vector<Sum> total_;
  std::vector<double> probabilities_;  // of the left, then of the right side
  double offset_ = 0.0;
};

/// What bounds have to be below to be sure in spite of rounding.
inline constexpr double kCertain = 1.0 - 1e-9;

/// The sides of a split by two classes of cases that each weigh 1 with Gini's criterion: the usual
/// case, made fast. With l and r cases of a class on the left and the right, n of both, and factors
/// f, the decrease of impurity comes down to
///   2 (f0 f1)^2 (l0 n1 - l1 n0)^2 / (P L R),  L = f0 l0 + f1 l1,  R = f0 r0 + f1 r1,  P = L + R.
class TwoClassSides {
 public:
  using Sum = std::int64_t;

  explicit TwoClassSides(ClassTarget const& target)
      : classes_(target.classes), first_(target.factors[0]), second_(target.factors[1]) {}

  static std::size_t GetGroupSize() { return 2; }
  void AddTo(Sum* group, std::uint32_t index) const { ++group[classes_[index]]; }
  static void GroupOf(NodeSums const& sums, Sum* group) {
    std::copy(sums.classWeights.begin(), sums.classWeights.end(), group);
  }

  void SetNode(NodeSums const&) {}
  void Start(Sum const* group) {
    total_ = group[0] + group[1];
    totalSecond_ = group[1];
    leftAll_ = 0;
    leftSecond_ = 0;
    probability_ = Probability(total_, totalSecond_);
    largestStep_ = static_cast<double>(std::max(totalSecond_, total_ - totalSecond_));
  }
  void Prefetch(std::uint32_t index) const { __builtin_prefetch(classes_ + index); }
  void Move(std::uint32_t index) {
    ++leftAll_;
    leftSecond_ += classes_[index];
  }
  void MoveGroup(Sum const* group, Sum sign) {
    leftAll_ += sign * (group[0] + group[1]);
    leftSecond_ += sign * group[1];
  }
  // The product of L and R is least at one of the ends of the way that L can go.
  bool StaysBelow(double quotient, std::int64_t count) const {
    auto const steps = static_cast<double>(count);
    double const excess = std::abs(static_cast<double>(Excess())) + steps * largestStep_;
    double const left = Probability(leftAll_, leftSecond_);
    double const after = left + steps * std::max(first_, second_);
    double const least = std::min(left * (probability_ - left), after * (probability_ - after));
    return excess * excess < kCertain * quotient * least;
  }
  bool Reaches(double quotient) const {
    auto const excess = static_cast<double>(Excess());
    double const left = Probability(leftAll_, leftSecond_);
    return excess * excess >= quotient * left * (probability_ - left);
  }
  double GetQuotient() const {
    auto const excess = static_cast<double>(Excess());
    double const product = Probability(leftAll_, leftSecond_) *
                           Probability(total_ - leftAll_, totalSecond_ - leftSecond_);
    return product > 0.0 ? excess * excess / product : 0.0;
  }
  double ImprovementOf(double quotient) const {
    double const factor = first_ * second_;
    return 2.0 * factor * factor * quotient / probability_;
  }

  static bool HasKey() { return true; }
  double KeyOf(Sum const* group) const {
    double const sum = Probability(group[0] + group[1], group[1]);
    return sum > 0.0 ? second_ * static_cast<double>(group[1]) / sum : 0.0;
  }
  std::vector<double> GetFactors() const { return {first_, second_}; }
  static bool HasOrderedClasses() { return false; }

 private:
  double Probability(Sum all, Sum second) const {
    return first_ * static_cast<double>(all - second) + second_ * static_cast<double>(second);
  }
  /// l0 n1 - l1 n0. There are less than 2^31 cases, so it fits.
  Sum Excess() const { return leftAll_ * totalSecond_ - leftSecond_ * total_; }

  std::uint16_t const* classes_;
  double first_;
  double second_;
  Sum leftAll_ = 0;
  Sum leftSecond_ = 0;
  Sum total_ = 0;
  Sum totalSecond_ = 0;
  double probability_ = 0.0;
  double largestStep_ = 0.0;  // by which a case can change the excess
};

/// The numbers of the cases as the sides of a split see them. Pointers are by place.
struct NumberTarget {
  std::int64_t const* numbers = nullptr;
  std::int64_t const* weights = nullptr;  ///< null where each case weighs 1
  double scale = 1.0;                     ///< what a unit of weight is on the scale of the tree
  double unit = 1.0;                      ///< of the numbers
};

/// The sides of a split by numbers. An improvement is the sum of squares around the means that the
/// split explains, w(L) w(R) / w (mean(L) - mean(R))^2. Source: Breiman, Friedman, Olshen and Stone
/// 1984, section 8.4, least squares regression.
template <bool Weighted>
class NumberSides {
 public:
  /// Products of weights and numbers need more than 64 bits.
  using Sum = std::conditional_t<Weighted, WideInteger, std::int64_t>;

  explicit NumberSides(NumberTarget const& target)
      : numbers_(target.numbers),
        weights_(target.weights),
        scale_(target.scale),
        unit_(target.unit) {}

  /// A group is a weight and a weighted sum of numbers.
  std::size_t GetGroupSize() const { return 2; }
  void AddTo(Sum* group, std::uint32_t index) const {
    Sum const weight = WeightOf(index);
    group[0] += weight;
    group[1] += weight * numbers_[index];
  }
  static void GroupOf(NodeSums const& sums, Sum* group) {
    group[0] = sums.weight;
    group[1] = static_cast<Sum>(sums.weightedNumbers);
  }

  void SetNode(NodeSums const& sums) {
    least_ = sums.least;
    greatest_ = sums.greatest;
  }
  void Start(Sum const* group) {
    weight_ = group[0];
    wholeMean_ = weight_ == 0 ? 0 : group[1] / weight_;
    rest_ = group[1] - wholeMean_ * weight_;
    restOfMean_ = weight_ == 0 ? 0.0 : static_cast<double>(rest_) / static_cast<double>(weight_);
    auto const mean = static_cast<double>(wholeMean_) + restOfMean_;
    largestStep_ =
        std::max(static_cast<double>(greatest_) - mean, mean - static_cast<double>(least_));
    leftWeight_ = 0;
    leftSum_ = 0;
  }
  void Prefetch(std::uint32_t index) const { __builtin_prefetch(numbers_ + index); }
  void Move(std::uint32_t index) {
    Sum const weight = WeightOf(index);
    leftWeight_ += weight;
    leftSum_ += weight * numbers_[index];
  }
  void MoveGroup(Sum const* group, int sign) {
    leftWeight_ += sign * group[0];
    leftSum_ += sign * group[1];
  }
  // The product of the weights is least at one of the ends of the way.
  bool StaysBelow(double quotient, std::int64_t count) const {
    if constexpr (Weighted) return false;
    auto const steps = static_cast<double>(count);
    auto const left = static_cast<double>(leftWeight_);
    auto const all = static_cast<double>(weight_);
    double const excess = std::abs(ExcessAt(left)) + steps * largestStep_;
    double const least = std::min(left * (all - left), (left + steps) * (all - left - steps));
    return excess * excess < kCertain * quotient * least;
  }
  bool Reaches(double quotient) const {
    auto const left = static_cast<double>(leftWeight_);
    double const excess = ExcessAt(left);
    return excess * excess >= quotient * left * static_cast<double>(weight_ - leftWeight_);
  }
  double GetQuotient() const {
    if (leftWeight_ == 0 || leftWeight_ == weight_) return 0.0;
    // How far the left sum is from what the mean of the node would make it, times the weight of the
    // node: in numbers wide enough that mirror images differ in nothing but the sign.
    auto const excess =
        static_cast<double>(static_cast<Wide>(leftSum_ - wholeMean_ * leftWeight_) *
                                static_cast<Wide>(weight_) -
                            static_cast<Wide>(rest_) * static_cast<Wide>(leftWeight_)) /
        static_cast<double>(weight_);
    return excess * excess /
           (static_cast<double>(leftWeight_) * static_cast<double>(weight_ - leftWeight_));
  }
  double ImprovementOf(double quotient) const {
    // One unit after the other: the square of one may be no number.
    return quotient * static_cast<double>(weight_) * scale_ * unit_ * unit_;
  }

  static bool HasKey() { return true; }
  /// The mean of the group.
  static double KeyOf(Sum const* group) {
    return static_cast<double>(group[1]) / static_cast<double>(group[0]);
  }
  static std::vector<double> GetFactors() { return {}; }
  static bool HasOrderedClasses() { return false; }

 private:
  // Products of wide sums need more than 128 bits, and are rounded to 64 digits instead.
  using Wide = std::conditional_t<Weighted, long double, WideInteger>;

  Sum WeightOf(std::uint32_t index) const { return Weighted ? weights_[index] : 1; }
  double ExcessAt(double left) const {
    return static_cast<double>(leftSum_ - wholeMean_ * leftWeight_) - restOfMean_ * left;
  }

  std::int64_t const* numbers_;
  std::int64_t const* weights_;
  double scale_;
  double unit_;
  Sum weight_ = 0;
  Sum wholeMean_ = 0;
  Sum rest_ = 0;  // of the sum of the node, once the whole mean is taken from each unit of weight
  double restOfMean_ = 0.0;
  std::int64_t least_ = 0;
  std::int64_t greatest_ = 0;
  double largestStep_ = 0.0;  // by which a case of weight 1 can change the excess
  Sum leftWeight_ = 0;
  Sum leftSum_ = 0;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_SIDES_H_
