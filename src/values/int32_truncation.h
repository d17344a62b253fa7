#ifndef TREE_SRC_VALUES_INT32_TRUNCATION_H_
#define TREE_SRC_VALUES_INT32_TRUNCATION_H_

#include <cmath>
#include <cstdint>
#include <limits>

namespace tree {

/// `value` truncated toward zero; the most negative integer for NaN and for values whose truncation
/// lies outside the 32-bit range (2147483647.5 lies inside).
inline std::int32_t TruncateToInt32(double value) {
  using Limits = std::numeric_limits<std::int32_t>;
  double const truncated = std::trunc(value);
  bool const fits = truncated >= Limits::min() && truncated <= Limits::max();
  return fits ? static_cast<std::int32_t>(truncated) : Limits::min();
}

}  // namespace tree

#endif  // TREE_SRC_VALUES_INT32_TRUNCATION_H_
