#include "quest/predictor_numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace tree::grow {
namespace {

/// How many bits a multiple may have: squares, summed with weights, have to fit into 126.
int NumBits(TrainingData const& data) {
  std::uint64_t weight = 0;
  for (std::uint32_t index = 0; index < data.GetNumCases(); ++index) {
    weight += static_cast<std::uint64_t>(data.GetWeights().Of(index));
  }
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
    hasLow = hasLow || value == -HUGE_VAL;
    hasHigh = hasHigh || value == HUGE_VAL;
    if (!std::isfinite(value)) return;
    least = std::min(least, value);
    greatest = std::max(greatest, value);
  };
  if (description.IsCoded()) {
    for (double const value : description.values) take(value);
  } else {
    for (std::size_t const row : data.GetRows()) {
      if (!description.column->IsMissing(row)) take(description.column->values[row]);
    }
  }
  if (!(least <= greatest)) least = greatest = 0.0;
  // Infinite values lie as far beyond the finite ones as these lie apart.
  double const range = greatest - least;
  double const beyond = range > 0.0 && std::isfinite(4.0 * range) ? range : 1.0;
  if (hasLow) least -= beyond;
  if (hasHigh) greatest += beyond;
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
