#include "hand_built/hand_built_tree.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <new>
#include <utility>

#include "hand_built/gains_table.h"
#include "tree/nodes.h"
#include "tree/settings.h"

namespace hand_built {

HandBuiltTree::HandBuiltTree(tree::CCartSettingsImp const& settings,
                             std::unique_ptr<tree::NodeImp> root)
    : settings_(settings), root_(std::move(root)) {}

// --- failures ---

// [failures]
bool HandBuiltTree::Fail(tree::AlgorithmFailure failure, char const* reason) noexcept {
  std::snprintf(message_.data(), message_.size(), "%s", reason);
  failure_ = failure;
  return false;
}

bool HandBuiltTree::FailAt(unsigned int nodeId, tree::AlgorithmFailure failure,
                           char const* reason) noexcept {
  std::snprintf(message_.data(), message_.size(), "node %u %s", nodeId, reason);
  failure_ = failure;
  return false;
}

bool HandBuiltTree::Succeed() noexcept {
  failure_ = tree::FailureNone;
  message_[0] = '\0';
  return true;
}

/// Runs `work` and lets nothing out but its result.
template <class Work>
bool HandBuiltTree::Guarded(Work work) noexcept {
  try {
    return work();
  } catch (std::bad_alloc const&) {
    return Fail(tree::FailureOutOfMemory, "memory ran out");
  } catch (...) {
    return Fail(tree::FailureInternal, "an exception that nobody expected");
  }
}
// [failures]

bool HandBuiltTree::HasNode(unsigned int nodeId) noexcept {
  if (root_ == nullptr) return Fail(tree::FailureNoTree, "there is no tree");
  if (FindNode(nodeId) != nullptr) return true;
  return FailAt(nodeId, tree::FailureUnknownNode, "does not exist");
}

tree::AlgorithmFailure HandBuiltTree::GetFailure() const noexcept { return failure_; }

char const* HandBuiltTree::GetFailureMessage() const noexcept { return message_.data(); }

// --- answers about the tree ---

tree::Node const* HandBuiltTree::GetRootNode() const noexcept { return root_.get(); }

tree::AlgSettings const* HandBuiltTree::GetSettings() const noexcept { return &settings_; }

bool HandBuiltTree::IsClassificationTree() const noexcept { return true; }

tree::TreeStatisticsImp const* HandBuiltTree::GetStatistics() const noexcept {
  return statistics_.has_value() ? &*statistics_ : nullptr;
}

// [walking without memory]
tree::Node const* HandBuiltTree::FindNode(unsigned int id) const noexcept {
  tree::Node const* node = root_.get();
  while (node != nullptr && node->GetId() != id) node = tree::PrefixFindNext(root_.get(), node);
  return node;
}
// [walking without memory]

int HandBuiltTree::GetNumNodes(tree::NodeSelection selection) const noexcept {
  int count = 0;
  for (tree::Node const* node = root_.get(); node != nullptr;
       node = tree::PrefixFindNext(root_.get(), node)) {
    if (selection == tree::AllNodes || node->GetNumChildren() == 0) ++count;
  }
  return count;
}

tree::GainsIntf* HandBuiltTree::MakeGains(tree::GainsSettings const& settings) const noexcept {
  if (root_ == nullptr) return nullptr;
  try {
    return NodeGains::Make(*root_, settings).release();
  } catch (...) {
    return nullptr;
  }
}

// --- growing, which takes cases ---

bool HandBuiltTree::Grow() noexcept {
  return Fail(tree::FailureNoData, "a tree built by hand has no cases to grow on");
}

bool HandBuiltTree::GrowNode(unsigned int nodeId, int numLevels) noexcept {
  if (numLevels < 1) return Fail(tree::FailureInvalidArgument, "at least one level is needed");
  if (!HasNode(nodeId)) return false;
  return FailAt(nodeId, tree::FailureNoData, "cannot be split: there are no cases");
}

bool HandBuiltTree::ApplySplit(unsigned int nodeId, tree::SplitRule const&) noexcept {
  if (!HasNode(nodeId)) return false;
  return FailAt(nodeId, tree::FailureNoData, "cannot be split: there are no cases");
}

bool HandBuiltTree::Prune() noexcept {
  if (root_ == nullptr) return Fail(tree::FailureNoTree, "there is no tree");
  return Fail(tree::FailureNoData, "subtrees cannot be compared: there are no cases");
}

bool HandBuiltTree::GetPruningSequence(std::vector<tree::PruningStep>* steps) noexcept {
  if (steps == nullptr) return Fail(tree::FailureInvalidArgument, "no list to fill");
  steps->clear();
  if (root_ == nullptr) return Fail(tree::FailureNoTree, "there is no tree");
  return Fail(tree::FailureNoData, "subtrees cannot be compared: there are no cases");
}

// --- what can be done without cases ---

bool HandBuiltTree::FindCandidateSplits(unsigned int nodeId,
                                        std::vector<tree::SplitRule>* candidates) noexcept {
  if (candidates == nullptr) return Fail(tree::FailureInvalidArgument, "no list to fill");
  candidates->clear();
  if (!HasNode(nodeId)) return false;
  tree::Node const* const node = FindNode(nodeId);
  if (node->GetNumCompetitors() == 0) {
    return FailAt(nodeId, tree::FailureNoSplit, "has no split to offer");
  }
  return Guarded([&] {
    std::vector<tree::SplitRule> found;
    int const count = std::min(node->GetNumCompetitors(), settings_.GetMaxNumCompetitors());
    for (int position = 0; position < count; ++position) {
      std::unique_ptr<tree::SplitRule const> const rule(
          node->GetCompetitor(static_cast<unsigned int>(position)));
      found.push_back(*rule);
    }
    *candidates = std::move(found);
    return Succeed();
  });
}

/// `FindNode` for changing; null when there is none.
tree::NodeImp* HandBuiltTree::NodeToChange(unsigned int id) {
  std::vector<tree::NodeImp*> waiting = {root_.get()};
  while (!waiting.empty()) {
    tree::NodeImp* const node = waiting.back();
    waiting.pop_back();
    if (node->GetId() == id) return node;
    tree::NodeImp* child = nullptr;
    for (int position = 0; node->Child(position, &child); ++position) waiting.push_back(child);
  }
  return nullptr;
}

// [prune node]
bool HandBuiltTree::PruneNode(unsigned int nodeId) noexcept {
  if (!HasNode(nodeId)) return false;
  return Guarded([&] {
    tree::NodeImp* const node = NodeToChange(nodeId);
    if (node->GetNumChildren() > 0) {
      node->RemoveChildren(true);
      statistics_.reset();  // they were of another tree
    }
    return Succeed();
  });
}
// [prune node]

bool HandBuiltTree::Validate() noexcept {
  if (root_ == nullptr) return Fail(tree::FailureNoTree, "there is no tree");
  tree::ValidationType const validation = settings_.GetValidationSpec()->GetType();
  if (validation == tree::ValidationCrossValidation) {
    return Fail(tree::FailureNoData, "cross-validation grows trees, and there are no cases");
  }
  auto const sample =
      validation == tree::ValidationSplitSample ? tree::TestSample : tree::TrainingSample;
  if (root_->GetClsInfo(sample) == nullptr || root_->GetNodeSize(sample) == 0.0) {
    return Fail(tree::FailureNoData, "the tree has no cases of the sample to validate on");
  }
  return Guarded([&] { return MeasureRisk(sample, validation); });
}

/// The matrix may be smaller than the number of classes, empty when nobody set a cost. What lies
/// outside of it reads as -1 and has the default cost.
double HandBuiltTree::CostOf(int predicted, int observed) const {
  if (predicted == observed) return 0.0;
  double const cost = settings_.GetCost()->Get(predicted, observed);
  return cost < 0.0 ? 1.0 : cost;
}

// [progress]
bool HandBuiltTree::GoOn(double fraction) noexcept {
  if (listener_ == nullptr || listener_->Report(fraction, "measuring the risk")) return true;
  return Fail(tree::FailureCancelled, "cancelled");
}
// [progress]

/// How much a case of each class weighs. Where the settings define priors it is the prior of the
/// class over its share of the sample, else 1.
std::vector<double> HandBuiltTree::WeightsOfClasses(tree::ClsInfo const& sample) const {
  tree::Priors const& priors = *settings_.GetPriors();
  std::vector<double> weights(static_cast<std::size_t>(sample.GetNumClasses()), 1.0);
  if (priors.GetType() != tree::PriorTypeCustom) return weights;
  double sum = 0.0;
  for (int index = 0; index < sample.GetNumClasses(); ++index) sum += priors.Get(index);
  for (int index = 0; index < sample.GetNumClasses(); ++index) {
    double const share = sample.GetClassPercent(index);
    weights[static_cast<std::size_t>(index)] =
        share > 0.0 && sum > 0.0 ? priors.Get(index) / sum / share : 0.0;
  }
  return weights;
}

/// The risk is the mean cost of a weighted case, and its standard error that of a mean. If all
/// cases weigh 1 and all mistakes cost 1 it is sqrt(r (1 - r) / n), as given for a test sample by
/// Breiman, Friedman, Olshen and Stone 1984; on the cases that the tree was made from, both are too
/// small.
// [validate]
bool HandBuiltTree::MeasureRisk(tree::DataSample sample, tree::ValidationType validation) {
  double const size = root_->GetNodeSize(sample);
  std::vector<double> const weights = WeightsOfClasses(*root_->GetClsInfo(sample));
  double sum = 0.0;
  double sumOfSquares = 0.0;
  double done = 0.0;
  tree::PrefixNodeIterator nodes(root_.get());
  while (tree::Node const* const node = nodes.Next()) {
    if (node->GetNumChildren() > 0) continue;
    if (!GoOn(done / size)) return false;  // nothing has been changed yet
    tree::ClsInfo const* const classes = node->GetClsInfo(sample);
    if (classes == nullptr) return FailAt(node->GetId(), tree::FailureNoData, "has no counts");
    for (int observed = 0; observed < classes->GetNumClasses(); ++observed) {
      double const cost =
          weights[static_cast<std::size_t>(observed)] * CostOf(classes->GetPrediction(), observed);
      sum += cost * classes->GetClassCount(observed);
      sumOfSquares += cost * cost * classes->GetClassCount(observed);
    }
    done += node->GetNodeSize(sample);
  }
  double const risk = sum / size;
  double const variance = std::max(0.0, sumOfSquares / size - risk * risk);
  double const stdError = std::sqrt(variance / size);
  statistics_.emplace(*this, risk, stdError, validation);
  return Succeed();
}
// [validate]

bool HandBuiltTree::SetTree(tree::NodeImp* root) noexcept {
  if (root == root_.get()) return Succeed();
  std::unique_ptr<tree::NodeImp> taken(root);
  if (taken != nullptr && taken->GetClsInfo(tree::TrainingSample) == nullptr) {
    return Fail(tree::FailureInvalidArgument, "this is no classification tree");
  }
  root_ = std::move(taken);
  statistics_.reset();
  return Succeed();
}

tree::NodeImp const* HandBuiltTree::GetTree() const noexcept { return root_.get(); }

void HandBuiltTree::SetProgressListener(tree::ProgressListener* listener) noexcept {
  listener_ = listener;
}

}  // namespace hand_built
