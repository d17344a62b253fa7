#include "chaid/category_merger.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

#include "chaid/log_multipliers.h"

namespace tree::grow {
namespace {

double LogOfLevel(double alpha) {
  return alpha > 0.0 ? std::log(alpha) : -std::numeric_limits<double>::infinity();
}

}  // namespace

template <class Groups>
CategoryMerger<Groups>::CategoryMerger(Groups groups, MergeSettings const& settings,
                                       Workers* workers)
    : groups_(std::move(groups)),
      settings_(settings),
      workers_(workers),
      logAlphaOfMerge_(LogOfLevel(settings.alphaOfMerge)),
      logAlphaOfMergeSplit_(LogOfLevel(settings.alphaOfMergeSplit)) {}

template <class Groups>
MergedCategories const& CategoryMerger<Groups>::Merge(std::span<typename Groups::Entry const> table,
                                                      CategoryKind kind, bool floating,
                                                      bool mayMerge) {
  Load(table, kind, floating);
  mayMerge_ = mayMerge;
  if (rowOf_.size() > 1) {
    IsExhaustive() ? MergeExhaustively() : MergeByLevel();
    MergeSmallGroups();
  }
  WriteResult(table.size() / groups_.GetRowSize());
  return merged_;
}

template <class Groups>
void CategoryMerger<Groups>::Load(std::span<typename Groups::Entry const> table, CategoryKind kind,
                                  bool floating) {
  groups_.Clear();
  rowOf_.clear();
  splitGroups_.clear();
  std::size_t const numRows = table.size() / groups_.GetRowSize();
  for (std::size_t row = 0; row < numRows; ++row) {
    if (groups_.Append(table.data() + row * groups_.GetRowSize())) rowOf_.push_back(row);
  }
  kind_ = kind;
  floating_ = floating && !rowOf_.empty() && rowOf_.back() + 1 == numRows;
  ReturnToCategories();
}

/// Makes each category a group.
template <class Groups>
void CategoryMerger<Groups>::ReturnToCategories() {
  groups_.MakeGroups();
  groupOf_.resize(rowOf_.size());
  std::iota(groupOf_.begin(), groupOf_.end(), std::size_t{0});
  pairs_.Reset(kind_, rowOf_.size(), floating_);
}

/// Polls before a test, where enough tables were tested since the last time: asking costs as much
/// as a simple test of few classes.
template <class Groups>
void CategoryMerger<Groups>::PollForTest() {
  constexpr std::size_t kEntriesPerPoll = 256;
  numEntries_ += groups_.GetRowSize();
  if (workers_ == nullptr || numEntries_ < kEntriesPerPoll) return;
  numEntries_ = 0;
  workers_->Poll();
}

template <class Groups>
void CategoryMerger<Groups>::UpdatePairs(std::span<std::size_t const> changed) {
  pairs_.Update(changed,
                [&](std::size_t first, std::size_t second) -> std::optional<TestStatistic> {
                  PollForTest();
                  if (!splitGroups_.empty() && WasSplit({first, second})) return std::nullopt;
                  return groups_.TestPair(first, second);
                });
}

template <class Groups>
void CategoryMerger<Groups>::UpdateAllPairs() {
  UpdatePairs(pairs_.GetGroups());
}

template <class Groups>
std::vector<std::size_t> CategoryMerger<Groups>::CategoriesOf(std::size_t group) const {
  std::vector<std::size_t> categories;
  for (std::size_t category = group; category < groupOf_.size(); ++category) {
    if (groupOf_[category] == group) categories.push_back(category);
  }
  return categories;
}

template <class Groups>
void CategoryMerger<Groups>::Join(GroupPair pair) {
  groups_.AddGroup(pair.first, pair.second);
  std::replace(groupOf_.begin(), groupOf_.end(), pair.second, pair.first);
  pairs_.Remove(pair.second);
}

template <class Groups>
bool CategoryMerger<Groups>::WasSplit(GroupPair pair) const {
  std::vector<std::size_t> together;
  for (std::size_t category = 0; category < groupOf_.size(); ++category) {
    if (groupOf_[category] == pair.first || groupOf_[category] == pair.second) {
      together.push_back(category);
    }
  }
  return std::find(splitGroups_.begin(), splitGroups_.end(), together) != splitGroups_.end();
}

/// Splits a group of three or more categories in two where these differ significantly.
template <class Groups>
bool CategoryMerger<Groups>::SplitAgain(std::size_t group) {
  std::vector<std::size_t> categories = CategoriesOf(group);
  if (categories.size() < 3) return false;
  bool const floating = floating_ && categories.back() + 1 == groupOf_.size();
  TestStatistic const statistic =
      split_.Find(groups_, categories, kind_, floating, [this] { PollForTest(); });
  if (!(statistic.degreesOfFreedom > 0.0) || LogP(statistic) > logAlphaOfMergeSplit_) return false;
  splitGroups_.push_back(std::move(categories));
  std::size_t const second = split_.GetSecond().front();
  pairs_.Insert(second);
  for (auto const& [to, side] :
       {std::pair(group, &split_.GetFirst()), std::pair(second, &split_.GetSecond())}) {
    groups_.ClearGroup(to);
    for (std::size_t const category : *side) {
      groups_.AddCategory(to, category);
      groupOf_[category] = to;
    }
  }
  return true;
}

template <class Groups>
void CategoryMerger<Groups>::MergeByLevel() {
  UpdateAllPairs();
  GroupPair pair;
  while (pairs_.GetGroups().size() > 2 && pairs_.FindLeastSignificant(pair) &&
         ((mayMerge_ && pairs_.LogPOf(pair) > logAlphaOfMerge_) ||
          pairs_.GetGroups().size() > settings_.maxNumGroups)) {
    Join(pair);
    bool const mayGrow = pairs_.GetGroups().size() < settings_.maxNumGroups;
    if (mayMerge_ && settings_.allowSplitMerge && mayGrow && SplitAgain(pair.first)) {
      UpdatePairs(std::array{pair.first, split_.GetSecond().front()});
    } else {
      UpdatePairs(std::array{pair.first});
    }
  }
}

template <class Groups>
void CategoryMerger<Groups>::MergeExhaustively() {
  UpdateAllPairs();
  steps_.clear();
  auto const isAllowed = [&] { return pairs_.GetGroups().size() <= settings_.maxNumGroups; };
  double bestLogP = isAllowed() ? LogP(groups_.Test(pairs_.GetGroups())) : 0.0;
  std::size_t bestStep = 0;
  GroupPair pair;
  while (pairs_.GetGroups().size() > 2 && pairs_.FindLeastSignificant(pair)) {
    Join(pair);
    steps_.push_back(pair);
    UpdatePairs(std::array{pair.first});
    if (!isAllowed()) continue;
    double const logP = LogP(groups_.Test(pairs_.GetGroups()));
    if (logP <= bestLogP) {
      bestLogP = logP;
      bestStep = steps_.size();
    }
  }
  if (bestStep == steps_.size()) return;
  ReturnToCategories();
  for (std::size_t step = 0; step < bestStep; ++step) Join(steps_[step]);
  UpdateAllPairs();
}

template <class Groups>
void CategoryMerger<Groups>::MergeSmallGroups() {
  auto const smallest = [&] {
    auto const groups = pairs_.GetGroups();
    return *std::min_element(groups.begin(), groups.end(), [&](std::size_t a, std::size_t b) {
      return groups_.SizeOf(a) < groups_.SizeOf(b);
    });
  };
  std::size_t group = smallest();
  if (!(groups_.SizeOf(group) < settings_.minChildSize)) return;
  // Size is more than significance: what was split may be joined.
  splitGroups_.clear();
  UpdateAllPairs();
  while (pairs_.GetGroups().size() > 1 && groups_.SizeOf(group) < settings_.minChildSize) {
    std::size_t const partner = pairs_.FindMostSimilar(group);
    GroupPair const pair{std::min(group, partner), std::max(group, partner)};
    Join(pair);
    UpdatePairs(std::array{pair.first});
    group = smallest();
  }
}

template <class Groups>
double CategoryMerger<Groups>::LogMultiplier() const {
  std::size_t const numCategories = rowOf_.size();
  std::size_t const numGroups = merged_.numGroups;
  if (!settings_.useBonferroni || numGroups < 2) return 0.0;
  if (kind_ == CategoryKind::kNominal) {
    return IsExhaustive() ? LogExhaustiveNominalMultiplier(numCategories)
                          : LogNominalMultiplier(numCategories, numGroups);
  }
  if (floating_) {
    return IsExhaustive() ? LogExhaustiveFloatingMultiplier(numCategories)
                          : LogFloatingMultiplier(numCategories, numGroups);
  }
  return IsExhaustive() ? LogExhaustiveOrdinalMultiplier(numCategories)
                        : LogOrdinalMultiplier(numCategories, numGroups);
}

template <class Groups>
void CategoryMerger<Groups>::WriteResult(std::size_t numRows) {
  std::span<std::size_t const> const groups = pairs_.GetGroups();
  numberOf_.resize(rowOf_.size());
  for (std::size_t number = 0; number < groups.size(); ++number) {
    numberOf_[groups[number]] = static_cast<std::uint16_t>(number);
  }
  merged_.groupOf.assign(numRows, MergedCategories::kNoGroup);
  for (std::size_t category = 0; category < rowOf_.size(); ++category) {
    merged_.groupOf[rowOf_[category]] = numberOf_[groupOf_[category]];
  }
  merged_.numGroups = groups.size();
  merged_.statistic = groups_.Test(groups);
  merged_.logP = LogP(merged_.statistic);
  merged_.adjustedLogP = std::min(0.0, merged_.logP + LogMultiplier());
}

template class CategoryMerger<ClassGroups>;
template class CategoryMerger<NumberGroups>;

}  // namespace tree::grow
