#ifndef TREE_CONTAINERS_H_
#define TREE_CONTAINERS_H_

/// @file
/// The containers on which the data model keeps its numbers and lists: `TArray` and `TMatrix`,
/// which own plain values, and the `MCTree` array interfaces, through which settings hand out lists
/// of pointers that they own elsewhere. They are thin on purpose: no bounds checks in release
/// builds, growth to exactly the size asked for, and allocation failures reported as `bool`.
///
/// Storage is never read before it is written: every new element is zero, spare capacity included.
/// Threads: concurrent reads of an unchanged container are safe; the writable index operator of
/// `TArray` is a write.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "tree/assertions.h"
#include "tree/export.h"

/// A growable one-dimensional array of plain values, indexed from 0. References to elements are
/// **borrowed** until the array grows, is cleared or destroyed.
/// Invariant: 0 <= size <= capacity, as long as callers keep to the capacity.
template <class T>
class TREE_API TArray {
 public:
  /// An empty array without storage.
  /// `zeroFill`: whether elements are copied block by block, as plain values allow. Storage is
  /// zeroed either way.
  explicit TArray(bool zeroFill);

  /// Copies the flag and the elements; the capacity of the copy is the source's size. Empty when
  /// the allocation fails.
  TArray(TArray const& other);

  /// Copies the elements and the capacity, not the flag. Empty when the allocation fails.
  TArray& operator=(TArray const& other);

  /// Takes over the storage; `other` is left empty. An assignment keeps its own flag.
  ///@{
  TArray(TArray&& other) noexcept;
  TArray& operator=(TArray&& other) noexcept;
  ///@}

  /// Frees the storage.
  ~TArray();

  /// Number of elements in use: one more than the highest index written or reached for writing.
  int GetSize() const { return size_; }

  /// The storage, null when there is none. Borrowed until the array grows, is cleared or destroyed.
  T const* GetData() const { return data_.get(); }

  /// Element `index`. Requires 0 <= index < capacity.
  T const& operator[](int index) const;

  /// Element `index` for writing; the size becomes at least index + 1, even if nothing is written.
  /// Deliberate: no growth here, callers grow first. Requires 0 <= index < capacity.
  T& operator[](int index);

  /// Frees the storage; size and capacity become 0.
  void Clear();

  /// Makes a new zeroed block of `count` elements the storage and returns true; false, changing
  /// nothing, when it cannot be had (a negative count included).
  /// Deliberate: the block held so far is given up, not freed, so the caller clears first, or keeps
  /// it through `GetData` and frees it by `delete[]`, as `Grow` does. The size becomes `count` if
  /// the old capacity exceeded it, and stays otherwise.
  /// `keep`: the caller is about to copy old elements into the block.
  bool Init(int count, bool keep);

  /// True, doing nothing, when `count` is below 1; otherwise `Init(count, false)`.
  bool Init(int count);

  /// Moves the elements to a new block of exactly `count`, the rest of it zero; false, changing
  /// nothing, when the allocation fails or `count` is negative. A block below the old capacity
  /// keeps what fits, and its size becomes `count`. Linear in the capacity.
  bool Grow(int count);

  /// Sets the size to `count`: dropped elements become zero and the capacity stays, new elements
  /// are zero and the capacity grows to exactly `count` where needed.
  /// Refuses the present size, a negative count, and growth that cannot be allocated.
  bool Resize(int count);

  /// Stores `value` at `index`; the size becomes at least index + 1. Requires 0 <= index <
  /// capacity.
  void SetAt(int index, T const& value);

  /// As `SetAt`, after growing to exactly index + 1 where needed. Deliberate: a failed growth is
  /// not noticed and the value is written all the same. Requires index >= 0.
  void SetAtGrow(int index, T const& value);

  /// As `SetAtGrow`, but adds `value` to the element.
  void AddAtGrow(int index, T const& value);

 private:
  void CopyElements(T const* from, int count);

  std::unique_ptr<T[]> data_;
  int capacity_ = 0;  // elements allocated
  int size_ = 0;      // elements in use
  bool zeroFill_;
};

/// A growable two-dimensional array of plain values, row-major, rows and columns indexed from 0.
/// References to cells are **borrowed** until the matrix grows, is cleared or destroyed.
/// Rows and columns count as used once a cell in them, or beyond them, has been set.
template <class T>
class TREE_API TMatrix {
 public:
  /// An empty matrix without storage. `zeroFill` as for `TArray`.
  explicit TMatrix(bool zeroFill);

