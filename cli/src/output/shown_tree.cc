#include "output/shown_tree.h"

#include "output/number_text.h"

namespace tree::cli {

ShownTree::ShownTree(Node const& root, TreeNames const& names, AlgSettings const& settings)
    : root_(root), names_(names), costs_(nullptr) {
  // The kinds of settings that have costs share no base class that does.
  if (auto const* const cart = dynamic_cast<CCartSettings const*>(&settings)) {
    costs_ = cart->GetCost();
  } else if (auto const* const chaid = dynamic_cast<CChaidSettings const*>(&settings)) {
    costs_ = chaid->GetCost();
  } else if (auto const* const quest = dynamic_cast<QuestSettings const*>(&settings)) {
    costs_ = quest->GetCost();
  }
}

std::string ShownTree::Prediction(Node const& node) const {
  double const prediction = node.GetAssignment();
  return HasClasses() ? LabelOf(names_.target, prediction) : ShortNumber(prediction);
}

double ShownTree::Loss(Node const& node) const {
  ClsInfo const& classes = *node.GetClsInfo(TrainingSample);
  double loss = 0.0;
  for (int observed = 0; observed < classes.GetNumClasses(); ++observed) {
    if (observed == classes.GetPrediction()) continue;
    double const cost = costs_ == nullptr ? -1.0 : costs_->Get(classes.GetPrediction(), observed);
    loss += classes.GetClassCount(observed) * (cost >= 0.0 ? cost : 1.0);  // a cell may be lacking
  }
  return loss;
}

double ShownTree::Deviance(Node const& node) {
  double const deviation = node.GetRegInfo(TrainingSample)->GetStdDev();
  double const count = node.GetUnweightedNodeSize(TrainingSample);
  if (!(count > 1.0)) return 0.0;
  // The growers divide by one less than the number of cases.
  return deviation * deviation * node.GetNodeSize(TrainingSample) * (count - 1.0) / count;
}

double ShownTree::PercentSize(Node const& node, DataSample sample) const {
  double const whole = root_.GetNodeSize(sample);
  return whole > 0.0 ? 100.0 * node.GetNodeSize(sample) / whole : 0.0;
}

std::vector<double> ShownTree::Probabilities(Node const& node) {
  ClsInfo const& classes = *node.GetClsInfo(TrainingSample);
  std::vector<double> probabilities;
  probabilities.reserve(static_cast<std::size_t>(classes.GetNumClasses()));
  for (int index = 0; index < classes.GetNumClasses(); ++index) {
    probabilities.push_back(classes.GetClassProbability(index));
  }
  return probabilities;
}

Node const* DepthWalk::Next() {
  Node const* const node = nodes_.Next();
  if (node == nullptr) return nullptr;
  while (!path_.empty() && path_.back() != node->GetParent()) path_.pop_back();
  path_.push_back(node);
  return node;
}

}  // namespace tree::cli
