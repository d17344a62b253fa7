#include "quest/predictor_numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace tree::grow {
namespace {

/// How many bits a multiple may have: squares, summed with weights, have to fit into 126.
int NumBits(TrainingData const& data) {
  std::vector<std::int64_t> const& weights = data.GetWeights().multiples;
  auto const weight = static_cast<std::uint64_t>(
      weights.empty() ? static_cast<std::int64_t>(data.GetNumCases())
                      : std::accumulate(weights.begin(), weights.end(), std::int64_t{0}));
  // Differences from a mean have a bit more.
  return std::min(40, (126 - static_cast<int>(std::bit_width(weight))) / 2 - 1);
}

}  // namespace

PredictorNumbers::PredictorNumbers(TrainingData const& data, std::size_t predictor) {
  GrowingPredictor const& description = data.GetPredictors()[predictor];
  double least = HUGE_VAL;
  double greatest = -HUGE_VAL;
  bool hasLow = false;
  bool hasHigh = false;
  auto const take = [&](double value) {
    // Infinite ones are looked at only where they would be the least or the greatest.
    if (value < least) {
      if (value == -HUGE_VAL) {
        hasLow = true;
      } else {
        least = value;
      }
    }
    if (value > greatest) {
      if (value == HUGE_VAL) {
        hasHigh = true;
      } else {
        greatest = value;
      }
    }
  };
  if (description.IsCoded()) {
    for (double const value : description.values) take(value);
  } else {
    double const* const values = description.column->values;
    double const missing = description.column->description.missingValue;
    for (std::size_t const row : data.GetRows()) {
      if (values[row] != missing) take(values[row]);
    }
  }
  if (!(least <= greatest)) least = greatest = 0.0;
  // Infinite values lie as far beyond the finite ones as these lie apart.
  double const range = greatest - least;
  double const beyond = range > 0.0 && std::isfinite(4.0 * range)
                            ? range
                            : std::max({1.0, std::abs(least), std::abs(greatest)});
  constexpr double kLargest = std::numeric_limits<double>::max();
  if (hasLow) least = std::max(least - beyond, -kLargest);
  if (hasHigh) greatest = std::min(greatest + beyond, kLargest);
  least_ = least;
  greatest_ = greatest;
  centre_ = least / 2.0 + greatest / 2.0;
  double const half = greatest / 2.0 - least / 2.0;
  if (!(half > 0.0)) return;
  int exponent = 0;
  std::frexp(half, &exponent);  // half < 2^exponent
  unit_ = std::ldexp(1.0, std::max(exponent - NumBits(data), -1022));
}

std::int64_t PredictorNumbers::Of(double value) const {
  return std::llrint((std::clamp(value, least_, greatest_) - centre_) / unit_);
}

}  // namespace tree::grow
