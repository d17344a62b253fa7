#ifndef TREE_SCORE_TESTS_SCORE_TESTING_AGREEMENT_H_
#define TREE_SCORE_TESTS_SCORE_TESTING_AGREEMENT_H_

#include <cstddef>

#include "score_testing/random_trees.h"

namespace tree::score::testing {

/// Scores `numCases` cases by `root` in every way there is (rows, columns, floats, codes, bitmaps,
/// selections, one by one, from the block, and by every implementation for this machine) and holds
/// each answer against the walk from node to node. Throws `std::logic_error` with what differs.
void CheckAgreement(NodeImp const& root, std::size_t numPredictors, std::size_t numCases,
                    Draw const& draw);

}  // namespace tree::score::testing

#endif  // TREE_SCORE_TESTS_SCORE_TESTING_AGREEMENT_H_
