#ifndef TREE_GROW_SRC_GROWING_CASE_ROWS_H_
#define TREE_GROW_SRC_GROWING_CASE_ROWS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "growing/value_scale.h"
#include "growing/workers.h"
#include "tree/grow/data_set.h"

namespace tree::grow {

/// The values that cases have of several ordered predictors, case by case: an algorithm that looks
/// at all predictors of a node's cases finds those of each case together, however scattered the
/// cases are. A missing value is NaN, which is no value of any data.
class CaseRows {
 public:
  /// Without predictors.
  CaseRows() = default;
  /// Reads the `predictors`, positions in `columns`, of the cases at these `rows` of the columns.
  CaseRows(std::vector<Column const*> const& columns, std::vector<std::size_t> predictors,
           std::vector<std::size_t> const& rows, Workers& workers);

  bool IsEmpty() const { return predictors_.empty(); }
  /// Number of values of a case.
  std::size_t GetWidth() const { return predictors_.size(); }
  /// Which predictor each value of a case belongs to, ascending.
  std::span<std::size_t const> GetPredictors() const { return predictors_; }
  /// The values of a case.
  double const* Of(std::uint32_t index) const {
    return values_.get() + std::size_t{index} * predictors_.size();
  }
  /// Whether some values are missing or infinite, so that they need a second look.
  bool HasGaps() const { return hasGaps_; }
  /// The scales on which the values of each predictor are not crowded, by position in a row.
  std::span<ValueScale const> GetScales() const { return scales_; }

  /// Calls for the values of a case that will soon be read. Deliberate: always inline, since calls
  /// of a function that only calls for memory are taken to do nothing.
  [[gnu::always_inline]] void Prefetch(std::uint32_t index) const {
    constexpr std::size_t kLine = 64 / sizeof(double);
    double const* const row = Of(index);
    std::size_t const size = std::min(predictors_.size(), kMaxPrefetched);
    for (std::size_t value = 0; value < size; value += kLine) __builtin_prefetch(row + value);
    __builtin_prefetch(row + (size - 1));
  }
  /// How many cases ahead to call for them.
  std::size_t GetPrefetchDistance() const {
    return std::clamp<std::size_t>(kPrefetchedValues / predictors_.size(), 2, 16);
  }

 private:
  // What lies behind the beginning of a long row follows without a call.
  static constexpr std::size_t kMaxPrefetched = 64;
  static constexpr std::size_t kPrefetchedValues = 240;
  struct Free {
    void operator()(double* values) const;
  };
  /// The finite values of a predictor.
  struct Ends {
    double least = __builtin_huge_val();
    double greatest = -__builtin_huge_val();
  };

  ValueScale FindScale(std::size_t position, Ends ends, std::size_t numCases) const;

  std::vector<std::size_t> predictors_;
  std::unique_ptr<double[], Free> values_;  // [case][predictor]
  bool hasGaps_ = false;
  std::vector<ValueScale> scales_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_CASE_ROWS_H_
