#ifndef TREE_GROW_TESTS_UNIT_CHAID_NAIVE_CHAID_H_
#define TREE_GROW_TESTS_UNIT_CHAID_NAIVE_CHAID_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <numeric>
#include <set>
#include <vector>

#include "association/log_tails.h"
#include "chaid/category_merger.h"
#include "chaid/log_multipliers.h"

namespace tree::grow {

/// Merging as it is defined, without a thought of speed: everything is computed anew, from the
/// cases of each category, whenever it is needed.
class NaiveChaid {
 public:
  using Group = std::set<std::size_t>;
  using Groups = std::vector<Group>;
  /// The logarithm of the p-value of these groups of categories.
  using LogPOfGroups = std::function<double(Groups const&)>;

  /// `sizes`: of the categories, none 0.
  NaiveChaid(LogPOfGroups logPOf, std::vector<double> sizes, CategoryKind kind, bool floating,
             MergeSettings const& settings)
      : logPOf_(std::move(logPOf)),
        sizes_(std::move(sizes)),
        kind_(kind),
        floating_(floating),
        settings_(settings) {}

  Groups Merge() {
    Groups groups;
    for (std::size_t category = 0; category < sizes_.size(); ++category) {
      groups.push_back({category});
    }
    groups = settings_.exhaustive ? MergeExhaustively(groups) : MergeByLevel(groups);
    return MergeSmall(groups);
  }

  double LogMultiplier(std::size_t r) const {
    std::size_t const c = sizes_.size();
    if (!settings_.useBonferroni || r < 2) return 0.0;
    bool const floats = floating_ && kind_ == CategoryKind::kOrdinal;
    if (settings_.exhaustive) {
      if (kind_ == CategoryKind::kNominal) return LogExhaustiveNominalMultiplier(c);
      return floats ? LogExhaustiveFloatingMultiplier(c) : LogExhaustiveOrdinalMultiplier(c);
    }
    if (kind_ == CategoryKind::kNominal) return LogNominalMultiplier(c, r);
    return floats ? LogFloatingMultiplier(c, r) : LogOrdinalMultiplier(c, r);
  }

  /// Whether the categories, without the floating one, are next to each other.
  bool IsAllowed(Group const& group) const {
    if (kind_ == CategoryKind::kNominal) return true;
    Group ordered = group;
    if (floating_) ordered.erase(sizes_.size() - 1);
    return ordered.empty() || *ordered.rbegin() - *ordered.begin() + 1 == ordered.size();
  }

 private:
  struct Pair {
    std::size_t first = 0;
    std::size_t second = 0;
    double logP = -std::numeric_limits<double>::infinity();
    bool any = false;
  };

  static Group Union(Group const& a, Group const& b) {
    Group both = a;
    both.insert(b.begin(), b.end());
    return both;
  }

  Pair LeastSignificant(Groups const& groups, std::size_t with = SIZE_MAX) const {
    Pair best;
    for (std::size_t i = 0; i < groups.size(); ++i) {
      for (std::size_t j = i + 1; j < groups.size(); ++j) {
        if (with != SIZE_MAX && i != with && j != with) continue;
        Group const both = Union(groups[i], groups[j]);
        if (!IsAllowed(both) || split_.count(both) > 0) continue;
        double const logP = logPOf_({groups[i], groups[j]});
        if (!best.any || logP > best.logP) best = {i, j, logP, true};
      }
    }
    return best;
  }

  static void Join(Groups& groups, Pair const& pair) {
    groups[pair.first] = Union(groups[pair.first], groups[pair.second]);
    groups.erase(groups.begin() + static_cast<std::ptrdiff_t>(pair.second));
  }

  /// The most significant division; empty when none is significant.
  Groups Split(Group const& group) const {
    std::vector<std::size_t> const members(group.begin(), group.end());
    Groups best;
    double bestLogP = 0.0;
    for (std::size_t mask = 1; mask + 1 < std::size_t{1} << members.size(); ++mask) {
      if (mask % 2 == 0) continue;  // the first member is on the first side
      Groups sides(2);
      for (std::size_t index = 0; index < members.size(); ++index) {
        sides[mask >> index & 1 ? 0 : 1].insert(members[index]);
      }
      if (!IsAllowed(sides[0]) || !IsAllowed(sides[1])) continue;
      double const logP = logPOf_(sides);
      if (logP < bestLogP) {
        bestLogP = logP;
        best = sides;
      }
    }
    return bestLogP <= std::log(settings_.alphaOfMergeSplit) ? best : Groups{};
  }

  Groups MergeByLevel(Groups groups) {
    while (groups.size() > 2) {
      Pair const pair = LeastSignificant(groups);
      if (!pair.any || !(pair.logP > std::log(settings_.alphaOfMerge))) break;
      Join(groups, pair);
      if (settings_.allowSplitMerge && groups[pair.first].size() > 2) {
        Groups const sides = Split(groups[pair.first]);
        if (!sides.empty()) {
          ++numSplits;
          split_.insert(groups[pair.first]);
          groups[pair.first] = sides[0];
          groups.push_back(sides[1]);
          std::sort(groups.begin(), groups.end(),
                    [](Group const& a, Group const& b) { return *a.begin() < *b.begin(); });
        }
      }
    }
    return groups;
  }

  Groups MergeExhaustively(Groups groups) const {
    Groups best = groups;
    double bestLogP = logPOf_(groups);
    while (groups.size() > 2) {
      Join(groups, LeastSignificant(groups));
      double const logP = logPOf_(groups);
      if (logP <= bestLogP) {
        bestLogP = logP;
        best = groups;
      }
    }
    return best;
  }

  Groups MergeSmall(Groups groups) {
    split_.clear();
    auto const sizeOf = [&](Group const& group) {
      return std::accumulate(
          group.begin(), group.end(), 0.0,
          [&](double sum, std::size_t category) { return sum + sizes_[category]; });
    };
    while (groups.size() > 1) {
      std::size_t least = 0;
      for (std::size_t i = 1; i < groups.size(); ++i) {
        if (sizeOf(groups[i]) < sizeOf(groups[least])) least = i;
      }
      if (!(sizeOf(groups[least]) < settings_.minChildSize)) break;
      Join(groups, LeastSignificant(groups, least));
    }
    return groups;
  }

  LogPOfGroups logPOf_;
  std::vector<double> sizes_;
  CategoryKind kind_;
  bool floating_;
  MergeSettings settings_;
  std::set<Group> split_;

 public:
  int numSplits = 0;  ///< how often a merged group was split
};

}  // namespace tree::grow

#endif  // TREE_GROW_TESTS_UNIT_CHAID_NAIVE_CHAID_H_
