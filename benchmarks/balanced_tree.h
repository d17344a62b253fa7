#ifndef TREE_BENCHMARKS_BALANCED_TREE_H_
#define TREE_BENCHMARKS_BALANCED_TREE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "tree/nodes.h"

namespace tree::bench {

inline constexpr int kNumPredictors = 8;

/// What a node can do with a missing value.
enum class MissingValues {
  kNone,        ///< nothing: no case has one
  kMapped,      ///< the primary rule sends it to its last child
  kSurrogates,  ///< two surrogates are asked, and then the dumb rule
};

/// A complete binary tree with 2^`depth` terminal nodes. Each level cuts the range that is left of
/// one predictor in the middle, so that cases drawn evenly from [0, 1) end anywhere with the same
/// probability. Nodes are made level by level, as most growing algorithms do.
std::unique_ptr<NodeImp> MakeBalancedTree(int depth, MissingValues missing);

/// Cases drawn evenly from [0, 1) per predictor, in no order, each value missing with the given
/// probability. The same on every run.
class Cases {
 public:
  Cases(std::size_t count, double missingProbability);

  std::size_t size() const { return values_.size() / kNumPredictors; }
  double const* operator[](std::size_t index) const { return &values_[index * kNumPredictors]; }

 private:
  std::vector<double> values_;
};

/// The same tree as `MakeBalancedTree` in one array without any allocation per node: the baseline
/// that says what the object model costs.
class FlatTree {
 public:
  explicit FlatTree(int depth);

  /// Index of the terminal node for a case.
  std::size_t Drop(double const* values) const {
    std::size_t index = 0;
    while (nodes_[index].left != 0) {
      Item const& item = nodes_[index];
      index = item.left + (values[item.predictor] > item.cutPoint ? 1U : 0U);
    }
    return index;
  }

 private:
  struct Item {
    double cutPoint;
    std::uint32_t predictor;
    std::uint32_t left;  // 0 in a terminal node
  };

  std::vector<Item> nodes_;
};

}  // namespace tree::bench

#endif  // TREE_BENCHMARKS_BALANCED_TREE_H_
