#include "quest/normal_split.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

namespace tree::grow {
namespace {

/// Several classes taken for one, and that one for normal.
struct Superclass {
  double probability = 0.0;
  double mean = 0.0;
  double variance = 0.0;
};

Superclass Merge(std::span<ClassMoments const> classes, std::vector<char> const& isHigh,
                 bool high) {
  Superclass merged;
  for (std::size_t j = 0; j < classes.size(); ++j) {
    if ((isHigh[j] != 0) != high) continue;
    merged.probability += classes[j].probability;
    merged.mean += classes[j].probability * classes[j].mean;
  }
  merged.mean /= merged.probability;
  for (std::size_t j = 0; j < classes.size(); ++j) {
    if ((isHigh[j] != 0) != high) continue;
    double const distance = classes[j].mean - merged.mean;
    merged.variance +=
        classes[j].probability / merged.probability * (classes[j].variance + distance * distance);
  }
  return merged;
}

/// By class, whether its mean belongs to the cluster of the greater ones.
std::vector<char> ClusterMeans(std::span<ClassMoments const> classes, double least,
                               double greatest) {
  std::vector<char> isHigh(classes.size());
  double low = least;
  double high = greatest;
  // Every step but the last moves a mean to the other cluster, and the squares within shrink.
  for (bool changed = true; changed;) {
    changed = false;
    double sums[2] = {0.0, 0.0};
    double counts[2] = {0.0, 0.0};
    for (std::size_t j = 0; j < classes.size(); ++j) {
      double const mean = classes[j].mean;
      bool const isNearerHigh = high - mean < mean - low;
      std::size_t const cluster = isNearerHigh ? 1 : 0;
      changed = changed || isNearerHigh != (isHigh[j] != 0);
      isHigh[j] = isNearerHigh ? 1 : 0;
      sums[cluster] += mean;
      counts[cluster] += 1.0;
    }
    low = sums[0] / counts[0];
    high = sums[1] / counts[1];
  }
  return isHigh;
}

/// Where the densities of two normal superclasses times their probabilities are equal.
double BoundaryOf(Superclass const& low, Superclass const& high) {
  double const middle = low.mean + (high.mean - low.mean) / 2.0;
  double const distance = high.mean - low.mean;
  // Next to a superclass that does not vary, as near as numbers are sure to be told apart.
  constexpr double kNext = 1e-6;
  if (!(low.variance > 0.0) || !(high.variance > 0.0)) {
    if (low.variance > 0.0) return high.mean - kNext * distance;
    return high.variance > 0.0 ? low.mean + kNext * distance : middle;
  }
  // In units of the distance, from the lower mean: means 0 and 1.
  double const a = low.variance / distance / distance;
  double const b = high.variance / distance / distance;
  double const logOdds = std::log(low.probability / high.probability);
  double const logSpreads = 0.5 * (std::log(b) - std::log(a));
  // (a - b) x^2 + 2 (0 b - 1 a) x + a - 0 + 2 a b (log p ratio + log s ratio) = 0
  double const square = a - b;
  double const linear = -2.0 * a;
  double const constant = a + 2.0 * a * b * (logOdds + logSpreads);
  if (std::abs(square) <= 1e-9 * std::max(a, b)) {
    return low.mean + distance * (-constant / linear);
  }
  double const discriminant = linear * linear - 4.0 * square * constant;
  if (!(discriminant >= 0.0)) return middle;
  // Both roots without taking like numbers from each other.
  double const sum = -0.5 * (linear - std::sqrt(discriminant));  // linear is negative
  double const first = sum / square;
  double const second = constant / sum;
  double const nearer = std::abs(first) < std::abs(second) ? first : second;
  return low.mean + distance * nearer;
}

/// The same for superclasses with the same mean: the lower one of two points as far from it; none
/// where one of them is more probable everywhere.
std::optional<double> LowerBoundaryOf(Superclass const& first, Superclass const& second) {
  // Next to a superclass that does not vary, as in `BoundaryOf`.
  double const spread = std::sqrt(std::max(first.variance, second.variance));
  if (!(std::min(first.variance, second.variance) > 0.0)) {
    return spread > 0.0 ? std::optional(first.mean - 1e-6 * spread) : std::nullopt;
  }
  // x^2 (1 / a - 1 / b) = 2 (log p ratio - log s ratio)
  double const excess = 2.0 * std::log(first.probability / second.probability) -
                        std::log(first.variance / second.variance);
  double const squared = excess / (1.0 / first.variance - 1.0 / second.variance);
  if (!(squared > 0.0) || !std::isfinite(squared)) return std::nullopt;
  return first.mean - std::sqrt(squared);
}

}  // namespace

std::vector<double> NormalSplitPoints(std::span<ClassMoments const> classes) {
  if (classes.size() < 2) return {};
  auto const [least, greatest] = std::minmax_element(
      classes.begin(), classes.end(),
      [](ClassMoments const& a, ClassMoments const& b) { return a.mean < b.mean; });
  if (!(least->mean < greatest->mean)) {
    // The most probable class against all others.
    std::vector<char> isOther(classes.size(), 1);
    auto const most = std::max_element(
        classes.begin(), classes.end(),
        [](ClassMoments const& a, ClassMoments const& b) { return a.probability < b.probability; });
    isOther[static_cast<std::size_t>(most - classes.begin())] = 0;
    std::optional<double> const point =
        LowerBoundaryOf(Merge(classes, isOther, false), Merge(classes, isOther, true));
    return point.has_value() ? std::vector<double>{*point} : std::vector<double>();
  }
  std::vector<char> const isHigh = ClusterMeans(classes, least->mean, greatest->mean);
  Superclass const low = Merge(classes, isHigh, false);
  Superclass const high = Merge(classes, isHigh, true);
  double const middle = low.mean + (high.mean - low.mean) / 2.0;
  double const boundary = BoundaryOf(low, high);
  if (!std::isfinite(boundary) || boundary == middle) return {middle};
  return {boundary, middle};
}

}  // namespace tree::grow
