#ifndef TREE_GROW_SRC_QUEST_ROW_SUMS_H_
#define TREE_GROW_SRC_QUEST_ROW_SUMS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "association/number_sums.h"
#include "growing/case_lists.h"
#include "growing/case_rows.h"
#include "growing/row_ranges.h"
#include "quest/predictor_numbers.h"

namespace tree::grow {

/// The sums of some cases' numbers by class, for each predictor in the rows.
class ClassSums {
 public:
  ClassSums(std::size_t width, std::size_t numClasses)
      : numClasses_(numClasses), cells_(width * numClasses) {}

  /// By class. `position`: in a row.
  ///@{
  std::span<NumberSums> Of(std::size_t position) {
    return {cells_.data() + position * numClasses_, numClasses_};
  }
  std::span<NumberSums const> Of(std::size_t position) const {
    return {cells_.data() + position * numClasses_, numClasses_};
  }
  ///@}
  ClassSums& operator+=(ClassSums const& other);

 private:
  std::size_t numClasses_;
  std::vector<NumberSums> cells_;  // [position][class]
};

/// Adds up cases row by row: all predictors at once, as the multiples of `PredictorNumbers`. Cases
/// that weigh 1 are added up in doubles, which stay exact because multiples are parted into two
/// halves, and are emptied in time.
class RowSums {
 public:
  /// `numbers`: by predictor, of those in the rows of the data. References are **borrowed**.
  RowSums(TrainingData const& data, CaseLists const& lists,
          std::span<PredictorNumbers const> numbers);

  /// Adds the cases at some places to the sums, and to the ranges.
  void Add(Range places, ClassSums& sums, RowRanges& ranges) const;
  /// Adds the distances of the cases at some places from the means: what they are times the
  /// weights. Only the sum is changed. `means`: whole, [position][class].
  void AddDistances(Range places, std::span<std::int64_t const> means, ClassSums& distances) const;

 private:
  template <bool HasGaps>
  void AddUnweighted(Range places, ClassSums& sums, RowRanges& ranges) const;
  void AddWeighted(Range places, ClassSums& sums, RowRanges& ranges) const;
  template <bool HasGaps>
  void AddUnweightedDistances(Range places, std::span<std::int64_t const> means,
                              ClassSums& distances) const;
  void AddWeightedDistances(Range places, std::span<std::int64_t const> means,
                            ClassSums& distances) const;
  double MultipleOf(double value, std::size_t position) const;

  CaseRows const& rows_;
  CaseLists const& lists_;
  std::size_t width_;
  std::size_t numClasses_;
  bool weighted_;
  // By position in a row, of `PredictorNumbers`:
  std::vector<double> least_;
  std::vector<double> greatest_;
  std::vector<double> centre_;
  std::vector<double> perUnit_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_QUEST_ROW_SUMS_H_
