#ifndef TREE_SCORE_SRC_CASE_VALUES_H_
#define TREE_SCORE_SRC_CASE_VALUES_H_

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "tree/score/cases.h"

namespace tree::score {

/// A double that stands for no value: a NaN with a payload of its own.
constexpr std::uint64_t kNullBits = 0x7FF8'6E75'6C6C'0000;

inline bool IsNull(double value) { return std::bit_cast<std::uint64_t>(value) == kNullBits; }

/// The rows of the cases of a block, which follow each other.
struct InSequence {
  std::size_t begin;
  std::size_t GetRow(std::size_t place) const { return begin + place; }
  InSequence From(std::size_t place) const { return {begin + place}; }
};

/// The rows of the cases of a block, which were picked.
struct Picked {
  std::size_t const* rows;
  std::size_t GetRow(std::size_t place) const { return rows[place]; }
  Picked From(std::size_t place) const { return {rows + place}; }
};

/// Rows of doubles or floats.
template <class Value>
class RowValues {
 public:
  RowValues(void const* values, std::size_t stride)
      : values_(static_cast<Value const*>(values)), stride_(stride) {}
  explicit RowValues(Cases const& cases) : RowValues(cases.GetRows(), cases.GetStride()) {}

  double Get(std::size_t row, std::uint32_t predictor) const {
    return static_cast<double>(values_[row * stride_ + predictor]);
  }
  Value const* GetRow(std::size_t row) const { return values_ + row * stride_; }
  /// Has the values of a case fetched that comes soon, as far as most rows go.
  void CallFor(std::size_t row) const {
    auto const* const bytes = reinterpret_cast<char const*>(GetRow(row));
    __builtin_prefetch(bytes);
    __builtin_prefetch(bytes + 64);
  }
  std::size_t GetStride() const { return stride_; }

 private:
  Value const* values_;
  std::size_t stride_;
};

/// Columns that all hold doubles or all hold floats, side by side and without bitmaps.
template <class Value>
class ColumnValues {
 public:
  explicit ColumnValues(Cases const& cases) : columns_(cases.GetColumns()) {}

  double Get(std::size_t row, std::uint32_t predictor) const {
    return static_cast<double>(static_cast<Value const*>(columns_[predictor].values)[row]);
  }
  void CallFor(std::size_t /*row*/) const {}

 private:
  Column const* columns_;
};

/// Columns of any kind. What is missing by a bitmap is null, and so is NaN where it means that.
class AnyColumnValues {
 public:
  explicit AnyColumnValues(Cases const& cases)
      : columns_(cases.GetColumns()), nanIsNull_(cases.GetNanMeaning() == NanMeaning::kMissing) {}

  double Get(std::size_t row, std::uint32_t predictor) const {
    Column const& column = columns_[predictor];
    if (std::uint8_t const* const bits = column.validity; bits != nullptr) {
      std::size_t const bit = column.validityOffset + row;
      if (((bits[bit / 8] >> (bit % 8)) & 1) == 0) return std::bit_cast<double>(kNullBits);
    }
    double const value = Read(column, static_cast<std::ptrdiff_t>(row) * column.stride);
    // Deliberate: a NaN of the caller's is never taken for null by its payload.
    if (std::isnan(value)) {
      return nanIsNull_ ? std::bit_cast<double>(kNullBits)
                        : std::numeric_limits<double>::quiet_NaN();
    }
    return value;
  }
  void CallFor(std::size_t /*row*/) const {}

 private:
  static double Read(Column const& column, std::ptrdiff_t place) {
    void const* const values = column.values;
    switch (column.type) {
      case ValueType::kDouble:
        return static_cast<double const*>(values)[place];
      case ValueType::kFloat:
        return static_cast<double>(static_cast<float const*>(values)[place]);
      case ValueType::kCode:
        break;
    }
    return static_cast<double>(static_cast<std::int32_t const*>(values)[place]);
  }

  Column const* columns_;
  bool nanIsNull_;
};

// How values say that they are missing. `IsMissing` is about the missing value of a binary node,
// and `IsNull` about no value at all, which is missing to every rule.

/// Nothing is missing to a binary node.
struct NeverMissing {
  static constexpr bool kMayMiss = false;
  static constexpr bool kHasNulls = false;
  static constexpr bool kByPredictor = false;
  static bool IsMissing(double, double) { return false; }
  static bool IsNullValue(double) { return false; }
};

/// The missing value, which is not zero, so that its bits tell.
struct MissingByBits {
  static constexpr bool kMayMiss = true;
  static constexpr bool kHasNulls = false;
  static constexpr bool kByPredictor = false;
  static bool IsMissing(double value, double missing) {
    return std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(missing);
  }
  static bool IsNullValue(double) { return false; }
};

/// The missing value; if it is zero, of either sign.
struct MissingByValue {
  static constexpr bool kMayMiss = true;
  static constexpr bool kHasNulls = false;
  static constexpr bool kByPredictor = false;
  static bool IsMissing(double value, double missing) { return value == missing; }
  static bool IsNullValue(double) { return false; }
};

/// The missing value, and NaN.
struct MissingOrNan {
  static constexpr bool kMayMiss = true;
  static constexpr bool kHasNulls = true;
  static constexpr bool kNanIsNull = true;
  static constexpr bool kByPredictor = false;
  static bool IsMissing(double value, double missing) {
    return static_cast<int>(value == missing) + static_cast<int>(value != value) != 0;
  }
  static bool IsNullValue(double value) { return std::isnan(value); }
};

/// The missing value, and null.
struct MissingOrNull {
  static constexpr bool kMayMiss = true;
  static constexpr bool kHasNulls = true;
  static constexpr bool kNanIsNull = false;
  static constexpr bool kByPredictor = false;
  static bool IsMissing(double value, double missing) {
    return static_cast<int>(value == missing) + static_cast<int>(IsNull(value)) != 0;
  }
  static bool IsNullValue(double value) { return IsNull(value); }
};

/// The same, where predictors differ in their missing values.
template <class Missing>
struct ByPredictor : Missing {
  static constexpr bool kByPredictor = true;
};

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_CASE_VALUES_H_
