#include "growing/node_sums.h"

#include <algorithm>

namespace tree::grow {

NodeSums SumCases(TrainingData const& data, std::span<std::uint32_t const> cases) {
  NodeSums sums;
  sums.classWeights.resize(data.GetNumClasses());
  FixedWeights const& weights = data.GetWeights();
  FixedWeights const& frequencies = data.GetFrequencies();
  if (sums.classWeights.empty() && !cases.empty()) {
    sums.least = sums.greatest = data.GetNumbers().multiples[cases.front()];
  }
  for (std::uint32_t const index : cases) {
    sums.size += frequencies.Of(index);
    std::int64_t const weight = weights.Of(index);
    sums.weight += weight;
    if (sums.classWeights.empty()) {
      std::int64_t const number = data.GetNumbers().multiples[index];
      sums.weightedNumbers += WideInteger{weight} * number;
      sums.least = std::min(sums.least, number);
      sums.greatest = std::max(sums.greatest, number);
    } else {
      sums.classWeights[data.GetClasses()[index]] += weight;
    }
  }
  return sums;
}

std::vector<double> ClassWeightsOf(TrainingData const& data, NodeSums const& sums) {
  std::vector<double> weights;
  for (std::int64_t const weight : sums.classWeights) {
    weights.push_back(static_cast<double>(weight) * data.GetWeights().unit);
  }
  return weights;
}

}  // namespace tree::grow
