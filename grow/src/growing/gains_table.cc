#include "growing/gains_table.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "tree/grow/gains_columns.h"
#include "tree/nodes.h"
#include "tree/support.h"

namespace tree::grow {
namespace {

/// As a share of all cases: how close the end of a node and a percentile border are to be taken for
/// the same place. Sums of weights are not exact, and would leave splinters of nodes in the rows.
constexpr double kBorderTolerance = 1e-9;

/// What nodes, or shares of them, add up to.
struct Sums {
  double cases = 0.0;   // weighted
  double target = 0.0;  // cases of the target category
  double amount = 0.0;  // of profit in a classification tree, of the target in a regression tree

  void Add(Sums const& other, double share) {
    cases += share * other.cases;
    target += share * other.target;
    amount += share * other.amount;
  }
};

double Percent(double part, double whole) { return whole == 0.0 ? 0.0 : 100.0 * part / whole; }

/// What the settings want to know of a node.
class NodeReader {
 public:
  /// `settings`: **borrowed**.
  NodeReader(GainsSettings const& settings, bool isClassification)
      : settings_(settings), isClassification_(isClassification) {}

  bool IsClassification() const { return isClassification_; }
  bool HasTarget() const { return !settings_.HasAverageBasedStatistics(); }
  bool HasMoney() const { return isClassification_ && settings_.GetNumCategories() > 0; }

  /// Whether the node has what is asked of it here, for the sample.
  bool CanRead(Node const& node, DataSample sample) const {
    if (!isClassification_) return node.GetRegInfo(sample) != nullptr;
    ClsInfo const* const classes = node.GetClsInfo(sample);
    return classes != nullptr && settings_.GetTargetCategory() < classes->GetNumClasses();
  }

  Sums Read(Node const& node, DataSample sample) const {
    Sums sums;
    sums.cases = node.GetNodeSize(sample);
    if (!isClassification_) {
      // The mean of no cases may be anything.
      if (sums.cases > 0.0) sums.amount = sums.cases * node.GetRegInfo(sample)->GetMean();
      return sums;
    }
    ClsInfo const& classes = *node.GetClsInfo(sample);
    if (HasTarget()) sums.target = classes.GetClassCount(settings_.GetTargetCategory());
    if (HasMoney()) {
      for (int index = 0; index < classes.GetNumClasses(); ++index) {
        sums.amount += classes.GetClassCount(index) * settings_.GetCategoryProfit(index);
      }
    }
    return sums;
  }

  /// By what the node is ordered among others; NaN for one without cases.
  double KeyOf(Node const& node, DataSample sample) const {
    if (!(node.GetNodeSize(sample) > 0.0)) return std::numeric_limits<double>::quiet_NaN();
    // Not by sums, whose rounding would tell apart nodes with the same mean.
    if (!isClassification_) return node.GetRegInfo(sample)->GetMean();
    Sums const sums = Read(node, sample);
    return (HasTarget() ? sums.target : sums.amount) / sums.cases;
  }

 private:
  GainsSettings const& settings_;
  bool isClassification_;
};

class GainsTable final : public GainsIntf {
 public:
  /// `nodes`: in the order of the rows, **borrowed** from the tree.
  GainsTable(std::vector<Node const*> nodes, NodeReader const& reader,
             GainsSettings const& settings);

  int GetNumRows() const override { return static_cast<int>(rows_.size()); }
  int GetNumNodes(int row) const override;
  Node const* GetNode(int row, int position) const override;
  bool HasColumn(int column) const override;
  double GetValue(int row, int column) const override;
  GainsIntf* Clone() const override { return new GainsTable(*this); }

 private:
  /// The nodes of a row lie side by side; with the first and the last one it may share.
  struct Row {
    std::size_t begin = 0;
    std::size_t end = 0;
    Sums sums;
  };

