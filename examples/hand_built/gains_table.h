#ifndef TREE_EXAMPLES_HAND_BUILT_GAINS_TABLE_H_
#define TREE_EXAMPLES_HAND_BUILT_GAINS_TABLE_H_

#include <array>
#include <memory>
#include <vector>

#include "tree/results.h"

namespace hand_built {

/// The columns of the table.
enum Column : int {
  kCases,         ///< weighted number of cases
  kCasesPercent,  ///< ... in percent of all cases
  kGain,          ///< cases of the target category
  kGainPercent,   ///< ... in percent of all cases of the target category
  kResponse,      ///< ... in percent of the cases of the row
  kProfit,        ///< profit per case
  kNumColumns
};

/// A gains table of a classification tree, one row per terminal node.
class NodeGains final : public tree::GainsIntf {
 public:
  /// Null when the tree cannot give what is asked for. Rows by percentile are not offered.
  static std::unique_ptr<NodeGains> Make(tree::Node const& root,
                                         tree::GainsSettings const& settings);

  int GetNumRows() const override;
  int GetNumNodes(int row) const override;
  tree::Node const* GetNode(int row, int position) const override;
  bool HasColumn(int column) const override;
  double GetValue(int row, int column) const override;
  tree::GainsIntf* Clone() const override;

 private:
  struct Row {
    std::vector<tree::Node const*> nodes;  // of the tree, not owned
    std::array<double, kNumColumns> values;
  };

  NodeGains(tree::Node const& root, tree::GainsSettings const& settings);

  std::array<double, kNumColumns> Measure(std::vector<tree::Node const*> const& nodes,
                                          tree::DataSample sample) const;
  bool HasRow(int row) const;

  tree::Node const* root_;
  tree::GainsSettings settings_;
  std::vector<Row> rows_;
};

}  // namespace hand_built

#endif  // TREE_EXAMPLES_HAND_BUILT_GAINS_TABLE_H_
