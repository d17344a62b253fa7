#ifndef TREE_GROW_SPLIT_STATISTICS_H_
#define TREE_GROW_SPLIT_STATISTICS_H_

/// @file
/// What the four statistics that a split rule can store mean, for all growers of this library.

#include "tree/split_rules.h"

namespace tree::grow {

// Named like the enumerators that they are. NOLINTBEGIN(readability-identifier-naming)

/// By how much a primary or a competing split improves the tree, on the scale of the criterion and
/// of the whole training sample: the decrease of impurity times the probability of the node for
/// classes, the decrease of the mean squared error, in squared units of the target, for numbers.
/// What a split is chosen by, and what the stopping rule's least improvement is compared with.
inline constexpr StatisticFlag SplitImprovement = StatisticFlag1;

/// Predictive association of a surrogate with the primary split, in (0, 1]: the share of the errors
/// made by sending all cases with the majority that the surrogate avoids. Cases count by their
/// weights; priors do not enter. Source: Breiman, Friedman, Olshen and Stone 1984, section 5.3.1.
inline constexpr StatisticFlag SurrogateAssociation = StatisticFlag2;

/// The test statistic of a split that is chosen by a test: chi-square or F.
inline constexpr StatisticFlag SplitTestStatistic = StatisticFlag3;

/// The natural logarithm of the adjusted p-value of a split that is chosen by a test: logarithms
/// keep apart what would all be 0.
inline constexpr StatisticFlag SplitLogPValue = StatisticFlag4;

// NOLINTEND(readability-identifier-naming)

}  // namespace tree::grow

#endif  // TREE_GROW_SPLIT_STATISTICS_H_
