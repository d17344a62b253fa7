#ifndef TREE_GROW_SRC_GROWING_TREE_GROWER_H_
#define TREE_GROW_SRC_GROWING_TREE_GROWER_H_

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "growing/class_model.h"
#include "growing/growth.h"
#include "growing/pruning_path.h"
#include "growing/risk.h"
#include "growing/split_method.h"
#include "growing/training_data.h"
#include "growing/workers.h"
#include "tree/grow/grower.h"

namespace tree::grow {

/// What the growing algorithms have in common: all but how splits are found, and what the settings
/// say about classes and pruning, which `Algorithm` tells.
class TreeGrower final : public Grower {
 public:
  /// What is an algorithm's own.
  struct Algorithm {
    std::unique_ptr<AlgSettings> settings;
    /// Parts of `settings`, null where the algorithm has none: of numbers, or without pruning.
    ///@{
    Priors const* priors = nullptr;
    Cost const* costs = nullptr;
    PruningSpec const* pruning = nullptr;
    ///@}
    /// Into how many intervals continuous predictors are divided for algorithms that only know
    /// categories; 0 for the others.
    int numIntervals = 0;
    CodeOrder codeOrder = CodeOrder::kByPlace;       ///< in which the method reads codes
    OrderedForm orderedForm = OrderedForm::kSorted;  ///< in which it reads ordered predictors
    /// Makes the method that finds splits. `classes`: null for numbers; `limits`: of the children;
    /// `totalWeight`: of the cases that the tree is grown on.
    std::function<std::unique_ptr<SplitMethod>(TrainingData const& data, ClassModel const* classes,
                                               double minChildSize, double totalWeight)>
        makeMethod;
  };

  TreeGrower(DataSet const& data, CaseRoles const& roles, Algorithm algorithm,
             GrowOptions const& options);
  ~TreeGrower() override;

  // TreeAlgorithmBase
  Node const* GetRootNode() const override { return root_.get(); }
  AlgSettings const* GetSettings() const noexcept override { return algorithm_.settings.get(); }
  bool IsClassificationTree() const override { return training_->GetNumClasses() > 0; }
  TreeStatisticsImp const* GetStatistics() const noexcept override { return statistics_.get(); }
  Node const* FindNode(unsigned int id) const noexcept override { return FindNodeImp(id); }
  int GetNumNodes(NodeSelection selection) const noexcept override;
  GainsIntf* MakeGains(GainsSettings const& settings) const noexcept override;

  // TreeAlgorithm
  bool Grow() noexcept override;
  bool GrowNode(unsigned int nodeId, int numLevels) noexcept override;
  bool FindCandidateSplits(unsigned int nodeId,
                           std::vector<SplitRule>* candidates) noexcept override;
  bool ApplySplit(unsigned int nodeId, SplitRule const& rule) noexcept override;
  bool PruneNode(unsigned int nodeId) noexcept override;
  bool Prune() noexcept override;
  bool GetPruningSequence(std::vector<PruningStep>* steps) noexcept override;
  bool Validate() noexcept override;
  bool SetTree(NodeImp* root) noexcept override;
  NodeImp const* GetTree() const noexcept override { return root_.get(); }
  void SetProgressListener(ProgressListener* listener) noexcept override {
    workers_.SetListener(listener);
  }
  AlgorithmFailure GetFailure() const noexcept override { return failure_; }
  char const* GetFailureMessage() const noexcept override { return message_.c_str(); }

  // Grower
  std::size_t GetNumCases(DataSample sample) const noexcept override;
  LeftOutCases const& GetLeftOut() const noexcept override { return leftOut_; }
  std::vector<std::string> const& GetRemarks() const noexcept override { return remarks_; }
  int GetNumFolds() const noexcept override;

 private:
  /// The classes, and the whole weight, of the cases that a tree is grown on.
  struct Basis {
    std::optional<ClassModel> classes;  // empty for numbers
    double totalWeight = 0.0;

    ClassModel const* Classes() const { return classes.has_value() ? &*classes : nullptr; }
  };
  /// What becomes of the lists of sorted predictors: copied for the tree that grows, or its own.
  enum class SortedLists { kKept, kUsedUp };
  /// A subtree beside the tree, until it takes its place.
  struct Sprout;

  template <class Operation>
  bool Attempt(Operation const& operation) noexcept;
  void SelectSamples(DataSet const& data, CaseRoles const& roles, GrowOptions const& options);
  void Prepare(double share);
  void PrepareToEstimate();
  PruningPath FindPath(IndexedTree const& tree);
  Basis MakeBasis(std::vector<std::uint8_t> const& included);
  GrowthLimits MakeLimits(int maxLevels) const;
  NodeImp* FindNodeImp(unsigned int id) const noexcept;
  NodeImp& RequireNode(unsigned int id) const;
  void CheckStatistics(Node const& node) const;
  void Changed();

  std::unique_ptr<Sprout> PlantSprout(NodeImp const* node, GrowthLimits const& limits,
                                      SortedLists sortedLists);
  void Graft(NodeImp& node, std::unique_ptr<NodeImp> grown);
  void FillTestStatistics(NodeImp& root, std::vector<std::uint32_t> const& cases);
  std::vector<std::uint32_t> TestCasesOf(NodeImp const& node);
  void CheckSplit(SplitRuleImp const& rule) const;

  RiskModel MakeRiskModel() const;
  ValidationType GetValidation() const;
  std::vector<RiskEstimate> const& RisksOfPath(IndexedTree const& tree, PruningPath const& path);
  std::vector<RiskEstimate> EstimateRisks(IndexedTree const& tree, PruningPath const& path);
  std::vector<RiskEstimate> EstimateOnSample(IndexedTree const& tree, PruningPath const& path,
                                             TrainingData const& sample);
  std::vector<RiskEstimate> CrossValidate(std::vector<double> const& complexities);
  void AddFold(std::vector<std::uint8_t> const& included, std::vector<double> const& complexities,
               std::vector<LossSums>& sums);

  Algorithm algorithm_;
  LeftOutCases leftOut_;
  std::unique_ptr<TrainingData> training_;
  std::unique_ptr<TrainingData> test_;   // null without a test sample
  std::vector<std::string> ownRemarks_;  // on the data as a whole
  std::vector<std::string> remarks_;     // with those on predictors
  Workers workers_;
  Basis basis_;  // of the whole training sample
  std::unique_ptr<NodeImp> root_;
  std::unique_ptr<TreeStatisticsImp> statistics_;
  unsigned int nextId_ = 0;
  // Of the present tree, as long as it has not changed: the risks of its pruned subtrees, and its
  // own, which is known once it was validated or pruned.
  std::optional<std::vector<RiskEstimate>> risksOfPath_;
  std::optional<RiskEstimate> risk_;
  AlgorithmFailure failure_ = FailureNone;
  std::string message_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_TREE_GROWER_H_
