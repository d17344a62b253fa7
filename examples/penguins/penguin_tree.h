#ifndef EXAMPLES_PENGUINS_PENGUIN_TREE_H_
#define EXAMPLES_PENGUINS_PENGUIN_TREE_H_

#include <memory>
#include <vector>

#include "penguins/penguin_table.h"
#include "tree/nodes.h"

// A classification tree of the three species. Its rules are written down by hand, where a growing
// algorithm would have searched for them; everything that is a number in its nodes is counted from
// the data.

namespace penguins {

/// By convention of this program, a surrogate carries two statistics of the split: in how many of
/// the node's cases both it and the primary rule could place the case, and in how many of those
/// they agreed.
inline constexpr tree::StatisticFlag kBothPlaced = tree::StatisticFlag1;
inline constexpr tree::StatisticFlag kAgreed = tree::StatisticFlag2;

/// The tree with its rules, without any numbers. Nodes are numbered in prefix order from 0.
std::unique_ptr<tree::NodeImp> BuildRules();

/// Sends the penguins down the tree and writes what is counted on the way into its nodes: class
/// distributions and predictor summaries in all of them; dumb rules, which name the biggest child,
/// and the statistics of the surrogates where a node splits.
void CountCases(tree::NodeImp& root, std::vector<Penguin> const& penguins);

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_PENGUIN_TREE_H_