  /// Copies the flag, and the used counts with the whole allocated block if at least one row and
  /// one column are used and the allocation succeeds; otherwise the copy is empty.
  TMatrix(TMatrix const& other);

  /// As the copy constructor, but keeps its own flag.
  TMatrix& operator=(TMatrix const& other);

  /// Takes over the storage; `other` is left empty. An assignment keeps its own flag.
  ///@{
  TMatrix(TMatrix&& other) noexcept;
  TMatrix& operator=(TMatrix&& other) noexcept;
  ///@}

  /// Frees the storage.
  ~TMatrix();

  /// Number of used rows.
  int GetNumRows() const { return usedRows_; }

  /// Cell (row, column). Requires an allocated cell.
  T const& GetAt(int row, int column) const;

  /// Frees the storage; all counts become 0.
  void Clear();

  /// Replaces the storage by `rows` x `columns` zero cells; the used counts stay. False, changing
  /// nothing, when the allocation fails or a count is negative.
  bool Init(int rows, int columns);

  /// Makes room for at least `rows` x `columns` cells, keeping every old cell at its place and
  /// adding zeros; never shrinks. False, changing nothing, when the allocation fails.
  bool Grow(int rows, int columns);

  /// Stores `value` in cell (row, column), which becomes used with all before it. Requires an
  /// allocated cell.
  void SetAt(int row, int column, T const& value);

  /// As `SetAt`, after growing to row + 1 and column + 1 where needed. Deliberate: a failed growth
  /// is not noticed and the value is written all the same. Requires row >= 0 and column >= 0.
  void SetAtGrow(int row, int column, T const& value);

 private:
  std::size_t Position(int row, int column) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(allocatedColumns_) +
           static_cast<std::size_t>(column);
  }
  bool IsAllocated(int row, int column) const {
    return row >= 0 && row < allocatedRows_ && column >= 0 && column < allocatedColumns_;
  }
  void RequireAllocated(char const* operation, int row, int column) const {
    tree::internal::RequireIndex(row, allocatedRows_, operation);
    tree::internal::RequireIndex(column, allocatedColumns_, operation);
  }
  void CopyFrom(TMatrix const& other);

  std::unique_ptr<T[]> data_;
  int allocatedRows_ = 0;
  int allocatedColumns_ = 0;  // the row stride
  int usedRows_ = 0;
  int usedColumns_ = 0;
  bool zeroFill_;
};

/// Interfaces of lists and iterators, and a list over a standard vector.
namespace MCTree {

/// A list that can be read, indexed from 0.
template <class T>
class TREE_API AArrayRO {
 public:
  virtual ~AArrayRO() = default;

  /// Number of elements.
  virtual int GetNumElements() const = 0;

  /// Element `index`. **Borrowed** until the list changes. Requires 0 <= index < GetNumElements().
  virtual T const& operator[](int index) const = 0;
};

/// A list that can be read and changed.
template <class T>
class TREE_API AArrayRW : public AArrayRO<T> {
 public:
  using AArrayRO<T>::operator[];

  /// Appends a copy of `element`.
  virtual void Add(T const& element) = 0;

  /// Drops all elements. Pointers are dropped, not deleted: their owner deletes the objects.
  virtual void Clear() = 0;

  /// Element `index` for writing. **Borrowed** until the list changes. Requires 0 <= index <
  /// GetNumElements().
  virtual T& operator[](int index) = 0;

  /// Replaces element `index` by a copy of `element`; a pointer that was there is dropped, not
  /// deleted. Requires 0 <= index < GetNumElements().
  virtual void SetAt(int index, T& element) = 0;
};

/// A list over a standard vector.
template <class T>
class TREE_API ArrayRW : public AArrayRW<T> {
 public:
  /// An empty list.
  ArrayRW() = default;
  /// Copies the elements; of pointers, not the objects that they point to.
  ///@{
  ArrayRW(ArrayRW const& other) = default;
  ArrayRW& operator=(ArrayRW const& other) = default;
  ///@}
  /// Drops all elements, as `Clear` does.
  ~ArrayRW() override { elements_.clear(); }

  int GetNumElements() const override { return static_cast<int>(elements_.size()); }
  T const& operator[](int index) const override;
  void Add(T const& element) override { elements_.push_back(element); }
  void Clear() override { elements_.clear(); }
  T& operator[](int index) override;
  void SetAt(int index, T& element) override {
    elements_[Checked("ArrayRW::SetAt", index)] = element;
  }

  /// Element `index`, as the read operator gives it. Requires 0 <= index < GetNumElements().
  virtual T const& GetAt(int index) const { return elements_[Checked("ArrayRW::GetAt", index)]; }

