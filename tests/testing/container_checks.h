#ifndef TREE_TESTS_TESTING_CONTAINER_CHECKS_H_
#define TREE_TESTS_TESTING_CONTAINER_CHECKS_H_

#include <cstddef>
#include <vector>

#include "testing/failing_allocator.h"
#include "tree/containers.h"

namespace tree::testing {

/// The elements in use, read through the storage and so without a change of the array.
template <class T>
std::vector<T> ElementsOf(::TArray<T> const& array) {
  return std::vector<T>(array.GetData(), array.GetData() + array.GetSize());
}

/// The first `count` elements of the storage, in use or spare.
template <class T>
std::vector<T> StorageOf(::TArray<T> const& array, int count) {
  return std::vector<T>(array.GetData(), array.GetData() + count);
}

/// Whether the array has room for an element at `index`: writing there allocates nothing. Writes a
/// zero.
template <class T>
bool HasRoomAt(::TArray<T>& array, int index) {
  long const before = CountAllocations();
  array.SetAtGrow(index, T());
  return CountAllocations() == before;
}

/// Whether the capacity is exactly `capacity`. Uses up the spare elements.
template <class T>
bool HasCapacity(::TArray<T>& array, int capacity) {
  return (capacity == 0 || HasRoomAt(array, capacity - 1)) && !HasRoomAt(array, capacity);
}

/// The first `rows` x `columns` cells, row by row.
template <class T>
std::vector<std::vector<T>> CellsOf(::TMatrix<T> const& matrix, int rows, int columns) {
  std::vector<std::vector<T>> cells(static_cast<std::size_t>(rows));
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      cells[static_cast<std::size_t>(row)].push_back(matrix.GetAt(row, column));
    }
  }
  return cells;
}

/// Whether the matrix has room for cell (row, column): writing there allocates nothing. Writes a
/// zero.
template <class T>
bool HasRoomAt(::TMatrix<T>& matrix, int row, int column) {
  long const before = CountAllocations();
  matrix.SetAtGrow(row, column, T());
  return CountAllocations() == before;
}

/// Whether the allocated shape is exactly `rows` x `columns`. Overwrites the last cell with zero
/// and may grow the matrix.
template <class T>
bool HasShape(::TMatrix<T>& matrix, int rows, int columns) {
  if (!HasRoomAt(matrix, rows - 1, columns - 1)) return false;
  ::TMatrix<T> wider(matrix);
  return !HasRoomAt(matrix, rows, 0) && !HasRoomAt(wider, 0, columns);
}

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_CONTAINER_CHECKS_H_
