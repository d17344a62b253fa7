#ifndef TREE_CLI_SRC_OUTPUT_DRAW_TREE_H_
#define TREE_CLI_SRC_OUTPUT_DRAW_TREE_H_

#include <iosfwd>
#include <string>
#include <string_view>

#include "output/shown_tree.h"

namespace tree::cli {

/// Writes a drawing of the tree in the language of Graphviz: a box per node with id, prediction,
/// size and, under them, a bar of the classes' probabilities or the standard deviation; what an
/// inner node asks for below its box's line, and the answers at the edges.
void DrawTree(std::ostream& out, ShownTree const& tree);

/// A text within a label of the drawing: what means something to Graphviz is written as an entity,
/// characters that a picture cannot hold become U+FFFD, and a long text ends in dots.
std::string DrawnText(std::string_view text);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_DRAW_TREE_H_
