#include "growing/value_scale.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tree::grow {
namespace {

/// How crowded values are: least where each of some parts of their range has as many of them.
/// `sorted`: ascending.
double CrowdingOn(ValueScale const& scale, std::vector<double> const& sorted) {
  constexpr std::size_t kNumParts = 256;
  auto const markOf = [&](double value) { return scale.IsPlain() ? value : scale.MarkOf(value); };
  double const least = markOf(sorted.front());
  double const range = markOf(sorted.back()) - least;
  std::array<double, kNumParts> counts{};
  for (double const value : sorted) {
    // Of a range that is no number, or of none, there is one part.
    double const share = std::isfinite(range) ? (markOf(value) - least) / range : 0.0;
    counts[static_cast<std::size_t>(share * (kNumParts - 1))] += 1.0;
  }
  double crowding = 0.0;
  for (double const count : counts) crowding += count * count;
  return crowding;
}

}  // namespace

ValueScale ValueScale::For(std::vector<double> values) {
  constexpr std::size_t kFewValues = 32;  // say little of how they lie
  constexpr double kMuch = 4.0;           // finding marks takes time
  // No scale parts equal values.
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
  std::size_t const count = values.size();
  if (count < kFewValues) return {};
  struct {
    double origin;
    double unit;
  } const candidates[] = {
      {values.front(), values[count / 32] - values.front()},
      {values.back(), values.back() - values[count - 1 - count / 32]},
      {values[count / 2], (values[3 * count / 4] - values[count / 4]) / 2.0},
  };
  ValueScale best;
  double least = CrowdingOn(best, values) / kMuch;
  for (auto const& [origin, unit] : candidates) {
    if (!std::isnormal(unit) || !std::isnormal(1.0 / unit)) continue;
    ValueScale const scale(origin, unit);
    double const crowding = CrowdingOn(scale, values);
    if (crowding >= least) continue;
    least = crowding;
    best = scale;
  }
  return best;
}

}  // namespace tree::grow
