#ifndef TREE_GROW_SRC_GROWING_NODE_SUMS_H_
#define TREE_GROW_SRC_GROWING_NODE_SUMS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "growing/case_lists.h"
#include "growing/training_data.h"

namespace tree::grow {

/// What the cases of a node add up to, exactly.
struct NodeSums {
  std::size_t numCases = 0;                ///< whatever they weigh
  std::int64_t size = 0;                   ///< of frequencies, in their unit
  std::int64_t weight = 0;                 ///< of weights, in their unit
  std::vector<std::int64_t> classWeights;  ///< of weights, by class; empty for numbers
  WideInteger weightedNumbers = 0;         ///< of weights times numbers, in units of both
  std::int64_t least = 0;                  ///< of the numbers
  std::int64_t greatest = 0;               ///< of the numbers
};

/// Adds up cases. Linear in them; polls on the way.
NodeSums SumCases(TrainingData const& data, std::span<std::uint32_t const> cases,
                  PollFunction const& poll = NoPoll);

/// Adds up the cases of a node that go to each of its children. `childOf`: by place, below
/// `numChildren` or `kNoChild`. Linear in the cases of the node, which are read in their order.
std::vector<NodeSums> SumChildren(TrainingData const& data, CaseLists const& lists,
                                  NodeRanges const& node, ChildOfPlace const& childOf,
                                  int numChildren);

/// Sums of weights by class as numbers.
std::vector<double> ClassWeightsOf(TrainingData const& data, NodeSums const& sums);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_NODE_SUMS_H_
