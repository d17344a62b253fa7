#ifndef TREE_GROW_SRC_GROWING_RISK_H_
#define TREE_GROW_SRC_GROWING_RISK_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "growing/class_model.h"
#include "growing/training_data.h"

namespace tree::grow {

/// What predictions for cases went wrong, added up so that risks can be estimated from it. Sums of
/// different cases of a sample add up.
class LossSums {
 public:
  /// Of no cases. `numClasses`: 0 for numbers.
  explicit LossSums(std::size_t numClasses) : numClasses_(numClasses) {
    counts_.resize(numClasses * numClasses);
  }
  /// Of cases that are all given the same prediction: a class index, or a number.
  static LossSums Of(TrainingData const& data, std::span<std::uint32_t const> cases,
                     double prediction);

  LossSums& operator+=(LossSums const& other) { return Add(other, 1.0); }
  LossSums& operator-=(LossSums const& other) { return Add(other, -1.0); }

 private:
  friend class RiskModel;

  LossSums& Add(LossSums const& other, double sign);

  std::size_t numClasses_;
  double numCases_ = 0.0;  // by frequency
  double weight_ = 0.0;
  double unit_ = 1.0;           // of the errors of numbers, a power of two
  double squares_ = 0.0;        // weighted errors of numbers, in units, squared
  double fourths_ = 0.0;        // to the fourth power
  std::vector<double> counts_;  // weights, [predicted][observed]
};

/// A risk with its standard error.
struct RiskEstimate {
  double risk = 0.0;
  double stdError = 0.0;
};

/// How risks come of losses. Sources: Breiman, Friedman, Olshen and Stone 1984, section 11.4 for
/// classes, section 8.3 for numbers.
///
/// For numbers, the risk is the mean squared error R over N cases, its standard error
/// sqrt((mean of the fourth powers of the errors - R^2) / N).
///
/// For classes, with Q(i | j) the share of the cases of class j that are taken for class i, the
/// risk is the sum over j of prior(j) R(j), where R(j) = sum over i of C(i | j) Q(i | j). The
/// standard error is sqrt(sum over j of prior(j)^2 (sum over i of C(i | j)^2 Q(i | j) - R(j)^2) /
/// N_j). Where priors are the shares of the sample, the risk is the mean cost R per case instead,
/// with the standard error sqrt((mean of the squared costs - R^2) / N).
///
/// Case weights weigh means; N stays the number of cases.
class RiskModel {
 public:
  /// Of numbers.
  RiskModel() = default;
  /// Of classes. `classes`: **borrowed**; `priorsAreShares`: whether priors were estimated from the
  /// sample.
  RiskModel(ClassModel const& classes, bool priorsAreShares)
      : classes_(&classes), priorsAreShares_(priorsAreShares) {}

  RiskEstimate Estimate(LossSums const& losses) const;

 private:
  RiskEstimate EstimateBySample(LossSums const& losses) const;
  RiskEstimate EstimateByPriors(LossSums const& losses) const;

  ClassModel const* classes_ = nullptr;
  bool priorsAreShares_ = false;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_RISK_H_
