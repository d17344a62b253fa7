#ifndef TREE_SRC_MODEL_READABLE_CLASSES_H_
#define TREE_SRC_MODEL_READABLE_CLASSES_H_

#include <algorithm>

#include "tree/nodes.h"

namespace tree {

/// How many of the first `numClasses` class counts of `info` can be read: all of them of a class
/// not our own, which answers for itself, and no more than it has of our own, which checks nothing.
inline int CountReadableClasses(ClsInfo const& info, int numClasses) {
  bool const isOwn = dynamic_cast<ClsInfoImp const*>(&info) != nullptr;
  return isOwn ? std::min(numClasses, info.GetNumClasses()) : numClasses;
}

}  // namespace tree

#endif  // TREE_SRC_MODEL_READABLE_CLASSES_H_
