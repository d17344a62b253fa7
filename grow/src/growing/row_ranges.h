#ifndef TREE_GROW_SRC_GROWING_ROW_RANGES_H_
#define TREE_GROW_SRC_GROWING_ROW_RANGES_H_

#include <cstddef>
#include <vector>

#include "growing/case_lists.h"
#include "growing/case_rows.h"
#include "tree/nodes.h"

namespace tree::grow {

/// The ranges of the values that some cases have of the predictors in `CaseRows`, and of which of
/// them some have none.
class RowRanges {
 public:
  /// Of no cases. `rows`: **borrowed**.
  explicit RowRanges(CaseRows const& rows)
      : rows_(&rows),
        least_(rows.GetWidth(), kNone),
        greatest_(rows.GetWidth(), -kNone),
        numMissing_(rows.HasGaps() ? rows.GetWidth() : 0) {}

  /// Adds a case. `row`: its values.
  void Add(double const* row) {
    std::size_t const width = least_.size();
    // Each value of a row is compared in the same way, with those of no case; NaN is neither.
    double* const __restrict least = least_.data();
    double* const __restrict greatest = greatest_.data();
    for (std::size_t position = 0; position < width; ++position) {
      double const value = row[position];
      least[position] = value < least[position] ? value : least[position];
      greatest[position] = value >= greatest[position] ? value : greatest[position];
    }
    if (numMissing_.empty()) return;
    double* const __restrict numMissing = numMissing_.data();
    for (std::size_t position = 0; position < width; ++position) {
      numMissing[position] += row[position] == row[position] ? 0.0 : 1.0;
    }
  }
  /// Adds cases that come after the present ones.
  void Append(RowRanges const& later);
  /// Stores in a node what its cases have of these predictors, as `SummarisePredictor` does.
  void Store(NodeImp& node) const;

 private:
  static constexpr double kNone = __builtin_huge_val();

  CaseRows const* rows_;
  std::vector<double> least_;  // by position in a row
  std::vector<double> greatest_;
  std::vector<double> numMissing_;  // empty where no value is
};

/// Stores in a node what its cases have of the predictors in the rows of the data. Linear in them.
void SummariseRows(TrainingData const& data, CaseLists const& lists, Range places, NodeImp& node);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_ROW_RANGES_H_
