#include "growing/node_sums.h"

#include <algorithm>
#include <numeric>

namespace tree::grow {
namespace {

/// Cases that all weigh 1 and have classes: counting them is all.
void CountChildren(CaseLists const& lists, NodeRanges const& node, ChildOfPlace const& childOf,
                   std::vector<NodeSums>& children) {
  std::size_t const numClasses = children.front().classWeights.size();
  std::uint16_t const* const classes = lists.GetClasses();
  std::vector<std::int64_t> counts(children.size() * numClasses);  // [child][class]
  ForEachPolling(node.places.begin, node.places.end, lists.GetWorkers(), [&](std::uint32_t place) {
    if (childOf[place] != kNoChild) ++counts[childOf[place] * numClasses + classes[place]];
  });
  for (std::size_t child = 0; child < children.size(); ++child) {
    NodeSums& sums = children[child];
    auto const first = counts.begin() + static_cast<std::ptrdiff_t>(child * numClasses);
    sums.classWeights.assign(first, first + static_cast<std::ptrdiff_t>(numClasses));
    sums.size = std::accumulate(sums.classWeights.begin(), sums.classWeights.end(), std::int64_t{});
    sums.weight = sums.size;
    sums.numCases = static_cast<std::size_t>(sums.size);
  }
}

}  // namespace

NodeSums SumCases(TrainingData const& data, std::span<std::uint32_t const> cases,
                  PollFunction const& poll) {
  NodeSums sums;
  sums.numCases = cases.size();
  sums.classWeights.resize(data.GetNumClasses());
  FixedWeights const& weights = data.GetWeights();
  FixedWeights const& frequencies = data.GetFrequencies();
  if (sums.classWeights.empty() && !cases.empty()) {
    sums.least = sums.greatest = data.GetNumbers().multiples[cases.front()];
  }
  ForSlices(cases.size(), poll, [&](std::size_t begin, std::size_t end) {
    for (std::uint32_t const index : cases.subspan(begin, end - begin)) {
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
  });
  return sums;
}

std::vector<NodeSums> SumChildren(TrainingData const& data, CaseLists const& lists,
                                  NodeRanges const& node, ChildOfPlace const& childOf,
                                  int numChildren) {
  std::vector<NodeSums> children(static_cast<std::size_t>(numChildren));
  std::size_t const numClasses = data.GetNumClasses();
  for (NodeSums& sums : children) sums.classWeights.resize(numClasses);
  std::int64_t const* const frequencies = lists.GetFrequencies();
  if (numClasses > 0 && frequencies == nullptr && lists.GetWeights() == nullptr) {
    CountChildren(lists, node, childOf, children);
    return children;
  }
  std::uint16_t const* const classes = lists.GetClasses();
  std::int64_t const* const numbers = lists.GetNumbers();
  ForEachPolling(node.places.begin, node.places.end, lists.GetWorkers(), [&](std::uint32_t place) {
    if (childOf[place] == kNoChild) return;
    NodeSums& sums = children[childOf[place]];
    std::int64_t const weight = lists.WeightAt(place);
    sums.size += frequencies == nullptr ? 1 : frequencies[place];
    sums.weight += weight;
    if (numClasses > 0) {
      sums.classWeights[classes[place]] += weight;
    } else {
      std::int64_t const number = numbers[place];
      sums.weightedNumbers += WideInteger{weight} * number;
      sums.least = sums.numCases == 0 ? number : std::min(sums.least, number);
      sums.greatest = sums.numCases == 0 ? number : std::max(sums.greatest, number);
    }
    ++sums.numCases;
  });
  return children;
}

std::vector<double> ClassWeightsOf(TrainingData const& data, NodeSums const& sums) {
  std::vector<double> weights;
  for (std::int64_t const weight : sums.classWeights) {
    weights.push_back(static_cast<double>(weight) * data.GetWeights().unit);
  }
  return weights;
}

}  // namespace tree::grow
