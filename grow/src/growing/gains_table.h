#ifndef TREE_GROW_SRC_GROWING_GAINS_TABLE_H_
#define TREE_GROW_SRC_GROWING_GAINS_TABLE_H_

#include <memory>

#include "tree/results.h"

namespace tree::grow {

/// The gains table of a tree by these settings, with the columns of `GainsColumn`; null when the
/// tree cannot give what they ask for. The nodes that the table names stay the tree's. Throws
/// nothing but `std::bad_alloc`. Time: of a sort of the terminal nodes, and once through their
/// statistics; memory: linear in terminal nodes and rows, cumulative ones too.
std::unique_ptr<GainsIntf> MakeGainsTable(Node const& root, GainsSettings const& settings);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_GAINS_TABLE_H_
