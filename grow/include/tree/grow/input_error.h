#ifndef TREE_GROW_INPUT_ERROR_H_
#define TREE_GROW_INPUT_ERROR_H_

/// @file
/// What the growers say about bad input.

#include <cstddef>
#include <stdexcept>
#include <string>

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

/// A case of a data set that cannot be used. The message is `where: case row: why`.
class TREE_API CaseError : public InputError {
 public:
  /// `where`: which column it is about, as in `column "name"`; `row`: of the case, from 0; `why`:
  /// what it has there, and why that is refused.
  CaseError(std::string const& where, std::size_t row, std::string const& why);
  ~CaseError() override;

  /// What it was made of.
  ///@{
  std::string const& GetWhere() const noexcept { return where_; }
  std::size_t GetRow() const noexcept { return row_; }
  std::string const& GetWhy() const noexcept { return why_; }
  ///@}

 private:
  std::string where_;
  std::size_t row_;
  std::string why_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_INPUT_ERROR_H_
