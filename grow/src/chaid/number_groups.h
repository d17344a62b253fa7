#ifndef TREE_GROW_SRC_CHAID_NUMBER_GROUPS_H_
#define TREE_GROW_SRC_CHAID_NUMBER_GROUPS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "association/f_test.h"
#include "association/number_sums.h"

namespace tree::grow {

/// Groups of categories of a predictor while they are merged, by the numbers of their cases. As
/// `ClassGroups` in all else.
class NumberGroups {
 public:
  using Entry = NumberSums;

  /// `sizeUnit`: cases per unit of frequency.
  explicit NumberGroups(double sizeUnit) : sizeUnit_(sizeUnit) {}

  static std::size_t GetRowSize() { return 1; }
  void Clear() { categories_.clear(); }
  bool Append(Entry const* row);
  std::size_t GetNumCategories() const { return categories_.size(); }
  void MakeGroups();

  double SizeOf(std::size_t group) const { return groups_[group].size * sizeUnit_; }
  void ClearGroup(std::size_t group);
  void AddGroup(std::size_t group, std::size_t other);
  void AddCategory(std::size_t group, std::size_t category);
  void RemoveCategory(std::size_t group, std::size_t category);

  TestStatistic TestPair(std::size_t first, std::size_t second) const {
    return FTest(groups_[first], groups_[second], sizeUnit_);
  }
  TestStatistic Test(std::span<std::size_t const> groups);

  void SortForCuts(std::vector<std::size_t>& categories) const;
  static bool AreCutsBest() { return true; }

 private:
  void SumUpGroup(std::size_t group);

  double sizeUnit_;
  std::int64_t centre_ = 0;
  std::vector<NumberSums> categories_;
  std::vector<NumberSums> sums_;     // by group
  std::vector<NumberGroup> groups_;  // the same as numbers to compute with
  std::vector<NumberGroup> tested_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_NUMBER_GROUPS_H_
