#ifndef TREE_SCORE_INPUT_ERROR_H_
#define TREE_SCORE_INPUT_ERROR_H_

/// @file
/// What scorers say about bad input.

#include <stdexcept>

#include "tree/export.h"

/// Scoring of many cases at once with the trees of namespace `tree`.
namespace tree::score {

/// Input that cannot be used: a tree, a block of memory, cases. The message is a sentence for
/// people that says why, and of a tree where: `node 7: ...`, by the node's identifier.
class TREE_API InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ~InputError() override;
};

}  // namespace tree::score

#endif  // TREE_SCORE_INPUT_ERROR_H_
