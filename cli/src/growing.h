#ifndef TREE_CLI_SRC_GROWING_H_
#define TREE_CLI_SRC_GROWING_H_

#include <stdexcept>
#include <vector>

#include "options/options.h"
#include "progress/progress_bar.h"
#include "tree/results.h"

namespace tree::cli {

/// A tree that cannot be grown, for another reason than the data or the settings.
class GrowingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The user does not want to go on.
class Interrupted : public std::exception {};

/// Grows a tree, prunes it where the options say so, and validates it. Gives the subtrees that
/// pruning chooses from, where the options ask for them. Throws `Interrupted`, `InputError` for
/// data that give no tree, and `GrowingError`.
std::vector<PruningStep> GrowTree(TreeAlgorithm& algorithm, Options const& options,
                                  ProgressBar& progress);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_GROWING_H_
