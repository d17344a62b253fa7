#ifndef TREE_CLI_SRC_OUTPUT_PRINT_SEQUENCE_H_
#define TREE_CLI_SRC_OUTPUT_PRINT_SEQUENCE_H_

#include <iosfwd>
#include <vector>

#include "tree/results.h"

namespace tree::cli {

/// Writes the subtrees that pruning chooses from as a table, a line each. The one with as many
/// terminal nodes as the finished tree has is marked.
void PrintSequence(std::ostream& out, std::vector<PruningStep> const& steps, int numTerminalNodes);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_PRINT_SEQUENCE_H_
