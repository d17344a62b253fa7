#include <algorithm>

#include "tree/assertions.h"
#include "tree/split_rules.h"
#include "tree/support.h"

namespace tree {

namespace {

constexpr unsigned int kCreationKinds = SplitRuleCreatedDefault | SplitRuleCreatedAlternate;
constexpr unsigned int kAllStatistics = 0x7F;

}  // namespace

SplitRuleImp::SplitRuleImp(int predictorIndex) : predictorIndex_(predictorIndex) {
  statistics_.fill(systemMissingValue());
}

SplitRuleImp::SplitRuleImp(SplitRuleImp const& other) = default;

SplitRuleImp& SplitRuleImp::operator=(SplitRuleImp const& other) = default;

SplitRuleImp::~SplitRuleImp() = default;

bool SplitRuleImp::CopyMappings(SplitRuleImp const& other) {
  missingValueMapping_ = other.missingValueMapping_;
  return true;
}

int SplitRuleImp::Compare(SplitRuleImp const& other) const {
  if (predictorIndex_ != other.predictorIndex_) return 2;
  return missingValueMapping_ == other.missingValueMapping_ ? 0 : 1;
}

void SplitRuleImp::ReorderMappings(std::vector<int> const& newPositions) {
  auto const renumber = [&newPositions](int& child) {
    if (child < 0) return;
    auto const old = static_cast<std::size_t>(child);
    internal::RequireIndex(child, newPositions.size(), "SplitRuleImp::ReorderMappings");
    child = newPositions[old];
  };
  renumber(missingValueMapping_);
  renumber(dumbChildPosition_);
  SetProperty(SplitRuleMappingsReordered);
}

int SplitRuleImp::GetCreationFlags() const { return static_cast<int>(propertyFlags_); }

bool SplitRuleImp::HasProperty(SplitRulePropertyFlag flag) const {
  return (propertyFlags_ & flag) != 0;
}

void SplitRuleImp::SetProperty(SplitRulePropertyFlag flag) {
  if ((flag & kCreationKinds) != 0) propertyFlags_ &= ~kCreationKinds;
  propertyFlags_ |= flag;
}

void SplitRuleImp::SetDumbRule(int child, double probability) {
  dumbChildPosition_ = child;
  dumbChildProbability_ = probability;
}

void SplitRuleImp::AddMissingValueMapping(bool ownChild) {
  int const numChildren = GetNumChildren();
  missingValueMapping_ = ownChild ? numChildren : numChildren - 1;
}

bool SplitRuleImp::HasStatistic(StatisticFlag flag) const {
  return (statisticMask_ & flag) == flag;
}

void SplitRuleImp::SetStatistic(StatisticFlag flag, double value) {
  unsigned int const present = statisticMask_ & flag;
  if (present != 0 && present != flag) return;
  statisticMask_ |= flag;
  int const slot = GetFlagPosition(flag);
  if (slot >= 0) statistics_[static_cast<std::size_t>(slot)] = value;
}

bool SplitRuleImp::GetStatistic(StatisticFlag flag, double* value) const {
  int const slot = GetFlagPosition(flag);
  if (!HasStatistic(flag) || slot < 0) return false;
  *value = statistics_[static_cast<std::size_t>(slot)];
  return true;
}

double SplitRuleImp::GetStatistic(StatisticFlag flag) const {
  double value = systemMissingValue();
  GetStatistic(flag, &value);
  return value;
}

int SplitRuleImp::GetFlagPosition(StatisticFlag flag) {
  int position = -1;
  for (unsigned int bits = flag & kAllStatistics; bits != 0; bits >>= 1) ++position;
  return position < kNumStatistics ? position : -1;
}

bool SplitRuleImp::operator==(SplitRuleImp const& other) const {
  return predictorIndex_ == other.predictorIndex_ && statistics_ == other.statistics_ &&
         dumbChildProbability_ == other.dumbChildProbability_ &&
         dumbChildPosition_ == other.dumbChildPosition_ &&
         missingValueMapping_ == other.missingValueMapping_ &&
         statisticMask_ == other.statisticMask_ && propertyFlags_ == other.propertyFlags_;
}

}  // namespace tree
