#ifndef TREE_GROW_SRC_GROWING_PRUNING_PATH_H_
#define TREE_GROW_SRC_GROWING_PRUNING_PATH_H_

#include <cstddef>
#include <vector>

#include "growing/class_model.h"
#include "growing/indexed_tree.h"

namespace tree::grow {

/// Each node's part of the risk of the tree if it were terminal, on the training sample, by
/// position: the cost expected of its prediction, or the squared errors around its mean, per case
/// of the whole sample. `classes`: null for numbers.
std::vector<double> NodeRisks(IndexedTree const& tree, ClassModel const* classes);

/// The sequence of subtrees that minimise risk plus complexity times number of terminal nodes, from
/// the whole tree to the root alone, each pruned at its weakest links. Source: Breiman, Friedman,
/// Olshen and Stone 1984, section 3.3. Its second subtree may have the complexity 0, like the
/// whole tree: the smallest one with the same risk. Takes n log n for n nodes that are not very
/// deep.
class PruningPath {
 public:
  /// One subtree.
  struct Step {
    double complexity;  ///< from which on the subtree is the best one
    std::size_t numTerminalNodes;
    std::vector<std::size_t> collapsed;  ///< nodes that became terminal in this step, by position
  };

  /// `risks`: of `NodeRisks`.
  PruningPath(IndexedTree const& tree, std::vector<double> const& risks,
              PollFunction const& poll = NoPoll);

  std::vector<Step> const& GetSteps() const { return steps_; }
  /// The last subtree whose complexity is not greater; the whole tree if there is none.
  std::size_t FindStep(double complexity) const;
  /// The complexity that stands for a step in a validation: the geometric mean of its own and that
  /// of the next one; infinite for the root alone. Source: Breiman et al. 1984, section 3.4.2.
  double TypicalComplexity(std::size_t step) const;

 private:
  std::vector<Step> steps_;
};

/// Walks along a path and keeps the terminal nodes of the present subtree.
class PrunedSubtree {
 public:
  /// At the first step, the whole tree. Both **borrowed**.
  PrunedSubtree(IndexedTree const& tree, PruningPath const& path);

  /// Goes on to a later step. `removed` is called with each node that is terminal no more, and
  /// `added` with each that has become so, by position.
  template <class Removed, class Added>
  void AdvanceTo(std::size_t step, Removed const& removed, Added const& added) {
    while (step_ < step) {
      ++step_;
      for (std::size_t const top : path_.GetSteps()[step_].collapsed) {
        for (std::size_t position = top + 1; position < tree_.EndOf(top); ++position) {
          if (terminal_[position] == 0) continue;
          terminal_[position] = 0;
          removed(position);
        }
        terminal_[top] = 1;
        added(top);
      }
    }
  }
  bool IsTerminal(std::size_t position) const { return terminal_[position] != 0; }

 private:
  IndexedTree const& tree_;
  PruningPath const& path_;
  std::size_t step_ = 0;
  std::vector<char> terminal_;  // by position
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_PRUNING_PATH_H_
