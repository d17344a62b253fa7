#include "growing/class_priors.h"

#include <cmath>
#include <cstddef>
#include <numeric>
#include <string>

#include "tree/grow/input_error.h"

namespace tree::grow {
namespace {

/// What the type makes of the priors, before costs, absent classes and norming.
double PriorOf(Priors const& priors, std::size_t index, std::vector<double> const& classWeights) {
  switch (priors.GetType()) {
    case PriorTypeAlternate:
      return classWeights[index];
    case PriorTypeCustom:
      return priors.Get(static_cast<int>(index));
    default:
      return 1.0;
  }
}

double SumOfColumn(Cost const& costs, std::size_t observed, std::size_t numClasses) {
  double sum = 0.0;
  for (std::size_t predicted = 0; predicted < numClasses; ++predicted) {
    sum += CostOf(costs, static_cast<int>(predicted), static_cast<int>(observed));
  }
  return sum;
}

/// False when there is nothing to norm.
bool Norm(std::vector<double>& values) {
  double const sum = std::accumulate(values.begin(), values.end(), 0.0);
  if (!(sum > 0.0)) return false;
  for (double& value : values) value /= sum;
  return true;
}

}  // namespace

double CostOf(Cost const& costs, int predicted, int observed) {
  double const cost = costs.Get(predicted, observed);
  if (cost >= 0.0) return cost;
  return predicted == observed ? 0.0 : 1.0;
}

void CheckClassNumbers(Priors const& priors, Cost const& costs, std::size_t numClasses) {
  double sumOfPriors = 0.0;
  double sumOfCosts = 0.0;
  for (int observed = 0; observed < static_cast<int>(numClasses); ++observed) {
    double const prior = priors.GetType() == PriorTypeCustom ? priors.Get(observed) : 1.0;
    if (!std::isfinite(prior)) {
      throw InputError("the prior of class " + std::to_string(observed) + " is infinite");
    }
    sumOfPriors += prior;
    for (int predicted = 0; predicted < static_cast<int>(numClasses); ++predicted) {
      double const cost = CostOf(costs, predicted, observed);
      if (!std::isfinite(cost)) {
        throw InputError("the cost of taking class " + std::to_string(observed) + " for class " +
                         std::to_string(predicted) + " is infinite");
      }
      sumOfCosts += cost;
    }
  }
  if (!std::isfinite(sumOfPriors)) {
    throw InputError("the priors are too large: their sum is more than a number can be");
  }
  if (!std::isfinite(sumOfCosts * sumOfCosts)) {
    throw InputError(
        "the costs are too large: the square of their sum is more than a number can be");
  }
}

std::vector<double> FindPriors(Priors const& priors, std::vector<double> const& classWeights) {
  std::vector<double> found(classWeights.size());
  for (std::size_t j = 0; j < found.size(); ++j) {
    if (classWeights[j] > 0.0) found[j] = PriorOf(priors, j, classWeights);
  }
  if (Norm(found)) return found;
  for (std::size_t j = 0; j < found.size(); ++j) found[j] = classWeights[j] > 0.0 ? 1.0 : 0.0;
  Norm(found);
  return found;
}

std::vector<double> AlterPriors(std::vector<double> const& priors, Cost const& costs) {
  std::vector<double> altered(priors);
  for (std::size_t j = 0; j < altered.size(); ++j) {
    altered[j] *= SumOfColumn(costs, j, altered.size());
  }
  return Norm(altered) ? altered : priors;
}

}  // namespace tree::grow
