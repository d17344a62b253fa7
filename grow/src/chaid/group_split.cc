#include "chaid/group_split.h"

#include <algorithm>
#include <bit>

namespace tree::grow {

template <class Groups>
TestStatistic GroupSplit<Groups>::Find(Groups& groups, std::span<std::size_t const> categories,
                                       CategoryKind kind, bool floating, PollFunction const& poll) {
  Start(groups, categories);
  if (kind == CategoryKind::kOrdinal) {
    TryOrdered(floating, poll);
  } else if (groups.AreCutsBest() || categories.size() > kMaxExhaustive) {
    groups.SortForCuts(categories_);
    TryCuts(poll);
  } else {
    TryAll(poll);
  }
  auto const lowest = std::min_element(categories_.begin(), categories_.end());
  std::uint8_t const sideOfLowest =
      bestSide_[static_cast<std::size_t>(lowest - categories_.begin())];
  for (auto& side : sides_) side.clear();
  for (std::size_t position = 0; position < categories_.size(); ++position) {
    sides_[bestSide_[position] == sideOfLowest ? 0 : 1].push_back(categories_[position]);
  }
  for (auto& side : sides_) std::sort(side.begin(), side.end());
  return best_;
}

/// Puts all categories on the second side.
template <class Groups>
void GroupSplit<Groups>::Start(Groups& groups, std::span<std::size_t const> categories) {
  groups_ = &groups;
  spare_ = groups.GetNumCategories();
  categories_.assign(categories.begin(), categories.end());
  side_.assign(categories.size(), 1);
  any_ = false;
  groups.ClearGroup(spare_);
  groups.ClearGroup(spare_ + 1);
  for (std::size_t const category : categories) groups.AddCategory(spare_ + 1, category);
}

/// Moves a category to the other side.
template <class Groups>
void GroupSplit<Groups>::Move(std::size_t position) {
  std::size_t const from = side_[position];
  groups_->RemoveCategory(spare_ + from, categories_[position]);
  groups_->AddCategory(spare_ + 1 - from, categories_[position]);
  side_[position] = static_cast<std::uint8_t>(1 - from);
}

/// Tests the sides as they are. All divisions of a group have the same degrees of freedom.
template <class Groups>
void GroupSplit<Groups>::Try(PollFunction const& poll) {
  poll();
  TestStatistic const statistic = groups_->TestPair(spare_, spare_ + 1);
  if (any_ && !(statistic.value > best_.value)) return;
  any_ = true;
  best_ = statistic;
  bestSide_ = side_;
}

template <class Groups>
void GroupSplit<Groups>::TryCuts(PollFunction const& poll) {
  for (std::size_t position = 0; position + 1 < categories_.size(); ++position) {
    Move(position);
    Try(poll);
  }
}

template <class Groups>
void GroupSplit<Groups>::TryOrdered(bool floating, PollFunction const& poll) {
  if (!floating) return TryCuts(poll);
  std::size_t const last = categories_.size() - 1;
  for (std::size_t position = 0; position < last; ++position) {
    Move(position);
    Try(poll);  // the floating category above the cut; alone, above the last one
    if (position + 1 == last) break;
    Move(last);
    Try(poll);  // below it
    Move(last);
  }
}

/// Each division differs from the one before it by one category (Gray 1953): the first one stays on
/// the second side.
template <class Groups>
void GroupSplit<Groups>::TryAll(PollFunction const& poll) {
  std::size_t const numDivisions = std::size_t{1} << (categories_.size() - 1);
  for (std::size_t division = 1; division < numDivisions; ++division) {
    Move(1 + static_cast<std::size_t>(std::countr_zero(division)));
    Try(poll);
  }
}

template class GroupSplit<ClassGroups>;
template class GroupSplit<NumberGroups>;

}  // namespace tree::grow
