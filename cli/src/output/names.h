#ifndef TREE_CLI_SRC_OUTPUT_NAMES_H_
#define TREE_CLI_SRC_OUTPUT_NAMES_H_

#include <string>
#include <string_view>
#include <vector>

#include "tree/grow/data_set.h"

// The names behind the numbers of a tree.

namespace tree::cli {

/// One variable.
struct VariableNames {
  std::string name;
  std::vector<std::string> labels = {};  ///< of its categories, by code; empty for plain numbers
};

/// The variables of a tree.
struct TreeNames {
  VariableNames target;
  std::vector<VariableNames> predictors;  ///< by predictor index
};

/// The names that the columns of the data have.
TreeNames NamesOf(grow::DataSet const& data, grow::CaseRoles const& roles);

/// The label of a category, or its number if it has none.
std::string LabelOf(VariableNames const& variable, double code);

/// A name or label within a line of text: as it is where that cannot be misread, otherwise in
/// quotes, with backslashes before quotes and instead of characters that would break the line.
std::string Shown(std::string_view text);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_NAMES_H_
