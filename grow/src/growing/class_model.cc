#include "growing/class_model.h"

#include <numeric>

#include "growing/class_priors.h"

namespace tree::grow {
namespace {

// Costs that differ by less than rounding are equal.
constexpr double kTie = 1e-12;

std::vector<double> FactorsOf(std::vector<double> const& priors,
                              std::vector<double> const& classWeights) {
  std::vector<double> factors(priors.size());
  for (std::size_t j = 0; j < priors.size(); ++j) {
    if (classWeights[j] > 0.0) factors[j] = priors[j] / classWeights[j];
  }
  return factors;
}

}  // namespace

ClassModel::ClassModel(Priors const& priors, Cost const& costs,
                       std::vector<double> const& classWeights)
    : priors_(FindPriors(priors, classWeights)), factors_(FactorsOf(priors_, classWeights)) {
  splitFactors_ =
      priors.HasAlteredValues() ? FactorsOf(AlterPriors(priors_, costs), classWeights) : factors_;
  for (std::size_t predicted = 0; predicted < priors_.size(); ++predicted) {
    for (std::size_t observed = 0; observed < priors_.size(); ++observed) {
      costs_.push_back(
          grow::CostOf(costs, static_cast<int>(predicted), static_cast<int>(observed)));
    }
  }
}

std::vector<double> ClassModel::Probabilities(std::vector<double> const& nodeWeights) const {
  std::vector<double> probabilities(nodeWeights);
  for (std::size_t j = 0; j < probabilities.size(); ++j) probabilities[j] *= factors_[j];
  double sum = std::accumulate(probabilities.begin(), probabilities.end(), 0.0);
  if (!(sum > 0.0)) {
    probabilities = nodeWeights;
    sum = std::accumulate(probabilities.begin(), probabilities.end(), 0.0);
  }
  if (!(sum > 0.0)) return probabilities;
  for (double& probability : probabilities) probability /= sum;
  return probabilities;
}

std::size_t ClassModel::Predict(std::vector<double> const& probabilities) const {
  std::size_t best = 0;
  double leastCost = 0.0;
  for (std::size_t predicted = 0; predicted < probabilities.size(); ++predicted) {
    double cost = 0.0;
    for (std::size_t observed = 0; observed < probabilities.size(); ++observed) {
      cost += CostOf(predicted, observed) * probabilities[observed];
    }
    if (predicted == 0 || cost < leastCost * (1.0 - kTie)) {
      best = predicted;
      leastCost = cost;
    }
  }
  return best;
}

double ClassModel::RiskOf(std::size_t predicted, std::vector<double> const& nodeWeights) const {
  double risk = 0.0;
  for (std::size_t j = 0; j < nodeWeights.size(); ++j) {
    risk += CostOf(predicted, j) * factors_[j] * nodeWeights[j];
  }
  return risk;
}

}  // namespace tree::grow
