#include "growing/fixed_point.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace tree::grow {
namespace {

/// Number of cases, counting repeated ones as often as whole weights repeat them.
double CountCases(FixedWeights const& weights, std::size_t numCases) {
  if (weights.multiples.empty() || weights.unit != 1.0) return static_cast<double>(numCases);
  return std::accumulate(weights.multiples.begin(), weights.multiples.end(), 0.0);
}

/// An exponent e with which the sum of the weights is at most 2^e, found in whole numbers, since a
/// rounded sum would depend on the order of the cases.
int ExponentOfSum(std::vector<double> const& weights) {
  constexpr int kDigits = 30;
  int exponent = 0;
  std::frexp(*std::max_element(weights.begin(), weights.end()), &exponent);
  WideInteger sum = 0;
  for (double const weight : weights) {
    sum += static_cast<std::int64_t>(std::ceil(std::ldexp(weight, kDigits - exponent)));
  }
  return exponent - kDigits + static_cast<int>(std::bit_width(static_cast<std::uint64_t>(sum)));
}

}  // namespace

FixedWeights FixWeights(std::vector<double> const& weights) {
  FixedWeights fixed;
  if (weights.empty()) return fixed;
  constexpr double kLargestSum = 4503599627370496.0;  // 2^52
  double sum = 0.0;
  bool whole = true;
  for (double const weight : weights) {
    sum += weight;
    whole = whole && weight == std::floor(weight);
  }
  if (!whole || sum > kLargestSum)
    fixed.unit = std::ldexp(1.0, std::max(ExponentOfSum(weights) - 52, -1000));
  fixed.multiples.reserve(weights.size());
  for (double const weight : weights) {
    // A case that counts at all counts at least one unit.
    fixed.multiples.push_back(std::max<std::int64_t>(1, std::llround(weight / fixed.unit)));
  }
  return fixed;
}

FixedNumbers FixNumbers(std::vector<double> const& values, FixedWeights const& weights) {
  FixedNumbers fixed;
  if (values.empty()) return fixed;
  auto const [minimum, maximum] = std::minmax_element(values.begin(), values.end());
  fixed.centre = *minimum / 2.0 + *maximum / 2.0;
  double const reach = std::max(*maximum - fixed.centre, fixed.centre - *minimum);
  if (reach > 0.0) {
    int reachExponent = 0;
    std::frexp(reach, &reachExponent);  // reach < 2^reachExponent
    int countExponent = 0;
    std::frexp(CountCases(weights, values.size()), &countExponent);
    fixed.unit = std::ldexp(1.0, std::max(reachExponent + countExponent - 61, -1000));
  }
  fixed.multiples.reserve(values.size());
  for (double const value : values) {
    fixed.multiples.push_back(std::llround((value - fixed.centre) / fixed.unit));
  }
  return fixed;
}

}  // namespace tree::grow
