#ifndef TREE_CLI_SRC_OUTPUT_PRINT_TREE_H_
#define TREE_CLI_SRC_OUTPUT_PRINT_TREE_H_

#include <iosfwd>

#include "output/shown_tree.h"

namespace tree::cli {

/// Writes a line per node in prefix order, indented by depth: id, what sends cases there, how many
/// they are, the loss or the deviance, prediction, probabilities of the classes, and a
/// star if the node is terminal. A legend comes before.
void PrintTree(std::ostream& out, ShownTree const& tree);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_PRINT_TREE_H_
