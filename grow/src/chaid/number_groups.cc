#include "chaid/number_groups.h"

#include <algorithm>
#include <numeric>

namespace tree::grow {

bool NumberGroups::Append(Entry const* row) {
  if (row->size == 0) return false;
  categories_.push_back(*row);
  return true;
}

void NumberGroups::MakeGroups() {
  centre_ = WholeMean(
      std::accumulate(categories_.begin(), categories_.end(), NumberSums{},
                      [](NumberSums sum, NumberSums const& category) { return sum += category; }));
  sums_ = categories_;
  sums_.resize(categories_.size() + 2);
  groups_.clear();
  for (NumberSums const& sums : sums_) groups_.push_back(SumUp(sums, centre_));
}

void NumberGroups::SumUpGroup(std::size_t group) { groups_[group] = SumUp(sums_[group], centre_); }

void NumberGroups::ClearGroup(std::size_t group) {
  sums_[group] = {};
  SumUpGroup(group);
}

void NumberGroups::AddGroup(std::size_t group, std::size_t other) {
  sums_[group] += sums_[other];
  SumUpGroup(group);
}

void NumberGroups::AddCategory(std::size_t group, std::size_t category) {
  sums_[group] += categories_[category];
  SumUpGroup(group);
}

void NumberGroups::RemoveCategory(std::size_t group, std::size_t category) {
  sums_[group] -= categories_[category];
  SumUpGroup(group);
}

TestStatistic NumberGroups::Test(std::span<std::size_t const> groups) {
  tested_.clear();
  for (std::size_t const group : groups) tested_.push_back(groups_[group]);
  return FTest(tested_, sizeUnit_);
}

void NumberGroups::SortForCuts(std::vector<std::size_t>& categories) const {
  std::vector<double> means(categories_.size());
  for (std::size_t const category : categories) {
    means[category] = SumUp(categories_[category], centre_).mean;
  }
  std::stable_sort(categories.begin(), categories.end(),
                   [&](std::size_t a, std::size_t b) { return means[a] < means[b]; });
}

}  // namespace tree::grow
