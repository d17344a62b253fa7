#ifndef TREE_EXAMPLES_HAND_BUILT_HAND_BUILT_TREE_H_
#define TREE_EXAMPLES_HAND_BUILT_HAND_BUILT_TREE_H_

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "tree/results.h"

namespace hand_built {

/// A classification tree that somebody built, behind the interface of growing algorithms: it can be
/// looked at, validated, pruned by hand and routed through. There are no cases behind it, so
/// whatever would have to grow fails with `FailureNoData`.
class HandBuiltTree final : public tree::TreeAlgorithm {
 public:
  /// `root`: **taken**; statistics and ids are in place. `settings`: **copied**.
  HandBuiltTree(tree::CCartSettingsImp const& settings, std::unique_ptr<tree::NodeImp> root);

  tree::Node const* GetRootNode() const noexcept override;
  tree::AlgSettings const* GetSettings() const noexcept override;
  bool IsClassificationTree() const noexcept override;
  tree::TreeStatisticsImp const* GetStatistics() const noexcept override;
  tree::Node const* FindNode(unsigned int id) const noexcept override;
  int GetNumNodes(tree::NodeSelection selection) const noexcept override;
  tree::GainsIntf* MakeGains(tree::GainsSettings const& settings) const noexcept override;

  bool Grow() noexcept override;
  bool GrowNode(unsigned int nodeId, int numLevels) noexcept override;
  /// The competitors that the node holds.
  bool FindCandidateSplits(unsigned int nodeId,
                           std::vector<tree::SplitRule>* candidates) noexcept override;
  bool ApplySplit(unsigned int nodeId, tree::SplitRule const& rule) noexcept override;
  bool PruneNode(unsigned int nodeId) noexcept override;
  bool Prune() noexcept override;
  bool GetPruningSequence(std::vector<tree::PruningStep>* steps) noexcept override;
  /// By the training or the test sample, with the settings' costs, and the settings' priors where
  /// they are custom; else those of the sample.
  bool Validate() noexcept override;
  bool SetTree(tree::NodeImp* root) noexcept override;
  tree::NodeImp const* GetTree() const noexcept override;
  void SetProgressListener(tree::ProgressListener* listener) noexcept override;
  tree::AlgorithmFailure GetFailure() const noexcept override;
  char const* GetFailureMessage() const noexcept override;

 private:
  template <class Work>
  bool Guarded(Work work) noexcept;
  bool Succeed() noexcept;
  bool Fail(tree::AlgorithmFailure failure, char const* reason) noexcept;
  bool FailAt(unsigned int nodeId, tree::AlgorithmFailure failure, char const* reason) noexcept;
  bool HasNode(unsigned int nodeId) noexcept;
  bool GoOn(double fraction) noexcept;

  tree::NodeImp* NodeToChange(unsigned int id);
  double CostOf(int predicted, int observed) const;
  std::vector<double> WeightsOfClasses(tree::ClsInfo const& sample) const;
  bool MeasureRisk(tree::DataSample sample, tree::ValidationType validation);

  tree::CCartSettingsImp settings_;
  std::unique_ptr<tree::NodeImp> root_;
  std::optional<tree::TreeStatisticsImp> statistics_;
  tree::ProgressListener* listener_ = nullptr;  // not owned
  tree::AlgorithmFailure failure_ = tree::FailureNone;
  std::array<char, 200> message_ = {};  // of fixed size: a failure never needs memory
};

}  // namespace hand_built

#endif  // TREE_EXAMPLES_HAND_BUILT_HAND_BUILT_TREE_H_
