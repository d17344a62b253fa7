#ifndef TREE_TESTS_PROPERTY_MODELS_TREE_MODEL_H_
#define TREE_TESTS_PROPERTY_MODELS_TREE_MODEL_H_

// A slow, obvious counterpart of trees of nodes: everything by recursion.

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "property/models/choices.h"
#include "property/models/rule_models.h"
#include "property/models/statistics_models.h"
#include "tree/nodes.h"

namespace tree::testing {

/// The cases of the random trees have this many values.
inline constexpr int kNumPredictors = 3;

struct NodeModel {
  /// Everything below and in this node, without a parent.
  std::unique_ptr<NodeModel> Clone() const;
  /// Makes this node a copy of `other`; the parent stays.
  void AssignFrom(NodeModel const& other);
  /// Appends this node and all below it in prefix order.
  void Collect(std::vector<NodeModel*>& nodes);
  int Size() const;
  double NodeSize(int slot) const;
  double PercentageSize(int slot) const;

  int Classify(std::vector<double> const& values) const;
  /// Where a case ends, and null if it does not reach a stop node that was given.
  NodeModel const* Drop(std::vector<double> const& values, NodeModel const* stop) const;

  NodeModel* parent = nullptr;
  std::vector<std::unique_ptr<NodeModel>> children;
  std::vector<std::unique_ptr<RuleModel>> competitors;
  std::vector<std::unique_ptr<RuleModel>> surrogates;
  unsigned int id = 0;
  bool isClassification = true;
  std::array<std::optional<RegressionModel>, 2> regression;
  std::array<std::optional<ClassModel>, 2> classes;
  std::vector<PredictorModel> predictors;
};

/// A node of the library together with its model, one of each tree for the same place.
struct NodePair {
  NodeImp* node;
  NodeModel* model;
};

/// A tree of the library and its model, which own their nodes.
struct TreePair {
  TreePair();

  /// All nodes in prefix order.
  std::vector<NodePair> Nodes() const;

  std::unique_ptr<NodeImp> root;
  std::unique_ptr<NodeModel> model;
};

/// A case: one value per predictor.
std::vector<double> ChooseCase(Choices& choices);

/// Gives the terminal node `place` terminal children, but no rules to tell them apart.
void AddChildren(NodePair place, int numChildren);

/// Makes `place` a node with `numChildren` terminal children, with a chosen primary rule and chosen
/// surrogates. What it had below it before is deleted.
void Split(NodePair place, int numChildren, bool withDumbChild, Choices& choices);

/// One of the terminal nodes.
NodePair ChooseTerminal(TreePair const& tree, Choices& choices);

/// A tree of at most `maxNodes` nodes, ids in order of creation.
TreePair ChooseTree(Choices& choices, int maxNodes, bool withDumbChild);

/// Throws unless both trees are alike in all that can be read: structure, rules, statistics,
/// predictor summaries, and the order of the traversal from the root and from a chosen node.
void Check(TreePair const& tree, Choices& choices);

/// Throws unless the case ends at the same node in both, with and without a chosen stop node.
void CheckRouting(TreePair const& tree, std::vector<double> const& values, Choices& choices);

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_TREE_MODEL_H_
