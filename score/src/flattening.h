#ifndef TREE_SCORE_SRC_FLATTENING_H_
#define TREE_SCORE_SRC_FLATTENING_H_

#include "flat_tree.h"
#include "tree/nodes.h"

namespace tree::score {

/// The block of the tree below `root`. Throws `InputError` for a tree that has no flat form.
BlockMemory Flatten(NodeImp const& root);

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_FLATTENING_H_
