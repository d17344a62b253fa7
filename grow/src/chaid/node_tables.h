#ifndef TREE_GROW_SRC_CHAID_NODE_TABLES_H_
#define TREE_GROW_SRC_CHAID_NODE_TABLES_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "association/number_sums.h"

namespace tree::grow {

/// Where the tables of the predictors lie in the memory of a node: one after another, each with a
/// row for every category. Shared by all nodes.
class TableLayout {
 public:
  /// `numCategories`: by predictor, with one for missing values where there are any, the last.
  /// `rowSize`: number of entries of a row.
  TableLayout(std::span<std::size_t const> numCategories, std::size_t rowSize);

  /// For classes: sizes by class, then, when cases have weights, weights by class.
  static TableLayout OfClasses(std::span<std::size_t const> numCategories, std::size_t numClasses,
                               bool weighted) {
    return {numCategories, weighted ? 2 * numClasses : numClasses};
  }
  /// For numbers: a row is one `NumberSums`.
  static TableLayout OfNumbers(std::span<std::size_t const> numCategories) {
    return {numCategories, 1};
  }

  std::size_t GetNumPredictors() const { return begins_.size() - 1; }
  std::size_t GetRowSize() const { return rowSize_; }
  /// Where the table of a predictor begins, in entries; with the number of predictors, the end.
  std::size_t GetBegin(std::size_t predictor) const { return begins_[predictor]; }
  /// Number of entries of a predictor's table.
  std::size_t GetSize(std::size_t predictor) const {
    return begins_[predictor + 1] - begins_[predictor];
  }
  std::size_t GetTotalSize() const { return begins_.back(); }

 private:
  std::vector<std::size_t> begins_;
  std::size_t rowSize_;
};

/// What the cases of a node, or a part of them, add up to by category of each predictor: all that
/// CHAID asks of the data. Sums are whole numbers, so parts of the data, wherever they are summed,
/// can be merged in any order, and a child can be had as its parent without its siblings.
template <class Entry>
class NodeTables {
 public:
  /// Tables of no cases. `layout`: **borrowed**.
  explicit NodeTables(TableLayout const& layout)
      : layout_(&layout), entries_(layout.GetTotalSize()) {}

  /// The table of a predictor: its rows after each other. To be filled by whoever has the cases.
  Entry* Table(std::size_t predictor) { return entries_.data() + layout_->GetBegin(predictor); }
  std::span<Entry const> Table(std::size_t predictor) const {
    return {entries_.data() + layout_->GetBegin(predictor), layout_->GetSize(predictor)};
  }
  /// The row of a category.
  Entry* Row(std::size_t predictor, std::size_t category) {
    return Table(predictor) + category * layout_->GetRowSize();
  }
  TableLayout const& GetLayout() const { return *layout_; }

  /// Adds the tables of other cases with the same layout.
  void Merge(NodeTables const& other) {
    for (std::size_t index = 0; index < entries_.size(); ++index) {
      entries_[index] += other.entries_[index];
    }
  }
  /// Takes away the tables of some of the cases.
  void Remove(NodeTables const& other) {
    for (std::size_t index = 0; index < entries_.size(); ++index) {
      entries_[index] -= other.entries_[index];
    }
  }
  friend bool operator==(NodeTables const& left, NodeTables const& right) {
    return left.entries_ == right.entries_;
  }

 private:
  TableLayout const* layout_;
  std::vector<Entry> entries_;
};

/// Entries are sizes in units of frequency, and weights in units of weight.
using ClassTables = NodeTables<std::int64_t>;
using NumberTables = NodeTables<NumberSums>;

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_NODE_TABLES_H_
