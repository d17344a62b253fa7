#ifndef TREE_GROW_GAINS_COLUMNS_H_
#define TREE_GROW_GAINS_COLUMNS_H_

/// @file
/// What the gains tables of all growers of this library show (`TreeAlgorithmBase::MakeGains`).
///
/// There is a row per terminal node, in the order of the gain settings: by response where there is
/// a target category, else by profit in a classification tree, and by average in a regression tree.
/// Nodes that are alike stay in the order of the tree. Nodes without cases in the sample that
/// orders the rows cannot be judged, and come last in either order.
///
/// - Cumulative rows: each is its node together with all before it.
/// - Percentile rows: row `r` at a step of `s` percent is the cases from `r * s` to `(r + 1) * s`
///   percent of all, taken from the nodes in their order. A node that spans a border is in both
///   rows, its cases shared in proportion, for those of one node are all alike to the tree. Nodes
///   without cases are in none.
///
/// Cases are weighted, and counted as they are: prior probabilities do not enter. All cases are
/// those of all terminal nodes. Shares of nothing are 0, and so is the profit of a row without
/// cases. Indexes of rows, positions and columns out of range have no nodes, a null node, no column
/// and the value `systemMissingValue()`; so have the columns that a table lacks.
///
/// No table can be made where a sample asked for is missing, for a target category that the tree
/// does not have, for averages in a classification tree without any money per category, and for
/// percentile steps that do not divide 100.

namespace tree::grow {

/// The columns of a gains table. Which of them a table has depends on tree and settings
/// (`GainsIntf::HasColumn`).
enum GainsColumn : int {
  /// Weighted number of cases of the row. In every table.
  GainsCases = 0,
  /// The cases of the row in percent of all cases. In every table.
  GainsCasesPercent = 1,
  /// Weighted number of cases of the target category in the row. With a target category, as are the
  /// next two.
  GainsTarget = 2,
  /// The cases of the target category in the row in percent of all cases of that category.
  GainsTargetPercent = 3,
  /// The cases of the target category in the row in percent of the cases of the row.
  GainsResponse = 4,
  /// Profit per case, in the currency of the settings. In classification trees, with money for at
  /// least one category; a regression tree has no categories, and leaves money aside.
  GainsProfit = 5,
  /// In percent of the same of all cases: the response with a target category, else the profit or
  /// the average. In every table; `systemMissingValue()` in a row without cases, and where that of
  /// all cases is 0.
  GainsIndex = 6,
  /// Mean of the target, in its unit; `systemMissingValue()` in a row without cases. In regression
  /// trees.
  GainsAverage = 7,
};

}  // namespace tree::grow

#endif  // TREE_GROW_GAINS_COLUMNS_H_
