#ifndef TREE_GROW_SRC_CHAID_LOG_MULTIPLIERS_H_
#define TREE_GROW_SRC_CHAID_LOG_MULTIPLIERS_H_

#include <cstddef>

// Bonferroni multipliers of CHAID, as natural logarithms: in how many ways categories can be merged
// to groups. Sources: Kass 1980, An exploratory technique for investigating large quantities of
// categorical data, section 3; Biggs, de Ville and Suen 1991, A method of choosing multiway
// partitions for classification and decision trees, section 3.

namespace tree::grow {

/// Of nominal categories to `numGroups` groups: the Stirling number of the second kind. Requires
/// 1 <= numGroups <= numCategories. Grows with the product of both up to 128 categories, and with
/// the root of the categories beyond.
double LogNominalMultiplier(std::size_t numCategories, std::size_t numGroups);

/// Of ordered categories to groups of neighbours: binomial(c - 1, r - 1).
double LogOrdinalMultiplier(std::size_t numCategories, std::size_t numGroups);

/// Of ordered categories to groups of neighbours, with one more that may join any group or be one:
/// binomial(c - 2, r - 2) + r binomial(c - 2, r - 1). `numCategories`: the floating one included.
double LogFloatingMultiplier(std::size_t numCategories, std::size_t numGroups);

/// How many pairs the exhaustive method compares on the way from all categories to two groups.
/// Nominal: the sum of i (i - 1) / 2 for i = 2 to c, which is c (c^2 - 1) / 6.
double LogExhaustiveNominalMultiplier(std::size_t numCategories);
/// Ordinal: the sum of i - 1, which is c (c - 1) / 2.
double LogExhaustiveOrdinalMultiplier(std::size_t numCategories);
/// Floating, at most: with i groups, i - 2 pairs of neighbours and i - 1 with the floating one,
/// which add up to (c - 1)^2.
double LogExhaustiveFloatingMultiplier(std::size_t numCategories);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_LOG_MULTIPLIERS_H_
