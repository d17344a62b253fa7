#ifndef TREE_GROW_SRC_GROWING_NODE_STATISTICS_H_
#define TREE_GROW_SRC_GROWING_NODE_STATISTICS_H_

#include <cstdint>
#include <memory>
#include <span>

#include "growing/class_model.h"
#include "growing/node_sums.h"
#include "growing/training_data.h"
#include "tree/nodes.h"

namespace tree::grow {

/// Number of bins of the histogram of a continuous target.
inline constexpr int kNumBins = 20;

/// Fills the class distributions and the regression statistics of nodes. The standard deviation of
/// n cases with weights w is sqrt(sum of w (y - mean)^2 / sum of w * n / (n - 1)), without the last
/// factor where fractional frequencies make n no more than 1, and so 0 for a case alone; percent
/// sizes are of the weight of the root, from 0 to 100.
class NodeStatistics {
 public:
  /// `data`: the cases of the sample; `sample`: which one it is; `classes`: null for numbers;
  /// `rootWeight`: what the weights of the root's cases add up to. All **borrowed**.
  NodeStatistics(TrainingData const& data, DataSample sample, ClassModel const* classes,
                 double rootWeight)
      : data_(data), sample_(sample), classes_(classes), rootWeight_(rootWeight) {}

  /// Stores the statistics of these cases in a node. The prediction of a node is that of its
  /// training sample, which must be there before another one. `poll`: called on the way.
  void Fill(NodeImp& node, std::span<std::uint32_t const> cases, NodeSums const& sums,
            PollFunction const& poll = NoPoll) const;

 private:
  std::unique_ptr<ClsInfoImp> MakeClsInfo(NodeImp const& node, NodeSums const& sums) const;
  std::unique_ptr<RegInfoImp> MakeRegInfo(NodeImp const& node, std::span<std::uint32_t const> cases,
                                          NodeSums const& sums, PollFunction const& poll) const;

  TrainingData const& data_;
  DataSample sample_;
  ClassModel const* classes_;
  double rootWeight_;
};

/// Whether all cases of a node that has its statistics are alike in the target.
bool IsPure(NodeImp const& node);

/// The sum of the weighted squares around the mean of a regression node, from its statistics, with
/// weights in parts of `unit`: with the weight of the whole tree, the node's part of the risk.
double SumOfSquares(RegInfoImp const& info, double unit = 1.0);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_NODE_STATISTICS_H_
