#ifndef TREE_CLI_SRC_OUTPUT_PRINT_GAINS_H_
#define TREE_CLI_SRC_OUTPUT_PRINT_GAINS_H_

#include <iosfwd>

#include "tree/results.h"

namespace tree::cli {

/// Writes a gains table of one of the growers: a line of headings, then a line per row with the
/// nodes that it is made of; where rows are cumulative, with the last of them.
void PrintGains(std::ostream& out, GainsIntf const& table, bool isCumulative);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_PRINT_GAINS_H_
