#ifndef TREE_CLI_SRC_OPTIONS_HELP_FORMATTER_H_
#define TREE_CLI_SRC_OPTIONS_HELP_FORMATTER_H_

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace tree::cli {

/// Lays out what `--help` prints: options in one column, what they do beside them in lines that fit
/// a terminal of 100 columns, the default at the end.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_usage(CLI::App const* app, std::string name) const override;
  std::string make_group(std::string group, bool isPositional,
                         std::vector<CLI::Option const*> options) const override;
  std::string make_option(CLI::Option const* option, bool isPositional) const override;
};

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OPTIONS_HELP_FORMATTER_H_
