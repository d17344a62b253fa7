#ifndef TREE_CLI_SRC_OUTPUT_PRINT_GAINS_H_
#define TREE_CLI_SRC_OUTPUT_PRINT_GAINS_H_

#include <iosfwd>

#include "tree/results.h"

namespace tree::cli {

/// Writes a gains table of one of the growers: a line of headings, then a line per row with the
/// nodes that it is made of.
void PrintGains(std::ostream& out, GainsIntf const& table);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_PRINT_GAINS_H_
