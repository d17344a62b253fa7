#include "association/f_test.h"

#include <limits>

namespace tree::grow {
namespace {

TestStatistic Compare(double between, double within, double degreesOfFreedom,
                      double errorDegreesOfFreedom) {
  if (!(degreesOfFreedom > 0.0) || !(errorDegreesOfFreedom > 0.0)) return {};
  double value = 0.0;
  if (between > 0.0) {
    value = within > 0.0 ? between / degreesOfFreedom / (within / errorDegreesOfFreedom)
                         : std::numeric_limits<double>::infinity();
  }
  return {value, degreesOfFreedom, errorDegreesOfFreedom};
}

}  // namespace

NumberGroup SumUp(NumberSums const& sums, std::int64_t centre) {
  NumberGroup group;
  group.size = static_cast<double>(sums.size);
  group.weight = static_cast<double>(sums.weight);
  if (sums.weight == 0) return group;
  // Squares around the whole mean are exact; the rest of the mean takes less than a unit from each.
  WideInteger const mean = sums.sum / sums.weight;
  auto const rest = static_cast<double>(sums.sum - mean * sums.weight);
  WideInteger const squares = sums.squares - 2 * mean * sums.sum + mean * mean * sums.weight;
  group.within = static_cast<double>(squares) - rest * rest / group.weight;
  if (group.within < 0.0) group.within = 0.0;
  group.mean = static_cast<double>(mean - centre) + rest / group.weight;
  return group;
}

TestStatistic FTest(std::span<NumberGroup const> groups, double sizeUnit) {
  double count = 0.0;
  double size = 0.0;
  double weight = 0.0;
  double sum = 0.0;
  double within = 0.0;
  for (NumberGroup const& group : groups) {
    if (group.size == 0.0) continue;
    count += 1.0;
    size += group.size;
    weight += group.weight;
    sum += group.weight * group.mean;
    within += group.within;
  }
  if (count < 2.0) return {};
  double const mean = sum / weight;
  double between = 0.0;
  for (NumberGroup const& group : groups) {
    between += group.weight * (group.mean - mean) * (group.mean - mean);
  }
  return Compare(between, within, count - 1.0, size * sizeUnit - count);
}

TestStatistic FTest(NumberGroup const& first, NumberGroup const& second, double sizeUnit) {
  double const difference = first.mean - second.mean;
  double const between =
      first.weight * second.weight / (first.weight + second.weight) * difference * difference;
  return Compare(between, first.within + second.within, 1.0,
                 (first.size + second.size) * sizeUnit - 2.0);
}

}  // namespace tree::grow
