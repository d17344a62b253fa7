#ifndef TREE_TESTS_TESTING_FAKE_ALGORITHM_H_
#define TREE_TESTS_TESTING_FAKE_ALGORITHM_H_

#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "tree/nodes.h"
#include "tree/results.h"
#include "tree/settings.h"

namespace tree::testing {

/// A growing algorithm without cases: its tree is put in by the test. What needs no cases does its
/// work (looking around, pruning a node, validating with a risk of 0, exchanging the tree), all
/// else fails for want of data, as the interface asks of an algorithm.
class FakeAlgorithm : public TreeAlgorithm {
 public:
  /// A classification tree if `isClassification`, with `tree` as its root (may be null).
  explicit FakeAlgorithm(bool isClassification, std::unique_ptr<NodeImp> tree = nullptr)
      : settings_(CoreSettingsImp()), tree_(std::move(tree)), isClassification_(isClassification) {}

  Node const* GetRootNode() const noexcept override { return tree_.get(); }
  AlgSettings const* GetSettings() const noexcept override { return &settings_; }
  bool IsClassificationTree() const noexcept override { return isClassification_; }
  TreeStatisticsImp const* GetStatistics() const noexcept override { return statistics_.get(); }
  Node const* FindNode(unsigned int id) const noexcept override { return FindNodeImp(id); }
  int GetNumNodes(NodeSelection selection) const noexcept override {
    int count = 0;
    ForEachNode([&](Node const& node) {
      if (selection == AllNodes || node.GetNumChildren() == 0) ++count;
    });
    return count;
  }
  GainsIntf* MakeGains(GainsSettings const& /*settings*/) const noexcept override {
    return nullptr;
  }

  bool Grow() noexcept override { return Fail(FailureNoData); }
  bool GrowNode(unsigned int nodeId, int /*numLevels*/) noexcept override {
    return NeedsDataAt(nodeId);
  }
  bool FindCandidateSplits(unsigned int nodeId,
                           std::vector<SplitRule>* candidates) noexcept override {
    candidates->clear();
    return NeedsDataAt(nodeId);
  }
  bool ApplySplit(unsigned int nodeId, SplitRule const& /*rule*/) noexcept override {
    return NeedsDataAt(nodeId);
  }
  bool PruneNode(unsigned int nodeId) noexcept override {
    if (tree_ == nullptr) return Fail(FailureNoTree);
    NodeImp* const node = FindNodeImp(nodeId);
    if (node == nullptr) return Fail(FailureUnknownNode);
    node->RemoveChildren(true);
    statistics_.reset();
    return Succeed();
  }
  bool Prune() noexcept override { return NeedsDataAt(0); }
  bool GetPruningSequence(std::vector<PruningStep>* steps) noexcept override {
    steps->clear();
    return NeedsDataAt(0);
  }
  bool Validate() noexcept override {
    if (tree_ == nullptr) return Fail(FailureNoTree);
    try {
      statistics_ = std::make_unique<TreeStatisticsImp>(*this, 0.0, 0.0, ValidationNone);
    } catch (std::bad_alloc const&) {
      return Fail(FailureOutOfMemory);
    }
    return Succeed();
  }
  bool SetTree(NodeImp* root) noexcept override {
    tree_.reset(root);
    statistics_.reset();
    return Succeed();
  }
  NodeImp const* GetTree() const noexcept override { return tree_.get(); }
  void SetProgressListener(ProgressListener* listener) noexcept override { listener_ = listener; }
  AlgorithmFailure GetFailure() const noexcept override { return failure_; }
  char const* GetFailureMessage() const noexcept override {
    switch (failure_) {
      case FailureNone:
        return "";
      case FailureNoData:
        return "There are no cases to grow on.";
      case FailureNoTree:
        return "There is no tree.";
      case FailureUnknownNode:
        return "No node has this id.";
      default:
        return "The operation failed.";
    }
  }

 private:
  template <class Visit>
  void ForEachNode(Visit visit) const noexcept {
    if (tree_ == nullptr) return;
    for (Node const* node = tree_.get(); node != nullptr;
         node = PrefixFindNext(tree_.get(), node)) {
      visit(*node);
    }
  }

  NodeImp* FindNodeImp(unsigned int id) const noexcept {
    NodeImp* found = nullptr;
    // The tree is this object's own and made of these nodes alone.
    ForEachNode([&](Node const& node) {
      if (node.GetId() == id) found = const_cast<NodeImp*>(static_cast<NodeImp const*>(&node));
    });
    return found;
  }

  bool NeedsDataAt(unsigned int nodeId) noexcept {
    if (tree_ == nullptr) return Fail(FailureNoTree);
    return Fail(FindNodeImp(nodeId) == nullptr ? FailureUnknownNode : FailureNoData);
  }

  bool Succeed() noexcept {
    failure_ = FailureNone;
    return true;
  }
  bool Fail(AlgorithmFailure failure) noexcept {
    failure_ = failure;
    return false;
  }

  CCartSettingsImp settings_;
  std::unique_ptr<NodeImp> tree_;
  std::unique_ptr<TreeStatisticsImp> statistics_;
  ProgressListener* listener_ = nullptr;  // not owned
  AlgorithmFailure failure_ = FailureNone;
  bool isClassification_;
};

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_FAKE_ALGORITHM_H_
