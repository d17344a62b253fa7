#ifndef EXAMPLES_PENGUINS_HANDMADE_TREE_ALGORITHM_H_
#define EXAMPLES_PENGUINS_HANDMADE_TREE_ALGORITHM_H_

#include <array>
#include <memory>
#include <vector>

#include "tree/nodes.h"
#include "tree/results.h"
#include "tree/settings.h"

namespace penguins {

/// The algorithm interface around a classification tree that was not grown but made, and counted,
/// elsewhere: enough for a program that shows trees to show this one.
/// It has the tree and its settings, no cases. So it answers questions about the tree, validates it
/// by the counts in its nodes and prunes at a node; what would look at cases again, as growing,
/// splitting and the choice of a pruned subtree do, fails with `FailureNoData`.
class HandmadeTreeAlgorithm : public tree::TreeAlgorithm {
 public:
  /// `root`: a tree whose nodes have class distributions, or null.
  HandmadeTreeAlgorithm(std::unique_ptr<tree::NodeImp> root,
                        tree::CCartSettingsImp const& settings);

  tree::Node const* GetRootNode() const noexcept override;
  tree::AlgSettings const* GetSettings() const noexcept override;
  bool IsClassificationTree() const noexcept override;
  tree::TreeStatisticsImp const* GetStatistics() const noexcept override;
  tree::Node const* FindNode(unsigned int id) const noexcept override;
  int GetNumNodes(tree::NodeSelection selection) const noexcept override;
  /// A `GainsTable`.
  tree::GainsIntf* MakeGains(tree::GainsSettings const& settings) const noexcept override;

  bool Grow() noexcept override;
  bool GrowNode(unsigned int nodeId, int numLevels) noexcept override;
  bool FindCandidateSplits(unsigned int nodeId,
                           std::vector<tree::SplitRule>* candidates) noexcept override;
  bool ApplySplit(unsigned int nodeId, tree::SplitRule const& rule) noexcept override;
  bool PruneNode(unsigned int nodeId) noexcept override;
  bool Prune() noexcept override;
  bool GetPruningSequence(std::vector<tree::PruningStep>* steps) noexcept override;
  /// The risk is the mean cost of a case, which is the share of the misclassified where every
  /// mistake costs 1.
  bool Validate() noexcept override;
  bool SetTree(tree::NodeImp* root) noexcept override;
  tree::NodeImp const* GetTree() const noexcept override;
  void SetProgressListener(tree::ProgressListener* listener) noexcept override;
  tree::AlgorithmFailure GetFailure() const noexcept override;
  char const* GetFailureMessage() const noexcept override;

 private:
  bool Succeed() noexcept;
  bool Fail(tree::AlgorithmFailure failure, char const* message) noexcept;
  bool FailUnknownNode(unsigned int nodeId) noexcept;
  bool FailWithoutCases(char const* purpose) noexcept;
  bool FailWithoutCasesAt(unsigned int nodeId, char const* purpose) noexcept;

  std::unique_ptr<tree::NodeImp> root_;
  tree::CCartSettingsImp settings_;
  std::unique_ptr<tree::TreeStatisticsImp> statistics_;  // null unless the tree is validated
  tree::ProgressListener* listener_ = nullptr;           // not owned
  tree::AlgorithmFailure failure_ = tree::FailureNone;
  std::array<char, 128> message_{};  // no memory is needed to say that there is none
};

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_HANDMADE_TREE_ALGORITHM_H_
