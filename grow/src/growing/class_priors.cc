#include "growing/class_priors.h"

#include <cstddef>
#include <numeric>

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
