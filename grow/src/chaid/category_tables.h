#ifndef TREE_GROW_SRC_CHAID_CATEGORY_TABLES_H_
#define TREE_GROW_SRC_CHAID_CATEGORY_TABLES_H_

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tree::grow {

/// The tables that some nodes have of one predictor: what the cases of each node add up to by
/// category, which is all that CHAID asks of the data. The entries that all nodes have for a
/// category lie together, so that cases can be added in their order, whichever nodes they are in.
/// Sums are whole numbers: the tables of parts of the data, wherever these are, can be merged in
/// any order.
///
/// `Entry`: for classes, whole numbers: sizes by class, in units of frequency, then, when cases
/// have weights, weights by class; for numbers one `NumberSums`.
template <class Entry>
class CategoryTables {
 public:
  /// Tables of no cases. `rowSize`: the number of entries that a node has for a category.
  CategoryTables(std::size_t numCategories, std::size_t numNodes, std::size_t rowSize)
      : rowSize_(rowSize), stride_(numNodes * rowSize), entries_(numCategories * stride_) {}

  /// The entries of a category: those of the first node, then those of the next one. To be added to
  /// by whoever has the cases.
  Entry* Row(std::size_t category) { return entries_.data() + category * stride_; }
  /// From a category to the next one, in entries.
  std::size_t GetStride() const { return stride_; }

  /// Adds the tables that the same nodes have of other cases.
  void Merge(CategoryTables const& other) {
    for (std::size_t index = 0; index < entries_.size(); ++index) {
      entries_[index] += other.entries_[index];
    }
  }
  /// Takes all cases away.
  void Clear() { std::fill(entries_.begin(), entries_.end(), Entry{}); }
  /// Writes the table of one node, a category after the other, to `table`, which is made as large.
  void CopyTable(std::size_t node, std::vector<Entry>& table) const {
    std::size_t const numCategories = stride_ == 0 ? 0 : entries_.size() / stride_;
    table.resize(numCategories * rowSize_);
    Entry const* row = entries_.data() + node * rowSize_;
    for (auto to = table.begin(); to != table.end(); row += stride_) {
      to = std::copy(row, row + rowSize_, to);
    }
  }

 private:
  std::size_t rowSize_;
  std::size_t stride_;
  std::vector<Entry> entries_;  // [category][node][entry]
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_CATEGORY_TABLES_H_
