#ifndef TREE_GROW_SRC_GROWING_RANDOM_DRAWS_H_
#define TREE_GROW_SRC_GROWING_RANDOM_DRAWS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "growing/fixed_point.h"

namespace tree::grow {

/// Draws a test sample: for each of `numCases` cases 1 if it belongs to it, else 0; each with the
/// probability `testShare`. The same seed draws the same sample everywhere.
std::vector<std::uint8_t> DrawTestSample(std::size_t numCases, double testShare, long seed,
                                         PollFunction const& poll = NoPoll);

/// Divides cases into `numFolds` folds at random, as equal in size as can be: the fold of each
/// case, from 0. The same seed gives the same folds everywhere.
std::vector<std::uint32_t> DrawFolds(std::size_t numCases, std::size_t numFolds, long seed,
                                     PollFunction const& poll = NoPoll);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_RANDOM_DRAWS_H_
