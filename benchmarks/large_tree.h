#ifndef TREE_BENCHMARKS_LARGE_TREE_H_
#define TREE_BENCHMARKS_LARGE_TREE_H_

#include <cstddef>
#include <memory>

#include "tree/nodes.h"

namespace tree::bench {

/// About a million. Odd, so that each node has two children or none.
inline constexpr std::size_t kNumNodes = 1'000'001;

/// Makes what a node holds besides its id and its children.
using Fill = void (*)(NodeImp& node, bool isTerminal);

/// A complete binary tree of `kNumNodes` nodes, made level by level, ids counted from 0 in this
/// order.
std::unique_ptr<NodeImp> MakeLargeTree(Fill fill);

// Each of these is a Fill.

void FillWithNothing(NodeImp& node, bool isTerminal);
/// One rule with one cut point in inner nodes.
void FillWithRule(NodeImp& node, bool isTerminal);
/// The rule, and a distribution of the training sample over 3 classes with varying predictions.
void FillWithRuleAndClasses(NodeImp& node, bool isTerminal);
/// The rule, and regression statistics of the training sample with a standard deviation.
void FillWithRuleAndRegression(NodeImp& node, bool isTerminal);

}  // namespace tree::bench

#endif  // TREE_BENCHMARKS_LARGE_TREE_H_
