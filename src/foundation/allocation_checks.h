#ifndef TREE_SRC_FOUNDATION_ALLOCATION_CHECKS_H_
#define TREE_SRC_FOUNDATION_ALLOCATION_CHECKS_H_

#include <new>

#include "tree/containers.h"

// The containers report a failed allocation by a result, or by a copy that stays empty. Where the
// operation above them has no result to pass on, and carrying on would lose numbers without a word,
// these turn the failure into `std::bad_alloc`.

namespace tree {

/// Gives `array` a size of at least `count`; sizes that it refuses are left alone.
template <class T>
void ResizeOrThrow(TArray<T>& array, int count) {
  if (!array.Resize(count) && array.GetSize() < count) throw std::bad_alloc();
}

/// To be called after `to` was copied from `from`.
template <class T>
void RequireCopied(TArray<T> const& from, TArray<T> const& to) {
  if (to.GetSize() != from.GetSize()) throw std::bad_alloc();
}

template <class T>
void RequireCopied(TMatrix<T> const& from, TMatrix<T> const& to) {
  if (to.GetNumRows() != from.GetNumRows()) throw std::bad_alloc();
}

}  // namespace tree

#endif  // TREE_SRC_FOUNDATION_ALLOCATION_CHECKS_H_