 private:
  std::size_t Checked(char const* operation, int index) const;

  std::vector<T> elements_;
};

}  // namespace MCTree

template <class T>
TArray<T>::TArray(bool zeroFill) : zeroFill_(zeroFill) {}

template <class T>
TArray<T>::TArray(TArray const& other) : zeroFill_(other.zeroFill_) {
  if (other.size_ > 0 && Init(other.size_, true)) {
    size_ = other.size_;
    CopyElements(other.data_.get(), size_);
  }
}

template <class T>
TArray<T>& TArray<T>::operator=(TArray const& other) {
  if (this == &other) return *this;
  Clear();
  if (other.capacity_ >= 1 && Init(other.capacity_, true)) {
    size_ = other.size_;
    CopyElements(other.data_.get(), size_);
  }
  return *this;
}

template <class T>
TArray<T>::TArray(TArray&& other) noexcept : TArray(other.zeroFill_) {
  *this = std::move(other);
}

template <class T>
TArray<T>& TArray<T>::operator=(TArray&& other) noexcept {
  if (this == &other) return *this;
  data_ = std::move(other.data_);
  capacity_ = std::exchange(other.capacity_, 0);
  size_ = std::exchange(other.size_, 0);
  return *this;
}

template <class T>
TArray<T>::~TArray() {
  Clear();
}

template <class T>
T const& TArray<T>::operator[](int index) const {
  tree::internal::RequireIndex(index, capacity_, "TArray::operator[]");
  return data_[static_cast<std::size_t>(index)];
}

template <class T>
T& TArray<T>::operator[](int index) {
  tree::internal::RequireIndex(index, capacity_, "TArray::operator[]");
  if (index >= size_) size_ = index + 1;
  return data_[static_cast<std::size_t>(index)];
}

template <class T>
void TArray<T>::Clear() {
  data_.reset();
  capacity_ = 0;
  size_ = 0;
}

template <class T>
bool TArray<T>::Init(int count, bool /*keep*/) {
  if (count < 0) return false;
  std::unique_ptr<T[]> block;
  try {
    block.reset(new T[static_cast<std::size_t>(count)]());
  } catch (std::bad_alloc const&) {
    return false;
  }
  // Deliberate: the block held so far lives on, in the hands of whoever kept a pointer to it.
  static_cast<void>(data_.release());
  data_ = std::move(block);
  if (capacity_ > count) size_ = count;
  capacity_ = count;
  return true;
}

template <class T>
bool TArray<T>::Init(int count) {
  return count < 1 || Init(count, false);
}

template <class T>
bool TArray<T>::Grow(int count) {
  T* const oldBlock = data_.get();
  int const oldCapacity = capacity_;
  if (!Init(count, true)) return false;
  std::unique_ptr<T[]> const freedOnReturn(oldBlock);
  CopyElements(oldBlock, std::min(oldCapacity, count));
  return true;
}

template <class T>
bool TArray<T>::Resize(int count) {
  if (count == size_ || count < 0) return false;
  if (count < size_) std::fill(data_.get() + count, data_.get() + size_, T());
  if (count > capacity_ && !Grow(count)) return false;
  size_ = count;
  return true;
}

template <class T>
void TArray<T>::SetAt(int index, T const& value) {
  tree::internal::RequireIndex(index, capacity_, "TArray::SetAt");
  if (index >= size_) size_ = index + 1;
  data_[static_cast<std::size_t>(index)] = value;
}

template <class T>
void TArray<T>::SetAtGrow(int index, T const& value) {
  tree::internal::RequireIndex(index, std::numeric_limits<int>::max(), "TArray::SetAtGrow");
  T const kept = value;  // the value may lie in the block that growth frees
  if (index >= capacity_) Grow(index + 1);
  data_[static_cast<std::size_t>(index)] = kept;
  if (index >= size_) size_ = index + 1;
}

template <class T>
void TArray<T>::AddAtGrow(int index, T const& value) {
  tree::internal::RequireIndex(index, std::numeric_limits<int>::max(), "TArray::AddAtGrow");
  T const kept = value;  // the value may lie in the block that growth frees
  if (index >= capacity_) Grow(index + 1);
  data_[static_cast<std::size_t>(index)] += kept;
  if (index >= size_) size_ = index + 1;
}

template <class T>
void TArray<T>::CopyElements(T const* from, int count) {
  if (count < 1) return;
  if constexpr (std::is_trivially_copyable_v<T>) {
    if (zeroFill_) {
      std::memcpy(data_.get(), from, static_cast<std::size_t>(count) * sizeof(T));
      return;
    }
  }
  std::copy_n(from, count, data_.get());
}

