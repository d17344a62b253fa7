#ifndef TREE_GROW_SRC_QUEST_NORMAL_SPLIT_H_
#define TREE_GROW_SRC_QUEST_NORMAL_SPLIT_H_

#include <span>
#include <vector>

namespace tree::grow {

/// What is known of a class in a node, on some variable.
struct ClassMoments {
  double probability = 0.0;  ///< of the class in the node, above 0; on any scale
  double mean = 0.0;
  double variance = 0.0;  ///< at least 0
};

/// Where to split a variable to part the classes, in order of preference; empty where they are
/// alike. The classes are merged to two superclasses, by 2-means of their means that begins with
/// the least and the greatest one; each superclass is taken to be normal. The first point is where
/// their densities times their probabilities are equal: of the two roots of a quadratic equation,
/// the nearer to the mean of the lower superclass, which is the one between the means if there is
/// one. It need not lie among the values of the variable; the second point, which does, is halfway
/// between the two means. Where all classes have the same mean, the most probable one is a
/// superclass, and the only point is the lower one of the two where the densities meet. Source: Loh
/// and Shih 1997, Split selection methods for classification trees: quadratic discriminant analysis
/// of two superclasses.
std::vector<double> NormalSplitPoints(std::span<ClassMoments const> classes);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_QUEST_NORMAL_SPLIT_H_
