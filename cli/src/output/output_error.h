#ifndef TREE_CLI_SRC_OUTPUT_OUTPUT_ERROR_H_
#define TREE_CLI_SRC_OUTPUT_OUTPUT_ERROR_H_

#include <stdexcept>

namespace tree::cli {

/// A result that cannot be written. The message begins with the file's name, if there is one.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_OUTPUT_ERROR_H_
