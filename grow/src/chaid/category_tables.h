#ifndef TREE_GROW_SRC_CHAID_CATEGORY_TABLES_H_
#define TREE_GROW_SRC_CHAID_CATEGORY_TABLES_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tree::grow {

/// In which category of a predictor each case is. **Borrowed**.
struct CategoryCodes {
  std::uint16_t const* codes;  ///< by case
  std::uint16_t missing;       ///< the category of missing values, and of all codes above it

  std::size_t Of(std::size_t index) const { return std::min(codes[index], missing); }
};

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

  /// Adds these cases to the table of the first node. `cases`: what they add, as in
  /// counted_cases.h.
  template <class Cases>
  void Add(std::span<std::uint32_t const> indices, CategoryCodes const& codes, Cases const& cases) {
    for (std::uint32_t const index : indices) {
      cases.Add(entries_.data() + codes.Of(index) * stride_ + cases.EntryOf(index), index);
    }
  }
  /// Adds the cases from `begin` to `end` to the tables that the same nodes have of `Number`
  /// predictors, in one pass: where each case adds is then read less often, and what one predictor
  /// adds need not wait for what it added just before. `entries`: by case, the number of entries of
  /// the nodes before its own, and `EntryOf` it.
  template <std::size_t Number, class Cases>
  static void Add(std::span<CategoryTables> tables, std::span<CategoryCodes const> codes,
                  std::span<std::uint32_t const> entries, std::size_t begin, std::size_t end,
                  Cases const& cases) {
    // Copies that no sum can be taken for, so that they stay in registers.
    std::array<Counted, Number> counted;
    for (std::size_t each = 0; each < Number; ++each) {
      counted[each] = {tables[each].entries_.data(), codes[each]};
    }
    std::size_t const stride = tables.front().stride_;
    std::uint32_t const* const entryOf = entries.data();
    for (std::size_t index = begin; index < end; ++index) {
      for (Counted const& each : counted) {
        cases.Add(each.entries + each.codes.Of(index) * stride + entryOf[index], index);
      }
    }
  }

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
  struct Counted {
    Entry* entries;
    CategoryCodes codes;
  };

  std::size_t rowSize_;
  std::size_t stride_;          // from a category to the next one
  std::vector<Entry> entries_;  // [category][node][entry]
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_CATEGORY_TABLES_H_
