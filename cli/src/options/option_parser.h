#ifndef TREE_CLI_SRC_OPTIONS_OPTION_PARSER_H_
#define TREE_CLI_SRC_OPTIONS_OPTION_PARSER_H_

#include <string>
#include <vector>

#include "options/options.h"

namespace tree::cli {

/// What the arguments ask for.
struct ParsedArguments {
  Options options;
  /// What is to be printed instead of growing a tree: help, or the version. Empty in most cases.
  std::string text;
};

/// Reads the arguments, without the program's name. Throws `UsageError` for those that make no
/// sense.
ParsedArguments ParseArguments(std::vector<std::string> const& arguments);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OPTIONS_OPTION_PARSER_H_
