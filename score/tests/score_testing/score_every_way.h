#ifndef TREE_SCORE_TESTS_SCORE_TESTING_SCORE_EVERY_WAY_H_
#define TREE_SCORE_TESTS_SCORE_TESTING_SCORE_EVERY_WAY_H_

#include <cstddef>

#include "score_testing/random_trees.h"

namespace tree::score::testing {

/// Scores cases by a block that may hold anything, in every way that there is, and holds the
/// answers against each other. The cases have what the block may follow farthest: its own missing
/// values, NaN, infinities and codes. Throws `InputError` when the block is refused, and
/// `std::logic_error` when two ways disagree or an answer is none. Blocks of very many predictors
/// or classes are let pass.
void ScoreEveryWay(void const* block, std::size_t size, Draw const& draw);

}  // namespace tree::score::testing

#endif  // TREE_SCORE_TESTS_SCORE_TESTING_SCORE_EVERY_WAY_H_
