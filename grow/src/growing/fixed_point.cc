#include "growing/fixed_point.h"

#include <algorithm>
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
  if (!whole || sum > kLargestSum) {
    // Halved as often as there can be cases, the sum is a number even where it is not as it stands.
    constexpr int kHalvings = 32;
    double scaled = 0.0;
    for (double const weight : weights) scaled += std::ldexp(weight, -kHalvings);
    int exponent = 0;
    std::frexp(std::isinf(sum) ? scaled : sum, &exponent);  // sum < 2^exponent
    if (std::isinf(sum)) exponent += kHalvings;
    fixed.unit = std::ldexp(1.0, exponent - 52);
  }
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
