#ifndef TREE_GROW_SRC_ASSOCIATION_NUMBER_SUMS_H_
#define TREE_GROW_SRC_ASSOCIATION_NUMBER_SUMS_H_

#include <cstdint>

#include "growing/fixed_point.h"

namespace tree::grow {

/// What the numbers of some cases add up to, exactly: adding and taking away in any order gives the
/// same. Requires numbers as `CoarsenForSquares` makes them.
struct NumberSums {
  std::int64_t size = 0;    ///< of frequencies, in their unit
  std::int64_t weight = 0;  ///< of weights, in their unit
  WideInteger sum = 0;      ///< of weights times numbers, in units of both
  WideInteger squares = 0;  ///< of weights times squares of numbers

  void AddCase(std::int64_t caseSize, std::int64_t caseWeight, std::int64_t number) {
    size += caseSize;
    weight += caseWeight;
    WideInteger const weighted = WideInteger{caseWeight} * number;
    sum += weighted;
    squares += weighted * number;
  }
  NumberSums& operator+=(NumberSums const& other) {
    size += other.size;
    weight += other.weight;
    sum += other.sum;
    squares += other.squares;
    return *this;
  }
  NumberSums& operator-=(NumberSums const& other) {
    size -= other.size;
    weight -= other.weight;
    sum -= other.sum;
    squares -= other.squares;
    return *this;
  }
  friend bool operator==(NumberSums const&, NumberSums const&) = default;
};

/// Numbers whose weighted squares, and those of their differences, add up within `WideInteger`:
/// where needed, with the last digits rounded away and a greater unit. Weights that are whole need
/// no rounding; others leave at least 34 digits for the range. Linear in the cases.
FixedNumbers CoarsenForSquares(FixedNumbers numbers, FixedWeights const& weights);

/// The mean of the numbers, rounded down or up to a whole one; 0 without weight.
std::int64_t WholeMean(NumberSums const& sums);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_ASSOCIATION_NUMBER_SUMS_H_
