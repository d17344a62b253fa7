#ifndef TREE_GROW_SRC_GROWING_INDEXED_TREE_H_
#define TREE_GROW_SRC_GROWING_INDEXED_TREE_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "growing/training_data.h"
#include "growing/workers.h"
#include "tree/nodes.h"

namespace tree::grow {

/// The nodes of a tree by position in prefix order, so that the descendants of a node are those
/// that follow it up to `EndOf`. Good until the tree changes.
class IndexedTree {
 public:
  explicit IndexedTree(NodeImp const& root);

  std::size_t GetNumNodes() const { return nodes_.size(); }
  NodeImp const& GetNode(std::size_t position) const { return *nodes_[position]; }
  /// One more than the position of the last descendant.
  std::size_t EndOf(std::size_t position) const { return ends_[position]; }
  bool IsTerminal(std::size_t position) const { return ends_[position] == position + 1; }
  /// The position of the parent; the root is its own.
  std::size_t ParentOf(std::size_t position) const { return parents_[position]; }
  /// The position of a child.
  std::size_t ChildOf(std::size_t position, std::size_t child) const {
    return children_[firstChild_[position] + child];
  }
  /// Where a case ends, by position. `values`: of the predictors.
  std::size_t Route(double const* values) const;

 private:
  std::vector<NodeImp const*> nodes_;
  std::vector<std::size_t> ends_;
  std::vector<std::size_t> parents_;
  std::vector<std::size_t> firstChild_;  // in `children_`
  std::vector<std::size_t> children_;    // positions, siblings together
};

/// Cases of a sample, by the node of a tree that each passes through.
class RoutedCases {
 public:
  /// Routes the cases with these indexes through the tree. `tree`, `data`: **borrowed**.
  RoutedCases(IndexedTree const& tree, TrainingData const& data, std::vector<std::uint32_t> cases,
              Workers& workers);

  /// The cases that pass through a node, or end in it.
  std::span<std::uint32_t const> CasesOf(std::size_t position) const {
    std::size_t const begin = begins_[position];
    return {cases_.data() + begin, begins_[tree_.EndOf(position)] - begin};
  }

 private:
  IndexedTree const& tree_;
  std::vector<std::uint32_t> cases_;  // by where they end
  std::vector<std::size_t> begins_;   // of each position in `cases_`, and the end
};

/// The indexes of all cases of a sample.
std::vector<std::uint32_t> AllCases(TrainingData const& data);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_INDEXED_TREE_H_
