#ifndef TREE_SCORE_TESTS_SCORE_TESTING_RANDOM_TREES_H_
#define TREE_SCORE_TESTS_SCORE_TESTING_RANDOM_TREES_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "tree/nodes.h"

namespace tree::score::testing {

/// Gives a number below the one it is called with.
using Draw = std::function<std::uint32_t(std::uint32_t)>;

/// Numbers that come from `bytes`, and then 0.
Draw DrawFrom(std::uint8_t const* bytes, std::size_t size);

/// What kinds of tree are made.
struct TreeShape {
  std::uint32_t maxNumNodes = 40;
  std::uint32_t numPredictors = 6;
  bool binaryOnly = false;          ///< binary ordinal rules, a predictor's with one missing value
  bool placesAll = false;           ///< dumb rules at all nodes, and no surrogates
  std::uint32_t numFullLevels = 0;  ///< from the root on, without a terminal node
};

/// A tree of any kind that can be scored, with statistics wherever cases can end: ordinal and
/// nominal rules of all sorts, several children, surrogates, missing values of rules and of
/// predictors, dumb rules or none. Identifiers count the nodes from 1.
std::unique_ptr<NodeImp> MakeTree(TreeShape const& shape, Draw const& draw);

/// A value of the kind that makes a difference to such a tree: at cut points and next to them,
/// missing, codes and fractions, NaN and infinities, and sometimes any.
double DrawValue(Draw const& draw);

/// Where a case ends, node by node; a value that `isNull` (by predictor) says is none goes where
/// each rule sends its missing value. The slow way that the fast one has to agree with.
NodeImp const* WalkTree(NodeImp const& root, double const* values, std::vector<bool> const& isNull);

/// The nodes of a tree by identifier from 1.
std::vector<NodeImp const*> ListNodes(NodeImp const& root);

}  // namespace tree::score::testing

#endif  // TREE_SCORE_TESTS_SCORE_TESTING_RANDOM_TREES_H_
