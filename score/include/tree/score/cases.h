#ifndef TREE_SCORE_CASES_H_
#define TREE_SCORE_CASES_H_

/// @file
/// The cases to score, read where they lie: `Cases` are rows of doubles or floats, or columns
/// (`Column`) of doubles, floats or category codes, with bitmaps of missing values as the Arrow
/// columnar format has them. Nothing is copied and nothing is owned: what the pointers show must
/// live, unchanged, for as long as cases are scored.

#include <cstddef>
#include <cstdint>

#include "tree/export.h"

namespace tree::score {

/// How the values of a column are stored.
enum class ValueType : std::uint8_t {
  kDouble,  ///< doubles
  kFloat,   ///< floats; compared as the doubles that they are
  kCode,    ///< signed 32-bit category codes, or other whole numbers
};

/// The values of one predictor. **Borrowed**.
struct Column {
  /// A column without values, for a predictor that the tree does not ask for.
  Column() = default;
  /// Values with a distance of `distance` values from one case to the next, 1 where they lie side
  /// by side; negative to read backwards.
  ///@{
  explicit Column(double const* first, std::ptrdiff_t distance = 1)
      : values(first), stride(distance), type(ValueType::kDouble) {}
  explicit Column(float const* first, std::ptrdiff_t distance = 1)
      : values(first), stride(distance), type(ValueType::kFloat) {}
  explicit Column(std::int32_t const* first, std::ptrdiff_t distance = 1)
      : values(first), stride(distance), type(ValueType::kCode) {}
  ///@}

  /// The same column with a bitmap that says which cases have a value. `bits` may be null: all
  /// have.
  Column WithValidity(std::uint8_t const* bits, std::size_t offset = 0) const {
    Column column = *this;
    column.validity = bits;
    column.validityOffset = offset;
    return column;
  }

  void const* values = nullptr;  ///< the first case's; null in a column without values
  std::ptrdiff_t stride = 1;     ///< from one case to the next, in values
  /// Bit `validityOffset` + i is 1 where case i has a value and 0 where it has none, the lowest bit
  /// of a byte first; null where all have values. What is stored for a case without value is not
  /// looked at.
  std::uint8_t const* validity = nullptr;
  std::size_t validityOffset = 0;       ///< the bit of the first case
  ValueType type = ValueType::kDouble;  ///< how the values are stored
};

/// Whether NaN is a value.
enum class NanMeaning : std::uint8_t {
  /// A value like any other: above every cut point, and no category. As in `NodeImp`.
  kValue,
  /// No value: the case goes where each rule sends missing ones, as where a bitmap says so.
  kMissing,
};

/// Cases of one call, by predictor index and from 0. A case without a value (`WithValidity`,
/// `NanMeaning::kMissing`) goes, at each rule, where the rule sends its missing value.
class TREE_API Cases {
 public:
  /// Rows: `values`[i * `stride` + p] is the value of predictor p in case i. **Borrowed**.
  /// `stride`: values from one row to the next, `numPredictors` where nothing lies between.
  ///@{
  static Cases OfRows(double const* values, std::size_t numCases, std::size_t numPredictors,
                      std::size_t stride) {
    return {values, nullptr, numCases, numPredictors, stride, ValueType::kDouble};
  }
  static Cases OfRows(float const* values, std::size_t numCases, std::size_t numPredictors,
                      std::size_t stride) {
    return {values, nullptr, numCases, numPredictors, stride, ValueType::kFloat};
  }
  static Cases OfRows(double const* values, std::size_t numCases, std::size_t numPredictors) {
    return OfRows(values, numCases, numPredictors, numPredictors);
  }
  static Cases OfRows(float const* values, std::size_t numCases, std::size_t numPredictors) {
    return OfRows(values, numCases, numPredictors, numPredictors);
  }
  ///@}
  /// Columns: `columns`[p] holds predictor p, a value for each of `numCases` cases. **Borrowed**,
  /// the array of columns too.
  static Cases OfColumns(Column const* columns, std::size_t numColumns, std::size_t numCases) {
    return {nullptr, columns, numCases, numColumns, 0, ValueType::kDouble};
  }

  /// The same cases with another meaning of NaN.
  Cases WithNan(NanMeaning meaning) const {
    Cases cases = *this;
    cases.nan_ = meaning;
    return cases;
  }

  /// Number of cases.
  std::size_t GetNumCases() const { return numCases_; }
  /// Number of predictors of each case.
  std::size_t GetNumPredictors() const { return numPredictors_; }
  /// The columns; null where the cases are rows.
  Column const* GetColumns() const { return columns_; }
  /// The first row; null where the cases are columns.
  void const* GetRows() const { return rows_; }
  /// Distance from one row to the next, in values.
  std::size_t GetStride() const { return stride_; }
  /// How the values of rows are stored.
  ValueType GetRowType() const { return rowType_; }
  /// Whether NaN is a value.
  NanMeaning GetNanMeaning() const { return nan_; }

 private:
  Cases(void const* rows, Column const* columns, std::size_t numCases, std::size_t numPredictors,
        std::size_t stride, ValueType rowType)
      : rows_(rows),
        columns_(columns),
        numCases_(numCases),
        numPredictors_(numPredictors),
        stride_(stride),
        rowType_(rowType) {}

  void const* rows_;
  Column const* columns_;
  std::size_t numCases_;
  std::size_t numPredictors_;
  std::size_t stride_;
  ValueType rowType_;
  NanMeaning nan_ = NanMeaning::kValue;
};

}  // namespace tree::score

#endif  // TREE_SCORE_CASES_H_
