#include "penguins/gains_table.h"

#include <algorithm>

#include "tree/support.h"

namespace penguins {
namespace {

double PercentOf(double part, double whole) { return whole > 0.0 ? 100.0 * part / whole : 0.0; }

bool HasSample(tree::Node const& node, tree::DataSample sample) {
  return node.GetClsInfo(sample) != nullptr;
}

std::vector<tree::Node const*> TerminalNodes(tree::Node const& root) {
  std::vector<tree::Node const*> found;
  tree::PrefixNodeIterator nodes(&root);
  while (tree::Node const* const node = nodes.Next()) {
    if (node->GetNumChildren() == 0) found.push_back(node);
  }
  return found;
}

}  // namespace

std::unique_ptr<GainsTable> GainsTable::Make(tree::Node const& root,
                                             tree::GainsSettings const& settings) {
  int const category = settings.GetTargetCategory();
  tree::DataSample const sortKey = settings.GetSortKey();
  if (settings.HasAverageBasedStatistics() || settings.HasPercentileStatistics()) return nullptr;
  // A cumulative node needs the training sample as well.
  for (tree::DataSample const sample : {tree::TrainingSample, settings.GetDataSample(), sortKey}) {
    if (!HasSample(root, sample)) return nullptr;
  }
  if (category >= root.GetClsInfo(tree::TrainingSample)->GetNumClasses()) return nullptr;

  Nodes nodes = TerminalNodes(root);
  auto const share = [category, sortKey](tree::Node const* node) {
    return node->GetClsInfo(sortKey)->GetClassPercent(category);
  };
  bool const ascending = settings.GetSortOrder() == tree::SortAscending;
  // Nodes of equal share stay in prefix order.
  std::stable_sort(nodes.begin(), nodes.end(), [&](auto const* left, auto const* right) {
    return ascending ? share(left) < share(right) : share(right) < share(left);
  });

  std::unique_ptr<GainsTable> table(new GainsTable);
  for (auto node = nodes.begin(); node != nodes.end(); ++node) {
    auto const first = settings.HasCumulativeStatistics() ? nodes.begin() : node;
    table->AddRow(Nodes(first, node + 1), root, settings);
  }
  return table;
}

int GainsTable::GetNumRows() const { return static_cast<int>(rows_.size()); }

int GainsTable::GetNumNodes(int row) const {
  Row const* const found = FindRow(row);
  return found == nullptr ? 0 : static_cast<int>(found->nodes.size());
}

tree::Node const* GainsTable::GetNode(int row, int position) const {
  if (position < 0 || position >= GetNumNodes(row)) return nullptr;
  return FindRow(row)->nodes[static_cast<std::size_t>(position)];
}

bool GainsTable::HasColumn(int column) const {
  return column >= 0 && static_cast<std::size_t>(column) < kNumGainsColumns;
}

double GainsTable::GetValue(int row, int column) const {
  Row const* const found = FindRow(row);
  if (found == nullptr || !HasColumn(column)) return systemMissingValue();
  return found->values[static_cast<std::size_t>(column)];
}

tree::GainsIntf* GainsTable::Clone() const { return new GainsTable(*this); }

void GainsTable::AddRow(Nodes const& nodes, tree::Node const& root,
                        tree::GainsSettings const& settings) {
  int const category = settings.GetTargetCategory();
  tree::DataSample const sample = settings.GetDataSample();
  tree::CumulativeNode together(nodes);
  double const size = together.GetNodeSize(sample);
  double const gain = together.GetClsInfo(sample)->GetClassCount(category);
  double const gainOfAll = root.GetClsInfo(sample)->GetClassCount(category);

  Row row{nodes, {}};
  row.values[kRowSize] = size;
  row.values[kRowPercent] = PercentOf(size, root.GetNodeSize(sample));
  row.values[kGain] = gain;
  row.values[kGainPercent] = PercentOf(gain, gainOfAll);
  row.values[kResponsePercent] = PercentOf(gain, size);
  rows_.push_back(row);
}

GainsTable::Row const* GainsTable::FindRow(int row) const {
  return row >= 0 && row < GetNumRows() ? &rows_[static_cast<std::size_t>(row)] : nullptr;
}

}  // namespace penguins
