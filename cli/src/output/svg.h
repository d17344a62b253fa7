#ifndef TREE_CLI_SRC_OUTPUT_SVG_H_
#define TREE_CLI_SRC_OUTPUT_SVG_H_

#include <string>

// Pictures by Graphviz, where it is installed.

namespace tree::cli {

/// The program of Graphviz that lays out trees, as an absolute path; empty where none of the
/// folders in PATH has it.
std::string FindDot();

/// The SVG that the program makes of a drawing. `dot`: as `FindDot` gives it. Throws `OutputError`
/// when it fails, with the first line of what it says.
std::string MakeSvg(std::string const& dot, std::string const& drawing);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_SVG_H_
