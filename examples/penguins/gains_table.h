#ifndef EXAMPLES_PENGUINS_GAINS_TABLE_H_
#define EXAMPLES_PENGUINS_GAINS_TABLE_H_

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "tree/nodes.h"
#include "tree/results.h"

namespace penguins {

/// The columns of a gains table. A row's gain are its cases of the target category.
enum GainsColumn : int {
  kRowSize,          // cases
  kRowPercent,       // of all cases
  kGain,             // cases
  kGainPercent,      // of all cases of the target category
  kResponsePercent,  // the gain, of the row's cases
};
inline constexpr std::size_t kNumGainsColumns = 5;

/// What the terminal nodes of a classification tree gain of one category: a row for each, in the
/// order of the category's share. A cumulative row holds the nodes of the rows before it too. An
/// index out of range reads as no node, and as the missing value. Every percentage of nothing is 0.
class GainsTable : public tree::GainsIntf {
 public:
  /// Null when the tree or this kind of table cannot give what the settings ask for: a category or
  /// a sample that the tree does not have, an average, percentile rows. Money is not looked at.
  static std::unique_ptr<GainsTable> Make(tree::Node const& root,
                                          tree::GainsSettings const& settings);

  int GetNumRows() const override;
  int GetNumNodes(int row) const override;
  tree::Node const* GetNode(int row, int position) const override;
  bool HasColumn(int column) const override;
  double GetValue(int row, int column) const override;
  tree::GainsIntf* Clone() const override;

 private:
  using Nodes = std::vector<tree::Node const*>;
  struct Row {
    Nodes nodes;
    std::array<double, kNumGainsColumns> values;  // by column
  };

  GainsTable() = default;
  void AddRow(Nodes const& nodes, tree::Node const& root, tree::GainsSettings const& settings);
  Row const* FindRow(int row) const;

  std::vector<Row> rows_;
};

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_GAINS_TABLE_H_
