#include "association/number_sums.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

namespace tree::grow {

FixedNumbers CoarsenForSquares(FixedNumbers numbers, FixedWeights const& weights) {
  // Differences of numbers are up to twice as large, their squares four times; another four leaves
  // room for what is computed from the sums.
  constexpr int kDigits = 122;
  std::int64_t weight = 0;
  std::int64_t largest = 0;
  for (std::size_t index = 0; index < numbers.multiples.size(); ++index) {
    weight += weights.Of(static_cast<std::uint32_t>(index));
    largest = std::max(largest, std::abs(numbers.multiples[index]));
  }
  auto const widthOf = [](std::int64_t value) {
    return static_cast<int>(std::bit_width(static_cast<std::uint64_t>(value)));
  };
  int const excess = widthOf(weight) + 2 * widthOf(largest) - kDigits;
  if (excess <= 0) return numbers;
  int const dropped = (excess + 1) / 2;
  std::int64_t const half = std::int64_t{1} << (dropped - 1);
  numbers.unit = std::ldexp(numbers.unit, dropped);
  for (std::int64_t& number : numbers.multiples) {
    // Away from zero, so that negative numbers are the mirror image of positive ones.
    number = number < 0 ? -((-number + half) >> dropped) : (number + half) >> dropped;
  }
  return numbers;
}

std::int64_t WholeMean(NumberSums const& sums) {
  return sums.weight == 0 ? 0 : static_cast<std::int64_t>(sums.sum / sums.weight);
}

}  // namespace tree::grow
