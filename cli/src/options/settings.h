#ifndef TREE_CLI_SRC_OPTIONS_SETTINGS_H_
#define TREE_CLI_SRC_OPTIONS_SETTINGS_H_

#include <memory>
#include <string>

#include "options/options.h"
#include "tree/grow/data_set.h"
#include "tree/results.h"
#include "tree/settings.h"

namespace tree::cli {

/// The settings that the options ask for, of the class that suits the method and the target; what
/// the options do not say is as in new settings. Throws `InputError`, with a message that begins
/// with the option, for what does not fit the target: classes that it lacks, or options for classes
/// where it is continuous.
std::unique_ptr<AlgSettings> MakeSettings(Options const& options, grow::DataSet const& data,
                                          grow::CaseRoles const& roles);

/// The settings of a gains table over the training sample. Throws `InputError`, with a message that
/// begins with the option, for classes that there are not.
GainsSettings MakeGainsSettings(GainsOptions const& options, grow::ColumnDescription const& target);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OPTIONS_SETTINGS_H_
