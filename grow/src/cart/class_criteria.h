#ifndef TREE_GROW_SRC_CART_CLASS_CRITERIA_H_
#define TREE_GROW_SRC_CART_CLASS_CRITERIA_H_

#include <vector>

#include "tree/settings.h"

namespace tree::grow {

/// How much a binary split of a node improves on the node, by the classes of the cases on either
/// side. `left`, `right`: one number per class, the weights of the side's cases of that class times
/// prior over number of cases of the class, so that they add up to the probability of the side
/// (Breiman, Friedman, Olshen and Stone 1984, section 4.4). Both sides must weigh something.
/// The scale: what the impurity of the whole tree loses, impurities being weighted by the
/// probability of their node.

using ClassWeights = std::vector<double>;

/// The loss of Gini impurity, 1 - sum of p(j|t)^2. Source: Breiman et al. 1984, section 4.3.1.
double GiniImprovement(ClassWeights const& left, ClassWeights const& right);

/// The twoing value p(L) p(R) / 4 times the square of the sum of |p(j|L) - p(j|R)|, times the
/// probability of the node. Source: Breiman et al. 1984, section 4.3.2.
double TwoingImprovement(ClassWeights const& left, ClassWeights const& right);

/// The twoing value of the best pair of superclasses {0..k}, {k+1..} of ordered classes, times the
/// probability of the node. Source: Breiman et al. 1984, section 4.3.3.
double OrderedTwoingImprovement(ClassWeights const& left, ClassWeights const& right);

/// One of the three.
using ClassImprovement = double (*)(ClassWeights const& left, ClassWeights const& right);

/// The function for the settings' criterion: 0 Gini, 1 twoing, 2 ordered twoing. Null for others.
ClassImprovement FindClassImprovement(CartSplitCriteria criteria);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_CLASS_CRITERIA_H_
