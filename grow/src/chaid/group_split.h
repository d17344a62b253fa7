#ifndef TREE_GROW_SRC_CHAID_GROUP_SPLIT_H_
#define TREE_GROW_SRC_CHAID_GROUP_SPLIT_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "association/test_statistic.h"
#include "chaid/class_groups.h"
#include "chaid/group_pairs.h"
#include "chaid/number_groups.h"
#include "growing/fixed_point.h"

namespace tree::grow {

/// Finds the most significant division of a group of categories into two groups that could have
/// been merged. `Groups`: as for `CategoryMerger`, whose two spare groups it uses. What is found is
/// the best of all divisions, save of more nominal categories than `kMaxExhaustive`: of these it is
/// the best of the cuts in the order of `Groups::SortForCuts`, unless `Groups::AreCutsBest`.
template <class Groups>
class GroupSplit {
 public:
  static constexpr std::size_t kMaxExhaustive = 12;

  /// `categories`: of the group, ascending, at least two; `floating`: whether the last one of an
  /// ordinal predictor may be on either side; `poll`: called before each test.
  TestStatistic Find(Groups& groups, std::span<std::size_t const> categories, CategoryKind kind,
                     bool floating, PollFunction const& poll = NoPoll);
  /// The side of the first category, by the last division found; of equal ones the first tried.
  ///@{
  std::vector<std::size_t> const& GetFirst() const { return sides_[0]; }
  std::vector<std::size_t> const& GetSecond() const { return sides_[1]; }
  ///@}

 private:
  void Start(Groups& groups, std::span<std::size_t const> categories);
  void Move(std::size_t position);
  void Try(PollFunction const& poll);
  void TryCuts(PollFunction const& poll);
  void TryOrdered(bool floating, PollFunction const& poll);
  void TryAll(PollFunction const& poll);

  Groups* groups_ = nullptr;
  std::size_t spare_ = 0;  // the group of one side; the next one is that of the other
  std::vector<std::size_t> categories_;
  std::vector<std::uint8_t> side_;  // by position in `categories_`
  std::vector<std::uint8_t> bestSide_;
  TestStatistic best_;
  bool any_ = false;
  std::vector<std::size_t> sides_[2];
};

extern template class GroupSplit<ClassGroups>;
extern template class GroupSplit<NumberGroups>;

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_GROUP_SPLIT_H_
