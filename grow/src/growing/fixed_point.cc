#include "growing/fixed_point.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

#include "growing/workers.h"

namespace tree::grow {
namespace {

/// Visits each item, and polls on the way.
template <class Item, class Visit>
void ForEach(std::vector<Item> const& items, PollFunction const& poll, Visit const& visit) {
  ForSlices(items.size(), poll, [&](std::size_t begin, std::size_t end) {
    for (std::size_t index = begin; index < end; ++index) visit(items[index]);
  });
}

/// Number of cases, counting repeated ones as often as whole weights repeat them.
double CountCases(FixedWeights const& weights, std::size_t numCases, PollFunction const& poll) {
  if (weights.multiples.empty() || weights.unit != 1.0) return static_cast<double>(numCases);
  double count = 0.0;
  ForEach(weights.multiples, poll,
          [&](std::int64_t multiple) { count += static_cast<double>(multiple); });
  return count;
}

/// An exponent e with which the sum of the weights is at most 2^e, found in whole numbers, since a
/// rounded sum would depend on the order of the cases.
int ExponentOfSum(std::vector<double> const& weights, double greatest, PollFunction const& poll) {
  constexpr int kDigits = 30;
  int exponent = 0;
  std::frexp(greatest, &exponent);
  WideInteger sum = 0;
  ForEach(weights, poll, [&](double weight) {
    sum += static_cast<std::int64_t>(std::ceil(std::ldexp(weight, kDigits - exponent)));
  });
  return exponent - kDigits + static_cast<int>(std::bit_width(static_cast<std::uint64_t>(sum)));
}

}  // namespace

FixedWeights FixWeights(std::vector<double> const& weights, PollFunction const& poll) {
  FixedWeights fixed;
  if (weights.empty()) return fixed;
  constexpr double kLargestSum = 4503599627370496.0;  // 2^52
  double sum = 0.0;
  double greatest = 0.0;
  bool whole = true;
  ForEach(weights, poll, [&](double weight) {
    sum += weight;
    greatest = std::max(greatest, weight);
    whole = whole && weight == std::floor(weight);
  });
  if (!whole || sum > kLargestSum) {
    fixed.unit = std::ldexp(1.0, std::max(ExponentOfSum(weights, greatest, poll) - 52, -1000));
  }
  fixed.multiples.reserve(weights.size());
  ForEach(weights, poll, [&](double weight) {
    // A case that counts at all counts at least one unit.
    fixed.multiples.push_back(std::max<std::int64_t>(1, std::llround(weight / fixed.unit)));
  });
  return fixed;
}

FixedNumbers FixNumbers(std::vector<double> const& values, FixedWeights const& weights,
                        PollFunction const& poll) {
  FixedNumbers fixed;
  if (values.empty()) return fixed;
  double minimum = values.front();
  double maximum = values.front();
  ForEach(values, poll, [&](double value) {
    minimum = std::min(minimum, value);
    maximum = std::max(maximum, value);
  });
  fixed.centre = minimum / 2.0 + maximum / 2.0;
  double const reach = std::max(maximum - fixed.centre, fixed.centre - minimum);
  if (reach > 0.0) {
    int reachExponent = 0;
    std::frexp(reach, &reachExponent);  // reach < 2^reachExponent
    int countExponent = 0;
    std::frexp(CountCases(weights, values.size(), poll), &countExponent);
    fixed.unit = std::ldexp(1.0, std::max(reachExponent + countExponent - 61, -1000));
  }
  fixed.multiples.reserve(values.size());
  ForEach(values, poll, [&](double value) {
    fixed.multiples.push_back(std::llround((value - fixed.centre) / fixed.unit));
  });
  return fixed;
}

}  // namespace tree::grow
