#ifndef TREE_GROW_SRC_ASSOCIATION_F_TEST_H_
#define TREE_GROW_SRC_ASSOCIATION_F_TEST_H_

#include <cstdint>
#include <span>

#include "association/number_sums.h"
#include "association/test_statistic.h"

namespace tree::grow {

/// The numbers of a group of cases, summed up.
struct NumberGroup {
  double size = 0.0;    ///< in units of frequency
  double weight = 0.0;  ///< in units of weight
  double mean = 0.0;    ///< difference from a centre that all groups share
  double within = 0.0;  ///< weighted sum of squares around the mean
};

/// Sums up a group. `centre`: whole, near the numbers, so that the difference of means keeps its
/// digits.
NumberGroup SumUp(NumberSums const& sums, std::int64_t centre);

/// The F test of equal means, on the groups that have cases:
///   F = sum w_i (m_i - m)^2 / (r - 1) / (sum of squares within / (N - r)),
/// with the weight w_i and the mean m_i of group i of r, and N cases altogether. Case weights enter
/// the sums of squares, not the number of cases. Infinite where the means differ and no number
/// differs from its mean. `sizeUnit`: cases per unit of frequency.
TestStatistic FTest(std::span<NumberGroup const> groups, double sizeUnit);

/// The same of two groups that have cases.
TestStatistic FTest(NumberGroup const& first, NumberGroup const& second, double sizeUnit);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_ASSOCIATION_F_TEST_H_