template <class T>
TMatrix<T>::TMatrix(bool zeroFill) : zeroFill_(zeroFill) {}

template <class T>
TMatrix<T>::TMatrix(TMatrix const& other) : zeroFill_(other.zeroFill_) {
  CopyFrom(other);
}

template <class T>
TMatrix<T>& TMatrix<T>::operator=(TMatrix const& other) {
  if (this == &other) return *this;
  Clear();
  CopyFrom(other);
  return *this;
}

template <class T>
TMatrix<T>::TMatrix(TMatrix&& other) noexcept : TMatrix(other.zeroFill_) {
  *this = std::move(other);
}

template <class T>
TMatrix<T>& TMatrix<T>::operator=(TMatrix&& other) noexcept {
  if (this == &other) return *this;
  data_ = std::move(other.data_);
  allocatedRows_ = std::exchange(other.allocatedRows_, 0);
  allocatedColumns_ = std::exchange(other.allocatedColumns_, 0);
  usedRows_ = std::exchange(other.usedRows_, 0);
  usedColumns_ = std::exchange(other.usedColumns_, 0);
  return *this;
}

template <class T>
TMatrix<T>::~TMatrix() {
  Clear();
}

template <class T>
T const& TMatrix<T>::GetAt(int row, int column) const {
  RequireAllocated("TMatrix::GetAt", row, column);
  return data_[Position(row, column)];
}

template <class T>
void TMatrix<T>::Clear() {
  data_.reset();
  allocatedRows_ = 0;
  allocatedColumns_ = 0;
  usedRows_ = 0;
  usedColumns_ = 0;
}

template <class T>
bool TMatrix<T>::Init(int rows, int columns) {
  if (rows < 0 || columns < 0) return false;
  try {
    data_.reset(new T[static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns)]());
  } catch (std::bad_alloc const&) {
    return false;
  }
  allocatedRows_ = rows;
  allocatedColumns_ = columns;
  return true;
}

template <class T>
bool TMatrix<T>::Grow(int rows, int columns) {
  TMatrix grown(zeroFill_);
  if (!grown.Init(std::max(allocatedRows_, rows), std::max(allocatedColumns_, columns))) {
    return false;
  }
  for (int row = 0; row < allocatedRows_; ++row) {
    std::copy_n(data_.get() + Position(row, 0), allocatedColumns_,
                grown.data_.get() + grown.Position(row, 0));
  }
  grown.usedRows_ = usedRows_;
  grown.usedColumns_ = usedColumns_;
  *this = std::move(grown);
  return true;
}

template <class T>
void TMatrix<T>::SetAt(int row, int column, T const& value) {
  RequireAllocated("TMatrix::SetAt", row, column);
  data_[Position(row, column)] = value;
  usedRows_ = std::max(usedRows_, row + 1);
  usedColumns_ = std::max(usedColumns_, column + 1);
}

template <class T>
void TMatrix<T>::SetAtGrow(int row, int column, T const& value) {
  constexpr int kLimit = std::numeric_limits<int>::max();
  tree::internal::RequireIndex(row, kLimit, "TMatrix::SetAtGrow");
  tree::internal::RequireIndex(column, kLimit, "TMatrix::SetAtGrow");
  T const kept = value;  // the value may lie in the block that growth frees
  if (!IsAllocated(row, column)) Grow(row + 1, column + 1);
  SetAt(row, column, kept);
}

template <class T>
void TMatrix<T>::CopyFrom(TMatrix const& other) {
  if (other.usedRows_ < 1 || other.usedColumns_ < 1) return;
  if (!Init(other.allocatedRows_, other.allocatedColumns_)) return;
  usedRows_ = other.usedRows_;
  usedColumns_ = other.usedColumns_;
  std::copy_n(other.data_.get(), Position(allocatedRows_, 0), data_.get());
}

namespace MCTree {

template <class T>
T const& ArrayRW<T>::operator[](int index) const {
  return elements_[Checked("ArrayRW::operator[]", index)];
}

template <class T>
T& ArrayRW<T>::operator[](int index) {
  return elements_[Checked("ArrayRW::operator[]", index)];
}

template <class T>
std::size_t ArrayRW<T>::Checked(char const* operation, int index) const {
  tree::internal::RequireIndex(index, GetNumElements(), operation);
  return static_cast<std::size_t>(index);
}

}  // namespace MCTree

extern template class TArray<double>;
extern template class TArray<int>;
extern template class TMatrix<double>;

#endif  // TREE_CONTAINERS_H_