  void AddNodeRows(std::vector<Sums> const& sums, bool cumulative);
  void AddPercentileRows(std::vector<Sums> const& sums, int step);
  bool HasRow(int row) const { return row >= 0 && row < GetNumRows(); }
  double BasisOf(Sums const& sums) const { return hasTarget_ ? sums.target : sums.amount; }
  double IndexOf(Sums const& sums) const;

  bool isClassification_;
  bool hasTarget_;
  bool hasMoney_;
  std::vector<Node const*> nodes_;  // in order of the rows, not owned
  std::vector<Row> rows_;
  Sums all_;
};

GainsTable::GainsTable(std::vector<Node const*> nodes, NodeReader const& reader,
                       GainsSettings const& settings)
    : isClassification_(reader.IsClassification()),
      hasTarget_(reader.HasTarget()),
      hasMoney_(reader.HasMoney()),
      nodes_(std::move(nodes)) {
  DataSample const sample = settings.GetDataSample();
  if (settings.HasPercentileStatistics()) {
    std::erase_if(nodes_,
                  [sample](Node const* node) { return !(node->GetNodeSize(sample) > 0.0); });
  }
  std::vector<Sums> sums;
  sums.reserve(nodes_.size());
  for (Node const* const node : nodes_) {
    sums.push_back(reader.Read(*node, sample));
    all_.Add(sums.back(), 1.0);
  }
  if (settings.HasPercentileStatistics()) {
    AddPercentileRows(sums, settings.GetPercentileIncrement());
  } else {
    AddNodeRows(sums, settings.HasCumulativeStatistics());
  }
}

void GainsTable::AddNodeRows(std::vector<Sums> const& sums, bool cumulative) {
  Sums soFar;
  rows_.reserve(sums.size());
  for (std::size_t position = 0; position < sums.size(); ++position) {
    soFar.Add(sums[position], 1.0);
    if (cumulative) {
      rows_.push_back({0, position + 1, soFar});
    } else {
      rows_.push_back({position, position + 1, sums[position]});
    }
  }
}

void GainsTable::AddPercentileRows(std::vector<Sums> const& sums, int step) {
  // Places among the cases, in their order: where the next node begins, and where the next row.
  double nodeBegin = 0.0;
  double rowBegin = 0.0;
  std::size_t position = 0;
  for (int percent = step; percent <= 100; percent += step) {
    // The last row takes all that is left, be it by rounding.
    double rowEnd = percent < 100 ? all_.cases * percent / 100.0 : GetInfinity();
    Row row{position, position, {}};
    while (position < sums.size() && nodeBegin < rowEnd) {
      double const nodeEnd = nodeBegin + sums[position].cases;
      if (std::abs(nodeEnd - rowEnd) <= kBorderTolerance * all_.cases) rowEnd = nodeEnd;
      bool const isWhole = rowBegin <= nodeBegin && nodeEnd <= rowEnd;
      double const taken = std::min(nodeEnd, rowEnd) - std::max(nodeBegin, rowBegin);
      row.sums.Add(sums[position], isWhole ? 1.0 : taken / sums[position].cases);
      row.end = position + 1;
      if (nodeEnd > rowEnd) break;
      nodeBegin = nodeEnd;
      ++position;
    }
    rows_.push_back(row);
    rowBegin = rowEnd;
  }
}

int GainsTable::GetNumNodes(int row) const {
  if (!HasRow(row)) return 0;
  Row const& nodes = rows_[static_cast<std::size_t>(row)];
  return static_cast<int>(nodes.end - nodes.begin);
}

Node const* GainsTable::GetNode(int row, int position) const {
  if (position < 0 || position >= GetNumNodes(row)) return nullptr;
  return nodes_[rows_[static_cast<std::size_t>(row)].begin + static_cast<std::size_t>(position)];
}

bool GainsTable::HasColumn(int column) const {
  switch (column) {
    case GainsCases:
    case GainsCasesPercent:
    case GainsIndex:
      return true;
    case GainsTarget:
    case GainsTargetPercent:
    case GainsResponse:
      return hasTarget_;
    case GainsProfit:
      return hasMoney_;
    case GainsAverage:
      return !isClassification_;
    default:
      return false;
  }
}

double GainsTable::GetValue(int row, int column) const {
  if (!HasRow(row) || !HasColumn(column)) return systemMissingValue();
  Sums const& sums = rows_[static_cast<std::size_t>(row)].sums;
  switch (column) {
    case GainsCases:
      return sums.cases;
    case GainsCasesPercent:
      return Percent(sums.cases, all_.cases);
    case GainsTarget:
      return sums.target;
    case GainsTargetPercent:
      return Percent(sums.target, all_.target);
    case GainsResponse:
      return Percent(sums.target, sums.cases);
    case GainsProfit:
      return sums.cases == 0.0 ? 0.0 : sums.amount / sums.cases;
    case GainsAverage:
      return sums.cases == 0.0 ? systemMissingValue() : sums.amount / sums.cases;
    default:
      return IndexOf(sums);
  }
}

double GainsTable::IndexOf(Sums const& sums) const {
  if (sums.cases == 0.0 || BasisOf(all_) == 0.0) return systemMissingValue();
  // In this order, so that the index of all cases is 100 exactly.
  return 100.0 * ((BasisOf(sums) / sums.cases) / (BasisOf(all_) / all_.cases));
}

std::vector<Node const*> TerminalNodesOf(Node const& root) {
  std::vector<Node const*> nodes;
  PrefixNodeIterator walk(&root);
  while (Node const* const node = walk.Next()) {
    if (node->GetNumChildren() == 0) nodes.push_back(node);
  }
  return nodes;
}

bool CanGive(std::vector<Node const*> const& nodes, NodeReader const& reader,
             GainsSettings const& settings) {
  if (reader.IsClassification()) {
    if (!reader.HasTarget() && !reader.HasMoney()) return false;
  } else if (reader.HasTarget()) {
    return false;
  }
  int const step = settings.GetPercentileIncrement();
  if (settings.HasPercentileStatistics() && (step <= 0 || 100 % step != 0)) return false;
  return std::all_of(nodes.begin(), nodes.end(), [&](Node const* node) {
    return reader.CanRead(*node, settings.GetDataSample()) &&
           reader.CanRead(*node, settings.GetSortKey());
  });
}

/// Nodes that cannot be judged come last; where others are alike, all stay in their order.
std::vector<Node const*> Sort(std::vector<Node const*> const& nodes, NodeReader const& reader,
                              GainsSettings const& settings) {
  struct Ranked {
    Node const* node;
    double key;
  };
  std::vector<Ranked> ranked;
  ranked.reserve(nodes.size());
  for (Node const* const node : nodes) {
    ranked.push_back({node, reader.KeyOf(*node, settings.GetSortKey())});
  }
  auto const judgedEnd = std::stable_partition(
      ranked.begin(), ranked.end(), [](Ranked const& entry) { return !std::isnan(entry.key); });
  if (settings.GetSortOrder() == SortAscending) {
    std::stable_sort(ranked.begin(), judgedEnd,
                     [](Ranked const& a, Ranked const& b) { return a.key < b.key; });
  } else {
    std::stable_sort(ranked.begin(), judgedEnd,
                     [](Ranked const& a, Ranked const& b) { return a.key > b.key; });
  }
  std::vector<Node const*> sorted;
  sorted.reserve(ranked.size());
  for (Ranked const& entry : ranked) sorted.push_back(entry.node);
  return sorted;
}

}  // namespace

std::unique_ptr<GainsIntf> MakeGainsTable(Node const& root, GainsSettings const& settings) {
  std::vector<Node const*> const nodes = TerminalNodesOf(root);
  if (nodes.empty()) return nullptr;  // a tree that is still being built
  bool const isClassification = nodes.front()->GetClsInfo(settings.GetDataSample()) != nullptr;
  NodeReader const reader(settings, isClassification);
  if (!CanGive(nodes, reader, settings)) return nullptr;
  return std::make_unique<GainsTable>(Sort(nodes, reader, settings), reader, settings);
}

}  // namespace tree::grow
