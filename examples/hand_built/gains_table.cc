#include "hand_built/gains_table.h"

#include <algorithm>
#include <cstddef>

#include "tree/nodes.h"
#include "tree/support.h"

namespace hand_built {
namespace {

using Nodes = std::vector<tree::Node const*>;

std::size_t Position(int position) { return static_cast<std::size_t>(position); }

Nodes TerminalNodesOf(tree::Node const& root) {
  Nodes nodes;
  tree::PrefixNodeIterator walk(&root);
  while (tree::Node const* const node = walk.Next()) {
    if (node->GetNumChildren() == 0) nodes.push_back(node);
  }
  return nodes;
}

double Percent(double part, double whole) { return whole == 0.0 ? 0.0 : 100.0 * part / whole; }

/// Whether the root and all terminal nodes have a class distribution for the sample.
bool HasCounts(tree::Node const& root, tree::DataSample sample) {
  Nodes nodes = TerminalNodesOf(root);
  nodes.push_back(&root);
  return std::all_of(nodes.begin(), nodes.end(), [sample](tree::Node const* node) {
    return node->GetClsInfo(sample) != nullptr;
  });
}

bool CanGive(tree::Node const& root, tree::GainsSettings const& settings) {
  for (tree::DataSample const sample :
       {tree::TrainingSample, settings.GetDataSample(), settings.GetSortKey()}) {
    if (!HasCounts(root, sample)) return false;
  }
  if (settings.HasPercentileStatistics()) return false;
  if (settings.HasAverageBasedStatistics()) return settings.GetNumCategories() > 0;
  return settings.GetTargetCategory() < root.GetClsInfo(settings.GetDataSample())->GetNumClasses();
}

}  // namespace

std::unique_ptr<NodeGains> NodeGains::Make(tree::Node const& root,
                                           tree::GainsSettings const& settings) {
  if (!CanGive(root, settings)) return nullptr;
  return std::unique_ptr<NodeGains>(new NodeGains(root, settings));
}

// [gains rows]
NodeGains::NodeGains(tree::Node const& root, tree::GainsSettings const& settings)
    : root_(&root), settings_(settings) {
  int const key = settings.HasAverageBasedStatistics() ? kProfit : kResponse;
  auto const keyOf = [&](tree::Node const* node) {
    return Measure({node}, settings.GetSortKey())[Position(key)];
  };
  Nodes nodes = TerminalNodesOf(root);
  std::stable_sort(nodes.begin(), nodes.end(), [&](tree::Node const* a, tree::Node const* b) {
    return settings.GetSortOrder() == tree::SortAscending ? keyOf(a) < keyOf(b)
                                                          : keyOf(a) > keyOf(b);
  });

  Nodes soFar;
  for (tree::Node const* const node : nodes) {
    if (!settings.HasCumulativeStatistics()) soFar.clear();
    soFar.push_back(node);
    rows_.push_back({soFar, Measure(soFar, settings.GetDataSample())});
  }
}
// [gains rows]

std::array<double, kNumColumns> NodeGains::Measure(Nodes const& nodes,
                                                   tree::DataSample sample) const {
  tree::CumulativeNode group(nodes);
  tree::ClsInfo const& classes = *group.GetClsInfo(sample);
  double const size = group.GetNodeSize(sample);

  std::array<double, kNumColumns> values = {};
  values[kCases] = size;
  values[kCasesPercent] = Percent(size, root_->GetNodeSize(sample));
  if (!settings_.HasAverageBasedStatistics()) {
    int const target = settings_.GetTargetCategory();
    values[kGain] = classes.GetClassCount(target);
    values[kGainPercent] = Percent(values[kGain], root_->GetClsInfo(sample)->GetClassCount(target));
    values[kResponse] = Percent(values[kGain], size);
  }
  double profit = 0.0;
  for (int index = 0; index < classes.GetNumClasses(); ++index) {
    profit += classes.GetClassCount(index) * settings_.GetCategoryProfit(index);
  }
  values[kProfit] = size == 0.0 ? 0.0 : profit / size;
  return values;
}

bool NodeGains::HasRow(int row) const { return row >= 0 && row < GetNumRows(); }

int NodeGains::GetNumRows() const { return static_cast<int>(rows_.size()); }

int NodeGains::GetNumNodes(int row) const {
  return HasRow(row) ? static_cast<int>(rows_[Position(row)].nodes.size()) : 0;
}

tree::Node const* NodeGains::GetNode(int row, int position) const {
  if (position < 0 || position >= GetNumNodes(row)) return nullptr;
  return rows_[Position(row)].nodes[Position(position)];
}

bool NodeGains::HasColumn(int column) const {
  if (column == kGain || column == kGainPercent || column == kResponse) {
    return !settings_.HasAverageBasedStatistics();
  }
  if (column == kProfit) return settings_.GetNumCategories() > 0;
  return column == kCases || column == kCasesPercent;
}

double NodeGains::GetValue(int row, int column) const {
  if (!HasRow(row) || !HasColumn(column)) return systemMissingValue();
  return rows_[Position(row)].values[Position(column)];
}

tree::GainsIntf* NodeGains::Clone() const { return new NodeGains(*this); }

}  // namespace hand_built
