#ifndef TREE_GROW_SRC_GROWING_RANKED_PREDICTOR_H_
#define TREE_GROW_SRC_GROWING_RANKED_PREDICTOR_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tree/grow/data_set.h"

namespace tree::grow {

/// A case, by its position in a sample, with the rank of its value. Eight bytes, since growing
/// reads lists of them over and over.
struct RankedCase {
  std::uint32_t rank;   ///< index of the value in `RankedPredictor::values`
  std::uint32_t index;  ///< of the case in the sample
};

/// The cases of a sample in the order of one predictor's values.
struct RankedPredictor {
  /// The distinct values, ascending.
  std::vector<double> values;
  /// The cases that have a value, by rank, and within one by index.
  std::vector<RankedCase> cases;
};

/// Sorts the sample's cases by the column. `rows`: of the sample's cases in the column, by index;
/// fewer than 2^32. Zeros of either sign are one value. Linear in the cases, but for those whose
/// values agree in their first 32 bits and differ after them.
RankedPredictor RankCases(Column const& column, std::vector<std::size_t> const& rows);

/// A cut point between two neighbouring values, lower < upper: lower <= cut < upper. Their middle,
/// or the lower one where no double lies between them or one is infinite.
double CutBetween(double lower, double upper);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_RANKED_PREDICTOR_H_
