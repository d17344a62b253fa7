#include "growing/pruning_path.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <queue>
#include <utility>

#include "growing/node_statistics.h"

namespace tree::grow {
namespace {

/// Complexities that differ by less than this share of the root's risk are equal.
constexpr double kTie = 1e-12;

std::vector<double> ClassWeightsIn(NodeImp const& node) {
  ClsInfo const& info = *node.GetClsInfo(TrainingSample);
  std::vector<double> weights;
  weights.reserve(static_cast<std::size_t>(info.GetNumClasses()));
  for (int j = 0; j < info.GetNumClasses(); ++j) weights.push_back(info.GetClassCount(j));
  return weights;
}

/// What is known of the subtree below each node while it is being pruned.
class Links {
 public:
  Links(IndexedTree const& tree, std::vector<double> const& risks)
      : tree_(tree), risks_(risks), subtreeRisks_(risks), numTerminal_(risks.size(), 1) {
    for (std::size_t position = risks.size(); position-- > 0;) {
      if (!tree.IsTerminal(position)) SumUp(position);
    }
  }

  std::size_t NumTerminal(std::size_t position) const { return numTerminal_[position]; }
  bool IsCollapsed(std::size_t position) const { return numTerminal_[position] == 1; }
  /// What each terminal node below has to cost for the node to be better off terminal.
  double StrengthOf(std::size_t position) const {
    return (risks_[position] - subtreeRisks_[position]) /
           static_cast<double>(numTerminal_[position] - 1);
  }
  void Collapse(std::size_t position) {
    subtreeRisks_[position] = risks_[position];
    numTerminal_[position] = 1;
  }
  /// Takes over what has changed in the children.
  void SumUp(std::size_t position) {
    auto const numChildren = static_cast<std::size_t>(tree_.GetNode(position).GetNumChildren());
    subtreeRisks_[position] = 0.0;
    numTerminal_[position] = 0;
    for (std::size_t child = 0; child < numChildren; ++child) {
      subtreeRisks_[position] += subtreeRisks_[tree_.ChildOf(position, child)];
      numTerminal_[position] += numTerminal_[tree_.ChildOf(position, child)];
    }
  }

 private:
  IndexedTree const& tree_;
  std::vector<double> const& risks_;
  std::vector<double> subtreeRisks_;      // sums over the terminal nodes below
  std::vector<std::size_t> numTerminal_;  // nodes below; 1 for a terminal node
};

}  // namespace

std::vector<double> NodeRisks(IndexedTree const& tree, ClassModel const* classes) {
  std::vector<double> risks(tree.GetNumNodes());
  for (std::size_t position = 0; position < risks.size(); ++position) {
    NodeImp const& node = tree.GetNode(position);
    if (classes != nullptr) {
      risks[position] =
          classes->RiskOf(static_cast<std::size_t>(node.GetAssignment()), ClassWeightsIn(node));
    } else {
      risks[position] = SumOfSquares(*node.GetRegInfoImp(TrainingSample),
                                     tree.GetNode(0).GetNodeSize(TrainingSample));
    }
  }
  return risks;
}

PruningPath::PruningPath(IndexedTree const& tree, std::vector<double> const& risks,
                         PollFunction const& poll) {
  Links links(tree, risks);
  using Strength = std::pair<double, std::size_t>;
  std::priority_queue<Strength, std::vector<Strength>, std::greater<>> weakest;
  for (std::size_t position = 0; position < risks.size(); ++position) {
    if (!tree.IsTerminal(position)) weakest.emplace(links.StrengthOf(position), position);
  }
  double const tie = kTie * std::abs(risks[0]);
  steps_.push_back({0.0, links.NumTerminal(0), {}});
  double complexity = -HUGE_VAL;         // of no step yet
  std::vector<char> gone(risks.size());  // below a collapsed node
  while (!weakest.empty()) {
    poll();
    auto const [strength, position] = weakest.top();
    weakest.pop();
    // An entry that its node has outgrown is left behind by a newer one.
    if (gone[position] != 0 || links.IsCollapsed(position)) continue;
    if (strength != links.StrengthOf(position)) continue;
    if (strength > complexity + tie) {
      complexity = strength > tie ? strength : 0.0;
      steps_.push_back({complexity, 0, {}});
    }
    for (std::size_t below = position + 1; below < tree.EndOf(position); ++below) gone[below] = 1;
    links.Collapse(position);
    steps_.back().collapsed.push_back(position);
    for (std::size_t above = position; above != 0;) {
      above = tree.ParentOf(above);
      links.SumUp(above);
      weakest.emplace(links.StrengthOf(above), above);
    }
    steps_.back().numTerminalNodes = links.NumTerminal(0);
  }
  // Of the nodes that collapse in one step, those below others say nothing.
  for (Step& step : steps_) {
    std::sort(step.collapsed.begin(), step.collapsed.end());
    std::vector<std::size_t> tops;
    for (std::size_t const position : step.collapsed) {
      if (tops.empty() || position >= tree.EndOf(tops.back())) tops.push_back(position);
    }
    step.collapsed = std::move(tops);
  }
}

std::size_t PruningPath::FindStep(double complexity) const {
  auto const after = std::partition_point(
      steps_.begin() + 1, steps_.end(),
      [complexity](Step const& step) { return step.complexity <= complexity; });
  return static_cast<std::size_t>(after - steps_.begin()) - 1;
}

double PruningPath::TypicalComplexity(std::size_t step) const {
  if (step + 1 == steps_.size()) return std::numeric_limits<double>::infinity();
  // Roots first: the product may lie beyond what a double can hold.
  return std::sqrt(steps_[step].complexity) * std::sqrt(steps_[step + 1].complexity);
}

PrunedSubtree::PrunedSubtree(IndexedTree const& tree, PruningPath const& path)
    : tree_(tree), path_(path), terminal_(tree.GetNumNodes()) {
  for (std::size_t position = 0; position < terminal_.size(); ++position) {
    terminal_[position] = tree.IsTerminal(position) ? 1 : 0;
  }
}

}  // namespace tree::grow
