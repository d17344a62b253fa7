#ifndef TREE_GROW_SRC_CART_SURROGATE_RULES_H_
#define TREE_GROW_SRC_CART_SURROGATE_RULES_H_

#include <cstddef>
#include <span>
#include <vector>

#include "growing/split_method.h"

namespace tree::grow {

/// How many surrogates nodes get, and of which predictors.
struct SurrogateLimits {
  int maxNumSurrogates = 0;          ///< of a node
  std::size_t maxNumCategories = 0;  ///< of a nominal predictor
};

/// The surrogates of the primary split of each node, in order of their association; none for nodes
/// without a primary split, or with one that has not two children. As `SplitMethod::FindSurrogates`
/// in all else.
std::vector<RuleList> FindSurrogateRules(TrainingData const& data, CaseLists const& lists,
                                         std::span<GrowingNode const> nodes,
                                         std::vector<SplitRuleImp const*> const& primaries,
                                         ChildOfPlace const& childOf, SurrogateLimits const& limits,
                                         Workers& workers);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_SURROGATE_RULES_H_
