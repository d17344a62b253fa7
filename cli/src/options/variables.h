#ifndef TREE_CLI_SRC_OPTIONS_VARIABLES_H_
#define TREE_CLI_SRC_OPTIONS_VARIABLES_H_

#include "options/options.h"
#include "tree/grow/data_set.h"

namespace tree::cli {

/// The parts that the columns of the data play by the options. Throws `InputError`, with a message
/// that begins with the option, for a column that does not exist, that has two parts, or whose
/// values cannot play its part; and when no predictor is left.
grow::CaseRoles FindRoles(VariableOptions const& options, grow::DataSet const& data);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OPTIONS_VARIABLES_H_
