#ifndef TREE_GROW_SRC_CHAID_CLASS_GROUPS_H_
#define TREE_GROW_SRC_CHAID_CLASS_GROUPS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "association/class_test.h"

namespace tree::grow {

/// Groups of categories of a predictor while they are merged, by the classes of their cases. Group
/// i begins as category i; there are two more, at first without cases, to try things out. All sums
/// are whole numbers below 2^53, so doubles hold them exactly, whatever is added and taken away.
class ClassGroups {
 public:
  using Entry = std::int64_t;

  /// `weighted`: whether rows have weights behind their sizes; `sizeUnit`: cases per unit of
  /// frequency.
  ClassGroups(ClassTestSettings const& settings, std::size_t numClasses, bool weighted,
              double sizeUnit);

  /// Number of entries of a category's row.
  std::size_t GetRowSize() const { return rowSize_; }
  /// Forgets all categories.
  void Clear() { categories_.clear(); }
  /// Adds a category; ignores, and returns false, when it has no cases.
  bool Append(Entry const* row);
  std::size_t GetNumCategories() const { return categories_.size() / rowSize_; }
  /// Makes each category a group.
  void MakeGroups();

  /// In cases.
  double SizeOf(std::size_t group) const;
  void ClearGroup(std::size_t group);
  void AddGroup(std::size_t group, std::size_t other);
  void AddCategory(std::size_t group, std::size_t category);
  void RemoveCategory(std::size_t group, std::size_t category);

  /// Tests whether groups differ. Both groups of a pair have cases.
  TestStatistic TestPair(std::size_t first, std::size_t second);
  TestStatistic Test(std::span<std::size_t const> groups);

  /// Brings categories into an order in which good divisions of them into two are cuts.
  void SortForCuts(std::vector<std::size_t>& categories) const;
  /// Whether the best of all divisions is one of the cuts.
  bool AreCutsBest() const;

 private:
  double* Group(std::size_t group) { return groups_.data() + group * rowSize_; }
  double const* Group(std::size_t group) const { return groups_.data() + group * rowSize_; }
  double const* Category(std::size_t category) const {
    return categories_.data() + category * rowSize_;
  }
  ClassRow RowOf(std::size_t group) const;

  ClassTest test_;
  std::size_t numClasses_;
  std::size_t rowSize_;
  double sizeUnit_;
  std::vector<double> categories_;  // rows: sizes by class, then weights by class, if any
  std::vector<double> groups_;
  std::vector<ClassRow> rows_;  // of the groups in a test
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_CLASS_GROUPS_H_
