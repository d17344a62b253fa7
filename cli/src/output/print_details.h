#ifndef TREE_CLI_SRC_OUTPUT_PRINT_DETAILS_H_
#define TREE_CLI_SRC_OUTPUT_PRINT_DETAILS_H_

#include <iosfwd>

#include "output/shown_tree.h"

namespace tree::cli {

/// Writes a paragraph per node in prefix order: its statistics in both samples, its competing
/// splits with the primary one first, its surrogates in order, and its dumb rule.
void PrintDetails(std::ostream& out, ShownTree const& tree);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_PRINT_DETAILS_H_
