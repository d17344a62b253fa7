#ifndef TREE_GROW_SRC_CART_CATEGORY_ORDER_H_
#define TREE_GROW_SRC_CART_CATEGORY_ORDER_H_

#include <cstddef>
#include <vector>

namespace tree::grow {

/// Scores of categories, in whose order good divisions of many categories by more than two classes
/// are found: the class shares of each category on their first principal component. `weights`: one
/// row per category with the weight of each class in it, rows after each other, none of them 0
/// altogether. Source: Coppersmith, Hong and Hosking 1999, Partitioning nominal attributes in
/// decision trees, section 4.2. Cubic in the classes.
std::vector<double> PrincipalScores(std::vector<double> const& weights, std::size_t numClasses);

/// The shares that the superclasses {0}, {0, 1}, and so on have of each category, for all but the
/// whole: scores in whose orders the best divisions by a pair of superclasses are found. `weights`
/// as above; a category of weight 0 has the shares 0.
std::vector<std::vector<double>> SuperclassShares(std::vector<double> const& weights,
                                                  std::size_t numClasses);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_CATEGORY_ORDER_H_
