#ifndef TREE_GROW_SRC_CHAID_GROUP_PAIRS_H_
#define TREE_GROW_SRC_CHAID_GROUP_PAIRS_H_

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "association/test_statistic.h"

namespace tree::grow {

/// Which categories may be merged.
enum class CategoryKind {
  kNominal,  ///< all with each other
  kOrdinal,  ///< neighbours
};

/// Two groups, the lower one first.
struct GroupPair {
  std::size_t first = 0;
  std::size_t second = 0;
};

/// The groups of categories that there are, by their lowest category, and the tests of those pairs
/// of them that may be merged. Remembers the best partner of each group, so that after a merger
/// only pairs of what has changed are looked at. Keeps the memory that it works with.
class GroupPairs {
 public:
  /// Starts with each category a group, and no pair tested. `floating`: whether the last category
  /// may be merged with any group.
  void Reset(CategoryKind kind, std::size_t numCategories, bool floating);

  /// The groups, ascending.
  std::span<std::size_t const> GetGroups() const { return groups_; }
  void Remove(std::size_t group);
  void Insert(std::size_t group);

  /// Tests all pairs with one of the `changed` groups: required for groups that were inserted, or
  /// whose cases have changed. Groups that were removed need not be named. `changed`: ascending.
  /// `test`: called with the two groups of a pair, the lower first; gives the statistic, or nothing
  /// where they must not be merged.
  template <class Test>
  void Update(std::span<std::size_t const> changed, Test const& test);

  /// The pair that differs least; of equal ones, the first. False when there is none.
  bool FindLeastSignificant(GroupPair& pair);
  /// The natural logarithm of its p-value.
  double LogPOf(GroupPair pair) { return LogPOf(At(pair.first, pair.second)); }
  /// The group from which `group` differs least; of equal ones, the first. Requires another group.
  std::size_t FindMostSimilar(std::size_t group);

 private:
  struct Tested {
    TestStatistic statistic;
    double logP = kUnknown;
  };
  static constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();
  static constexpr double kExcluded = 1.0;  // no probability has this logarithm
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  static double LogPOf(Tested& tested);
  static bool IsLessSignificant(Tested& left, Tested& right) {
    return AreComparable(left.statistic, right.statistic)
               ? left.statistic.value < right.statistic.value
               : HasGreaterP(left, right);
  }
  static bool HasGreaterP(Tested& left, Tested& right);
  /// Whether a group may be merged with a higher one.
  bool MayMerge(std::size_t position, std::size_t higher) const;
  /// Calls `visit` with each higher group that the group may be merged with, ascending.
  template <class Visit>
  void VisitPartners(std::size_t position, Visit const& visit) const;
  Tested& At(std::size_t first, std::size_t second) {
    if (kind_ == CategoryKind::kNominal) return pairs_[second * (second - 1) / 2 + first];
    // A group has one neighbour above it, and perhaps the floating category.
    return pairs_[second == floating_ ? numCategories_ + first : first];
  }
  void Offer(std::size_t group, std::size_t partner);
  void FindBestPartner(std::size_t position);

  CategoryKind kind_ = CategoryKind::kNominal;
  std::size_t numCategories_ = 0;
  std::size_t floating_ = kNone;  // the category, if there is one
  std::vector<std::size_t> groups_;
  std::vector<Tested> pairs_;
  std::vector<std::size_t> bestPartner_;  // by group: of the higher ones; kNone for no group
  std::vector<char> isGroup_;             // by category
};

template <class Visit>
void GroupPairs::VisitPartners(std::size_t position, Visit const& visit) const {
  std::size_t const last = groups_.size() - 1;
  if (kind_ == CategoryKind::kNominal) {
    for (std::size_t other = position + 1; other <= last; ++other) visit(groups_[other]);
  } else if (position < last) {
    visit(groups_[position + 1]);
    if (groups_[last] == floating_ && position + 1 < last) visit(floating_);
  }
}

template <class Test>
void GroupPairs::Update(std::span<std::size_t const> changed, Test const& test) {
  auto const hasChanged = [&](std::size_t group) {
    return std::binary_search(changed.begin(), changed.end(), group);
  };
  for (std::size_t position = 0; position < groups_.size(); ++position) {
    std::size_t const group = groups_[position];
    bool const all = hasChanged(group);
    std::size_t const best = bestPartner_[group];
    // The best partner so far may be gone, or worse than it was.
    bool const anew = all || (best != kNone && (!isGroup_[best] || hasChanged(best)));
    auto const testWith = [&](std::size_t partner) {
      std::optional<TestStatistic> const statistic = test(group, partner);
      At(group, partner) = statistic ? Tested{*statistic, kUnknown} : Tested{{}, kExcluded};
      if (!anew) Offer(group, partner);
    };
    if (all) {
      VisitPartners(position, testWith);
    } else {
      for (std::size_t const partner : changed) {
        if (MayMerge(position, partner)) testWith(partner);
      }
    }
    if (anew) FindBestPartner(position);
  }
}

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_GROUP_PAIRS_H_
