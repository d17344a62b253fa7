// Random trees and random cases with every special value, against the walk from node to node.

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

#include "score_testing/agreement.h"

namespace tree::score::testing {
namespace {

std::uint64_t ReadEnvironment(char const* name, std::uint64_t otherwise) {
  char const* const text = std::getenv(name);
  return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

std::uint64_t ReadNumCases() { return ReadEnvironment("TREE_SCORE_CASES", 760'000); }

// TREE_SCORE_CASES sets how many cases, of which all tests together have a third more: by default a
// million; TREE_SCORE_SEED which ones.
void CheckTrees(TreeShape const& shape, std::size_t casesPerTree, std::uint64_t numCases) {
  std::uint64_t const firstSeed = ReadEnvironment("TREE_SCORE_SEED", 1);
  std::uint64_t numChecked = 0;
  for (std::uint64_t seed = firstSeed; numChecked < numCases; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 engine(seed);
    Draw const draw = [&engine](std::uint32_t below) {
      return static_cast<std::uint32_t>(engine() % below);
    };
    auto const root = MakeTree(shape, draw);

    ASSERT_NO_THROW(CheckAgreement(*root, shape.numPredictors, casesPerTree, draw));
    numChecked += casesPerTree;
  }
}

TEST(Scorer, AgreesWithTheWalkOnTreesOfAnyKind) { CheckTrees({}, 300, ReadNumCases() / 2); }

TEST(Scorer, AgreesWithTheWalkOnTreesOfTwoWays) {
  TreeShape shape;
  shape.binaryOnly = true;
  shape.maxNumNodes = 200;
  CheckTrees(shape, 600, ReadNumCases() / 2);
}

// Down the full levels cases just go one way or the other, and the nodes of the upper ones are kept
// at hand.
TEST(Scorer, AgreesWithTheWalkOnTreesOfFullLevels) {
  TreeShape shape;
  shape.binaryOnly = true;
  shape.placesAll = true;
  shape.maxNumNodes = 200;
  for (std::uint32_t const numFullLevels : {1U, 3U, 4U, 5U, 6U}) {
    SCOPED_TRACE(numFullLevels);
    shape.numFullLevels = numFullLevels;
    CheckTrees(shape, 133, ReadNumCases() / 20);
  }
}

// More columns than are copied at a time.
TEST(Scorer, AgreesWithTheWalkOnTreesOfManyPredictors) {
  TreeShape shape;
  shape.maxNumNodes = 200;
  for (std::uint32_t const numPredictors : {63U, 64U, 65U, 150U}) {
    SCOPED_TRACE(numPredictors);
    shape.numPredictors = numPredictors;
    for (bool const binaryOnly : {false, true}) {
      shape.binaryOnly = binaryOnly;
      CheckTrees(shape, 133, ReadNumCases() / 100);
    }
  }
}

}  // namespace
}  // namespace tree::score::testing
