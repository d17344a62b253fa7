#ifndef TREE_GROW_SRC_GROWING_SPLIT_METHOD_H_
#define TREE_GROW_SRC_GROWING_SPLIT_METHOD_H_

#include <memory>
#include <span>
#include <vector>

#include "growing/case_lists.h"
#include "growing/node_sums.h"
#include "growing/workers.h"
#include "tree/nodes.h"
#include "tree/split_rules.h"

namespace tree::grow {

/// A node that is being grown.
struct GrowingNode {
  NodeImp* node = nullptr;  ///< with its statistics; **borrowed** from the tree
  int level = 0;            ///< below the node that growing began at
  NodeRanges ranges;
  NodeSums sums;
};

/// Rules of one node, best first.
using RuleList = std::vector<std::unique_ptr<SplitRuleImp>>;

/// What is the growing algorithm's own: how the splits of a node are found. Called with many nodes
/// of a level at a time, so that the work on each predictor can go on without a pause.
class SplitMethod {
 public:
  virtual ~SplitMethod() = default;

  /// The splits that each node could have: the first one is the best, and the others compete with
  /// it, at most as many together as the settings keep; none where the settings allow no split.
  /// Rules carry their statistics. A method that reads `CaseRows` stores in each node what its
  /// cases have of the predictors in them, too (`RowRanges`), since it goes through them all.
  virtual std::vector<RuleList> FindSplits(CaseLists const& lists,
                                           std::span<GrowingNode const> nodes,
                                           Workers& workers) = 0;

  /// The surrogates of the primary split of each node; none for nodes without one. `primaries`: by
  /// node; may be null. `childOf`: where the primary splits send their cases.
  virtual std::vector<RuleList> FindSurrogates(CaseLists const& lists,
                                               std::span<GrowingNode const> nodes,
                                               std::vector<SplitRuleImp const*> const& primaries,
                                               ChildOfPlace const& childOf, Workers& workers) = 0;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_SPLIT_METHOD_H_
