#ifndef TREE_GROW_SRC_CHAID_CATEGORY_MERGER_H_
#define TREE_GROW_SRC_CHAID_CATEGORY_MERGER_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "association/test_statistic.h"
#include "chaid/class_groups.h"
#include "chaid/group_pairs.h"
#include "chaid/group_split.h"
#include "chaid/number_groups.h"
#include "growing/workers.h"

namespace tree::grow {

/// How categories are merged.
struct MergeSettings {
  double alphaOfMerge = 0.05;         ///< pairs are merged whose p-value is above it
  double alphaOfMergeSplit = 0.025;   ///< merged groups are split at most at this p-value
  bool allowSplitMerge = false;       ///< whether merged groups are split again
  bool exhaustive = false;            ///< the method of Biggs et al.; the above do not matter then
  bool useBonferroni = true;          ///< whether the p-value is adjusted
  double minChildSize = 1.0;          ///< of a group, in cases
  std::size_t maxNumGroups = 0xFFFF;  ///< merging goes on until there are no more; at least 2
};

/// Groups of categories.
struct MergedCategories {
  static constexpr std::uint16_t kNoGroup = 0xFFFF;

  /// By category; `kNoGroup` for those without cases. Groups are numbered by their first category;
  /// missing values, the last one, are a group of their own only if that is the last one, too.
  std::vector<std::uint16_t> groupOf;
  std::size_t numGroups = 0;
  TestStatistic statistic;    ///< of the groups
  double logP = 0.0;          ///< natural logarithm of its p-value
  double adjustedLogP = 0.0;  ///< the same times the Bonferroni multiplier, at most 0
};

/// Merges the categories of a predictor to groups that differ in the target. `Groups`:
/// `ClassGroups` or `NumberGroups`. Keeps the memory that it works with: to be used for many
/// predictors and nodes, by one thread.
///
/// Kass 1980: the pair that differs least is merged as long as its p-value is above a level and
/// more than two groups are left: whether two differ enough is for the level of the split. A group
/// of three or more categories that is made so may be split in two again. A group that was split is
/// not made once more, so merging ends. Exhaustive, Biggs, de Ville and Suen 1991: pairs are merged
/// until two groups are left, and the step of the least p-value is kept; of equal ones, that with
/// the fewest groups. At the end, by either method, groups below the least size, smallest first,
/// are merged with the group from which they differ least, until none is left or all are one.
///
/// Of pairs that are equal the first is merged: the one with the first first group, then with the
/// first second one.
template <class Groups>
class CategoryMerger {
 public:
  /// `workers`: polled while many categories are merged; null for nobody. **Borrowed**.
  CategoryMerger(Groups groups, MergeSettings const& settings, Workers* workers = nullptr);

  /// Merges. `table`: a row for each category. `kind`: which categories may merge. `floating`:
  /// whether the last category is that of the missing values, which may merge with any group; for
  /// nominal categories it makes no difference. `mayMerge`: whether categories may be merged that
  /// have enough cases; without, only as many are as there are groups too many. The result is
  /// **borrowed** until the next call.
  MergedCategories const& Merge(std::span<typename Groups::Entry const> table, CategoryKind kind,
                                bool floating, bool mayMerge = true);

 private:
  void Load(std::span<typename Groups::Entry const> table, CategoryKind kind, bool floating);
  void ReturnToCategories();
  void PollForTest();
  void UpdatePairs(std::span<std::size_t const> changed);
  void UpdateAllPairs();
  void Join(GroupPair pair);
  bool SplitAgain(std::size_t group);
  bool WasSplit(GroupPair pair) const;
  void MergeByLevel();
  void MergeExhaustively();
  void MergeSmallGroups();
  void WriteResult(std::size_t numRows);
  double LogMultiplier() const;
  /// Where nothing may be merged there are no steps to choose from.
  bool IsExhaustive() const { return settings_.exhaustive && mayMerge_; }
  std::vector<std::size_t> CategoriesOf(std::size_t group) const;

  Groups groups_;
  MergeSettings settings_;
  Workers* workers_;
  std::size_t numEntries_ = 0;  // of tables, tested since the last poll
  double logAlphaOfMerge_;
  double logAlphaOfMergeSplit_;

  // Of the present predictor. Its categories are the rows with cases.
  CategoryKind kind_ = CategoryKind::kNominal;
  bool floating_ = false;
  bool mayMerge_ = true;
  std::vector<std::size_t> rowOf_;    // by category
  std::vector<std::size_t> groupOf_;  // by category
  GroupPairs pairs_;
  GroupSplit<Groups> split_;
  std::vector<std::vector<std::size_t>> splitGroups_;  // the categories of groups that were split
  std::vector<GroupPair> steps_;                       // of exhaustive merging
  std::vector<std::uint16_t> numberOf_;                // by group
  MergedCategories merged_;
};

extern template class CategoryMerger<ClassGroups>;
extern template class CategoryMerger<NumberGroups>;

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_CATEGORY_MERGER_H_
