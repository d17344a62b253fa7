#ifndef TREE_CLI_SRC_OUTPUT_SHOWN_TREE_H_
#define TREE_CLI_SRC_OUTPUT_SHOWN_TREE_H_

#include <string>
#include <vector>

#include "output/names.h"
#include "tree/misclassification.h"
#include "tree/nodes.h"
#include "tree/settings.h"

namespace tree::cli {

/// A tree with what it takes to show it. Everything is **borrowed** for this object's life.
class ShownTree {
 public:
  /// `settings`: with which the tree was grown.
  ShownTree(Node const& root, TreeNames const& names, AlgSettings const& settings);

  Node const& GetRoot() const { return root_; }
  TreeNames const& GetNames() const { return names_; }
  /// Whether the target has classes.
  bool HasClasses() const { return root_.GetClsInfo(TrainingSample) != nullptr; }
  /// Whether there is a test sample.
  bool HasTestSample() const { return root_.GetNodeSize(TestSample) > 0.0; }

  /// The prediction of a node: the label of a class, not escaped, or a number for people.
  std::string Prediction(Node const& node) const;
  /// The cost of taking all training cases of a node for what it predicts, by the settings' costs:
  /// without costs, the weight of those of other classes. Requires classes.
  double Loss(Node const& node) const;
  /// The sum of the squared differences between the training cases of a node and their mean, by
  /// weight. Requires a target without classes.
  static double Deviance(Node const& node);
  /// The size of a node, in percent of the root.
  double PercentSize(Node const& node, DataSample sample) const;
  /// The probabilities of the classes in a node, by class. Requires classes.
  static std::vector<double> Probabilities(Node const& node);

 private:
  Node const& root_;
  TreeNames const& names_;
  Cost const* costs_;  // null where there are none
};

/// Walks a tree in prefix order, and knows how deep it is.
class DepthWalk {
 public:
  explicit DepthWalk(Node const& root) : nodes_(&root) {}

  /// The next node, the root at first; null at the end.
  Node const* Next();
  /// The depth of the last node below the root, where it is 0.
  std::size_t GetDepth() const { return path_.size() - 1; }

 private:
  PrefixNodeIterator nodes_;
  std::vector<Node const*> path_;  // from the root to the last node
};

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_SHOWN_TREE_H_
