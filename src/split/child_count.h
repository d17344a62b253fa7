#ifndef TREE_SRC_SPLIT_CHILD_COUNT_H_
#define TREE_SRC_SPLIT_CHILD_COUNT_H_

#include <algorithm>
#include <limits>

namespace tree {

/// Number of children of a rule whose highest child in use is `highest` (-1 for none). The largest
/// integer, which no tree has children for, stands for itself.
inline int CountChildren(int highest) {
  return std::min(highest, std::numeric_limits<int>::max() - 1) + 1;
}

}  // namespace tree

#endif  // TREE_SRC_SPLIT_CHILD_COUNT_H_
