#include "growing/row_ranges.h"

#include <cstdint>

#include "growing/node_rows.h"

namespace tree::grow {

void RowRanges::Append(RowRanges const& later) {
  for (std::size_t position = 0; position < least_.size(); ++position) {
    if (later.least_[position] < least_[position]) least_[position] = later.least_[position];
    if (later.greatest_[position] >= greatest_[position]) {
      greatest_[position] = later.greatest_[position];
    }
  }
  for (std::size_t position = 0; position < numMissing_.size(); ++position) {
    numMissing_[position] += later.numMissing_[position];
  }
}

void RowRanges::Store(NodeImp& node) const {
  for (std::size_t position = 0; position < least_.size(); ++position) {
    auto const predictor = static_cast<int>(rows_->GetPredictors()[position]);
    bool const isEmpty = least_[position] > greatest_[position];
    node.SetPredictorRange(predictor, isEmpty ? 0.0 : least_[position],
                           isEmpty ? 0.0 : greatest_[position]);
    node.SetPredictorMissingValueFlag(predictor,
                                      !numMissing_.empty() && numMissing_[position] > 0.0);
  }
}

void SummariseRows(TrainingData const& data, CaseLists const& lists, Range places, NodeImp& node) {
  CaseRows const& rows = data.GetCaseRows();
  if (rows.IsEmpty()) return;
  RowRanges ranges(rows);
  ForRows(rows, lists, places, places.end,
          [&](std::uint32_t, double const* row) { ranges.Add(row); });
  ranges.Store(node);
}

}  // namespace tree::grow
