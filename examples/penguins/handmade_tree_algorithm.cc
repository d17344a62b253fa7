#include "penguins/handmade_tree_algorithm.h"

#include <cmath>
#include <cstdio>
#include <new>
#include <utility>

#include "penguins/gains_table.h"
#include "tree/misclassification.h"

namespace penguins {
namespace {

constexpr char kNoTree[] = "there is no tree";
constexpr char kNoPlace[] = "no place is given for the answer";

/// As deep as the tree, which somebody wrote down.
tree::NodeImp* Find(tree::NodeImp* node, unsigned int id) {
  if (node == nullptr || node->GetId() == id) return node;
  tree::NodeImp* child = nullptr;
  for (int position = 0; node->Child(position, &child); ++position) {
    if (tree::NodeImp* const found = Find(child, id)) return found;
  }
  return nullptr;
}

/// What is not in the matrix costs what it does by default.
double CostOf(tree::Cost const& costs, int predicted, int observed) {
  double const cost = costs.Get(predicted, observed);
  if (cost >= 0.0) return cost;
  return predicted == observed ? 0.0 : 1.0;
}

struct Risk {
  double estimate;  // mean cost of a case
  double stdError;
};

/// The standard error of a mean: the standard deviation of the cost over the root of the number of
/// cases. If all mistakes cost 1 it is sqrt(r (1 - r) / n), as given for a test sample by Breiman,
/// Friedman, Olshen and Stone 1984; on the cases that the tree was made from, both are too small.
/// Requires cases.
Risk MeasureRisk(tree::Node const& root, tree::Cost const& costs, tree::DataSample sample) {
  double numCases = 0.0;
  double sum = 0.0;
  double sumOfSquares = 0.0;
  tree::PrefixNodeIterator nodes(&root);
  while (tree::Node const* const node = nodes.Next()) {
    if (node->GetNumChildren() > 0) continue;
    tree::ClsInfo const& classes = *node->GetClsInfo(sample);
    for (int observed = 0; observed < classes.GetNumClasses(); ++observed) {
      double const count = classes.GetClassCount(observed);
      double const cost = CostOf(costs, classes.GetPrediction(), observed);
      numCases += count;
      sum += count * cost;
      sumOfSquares += count * cost * cost;
    }
  }
  double const mean = sum / numCases;
  double const variance = sumOfSquares / numCases - mean * mean;
  // Rounding can leave a variance of 0 slightly negative.
  return {mean, variance > 0.0 ? std::sqrt(variance / numCases) : 0.0};
}

}  // namespace

HandmadeTreeAlgorithm::HandmadeTreeAlgorithm(std::unique_ptr<tree::NodeImp> root,
                                             tree::CCartSettingsImp const& settings)
    : root_(std::move(root)), settings_(settings) {}

// --- questions about the tree ---

tree::Node const* HandmadeTreeAlgorithm::GetRootNode() const noexcept { return root_.get(); }

tree::AlgSettings const* HandmadeTreeAlgorithm::GetSettings() const noexcept { return &settings_; }

bool HandmadeTreeAlgorithm::IsClassificationTree() const noexcept { return true; }

tree::TreeStatisticsImp const* HandmadeTreeAlgorithm::GetStatistics() const noexcept {
  return statistics_.get();
}

tree::Node const* HandmadeTreeAlgorithm::FindNode(unsigned int id) const noexcept {
  return Find(root_.get(), id);
}

int HandmadeTreeAlgorithm::GetNumNodes(tree::NodeSelection selection) const noexcept {
  if (root_ == nullptr) return 0;
  int count = 0;
  tree::PrefixNodeIterator nodes(root_.get());
  while (tree::Node const* const node = nodes.Next()) {
    if (selection == tree::AllNodes || node->GetNumChildren() == 0) ++count;
  }
  return count;
}

tree::GainsIntf* HandmadeTreeAlgorithm::MakeGains(
    tree::GainsSettings const& settings) const noexcept {
  if (root_ == nullptr) return nullptr;
  try {
    return GainsTable::Make(*root_, settings).release();
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}

// --- work on the tree ---

bool HandmadeTreeAlgorithm::Grow() noexcept { return FailWithoutCases("grow on"); }

bool HandmadeTreeAlgorithm::GrowNode(unsigned int nodeId, int numLevels) noexcept {
  if (numLevels < (root_ == nullptr ? 0 : 1)) {
    return Fail(tree::FailureInvalidArgument, "there are too few levels to grow");
  }
  if (root_ == nullptr && nodeId == 0) return FailWithoutCases("grow on");
  return FailWithoutCasesAt(nodeId, "grow on");
}

bool HandmadeTreeAlgorithm::FindCandidateSplits(unsigned int nodeId,
                                                std::vector<tree::SplitRule>* candidates) noexcept {
  if (candidates == nullptr) return Fail(tree::FailureInvalidArgument, kNoPlace);
  candidates->clear();
  return FailWithoutCasesAt(nodeId, "split");
}

bool HandmadeTreeAlgorithm::ApplySplit(unsigned int nodeId,
                                       tree::SplitRule const& /*rule*/) noexcept {
  return FailWithoutCasesAt(nodeId, "split");
}

bool HandmadeTreeAlgorithm::PruneNode(unsigned int nodeId) noexcept {
  tree::NodeImp* const node = Find(root_.get(), nodeId);
  if (node == nullptr) return FailUnknownNode(nodeId);
  if (node->GetNumChildren() == 0) return Succeed();
  node->RemoveChildren(true);
  statistics_.reset();
  return Succeed();
}

bool HandmadeTreeAlgorithm::Prune() noexcept {
  if (root_ == nullptr) return Fail(tree::FailureNoTree, kNoTree);
  return FailWithoutCases("prune by");
}

bool HandmadeTreeAlgorithm::GetPruningSequence(std::vector<tree::PruningStep>* steps) noexcept {
  if (steps == nullptr) return Fail(tree::FailureInvalidArgument, kNoPlace);
  steps->clear();
  if (root_ == nullptr) return Fail(tree::FailureNoTree, kNoTree);
  return FailWithoutCases("prune by");
}

bool HandmadeTreeAlgorithm::Validate() noexcept {
  if (root_ == nullptr) return Fail(tree::FailureNoTree, kNoTree);
  tree::ValidationType const validation = settings_.GetValidationSpec()->GetType();
  if (validation == tree::ValidationCrossValidation) {
    return FailWithoutCases("grow the trees of a cross-validation on");
  }
  tree::DataSample const sample =
      validation == tree::ValidationSplitSample ? tree::TestSample : tree::TrainingSample;
  if (root_->GetNodeSize(sample) <= 0.0) return FailWithoutCases("validate by");
  if (listener_ != nullptr && !listener_->Report(0.0, "adding up the costs of mistakes")) {
    return Fail(tree::FailureCancelled, "the validation was cancelled");
  }

  try {
    Risk const risk = MeasureRisk(*root_, *std::as_const(settings_).GetCost(), sample);
    statistics_ =
        std::make_unique<tree::TreeStatisticsImp>(*this, risk.estimate, risk.stdError, validation);
  } catch (std::bad_alloc const&) {
    return Fail(tree::FailureOutOfMemory, "the memory does not suffice for the statistics");
  }
  return Succeed();
}

bool HandmadeTreeAlgorithm::SetTree(tree::NodeImp* root) noexcept {
  // The present tree may be given once more.
  if (root != root_.get()) root_.reset(root);
  statistics_.reset();
  return Succeed();
}

tree::NodeImp const* HandmadeTreeAlgorithm::GetTree() const noexcept { return root_.get(); }

void HandmadeTreeAlgorithm::SetProgressListener(tree::ProgressListener* listener) noexcept {
  listener_ = listener;
}

// --- failures ---

tree::AlgorithmFailure HandmadeTreeAlgorithm::GetFailure() const noexcept { return failure_; }

char const* HandmadeTreeAlgorithm::GetFailureMessage() const noexcept { return message_.data(); }

bool HandmadeTreeAlgorithm::Succeed() noexcept {
  failure_ = tree::FailureNone;
  message_.front() = '\0';
  return true;
}

bool HandmadeTreeAlgorithm::Fail(tree::AlgorithmFailure failure, char const* message) noexcept {
  failure_ = failure;
  std::snprintf(message_.data(), message_.size(), "%s", message);
  return false;
}

bool HandmadeTreeAlgorithm::FailUnknownNode(unsigned int nodeId) noexcept {
  if (root_ == nullptr) return Fail(tree::FailureNoTree, kNoTree);
  failure_ = tree::FailureUnknownNode;
  std::snprintf(message_.data(), message_.size(), "there is no node %u", nodeId);
  return false;
}

bool HandmadeTreeAlgorithm::FailWithoutCases(char const* purpose) noexcept {
  failure_ = tree::FailureNoData;
  std::snprintf(message_.data(), message_.size(),
                "the tree was made by hand: there are no cases to %s", purpose);
  return false;
}

bool HandmadeTreeAlgorithm::FailWithoutCasesAt(unsigned int nodeId, char const* purpose) noexcept {
  return FindNode(nodeId) == nullptr ? FailUnknownNode(nodeId) : FailWithoutCases(purpose);
}

}  // namespace penguins
