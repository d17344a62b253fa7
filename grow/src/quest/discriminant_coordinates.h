#ifndef TREE_GROW_SRC_QUEST_DISCRIMINANT_COORDINATES_H_
#define TREE_GROW_SRC_QUEST_DISCRIMINANT_COORDINATES_H_

#include <cstddef>
#include <span>
#include <vector>

namespace tree::grow {

/// A number for each category of a nominal variable, so that it can be split like an ordered one:
/// the largest discriminant coordinate of its indicator variables. The greatest number is positive
/// and as far from 0 as any (the sign of a coordinate says nothing otherwise). Empty where the
/// classes have the same shares in all categories. `weights`: [category][class], each category with
/// some weight; at least two categories. Source: Loh and Shih 1997, section 2.3 (CRIMCOORD).
std::vector<double> DiscriminantCoordinates(std::span<double const> weights,
                                            std::size_t numClasses);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_QUEST_DISCRIMINANT_COORDINATES_H_
