#ifndef TREE_GROW_INPUT_ERROR_H_
#define TREE_GROW_INPUT_ERROR_H_

/// @file
/// What the growers say about bad input.

#include <stdexcept>

#include "tree/export.h"

/// Growing algorithms for the trees of namespace `tree`, with the data that they grow on.
namespace tree::grow {

/// Input that cannot be used: a file, a column, a value. The message is a sentence for people that
/// says where, as far as it is known: `file:line: column "name": value "text" is ...`.
class TREE_API InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ~InputError() override;
};

}  // namespace tree::grow

#endif  // TREE_GROW_INPUT_ERROR_H_
